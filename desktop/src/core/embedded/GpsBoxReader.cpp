// A top-level `GPS ` box of fixed-size records dated by the recording's start.
#include "core/embedded/GpsBoxReader.h"

#include "logging/Logging.h"

namespace {
constexpr const char* kLogger = "core.GpsBoxReader";
constexpr int kRecordBytes = 36;
// 4 MB: a day of one-second records is 3.1 MB.
constexpr qint64 kMaxBoxBytes = 4 << 20;
} // namespace

std::optional<EmbeddedTrack> GpsBoxReader::read(const ByteSource& source, const Mp4Box& box,
                                                const std::optional<QDateTime>& recordingStart) {
    using embedded::littleEndian;
    const QByteArray payload = source.read(box.payloadOffset(), std::min(box.payloadSize(), kMaxBoxBytes));
    FixSequence sequence("GPS box");
    const QByteArray empty(kRecordBytes, '\0');
    const qint64 start = recordingStart ? recordingStart->toSecsSinceEpoch() : 0;
    if (!recordingStart)
        LOG_DEBUG(kLogger, "'{}': the GPS box carries no date and the name gives no start: no positions",
                  source.name().toStdString());
    int at = 0;
    for (; at + kRecordBytes <= payload.size(); at += kRecordBytes) {
        const QByteArray record = payload.mid(at, kRecordBytes);
        if (record == empty)
            break;
        const char latitudeRef = record[0x10];
        const char longitudeRef = record[0x15];
        const quint32 second = littleEndian<quint32>(record, 0x08);
        if ((latitudeRef != 'N' && latitudeRef != 'S') || (longitudeRef != 'E' && longitudeRef != 'W')) {
            sequence.add(second, std::nullopt); // no fix in this second
            continue;
        }
        std::optional<TrackPosition> fix;
        if (recordingStart) {
            TrackPosition position;
            position.time = trackTimeFromSeconds(start + second);
            position.latitude = embedded::degreesFromDegreesMinutes(littleEndian<quint32>(record, 0x11) / 1000.0);
            position.longitude = embedded::degreesFromDegreesMinutes(littleEndian<quint32>(record, 0x16) / 1000.0);
            if (latitudeRef == 'S')
                position.latitude = -position.latitude;
            if (longitudeRef == 'W')
                position.longitude = -position.longitude;
            position.speed = littleEndian<quint32>(record, 0x0c) / 1000.0;
            if (embedded::isFiniteCoordinate(position.latitude, position.longitude))
                fix = position;
        }
        sequence.add(second, fix);
    }
    if (box.cutShort || (at < payload.size() && at + kRecordBytes > payload.size() && payload.size() - at > 0 &&
                         payload.mid(at) != QByteArray(payload.size() - at, '\0')))
        LOG_WARN(kLogger, "'{}': GPS box at offset {} ends inside a record; the records before it are read",
                 source.name().toStdString(), box.offset);
    if (sequence.empty())
        return std::nullopt;
    return sequence.take();
}
