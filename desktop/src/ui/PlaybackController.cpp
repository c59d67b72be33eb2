// The playback controller: pre-loading, file changes, the one time line and the seeks into it.
#include "ui/PlaybackController.h"

#include "av/VideoWidget.h"
#include "core/ApplicationOptions.h"
#include "logging/Logging.h"
#include "ui/MapWidgetAdapter.h"
#include "ui/NearestTrackTime.h"
#include "ui/TrackPlot.h"
#include "ui/VideoLoader.h"
#include "ui/VideoProgressSlider.h"

#include <QFileInfo>
#include <QLabel>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace {
constexpr const char* kLogger = "ui.PlaybackController";
constexpr int kNotifyIntervalMs = 40;
// The longest frame of a camera file (25 fps). A seek between two frames shows the earlier one; counting it as
// stale would leave a paused picture's time unreported.
constexpr qint64 kFrameToleranceMs = 40;
constexpr double kMinSpeed = 0.125;
constexpr double kMaxSpeed = 8.0;
// Within this much of its start, "previous" leaves the item instead of restarting it.
constexpr qint64 kRestartGraceMs = 1000;
} // namespace

PlaybackController::PlaybackController(Playlist::RawItems items, QDateTime from, QDateTime to, PlaybackViews views,
                                       bool showDate, QObject* parent)
    : QObject(parent), m_views(views), m_items(std::move(items)), m_from(std::move(from)), m_to(std::move(to)),
      m_showDate(showDate), m_currentTime(m_from) {
    m_workerThread = new QThread;
    m_workerThread->setObjectName(QStringLiteral("VideoLoader"));
    m_workerThread->start();
    try {
        for (const Playlist::RawItemPtr& item : m_items) {
            Video video;
            video.mainFile = item->mainVideo.absoluteFilePath();
            video.hasRear = item->rearVideo.has_value();
            if (video.hasRear)
                video.rearFile = item->rearVideo->absoluteFilePath();
            video.from = item->from;
            video.to = item->to;
            video.problem = item->damageText();
            m_videos.push_back(std::move(video));
            if (item->track)
                m_track.insert(m_track.end(), item->track->positions.begin(), item->track->positions.end());
        }
        for (const Video& video : m_videos)
            m_broken.push_back(!video.problem.isEmpty());
        if (m_views.map) {
            connect(m_views.map, &MapWidgetAdapter::coordinatesReceived, this, &PlaybackController::onCoordinatesFromMap);
            m_views.map->setTrack(&m_track);
        }
        if (m_views.slider) {
            m_views.slider->setInterval(m_from, m_to);
            m_views.slider->setTimeFormat(m_showDate ? QStringLiteral("yyyy.MM.dd hh:mm:ss") : QStringLiteral("hh:mm:ss"));
            connect(m_views.slider, &VideoProgressSlider::positionChanged, this, &PlaybackController::onSliderPositionChanged);
            connect(m_views.slider, &VideoProgressSlider::mousePressed, this, &PlaybackController::onSliderMousePressed);
            connect(m_views.slider, &VideoProgressSlider::mouseReleased, this, &PlaybackController::onSliderMouseReleased);
        }
        if (m_videos.empty()) {
            LOG_WARN(kLogger, "PlaybackController created without videos");
            return;
        }
        m_current = 0;
        if (m_broken[0])  // reported once the window has connected to recordingSkipped()
            QMetaObject::invokeMethod(this, [this] { startFrom(0); }, Qt::QueuedConnection);
        else
            preload(m_current);
    } catch (const std::exception& e) {
        LOG_ERROR(kLogger, "{} exception: {}", "PlaybackController::PlaybackController", e.what());
    }
}

PlaybackController::~PlaybackController() {
    for (const auto& entry : m_plots)
        if (entry.second && entry.second->shownTrack() == &m_track)  // not yet handed to our successor
            entry.second->clearTrack();
    dropPlayers();
    // The GUI thread must not wait for a file that is still opening: the loader finishes in the background.
    retireLoaderThread(m_workerThread);
}

// Players die by deleteLater: the last reference may go inside one of the player's own signals, or on the
// loader's thread.
PlaybackController::PlayerPtr PlaybackController::makePlayer(size_t cameras) {
    return PlayerPtr(new MultiAVPlayer(cameras), [](MultiAVPlayer* player) { player->deleteLater(); });
}

