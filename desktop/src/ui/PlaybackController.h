// Plays one playlist item as a single time line: file after file without a gap, seeks, speed, cycle play.
#pragma once

#include "core/Playlist.h"
#include "ui/MultiAVPlayer.h"
#include "ui/PlotType.h"

#include <QDateTime>
#include <QObject>
#include <QPointer>
#include <QThread>

#include <functional>
#include <future>
#include <map>
#include <memory>
#include <set>
#include <utility>
#include <vector>

class MapWidgetAdapter;
class QLabel;
class TrackPlot;
class VideoLoader;
class VideoLoadingHandler;
class VideoProgressSlider;
namespace av {
class VideoWidget;
}

// The views a controller drives; all borrowed, any of map and statusLabel may be null.
struct PlaybackViews {
    MapWidgetAdapter* map = nullptr;
    QLabel* statusLabel = nullptr;
    VideoProgressSlider* slider = nullptr;
    av::VideoWidget* mainRenderer = nullptr;
    av::VideoWidget* rearRenderer = nullptr;
};

// User-interface thread only. One controller per played item. The next file is opened on a thread of the
// controller's own while the current one plays; every position goes through updatePosition(), and every
// seek (slider, plots, map) goes through the slider into onSliderPositionChanged().
//
//   auto controller = std::make_unique<PlaybackController>(item->items, item->from, item->to, views, false);
//   connect(controller.get(), &PlaybackController::stopped, window, &MainWindow::onPlaybackStop);
class PlaybackController : public QObject {
    Q_OBJECT
public:
    using Interval = std::pair<QDateTime, QDateTime>;
    using IntervalProvider = std::function<Interval()>;

    // Starts opening the first file at once; it plays as soon as it is open.
    PlaybackController(Playlist::RawItems items, QDateTime from, QDateTime to, PlaybackViews views,
                       bool showDate, QObject* parent = nullptr);
    ~PlaybackController() override;

    const Playlist::RawItems& items() const { return m_items; }
    QDateTime from() const { return m_from; }
    QDateTime to() const { return m_to; }
    // The item's track, all files' fixes in order. Stays alive and unchanged as long as the controller.
    const TrackPositions& track() const { return m_track; }
    // The time last shown (the interval's start before the first position).
    QDateTime currentTime() const { return m_currentTime; }

    bool isPaused() const { return m_paused; }
    bool isSliderHeld() const { return m_sliderHeld; }
    double speed() const { return m_speed; }
    double volume() const { return m_volume; }
    bool isCyclePlayActive() const { return m_cyclePlay; }
    // The player on screen, null when nothing plays.
    MultiAVPlayer* currentPlayer() const { return m_currentPlayer.get(); }
    // True while the file to be shown is being opened with nothing of it on screen (see openingChanged).
    bool isOpening() const { return m_opening; }

    // The plots to drive (borrowed; any may be destroyed first): each gets the item's track and range and
    // the current time, a click on it seeks, and a zoom on it zooms the others. A plot given before and
    // missing now is left alone.
    // The destructor clears the tracks of the plots that still show this controller's track.
    void setPlots(std::map<PlotType, TrackPlot*> plots);

    void togglePause();
    void slowDown();
    void speedUp();
    void setVolume(double volume);
    // The "previous" action: false (nothing done) within the first second of the item unless forced.
    bool restart(bool force);
    void startCyclePlay(IntervalProvider provider);
    void stopCyclePlay();
    // Captures the cameras' pictures (empty: all); the image comes by imageCaptured(). Throws std::logic_error
    // when nothing plays.
    void capture(std::set<size_t> players);
    void stop();

signals:
    void started();
    void stopped();
    void imageCaptured(const QImage& image);
    // The moment on screen, for the plots' time markers and other followers.
    void positionUpdated(const QDateTime& time);
    // Another player took the screen (null: none).
    void playerChanged(MultiAVPlayer* player);
    // True while the file that must be shown next is being opened and nothing of it is on screen (the
    // first file, a file after one that could not keep up, a seek into another file); false once it plays.
    // It starts true during construction: read isOpening() after connecting.
    void openingChanged(bool opening);
    // Playback passed over a recording that cannot be played (its index lost, say); `message` says which and
    // why, for the status line. Never emitted during construction.
    void recordingSkipped(const QString& message);

public slots:
    void onCyclePlayIntervalChanged();
    void onPlayerStateChanged(av::Player::State state);
    void onVideoPositionChanged(qint64 position);
    void onSeekFinished(qint64);
    void playNextVideo();
    void onNextVideoLoaded();
    void onSliderPositionChanged(QDateTime time);
    void onSliderMousePressed();
    void onSliderMouseReleased();
    void onCoordinatesFromMap(double longitude, double latitude);
    void seekTo(double timestamp);
    void seekTo(QDateTime dateTime);

private:
    struct Video {
        QString mainFile;
        QString rearFile;
        bool hasRear = false;
        QDateTime from;
        QDateTime to;
        QString problem; // why it cannot be played, once that is known
    };
    using PlayerPtr = std::shared_ptr<MultiAVPlayer>;

    void preload(size_t index);
    void playCurrentVideo();
    // Plays from the start of video `index`, or from the next one that can be played.
    void startFrom(size_t index);
    // The first video from `index` on that is not known to be broken, or m_videos.size().
    size_t playableFrom(size_t index) const;
    void reportSkipped(size_t index);
    void updatePosition(const QDateTime& time);
    // The status label for m_currentTime and the speed.
    void showStatus();
    void dropPlayers();
    void dropNextPlayer();
    void releasePlayer(PlayerPtr& player);
    bool outsideCycleInterval(const QDateTime& time, Interval* interval = nullptr) const;
    void resume();
    static PlayerPtr makePlayer(size_t cameras);
    void updateOpening();
    void showTimeOnPlots(const QDateTime& time);

    PlaybackViews m_views;
    QThread* m_workerThread = nullptr;  // retired, not waited for, by the destructor
    std::vector<Video> m_videos;
    Playlist::RawItems m_items;
    QDateTime m_from;
    QDateTime m_to;
    size_t m_current = 0;       // index into m_videos; m_videos.size() after the last
    size_t m_playingIndex = 0;  // the video m_currentPlayer shows
    size_t m_nextIndex = 0;     // the video m_nextPlayer opens
    std::vector<bool> m_broken; // videos damaged or failed to open, skipped from then on
    bool m_paused = false;
    bool m_sliderHeld = false;
    PlayerPtr m_currentPlayer;
    PlayerPtr m_nextPlayer;
    QPointer<VideoLoader> m_loader;
    QPointer<VideoLoadingHandler> m_loadingHandler;
    std::shared_future<void> m_loadResult;
    TrackPositions m_track;
    double m_speed = 1.0;
    double m_volume = 1.0;
    qint64 m_pendingSeekMs = 0;
    bool m_pendingSeek = false;
    qint64 m_lastPosition = -1;
    bool m_userSeek = false;
    IntervalProvider m_cycleInterval;
    bool m_cyclePlay = false;
    bool m_showDate = false;
    QDateTime m_currentTime;
    QString m_statusText;
    std::map<PlotType, QPointer<TrackPlot>> m_plots;
    bool m_opening = false;
};
