// The map tile cache on a real folder: the bound with least-recently-used eviction, and cut files never served.
#include "core/TileCache.h"

#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {
QByteArray picture(int size, char fill) {
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + QByteArray(size - 8, fill);
}
} // namespace

TEST(TileCacheTest, keeps_within_its_bound_dropping_the_least_recently_read_first) {
    QTemporaryDir folder;
    constexpr int kTile = 10'000;
    // Room for ten tiles with their trailers.
    TileCache cache(folder.path(), 10 * (kTile + 8));
    for (int x = 0; x < 10; ++x)
        ASSERT_TRUE(cache.store({5, x, 1}, picture(kTile, static_cast<char>('a' + x))));
    EXPECT_EQ(cache.usage().tiles, 10);
    ASSERT_TRUE(cache.read({5, 0, 1})); // tile 0 is now the most recently used

    for (int x = 10; x < 40; ++x) {
        ASSERT_TRUE(cache.store({5, x, 1}, picture(kTile, 'z')));
        ASSERT_LE(cache.usage().bytes, cache.maxBytes()) << "after storing tile " << x;
        if (x == 12) {
            EXPECT_EQ(cache.read({5, 0, 1}), picture(kTile, 'a')) << "read recently, it stayed";
            EXPECT_FALSE(cache.read({5, 1, 1})) << "the oldest unread tile went first";
            EXPECT_TRUE(cache.read({5, 9, 1}));
        }
    }
    EXPECT_TRUE(cache.read({5, 39, 1}));
    EXPECT_FALSE(cache.read({5, 10, 1}));
    EXPECT_FALSE(cache.store({5, 99, 1}, picture(11 * kTile, 'x'))) << "larger than the whole bound";

    // A second cache on the same folder (another window) sees the same tiles and may empty it.
    TileCache other(folder.path(), cache.maxBytes());
    EXPECT_EQ(other.read({5, 39, 1}), picture(kTile, 'z'));
    EXPECT_TRUE(other.clear());
    EXPECT_EQ(cache.usage().tiles, 0);
    EXPECT_FALSE(cache.read({5, 39, 1}));
    EXPECT_TRUE(cache.store({5, 39, 1}, picture(kTile, 'y'))) << "the cleared folder is made again";
}

TEST(TileCacheTest, a_half_written_tile_is_never_served) {
    QTemporaryDir folder;
    TileCache cache(folder.path(), 1 << 20);
    const QByteArray whole = picture(5000, 'p');
    ASSERT_TRUE(cache.store({3, 2, 1}, whole));
    const QString path = folder.path() + QStringLiteral("/3/2/1.tile");
    ASSERT_TRUE(QFile::exists(path));

    // A writer that died before its rename leaves only its temporary file, which is not a tile.
    QFile part(folder.path() + QStringLiteral("/3/2/2.tile.4242.1"));
    ASSERT_TRUE(part.open(QIODevice::WriteOnly));
    part.write(whole.left(1000));
    part.close();
    EXPECT_FALSE(cache.read({3, 2, 2}));
    EXPECT_EQ(cache.usage().tiles, 1);

    // A tile file cut short (a full disk, a copy broken off) is recognised, removed and not served.
    const struct {
        const char* what;
        int keep;
    } cuts[] = {{"cut inside the picture", 3000}, {"cut inside the trailer", 5004}, {"empty", 0}};
    for (const auto& cut : cuts) {
        ASSERT_TRUE(cache.store({3, 2, 1}, whole));
        QFile file(path);
        ASSERT_TRUE(file.resize(cut.keep));
        testsupport::LogCapture log;
        EXPECT_FALSE(cache.read({3, 2, 1})) << cut.what;
        EXPECT_FALSE(QFile::exists(path)) << cut.what;
        EXPECT_EQ(log.linesContaining("WARN core.TileCache - Broken cached tile").size(), 1u) << cut.what;
    }
    ASSERT_TRUE(cache.store({3, 2, 1}, whole));
    EXPECT_EQ(cache.read({3, 2, 1}), whole);
}