void PlaybackController::releasePlayer(PlayerPtr& player) {
    if (!player)
        return;
    disconnect(player.get(), nullptr, this, nullptr);
    // A dropped player must not paint over its successor before it is gone.
    player->pause(true);
    player->setRenderers(std::vector<av::VideoWidget*>(player->playerCount(), nullptr));
    player.reset();
}

void PlaybackController::dropNextPlayer() {
    if (m_loadingHandler)
        delete m_loadingHandler.data();  // a late completion reaches nobody
    if (m_loader)
        m_loader->deleteLater();  // on its own thread, once run() has returned
    m_loader.clear();
    m_nextPlayer.reset();
}

void PlaybackController::dropPlayers() {
    dropNextPlayer();
    const bool hadPlayer = m_currentPlayer != nullptr;
    releasePlayer(m_currentPlayer);
    if (hadPlayer)
        emit playerChanged(nullptr);
}

void PlaybackController::preload(size_t index) {
    const Video& video = m_videos.at(index);
    LOG_DEBUG(kLogger, "Preload video {}", video.mainFile.toStdString());
    dropNextPlayer();
    m_nextPlayer = makePlayer(video.hasRear ? 2 : 1);
    m_nextIndex = index;
    m_nextPlayer->setNotifyInterval(kNotifyIntervalMs);
    if (video.hasRear)
        m_nextPlayer->setFiles({video.mainFile, video.rearFile});
    else
        m_nextPlayer->setFiles({video.mainFile});

    auto* loader = new VideoLoader(m_nextPlayer);
    loader->moveToThread(m_workerThread);
    m_loadResult = loader->result();
    auto* handler = new VideoLoadingHandler(m_nextPlayer, [this] { onNextVideoLoaded(); });
    connect(loader, &VideoLoader::done, handler, &VideoLoadingHandler::onLoad, Qt::QueuedConnection);
    m_loader = loader;
    m_loadingHandler = handler;
    QMetaObject::invokeMethod(loader, "run", Qt::QueuedConnection);
    updateOpening();
}

void PlaybackController::updateOpening() {
    const bool opening = !m_currentPlayer && m_loader;
    if (opening == m_opening)
        return;
    m_opening = opening;
    emit openingChanged(opening);
}

void PlaybackController::onNextVideoLoaded() {
    if (m_loader)
        m_loader->deleteLater();
    m_loader.clear();
    m_loadingHandler.clear();  // deletes itself
    try {
        m_loadResult.get();
    } catch (const std::exception& e) {
        LOG_ERROR(kLogger, "Failed to open video {}: {}", m_videos.at(m_nextIndex).mainFile.toStdString(), e.what());
        m_broken.at(m_nextIndex) = true;
        if (m_videos[m_nextIndex].problem.isEmpty())
            m_videos[m_nextIndex].problem = QString::fromStdString(e.what());
        m_nextPlayer.reset();
        if (!m_currentPlayer)
            playCurrentVideo();  // skips the broken file
        return;
    }
    if (!m_currentPlayer)
        playCurrentVideo();
}

size_t PlaybackController::playableFrom(size_t index) const {
    while (index < m_videos.size() && m_broken[index])
        ++index;
    return index;
}

void PlaybackController::reportSkipped(size_t index) {
    const Video& video = m_videos[index];
    LOG_WARN(kLogger, "Skipped video {}: {}", video.mainFile.toStdString(), video.problem.toStdString());
    emit recordingSkipped(
        tr("%1 cannot be played and is skipped. %2").arg(QFileInfo(video.mainFile).fileName(), video.problem));
}

void PlaybackController::startFrom(size_t index) {
    m_current = index;
    if (m_broken[index])
        playCurrentVideo(); // passes over it, and says so
    else
        preload(index);
}

