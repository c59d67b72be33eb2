// A track recorded apart from the camera (a phone, a logger) attached to the loaded recordings: the File
// menu's "Attach track..." and "Detach track", the offset box in the status bar, and each card's memory of both.
//
// Lives on the GUI thread. The file is read on the JobRunner's worker thread (TrackFileJob); the positions read
// are kept here and handed to the playlist pane with every offset the user sets, and the item that played plays
// on from the same moment. What is attached to a card is stored in the user settings under the card's root
// path and attached again whenever that card loads.
#pragma once

#include "core/TrackAttachment.h"
#include "ui/FileChoosers.h"

#include <QObject>
#include <QTimer>

#include <optional>

class JobRunner;
class PlaybackSession;
class PlaylistPane;
class QAction;
class QLabel;
class QMenu;
class QSpinBox;
class QStatusBar;
class QWidget;

class TrackAttacher : public QObject {
    Q_OBJECT
public:
    // Where the controls go: the actions into `menu` before `before`, the offset box into `statusBar`.
    struct Controls {
        QMenu* menu;
        QAction* before;
        QStatusBar* statusBar;
    };
    // 1 day: a camera or phone set to the wrong time zone is off by at most that.
    static constexpr int kMaxOffsetSeconds = 86400;

    TrackAttacher(Controls controls, PlaylistPane* playlist, PlaybackSession* session, JobRunner* jobs,
                  const FileChoosers& choosers, QWidget* window);

    // The attached track, its file and offset; none while nothing is attached.
    const std::optional<TrackAttachment>& attachment() const { return m_attachment; }
    QSpinBox* offsetBox() const { return m_offsetBox; }
    QAction* attachAction() const { return m_attachAction; }
    QAction* detachAction() const { return m_detachAction; }
    void retranslate();

public slots:
    void attach(); // asks for a file, then attaches it
    // Reads the file in the background and attaches it with this offset; false while another job runs. A file
    // that cannot be read is told in a box, or in the status line when `quiet` (attaching it again on a load).
    bool attachFile(const QString& path, int offsetSeconds, bool quiet = false);
    void detach();
    void setOffset(int seconds);

private:
    void onLoadedPathChanged(const QString& path);
    void showReadFailure(const QString& path, bool quiet);
    void apply();
    void updateControls();
    void remember() const;
    void forget() const;

    PlaylistPane* m_playlist;
    PlaybackSession* m_session;
    JobRunner* m_jobs;
    const FileChoosers& m_choosers;
    QWidget* m_window;
    QStatusBar* m_statusBar;
    QAction* m_attachAction;
    QAction* m_detachAction;
    QWidget* m_offsetControl; // the label and the box, shown while a track is attached
    QLabel* m_offsetLabel;
    QSpinBox* m_offsetBox;
    QTimer m_applyTimer; // one apply for a burst of offset steps
    std::optional<TrackAttachment> m_attachment;
    QString m_cardPath;  // the loaded path the attachment belongs to
    QString m_lastDirectory;
    TrackPositions m_read; // what the running read delivered
};
