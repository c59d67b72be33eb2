// GPS and accelerometer packets of a camera motion metadata track (sample entry "camm").
#pragma once

#include "core/ByteSource.h"
#include "core/embedded/EmbeddedTrack.h"
#include "core/embedded/Mp4SampleTable.h"

#include <QDateTime>

#include <optional>

// Layout. Each sample is one packet, little-endian: a 16-bit reserved field (0), a 16-bit packet type, then
// the type's fields. Those read here:
//  - 3: acceleration, three floats in m/s^2 (2, the gyroscope, is skipped);
//  - 5: latitude, longitude (degrees) and altitude (m) as doubles, with no time: the packet's time is the
//    recording's start plus the sample's time in the track;
//  - 6: a full fix: time since the GPS epoch (1980-01-06) as a double, a 32-bit fix type (0 none, 2 2D,
//    3 3D), latitude and longitude doubles, then floats: altitude, horizontal and vertical accuracy (m),
//    velocity east, north and up (m/s), speed accuracy.
class CammReader {
public:
    // Type 5 packets give positions only with a start time (the name's, else the file's creation time).
    static std::optional<EmbeddedTrack> read(const ByteSource& source, const Mp4Track& track,
                                             const std::optional<QDateTime>& recordingStart);
};
