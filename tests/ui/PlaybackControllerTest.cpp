// The playback controller on real items of generated one-second stripe files: file changes, seeks, speed,
// restart, cycle play, the rear camera's widget, capture, and the plots and the map page it drives.
#include "ui/PlaybackController.h"

#include "av/FrameConverter.h"
#include "av/VideoWidget.h"
#include "core/ApplicationOptions.h"
#include "core/Startup.h"
#include "support/EventWait.h"
#include "support/MouseEvents.h"
#include "support/StripeMedia.h"
#include "support/TestSupport.h"
#include "ui/MapWidgetAdapter.h"
#include "ui/MapWidgetSharedState.h"
#include "ui/NearestTrackTime.h"
#include "ui/TrackPlot.h"
#include "ui/VideoProgressSlider.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QWebEngineView>

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testsupport::waitUntil;

namespace {
const QDateTime kStart = QDateTime(QDate(2024, 5, 1), QTime(12, 0, 0), Qt::UTC).toLocalTime();

// Three one-second files whose pictures carry the numbers 0..29, 30..59 and 60..89; a rear file for the first.
QString mediaFile(int index) {
    static const std::vector<QString> files = [] {
        std::vector<QString> paths;
        for (int i = 0; i < 3; ++i) {
            testsupport::StripeVideo video;
            video.seconds = 1;
            video.firstFrame = 30 * i;
            paths.push_back(testsupport::sharedMediaDir() + QStringLiteral("/controller-%1.mp4").arg(i));
            testsupport::writeStripeVideo(paths.back(), video);
        }
        testsupport::StripeVideo rear;
        rear.seconds = 1;
        rear.width = 256;
        rear.height = 144;
        paths.push_back(testsupport::sharedMediaDir() + QStringLiteral("/controller-rear.mp4"));
        testsupport::writeStripeVideo(paths.back(), rear);
        return paths;
    }();
    return files.at(index);
}

Playlist::RawItemPtr rawItem(int file, QDateTime from, bool rear = false) {
    auto item = std::make_shared<Playlist::RawItem>();
    item->mainVideo = QFileInfo(mediaFile(file));
    if (rear)
        item->rearVideo = QFileInfo(mediaFile(3));
    item->from = from;
    item->to = from.addSecs(1);
    item->length = 1;
    item->durationMs = 1000;
    return item;
}

TrackPosition fix(QDateTime time, double longitude, double latitude) {
    TrackPosition position;
    position.time = trackTimeFromSeconds(time.toSecsSinceEpoch());
    position.longitude = longitude;
    position.latitude = latitude;
    return position;
}

// The first item with a track of a fix a second over the three files, heading east 0.001 degrees a second
// at 10 km/h more each second.
Playlist::RawItems withTrack(Playlist::RawItems items) {
    auto first = std::make_shared<Playlist::RawItem>(*items[0]);
    first->track = Playlist::Track{};
    for (int s = 0; s <= 3; ++s) {
        first->track->positions.push_back(fix(kStart.addSecs(s), 10.0 + s * 0.001, 50.0));
        first->track->positions.back().speed = 10.0 * s;
    }
    items[0] = first;
    return items;
}

int frameNumber(const MultiAVPlayer* player, size_t camera = 0) {
    if (!player)
        return -1;
    return testsupport::readFrameNumber(av::FrameConverter().convert(player->player(camera)->currentFrame().frame.get()));
}

struct PlaybackControllerTest : testing::Test {
    VideoProgressSlider slider;
    QLabel status;
    av::VideoWidget front;
    av::VideoWidget rear;
    std::unique_ptr<PlaybackController> controller;

