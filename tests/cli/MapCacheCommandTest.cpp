// reelvue-cli map-cache on a cache and settings of the test's own: the fill, the bound that is kept, clearing.
#include "core/TileCache.h"
#include "support/CliRunner.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;

TEST(MapCacheCommand, shows_sets_the_bound_and_clears) {
    QTemporaryDir home;
    // The child process finds its cache and settings folders here.
    qputenv("XDG_CACHE_HOME", QFile::encodeName(home.filePath(QStringLiteral("cache"))));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.filePath(QStringLiteral("config"))));
    TileCache cache(home.filePath(QStringLiteral("cache/Lumicor/Lumicor Reelvue/tiles")), 1 << 20);
    for (int x = 0; x < 3; ++x)
        ASSERT_TRUE(cache.store({4, x, 2}, QByteArray("\x89PNG\r\n\x1a\n", 8) + QByteArray(100'000, 'p')));

    testsupport::CliResult shown = testsupport::runCli({"map-cache"});
    EXPECT_EQ(shown.exitCode, 0) << shown.err;
    EXPECT_THAT(shown.out, HasSubstr("tiles\t3\nsize\t0.3 MB\nbound\t500 MB\n"));
    EXPECT_THAT(shown.out, HasSubstr("Lumicor Reelvue/tiles"));

    EXPECT_THAT(testsupport::runCli({"map-cache", "--size", "64"}).out, HasSubstr("bound\t64 MB"));
    EXPECT_THAT(testsupport::runCli({"map-cache"}).out, HasSubstr("bound\t64 MB")) << "the bound is remembered";
    EXPECT_THAT(testsupport::runCli({"map-cache", "--clear"}).out, HasSubstr("tiles\t0\nsize\t0.0 MB\n"));
    EXPECT_EQ(cache.usage().tiles, 0);

    const testsupport::CliResult bad = testsupport::runCli({"map-cache", "--size", "lots"});
    EXPECT_EQ(bad.exitCode, 2);
    EXPECT_THAT(bad.err, HasSubstr("--size takes a whole number of megabytes"));
    qunsetenv("XDG_CACHE_HOME");
    qunsetenv("XDG_CONFIG_HOME");
}
