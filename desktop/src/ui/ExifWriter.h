// Stores the time and the vehicle's position in the EXIF block of a saved picture.
#pragma once

#include "core/TrackPosition.h"

#include <QDateTime>
#include <QString>

#include <optional>

// The track's position at a moment: linear interpolation between the two fixes around it (optional fields
// interpolated when both have them, else the nearer fix's value, or the other's when the nearer lacks it; the
// course turns the short way round; the satellite count is the nearer fix's), the
// first/last fix when the moment lies outside the track; nullopt for an empty track. The track is in time order.
std::optional<TrackPosition> trackPositionAt(const TrackPositions& track, const QDateTime& time);

// Writes into the picture at path (JPEG or PNG), keeping its other metadata:
// - DateTimeOriginal/DateTimeDigitized: the frame's local wall-clock time, as cameras do, with its UTC offset
//   in OffsetTimeOriginal/OffsetTimeDigitized; GPSDateStamp/GPSTimeStamp: the same moment in UTC;
// - GPS version, latitude/longitude with refs, map datum, and when the fix has them: altitude with ref,
//   speed (km/h, ref K), heading as GPSImgDirection and GPSTrack (ref T), satellites and DOP.
// Tags of fields the fix lacks are removed, so an older position never lingers; an invalid frame time writes no
// time tags. Returns false with an ERROR in the log ("ui.ExifUtils") when the file can't be read or written.
bool writeExifPosition(const QString& path, const TrackPosition& position, const QDateTime& frameTime);
