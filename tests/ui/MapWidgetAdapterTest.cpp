// The map bridge with the real page in a real browser view: connection, track, position, marks and clicks.
#include "ui/MapWidgetAdapter.h"

#include "core/Startup.h"
#include "logging/Logging.h"
#include "support/TestSupport.h"
#include "support/TrackFixes.h"
#include "ui/MapWidgetSharedState.h"
#include "ui/TrackSimplifier.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTest>
#include <QWebEngineView>

#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>

namespace {
constexpr int kPageTimeoutMs = 60000; // a fresh machine without a GPU starts Chromium slowly
constexpr std::int64_t kStart = testsupport::kTrackStart;

// Chromium refuses its sandbox as root and has no GPU under Xvfb.
void prepareBrowserEnvironment() {
    if (geteuid() == 0 && qEnvironmentVariableIsEmpty("QTWEBENGINE_DISABLE_SANDBOX"))
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    if (qEnvironmentVariableIsEmpty("QTWEBENGINE_CHROMIUM_FLAGS"))
        qputenv("QTWEBENGINE_CHROMIUM_FLAGS", "--disable-gpu");
}

QUrl runTreePage() {
    return QUrl::fromLocalFile(QStringLiteral(REELVUE_RUN_DIR "/map/dist/index.html"));
}

// A drive around a block in Prague: east, north, west, with a straight run of fixes along each side.
TrackPositions blockDrive() {
    TrackPositions track;
    auto add = [&](double longitude, double latitude, double speed) {
        track.push_back(testsupport::fixAt(static_cast<int>(track.size()), longitude, latitude, std::nullopt, speed));
    };
    for (int i = 0; i < 40; ++i)
        add(14.40 + i * 1e-4, 50.08, 20.0 + i);
    for (int i = 0; i < 40; ++i)
        add(14.404, 50.08 + i * 1e-4, 60.0);
    for (int i = 0; i <= 40; ++i)
        add(14.404 - i * 1e-4, 50.084, 110.0);
    return track;
}

// Runs a script in the page and waits for its value.
QVariant evaluate(QWebEngineView& view, const QString& script) {
    auto result = std::make_shared<std::optional<QVariant>>();
    view.page()->runJavaScript(script, [result](const QVariant& value) { *result = value; });
    if (!QTest::qWaitFor([&] { return result->has_value(); }, kPageTimeoutMs)) {
        ADD_FAILURE() << "no answer from the page to: " << script.toStdString();
        return {};
    }
    return **result;
}

QJsonValue evaluateJson(QWebEngineView& view, const QString& expression) {
    const QVariant text = evaluate(view, QStringLiteral("JSON.stringify(%1)").arg(expression));
    return QJsonDocument::fromJson(QStringLiteral("[%1]").arg(text.toString()).toUtf8()).array().at(0);
}

class MapWidgetAdapterTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        prepareBrowserEnvironment();
        provideWebChannelScript(QDir(QStringLiteral(REELVUE_RUN_DIR)));
    }

    void SetUp() override {
        ASSERT_TRUE(QFile::exists(runTreePage().toLocalFile())) << "build the target reelvue_map first";
        ASSERT_TRUE(QFile::exists(QStringLiteral(REELVUE_RUN_DIR "/map/dist/qwebchannel.js")));
        m_view = std::make_unique<QWebEngineView>();
        m_view->resize(900, 640);
        m_view->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_view.get()));
    }

    // Creates the adapter and waits until the page has connected.
    void connectPage() {
        m_adapter = std::make_unique<MapWidgetAdapter>(m_view.get(), runTreePage());
        QSignalSpy ready(m_adapter.get(), &MapWidgetAdapter::ready);
        ASSERT_TRUE(ready.wait(kPageTimeoutMs)) << "the page never called init()";
    }

    void showTrack(const TrackPositions& track) {
        m_adapter->setTrack(&track);
        EXPECT_TRUE(testsupport::waitUntil([&] { return evaluate(*m_view, QStringLiteral("reelvueMap.state.track.length")).toInt() > 0; }, kPageTimeoutMs));
    }

    // Widgets first, then the adapter that borrows the view: the view goes last.
    void TearDown() override {
        m_adapter.reset();
        m_view.reset();
    }

    std::unique_ptr<QWebEngineView> m_view;
    std::unique_ptr<MapWidgetAdapter> m_adapter;
};
} // namespace

