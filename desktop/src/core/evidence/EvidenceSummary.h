// What an evidence pack holds, as its report presents it: the interval, cameras, marks, track and files.
#pragma once

#include "core/TimeInterval.h"
#include "core/TrackPosition.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

enum class SpeedUnit { KilometresPerHour, MilesPerHour };

// Speed in the chosen unit from the track's km/h (a statute mile is 1.609344 km), and the unit's short name.
inline double speedIn(SpeedUnit unit, double kmh) { return unit == SpeedUnit::MilesPerHour ? kmh / 1.609344 : kmh; }
inline const char* speedUnitName(SpeedUnit unit) { return unit == SpeedUnit::MilesPerHour ? "mph" : "km/h"; }

struct EvidenceSummary {
    // How a file of the pack came to be; the report tells a reader which pictures are the camera's own.
    enum class FileKind {
        Original, // byte-identical copy of a recording or its track
        Clip,     // stream copy of the interval: the camera's own pictures, cut
        Derived,  // re-encoded or computed by this program (overview, frames, track formats)
    };
    struct File {
        QString path;      // inside the pack, with '/' separators, e.g. "data/originals/FILE0001.MP4"
        std::int64_t size = 0;
        QString sha256;    // lower-case hex
        FileKind kind = FileKind::Derived;
    };

    QString program;           // name and version of the program that made the pack
    QDateTime created;         // when the pack was made, local time
    TimeInterval interval;     // local time of the recordings
    QString placeName;         // from the map page; empty when none was given
    QString cardPath;          // the card or folder the recordings came from
    QStringList cameras;       // camera names in picture order, e.g. {"Front", "Rear"}
    std::vector<QDateTime> marks; // moments the user marked, local time, ascending
    TrackPositions track;      // the interval's positions in time order
    SpeedUnit speedUnit = SpeedUnit::KilometresPerHour;
    QByteArray mapPicture;     // PNG or JPEG of the map page showing the track; empty: the track is drawn plain
    std::vector<File> files;
};
