// The pointer's readout on a track plot: a Qwt picker that also leaves when Qt does not say the pointer left.
#include "ui/PlotReadout.h"

#include <QCursor>
#include <QEvent>
#include <QMouseEvent>

#include <qwt_plot.h>
#include <qwt_widget_overlay.h>

#include <utility>

PlotReadout::PlotReadout(QWidget* canvas, std::function<QString(double ms)> textAt)
    : QwtPlotPicker(QwtPlot::xBottom, QwtPlot::yLeft, QwtPicker::NoRubberBand, QwtPicker::AlwaysOn, canvas),
      m_textAt(std::move(textAt)) {}

QString PlotReadout::shownText() const {
    const QwtWidgetOverlay* box = trackerOverlay();
    return box && box->isVisible() && trackerPosition().x() >= 0 ? m_drawnText : QString();
}

void PlotReadout::showAt(const QPoint& canvasPoint) {
    QMouseEvent move(QEvent::MouseMove, canvasPoint, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    widgetMouseMoveEvent(&move);
}

void PlotReadout::hide() {
    if (trackerPosition().x() < 0 && !trackerOverlay())
        return;
    QEvent leave(QEvent::Leave);
    widgetLeaveEvent(&leave);
}

void PlotReadout::refresh() {
    if (trackerPosition().x() < 0)
        return;
    const QWidget* canvas = parentWidget();
    const QPoint pointer = canvas->mapFromGlobal(QCursor::pos());
    if (canvas->isVisible() && canvas->rect().contains(pointer))
        showAt(pointer);
    else
        hide();
}

bool PlotReadout::eventFilter(QObject* watched, QEvent* event) {
    const bool taken = QwtPlotPicker::eventFilter(watched, event);
    if (watched == parentWidget()) {
        switch (event->type()) {
        // The box is a child of the canvas: hidden with it, it would come back with it at the old place.
        case QEvent::Hide:
        case QEvent::WindowDeactivate:
            hide();
            break;
        // A layout that moves the canvas away from a still pointer sends no Leave until the pointer moves.
        case QEvent::Move:
        case QEvent::Resize:
            refresh();
            break;
        default:
            break;
        }
    }
    return taken;
}

QwtText PlotReadout::trackerTextF(const QPointF& position) const {
    m_drawnText = m_textAt(position.x());
    QwtText text(m_drawnText);
    text.setBackgroundBrush(QColor(255, 255, 255, 220));
    text.setColor(QColor(60, 60, 60));
    return text;
}
