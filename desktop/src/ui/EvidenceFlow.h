// "Save evidence": the tool button and the menu actions, the moments marked while playing, the start of the
// evidence pack of the chosen interval and the box that tells how it ended.
//
// Lives on the GUI thread. Owns the evidence button and actions and the marks of the item that plays; the
// interval is chosen with the cut mode of ExportController, and the pack runs through the JobRunner.
#pragma once

#include "core/Playlist.h"
#include "core/TimeInterval.h"
#include "ui/FileChoosers.h"

#include <QDateTime>
#include <QObject>

#include <vector>

namespace Ui {
class MainWindow;
}
class ExportController;
class JobRunner;
class PlaybackController;
class PlaybackSession;
class QAction;
class QToolButton;
class QWidget;

class EvidenceFlow : public QObject {
    Q_OBJECT
public:
    EvidenceFlow(Ui::MainWindow& ui, PlaybackSession* session, ExportController* cuts, JobRunner* jobs,
                 const FileChoosers& choosers, QWidget* window);

public slots:
    // The pack of the interval chosen on the plots; without a chosen interval, cut mode lets the user choose
    // one and Confirm makes the pack.
    void saveEvidence();
    // While playing: the moment on screen goes into the next pack.
    void markMoment();
    // Asks for the folder and starts the pack of `interval`.
    void start(const TimeInterval& interval);
    void onControllerChanged(PlaybackController* controller);
    // The path loaded and all its recordings: the pack's originals may reach past the item that plays.
    void setLoaded(const QString& path, const Playlist::RawItems& recordings);
    void retranslate();
    void onEvidenceDone(bool ok, const QString& folder, const QString& failure);

private:
    Ui::MainWindow& m_ui;
    PlaybackSession* m_session;
    ExportController* m_cuts;
    JobRunner* m_jobs;
    const FileChoosers& m_choosers;
    QWidget* m_window;
    QToolButton* m_button;
    QAction* m_action;
    QAction* m_markAction;
    QString m_loadedPath;
    Playlist::RawItems m_recordings;
    std::vector<QDateTime> m_marks; // of the item that plays, in the order marked
};
