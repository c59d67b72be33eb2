#include "ui/MainWindow.h"

#include "ui_MainWindow.h"

#include "av/VideoWidget.h"
#include "core/ApplicationOptions.h"
#include "logging/Logging.h"
#include "ui/AppUpdater.h"
#include "ui/EvidenceFlow.h"
#include "ui/ExportController.h"
#include "ui/FullscreenController.h"
#include "ui/JobRunner.h"
#include "ui/LanguageController.h"
#include "ui/MapWidgetAdapter.h"
#include "ui/OfflineMaps.h"
#include "ui/PictureSaver.h"
#include "ui/PlaybackController.h"
#include "ui/PlaybackSession.h"
#include "ui/PlaylistPane.h"
#include "ui/PlotPanel.h"
#include "ui/RepairFlow.h"
#include "ui/StorageOpener.h"
#include "ui/TrackAttacher.h"
#include "ui/WindowIcons.h"
#include "ui/WindowSettings.h"

#include <QActionGroup>
#include <QCloseEvent>
#include <QDir>
#include <QMessageBox>
#include <QShortcut>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QStatusBar>

namespace {
const QString kWindowTitle = QStringLiteral("Lumicor Reelvue");
constexpr int kSkippedMessageMs = 10000; // long enough to read a file name and its reason
} // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent), m_ui(std::make_unique<Ui::MainWindow>()), m_fileChoosers(FileChoosers::dialogs()) {
    Ui::MainWindow& ui = *m_ui;
    ui.setupUi(this);
    setWindowTitle(kWindowTitle);

    // The map page has a profile of its own (kept in memory): its tile handler comes and goes with this window
    // and leaves the default profile alone. The page goes before the profile, being made earlier.
    ui.mapWidget->setPage(new QWebEnginePage(new QWebEngineProfile(this), ui.mapWidget));
    m_map = new MapWidgetAdapter(ui.mapWidget, this);
    m_offlineMaps = new OfflineMaps(ui.menuView, ui.menuLanguage->menuAction(), m_map->tileState(),
                                    OfflineMaps::configFromSettings(), m_fileChoosers, this);
    m_offlineMaps->install(ui.mapWidget->page()->profile());
    m_offlineMaps->open(applicationOptions().mapFiles, false);
    m_jobs = new JobRunner(this);
    m_plots = new PlotPanel(ui.plotContainer,
                            {{PlotType::Speed, ui.actionShowSpeedPlot}, {PlotType::Altitude, ui.actionShowAltitudePlot},
                             {PlotType::Satellites, ui.actionShowNumberOfSatellitesPlot}, {PlotType::Hdop, ui.actionShowHDOPPlot},
                             {PlotType::Pdop, ui.actionShowPDOPPlot}, {PlotType::Vdop, ui.actionShowVDOPPlot}},
                            this);
    m_session = new PlaybackSession(ui, m_map, m_plots, this);
    m_playlist = new PlaylistPane(ui.playlistContainer,
                                  {ui.tripPlaylistTable, ui.parkingPlaylistTable, ui.eventPlaylistTable, ui.rawPlaylistTable},
                                  m_jobs, m_fileChoosers, this);
    m_export = new ExportController(ui, m_session, m_plots, m_jobs, m_fileChoosers, this);
    m_evidence = new EvidenceFlow(ui, m_session, m_export, m_jobs, m_fileChoosers, this);
    m_tracks = new TrackAttacher({ui.menuFile, ui.menuFile->actions().at(ui.menuFile->actions().indexOf(ui.actionQuit) - 1),
                                  statusBar()},
                                 m_playlist, m_session, m_jobs, m_fileChoosers, this);
    m_pictures = new PictureSaver(ui.videoWidgetParent, this, m_session, m_fileChoosers);
    m_fullscreen = new FullscreenController(
        {ui.videoPane, ui.videoWidgetParent, ui.VideoProgressBar, ui.videoToolbar, ui.fullscreenButton,
         ui.exitFullscreenButton, {m_session->output(0), m_session->output(1)}},
        this, [this](QWidget* fullscreen) { setupShortcuts(fullscreen); });
    m_storage = new StorageOpener(ui.actionOpenDevice, ui.openDeviceButton, [this] { return m_jobs->isBusy(); }, this);
    m_language = new LanguageController({{ui.actionSetEnglishLanguage, QLocale(QLocale::English, QLocale::UnitedStates)},
                                         {ui.actionSetRussianLanguage, QLocale(QLocale::Russian, QLocale::Russia)},
                                         {ui.actionSetPolishLanguage, QLocale(QLocale::Polish, QLocale::Poland)},
                                         {ui.actionSetCzechLanguage, QLocale(QLocale::Czech, QLocale::CzechRepublic)}},
                                        this);
    setupMenus();
    setupShortcuts(this);
    applyWindowIcons(ui, this);
    connectSignals();
    m_storage->start();

    ui.mainSplitter->setStretchFactor(0, 0);
    ui.mainSplitter->setStretchFactor(1, 1);
    ui.mainSplitter->setSizes({380, 900});
    ui.leftContainerSplitter->setSizes({420, 300});
    ui.middleContainerSplitter->setStretchFactor(0, 1);
    ui.middleContainerSplitter->setSizes({700, 220});
    retranslate();
    readSettings();
}

