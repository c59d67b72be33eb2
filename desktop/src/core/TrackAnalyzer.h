// Decides from a stream of GPS fixes when the vehicle started a trip and when it parked.
#pragma once

#include "core/TrackPosition.h"

#include <cstdint>
#include <optional>

// A small state machine fed one fix at a time. It reports a change of state dated at the last fix
// accepted before the first fix that began the change.
//
//   TrackAnalyzer analyzer(TrackAnalyzer::Settings{}, handler);
//   for (const TrackPosition& fix : track) analyzer.feed(fix);
class TrackAnalyzer {
public:
    enum State : std::uint8_t { Parking = 0, Trip = 1 };

    struct Settings {
        std::uint8_t initialState = Trip;
        std::uint32_t minSatellites = 0;      // fixes with fewer satellites are ignored; 0 switches this off
        std::uint32_t speedThreshold = 5;     // km/h
        std::int64_t tripStartTime = 5;       // s away from the parking point or moving before a trip starts
        std::int64_t parkingStartTime = 300;  // s staying before a parking period starts
        std::uint32_t parkingRadius = 50;     // m around the parking point to leave for a trip
        std::uint32_t stopRadius = 100;       // m to stay within for parking
    };

    class IEventHandler {
    public:
        virtual ~IEventHandler() = default;
        virtual void onTripStarted(TrackTime time) = 0;
        virtual void onParkingStarted(TrackTime time) = 0;
    };

    TrackAnalyzer(const Settings& settings, IEventHandler& handler);

    void feed(const TrackPosition& position);
    State state() const { return m_state; }

    // Half-size in degrees of the square box of a radius in metres: one degree is 111,132.944 m along a
    // meridian of 40,007,860 m; the same value serves latitude and longitude (no latitude correction).
    static double metresToDegrees(std::uint32_t metres) { return metres * 8.998231847441977e-6; }

private:
    struct Box {
        double minLatitude, maxLatitude, minLongitude, maxLongitude;
        bool contains(const TrackPosition& position) const;
    };

    void makeBox(const TrackPosition& centre, std::uint32_t radius);
    void feedParking(const TrackPosition& position, std::int64_t dt);
    void feedTrip(const TrackPosition& position, std::int64_t dt);
    void switchTo(State state);
    void reset();
    void notify(State state, TrackTime time);

    Settings m_settings;
    IEventHandler& m_handler;
    State m_state;
    bool m_initialEventPending = true;
    bool m_candidateStarted = false;
    std::int64_t m_candidateSeconds = 0;
    std::optional<Box> m_box;
    std::optional<TrackPosition> m_last;
    std::optional<TrackPosition> m_candidateFirst;
};
