#include "ui/FullscreenVideoWidget.h"

#include <QApplication>
#include <QEvent>
#include <QVBoxLayout>

FullscreenVideoWidget::FullscreenVideoWidget(QWidget* parent) : QWidget(parent, Qt::Window | Qt::FramelessWindowHint) {
    setObjectName(QStringLiteral("FullscreenVideoWidget"));
    setStyleSheet(QStringLiteral("background: black;"));
    setMouseTracking(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    // Mouse moves over the videos reach the children first; watching the application sees them all.
    qApp->installEventFilter(this);
}

void FullscreenVideoWidget::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    emit resized();
}

bool FullscreenVideoWidget::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseMove && isVisible() && watched->isWidgetType() &&
        static_cast<QWidget*>(watched)->window() == this)
        emit mouseMoved();
    return QWidget::eventFilter(watched, event);
}