void PlaybackController::playCurrentVideo() {
    for (; m_current < m_videos.size() && m_broken[m_current]; ++m_current)
        reportSkipped(m_current);
    if (m_current >= m_videos.size()) {
        stop();
        return;
    }
    if (!m_nextPlayer || m_nextIndex != m_current || m_loader) {
        // Not open yet (a slow disk, or a file skipped): show nothing until it is, then start from there.
        releasePlayer(m_currentPlayer);
        if (!m_nextPlayer || m_nextIndex != m_current)
            preload(m_current);
        updateOpening();
        return;
    }
    const Video& video = m_videos[m_current];
    LOG_DEBUG(kLogger, "Play video {}", video.mainFile.toStdString());
    m_lastPosition = -1;

    releasePlayer(m_currentPlayer);
    m_currentPlayer = std::move(m_nextPlayer);
    m_playingIndex = m_current;
    MultiAVPlayer* player = m_currentPlayer.get();

    std::vector<av::VideoWidget*> renderers{m_views.mainRenderer, m_views.rearRenderer};
    renderers.resize(player->playerCount());
    player->setRenderers(renderers);
    player->setSpeed(m_speed);
    player->setVolume(m_volume);

    connect(player, &MultiAVPlayer::positionChanged, this, &PlaybackController::onVideoPositionChanged,
            Qt::QueuedConnection);
    connect(player, &MultiAVPlayer::lastFramePlayed, this, &PlaybackController::playNextVideo);
    connect(player, &MultiAVPlayer::seekFinished, this, &PlaybackController::onSeekFinished);
    connect(player, &MultiAVPlayer::stateChanged, this, &PlaybackController::onPlayerStateChanged);
    connect(player, &MultiAVPlayer::imageCaptured, this, &PlaybackController::imageCaptured);

    // The rear widget would keep the previous file's last picture otherwise.
    if (player->playerCount() < 2 && m_views.rearRenderer)
        m_views.rearRenderer->clear();

    const qint64 startOffset = video.from.msecsTo(m_from);
    if (startOffset > 0)
        player->setStartPosition(startOffset);
    if (video.to > m_to)
        player->setStopPosition(video.from.msecsTo(m_to));

    if (m_paused || m_sliderHeld)
        player->playPaused();
    else
        player->play();
    if (m_pendingSeek)
        player->seek(m_pendingSeekMs);
    emit playerChanged(player);

    const size_t next = playableFrom(m_current + 1);
    if (next >= m_videos.size())
        dropNextPlayer();
    else
        preload(next);
    updateOpening();
}

void PlaybackController::onVideoPositionChanged(qint64) {
    if (!m_currentPlayer)
        return;
    const auto position = static_cast<qint64>(m_currentPlayer->videoTime() * 1000);
    // A file whose length is unknown (0) ends by its last picture instead.
    const qint64 duration = m_currentPlayer->duration();
    if (position < 0 || (duration > 0 && m_currentPlayer->position() >= duration)) {
        playNextVideo();
        return;
    }
    if (position == m_lastPosition)
        return;
    m_lastPosition = position;
    if (m_pendingSeek) {
        // The picture shown for a target between two frames starts before it: within a frame it is the one.
        if (position <= m_pendingSeekMs - kFrameToleranceMs)
            return;  // a picture from before the target
        m_pendingSeek = false;
    }
    updatePosition(std::min(m_videos[m_playingIndex].from.addMSecs(position), m_to));
}

void PlaybackController::playNextVideo() {
    // A seek not reached before the file ended was aimed at that file, not at the next one's offset.
    m_pendingSeek = false;
    m_current = m_playingIndex + 1;
    playCurrentVideo();
}

void PlaybackController::updatePosition(const QDateTime& time) {
    m_currentTime = time;
    if (m_views.map)
        m_views.map->setCurrentTime(time, m_userSeek);
    if (m_views.slider)
        m_views.slider->setTime(time);
    showStatus();
    m_userSeek = false;

    Interval cycle;
    if (outsideCycleInterval(time, &cycle))
        seekTo(cycle.first);
    showTimeOnPlots(time);
    emit positionUpdated(time);
}

void PlaybackController::showStatus() {
    std::string text =
        m_currentTime.toString(m_showDate ? QStringLiteral("yyyy.MM.dd hh:mm:ss") : QStringLiteral("hh:mm:ss"))
            .toStdString();
    if (m_speed != 1.0)
        text += fmt::format(" ({}x)", m_speed);
    if (applicationOptions().showFps && m_currentPlayer)
        text += fmt::format(" {:.1f}", m_currentPlayer->currentDisplayFps());
    const QString status = QString::fromStdString(text);
    if (status != m_statusText) {
        m_statusText = status;
        if (m_views.statusLabel)
            m_views.statusLabel->setText(status);
    }
}

