// Writes a long, realistic NMEA 0183 log for the benchmarks: one fix a second with every recognised
// sentence type, a drifting position, and a sprinkling of corrupt lines.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>

namespace bench {

struct GeneratedLog {
    std::uint64_t bytes = 0;
    std::uint64_t seconds = 0;      // fixes written; each second has one RMC
    std::uint64_t corruptLines = 0; // bad checksums, cut sentences, lower-case digits, binary noise
};

namespace detail {

inline std::string framed(const char* body) {
    unsigned checksum = 0;
    for (const char* c = body; *c; ++c)
        checksum ^= static_cast<unsigned char>(*c);
    char line[300];
    std::snprintf(line, sizeof line, "$%s*%02X\r\n", body, checksum);
    return line;
}

inline void coordinate(char* out, std::size_t size, double degrees, int degreeDigits) {
    const double magnitude = std::fabs(degrees);
    const int whole = static_cast<int>(magnitude);
    std::snprintf(out, size, "%0*d%07.4f", degreeDigits, whole, (magnitude - whole) * 60.0);
}

} // namespace detail

// Appends sentences to the file until it holds at least targetBytes. Returns what it wrote.
inline GeneratedLog writeNmeaLog(const std::string& path, std::uint64_t targetBytes, unsigned seed = 1) {
    GeneratedLog log;
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        return log;
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    double latitude = 49.2741, longitude = -123.1853, speedKnots = 20.0, course = 54.7, altitude = 545.4;
    std::int64_t second = 0;
    const auto emit = [&](const std::string& line) {
        std::fwrite(line.data(), 1, line.size(), file);
        log.bytes += line.size();
    };
    char body[256];
    char lat[32];
    char lon[32];
    while (log.bytes < targetBytes) {
        const std::int64_t day = second / 86400;
        const int hh = static_cast<int>(second / 3600 % 24), mm = static_cast<int>(second / 60 % 60),
                  ss = static_cast<int>(second % 60);
        const int dd = static_cast<int>(day % 28) + 1, mo = static_cast<int>(day / 28 % 12) + 1,
                  yy = static_cast<int>(day / 336 % 100);
        detail::coordinate(lat, sizeof lat, latitude, 2);
        detail::coordinate(lon, sizeof lon, longitude, 3);
        const char ns = latitude < 0 ? 'S' : 'N', ew = longitude < 0 ? 'W' : 'E';
        const int satellites = 6 + static_cast<int>(unit(random) * 6);

        std::snprintf(body, sizeof body, "GPRMC,%02d%02d%02d.000,A,%s,%c,%s,%c,%.2f,%.2f,%02d%02d%02d,003.1,W,A", hh, mm,
                      ss, lat, ns, lon, ew, speedKnots, course, dd, mo, yy);
        emit(detail::framed(body));
        std::snprintf(body, sizeof body, "GPGGA,%02d%02d%02d.000,%s,%c,%s,%c,1,%02d,0.9,%.1f,M,46.9,M,,", hh, mm, ss, lat,
                      ns, lon, ew, satellites, altitude);
        emit(detail::framed(body));
        std::snprintf(body, sizeof body, "GPGSA,A,3,04,05,09,12,24,25,29,31,,,,,2.5,1.3,2.1");
        emit(detail::framed(body));
        for (int part = 1; part <= 3; ++part) {
            std::snprintf(body, sizeof body, "GPGSV,3,%d,12,%02d,79,048,42,%02d,51,062,43,%02d,36,256,42,%02d,27,138,42",
                          part, part * 4, part * 4 + 1, part * 4 + 2, part * 4 + 3);
            emit(detail::framed(body));
        }
        std::snprintf(body, sizeof body, "GPVTG,%.2f,T,%.2f,M,%.2f,N,%.2f,K,A", course, course - 3.1, speedKnots,
                      speedKnots * 1.852);
        emit(detail::framed(body));
        std::snprintf(body, sizeof body, "GPGLL,%s,%c,%s,%c,%02d%02d%02d.000,A,A", lat, ns, lon, ew, hh, mm, ss);
        emit(detail::framed(body));
        if (second % 5 == 0) {
            std::snprintf(body, sizeof body, "GPZDA,%02d%02d%02d.000,%02d,%02d,%04d,00,00", hh, mm, ss, dd, mo, 2000 + yy);
            emit(detail::framed(body));
            std::snprintf(body, sizeof body, "GPGST,%02d%02d%02d.000,1.5,2.0,1.0,45.0,1.2,1.1,2.3", hh, mm, ss);
            emit(detail::framed(body));
            std::snprintf(body, sizeof body, "HCHDG,%.1f,0.0,E,3.1,W", course);
            emit(detail::framed(body));
            emit(detail::framed("SDDPT,2.4,0.5,100"));
            emit(detail::framed("SDDBT,7.8,f,2.4,M,1.3,F"));
            emit(detail::framed("YXMTW,17.5,C"));
            std::snprintf(body, sizeof body, "PGRMZ,%.0f,f,3", altitude / 0.3048);
            emit(detail::framed(body));
        }
        // About one line in two hundred is damaged, in one of four ways.
        if (unit(random) < 0.04) {
            ++log.corruptLines;
            std::string line = detail::framed("GPRMC,999999,A,0000.0000,N,00000.0000,E,,,010100,,");
            switch (random() % 4) {
            case 0: line[line.size() - 3] = line[line.size() - 3] == '0' ? '1' : '0'; break; // bad checksum
            case 1: line.resize(line.size() / 2); break;                                        // cut off
            case 2: line = "$GPGGA,1,2,3*" + std::string("3f") + "\r\n"; break;                 // lower-case digits
            default:
                // Binary noise, without Ctrl-Z: other readers take it for the end of a DOS text file, which
                // would end their run early and make any comparison meaningless.
                line.assign(64, '\0');
                for (char& c : line)
                    do
                        c = static_cast<char>(random());
                    while (c == '\x1a');
            }
            emit(line);
        }
        ++second;
        ++log.seconds;
        latitude += (unit(random) - 0.5) * 1e-4;
        longitude += (unit(random) - 0.5) * 1e-4;
        speedKnots = std::fabs(speedKnots + (unit(random) - 0.5));
        course = std::fmod(course + (unit(random) - 0.5) * 4.0 + 360.0, 360.0);
        altitude += unit(random) - 0.5;
    }
    std::fclose(file);
    return log;
}

} // namespace bench
