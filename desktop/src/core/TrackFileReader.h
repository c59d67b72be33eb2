// Reads a track recorded apart from the camera (a phone, a logger) from GPX, KML or NMEA into track positions.
#pragma once

#include "core/TrackPosition.h"

#include <QByteArray>
#include <QString>

// The format is told by the content, not the name: XML whose root is <gpx> or <kml>, else NMEA sentences.
// Positions come in file order with strictly increasing whole-second times (a later fix in the same second is
// dropped, as the NMEA loader does); points without a time are skipped, since they cannot be matched to video.
//
//   TrackPositions track = TrackFileReader::read("/home/me/ride.gpx");
class TrackFileReader {
public:
    // Throws std::runtime_error with a "Failed to read file: " text when the file cannot be read, and
    // "No timed positions in the track" when it holds none (an empty or foreign file).
    static TrackPositions read(const QString& path);
    static TrackPositions readBytes(const QByteArray& bytes);

    // GPX 1.0 and 1.1: <trkpt> (and <rtept>, <wpt> with a time) with <time>, <ele>, <speed> (m/s, also
    // inside extensions), <course>, <sat>, <hdop>, <vdop>, <pdop>.
    static TrackPositions readGpx(const QByteArray& bytes);
    // KML: <gx:Track> with <when> and <gx:coord> pairs; failing that, placemarks with a <TimeStamp> and a
    // <Point> (as GPS programs write one placemark a fix). A LineString carries no times and is not read.
    static TrackPositions readKml(const QByteArray& bytes);
};
