// Plays one media file: a facade over the decoding threads and a presenter that shows decoded pictures
// against the player's clock.
#pragma once

#include "av/Clock.h"
#include "av/MediaQueues.h"
#include "av/VideoWidget.h"

#include <QElapsedTimer>
#include <QImage>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

#include <memory>

class QAudioOutput;

namespace av {

class AudioSink;
class MediaPipeline;

// Lives on the GUI thread, except load(), which may run on any thread before the player is used.
// The GUI thread never decodes and never waits for a decoder: a timer picks already decoded pictures
// whose time has come on the master clock, and drops the ones that came too late.
//
//   av::Player player;
//   player.setFile("front.mp4");
//   player.load();                // throws std::runtime_error when the file cannot be played
//   player.setRenderer(&widget);
//   player.play();
//   player.setPosition(12'000);   // the picture at exactly 12 s, then seekFinished()
class Player : public QObject {
    Q_OBJECT
public:
    enum class State { Stopped, Playing, Paused };
    Q_ENUM(State)

    explicit Player(std::shared_ptr<TimeSource> time = {}, QObject* parent = nullptr);
    ~Player() override;

    void setFile(const QString& file);
    QString file() const { return m_file; }
    // Opens the file and decodes its first picture; synchronous, any thread. Throws std::runtime_error.
    void load();
    bool isLoaded() const { return m_pipeline != nullptr; }

    // Starts from the start position; emits started().
    void play();
    // Pauses or resumes. Resuming also plays on a player that reached its end and was then sought back.
    void pause(bool paused);
    bool isPaused() const { return m_state == State::Paused; }
    State state() const { return m_state; }
    // Exact seek: the picture at `ms` is shown, then seekFinished() is emitted.
    void setPosition(qint64 ms);
    // Pauses and shows the next picture.
    void stepForward();

    void setSpeed(double speed);
    double speed() const { return m_clock.speed(); }
    void setVolume(double volume);
    double volume() const { return m_volume; }

    // Playback begins at the start position and ends (as at the end of the file) at the stop position.
    void setStartPosition(qint64 ms);
    qint64 startPosition() const { return m_startPosition; }
    // A negative value means the end of the file.
    void setStopPosition(qint64 ms);
    qint64 stopPosition() const { return m_stopPosition; }

    // Time of the picture on display, in milliseconds and in seconds.
    qint64 position() const;
    double videoTime() const;
    qint64 duration() const;
    // How often positionChanged() is emitted while playing.
    void setNotifyInterval(int ms);
    int notifyInterval() const { return m_notifyInterval; }

    // The clock this player shows pictures against; a multi-camera player keeps it in step with a shared one.
    Clock& masterClock() { return m_clock; }
    const Clock& masterClock() const { return m_clock; }

    void setRenderer(VideoWidget* renderer);
    VideoWidget* renderer() const { return m_renderer; }
    const VideoFrame& currentFrame() const { return m_current; }

    // Converts the picture on display on a worker thread; the result arrives by imageCaptured().
    void capture();

    // True while the presenter looks for pictures to show; it sleeps while paused or ended, where nothing on
    // screen can change until the next play, pause(false), seek or step.
    bool isPresenting() const { return m_presenter.isActive(); }

    // Pictures put on screen per second, over the last second.
    double displayFps() const { return m_displayFps; }
    int framesShown() const { return m_framesShown; }
    // Pictures never shown because they came too late (by the presenter and by the decoder).
    int framesDropped() const;

signals:
    void stateChanged(av::Player::State state);
    void started();
    void positionChanged(qint64 position);
    void seekFinished(qint64 position);
    // The last picture (of the file or before the stop position) has had its time; it stays on screen.
    void endOfMedia();
    void imageCaptured(const QImage& image);
    // A new picture is on display.
    void frameShown();

private:
    void present();
    void show(const VideoFrame& frame);
    void reachEnd();
    void beginSeek(double ms);
    void setState(State state);
    void updatePresenter();
    void updateClockAndSound();
    void startAudio();
    void notifyPosition(bool force);

    QString m_file;
    Clock m_clock;
    std::unique_ptr<AudioSink> m_audioSink;
    const bool m_soundDevice; // asked in the constructor, so load() on a loader thread never asks
    QAudioOutput* m_audioOutput = nullptr;
    std::unique_ptr<MediaPipeline> m_pipeline;
    QTimer m_presenter;
    QTimer m_endTimer;
    QPointer<VideoWidget> m_renderer;

    State m_state = State::Stopped;
    VideoFrame m_current;
    int m_serial = 0;
    bool m_seeking = false;
    double m_seekTarget = 0;
    bool m_stepPending = false;
    bool m_ended = false;
    bool m_hasPlayed = false;  // play() was called: a stopped player may be resumed after a seek
    qint64 m_startPosition = 0;
    qint64 m_stopPosition = -1;
    double m_volume = 1.0;
    int m_notifyInterval = 40;
    QElapsedTimer m_sinceNotify;
    qint64 m_lastNotified = -1;

    int m_framesShown = 0;
    int m_framesSkipped = 0;
    QElapsedTimer m_fpsWindow;
    int m_fpsCount = 0;
    double m_displayFps = 0;
};

} // namespace av
