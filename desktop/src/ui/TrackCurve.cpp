// The gapped, reduced track curve: which points of each pixel column are drawn, and how.
#include "ui/TrackCurve.h"

#include <QPainter>

#include <qwt_painter.h>
#include <qwt_scale_map.h>

#include <algorithm>
#include <cmath>

TrackCurve::TrackCurve() {
    setRenderHint(QwtPlotItem::RenderAntialiased, true);
    setItemAttribute(QwtPlotItem::Legend, false);
}

void TrackCurve::setRuns(const QVector<QPointF>& points, std::vector<int> runStarts) {
    m_points = points;
    m_runStarts = std::move(runStarts);
    m_cacheKey.reset();
    setSamples(points);
}

std::optional<QPointF> TrackCurve::nearest(double x, double reach) const {
    const auto byX = [](const QPointF& point, double value) { return point.x() < value; };
    const auto after = std::lower_bound(m_points.begin(), m_points.end(), x, byX);
    std::optional<QPointF> best;
    if (after != m_points.end())
        best = *after;
    if (after != m_points.begin() && (!best || x - (after - 1)->x() < best->x() - x))
        best = *(after - 1);
    if (best && std::abs(best->x() - x) > reach)
        best.reset();
    return best;
}

void TrackCurve::drawSeries(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap, const QRectF&, int,
                            int) const {
    if (m_points.isEmpty())
        return;
    const std::array<double, 8> key{xMap.s1(), xMap.s2(), xMap.p1(), xMap.p2(),
                                    yMap.s1(), yMap.s2(), yMap.p1(), yMap.p2()};
    if (m_cacheKey != key) {
        rebuild(xMap, yMap);
        m_cacheKey = key;
    }
    if (m_dense) {
        // More than a point a pixel: smoothing shows nothing there and costs ten times the drawing.
        painter->setRenderHint(QPainter::Antialiasing, false);
        QPen thin = pen();
        thin.setWidth(1);
        painter->setPen(thin);
    } else {
        painter->setPen(pen());
    }
    for (const QPolygonF& line : m_lines)
        QwtPainter::drawPolyline(painter, line);
    if (!m_dots.isEmpty()) {
        // A lone fix between gaps: a dot a little wider than the line.
        QPen dotPen = pen();
        dotPen.setWidthF(std::max(3.0, pen().widthF() * 2.5));
        dotPen.setCapStyle(Qt::RoundCap);
        painter->setPen(dotPen);
        painter->drawPoints(m_dots);
    }
}

void TrackCurve::rebuild(const QwtScaleMap& xMap, const QwtScaleMap& yMap) const {
    m_lines.clear();
    m_dots.clear();
    const QPointF* points = m_points.constData();
    const int count = m_points.size();
    const double xLow = std::min(xMap.s1(), xMap.s2());
    const double xHigh = std::max(xMap.s1(), xMap.s2());
    // One fix beyond each edge, so that the line leaves the canvas instead of ending short of it.
    const auto byX = [](const QPointF& point, double x) { return point.x() < x; };
    const int first = std::max(0, static_cast<int>(std::lower_bound(points, points + count, xLow, byX) - points) - 1);
    const auto xBefore = [](double x, const QPointF& point) { return x < point.x(); };
    const int last = std::min(count - 1, static_cast<int>(std::upper_bound(points, points + count, xHigh, xBefore) - points));
    for (size_t run = 0; run < m_runStarts.size(); ++run) {
        const int runBegin = m_runStarts[run];
        const int runEnd = (run + 1 < m_runStarts.size() ? m_runStarts[run + 1] : count) - 1;
        const int begin = std::max(runBegin, first);
        const int end = std::min(runEnd, last);
        if (begin > end)
            continue;
        if (runBegin == runEnd)
            m_dots << QPointF(xMap.transform(points[begin].x()), yMap.transform(points[begin].y()));
        else
            m_lines.push_back(reduce(points, begin, end, xMap, yMap));
    }
    int reduced = m_dots.size();
    for (const QPolygonF& line : m_lines)
        reduced += line.size();
    m_dense = reduced > std::abs(xMap.p2() - xMap.p1());
}

QPolygonF TrackCurve::reduce(const QPointF* points, int begin, int end, const QwtScaleMap& xMap,
                             const QwtScaleMap& yMap) {
    QPolygonF line;
    const auto add = [&](int index) {
        line << QPointF(xMap.transform(points[index].x()), yMap.transform(points[index].y()));
    };
    int i = begin;
    double column = std::floor(xMap.transform(points[i].x()));
    while (i <= end) {
        int firstI = i, lowI = i, highI = i, lastI = i;
        double nextColumn = column;
        for (++i; i <= end; ++i) {
            nextColumn = std::floor(xMap.transform(points[i].x()));
            if (nextColumn != column)
                break;
            lastI = i;
            if (points[i].y() < points[lowI].y())
                lowI = i;
            if (points[i].y() > points[highI].y())
                highI = i;
        }
        int picked[] = {firstI, std::min(lowI, highI), std::max(lowI, highI), lastI};
        int previous = -1;
        for (int index : picked)
            if (index != previous) {
                add(index);
                previous = index;
            }
        column = nextColumn;
    }
    return line;
}
