// GPS and accelerometer readings of a GPMF metadata track (sample entry "gpmd").
#pragma once

#include "core/ByteSource.h"
#include "core/embedded/EmbeddedTrack.h"
#include "core/embedded/Mp4SampleTable.h"

#include <optional>

// Layout. Each sample (about a second) is a list of key-length-value items, big-endian: a four-character
// key, a type character, the size of one element in bytes, and a 16-bit count of elements; the value follows,
// padded to a multiple of 4 bytes. Type 0 marks a nested list. A DEVC (device) holds STRM (stream) lists;
// within a stream, SCAL gives the divisors of the values that follow it (one for all, or one per field), and
// TYPE describes the fields of a structure of mixed types. GPS streams carry:
//  - GPS5: per fix latitude, longitude (degrees), altitude (m), 2D and 3D speed (m/s), signed 32-bit each,
//    with GPSU (the UTC time of the first fix, "yymmddhhmmss.sss"), GPSF (fix: 0 none, 2 2D, 3 3D) and
//    GPSP (dilution of precision times 100) for the whole sample;
//  - GPS9: per fix the five values of GPS5, then days since 2000-01-01, seconds since midnight, DOP and fix
//    (TYPE "lllllllSS"), so each fix has a time of its own.
// ACCL holds the accelerometer: three signed 16-bit values per reading, in m/s^2 after SCAL.
class GpmfReader {
public:
    // A length that runs past its sample ends that sample with a WARN (file and offset); what was read stays.
    static std::optional<EmbeddedTrack> read(const ByteSource& source, const Mp4Track& track);
};
