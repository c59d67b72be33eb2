// The multi-camera player: shared clock, synchronisation and joined capture.
#include "ui/MultiAVPlayer.h"

#include "logging/Logging.h"

#include <QPainter>
#include <QTimerEvent>
#include <QTransform>

#include <algorithm>
#include <stdexcept>

namespace {
constexpr const char* kLogger = "ui.MultiAVPlayer";
// 500 ms: often enough that the cameras never drift a frame apart, rare enough to cost nothing.
constexpr int kSyncIntervalMs = 500;
} // namespace

MultiAVPlayer::MultiAVPlayer(size_t players, std::shared_ptr<av::TimeSource> time)
    : m_clock(std::make_unique<av::Clock>(time)) {
    if (players == 0)
        throw std::logic_error("MultiAVPlayer::MultiAVPlayer called with zero players");
    m_players.reserve(players);
    for (size_t i = 0; i < players; ++i) {
        auto* player = new av::Player(time);
        m_players.push_back(player);
        connect(player, &av::Player::started, this, &MultiAVPlayer::changeClockType);
        connect(player, &av::Player::imageCaptured, this,
                [this, i](const QImage& image) { onImageCaptured(i, image); });
        connect(player, &av::Player::seekFinished, this, &MultiAVPlayer::onPlayerSeekFinished);
    }
    av::Player* main = m_players.front();
    connect(main, &av::Player::stateChanged, this, &MultiAVPlayer::stateChanged);
    connect(main, &av::Player::positionChanged, this, &MultiAVPlayer::positionChanged);
    connect(main, &av::Player::seekFinished, this, &MultiAVPlayer::seekFinished);
    connect(main, &av::Player::endOfMedia, this, &MultiAVPlayer::lastFramePlayed);
}

MultiAVPlayer::~MultiAVPlayer() {
    m_captureTask.reset();
    for (av::Player* player : m_players)
        delete player;
    m_clock.reset();
}

void MultiAVPlayer::checkSize(size_t given) const {
    // Reported under the name of setRenderers for setFiles too: both check the same thing.
    if (given != m_players.size())
        throw std::logic_error(fmt::format("MultiAVPlayer::setRenderers called with invalid container size: {} instead of {}",
                                           given, m_players.size()));
}

void MultiAVPlayer::setFiles(const std::vector<QString>& files) {
    checkSize(files.size());
    for (size_t i = 0; i < m_players.size(); ++i)
        m_players[i]->setFile(files[i]);
}

void MultiAVPlayer::setRenderers(const std::vector<av::VideoWidget*>& renderers) {
    checkSize(renderers.size());
    for (size_t i = 0; i < m_players.size(); ++i)
        m_players[i]->setRenderer(renderers[i]);
}

void MultiAVPlayer::load() {
    for (av::Player* player : m_players)
        player->load();
}

void MultiAVPlayer::start() {
    m_clock->reset();
    m_clock->setValueMs(static_cast<double>(m_players.front()->startPosition()));
    m_clock->start();
    for (av::Player* player : m_players) {
        player->masterClock().syncTo(*m_clock);
        player->play();
    }
    if (m_timerId != 0)
        killTimer(m_timerId);
    m_timerId = startTimer(kSyncIntervalMs, Qt::CoarseTimer);
}

void MultiAVPlayer::play() {
    start();
}

void MultiAVPlayer::playPaused() {
    for (av::Player* player : m_players)
        connect(player, &av::Player::started, this, [player] {
            QObject::disconnect(player, &av::Player::started, nullptr, nullptr);
            player->pause(true);
        });
    start();
    m_clock->pause(true);
}

void MultiAVPlayer::pause(bool paused) {
    m_clock->pause(paused);
    for (av::Player* player : m_players) {
        player->masterClock().syncTo(*m_clock);
        player->pause(paused);
    }
}

void MultiAVPlayer::togglePause() {
    pause(!m_clock->isPaused());
}

void MultiAVPlayer::seek(qint64 ms) {
    m_clock->setValueMs(static_cast<double>(ms));
    m_seeksPending = m_players.size();
    for (av::Player* player : m_players)
        player->setPosition(ms);
}

// Each player holds its own clock while it looks for the target; the shared clock ran on meanwhile.
// Once all have found it, they start together from the target again.
void MultiAVPlayer::onPlayerSeekFinished() {
    if (m_seeksPending == 0 || --m_seeksPending > 0)
        return;
    m_clock->setValueMs(m_players.front()->masterClock().valueMs());
    for (av::Player* player : m_players)
        player->masterClock().syncTo(*m_clock);
}

