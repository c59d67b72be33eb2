// NMEA 0183 sentences stored inside a video: in a timed text or data track, or in a box of their own.
#pragma once

#include "core/ByteSource.h"
#include "core/Mp4Boxes.h"
#include "core/embedded/EmbeddedTrack.h"
#include "core/embedded/Mp4SampleTable.h"

#include <optional>

// Layout. A text track ("tx3g" or QuickTime "text" sample entries) stores each sample as a 16-bit big-endian
// length and that many bytes of text; a data track stores the bytes alone. Either holds one or a few
// sentences ("$GPRMC,...", "$GPGGA,...") per sample. A box variant keeps the whole log as text, each line
// led by a timestamp in square brackets ("[1623400000123]$GPRMC,..."): a `gps ` box at the top level or
// inside a top-level `free` box, or a `udat` box in moov's `udta`. Both go through the track loader's NMEA
// parser, so the fixes, the RMC count and the carrying over of fields are those of a track file.
class NmeaInVideoReader {
public:
    // A track whose samples are NMEA text; nothing when none of its first samples is.
    static std::optional<EmbeddedTrack> readTrack(const ByteSource& source, const Mp4Track& track);
    // A box whose payload is an NMEA log; nothing when it does not start like one.
    static std::optional<EmbeddedTrack> readBox(const ByteSource& source, const Mp4Box& box);
};
