// Time marks along the track: where they fall and which way they point.
#include "ui/TimeMarks.h"

#include "support/TrackFixes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {
constexpr std::int64_t kStart = testsupport::kTrackStart;
using testsupport::fixAt;

std::vector<double> timesOf(const std::vector<MapPoint>& marks) {
    std::vector<double> times;
    for (const MapPoint& mark : marks)
        times.push_back(mark.time - static_cast<double>(kStart));
    return times;
}
} // namespace

TEST(TimeMarks, none_without_a_step_or_a_track) {
    const TrackPositions track{fixAt(0, 10.0, 50.0), fixAt(100, 11.0, 50.0)};
    EXPECT_TRUE(timeMarksAlong(track, 0).empty());
    EXPECT_TRUE(timeMarksAlong({}, 30).empty());
}

TEST(TimeMarks, start_at_the_first_fix_and_stop_at_the_last) {
    const TrackPositions track{fixAt(0, 10.0, 50.0), fixAt(100, 11.0, 50.0)};
    EXPECT_EQ(timesOf(timeMarksAlong(track, 30)), (std::vector<double>{0, 30, 60, 90}));
    EXPECT_EQ(timesOf(timeMarksAlong(track, 50)), (std::vector<double>{0, 50, 100}));
    EXPECT_EQ(timeMarksAlong({fixAt(0, 10.0, 50.0)}, 30).size(), 1u);
}

TEST(TimeMarks, sit_between_fixes_and_point_along_the_road) {
    // East for 60 s, then north for 60 s, without courses: headings are bearings.
    const TrackPositions track{fixAt(0, 10.0, 50.0), fixAt(60, 10.6, 50.0), fixAt(120, 10.6, 50.6)};
    const std::vector<MapPoint> marks = timeMarksAlong(track, 30);
    ASSERT_EQ(marks.size(), 5u);
    EXPECT_DOUBLE_EQ(marks[1].longitude, 10.3);
    EXPECT_DOUBLE_EQ(marks[1].latitude, 50.0);
    EXPECT_DOUBLE_EQ(*marks[1].heading, 90.0);
    EXPECT_DOUBLE_EQ(marks[3].latitude, 50.3);
    EXPECT_DOUBLE_EQ(*marks[3].heading, 0.0);
}

TEST(TimeMarks, a_stop_keeps_one_mark_and_the_drive_after_it_goes_on) {
    // 60 s east, 600 s parked with the receiver wandering by a couple of metres, 60 s on east.
    TrackPositions track{fixAt(0, 10.000, 50.0)};
    for (int s = 60; s <= 660; s += 10)
        track.push_back(fixAt(s, 10.006 + 2e-5 * std::sin(s), 50.0 + 2e-5 * std::cos(s)));
    track.push_back(fixAt(720, 10.012, 50.0));
    EXPECT_EQ(timesOf(timeMarksAlong(track, 30)), (std::vector<double>{0, 30, 60, 690, 720}));
}