    // Back to back by default; `gapSeconds` leaves a hole after each file.
    Playlist::RawItems threeFiles(bool rearOnFirst = false, int gapSeconds = 0) {
        Playlist::RawItems items;
        for (int i = 0; i < 3; ++i)
            items.push_back(rawItem(i, kStart.addSecs(i * (1 + gapSeconds)), rearOnFirst && i == 0));
        return items;
    }
    void start(Playlist::RawItems items) {
        const QDateTime to = items.back()->to;
        controller = std::make_unique<PlaybackController>(std::move(items), kStart, to,
                                                          PlaybackViews{nullptr, &status, &slider, &front, &rear}, false);
    }
    int shown() const { return frameNumber(controller->currentPlayer()); }
    void pauseOnFirstFrame() {
        ASSERT_TRUE(waitUntil([&] { return controller->currentPlayer() != nullptr; }));
        controller->togglePause();
        ASSERT_TRUE(waitUntil([&] { return controller->isPaused(); }));
    }
};
} // namespace

TEST_F(PlaybackControllerTest, plays_three_files_without_a_gap_and_stops_at_the_end) {
    start(threeFiles());
    std::vector<int> frames;
    QObject::connect(controller.get(), &PlaybackController::playerChanged, [&](MultiAVPlayer* player) {
        if (!player)
            return;
        frames.push_back(frameNumber(player));
        QObject::connect(player->player(0), &av::Player::frameShown, [&frames, player] { frames.push_back(frameNumber(player)); });
    });
    QSignalSpy stopped(controller.get(), &PlaybackController::stopped);
    ASSERT_TRUE(waitUntil([&] { return stopped.count() > 0 && !controller->currentPlayer(); }, 10000));

    ASSERT_FALSE(frames.empty());
    EXPECT_EQ(frames.front(), 0);
    EXPECT_EQ(frames.back(), 89);
    for (size_t i = 1; i < frames.size(); ++i)
        EXPECT_LE(frames[i - 1], frames[i]) << "at " << i;
    // Across each change of file: a picture of the one, then the first of the next. (Which picture of the
    // old file came last depends on the machine's load: a decoder that falls behind drops late pictures.
    // bench-controller measures the gap itself.)
    for (int first : {30, 60}) {
        const auto at = std::find(frames.begin(), frames.end(), first);
        ASSERT_NE(at, frames.end()) << first;
        ASSERT_NE(at, frames.begin());
        EXPECT_LT(*(at - 1), first);
        EXPECT_GE(*(at - 1), first - 30);
    }
    EXPECT_TRUE(controller->isPaused());
    EXPECT_EQ(controller->currentTime(), kStart.addSecs(3));
    EXPECT_EQ(status.text(), kStart.addSecs(3).toString("hh:mm:ss"));
    EXPECT_EQ(slider.value(), VideoProgressSlider::kSteps);
}

TEST_F(PlaybackControllerTest, seeks_into_another_file_and_before_a_files_start) {
    start(threeFiles(false, 1));  // files at 0 s, 2 s and 4 s
    pauseOnFirstFrame();

    controller->seekTo(kStart.addMSecs(4500));
    EXPECT_TRUE(waitUntil([&] { return shown() == 75; }));
    EXPECT_TRUE(waitUntil([&] { return controller->currentTime() >= kStart.addMSecs(4490); }));
    EXPECT_TRUE(controller->isPaused());

    // In the hole before the second file: that file from its first picture.
    controller->seekTo(kStart.addMSecs(1500));
    EXPECT_TRUE(waitUntil([&] { return shown() == 30; }));
    EXPECT_TRUE(waitUntil([&] { return controller->currentTime() == kStart.addSecs(2); }));

    // Within the file on screen: the same player seeks.
    const MultiAVPlayer* player = controller->currentPlayer();
    controller->seekTo(static_cast<double>(kStart.addMSecs(2700).toMSecsSinceEpoch()) / 1000);
    EXPECT_TRUE(waitUntil([&] { return shown() == 51; }));
    EXPECT_EQ(controller->currentPlayer(), player);
}

TEST_F(PlaybackControllerTest, a_map_click_seeks_to_the_nearest_moment_of_the_track) {
    auto items = threeFiles();
    auto withTrack = std::make_shared<Playlist::RawItem>(*items[0]);
    withTrack->track = Playlist::Track{};
    withTrack->track->positions = {fix(kStart, 10.0, 50.0), fix(kStart.addSecs(2), 10.01, 50.0)};
    items[0] = withTrack;
    start(items);
    pauseOnFirstFrame();

    // 60 % of the way along the segment, a little off it: 1.2 s, shown from whole seconds.
    controller->onCoordinatesFromMap(10.006, 50.0005);
    EXPECT_TRUE(waitUntil([&] { return shown() == 30; }));
    EXPECT_TRUE(waitUntil([&] { return controller->currentTime() == kStart.addSecs(1); }));
}

