// Names proposed for saved pictures: video frames and window shots.
#pragma once

#include <QDateTime>
#include <QString>

// Base name of a saved video frame: "video-front-", "video-rear-" or "video-" (both or neither camera) followed by
// the playback position as "yyyyMMddTHHmmsszzz", e.g. "video-front-20240305T141503042".
QString frameBaseName(bool mainCamera, bool rearCamera, const QDateTime& position);

// Base name of a saved window shot: "window-" followed by the given moment in the same form.
QString windowBaseName(const QDateTime& now);

// The path proposed in dir for a picture of that base name: "<dir>/lumicor-reelvue-<base>.jpg", or while such a
// file exists "<dir>/lumicor-reelvue-<base>(1).jpg", "(2)", ... so a second save never overwrites the first.
QString proposeImagePath(const QString& dir, const QString& baseName);
