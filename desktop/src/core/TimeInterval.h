// An interval of recording time, in the local wall-clock time of the recordings.
#pragma once

#include <QDateTime>

struct TimeInterval {
    QDateTime from;
    QDateTime to;
};
