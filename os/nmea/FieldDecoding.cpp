// Decoding of single NMEA 0183 fields: numbers, coordinates, times, dates and letters.
#include "os/nmea/FieldDecoding.h"

#include <charconv>
#include <cmath>

namespace os::nmea {
namespace {

// Exact powers of ten: a mantissa below 2^53 divided by one of them is correctly rounded.
constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                   1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::uint64_t kExactMantissaLimit = std::uint64_t{1} << 53;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Rare long numbers go to the standard library's exact conversion, which is locale-free too.
std::optional<double> decodeLongDecimal(std::string_view digits, bool negative) {
    double value = 0.0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value,
                                              std::chars_format::fixed);
    if (error != std::errc() || end != digits.data() + digits.size())
        return std::nullopt;
    return negative ? -value : value;
}

// "ddmm.mmmm" as an unsigned fixed-point number: digits without the point, and how many follow it.
struct FixedPoint {
    std::uint64_t mantissa = 0;
    int scale = 0;
};

std::optional<FixedPoint> decodeFixedPoint(std::string_view field) {
    FixedPoint result;
    int digits = 0;
    int fraction = -1;
    for (const char c : field) {
        if (isDigit(c)) {
            if (++digits > 18)
                return std::nullopt;
            result.mantissa = result.mantissa * 10 + static_cast<unsigned>(c - '0');
            if (fraction >= 0)
                ++fraction;
        } else if (c == '.' && fraction < 0) {
            fraction = 0;
        } else {
            return std::nullopt;
        }
    }
    if (digits == 0)
        return std::nullopt;
    result.scale = fraction < 0 ? 0 : fraction;
    return result;
}

std::optional<double> decodeCoordinate(std::string_view value, std::string_view hemisphere, char positive,
                                       char negative, double maximumDegrees) {
    if (hemisphere.size() != 1 || (hemisphere[0] != positive && hemisphere[0] != negative))
        return std::nullopt;
    const auto number = decodeFixedPoint(value);
    if (!number || number->mantissa >= kExactMantissaLimit)
        return std::nullopt;
    // Whole degrees and minutes are split in integers, so the minutes keep every digit that was sent.
    const auto unit = static_cast<std::uint64_t>(kPowersOfTen[number->scale]);
    const std::uint64_t degrees = number->mantissa / unit / 100;
    const double minutes = static_cast<double>(number->mantissa - degrees * 100 * unit) / kPowersOfTen[number->scale];
    if (static_cast<double>(degrees) > maximumDegrees || minutes >= 60.0)
        return std::nullopt;
    const double result = static_cast<double>(degrees) + minutes / 60.0;
    if (result > maximumDegrees)
        return std::nullopt;
    return hemisphere[0] == negative ? -result : result;
}

int twoDigits(std::string_view text, std::size_t at) {
    if (!isDigit(text[at]) || !isDigit(text[at + 1]))
        return -1;
    return (text[at] - '0') * 10 + (text[at + 1] - '0');
}

} // namespace

std::optional<double> decodeDecimal(std::string_view field) {
    std::size_t i = 0;
    bool negative = false;
    if (!field.empty() && (field[0] == '-' || field[0] == '+')) {
        negative = field[0] == '-';
        i = 1;
    }
    const std::string_view digits = field.substr(i);
    std::uint64_t mantissa = 0;
    int significant = 0; // digits taken into the mantissa, leading zeros included
    int fraction = -1;   // digits after the point, -1 before it
    bool anyDigit = false;
    for (; i < field.size(); ++i) {
        const char c = field[i];
        if (isDigit(c)) {
            anyDigit = true;
            if (++significant > 19)
                return decodeLongDecimal(digits, negative);
            mantissa = mantissa * 10 + static_cast<unsigned>(c - '0');
            if (fraction >= 0)
                ++fraction;
        } else if (c == '.' && fraction < 0) {
            fraction = 0;
        } else {
            return std::nullopt;
        }
    }
    if (!anyDigit)
        return std::nullopt;
    const int scale = fraction < 0 ? 0 : fraction;
    if (mantissa >= kExactMantissaLimit || scale > 22)
        return decodeLongDecimal(digits, negative);
    const double value = static_cast<double>(mantissa) / kPowersOfTen[scale];
    return negative ? -value : value;
}

std::optional<std::uint32_t> decodeUnsigned(std::string_view field) {
    if (field.empty() || field.size() > 9)
        return std::nullopt; // nine digits always fit
    std::uint32_t value = 0;
    for (const char c : field) {
        if (!isDigit(c))
            return std::nullopt;
        value = value * 10 + static_cast<std::uint32_t>(c - '0');
    }
    return value;
}

std::optional<std::int32_t> decodeSigned(std::string_view field) {
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

std::optional<double> decodeLatitude(std::string_view value, std::string_view hemisphere) {
    return decodeCoordinate(value, hemisphere, 'N', 'S', 90.0);
}

std::optional<double> decodeLongitude(std::string_view value, std::string_view hemisphere) {
    return decodeCoordinate(value, hemisphere, 'E', 'W', 180.0);
}

std::optional<UtcTime> decodeUtcTime(std::string_view field) {
    if (field.size() < 6 || (field.size() > 6 && field[6] != '.'))
        return std::nullopt;
    const int hours = twoDigits(field, 0);
    const int minutes = twoDigits(field, 2);
    if (hours < 0 || hours > 23 || minutes < 0 || minutes > 59 || !isDigit(field[4]) || !isDigit(field[5]))
        return std::nullopt;
    const auto seconds = decodeDecimal(field.substr(4));
    if (!seconds || *seconds >= 61.0) // 60.x is a leap second
        return std::nullopt;
    UtcTime time;
    time.hours = static_cast<std::uint8_t>(hours);
    time.minutes = static_cast<std::uint16_t>(minutes);
    time.seconds = static_cast<float>(*seconds);
    return time;
}

std::optional<Date> decodeDate(std::string_view field) {
    if (field.size() != 6)
        return std::nullopt;
    const int day = twoDigits(field, 0);
    const int month = twoDigits(field, 2);
    const int year = twoDigits(field, 4);
    if (day < 1 || day > 31 || month < 1 || month > 12 || year < 0)
        return std::nullopt;
    return Date{static_cast<std::uint8_t>(day), static_cast<std::uint8_t>(month), static_cast<std::uint8_t>(year)};
}

std::optional<char> decodeLetter(std::string_view field, std::string_view allowed) {
    if (field.size() != 1 || allowed.find(field[0]) == std::string_view::npos)
        return std::nullopt;
    return field[0];
}

std::optional<double> decodeEastWest(std::string_view value, std::string_view direction) {
    const auto letter = decodeLetter(direction, "EW");
    const auto number = decodeDecimal(value);
    if (!letter || !number)
        return std::nullopt;
    return *letter == 'W' ? -*number : *number;
}

} // namespace os::nmea