MainWindow::~MainWindow() {
    // The companions go before the form's widgets they drive.
    delete m_session;
    delete m_playlist;
    delete m_jobs; // cancels the running job and waits for the worker thread
}

StorageWatcher* MainWindow::storageWatcher() const { return m_storage->watcher(); }
PlaybackController* MainWindow::playbackController() const { return m_session->controller(); }
PlotIntervalSelector* MainWindow::intervalSelector() const { return m_plots->intervalSelector(); }
TrackPlot* MainWindow::plot(PlotType type) const { return m_plots->plot(type); }
void MainWindow::setStartupTranslators(const std::vector<QTranslator*>& translators) {
    m_language->setStartupTranslators(translators);
}

void MainWindow::setupMenus() {
    m_timeStampActions = new QActionGroup(this);
    for (QAction* action : {m_ui->actionDisableTrackTimeStamps, m_ui->actionTrackTimeStamps30s, m_ui->actionTrackTimeStamps1m,
                            m_ui->actionTrackTimeStamps5m, m_ui->actionTrackTimeStamps20m})
        m_timeStampActions->addAction(action);
    m_ui->actionDisableTrackTimeStamps->setChecked(true);
}

void MainWindow::setupShortcuts(QWidget* window) {
    auto add = [this, window](const QKeySequence& key, auto slot) {
        auto* shortcut = new QShortcut(key, window);
        shortcut->setContext(Qt::WindowShortcut);
        connect(shortcut, &QShortcut::activated, this, slot);
    };
    add(QKeySequence(Qt::Key_Space), &MainWindow::onPlayPauseButtonClicked);
    add(QKeySequence(Qt::Key_Left), &MainWindow::seekLeft);
    add(QKeySequence(Qt::Key_Right), &MainWindow::seekRight);
    add(QKeySequence(Qt::Key_Plus), &MainWindow::onSpeedUpButtonClicked);
    add(QKeySequence(Qt::Key_Equal), &MainWindow::onSpeedUpButtonClicked);
    add(QKeySequence(Qt::Key_Minus), &MainWindow::onSlowDownButtonClicked);
    add(QKeySequence(Qt::Key_F), &MainWindow::onFullscreenButtonClicked);
    add(QKeySequence(Qt::Key_F11), &MainWindow::onFullscreenButtonClicked);
    add(QKeySequence(Qt::Key_Escape), [this] { m_fullscreen->leave(); });
}

