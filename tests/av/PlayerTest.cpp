// One player on stripe media, driven by a manual clock so that the expected picture is exact.
#include "av/FrameConverter.h"
#include "av/Player.h"
#include "support/EventWait.h"
#include "support/RecordingFixtures.h"
#include "support/TestSupport.h"
#include "support/StripeMedia.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <cmath>

using av::Player;
using testsupport::waitUntil;

namespace {
constexpr double kFrameMs = 1000.0 / 30;

// The middle of frame n, where rounding cannot tip the choice either way.
double middleOf(int frame) {
    return (frame + 0.5) * kFrameMs;
}

int shownFrame(const Player& player) {
    return testsupport::readFrameNumber(av::FrameConverter().convert(player.currentFrame().frame.get()));
}

struct PlayerTest : testing::Test {
    std::shared_ptr<av::ManualTimeSource> time = std::make_shared<av::ManualTimeSource>();
    Player player{time};

    void load(const QString& file = testsupport::sharedFrontVideo()) {
        player.setFile(file);
        player.load();
    }
    // Moves the manual clock to `ms` of media time (at the player's speed) and waits for the picture.
    bool showsAt(double ms, int frame) {
        time->advanceMs((ms - player.masterClock().valueMs()) / player.speed());
        return waitUntil([&] { return shownFrame(player) == frame; }, 3000);
    }
    bool waitForFrame(int frame) {
        return waitUntil([&] { return shownFrame(player) == frame; }, 3000);
    }
};
} // namespace

TEST_F(PlayerTest, load_shows_the_first_frame_and_knows_the_duration) {
    load();
    EXPECT_TRUE(player.isLoaded());
    EXPECT_EQ(shownFrame(player), 0);
    EXPECT_EQ(player.position(), 0);
    EXPECT_NEAR(player.duration(), 4000, 40);
    EXPECT_EQ(player.state(), Player::State::Stopped);
}

TEST_F(PlayerTest, shows_the_frame_of_each_clock_time_in_turn) {
    load();
    QSignalSpy started(&player, &Player::started);
    QSignalSpy states(&player, &Player::stateChanged);
    player.play();
    EXPECT_EQ(started.count(), 1);
    ASSERT_EQ(states.count(), 1);
    EXPECT_EQ(states[0][0].value<Player::State>(), Player::State::Playing);
    for (int frame = 0; frame < 75; ++frame)
        ASSERT_TRUE(showsAt(middleOf(frame), frame)) << "shown instead: " << shownFrame(player);
    EXPECT_EQ(player.position(), static_cast<qint64>(74 * kFrameMs));
    EXPECT_EQ(player.framesDropped(), 0);
}

TEST_F(PlayerTest, a_jump_of_the_clock_drops_the_frames_in_between) {
    load();
    player.play();
    ASSERT_TRUE(showsAt(middleOf(7), 7)) << "shown instead: " << shownFrame(player);
    EXPECT_GT(player.framesDropped(), 0);
}

TEST_F(PlayerTest, far_behind_the_clock_the_decoder_jumps_to_the_next_key_frame) {
    load();
    player.play();
    // 1.35 s behind: decoding every picture from frame 0 would only fall further behind.
    time->advanceMs(middleOf(40));
    testsupport::runEventsFor(300);
    // Only the few pictures decoded ahead before the jump come out; the rest up to key frame 60 are skipped.
    EXPECT_LT(shownFrame(player), 10);
    ASSERT_TRUE(showsAt(middleOf(60), 60));
    ASSERT_TRUE(showsAt(middleOf(61), 61));  // and from there on every picture again
}

TEST_F(PlayerTest, pause_freezes_the_picture_and_play_on_resumes_from_there) {
    load();
    player.play();
    ASSERT_TRUE(showsAt(middleOf(10), 10));
    player.pause(true);
    EXPECT_EQ(player.state(), Player::State::Paused);
    EXPECT_FALSE(player.isPresenting());  // a paused window must not wake every few milliseconds
    time->advanceMs(1000);
    testsupport::runEventsFor(100);
    EXPECT_EQ(shownFrame(player), 10);
    // A seek while paused wakes the presenter until its picture is on screen.
    player.setPosition(static_cast<qint64>(middleOf(20)));
    EXPECT_TRUE(player.isPresenting());
    ASSERT_TRUE(waitForFrame(20));
    EXPECT_TRUE(waitUntil([&] { return !player.isPresenting(); }));
    player.pause(false);
    EXPECT_TRUE(player.isPresenting());
    time->advanceMs(kFrameMs);
    EXPECT_TRUE(waitForFrame(21));
}

TEST_F(PlayerTest, seeks_to_the_exact_frame_in_any_direction_playing_or_paused) {
    load();
    QSignalSpy finished(&player, &Player::seekFinished);
    player.play();
    int expectedSignals = 0;
    for (int frame : {47, 95, 12, 30, 29, 61, 0, 119}) {
        player.setPosition(static_cast<qint64>(middleOf(frame)));
        ++expectedSignals;
        ASSERT_TRUE(waitUntil([&] { return finished.count() == expectedSignals; }));
        EXPECT_EQ(shownFrame(player), frame);
        EXPECT_EQ(finished.last()[0].toLongLong(), static_cast<qint64>(frame * kFrameMs));
        if (frame == 30)
            player.pause(true);
    }
}

TEST_F(PlayerTest, start_and_stop_positions_bound_playback_and_the_last_frame_stays) {
    load();
    QSignalSpy ended(&player, &Player::endOfMedia);
    player.setStartPosition(1000);
    player.setStopPosition(1500);
    player.play();
    ASSERT_TRUE(waitForFrame(30));
    ASSERT_TRUE(showsAt(middleOf(44), 44)) << "shown instead: " << shownFrame(player);
    EXPECT_EQ(ended.count(), 0);
    time->advanceMs(300);
    ASSERT_TRUE(waitUntil([&] { return ended.count() == 1; }));
    EXPECT_EQ(shownFrame(player), 44);
    EXPECT_EQ(player.state(), Player::State::Stopped);
}

