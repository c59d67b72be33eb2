// The box on a track plot that shows the time and the value under the pointer, and only while it is there.
#pragma once

#include <QString>

#include <qwt_plot_picker.h>

#include <functional>

// User-interface thread only. The box follows the pointer's moves over the plot's canvas. Qwt takes it
// away when the canvas reports that the pointer left; this class also takes it away where no such report
// comes, or comes too late: the canvas hidden (with the plot or a panel above it) and shown again, moved or
// resized under a still pointer, its window deactivated, or the mouse taken over by another handler. After
// a zoom or a new track the box shows the new time under the pointer.
class PlotReadout : public QwtPlotPicker {
public:
    // `textAt` gives the box's text for a time on the plot's x axis (milliseconds since the epoch).
    PlotReadout(QWidget* canvas, std::function<QString(double ms)> textAt);

    // The text of the box as drawn now; empty when no box is shown.
    QString shownText() const;
    // Shows the box for a point of the canvas (hidden when the point lies outside it).
    void showAt(const QPoint& canvasPoint);
    void hide();
    // After the axis or the track changed: drawn again for where the pointer is now, or hidden when it is
    // no longer over the canvas.
    void refresh();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    QwtText trackerTextF(const QPointF& position) const override;

private:
    std::function<QString(double ms)> m_textAt;
    mutable QString m_drawnText; // the text last drawn into the box
};
