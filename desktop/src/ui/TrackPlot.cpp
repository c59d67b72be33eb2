// The track plot: a gapped, decimated curve over a local-time axis with a current-time marker.
#include "ui/TrackPlot.h"

#include "logging/Logging.h"
#include "ui/PlotReadout.h"
#include "ui/TrackCurve.h"

#include <QEvent>
#include <QFontMetrics>
#include <QMouseEvent>
#include <QWheelEvent>

#include <qwt_date.h>
#include <qwt_date_scale_draw.h>
#include <qwt_date_scale_engine.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_layout.h>
#include <qwt_plot_marker.h>
#include <qwt_plot_textlabel.h>
#include <qwt_scale_widget.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace {
constexpr const char* kLogger = "ui.PlotController";  // the track plots log as one
// Fixes come once a second; a hole longer than this is missing data, not a straight line.
constexpr double kMaxHoleMs = 10'000;
// The closest zoom: below this the axis shows too few fixes to be worth reading.
constexpr double kMinVisibleMs = 20'000;
// One wheel notch zooms by this factor, as in map viewers.
constexpr double kZoomPerNotch = 0.8;
// Share of the value range left free above (and for altitude below) the line.
constexpr double kYMargin = 0.08;
// Room for "00000" at the left axis, so that stacked plots put the same time at the same x.
constexpr const char* kWidestLabel = "00000";
// The widest label of the time axis (milliseconds are never reached: the closest zoom is 20 s).
constexpr const char* kWidestTimeLabel = "00:00:00";

std::optional<double> valueOf(const TrackPosition& position, PlotType type) {
    switch (type) {
    case PlotType::Speed:
        return position.speed;
    case PlotType::Altitude:
        return position.altitude;
    case PlotType::Satellites:
        return position.satellites ? std::optional<double>(*position.satellites) : std::nullopt;
    case PlotType::Hdop:
        return position.hdop;
    case PlotType::Pdop:
        return position.pdop;
    case PlotType::Vdop:
        return position.vdop;
    case PlotType::Empty:
        break;
    }
    return std::nullopt;
}

double msOf(TrackTime time) {
    return static_cast<double>(time) / (kTrackTicksPerSecond / 1000);
}

QColor colourOf(PlotType type) {
    switch (type) {
    case PlotType::Speed:
        return QColor(0, 92, 197);
    case PlotType::Altitude:
        return QColor(46, 125, 50);
    case PlotType::Satellites:
        return QColor(123, 31, 162);
    case PlotType::Hdop:
    case PlotType::Pdop:
    case PlotType::Vdop:
        return QColor(230, 81, 0);
    case PlotType::Empty:
        break;
    }
    return Qt::darkGray;
}

// The readout under the pointer takes the fix at most this far away; nearer a gap it shows the time alone.
constexpr double kReadoutReachMs = 1500;

int decimalsOf(PlotType type) {
    return type == PlotType::Hdop || type == PlotType::Pdop || type == PlotType::Vdop ? 1 : 0;
}

// Counts and precisions start at zero; altitude takes whatever range it has.
bool scaleIncludesZero(PlotType type) {
    return type != PlotType::Altitude;
}
} // namespace

TrackPlot::TrackPlot(PlotType type, QWidget* parent)
    : QwtPlot(parent), m_type(type), m_curve(new TrackCurve), m_marker(new QwtPlotMarker), m_grid(new QwtPlotGrid),
      m_noData(new QwtPlotTextLabel) {
    setAutoReplot(false);
    setContentsMargins(0, 2, 8, 0);
    QFont smallFont = font();
    if (smallFont.pointSizeF() > 0)
        smallFont.setPointSizeF(std::max(7.0, smallFont.pointSizeF() - 1));
    setUpCanvas();
    setUpAxes(smallFont);
    setUpItems();
    // The readout lives as the canvas' child.
    m_readout = new PlotReadout(canvas(), [this](double ms) { return readoutAt(ms); });
    m_readout->setTrackerFont(smallFont);

    retranslate();
    clearTrack();
}

