// Writers of a track as CSV, GPX 1.0, KML, OziExplorer PLT and NMEA 0183 text.
#pragma once

#include "core/TrackPosition.h"

#include <QString>

#include <ostream>
#include <string>
#include <vector>

// Each writer puts the positions, in the order given, on a stream that the caller opened; the caller
// checks the stream's state afterwards. Numbers are fixed-point with a point as decimal separator
// whatever the stream's or the process's locale (exactly what a classic-locale stream with std::fixed
// and the same precision writes). Times are UTC.
//
//   std::ofstream out(path, std::ios::binary);
//   trackformats::writeGpx(out, positions);
namespace trackformats {

// "timestamp,latitude,longitude,speed,altitude,satellites,HDOP,PDOP,VDOP"; a missing value leaves its
// field empty, so every line has nine fields.
void writeCsv(std::ostream& out, const TrackPositions& positions);
// GPX 1.0 with one track segment. The time's month position carries the minutes ("yyyy-mm-dd..."), as
// the files this program has always written do.
void writeGpx(std::ostream& out, const TrackPositions& positions);
// KML 2.2: a "Track" folder with the path as one line string, then a "Points" folder of placemarks.
void writeKml(std::ostream& out, const TrackPositions& positions);
// OziExplorer track point file, version 2.0: altitude in feet, milliseconds always ".000".
void writePlt(std::ostream& out, const TrackPositions& positions);
// NMEA 0183: an RMC and a GGA sentence per position, with checksums and CR LF; for tracks that come from no
// NMEA file (those embedded in videos, or attached from GPX or KML), so that the track loader reads back the
// same positions.
void writeNmea(std::ostream& out, const TrackPositions& positions);

// The UTC time of a position in a QDateTime format, e.g. formatUtc(time, "yyyy.MM.dd hh:mm:ss").
QString formatUtc(TrackTime time, const QString& format);

// The same text as formatUtc() for one format, rendered without building a QDateTime per point. Handles
// "yyyy", "yy", "MM", "dd", "hh", "mm", "ss" and literal characters; any other format (and any year
// outside 1000..9999) is left to QDateTime, so the text is always what formatUtc() gives.
class UtcFormat {
public:
    explicit UtcFormat(const QString& format);
    void append(std::string& out, TrackTime time) const;

private:
    enum Field { Literal, Year4, Year2, Month, Day, Hour, Minute, Second };
    struct Token {
        Field field;
        char literal;
    };
    QString m_format;
    std::vector<Token> m_tokens;
    bool m_fallback = false;
};

} // namespace trackformats
