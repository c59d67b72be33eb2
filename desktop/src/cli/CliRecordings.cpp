// What the export commands of reelvue-cli share: reading PATH into recordings, and their time options.
#include "cli/CliRecordings.h"

#include "core/PlaylistDiscovery.h"
#include "core/PlaylistLoader.h"
#include "core/TrackLoader.h"

#include <QFileInfo>

#include <memory>

const char* const kCliTimeFormat = "yyyy-MM-ddTHH:mm:ss";

namespace {

bool isTrackFile(const QFileInfo& file) { return file.suffix().compare(QLatin1String("nmea"), Qt::CaseInsensitive) == 0; }

// A track file on its own: an item with no video whose interval is that of its fixes.
std::optional<Playlist::RawItems> trackOnlyItem(const QFileInfo& file, QString* error) {
    auto item = std::make_shared<Playlist::RawItem>();
    try {
        TrackPositions positions = TrackLoader::load(file.absoluteFilePath()).positions;
        if (positions.empty()) {
            *error = QStringLiteral("no GPS position in the track");
            return std::nullopt;
        }
        const QDateTime first = trackTimeToDateTime(positions.front().time);
        const QDateTime last = trackTimeToDateTime(positions.back().time);
        item->from = std::min(first, last);
        item->to = std::max(first, last);
        item->track = Playlist::Track{file, item->from, item->to, std::move(positions)};
    } catch (const std::exception& failure) {
        *error = QString::fromUtf8(failure.what());
        return std::nullopt;
    }
    return Playlist::RawItems{item};
}

} // namespace

std::optional<Playlist::RawItems> cliLoadRecordings(const QString& path, QString* error) {
    const QFileInfo file(path);
    if (!file.exists()) {
        *error = QStringLiteral("no such file or directory");
        return std::nullopt;
    }
    if (file.isFile() && isTrackFile(file))
        return trackOnlyItem(file, error);
    try {
        PlaylistDiscovery discovery(&PlaylistLoader::videoDurationMs);
        Playlist::RawItems items = file.isDir() ? discovery.fromDirectory(path) : discovery.fromFile(path);
        if (items.empty()) {
            *error = QStringLiteral("Nothing found");
            return std::nullopt;
        }
        return items;
    } catch (const std::exception& failure) {
        *error = QString::fromUtf8(failure.what());
        return std::nullopt;
    }
}

std::optional<QDateTime> cliParseTime(const QString& text) {
    const QDateTime time = QDateTime::fromString(text, QLatin1String(kCliTimeFormat));
    if (!time.isValid())
        return std::nullopt;
    return time;
}

std::optional<CliOptions> cliParseOptions(const QStringList& arguments, const QStringList& known, QString* error,
                                          const QStringList& flags) {
    CliOptions options;
    for (int i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (!argument.startsWith(QLatin1Char('-')) || argument == QLatin1String("-")) {
            if (!options.path.isEmpty()) {
                *error = QStringLiteral("More than one PATH: %1").arg(argument);
                return std::nullopt;
            }
            options.path = argument;
            continue;
        }
        QString name = argument;
        QString value;
        if (flags.contains(argument)) {
            options.names << name;
            options.values << value;
            continue;
        }
        const int equals = argument.indexOf(QLatin1Char('='));
        if (argument.startsWith(QLatin1String("--")) && equals > 0) {
            name = argument.left(equals);
            value = argument.mid(equals + 1);
        } else if (i + 1 < arguments.size()) {
            value = arguments[++i];
        } else {
            *error = QStringLiteral("%1 needs a value").arg(argument);
            return std::nullopt;
        }
        if (!known.contains(name)) {
            *error = QStringLiteral("Unknown option: %1").arg(name);
            return std::nullopt;
        }
        options.names << name;
        options.values << value;
    }
    return options;
}

exporttarget::Permissions cliPermissions(const QString& path, bool force) {
    const QFileInfo given(path);
    return {given.isDir() ? given.absoluteFilePath() : QString(), force};
}

QString cliRefusalText(const exporttarget::Refusal& refusal) {
    if (refusal.kind == exporttarget::Refusal::Exists)
        return QStringLiteral("Refused: %1 (--force replaces it)").arg(refusal.text);
    return QStringLiteral("Refused: %1").arg(refusal.text);
}
