// Decoding of single NMEA 0183 fields: numbers, coordinates, times, dates and letters. Locale-free and
// allocation-free: every function takes a view of the field's text and returns nullopt when the field
// is empty or not valid.
#pragma once

#include "os/nmea/Sentences.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace os::nmea {

// "12", "-3.25", "+0.5", ".5": decimal notation only, no exponent, no spaces.
std::optional<double> decodeDecimal(std::string_view field);
// Digits only.
std::optional<std::uint32_t> decodeUnsigned(std::string_view field);
// "-05", "+3", "7".
std::optional<std::int32_t> decodeSigned(std::string_view field);
// "4916.45" + "N" -> 49.274166...; degrees at most 90, minutes below 60.
std::optional<double> decodeLatitude(std::string_view value, std::string_view hemisphere);
// "12311.12" + "W" -> -123.18533...; degrees at most 180, minutes below 60.
std::optional<double> decodeLongitude(std::string_view value, std::string_view hemisphere);
// "hhmmss" or "hhmmss.sss".
std::optional<UtcTime> decodeUtcTime(std::string_view field);
// "ddmmyy".
std::optional<Date> decodeDate(std::string_view field);
// A single letter out of allowed.
std::optional<char> decodeLetter(std::string_view field, std::string_view allowed);
// A value with an "E"/"W" letter: west is negative.
std::optional<double> decodeEastWest(std::string_view value, std::string_view direction);

} // namespace os::nmea
