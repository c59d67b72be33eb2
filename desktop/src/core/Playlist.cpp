// The playlist's filters and the descriptions of its items.
#include "core/Playlist.h"

#include <QCoreApplication>

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
    case TimeSource::ByCreationTime: return "ByCreationTime";
    case TimeSource::ByModificationTime: return "ByModificationTime";
    }
    return "None";
}

QString Playlist::RawItem::damageText() const {
    switch (damage) {
    case Damage::None: return {};
    case Damage::IndexMissing:
        return QCoreApplication::translate(
            "Playlist", "The recording has lost its index (the camera lost power before it closed the file), so it "
                        "cannot be played.");
    case Damage::Unreadable:
        return QCoreApplication::translate("Playlist", "The recording cannot be read as a video: %1").arg(damageDetail);
    }
    return {};
}
