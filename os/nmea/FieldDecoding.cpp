// Decoding of single NMEA 0183 fields: the rare slow path of long numbers.
#include "os/nmea/FieldDecoding.h"

#include <charconv>

namespace os::nmea::detail {

// Rare long numbers go to the standard library's exact conversion, which is locale-free too.
std::optional<double> decodeLongDecimal(std::string_view digits, bool negative) {
    double value = 0.0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value,
                                              std::chars_format::fixed);
    if (error != std::errc() || end != digits.data() + digits.size())
        return std::nullopt;
    return negative ? -value : value;
}

} // namespace os::nmea::detail
