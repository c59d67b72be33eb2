// bench-nmea-generate FILE [MEGABYTES]: writes a realistic NMEA log (default 120 MB) for the parser benchmarks.
#include "NmeaLogGenerator.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "Usage: bench-nmea-generate FILE [MEGABYTES]\n");
        return 2;
    }
    const double megabytes = argc > 2 ? std::atof(argv[2]) : 120.0;
    const auto log = bench::writeNmeaLog(argv[1], static_cast<std::uint64_t>(megabytes * 1e6));
    if (log.bytes == 0) {
        std::fprintf(stderr, "Cannot write %s\n", argv[1]);
        return 1;
    }
    std::printf("wrote %s: %.1f MB, %llu fixes, %llu corrupt lines\n", argv[1], log.bytes / 1e6,
                static_cast<unsigned long long>(log.seconds), static_cast<unsigned long long>(log.corruptLines));
    return 0;
}
