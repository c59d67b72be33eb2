// The documents sent to the map page, written as JSON text.
#pragma once

#include "ui/MapPoint.h"

#include <QString>

#include <vector>

// The web channel converts an object argument value by value on the user-interface thread, which takes
// hundreds of milliseconds for a day-long track; a JSON text crosses in one piece and the page parses it.

// {"positions": [{"coordinates": {"longitude", "latitude"}, "captured": seconds, "speed": km/h or null}, ...]}
QString trackDocument(const TrackPositions& simplified);

// [{"coordinates": {"longitude", "latitude"}, "angle": degrees, "captured": seconds}, ...]
QString timeMarksDocument(const std::vector<MapPoint>& marks);
