// Writer of a track as standard GPX 1.1, the form that mapping programs and GPS tools read.
#pragma once

#include "core/TrackPosition.h"

#include <ostream>
#include <string>

namespace trackformats {

// One track with one segment. Times are ISO 8601 UTC ("2019-09-13T10:30:20Z"); elevation, satellites and the
// dilutions go into their GPX elements, in the order the schema asks; speed (in metres per second, as GPX
// tools expect) and course have no element of their own in GPX 1.1 and go into Garmin's TrackPointExtension
// v2, the extension that GPX readers know. Numbers are fixed-point with a point whatever the locale.
//
//   std::ofstream out(path, std::ios::binary);
//   trackformats::writeGpx11(out, positions, "Lumicor Reelvue 1.4.0");
void writeGpx11(std::ostream& out, const TrackPositions& positions, const std::string& creator);

} // namespace trackformats
