// The moment of a track nearest to a point clicked on the map.
#pragma once

#include "core/TrackPosition.h"

#include <optional>

// Seconds since the epoch (with fraction) of the track point or segment point nearest to the given place,
// interpolated linearly in time along a segment; none for an empty track. Distances are measured in
// degrees with longitudes scaled by the cosine of the latitude, which is plenty at the scale of a click.
std::optional<double> nearestTrackTime(const TrackPositions& track, double longitude, double latitude);
