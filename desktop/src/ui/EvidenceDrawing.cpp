// What an evidence pack draws with Qt Gui (its frames and its report), handed to the pack by those who have Gui.
#include "ui/EvidenceDrawing.h"

#include "core/evidence/EvidencePack.h"
#include "core/evidence/OverviewVideoOverlay.h"
#include "ui/EvidenceFrames.h"
#include "ui/EvidenceReport.h"

void setEvidenceDrawing(EvidenceRequest& request) {
    request.speedUnit = evidence::localeSpeedUnit();
    request.writeFrames = [](const Playlist::RawItems& items, const TrackPositions& track,
                             const std::vector<QDateTime>& moments, const QString& folder, const std::atomic<bool>* canceled) {
        QStringList errors;
        EvidenceFrames(items, track).write(moments, folder, &errors, canceled);
        return errors;
    };
    request.writeReport = [](const EvidenceSummary& summary, const QString& pdfPath, QString* error) {
        return writeEvidenceReport(summary, pdfPath, error);
    };
}
