// The player facade and its presenter.
#include "av/Player.h"

#include "av/AudioSink.h"
#include "av/FrameConverter.h"
#include "av/MediaPipeline.h"
#include "av/VideoWidget.h"
#include "logging/Logging.h"

#include <QAudioDeviceInfo>
#include <QAudioOutput>
#include <QCoreApplication>
#include <QThreadPool>

#include <algorithm>

namespace av {
namespace {
constexpr const char* kLogger = "av.Player";
// 5 ms: a picture is shown at most this late; at 8x of 30 fps pictures are 4 ms apart, and the
// presenter then drops the ones it cannot show anyway.
constexpr int kPresentIntervalMs = 5;
// The end of a file is announced this much before its last picture's time is up: what follows (the next
// file's player taking over) takes about as long, so its first picture comes on time.
constexpr double kEndLeadMs = 1.0;

// Whether the machine has a sound device that takes our format; asked once per process, as it may be slow.
// Only a player's constructor asks, so the first question comes from the GUI thread: Qt's audio plugins
// are loaded and set up by the first caller, and a loader thread must not do that while the GUI thread
// opens an output.
bool soundDeviceAvailable() {
    static const bool available = [] {
        const QAudioDeviceInfo device = QAudioDeviceInfo::defaultOutputDevice();
        const bool usable = !device.isNull() && device.isFormatSupported(AudioSink::format());
        if (!usable)
            LOG_INFO(kLogger, "No usable audio output device, playing without sound");
        return usable;
    }();
    return available;
}
} // namespace

Player::Player(std::shared_ptr<TimeSource> time, QObject* parent)
    : QObject(parent), m_clock(std::move(time)), m_audioSink(std::make_unique<AudioSink>()),
      m_soundDevice(soundDeviceAvailable()) {
    qRegisterMetaType<av::Player::State>("av::Player::State");
    m_presenter.setTimerType(Qt::PreciseTimer);
    m_presenter.setInterval(kPresentIntervalMs);
    connect(&m_presenter, &QTimer::timeout, this, &Player::present);
    // Ticks are too coarse for the end of a file: the moment it is due gets a timer of its own.
    m_endTimer.setTimerType(Qt::PreciseTimer);
    m_endTimer.setSingleShot(true);
    connect(&m_endTimer, &QTimer::timeout, this, &Player::present);
}

Player::~Player() {
    if (m_audioOutput)
        m_audioOutput->stop();
    m_pipeline.reset();  // joins the threads before the sink they write to goes
}

void Player::setFile(const QString& file) {
    m_file = file;
}

void Player::load() {
    m_pipeline.reset();
    m_current = {};
    m_pipeline = std::make_unique<MediaPipeline>(m_file, m_clock, m_soundDevice ? m_audioSink.get() : nullptr);
    // The answer to a seek goes to the screen at once rather than at the presenter's next tick.
    m_pipeline->setSeekAnswered([this] {
        QMetaObject::invokeMethod(this, [this] {
            if (m_seeking)
                present();
        }, Qt::QueuedConnection);
    });
    m_current = m_pipeline->firstFrame();
    if (m_renderer)
        m_pipeline->setPictureTarget(m_renderer->pictureTarget());
    m_serial = m_pipeline->serial();
    m_ended = m_seeking = m_stepPending = false;
    // The threads start with the first play, seek or step: a file loaded ahead holds only its first picture.
    LOG_DEBUG(kLogger, "Loaded {}", m_file.toStdString());
}

void Player::setRenderer(VideoWidget* renderer) {
    m_renderer = renderer;
    if (m_pipeline)
        m_pipeline->setPictureTarget(m_renderer ? m_renderer->pictureTarget() : nullptr);
    if (m_renderer && m_current.frame)
        m_renderer->setFrame(m_current.frame, m_current.picture);
}

void Player::play() {
    if (!m_pipeline) {
        LOG_ERROR(kLogger, "play() called before load() for {}", m_file.toStdString());
        return;
    }
    m_pipeline->start();
    const double start = static_cast<double>(m_startPosition);
    const bool atFirstFrame = m_current.ptsMs == m_pipeline->firstFrame().ptsMs;
    const bool showsStart = start < m_current.endMs() && (start >= m_current.ptsMs || atFirstFrame);
    m_ended = false;
    m_stepPending = false;
    if (showsStart)
        m_clock.setValueMs(std::max(start, m_current.ptsMs));
    else
        beginSeek(start);
    m_clock.start();
    m_hasPlayed = true;
    startAudio();
    setState(State::Playing);
    updatePresenter();
    m_sinceNotify.start();
    emit started();
    present(); // the first picture now, not at the next tick
}

void Player::pause(bool paused) {
    if (!m_pipeline)
        return;
    // A player that ended may play on after a seek back into the file (cycle play), not before.
    if (m_state == State::Stopped && (paused || !m_hasPlayed || m_ended))
        return;
    setState(paused ? State::Paused : State::Playing);
}

void Player::setPosition(qint64 ms) {
    if (!m_pipeline)
        return;
    double target = std::max<double>(0, static_cast<double>(ms));
    if (m_pipeline->durationMs() > 0)
        target = std::min(target, m_pipeline->durationMs());
    m_ended = false;
    m_stepPending = false;
    beginSeek(target);
    updatePresenter();
}

void Player::beginSeek(double ms) {
    m_pipeline->start();
    m_seeking = true;
    m_seekTarget = ms;
    m_serial = m_pipeline->seek(ms);  // frames of older serials are thrown away unseen
    m_pipeline->frames().clear();      // and need not hold up the decoder until the presenter drops them
    m_clock.setValueMs(ms);
    updateClockAndSound();
}

void Player::stepForward() {
    if (!m_pipeline || m_ended)
        return;
    m_pipeline->start();
    if (m_state == State::Playing)
        setState(State::Paused);
    m_stepPending = true;
    updateClockAndSound();
    updatePresenter();
}

void Player::setSpeed(double speed) {
    if (speed <= 0)
        return;
    m_clock.setSpeed(speed);
}

void Player::setVolume(double volume) {
    m_volume = volume;
    if (m_audioOutput)
        m_audioOutput->setVolume(volume);
}

void Player::setStartPosition(qint64 ms) {
    m_startPosition = std::max<qint64>(0, ms);
}

void Player::setStopPosition(qint64 ms) {
    m_stopPosition = ms;
}

qint64 Player::position() const {
    return static_cast<qint64>(m_current.ptsMs);
}

double Player::videoTime() const {
    return m_current.ptsMs / 1000.0;
}

qint64 Player::duration() const {
    return m_pipeline ? static_cast<qint64>(m_pipeline->durationMs()) : 0;
}

void Player::setNotifyInterval(int ms) {
    m_notifyInterval = std::max(1, ms);
}

int Player::framesDropped() const {
    return m_framesSkipped + (m_pipeline ? m_pipeline->lateFramesDropped() : 0);
}

void Player::setState(State state) {
    if (state == m_state)
        return;
    m_state = state;
    updateClockAndSound();
    updatePresenter();
    emit stateChanged(state);
}

// The presenter wakes the GUI thread every few milliseconds: it runs only while a picture may be due.
void Player::updatePresenter() {
    const bool due = m_pipeline && (m_seeking || m_stepPending || (m_state == State::Playing && !m_ended));
    if (!due)
        m_presenter.stop();
    else if (!m_presenter.isActive())
        m_presenter.start();
}

// The clock runs only while playing and nothing holds it: a seek in flight, a pending step, the end.
void Player::updateClockAndSound() {
    const bool running = m_state == State::Playing && !m_seeking && !m_stepPending && !m_ended;
    m_clock.pause(!running);
    if (!m_audioOutput)
        return;
    if (running) {
        m_audioOutput->resume();
    } else {
        m_audioOutput->suspend();
        m_audioSink->clear();
    }
}

void Player::startAudio() {
    if (m_audioOutput || !m_pipeline->hasAudio() || !m_soundDevice)
        return;
    m_audioOutput = new QAudioOutput(QAudioDeviceInfo::defaultOutputDevice(), AudioSink::format(), this);
    // 100 ms: short enough for the sound to follow the picture, long enough not to starve.
    m_audioOutput->setBufferSize(AudioSink::format().bytesForDuration(100000));
    m_audioOutput->setVolume(m_volume);
    m_audioOutput->start(m_audioSink.get());
}

void Player::present() {
    if (!m_pipeline)
        return;
    FrameQueue& frames = m_pipeline->frames();
    const double now = m_seeking ? m_seekTarget : m_clock.valueMs();
    const bool stopSet = m_stopPosition >= 0;
    std::optional<VideoFrame> toShow;
    bool finishedSeek = false;
    while (auto next = frames.peek()) {
        if (next->serial != m_serial) {  // left over from before a seek
            frames.pop();
            continue;
        }
        if (m_seeking) {
            frames.pop();
            m_seeking = false;
            finishedSeek = true;
            if (next->endOfStream) {
                m_ended = true;  // sought past the last picture: the current one stays
            } else {
                toShow = *next;
                m_clock.setValueMs(std::max(m_seekTarget, next->ptsMs));
            }
            break;
        }
        if (m_ended)
            break;
        const bool beyondStop = stopSet && !next->endOfStream && next->ptsMs >= static_cast<double>(m_stopPosition);
        if (m_stepPending) {
            m_stepPending = false;
            frames.pop();
            if (next->endOfStream || beyondStop) {
                reachEnd();
            } else {
                toShow = *next;
                m_clock.setValueMs(next->ptsMs);
            }
            updateClockAndSound();
            break;
        }
        if (next->endOfStream || beyondStop) {
            const double end = beyondStop ? static_cast<double>(m_stopPosition) : m_current.endMs();
            if (m_state == State::Playing && !toShow) {
                const double speed = std::max(m_clock.speed(), 1e-3);
                const double realMsLeft = (end - now) / speed - kEndLeadMs;
                if (realMsLeft <= 0) {
                    frames.pop();
                    reachEnd();
                } else if (realMsLeft < kPresentIntervalMs) {
                    m_endTimer.start(static_cast<int>(realMsLeft));
                }
            }
            break;
        }
        if (next->ptsMs > now)
            break;
        if (toShow)
            ++m_framesSkipped;  // its successor is due too: this one came too late to be seen
        toShow = *next;
        frames.pop();
    }
    if (toShow)
        show(*toShow);
    if (finishedSeek) {
        updateClockAndSound();
        if (m_ended && m_state == State::Playing) {
            m_ended = false;
            reachEnd();
        }
        emit seekFinished(position());
        notifyPosition(true);
    } else if (m_state == State::Playing && !m_ended) {
        notifyPosition(false);
    }
    updatePresenter();
}

void Player::show(const VideoFrame& frame) {
    m_current = frame;
    ++m_framesShown;
    ++m_fpsCount;
    if (!m_fpsWindow.isValid())
        m_fpsWindow.start();
    if (m_fpsWindow.elapsed() >= 1000) {
        m_displayFps = m_fpsCount * 1000.0 / static_cast<double>(m_fpsWindow.restart());
        m_fpsCount = 0;
    }
    if (m_renderer)
        m_renderer->setFrame(frame.frame, frame.picture);
    emit frameShown();
}

void Player::reachEnd() {
    m_ended = true;
    notifyPosition(true);
    setState(State::Stopped);
    updateClockAndSound();
    LOG_DEBUG(kLogger, "End of {} at {} ms", m_file.toStdString(), position());
    emit endOfMedia();
}

void Player::notifyPosition(bool force) {
    if (!force && m_sinceNotify.isValid() && m_sinceNotify.elapsed() < m_notifyInterval)
        return;
    m_sinceNotify.start();
    emit positionChanged(position());
}

void Player::capture() {
    const SharedFrame frame = m_current.frame;
    QPointer<Player> self(this);
    QThreadPool::globalInstance()->start([frame, self] {
        const QImage image = FrameConverter().convert(frame.get());
        QMetaObject::invokeMethod(QCoreApplication::instance(), [self, image] {
            if (self)
                emit self->imageCaptured(image);
        }, Qt::QueuedConnection);
    });
}

} // namespace av
