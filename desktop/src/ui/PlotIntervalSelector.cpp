// The plots' interval selector: edges and band on every plot, dragged on any of them.
#include "ui/PlotIntervalSelector.h"

#include "ui/TrackPlot.h"

#include <QMouseEvent>
#include <QWidget>

#include <qwt_date.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_marker.h>
#include <qwt_plot_zoneitem.h>

#include <algorithm>
#include <cmath>

namespace {
// How near an edge (in pixels) a press takes hold of it: a line of 2 px is hard to hit exactly.
constexpr double kGrabDistance = 5;
const QColor kEdgeColour(21, 101, 192);

QwtText edgeLabel(qint64 ms) {
    QwtText text(QDateTime::fromMSecsSinceEpoch(ms).toString(QStringLiteral("hh:mm:ss")));
    QFont font = text.font();
    font.setPointSizeF(std::max(7.0, font.pointSizeF() - 1));
    text.setFont(font);
    text.setColor(kEdgeColour);
    text.setBackgroundBrush(QColor(255, 255, 255, 210));
    return text;
}
} // namespace

PlotIntervalSelector::PlotIntervalSelector(QObject* parent) : QObject(parent) {}

PlotIntervalSelector::~PlotIntervalSelector() {
    detachAll();
}

void PlotIntervalSelector::detachAll() {
    for (PlotItems& items : m_plots) {
        if (!items.plot)
            continue;  // its items went with it
        items.plot->canvas()->removeEventFilter(this);
        for (QwtPlotItem* item : {static_cast<QwtPlotItem*>(items.band), static_cast<QwtPlotItem*>(items.fromEdge),
                                  static_cast<QwtPlotItem*>(items.toEdge)}) {
            item->detach();
            delete item;
        }
        items.plot->replot();
    }
    m_plots.clear();
}

void PlotIntervalSelector::attach(TrackPlot* plot) {
    if (!plot || std::any_of(m_plots.begin(), m_plots.end(), [plot](const PlotItems& items) { return items.plot == plot; }))
        return;
    PlotItems items{plot, new QwtPlotZoneItem, new QwtPlotMarker, new QwtPlotMarker};
    items.band->setOrientation(Qt::Vertical);
    items.band->setBrush(QColor(kEdgeColour.red(), kEdgeColour.green(), kEdgeColour.blue(), 36));
    items.band->setPen(QPen(Qt::NoPen));
    items.band->setZ(5);  // under the grid and the line
    items.band->setItemAttribute(QwtPlotItem::AutoScale, false);
    for (QwtPlotMarker* edge : {items.fromEdge, items.toEdge}) {
        edge->setLineStyle(QwtPlotMarker::VLine);
        edge->setLinePen(kEdgeColour, 2);
        edge->setZ(35);  // over the line, under the current-time marker
        edge->setItemAttribute(QwtPlotItem::AutoScale, false);
        edge->setSpacing(3);
    }
    // Labels inside the band, the start's at the top and the end's at the bottom: on a band narrower than
    // the two labels, side by side they would cover each other, at any zoom.
    items.fromEdge->setLabelAlignment(Qt::AlignTop | Qt::AlignRight);
    items.toEdge->setLabelAlignment(Qt::AlignBottom | Qt::AlignLeft);
    items.band->attach(plot);
    items.fromEdge->attach(plot);
    items.toEdge->attach(plot);
    plot->canvas()->setMouseTracking(true);
    plot->canvas()->installEventFilter(this);
    connect(plot, &QObject::destroyed, this, [this] {
        m_plots.erase(std::remove_if(m_plots.begin(), m_plots.end(), [](const PlotItems& items) { return !items.plot; }),
                      m_plots.end());
    });
    m_plots.push_back(items);
    showEdges();
}

void PlotIntervalSelector::setRange(const QDateTime& from, const QDateTime& to) {
    m_rangeFromMs = from.toMSecsSinceEpoch();
    m_rangeToMs = std::max(m_rangeFromMs, to.toMSecsSinceEpoch());
    const bool changed = m_fromMs != m_rangeFromMs || m_toMs != m_rangeToMs;
    m_fromMs = m_rangeFromMs;
    m_toMs = m_rangeToMs;
    m_dragged = Edge::None;
    showEdges();
    if (changed)
        emit intervalChanged();
}

void PlotIntervalSelector::setActive(bool active) {
    if (m_active == active)
        return;
    m_active = active;
    m_dragged = Edge::None;
    if (!active)
        for (const PlotItems& items : m_plots)
            if (items.plot)
                items.plot->canvas()->unsetCursor();
    showEdges();
}

