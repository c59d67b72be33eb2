// Local date-times to epoch milliseconds with a cached zone offset.
#include "ui/EpochClock.h"

namespace {
constexpr qint64 kMsPerDay = 24 * 60 * 60 * 1000;
constexpr qint64 kEpochJulianDay = 2440588; // 1970-01-01

// A local date-time's own reading of the clock; date() and time() read it without asking the zone.
qint64 wallClockMs(const QDateTime& dateTime) {
    return (dateTime.date().toJulianDay() - kEpochJulianDay) * kMsPerDay + dateTime.time().msecsSinceStartOfDay();
}
} // namespace

qint64 EpochClock::millisecondsOf(const QDateTime& dateTime) {
    if (dateTime.timeSpec() != Qt::LocalTime || !dateTime.isValid())
        return dateTime.toMSecsSinceEpoch();
    const qint64 wall = wallClockMs(dateTime);
    // Cheap for date-times made from epoch time (as play makes them): they know their daylight status.
    const bool daylight = dateTime.isDaylightTime();
    if (m_hasWindow && daylight == m_windowDaylight && wall >= m_windowStart && wall < m_windowEnd)
        return wall - m_offsetMs;

    const qint64 exact = dateTime.toMSecsSinceEpoch();
    const qint64 offset = wall - exact;
    const QDateTime windowEnd = QDateTime::fromMSecsSinceEpoch(exact + kWindowMs);
    m_hasWindow = wallClockMs(windowEnd) - (exact + kWindowMs) == offset && windowEnd.isDaylightTime() == daylight;
    m_windowDaylight = daylight;
    m_windowStart = wall;
    m_windowEnd = wall + kWindowMs;
    m_offsetMs = offset;
    return exact;
}
