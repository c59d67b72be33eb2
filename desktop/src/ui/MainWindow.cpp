#include "ui/MainWindow.h"

#include "ui_MainWindow.h"

#include "av/VideoWidget.h"
#include "core/ApplicationOptions.h"
#include "core/ExportPaths.h"
#include "core/FileCopier.h"
#include "core/PlaylistItemModel.h"
#include "core/PlaylistLoader.h"
#include "core/Startup.h"
#include "core/StorageWatcher.h"
#include "core/TrackExtracter.h"
#include "core/encoding/Coder.h"
#include "core/encoding/CutNaming.h"
#include "core/encoding/Remuxer.h"
#include "device-notify/DeviceNotifyTools.h"
#include "logging/Logging.h"
#include "ui/AppUpdater.h"
#include "ui/EncodingSettingsDialog.h"
#include "ui/ExifWriter.h"
#include "ui/FullscreenVideoWidget.h"
#include "ui/Icons.h"
#include "ui/MapWidgetAdapter.h"
#include "ui/OpenDialog.h"
#include "ui/PictureFileNames.h"
#include "ui/PlaybackController.h"
#include "ui/PlotIntervalSelector.h"
#include "ui/ProgressDialog.h"
#include "ui/TrackPlot.h"
#include "ui/VideoOutputEventFilter.h"
#include "ui/WaitingAnimation.h"

#include <QActionGroup>
#include <QCloseEvent>
#include <QDir>
#include <QFileDialog>
#include <QMenu>
#include <QMessageBox>
#include <QScreen>
#include <QSet>
#include <QSettings>
#include <QShortcut>
#include <QStandardPaths>

#include <algorithm>

namespace {
constexpr const char* kLogger = "ui.MainWindow";
const QString kWindowTitle = QStringLiteral("Lumicor Reelvue");
const QString kDateTimeForName = QStringLiteral("yyyyMMddTHHmmss");
const QString kDateTimeForPicture = QStringLiteral("yyyyMMddTHHmmsszzz");
constexpr int kSeekStepSeconds = 5;
constexpr int kHideControlsMs = 3000;
constexpr int kPlotContainerMinimumHeight = 110;
constexpr int kPlotMinimumHeight = 105;

// Settings keys.
const QString kGeometryKey = QStringLiteral("mainWindowGeometry");
const QString kStateKey = QStringLiteral("mainWindowState");
const QString kMainSplitterKey = QStringLiteral("mainSplitterState");
const QString kLeftSplitterKey = QStringLiteral("leftContainerSplitterState");
const QString kMiddleSplitterKey = QStringLiteral("middleContainerSplitterState");
const QString kPlotsKey = QStringLiteral("plotsVisibilityState");
const QString kMainCameraKey = QStringLiteral("mainCameraVisibilityState");
const QString kRearCameraKey = QStringLiteral("rearCameraVisibilityState");
const QString kLocaleKey = QStringLiteral("locale");

// Picked once per process, like the save dialogs' memory of where the user last put a picture.
QString& lastImageDirectory() {
    static QString directory;
    return directory;
}

QSettings userSettings() { return QSettings(kOrganizationName, kApplicationName); }

bool hasRearCamera(const Playlist::RawItems& items) {
    return std::any_of(items.begin(), items.end(), [](const Playlist::RawItemPtr& item) { return item->rearVideo.has_value(); });
}

bool hasTrack(const Playlist::RawItems& items) {
    return std::any_of(items.begin(), items.end(), [](const Playlist::RawItemPtr& item) { return item->track.has_value(); });
}

int nextOrientation(int degrees) { return (degrees + 90) % 360; }
} // namespace

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent), m_ui(std::make_unique<Ui::MainWindow>()) {
    m_fileChoosers.saveFileName = [](QWidget* parent, const QString& caption, const QString& proposal, const QString& filter) {
        return QFileDialog::getSaveFileName(parent, caption, proposal, filter);
    };
    m_fileChoosers.existingDirectory = [](QWidget* parent, const QString& caption, const QString& start) {
        return QFileDialog::getExistingDirectory(parent, caption, start);
    };
    m_ui->setupUi(this);
    setWindowTitle(kWindowTitle);
    m_workerThread.setObjectName(QStringLiteral("MainWindowWorker"));
    m_workerThread.start();

    m_playlistViews = {m_ui->tripPlaylistTable, m_ui->parkingPlaylistTable, m_ui->eventPlaylistTable,
                       m_ui->rawPlaylistTable};
    m_map = new MapWidgetAdapter(m_ui->mapWidget, this);
    setupVideoOutputs();
    setupPlots();
    setupMenus();
    setupShortcuts(this);
    applyIcons();
    connectSignals();
    createStorageWatcher();

    m_ui->mainSplitter->setStretchFactor(0, 0);
    m_ui->mainSplitter->setStretchFactor(1, 1);
    m_ui->mainSplitter->setSizes({380, 900});
    m_ui->leftContainerSplitter->setSizes({420, 300});
    m_ui->middleContainerSplitter->setStretchFactor(0, 1);
    m_ui->middleContainerSplitter->setSizes({700, 220});
    m_ui->cutButtonContainer->hide();
    m_ui->cutOnButton->hide();
    m_ui->cyclePlayStopButton->hide();
    m_ui->pauseButton->hide();
    m_ui->exitFullscreenButton->hide();
    m_ui->videoToolbar->setEnabled(false);
    m_ui->saveItemButton->setEnabled(false);
    m_ui->actionOpenDevice->setEnabled(false); // until a supported storage is known
    m_ui->openDeviceButton->setEnabled(false);
    m_hideTimer.setSingleShot(true);
    m_hideTimer.setInterval(kHideControlsMs);
    retranslate();
    updateVolumeButtons();

    readSettings();
}

MainWindow::~MainWindow() {
    m_playbackController.reset();
    if (m_backgroundJob)
        QMetaObject::invokeMethod(m_backgroundJob, "cancel", Qt::DirectConnection);
    m_workerThread.quit();
    m_workerThread.wait();
    delete m_fullscreenWidget;
}

// ---------------------------------------------------------------------------------------------------------
// Construction

void MainWindow::setupVideoOutputs() {
    m_mainOutput = new av::VideoWidget;
    m_mainOutput->setObjectName(QStringLiteral("mainVideoOutput"));
    m_rearOutput = new av::VideoWidget;
    m_rearOutput->setObjectName(QStringLiteral("rearVideoOutput"));
    m_ui->videoWidgetParent->setOutputs({m_mainOutput, m_rearOutput});
    m_ui->videoWidgetParent->setMessageLabel(m_ui->noVideOutputsLabel);
    m_ui->noVideOutputsLabel->setStyleSheet(QStringLiteral("color: #d0d0d0; font-size: 12pt;"));
    m_rearOutput->hide();
    m_mainOutput->hide();

    m_videoOutputEventFilter = new VideoOutputEventFilter(this);
    for (QWidget* output : {static_cast<QWidget*>(m_mainOutput), static_cast<QWidget*>(m_rearOutput),
                            static_cast<QWidget*>(m_ui->videoWidgetParent)})
        output->installEventFilter(m_videoOutputEventFilter);
    m_waitingAnimation = new WaitingAnimation(m_ui->videoWidgetParent);
    m_ui->videoWidgetParent->setContextMenuPolicy(Qt::CustomContextMenu);
}

