// The suitable-path check: a shallow test of a directory's entries, with the reason logged when it fails.
#include "core/IsSuitablePath.h"

#include "logging/Logging.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <algorithm>

namespace {

constexpr const char* kLogger = "ui.IsSuitablePath";

const QSet<QString>& cameraFolders() {
    static const QSet<QString> names = {QStringLiteral("F"), QStringLiteral("R")};
    return names;
}
// Each of these holds one video subfolder.
const QSet<QString>& categoryFolders() {
    static const QSet<QString> names = {QStringLiteral("Normal"), QStringLiteral("Parking"), QStringLiteral("Event")};
    return names;
}
const QSet<QString>& requiredFolders() {
    static const QSet<QString> names = {QStringLiteral("Normal"), QStringLiteral("Event"), QStringLiteral("Photo")};
    return names;
}

bool doesNotFit(const QString& path, const char* reason, QString* reasonOut) {
    LOG_INFO(kLogger, "Path {} does not fit: {}", path.toStdString(), reason);
    if (reasonOut)
        *reasonOut = QString::fromLatin1(reason);
    return false;
}

bool isReadableDirectory(const QFileInfo& info) { return info.isDir() && info.isReadable(); }

// The folders today's cameras keep their recordings in where the card holds none of the folders above: a
// Record folder, the clip folders of cars that record to a USB drive, and the same one folder down, inside
// a folder of the camera's own name.
bool isTodaysCameraFolder(const QString& name) {
    return name == QLatin1String("Record") || name == QLatin1String("RecentClips") ||
           name == QLatin1String("SavedClips") || name == QLatin1String("SentryClips");
}
bool holdsTodaysCameraFolder(const QString& path) {
    const QFileInfoList children = QDir(path).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Unsorted);
    return std::any_of(children.begin(), children.end(),
                       [](const QFileInfo& child) { return isTodaysCameraFolder(child.fileName()); });
}

QFileInfoList subdirectories(const QString& path) {
    return QDir(path).entryInfoList(QDir::Dirs | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Unsorted);
}

} // namespace

bool IsSuitablePath(const QString& path) { return IsSuitablePath(path, nullptr); }

bool IsSuitablePath(const QString& path, QString* reason) {
    if (!isReadableDirectory(QFileInfo(path)))
        return doesNotFit(path, "path is not readable", reason);

    const QFileInfoList entries =
        QDir(path).entryInfoList(QDir::Dirs | QDir::Files | QDir::Hidden | QDir::System, QDir::Unsorted);
    const bool onlyDotEntries = std::all_of(entries.begin(), entries.end(), [](const QFileInfo& entry) {
        return entry.fileName() == QLatin1String(".") || entry.fileName() == QLatin1String("..");
    });
    if (onlyDotEntries)
        return doesNotFit(path, "there isn't one of required directories", reason);

    bool hasVideo = false;
    bool hasCameraFolder = false;
    bool hasTodaysLayout = false;
    int requiredCount = 0;
    for (const QFileInfo& entry : entries) {
        const QString name = entry.fileName();
        if (name == QLatin1String(".") || name == QLatin1String(".."))
            continue;
        if (entry.isDir()) {
            if (name == QLatin1String("DCIM") || name == QLatin1String("Lumicor DVR") ||
                name == QLatin1String("DVRlocked"))
                return true;
            if (name == QLatin1String("CARDV")) {
                QFileInfoList movies;
                for (const QFileInfo& child : subdirectories(entry.filePath()))
                    if (child.fileName() == QLatin1String("MOVIE"))
                        movies.append(child);
                if (movies.size() != 1)
                    return doesNotFit(path, "there isn't required MOVIE directory", reason);
                if (!isReadableDirectory(movies.first()))
                    return doesNotFit(path, "/CARDV/MOVIE/ subdirectory is not readable (or not directory)", reason);
                return true;
            }
            if (cameraFolders().contains(name))
                hasCameraFolder = true;
            // A category folder with no or several subfolders is accepted as it stands; only a single one
            // must be readable.
            if (categoryFolders().contains(name)) {
                const QFileInfoList children = subdirectories(entry.filePath());
                if (children.size() == 1 && !isReadableDirectory(children.first()))
                    return doesNotFit(path, "video subdirectory is not readable (or not directory)", reason);
            }
            // Normal and Event are both category and required folders; they count once each here.
            if (requiredFolders().contains(name))
                ++requiredCount;
            if (!hasTodaysLayout)
                hasTodaysLayout = isTodaysCameraFolder(name) || holdsTodaysCameraFolder(entry.filePath());
        } else {
            const QString suffix = entry.suffix().toLower();
            if (suffix == QLatin1String("mp4") || suffix == QLatin1String("mov"))
                hasVideo = true;
        }
    }
    if (!hasVideo && !hasCameraFolder && !hasTodaysLayout && requiredCount < requiredFolders().size())
        return doesNotFit(path, "there isn't one of required directories", reason);
    return true;
}
