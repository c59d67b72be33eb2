#include "ui/PlaybackSession.h"

#include "ui_MainWindow.h"

#include "av/VideoWidget.h"
#include "logging/Logging.h"
#include "ui/MapWidgetAdapter.h"
#include "ui/PlaybackController.h"
#include "ui/PlotIntervalSelector.h"
#include "ui/PlotPanel.h"
#include "ui/WaitingAnimation.h"

#include <algorithm>

namespace {
constexpr const char* kLogger = "ui.MainWindow"; // its lines are the window's
constexpr int kSeekStepSeconds = 5;

bool hasRearCamera(const Playlist::RawItems& items) {
    return std::any_of(items.begin(), items.end(), [](const Playlist::RawItemPtr& item) { return item->rearVideo.has_value(); });
}

int nextOrientation(int degrees) { return (degrees + 90) % 360; }
} // namespace

PlaybackSession::PlaybackSession(Ui::MainWindow& ui, MapWidgetAdapter* map, PlotPanel* plots, QObject* parent)
    : QObject(parent), m_ui(ui), m_map(map), m_plots(plots), m_mainOutput(new av::VideoWidget),
      m_rearOutput(new av::VideoWidget), m_waitingAnimation(new WaitingAnimation(ui.videoWidgetParent)) {
    m_mainOutput->setObjectName(QStringLiteral("mainVideoOutput"));
    m_rearOutput->setObjectName(QStringLiteral("rearVideoOutput"));
    ui.videoWidgetParent->setOutputs({m_mainOutput, m_rearOutput});
    ui.videoWidgetParent->setMessageLabel(ui.noVideOutputsLabel);
    ui.noVideOutputsLabel->setStyleSheet(QStringLiteral("color: #d0d0d0; font-size: 12pt;"));
    m_rearOutput->hide();
    m_mainOutput->hide();
    for (av::VideoWidget* output : {m_mainOutput, m_rearOutput})
        connect(output, &av::VideoWidget::frameSizeChanged, this, &PlaybackSession::relayoutOutputs);

    connect(ui.toBeginButton, &QToolButton::clicked, this, &PlaybackSession::toBegin);
    connect(ui.toEndButton, &QToolButton::clicked, this, &PlaybackSession::toEnd);
    connect(ui.slowDownButton, &QToolButton::clicked, this, &PlaybackSession::slowDown);
    connect(ui.speedUpButton, &QToolButton::clicked, this, &PlaybackSession::speedUp);
    connect(ui.stopButton, &QToolButton::clicked, this, &PlaybackSession::stop);
    connect(ui.playButton, &QToolButton::clicked, this, &PlaybackSession::playPause);
    connect(ui.pauseButton, &QToolButton::clicked, this, &PlaybackSession::playPause);
    connect(ui.cyclePlayStartButton, &QToolButton::clicked, this, &PlaybackSession::startCyclePlay);
    connect(ui.cyclePlayStopButton, &QToolButton::clicked, this, &PlaybackSession::stopCyclePlay);
    connect(ui.actionShowMainCamera, &QAction::toggled, this, &PlaybackSession::showMainCamera);
    connect(ui.actionShowRearCamera, &QAction::toggled, this, &PlaybackSession::showRearCamera);
    connect(ui.actionRotateMainCamera, &QAction::triggered, this, &PlaybackSession::rotateMainCamera);
    connect(ui.actionRotateRearCamera, &QAction::triggered, this, &PlaybackSession::rotateRearCamera);
    connect(ui.rotateButton, &QToolButton::clicked, this, &PlaybackSession::rotateShownCameras);
    connect(ui.volumeMutedButton, &QToolButton::clicked, this, &PlaybackSession::unMute);
    connect(ui.volumeMediumButton, &QToolButton::clicked, this, &PlaybackSession::mute);
    connect(ui.volumeHighButton, &QToolButton::clicked, this, &PlaybackSession::mute);
    connect(ui.volumeSlider, &QSlider::valueChanged, this, &PlaybackSession::setVolume);
    ui.actionShowMainCamera->setChecked(true);
    ui.actionShowRearCamera->setChecked(true);
    ui.cyclePlayStopButton->hide();
    ui.videoToolbar->setEnabled(false);
    showPlaying(false);
    updateVolumeButtons();
}

