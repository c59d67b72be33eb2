// The map's tiles in the real page without a network: an MBTiles file made here, a stand-in tile server on
// 127.0.0.1 and the disk cache, read back from grabs of the view; bad map files; the notice without tiles.
#include "ui/OfflineMaps.h"

#include "core/MbtilesSource.h"
#include "core/Startup.h"
#include "core/TileCache.h"
#include "logging/Logging.h"
#include "support/BoxAnswerer.h"
#include "support/LocalHttpServer.h"
#include "support/MbtilesFile.h"
#include "support/TestSupport.h"
#include "support/TrackFixes.h"
#include "ui/MapTileState.h"
#include "ui/MapWidgetAdapter.h"
#include "ui/TileSchemeHandler.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMenu>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineView>

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <memory>

namespace {
// The test's main creates the application object; the scheme has to be known before, as in the program's main.
const bool kSchemeRegistered = [] {
    TileSchemeHandler::registerScheme();
    return true;
}();

constexpr int kPageTimeoutMs = 60000;
// Port 1 on the loopback refuses at once: a machine without a network, quickly.
const QString kNoServer = QStringLiteral("http://127.0.0.1:1/{z}/{x}/{y}.png");
const QColor kBackground(0xec, 0xea, 0xe4); // the page's plain land colour

// A drive around a block in Prague: east, north, west. The block's inside and the view's left side stay clear of
// the line, so the tiles show there.
TrackPositions blockDrive() {
    TrackPositions track;
    auto add = [&](double longitude, double latitude) {
        track.push_back(testsupport::fixAt(static_cast<int>(track.size()), longitude, latitude, std::nullopt, 50.0));
    };
    for (int i = 0; i <= 40; ++i)
        add(14.40 + i * 1e-4, 50.08);
    for (int i = 1; i <= 40; ++i)
        add(14.404, 50.08 + i * 1e-4);
    for (int i = 1; i <= 40; ++i)
        add(14.404 - i * 1e-4, 50.084);
    return track;
}

// Each tile of the map file has a colour of its own column and row, so a tile in the wrong place shows.
QColor tileColour(int x, int y) {
    return QColor(60 + (x % 4) * 60, 60 + (y % 4) * 60, 90);
}

// Tiles around the block at the zooms the page may choose for it.
void writePragueMap(const QString& path) {
    std::vector<testsupport::MbtilesTile> tiles;
    for (int z = 14; z <= 17; ++z) {
        const double n = std::pow(2.0, z);
        const int cx = static_cast<int>((14.402 + 180.0) / 360.0 * n);
        const double lat = 50.082 * M_PI / 180.0;
        const int cy = static_cast<int>((1.0 - std::log(std::tan(lat) + 1.0 / std::cos(lat)) / M_PI) / 2.0 * n);
        for (int x = cx - 4; x <= cx + 4; ++x)
            for (int y = cy - 4; y <= cy + 4; ++y)
                tiles.push_back({z, x, y, testsupport::solidPng(tileColour(x, y))});
    }
    testsupport::writeMbtiles(path, {{"name", "Prague"}, {"attribution", "<b>Example maps</b>"}, {"format", "png"}},
                              tiles);
}

bool near(const QColor& a, const QColor& b) {
    return std::abs(a.red() - b.red()) <= 6 && std::abs(a.green() - b.green()) <= 6 &&
           std::abs(a.blue() - b.blue()) <= 6;
}

class MapTilesTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        ASSERT_TRUE(kSchemeRegistered);
        if (geteuid() == 0 && qEnvironmentVariableIsEmpty("QTWEBENGINE_DISABLE_SANDBOX"))
            qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
        if (qEnvironmentVariableIsEmpty("QTWEBENGINE_CHROMIUM_FLAGS"))
            qputenv("QTWEBENGINE_CHROMIUM_FLAGS", "--disable-gpu");
        provideWebChannelScript(QDir(QStringLiteral(REELVUE_RUN_DIR)));
    }

    void SetUp() override { QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_settingsDir.path()); }

    void TearDown() override { closeMap(); }

    // The window's parts for the map: view, adapter with the page connected, offline maps serving the tiles.
    void openMap(const QString& serverUrl) {
        // A profile of the test's own: the handlers of other tests' windows stay out, and this one goes with it.
        m_profile = std::make_unique<QWebEngineProfile>();
        m_view = std::make_unique<QWebEngineView>();
        m_view->setPage(new QWebEnginePage(m_profile.get(), m_view.get()));
        m_view->resize(900, 640);
        m_view->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_view.get()));
        m_adapter = std::make_unique<MapWidgetAdapter>(
            m_view.get(), QUrl::fromLocalFile(QStringLiteral(REELVUE_RUN_DIR "/map/dist/index.html")));
        m_maps = std::make_unique<OfflineMaps>(&m_menu, nullptr, m_adapter->tileState(),
                                               TileSchemeHandler::Config{serverUrl, m_cacheDir.path(), 64 << 20},
                                               m_choosers, nullptr);
        m_maps->install(m_view->page()->profile());
        QSignalSpy ready(m_adapter.get(), &MapWidgetAdapter::ready);
        ASSERT_TRUE(ready.wait(kPageTimeoutMs)) << "the page never called init()";
        m_adapter->setTrack(&m_track);
    }

    void closeMap() {
        m_maps.reset();
        m_adapter.reset();
        m_view.reset();
        m_profile.reset();
    }

    QVariant evaluate(const QString& script) {
        auto result = std::make_shared<std::optional<QVariant>>();
        m_view->page()->runJavaScript(script, [result](const QVariant& value) { *result = value; });
        if (!testsupport::waitUntil([&] { return result->has_value(); }, kPageTimeoutMs)) {
            ADD_FAILURE() << "no answer from the page to: " << script.toStdString();
            return {};
        }
        return **result;
    }

    // Waits until the page fitted the track and its tile layer has settled (every tile loaded or failed).
    void waitForTiles() {
        ASSERT_TRUE(testsupport::waitUntil(
            [&] {
                return evaluate(QStringLiteral("reelvueMap.state.track.length > 0 && "
                                               "document.querySelectorAll('.leaflet-tile').length > 0 && "
                                               "!reelvueMap.tiles.isLoading()"))
                    .toBool();
            },
            kPageTimeoutMs));
    }

    QColor pixel(const QPoint& at) { return m_view->grab().toImage().pixelColor(at); }

    // The colour of the map file's tile under a point of the view.
    QColor fileTileAt(const QPoint& at) {
        const QJsonArray tile =
            QJsonDocument::fromJson(
                evaluate(QStringLiteral("(function () { var m = reelvueMap.map; var p = m.project("
                                        "m.containerPointToLatLng([%1, %2]), m.getZoom()).divideBy(256).floor();"
                                        " return JSON.stringify([p.x, p.y]); })()")
                             .arg(at.x())
                             .arg(at.y()))
                    .toString()
                    .toUtf8())
                .array();
        return tileColour(tile.at(0).toInt(), tile.at(1).toInt());
    }

    // Points clear of the track, the controls and the notice: the view's left side and the block's inside.
    std::vector<QPoint> clearPoints() const {
        return {{60, 320}, {150, 500}, {m_view->width() / 2, m_view->height() / 2}};
    }

    QTemporaryDir m_settingsDir;
    QTemporaryDir m_cacheDir;
    QTemporaryDir m_files;
    FileChoosers m_choosers;
    QMenu m_menu;
    TrackPositions m_track = blockDrive();
    std::unique_ptr<QWebEngineProfile> m_profile;
    std::unique_ptr<QWebEngineView> m_view;
    std::unique_ptr<MapWidgetAdapter> m_adapter;
    std::unique_ptr<OfflineMaps> m_maps;
};
} // namespace

