// Finding the GPS store of a video file and handing it to the reader of its family.
#include "core/embedded/EmbeddedTrackReader.h"

#include "core/Mp4Boxes.h"
#include "core/embedded/CammReader.h"
#include "core/embedded/FreeGpsReader.h"
#include "core/embedded/GpmfReader.h"
#include "core/embedded/GpsBoxReader.h"
#include "core/embedded/Mp4SampleTable.h"
#include "core/embedded/NmeaInVideoReader.h"
#include "logging/Logging.h"

namespace {

constexpr const char* kLogger = "core.EmbeddedTrackReader";
// 4 MB: an index or a track's samples read in one piece; larger ones are read piece by piece.
constexpr qint64 kMaxCachedBytes = 4 << 20;

std::optional<EmbeddedTrack> logged(std::optional<EmbeddedTrack> track, const ByteSource& source) {
    if (track)
        LOG_DEBUG(kLogger, "'{}': {} track with {} positions of {} records, {} accelerometer readings",
                  source.name().toStdString(), track->format, track->positions.size(), track->recordCount,
                  track->acceleration.size());
    return track;
}

// An NMEA log in a `gps ` box at the top level or inside a top-level `free` box.
std::optional<EmbeddedTrack> nmeaBoxAtTopLevel(const ByteSource& source, const std::vector<Mp4Box>& top) {
    for (const Mp4Box& box : top) {
        if (box.type == "gps ") {
            if (auto track = NmeaInVideoReader::readBox(source, box))
                return track;
        } else if (box.type == "free" && source.read(box.payloadOffset() + 4, 4) == "gps ") {
            for (const Mp4Box& inner : childBoxes(source, box))
                if (inner.type == "gps ")
                    if (auto track = NmeaInVideoReader::readBox(source, inner))
                        return track;
        }
    }
    return std::nullopt;
}

std::optional<EmbeddedTrack> fromMoov(const ByteSource& file, const Mp4Box& moov,
                                      const std::optional<QDateTime>& recordingStart) {
    // The index is read whole at once (a one-minute recording's is under 200 kB), the samples of a data track
    // too when they lie close together.
    CachingByteSource source(file);
    if (moov.size <= kMaxCachedBytes)
        source.cache(moov.offset, moov.size);
    const std::vector<Mp4Box> children = childBoxes(source, moov);
    if (const Mp4Box* gps = findBox(children, "gps "))
        if (auto track = FreeGpsReader::readListed(source, *gps))
            return track;
    if (const Mp4Box* udta = findBox(children, "udta"))
        for (const Mp4Box& box : childBoxes(source, *udta))
            if (box.type == "udat" || box.type == "gps ")
                if (auto track = NmeaInVideoReader::readBox(source, box))
                    return track;
    std::optional<QDateTime> start = recordingStart;
    for (const Mp4Track& track : mp4Tracks(source, moov)) {
        if (track.handler == "vide" || track.handler == "soun" || track.samples.empty())
            continue;
        const qint64 spanBegin = track.samples.front().offset;
        const qint64 spanEnd = track.samples.back().offset + track.samples.back().size;
        if (spanEnd > spanBegin && spanEnd - spanBegin <= kMaxCachedBytes)
            source.cache(spanBegin, spanEnd - spanBegin);
        std::optional<EmbeddedTrack> read;
        if (track.format == "gpmd") {
            read = GpmfReader::read(source, track);
        } else if (track.format == "camm") {
            if (!start)
                if (const qint64 created = mp4CreationTime(source, moov))
                    start = QDateTime::fromSecsSinceEpoch(created, Qt::UTC);
            read = CammReader::read(source, track, start);
        } else {
            read = NmeaInVideoReader::readTrack(source, track);
        }
        if (read)
            return read;
    }
    return std::nullopt;
}

} // namespace

std::optional<EmbeddedTrack> EmbeddedTrackReader::read(const QString& videoPath,
                                                       const std::optional<QDateTime>& recordingStart) {
    const FileByteSource source(videoPath);
    if (!source.isOpen()) {
        LOG_DEBUG(kLogger, "'{}' cannot be opened: no embedded track", videoPath.toStdString());
        return std::nullopt;
    }
    return read(source, recordingStart);
}

std::optional<EmbeddedTrack> EmbeddedTrackReader::read(const ByteSource& source,
                                                       const std::optional<QDateTime>& recordingStart) {
    const std::vector<Mp4Box> top = topLevelBoxes(source);
    if (const Mp4Box* moov = findBox(top, "moov"))
        if (auto track = fromMoov(source, *moov, recordingStart))
            return logged(std::move(track), source);
    if (const Mp4Box* gps = findBox(top, "GPS "))
        if (auto track = GpsBoxReader::read(source, *gps, recordingStart))
            return logged(std::move(track), source);
    if (auto track = nmeaBoxAtTopLevel(source, top))
        return logged(std::move(track), source);
    for (const Mp4Box& box : top)
        if (box.type == "mdat")
            if (auto track = FreeGpsReader::scan(source, box))
                return logged(std::move(track), source);
    LOG_DEBUG(kLogger, "'{}': no embedded GPS track of a known format", source.name().toStdString());
    return std::nullopt;
}