void MainWindow::setupPlots() {
    const ApplicationOptions& options = applicationOptions();
    const std::vector<std::pair<PlotType, QAction*>> plots = {
        {PlotType::Speed, m_ui->actionShowSpeedPlot},
        {PlotType::Altitude, m_ui->actionShowAltitudePlot},
        {PlotType::Satellites, options.satellitesPlot ? m_ui->actionShowNumberOfSatellitesPlot : nullptr},
        {PlotType::Hdop, options.hdopPlot ? m_ui->actionShowHDOPPlot : nullptr},
        {PlotType::Pdop, options.pdopPlot ? m_ui->actionShowPDOPPlot : nullptr},
        {PlotType::Vdop, options.vdopPlot ? m_ui->actionShowVDOPPlot : nullptr},
    };
    m_ui->actionShowNumberOfSatellitesPlot->setVisible(options.satellitesPlot);
    m_ui->actionShowHDOPPlot->setVisible(options.hdopPlot);
    m_ui->actionShowPDOPPlot->setVisible(options.pdopPlot);
    m_ui->actionShowVDOPPlot->setVisible(options.vdopPlot);

    m_intervalSelector = new PlotIntervalSelector(this);
    auto addPlot = [this](PlotType type, QAction* action) {
        auto* plot = new TrackPlot(type, m_ui->plotContainer);
        plot->setObjectName(QStringLiteral("plot%1").arg(static_cast<int>(type)));
        plot->hide();
        plot->setMinimumHeight(kPlotMinimumHeight); // room for the axis titles; the splitter keeps it
        m_ui->plotContainer->layout()->addWidget(plot);
        m_intervalSelector->attach(plot);
        m_plots[type] = PlotEntry{plot, action};
        if (action)
            connect(action, &QAction::toggled, this, &MainWindow::updatePlotsVisibility);
    };
    addPlot(PlotType::Empty, nullptr);
    for (const auto& [type, action] : plots)
        if (action || type == PlotType::Speed || type == PlotType::Altitude)
            addPlot(type, action);
    m_ui->plotContainer->setMinimumHeight(kPlotContainerMinimumHeight);
}

void MainWindow::setupMenus() {
    m_timeStampActions = new QActionGroup(this);
    for (QAction* action : {m_ui->actionDisableTrackTimeStamps, m_ui->actionTrackTimeStamps30s, m_ui->actionTrackTimeStamps1m,
                            m_ui->actionTrackTimeStamps5m, m_ui->actionTrackTimeStamps20m})
        m_timeStampActions->addAction(action);
    m_ui->actionDisableTrackTimeStamps->setChecked(true);
    m_ui->actionShowMainCamera->setChecked(true);
    m_ui->actionShowRearCamera->setChecked(true);

    // The save button offers the item's original files and its track in every format.
    auto* saveMenu = new QMenu(this);
    saveMenu->setObjectName(QStringLiteral("saveMenu"));
    QAction* saveVideo = saveMenu->addAction(QString());
    saveVideo->setObjectName(QStringLiteral("actionSaveVideo"));
    connect(saveVideo, &QAction::triggered, this, &MainWindow::onSaveVideo);
    QAction* saveVideoAndTrack = saveMenu->addAction(QString());
    saveVideoAndTrack->setObjectName(QStringLiteral("actionSaveVideoAndTrack"));
    connect(saveVideoAndTrack, &QAction::triggered, this, &MainWindow::onSavePlaylistItem);
    QMenu* trackMenu = saveMenu->addMenu(QString());
    trackMenu->setObjectName(QStringLiteral("saveTrackMenu"));
    for (int format : {TrackExtracter::Nmea, TrackExtracter::Kml, TrackExtracter::Csv, TrackExtracter::Gpx,
                       TrackExtracter::Plt}) {
        QAction* action = trackMenu->addAction(TrackExtracter::extension(TrackExtracter::TrackType(format)).toUpper());
        action->setObjectName(QStringLiteral("actionSaveTrack%1").arg(format));
        connect(action, &QAction::triggered, this, [this, format] { onSaveTrack(format); });
    }
    m_ui->saveButton->setMenu(saveMenu);

    auto* frameMenu = new QMenu(this);
    frameMenu->setObjectName(QStringLiteral("videoContextMenu"));
    connect(frameMenu->addAction(QString()), &QAction::triggered, this, &MainWindow::onSaveVideoFrame);
    connect(frameMenu->addAction(QString()), &QAction::triggered, this, &MainWindow::onSaveMainCameraFrame);
    connect(frameMenu->addAction(QString()), &QAction::triggered, this, &MainWindow::onSaveRearCameraFrame);
    frameMenu->addSeparator();
    connect(frameMenu->addAction(QString()), &QAction::triggered, this, &MainWindow::onSaveWindow);
    connect(m_ui->videoWidgetParent, &QWidget::customContextMenuRequested, this, [this, frameMenu](const QPoint& at) {
        const QList<QAction*> actions = frameMenu->actions();
        const bool playing = m_playbackController && m_playbackController->currentPlayer();
        const bool twoCameras = playing && m_playbackController->currentPlayer()->playerCount() > 1;
        actions[0]->setEnabled(playing);
        actions[1]->setEnabled(playing);
        actions[2]->setEnabled(twoCameras);
        frameMenu->popup(m_ui->videoWidgetParent->mapToGlobal(at));
    });
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
    add(QKeySequence(Qt::Key_Escape), [this] {
        if (isFullscreen())
            leaveFullscreen();
    });
}

void MainWindow::applyIcons() {
    const std::vector<std::pair<QAbstractButton*, const char*>> icons = {
        {m_ui->openDeviceButton, "open-device"},     {m_ui->openDirectoryButton, "open-directory"},
        {m_ui->openFileButton, "open-file"},         {m_ui->saveItemButton, "save-item"},
        {m_ui->toBeginButton, "to-begin"},           {m_ui->slowDownButton, "slow-down"},
        {m_ui->stopButton, "stop"},                  {m_ui->playButton, "play"},
        {m_ui->pauseButton, "pause"},                {m_ui->speedUpButton, "speed-up"},
        {m_ui->toEndButton, "to-end"},               {m_ui->cyclePlayStartButton, "cycle-play-start"},
        {m_ui->cyclePlayStopButton, "cycle-play-stop"}, {m_ui->saveButton, "save"},
        {m_ui->cutButton, "cut"},                    {m_ui->cutOnButton, "cut-on"},
        {m_ui->rotateButton, "rotate"},              {m_ui->confirmCutButton, "confirm-cut"},
        {m_ui->rejectCutButton, "reject-cut"},       {m_ui->volumeMutedButton, "volume-muted"},
        {m_ui->volumeMediumButton, "volume-medium"}, {m_ui->volumeHighButton, "volume-high"},
        {m_ui->fullscreenButton, "fullscreen"},      {m_ui->exitFullscreenButton, "exit-fullscreen"},
    };
    for (const auto& [button, name] : icons) {
        button->setIcon(reelvueIcon(QString::fromLatin1(name)));
        button->setIconSize(QSize(22, 22));
    }
    m_ui->confirmCutButton->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_ui->rejectCutButton->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    setWindowIcon(reelvueIcon(QStringLiteral("reelvue")));
}

