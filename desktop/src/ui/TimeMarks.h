// Places time marks along a track: one at its first fix and then one every step seconds up to its last.
#pragma once

#include "ui/MapPoint.h"

#include <vector>

// Each mark is interpolated like the vehicle's position, heading included. Where the vehicle stands (a
// parking period, a long stop) only the first mark of the stop is kept. Empty for step 0 or no fixes.
std::vector<MapPoint> timeMarksAlong(const TrackPositions& track, int stepSeconds);