// Offline with a map file and three bad ones: the bad ones are named with their reasons, the good one shows.
TEST_F(MapTilesTest, a_map_file_shows_its_tiles_in_place_and_bad_ones_are_named) {
    const QString prague = m_files.filePath(QStringLiteral("prague.mbtiles"));
    ASSERT_NO_FATAL_FAILURE(writePragueMap(prague));
    const QString text = m_files.filePath(QStringLiteral("notes.mbtiles"));
    const QString empty = m_files.filePath(QStringLiteral("empty.mbtiles"));
    const QString damaged = m_files.filePath(QStringLiteral("damaged.mbtiles"));
    {
        QFile file(text);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("not a map\n");
        QFile(empty).open(QIODevice::WriteOnly);
    }
    ASSERT_NO_FATAL_FAILURE(testsupport::writeMbtiles(damaged, {}, {{16, 1, 1, "\x89PNX garbage"}}));

    QStringList messages;
    ASSERT_NO_FATAL_FAILURE(openMap(kNoServer));
    QObject::connect(m_maps.get(), &OfflineMaps::message, [&](const QString& message) { messages << message; });
    QSignalSpy changed(m_maps.get(), &OfflineMaps::filesChanged);
    m_maps->open({text, empty, prague, damaged}, false);
    ASSERT_TRUE(testsupport::waitUntil([&] { return !changed.isEmpty(); }, 10000));
    ASSERT_EQ(messages.size(), 1);
    for (const QString& reason : {QStringLiteral("notes.mbtiles cannot be used as an offline map: The file is not an "
                                                 "MBTiles map (it is not an SQLite database)."),
                                  QStringLiteral("empty.mbtiles cannot be used as an offline map: The file is empty."),
                                  QStringLiteral("damaged.mbtiles cannot be used as an offline map: The file's tiles "
                                                 "are not PNG, JPEG or WebP pictures.")})
        EXPECT_TRUE(messages[0].contains(reason)) << messages[0].toStdString();
    ASSERT_EQ(m_maps->files().size(), 1u);

    ASSERT_NO_FATAL_FAILURE(waitForTiles());
    for (const QPoint& at : clearPoints()) {
        const QColor expected = fileTileAt(at);
        EXPECT_TRUE(testsupport::waitUntil([&] { return near(pixel(at), expected); }, 5000))
            << "at " << at.x() << "," << at.y() << ": " << pixel(at).name().toStdString() << " instead of "
            << expected.name().toStdString();
    }
    EXPECT_TRUE(evaluate(QStringLiteral("document.querySelector('.leaflet-control-attribution').textContent"))
                    .toString()
                    .contains(QStringLiteral("Example maps")));
    EXPECT_TRUE(evaluate(QStringLiteral("reelvueMap.noTilesNotice()")).isNull());

    // From the View menu: a bad file is refused in a message box and not remembered, a good one is remembered.
    testsupport::BoxAnswerer boxes(QStringLiteral("OK"));
    QString chosen = empty;
    m_choosers.openFileName = [&](QWidget*, const QString&, const QString&, const QString&) { return chosen; };
    m_maps->addAction()->trigger();
    ASSERT_TRUE(testsupport::waitUntil([&] { return !boxes.texts.empty(); }, 10000));
    EXPECT_NE(boxes.texts[0].find("empty.mbtiles cannot be used as an offline map"), std::string::npos);
    chosen = prague;
    m_maps->addAction()->trigger();
    EXPECT_TRUE(testsupport::waitUntil(
        [&] { return QSettings().value(QStringLiteral("offlineMapFiles")).toStringList() == QStringList{prague}; }));
}

