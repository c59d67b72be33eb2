// One value of the track (speed, altitude, satellites, a dilution of precision) plotted against local time.
#pragma once

#include "core/TrackPosition.h"
#include "ui/PlotType.h"

#include <QDateTime>

#include <qwt_plot.h>

class QwtPlotMarker;
class QwtPlotGrid;
class QwtPlotTextLabel;

class PlotReadout;
class TrackCurve;

// User-interface thread only. The time axis shows [from, to] of the item in local wall-clock time; a value
// missing from a fix (or a hole of more than a few seconds between fixes) leaves a gap in the line. The
// wheel zooms the time axis around the pointer (never beyond [from, to]); Shift+wheel pans a zoomed axis.
// A left click (or a drag) on the canvas reports the time under the pointer.
//
//   auto* plot = new TrackPlot(PlotType::Speed, container);
//   plot->setTrack(controller->track(), controller->from(), controller->to());
//   connect(plot, &TrackPlot::clicked, controller, qOverload<double>(&PlaybackController::seekTo));
class TrackPlot : public QwtPlot {
    Q_OBJECT
public:
    explicit TrackPlot(PlotType type, QWidget* parent = nullptr);
    ~TrackPlot() override;

    PlotType type() const { return m_type; }

    // Copies the values of this plot's kind out of the track; the x range becomes [from, to], unzoomed.
    void setTrack(const TrackPositions& track, const QDateTime& from, const QDateTime& to);
    void clearTrack();
    // The track last given to setTrack (identity only, never read again), null after clearTrack. Lets an
    // owner that is going away tell whether the plot still shows its track.
    const TrackPositions* shownTrack() const { return m_shownTrack; }
    QDateTime from() const { return m_from; }
    QDateTime to() const { return m_to; }

    // Moves the vertical current-time marker (limited to [from, to]).
    void setCurrentTime(const QDateTime& time);
    QDateTime currentTime() const { return m_currentTime; }

    // The part of [from, to] the time axis shows (all of it unless zoomed).
    std::pair<QDateTime, QDateTime> visibleRange() const;
    void setVisibleRange(const QDateTime& from, const QDateTime& to);

    // Axis title and texts again, after the interface language changed.
    void retranslate();

    // Milliseconds since the epoch <-> canvas x, as the canvas is drawn now.
    double canvasXOf(const QDateTime& time) const;
    double msAtCanvasX(double x) const;

    // What the pointer's box shows at a time: "hh:mm:ss" and the value of the nearest fix, if one is near.
    QString readoutAt(double msSinceEpoch) const;
    // The pointer's box as shown now; empty while none is.
    QString readoutText() const;
    // Takes the pointer's box away until the pointer moves over the canvas again: for a handler that takes
    // over the mouse, such as a drag of the interval's edges.
    void hideReadout();

    // How many pieces the line is in (runs without a gap), for checks and benchmarks.
    int runCount() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    // Seconds since the epoch under the pointer: a left click on the canvas or a drag after it.
    void clicked(double secondsSinceEpoch);
    // The time axis was zoomed or panned by the user.
    void visibleRangeChanged(const QDateTime& from, const QDateTime& to);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void fitAxisTitle();
    void setUpCanvas();
    void setUpAxes(const QFont& axisFont);
    void setUpItems();
    void applyYScale();
    void showRange(double fromMs, double toMs, bool byUser);
    void zoomAt(double centreMs, int wheelSteps);
    void panBy(int wheelSteps);
    void emitClicked(double canvasX);

    PlotType m_type;
    QString m_axisTitle; // in the current language
    TrackCurve* m_curve;        // attached: the plot deletes it
    QwtPlotMarker* m_marker;    // attached
    QwtPlotGrid* m_grid;        // attached
    QwtPlotTextLabel* m_noData; // attached: "No data" over a track without this value
    PlotReadout* m_readout = nullptr; // the canvas' child
    const TrackPositions* m_shownTrack = nullptr;
    QDateTime m_from;
    QDateTime m_to;
    QDateTime m_currentTime;
    double m_fromMs = 0;
    double m_toMs = 0;
    double m_yMin = 0;  // the value range, for the y scale
    double m_yMax = 0;
    bool m_pressed = false;
};
