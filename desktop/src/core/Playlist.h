// The recordings of a card: raw items (one recording interval with its files and track) and processed
// items (trips and parking periods). Items are immutable once loaded and shared as pointers to const.
#pragma once

#include "core/TrackPosition.h"

#include <QDateTime>
#include <QFileInfo>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class Playlist {
public:
    enum Category : std::uint32_t { Normal = 0, Parking = 1, Event = 2 };
    enum Kind : std::uint32_t { Trip = 0, ParkingPeriod = 1 };

    struct Track {
        QFileInfo file;
        QDateTime from; // first fix
        QDateTime to;   // last fix
        TrackPositions positions;
    };

    struct RawItem {
        QFileInfo mainVideo;
        std::optional<QFileInfo> rearVideo;
        std::uint32_t category = Normal;
        QDateTime from;
        QDateTime to;
        std::int64_t length = 0; // whole seconds
        std::optional<Track> track;

        bool hasValidInterval() const { return from.isValid() && to.isValid() && from <= to; }
    };
    using RawItemPtr = std::shared_ptr<const RawItem>;
    using RawItems = std::vector<RawItemPtr>;

    struct ProcessedItem {
        QDateTime from;
        QDateTime to;
        RawItems items;
        std::uint32_t kind = Trip;
    };
    using ProcessedItemPtr = std::shared_ptr<const ProcessedItem>;
    using ProcessedItems = std::vector<ProcessedItemPtr>;

    Playlist() = default;
    Playlist(RawItems rawItems, ProcessedItems processedItems)
        : m_rawItems(std::move(rawItems)), m_processedItems(std::move(processedItems)) {}

    const RawItems& rawItems() const { return m_rawItems; }
    const ProcessedItems& processedItems() const { return m_processedItems; }

    // The lists behind the tabs: RIDES (Trip), PARKING (ParkingPeriod), EVENTS (category Event).
    ProcessedItems processedItemsOfKind(std::uint32_t kind) const;
    RawItems rawItemsOfCategory(std::uint32_t category) const;

private:
    RawItems m_rawItems;             // ascending by from
    ProcessedItems m_processedItems; // ascending by from
};

using PlaylistPtr = std::shared_ptr<const Playlist>;
