// Finds and reads the GPS track a dash camera embedded in a video file, whatever the family of its format.
#pragma once

#include "core/ByteSource.h"
#include "core/embedded/EmbeddedTrack.h"

#include <QDateTime>
#include <QString>

#include <optional>

// Walks the box headers of an MP4 or MOV file and reads the first GPS store it knows, in this order: the
// freeGPS blocks a moov `gps ` box lists, a top-level `GPS ` box, an NMEA log in a box, a GPMF, CAMM or NMEA
// text track, and last the freeGPS blocks of mdat. Only headers, indexes and the GPS payload are read, never
// the pictures. Runs on any thread; each call opens the file afresh.
//
//   std::optional<EmbeddedTrack> track = EmbeddedTrackReader::read("/card/DCIM/Movie/20240614_060000_F.MP4",
//                                                                   startTimeFromFileName(name));
//
// A file without a store this code knows gives nothing and one DEBUG line; a damaged store gives a WARN with
// the file and the offset and the positions read before the damage.
class EmbeddedTrackReader {
public:
    // `recordingStart`: the local start the file name gives, for stores that carry no date (a `GPS ` box,
    // CAMM position packets).
    static std::optional<EmbeddedTrack> read(const QString& videoPath,
                                             const std::optional<QDateTime>& recordingStart = std::nullopt);
    static std::optional<EmbeddedTrack> read(const ByteSource& source,
                                             const std::optional<QDateTime>& recordingStart = std::nullopt);
};
