// Reading MBTiles map files through SQLite: checks on opening, metadata, tiles with the rows flipped.
#include "core/MbtilesSource.h"

#include "logging/Logging.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QUrl>

#include <sqlite3.h>

#include <stdexcept>

namespace {
constexpr const char* kLogger = "core.MbtilesSource";

[[noreturn]] void refuse(const QString& reason) {
    throw std::runtime_error(reason.toStdString());
}

QString plainText(QString html) {
    html.remove(QRegularExpression(QStringLiteral("<[^>]*>")));
    html.replace(QLatin1String("&copy;"), QStringLiteral("\u00a9"));
    html.replace(QLatin1String("&amp;"), QStringLiteral("&"));
    return html.simplified();
}
} // namespace

QByteArray pictureMimeType(const QByteArray& bytes) {
    if (bytes.startsWith("\x89PNG\r\n\x1a\n"))
        return QByteArrayLiteral("image/png");
    if (bytes.startsWith("\xff\xd8\xff"))
        return QByteArrayLiteral("image/jpeg");
    if (bytes.size() >= 12 && bytes.startsWith("RIFF") && bytes.mid(8, 4) == "WEBP")
        return QByteArrayLiteral("image/webp");
    return {};
}

MbtilesSource::MbtilesSource(QString path) : m_path(std::move(path)) {}

MbtilesSource::~MbtilesSource() {
    sqlite3_finalize(m_select);
    sqlite3_close(m_db);
}

std::shared_ptr<MbtilesSource> MbtilesSource::open(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        refuse(QCoreApplication::translate("MbtilesSource", "The file cannot be read: %1").arg(file.errorString()));
    const QByteArray header = file.read(16);
    file.close();
    if (header.isEmpty())
        refuse(QCoreApplication::translate("MbtilesSource", "The file is empty."));
    if (header != QByteArray("SQLite format 3\0", 16))
        refuse(QCoreApplication::translate("MbtilesSource",
                                           "The file is not an MBTiles map (it is not an SQLite database)."));

    std::shared_ptr<MbtilesSource> source(new MbtilesSource(QFileInfo(path).absoluteFilePath()));
    // immutable=1: no locks and no journal files, so a map on a read-only card or share works as well.
    const QByteArray uri = QUrl::fromLocalFile(source->m_path).toEncoded() + "?immutable=1";
    if (sqlite3_open_v2(uri.constData(), &source->m_db, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX,
                        nullptr) != SQLITE_OK)
        refuse(QCoreApplication::translate("MbtilesSource", "The file cannot be opened: %1")
                   .arg(QString::fromUtf8(sqlite3_errmsg(source->m_db))));
    sqlite3* db = source->m_db;

    // Metadata: name, attribution and format; a file without the table is still a map.
    sqlite3_stmt* metadata = nullptr;
    if (sqlite3_prepare_v2(db, "SELECT name, value FROM metadata", -1, &metadata, nullptr) == SQLITE_OK) {
        while (sqlite3_step(metadata) == SQLITE_ROW) {
            const QString key = QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(metadata, 0)));
            const QString value = QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(metadata, 1)));
            if (key == QLatin1String("name"))
                source->m_name = value.simplified();
            else if (key == QLatin1String("attribution"))
                source->m_attribution = plainText(value);
            else if (key == QLatin1String("format") && value == QLatin1String("pbf")) {
                sqlite3_finalize(metadata);
                refuse(QCoreApplication::translate(
                    "MbtilesSource",
                    "The file holds vector tiles; only maps of pictures (PNG, JPEG, WebP) can be shown."));
            }
        }
    }
    sqlite3_finalize(metadata);
    if (source->m_name.isEmpty())
        source->m_name = QFileInfo(path).completeBaseName();

    if (sqlite3_prepare_v2(db,
                           "SELECT tile_data FROM tiles WHERE zoom_level = ?1 AND tile_column = ?2 AND tile_row = ?3",
                           -1, &source->m_select, nullptr) != SQLITE_OK) {
        const QString error = QString::fromUtf8(sqlite3_errmsg(db));
        // SQLITE_ERROR is SQL's own complaint (no such table or column); anything else is the file's state.
        if (sqlite3_errcode(db) == SQLITE_ERROR)
            refuse(QCoreApplication::translate("MbtilesSource", "The file has no map tiles (%1).").arg(error));
        refuse(QCoreApplication::translate("MbtilesSource", "The file is damaged: %1").arg(error));
    }

    // One tile tells whether the pictures are of a kind the page can show.
    sqlite3_stmt* probe = nullptr;
    QByteArray first;
    int result = sqlite3_prepare_v2(db, "SELECT tile_data FROM tiles LIMIT 1", -1, &probe, nullptr);
    if (result == SQLITE_OK)
        result = sqlite3_step(probe);
    if (result == SQLITE_ROW)
        first = QByteArray(static_cast<const char*>(sqlite3_column_blob(probe, 0)), sqlite3_column_bytes(probe, 0));
    const QString error = QString::fromUtf8(sqlite3_errmsg(db));
    sqlite3_finalize(probe);
    if (result == SQLITE_DONE)
        refuse(QCoreApplication::translate("MbtilesSource", "The file holds no map tiles."));
    if (result != SQLITE_ROW)
        refuse(QCoreApplication::translate("MbtilesSource", "The file is damaged: %1").arg(error));
    if (pictureMimeType(first).isEmpty())
        refuse(QCoreApplication::translate("MbtilesSource", "The file's tiles are not PNG, JPEG or WebP pictures."));

    LOG_INFO(kLogger, "Map file {} ('{}') opened", source->m_path.toStdString(), source->m_name.toStdString());
    return source;
}

std::optional<QByteArray> MbtilesSource::tile(const TileKey& key) const {
    QMutexLocker lock(&m_mutex);
    sqlite3_reset(m_select);
    sqlite3_bind_int(m_select, 1, key.z);
    sqlite3_bind_int(m_select, 2, key.x);
    sqlite3_bind_int(m_select, 3, key.tmsRow());
    const int result = sqlite3_step(m_select);
    if (result != SQLITE_ROW) {
        if (result != SQLITE_DONE && !m_damageLogged) {
            m_damageLogged = true;
            LOG_ERROR(kLogger, "Map file {} cannot be read: {}", m_path.toStdString(), sqlite3_errmsg(m_db));
        }
        return std::nullopt;
    }
    QByteArray picture(static_cast<const char*>(sqlite3_column_blob(m_select, 0)), sqlite3_column_bytes(m_select, 0));
    sqlite3_reset(m_select);
    if (pictureMimeType(picture).isEmpty()) {
        if (!m_damageLogged) {
            m_damageLogged = true;
            LOG_WARN(kLogger, "Map file {} has damaged tiles (first at {}/{}/{}); they are left out",
                     m_path.toStdString(), key.z, key.x, key.y);
        }
        return std::nullopt;
    }
    return picture;
}
