// A cut of one camera with the burned-in overlay of the evidence overview.
#include "core/evidence/OverlayCut.h"

#include "core/ExportPaths.h"
#include "core/evidence/OverviewVideoOverlay.h"

namespace overlaycut {

Playlist::RawItems cameraItems(const Playlist::RawItems& items, int camera) {
    Playlist::RawItems result;
    result.reserve(items.size());
    for (const Playlist::RawItemPtr& item : items) {
        auto copy = std::make_shared<Playlist::RawItem>(*item);
        if (camera == 1 && item->rearVideo)
            copy->mainVideo = *item->rearVideo;
        copy->rearVideo.reset();
        result.push_back(std::move(copy));
    }
    return result;
}

std::unique_ptr<OverviewVideo> make(const Playlist::RawItems& items, const TimeInterval& interval,
                                    const EncodingSettings& settings, SpeedUnit speedUnit, const QString& cameraName) {
    const Playlist::RawItems inInterval = exportpaths::itemsOverlapping(items, interval);
    return std::make_unique<OverviewVideo>(cameraItems(inInterval, settings.camera), interval, settings,
                                           evidence::trackIn(inInterval, interval), speedUnit, QStringList{cameraName});
}

} // namespace overlaycut
