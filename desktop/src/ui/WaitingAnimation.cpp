// The waiting spinner: twelve spokes whose brightness runs round.
#include "ui/WaitingAnimation.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>

namespace {
constexpr int kSpokes = 12;
constexpr int kFrameMs = 80;         // a turn a second, calm enough for a long wait
constexpr int kShowDelayMs = 250;    // shorter waits pass without a flash
constexpr int kDiameter = 44;        // pixels, at most a third of the covered widget
} // namespace

WaitingAnimation::WaitingAnimation(QWidget* over) : QWidget(over) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    setFocusPolicy(Qt::NoFocus);
    hide();
    if (over) {
        setGeometry(over->rect());
        over->installEventFilter(this);
    }
    m_showTimer.setSingleShot(true);
    m_showTimer.setInterval(kShowDelayMs);
    connect(&m_showTimer, &QTimer::timeout, this, [this] {
        show();
        raise();
    });
    m_frameTimer.setInterval(kFrameMs);
    connect(&m_frameTimer, &QTimer::timeout, this, &WaitingAnimation::advance);
}

void WaitingAnimation::start() {
    if (m_running)
        return;
    m_running = true;
    m_step = 0;
    m_showTimer.start();
    m_frameTimer.start();
}

void WaitingAnimation::stop() {
    m_running = false;
    m_showTimer.stop();
    m_frameTimer.stop();
    hide();
}

void WaitingAnimation::advance() {
    m_step = (m_step + 1) % kSpokes;
    if (isVisible())
        update();
}

bool WaitingAnimation::eventFilter(QObject* watched, QEvent* event) {
    if (watched == parentWidget()) {
        if (event->type() == QEvent::Resize)
            setGeometry(parentWidget()->rect());
        else if (event->type() == QEvent::ChildAdded && isVisible())
            raise();  // stay over a video widget added later
    }
    return QWidget::eventFilter(watched, event);
}

void WaitingAnimation::paintEvent(QPaintEvent*) {
    const int diameter = std::min(kDiameter, std::min(width(), height()) / 3);
    if (diameter < 8)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(width() / 2.0, height() / 2.0);
    // A dim disc keeps the spokes visible over a white page and a black video alike.
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 90));
    painter.drawEllipse(QPointF(0, 0), diameter * 0.62, diameter * 0.62);
    const double inner = diameter * 0.22;
    const double outer = diameter * 0.48;
    QPen pen(Qt::white, std::max(2.0, diameter / 11.0), Qt::SolidLine, Qt::RoundCap);
    for (int i = 0; i < kSpokes; ++i) {
        // The spoke at m_step is the brightest; those behind it fade out.
        const int age = (m_step - i + kSpokes) % kSpokes;
        QColor colour = Qt::white;
        colour.setAlphaF(1.0 - 0.8 * age / (kSpokes - 1));
        pen.setColor(colour);
        painter.setPen(pen);
        painter.save();
        painter.rotate(360.0 * i / kSpokes);
        painter.drawLine(QPointF(0, -inner), QPointF(0, -outer));
        painter.restore();
    }
}