void MultiAVPlayer::setSpeed(double speed) {
    m_clock->setSpeed(speed);
    for (av::Player* player : m_players)
        player->setSpeed(speed);
}

void MultiAVPlayer::setVolume(double volume) {
    for (av::Player* player : m_players)
        player->setVolume(volume);
}

void MultiAVPlayer::setStartPosition(qint64 ms) {
    for (av::Player* player : m_players)
        player->setStartPosition(ms);
}

void MultiAVPlayer::setStopPosition(qint64 ms) {
    for (av::Player* player : m_players)
        player->setStopPosition(ms);
}

void MultiAVPlayer::setNotifyInterval(int ms) {
    m_players.front()->setNotifyInterval(ms);
}

void MultiAVPlayer::stepForward() {
    for (av::Player* player : m_players)
        player->stepForward();
}

qint64 MultiAVPlayer::position() const {
    return m_players.front()->position();
}

qint64 MultiAVPlayer::startPosition() const {
    return m_players.front()->startPosition();
}

qint64 MultiAVPlayer::duration() const {
    qint64 longest = 0;
    for (const av::Player* player : m_players)
        longest = std::max(longest, player->duration());
    return longest;
}

double MultiAVPlayer::videoTime() const {
    return m_players.front()->videoTime();
}

double MultiAVPlayer::currentDisplayFps() const {
    return m_players.front()->displayFps();
}

// Every player shows its pictures against the time it is given, never against its own sound or decoding.
void MultiAVPlayer::changeClockType() {
    auto* player = qobject_cast<av::Player*>(sender());
    if (!player) {
        LOG_ERROR(kLogger, "MultiAVPlayer::changeClockType called without valid sender");
        return;
    }
    player->masterClock().syncTo(*m_clock);
}

void MultiAVPlayer::timerEvent(QTimerEvent* event) {
    if (event->timerId() != m_timerId) {
        LOG_WARN(kLogger, "Unknown timer called MultiAVPlayer::timerEvent");
        return;
    }
    if (!m_clock->isActive())
        return;
    // A player whose speed differs is just taking a new speed; it joins again in the next round.
    for (av::Player* player : m_players)
        if (player->masterClock().speed() == m_clock->speed())
            player->masterClock().syncTo(*m_clock);
}

void MultiAVPlayer::startCapture(std::set<size_t> players) {
    if (m_captureTask)
        throw std::runtime_error("Another capture task in progress");
    if (std::any_of(players.begin(), players.end(), [this](size_t n) { return n >= m_players.size(); }))
        throw std::runtime_error("Invalid player No.");
    LOG_INFO(kLogger, "Start capture tasks: {}", players.size());
    m_captureTask = CaptureTask{players, {}};
    for (size_t n : players) {
        m_players[n]->capture();
        LOG_DEBUG(kLogger, "Start capture task for player #{}", n);
    }
}

void MultiAVPlayer::onImageCaptured(size_t playerNo, const QImage& image) {
    if (!m_captureTask || m_captureTask->players.count(playerNo) == 0 || m_captureTask->images.count(playerNo) != 0) {
        LOG_WARN(kLogger, "Unknown capture done for player #{}", playerNo);
        return;
    }
    LOG_DEBUG(kLogger, "Got image from player #{}", playerNo);
    const av::VideoWidget* renderer = m_players[playerNo]->renderer();
    const int orientation = renderer ? renderer->orientation() : 0;
    const QImage turned = orientation == 0 ? image : image.transformed(QTransform().rotate(-orientation));
    if (m_captureTask->players.size() == 1) {
        m_captureTask.reset();
        emit imageCaptured(turned);
        return;
    }
    m_captureTask->images[playerNo] = turned;
    if (m_captureTask->images.size() < m_captureTask->players.size())
        return;

    int width = 0;
    int height = 0;
    for (const auto& entry : m_captureTask->images) {
        width += entry.second.width();
        height = std::max(height, entry.second.height());
    }
    QImage joined(width, height, QImage::Format_RGB888);
    joined.fill(QColor(0, 0, 0, 255));
    {
        QPainter painter(&joined);
        painter.setBackground(QColor(0, 0, 0, 255));
        painter.setBackgroundMode(Qt::OpaqueMode);
        int x = 0;
        for (const auto& entry : m_captureTask->images) {
            painter.drawImage(x, 0, entry.second);
            x += entry.second.width();
        }
    }
    m_captureTask.reset();
    emit imageCaptured(joined);
}