PlaybackSession::~PlaybackSession() { m_controller.reset(); }

void PlaybackSession::play(const Playlist::RawItems& items, const QDateTime& from, const QDateTime& to) {
    close();
    if (items.empty())
        return;
    PlaybackViews views;
    views.map = m_map;
    views.statusLabel = m_ui.statusLabel;
    views.slider = m_ui.slider;
    views.mainRenderer = m_mainOutput;
    views.rearRenderer = m_rearOutput;
    try {
        const bool showDate = true;
        m_controller = std::make_unique<PlaybackController>(items, from, to, views, showDate);
    } catch (const std::exception& error) {
        LOG_ERROR(kLogger, "{} exception: {}", "PlaybackController", error.what());
        return;
    }
    PlaybackController* controller = m_controller.get();
    connect(controller, &PlaybackController::started, this, [this] { showPlaying(true); });
    connect(controller, &PlaybackController::stopped, this, [this] { showPlaying(false); });
    connect(controller, &PlaybackController::openingChanged, m_waitingAnimation,
            [this](bool opening) { opening ? m_waitingAnimation->start() : m_waitingAnimation->stop(); });
    if (controller->isOpening()) // the first file began opening in the constructor
        m_waitingAnimation->start();
    // The placeholder plot too: it shows the item's time axis and seeks on a click.
    controller->setPlots(m_plots->plots());
    m_plots->intervalSelector()->setRange(from, to);
    controller->setVolume(m_muted ? 0.0 : m_ui.volumeSlider->value() / 100.0);
    m_ui.videoToolbar->setEnabled(true);
    showPlaying(true);
    updateCameraOutputs();
    emit controllerChanged(controller);
}

void PlaybackSession::close() {
    const bool had = m_controller != nullptr;
    if (m_controller && m_controller->isCyclePlayActive())
        stopCyclePlay();
    m_controller.reset();
    m_waitingAnimation->stop();
    m_mainOutput->clear();
    m_rearOutput->clear();
    m_map->setTrack(nullptr);
    m_ui.statusLabel->clear();
    m_ui.videoToolbar->setEnabled(false);
    showPlaying(false);
    updateCameraOutputs();
    if (had)
        emit controllerChanged(nullptr);
}

void PlaybackSession::showPlaying(bool playing) {
    m_ui.playButton->setVisible(!playing);
    m_ui.pauseButton->setVisible(playing);
}

void PlaybackSession::toBegin() {
    if (m_controller && !m_controller->restart(false) && m_stepItem)
        m_stepItem(-1);
}

void PlaybackSession::toEnd() {
    if (m_controller && !(m_stepItem && m_stepItem(1)))
        m_controller->seekTo(m_controller->to());
}

void PlaybackSession::slowDown() {
    if (m_controller)
        m_controller->slowDown();
}

void PlaybackSession::speedUp() {
    if (m_controller)
        m_controller->speedUp();
}

void PlaybackSession::stop() {
    if (m_controller)
        m_controller->stop();
}

void PlaybackSession::playPause() {
    if (m_controller)
        m_controller->togglePause();
    else if (m_stepItem)
        m_stepItem(0);
}

void PlaybackSession::seekLeft() {
    if (m_controller)
        m_controller->seekTo(std::max(m_controller->from(), m_controller->currentTime().addSecs(-kSeekStepSeconds)));
}

void PlaybackSession::seekRight() {
    if (m_controller)
        m_controller->seekTo(std::min(m_controller->to(), m_controller->currentTime().addSecs(kSeekStepSeconds)));
}

void PlaybackSession::startCyclePlay() {
    if (!m_controller)
        return;
    PlotIntervalSelector* selector = m_plots->intervalSelector();
    m_controller->startCyclePlay([selector] { return selector->interval(); });
    connect(selector, &PlotIntervalSelector::intervalChanged, m_controller.get(),
            &PlaybackController::onCyclePlayIntervalChanged, Qt::UniqueConnection);
    m_ui.cyclePlayStartButton->hide();
    m_ui.cyclePlayStopButton->show();
    updateSelector();
}

