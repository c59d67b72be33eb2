// A point of the track as the map sees it: seconds since the epoch, coordinates and an optional heading.
#pragma once

#include "core/TrackPosition.h"

#include <optional>

struct MapPoint {
    double time = 0.0;      // seconds since 1970 UTC, fractional
    double longitude = 0.0; // degrees
    double latitude = 0.0;  // degrees
    std::optional<double> heading; // degrees clockwise from north
};

// Seconds since the epoch of a fix, the time scale the map works in.
inline double mapSeconds(const TrackPosition& position) {
    return static_cast<double>(trackTimeToSeconds(position.time));
}
