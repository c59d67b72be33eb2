// A cut of one camera re-encoded with the time, speed, position and heading burned into every picture: the
// evidence overview's run over that camera alone, in the container the cut's file name asks for.
#pragma once

#include "core/EncodingSettings.h"
#include "core/TimeInterval.h"
#include "core/evidence/OverviewVideo.h"

#include <memory>

namespace overlaycut {

// The items as holding the one camera (0 main, 1 rear) in their main place; an item without a rear file
// gives its main file, as every cut does.
Playlist::RawItems cameraItems(const Playlist::RawItems& items, int camera);

// The job for a cut: the settings' file, camera, "only video" and rotation; `cameraName` is drawn at the
// picture's foot. It runs like any encoder (worker thread, progress, cancel, partial file removed).
//
//   auto job = overlaycut::make(items, interval, settings, evidence::localeSpeedUnit(), tr("Rear"));
std::unique_ptr<OverviewVideo> make(const Playlist::RawItems& items, const TimeInterval& interval,
                                    const EncodingSettings& settings, SpeedUnit speedUnit, const QString& cameraName);

} // namespace overlaycut
