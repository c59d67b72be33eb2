#include "core/TrackAttachment.h"

#include <algorithm>
#include <map>

TrackPositions TrackAttachment::within(const QDateTime& from, const QDateTime& to) const {
    const TrackTime shift = trackTimeFromSeconds(offsetSeconds);
    const TrackTime first = trackTimeFromSeconds(from.toSecsSinceEpoch()) - shift;
    const TrackTime last = trackTimeFromSeconds(to.toSecsSinceEpoch()) - shift;
    const auto begin = std::lower_bound(positions.begin(), positions.end(), first,
                                        [](const TrackPosition& position, TrackTime time) { return position.time < time; });
    const auto end = std::upper_bound(begin, positions.end(), last,
                                      [](TrackTime time, const TrackPosition& position) { return time < position.time; });
    TrackPositions result(begin, end);
    for (TrackPosition& position : result)
        position.time += shift;
    return result;
}

Playlist TrackAttachment::applyTo(const Playlist& playlist) const {
    std::map<const Playlist::RawItem*, Playlist::RawItemPtr> replaced;
    Playlist::RawItems rawItems;
    rawItems.reserve(playlist.rawItems().size());
    for (const Playlist::RawItemPtr& item : playlist.rawItems()) {
        TrackPositions matched = item->track || !item->hasValidInterval() ? TrackPositions() : within(item->from, item->to);
        if (matched.empty()) {
            rawItems.push_back(item);
            continue;
        }
        auto attached = std::make_shared<Playlist::RawItem>(*item);
        const QDateTime trackFrom = trackTimeToDateTime(matched.front().time);
        const QDateTime trackTo = trackTimeToDateTime(matched.back().time);
        attached->track = Playlist::Track{file, trackFrom, trackTo, std::move(matched), true};
        replaced[item.get()] = attached;
        rawItems.push_back(std::move(attached));
    }
    const auto current = [&replaced](const Playlist::RawItemPtr& item) {
        const auto found = replaced.find(item.get());
        return found == replaced.end() ? item : found->second;
    };
    Playlist::ProcessedItems processedItems;
    processedItems.reserve(playlist.processedItems().size());
    for (const Playlist::ProcessedItemPtr& processed : playlist.processedItems()) {
        auto copy = std::make_shared<Playlist::ProcessedItem>(*processed);
        std::transform(copy->items.begin(), copy->items.end(), copy->items.begin(), current);
        processedItems.push_back(std::move(copy));
    }
    return Playlist(std::move(rawItems), std::move(processedItems));
}
