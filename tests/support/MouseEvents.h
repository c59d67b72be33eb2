// Real mouse events sent straight to a widget (through its event filters), with the button state a drag has.
#pragma once

#include <QApplication>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QWidget>

namespace testsupport {

inline void sendMouse(QWidget* widget, QEvent::Type type, QPointF pos, Qt::MouseButtons held = Qt::LeftButton) {
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    const Qt::MouseButtons buttons = type == QEvent::MouseButtonRelease ? Qt::NoButton : held;
    QMouseEvent event(type, pos, widget->mapToGlobal(pos.toPoint()), button, buttons, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

// Press at `from`, move to `to` in a few steps, release there.
inline void dragMouse(QWidget* widget, QPointF from, QPointF to) {
    sendMouse(widget, QEvent::MouseButtonPress, from);
    for (int i = 1; i <= 4; ++i)
        sendMouse(widget, QEvent::MouseMove, from + (to - from) * i / 4);
    sendMouse(widget, QEvent::MouseButtonRelease, to);
}

// Wheel notches (positive: away from the user) at a point.
inline void sendWheel(QWidget* widget, QPointF pos, int notches, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QWheelEvent event(pos, widget->mapToGlobal(pos.toPoint()), QPoint(), QPoint(0, 120 * notches), Qt::NoButton,
                      modifiers, Qt::NoScrollPhase, false);
    QApplication::sendEvent(widget, &event);
}

} // namespace testsupport