void MainWindow::connectSignals() {
    Ui::MainWindow& ui = *m_ui;
    // menus and tool buttons -> window
    connect(ui.actionQuit, &QAction::triggered, this, &MainWindow::onActionQuit);
    connect(ui.actionOpenDirectory, &QAction::triggered, this, &MainWindow::onActionOpenDirectory);
    connect(ui.openDirectoryButton, &QToolButton::clicked, this, &MainWindow::onActionOpenDirectory);
    connect(ui.actionOpenFile, &QAction::triggered, this, &MainWindow::onActionOpenFile);
    connect(ui.openFileButton, &QToolButton::clicked, this, &MainWindow::onActionOpenFile);
    connect(ui.actionOpenDevice, &QAction::triggered, this, &MainWindow::onActionOpenDevice);
    connect(ui.openDeviceButton, &QToolButton::clicked, this, &MainWindow::onActionOpenDevice);
    connect(ui.actionCheckUpdate, &QAction::triggered, this, &MainWindow::onActionCheckUpdate);
    connect(ui.actionAbout, &QAction::triggered, this, &MainWindow::onActionAbout);
    connect(ui.actionShowMainCamera, &QAction::toggled, this, &MainWindow::onActionShowMainCamera);
    connect(ui.actionShowRearCamera, &QAction::toggled, this, &MainWindow::onActionShowRearCamera);
    connect(ui.actionRotateMainCamera, &QAction::triggered, this, &MainWindow::onRotateMainCamera);
    connect(ui.actionRotateRearCamera, &QAction::triggered, this, &MainWindow::onRotateRearCamera);
    connect(ui.rotateButton, &QToolButton::clicked, this, &MainWindow::onRotateButtonClicked);
    connect(ui.actionDisableTrackTimeStamps, &QAction::triggered, this, &MainWindow::onActionDisableTrackTimeStamps);
    connect(ui.actionTrackTimeStamps30s, &QAction::triggered, this, &MainWindow::onActionTrackTimeStamps30s);
    connect(ui.actionTrackTimeStamps1m, &QAction::triggered, this, &MainWindow::onActionTrackTimeStamps1m);
    connect(ui.actionTrackTimeStamps5m, &QAction::triggered, this, &MainWindow::onActionTrackTimeStamps5m);
    connect(ui.actionTrackTimeStamps20m, &QAction::triggered, this, &MainWindow::onActionTrackTimeStamps20m);
    connect(ui.actionSetEnglishLanguage, &QAction::triggered, this, &MainWindow::onActionSetEnglishLanguage);
    connect(ui.actionSetRussianLanguage, &QAction::triggered, this, &MainWindow::onActionSetRussianLanguage);
    connect(ui.actionSetPolishLanguage, &QAction::triggered, this, &MainWindow::onActionSetPolishLanguage);
    connect(ui.actionSetCzechLanguage, &QAction::triggered, this, &MainWindow::onActionSetCzechLanguage);
    connect(ui.toBeginButton, &QToolButton::clicked, this, &MainWindow::onToBeginButtonClicked);
    connect(ui.toEndButton, &QToolButton::clicked, this, &MainWindow::onToEndButtonClicked);
    connect(ui.slowDownButton, &QToolButton::clicked, this, &MainWindow::onSlowDownButtonClicked);
    connect(ui.speedUpButton, &QToolButton::clicked, this, &MainWindow::onSpeedUpButtonClicked);
    connect(ui.stopButton, &QToolButton::clicked, this, &MainWindow::onStopButtonClicked);
    connect(ui.playButton, &QToolButton::clicked, this, &MainWindow::onPlayPauseButtonClicked);
    connect(ui.pauseButton, &QToolButton::clicked, this, &MainWindow::onPlayPauseButtonClicked);
    connect(ui.cyclePlayStartButton, &QToolButton::clicked, this, &MainWindow::onCyclePlayStart);
    connect(ui.cyclePlayStopButton, &QToolButton::clicked, this, &MainWindow::onCyclePlayStop);
    connect(ui.saveItemButton, &QToolButton::clicked, this, &MainWindow::onSavePlaylistItem);
    connect(ui.cutButton, &QToolButton::clicked, this, &MainWindow::onCutButtonClicked);
    connect(ui.cutOnButton, &QToolButton::clicked, this, &MainWindow::onRejectCutButtonClicked);
    connect(ui.confirmCutButton, &QToolButton::clicked, this, &MainWindow::cutCurrentItem);
    connect(ui.rejectCutButton, &QToolButton::clicked, this, &MainWindow::onRejectCutButtonClicked);
    connect(ui.fullscreenButton, &QToolButton::clicked, this, &MainWindow::onFullscreenButtonClicked);
    connect(ui.exitFullscreenButton, &QToolButton::clicked, this, &MainWindow::onFullscreenButtonClicked);
    connect(ui.volumeMutedButton, &QToolButton::clicked, this, &MainWindow::unMute);
    connect(ui.volumeMediumButton, &QToolButton::clicked, this, &MainWindow::mute);
    connect(ui.volumeHighButton, &QToolButton::clicked, this, &MainWindow::mute);
    connect(ui.volumeSlider, &QSlider::valueChanged, this, &MainWindow::onVolumeChanged);

    // playlist views -> window
    connect(ui.playlistContainer, &QPlaylistTabWidget::dropToPlaylist, this, [this](const QString& path) {
        const char* slot = QFileInfo(path).isDir() ? "loadDirectory" : "loadFile";
        QMetaObject::invokeMethod(this, slot, Qt::QueuedConnection, Q_ARG(QString, path));
    });
    for (PlaylistView* view : m_playlistViews)
        connect(view, &PlaylistView::itemChosen, this, [this, view](int index) { chooseItem(view, index); });

    // video area, map, updater -> window
    connect(m_videoOutputEventFilter, &VideoOutputEventFilter::dblClickEvent, this, &MainWindow::onVideoDblClickEvent);
    connect(m_mainOutput, &av::VideoWidget::frameSizeChanged, this, &MainWindow::relayoutVideoOutputs);
    connect(m_rearOutput, &av::VideoWidget::frameSizeChanged, this, &MainWindow::relayoutVideoOutputs);
    connect(&m_hideTimer, &QTimer::timeout, this, &MainWindow::hideSlot);
    connect(m_map, &MapWidgetAdapter::ready, this, &MainWindow::onMapWidgetReady);
    AppUpdater& updater = AppUpdater::instance();
    connect(&updater, &AppUpdater::started, this, &MainWindow::onAppUpdaterStarted);
    connect(&updater, &AppUpdater::progress, this, &MainWindow::onBackgroundOperationProgress);
    connect(&updater, &AppUpdater::finished, this, &MainWindow::onAppUpdaterFinished);
}

void MainWindow::createStorageWatcher() {
    m_storageWatcher = new StorageWatcher(std::make_unique<DeviceNotifyTools>(), this);
    connect(m_storageWatcher, &StorageWatcher::supportedStoragesArrived, this,
            &MainWindow::onSupportedStorageDevicesArrived);
    connect(m_storageWatcher, &StorageWatcher::supportedStorageRemoved, this, &MainWindow::onStorageDeviceRemoved);
    connect(m_storageWatcher, &StorageWatcher::storageRemoved, this, &MainWindow::onStorageDeviceRemoved);
    m_storageWatcher->start();
}

// ---------------------------------------------------------------------------------------------------------
// Settings

void MainWindow::readSettings() {
    QSettings settings = userSettings();
    LOG_INFO(kLogger, "Read app state from {}", settings.fileName().toStdString());
    auto restore = [&settings](const QString& key, auto&& apply) {
        const QByteArray value = settings.value(key).toByteArray();
        if (!value.isEmpty())
            apply(value);
    };
    if (!settings.contains(kGeometryKey)) {
        // First start: most of the screen, so that the videos, the list and the map all have room.
        if (QScreen* screen = this->screen()) {
            const QRect available = screen->availableGeometry();
            resize(available.size() * 0.9);
            move(available.center() - rect().center());
        }
    }
    restore(kGeometryKey, [this](const QByteArray& value) { restoreGeometry(value); });
    restore(kStateKey, [this](const QByteArray& value) { restoreState(value); });
    restore(kMainSplitterKey, [this](const QByteArray& value) { m_ui->mainSplitter->restoreState(value); });
    restore(kLeftSplitterKey, [this](const QByteArray& value) { m_ui->leftContainerSplitter->restoreState(value); });
    restore(kMiddleSplitterKey, [this](const QByteArray& value) { m_ui->middleContainerSplitter->restoreState(value); });

    if (!settings.contains(kPlotsKey)) {
        const auto speed = m_plots.find(PlotType::Speed);
        if (speed == m_plots.end())
            LOG_ERROR(kLogger, "Failed to find speed plot!");
        else
            speed->second.action->setChecked(true);
    } else {
        for (const QVariant& value : settings.value(kPlotsKey).toList()) {
            const int type = value.toInt();
            if (type == static_cast<int>(PlotType::Empty)) {
                LOG_WARN(kLogger, "Empty plot is settings, skip");
                continue;
            }
            const auto entry = m_plots.find(static_cast<PlotType>(type));
            if (type < static_cast<int>(PlotType::Speed) || type > static_cast<int>(PlotType::Vdop)) {
                LOG_ERROR(kLogger, "Failed to find plot QAction for type: {}", type);
            } else if (entry == m_plots.end()) {
                LOG_DEBUG(kLogger, "Plot {} is disabled, but visibility is true in stored settings", type);
            } else {
                entry->second.action->setChecked(true);
            }
        }
    }
    updatePlotsVisibility();

    if (settings.contains(kMainCameraKey))
        m_ui->actionShowMainCamera->setChecked(settings.value(kMainCameraKey).toBool());
    if (settings.contains(kRearCameraKey))
        m_ui->actionShowRearCamera->setChecked(settings.value(kRearCameraKey).toBool());
    updateLanguageActions();
}

void MainWindow::writeSettings() {
    QSettings settings = userSettings();
    LOG_INFO(kLogger, "Save app state to {}", settings.fileName().toStdString());
    settings.setValue(kGeometryKey, saveGeometry());
    settings.setValue(kStateKey, saveState());
    settings.setValue(kMainSplitterKey, m_ui->mainSplitter->saveState());
    settings.setValue(kLeftSplitterKey, m_ui->leftContainerSplitter->saveState());
    settings.setValue(kMiddleSplitterKey, m_ui->middleContainerSplitter->saveState());
    QVariantList plots;
    for (const auto& [type, entry] : m_plots) // std::map: ascending type order
        if (entry.action && entry.action->isChecked())
            plots.append(static_cast<int>(type));
    settings.setValue(kPlotsKey, plots);
    settings.setValue(kMainCameraKey, m_mainCameraVisible);
    settings.setValue(kRearCameraKey, m_rearCameraVisible);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (isFullscreen())
        leaveFullscreen();
    writeSettings();
    QMainWindow::closeEvent(event);
}