void MainWindow::connectSignals() {
    Ui::MainWindow& ui = *m_ui;
    // menus -> window
    connect(ui.actionQuit, &QAction::triggered, this, &MainWindow::onActionQuit);
    connect(ui.actionOpenDirectory, &QAction::triggered, this, &MainWindow::onActionOpenDirectory);
    connect(ui.openDirectoryButton, &QToolButton::clicked, this, &MainWindow::onActionOpenDirectory);
    connect(ui.actionOpenFile, &QAction::triggered, this, &MainWindow::onActionOpenFile);
    connect(ui.openFileButton, &QToolButton::clicked, this, &MainWindow::onActionOpenFile);
    connect(ui.actionCheckUpdate, &QAction::triggered, this, &MainWindow::onActionCheckUpdate);
    connect(ui.actionAbout, &QAction::triggered, this, &MainWindow::onActionAbout);
    connect(ui.actionDisableTrackTimeStamps, &QAction::triggered, this, &MainWindow::onActionDisableTrackTimeStamps);
    connect(ui.actionTrackTimeStamps30s, &QAction::triggered, this, &MainWindow::onActionTrackTimeStamps30s);
    connect(ui.actionTrackTimeStamps1m, &QAction::triggered, this, &MainWindow::onActionTrackTimeStamps1m);
    connect(ui.actionTrackTimeStamps5m, &QAction::triggered, this, &MainWindow::onActionTrackTimeStamps5m);
    connect(ui.actionTrackTimeStamps20m, &QAction::triggered, this, &MainWindow::onActionTrackTimeStamps20m);

    // storage -> playlist: the path is loaded once the device notification has returned
    connect(m_storage, &StorageOpener::openRequested, this, &MainWindow::loadDirectory, Qt::QueuedConnection);
    connect(m_storage, &StorageOpener::openedStorageRemoved, m_playlist, &PlaylistPane::clear);

    // playlist -> playback
    connect(m_playlist, &PlaylistPane::itemChosen, m_session, &PlaybackSession::play);
    connect(m_playlist, &PlaylistPane::closed, m_session, &PlaybackSession::close);
    m_session->setItemStepper([this](int step) { return m_playlist->step(step); });

    // playlist -> window
    connect(m_playlist, &PlaylistPane::loadedPathChanged, this, [this](const QString& path) {
        m_loadedPath = path;
        m_ui->saveItemButton->setEnabled(!path.isEmpty());
        updateWindowTitle();
    });

    // playlist -> repair: a recording whose index was lost is rebuilt as a window job
    connect(m_playlist, &PlaylistPane::repairRequested, new RepairFlow(m_jobs, m_fileChoosers, this), &RepairFlow::repair);

    // playback -> status bar: a recording that cannot be played is passed over, and the user is told which
    connect(m_session, &PlaybackSession::controllerChanged, this, [this](PlaybackController* controller) {
        if (controller)
            connect(controller, &PlaybackController::recordingSkipped, this,
                    [this](const QString& message) { statusBar()->showMessage(message, kSkippedMessageMs); });
    });

    // playlist -> export, evidence: nothing is written into the card; an evidence pack's originals may reach past
    // the item that plays, and take an attached track's positions when one is attached later
    connect(m_playlist, &PlaylistPane::loadedPathChanged, m_export, &ExportController::setLoaded);
    connect(m_playlist, &PlaylistPane::loadedPathChanged, m_evidence,
            [this](const QString& path) { m_evidence->setLoaded(path, m_playlist->rawItems()); });
    connect(m_playlist, &PlaylistPane::rawItemsChanged, m_evidence,
            [this] { m_evidence->setLoaded(m_loadedPath, m_playlist->rawItems()); });

    // playback -> map, plots: the controller drives them; a page that comes up later is sent what it missed
    connect(m_map, &MapWidgetAdapter::ready, this, &MainWindow::onMapWidgetReady);

    // offline maps -> status bar: a map file given on the command line or remembered that cannot serve
    connect(m_offlineMaps, &OfflineMaps::message, this,
            [this](const QString& message) { statusBar()->showMessage(message, kSkippedMessageMs); });

    // full screen -> video area
    connect(m_fullscreen, &FullscreenController::resized, this, &MainWindow::relayoutVideoOutputs);

    // playback -> export, evidence, pictures
    connect(m_session, &PlaybackSession::controllerChanged, m_export, &ExportController::onControllerChanged);
    connect(m_session, &PlaybackSession::controllerChanged, m_evidence, &EvidenceFlow::onControllerChanged);
    connect(m_session, &PlaybackSession::controllerChanged, m_pictures, &PictureSaver::onControllerChanged);

    // export -> playback: cut mode shares the plots' interval selector with cycle play
    connect(m_export, &ExportController::cutModeChanged, m_session, &PlaybackSession::setCutMode);
    // export -> evidence: Confirm in cut mode entered for an evidence pack starts the pack
    connect(m_export, &ExportController::evidenceIntervalConfirmed, m_evidence, &EvidenceFlow::start);

    // jobs -> window: the tool bar waits with the rest of the window
    connect(m_jobs, &JobRunner::busyChanged, this,
            [this](bool busy) { m_ui->videoToolbar->setEnabled(!busy && m_session->controller()); });

    // updater -> jobs: its download is shown like a job
    AppUpdater& updater = AppUpdater::instance();
    connect(&updater, &AppUpdater::started, this, &MainWindow::onAppUpdaterStarted);
    connect(&updater, &AppUpdater::progress, this, &MainWindow::onBackgroundOperationProgress);
    connect(&updater, &AppUpdater::finished, this, &MainWindow::onAppUpdaterFinished);

    // language -> window
    connect(m_language, &LanguageController::changed, this, [this](const QLocale& locale) {
        retranslate();
        m_map->onLocaleChanged(locale);
        m_offlineMaps->retranslate();
    });
}