void TrackPlot::setUpCanvas() {
    auto* canvas = new QwtPlotCanvas(this);
    canvas->setFrameStyle(QFrame::Box | QFrame::Plain);
    canvas->setLineWidth(1);
    QPalette framePalette = canvas->palette();
    framePalette.setColor(QPalette::WindowText, QColor(160, 160, 160));
    canvas->setPalette(framePalette);
    setCanvas(canvas);
    canvas->installEventFilter(this);
    setCanvasBackground(Qt::white);
    plotLayout()->setCanvasMargin(0);
    // The time range spans the canvas exactly: a click maps to the same time whatever the labels need.
    plotLayout()->setAlignCanvasToScales(true);
    plotLayout()->setSpacing(2);
}

void TrackPlot::setUpAxes(const QFont& axisFont) {
    for (int axis : {QwtPlot::xBottom, QwtPlot::yLeft}) {
        setAxisFont(axis, axisFont);
        axisWidget(axis)->setMargin(0);
        axisWidget(axis)->setSpacing(1);
        axisScaleDraw(axis)->setTickLength(QwtScaleDiv::MajorTick, 4);
        axisScaleDraw(axis)->setTickLength(QwtScaleDiv::MediumTick, 3);
        axisScaleDraw(axis)->setTickLength(QwtScaleDiv::MinorTick, 2);
    }

    auto* timeDraw = new QwtDateScaleDraw(Qt::LocalTime);
    timeDraw->setDateFormat(QwtDate::Millisecond, QStringLiteral("hh:mm:ss.zzz"));
    timeDraw->setDateFormat(QwtDate::Second, QStringLiteral("hh:mm:ss"));
    timeDraw->setDateFormat(QwtDate::Minute, QStringLiteral("hh:mm"));
    timeDraw->setDateFormat(QwtDate::Hour, QStringLiteral("hh:mm"));
    timeDraw->setDateFormat(QwtDate::Day, QStringLiteral("dd.MM"));
    timeDraw->setDateFormat(QwtDate::Week, QStringLiteral("dd.MM"));
    timeDraw->setDateFormat(QwtDate::Month, QStringLiteral("MM.yyyy"));
    timeDraw->setDateFormat(QwtDate::Year, QStringLiteral("yyyy"));
    setAxisScaleDraw(QwtPlot::xBottom, timeDraw);
    setAxisScaleEngine(QwtPlot::xBottom, new QwtDateScaleEngine(Qt::LocalTime));
    setAxisMaxMinor(QwtPlot::xBottom, 5);
    // Room for half the widest time label at both ends, always: otherwise the canvas changes its width with
    // the labels, and stacked plots show the same time at different x.
    const int halfLabel = QFontMetrics(axisFont).horizontalAdvance(QLatin1String(kWidestTimeLabel)) / 2 + 2;
    axisWidget(QwtPlot::xBottom)->setMinBorderDist(halfLabel, halfLabel);
    axisScaleDraw(QwtPlot::yLeft)
        ->setMinimumExtent(QFontMetrics(axisFont).horizontalAdvance(QLatin1String(kWidestLabel)) + 6);
    setAxisMaxMajor(QwtPlot::yLeft, 4);
    setAxisMaxMinor(QwtPlot::yLeft, 2);
    if (scaleIncludesZero(m_type)) {
        axisScaleEngine(QwtPlot::yLeft)->setAttribute(QwtScaleEngine::IncludeReference, true);
        axisScaleEngine(QwtPlot::yLeft)->setReference(0);
    }
}

