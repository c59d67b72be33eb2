// GPS records of the "freeGPS " family: one `free` box a second, written into the media data.
#pragma once

#include "core/ByteSource.h"
#include "core/Mp4Boxes.h"
#include "core/embedded/EmbeddedTrack.h"

#include <QByteArray>

#include <optional>

// Layout. Each second the camera writes a box of type `free` (commonly 16 or 32 kB, mostly padding) whose
// payload starts with the magic "GPS " right after the type, so the first twelve bytes read "....freeGPS ".
// A `gps ` box inside moov lists the blocks: a 32-bit version, a 32-bit count, then per block its file
// offset and size (32-bit big-endian each). Cameras that write no list are found by scanning mdat for the
// magic. Offsets below are from the start of the block (its size field); numbers are little-endian:
//  - plain record: 0x30..0x47 hour, minute, second, year (since 2000, or full), month, day as 32-bit
//    integers; 0x48 status 'A' (fix) or 'V'; 0x49 'N'/'S'; 0x4a 'E'/'W'; 0x4c latitude and 0x50 longitude
//    as floats in degrees*100+minutes; 0x54 speed in knots and 0x58 course, floats.
//  - compact record with accelerometer: the same fields from 0x10 (date and time), letters at 0x28..0x2a,
//    floats at 0x2c..0x3b, then three signed 32-bit accelerometer values at 0x3c in 1/256 g (all zero, or
//    1..6 as 16-bit values, when the camera has none).
//  - double record with accelerometer: 0x30 hour, minute, second; 0x3c status as a 32-bit letter; 0x40
//    latitude (double, degrees*100+minutes), 0x48 its hemisphere letter; 0x50 longitude, 0x58 its letter;
//    0x60 speed in knots and 0x68 course (doubles); 0x70 year, month, day; 0x7c three signed 32-bit
//    accelerometer values in 1/1000 g.
class FreeGpsReader {
public:
    // The blocks a moov `gps ` box lists. A block past the end of the file or not holding the magic ends the
    // track there with a WARN (file and offset); the positions before it are kept.
    static std::optional<EmbeddedTrack> readListed(const ByteSource& source, const Mp4Box& gpsBox);
    // The blocks found by scanning an mdat box; nothing unless one lies near its start (see the .cpp).
    static std::optional<EmbeddedTrack> scan(const ByteSource& source, const Mp4Box& mdat);

    struct Record {
        std::optional<TrackPosition> fix; // none for a record without a fix ('V')
        std::optional<AccelerationSample> acceleration;
    };
    // One block (from its size field on); nothing when it holds no record of a known layout.
    static std::optional<Record> decode(const QByteArray& block);
};
