// Thinning a track for the map: which fixes stay, and the mean speed each kept fix carries.
#include "ui/TrackSimplifier.h"

#include "support/TrackFixes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {
constexpr double kTolerance = TrackSimplifier::kTolerance;

TrackPosition fix(int second, double longitude, double latitude, std::optional<double> speed = std::nullopt) {
    return testsupport::fixAt(second, longitude, latitude, std::nullopt, speed);
}

std::vector<double> longitudesOf(const TrackPositions& track) {
    std::vector<double> result;
    for (const auto& position : track)
        result.push_back(position.longitude);
    return result;
}
} // namespace

TEST(TrackSimplifier, keeps_a_two_position_track_whole_and_an_empty_one_empty) {
    const TrackPositions two{fix(0, 37.0, 55.0), fix(1, 37.0, 55.0)};
    const TrackPositions result = TrackSimplifier::simplify(two);
    ASSERT_EQ(result.size(), 2u);
    EXPECT_EQ(result[1].time, two[1].time);
    EXPECT_TRUE(TrackSimplifier::simplify({}).empty());
}

TEST(TrackSimplifier, drops_fixes_on_a_straight_line) {
    TrackPositions line;
    for (int i = 0; i < 50; ++i)
        line.push_back(fix(i, 37.0 + i * 1e-4, 55.0 + i * 2e-4));
    const TrackPositions result = TrackSimplifier::simplify(line);
    ASSERT_EQ(result.size(), 2u);
    EXPECT_EQ(result.front().time, line.front().time);
    EXPECT_EQ(result.back().time, line.back().time);
}

// The chord is slanted (3-4-5), so a distance not divided by the chord's length would decide wrongly.
TEST(TrackSimplifier, keeps_a_fix_from_the_tolerance_on_and_drops_one_just_inside) {
    const double ux = 3e-3, uy = 4e-3;             // chord from (0, 0) to (ux, uy)
    const double nx = -uy / 5e-3, ny = ux / 5e-3;  // unit normal
    for (const double factor : {0.95, 1.05}) {
        const double offset = factor * kTolerance;
        const TrackPositions track{fix(0, 0.0, 0.0), fix(1, ux / 2 + nx * offset, uy / 2 + ny * offset), fix(2, ux, uy)};
        EXPECT_EQ(TrackSimplifier::simplify(track).size(), factor < 1 ? 2u : 3u) << "factor " << factor;
    }
}

TEST(TrackSimplifier, keeps_every_corner_of_a_zigzag_in_order) {
    TrackPositions zigzag;
    for (int i = 0; i < 9; ++i) {
        // Corners every 4th fix, straight runs between them.
        const int leg = i / 4, within = i % 4;
        const double y = (leg % 2 == 0 ? within : 4 - within) * 1e-3;
        zigzag.push_back(fix(i, i * 1e-3, y));
    }
    EXPECT_EQ(longitudesOf(TrackSimplifier::simplify(zigzag)), (std::vector<double>{0.0, 4e-3, 8e-3}));
}

TEST(TrackSimplifier, keeps_the_far_side_of_a_loop_that_ends_where_it_began) {
    const TrackPositions loop{fix(0, 0.0, 0.0), fix(1, 1e-3, 0.0), fix(2, 1e-3, 1e-3), fix(3, 0.0, 1e-3),
                              fix(4, 0.0, 0.0)};
    EXPECT_EQ(TrackSimplifier::simplify(loop).size(), 5u);
}

TEST(TrackSimplifier, kept_fixes_carry_the_mean_speed_of_the_stretch_they_end) {
    // A right angle at fix 3: fixes 0, 3 and 5 stay.
    const TrackPositions track{fix(0, 0.0, 0.0, 7.0), fix(1, 1e-3, 0.0, 10.0), fix(2, 2e-3, 0.0),
                               fix(3, 3e-3, 0.0, 30.0), fix(4, 3e-3, 1e-3), fix(5, 3e-3, 2e-3)};
    const TrackPositions result = TrackSimplifier::simplify(track);
    ASSERT_EQ(result.size(), 3u);
    EXPECT_EQ(result[0].speed, 7.0) << "the first fix keeps its own speed";
    ASSERT_TRUE(result[1].speed.has_value());
    EXPECT_EQ(*result[1].speed, static_cast<double>(static_cast<float>(40.0 / 3.0))) << "absent speeds count as 0";
    EXPECT_EQ(result[2].speed, 0.0) << "no speeds at all gives 0, marked present";
    EXPECT_EQ(result[1].time, track[3].time);
}

TEST(TrackSimplifier, first_fix_without_speed_stays_without) {
    const TrackPositions track{fix(0, 0.0, 0.0), fix(1, 1e-3, 0.0, 20.0)};
    const TrackPositions result = TrackSimplifier::simplify(track);
    EXPECT_FALSE(result[0].speed.has_value());
    EXPECT_EQ(result[1].speed, 20.0);
}

TEST(TrackSimplifier, thins_a_day_long_winding_track_without_running_out_of_stack) {
    TrackPositions track;
    for (int i = 0; i < 86'400; ++i)
        track.push_back(fix(i, i * 1e-4, std::sin(i / 50.0) * 1e-3, 50.0));
    const TrackPositions result = TrackSimplifier::simplify(track);
    EXPECT_GT(result.size(), 1000u);
    EXPECT_LT(result.size(), track.size() / 2);
    EXPECT_EQ(result.back().time, track.back().time);
}
