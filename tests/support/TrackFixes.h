// Hand-made fixes for the map and track tests: whole seconds after one fixed start.
#pragma once

#include "core/TrackPosition.h"

#include <optional>

namespace testsupport {

constexpr std::int64_t kTrackStart = 1'700'000'000;

inline TrackPosition fixAt(int second, double longitude, double latitude, std::optional<double> course = std::nullopt,
                           std::optional<double> speed = std::nullopt) {
    TrackPosition position;
    position.time = trackTimeFromSeconds(kTrackStart + second);
    position.longitude = longitude;
    position.latitude = latitude;
    position.course = course;
    position.speed = speed;
    return position;
}

} // namespace testsupport
