// The multi-camera player on real stripe media: in step, capture and joining, errors and log lines.
#include "ui/MultiAVPlayer.h"

#include "av/FrameConverter.h"
#include "support/ErrorOf.h"
#include "support/EventWait.h"
#include "support/StripeMedia.h"
#include "support/TestSupport.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTransform>

#include <gtest/gtest.h>

#include <cmath>

using testsupport::errorOf;
using testsupport::waitUntil;

namespace {
constexpr double kFrameMs = 1000.0 / 30;

int shownFrame(const MultiAVPlayer& cameras, size_t index) {
    return testsupport::readFrameNumber(av::FrameConverter().convert(cameras.player(index)->currentFrame().frame.get()));
}

struct MultiAVPlayerTest : testing::Test {
    MultiAVPlayer cameras{2};

    void load() {
        cameras.setFiles({testsupport::sharedFrontVideo(), testsupport::sharedRearVideo()});
        cameras.load();
    }
    // Both cameras paused on frame `frame`.
    void holdAt(int frame) {
        load();
        QSignalSpy finished(&cameras, &MultiAVPlayer::seekFinished);
        cameras.seek(static_cast<qint64>((frame + 0.5) * kFrameMs));
        ASSERT_TRUE(waitUntil([&] { return shownFrame(cameras, 0) == frame && shownFrame(cameras, 1) == frame; }));
    }
    QImage capture(std::set<size_t> players) {
        QSignalSpy captured(&cameras, &MultiAVPlayer::imageCaptured);
        cameras.startCapture(std::move(players));
        EXPECT_TRUE(waitUntil([&] { return captured.count() == 1; }));
        return captured.isEmpty() ? QImage() : captured[0][0].value<QImage>();
    }
};
} // namespace

TEST(MultiAVPlayerSetup, rejects_wrong_counts_with_the_fixed_texts) {
    EXPECT_EQ(errorOf([] { MultiAVPlayer none(0); }), "MultiAVPlayer::MultiAVPlayer called with zero players");
    MultiAVPlayer cameras(2);
    EXPECT_EQ(errorOf([&] { cameras.setFiles({"front.mp4"}); }),
              "MultiAVPlayer::setRenderers called with invalid container size: 1 instead of 2");
    EXPECT_EQ(errorOf([&] { cameras.setRenderers({nullptr, nullptr, nullptr}); }),
              "MultiAVPlayer::setRenderers called with invalid container size: 3 instead of 2");
    EXPECT_THROW(cameras.setFiles({"front.mp4"}), std::logic_error);
}

TEST(MultiAVPlayerSetup, a_clock_change_request_from_outside_a_player_is_logged_and_ignored) {
    testsupport::LogCapture log;
    MultiAVPlayer cameras(1);
    cameras.changeClockType();
    EXPECT_EQ(log.linesContaining("MultiAVPlayer::changeClockType called without valid sender").size(), 1u);
}

TEST(MultiAVPlayerSetup, a_missing_file_fails_the_load_with_its_name) {
    MultiAVPlayer cameras(2);
    cameras.setFiles({testsupport::sharedFrontVideo(), testsupport::sharedMediaDir() + "/no-rear.mp4"});
    EXPECT_NE(errorOf([&] { cameras.load(); }).find("no-rear.mp4"), std::string::npos);
}

TEST_F(MultiAVPlayerTest, two_cameras_stay_within_one_frame_of_each_other_and_the_clock_for_ten_seconds) {
    testsupport::StripeVideo front;
    front.seconds = 11;
    front.sound = true;
    front.bFrames = 3;
    testsupport::StripeVideo rear;
    rear.seconds = 11;
    rear.width = 256;
    rear.height = 144;
    const QString dir = testsupport::sharedMediaDir();
    testsupport::writeStripeVideo(dir + "/long-front.mp4", front);
    testsupport::writeStripeVideo(dir + "/long-rear.mp4", rear);
    cameras.setFiles({dir + "/long-front.mp4", dir + "/long-rear.mp4"});
    cameras.load();
    cameras.play();

    // Sampled every 20 ms. A test machine shared with builds may starve a decoder for a moment, so a few
    // samples (3%) may miss; a drift or a systematic offset would miss on most of them.
    int samples = 0;
    int outOfStep = 0;
    int worstPair = 0;
    double worstClockMs = 0;
    QElapsedTimer run;
    run.start();
    while (run.elapsed() < 10000) {
        testsupport::runEventsFor(20);
        const int a = shownFrame(cameras, 0);
        const int b = shownFrame(cameras, 1);
        ASSERT_GE(a, 0);
        ASSERT_GE(b, 0);
        // Half a frame from the middle of the frame on display, plus one frame for the presenter's turn.
        const double clockOffMs = std::abs(cameras.clock().valueMs() - (a + 0.5) * kFrameMs);
        if (std::abs(a - b) > 1 || clockOffMs > 1.5 * kFrameMs + 5)
            ++outOfStep;
        worstPair = std::max(worstPair, std::abs(a - b));
        worstClockMs = std::max(worstClockMs, clockOffMs);
        ++samples;
    }
    EXPECT_GT(samples, 300);
    EXPECT_LE(outOfStep, samples * 3 / 100) << "worst pair " << worstPair << " frames, worst clock " << worstClockMs << " ms";
    EXPECT_GE(shownFrame(cameras, 0), 280);
}

