// The playback clock: media time in milliseconds that runs at a speed, can pause, and reads a replaceable time source.
#pragma once

#include <QtGlobal>

#include <memory>
#include <mutex>

namespace av {

// Where a clock reads the passing of real time. Tests use ManualTimeSource to step time by hand.
class TimeSource {
public:
    virtual ~TimeSource() = default;
    // Microseconds on a monotonic scale; only differences matter.
    virtual qint64 nowUs() const = 0;
};

// The system's monotonic clock.
class SteadyTimeSource : public TimeSource {
public:
    qint64 nowUs() const override;
    static std::shared_ptr<TimeSource> instance();
};

// Time that moves only when told to. Thread-safe.
class ManualTimeSource : public TimeSource {
public:
    qint64 nowUs() const override;
    void advanceMs(double ms);

private:
    mutable std::mutex m_mutex;
    qint64 m_nowUs = 0;
};

// A clock of media time. Stopped (inactive) until start(); while active it advances by speed x real time
// unless paused. Every call is thread-safe: the decoder threads read it, the GUI thread drives it.
//
//   av::Clock clock;
//   clock.setValue(1500); clock.start();   // runs from 1.5 s
//   clock.setSpeed(2.0);                   // now twice as fast, without a jump
class Clock {
public:
    explicit Clock(std::shared_ptr<TimeSource> time = {});

    // Back to value 0, inactive, not paused; the speed is kept.
    void reset();
    void start();
    bool isActive() const;
    void pause(bool paused);
    bool isPaused() const;
    // True when the value moves: active and not paused.
    bool isRunning() const;

    void setSpeed(double speed);
    double speed() const;

    // Current media time in milliseconds.
    double valueMs() const;
    void setValueMs(double ms);
    // Takes the current value of another clock (the shared one), keeping own speed and pause state.
    void syncTo(const Clock& other);

    const std::shared_ptr<TimeSource>& timeSource() const { return m_time; }

private:
    double valueLocked() const;
    void rebaseLocked();

    std::shared_ptr<TimeSource> m_time;
    mutable std::mutex m_mutex;
    double m_baseMs = 0;     // value at m_baseUs
    qint64 m_baseUs = 0;     // time source reading when the value was last set
    double m_speed = 1.0;
    bool m_active = false;
    bool m_paused = false;
};

} // namespace av