std::pair<QDateTime, QDateTime> PlotIntervalSelector::interval() const {
    return {QDateTime::fromMSecsSinceEpoch(m_fromMs), QDateTime::fromMSecsSinceEpoch(m_toMs)};
}

void PlotIntervalSelector::setInterval(const QDateTime& from, const QDateTime& to) {
    const qint64 toMs = std::clamp(to.toMSecsSinceEpoch(), m_rangeFromMs, m_rangeToMs);
    const qint64 fromMs = std::clamp(from.toMSecsSinceEpoch(), m_rangeFromMs, toMs);
    if (fromMs == m_fromMs && toMs == m_toMs)
        return;
    m_fromMs = fromMs;
    m_toMs = toMs;
    showEdges();
    emit intervalChanged();
}

void PlotIntervalSelector::showEdges() {
    for (const PlotItems& items : m_plots) {
        if (!items.plot)
            continue;
        items.band->setInterval(static_cast<double>(m_fromMs), static_cast<double>(m_toMs));
        items.fromEdge->setXValue(static_cast<double>(m_fromMs));
        items.toEdge->setXValue(static_cast<double>(m_toMs));
        items.fromEdge->setLabel(edgeLabel(m_fromMs));
        items.toEdge->setLabel(edgeLabel(m_toMs));
        items.band->setVisible(m_active);
        items.fromEdge->setVisible(m_active);
        items.toEdge->setVisible(m_active);
        items.plot->replot();
    }
}

PlotIntervalSelector::PlotItems* PlotIntervalSelector::itemsOf(QObject* canvas) {
    for (PlotItems& items : m_plots)
        if (items.plot && items.plot->canvas() == canvas)
            return &items;
    return nullptr;
}

PlotIntervalSelector::Edge PlotIntervalSelector::edgeAt(const TrackPlot& plot, double canvasX) const {
    const double fromX = plot.canvasMap(QwtPlot::xBottom).transform(static_cast<double>(m_fromMs));
    const double toX = plot.canvasMap(QwtPlot::xBottom).transform(static_cast<double>(m_toMs));
    const double fromDistance = std::abs(canvasX - fromX);
    const double toDistance = std::abs(canvasX - toX);
    if (std::min(fromDistance, toDistance) > kGrabDistance)
        return Edge::None;
    if (std::abs(fromX - toX) < 1)
        return Edge::Either;
    return fromDistance <= toDistance ? Edge::From : Edge::To;
}

void PlotIntervalSelector::moveEdge(Edge edge, qint64 ms) {
    if (edge == Edge::From)
        setInterval(QDateTime::fromMSecsSinceEpoch(std::min(ms, m_toMs)), interval().second);
    else if (edge == Edge::To)
        setInterval(interval().first, QDateTime::fromMSecsSinceEpoch(std::max(ms, m_fromMs)));
}

bool PlotIntervalSelector::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if (!m_active || (type != QEvent::MouseButtonPress && type != QEvent::MouseMove && type != QEvent::MouseButtonRelease))
        return QObject::eventFilter(watched, event);
    PlotItems* items = itemsOf(watched);
    if (!items)
        return QObject::eventFilter(watched, event);
    auto* mouse = static_cast<QMouseEvent*>(event);
    TrackPlot& plot = *items->plot;
    const double x = mouse->pos().x();

    if (type == QEvent::MouseButtonPress) {
        if (mouse->button() != Qt::LeftButton)
            return false;
        m_dragged = edgeAt(plot, x);
        m_pressX = x;
        if (m_dragged == Edge::None)
            return false;  // the click goes on to the plot
        // The drag's moves stop here: the plot's readout would stand still at the press, beside the edge's
        // own label.
        plot.hideReadout();
        return true;
    }
    if (type == QEvent::MouseButtonRelease) {
        if (m_dragged == Edge::None || mouse->button() != Qt::LeftButton)
            return false;
        m_dragged = Edge::None;
        return true;
    }
    // A move: a drag, or a hover that shows whether an edge is under the pointer.
    if (m_dragged == Edge::None) {
        if (edgeAt(plot, x) == Edge::None)
            plot.canvas()->unsetCursor();
        else
            plot.canvas()->setCursor(Qt::SizeHorCursor);
        return false;
    }
    if (!(mouse->buttons() & Qt::LeftButton)) {
        m_dragged = Edge::None;  // the release went elsewhere
        return false;
    }
    if (m_dragged == Edge::Either) {
        if (x == m_pressX)
            return true;
        m_dragged = x < m_pressX ? Edge::From : Edge::To;
    }
    moveEdge(m_dragged, std::llround(plot.msAtCanvasX(x)));
    return true;
}
