// Copying the sentences of a time interval out of an NMEA file.
#include "core/ExtracterNmeaSentenceHandler.h"

#include "support/NmeaSentences.h"

#include "os/MemoryInputStream.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using testsupport::sentence;

namespace {

TrackTime utc(int hour, int minute, int second) { return makeTrackTime(QDate(2024, 11, 19), hour, minute, second); }

std::string extract(const std::string& text, TrackTime from, TrackTime to, std::uint64_t* copied = nullptr) {
    os::CMemoryInputStream input(text.data(), text.size());
    os::CMemoryOutputStream output;
    ExtracterNmeaSentenceHandler extracter(from, to);
    const std::uint64_t count = extracter.extract(&input, &output);
    if (copied)
        *copied = count;
    return output.bytes();
}

std::string second(int s) {
    char time[16];
    std::snprintf(time, sizeof time, "1200%02d", s);
    return sentence(std::string("GPRMC,") + time + ",A,4916.45,N,12311.12,W,,,191124,,") +
           sentence(std::string("GPGGA,") + time + ",4916.45,N,12311.12,W,1,08,0.9,545.4,M,46.9,M,,") +
           sentence("GPGSA,A,3,04,05,,,,,,,,,,,2.5,1.3,2.1") + sentence("ADPMB,5,0");
}

} // namespace

TEST(ExtracterNmeaSentenceHandler, copies_every_sentence_of_the_interval_unchanged) {
    const std::string text = second(1) + second(2) + second(3) + second(4);
    std::uint64_t copied = 0;
    EXPECT_EQ(extract(text, utc(12, 0, 2), utc(12, 0, 3), &copied), second(2) + second(3));
    EXPECT_EQ(copied, 8u);
    EXPECT_EQ(extract(text, utc(12, 0, 5), utc(12, 0, 9)), "");
}

TEST(ExtracterNmeaSentenceHandler, leaves_out_garbage_bad_checksums_and_sentences_before_any_date) {
    std::string bad = sentence("GPGSA,A,3,,,,,,,,,,,,,9.9,9.9,9.9");
    bad[bad.size() - 3] = bad[bad.size() - 3] == '0' ? '1' : '0';
    const std::string undated = sentence("GPGGA,120000,4916.45,N,12311.12,W,1,08,0.9,545.4,M,46.9,M,,");
    const std::string text = undated + second(1) + "noise\r\n" + bad + second(2);
    EXPECT_EQ(extract(text, utc(0, 0, 0), utc(23, 59, 59)), second(1) + second(2));
}

TEST(ExtracterNmeaSentenceHandler, zda_dates_later_time_only_sentences_and_midnight_moves_the_day_on) {
    const std::string text = sentence("GPZDA,235959,18,11,2024,00,00") +
                             sentence("GPGGA,000000,4916.45,N,12311.12,W,1,08,0.9,545.4,M,46.9,M,,");
    EXPECT_EQ(extract(text, utc(0, 0, 0), utc(0, 0, 0)),
              sentence("GPGGA,000000,4916.45,N,12311.12,W,1,08,0.9,545.4,M,46.9,M,,"));
}

TEST(ExtracterNmeaSentenceHandler, missing_streams_fail_with_their_messages) {
    ExtracterNmeaSentenceHandler extracter(0, 1);
    os::CMemoryOutputStream output;
    const std::string text = second(1);
    os::CMemoryInputStream input(text.data(), text.size());
    try {
        extracter.extract(nullptr, &output);
        FAIL() << "no error";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Failed to read file: invalid input stream");
    }
    try {
        extracter.extract(&input, nullptr);
        FAIL() << "no error";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Failed to read file: invalid output stream");
    }
}