TEST(NearestTrackTime, interpolates_along_a_segment_and_takes_the_end_beyond_it) {
    const TrackPositions track{fix(kStart, 10.0, 50.0), fix(kStart.addSecs(10), 10.01, 50.0),
                               fix(kStart.addSecs(20), 10.01, 50.01)};
    const double t0 = kStart.toSecsSinceEpoch();
    EXPECT_FALSE(nearestTrackTime({}, 10, 50));
    EXPECT_NEAR(*nearestTrackTime(track, 10.005, 50.0), t0 + 5, 1e-6);
    EXPECT_NEAR(*nearestTrackTime(track, 10.0025, 49.9), t0 + 2.5, 1e-6);
    EXPECT_NEAR(*nearestTrackTime(track, 9.0, 50.0), t0, 1e-6);
    EXPECT_NEAR(*nearestTrackTime(track, 11.0, 51.0), t0 + 20, 1e-6);
    // The corner belongs to both segments: the earlier one wins.
    EXPECT_NEAR(*nearestTrackTime(track, 10.02, 49.99), t0 + 10, 1e-6);
}

// The status label follows at once, also when paused; Stop leaves no picture behind the item's end on the label.
TEST_F(PlaybackControllerTest, speed_steps_stop_at_their_limits_and_a_pause_toggle_returns_to_normal_speed) {
    start(threeFiles());
    ASSERT_TRUE(waitUntil([&] { return controller->currentPlayer() != nullptr; }));
    for (int i = 0; i < 5; ++i)
        controller->speedUp();
    EXPECT_EQ(controller->speed(), 8.0);
    for (int i = 0; i < 8; ++i)
        controller->slowDown();
    EXPECT_EQ(controller->speed(), 0.125);
    EXPECT_EQ(controller->currentPlayer()->clock().speed(), 0.125);
    EXPECT_TRUE(waitUntil([&] { return status.text().endsWith(" (0.125x)"); }));

    controller->togglePause();
    EXPECT_EQ(controller->speed(), 1.0);
    EXPECT_TRUE(waitUntil([&] { return controller->isPaused(); }));
    waitUntil([] { return false; }, 200);
    EXPECT_FALSE(status.text().endsWith("x)")) << status.text().toStdString();
    controller->togglePause();
    EXPECT_TRUE(waitUntil([&] { return !controller->isPaused(); }));
    EXPECT_EQ(controller->currentPlayer()->clock().speed(), 1.0);

    ASSERT_TRUE(front.hasFrame());
    controller->stop();
    EXPECT_EQ(status.text(), kStart.addSecs(3).toString("hh:mm:ss"));
    EXPECT_FALSE(front.hasFrame());
}

TEST_F(PlaybackControllerTest, previous_leaves_the_item_in_its_first_second_and_restarts_it_later) {
    start(threeFiles());
    pauseOnFirstFrame();
    EXPECT_FALSE(controller->restart(false));
    EXPECT_EQ(shown(), 0);

    controller->seekTo(kStart.addMSecs(1500));
    ASSERT_TRUE(waitUntil([&] { return shown() == 45; }));
    EXPECT_TRUE(controller->restart(false));
    EXPECT_FALSE(controller->isPaused());
    EXPECT_TRUE(waitUntil([&] { const int n = shown(); return n >= 0 && n < 30; }));
    EXPECT_TRUE(controller->restart(true));
}

