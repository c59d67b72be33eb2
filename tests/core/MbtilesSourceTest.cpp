// MBTiles map files made in the test: rows flipped, metadata read, and every kind of bad file refused with a reason.
#include "core/MbtilesSource.h"

#include "support/MbtilesFile.h"
#include "support/TestSupport.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <functional>

using testsupport::MbtilesTile;

TEST(MbtilesSourceTest, serves_tiles_by_the_web_maps_rows_with_the_files_credit) {
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("prague.mbtiles"));
    const QByteArray red = testsupport::solidPng(Qt::red), blue = testsupport::solidPng(Qt::blue);
    testsupport::writeMbtiles(path,
                              {{"name", "Prague"},
                               {"format", "png"},
                               {"attribution", "<a href=\"https://example.org\">&copy; Example maps</a>"}},
                              {{14, 8848, 5550, red}, {14, 8848, 5551, blue}, {14, 8849, 5550, "not a picture"}});
    const std::shared_ptr<MbtilesSource> map = MbtilesSource::open(path);
    EXPECT_EQ(map->name(), QStringLiteral("Prague"));
    EXPECT_EQ(map->attribution(), QStringLiteral("\u00a9 Example maps")) << "markup is not passed to the page";
    EXPECT_EQ(map->tile({14, 8848, 5550}), red);
    EXPECT_EQ(map->tile({14, 8848, 5551}), blue) << "the row below, not the one above";
    EXPECT_FALSE(map->tile({14, 8848, 5552}));
    EXPECT_FALSE(map->tile({13, 8848, 5550}));

    testsupport::LogCapture log;
    EXPECT_FALSE(map->tile({14, 8849, 5550})) << "a damaged picture is left out";
    EXPECT_FALSE(map->tile({14, 8849, 5550}));
    EXPECT_EQ(log.linesContaining("WARN core.MbtilesSource - Map file").size(), 1u) << "said once per file";
    EXPECT_EQ(pictureMimeType(red), QByteArray("image/png"));
    EXPECT_EQ(pictureMimeType(QByteArray("RIFF\0\0\0\0WEBPVP8 ", 16)), QByteArray("image/webp"));
    EXPECT_EQ(pictureMimeType(QByteArray("\xff\xd8\xff\xe0", 4)), QByteArray("image/jpeg"));
}

TEST(MbtilesSourceTest, refuses_files_that_cannot_serve_as_a_map_with_the_reason) {
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("map.mbtiles"));
    const QByteArray png = testsupport::solidPng(Qt::green);
    const struct {
        const char* what;
        std::function<void()> make;
        const char* reason;
    } cases[] = {
        {"missing", [] {}, "cannot be read"},
        {"empty",
         [&] {
             QFile f(path);
             f.open(QIODevice::WriteOnly);
         },
         "The file is empty."},
        {"not SQLite",
         [&] {
             QFile f(path);
             f.open(QIODevice::WriteOnly);
             f.write(png);
         },
         "not an SQLite database"},
        {"SQLite cut short",
         [&] {
             testsupport::writeMbtiles(path, {}, {{1, 0, 0, png}, {1, 1, 0, png}, {1, 0, 1, png}, {1, 1, 1, png}});
             QFile f(path);
             f.resize(2048);
         },
         "damaged"},
        {"another program's database",
         [&] {
             sqlite3* db = nullptr;
             sqlite3_open(QFile::encodeName(path).constData(), &db);
             sqlite3_exec(db, "CREATE TABLE notes (text TEXT)", nullptr, nullptr, nullptr);
             sqlite3_close(db);
         },
         "has no map tiles"},
        {"no tiles",
         [&] {
             testsupport::writeMbtiles(path, {{"name", "Empty"}}, {});
         },
         "holds no map tiles"},
        {"vector tiles",
         [&] {
             testsupport::writeMbtiles(path, {{"format", "pbf"}}, {{0, 0, 0, "\x1f\x8b"}});
         },
         "vector"},
        {"damaged pictures",
         [&] {
             testsupport::writeMbtiles(path, {}, {{0, 0, 0, "garbage"}});
         },
         "not PNG, JPEG or WebP"},
    };
    for (const auto& bad : cases) {
        QFile::remove(path);
        bad.make();
        try {
            MbtilesSource::open(path);
            ADD_FAILURE() << bad.what << ": accepted";
        } catch (const std::runtime_error& e) {
            EXPECT_NE(std::string(e.what()).find(bad.reason), std::string::npos) << bad.what << ": " << e.what();
        }
    }
}
