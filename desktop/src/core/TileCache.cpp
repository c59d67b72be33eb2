// The disk cache of map tiles: whole-file writes by rename, a trailer against cut files, least-recently-used eviction.
#include "core/TileCache.h"

#include "logging/Logging.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSaveFile>
#include <QStandardPaths>
#include <QtEndian>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <vector>

namespace {
constexpr const char* kLogger = "core.TileCache";
const QByteArray kMark = QByteArrayLiteral("RVT1");
constexpr int kTrailerSize = 8;
// Eviction goes down to this share of the bound, so the folder is not walked again after every few stores.
constexpr double kEvictionTarget = 0.9;
// Another process writes into the same folder unseen: count the folder again after this many stores.
constexpr int kRecountEveryStores = 256;
// A temporary file older than this was left by a process that died while writing.
constexpr qint64 kStalePartSeconds = 600;

struct CachedFile {
    QString path;
    qint64 size;
    qint64 usedAt; // the modification time in nanoseconds, moved forward on each read
};

std::vector<CachedFile> listFiles(const QString& directory, qint64* partsRemoved) {
    std::vector<CachedFile> files;
    const qint64 staleBefore = QDateTime::currentSecsSinceEpoch() - kStalePartSeconds;
    QDirIterator it(directory, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        const QFileInfo info = it.fileInfo();
        if (info.fileName().endsWith(QLatin1String(".tile"))) {
            // Nanoseconds: tiles stored in one burst differ by less than a millisecond.
            struct stat status {};
            if (::stat(QFile::encodeName(info.filePath()).constData(), &status) != 0)
                continue; // removed by another process meanwhile
            files.push_back({info.filePath(), static_cast<qint64>(status.st_size),
                             static_cast<qint64>(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec});
        } else if (partsRemoved && info.fileName().contains(QLatin1String(".tile.")) &&
                   info.lastModified().toSecsSinceEpoch() < staleBefore) {
            if (QFile::remove(info.filePath()))
                ++*partsRemoved;
        }
    }
    return files;
}
} // namespace

TileCache::TileCache(QString directory, qint64 maxBytes) : m_directory(std::move(directory)), m_maxBytes(maxBytes) {}

QString TileCache::defaultDirectory() {
    return QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + QStringLiteral("/tiles");
}

QString TileCache::pathOf(const TileKey& key) const {
    return QStringLiteral("%1/%2/%3/%4.tile").arg(m_directory).arg(key.z).arg(key.x).arg(key.y);
}

std::optional<QByteArray> TileCache::read(const TileKey& key) const {
    const QString path = pathOf(key);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray bytes = file.readAll();
    file.close();
    const bool whole = bytes.size() >= kTrailerSize && bytes.endsWith(kMark) &&
                       qFromLittleEndian<quint32>(bytes.constData() + bytes.size() - kTrailerSize) ==
                           static_cast<quint32>(bytes.size() - kTrailerSize);
    if (!whole) {
        LOG_WARN(kLogger, "Broken cached tile {} removed", path.toStdString());
        QFile::remove(path); // another process may have removed it already
        return std::nullopt;
    }
    // Reading is what "recently used" means: the modification time carries it, for every process alike.
    ::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), nullptr, 0);
    bytes.chop(kTrailerSize);
    return bytes;
}

bool TileCache::store(const TileKey& key, const QByteArray& picture) {
    const qint64 size = picture.size() + kTrailerSize;
    if (size > m_maxBytes)
        return false;
    {
        QMutexLocker lock(&m_mutex);
        if (m_bytes < 0 || ++m_storesSinceCount >= kRecountEveryStores || m_bytes + size > m_maxBytes)
            makeRoomLocked(size);
        m_bytes += size;
    }
    const QString path = pathOf(key);
    if (!QDir().mkpath(QFileInfo(path).path())) {
        LOG_ERROR(kLogger, "Cannot create the cache folder for {}", path.toStdString());
        return false;
    }
    // The temporary name is unique per process and call, and ends in neither ".tile" nor ".part": only
    // whole files are ever renamed to the name that is read.
    static std::atomic<quint64> counter{0};
    const QString part = QStringLiteral("%1.%2.%3").arg(path).arg(QCoreApplication::applicationPid()).arg(++counter);
    QFile file(part);
    QByteArray trailer(kTrailerSize, '\0');
    qToLittleEndian<quint32>(static_cast<quint32>(picture.size()), trailer.data());
    trailer.replace(4, 4, kMark);
    const bool written = file.open(QIODevice::WriteOnly) && file.write(picture) == picture.size() &&
                         file.write(trailer) == kTrailerSize && file.flush();
    file.close();
    // rename() replaces a tile another process stored meanwhile: both hold the same picture.
    if (!written || ::rename(QFile::encodeName(part).constData(), QFile::encodeName(path).constData()) != 0) {
        LOG_ERROR(kLogger, "Cannot write the cached tile {}: {}", path.toStdString(), file.errorString().toStdString());
        QFile::remove(part);
        QMutexLocker lock(&m_mutex);
        m_bytes -= size;
        return false;
    }
    return true;
}

void TileCache::makeRoomLocked(qint64 incoming) {
    m_storesSinceCount = 0;
    // Of two processes that find the cache full, one evicts; the other counts and goes on, and its next store
    // sees the room made.
    QDir().mkpath(m_directory);
    QLockFile evicting(m_directory + QStringLiteral("/.evicting"));
    evicting.setStaleLockTime(30000);
    const bool mayEvict = evicting.tryLock(0);
    qint64 partsRemoved = 0;
    std::vector<CachedFile> files = listFiles(m_directory, mayEvict ? &partsRemoved : nullptr);
    qint64 total = 0;
    for (const CachedFile& file : files)
        total += file.size;
    if (mayEvict && total + incoming > m_maxBytes) {
        const qint64 target = static_cast<qint64>(static_cast<double>(m_maxBytes) * kEvictionTarget) - incoming;
        std::sort(files.begin(), files.end(),
                  [](const CachedFile& a, const CachedFile& b) { return a.usedAt < b.usedAt; });
        int removed = 0;
        for (const CachedFile& file : files) {
            if (total <= target)
                break;
            // Gone already means another process took it out: the room is there all the same.
            if (QFile::remove(file.path) || !QFile::exists(file.path)) {
                total -= file.size;
                ++removed;
            }
        }
        LOG_DEBUG(kLogger, "Dropped {} least recently used tiles, {} bytes left", removed, total);
    }
    m_bytes = total;
}

TileCache::Usage TileCache::usage() const {
    Usage usage;
    for (const CachedFile& file : listFiles(m_directory, nullptr)) {
        usage.bytes += file.size;
        ++usage.tiles;
    }
    return usage;
}

bool TileCache::clear() {
    QMutexLocker lock(&m_mutex);
    m_bytes = -1;
    QDir directory(m_directory);
    return !directory.exists() || directory.removeRecursively();
}