TEST_F(PlaybackControllerTest, cycle_play_loops_over_its_interval_and_a_zero_length_one_freezes) {
    start(threeFiles());
    ASSERT_TRUE(waitUntil([&] { return controller->currentPlayer() != nullptr; }));
    const QDateTime from = kStart.addMSecs(1200), to = kStart.addMSecs(1700);
    PlaybackController::Interval cycle{from, to};
    std::vector<QDateTime> times;
    QObject::connect(controller.get(), &PlaybackController::positionUpdated, [&](const QDateTime& t) {
        if (!times.empty() || t >= from)  // from the first moment inside the loop on
            times.push_back(t);
    });
    controller->startCyclePlay([&] { return cycle; });
    // Twice round the loop, never running past its end by more than a notification and the slider's delay.
    EXPECT_TRUE(waitUntil([&] {
        int loops = 0;
        for (size_t i = 1; i < times.size(); ++i)
            loops += times[i] < times[i - 1];
        return loops >= 2;
    }, 8000));
    for (const QDateTime& t : times) {
        EXPECT_GE(t, from.addMSecs(-40));
        EXPECT_LE(t, to.addMSecs(200));
    }

    cycle = {kStart.addMSecs(2500), kStart.addMSecs(2500)};
    controller->onCyclePlayIntervalChanged();
    EXPECT_TRUE(controller->isSliderHeld());
    EXPECT_TRUE(waitUntil([&] { return shown() == 75; }));
    waitUntil([] { return false; }, 400);
    EXPECT_EQ(shown(), 75);

    controller->stopCyclePlay();
    EXPECT_FALSE(controller->isSliderHeld());
    EXPECT_TRUE(waitUntil([&] { return shown() > 76; }));
}

// An interval that starts where the next file begins, while the container of the file before (its sound) runs
// on past that moment, entered while playing and while paused: it loops inside the later file instead of
// flipping between the two files' edges.
TEST_F(PlaybackControllerTest, cycle_play_from_a_file_boundary_stays_in_the_later_file) {
    for (const bool paused : {false, true}) {
        SCOPED_TRACE(paused ? "paused" : "playing");
        Playlist::RawItems items = threeFiles();
        for (size_t i = 0; i + 1 < items.size(); ++i) {
            auto longer = std::make_shared<Playlist::RawItem>(*items[i]);
            longer->to = longer->to.addMSecs(30);
            items[i] = longer;
        }
        start(items);
        if (paused)
            pauseOnFirstFrame();
        else
            ASSERT_TRUE(waitUntil([&] { return controller->currentPlayer() != nullptr; }));
        const QDateTime from = kStart.addSecs(1), to = kStart.addMSecs(1600);
        std::vector<QDateTime> times;
        QObject::connect(controller.get(), &PlaybackController::positionUpdated, [&](const QDateTime& t) {
            if (!times.empty() || t >= from)
                times.push_back(t);
        });
        std::vector<MultiAVPlayer*> players;
        QObject::connect(controller.get(), &PlaybackController::playerChanged,
                         [&](MultiAVPlayer* player) { players.push_back(player); });
        controller->startCyclePlay([&] { return PlaybackController::Interval{from, to}; });
        if (paused) {
            EXPECT_TRUE(waitUntil([&] { return shown() == 30; }));
            players.clear();
            waitUntil([] { return false; }, 600);
            EXPECT_EQ(shown(), 30);
            EXPECT_THAT(players, testing::IsEmpty());
            controller->togglePause();
        }
        EXPECT_TRUE(waitUntil([&] {
            int loops = 0;
            for (size_t i = 1; i < times.size(); ++i)
                loops += times[i] < times[i - 1];
            return loops >= 2;
        }, 8000));
        for (const QDateTime& t : times) {
            EXPECT_GE(t, from.addMSecs(-40));
            EXPECT_LE(t, to.addMSecs(200));
        }
        EXPECT_LE(players.size(), 3u) << "the players changed at every loop";
        controller.reset();
    }
}

TEST_F(PlaybackControllerTest, a_one_camera_file_after_a_two_camera_file_blanks_the_rear_widget) {
    start(threeFiles(true));
    ASSERT_TRUE(waitUntil([&] { return controller->currentPlayer() != nullptr; }));
    EXPECT_EQ(controller->currentPlayer()->playerCount(), 2u);
    EXPECT_TRUE(rear.hasFrame());
    ASSERT_TRUE(waitUntil([&] { return controller->currentPlayer() && controller->currentPlayer()->playerCount() == 1; }));
    EXPECT_FALSE(rear.hasFrame());
    EXPECT_TRUE(front.hasFrame());
}

