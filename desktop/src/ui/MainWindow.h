// The program's only top-level window: the layout, menus and tool buttons, the window's settings, and the
// wiring between loading, playback, the playlist views, the map, the plots and the save jobs.
#pragma once

#include "core/EncodingSettings.h"
#include "core/Playlist.h"
#include "core/TimeInterval.h"
#include "ui/PlotType.h"

#include <QMainWindow>
#include <QPointer>
#include <QStorageInfo>
#include <QThread>
#include <QTimer>
#include <QTranslator>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace Ui {
class MainWindow;
}
namespace av {
class VideoWidget;
}
class FullscreenVideoWidget;
class MapWidgetAdapter;
class PlaybackController;
class PlaylistItemModel;
class PlaylistProcessedItemModel;
class PlaylistRawItemModel;
class PlaylistView;
class PlotIntervalSelector;
class ProgressDialog;
class QActionGroup;
class StorageWatcher;
class TrackPlot;
class VideoOutputEventFilter;
class WaitingAnimation;

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    StorageWatcher* storageWatcher() const { return m_storageWatcher; }
    PlaybackController* playbackController() const { return m_playbackController.get(); }
    MapWidgetAdapter* mapAdapter() const { return m_map; }
    PlotIntervalSelector* intervalSelector() const { return m_intervalSelector; }
    TrackPlot* plot(PlotType type) const;
    // How the window asks the user for paths; tests answer in the user's place.
    struct FileChoosers {
        std::function<QString(QWidget* parent, const QString& caption, const QString& proposal, const QString& filter)>
            saveFileName;
        std::function<QString(QWidget* parent, const QString& caption, const QString& start)> existingDirectory;
    };
    void setFileChoosers(FileChoosers choosers) { m_fileChoosers = std::move(choosers); }
    // The start-up translation of the window, kept so a language change can replace it.
    void setStartupTranslators(const std::vector<QTranslator*>& translators) {
        m_startupTranslators.assign(translators.begin(), translators.end());
    }

public slots:
    // Both are invoked by name, queued, from the storage and drop paths.
    void loadDirectory(QString path);
    void loadFile(QString path);

    void onActionQuit();
    void onActionOpenDirectory();
    void onActionOpenFile();
    void onActionOpenDevice();
    void onActionCheckUpdate();
    void onActionShowMainCamera(bool checked);
    void onActionShowRearCamera(bool checked);
    void onRotateMainCamera();
    void onRotateRearCamera();
    void onRotateButtonClicked();
    void onActionDisableTrackTimeStamps();
    void onActionTrackTimeStamps30s();
    void onActionTrackTimeStamps1m();
    void onActionTrackTimeStamps5m();
    void onActionTrackTimeStamps20m();
    void onActionSetEnglishLanguage();
    void onActionSetRussianLanguage();
    void onActionSetPolishLanguage();
    void onActionSetCzechLanguage();
    void onActionAbout();

    void onToBeginButtonClicked();
    void onToEndButtonClicked();
    void onSlowDownButtonClicked();
    void onSpeedUpButtonClicked();
    void onStopButtonClicked();
    void onPlayPauseButtonClicked();
    void seekLeft();
    void seekRight();
    void onCyclePlayStart();
    void onCyclePlayStop();

    void onSavePlaylistItem();
    void onSaveVideo();
    void onSaveTrack(int format);
    void onCutButtonClicked();
    void cutCurrentItem();
    void onRejectCutButtonClicked();
    void onSaveVideoFrame();
    void onSaveMainCameraFrame();
    void onSaveRearCameraFrame();
    void onSaveWindow();

    void onFullscreenButtonClicked();
    void onVideoDblClickEvent();
    void hideSlot();
    void mute();
    void unMute();
    void onVolumeChanged(int value);

