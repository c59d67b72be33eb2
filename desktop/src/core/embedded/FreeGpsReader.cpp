// GPS records of the "freeGPS " family, listed by a moov `gps ` box or found in mdat.
#include "core/embedded/FreeGpsReader.h"

#include "logging/Logging.h"

#include <cstring>

namespace {

constexpr const char* kLogger = "core.FreeGpsReader";
constexpr char kMagic[] = "freeGPS ";
constexpr int kMagicOffset = 4;
// The largest record layout ends before 0x90; a block is read this far only, never its padding.
constexpr int kRecordBytes = 0x90;
// Cameras without a list write the first block within the first 2 MB of mdat; a file that has none there is
// not scanned further, so a card of videos without GPS is not read whole.
constexpr qint64 kScanProbeBytes = 2 << 20;
// Scanning reads mdat in pieces of this size.
constexpr qint64 kScanChunkBytes = 1 << 20;

using embedded::littleEndian;
using embedded::littleEndianDouble;
using embedded::littleEndianFloat;

bool isLetter(char c, const char* allowed) { return c != 0 && std::strchr(allowed, c) != nullptr; }

struct Fields {
    int year, month, day, hour, minute, second;
    char status, latitudeRef, longitudeRef;
    double latitude, longitude; // degrees*100+minutes
    std::optional<double> knots, course;
};

std::optional<TrackPosition> positionOf(const Fields& f) {
    if (f.status != 'A')
        return std::nullopt;
    const int year = f.year < 2000 ? f.year + 2000 : f.year;
    const std::optional<TrackTime> time = embedded::utcTrackTime(year, f.month, f.day, f.hour, f.minute, f.second);
    if (!time)
        return std::nullopt;
    TrackPosition position;
    position.time = *time;
    position.latitude = embedded::degreesFromDegreesMinutes(f.latitude) * (f.latitudeRef == 'S' ? -1 : 1);
    position.longitude = embedded::degreesFromDegreesMinutes(f.longitude) * (f.longitudeRef == 'W' ? -1 : 1);
    if (!embedded::isFiniteCoordinate(position.latitude, position.longitude))
        return std::nullopt;
    if (f.knots)
        position.speed = *f.knots * 1.852;
    position.course = f.course;
    return position;
}

AccelerationSample accelerationOf(const QByteArray& block, int offset, double perG) {
    return {0.0, littleEndian<qint32>(block, offset) / perG, littleEndian<qint32>(block, offset + 4) / perG,
            littleEndian<qint32>(block, offset + 8) / perG};
}

} // namespace

std::optional<FreeGpsReader::Record> FreeGpsReader::decode(const QByteArray& block) {
    if (block.size() < 0x5c || std::memcmp(block.constData() + kMagicOffset, kMagic, 8) != 0)
        return std::nullopt;
    const char* b = block.constData();
    const auto u32 = [&](int offset) { return static_cast<int>(littleEndian<quint32>(block, offset)); };
    Record record;
    Fields f{};
    if (block.size() >= 0x88 && (b[0x3c] == 'A' || b[0x3c] == 'V') && b[0x3d] == 0 &&
        isLetter(b[0x48], "NS") && b[0x49] == 0 && isLetter(b[0x58], "EW") && b[0x59] == 0) {
        // Double record.
        f = {u32(0x70), u32(0x74), u32(0x78), u32(0x30), u32(0x34), u32(0x38), b[0x3c], b[0x48], b[0x58],
             littleEndianDouble(block, 0x40), littleEndianDouble(block, 0x50), littleEndianDouble(block, 0x60),
             littleEndianDouble(block, 0x68)};
        record.acceleration = accelerationOf(block, 0x7c, 1000.0);
    } else if ((b[0x28] == 'A' || b[0x28] == 'V') && b[0x25] == 0 && b[0x26] == 0 && b[0x27] == 0 &&
               isLetter(b[0x29], "NS") && isLetter(b[0x2a], "EW")) {
        // Compact record.
        f = {u32(0x1c), u32(0x20), u32(0x24), u32(0x10), u32(0x14), u32(0x18), b[0x28], b[0x29], b[0x2a],
             littleEndianFloat(block, 0x2c), littleEndianFloat(block, 0x30), littleEndianFloat(block, 0x34),
             littleEndianFloat(block, 0x38)};
        static const char kNoSensor[12] = {1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0};
        static const char kZeros[12] = {};
        if (std::memcmp(b + 0x3c, kNoSensor, 12) != 0 && std::memcmp(b + 0x3c, kZeros, 12) != 0)
            record.acceleration = accelerationOf(block, 0x3c, 256.0);
    } else if (b[0x48] == 'V' || (b[0x48] == 'A' && isLetter(b[0x49], "NS") && isLetter(b[0x4a], "EW"))) {
        // Plain record.
        f = {u32(0x3c), u32(0x40), u32(0x44), u32(0x30), u32(0x34), u32(0x38), b[0x48], b[0x49], b[0x4a],
             littleEndianFloat(block, 0x4c), littleEndianFloat(block, 0x50), littleEndianFloat(block, 0x54),
             littleEndianFloat(block, 0x58)};
    } else {
        return std::nullopt;
    }
    record.fix = positionOf(f);
    return record;
}

