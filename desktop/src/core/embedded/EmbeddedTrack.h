// A GPS track read out of a video file, and the pieces the per-format readers share to build one.
#pragma once

#include "core/TrackPosition.h"

#include <QByteArray>
#include <QDateTime>
#include <QtEndian>

#include <cstdint>
#include <cstring>
#include <optional>
#include <vector>

// One accelerometer reading, in g (standard gravity), at a time counted from the start of the video.
struct AccelerationSample {
    double seconds = 0.0;
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

struct EmbeddedTrack {
    const char* format = ""; // "freeGPS", "NMEA", "GPS box", "GPMF", "CAMM": for log lines and the CLI
    TrackPositions positions;
    // Records read, one a second of recording whether or not it held a fix: the counterpart of a track
    // file's RMC sentences, so that a recording that began before its first fix is timed the same way.
    std::uint32_t recordCount = 0;
    std::vector<AccelerationSample> acceleration;
};

// Collects the fixes of a format that stores one record per moment of the video. Positions keep the
// order of their times (a fix not later than the one before it is dropped), and each carries the number
// of whole video seconds that passed before the first record of its second: for a track that starts
// without a fix, the first position's number says how long the recording ran before it.
class FixSequence {
public:
    explicit FixSequence(const char* format) { m_track.format = format; }

    // A record at `videoSeconds` into the video, with or without a fix.
    void add(double videoSeconds, std::optional<TrackPosition> fix);
    void addAcceleration(const AccelerationSample& sample) { m_track.acceleration.push_back(sample); }
    bool empty() const { return m_track.recordCount == 0 && m_track.acceleration.empty(); }
    EmbeddedTrack take() { return std::move(m_track); }

private:
    EmbeddedTrack m_track;
    std::optional<std::int64_t> m_lastSecond;
};

// Little- and big-endian values at an offset of a buffer; zero where the buffer is too short (callers check
// the length of the whole record first).
namespace embedded {
template <typename T>
T littleEndian(const QByteArray& bytes, int offset) {
    if (offset < 0 || offset + int(sizeof(T)) > bytes.size())
        return T{};
    return qFromLittleEndian<T>(bytes.constData() + offset);
}
template <typename T>
T bigEndian(const QByteArray& bytes, int offset) {
    if (offset < 0 || offset + int(sizeof(T)) > bytes.size())
        return T{};
    return qFromBigEndian<T>(bytes.constData() + offset);
}
template <typename Float, typename Bits>
Float floatFromBits(Bits bits) {
    static_assert(sizeof(Float) == sizeof(Bits), "same width");
    Float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}
inline float littleEndianFloat(const QByteArray& b, int o) { return floatFromBits<float>(littleEndian<quint32>(b, o)); }
inline double littleEndianDouble(const QByteArray& b, int o) { return floatFromBits<double>(littleEndian<quint64>(b, o)); }

// Degrees from the NMEA way of writing them, degrees times 100 plus minutes (4807.038 is 48 deg 7.038 min).
double degreesFromDegreesMinutes(double value);
// A fix time from a UTC date and time; nothing when a field is out of range.
std::optional<TrackTime> utcTrackTime(int year, int month, int day, int hour, int minute, double seconds);
bool isFiniteCoordinate(double latitude, double longitude);
} // namespace embedded
