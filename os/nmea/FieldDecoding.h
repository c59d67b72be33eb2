// Decoding of single NMEA 0183 fields: numbers, coordinates, times, dates and letters. Locale-free and
// allocation-free: every function takes a view of the field's text and returns nullopt when the field
// is empty or not valid.
#pragma once

#include "os/nmea/Sentences.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string_view>

namespace os::nmea {
namespace detail {
// Exact powers of ten: a mantissa below 2^53 divided by one of them is correctly rounded.
inline constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                   1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
inline constexpr std::uint64_t kExactMantissaLimit = std::uint64_t{1} << 53;

inline bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Digits before and after the point of an unsigned number such as "ddmm.mmmm", kept apart in integers.
struct FixedPoint {
    std::uint64_t whole = 0;
    std::uint64_t fraction = 0;
    int scale = 0; // digits after the point
};

inline std::optional<FixedPoint> decodeFixedPoint(std::string_view field) {
    const char* p = field.data();
    const char* const end = p + field.size();
    FixedPoint result;
    const char* const start = p;
    for (; p != end && isDigit(*p); ++p)
        result.whole = result.whole * 10 + static_cast<unsigned>(*p - '0');
    std::size_t digits = static_cast<std::size_t>(p - start);
    if (p != end && *p == '.') {
        const char* const fraction = ++p;
        for (; p != end && isDigit(*p); ++p)
            result.fraction = result.fraction * 10 + static_cast<unsigned>(*p - '0');
        result.scale = static_cast<int>(p - fraction);
        digits += static_cast<std::size_t>(result.scale);
    }
    if (p != end || digits == 0 || digits > 15) // 15 digits: exact in a double
        return std::nullopt;
    return result;
}

inline std::optional<double> decodeCoordinate(std::string_view value, std::string_view hemisphere, char positive,
                                              char negative, unsigned maximumDegrees) {
    if (hemisphere.size() != 1 || (hemisphere[0] != positive && hemisphere[0] != negative))
        return std::nullopt;
    const auto number = decodeFixedPoint(value);
    if (!number)
        return std::nullopt;
    // Degrees and minutes are split in integers, so the minutes keep every digit that was sent.
    const std::uint64_t degrees = number->whole / 100;
    const double unit = kPowersOfTen[number->scale];
    const double minutes =
        (static_cast<double>(number->whole % 100) * unit + static_cast<double>(number->fraction)) / unit;
    if (degrees > maximumDegrees || minutes >= 60.0)
        return std::nullopt;
    const double result = static_cast<double>(degrees) + minutes / 60.0;
    if (result > maximumDegrees)
        return std::nullopt;
    return hemisphere[0] == negative ? -result : result;
}

inline int twoDigits(std::string_view text, std::size_t at) {
    if (!isDigit(text[at]) || !isDigit(text[at + 1]))
        return -1;
    return (text[at] - '0') * 10 + (text[at + 1] - '0');
}

// Numbers of more than 19 digits, rare enough for the exact conversion of the standard library.
std::optional<double> decodeLongDecimal(std::string_view digits, bool negative);
} // namespace detail

// "12", "-3.25", "+0.5", ".5": decimal notation only, no exponent, no spaces.
inline std::optional<double> decodeDecimal(std::string_view field) {
    const char* p = field.data();
    const char* const end = p + field.size();
    bool negative = false;
    if (p != end && (*p == '-' || *p == '+')) {
        negative = *p == '-';
        ++p;
    }
    const char* const number = p;
    std::uint64_t mantissa = 0; // wraps past 19 digits; such numbers take the slow path below
    for (; p != end && detail::isDigit(*p); ++p)
        mantissa = mantissa * 10 + static_cast<unsigned>(*p - '0');
    std::size_t digits = static_cast<std::size_t>(p - number);
    std::size_t scale = 0;
    if (p != end && *p == '.') {
        const char* const fraction = ++p;
        for (; p != end && detail::isDigit(*p); ++p)
            mantissa = mantissa * 10 + static_cast<unsigned>(*p - '0');
        scale = static_cast<std::size_t>(p - fraction);
        digits += scale;
    }
    if (p != end || digits == 0)
        return std::nullopt;
    if (digits > 19 || mantissa >= detail::kExactMantissaLimit || scale > 22)
        return detail::decodeLongDecimal(std::string_view(number, static_cast<std::size_t>(end - number)), negative);
    const double value = static_cast<double>(mantissa) / detail::kPowersOfTen[scale];
    return negative ? -value : value;
}

// Digits only.
inline std::optional<std::uint32_t> decodeUnsigned(std::string_view field) {
    if (field.empty() || field.size() > 9)
        return std::nullopt; // nine digits always fit
    std::uint32_t value = 0;
    for (const char c : field) {
        if (!detail::isDigit(c))
            return std::nullopt;
        value = value * 10 + static_cast<std::uint32_t>(c - '0');
    }
    return value;
}

// "-05", "+3", "7".
inline std::optional<std::int32_t> decodeSigned(std::string_view field) {
    bool negative = false;
    if (!field.empty() && (field[0] == '-' || field[0] == '+')) {
        negative = field[0] == '-';
        field.remove_prefix(1);
    }
    const auto magnitude = decodeUnsigned(field);
    if (!magnitude)
        return std::nullopt;
    const auto value = static_cast<std::int32_t>(*magnitude);
    return negative ? -value : value;
}

// "4916.45" + "N" -> 49.274166...; degrees at most 90, minutes below 60.
inline std::optional<double> decodeLatitude(std::string_view value, std::string_view hemisphere) {
    return detail::decodeCoordinate(value, hemisphere, 'N', 'S', 90);
}

// "12311.12" + "W" -> -123.18533...; degrees at most 180, minutes below 60.
inline std::optional<double> decodeLongitude(std::string_view value, std::string_view hemisphere) {
    return detail::decodeCoordinate(value, hemisphere, 'E', 'W', 180);
}

// "hhmmss" or "hhmmss.sss". Blanks around it are dropped: some receivers pad the field (" 222519",
// "222521.0 "), and the time itself is intact. Anything else after the seconds still refuses it.
inline std::optional<UtcTime> decodeUtcTime(std::string_view field) {
    while (!field.empty() && field.front() == ' ')
        field.remove_prefix(1);
    while (!field.empty() && field.back() == ' ')
        field.remove_suffix(1);
    if (field.size() < 6 || (field.size() > 6 && field[6] != '.'))
        return std::nullopt;
    const int hours = detail::twoDigits(field, 0);
    const int minutes = detail::twoDigits(field, 2);
    const int seconds = detail::twoDigits(field, 4);
    if (hours < 0 || hours > 23 || minutes < 0 || minutes > 59 || seconds < 0 || seconds > 60) // 60: a leap second
        return std::nullopt;
    UtcTime time;
    time.hours = static_cast<std::uint8_t>(hours);
    time.minutes = static_cast<std::uint16_t>(minutes);
    time.seconds = static_cast<float>(seconds);
    if (field.size() > 7) {
        const auto fraction = detail::decodeFixedPoint(field.substr(6)); // ".sss"
        if (!fraction)
            return std::nullopt;
        time.seconds = static_cast<float>(seconds + static_cast<double>(fraction->fraction) /
                                                        detail::kPowersOfTen[fraction->scale]);
    }
    return time;
}

// "ddmmyy".
inline std::optional<Date> decodeDate(std::string_view field) {
    if (field.size() != 6)
        return std::nullopt;
    const int day = detail::twoDigits(field, 0);
    const int month = detail::twoDigits(field, 2);
    const int year = detail::twoDigits(field, 4);
    if (day < 1 || day > 31 || month < 1 || month > 12 || year < 0)
        return std::nullopt;
    return Date{static_cast<std::uint8_t>(day), static_cast<std::uint8_t>(month), static_cast<std::uint8_t>(year)};
}

// A single letter out of allowed.
inline std::optional<char> decodeLetter(std::string_view field, std::string_view allowed) {
    if (field.size() != 1 || allowed.find(field[0]) == std::string_view::npos)
        return std::nullopt;
    return field[0];
}

// A value with an "E"/"W" letter: west is negative.
inline std::optional<double> decodeEastWest(std::string_view value, std::string_view direction) {
    const auto letter = decodeLetter(direction, "EW");
    const auto number = decodeDecimal(value);
    if (!letter || !number)
        return std::nullopt;
    return *letter == 'W' ? -*number : *number;
}

} // namespace os::nmea
