// Milliseconds since the epoch of date-times in local time, cheap for a run of nearby moments.
#pragma once

#include <QDateTime>

// Turning a local date-time into epoch time asks the C library for the zone's offset, which costs
// microseconds a call. Play asks 25 times a second for moments minutes apart, so the offset found for one
// moment is reused for the quarter hour after it, once both ends of that quarter are seen to share it (clock
// changes are hours apart). Daylight and standard time keep separate answers: in the autumn's repeated hour the
// same wall-clock reading means two moments.
class EpochClock {
public:
    qint64 millisecondsOf(const QDateTime& dateTime);

private:
    // 15 minutes: no zone changes its clock twice within it.
    static constexpr qint64 kWindowMs = 15 * 60 * 1000;

    bool m_hasWindow = false;
    bool m_windowDaylight = false;
    qint64 m_windowStart = 0; // wall-clock milliseconds, as if the local reading were UTC
    qint64 m_windowEnd = 0;
    qint64 m_offsetMs = 0;    // wall clock minus epoch time
};
