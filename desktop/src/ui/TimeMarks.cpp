// Time marks along a track, found with one forward-moving cursor.
#include "ui/TimeMarks.h"

#include "ui/TrackCursor.h"

#include <cmath>

namespace {

// A parked receiver wanders a few metres, a poor fix some more: marks closer than this to the last one shown
// belong to one stop, and their labels would cover each other at any zoom.
constexpr double kSameSpotMetres = 25.0;
// Metres per degree of latitude (and of longitude at the equator), near enough over a few metres.
constexpr double kMetresPerDegree = 111'195.0;
constexpr double kRadiansPerDegree = 0.017453292519943295;

double metresBetween(const MapPoint& a, const MapPoint& b) {
    const double north = (b.latitude - a.latitude) * kMetresPerDegree;
    const double east = (b.longitude - a.longitude) * kMetresPerDegree *
                        std::cos((a.latitude + b.latitude) / 2 * kRadiansPerDegree);
    return std::hypot(north, east);
}

} // namespace

std::vector<MapPoint> timeMarksAlong(const TrackPositions& track, int stepSeconds) {
    std::vector<MapPoint> marks;
    if (stepSeconds <= 0 || track.empty())
        return marks;
    const std::int64_t first = trackTimeToSeconds(track.front().time);
    const std::int64_t last = trackTimeToSeconds(track.back().time);
    TrackCursor cursor(&track);
    for (std::int64_t t = first; t <= last; t += stepSeconds) {
        MapPoint mark = cursor.pointAt(static_cast<double>(t));
        if (marks.empty() || metresBetween(marks.back(), mark) >= kSameSpotMetres)
            marks.push_back(mark);
    }
    return marks;
}
