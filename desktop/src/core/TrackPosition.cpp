#include "core/TrackPosition.h"

#include <cmath>

TrackTime makeTrackTime(const QDate& utcDate, int hour, int minute, double seconds) {
    const std::int64_t midnight = QDateTime(utcDate, QTime(0, 0), Qt::UTC).toSecsSinceEpoch();
    const auto wholeSeconds = static_cast<std::int64_t>(std::trunc(seconds));
    return (midnight + hour * 3600 + minute * 60 + wholeSeconds) * kTrackTicksPerSecond;
}

QDateTime trackTimeToDateTime(TrackTime time) {
    return QDateTime::fromSecsSinceEpoch(trackTimeToSeconds(time), Qt::UTC).toLocalTime();
}
