// Plays the files of all cameras of one recording at once, in step on one shared clock.
#pragma once

#include "av/Clock.h"
#include "av/Player.h"
#include "av/VideoWidget.h"

#include <QImage>
#include <QObject>
#include <QString>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

// GUI thread only. Player 0 is the main camera and stands for the set: its position, start position,
// notify interval and signals are those of the whole. Every operation goes to the shared clock first and
// then to every player in index order. Errors are thrown (std::logic_error for wrong counts,
// std::runtime_error for capture conflicts) for the caller to log.
//
//   MultiAVPlayer cameras(2);
//   cameras.setFiles({front, rear});
//   cameras.load();                          // any thread
//   cameras.setRenderers({&frontView, &rearView});
//   cameras.play();
class MultiAVPlayer : public QObject {
    Q_OBJECT
public:
    // `time` replaces the real time source of every clock (tests).
    explicit MultiAVPlayer(size_t players, std::shared_ptr<av::TimeSource> time = {});
    ~MultiAVPlayer() override;

    void setFiles(const std::vector<QString>& files);
    void setRenderers(const std::vector<av::VideoWidget*>& renderers);
    // Opens every file and decodes its first picture; synchronous, any thread. Throws std::runtime_error.
    void load();

    void play();
    // Shows the first picture and holds there, the clock stopped.
    void playPaused();
    void pause(bool paused);
    void togglePause();
    void seek(qint64 ms);
    void setSpeed(double speed);
    void setVolume(double volume);
    void setStartPosition(qint64 ms);
    void setStopPosition(qint64 ms);
    void setNotifyInterval(int ms);
    void stepForward();

    qint64 position() const;
    qint64 startPosition() const;
    // The longest of the cameras' files.
    qint64 duration() const;
    double videoTime() const;
    double currentDisplayFps() const;

    // Captures the pictures on display of the given cameras; the (joined) image comes by imageCaptured().
    void startCapture(std::set<size_t> players);

    size_t playerCount() const { return m_players.size(); }
    av::Player* player(size_t index) const { return m_players.at(index); }
    const av::Clock& clock() const { return *m_clock; }

signals:
    void positionChanged(qint64 position);
    void seekFinished(qint64 position);
    void started();
    void stateChanged(av::Player::State state);
    void imageCaptured(const QImage& image);
    void lastFramePlayed();

public slots:
    void changeClockType();
    void onImageCaptured(size_t playerNo, const QImage& image);

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    struct CaptureTask {
        std::set<size_t> players;
        std::map<size_t, QImage> images;
    };

    void checkSize(size_t given) const;
    void start();
    void onPlayerSeekFinished();

    std::unique_ptr<av::Clock> m_clock;
    std::vector<av::Player*> m_players;
    int m_timerId = 0;
    std::optional<CaptureTask> m_captureTask;
    size_t m_seeksPending = 0;
};
