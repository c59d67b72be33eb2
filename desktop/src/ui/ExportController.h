// Saving what plays: the cut (its video and the track beside it), the item's original files, its track in any
// export format, and the incident evidence pack with the moments marked while playing; cut mode with its
// confirm and reject strip.
//
// Lives on the GUI thread. Owns the save menu, the evidence button and actions, the cut mode, the marks and the
// folder last saved to; the jobs themselves run through the JobRunner. A cut's track copy and its video run as
// one job, under one progress window.
#pragma once

#include "core/EncodingSettings.h"
#include "core/ExportTarget.h"
#include "core/Playlist.h"
#include "core/TimeInterval.h"
#include "ui/FileChoosers.h"
#include "ui/JobRunner.h"

#include <QDateTime>
#include <QObject>

#include <vector>

namespace Ui {
class MainWindow;
}
class PlaybackController;
class PlaybackSession;
class PlotPanel;
class QAction;
class QMenu;
class QToolButton;
class QWidget;

class ExportController : public QObject {
    Q_OBJECT
public:
    ExportController(Ui::MainWindow& ui, PlaybackSession* session, PlotPanel* plots, JobRunner* jobs,
                     const FileChoosers& choosers, QWidget* window);

    bool isCutMode() const { return m_cutMode; }
    // The part the user chose on the plots while cutting or cycling, else the whole item.
    TimeInterval saveInterval() const;

public slots:
    void saveItem();  // the original videos and tracks
    void saveVideo(); // the original videos alone
    void saveTrack(int format);
    void enterCutMode();
    void leaveCutMode();
    void cut(); // asks for the encoding settings, then saves the interval (or the evidence pack, when asked for)
    // The evidence pack of the interval chosen on the plots; without a chosen interval, cut mode lets the user
    // choose one and Confirm makes the pack.
    void saveEvidence();
    // While playing: the moment on screen goes into the next evidence pack.
    void markMoment();
    void onControllerChanged(PlaybackController* controller);
    // The path loaded and all its recordings: the pack's originals may reach past the item that plays.
    void setLoaded(const QString& path, const Playlist::RawItems& recordings);
    void retranslate();

    // The ends of the jobs: a box tells the user.
    void onCopyingDone(bool ok);
    void onEncodeDone(bool ok);
    void onTrackSaveDone(bool ok);
    void onEvidenceDone(bool ok, const QString& folder, const QString& failure);

signals:
    void cutModeChanged(bool on);

private:
    void copyItemFiles(bool withTracks);
    void setCutMode(bool on);
    // False, with the warning naming the method, when nothing plays.
    bool hasController(const char* method) const;
    QString saveDirectory() const;
    void startCut(const Playlist::RawItems& items, const TimeInterval& interval, const EncodingSettings& settings);
    void startEvidence(const TimeInterval& interval);
    // True, after logging it, when the user canceled.
    static bool wasCanceled(const JobRunner::Endings& endings);
    // What every save may do: never write into the loaded card; replace a file only where the user agreed.
    exporttarget::Permissions permissions(bool overwrite) const;

    Ui::MainWindow& m_ui;
    PlaybackSession* m_session;
    PlotPanel* m_plots;
    JobRunner* m_jobs;
    const FileChoosers& m_choosers;
    QWidget* m_window;
    QMenu* m_saveMenu;
    QToolButton* m_evidenceButton;
    QAction* m_evidenceAction;
    QAction* m_markAction;
    bool m_cutMode = false;
    bool m_cutForEvidence = false; // cut mode was entered to choose the evidence pack's interval
    QString m_lastSaveDirectory;
    QString m_loadedPath;
    Playlist::RawItems m_recordings;
    std::vector<QDateTime> m_marks; // of the item that plays, in the order marked
    QString m_cardFolder;
    // Shown under the next done box: why the job failed, or that a cut came out shorter than asked.
    QString m_doneDetail;
    // Set with m_doneDetail when the place written to failed: another container would not help.
    bool m_failedOnTarget = false;
};