TEST_F(PlaybackControllerTest, files_that_cannot_be_played_are_skipped_with_a_message) {
    const auto replaced = [](Playlist::RawItemPtr item, const QString& file, Playlist::Damage damage) {
        auto copy = std::make_shared<Playlist::RawItem>(*item);
        copy->mainVideo = QFileInfo(file);
        copy->damage = damage;
        return copy;
    };
    const QString missing = testsupport::sharedMediaDir() + "/missing.mp4";
    const auto skippedText = [](const QSignalSpy& spy, int i) { return spy.at(i).at(0).toString().toStdString(); };

    // Found out while playing on.
    auto items = threeFiles();
    items[1] = replaced(items[1], missing, Playlist::Damage::None);
    start(items);
    QSignalSpy skipped(controller.get(), &PlaybackController::recordingSkipped);
    EXPECT_TRUE(waitUntil([&] { return shown() >= 60; }, 8000));
    ASSERT_EQ(skipped.count(), 1);
    EXPECT_THAT(skippedText(skipped, 0),
                testing::StartsWith("missing.mp4 cannot be played and is skipped. No such file"));

    // Known from loading (its index lost): a seek into it goes on with the next file.
    items = threeFiles();
    items[1] = replaced(items[1], mediaFile(1), Playlist::Damage::IndexMissing);
    start(items);
    QSignalSpy passed(controller.get(), &PlaybackController::recordingSkipped);
    pauseOnFirstFrame();
    controller->seekTo(kStart.addMSecs(1500));
    EXPECT_TRUE(waitUntil([&] { return shown() == 60; }));
    ASSERT_EQ(passed.count(), 1);
    EXPECT_THAT(skippedText(passed, 0), testing::HasSubstr("lost its index"));

    // Alone: said once the window listens, then the item ends.
    start({replaced(items[0], mediaFile(0), Playlist::Damage::IndexMissing)});
    QSignalSpy alone(controller.get(), &PlaybackController::recordingSkipped);
    QSignalSpy stopped(controller.get(), &PlaybackController::stopped);
    EXPECT_TRUE(waitUntil([&] { return alone.count() == 1 && stopped.count() == 1; }));
}

TEST_F(PlaybackControllerTest, a_file_of_unknown_length_plays_to_its_last_picture) {
    // Matroska written as a live stream says nothing of its length: the player's duration is 0.
    const QString raw = testsupport::sharedMediaDir() + "/controller-0-live.mkv";
    testsupport::runFfmpeg({"-i", mediaFile(0), "-c", "copy", "-f", "matroska", "-live", "1", raw});
    auto item = std::make_shared<Playlist::RawItem>(*rawItem(0, kStart));
    item->mainVideo = QFileInfo(raw);
    start({item});
    ASSERT_TRUE(waitUntil([&] { return controller->currentPlayer() != nullptr; }));
    EXPECT_EQ(controller->currentPlayer()->duration(), 0);
    EXPECT_TRUE(waitUntil([&] { return shown() >= 20; }, 5000)); // was taken for its end at once
}

TEST_F(PlaybackControllerTest, closing_while_a_file_is_still_opening_does_not_wait_for_it) {
    // A write lease holds every other open of the file until it is let go: a card that answers slowly.
    const QString file = testsupport::sharedMediaDir() + "/leased.mp4";
    QFile::remove(file);
    ASSERT_TRUE(QFile::copy(mediaFile(0), file));
    std::signal(SIGIO, SIG_IGN); // the kernel's word to the holder that someone waits
    const int fd = ::open(QFile::encodeName(file).constData(), O_RDWR);
    ASSERT_EQ(::fcntl(fd, F_SETLEASE, F_WRLCK), 0);
    std::thread letGo([fd] {
        std::this_thread::sleep_for(std::chrono::milliseconds(1500));
        ::fcntl(fd, F_SETLEASE, F_UNLCK);
    });
    auto item = std::make_shared<Playlist::RawItem>(*rawItem(0, kStart));
    item->mainVideo = QFileInfo(file);
    start({item});
    testsupport::runEventsFor(200); // the loader waits inside open() by now
    QElapsedTimer timer;
    timer.start();
    controller.reset();
    const qint64 closingMs = timer.elapsed();
    letGo.join();
    ::close(fd);
    EXPECT_LT(closingMs, 500); // 1300 when the window waited for the card
}

