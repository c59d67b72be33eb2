// File names and copy commands of the save operations: cuts, tracks and copies of original recordings.
#include "core/ExportPaths.h"

#include <QDir>
#include <QFileInfo>

namespace exportpaths {
namespace {
const QString kNameTimeFormat = QStringLiteral("yyyyMMddTHHmmss");

void addCommand(FileCopierCommandVector& commands, const QFileInfo& source, const QDir& directory) {
    commands.emplace_back(source.absoluteFilePath(), directory.absoluteFilePath(source.fileName()));
}
} // namespace

QString proposedFileName(const TimeInterval& interval, const QString& extension) {
    return QStringLiteral("dvr-%1-%2.%3")
        .arg(interval.from.toString(kNameTimeFormat), interval.to.toString(kNameTimeFormat), extension);
}

QString firstExistingFolder(const QStringList& candidates) {
    for (const QString& folder : candidates)
        if (!folder.isEmpty() && QFileInfo(folder).isDir())
            return folder;
    return QDir::homePath();
}

QString trackPathBesideVideo(const QString& videoPath) {
    const QFileInfo video(videoPath);
    return video.dir().filePath(video.completeBaseName() + QStringLiteral(".nmea"));
}

Playlist::RawItems itemsOverlapping(const Playlist::RawItems& items, const TimeInterval& interval) {
    Playlist::RawItems overlapping;
    for (const Playlist::RawItemPtr& item : items)
        if (item && interval.from < item->to && item->from < interval.to)
            overlapping.push_back(item);
    return overlapping;
}

FileCopierCommandVector copyCommands(const Playlist::RawItems& items, const QString& directory) {
    const QDir target(directory);
    FileCopierCommandVector commands;
    for (const Playlist::RawItemPtr& item : items) {
        if (!item)
            continue;
        if (!item->mainVideo.filePath().isEmpty()) // an item made from a track file alone has no video
            addCommand(commands, item->mainVideo, target);
        if (item->rearVideo)
            addCommand(commands, *item->rearVideo, target);
        // a track inside a video has no file of its own; a phone's track is not part of the card's recordings
        if (item->track && !item->hasEmbeddedTrack() && !item->track->attached)
            addCommand(commands, item->track->file, target);
    }
    return commands;
}

QStringList existingDestinations(const FileCopierCommandVector& commands) {
    QStringList existing;
    for (const auto& command : commands)
        if (QFileInfo::exists(command.second))
            existing << command.second;
    return existing;
}

} // namespace exportpaths
