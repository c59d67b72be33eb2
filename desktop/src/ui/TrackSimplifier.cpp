// Iterative Ramer-Douglas-Peucker over index ranges, then speed averaging per kept segment.
#include "ui/TrackSimplifier.h"

#include <cmath>
#include <utility>
#include <vector>

namespace {

// Marks the fixes the line needs; a work list instead of recursion keeps 24-hour tracks off the stack.
std::vector<bool> markKeptFixes(const TrackPositions& track, double tolerance) {
    const std::size_t count = track.size();
    // Coordinates side by side: the scans below touch nothing else, and whole fixes are large.
    struct Point {
        double x, y;
    };
    std::vector<Point> points(count);
    for (std::size_t i = 0; i < count; ++i)
        points[i] = {track[i].longitude, track[i].latitude};
    std::vector<bool> kept(count, false);
    kept.front() = true;
    kept.back() = true;
    std::vector<std::pair<std::size_t, std::size_t>> ranges{{0, count - 1}};
    while (!ranges.empty()) {
        const auto [first, last] = ranges.back();
        ranges.pop_back();
        if (last - first < 2)
            continue;
        const Point a = points[first];
        const double dx = points[last].x - a.x;
        const double dy = points[last].y - a.y;
        const double chord = std::hypot(dx, dy);
        // The chord's length is the same for the whole range: compare cross products, divide once.
        double farthestCross = -1.0;
        std::size_t farthestIndex = first;
        for (std::size_t i = first + 1; i < last; ++i) {
            const double px = points[i].x - a.x;
            const double py = points[i].y - a.y;
            // A loop that ends where it began has no chord; the distance from its start stands in.
            const double cross = chord > 0.0 ? std::abs(dx * py - dy * px) : std::hypot(px, py);
            if (cross > farthestCross) {
                farthestCross = cross;
                farthestIndex = i;
            }
        }
        const double farthest = chord > 0.0 ? farthestCross / chord : farthestCross;
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