void MainWindow::onActionQuit() {
    writeSettings();
    qApp->quit();
}

// ---------------------------------------------------------------------------------------------------------
// Language

void MainWindow::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QMainWindow::changeEvent(event);
}

void MainWindow::retranslate() {
    m_ui->retranslateUi(this);
    updateWindowTitle();
    if (QMenu* saveMenu = m_ui->saveButton->menu()) {
        const QList<QAction*> actions = saveMenu->actions();
        actions[0]->setText(tr("Save video"));
        actions[1]->setText(tr("Save video and track"));
        actions[2]->setText(tr("Save track"));
    }
    if (auto* frameMenu = findChild<QMenu*>(QStringLiteral("videoContextMenu"))) {
        const QList<QAction*> actions = frameMenu->actions();
        actions[0]->setText(tr("Save video frame"));
        actions[1]->setText(tr("Save video frame (main camera)"));
        actions[2]->setText(tr("Save video frame (rear camera)"));
        actions[4]->setText(tr("Save window"));
    }
    for (const auto& [type, entry] : m_plots)
        entry.plot->retranslate();
    for (PlaylistView* view : m_playlistViews)
        view->retranslate();
    updateCameraOutputs();
}

void MainWindow::onActionSetEnglishLanguage() { changeLanguage(QLocale(QLocale::English, QLocale::UnitedStates)); }
void MainWindow::onActionSetRussianLanguage() { changeLanguage(QLocale(QLocale::Russian, QLocale::Russia)); }
void MainWindow::onActionSetPolishLanguage() { changeLanguage(QLocale(QLocale::Polish, QLocale::Poland)); }
void MainWindow::onActionSetCzechLanguage() { changeLanguage(QLocale(QLocale::Czech, QLocale::CzechRepublic)); }

void MainWindow::changeLanguage(const QLocale& locale) {
    LOG_INFO(kLogger, "Changing locale to '{}'", locale.name().toStdString());
    QLocale::setDefault(locale);
    // The start-up translation and an earlier choice give way, so that English really is English.
    for (const QPointer<QTranslator>& translator : m_startupTranslators)
        if (translator)
            QCoreApplication::removeTranslator(translator);
    QCoreApplication::removeTranslator(&m_translator);
    QCoreApplication::removeTranslator(&m_qtTranslator);
    if (loadQtTranslation(m_qtTranslator, locale))
        QCoreApplication::installTranslator(&m_qtTranslator);
    const QString directory = resourceDirectory().absolutePath() + QLatin1Char('/');
    if (m_translator.load(QLocale(), QStringLiteral("video-player-ui"), QStringLiteral("."), directory, QStringLiteral(".qm")))
        QCoreApplication::installTranslator(&m_translator);
    retranslate(); // also for English, when no translator was installed and no change event comes
    m_map->onLocaleChanged(locale);
    updateLanguageActions();
    userSettings().setValue(kLocaleKey, locale.name());
}

void MainWindow::updateLanguageActions() {
    const std::vector<std::pair<QAction*, QLocale::Language>> actions = {
        {m_ui->actionSetEnglishLanguage, QLocale::English},
        {m_ui->actionSetRussianLanguage, QLocale::Russian},
        {m_ui->actionSetPolishLanguage, QLocale::Polish},
        {m_ui->actionSetCzechLanguage, QLocale::Czech},
    };
    const QLocale::Language current = QLocale().language();
    for (const auto& [action, language] : actions)
        action->setEnabled(language != current);
}

void MainWindow::onActionAbout() {
    QMessageBox::about(this, tr("About"),
                       QStringLiteral("<h3>%1</h3><p>%2</p>")
                           .arg(kWindowTitle, tr("Version %1").arg(QCoreApplication::applicationVersion())));
}

// ---------------------------------------------------------------------------------------------------------
// Loading

void MainWindow::onActionOpenDirectory() {
    const QString path = m_fileChoosers.existingDirectory(this, tr("Open directory"), m_loadingPath);
    if (!path.isEmpty())
        loadDirectory(path);
}

void MainWindow::onActionOpenFile() {
    const QString path = QFileDialog::getOpenFileName(this, tr("Open file"), m_loadingPath,
                                                      tr("MP4, MOV(*.mp4 *.mov);;MP4(*.mp4);;MOV(*.mov)"));
    if (!path.isEmpty())
        loadFile(path);
}

void MainWindow::loadDirectory(QString path) {
    LOG_INFO(kLogger, "Open directory {}", path.toStdString());
    startLoading(path, false);
}

void MainWindow::loadFile(QString path) {
    LOG_INFO(kLogger, "Open file {}", path.toStdString());
    startLoading(path, true);
}

void MainWindow::startLoading(const QString& path, bool isFile) {
    if (m_progressDialog) {
        LOG_WARN(kLogger, "Can't open {} while another operation runs", path.toStdString());
        return;
    }
    auto* loader = new PlaylistLoader;
    loader->moveToThread(&m_workerThread);
    connect(loader, &PlaylistLoader::loaded, this, &MainWindow::onPlaylistLoaded);
    connect(loader, &PlaylistLoader::failed, this, &MainWindow::onPlaylistLoadFailed);
    connect(loader, &PlaylistLoader::canceled, this, &MainWindow::onPlaylistLoadCanceled);
    connect(loader, &PlaylistLoader::progress, this, &MainWindow::onBackgroundOperationProgress);
    m_loadingPath = path;
    m_backgroundJob = loader;
    showProgressDialog(tr("Loading from directory status"));
    QMetaObject::invokeMethod(loader, isFile ? "loadFile" : "loadDirectory", Qt::QueuedConnection, Q_ARG(QString, path));
}

void MainWindow::onPlaylistLoaded(Playlist* playlist, PlaylistProcessedItemModel* tripItemModel,
                                  PlaylistProcessedItemModel* parkingItemModel, PlaylistRawItemModel* eventItemModel,
                                  PlaylistRawItemModel* rawItemModel) {
    finishJob();
    std::unique_ptr<Playlist> loaded(playlist);
    std::vector<std::unique_ptr<PlaylistItemModel>> models;
    models.emplace_back(tripItemModel);
    models.emplace_back(parkingItemModel);
    models.emplace_back(eventItemModel);
    models.emplace_back(rawItemModel);
    if (loaded->rawItems().empty()) {
        onPlaylistLoadFailed(QString());
        return;
    }
    clearPlaylist();
    m_playlist = std::move(loaded);
    m_models = std::move(models);
    for (size_t i = 0; i < m_playlistViews.size(); ++i)
        m_playlistViews[i]->setModel(m_models[i].get());
    m_loadedPath = m_loadingPath;
    updateWindowTitle();
    m_ui->saveItemButton->setEnabled(true);

    // The first trip plays at once; a card without trips starts with its first recording.
    for (size_t i = 0; i < m_playlistViews.size(); ++i) {
        if (m_models[i]->itemCount() > 0) {
            m_ui->playlistContainer->setCurrentIndex(static_cast<int>(i));
            const QSignalBlocker quiet(m_playlistViews[i]); // the choice is made right here
            m_playlistViews[i]->selectItem(0);
            chooseItem(m_playlistViews[i], 0);
            break;
        }
    }
}

void MainWindow::onPlaylistLoadFailed(const QString& message) {
    finishJob();
    if (!message.isEmpty())
        LOG_WARN(kLogger, "Loading {} failed: {}", m_loadingPath.toStdString(), message.toStdString());
    QMessageBox::warning(this, tr("Failed to load"),
                         tr("In the path specified there are no video files and the nested subfolder structure is "
                            "missing or incorrect"));
}

void MainWindow::onPlaylistLoadCanceled() {
    LOG_INFO(kLogger, "Loading {} canceled", m_loadingPath.toStdString());
    finishJob();
}