void TrackPlot::setUpItems() {
    m_grid->setMajorPen(QColor(0, 0, 0, 40), 0, Qt::DotLine);
    m_grid->enableXMin(false);
    m_grid->enableYMin(false);
    m_grid->attach(this);

    QPen curvePen(colourOf(m_type), 1.5);
    curvePen.setJoinStyle(Qt::RoundJoin);
    m_curve->setPen(curvePen);
    m_curve->setZ(20);
    m_curve->attach(this);

    m_marker->setLineStyle(QwtPlotMarker::VLine);
    m_marker->setLinePen(QColor(211, 47, 47), 1.5);
    m_marker->setZ(40);
    m_marker->setItemAttribute(QwtPlotItem::AutoScale, false);
    m_marker->hide();
    m_marker->attach(this);

    m_noData->setZ(50);
    m_noData->hide();
    m_noData->attach(this);
}

QString TrackPlot::readoutText() const {
    return m_readout->shownText();
}

void TrackPlot::hideReadout() {
    m_readout->hide();
}

QString TrackPlot::readoutAt(double ms) const {
    if (!m_from.isValid())
        return {};
    QString text = QDateTime::fromMSecsSinceEpoch(std::llround(ms)).toString(QStringLiteral("hh:mm:ss"));
    if (const std::optional<QPointF> point = m_curve->nearest(ms, kReadoutReachMs))
        text += QStringLiteral("  ") + QString::number(point->y(), 'f', decimalsOf(m_type));
    return text;
}

TrackPlot::~TrackPlot() = default;

void TrackPlot::retranslate() {
    QString title;
    switch (m_type) {
    case PlotType::Speed:
        title = tr("Speed, km/h");
        break;
    case PlotType::Altitude:
        title = tr("Altitude, m");
        break;
    case PlotType::Satellites:
        title = tr("Satellites");
        break;
    case PlotType::Hdop:
        title = tr("HDOP");
        break;
    case PlotType::Pdop:
        title = tr("PDOP");
        break;
    case PlotType::Vdop:
        title = tr("VDOP");
        break;
    case PlotType::Empty:
        break;
    }
    m_axisTitle = title;
    fitAxisTitle();

    QwtText noData(tr("No data"));
    noData.setColor(Qt::gray);
    noData.setRenderFlags(Qt::AlignCenter);
    m_noData->setText(noData);
    replot();
}

void TrackPlot::setTrack(const TrackPositions& track, const QDateTime& from, const QDateTime& to) {
    QVector<QPointF> points;
    points.reserve(static_cast<int>(track.size()));
    std::vector<int> runStarts;
    bool inGap = true;
    double previousMs = 0;
    double yMin = 0;
    double yMax = 0;
    for (const TrackPosition& position : track) {
        const std::optional<double> value = valueOf(position, m_type);
        if (!value || !std::isfinite(*value)) {
            inGap = true;
            continue;
        }
        const double ms = msOf(position.time);
        if (!points.isEmpty() && ms < previousMs) {
            LOG_WARN(kLogger, "Fix at {} ms goes back in time, skipped", ms);
            continue;
        }
        if (inGap || ms - previousMs > kMaxHoleMs)
            runStarts.push_back(points.size());
        inGap = false;
        points << QPointF(ms, *value);
        previousMs = ms;
        yMin = points.size() == 1 ? *value : std::min(yMin, *value);
        yMax = points.size() == 1 ? *value : std::max(yMax, *value);
    }
    LOG_DEBUG(kLogger, "Plot {}: {} values of {} fixes, in {} pieces", static_cast<int>(m_type), points.size(),
              track.size(), runStarts.size());
    m_curve->setRuns(points, std::move(runStarts));
    m_yMin = yMin;
    m_yMax = yMax;
    m_shownTrack = &track;
    m_from = from;
    m_to = std::max(from, to);
    m_fromMs = QwtDate::toDouble(m_from);
    m_toMs = QwtDate::toDouble(m_to);
    m_noData->setVisible(points.isEmpty() && m_type != PlotType::Empty);
    applyYScale();
    m_currentTime = m_from;
    m_marker->setXValue(m_fromMs);
    m_marker->show();
    showRange(m_fromMs, m_toMs, false);
    replot();
    m_readout->refresh();
}

