#include "core/Playlist.h"

#include <algorithm>

Playlist::ProcessedItems Playlist::processedItemsOfKind(std::uint32_t kind) const {
    ProcessedItems result;
    std::copy_if(m_processedItems.begin(), m_processedItems.end(), std::back_inserter(result),
                 [kind](const ProcessedItemPtr& item) { return item->kind == kind; });
    return result;
}

Playlist::RawItems Playlist::rawItemsOfCategory(std::uint32_t category) const {
    RawItems result;
    std::copy_if(m_rawItems.begin(), m_rawItems.end(), std::back_inserter(result),
                 [category](const RawItemPtr& item) { return item->category == category; });
    return result;
}

const char* Playlist::timeSourceName(TimeSource source) {
    switch (source) {
    case TimeSource::None: return "None";
    case TimeSource::ByFileName: return "ByFileName";
    case TimeSource::ByTrack: return "ByTrack";
    case TimeSource::ByTrackAndOffset: return "ByTrackAndOffset";
    case TimeSource::ByPrev: return "ByPrev";
    case TimeSource::ByNext: return "ByNext";
    }
    return "None";
}
