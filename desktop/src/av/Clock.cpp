// The playback clock and its time sources.
#include "av/Clock.h"

#include <chrono>

namespace av {

qint64 SteadyTimeSource::nowUs() const {
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}

std::shared_ptr<TimeSource> SteadyTimeSource::instance() {
    static const auto source = std::make_shared<SteadyTimeSource>();
    return source;
}

qint64 ManualTimeSource::nowUs() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_nowUs;
}

void ManualTimeSource::advanceMs(double ms) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_nowUs += static_cast<qint64>(ms * 1000.0);
}

Clock::Clock(std::shared_ptr<TimeSource> time) : m_time(time ? std::move(time) : SteadyTimeSource::instance()) {
    m_baseUs = m_time->nowUs();
}

double Clock::valueLocked() const {
    if (!m_active || m_paused)
        return m_baseMs;
    return m_baseMs + static_cast<double>(m_time->nowUs() - m_baseUs) / 1000.0 * m_speed;
}

// Folds the time run so far into the base, so that a change of speed or pause takes effect from now.
void Clock::rebaseLocked() {
    m_baseMs = valueLocked();
    m_baseUs = m_time->nowUs();
}

void Clock::reset() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_baseMs = 0;
    m_baseUs = m_time->nowUs();
    m_active = false;
    m_paused = false;
}

void Clock::start() {
    std::lock_guard<std::mutex> lock(m_mutex);
    rebaseLocked();
    m_active = true;
}

bool Clock::isActive() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_active;
}

void Clock::pause(bool paused) {
    std::lock_guard<std::mutex> lock(m_mutex);
    rebaseLocked();
    m_paused = paused;
}

bool Clock::isPaused() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_paused;
}

bool Clock::isRunning() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_active && !m_paused;
}

void Clock::setSpeed(double speed) {
    std::lock_guard<std::mutex> lock(m_mutex);
    rebaseLocked();
    m_speed = speed;
}

double Clock::speed() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_speed;
}

double Clock::valueMs() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return valueLocked();
}

void Clock::setValueMs(double ms) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_baseMs = ms;
    m_baseUs = m_time->nowUs();
}

void Clock::syncTo(const Clock& other) {
    if (&other == this)
        return;
    setValueMs(other.valueMs());
}

} // namespace av
