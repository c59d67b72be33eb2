// Pictures of an evidence pack: every camera's frame at chosen moments, as JPEG with the time and the
// track position in EXIF.
#pragma once

#include "core/Playlist.h"
#include "core/TrackPosition.h"

#include <QDateTime>
#include <QImage>
#include <QString>
#include <QStringList>

#include <atomic>
#include <vector>

struct EvidenceFrame {
    QDateTime moment;
    int camera = 0; // 0 main, 1 rear
    QString path;
};

// Decodes the pictures straight from the recordings (not from the screen), so any thread may use it; the
// caller's worker thread runs it as a step of the pack.
//
//   EvidenceFrames frames(items, positions);
//   for (const EvidenceFrame& frame : frames.write({from, mark, to}, dir.filePath("frames")))
//       ...
class EvidenceFrames {
public:
    EvidenceFrames(Playlist::RawItems items, TrackPositions positions);

    // For each moment, one JPEG per camera recording then, into `folder` (which must exist), named by
    // fileName(); in moment then camera order. A moment without a recording is left out, a picture that
    // cannot be made is logged, left out and described in `errors`; `canceled` stops before the next picture.
    // Without any track the pictures carry no EXIF block: the EXIF writer stores time and position together.
    std::vector<EvidenceFrame> write(const std::vector<QDateTime>& moments, const QString& folder,
                                     QStringList* errors = nullptr,
                                     const std::atomic<bool>* canceled = nullptr) const;

    // The picture the camera shows at a moment: the last frame at or before it (the first frame when the
    // moment precedes it), at its display size. Null when the camera has no recording then.
    QImage pictureAt(const QDateTime& moment, int camera) const;

    // "2024-05-01_10-00-05.250_front.jpg": sorts by time, and two marks in one second stay apart.
    static QString fileName(const QDateTime& moment, int camera);

private:
    Playlist::RawItems m_items;
    TrackPositions m_positions;
};
