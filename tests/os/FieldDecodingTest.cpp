// Decoding of single fields: numbers exactly as the standard conversion gives them, and what is refused.
#include "os/nmea/FieldDecoding.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>

using namespace os::nmea;

TEST(FieldDecoding, decimals_match_the_exact_conversion) {
    for (const char* text : {"0", "12", "-3.25", "+0.5", ".5", "5.", "0.1", "209.8", "4249.96542", "00123.4500",
                             "1234567890123456789", "12345678901234567890.5", "0.000000000000000000000001"}) {
        SCOPED_TRACE(text);
        ASSERT_TRUE(decodeDecimal(text).has_value());
        EXPECT_EQ(*decodeDecimal(text), std::strtod(text, nullptr));
    }
    std::mt19937 random(3);
    for (int i = 0; i < 2000; ++i) {
        const std::string text = std::to_string(random() % 100000) + "." + std::to_string(random() % 1000000);
        ASSERT_EQ(*decodeDecimal(text), std::strtod(text.c_str(), nullptr)) << text;
    }
}

TEST(FieldDecoding, malformed_numbers_have_no_value) {
    for (const char* text : {"", "-", "+", ".", "1.2.3", "1e5", " 1", "1 ", "0x1F", "inf", "nan", "1,5", "--1"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(decodeDecimal(text).has_value());
    }
    EXPECT_EQ(*decodeUnsigned("007"), 7u);
    EXPECT_FALSE(decodeUnsigned("-7").has_value());
    EXPECT_FALSE(decodeUnsigned("1234567890").has_value()); // would not fit safely
    EXPECT_EQ(*decodeSigned("-05"), -5);
    EXPECT_EQ(*decodeSigned("+3"), 3);
}

TEST(FieldDecoding, coordinates_from_degrees_and_decimal_minutes_with_their_hemisphere) {
    EXPECT_DOUBLE_EQ(*decodeLatitude("4916.45", "N"), 49 + 16.45 / 60);
    EXPECT_DOUBLE_EQ(*decodeLatitude("4249.96542", "S"), -(42 + 49.96542 / 60));
    EXPECT_DOUBLE_EQ(*decodeLongitude("12311.12", "W"), -(123 + 11.12 / 60));
    EXPECT_DOUBLE_EQ(*decodeLongitude("00000.00", "E"), 0.0);
    EXPECT_DOUBLE_EQ(*decodeLatitude("9000.00", "N"), 90.0);
    EXPECT_FALSE(decodeLatitude("4916.45", "E").has_value());  // wrong hemisphere letter
    EXPECT_FALSE(decodeLatitude("4916.45", "").has_value());   // no hemisphere
    EXPECT_FALSE(decodeLatitude("4960.00", "N").has_value());  // 60 minutes
    EXPECT_FALSE(decodeLatitude("9000.01", "N").has_value());  // beyond the pole
    EXPECT_FALSE(decodeLongitude("18100.00", "E").has_value());
    EXPECT_FALSE(decodeLatitude("-4916.45", "N").has_value()); // the sign is the hemisphere's job
}

TEST(FieldDecoding, times_and_dates) {
    const auto time = decodeUtcTime("235959.75");
    ASSERT_TRUE(time.has_value());
    EXPECT_EQ(time->hours, 23);
    EXPECT_EQ(time->minutes, 59);
    EXPECT_FLOAT_EQ(time->seconds, 59.75f);
    EXPECT_FLOAT_EQ(decodeUtcTime("120005")->seconds, 5.0f);
    EXPECT_TRUE(decodeUtcTime("235960").has_value()); // a leap second
    // Blanks around an intact time, as real receivers pad the field.
    for (const char* padded : {" 120005", "120005 ", "120005.0 ", "  120005.  "}) {
        ASSERT_TRUE(decodeUtcTime(padded).has_value()) << padded;
        EXPECT_EQ(decodeUtcTime(padded)->hours, 12) << padded;
        EXPECT_FLOAT_EQ(decodeUtcTime(padded)->seconds, 5.0f) << padded;
    }
    for (const char* bad : {"", " ", "12000", "240000", "126000", "120061", "12:00:05", "120005x", "120005.x", ".1",
                            " .1", "1200a5", "1200 05", "120005. 5", "\t120005"})
        EXPECT_FALSE(decodeUtcTime(bad).has_value()) << bad;
    const auto date = decodeDate("191124");
    ASSERT_TRUE(date.has_value());
    EXPECT_EQ(date->day, 19);
    EXPECT_EQ(date->month, 11);
    EXPECT_EQ(date->year, 24);
    for (const char* bad : {"", "001124", "321124", "190024", "191324", "19112", "1911245"})
        EXPECT_FALSE(decodeDate(bad).has_value()) << bad;
}

TEST(FieldDecoding, letters_and_signed_directions) {
    EXPECT_EQ(*decodeLetter("A", "ADEMSN"), 'A');
    EXPECT_FALSE(decodeLetter("a", "ADEMSN").has_value());
    EXPECT_FALSE(decodeLetter("AD", "ADEMSN").has_value());
    EXPECT_DOUBLE_EQ(*decodeEastWest("3.1", "W"), -3.1);
    EXPECT_DOUBLE_EQ(*decodeEastWest("3.1", "E"), 3.1);
    EXPECT_FALSE(decodeEastWest("3.1", "").has_value());
}
