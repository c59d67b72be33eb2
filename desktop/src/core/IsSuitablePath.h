// Decides from a quick look at its top level whether a directory looks like a recorder's card.
#pragma once

#include <QString>

// True when `path` fits: a readable directory holding a recorder layout (DCIM, CARDV/MOVIE, "Lumicor DVR",
// DVRlocked, camera folders F or R, the Normal/Event/Photo folders, a Record folder or the RecentClips,
// SavedClips and SentryClips folders, at the root or one folder down) or video files. On false the reason is
// logged under "ui.IsSuitablePath" as "Path <path> does not fit: <reason>". No other side effect.
bool IsSuitablePath(const QString& path);
// The same, also handing back the reason when the path does not fit.
bool IsSuitablePath(const QString& path, QString* reason);
