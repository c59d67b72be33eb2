// The keys of the user settings store, in one place: the window's layout and choices, the last cut's
// choices, start-up's locale, the map's tiles and the tracks attached to cards.
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
// The encoding dialog's choices of the last cut: container extension, camera (0 main, 1 rear), re-encoding,
// burned-in overlay.
constexpr QLatin1String kCutContainer("cutContainer");
constexpr QLatin1String kCutCamera("cutCamera");
constexpr QLatin1String kCutForceReencoding("cutForceReencoding");
constexpr QLatin1String kCutBurnInOverlay("cutBurnInOverlay");
// The map's tiles: the offline map files added by the user, the disk cache's bound in megabytes, the online server.
constexpr QLatin1String kOfflineMapFiles("offlineMapFiles");
constexpr QLatin1String kMapTileCacheMegabytes("mapTileCacheMegabytes");
constexpr QLatin1String kMapTileServer("mapTileServer");
// Tracks attached to a card: a map from the card's root path to a map of "file" (path) and "offset" (seconds).
constexpr QLatin1String kAttachedTracks("attachedTracks");
} // namespace settingskeys
