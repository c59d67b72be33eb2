// The map tiles fetched from the tile server, kept on disk in the per-user cache folder within a size bound.
#pragma once

#include "core/TileKey.h"

#include <QByteArray>
#include <QMutex>
#include <QString>

#include <optional>

// Files are <folder>/<z>/<x>/<y>.tile: the picture followed by an 8-byte trailer (its length and a mark), so a
// file cut short by a crash or a full disk is recognised and never served. Each file is written under a
// temporary name and renamed into place, so another process sharing the folder (a second window) sees a whole
// tile or none. When a store would pass the bound, the least recently read tiles are dropped first.
// Thread-safe: m_mutex guards the size estimate; the files themselves need no lock.
// Usage:
//   TileCache cache(TileCache::defaultDirectory(), TileCache::kDefaultMaxBytes);
//   cache.store({12, 2200, 1343}, png);
//   if (auto tile = cache.read({12, 2200, 1343})) ...
class TileCache {
public:
    static constexpr qint64 kDefaultMaxBytes = 500LL * 1024 * 1024;

    TileCache(QString directory, qint64 maxBytes);

    // <per-user cache folder>/tiles
    static QString defaultDirectory();

    // The tile's picture, and the tile counts as just used. A broken file is removed and gives nothing.
    std::optional<QByteArray> read(const TileKey& key) const;
    // Keeps the picture, first dropping the least recently used tiles if it would not fit. False when it could
    // not be written (the reason is logged) or is larger than the whole bound.
    bool store(const TileKey& key, const QByteArray& picture);

    struct Usage {
        qint64 bytes = 0;
        int tiles = 0;
    };
    // Walks the folder: for the command line, not for every tile.
    Usage usage() const;
    // Removes every tile; false if some could not be removed.
    bool clear();

    const QString& directory() const { return m_directory; }
    qint64 maxBytes() const { return m_maxBytes; }

private:
    QString pathOf(const TileKey& key) const;
    // Drops the least recently used tiles until `incoming` more bytes fit below the bound; updates m_bytes.
    void makeRoomLocked(qint64 incoming);

    const QString m_directory;
    const qint64 m_maxBytes;
    mutable QMutex m_mutex;
    qint64 m_bytes = -1; // the folder's size as this process knows it; -1 until first counted
    int m_storesSinceCount = 0;
};