void PlaybackSession::stopCyclePlay() {
    if (m_controller) {
        disconnect(m_plots->intervalSelector(), &PlotIntervalSelector::intervalChanged, m_controller.get(),
                   &PlaybackController::onCyclePlayIntervalChanged);
        m_controller->stopCyclePlay();
    }
    m_ui.cyclePlayStopButton->hide();
    m_ui.cyclePlayStartButton->show();
    updateSelector();
}

void PlaybackSession::setCutMode(bool on) {
    m_cutMode = on;
    updateSelector();
}

void PlaybackSession::updateSelector() {
    m_plots->intervalSelector()->setActive(m_cutMode || (m_controller && m_controller->isCyclePlayActive()));
}

void PlaybackSession::showMainCamera(bool shown) {
    m_mainCameraShown = shown;
    updateCameraOutputs();
}

void PlaybackSession::showRearCamera(bool shown) {
    m_rearCameraShown = shown;
    updateCameraOutputs();
}

void PlaybackSession::updateCameraOutputs() {
    const bool playing = m_controller != nullptr;
    const bool rearInItem = playing && hasRearCamera(m_controller->items());
    m_mainOutput->setVisible(playing && m_mainCameraShown);
    m_rearOutput->setVisible(playing && m_rearCameraShown && rearInItem);
    m_ui.actionRotateRearCamera->setEnabled(rearInItem);
    m_ui.actionShowRearCamera->setEnabled(!playing || rearInItem);
    VideoWidgetParent* area = m_ui.videoWidgetParent;
    if (!playing)
        area->showMessage(tr("Open a memory card, a folder or a video file"));
    else if (!m_mainOutput->isVisibleTo(area) && !m_rearOutput->isVisibleTo(area))
        area->showMessage(tr("Active camera(s) is(are) not available."));
    else
        area->hideMessage();
}

void PlaybackSession::retranslate() { updateCameraOutputs(); }

void PlaybackSession::relayoutOutputs() { m_ui.videoWidgetParent->relayout(); }

void PlaybackSession::rotate(av::VideoWidget* output) {
    output->setOrientation(nextOrientation(output->orientation()));
    relayoutOutputs();
}

void PlaybackSession::rotateMainCamera() { rotate(m_mainOutput); }
void PlaybackSession::rotateRearCamera() { rotate(m_rearOutput); }

// The button turns the pictures on screen; with both cameras shown both turn, as a camera pair is mounted together.
void PlaybackSession::rotateShownCameras() {
    if (m_mainOutput->isVisible() || !m_rearOutput->isVisible())
        rotate(m_mainOutput);
    if (m_rearOutput->isVisible())
        rotate(m_rearOutput);
}

void PlaybackSession::mute() {
    m_muted = true;
    if (m_controller)
        m_controller->setVolume(0.0);
    updateVolumeButtons();
}

void PlaybackSession::unMute() {
    m_muted = false;
    setVolume(m_ui.volumeSlider->value());
}

void PlaybackSession::setVolume(int percent) {
    if (m_muted && percent > 0)
        m_muted = false; // moving the slider up speaks again, as players do
    if (m_controller)
        m_controller->setVolume(m_muted ? 0.0 : percent / 100.0);
    updateVolumeButtons();
}

void PlaybackSession::updateVolumeButtons() {
    const int value = m_ui.volumeSlider->value();
    const bool silent = m_muted || value == 0;
    m_ui.volumeMutedButton->setVisible(silent);
    m_ui.volumeMediumButton->setVisible(!silent && value < 50);
    m_ui.volumeHighButton->setVisible(!silent && value >= 50);
}

void PlaybackSession::resendToMap() {
    if (m_controller) {
        m_map->setTrack(&m_controller->track());
        m_map->setCurrentTime(m_controller->currentTime(), true);
    }
}