TEST_F(MapWidgetAdapterTest, page_loads_connects_and_reads_the_settings) {
    testsupport::LogCapture log;
    logging::setLevel(logging::TRACE);
    ASSERT_NO_FATAL_FAILURE(connectPage());
    EXPECT_TRUE(testsupport::waitUntil([&] { return !log.linesContaining("INFO ui.MapWidgetAdapter - Map widget loaded").empty(); }, 10000));
    EXPECT_EQ(log.linesContaining("INFO ui.MapWidgetAdapter - Web channel initialized").size(), 1u);

    // The page took the system language and the zoom texts from the settings.
    EXPECT_EQ(evaluate(*m_view, QStringLiteral("document.documentElement.lang")).toString(),
              QLocale::system().name().left(2));
    EXPECT_EQ(evaluate(*m_view, QStringLiteral("document.querySelector('.leaflet-control-zoom-in').title")).toString(),
              QStringLiteral("Zoom in"));
    // Offline tiles leave the scale and the attribution in place.
    EXPECT_TRUE(evaluate(*m_view, QStringLiteral("!!document.querySelector('.leaflet-control-scale')")).toBool());
    EXPECT_TRUE(evaluate(*m_view, QStringLiteral("document.querySelector('.leaflet-control-attribution').textContent"))
                    .toString()
                    .contains(QStringLiteral("OpenStreetMap")));
}

TEST_F(MapWidgetAdapterTest, a_page_that_is_missing_is_logged_as_a_failed_load) {
    testsupport::LogCapture log;
    QWebEngineView view;
    MapWidgetAdapter adapter(&view, QUrl::fromLocalFile(QStringLiteral("/nonexistent/map/dist/index.html")));
    EXPECT_TRUE(testsupport::waitUntil([&] { return !log.linesContaining("ERROR ui.MapWidgetAdapter - Failed to load map page").empty(); }, kPageTimeoutMs));
}

TEST_F(MapWidgetAdapterTest, the_page_holds_the_simplified_track_with_its_speeds) {
    ASSERT_NO_FATAL_FAILURE(connectPage());
    testsupport::LogCapture log;
    logging::setLevel(logging::TRACE);
    const TrackPositions track = blockDrive();
    const TrackPositions simplified = TrackSimplifier::simplify(track);
    ASSERT_EQ(simplified.size(), 4u) << "the block's four corners";
    ASSERT_NO_FATAL_FAILURE(showTrack(track));
    EXPECT_EQ(log.linesContaining("TRACE ui.MapWidgetAdapter - Track size 4").size(), 1u);

    const QJsonArray onPage = evaluateJson(*m_view, QStringLiteral("reelvueMap.state.track")).toArray();
    ASSERT_EQ(onPage.size(), 4);
    for (int i = 0; i < onPage.size(); ++i) {
        const QJsonObject point = onPage.at(i).toObject();
        EXPECT_DOUBLE_EQ(point.value(QStringLiteral("longitude")).toDouble(), simplified[i].longitude);
        EXPECT_DOUBLE_EQ(point.value(QStringLiteral("latitude")).toDouble(), simplified[i].latitude);
        EXPECT_EQ(point.value(QStringLiteral("captured")).toVariant().toLongLong(), trackTimeToSeconds(simplified[i].time));
    }
    EXPECT_DOUBLE_EQ(onPage.at(3).toObject().value(QStringLiteral("speed")).toDouble(), 110.0);
    // Three stretches of different speed: drawn as a casing plus three coloured runs.
    EXPECT_EQ(evaluate(*m_view, QStringLiteral("reelvueMap.trackLineCount()")).toInt(), 4);
}

