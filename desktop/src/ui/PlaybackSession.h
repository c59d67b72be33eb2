// The item that plays: the one PlaybackController and its life, the transport buttons, cycle play, volume,
// the camera outputs and their rotation.
//
// Lives on the GUI thread. Owns the controller (at most one, rebuilt for every chosen item), the two video
// outputs and the waiting animation; drives the borrowed buttons, slider and labels of the form, the map
// and the plots. Emits controllerChanged() whenever the controller is replaced or dropped.
#pragma once

#include "core/Playlist.h"

#include <QDateTime>
#include <QObject>

#include <functional>
#include <memory>

namespace Ui {
class MainWindow;
}
namespace av {
class VideoWidget;
}
class MapWidgetAdapter;
class PlaybackController;
class PlotPanel;
class WaitingAnimation;

class PlaybackSession : public QObject {
    Q_OBJECT
public:
    PlaybackSession(Ui::MainWindow& ui, MapWidgetAdapter* map, PlotPanel* plots, QObject* parent);
    ~PlaybackSession() override;

    PlaybackController* controller() const { return m_controller.get(); }
    av::VideoWidget* output(int camera) const { return camera == 0 ? m_mainOutput : m_rearOutput; }
    bool isCameraShown(int camera) const { return camera == 0 ? m_mainCameraShown : m_rearCameraShown; }
    // Steps through the playlist: true when there was an item `step` places away (0: the same again).
    void setItemStepper(std::function<bool(int step)> stepper) { m_stepItem = std::move(stepper); }

public slots:
    void play(const Playlist::RawItems& items, const QDateTime& from, const QDateTime& to);
    void close(); // nothing plays any more

    void toBegin();
    void toEnd();
    void slowDown();
    void speedUp();
    void stop();
    void playPause();
    void seekLeft();
    void seekRight();
    void startCyclePlay();
    void stopCyclePlay();
    // Cut mode shares the interval selector with cycle play.
    void setCutMode(bool on);

    void showMainCamera(bool shown);
    void showRearCamera(bool shown);
    void rotateMainCamera();
    void rotateRearCamera();
    void rotateShownCameras();
    void relayoutOutputs();

    void mute();
    void unMute();
    void setVolume(int percent);
    // The page lost what was sent before it listened: the track and the moment again.
    void resendToMap();
    void retranslate();

signals:
    void controllerChanged(PlaybackController* controller); // null: nothing plays

private:
    void updateCameraOutputs();
    void updateVolumeButtons();
    void updateSelector();
    void rotate(av::VideoWidget* output);
    void showPlaying(bool playing);

    Ui::MainWindow& m_ui;
    MapWidgetAdapter* m_map;
    PlotPanel* m_plots;
    std::unique_ptr<PlaybackController> m_controller;
    av::VideoWidget* m_mainOutput;
    av::VideoWidget* m_rearOutput;
    WaitingAnimation* m_waitingAnimation;
    std::function<bool(int)> m_stepItem;
    bool m_mainCameraShown = true;
    bool m_rearCameraShown = true;
    bool m_muted = false;
    bool m_cutMode = false;
};
