// A phone's GPX attached to a card whose recordings have no track: its positions reach the played track and
// a saved picture's EXIF block moved by the offset (exiftool reads the picture), and the card remembers both.
#include "ui/MainWindow.h"

#include "core/Startup.h"
#include "support/RecordingFixtures.h"
#include "support/TestSupport.h"
#include "support/TmpfsMount.h"
#include "ui/PlaybackController.h"
#include "ui/TrackAttacher.h"

#include <QDir>
#include <QProcess>
#include <QSettings>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QWebEngineView>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <optional>

using testsupport::waitUntil;

namespace {
constexpr int kLoadTimeoutMs = 30000;
const QDateTime kVideoStart(QDate(2024, 3, 7), QTime(14, 0, 0)); // local, as the file names say
const QDateTime kGpxStart = kVideoStart.addSecs(-60);

// The phone moves east and north at a steady pace, one fix a second, so every moment has its own place.
double longitudeAt(double secondsFromGpxStart) { return 14.0 + secondsFromGpxStart * 1e-4; }
double latitudeAt(double secondsFromGpxStart) { return 50.0 + secondsFromGpxStart * 1e-5; }

QByteArray phoneGpx() {
    QByteArray gpx = R"(<?xml version="1.0" encoding="UTF-8"?>
<gpx version="1.1" creator="phone" xmlns="http://www.topografix.com/GPX/1/1"><trk><trkseg>
)";
    for (int second = 0; second <= 120; ++second)
        gpx += QStringLiteral(R"(<trkpt lat="%1" lon="%2"><ele>300</ele><time>%3</time></trkpt>
)")
                   .arg(latitudeAt(second), 0, 'f', 6)
                   .arg(longitudeAt(second), 0, 'f', 6)
                   .arg(kGpxStart.addSecs(second).toUTC().toString(Qt::ISODate))
                   .toUtf8();
    return gpx + "</trkseg></trk></gpx>\n";
}

// Where the track shown plays at `time`: the phone's place `offset` seconds earlier.
double expectedLongitude(const QDateTime& time, int offset) {
    return longitudeAt((kGpxStart.msecsTo(time) - offset * 1000) / 1000.0);
}

QVariant evaluate(QWebEngineView& view, const QString& script) {
    auto result = std::make_shared<std::optional<QVariant>>();
    view.page()->runJavaScript(script, [result](const QVariant& value) { *result = value; });
    waitUntil([&] { return result->has_value(); }, 10000);
    return result->value_or(QVariant());
}

class TrackAttacherTest : public testing::Test {
protected:
    void SetUp() override {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_settingsDir.path());
        testsupport::placeVideo(m_card.filePath("Normal/2024_0307_140000_F.MP4"), 10);
        testsupport::placeVideo(m_card.filePath("Normal/2024_0307_140010_F.MP4"), 10);
        testsupport::writeFile(m_out.filePath("phone.gpx"), phoneGpx());
        m_previousDirectory = QDir::currentPath();
        QDir::setCurrent(QStringLiteral(REELVUE_RUN_DIR)); // the map page, as the installed program finds it
        provideWebChannelScript(QDir(QStringLiteral(REELVUE_RUN_DIR)));
    }
    void TearDown() override { QDir::setCurrent(m_previousDirectory); }

    std::unique_ptr<MainWindow> openCard() {
        auto window = std::make_unique<MainWindow>();
        MainWindow::FileChoosers choosers;
        choosers.openFileName = [this](QWidget*, const QString&, const QString&, const QString&) { return m_out.filePath("phone.gpx"); };
        choosers.saveFileName = [this](QWidget*, const QString&, const QString&, const QString&) { return m_out.filePath("frame.jpg"); };
        window->setFileChoosers(choosers);
        window->resize(1280, 720);
        window->show();
        window->loadDirectory(m_card.path());
        EXPECT_TRUE(waitUntil([&] { return window->playbackController() && window->playbackController()->currentPlayer(); },
                              kLoadTimeoutMs));
        return window;
    }

    // Waits until the item plays with a track whose first fix is the phone's place `offset` seconds before.
    static bool playsWithOffset(MainWindow& window, int offset) {
        return waitUntil([&] {
            const PlaybackController* controller = window.playbackController();
            if (!controller || !controller->currentPlayer() || controller->track().empty())
                return false;
            const TrackPosition& first = controller->track().front();
            return first.time == trackTimeFromSeconds(kVideoStart.toSecsSinceEpoch()) &&
                   std::abs(first.longitude - expectedLongitude(kVideoStart, offset)) < 1e-9;
        }, kLoadTimeoutMs);
    }

    testsupport::MountTestLock m_mountLock; // the window watches the mount table
    testsupport::LogCapture m_log;
    QTemporaryDir m_settingsDir;
    QTemporaryDir m_card;
    QTemporaryDir m_out;
    QString m_previousDirectory;
};

} // namespace