TEST_F(PlayerTest, end_of_file_keeps_the_last_frame_and_stops_once) {
    load();
    QSignalSpy ended(&player, &Player::endOfMedia);
    player.play();
    player.setPosition(3900);
    ASSERT_TRUE(waitForFrame(117));
    time->advanceMs(1000);
    ASSERT_TRUE(waitUntil([&] { return ended.count() == 1; }));
    EXPECT_EQ(shownFrame(player), 119);
    time->advanceMs(1000);
    testsupport::runEventsFor(100);
    EXPECT_EQ(ended.count(), 1);
    EXPECT_EQ(shownFrame(player), 119);
    EXPECT_EQ(player.state(), Player::State::Stopped);
    EXPECT_FALSE(player.isPresenting());

    player.pause(false);  // nothing left to play
    EXPECT_EQ(player.state(), Player::State::Stopped);
    player.setPosition(static_cast<qint64>(middleOf(100)));  // back into the file, then on (cycle play)
    ASSERT_TRUE(waitForFrame(100));
    player.pause(false);
    EXPECT_EQ(player.state(), Player::State::Playing);
    ASSERT_TRUE(showsAt(middleOf(101), 101));

    player.play();  // plays again from the start position
    EXPECT_TRUE(waitForFrame(0));
}

TEST_F(PlayerTest, step_forward_pauses_and_shows_one_frame_after_another) {
    load();
    player.play();
    ASSERT_TRUE(showsAt(middleOf(5), 5));
    for (int frame = 6; frame <= 9; ++frame) {
        player.stepForward();
        ASSERT_TRUE(waitForFrame(frame));
    }
    EXPECT_EQ(player.state(), Player::State::Paused);
    EXPECT_TRUE(waitUntil([&] { return !player.isPresenting(); }));
    time->advanceMs(500);
    testsupport::runEventsFor(50);
    EXPECT_EQ(shownFrame(player), 9);
}

TEST_F(PlayerTest, speed_scales_the_passing_of_media_time) {
    load();
    player.play();
    player.setSpeed(2);
    time->advanceMs(kFrameMs / 4);  // to the middle of frame 0, clear of rounding at the edges
    for (int frame = 1; frame <= 20; ++frame) {
        time->advanceMs(kFrameMs / 2);
        ASSERT_TRUE(waitForFrame(frame)) << frame << " expected, shown: " << shownFrame(player);
    }
    player.setSpeed(0.125);
    for (int frame = 21; frame <= 24; ++frame) {
        time->advanceMs(kFrameMs * 8);
        ASSERT_TRUE(waitForFrame(frame));
    }
    EXPECT_EQ(player.framesDropped(), 0);
}

TEST_F(PlayerTest, notifies_positions_while_playing) {
    load();
    QSignalSpy positions(&player, &Player::positionChanged);
    player.setNotifyInterval(10);
    player.play();
    ASSERT_TRUE(showsAt(middleOf(3), 3));
    ASSERT_TRUE(waitUntil([&] { return !positions.isEmpty() && positions.last()[0].toLongLong() == 100; }));
}

TEST_F(PlayerTest, rejects_unplayable_files_with_a_clear_error) {
    const QString dir = testsupport::sharedMediaDir();
    const auto loadError = [&](const QString& file) -> std::string {
        Player other(time);
        other.setFile(file);
        try {
            other.load();
        } catch (const std::runtime_error& e) {
            EXPECT_FALSE(other.isLoaded());
            other.play();  // logged, harmless
            return e.what();
        }
        return "loaded";
    };
    EXPECT_EQ(loadError(dir + "/missing.mp4"), "No such file: " + (dir + "/missing.mp4").toStdString());

    testsupport::writeFile(dir + "/not-a-video.mp4", "this is not a video\n");
    EXPECT_NE(loadError(dir + "/not-a-video.mp4").find("avformat_open_input"), std::string::npos);

    testsupport::writeAudioOnly(dir + "/sound.m4a", 1);
    EXPECT_EQ(loadError(dir + "/sound.m4a"), "No video stream in " + (dir + "/sound.m4a").toStdString());

    // The index of a normal MP4 is at its end: a file cut short has none.
    const QByteArray whole = testsupport::readFile(testsupport::sharedRearVideo());
    testsupport::writeFile(dir + "/cut-index.mp4", whole.left(whole.size() / 2));
    EXPECT_NE(loadError(dir + "/cut-index.mp4").find("avformat_open_input"), std::string::npos);
}

TEST_F(PlayerTest, a_file_cut_short_plays_what_it_has_and_then_ends) {
    const QString dir = testsupport::sharedMediaDir();
    testsupport::StripeVideo video;
    video.fastStart = true;
    video.seconds = 2;
    testsupport::writeStripeVideo(dir + "/faststart.mp4", video);
    const QByteArray whole = testsupport::readFile(dir + "/faststart.mp4");
    testsupport::writeFile(dir + "/cut-tail.mp4", whole.left(whole.size() * 6 / 10));

    load(dir + "/cut-tail.mp4");
    QSignalSpy ended(&player, &Player::endOfMedia);
    player.play();
    for (int step = 0; step < 300 && ended.isEmpty(); ++step) {
        time->advanceMs(10);
        testsupport::runEventsFor(2);
    }
    ASSERT_EQ(ended.count(), 1);
    EXPECT_GT(shownFrame(player), 0);
    EXPECT_LT(shownFrame(player), 59);
}
