// libFuzzer target: the box walk and every embedded-track reader must take any bytes without a crash, a
// hang or a sanitizer report, and give positions in strictly increasing time.
#include "core/ByteSource.h"
#include "core/embedded/EmbeddedTrackReader.h"
#include "logging/Logging.h"

#include <QDateTime>

#include <cstdio>
#include <cstdlib>

namespace {

void check(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "invariant broken: %s\n", what);
        std::abort();
    }
}

void discardLine(const std::string&) {}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Records are formatted (so the log calls are exercised) and thrown away.
    logging::setLineWriter(&discardLine);
    logging::setLevel(logging::DEBUG);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const MemoryByteSource source(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));
    // With a start time, so the stores dated by the name are read as far as their positions.
    static const QDateTime start(QDate(2024, 6, 14), QTime(6, 0), Qt::UTC);
    const std::optional<EmbeddedTrack> track = EmbeddedTrackReader::read(source, start);
    if (!track)
        return 0;
    // NMEA keeps the track loader's rules (it drops a repeated second only); the other stores are collected
    // in increasing time, each position in a counted record.
    if (track->format == std::string("NMEA"))
        return 0;
    for (std::size_t i = 1; i < track->positions.size(); ++i)
        check(track->positions[i - 1].time < track->positions[i].time, "positions in increasing time");
    for (const TrackPosition& position : track->positions)
        check(position.sentenceNumber < track->recordCount, "a position's record is one of those counted");
    return 0;
}
