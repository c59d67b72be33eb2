// Builds NMEA 0183 sentences with a correct checksum for tests.
#pragma once

#include <cstdio>
#include <string>

namespace testsupport {

// "GPRMC,..." -> "$GPRMC,...*hh\r\n" with the checksum of the body in upper-case hexadecimal.
inline std::string sentence(const std::string& body, const std::string& lineEnd = "\r\n") {
    unsigned checksum = 0;
    for (const char c : body)
        checksum ^= static_cast<unsigned char>(c);
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", checksum);
    return "$" + body + "*" + digits + lineEnd;
}

} // namespace testsupport
