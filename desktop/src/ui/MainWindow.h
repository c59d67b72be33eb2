// The program's only top-level window: the form, its companions, and the wiring between them.
//
// Lives on the GUI thread. Builds the form and one companion per job: the playlist pane, the playback session,
// exports, pictures, full screen, cards, the language switch and the job runner with its worker thread; it
// keeps only the window's own settings, texts and menus. The slots below are the window's named operations;
// most forward to the companion that does the work.
#pragma once

#include "ui/FileChoosers.h"
#include "ui/PlotType.h"

#include <QMainWindow>

#include <memory>
#include <vector>

namespace Ui {
class MainWindow;
}
class EvidenceFlow;
class ExportController;
class FullscreenController;
class JobRunner;
class LanguageController;
class MapWidgetAdapter;
class OfflineMaps;
class PictureSaver;
class PlaybackController;
class PlaybackSession;
class PlaylistPane;
class PlotIntervalSelector;
class PlotPanel;
class QActionGroup;
class QTranslator;
class StorageOpener;
class StorageWatcher;
class TrackAttacher;
class TrackPlot;

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    StorageWatcher* storageWatcher() const;
    PlaybackController* playbackController() const;
    MapWidgetAdapter* mapAdapter() const { return m_map; }
    OfflineMaps* offlineMaps() const { return m_offlineMaps; }
    PlotIntervalSelector* intervalSelector() const;
    TrackPlot* plot(PlotType type) const;
    TrackAttacher* trackAttacher() const { return m_tracks; }
    // How the window asks the user for paths; tests answer in the user's place.
    using FileChoosers = ::FileChoosers;
    void setFileChoosers(FileChoosers choosers) { m_fileChoosers = std::move(choosers); }
    // The start-up translation of the window, kept so a language change can replace it.
    void setStartupTranslators(const std::vector<QTranslator*>& translators);

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
    void onAppUpdaterStarted();
    void onAppUpdaterFinished(const QString& message);
    void onBackgroundOperationProgress(int percent);
    void onMapWidgetReady();
    void relayoutVideoOutputs();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void setupMenus();
    void setupShortcuts(QWidget* window);
    void connectSignals();
    void readSettings();
    void writeSettings();
    void retranslate();
    void updateWindowTitle();
    void setTimeStep(int seconds, QAction* action);

    std::unique_ptr<Ui::MainWindow> m_ui;
    FileChoosers m_fileChoosers;
    MapWidgetAdapter* m_map = nullptr;
    OfflineMaps* m_offlineMaps = nullptr;
    JobRunner* m_jobs = nullptr;
    PlotPanel* m_plots = nullptr;
    PlaybackSession* m_session = nullptr;
    PlaylistPane* m_playlist = nullptr;
    ExportController* m_export = nullptr;
    EvidenceFlow* m_evidence = nullptr;
    PictureSaver* m_pictures = nullptr;
    FullscreenController* m_fullscreen = nullptr;
    StorageOpener* m_storage = nullptr;
    LanguageController* m_language = nullptr;
    TrackAttacher* m_tracks = nullptr;
    QActionGroup* m_timeStampActions = nullptr;
    QString m_loadedPath; // of the playlist shown
};
