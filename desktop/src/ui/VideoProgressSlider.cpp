// The progress slider: mapping between times and steps, delayed reports, seeking under the pointer.
#include "ui/VideoProgressSlider.h"

#include <QMouseEvent>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace {
// Long enough to coalesce the values of a drag, short enough to feel immediate.
constexpr int kReportDelayMs = 50;
} // namespace

VideoProgressSlider::VideoProgressSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
    setRange(0, kSteps);
    setMouseTracking(true);
    m_reportTimer.setSingleShot(true);
    m_reportTimer.setInterval(kReportDelayMs);
    connect(&m_reportTimer, &QTimer::timeout, this, [this] { emit positionChanged(m_pendingTime); });
    connect(this, &QSlider::valueChanged, this, &VideoProgressSlider::onValueChanged);
}

void VideoProgressSlider::setInterval(const QDateTime& from, const QDateTime& to) {
    m_from = from;
    m_to = to;
    m_reportTimer.stop();
    const QSignalBlocker blocker(this);
    setValue(0);
}

double VideoProgressSlider::msPerStep() const {
    if (!m_from.isValid() || !m_to.isValid())
        return 0;
    return static_cast<double>(m_from.msecsTo(m_to)) / kSteps;
}

int VideoProgressSlider::valueOf(const QDateTime& time) const {
    const double perStep = msPerStep();
    if (perStep <= 0)
        return 0;
    const double steps = std::round(static_cast<double>(m_from.msecsTo(time)) / perStep);
    return static_cast<int>(std::clamp(steps, 0.0, static_cast<double>(kSteps)));
}

QDateTime VideoProgressSlider::timeOf(int value) const {
    return m_from.addMSecs(std::llround(value * msPerStep()));
}

void VideoProgressSlider::setTime(const QDateTime& time) {
    const QSignalBlocker blocker(this);
    setValue(valueOf(time));
}

void VideoProgressSlider::seekTo(const QDateTime& time) {
    const int value = valueOf(time);
    if (value != this->value()) {
        setValue(value);
        m_pendingTime = time;  // the exact time, not the step's
    } else {
        m_reportTimer.stop();
        emit positionChanged(time);
    }
}

void VideoProgressSlider::onValueChanged(int value) {
    m_pendingTime = timeOf(value);
    // Not restarted by later changes: a drag, or seeks arriving faster than the delay, still report.
    if (!m_reportTimer.isActive())
        m_reportTimer.start();
}

int VideoProgressSlider::valueAt(const QPoint& point) const {
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect groove = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderGroove, this);
    const QRect handle = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    const int span = groove.width() - handle.width();
    const int x = point.x() - groove.x() - handle.width() / 2;
    return QStyle::sliderValueFromPosition(minimum(), maximum(), x, std::max(1, span), option.upsideDown);
}

// A press jumps to the pointer at once (not page by page) and holds playback until released.
void VideoProgressSlider::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        QSlider::mousePressEvent(event);
        return;
    }
    m_pressed = true;
    setSliderDown(true);
    emit mousePressed();
    setValue(valueAt(event->pos()));
    event->accept();
}

void VideoProgressSlider::mouseMoveEvent(QMouseEvent* event) {
    const int value = valueAt(event->pos());
    QToolTip::showText(event->globalPos(), timeOf(value).toString(m_timeFormat), this);
    if (m_pressed)
        setValue(value);
    event->accept();
}

void VideoProgressSlider::mouseReleaseEvent(QMouseEvent* event) {
    if (!m_pressed) {
        QSlider::mouseReleaseEvent(event);
        return;
    }
    m_pressed = false;
    setSliderDown(false);
    emit mouseReleased();
    event->accept();
}
