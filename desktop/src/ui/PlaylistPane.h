// The playlist side of the window: loading a card, folder, file or drop, the four item tables, and choosing
// and stepping through their items.
//
// Lives on the GUI thread. Owns the loaded playlist and its four models (trips, parking, events, files), shown
// in the borrowed tab widget's tables; the loading itself runs on the JobRunner's worker thread.
#pragma once

#include "core/Playlist.h"
#include "core/TrackAttachment.h"
#include "ui/FileChoosers.h"

#include <QDateTime>
#include <QObject>
#include <QPointer>

#include <memory>
#include <optional>
#include <vector>

class JobRunner;
class PlaylistItemModel;
class PlaylistView;
class QPlaylistTabWidget;
class QWidget;

class PlaylistPane : public QObject {
    Q_OBJECT
public:
    PlaylistPane(QPlaylistTabWidget* tabs, std::vector<PlaylistView*> views, JobRunner* jobs,
                 const FileChoosers& choosers, QWidget* window);
    ~PlaylistPane() override;

    const std::vector<PlaylistView*>& views() const { return m_views; }
    bool isLoaded() const { return m_playlist != nullptr; }
    // Every recording of the loaded path, in time order; empty when nothing is loaded.
    Playlist::RawItems rawItems() const { return m_playlist ? m_playlist->rawItems() : Playlist::RawItems(); }
    // The path whose playlist is shown; empty when none is.
    const QString& loadedPath() const { return m_loadedPath; }

public slots:
    void loadDirectory(const QString& path);
    void loadFile(const QString& path);
    void openDirectory(); // asks for a folder, then loads it
    void openFile();
    // Forgets the playlist: empty tables, nothing plays.
    void clear();
    // Chooses the item `step` places from the one that plays (0: that one again) in its table; false when there
    // is none.
    bool step(int step);
    // Shows the loaded playlist with this track attached to its recordings without one (none: as loaded).
    // The tables keep their rows and the item that played is chosen again.
    void setAttachment(const std::optional<TrackAttachment>& attachment);

signals:
    // The user or the pane chose an item: play these recordings over [from, to].
    void itemChosen(const Playlist::RawItems& items, const QDateTime& from, const QDateTime& to);
    // Nothing is to play any more.
    void closed();
    // The path whose playlist is shown; empty when none is.
    void loadedPathChanged(const QString& path);
    // The user asked to repair this recording, whose index was lost.
    void repairRequested(const QString& damagedPath);
    // The recordings of the loaded path were replaced by the same with another attached track.
    void rawItemsChanged();

private:
    void startLoading(const QString& path, bool isFile);
    void show(std::unique_ptr<Playlist> playlist, std::vector<std::unique_ptr<PlaylistItemModel>> models);
    void setModels(std::vector<std::unique_ptr<PlaylistItemModel>> models);
    void choose(PlaylistView* view, int index);

    QPlaylistTabWidget* m_tabs;
    std::vector<PlaylistView*> m_views; // trips, parking, events, files
    std::vector<QPointer<PlaylistView>> m_liveViews; // the same, for the destructor: the form may go first
    JobRunner* m_jobs;
    const FileChoosers& m_choosers;
    QWidget* m_window;
    std::unique_ptr<Playlist> m_playlist;       // shown: as loaded, or with a track attached
    std::unique_ptr<Playlist> m_loadedPlaylist; // as loaded, while a track is attached
    QString m_loadedPath;
    std::vector<std::unique_ptr<PlaylistItemModel>> m_models; // as m_views
    PlaylistView* m_playingView = nullptr;                    // the table of the item that plays
    int m_playingItem = -1;
    QString m_loadingPath; // of the last load started
    // What the running load delivered, kept until the runner reports its end.
    std::unique_ptr<Playlist> m_loaded;
    std::vector<std::unique_ptr<PlaylistItemModel>> m_loadedModels;
    QString m_loadFailure;
};