void PlaybackController::showTimeOnPlots(const QDateTime& time) {
    for (const auto& entry : m_plots)
        if (entry.second)
            entry.second->setCurrentTime(time);
}

void PlaybackController::setPlots(std::map<PlotType, TrackPlot*> plots) {
    for (const auto& entry : m_plots)
        if (entry.second)
            disconnect(entry.second, nullptr, this, nullptr);
    m_plots.clear();
    for (const auto& entry : plots) {
        TrackPlot* plot = entry.second;
        if (!plot)
            continue;
        m_plots[entry.first] = plot;
        plot->setTrack(m_track, m_from, m_to);
        plot->setCurrentTime(m_currentTime);
        connect(plot, &TrackPlot::clicked, this, qOverload<double>(&PlaybackController::seekTo));
        // The plots stand one above the other: a zoom on one zooms them all.
        connect(plot, &TrackPlot::visibleRangeChanged, this, [this, plot](const QDateTime& from, const QDateTime& to) {
            for (const auto& other : m_plots)
                if (other.second && other.second != plot)
                    other.second->setVisibleRange(from, to);
        });
    }
}

bool PlaybackController::outsideCycleInterval(const QDateTime& time, Interval* interval) const {
    if (!m_cyclePlay || !m_cycleInterval)
        return false;
    const Interval cycle = m_cycleInterval();
    if (interval)
        *interval = cycle;
    return time < cycle.first || time > cycle.second;
}

void PlaybackController::seekTo(QDateTime dateTime) {
    Interval cycle;
    if (outsideCycleInterval(dateTime, &cycle))
        dateTime = cycle.first;
    if (m_views.slider)
        m_views.slider->seekTo(dateTime);
    else
        onSliderPositionChanged(dateTime);
}

void PlaybackController::seekTo(double timestamp) {
    seekTo(QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(timestamp * 1000)));
}

void PlaybackController::onSliderPositionChanged(QDateTime time) {
    m_userSeek = true;
    if (m_cyclePlay && m_cycleInterval) {
        const Interval cycle = m_cycleInterval();
        time = std::clamp(time, cycle.first, std::max(cycle.first, cycle.second));
    }
    if (time >= m_to) {
        stop();
        updatePosition(m_to);
        return;
    }
    if (m_videos.empty())
        return;
    // A moment where one file ends and the next begins belongs to the next: the end of a file has no picture.
    // A file's container often runs on past its last picture (its sound), into the next file's start; a moment
    // there belongs to the next file too, or a seek would aim past the earlier one's last picture.
    size_t index = m_videos.size() - 1;
    for (size_t i = 0; i < m_videos.size(); ++i)
        if (m_videos[i].to > time) {
            index = i;
            break;
        }
    while (index + 1 < m_videos.size() && m_videos[index + 1].from <= time)
        ++index;
    if (m_broken[index]) {
        // Nothing of it can be shown: on from the next file that plays.
        dropPlayers();
        m_pendingSeek = false;
        m_current = index;
        playCurrentVideo();
        return;
    }
    const qint64 offset = std::max<qint64>(0, m_videos[index].from.msecsTo(time));
    if (m_currentPlayer && m_playingIndex == index) {
        m_current = index;
        m_currentPlayer->seek(offset);
        return;
    }
    dropPlayers();
    m_current = index;
    m_pendingSeekMs = offset;
    m_pendingSeek = true;
    preload(index);
}

void PlaybackController::onCoordinatesFromMap(double longitude, double latitude) {
    const std::optional<double> seconds = nearestTrackTime(m_track, longitude, latitude);
    if (!seconds)
        return;
    seekTo(QDateTime::fromSecsSinceEpoch(static_cast<qint64>(*seconds)));
}

void PlaybackController::slowDown() {
    if (m_speed > kMinSpeed)
        m_speed /= 2;
    if (m_currentPlayer)
        m_currentPlayer->setSpeed(m_speed);
}

void PlaybackController::speedUp() {
    if (m_speed < kMaxSpeed)
        m_speed *= 2;
    if (m_currentPlayer)
        m_currentPlayer->setSpeed(m_speed);
}

