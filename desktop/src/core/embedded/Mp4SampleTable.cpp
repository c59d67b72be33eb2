// Reading the sample tables of data tracks: where each sample lies, how long it is, and when it plays.
#include "core/embedded/Mp4SampleTable.h"

#include "core/embedded/EmbeddedTrack.h"
#include "logging/Logging.h"

#include <algorithm>

namespace {

constexpr const char* kLogger = "core.Mp4SampleTable";
// 1 MB of table: a day of one-second samples needs under 700 kB; beyond this the box is taken as damaged.
constexpr qint64 kMaxTableBytes = 1 << 20;
// Seconds between 1904-01-01 (QuickTime's epoch) and 1970-01-01.
constexpr qint64 kQuickTimeEpochOffset = 2082844800;

using embedded::bigEndian;

QByteArray payloadOf(const ByteSource& source, const Mp4Box* box) {
    if (!box || box->payloadSize() > kMaxTableBytes)
        return {};
    return source.read(box->payloadOffset(), box->payloadSize());
}

// A full box's entry count, limited to what its payload can hold.
quint32 entryCount(const QByteArray& payload, int entryBytes, int firstEntry = 8) {
    const quint32 count = bigEndian<quint32>(payload, 4);
    const int room = std::max(0, (payload.size() - firstEntry) / entryBytes);
    return std::min<quint32>(count, static_cast<quint32>(room));
}

std::vector<Mp4Sample> readSamples(const ByteSource& source, const std::vector<Mp4Box>& stbl, quint32 timescale) {
    std::vector<Mp4Sample> samples;
    const QByteArray stsz = payloadOf(source, findBox(stbl, "stsz"));
    const QByteArray stsc = payloadOf(source, findBox(stbl, "stsc"));
    const Mp4Box* co64Box = findBox(stbl, "co64");
    const QByteArray chunks = payloadOf(source, co64Box ? co64Box : findBox(stbl, "stco"));
    const QByteArray stts = payloadOf(source, findBox(stbl, "stts"));
    if (stsz.size() < 12 || stsc.size() < 8 || chunks.size() < 8)
        return samples;

    // Sizes: one for all, or one each.
    const quint32 fixedSize = bigEndian<quint32>(stsz, 4);
    quint32 sampleCount = bigEndian<quint32>(stsz, 8);
    if (fixedSize == 0)
        sampleCount = std::min<quint32>(sampleCount, static_cast<quint32>((stsz.size() - 12) / 4));
    const auto sizeOf = [&](quint32 i) { return fixedSize ? fixedSize : bigEndian<quint32>(stsz, 12 + int(i) * 4); };

    const int chunkEntry = co64Box ? 8 : 4;
    const quint32 chunkCount = entryCount(chunks, chunkEntry);
    const auto chunkOffset = [&](quint32 i) -> qint64 {
        return co64Box ? static_cast<qint64>(bigEndian<quint64>(chunks, 8 + int(i) * 8))
                       : bigEndian<quint32>(chunks, 8 + int(i) * 4);
    };

    // stsc: runs of chunks with the same number of samples each.
    const quint32 runs = entryCount(stsc, 12);
    quint32 sample = 0;
    for (quint32 run = 0; run < runs && sample < sampleCount; ++run) {
        const quint32 firstChunk = bigEndian<quint32>(stsc, 8 + int(run) * 12);
        const quint32 perChunk = bigEndian<quint32>(stsc, 12 + int(run) * 12);
        const quint32 nextFirst = run + 1 < runs ? bigEndian<quint32>(stsc, 8 + int(run + 1) * 12) : chunkCount + 1;
        if (firstChunk == 0 || perChunk == 0)
            break;
        for (quint32 chunk = firstChunk; chunk < nextFirst && chunk <= chunkCount && sample < sampleCount; ++chunk) {
            qint64 offset = chunkOffset(chunk - 1);
            for (quint32 k = 0; k < perChunk && sample < sampleCount; ++k, ++sample) {
                const qint64 size = sizeOf(sample);
                if (offset < 0 || size > source.size() || offset > source.size() - size) {
                    LOG_WARN(kLogger, "'{}': sample {} at offset {} runs past the end of the file; the track ends there",
                             source.name().toStdString(), sample, offset);
                    sampleCount = sample;
                    break;
                }
                samples.push_back({offset, size, 0.0, 0.0});
                offset += size;
            }
        }
    }

    // stts: runs of samples with the same duration.
    if (timescale > 0 && stts.size() >= 8) {
        const quint32 timeRuns = entryCount(stts, 8);
        std::size_t i = 0;
        quint64 ticks = 0;
        for (quint32 run = 0; run < timeRuns && i < samples.size(); ++run) {
            const quint32 count = bigEndian<quint32>(stts, 8 + int(run) * 8);
            const quint32 delta = bigEndian<quint32>(stts, 12 + int(run) * 8);
            for (quint32 k = 0; k < count && i < samples.size(); ++k, ++i) {
                samples[i].seconds = double(ticks) / timescale;
                samples[i].duration = double(delta) / timescale;
                ticks += delta;
            }
        }
    }
    return samples;
}

} // namespace

std::vector<Mp4Track> mp4Tracks(const ByteSource& source, const Mp4Box& moov) {
    std::vector<Mp4Track> tracks;
    for (const Mp4Box& trak : childBoxes(source, moov)) {
        if (trak.type != "trak")
            continue;
        const std::vector<Mp4Box> trakChildren = childBoxes(source, trak);
        const Mp4Box* mdia = findBox(trakChildren, "mdia");
        if (!mdia)
            continue;
        const std::vector<Mp4Box> mdiaChildren = childBoxes(source, *mdia);
        Mp4Track track;
        const QByteArray hdlr = payloadOf(source, findBox(mdiaChildren, "hdlr"));
        track.handler = hdlr.mid(8, 4);
        const QByteArray mdhd = payloadOf(source, findBox(mdiaChildren, "mdhd"));
        const quint32 timescale = bigEndian<quint32>(mdhd, mdhd.startsWith('\x01') ? 20 : 12);
        const Mp4Box* minf = findBox(mdiaChildren, "minf");
        const std::vector<Mp4Box> minfChildren = minf ? childBoxes(source, *minf) : std::vector<Mp4Box>{};
        const Mp4Box* stbl = findBox(minfChildren, "stbl");
        const std::vector<Mp4Box> stblChildren = stbl ? childBoxes(source, *stbl) : std::vector<Mp4Box>{};
        if (const Mp4Box* stsd = findBox(stblChildren, "stsd"))
            track.format = source.read(stsd->payloadOffset() + 12, 4);
        if (track.handler != "vide" && track.handler != "soun")
            track.samples = readSamples(source, stblChildren, timescale);
        tracks.push_back(std::move(track));
    }
    return tracks;
}

qint64 mp4CreationTime(const ByteSource& source, const Mp4Box& moov) {
    const QByteArray mvhd = payloadOf(source, findBox(childBoxes(source, moov), "mvhd"));
    const qint64 since1904 = mvhd.startsWith('\x01') ? static_cast<qint64>(bigEndian<quint64>(mvhd, 4))
                                                     : bigEndian<quint32>(mvhd, 4);
    return since1904 > kQuickTimeEpochOffset ? since1904 - kQuickTimeEpochOffset : 0;
}
