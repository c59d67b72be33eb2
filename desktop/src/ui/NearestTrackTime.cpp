// Nearest track moment: projection of the click onto every segment of the track.
#include "ui/NearestTrackTime.h"

#include <cmath>

namespace {
constexpr double kRadiansPerDegree = 0.017453292519943295;

double seconds(TrackTime time) {
    return static_cast<double>(time) / kTrackTicksPerSecond;
}
} // namespace

std::optional<double> nearestTrackTime(const TrackPositions& track, double longitude, double latitude) {
    if (track.empty())
        return std::nullopt;
    const TrackPosition& first = track.front();
    const double firstScale = std::cos((first.latitude + latitude) / 2 * kRadiansPerDegree);
    double best = std::hypot(first.latitude - latitude, (first.longitude - longitude) * firstScale);
    double bestTime = seconds(first.time);
    for (size_t i = 1; i < track.size(); ++i) {
        const TrackPosition& a = track[i - 1];
        const TrackPosition& b = track[i];
        const double k = std::cos((latitude + a.latitude + b.latitude) / 3 * kRadiansPerDegree);
        const double abX = (b.longitude - a.longitude) * k, abY = b.latitude - a.latitude;
        const double apX = (longitude - a.longitude) * k, apY = latitude - a.latitude;
        const double dot = apX * abX + apY * abY;
        const double lengthSquared = abX * abX + abY * abY;
        double t = 0;
        if (dot <= 0)
            t = 0;
        else if (dot < lengthSquared)
            t = dot / lengthSquared;
        else
            t = 1;
        const double distance = std::hypot(apY - t * abY, apX - t * abX);
        if (distance < best) {
            best = distance;
            bestTime = seconds(a.time) + (seconds(b.time) - seconds(a.time)) * t;
        }
    }
    return bestTime;
}
