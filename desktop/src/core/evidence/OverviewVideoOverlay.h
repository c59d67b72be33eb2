// The text burned into every picture of the overview video: local time with its UTC offset, speed,
// heading and position.
#pragma once

#include "core/Playlist.h"
#include "core/TimeInterval.h"
#include "core/TrackPosition.h"
#include "core/evidence/EvidenceSummary.h"

#include <QDateTime>
#include <QString>

namespace evidence {

// The fixes of the items' tracks from the interval's first second to its last, in time order.
TrackPositions trackIn(const Playlist::RawItems& items, const TimeInterval& interval);

// The speed unit of the user's locale: mph where miles are the custom, km/h elsewhere.
SpeedUnit localeSpeedUnit();

// The fix in force at a moment: the last one at or before it, while it is less than kFixLifeSeconds old;
// nullptr when there is none (before the first fix, or the receiver lost it). The track is in time order.
const TrackPosition* fixInForce(const TrackPositions& track, const QDateTime& time);

// Three lines, for example
//   "2024-05-01 10:00:05 UTC+03:00"
//   "52 km/h  270° W"
//   "55.751230° N  37.612340° E"
// A missing speed or heading shows as "--"; without a fix the last two lines are replaced by `noFix`.
QString overlayText(const QDateTime& time, const TrackPosition* fix, SpeedUnit unit,
                    const QString& noFix = QStringLiteral("no GPS fix"));

// "UTC+03:00", "UTC-04:30" for the moment's offset from UTC.
QString utcOffsetText(const QDateTime& time);

// The eight-point compass name of a heading in degrees: 0 "N", 45 "NE", ..., 315 "NW".
QString compassPoint(double degrees);

} // namespace evidence