void TrackPlot::clearTrack() {
    m_curve->setRuns({}, {});
    m_shownTrack = nullptr;
    m_yMin = m_yMax = 0;
    m_marker->hide();
    m_noData->hide();
    m_from = m_to = m_currentTime = QDateTime();
    // An empty axis over the last hour looks like a plot waiting for data rather than a broken one.
    const QDateTime now = QDateTime::currentDateTime();
    m_fromMs = QwtDate::toDouble(now.addSecs(-3600));
    m_toMs = QwtDate::toDouble(now);
    applyYScale();
    showRange(m_fromMs, m_toMs, false);
    replot();
    m_readout->refresh();
}

void TrackPlot::applyYScale() {
    if (m_curve->dataSize() == 0) {
        setAxisScale(QwtPlot::yLeft, 0, m_type == PlotType::Satellites ? 10 : 1);
        return;
    }
    if (m_type == PlotType::Satellites) {
        // Whole counts: whole steps.
        const double top = std::max(4.0, std::ceil(m_yMax) + 1);
        setAxisScale(QwtPlot::yLeft, 0, top, std::ceil(top / 4));
        return;
    }
    // A little room above and below, so that the line never runs along the canvas' border, then rounded
    // outwards to steps that read well.
    const double range = m_yMax - m_yMin;
    const double margin = range > 0 ? range * kYMargin : std::max(1.0, std::abs(m_yMax) * 0.1);  // flat: still a scale
    double lower = scaleIncludesZero(m_type) ? std::min(0.0, m_yMin) : m_yMin - margin;
    double upper = m_yMax + margin;
    double step = 0;
    axisScaleEngine(QwtPlot::yLeft)->autoScale(axisMaxMajor(QwtPlot::yLeft), lower, upper, step);
    setAxisScale(QwtPlot::yLeft, lower, upper, step);
}

void TrackPlot::setCurrentTime(const QDateTime& time) {
    if (!m_from.isValid())
        return;
    const double ms = std::clamp(static_cast<double>(time.toMSecsSinceEpoch()), m_fromMs, m_toMs);
    const QwtScaleMap map = canvasMap(QwtPlot::xBottom);
    const bool moved = std::lround(map.transform(ms)) != std::lround(map.transform(m_marker->xValue()));
    m_currentTime = ms == m_fromMs ? m_from : ms == m_toMs ? m_to : time;
    m_marker->setXValue(ms);
    // Playback reports 25 times a second; a day's axis moves the marker one pixel a minute.
    if (moved)
        replot();
}

std::pair<QDateTime, QDateTime> TrackPlot::visibleRange() const {
    const QwtScaleDiv& div = axisScaleDiv(QwtPlot::xBottom);
    return {QwtDate::toDateTime(div.lowerBound(), Qt::LocalTime), QwtDate::toDateTime(div.upperBound(), Qt::LocalTime)};
}

void TrackPlot::setVisibleRange(const QDateTime& from, const QDateTime& to) {
    showRange(QwtDate::toDouble(from), QwtDate::toDouble(to), false);
}

void TrackPlot::showRange(double fromMs, double toMs, bool byUser) {
    const double full = m_toMs - m_fromMs;
    double span = 1000;
    if (full <= 0) {
        // A zero-length item: a second around it, so that the axis can be drawn.
        fromMs = m_fromMs - span / 2;
    } else {
        span = std::clamp(toMs - fromMs, std::min(kMinVisibleMs, full), full);
        fromMs = std::clamp(fromMs, m_fromMs, m_toMs - span);
    }
    const QwtScaleDiv& current = axisScaleDiv(QwtPlot::xBottom);
    if (current.lowerBound() == fromMs && current.upperBound() == fromMs + span)
        return;
    setAxisScale(QwtPlot::xBottom, fromMs, fromMs + span);
    replot();
    m_readout->refresh();
    if (byUser) {
        const auto range = visibleRange();
        emit visibleRangeChanged(range.first, range.second);
    }
}