void MainWindow::clearPlaylist() {
    stopPlayback();
    for (PlaylistView* view : m_playlistViews)
        view->setModel(nullptr);
    m_models.clear();
    m_playlist.reset();
    m_playingView = nullptr;
    m_playingItem = -1;
    m_loadedPath.clear();
    m_ui->saveItemButton->setEnabled(false);
    updateWindowTitle();
}

void MainWindow::updateWindowTitle() {
    if (m_loadedPath.isEmpty())
        setWindowTitle(kWindowTitle);
    else
        setWindowTitle(kWindowTitle + QStringLiteral(" (") + QDir::toNativeSeparators(m_loadedPath) + QLatin1Char(')'));
}

// ---------------------------------------------------------------------------------------------------------
// Playing items

PlaylistView* MainWindow::currentView() const {
    return m_playlistViews.at(static_cast<size_t>(std::max(0, m_ui->playlistContainer->currentIndex())));
}

void MainWindow::chooseItem(PlaylistView* view, int index) {
    const auto tab = std::find(m_playlistViews.begin(), m_playlistViews.end(), view) - m_playlistViews.begin();
    if (tab >= static_cast<long>(m_models.size()))
        return;
    m_playingView = view;
    m_playingItem = index;
    if (auto* processed = dynamic_cast<PlaylistProcessedItemModel*>(m_models[tab].get())) {
        if (index < 0 || index >= processed->itemCount())
            return;
        const Playlist::ProcessedItemPtr& item = processed->items()[index];
        playRawItems(item->items, item->from, item->to);
    } else if (auto* raw = dynamic_cast<PlaylistRawItemModel*>(m_models[tab].get())) {
        if (index < 0 || index >= raw->itemCount())
            return;
        const Playlist::RawItemPtr& item = raw->items()[index];
        playRawItems({item}, item->from, item->to);
    }
}

void MainWindow::playRawItems(Playlist::RawItems items, const QDateTime& from, const QDateTime& to) {
    stopPlayback();
    if (items.empty())
        return;
    PlaybackViews views;
    views.map = m_map;
    views.statusLabel = m_ui->statusLabel;
    views.slider = m_ui->slider;
    views.mainRenderer = m_mainOutput;
    views.rearRenderer = m_rearOutput;
    try {
        const bool showDate = true;
        m_playbackController = std::make_unique<PlaybackController>(std::move(items), from, to, views, showDate);
    } catch (const std::exception& error) {
        LOG_ERROR(kLogger, "{} exception: {}", "PlaybackController", error.what());
        return;
    }
    PlaybackController* controller = m_playbackController.get();
    connect(controller, &PlaybackController::started, this, &MainWindow::onPlaybackStart);
    connect(controller, &PlaybackController::stopped, this, &MainWindow::onPlaybackStop);
    connect(controller, &PlaybackController::imageCaptured, this, &MainWindow::onImageCaptured);
    connect(controller, &PlaybackController::openingChanged, this, [this](bool opening) {
        opening ? m_waitingAnimation->start() : m_waitingAnimation->stop();
    });
    if (controller->isOpening()) // the first file began opening in the constructor
        m_waitingAnimation->start();
    // The placeholder plot too: it shows the item's time axis and seeks on a click.
    std::map<PlotType, TrackPlot*> plots;
    for (const auto& [type, entry] : m_plots)
        plots[type] = entry.plot;
    controller->setPlots(plots);
    m_intervalSelector->setRange(from, to);
    controller->setVolume(m_muted ? 0.0 : m_ui->volumeSlider->value() / 100.0);
    m_ui->videoToolbar->setEnabled(true);
    m_ui->playButton->hide();
    m_ui->pauseButton->show();
    updateCameraOutputs();
}

void MainWindow::stopPlayback() {
    if (m_cutMode)
        setCutMode(false);
    if (m_playbackController && m_playbackController->isCyclePlayActive())
        onCyclePlayStop();
    m_playbackController.reset();
    m_waitingAnimation->stop();
    m_mainOutput->clear();
    m_rearOutput->clear();
    m_map->setTrack(nullptr);
    m_ui->statusLabel->clear();
    m_ui->videoToolbar->setEnabled(false);
    m_ui->playButton->show();
    m_ui->pauseButton->hide();
    updateCameraOutputs();
}

void MainWindow::stepItem(int step) {
    PlaylistView* view = m_playingView ? m_playingView : currentView();
    const int index = m_playingItem + step;
    const QSignalBlocker quiet(view); // the choice is made right here
    if (view->selectItem(index))
        chooseItem(view, index);
}

void MainWindow::onMapWidgetReady() {
    // What was sent before the page listened is lost: send the track and moment again.
    if (m_playbackController) {
        m_map->setTrack(&m_playbackController->track());
        m_map->setCurrentTime(m_playbackController->currentTime(), true);
    }
}

void MainWindow::onPlaybackStart() {
    m_ui->playButton->hide();
    m_ui->pauseButton->show();
}

void MainWindow::onPlaybackStop() {
    m_ui->pauseButton->hide();
    m_ui->playButton->show();
}

void MainWindow::onToBeginButtonClicked() {
    if (m_playbackController && !m_playbackController->restart(false))
        stepItem(-1);
}

void MainWindow::onToEndButtonClicked() {
    if (!m_playbackController)
        return;
    PlaylistView* view = m_playingView ? m_playingView : currentView();
    const QSignalBlocker quiet(view);
    if (view->selectItem(m_playingItem + 1))
        chooseItem(view, m_playingItem + 1);
    else
        m_playbackController->seekTo(m_playbackController->to());
}

void MainWindow::onSlowDownButtonClicked() {
    if (m_playbackController)
        m_playbackController->slowDown();
}

void MainWindow::onSpeedUpButtonClicked() {
    if (m_playbackController)
        m_playbackController->speedUp();
}

void MainWindow::onStopButtonClicked() {
    if (m_playbackController)
        m_playbackController->stop();
}

void MainWindow::onPlayPauseButtonClicked() {
    if (m_playbackController)
        m_playbackController->togglePause();
    else if (m_playingView)
        chooseItem(m_playingView, m_playingItem);
}

void MainWindow::seekLeft() {
    if (m_playbackController)
        m_playbackController->seekTo(
            std::max(m_playbackController->from(), m_playbackController->currentTime().addSecs(-kSeekStepSeconds)));
}

void MainWindow::seekRight() {
    if (m_playbackController)
        m_playbackController->seekTo(
            std::min(m_playbackController->to(), m_playbackController->currentTime().addSecs(kSeekStepSeconds)));
}

void MainWindow::onCyclePlayStart() {
    if (!m_playbackController)
        return;
    m_intervalSelector->setActive(true);
    PlotIntervalSelector* selector = m_intervalSelector;
    m_playbackController->startCyclePlay([selector] { return selector->interval(); });
    connect(m_intervalSelector, &PlotIntervalSelector::intervalChanged, m_playbackController.get(),
            &PlaybackController::onCyclePlayIntervalChanged, Qt::UniqueConnection);
    m_ui->cyclePlayStartButton->hide();
    m_ui->cyclePlayStopButton->show();
}

void MainWindow::onCyclePlayStop() {
    if (m_playbackController) {
        disconnect(m_intervalSelector, &PlotIntervalSelector::intervalChanged, m_playbackController.get(),
                   &PlaybackController::onCyclePlayIntervalChanged);
        m_playbackController->stopCyclePlay();
    }
    m_intervalSelector->setActive(m_cutMode);
    m_ui->cyclePlayStopButton->hide();
    m_ui->cyclePlayStartButton->show();
}

// ---------------------------------------------------------------------------------------------------------
// Views of the video area

void MainWindow::onActionShowMainCamera(bool checked) {
    m_mainCameraVisible = checked;
    updateCameraOutputs();
}

void MainWindow::onActionShowRearCamera(bool checked) {
    m_rearCameraVisible = checked;
    updateCameraOutputs();
}

void MainWindow::updateCameraOutputs() {
    const bool playing = m_playbackController != nullptr;
    const bool rearInItem = playing && hasRearCamera(m_playbackController->items());
    m_mainOutput->setVisible(playing && m_mainCameraVisible);
    m_rearOutput->setVisible(playing && m_rearCameraVisible && rearInItem);
    m_ui->actionRotateRearCamera->setEnabled(rearInItem);
    m_ui->actionShowRearCamera->setEnabled(!playing || rearInItem);
    if (!playing)
        m_ui->videoWidgetParent->showMessage(tr("Open a memory card, a folder or a video file"));
    else if (!m_mainOutput->isVisibleTo(m_ui->videoWidgetParent) && !m_rearOutput->isVisibleTo(m_ui->videoWidgetParent))
        m_ui->videoWidgetParent->showMessage(tr("Active camera(s) is(are) not available."));
    else
        m_ui->videoWidgetParent->hideMessage();
}