// ---------------------------------------------------------------------------------------------------------
// Settings, texts, closing

void MainWindow::readSettings() {
    const WindowSettings settings = WindowSettings::load();
    settings.restoreLayout({this, m_ui->mainSplitter, m_ui->leftContainerSplitter, m_ui->middleContainerSplitter});
    m_plots->setChecked(settings.checkedPlots(m_plots->available()));
    if (settings.mainCamera)
        m_ui->actionShowMainCamera->setChecked(*settings.mainCamera);
    if (settings.rearCamera)
        m_ui->actionShowRearCamera->setChecked(*settings.rearCamera);
    m_language->updateActions();
}

void MainWindow::writeSettings() {
    WindowSettings settings;
    settings.captureLayout({this, m_ui->mainSplitter, m_ui->leftContainerSplitter, m_ui->middleContainerSplitter});
    settings.plots.emplace();
    for (PlotType type : m_plots->checked()) // ascending type order
        settings.plots->push_back(static_cast<int>(type));
    settings.mainCamera = m_session->isCameraShown(0);
    settings.rearCamera = m_session->isCameraShown(1);
    settings.save();
}

void MainWindow::closeEvent(QCloseEvent* event) {
    m_fullscreen->leave();
    writeSettings();
    QMainWindow::closeEvent(event);
}

void MainWindow::onActionQuit() {
    writeSettings();
    qApp->quit();
}

void MainWindow::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QMainWindow::changeEvent(event);
}

void MainWindow::retranslate() {
    m_ui->retranslateUi(this);
    updateWindowTitle();
    m_export->retranslate();
    m_evidence->retranslate();
    m_pictures->retranslate();
    m_plots->retranslate();
    m_tracks->retranslate();
    for (PlaylistView* view : m_playlist->views())
        view->retranslate();
    m_session->retranslate();
}

void MainWindow::updateWindowTitle() {
    if (m_loadedPath.isEmpty())
        setWindowTitle(kWindowTitle);
    else
        setWindowTitle(kWindowTitle + QStringLiteral(" (") + QDir::toNativeSeparators(m_loadedPath) + QLatin1Char(')'));
}

void MainWindow::onActionAbout() {
    QMessageBox::about(this, tr("About"),
                       QStringLiteral("<h3>%1</h3><p>%2</p>")
                           .arg(kWindowTitle, tr("Version %1").arg(QCoreApplication::applicationVersion())));
}

// ---------------------------------------------------------------------------------------------------------
// The updater's download, shown like a job

void MainWindow::onActionCheckUpdate() { AppUpdater::instance().checkForUpdate(); }

void MainWindow::onAppUpdaterStarted() {
    if (!m_jobs->showOperation(tr("Updating status"), [] { AppUpdater::instance().cancel(); }))
        AppUpdater::instance().cancel(); // one job at a time: the download gives way
}

void MainWindow::onAppUpdaterFinished(const QString& message) {
    m_jobs->closeOperation();
    if (!message.isEmpty())
        QMessageBox::warning(this, QCoreApplication::applicationName(), message);
}

void MainWindow::onBackgroundOperationProgress(int percent) { m_jobs->setOperationProgress(percent); }

// ---------------------------------------------------------------------------------------------------------
// Map time stamps

void MainWindow::setTimeStep(int seconds, QAction* action) {
    action->setChecked(true);
    m_map->setTimeStep(seconds);
}

