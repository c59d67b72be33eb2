// Gives the recordings without a track of their own the positions of a track recorded apart (a phone, a
// logger), matched by time with an offset the user sets.
#pragma once

#include "core/Playlist.h"

#include <QFileInfo>

#include <cstdint>

struct TrackAttachment {
    QFileInfo file;           // the GPX, KML or NMEA file, named as the items' track file
    TrackPositions positions; // as read, ascending by time
    std::int64_t offsetSeconds = 0; // added to every position's time: a phone clock 37 s behind takes +37

    // The positions of [from, to], moved by the offset.
    TrackPositions within(const QDateTime& from, const QDateTime& to) const;

    // A playlist like `playlist` in which every raw item without a track takes the positions of its interval;
    // an item's own track always wins, and an item that no position falls into stays without one. Trips and
    // parking periods keep their bounds and order, holding the new items in place of the old, so the tables
    // keep their rows while the offset is tuned.
    Playlist applyTo(const Playlist& playlist) const;
};
