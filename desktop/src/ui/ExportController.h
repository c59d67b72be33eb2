// Saving what plays: the cut (its video and the track beside it), the item's original files and its track in
// any export format; cut mode with its confirm and reject strip, which also chooses an evidence pack's
// interval (see EvidenceFlow).
//
// Lives on the GUI thread. Owns the save menu, the cut mode and the folder last saved to; the jobs themselves
// run through the JobRunner. A cut's track copy and its video run as one job, under one progress window.
#pragma once

#include "core/EncodingSettings.h"
#include "core/ExportTarget.h"
#include "core/Playlist.h"
#include "core/TimeInterval.h"
#include "ui/FileChoosers.h"
#include "ui/JobRunner.h"

#include <QObject>

namespace Ui {
class MainWindow;
}
class PlaybackController;
class PlaybackSession;
class PlotPanel;
class QMenu;
class QWidget;

class ExportController : public QObject {
    Q_OBJECT
public:
    ExportController(Ui::MainWindow& ui, PlaybackSession* session, PlotPanel* plots, JobRunner* jobs,
                     const FileChoosers& choosers, QWidget* window);

    bool isCutMode() const { return m_cutMode; }
    // The part the user chose on the plots while cutting or cycling, else the whole item.
    TimeInterval saveInterval() const;
    // Where saves go first: the last folder used, else the user's movies, else home; always an existing one.
    QString saveDirectory() const;
    void rememberSaveDirectory(const QString& directory);

public slots:
    void saveItem();  // the original videos and tracks
    void saveVideo(); // the original videos alone
    void saveTrack(int format);
    void enterCutMode();
    void leaveCutMode();
    // Asks for the encoding settings, then saves the interval; in cut mode entered for an evidence pack,
    // hands the interval on instead.
    void cut();
    // Cut mode whose Confirm gives evidenceIntervalConfirmed() instead of a cut.
    void chooseIntervalForEvidence();
    void onControllerChanged(PlaybackController* controller);
    // The path loaded: nothing is written inside it.
    void setLoaded(const QString& path);
    void retranslate();

    // The ends of the jobs: a box tells the user.
    void onCopyingDone(bool ok);
    void onEncodeDone(bool ok);
    void onTrackSaveDone(bool ok);

signals:
    void cutModeChanged(bool on);
    void evidenceIntervalConfirmed(const TimeInterval& interval);

private:
    void copyItemFiles(bool withTracks);
    void setCutMode(bool on);
    // False, with the warning naming the method, when nothing plays.
    bool hasController(const char* method) const;
    void startCut(const Playlist::RawItems& items, const TimeInterval& interval, const EncodingSettings& settings);
    // True, after logging it, when the user canceled.
    static bool wasCanceled(const JobRunner::Endings& endings);
    void showEncoded(const QString& file, const QString& detail);
    // What every save may do: never write into the loaded card; replace a file only where the user agreed.
    exporttarget::Permissions permissions(bool overwrite) const;

    Ui::MainWindow& m_ui;
    PlaybackSession* m_session;
    PlotPanel* m_plots;
    JobRunner* m_jobs;
    const FileChoosers& m_choosers;
    QWidget* m_window;
    QMenu* m_saveMenu;
    bool m_cutMode = false;
    bool m_cutForEvidence = false; // cut mode was entered to choose the evidence pack's interval
    QString m_lastSaveDirectory;
    QString m_cardFolder;
    // Shown under the next done box: why the job failed, or that a cut came out shorter than asked.
    QString m_doneDetail;
    // Set with m_doneDetail when the place written to failed: another container would not help.
    bool m_failedOnTarget = false;
    QString m_doneFile; // the cut the next done box names
};
