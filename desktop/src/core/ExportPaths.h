// File names and copy commands of the save operations: cuts, tracks and copies of original recordings.
#pragma once

#include "core/FileCopier.h"
#include "core/Playlist.h"
#include "core/TimeInterval.h"

#include <QString>
#include <QStringList>

namespace exportpaths {

// The proposed name of a saved cut or track: "dvr-" + from + "-" + to + "." + extension, both ends
// formatted "yyyyMMddTHHmmss", e.g. "dvr-20190913T103020-20190913T104500.gpx".
QString proposedFileName(const TimeInterval& interval, const QString& extension);

// The first of the candidates that is an existing folder (empty ones are passed over), else the user's home:
// a save dialog never starts in a folder that is not there.
QString firstExistingFolder(const QStringList& candidates);

// The NMEA copy written beside a saved video: same folder and base name, extension ".nmea".
QString trackPathBesideVideo(const QString& videoPath);

// The raw items that share some time with the interval: from < item end and item begin < to.
Playlist::RawItems itemsOverlapping(const Playlist::RawItems& items, const TimeInterval& interval);

// One command per original file of the items (main video, rear video, track file, those that exist
// in the item), each copied into `directory` under its own name, in item order.
FileCopierCommandVector copyCommands(const Playlist::RawItems& items, const QString& directory);

// The destinations of the commands that already exist; the copier would stop at the first of them.
QStringList existingDestinations(const FileCopierCommandVector& commands);

} // namespace exportpaths
