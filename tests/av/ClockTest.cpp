// The playback clock against a manual time source.
#include "av/Clock.h"

#include <gtest/gtest.h>

using av::Clock;
using av::ManualTimeSource;

namespace {
struct ClockTest : testing::Test {
    std::shared_ptr<ManualTimeSource> time = std::make_shared<ManualTimeSource>();
    Clock clock{time};
};
} // namespace

TEST_F(ClockTest, stands_still_until_started_and_then_follows_time_at_its_speed) {
    clock.setValueMs(1000);
    time->advanceMs(500);
    EXPECT_DOUBLE_EQ(clock.valueMs(), 1000);
    EXPECT_FALSE(clock.isActive());
    clock.start();
    time->advanceMs(500);
    EXPECT_DOUBLE_EQ(clock.valueMs(), 1500);
    clock.setSpeed(2);
    time->advanceMs(500);
    EXPECT_DOUBLE_EQ(clock.valueMs(), 2500);
    clock.setSpeed(0.125);
    time->advanceMs(800);
    EXPECT_DOUBLE_EQ(clock.valueMs(), 2600);
}

TEST_F(ClockTest, pause_holds_the_value_and_resume_continues_without_a_jump) {
    clock.start();
    time->advanceMs(100);
    clock.pause(true);
    time->advanceMs(1000);
    EXPECT_DOUBLE_EQ(clock.valueMs(), 100);
    EXPECT_TRUE(clock.isPaused());
    EXPECT_FALSE(clock.isRunning());
    clock.pause(false);
    time->advanceMs(50);
    EXPECT_DOUBLE_EQ(clock.valueMs(), 150);
}

TEST_F(ClockTest, reset_returns_to_zero_inactive_and_keeps_the_speed) {
    clock.setSpeed(4);
    clock.start();
    clock.pause(true);
    time->advanceMs(100);
    clock.reset();
    EXPECT_DOUBLE_EQ(clock.valueMs(), 0);
    EXPECT_FALSE(clock.isActive());
    EXPECT_FALSE(clock.isPaused());
    EXPECT_DOUBLE_EQ(clock.speed(), 4);
}

TEST_F(ClockTest, sync_takes_the_other_clocks_value_but_keeps_own_speed_and_pause) {
    Clock shared{time};
    shared.setValueMs(5000);
    shared.start();
    time->advanceMs(250);
    clock.setSpeed(2);
    clock.pause(true);
    clock.syncTo(shared);
    EXPECT_DOUBLE_EQ(clock.valueMs(), 5250);
    EXPECT_DOUBLE_EQ(clock.speed(), 2);
    EXPECT_TRUE(clock.isPaused());
}
