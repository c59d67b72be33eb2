// The progress slider under the video: the time line of one playlist item, seeking where the pointer is.
#pragma once

#include <QDateTime>
#include <QSlider>
#include <QTimer>

// Range 0..kSteps over the item's interval. A change of value (by the user or by setValue) reports
// positionChanged() after a short delay, so that a drag seeks once it rests rather than at every pixel;
// setTime() moves the handle without reporting anything.
//
//   slider->setInterval(item.from, item.to);
//   connect(slider, &VideoProgressSlider::positionChanged, controller, &PlaybackController::onSliderPositionChanged);
class VideoProgressSlider : public QSlider {
    Q_OBJECT
public:
    static constexpr int kSteps = 1'000'000;

    explicit VideoProgressSlider(QWidget* parent = nullptr);

    void setInterval(const QDateTime& from, const QDateTime& to);
    QDateTime from() const { return m_from; }
    QDateTime to() const { return m_to; }

    int valueOf(const QDateTime& time) const;
    QDateTime timeOf(int value) const;
    QDateTime time() const { return timeOf(value()); }

    // Moves the handle without any signal.
    void setTime(const QDateTime& time);
    // Asks for a seek: a new value reports after the delay, the current value reports at once.
    void seekTo(const QDateTime& time);

    // How the tooltip shows the time under the pointer ("hh:mm:ss" unless set).
    void setTimeFormat(const QString& format) { m_timeFormat = format; }

signals:
    void positionChanged(QDateTime time);
    void mousePressed();
    void mouseReleased();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    int valueAt(const QPoint& point) const;
    double msPerStep() const;
    void onValueChanged(int value);

    QDateTime m_from;
    QDateTime m_to;
    QString m_timeFormat = QStringLiteral("hh:mm:ss");
    QTimer m_reportTimer;
    QDateTime m_pendingTime;
    bool m_pressed = false;
};
