// Reads the start time of a recording from its file name (the names recorders give their files).
#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

// The local start time written in a video file name, or nothing when the name matches none of the
// recorder patterns, a field does not convert, or the date lies 18250 days (fifty years) or more from
// `now`. Recognised forms, tried in this order:
//   DVR-2021-03-07_14-05-09...   FILE210307-140509... (also EMER, PARK)   2021_0307_140509...
std::optional<QDateTime> startTimeFromFileName(const QString& fileName,
                                               const QDateTime& now = QDateTime::currentDateTime());
