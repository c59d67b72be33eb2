// Iterative Ramer-Douglas-Peucker over index ranges, then speed averaging per kept segment.
#include "ui/TrackSimplifier.h"

#include <cmath>
#include <utility>
#include <vector>

namespace {

// Marks the fixes the line needs; a work list instead of recursion keeps 24-hour tracks off the stack.
std::vector<bool> markKeptFixes(const TrackPositions& track, double tolerance) {
    const std::size_t count = track.size();
    std::vector<bool> kept(count, false);
    kept.front() = true;
    kept.back() = true;
    std::vector<std::pair<std::size_t, std::size_t>> ranges{{0, count - 1}};
    while (!ranges.empty()) {
        const auto [first, last] = ranges.back();
        ranges.pop_back();
        if (last - first < 2)
            continue;
        const TrackPosition& a = track[first];
        const double dx = track[last].longitude - a.longitude;
        const double dy = track[last].latitude - a.latitude;
        const double chord = std::hypot(dx, dy);
        double farthest = -1.0;
        std::size_t farthestIndex = first;
        for (std::size_t i = first + 1; i < last; ++i) {
            const double px = track[i].longitude - a.longitude;
            const double py = track[i].latitude - a.latitude;
            // A loop that ends where it began has no chord; the distance from its start stands in.
            const double distance = chord > 0.0 ? std::abs(dx * py - dy * px) / chord : std::hypot(px, py);
            if (distance > farthest) {
                farthest = distance;
                farthestIndex = i;
            }
        }
        if (farthest >= tolerance) {
            kept[farthestIndex] = true;
            ranges.emplace_back(first, farthestIndex);
            ranges.emplace_back(farthestIndex, last);
        }
    }
    return kept;
}

} // namespace

TrackPositions TrackSimplifier::simplify(const TrackPositions& track, double tolerance) {
    if (track.empty())
        return {};
    std::vector<bool> kept(track.size(), true);
    if (track.size() >= 3)
        kept = markKeptFixes(track, tolerance);

    TrackPositions result;
    result.push_back(track.front());
    std::size_t previous = 0;
    for (std::size_t i = 1; i < track.size(); ++i) {
        if (!kept[i])
            continue;
        double sum = 0.0;
        for (std::size_t j = previous + 1; j <= i; ++j)
            sum += track[j].speed.value_or(0.0);
        TrackPosition position = track[i];
        position.speed = static_cast<double>(static_cast<float>(sum / static_cast<double>(i - previous)));
        result.push_back(position);
        previous = i;
    }
    return result;
}
