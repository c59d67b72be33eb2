// A GPS track read out of a video file: collecting fixes, and the conversions the readers share.
#include "core/embedded/EmbeddedTrack.h"

#include <cmath>

void FixSequence::add(double videoSeconds, std::optional<TrackPosition> fix) {
    const auto second = static_cast<std::int64_t>(std::floor(videoSeconds));
    if (!m_lastSecond || second != *m_lastSecond) {
        ++m_track.recordCount;
        m_lastSecond = second;
    }
    if (!fix)
        return;
    TrackPositions& positions = m_track.positions;
    if (!positions.empty() && fix->time <= positions.back().time)
        return;
    fix->sentenceNumber = m_track.recordCount - 1;
    positions.push_back(*fix);
}

namespace embedded {

double degreesFromDegreesMinutes(double value) {
    const double magnitude = std::fabs(value);
    const double degrees = std::floor(magnitude / 100.0);
    const double result = degrees + (magnitude - degrees * 100.0) / 60.0;
    return value < 0 ? -result : result;
}

std::optional<TrackTime> utcTrackTime(int year, int month, int day, int hour, int minute, double seconds) {
    // Years a receiver can report; beyond them the ticks of a track time would overflow.
    if (year < 1970 || year > 2200)
        return std::nullopt;
    const QDate date(year, month, day);
    if (!date.isValid() || hour < 0 || hour > 23 || minute < 0 || minute > 59 || !(seconds >= 0.0) || seconds >= 61.0)
        return std::nullopt;
    return makeTrackTime(date, hour, minute, seconds);
}

bool isFiniteCoordinate(double latitude, double longitude) {
    return std::isfinite(latitude) && std::isfinite(longitude) && std::fabs(latitude) <= 90.0 &&
           std::fabs(longitude) <= 180.0;
}

} // namespace embedded
