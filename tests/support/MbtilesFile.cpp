#include "support/MbtilesFile.h"

#include <QBuffer>
#include <QFile>
#include <QImage>

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace testsupport {

void writeMbtiles(const QString& path, const std::vector<std::pair<QString, QString>>& metadata,
                  const std::vector<MbtilesTile>& tiles) {
    QFile::remove(path);
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(QFile::encodeName(path).constData(), &db), SQLITE_OK);
    auto exec = [db](const char* sql) {
        EXPECT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sql;
    };
    exec("BEGIN");
    exec("CREATE TABLE metadata (name TEXT, value TEXT)");
    exec("CREATE TABLE tiles (zoom_level INTEGER, tile_column INTEGER, tile_row INTEGER, tile_data BLOB)");
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(db, "INSERT INTO metadata VALUES (?1, ?2)", -1, &statement, nullptr);
    for (const auto& [name, value] : metadata) {
        const QByteArray n = name.toUtf8(), v = value.toUtf8();
        sqlite3_bind_text(statement, 1, n.constData(), n.size(), SQLITE_TRANSIENT);
        sqlite3_bind_text(statement, 2, v.constData(), v.size(), SQLITE_TRANSIENT);
        EXPECT_EQ(sqlite3_step(statement), SQLITE_DONE);
        sqlite3_reset(statement);
    }
    sqlite3_finalize(statement);
    sqlite3_prepare_v2(db, "INSERT INTO tiles VALUES (?1, ?2, ?3, ?4)", -1, &statement, nullptr);
    for (const MbtilesTile& tile : tiles) {
        sqlite3_bind_int(statement, 1, tile.z);
        sqlite3_bind_int(statement, 2, tile.x);
        sqlite3_bind_int(statement, 3, (1 << tile.z) - 1 - tile.y);
        sqlite3_bind_blob(statement, 4, tile.data.constData(), tile.data.size(), SQLITE_TRANSIENT);
        EXPECT_EQ(sqlite3_step(statement), SQLITE_DONE);
        sqlite3_reset(statement);
    }
    sqlite3_finalize(statement);
    exec("COMMIT");
    sqlite3_close(db);
}

QByteArray solidPng(const QColor& colour) {
    QImage image(256, 256, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

} // namespace testsupport
