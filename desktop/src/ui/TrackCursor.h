// Finds the track position for a moment of play and interpolates the vehicle's place and heading there.
#pragma once

#include "ui/MapPoint.h"

#include <cstddef>

// Position updates arrive every 40 ms in time order, so the cursor remembers where the previous one landed
// and scans forward from there; a jump backwards or far ahead falls back to a binary search.
class TrackCursor {
public:
    // Beyond this jump ahead a binary search is cheaper than scanning (300 s of a 1 Hz track).
    static constexpr double kMaxScanSeconds = 300.0;

    enum class Search { None, Scan, Binary };

    // The track is borrowed and must outlive the cursor or the next reset().
    explicit TrackCursor(const TrackPositions* track = nullptr) { reset(track); }
    void reset(const TrackPositions* track);

    // Index of the last position at or before t (the first one when t precedes the track); remembered for the
    // next call. Requires a non-empty track.
    std::size_t seek(double t);

    // The vehicle at time t: the last position with its course when t reaches the end of the track, else the
    // interpolation between the position found by seek() and the next one. Requires a non-empty track.
    MapPoint pointAt(double t);

    // Whether the position found for the latest seek is the track's last one.
    bool atLast() const { return m_track && !m_track->empty() && m_index + 1 == m_track->size(); }
    // How the latest seek searched; tests use it to check that play scans and jumps search.
    Search lastSearch() const { return m_lastSearch; }

    // Place between a and b at time t: linear in longitude and latitude with the fraction limited to [0, 1];
    // a's own place when both have the same time. Heading: a's course, else the plain bearing from a to b.
    static MapPoint interpolate(const TrackPosition& a, const TrackPosition& b, double t);

private:
    const TrackPositions* m_track = nullptr;
    std::size_t m_index = 0; // the track's size when nothing has been found yet
    Search m_lastSearch = Search::None;
};
