// GPS and accelerometer packets of a camera motion metadata track.
#include "core/embedded/CammReader.h"

#include "logging/Logging.h"

#include <cmath>

namespace {

constexpr const char* kLogger = "core.CammReader";
constexpr double kStandardGravity = 9.80665; // m/s^2 in one g
// 1980-01-06 00:00:00 UTC, the GPS epoch, in seconds since 1970.
constexpr std::int64_t kGpsEpoch = 315964800;
// GPS time runs ahead of UTC by the leap seconds since 1980: 18 since 2017-01-01, none announced since.
constexpr std::int64_t kGpsLeapSeconds = 18;
constexpr double kPi = 3.14159265358979323846;

using embedded::littleEndian;
using embedded::littleEndianDouble;
using embedded::littleEndianFloat;

} // namespace

std::optional<EmbeddedTrack> CammReader::read(const ByteSource& source, const Mp4Track& track,
                                              const std::optional<QDateTime>& recordingStart) {
    FixSequence sequence("CAMM");
    bool warned = false;
    for (const Mp4Sample& where : track.samples) {
        const QByteArray packet = source.read(where.offset, std::min<qint64>(where.size, 64));
        const quint16 type = littleEndian<quint16>(packet, 2);
        const auto tooShort = [&](int bytes) {
            if (packet.size() >= bytes)
                return false;
            if (!warned)
                LOG_WARN(kLogger, "'{}': CAMM packet of type {} at offset {} is cut short; skipped",
                         source.name().toStdString(), type, where.offset);
            warned = true;
            return true;
        };
        if (type == 3) {
            if (tooShort(16))
                continue;
            sequence.addAcceleration({where.seconds, littleEndianFloat(packet, 4) / kStandardGravity,
                                      littleEndianFloat(packet, 8) / kStandardGravity,
                                      littleEndianFloat(packet, 12) / kStandardGravity});
        } else if (type == 5) {
            if (tooShort(28))
                continue;
            std::optional<TrackPosition> fix;
            if (recordingStart) {
                TrackPosition position;
                position.time = trackTimeFromSeconds(recordingStart->toSecsSinceEpoch() +
                                                     static_cast<std::int64_t>(std::floor(where.seconds)));
                position.latitude = littleEndianDouble(packet, 4);
                position.longitude = littleEndianDouble(packet, 12);
                position.altitude = littleEndianDouble(packet, 20);
                if (embedded::isFiniteCoordinate(position.latitude, position.longitude))
                    fix = position;
            }
            sequence.add(where.seconds, fix);
        } else if (type == 6) {
            if (tooShort(60))
                continue;
            const double gpsSeconds = littleEndianDouble(packet, 4);
            const qint32 fixType = littleEndian<qint32>(packet, 12);
            std::optional<TrackPosition> fix;
            if (fixType >= 2 && std::isfinite(gpsSeconds) && gpsSeconds > 0 && gpsSeconds < 1e11) {
                TrackPosition position;
                position.time = trackTimeFromSeconds(kGpsEpoch - kGpsLeapSeconds +
                                                     static_cast<std::int64_t>(std::floor(gpsSeconds)));
                position.latitude = littleEndianDouble(packet, 16);
                position.longitude = littleEndianDouble(packet, 24);
                position.altitude = littleEndianFloat(packet, 32);
                const double east = littleEndianFloat(packet, 44);
                const double north = littleEndianFloat(packet, 48);
                position.speed = std::hypot(east, north) * 3.6;
                double course = std::atan2(east, north) * 180.0 / kPi;
                if (course < 0)
                    course += 360.0;
                position.course = course;
                if (embedded::isFiniteCoordinate(position.latitude, position.longitude))
                    fix = position;
            }
            sequence.add(where.seconds, fix);
        }
    }
    if (sequence.empty()) {
        LOG_TRACE(kLogger, "'{}': the CAMM track holds no GPS or accelerometer packets", source.name().toStdString());
        return std::nullopt;
    }
    return sequence.take();
}
