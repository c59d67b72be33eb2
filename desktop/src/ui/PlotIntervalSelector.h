// The interval chosen on the track plots for cycle play and cutting: two edges dragged with the mouse.
#pragma once

#include <QDateTime>
#include <QObject>
#include <QPointer>

#include <utility>
#include <vector>

class QwtPlotMarker;
class QwtPlotZoneItem;
class TrackPlot;

// User-interface thread only. One selector serves every plot: each attached plot draws the two edges and
// the band between them, and dragging an edge on any plot moves it on all. Edges stay inside the range and
// never cross (they may meet: a zero-length interval). While inactive nothing is drawn and the mouse goes
// to the plot (a click seeks).
//
//   selector->attach(speedPlot);
//   selector->setRange(controller->from(), controller->to());
//   selector->setActive(true);  // cut mode or cycle play
//   connect(selector, &PlotIntervalSelector::intervalChanged, controller, &PlaybackController::onCyclePlayIntervalChanged);
class PlotIntervalSelector : public QObject {
    Q_OBJECT
public:
    explicit PlotIntervalSelector(QObject* parent = nullptr);
    ~PlotIntervalSelector() override;

    // Draws the edges on this plot from now on; a plot that is destroyed drops out by itself.
    void attach(TrackPlot* plot);
    // The allowed range; the edges are reset to it.
    void setRange(const QDateTime& from, const QDateTime& to);
    // Edges shown and draggable only while active.
    void setActive(bool active);
    bool isActive() const { return m_active; }

    std::pair<QDateTime, QDateTime> interval() const;
    // Moves the edges as a drag would (limited to the range, never crossing); reports intervalChanged.
    void setInterval(const QDateTime& from, const QDateTime& to);

signals:
    void intervalChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class Edge { None, From, To, Either };
    struct PlotItems {
        QPointer<TrackPlot> plot;
        QwtPlotZoneItem* band;    // attached to the plot, which deletes it
        QwtPlotMarker* fromEdge;  // attached
        QwtPlotMarker* toEdge;    // attached
    };

    PlotItems* itemsOf(QObject* canvas);
    Edge edgeAt(const TrackPlot& plot, double canvasX) const;
    void moveEdge(Edge edge, qint64 ms);
    void showEdges();
    void detachAll();

    std::vector<PlotItems> m_plots;
    qint64 m_rangeFromMs = 0;
    qint64 m_rangeToMs = 0;
    qint64 m_fromMs = 0;
    qint64 m_toMs = 0;
    bool m_active = false;
    Edge m_dragged = Edge::None;
    double m_pressX = 0;  // where a drag of two edges that meet began, to choose one by its direction
};