void MainWindow::onActionDisableTrackTimeStamps() { setTimeStep(0, m_ui->actionDisableTrackTimeStamps); }
void MainWindow::onActionTrackTimeStamps30s() { setTimeStep(30, m_ui->actionTrackTimeStamps30s); }
void MainWindow::onActionTrackTimeStamps1m() { setTimeStep(60, m_ui->actionTrackTimeStamps1m); }
void MainWindow::onActionTrackTimeStamps5m() { setTimeStep(300, m_ui->actionTrackTimeStamps5m); }
void MainWindow::onActionTrackTimeStamps20m() { setTimeStep(1200, m_ui->actionTrackTimeStamps20m); }

// ---------------------------------------------------------------------------------------------------------
// Named operations, done by the companions

void MainWindow::loadDirectory(QString path) { m_playlist->loadDirectory(path); }
void MainWindow::loadFile(QString path) { m_playlist->loadFile(path); }
void MainWindow::onActionOpenDirectory() { m_playlist->openDirectory(); }
void MainWindow::onActionOpenFile() { m_playlist->openFile(); }
void MainWindow::onActionOpenDevice() { m_storage->openDevice(); }
void MainWindow::onMapWidgetReady() { m_session->resendToMap(); }

void MainWindow::onActionShowMainCamera(bool checked) { m_ui->actionShowMainCamera->setChecked(checked); }
void MainWindow::onActionShowRearCamera(bool checked) { m_ui->actionShowRearCamera->setChecked(checked); }
void MainWindow::onRotateMainCamera() { m_session->rotateMainCamera(); }
void MainWindow::onRotateRearCamera() { m_session->rotateRearCamera(); }
void MainWindow::onRotateButtonClicked() { m_session->rotateShownCameras(); }
void MainWindow::onActionSetEnglishLanguage() { m_language->change(m_ui->actionSetEnglishLanguage->data().toLocale()); }
void MainWindow::onActionSetRussianLanguage() { m_language->change(m_ui->actionSetRussianLanguage->data().toLocale()); }
void MainWindow::onActionSetPolishLanguage() { m_language->change(m_ui->actionSetPolishLanguage->data().toLocale()); }
void MainWindow::onActionSetCzechLanguage() { m_language->change(m_ui->actionSetCzechLanguage->data().toLocale()); }

void MainWindow::onToBeginButtonClicked() { m_session->toBegin(); }
void MainWindow::onToEndButtonClicked() { m_session->toEnd(); }
void MainWindow::onSlowDownButtonClicked() { m_session->slowDown(); }
void MainWindow::onSpeedUpButtonClicked() { m_session->speedUp(); }
void MainWindow::onStopButtonClicked() { m_session->stop(); }
void MainWindow::onPlayPauseButtonClicked() { m_session->playPause(); }
void MainWindow::seekLeft() { m_session->seekLeft(); }
void MainWindow::seekRight() { m_session->seekRight(); }
void MainWindow::onCyclePlayStart() { m_session->startCyclePlay(); }
void MainWindow::onCyclePlayStop() { m_session->stopCyclePlay(); }
void MainWindow::mute() { m_session->mute(); }
void MainWindow::unMute() { m_session->unMute(); }
void MainWindow::onVolumeChanged(int value) { m_session->setVolume(value); }
void MainWindow::relayoutVideoOutputs() { m_session->relayoutOutputs(); }

void MainWindow::onSavePlaylistItem() { m_export->saveItem(); }
void MainWindow::onSaveVideo() { m_export->saveVideo(); }
void MainWindow::onSaveTrack(int format) { m_export->saveTrack(format); }
void MainWindow::onCutButtonClicked() { m_export->enterCutMode(); }
void MainWindow::cutCurrentItem() { m_export->cut(); }
void MainWindow::onRejectCutButtonClicked() { m_export->leaveCutMode(); }
void MainWindow::onSaveVideoFrame() { m_pictures->saveFrame(); }
void MainWindow::onSaveMainCameraFrame() { m_pictures->saveMainCameraFrame(); }
void MainWindow::onSaveRearCameraFrame() { m_pictures->saveRearCameraFrame(); }
void MainWindow::onSaveWindow() { m_pictures->saveWindow(); }

void MainWindow::onFullscreenButtonClicked() { m_fullscreen->toggle(); }
void MainWindow::onVideoDblClickEvent() { m_fullscreen->toggle(); }
void MainWindow::hideSlot() { m_fullscreen->hideControls(); }