void MainWindow::relayoutVideoOutputs() { m_ui->videoWidgetParent->relayout(); }

void MainWindow::rotate(av::VideoWidget* output) {
    output->setOrientation(nextOrientation(output->orientation()));
    relayoutVideoOutputs();
}

void MainWindow::onRotateMainCamera() { rotate(m_mainOutput); }
void MainWindow::onRotateRearCamera() { rotate(m_rearOutput); }

// The button turns the pictures on screen; with both cameras shown both turn, as a camera pair is mounted together.
void MainWindow::onRotateButtonClicked() {
    if (m_mainOutput->isVisible() || !m_rearOutput->isVisible())
        rotate(m_mainOutput);
    if (m_rearOutput->isVisible())
        rotate(m_rearOutput);
}

void MainWindow::setTimeStep(int seconds, QAction* action) {
    action->setChecked(true);
    m_map->setTimeStep(seconds);
}

void MainWindow::onActionDisableTrackTimeStamps() { setTimeStep(0, m_ui->actionDisableTrackTimeStamps); }
void MainWindow::onActionTrackTimeStamps30s() { setTimeStep(30, m_ui->actionTrackTimeStamps30s); }
void MainWindow::onActionTrackTimeStamps1m() { setTimeStep(60, m_ui->actionTrackTimeStamps1m); }
void MainWindow::onActionTrackTimeStamps5m() { setTimeStep(300, m_ui->actionTrackTimeStamps5m); }
void MainWindow::onActionTrackTimeStamps20m() { setTimeStep(1200, m_ui->actionTrackTimeStamps20m); }

TrackPlot* MainWindow::plot(PlotType type) const {
    const auto entry = m_plots.find(type);
    return entry == m_plots.end() ? nullptr : entry->second.plot;
}

void MainWindow::updatePlotsVisibility() {
    bool anyVisible = false;
    for (const auto& [type, entry] : m_plots) {
        if (!entry.action)
            continue;
        entry.plot->setVisible(entry.action->isChecked());
        anyVisible = anyVisible || entry.action->isChecked();
    }
    const auto empty = m_plots.find(PlotType::Empty);
    if (empty == m_plots.end()) {
        if (!anyVisible)
            LOG_ERROR(kLogger, "Failed to find empty plot!");
        return;
    }
    empty->second.plot->setVisible(!anyVisible);
}

void MainWindow::mute() {
    m_muted = true;
    if (m_playbackController)
        m_playbackController->setVolume(0.0);
    updateVolumeButtons();
}

void MainWindow::unMute() {
    m_muted = false;
    onVolumeChanged(m_ui->volumeSlider->value());
}

void MainWindow::onVolumeChanged(int value) {
    if (m_muted && value > 0)
        m_muted = false; // moving the slider up speaks again, as players do
    if (m_playbackController)
        m_playbackController->setVolume(m_muted ? 0.0 : value / 100.0);
    updateVolumeButtons();
}

void MainWindow::updateVolumeButtons() {
    const int value = m_ui->volumeSlider->value();
    const bool silent = m_muted || value == 0;
    m_ui->volumeMutedButton->setVisible(silent);
    m_ui->volumeMediumButton->setVisible(!silent && value < 50);
    m_ui->volumeHighButton->setVisible(!silent && value >= 50);
}

// ---------------------------------------------------------------------------------------------------------
// Full screen

bool MainWindow::isFullscreen() const { return m_fullscreenWidget && m_fullscreenWidget->isVisible(); }

void MainWindow::onFullscreenButtonClicked() { isFullscreen() ? leaveFullscreen() : enterFullscreen(); }

void MainWindow::onVideoDblClickEvent() { onFullscreenButtonClicked(); }

void MainWindow::enterFullscreen() {
    if (!m_fullscreenWidget) {
        m_fullscreenWidget = new FullscreenVideoWidget;
        setupShortcuts(m_fullscreenWidget);
        connect(m_fullscreenWidget, &FullscreenVideoWidget::resized, this, &MainWindow::relayoutVideoOutputs);
        connect(m_fullscreenWidget, &FullscreenVideoWidget::mouseMoved, this, [this] {
            m_ui->VideoProgressBar->show();
            m_ui->videoToolbar->show();
            m_fullscreenWidget->unsetCursor();
            m_hideTimer.start();
        });
    }
    m_fullscreenWidget->layout()->addWidget(m_ui->videoWidgetParent);
    m_fullscreenWidget->layout()->addWidget(m_ui->VideoProgressBar);
    m_fullscreenWidget->layout()->addWidget(m_ui->videoToolbar);
    m_ui->VideoProgressBar->setStyleSheet(QStringLiteral("background: #202020; color: white;"));
    m_ui->videoToolbar->setStyleSheet(QStringLiteral("background: #202020; color: white;"));
    if (QScreen* screen = this->screen())
        m_fullscreenWidget->setGeometry(screen->geometry());
    m_fullscreenWidget->showFullScreen();
    m_fullscreenWidget->activateWindow();
    m_ui->fullscreenButton->hide();
    m_ui->exitFullscreenButton->show();
    m_hideTimer.start();
}

void MainWindow::leaveFullscreen() {
    m_hideTimer.stop();
    auto* layout = static_cast<QVBoxLayout*>(m_ui->videoPane->layout());
    layout->insertWidget(0, m_ui->videoWidgetParent, 1);
    layout->insertWidget(1, m_ui->VideoProgressBar);
    layout->insertWidget(2, m_ui->videoToolbar);
    m_ui->VideoProgressBar->setStyleSheet(QString());
    m_ui->videoToolbar->setStyleSheet(QString());
    m_ui->VideoProgressBar->show();
    m_ui->videoToolbar->show();
    m_fullscreenWidget->hide();
    m_fullscreenWidget->unsetCursor();
    m_ui->exitFullscreenButton->hide();
    m_ui->fullscreenButton->show();
    activateWindow();
    relayoutVideoOutputs();
}

// While full screen, the controls and the pointer step aside when the mouse rests.
void MainWindow::hideSlot() {
    if (!isFullscreen())
        return;
    m_ui->VideoProgressBar->hide();
    m_ui->videoToolbar->hide();
    m_fullscreenWidget->setCursor(Qt::BlankCursor);
}

// ---------------------------------------------------------------------------------------------------------
// Pictures

void MainWindow::captureFrame(std::set<size_t> cameras) {
    if (!m_playbackController) {
        LOG_WARN(kLogger, "Trying to capture video frame without playback controller");
        return;
    }
    const QDateTime time = m_playbackController->currentTime();
    const bool all = cameras.empty();
    const MultiAVPlayer* player = m_playbackController->currentPlayer();
    const size_t cameraCount = player ? player->playerCount() : 0;
    const bool main = all ? cameraCount >= 1 && m_mainCameraVisible : cameras.count(0) > 0;
    const bool rear = all ? cameraCount >= 2 && m_rearCameraVisible : cameras.count(1) > 0;
    if (all) {
        // Only the cameras on screen are saved.
        if (main)
            cameras.insert(0);
        if (rear)
            cameras.insert(1);
    }
    try {
        m_pendingFrameBaseName = frameBaseName(main, rear, time);
        m_pendingFrameTime = time;
        m_playbackController->capture(cameras);
    } catch (const std::exception& error) {
        m_pendingFrameBaseName.reset();
        LOG_ERROR(kLogger, "{} exception: {}", "capture", error.what());
    }
}

void MainWindow::onSaveVideoFrame() { captureFrame({}); }
void MainWindow::onSaveMainCameraFrame() { captureFrame({0}); }
void MainWindow::onSaveRearCameraFrame() { captureFrame({1}); }

void MainWindow::onImageCaptured(const QImage& image) {
    if (!m_pendingFrameBaseName)
        return;
    const QString baseName = *m_pendingFrameBaseName;
    m_pendingFrameBaseName.reset();
    if (image.isNull()) {
        LOG_WARN(kLogger, "The captured video frame is empty, nothing saved");
        return;
    }
    saveImage([image](const QString& path) { return image.save(path); }, baseName, m_pendingFrameTime);
}

