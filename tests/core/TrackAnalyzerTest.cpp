// The trip/parking state machine on hand-made 1 Hz tracks: the 300 s rule, jitter, the 5 s rule, equal times.
#include "core/TrackAnalyzer.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr double kMetre = 8.998231847441977e-6; // degrees of latitude
constexpr std::int64_t kStart = 1'700'000'000;  // seconds since 1970

struct Decision {
    TrackAnalyzer::State state;
    std::int64_t second; // relative to kStart
    bool operator==(const Decision& other) const { return state == other.state && second == other.second; }
};

class Recorder : public TrackAnalyzer::IEventHandler {
public:
    void onTripStarted(TrackTime time) override { decisions.push_back({TrackAnalyzer::Trip, seconds(time)}); }
    void onParkingStarted(TrackTime time) override { decisions.push_back({TrackAnalyzer::Parking, seconds(time)}); }
    std::vector<Decision> decisions;

private:
    static std::int64_t seconds(TrackTime time) { return trackTimeToSeconds(time) - kStart; }
};

TrackPosition fix(std::int64_t second, double metresNorth, std::optional<double> kmh) {
    TrackPosition position;
    position.time = trackTimeFromSeconds(kStart + second);
    position.latitude = 50.0 + metresNorth * kMetre;
    position.longitude = 14.0;
    position.speed = kmh;
    return position;
}

// A test drive: fixes are fed one a second from second 0 on, and the position is tracked in metres north.
class Drive {
public:
    explicit Drive(std::uint8_t initialState = TrackAnalyzer::Trip) : m_analyzer(settings(initialState), m_recorder) {}

    static TrackAnalyzer::Settings settings(std::uint8_t initialState) {
        TrackAnalyzer::Settings settings;
        settings.initialState = initialState;
        return settings;
    }
    // `seconds` fixes, each `metresPerSecond` further north, at `kmh`.
    void move(int seconds, double metresPerSecond, std::optional<double> kmh) {
        for (int i = 0; i < seconds; ++i) {
            m_north += metresPerSecond;
            feedHere(kmh);
        }
    }
    void stand(int seconds) { move(seconds, 0.0, 0.0); }
    void feedHere(std::optional<double> kmh) { m_analyzer.feed(fix(m_second++, m_north, kmh)); }
    std::int64_t lastSecond() const { return m_second - 1; }
    const std::vector<Decision>& decisions() const { return m_recorder.decisions; }
    TrackAnalyzer& analyzer() { return m_analyzer; }

private:
    Recorder m_recorder;
    TrackAnalyzer m_analyzer;
    std::int64_t m_second = 0;
    double m_north = 0.0;
};

} // namespace

TEST(TrackAnalyzer, standing_299_seconds_makes_no_parking_and_300_does) {
    for (int standing : {299, 300}) {
        SCOPED_TRACE(standing);
        Drive drive;
        drive.move(10, 20.0, 72.0);
        const std::int64_t lastMoving = drive.lastSecond();
        drive.stand(standing);
        std::vector<Decision> expected{{TrackAnalyzer::Trip, 0}};
        if (standing == 300)
            expected.push_back({TrackAnalyzer::Parking, lastMoving}); // dated at the fix before the stop
        EXPECT_EQ(drive.decisions(), expected);
    }
}

TEST(TrackAnalyzer, slow_creeping_inside_the_stop_box_still_parks) {
    Drive drive;
    drive.move(10, 20.0, 72.0);
    drive.move(300, 0.3, 4.0); // 90 m in five minutes, below the speed threshold
    ASSERT_EQ(drive.decisions().size(), 2u);
    EXPECT_EQ(drive.decisions().back(), (Decision{TrackAnalyzer::Parking, 9}));
}

TEST(TrackAnalyzer, jitter_inside_the_parking_box_makes_no_trip) {
    Drive drive(TrackAnalyzer::Parking);
    drive.stand(5);
    for (int i = 0; i < 120; ++i)
        drive.move(1, i % 2 ? 30.0 : -30.0, 6.0); // GPS noise reporting 6 km/h
    drive.stand(1);
    EXPECT_EQ(drive.decisions(), (std::vector<Decision>{{TrackAnalyzer::Parking, 0}}));
    EXPECT_EQ(drive.analyzer().state(), TrackAnalyzer::Parking);
}

TEST(TrackAnalyzer, leaving_the_parking_box_starts_a_trip_only_after_5_seconds_of_movement) {
    Drive drive(TrackAnalyzer::Parking);
    drive.stand(10);
    const std::int64_t lastStanding = drive.lastSecond();
    drive.move(4, 40.0, 30.0); // out of the 50 m box after 2 s, but only 4 s of movement
    EXPECT_EQ(drive.decisions(), (std::vector<Decision>{{TrackAnalyzer::Parking, 0}}));
    drive.move(1, 40.0, 30.0);
    EXPECT_EQ(drive.decisions(), (std::vector<Decision>{{TrackAnalyzer::Parking, 0}, {TrackAnalyzer::Trip, lastStanding}}));
    EXPECT_EQ(drive.analyzer().state(), TrackAnalyzer::Trip);
}

TEST(TrackAnalyzer, a_fix_at_the_same_time_as_the_last_is_ignored) {
    Recorder recorder;
    TrackAnalyzer analyzer(TrackAnalyzer::Settings{}, recorder);
    analyzer.feed(fix(0, 0.0, 0.0));
    analyzer.feed(fix(0, 500.0, 90.0)); // would leave the stop box and reset if it were taken
    analyzer.feed(fix(-1, 500.0, 90.0)); // earlier still
    EXPECT_TRUE(recorder.decisions.empty());
    analyzer.feed(fix(1, 500.0, 90.0));
    EXPECT_EQ(recorder.decisions, (std::vector<Decision>{{TrackAnalyzer::Trip, 0}}));
}

TEST(TrackAnalyzer, fixes_with_too_few_satellites_are_ignored_when_asked) {
    Recorder recorder;
    TrackAnalyzer::Settings settings;
    settings.minSatellites = 4;
    TrackAnalyzer analyzer(settings, recorder);
    TrackPosition first = fix(0, 0.0, 0.0);
    first.satellites = 7;
    analyzer.feed(first);
    analyzer.feed(fix(1, 500.0, 90.0)); // no satellite count
    TrackPosition few = fix(2, 500.0, 90.0);
    few.satellites = 3;
    analyzer.feed(few);
    EXPECT_TRUE(recorder.decisions.empty());
}

TEST(TrackAnalyzer, box_half_size_follows_the_meridian_length) {
    EXPECT_NEAR(TrackAnalyzer::metresToDegrees(100) * 111132.944, 100.0, 0.01);
}
