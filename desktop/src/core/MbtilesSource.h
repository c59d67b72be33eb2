// A regional map file in the MBTiles format (SQLite with raster tiles), read-only, as a source of map tiles.
#pragma once

#include "core/TileKey.h"

#include <QByteArray>
#include <QMutex>
#include <QString>

#include <memory>
#include <optional>

struct sqlite3;
struct sqlite3_stmt;

// Opened read-only and immutable: nothing is ever written to the file or beside it. Thread-safe: m_mutex guards
// the one connection and its prepared statement; a tile costs tens of microseconds, so readers barely wait.
// Usage:
//   std::shared_ptr<MbtilesSource> map = MbtilesSource::open(path); // throws with a message for the user
//   if (auto png = map->tile({12, 2200, 1343})) ...
class MbtilesSource {
public:
    // Checks the file (an SQLite database with a tiles table holding PNG, JPEG or WebP pictures) and reads its
    // metadata. Throws std::runtime_error with a translated reason when the file cannot serve as a map.
    static std::shared_ptr<MbtilesSource> open(const QString& path);
    ~MbtilesSource();
    MbtilesSource(const MbtilesSource&) = delete;
    MbtilesSource& operator=(const MbtilesSource&) = delete;

    // The picture of the tile (rows counted from the north, as the web map does); nothing when the file does
    // not have it or its picture is damaged (logged once per file).
    std::optional<QByteArray> tile(const TileKey& key) const;

    const QString& path() const { return m_path; }
    // The map's name from its metadata, else the file's name.
    const QString& name() const { return m_name; }
    // The metadata's attribution as plain text (markup removed), possibly empty.
    const QString& attribution() const { return m_attribution; }

private:
    explicit MbtilesSource(QString path);

    const QString m_path;
    QString m_name;
    QString m_attribution;
    mutable QMutex m_mutex;
    sqlite3* m_db = nullptr;
    sqlite3_stmt* m_select = nullptr;
    mutable bool m_damageLogged = false;
};

// The MIME type of a PNG, JPEG or WebP picture by its first bytes; empty for anything else.
QByteArray pictureMimeType(const QByteArray& bytes);
