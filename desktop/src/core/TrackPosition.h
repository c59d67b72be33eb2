// One GPS fix of a track, and track time: 100-nanosecond ticks since 1970-01-01 UTC in whole seconds.
#pragma once

#include <QDateTime>

#include <cstdint>
#include <optional>
#include <vector>

using TrackTime = std::int64_t;

constexpr TrackTime kTrackTicksPerSecond = 10'000'000;

// Forms a track time from a UTC date and a time of day; the fraction of the seconds is dropped.
TrackTime makeTrackTime(const QDate& utcDate, int hour, int minute, double seconds);
// Seconds since 1970 UTC of a track time, for display and comparison with file times.
inline std::int64_t trackTimeToSeconds(TrackTime time) { return time / kTrackTicksPerSecond; }
inline TrackTime trackTimeFromSeconds(std::int64_t seconds) { return seconds * kTrackTicksPerSecond; }
// The moment of a track time, presented in local time.
QDateTime trackTimeToDateTime(TrackTime time);

struct TrackPosition {
    TrackTime time = 0;
    double longitude = 0.0; // degrees, east positive
    double latitude = 0.0;  // degrees, north positive
    std::uint32_t sentenceNumber = 0; // RMC sentences read before the one that set this fix's time
    std::optional<double> speed;      // km/h
    std::optional<double> course;     // degrees over ground, true
    std::optional<double> altitude;   // metres
    std::optional<double> hdop;
    std::optional<double> pdop;
    std::optional<double> vdop;
    std::optional<std::uint32_t> satellites;
};

using TrackPositions = std::vector<TrackPosition>;