TEST_F(MapWidgetAdapterTest, the_vehicle_and_the_time_marks_reach_the_page) {
    ASSERT_NO_FATAL_FAILURE(connectPage());
    const TrackPositions track = blockDrive();
    ASSERT_NO_FATAL_FAILURE(showTrack(track));
    QSignalSpy positions(m_adapter->sharedState(), &MapWidgetSharedState::positionChanged);

    // Half-way along the first side, heading east (no course: the bearing).
    m_adapter->setCurrentTime(QDateTime::fromMSecsSinceEpoch((kStart + 20) * 1000 + 500), true);
    EXPECT_TRUE(testsupport::waitUntil([&] { return positions.size() == 1; }, 5000));
    EXPECT_DOUBLE_EQ(positions.at(0).at(0).toDouble(), kStart + 20.5);
    EXPECT_NEAR(positions.at(0).at(1).toDouble(), 14.40205, 1e-9);
    EXPECT_DOUBLE_EQ(positions.at(0).at(2).toDouble(), 50.08);
    EXPECT_NEAR(positions.at(0).at(3).toDouble(), 90.0, 1e-6);
    EXPECT_TRUE(positions.at(0).at(4).toBool());
    EXPECT_TRUE(testsupport::waitUntil([&] { return evaluate(*m_view, QStringLiteral("!!reelvueMap.vehicleShown()")).toBool(); }, kPageTimeoutMs));
    const QJsonObject shown = evaluateJson(*m_view, QStringLiteral("reelvueMap.vehicleShown()")).toObject();
    EXPECT_NEAR(shown.value(QStringLiteral("longitude")).toDouble(), 14.40205, 1e-9) << "a seek jumps there at once";
    EXPECT_NEAR(shown.value(QStringLiteral("angle")).toDouble(), 90.0, 1e-6);

    // Past the end: the last fix, never as a user's jump.
    m_adapter->setCurrentTime(QDateTime::fromMSecsSinceEpoch((kStart + 1000) * 1000), true);
    EXPECT_TRUE(testsupport::waitUntil([&] { return positions.size() == 2; }, 5000));
    EXPECT_DOUBLE_EQ(positions.at(1).at(1).toDouble(), track.back().longitude);
    EXPECT_FALSE(positions.at(1).at(4).toBool());

    m_adapter->setTimeStep(30);
    EXPECT_TRUE(testsupport::waitUntil([&] { return evaluate(*m_view, QStringLiteral("reelvueMap.state.marks.length")).toInt() == 5; }, kPageTimeoutMs));
    EXPECT_EQ(evaluate(*m_view, QStringLiteral("document.querySelectorAll('.time-mark').length")).toInt(), 5);
    m_adapter->setTimeStep(0);
    EXPECT_TRUE(testsupport::waitUntil([&] { return evaluate(*m_view, QStringLiteral("reelvueMap.state.marks.length")).toInt() == 0; }, kPageTimeoutMs));
}

// Updates faster than the event loop turns (a slider dragged) reach the page as the latest one; a seek among
// them still makes the page jump. A new track drops a position of the old one.
TEST_F(MapWidgetAdapterTest, positions_of_one_event_loop_turn_go_as_the_latest_keeping_a_seek) {
    m_adapter = std::make_unique<MapWidgetAdapter>(m_view.get(), runTreePage());
    const TrackPositions track = blockDrive();
    m_adapter->setTrack(&track);
    QSignalSpy positions(m_adapter->sharedState(), &MapWidgetSharedState::positionChanged);
    m_adapter->setCurrentTime(QDateTime::fromMSecsSinceEpoch((kStart + 5) * 1000), true);
    m_adapter->setCurrentTime(QDateTime::fromMSecsSinceEpoch((kStart + 6) * 1000), false);
    m_adapter->setCurrentTime(QDateTime::fromMSecsSinceEpoch((kStart + 7) * 1000), false);
    EXPECT_TRUE(positions.isEmpty());
    EXPECT_TRUE(testsupport::waitUntil([&] { return positions.size() == 1; }, 5000));
    QTest::qWait(50);
    ASSERT_EQ(positions.size(), 1);
    EXPECT_DOUBLE_EQ(positions.at(0).at(0).toDouble(), kStart + 7.0);
    EXPECT_DOUBLE_EQ(positions.at(0).at(1).toDouble(), track[7].longitude);
    EXPECT_TRUE(positions.at(0).at(4).toBool());

    m_adapter->setCurrentTime(QDateTime::fromMSecsSinceEpoch((kStart + 8) * 1000), false);
    EXPECT_TRUE(testsupport::waitUntil([&] { return positions.size() == 2; }, 5000));
    EXPECT_FALSE(positions.at(1).at(4).toBool()) << "the earlier seek was sent already";

    testsupport::LogCapture log;
    m_adapter->setCurrentTime(QDateTime(), true);
    EXPECT_EQ(log.linesContaining("WARN ui.MapWidgetAdapter - setCurrentTime() has been called with an invalid").size(), 1u);
    m_adapter->setCurrentTime(QDateTime::fromMSecsSinceEpoch((kStart + 9) * 1000), false);
    m_adapter->setTrack(nullptr);
    m_adapter->setCurrentTime(QDateTime::fromMSecsSinceEpoch((kStart + 10) * 1000), false);
    QTest::qWait(50);
    EXPECT_EQ(positions.size(), 2);
}

