// An interval of time on the recordings' time line: a cut, a track export, a cycle-play loop.
#pragma once

#include <QDateTime>

// Both ends in local wall-clock time of the recordings, as the playlist uses them.
struct TimeInterval {
    QDateTime from;
    QDateTime to;
};