TEST_F(TrackAttacherTest, a_phone_track_moved_by_37_s_reaches_the_played_track_and_exif_and_survives_a_restart) {
    {
        auto window = openCard();
        ASSERT_TRUE(window->playbackController()->track().empty());
        TrackAttacher* tracks = window->trackAttacher();
        tracks->attach();
        ASSERT_TRUE(playsWithOffset(*window, 0));
        tracks->offsetBox()->setValue(37); // as the user does: the box is applied after a moment
        ASSERT_TRUE(playsWithOffset(*window, 37));
        // The map draws the moved track.
        auto* map = window->findChild<QWebEngineView*>(QStringLiteral("mapWidget"));
        ASSERT_NE(map, nullptr);
        EXPECT_TRUE(waitUntil([&] {
            const QVariant first = evaluate(*map, QStringLiteral("reelvueMap.state.track.length && reelvueMap.state.track[0].longitude"));
            return std::abs(first.toDouble() - expectedLongitude(kVideoStart, 37)) < 1e-9;
        }, 20000));

        PlaybackController* controller = window->playbackController();
        controller->seekTo(kVideoStart.addSecs(13));
        ASSERT_TRUE(waitUntil([&] { return controller->currentTime() >= kVideoStart.addSecs(13); }, 10000));
        controller->togglePause();
        ASSERT_TRUE(waitUntil([&] { return controller->isPaused(); }));
        waitUntil([] { return false; }, 200);
        const QDateTime shown = controller->currentTime();
        window->onSaveMainCameraFrame();
        ASSERT_TRUE(waitUntil([&] { return !m_log.linesContaining("Updated EXIF Header in").empty(); }));

        QProcess exiftool;
        exiftool.start("exiftool", {"-n", "-s3", "-GPSLatitude", "-GPSLongitude", m_out.filePath("frame.jpg")});
        ASSERT_TRUE(exiftool.waitForFinished(10000) && exiftool.exitCode() == 0);
        const QList<QByteArray> values = exiftool.readAllStandardOutput().trimmed().split('\n');
        ASSERT_EQ(values.size(), 2);
        const double seconds = (kGpxStart.msecsTo(shown) - 37000) / 1000.0;
        EXPECT_NEAR(values[0].toDouble(), latitudeAt(seconds), 1e-6);
        EXPECT_NEAR(values[1].toDouble(), longitudeAt(seconds), 1e-5); // 0.1 s of the phone's pace
    }
    // A new window on the same settings attaches the track to the card again, with its offset.
    auto window = openCard();
    ASSERT_TRUE(playsWithOffset(*window, 37));
    EXPECT_EQ(window->trackAttacher()->offsetBox()->value(), 37);

    // Detached, the card plays without a track and forgets it.
    window->trackAttacher()->detach();
    ASSERT_TRUE(waitUntil([&] { return window->playbackController() && window->playbackController()->track().empty(); }));
    window.reset();
    window = openCard();
    waitUntil([] { return false; }, 500);
    EXPECT_TRUE(window->playbackController()->track().empty());
}
