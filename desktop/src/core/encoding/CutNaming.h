// The rotation a cut is written with, from the way its camera is shown on screen. (The names of saved files
// are in core/ExportPaths.h.)
#pragma once

namespace encoding {

// EncodingSettings::rotation from a camera view's orientation in degrees: 90 -> 1, 180 -> 2, 270 -> 3, else 0.
inline int rotationFromOrientation(int degrees) {
    switch (degrees) {
    case 90: return 1;
    case 180: return 2;
    case 270: return 3;
    default: return 0;
    }
}

} // namespace encoding