TEST_F(MapWidgetAdapterTest, a_click_on_the_map_comes_back_as_longitude_then_latitude) {
    ASSERT_NO_FATAL_FAILURE(connectPage());
    const TrackPositions track = blockDrive();
    ASSERT_NO_FATAL_FAILURE(showTrack(track));

    // Where the page draws a point inside the block, in the view's pixels.
    const double longitude = 14.4025, latitude = 50.0825;
    const QJsonObject pixel =
        evaluateJson(*m_view, QStringLiteral("reelvueMap.map.latLngToContainerPoint([%1, %2])").arg(latitude).arg(longitude))
            .toObject();
    const QPoint at(qRound(pixel.value(QStringLiteral("x")).toDouble()), qRound(pixel.value(QStringLiteral("y")).toDouble()));
    ASSERT_TRUE(m_view->rect().contains(at)) << at.x() << "," << at.y();
    const double degreesPerPixel =
        evaluate(*m_view, QStringLiteral("360 / (256 * Math.pow(2, reelvueMap.map.getZoom()))")).toDouble();

    QSignalSpy clicks(m_adapter.get(), &MapWidgetAdapter::coordinatesReceived);
    QWidget* surface = m_view->focusProxy() ? m_view->focusProxy() : m_view.get();
    QTest::mouseMove(surface, at);
    QTest::mouseClick(surface, Qt::LeftButton, Qt::NoModifier, at);
    ASSERT_TRUE(clicks.wait(kPageTimeoutMs) || clicks.size() == 1);
    EXPECT_NEAR(clicks.at(0).at(0).toDouble(), longitude, 2 * degreesPerPixel);
    EXPECT_NEAR(clicks.at(0).at(1).toDouble(), latitude, 2 * degreesPerPixel);
}

TEST_F(MapWidgetAdapterTest, the_page_asking_for_the_location_is_granted_it) {
    testsupport::LogCapture log;
    ASSERT_NO_FATAL_FAILURE(connectPage());
    evaluate(*m_view, QStringLiteral("navigator.geolocation.getCurrentPosition(function () {}, function () {}); true"));
    EXPECT_TRUE(testsupport::waitUntil([&] { return !log.linesContaining("INFO ui.MapWidgetAdapter - Grant geolocation permission!").empty(); }, kPageTimeoutMs));
}

TEST_F(MapWidgetAdapterTest, a_change_of_language_renames_the_zoom_buttons) {
    ASSERT_NO_FATAL_FAILURE(connectPage());
    QSignalSpy changes(m_adapter->sharedState(), &MapWidgetSharedState::localeChanged);
    m_adapter->onLocaleChanged(QLocale(QStringLiteral("pl_PL")));
    ASSERT_EQ(changes.size(), 1);
    EXPECT_EQ(changes.at(0).at(0).toString(), QStringLiteral("pl_PL"));
    EXPECT_TRUE(testsupport::waitUntil([&] { return evaluate(*m_view, QStringLiteral("document.documentElement.lang")).toString() == QStringLiteral("pl"); }, kPageTimeoutMs));
}