TEST_F(MultiAVPlayerTest, play_paused_shows_the_first_frame_and_holds) {
    load();
    QSignalSpy states(&cameras, &MultiAVPlayer::stateChanged);
    cameras.playPaused();
    EXPECT_TRUE(cameras.clock().isPaused());
    EXPECT_TRUE(cameras.player(0)->isPaused());
    EXPECT_TRUE(cameras.player(1)->isPaused());
    testsupport::runEventsFor(300);
    EXPECT_EQ(shownFrame(cameras, 0), 0);
    EXPECT_EQ(shownFrame(cameras, 1), 0);
    cameras.togglePause();
    EXPECT_FALSE(cameras.clock().isPaused());
    EXPECT_TRUE(waitUntil([&] { return shownFrame(cameras, 0) > 5 && shownFrame(cameras, 1) > 5; }));
    ASSERT_FALSE(states.isEmpty());
    EXPECT_EQ(states.last()[0].value<av::Player::State>(), av::Player::State::Playing);
}

TEST_F(MultiAVPlayerTest, duration_is_the_longest_file_and_position_follows_the_main_camera) {
    testsupport::StripeVideo rear;
    rear.seconds = 6;
    rear.width = 256;
    rear.height = 144;
    const QString longRear = testsupport::sharedMediaDir() + "/six-second-rear.mp4";
    testsupport::writeStripeVideo(longRear, rear);
    cameras.setFiles({testsupport::sharedFrontVideo(), longRear});
    cameras.load();
    EXPECT_NEAR(cameras.duration(), 6000, 40);
    QSignalSpy finished(&cameras, &MultiAVPlayer::seekFinished);
    cameras.seek(5000);
    // The main file ends at 4 s: a seek beyond shows its last frame.
    ASSERT_TRUE(waitUntil([&] { return shownFrame(cameras, 1) == 150 && shownFrame(cameras, 0) == 119; }))
        << shownFrame(cameras, 0) << " " << shownFrame(cameras, 1);
    EXPECT_EQ(cameras.position(), cameras.player(0)->position());
}

TEST_F(MultiAVPlayerTest, the_main_camera_signals_its_last_frame) {
    load();
    QSignalSpy last(&cameras, &MultiAVPlayer::lastFramePlayed);
    cameras.setStartPosition(3700);
    cameras.play();
    EXPECT_TRUE(waitUntil([&] { return last.count() == 1; }));
    EXPECT_EQ(shownFrame(cameras, 0), 119);
}

TEST_F(MultiAVPlayerTest, capture_of_one_camera_is_its_frame_turned_as_shown) {
    holdAt(42);
    const QImage plain = capture({0});
    EXPECT_EQ(plain.size(), QSize(320, 180));
    EXPECT_EQ(testsupport::readFrameNumber(plain), 42);

    av::VideoWidget frontView;
    av::VideoWidget rearView;
    cameras.setRenderers({&frontView, &rearView});
    frontView.setOrientation(90);
    const QImage turned = capture({0});
    ASSERT_EQ(turned.size(), QSize(180, 320));
    // Turned a quarter counter-clockwise, the stripe along the top now runs up the left side.
    EXPECT_EQ(testsupport::readFrameNumber(turned.transformed(QTransform().rotate(90))), 42);
    EXPECT_LT(qGray(turned.pixel(10, 320 - 10)), 0x70);  // bit 0 of 42 is clear
    EXPECT_GT(qGray(turned.pixel(10, 320 - 30)), 0xC0);  // bit 1 is set
}

TEST_F(MultiAVPlayerTest, capture_joins_the_cameras_in_order_with_black_under_the_lower_one) {
    testsupport::LogCapture log;
    holdAt(77);
    const QImage joined = capture({0, 1});
    ASSERT_EQ(joined.size(), QSize(320 + 256, 180));
    EXPECT_EQ(joined.format(), QImage::Format_RGB888);
    EXPECT_EQ(testsupport::readFrameNumber(joined.copy(0, 0, 320, 180)), 77);
    EXPECT_EQ(testsupport::readFrameNumber(joined.copy(320, 0, 256, 144)), 77);
    for (int y = 145; y < 180; y += 5)
        EXPECT_EQ(joined.pixel(320 + 128, y), qRgb(0, 0, 0));
    EXPECT_EQ(log.linesContaining("Start capture tasks: 2").size(), 1u);
    EXPECT_EQ(log.linesContaining("Got image from player #1").size(), 1u);

    EXPECT_EQ(errorOf([&] { cameras.startCapture({2}); }), "Invalid player No.");
    cameras.onImageCaptured(1, QImage(4, 4, QImage::Format_RGB888));
    EXPECT_EQ(log.linesContaining("Unknown capture done for player #1").size(), 1u);
}

TEST_F(MultiAVPlayerTest, a_capture_while_one_is_pending_is_refused_and_an_empty_set_stays_pending) {
    holdAt(10);
    QSignalSpy captured(&cameras, &MultiAVPlayer::imageCaptured);
    cameras.startCapture({0, 1});
    EXPECT_EQ(errorOf([&] { cameras.startCapture({0}); }), "Another capture task in progress");
    ASSERT_TRUE(waitUntil([&] { return captured.count() == 1; }));
    cameras.startCapture({});
    testsupport::runEventsFor(100);
    EXPECT_EQ(errorOf([&] { cameras.startCapture({1}); }), "Another capture task in progress");
}

TEST_F(MultiAVPlayerTest, step_forward_moves_every_camera_one_frame) {
    holdAt(10);
    cameras.stepForward();
    ASSERT_TRUE(waitUntil([&] { return shownFrame(cameras, 0) == 11 && shownFrame(cameras, 1) == 11; }));
    cameras.stepForward();
    ASSERT_TRUE(waitUntil([&] { return shownFrame(cameras, 0) == 12 && shownFrame(cameras, 1) == 12; }));
    EXPECT_EQ(cameras.position(), 400);
}