TEST_F(PlaybackControllerTest, capture_without_a_player_is_a_logic_error) {
    start(threeFiles());
    controller->stop();
    EXPECT_THROW(controller->capture({}), std::logic_error);
}

TEST_F(PlaybackControllerTest, reports_opening_until_the_file_to_show_plays) {
    start(threeFiles(false, 1));
    QSignalSpy opening(controller.get(), &PlaybackController::openingChanged);
    EXPECT_TRUE(controller->isOpening());
    ASSERT_TRUE(waitUntil([&] { return controller->currentPlayer() != nullptr; }));
    EXPECT_FALSE(controller->isOpening());
    controller->togglePause();
    ASSERT_TRUE(waitUntil([&] { return controller->isPaused(); }));

    controller->seekTo(kStart.addMSecs(4500));  // into the third file
    EXPECT_TRUE(waitUntil([&] { return shown() == 75; }));
    std::vector<bool> reported;
    for (const QList<QVariant>& signal : opening)
        reported.push_back(signal.at(0).toBool());
    EXPECT_EQ(reported, (std::vector<bool>{false, true, false}));
}

TEST_F(PlaybackControllerTest, plots_show_the_track_follow_the_time_and_seek_on_a_click) {
    TrackPlot plot(PlotType::Speed);
    plot.resize(600, 130);
    plot.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&plot));
    start(withTrack(threeFiles()));
    controller->setPlots({{PlotType::Speed, &plot}});
    EXPECT_EQ(plot.shownTrack(), &controller->track());
    EXPECT_EQ(plot.from(), kStart);
    EXPECT_EQ(plot.to(), kStart.addSecs(3));
    EXPECT_EQ(plot.runCount(), 1);
    pauseOnFirstFrame();

    // The middle of picture 75 (2.500 to 2.533 s): paused, its time is shown too.
    const QPointF point(plot.canvasXOf(kStart.addMSecs(2516)), plot.canvas()->height() / 2.0);
    testsupport::sendMouse(plot.canvas(), QEvent::MouseButtonPress, point);
    testsupport::sendMouse(plot.canvas(), QEvent::MouseButtonRelease, point);
    EXPECT_TRUE(waitUntil([&] { return shown() == 75; }));
    EXPECT_TRUE(waitUntil([&] {
        return controller->currentTime() >= kStart.addMSecs(2490) && plot.currentTime() == controller->currentTime();
    }));

    // A successor that took the plot keeps it; the last owner going clears it.
    auto successor = std::make_unique<PlaybackController>(withTrack(threeFiles()), kStart, kStart.addSecs(3),
                                                          PlaybackViews{}, false);
    successor->setPlots({{PlotType::Speed, &plot}});
    controller.reset();
    EXPECT_EQ(plot.shownTrack(), &successor->track());
    successor.reset();
    EXPECT_EQ(plot.shownTrack(), nullptr);
}

TEST_F(PlaybackControllerTest, a_zoom_on_one_plot_zooms_the_others) {
    auto speed = std::make_unique<TrackPlot>(PlotType::Speed);
    TrackPlot altitude(PlotType::Altitude);
    speed->resize(600, 130);
    speed->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(speed.get()));
    start(threeFiles(false, 30));  // 63 s
    controller->setPlots({{PlotType::Speed, speed.get()}, {PlotType::Altitude, &altitude}});
    const QPointF middle(speed->canvas()->width() / 2.0, 20);
    testsupport::sendWheel(speed->canvas(), middle, 2);
    EXPECT_LT(altitude.visibleRange().first.msecsTo(altitude.visibleRange().second), 63'000);
    EXPECT_EQ(altitude.visibleRange(), speed->visibleRange());

    speed.reset();  // a plot that is gone is skipped
    altitude.show();
    testsupport::sendWheel(altitude.canvas(), middle, -5);
    EXPECT_EQ(altitude.visibleRange(), std::make_pair(kStart, kStart.addSecs(63)));
}