void TrackPlot::zoomAt(double centreMs, int wheelSteps) {
    const QwtScaleDiv& div = axisScaleDiv(QwtPlot::xBottom);
    const double factor = std::pow(kZoomPerNotch, wheelSteps);
    const double from = centreMs - (centreMs - div.lowerBound()) * factor;
    const double to = centreMs + (div.upperBound() - centreMs) * factor;
    showRange(from, to, true);
}

void TrackPlot::panBy(int wheelSteps) {
    const QwtScaleDiv& div = axisScaleDiv(QwtPlot::xBottom);
    const double shift = -wheelSteps * div.range() / 10;
    showRange(div.lowerBound() + shift, div.upperBound() + shift, true);
}

double TrackPlot::canvasXOf(const QDateTime& time) const {
    return canvasMap(QwtPlot::xBottom).transform(QwtDate::toDouble(time));
}

double TrackPlot::msAtCanvasX(double x) const {
    return canvasMap(QwtPlot::xBottom).invTransform(x);
}

int TrackPlot::runCount() const {
    return m_curve->runCount();
}

void TrackPlot::emitClicked(double canvasX) {
    const double ms = std::clamp(msAtCanvasX(canvasX), m_fromMs, m_toMs);
    emit clicked(ms / 1000);
}

bool TrackPlot::eventFilter(QObject* watched, QEvent* event) {
    if (watched != canvas() || !m_from.isValid())
        return QwtPlot::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() != Qt::LeftButton)
            break;
        m_pressed = true;
        emitClicked(mouse->pos().x());
        return true;
    }
    case QEvent::MouseMove: {
        auto* mouse = static_cast<QMouseEvent*>(event);
        if (m_pressed && (mouse->buttons() & Qt::LeftButton)) {
            emitClicked(mouse->pos().x());
            return true;
        }
        break;
    }
    case QEvent::MouseButtonRelease:
        if (static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton)
            m_pressed = false;
        break;
    case QEvent::Wheel: {
        auto* wheel = static_cast<QWheelEvent*>(event);
        const QPoint delta = wheel->angleDelta();
        const bool pan = (wheel->modifiers() & Qt::ShiftModifier) || std::abs(delta.x()) > std::abs(delta.y());
        const int steps = (pan ? (delta.x() ? delta.x() : delta.y()) : delta.y()) / 120;
        if (steps == 0)
            return true;
        if (pan)
            panBy(steps);
        else
            zoomAt(msAtCanvasX(wheel->position().x()), steps);
        // The readout drew itself before the axis changed: the time under the pointer is another now.
        m_readout->showAt(wheel->position().toPoint());
        return true;
    }
    default:
        break;
    }
    return QwtPlot::eventFilter(watched, event);
}

void TrackPlot::resizeEvent(QResizeEvent* event) {
    // About one time label per 90 pixels keeps "hh:mm:ss" labels apart.
    setAxisMaxMajor(QwtPlot::xBottom, std::max(2, width() / 90));
    QwtPlot::resizeEvent(event);
    fitAxisTitle();
}

// The vertical title runs along the axis: in a low plot a long title ("Скорость, км/ч") gets a smaller
// font rather than losing its ends.
void TrackPlot::fitAxisTitle() {
    QFont font = axisWidget(QwtPlot::yLeft)->font();
    font.setBold(true);
    const int room = std::max(40, height() - axisWidget(QwtPlot::xBottom)->height() - 6);
    while (font.pointSizeF() > 6.0 && QFontMetrics(font).horizontalAdvance(m_axisTitle) > room)
        font.setPointSizeF(font.pointSizeF() - 0.5);
    if (axisTitle(QwtPlot::yLeft).text() == m_axisTitle && axisTitle(QwtPlot::yLeft).font() == font)
        return;
    QwtText title(m_axisTitle);
    title.setFont(font);
    setAxisTitle(QwtPlot::yLeft, title);
}

QSize TrackPlot::sizeHint() const {
    return {600, 130};
}

QSize TrackPlot::minimumSizeHint() const {
    return {200, 90};
}
