// A plot curve drawn as runs of points with gaps between them, reduced to what the canvas can show.
#pragma once

#include <QPolygonF>
#include <QVector>

#include <qwt_plot_curve.h>

#include <array>
#include <optional>
#include <vector>

// Nothing is drawn between runs: a missing value stays a gap. Drawing keeps of each pixel column only its
// first, lowest, highest and last point, so a day of fixes costs no more than the canvas is wide and looks
// the same. The reduced lines are kept until the scales or the canvas change: moving another item (the
// time marker) only paints them again.
//
//   curve->setRuns(points, {0, 120});  // two pieces: points[0..119] and points[120..]
class TrackCurve : public QwtPlotCurve {
public:
    TrackCurve();

    // `points` in time order (x); `runStarts` the indices where a new piece of line begins (the first is 0).
    void setRuns(const QVector<QPointF>& points, std::vector<int> runStarts);
    int runCount() const { return static_cast<int>(m_runStarts.size()); }

    // The point nearest to x, if one lies within reach.
    std::optional<QPointF> nearest(double x, double reach) const;

protected:
    void drawSeries(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap, const QRectF& canvasRect,
                    int from, int to) const override;

private:
    void rebuild(const QwtScaleMap& xMap, const QwtScaleMap& yMap) const;
    static QPolygonF reduce(const QPointF* points, int begin, int end, const QwtScaleMap& xMap, const QwtScaleMap& yMap);

    QVector<QPointF> m_points;
    std::vector<int> m_runStarts;
    // What was drawn last, for the scales and canvas of the key.
    mutable std::optional<std::array<double, 8>> m_cacheKey;
    mutable std::vector<QPolygonF> m_lines;
    mutable QPolygonF m_dots;
    mutable bool m_dense = false;
};