private slots:
    void onSupportedStorageDevicesArrived(const std::vector<QStorageInfo>& storages);
    void onStorageDeviceRemoved(const QStorageInfo& storage);
    void onAppUpdaterStarted();
    void onAppUpdaterFinished(const QString& message);
    void onMapWidgetReady();
    void onPlaybackStart();
    void onPlaybackStop();
    void onBackgroundOperationProgress(int percent);
    void onBackgroundOperationCanceled();
    void onCopyingDone(bool ok);
    void onEncodeDone(bool ok);
    void onTrackSaveDone(bool ok);
    void onTrackCopyDone(bool ok);
    void onBackgroundJobCanceled();
    void onPlaylistLoaded(Playlist* playlist, PlaylistProcessedItemModel* tripItemModel,
                          PlaylistProcessedItemModel* parkingItemModel, PlaylistRawItemModel* eventItemModel,
                          PlaylistRawItemModel* rawItemModel);
    void onPlaylistLoadFailed(const QString& message);
    void onPlaylistLoadCanceled();
    void onImageCaptured(const QImage& image);
    void relayoutVideoOutputs();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    struct PlotEntry {
        TrackPlot* plot = nullptr;
        QAction* action = nullptr; // none for the empty placeholder
    };
    // A cut waiting for its track copy to finish before the video is written.
    struct PendingCut {
        Playlist::RawItems items;
        TimeInterval interval;
        EncodingSettings settings;
        QString trackPath;
    };

    void setupVideoOutputs();
    void setupPlots();
    void setupMenus();
    void setupShortcuts(QWidget* window);
    void connectSignals();
    void applyIcons();
    void createStorageWatcher();
    void readSettings();
    void writeSettings();
    void retranslate();

    void startLoading(const QString& path, bool isFile);
    void clearPlaylist();
    void updateWindowTitle();
    void chooseItem(PlaylistView* view, int index);
    void playRawItems(Playlist::RawItems items, const QDateTime& from, const QDateTime& to);
    void stopPlayback();
    void stepItem(int step);
    PlaylistView* currentView() const;
    const std::vector<PlaylistView*>& playlistViews() const { return m_playlistViews; }

    void updatePlotsVisibility();
    void updateCameraOutputs();
    void updateVolumeButtons();
    void setTimeStep(int seconds, QAction* action);
    void changeLanguage(const QLocale& locale);
    void updateLanguageActions();
    void rotate(av::VideoWidget* output);
    void enterFullscreen();
    void leaveFullscreen();
    bool isFullscreen() const;
    void setCutMode(bool on);

    void captureFrame(std::set<size_t> cameras);
    // The picture save dialog; `write` stores the picture at a path and tells whether it could.
    // positionTime: the moment whose track position goes into the picture's EXIF block.
    void saveImage(const std::function<bool(const QString&)>& write, const QString& baseName,
                   const QDateTime& positionTime);
    void copyItemFiles(bool withTracks);
    TimeInterval saveInterval() const;
    // False, with the warning naming the method, when nothing plays.
    bool hasController(const char* method) const;
    QString saveDirectory() const;
    void startJob(QObject* job, const QString& title, const char* doneSlot);
    void finishJob();
    void startCutEncoder();
    void removeTrackCopyOfFailedCut();

    void showProgressDialog(const QString& title);
    void closeProgressDialog();
    void setBusy(bool busy);
    // One storage opens at once, several are offered in the open dialog.
    void openOneOf(const std::vector<QStorageInfo>& storages);
    void openStorage(const QStorageInfo& storage, const QString& path);
    void closeRemovedRecordings(const QStorageInfo& storage);

    std::unique_ptr<Ui::MainWindow> m_ui;
    std::unique_ptr<PlaybackController> m_playbackController;
    StorageWatcher* m_storageWatcher = nullptr;
    std::vector<QStorageInfo> m_supportedStorages; // as the watcher last reported them
    QStorageInfo m_openedStorage;                  // the storage whose recordings are loaded
    bool m_storageOpened = false;
    QPointer<ProgressDialog> m_progressDialog; // of the running background operation, at most one
    QPointer<QObject> m_backgroundJob;         // the job the progress dialog belongs to, if any
    std::map<PlotType, PlotEntry> m_plots;
    PlotIntervalSelector* m_intervalSelector = nullptr;
    bool m_mainCameraVisible = true;
    bool m_rearCameraVisible = true;
    QTranslator m_translator;
    QTranslator m_qtTranslator; // Qt's own texts in the chosen language
    std::vector<QPointer<QTranslator>> m_startupTranslators;
    QThread m_workerThread;

    MapWidgetAdapter* m_map = nullptr;
    av::VideoWidget* m_mainOutput = nullptr;
    av::VideoWidget* m_rearOutput = nullptr;
    VideoOutputEventFilter* m_videoOutputEventFilter = nullptr;
    WaitingAnimation* m_waitingAnimation = nullptr;
    FullscreenVideoWidget* m_fullscreenWidget = nullptr;
    QTimer m_hideTimer;
    QActionGroup* m_timeStampActions = nullptr;
    std::vector<PlaylistView*> m_playlistViews;

    std::unique_ptr<Playlist> m_playlist;
    std::vector<std::unique_ptr<PlaylistItemModel>> m_models; // trips, parking, events, files
    PlaylistView* m_playingView = nullptr;                    // the tab of the item that plays
    int m_playingItem = -1;
    QString m_loadingPath; // of the last load started
    QString m_loadedPath;  // of the playlist shown
    bool m_cutMode = false;
    bool m_muted = false;
    std::optional<QString> m_pendingFrameBaseName; // a frame capture under way
    QDateTime m_pendingFrameTime;
    std::optional<PendingCut> m_pendingCut;
    QString m_lastSaveDirectory;
    FileChoosers m_fileChoosers;
    QString m_lastCutPath;
};
