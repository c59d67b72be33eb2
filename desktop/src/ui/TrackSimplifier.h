// Thins a track for the map with the Ramer-Douglas-Peucker method and averages the speed between kept fixes.
#pragma once

#include "core/TrackPosition.h"

class TrackSimplifier {
public:
    // Degrees on (longitude, latitude) taken as plane coordinates: about 1.2 m of latitude, below what a
    // track line on the map can show.
    static constexpr double kTolerance = 1.10641e-05;

    // The kept fixes in track order: the first and last always, a track of fewer than 3 whole. Every kept fix
    // after the first carries the mean speed of the fixes it stands for (from just after the previous kept
    // one up to itself, those without speed counted as 0), so the map can colour each segment.
    static TrackPositions simplify(const TrackPositions& track, double tolerance = kTolerance);
};
