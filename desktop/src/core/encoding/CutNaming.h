// Names and values the main window derives for a cut: the proposed file, the track beside it, the rotation.
#pragma once

#include "core/TimeInterval.h"

#include <QString>

namespace encoding {

// "dvr-" + start + "-" + end (both "yyyyMMddTHHmmss") + "." + extension, e.g. dvr-20240614T090000-20240614T090500.mp4
inline QString proposedCutFileName(const TimeInterval& interval, const QString& extension) {
    const QString format = QStringLiteral("yyyyMMddTHHmmss");
    return QStringLiteral("dvr-%1-%2.%3").arg(interval.from.toString(format), interval.to.toString(format), extension);
}

// The NMEA copy of the cut's track: same folder and base name as the video, extension ".nmea".
QString trackFileBeside(const QString& videoPath);

// EncodingSettings::rotation from a camera view's orientation in degrees: 90 -> 1, 180 -> 2, 270 -> 3, else 0.
inline int rotationFromOrientation(int degrees) {
    switch (degrees) {
    case 90: return 1;
    case 180: return 2;
    case 270: return 3;
    default: return 0;
    }
}

} // namespace encoding