TEST_F(PlaybackControllerTest, the_status_shows_the_frame_rate_when_asked) {
    struct RestoreOptions {
        ~RestoreOptions() { applicationOptions().showFps = false; }
    } restore;
    applicationOptions().showFps = true;
    start(threeFiles());
    const QRegularExpression withFps(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d \\d+\\.\\d$"));
    EXPECT_TRUE(waitUntil([&] { return withFps.match(status.text()).hasMatch(); })) << status.text().toStdString();
}

TEST_F(PlaybackControllerTest, capture_delivers_the_pictures_of_the_cameras_side_by_side) {
    start(threeFiles(true));
    pauseOnFirstFrame();
    ASSERT_EQ(controller->currentPlayer()->playerCount(), 2u);
    QSignalSpy captured(controller.get(), &PlaybackController::imageCaptured);
    controller->capture({});
    ASSERT_TRUE(waitUntil([&] { return captured.count() == 1; }));
    const QImage both = captured[0][0].value<QImage>();
    EXPECT_FALSE(both.isNull());
    EXPECT_EQ(both.size(), QSize(320 + 256, 180));

    controller->capture({1});
    ASSERT_TRUE(waitUntil([&] { return captured.count() == 2; }));
    EXPECT_EQ(captured[1][0].value<QImage>().size(), QSize(256, 144));
}

TEST_F(PlaybackControllerTest, the_map_page_receives_the_positions_of_play_and_seeks) {
    // Chromium refuses its sandbox as root and has no GPU under Xvfb.
    if (geteuid() == 0 && qEnvironmentVariableIsEmpty("QTWEBENGINE_DISABLE_SANDBOX"))
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    if (qEnvironmentVariableIsEmpty("QTWEBENGINE_CHROMIUM_FLAGS"))
        qputenv("QTWEBENGINE_CHROMIUM_FLAGS", "--disable-gpu");
    provideWebChannelScript(QDir(QStringLiteral(REELVUE_RUN_DIR)));
    QWebEngineView view;
    view.resize(600, 400);
    view.show();
    MapWidgetAdapter map(&view, QUrl::fromLocalFile(QStringLiteral(REELVUE_RUN_DIR "/map/dist/index.html")));
    QSignalSpy ready(&map, &MapWidgetAdapter::ready);
    ASSERT_TRUE(ready.wait(60000)) << "the map page never connected";
    QSignalSpy positions(map.sharedState(), &MapWidgetSharedState::positionChanged);

    auto items = withTrack(threeFiles());
    controller = std::make_unique<PlaybackController>(items, kStart, items.back()->to,
                                                      PlaybackViews{&map, &status, &slider, &front, &rear}, false);
    const double start = kStart.toSecsSinceEpoch();
    ASSERT_TRUE(waitUntil([&] { return !positions.isEmpty() && positions.last().at(0).toDouble() > start + 1; }, 8000));
    // Between fixes the vehicle is interpolated along the track: 0.001 degrees a second.
    for (const QList<QVariant>& position : positions) {
        const double t = position.at(0).toDouble();
        EXPECT_NEAR(position.at(1).toDouble(), 10.0 + (t - start) * 0.001, 1e-9) << t - start;
        EXPECT_DOUBLE_EQ(position.at(2).toDouble(), 50.0);
    }

    controller->togglePause();
    positions.clear();
    controller->seekTo(kStart.addMSecs(500));
    ASSERT_TRUE(waitUntil([&] { return !positions.isEmpty() && positions.last().at(4).toBool(); }));
    EXPECT_NEAR(positions.last().at(0).toDouble(), start + 0.5, 0.05);
    controller.reset();  // before the map it borrows
}
