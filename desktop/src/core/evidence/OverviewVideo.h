// The overview of an interval: all cameras side by side in one H.264 + AAC file, with the time, speed,
// heading and position burned into every picture and each camera's name on its own picture.
#pragma once

#include "core/BaseEncoder.h"
#include "core/TrackPosition.h"
#include "core/evidence/EvidenceSummary.h"

#include <QStringList>

// The pictures are re-encoded, so the file is derived, not original. Each camera is scaled to the main
// camera's height; a camera without a recording at a moment shows black there. The sound is the main
// camera's, with silence where it has none. The container follows the target's extension. The file is
// written beside the target under a temporary name and renamed when complete (see PartialFile), so the
// target never holds a partial file; the permissions are those of every export (BaseEncoder).
//
// A cut with the overlay is the same run over items that hold one camera (see overlaycut::cameraItems),
// with the cut's settings: no sound for "only video", and the picture turned as it is shown.
//
// Lives in a worker thread like the other encoders: encode() runs there, cancel() may come from any thread.
//
//   OverviewVideo overview(items, {from, to}, dir.filePath("overview.mp4"), positions,
//                          SpeedUnit::KilometresPerHour, {tr("Front"), tr("Rear")});
//   overview.encode();
class OverviewVideo : public BaseEncoder {
    Q_OBJECT
public:
    // `items`: the raw items of the interval with all their cameras, in time order. `positions`: the
    // interval's track in time order. `cameraNames`: the main camera's name first, then the rear camera's.
    OverviewVideo(Playlist::RawItems items, TimeInterval interval, QString filePath, TrackPositions positions,
                  SpeedUnit speedUnit, QStringList cameraNames = {QStringLiteral("Front"), QStringLiteral("Rear")},
                  QObject* parent = nullptr);
    // The same, with a cut's settings: its filePath, onlyVideo and rotation are used.
    OverviewVideo(Playlist::RawItems items, TimeInterval interval, EncodingSettings settings, TrackPositions positions,
                  SpeedUnit speedUnit, QStringList cameraNames, QObject* parent = nullptr);

    // The font of the burned-in text: DejaVu Sans Bold of Debian's fonts-dejavu-core, which covers the
    // degree sign and the Cyrillic, Polish and Czech letters of translated camera names.
    static QString defaultFontFile();

public slots:
    void encode() override;

private:
    void run(const QString& writePath);

    TrackPositions m_positions;
    SpeedUnit m_speedUnit;
    QStringList m_cameraNames;
};