void MainWindow::onSaveWindow() {
    if (m_playbackController && !m_playbackController->isPaused())
        m_playbackController->togglePause();
    const QPixmap picture = grab();
    if (picture.isNull())
        return;
    saveImage([picture](const QString& path) { return picture.save(path); },
              windowBaseName(QDateTime::currentDateTime()),
              m_playbackController ? m_playbackController->currentTime() : QDateTime());
}

void MainWindow::saveImage(const std::function<bool(const QString&)>& write, const QString& baseName,
                           const QDateTime& positionTime) {
    QString& directory = lastImageDirectory();
    const QString start =
        directory.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::PicturesLocation) : directory;
    QString proposal = proposeImagePath(start, baseName);
    for (;;) {
        const QString path = m_fileChoosers.saveFileName(this, tr("Save image to"), proposal, tr("JPEG (*.jpg);;PNG (*.png)"));
        if (path.isEmpty())
            return;
        directory = QFileInfo(path).absolutePath();
        if (!write(path)) {
            LOG_WARN(kLogger, "Couldn't write image to {}", path.toStdString());
            QMessageBox::warning(this, tr("Save image to"), tr("Specified file path is not suitable"));
            proposal = path;
            continue;
        }
        LOG_INFO(kLogger, "Saved image to {}", path.toStdString());
        if (m_playbackController && positionTime.isValid()) {
            const std::optional<TrackPosition> position = trackPositionAt(m_playbackController->track(), positionTime);
            if (position && writeExifPosition(path, *position, positionTime))
                LOG_INFO(kLogger, "Updated EXIF Header in {}", path.toStdString());
        }
        return;
    }
}

// ---------------------------------------------------------------------------------------------------------
// Saving items, tracks and cuts

bool MainWindow::hasController(const char* method) const {
    if (!m_playbackController) {
        LOG_WARN(kLogger, "MainWindow::{}() has been called without m_playbackController", method);
        return false;
    }
    return true;
}

// Where saved videos go first: the last folder used, else the user's movies.
QString MainWindow::saveDirectory() const {
    return m_lastSaveDirectory.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::MoviesLocation)
                                         : m_lastSaveDirectory;
}

// The part the user chose on the plots while cutting, else the whole item.
TimeInterval MainWindow::saveInterval() const {
    if (m_cutMode || m_playbackController->isCyclePlayActive()) {
        const auto [from, to] = m_intervalSelector->interval();
        return TimeInterval{from, to};
    }
    return TimeInterval{m_playbackController->from(), m_playbackController->to()};
}

void MainWindow::onSavePlaylistItem() { copyItemFiles(true); }

void MainWindow::onSaveVideo() { copyItemFiles(false); }

void MainWindow::copyItemFiles(bool withTracks) {
    if (!hasController("onSavePlaylistItem") || m_progressDialog)
        return;
    const QString start = saveDirectory();
    const Playlist::RawItems items = exportpaths::itemsOverlapping(m_playbackController->items(), saveInterval());
    for (;;) {
        const QString directory = m_fileChoosers.existingDirectory(this, tr("Save to"), start);
        if (directory.isEmpty())
            return;
        m_lastSaveDirectory = directory;
        FileCopierCommandVector commands = exportpaths::copyCommands(items, directory);
        if (!withTracks) {
            QSet<QString> trackFiles;
            for (const Playlist::RawItemPtr& item : items)
                if (item->track)
                    trackFiles.insert(item->track->file.absoluteFilePath());
            commands.erase(std::remove_if(commands.begin(), commands.end(),
                                          [&trackFiles](const auto& command) { return trackFiles.contains(command.first); }),
                           commands.end());
        }
        const QStringList existing = exportpaths::existingDestinations(commands);
        if (!existing.isEmpty()) {
            // Recordings are evidence: an existing file is never replaced.
            QMessageBox::warning(this, tr("Saving"),
                                 tr("The folder already holds files of the same names:\n%1\n\nChoose another folder.")
                                     .arg(existing.mid(0, 5).join(QLatin1Char('\n'))));
            continue;
        }
        LOG_INFO(kLogger, "Copy {} files to {}", commands.size(), directory.toStdString());
        auto* copier = new FileCopier;
        startJob(copier, tr("Copying status"), SLOT(onCopyingDone(bool)));
        QMetaObject::invokeMethod(copier, "copy", Qt::QueuedConnection, Q_ARG(FileCopierCommandVector, commands));
        return;
    }
}

void MainWindow::onSaveTrack(int format) {
    if (!m_playbackController) {
        LOG_WARN(kLogger, "MainWindow::onSaveTrack() called when there is no m_playbackController");
        return;
    }
    if (m_playbackController->items().empty()) {
        LOG_WARN(kLogger, "MainWindow::onSaveTrack() called with no raw items");
        return;
    }
    if (m_progressDialog)
        return;
    const auto type = static_cast<TrackExtracter::TrackType>(format);
    const TimeInterval interval = saveInterval();
    const QString name = exportpaths::proposedFileName(interval, TrackExtracter::extension(type));
    const QString start = QStandardPaths::writableLocation(QStandardPaths::HomeLocation);
    const QString path = m_fileChoosers.saveFileName(this, tr("Save to"), QDir(start).filePath(name), QString());
    if (path.isEmpty())
        return;
    auto* job = new TrackExtracter(m_playbackController->items(), path, type, interval);
    startJob(job, tr("Encoding status"), SLOT(onTrackSaveDone(bool)));
    QMetaObject::invokeMethod(job, "run", Qt::QueuedConnection);
}

void MainWindow::onCutButtonClicked() {
    if (!m_playbackController)
        return;
    setCutMode(true);
}

void MainWindow::onRejectCutButtonClicked() { setCutMode(false); }

void MainWindow::setCutMode(bool on) {
    m_cutMode = on;
    m_ui->cutButtonContainer->setVisible(on);
    m_ui->cutButton->setVisible(!on);
    m_ui->cutOnButton->setVisible(on);
    m_ui->cutOnButton->setChecked(true);
    const bool cyclePlay = m_playbackController && m_playbackController->isCyclePlayActive();
    m_intervalSelector->setActive(on || cyclePlay);
    // The selector lives on the plots: without a visible plot there is nothing to choose on.
    if (on && m_plots.count(PlotType::Speed) &&
        std::none_of(m_plots.begin(), m_plots.end(), [](const auto& entry) { return entry.second.action && entry.second.action->isChecked(); }))
        m_plots[PlotType::Speed].action->setChecked(true);
}

void MainWindow::cutCurrentItem() {
    if (!hasController("cutCurrentItem") || m_progressDialog || m_playbackController->items().empty())
        return;
    const TimeInterval interval = saveInterval();
    LOG_INFO(kLogger, "Cut from {} to {}", interval.from.toString(Qt::ISODate).toStdString(),
             interval.to.toString(Qt::ISODate).toStdString());
    const Playlist::RawItems items = exportpaths::itemsOverlapping(m_playbackController->items(), interval);
    const QString start = saveDirectory();
    const QString proposal = QDir(start).filePath(exportpaths::proposedFileName(interval, QStringLiteral("mp4")));
    EncodingSettingsDialog dialog(this, proposal, hasRearCamera(items));
    if (dialog.exec() != QDialog::Accepted)
        return;
    EncodingSettings settings = dialog.settings();
    m_lastSaveDirectory = QFileInfo(settings.filePath).absolutePath();
    const int cameras = hasRearCamera(items) ? 2 : 1;
    if (settings.camera < 0 || settings.camera >= cameras) {
        LOG_ERROR(kLogger, "Camera No. can't be {}, number of cameras is {}", settings.camera, cameras);
        return;
    }
    settings.rotation = encoding::rotationFromOrientation((settings.camera == 0 ? m_mainOutput : m_rearOutput)->orientation());
    setCutMode(false);

    m_pendingCut = PendingCut{items, interval, settings, exportpaths::trackPathBesideVideo(settings.filePath)};
    if (!hasTrack(items) || QFileInfo::exists(m_pendingCut->trackPath)) {
        LOG_INFO(kLogger, "No track copy beside {}: {}", settings.filePath.toStdString(),
                 hasTrack(items) ? "a file of that name exists" : "the recordings have no track");
        m_pendingCut->trackPath.clear();
        startCutEncoder();
        return;
    }
    // The track goes beside the video first: it is small, and the cut is worth little without it.
    auto* job = new TrackExtracter(items, m_pendingCut->trackPath, TrackExtracter::Nmea, interval);
    startJob(job, tr("Encoding status"), SLOT(onTrackCopyDone(bool)));
    QMetaObject::invokeMethod(job, "run", Qt::QueuedConnection);
}

