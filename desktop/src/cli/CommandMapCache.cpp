// reelvue-cli map-cache [--size MB] [--clear]: the map tile cache's folder, fill and bound; sets the bound, empties it.
#include "cli/CliCommand.h"
#include "core/SettingsKeys.h"
#include "core/TileCache.h"

#include <QDir>
#include <QSettings>

namespace {
constexpr qint64 kMegabyte = 1024 * 1024;
const QString kUsage = QStringLiteral("Usage: reelvue-cli map-cache [--size MB] [--clear]");

int run(const QStringList& arguments) {
    bool clear = false;
    qint64 newSize = -1;
    for (int i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        bool ok = false;
        if (argument == QLatin1String("--clear")) {
            clear = true;
        } else if (argument == QLatin1String("--size") && i + 1 < arguments.size()) {
            newSize = arguments[++i].toLongLong(&ok);
            if (!ok || newSize < 1) {
                cliError(QStringLiteral("--size takes a whole number of megabytes, at least 1\n") + kUsage);
                return 2;
            }
        } else {
            cliError(QStringLiteral("Unknown argument: %1\n%2").arg(argument, kUsage));
            return 2;
        }
    }

    QSettings settings;
    if (newSize > 0)
        settings.setValue(settingskeys::kMapTileCacheMegabytes, newSize);
    const qint64 megabytes =
        settings.value(settingskeys::kMapTileCacheMegabytes, TileCache::kDefaultMaxBytes / kMegabyte).toLongLong();
    TileCache cache(TileCache::defaultDirectory(), megabytes * kMegabyte);
    if (clear && !cache.clear()) {
        cliError(QStringLiteral("Some cached tiles could not be removed from %1")
                     .arg(QDir::toNativeSeparators(cache.directory())));
        return 1;
    }
    const TileCache::Usage usage = cache.usage();
    cliPrint(QStringLiteral("folder\t%1\ntiles\t%2\nsize\t%3 MB\nbound\t%4 MB\n")
                 .arg(QDir::toNativeSeparators(cache.directory()))
                 .arg(usage.tiles)
                 .arg(static_cast<double>(usage.bytes) / kMegabyte, 0, 'f', 1)
                 .arg(megabytes));
    return 0;
}

const CliCommandRegistration registration{
    {"map-cache", "[--size MB] [--clear]",
     "Show the map tile cache (folder, tiles, size, bound); --size sets the bound in megabytes (the player reads it "
     "at start), --clear empties the cache",
     &run}};

} // namespace
