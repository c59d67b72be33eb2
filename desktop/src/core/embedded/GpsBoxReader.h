// A top-level `GPS ` box of fixed-size records that carry a second offset but no date.
#pragma once

#include "core/ByteSource.h"
#include "core/Mp4Boxes.h"
#include "core/embedded/EmbeddedTrack.h"

#include <QDateTime>

#include <optional>

// Layout. The payload is a run of 36-byte records, little-endian, ended by an all-zero record or the box's
// end: 0x00 and 0x04 two 32-bit fields (1 and 1 in the files seen), 0x08 the record's second counted from
// the start of the recording, 0x0c speed in km/h times 1000, 0x10 the latitude's hemisphere letter, 0x11
// latitude times 1000 in degrees*100+minutes (32-bit), 0x15 the longitude's letter, 0x16 longitude the same
// way; the rest is unused. The date and time of day are not stored: they come from the recording's start.
class GpsBoxReader {
public:
    // Without a start time the records are counted but give no positions.
    static std::optional<EmbeddedTrack> read(const ByteSource& source, const Mp4Box& box,
                                             const std::optional<QDateTime>& recordingStart);
};