// No map file and no server: the track on the plain background, one log line and one notice for all the tiles.
TEST_F(MapTilesTest, without_any_tiles_the_track_shows_on_the_plain_background_with_one_notice) {
    testsupport::LogCapture log;
    ASSERT_NO_FATAL_FAILURE(openMap(kNoServer));
    ASSERT_NO_FATAL_FAILURE(waitForTiles());
    EXPECT_GT(evaluate(QStringLiteral("reelvueMap.trackLineCount()")).toInt(), 1);
    EXPECT_TRUE(
        testsupport::waitUntil([&] { return !evaluate(QStringLiteral("reelvueMap.noTilesNotice()")).isNull(); }));
    EXPECT_EQ(evaluate(QStringLiteral("reelvueMap.noTilesNotice()")).toString(), m_adapter->tileState()->noTilesText());
    EXPECT_EQ(evaluate(QStringLiteral("document.querySelectorAll('.no-tiles-notice').length")).toInt(), 1);
    for (const QPoint& at : clearPoints())
        EXPECT_TRUE(near(pixel(at), kBackground)) << pixel(at).name().toStdString();
    const int tiles = evaluate(QStringLiteral("document.querySelectorAll('.leaflet-tile').length")).toInt();
    EXPECT_GT(tiles, 4);
    EXPECT_EQ(log.linesContaining("WARN ui.TileSchemeHandler - No answer from the tile server").size(), 1u)
        << "one line for " << tiles << " tiles";
}

// The server's tiles are kept: the next window shows them from the cache with the server gone.
TEST_F(MapTilesTest, tiles_from_the_server_are_cached_and_served_again_without_it) {
    const QColor orange(240, 140, 20);
    auto server = std::make_unique<testsupport::LocalHttpServer>();
    server->routeOthers({200, testsupport::solidPng(orange)});
    ASSERT_NO_FATAL_FAILURE(openMap(server->url(QStringLiteral("/")).toString() + QStringLiteral("{z}/{x}/{y}.png")));
    ASSERT_NO_FATAL_FAILURE(waitForTiles());
    const QPoint left(60, 320);
    EXPECT_TRUE(testsupport::waitUntil([&] { return near(pixel(left), orange); }, 5000))
        << pixel(left).name().toStdString();
    const int fetched = server->requestCount();
    EXPECT_GT(fetched, 4);
    EXPECT_EQ(TileCache(m_cacheDir.path(), 1 << 30).usage().tiles, fetched);

    closeMap();
    server.reset();
    testsupport::LogCapture log;
    ASSERT_NO_FATAL_FAILURE(openMap(kNoServer));
    ASSERT_NO_FATAL_FAILURE(waitForTiles());
    // Addresses the browser has not seen, so none of its own caches can answer.
    evaluate(QStringLiteral("reelvueMap.tiles.options.v = 100; reelvueMap.tiles.redraw(); true"));
    ASSERT_NO_FATAL_FAILURE(waitForTiles());
    EXPECT_TRUE(testsupport::waitUntil([&] { return near(pixel(left), orange); }, 5000))
        << pixel(left).name().toStdString();
    EXPECT_TRUE(evaluate(QStringLiteral("reelvueMap.noTilesNotice()")).isNull());
    EXPECT_TRUE(log.linesContaining("No answer from the tile server").empty()) << "every tile came from the cache";
}
