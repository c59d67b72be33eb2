// A small spinner drawn over a widget while something it will show is being prepared.
#pragma once

#include <QTimer>
#include <QWidget>

// User-interface thread only. A child of the widget it covers: it follows the widget's size, lets the
// mouse through and paints only the spinner in the middle. It appears a moment after start(), so that a
// wait too short to notice shows nothing.
//
//   auto* waiting = new WaitingAnimation(videoPane);
//   connect(controller, &PlaybackController::openingChanged, waiting, [waiting](bool on) { on ? waiting->start() : waiting->stop(); });
class WaitingAnimation : public QWidget {
    Q_OBJECT
public:
    explicit WaitingAnimation(QWidget* over);

    void start();
    void stop();
    bool isRunning() const { return m_running; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void advance();

    QTimer m_showTimer;
    QTimer m_frameTimer;
    int m_step = 0;
    bool m_running = false;
};