void MainWindow::onTrackCopyDone(bool ok) {
    LOG_DEBUG(kLogger, "onTrackCopyDone ok: {}", ok);
    finishJob();
    if (!m_pendingCut)
        return;
    if (!ok) {
        m_pendingCut->trackPath.clear();
        QMessageBox::warning(this, tr("Encoding"), tr("Failed to copy track"));
    }
    startCutEncoder();
}

void MainWindow::startCutEncoder() {
    const PendingCut& cut = *m_pendingCut;
    BaseEncoder* encoder = nullptr;
    if (cut.settings.forceReencoding)
        encoder = new Coder(cut.items, cut.interval, cut.settings);
    else
        encoder = new Remuxer(cut.items, cut.interval, cut.settings);
    startJob(encoder, tr("Encoding status"), SLOT(onEncodeDone(bool)));
    QMetaObject::invokeMethod(encoder, "encode", Qt::QueuedConnection);
}

// A track copied for a video that was then not written would be a stray file.
void MainWindow::removeTrackCopyOfFailedCut() {
    if (m_pendingCut && !m_pendingCut->trackPath.isEmpty() && QFile::remove(m_pendingCut->trackPath))
        LOG_INFO(kLogger, "Removed the track copy {} of the unfinished cut", m_pendingCut->trackPath.toStdString());
    m_pendingCut.reset();
}

void MainWindow::startJob(QObject* job, const QString& title, const char* doneSlot) {
    job->moveToThread(&m_workerThread);
    connect(job, SIGNAL(progress(int)), this, SLOT(onBackgroundOperationProgress(int)));
    connect(job, SIGNAL(done(bool)), this, doneSlot);
    connect(job, SIGNAL(canceled()), this, SLOT(onBackgroundJobCanceled()));
    m_backgroundJob = job;
    showProgressDialog(title);
}

void MainWindow::finishJob() {
    if (m_backgroundJob)
        m_backgroundJob->deleteLater(); // on the worker thread, after its last signal
    m_backgroundJob = nullptr;
    closeProgressDialog();
}

void MainWindow::onBackgroundJobCanceled() {
    LOG_INFO(kLogger, "The background operation was canceled");
    finishJob();
    removeTrackCopyOfFailedCut();
}

void MainWindow::onCopyingDone(bool ok) {
    LOG_DEBUG(kLogger, "onCopyingDone ok: {}", ok);
    finishJob();
    if (ok)
        QMessageBox::information(this, tr("Saving"), tr("Сopying completed"));
    else
        QMessageBox::warning(this, tr("Saving"), tr("Failed to copy"));
}

void MainWindow::onEncodeDone(bool ok) {
    LOG_DEBUG(kLogger, "onEncodeDone ok: {}", ok);
    finishJob();
    if (ok) {
        m_pendingCut.reset();
        QMessageBox::information(this, tr("Encoding"), tr("Encoding completed"));
    } else {
        removeTrackCopyOfFailedCut();
        QMessageBox::warning(this, tr("Encoding"),
                             tr("Failed to encode.\n\nNOTE:\nTry choose another container type or choose \"Only "
                                "video\" option.\nIf all else fails choose \"Force reencoding\"."));
    }
}

void MainWindow::onTrackSaveDone(bool ok) {
    LOG_DEBUG(kLogger, "onTrackSaveDone ok: {}", ok);
    finishJob();
    if (ok)
        QMessageBox::information(this, tr("Track saving"), tr("Track saving completed"));
    else
        QMessageBox::warning(this, tr("Track saving"), tr("Failed to save track"));
}

// ---------------------------------------------------------------------------------------------------------
// Progress of background operations

void MainWindow::onActionCheckUpdate() { AppUpdater::instance().checkForUpdate(); }

void MainWindow::onAppUpdaterStarted() { showProgressDialog(tr("Updating status")); }

void MainWindow::onAppUpdaterFinished(const QString& message) {
    closeProgressDialog();
    if (!message.isEmpty())
        QMessageBox::warning(this, QCoreApplication::applicationName(), message);
}

void MainWindow::onBackgroundOperationProgress(int percent) {
    if (qobject_cast<BaseEncoder*>(sender()))
        LOG_DEBUG(kLogger, "Encoding status: {}/100", percent);
    if (m_progressDialog)
        m_progressDialog->setProgress(percent);
}

void MainWindow::onBackgroundOperationCanceled() {
    if (m_backgroundJob) {
        // cancel() only raises the job's flag, so it is called straight from here while the job runs.
        QMetaObject::invokeMethod(m_backgroundJob, "cancel", Qt::DirectConnection);
        return;
    }
    AppUpdater::instance().cancel();
}

void MainWindow::showProgressDialog(const QString& title) {
    if (m_progressDialog) {
        LOG_WARN(kLogger, "A background operation is already in progress");
        return;
    }
    m_progressDialog = new ProgressDialog(title, this);
    m_progressDialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_progressDialog, &ProgressDialog::canceled, this, &MainWindow::onBackgroundOperationCanceled);
    setBusy(true);
    m_progressDialog->show();
}

void MainWindow::closeProgressDialog() {
    if (m_progressDialog)
        m_progressDialog->accept(); // close() would ask to cancel, as the close button does
    setBusy(false);
}

// The window stays usable for nothing but the progress dialog while a job runs.
// (Disabling a window leaves its dialogs, which are windows of their own, enabled.)
void MainWindow::setBusy(bool busy) {
    setEnabled(!busy);
    m_ui->videoToolbar->setEnabled(!busy && m_playbackController);
}

// ---------------------------------------------------------------------------------------------------------
// Removable storage

void MainWindow::onActionOpenDevice() { openOneOf(m_storageWatcher->supportedStorages()); }

void MainWindow::onSupportedStorageDevicesArrived(const std::vector<QStorageInfo>& storages) {
    m_supportedStorages = m_storageWatcher->supportedStorages();
    m_ui->actionOpenDevice->setEnabled(!m_supportedStorages.empty());
    m_ui->openDeviceButton->setEnabled(!m_supportedStorages.empty());
    // A card put in while a job runs is only listed; the user opens it when the job is done.
    if (!m_progressDialog)
        openOneOf(storages);
}

void MainWindow::openOneOf(const std::vector<QStorageInfo>& storages) {
    if (storages.empty())
        return;
    if (storages.size() == 1) {
        LOG_INFO(kLogger, "Found only one good external storage {}, open it", storages.front().displayName().toStdString());
        openStorage(storages.front(), storages.front().rootPath());
        return;
    }
    OpenDialog dialog(this, m_storageWatcher);
    if (dialog.exec() == QDialog::Accepted && dialog.hasResult())
        openStorage(dialog.result().storage, dialog.result().path);
}

void MainWindow::openStorage(const QStorageInfo& storage, const QString& path) {
    m_openedStorage = storage;
    m_storageOpened = true;
    QMetaObject::invokeMethod(this, "loadDirectory", Qt::QueuedConnection, Q_ARG(QString, path));
}

// Reached twice for a supported storage (supportedStorageRemoved and storageRemoved); the first call
// closes the recordings, the second finds nothing open.
void MainWindow::onStorageDeviceRemoved(const QStorageInfo& storage) {
    m_supportedStorages = m_storageWatcher->supportedStorages();
    m_ui->actionOpenDevice->setEnabled(!m_supportedStorages.empty());
    m_ui->openDeviceButton->setEnabled(!m_supportedStorages.empty());
    if (m_storageOpened && storage.device() == m_openedStorage.device())
        closeRemovedRecordings(storage);
}

void MainWindow::closeRemovedRecordings(const QStorageInfo& storage) {
    m_storageOpened = false;
    m_openedStorage = QStorageInfo();
    LOG_INFO(kLogger, "The storage of the loaded recordings was removed: {}", storage.displayName().toStdString());
    // Its files are gone: nothing of it can play or be saved any more.
    clearPlaylist();
    QMessageBox::information(this, kWindowTitle,
                             tr("The storage %1 with the loaded recordings was removed.").arg(storage.rootPath()));
}
