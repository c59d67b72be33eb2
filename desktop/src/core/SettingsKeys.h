// The keys of the user settings store, in one place: the window's layout and choices, the
// tracks attached to cards, and start-up's locale.
#pragma once

#include <QLatin1String>

namespace settingskeys {
constexpr QLatin1String kGeometry("mainWindowGeometry");
constexpr QLatin1String kState("mainWindowState");
constexpr QLatin1String kMainSplitter("mainSplitterState");
constexpr QLatin1String kLeftSplitter("leftContainerSplitterState");
constexpr QLatin1String kMiddleSplitter("middleContainerSplitterState");
constexpr QLatin1String kPlots("plotsVisibilityState");
constexpr QLatin1String kMainCamera("mainCameraVisibilityState");
constexpr QLatin1String kRearCamera("rearCameraVisibilityState");
constexpr QLatin1String kLocale("locale");
// Tracks attached to a card: a map from the card's root path to a map of "file" (path) and "offset" (seconds).
constexpr QLatin1String kAttachedTracks("attachedTracks");
} // namespace settingskeys
