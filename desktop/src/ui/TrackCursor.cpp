// Cursor search and interpolation along a track.
#include "ui/TrackCursor.h"

#include <algorithm>
#include <cmath>

void TrackCursor::reset(const TrackPositions* track) {
    m_track = track;
    m_index = track ? track->size() : 0;
    m_lastSearch = Search::None;
}

std::size_t TrackCursor::seek(double t) {
    const TrackPositions& track = *m_track;
    const auto earlierThanT = [](const TrackPosition& position, double time) { return mapSeconds(position) < time; };
    std::size_t found;
    if (m_index >= track.size() || t < mapSeconds(track[m_index]) || t > mapSeconds(track[m_index]) + kMaxScanSeconds) {
        m_lastSearch = Search::Binary;
        found = static_cast<std::size_t>(std::lower_bound(track.begin(), track.end(), t, earlierThanT) - track.begin());
    } else {
        m_lastSearch = Search::Scan;
        found = m_index;
        while (found < track.size() && mapSeconds(track[found]) < t)
            ++found;
    }
    // "First not earlier than t" becomes "last at or before t".
    if (found > 0)
        --found;
    m_index = found;
    return found;
}

MapPoint TrackCursor::pointAt(double t) {
    const std::size_t index = seek(t);
    const TrackPositions& track = *m_track;
    if (index + 1 == track.size()) {
        const TrackPosition& last = track[index];
        return {mapSeconds(last), last.longitude, last.latitude, last.course.value_or(0.0)};
    }
    return interpolate(track[index], track[index + 1], t);
}

MapPoint TrackCursor::interpolate(const TrackPosition& a, const TrackPosition& b, double t) {
    const double aTime = mapSeconds(a);
    const double bTime = mapSeconds(b);
    MapPoint point;
    if (aTime == bTime) {
        point = {aTime, a.longitude, a.latitude, {}};
    } else {
        const double f = std::clamp((t - aTime) / (bTime - aTime), 0.0, 1.0);
        point = {t, a.longitude + f * (b.longitude - a.longitude), a.latitude + f * (b.latitude - a.latitude), {}};
    }
    // Bearing on plain coordinates: good enough to turn a marker, and it needs no course in the log.
    point.heading = a.course ? *a.course
                             : std::atan2(b.longitude - a.longitude, b.latitude - a.latitude) * 180.0 / M_PI;
    return point;
}
