// Time marks along a track, found with one forward-moving cursor.
#include "ui/TimeMarks.h"

#include "ui/TrackCursor.h"

std::vector<MapPoint> timeMarksAlong(const TrackPositions& track, int stepSeconds) {
    std::vector<MapPoint> marks;
    if (stepSeconds <= 0 || track.empty())
        return marks;
    const std::int64_t first = trackTimeToSeconds(track.front().time);
    const std::int64_t last = trackTimeToSeconds(track.back().time);
    TrackCursor cursor(&track);
    for (std::int64_t t = first; t <= last; t += stepSeconds)
        marks.push_back(cursor.pointAt(static_cast<double>(t)));
    return marks;
}
