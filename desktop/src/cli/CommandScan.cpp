// reelvue-cli scan PATH [--json]: loads a card, directory or video file as the player does and lists
// its recordings, trips, parking periods and event recordings.
#include "cli/CliCommand.h"
#include "core/FileNames.h"
#include "core/PlaylistLoader.h"
#include "core/RecordingFileName.h"

#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <memory>

namespace {

const QString kTimeFormat = QStringLiteral("yyyy-MM-ddTHH:mm:ss");

QString timeText(const QDateTime& time) { return time.toLocalTime().toString(kTimeFormat); }

QString categoryName(std::uint32_t category) {
    switch (category) {
    case Playlist::Normal: return QStringLiteral("normal");
    case Playlist::Parking: return QStringLiteral("parking");
    case Playlist::Event: return QStringLiteral("event");
    }
    return QString::number(category);
}

struct LoadResult {
    std::unique_ptr<Playlist> playlist;
    QString error;
};

LoadResult loadPlaylist(const QString& path) {
    LoadResult result;
    PlaylistLoader loader;
    QObject::connect(&loader, &PlaylistLoader::loaded,
                     [&](Playlist* playlist, PlaylistProcessedItemModel* trips, PlaylistProcessedItemModel* parking,
                         PlaylistRawItemModel* events, PlaylistRawItemModel* raw) {
                         result.playlist.reset(playlist);
                         delete trips;
                         delete parking;
                         delete events;
                         delete raw;
                     });
    QObject::connect(&loader, &PlaylistLoader::failed, [&](const QString& message) { result.error = message; });
    QObject::connect(&loader, &PlaylistLoader::canceled, [&] { result.error = QStringLiteral("Canceled"); });
    if (QFileInfo(path).isDir())
        loader.loadDirectory(path);
    else
        loader.loadFile(path);
    return result;
}

QList<int> rawItemIndices(const Playlist::RawItems& items, const QHash<const Playlist::RawItem*, int>& indexOf) {
    QList<int> indices;
    for (const Playlist::RawItemPtr& item : items)
        indices.append(indexOf.value(item.get(), -1));
    return indices;
}

// The cameras of a recording as its file names give them ("NF", "back"; "main" and "rear" where a name
// gives none); those beyond the first two are marked as not played.
QStringList camerasOf(const Playlist::RawItem& item, bool markUnplayed) {
    const auto name = [](const QFileInfo& file, const char* fallback) {
        const QString camera = cameraOfFileName(file.baseName()).camera;
        return camera.isEmpty() ? QString::fromLatin1(fallback) : camera;
    };
    QStringList cameras{name(item.mainVideo, "main")};
    if (item.rearVideo)
        cameras.append(name(*item.rearVideo, "rear"));
    for (const QFileInfo& further : item.furtherVideos)
        cameras.append(name(further, "other") + (markUnplayed ? QStringLiteral(" (not played)") : QString()));
    return cameras;
}

// Where the track came from: the name of the file beside the video, "embedded" when the video carries it,
// or nothing.
QString trackSourceOf(const Playlist::RawItem& item) {
    if (!item.track)
        return {};
    if (item.track->file.absoluteFilePath() == item.mainVideo.absoluteFilePath())
        return QStringLiteral("embedded");
    return item.track->file.fileName();
}

QJsonObject rawItemJson(const Playlist::RawItem& item) {
    return QJsonObject{
        {"main", item.mainVideo.filePath()},
        {"rear", item.rearVideo ? QJsonValue(item.rearVideo->filePath()) : QJsonValue()},
        {"category", categoryName(item.category)},
        {"from", timeText(item.from)},
        {"to", timeText(item.to)},
        {"track", item.track ? QJsonValue(item.track->file.filePath()) : QJsonValue()},
        {"positions", item.track ? static_cast<qint64>(item.track->positions.size()) : 0},
        {"timeSource", QString::fromLatin1(Playlist::timeSourceName(item.timeSource))},
        {"cameras", QJsonArray::fromStringList(camerasOf(item, false))},
        {"further", [&] {
             QJsonArray paths;
             for (const QFileInfo& further : item.furtherVideos)
                 paths.append(further.filePath());
             return paths;
         }()},
        {"trackSource", item.track ? QJsonValue(trackSourceOf(item)) : QJsonValue()},
    };
}

QString asJson(const Playlist& playlist, const QHash<const Playlist::RawItem*, int>& indexOf) {
    QJsonArray rawItems;
    for (const Playlist::RawItemPtr& item : playlist.rawItems())
        rawItems.append(rawItemJson(*item));
    auto processed = [&](std::uint32_t kind) {
        QJsonArray array;
        for (const Playlist::ProcessedItemPtr& item : playlist.processedItemsOfKind(kind)) {
            QJsonArray indices;
            for (int index : rawItemIndices(item->items, indexOf))
                indices.append(index);
            array.append(QJsonObject{{"from", timeText(item->from)}, {"to", timeText(item->to)}, {"items", indices}});
        }
        return array;
    };
    QJsonArray events;
    for (const Playlist::RawItemPtr& item : playlist.rawItemsOfCategory(Playlist::Event))
        events.append(QJsonObject{{"item", indexOf.value(item.get())},
                                  {"main", item->mainVideo.filePath()},
                                  {"from", timeText(item->from)},
                                  {"to", timeText(item->to)}});
    const QJsonObject root{{"rawItems", rawItems},
                           {"trips", processed(Playlist::Trip)},
                           {"parking", processed(Playlist::ParkingPeriod)},
                           {"events", events}};
    return QString::fromUtf8(QJsonDocument(root).toJson(QJsonDocument::Indented));
}

QString asText(const Playlist& playlist, const QHash<const Playlist::RawItem*, int>& indexOf) {
    QString text = QStringLiteral("Raw items: %1\n").arg(playlist.rawItems().size());
    int index = 0;
    for (const Playlist::RawItemPtr& item : playlist.rawItems()) {
        text += QStringLiteral("  #%1 %2 - %3 %4 (%5)\n")
                    .arg(index++)
                    .arg(timeText(item->from), timeText(item->to), categoryName(item->category),
                         QString::fromLatin1(Playlist::timeSourceName(item->timeSource)));
        text += QStringLiteral("      main:  %1\n").arg(printableFileName(item->mainVideo.filePath()));
        text += QStringLiteral("      rear:  %1\n")
                    .arg(item->rearVideo ? printableFileName(item->rearVideo->filePath()) : QStringLiteral("-"));
        for (const QFileInfo& further : item->furtherVideos)
            text += QStringLiteral("      other: %1\n").arg(printableFileName(further.filePath()));
        text += QStringLiteral("      cameras: %1\n").arg(printableFileName(camerasOf(*item, true).join(", ")));
        if (item->track)
            text += QStringLiteral("      track: %1 (%2 positions)\n")
                        .arg(trackSourceOf(*item) == QLatin1String("embedded")
                                 ? QStringLiteral("embedded")
                                 : printableFileName(item->track->file.filePath()))
                        .arg(item->track->positions.size());
        else
            text += QStringLiteral("      track: -\n");
    }
    auto processed = [&](const char* title, std::uint32_t kind) {
        const Playlist::ProcessedItems items = playlist.processedItemsOfKind(kind);
        text += QStringLiteral("%1: %2\n").arg(QLatin1String(title)).arg(items.size());
        for (const Playlist::ProcessedItemPtr& item : items) {
            QStringList indices;
            for (int i : rawItemIndices(item->items, indexOf))
                indices.append(QString::number(i));
            text += QStringLiteral("  %1 - %2 items %3\n").arg(timeText(item->from), timeText(item->to), indices.join(','));
        }
    };
    processed("Trips", Playlist::Trip);
    processed("Parking", Playlist::ParkingPeriod);
    const Playlist::RawItems events = playlist.rawItemsOfCategory(Playlist::Event);
    text += QStringLiteral("Events: %1\n").arg(events.size());
    for (const Playlist::RawItemPtr& item : events)
        text += QStringLiteral("  #%1 %2 - %3 %4\n")
                    .arg(indexOf.value(item.get()))
                    .arg(timeText(item->from), timeText(item->to), printableFileName(item->mainVideo.filePath()));
    return text;
}

int runScan(const QStringList& arguments) {
    QString path;
    bool json = false;
    if (!parsePathAndJsonFlag(arguments, QStringLiteral("Usage: reelvue-cli scan PATH [--json]"), &path, &json))
        return 2;
    if (!QFileInfo::exists(path)) {
        cliError(QStringLiteral("%1: no such file or directory").arg(printableFileName(path)));
        return 1;
    }
    const LoadResult result = loadPlaylist(path);
    if (!result.playlist) {
        cliError(QStringLiteral("%1: %2").arg(printableFileName(path), result.error));
        return 1;
    }
    QHash<const Playlist::RawItem*, int> indexOf;
    for (std::size_t i = 0; i < result.playlist->rawItems().size(); ++i)
        indexOf.insert(result.playlist->rawItems()[i].get(), static_cast<int>(i));
    cliPrint(json ? asJson(*result.playlist, indexOf) : asText(*result.playlist, indexOf));
    return 0;
}

const CliCommandRegistration registration{
    {"scan", "PATH [--json]", "List the recordings, trips, parking periods and events of a card, directory or video",
     &runScan}};

} // namespace
