// Where the vehicle is at a moment of play: the cursor search, interpolation and heading.
#include "ui/TrackCursor.h"

#include "support/TrackFixes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {
constexpr std::int64_t kStart = testsupport::kTrackStart;
using testsupport::fixAt;

double at(double second) { return static_cast<double>(kStart) + second; }

// A fix every second for an hour, heading east.
TrackPositions hourEast() {
    TrackPositions track;
    for (int i = 0; i < 3600; ++i)
        track.push_back(fixAt(i, 37.0 + i * 1e-4, 55.0));
    return track;
}
} // namespace

TEST(TrackCursor, interpolates_between_the_fixes_around_the_moment) {
    const TrackPositions track{fixAt(0, 10.0, 50.0, 45.0), fixAt(10, 11.0, 52.0, 90.0)};
    TrackCursor cursor(&track);
    const MapPoint point = cursor.pointAt(at(2.5));
    EXPECT_DOUBLE_EQ(point.time, at(2.5));
    EXPECT_DOUBLE_EQ(point.longitude, 10.25);
    EXPECT_DOUBLE_EQ(point.latitude, 50.5);
    EXPECT_EQ(point.heading, 45.0) << "the earlier fix's course";
}

TEST(TrackCursor, a_moment_on_a_fix_gives_that_fix_and_before_the_track_its_first) {
    const TrackPositions track{fixAt(10, 10.0, 50.0), fixAt(11, 11.0, 51.0), fixAt(12, 12.0, 53.0)};
    TrackCursor cursor(&track);
    EXPECT_DOUBLE_EQ(cursor.pointAt(at(11)).longitude, 11.0);
    EXPECT_DOUBLE_EQ(cursor.pointAt(at(11)).latitude, 51.0);
    EXPECT_DOUBLE_EQ(cursor.pointAt(at(0)).longitude, 10.0);
    EXPECT_DOUBLE_EQ(cursor.pointAt(at(0)).latitude, 50.0);
}

TEST(TrackCursor, after_the_track_gives_the_last_fix_with_its_course_or_north) {
    TrackPositions track{fixAt(0, 10.0, 50.0, 10.0), fixAt(5, 11.0, 51.0, 123.0)};
    TrackCursor cursor(&track);
    MapPoint point = cursor.pointAt(at(60));
    EXPECT_TRUE(cursor.atLast());
    EXPECT_DOUBLE_EQ(point.longitude, 11.0);
    EXPECT_EQ(point.heading, 123.0);

    track.back().course.reset();
    cursor.reset(&track);
    point = cursor.pointAt(at(60));
    EXPECT_EQ(point.heading, 0.0);
}

TEST(TrackCursor, fixes_with_the_same_time_give_the_first_without_dividing_by_zero) {
    const TrackPositions track{fixAt(0, 10.0, 50.0), fixAt(0, 12.0, 52.0), fixAt(3, 13.0, 53.0)};
    const MapPoint point = TrackCursor::interpolate(track[0], track[1], at(0));
    EXPECT_DOUBLE_EQ(point.longitude, 10.0);
    EXPECT_DOUBLE_EQ(point.latitude, 50.0);
}

TEST(TrackCursor, without_course_the_heading_is_the_plain_bearing_to_the_next_fix) {
    const TrackPosition origin = fixAt(0, 10.0, 50.0);
    EXPECT_DOUBLE_EQ(*TrackCursor::interpolate(origin, fixAt(1, 10.0, 51.0), at(0)).heading, 0.0);
    EXPECT_DOUBLE_EQ(*TrackCursor::interpolate(origin, fixAt(1, 11.0, 50.0), at(0)).heading, 90.0);
    EXPECT_DOUBLE_EQ(*TrackCursor::interpolate(origin, fixAt(1, 9.0, 49.0), at(0)).heading, -135.0);
}

TEST(TrackCursor, play_scans_forward_and_jumps_search_the_whole_track) {
    const TrackPositions track = hourEast();
    TrackCursor cursor(&track);
    cursor.seek(at(100));
    EXPECT_EQ(cursor.lastSearch(), TrackCursor::Search::Binary) << "nothing found yet";
    cursor.seek(at(100.04));
    EXPECT_EQ(cursor.lastSearch(), TrackCursor::Search::Scan);
    cursor.seek(at(100.04 + 299));
    EXPECT_EQ(cursor.lastSearch(), TrackCursor::Search::Scan);
    EXPECT_EQ(cursor.seek(at(399 + 301)), 699u);
    EXPECT_EQ(cursor.lastSearch(), TrackCursor::Search::Binary) << "more than 300 s ahead";
    EXPECT_EQ(cursor.seek(at(50.5)), 50u);
    EXPECT_EQ(cursor.lastSearch(), TrackCursor::Search::Binary) << "backwards";
}

TEST(TrackCursor, any_sequence_of_moments_finds_the_last_fix_at_or_before_each) {
    // Uneven spacing with gaps, so a scan that stops one early or late shows.
    TrackPositions track;
    std::mt19937 random(7);
    int second = 0;
    for (int i = 0; i < 2000; ++i) {
        second += 1 + static_cast<int>(random() % 5) + (i % 300 == 0 ? 400 : 0);
        track.push_back(fixAt(second, i * 1e-4, 0.0));
    }
    TrackCursor cursor(&track);
    double t = at(-10);
    for (int i = 0; i < 20000; ++i) {
        const int kind = static_cast<int>(random() % 100);
        if (kind < 90)
            t += 0.04 * (1 + random() % 50);
        else if (kind < 95)
            t -= static_cast<double>(random() % 1000);
        else
            t += static_cast<double>(random() % 2000);
        const std::size_t found = cursor.seek(t);
        const auto firstNotEarlier = std::lower_bound(track.begin(), track.end(), t, [](const TrackPosition& p, double v) {
            return mapSeconds(p) < v;
        });
        std::size_t expected = static_cast<std::size_t>(firstNotEarlier - track.begin());
        if (expected > 0)
            --expected;
        ASSERT_EQ(found, expected) << "at step " << i << ", t " << t;
    }
}