namespace {
void addRecord(FixSequence& sequence, double seconds, const FreeGpsReader::Record& record) {
    sequence.add(seconds, record.fix);
    if (record.acceleration) {
        AccelerationSample sample = *record.acceleration;
        sample.seconds = seconds;
        sequence.addAcceleration(sample);
    }
}
} // namespace

std::optional<EmbeddedTrack> FreeGpsReader::readListed(const ByteSource& source, const Mp4Box& gpsBox) {
    const QByteArray list = source.read(gpsBox.payloadOffset(), gpsBox.payloadSize());
    const quint32 listed = embedded::bigEndian<quint32>(list, 4);
    const quint32 count = std::min<quint32>(listed, static_cast<quint32>(std::max(0, (list.size() - 8) / 8)));
    FixSequence sequence("freeGPS");
    bool known = false;
    for (quint32 i = 0; i < count; ++i) {
        const qint64 offset = embedded::bigEndian<quint32>(list, 8 + int(i) * 8);
        const qint64 size = embedded::bigEndian<quint32>(list, 12 + int(i) * 8);
        if (offset == 0 && size == 0)
            continue; // an unused slot of a list the camera sized in advance
        if (offset + size > source.size()) {
            LOG_WARN(kLogger, "'{}': freeGPS block {} at offset {} runs past the end of the file; positions end there",
                     source.name().toStdString(), i, offset);
            break;
        }
        const std::optional<Record> record = decode(source.read(offset, std::min<qint64>(size, kRecordBytes)));
        if (!record) {
            if (!known) {
                LOG_TRACE(kLogger, "'{}': freeGPS block at offset {} has a layout not known here",
                          source.name().toStdString(), offset);
                return std::nullopt;
            }
            LOG_WARN(kLogger, "'{}': damaged freeGPS block {} at offset {}; positions end there",
                     source.name().toStdString(), i, offset);
            break;
        }
        known = true;
        addRecord(sequence, i, *record);
    }
    if (!known)
        return std::nullopt;
    return sequence.take();
}

std::optional<EmbeddedTrack> FreeGpsReader::scan(const ByteSource& source, const Mp4Box& mdat) {
    FixSequence sequence("freeGPS");
    const QByteArray magic(kMagic);
    qint64 position = mdat.payloadOffset();
    const qint64 end = mdat.end();
    int index = 0;
    while (position < end) {
        if (index == 0 && position - mdat.payloadOffset() >= kScanProbeBytes)
            break;
        const QByteArray chunk = source.read(position, std::min(kScanChunkBytes, end - position));
        if (chunk.size() < 12)
            break;
        const int at = chunk.indexOf(magic);
        if (at < 0) {
            if (position + chunk.size() >= end)
                break;
            // The pieces overlap by the magic's length, so that a magic across their border is found.
            position += chunk.size() - (magic.size() + kMagicOffset);
            continue;
        }
        const qint64 blockOffset = position + at - kMagicOffset;
        const QByteArray block = source.read(blockOffset, kRecordBytes);
        const std::optional<Record> record = decode(block);
        if (record)
            addRecord(sequence, index++, *record);
        else if (block.size() < kRecordBytes && index > 0)
            LOG_WARN(kLogger, "'{}': freeGPS block at offset {} is cut short", source.name().toStdString(), blockOffset);
        const qint64 size = embedded::bigEndian<quint32>(block, 0);
        position = blockOffset + std::max<qint64>(size, kMagicOffset + magic.size());
    }
    if (index == 0)
        return std::nullopt;
    return sequence.take();
}