void PlaybackController::togglePause() {
    m_speed = 1.0;
    m_paused = !m_paused;
    showStatus();  // a paused picture sends no more positions that would drop the old speed from the label
    if (m_sliderHeld) {
        if (m_paused)
            emit stopped();
        else
            emit started();
        return;
    }
    if (m_currentPlayer) {
        m_currentPlayer->setSpeed(m_speed);
        m_currentPlayer->togglePause();
        return;
    }
    if (m_loader) {
        dropNextPlayer();
        updateOpening();
        return;
    }
    // After the end: play the item again from its start.
    m_paused = false;
    m_pendingSeek = false;
    startFrom(0);
}

bool PlaybackController::restart(bool force) {
    if (m_cyclePlay && m_cycleInterval) {
        seekTo(m_cycleInterval().first);
        return true;
    }
    if (!force && m_current == 0 &&
        (!m_currentPlayer || m_currentPlayer->position() - m_currentPlayer->startPosition() < kRestartGraceMs))
        return false;
    dropPlayers();
    m_paused = false;
    m_pendingSeek = false;
    m_current = 0;
    if (!m_videos.empty())
        startFrom(0);
    return true;
}

void PlaybackController::resume() {
    if (m_currentPlayer)
        m_currentPlayer->pause(false);
}

void PlaybackController::onSliderMousePressed() {
    if (m_paused)
        return;
    m_sliderHeld = true;
    if (m_currentPlayer)
        m_currentPlayer->pause(true);
}

void PlaybackController::onSliderMouseReleased() {
    m_sliderHeld = false;
    if (!m_paused)
        resume();
}

void PlaybackController::onSeekFinished(qint64) {
    if (!m_sliderHeld && !m_paused)
        resume();
}

void PlaybackController::onPlayerStateChanged(av::Player::State state) {
    if (m_sliderHeld)
        return;
    m_paused = state == av::Player::State::Paused;
    if (m_paused)
        emit stopped();
    else
        emit started();
}

void PlaybackController::startCyclePlay(IntervalProvider provider) {
    stopCyclePlay();
    m_cycleInterval = std::move(provider);
    m_cyclePlay = true;
    onCyclePlayIntervalChanged();
}

void PlaybackController::stopCyclePlay() {
    m_cycleInterval = nullptr;
    m_cyclePlay = false;
    m_sliderHeld = false;
    if (!m_paused)
        resume();
}

void PlaybackController::onCyclePlayIntervalChanged() {
    if (!m_cyclePlay || !m_cycleInterval)
        return;
    const Interval cycle = m_cycleInterval();
    if (cycle.first == cycle.second) {
        // A zero-length interval: hold the picture at that moment.
        m_sliderHeld = true;
        if (m_currentPlayer)
            m_currentPlayer->pause(true);
        if (m_views.slider)
            m_views.slider->setTime(cycle.first);
        seekTo(cycle.first);
        showTimeOnPlots(cycle.first);
        emit positionUpdated(cycle.first);
        return;
    }
    m_sliderHeld = false;
    if (!m_paused)
        resume();
    if (outsideCycleInterval(m_views.slider ? m_views.slider->time() : m_currentTime))
        seekTo(cycle.first);
}

void PlaybackController::stop() {
    if (m_cyclePlay && m_cycleInterval) {
        seekTo(m_cycleInterval().first);
        return;
    }
    dropPlayers();
    // The label goes to the item's end: a picture left from before would belong to another moment.
    for (av::VideoWidget* renderer : {m_views.mainRenderer, m_views.rearRenderer})
        if (renderer)
            renderer->clear();
    updateOpening();
    updatePosition(m_to);
    m_paused = true;
    emit stopped();
}

void PlaybackController::capture(std::set<size_t> players) {
    if (!m_currentPlayer)
        throw std::logic_error("PlaybackController::capture called without m_currentVideoPlayer");
    if (players.empty())
        for (size_t i = 0; i < m_currentPlayer->playerCount(); ++i)
            players.insert(i);
    m_currentPlayer->startCapture(std::move(players));
}

void PlaybackController::setVolume(double volume) {
    m_volume = volume;
    if (m_currentPlayer)
        m_currentPlayer->setVolume(volume);
}
