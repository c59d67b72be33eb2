// Track plot figures: a day of fixes (86,400) set, painted, repainted, followed by the marker and zoomed,
// against a plain Qwt curve of the same points.
// Run under a display: xvfb-run -a build/bench/bench-plots [--screenshot DIR TRACK.nmea]
// (the screenshot option also writes two pictures of plots with an active interval selector, for a look).
#include "core/TrackLoader.h"
#include "ui/PlotIntervalSelector.h"
#include "ui/TrackPlot.h"

#include <QApplication>
#include <QMouseEvent>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <qwt_date.h>
#include <qwt_plot_curve.h>

#include <fmt/format.h>

#include <chrono>
#include <cmath>
#include <random>

namespace {
using Clock = std::chrono::steady_clock;
constexpr std::int64_t kStart = 1'700'000'000;
constexpr int kDayFixes = 86'400;
constexpr int kHoleSeconds = 1'200;
constexpr int kDaySeconds = kDayFixes + kHoleSeconds;  // a day's fixes and the hole between them

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// A day of fixes at 1 Hz (86,400): drives with stops, a climb and a descent, a receiver that loses a value now and then and
// a twenty-minute hole without fixes.
TrackPositions dayOfDriving() {
    std::mt19937 random(7);
    std::normal_distribution<double> noise(0.0, 1.0);
    TrackPositions track;
    double speed = 0;
    for (int s = 0; s < kDaySeconds; ++s) {
        if (s >= 30'000 && s < 30'000 + kHoleSeconds)
            continue;
        TrackPosition position;
        position.time = trackTimeFromSeconds(kStart + s);
        const bool stopped = (s / 600) % 7 == 0;
        speed = std::clamp(speed + (stopped ? -5.0 : noise(random) * 1.5 + 0.1), 0.0, 130.0);
        if (s % 97 != 0)
            position.speed = speed;
        position.altitude = 250 + 120 * std::sin(s / 9000.0) + noise(random) * 2;
        position.satellites = static_cast<std::uint32_t>(8 + (s / 1000) % 5);
        position.hdop = 0.9 + std::abs(noise(random)) * 0.3;
        track.push_back(position);
    }
    return track;
}

QDateTime timeOf(std::int64_t seconds) {
    return QDateTime::fromSecsSinceEpoch(seconds);
}

// Replots and paints the plot as the screen would (the canvas keeps its last picture otherwise), and
// returns the milliseconds it took.
double paintOnce(QwtPlot& plot) {
    const auto start = Clock::now();
    plot.replot();
    plot.grab();
    return millisecondsSince(start);
}

double averagePaint(QwtPlot& widget, int times) {
    double total = 0;
    for (int i = 0; i < times; ++i)
        total += paintOnce(widget);
    return total / times;
}

void benchDay() {
    const TrackPositions track = dayOfDriving();
    TrackPlot plot(PlotType::Speed);
    plot.resize(1000, 130);
    plot.show();
    QApplication::processEvents();

    auto start = Clock::now();
    plot.setTrack(track, timeOf(kStart), timeOf(kStart + kDaySeconds));
    fmt::print("setTrack, {} fixes: {:.1f} ms ({} pieces of line)\n", track.size(), millisecondsSince(start), plot.runCount());
    fmt::print("first paint (reduces the line to the canvas): {:.1f} ms\n", paintOnce(plot));
    plot.replot();
    fmt::print("replot and paint, line kept: {:.2f} ms\n", averagePaint(plot, 20));
    {
        TrackPlot empty(PlotType::Speed);
        empty.resize(1000, 130);
        empty.show();
        QApplication::processEvents();
        fmt::print("replot and paint of an empty plot: {:.2f} ms\n", averagePaint(empty, 20));
    }

    // An hour of playback: 25 positions a second, as the controller reports them.
    start = Clock::now();
    for (int i = 0; i < 3600 * 25; ++i) {
        plot.setCurrentTime(QDateTime::fromMSecsSinceEpoch(kStart * 1000 + i * 40));
        if (i % 25 == 0)
            QApplication::processEvents();
    }
    QApplication::processEvents();
    const double hourMs = millisecondsSince(start);
    fmt::print("an hour of positions (90,000 marker moves, the marker crossing {:.0f} px) with events processed: "
               "{:.1f} ms in all, {:.1f} us a position\n",
               plot.canvas()->width() * 3600.0 / kDaySeconds, hourMs, hourMs * 1000 / 90'000);

    // Zoomed in by eight wheel notches: the reduction runs again over the visible part only.
    for (int i = 0; i < 8; ++i) {
        QWheelEvent wheel(QPointF(500, 50), plot.canvas()->mapToGlobal(QPoint(500, 50)), QPoint(), QPoint(0, 120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(plot.canvas(), &wheel);
    }
    const auto range = plot.visibleRange();
    fmt::print("zoomed to {} s: first paint {:.2f} ms\n", range.first.secsTo(range.second), paintOnce(plot));
    // Five minutes: fewer fixes than pixels, drawn smooth (antialiased).
    plot.setVisibleRange(timeOf(kStart + 3600), timeOf(kStart + 3900));
    fmt::print("zoomed to 300 s (antialiased): paint {:.2f} ms\n", averagePaint(plot, 10));

    // The same points in one plain curve, for comparison (one line across the gaps).
    QwtPlot plain;
    plain.resize(1000, 130);
    plain.show();
    QVector<QPointF> points;
    for (const TrackPosition& position : track)
        if (position.speed)
            points << QPointF(static_cast<double>(trackTimeToSeconds(position.time)) * 1000, *position.speed);
    auto* curve = new QwtPlotCurve;
    curve->setRenderHint(QwtPlotItem::RenderAntialiased, true);
    curve->setPen(Qt::blue, 1.5);
    curve->setSamples(points);
    curve->attach(&plain);
    plain.replot();
    QApplication::processEvents();
    fmt::print("plain QwtPlotCurve, antialiased, same points: {:.1f} ms a paint\n", averagePaint(plain, 3));
    curve->setPaintAttribute(QwtPlotCurve::FilterPoints, true);
    curve->setRenderHint(QwtPlotItem::RenderAntialiased, false);
    plain.replot();
    fmt::print("plain QwtPlotCurve, FilterPoints, no antialiasing: {:.1f} ms a paint\n", averagePaint(plain, 3));
}

// Two plots and the active selector in a small window, as in the player's plot pane.
void screenshot(const QString& path, const TrackPositions& track, const QDateTime& from, const QDateTime& to,
                const QDateTime& selectFrom, const QDateTime& selectTo, const QDateTime& now,
                std::vector<PlotType> types = {PlotType::Speed, PlotType::Altitude}, QSize size = {760, 240}) {
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(0);
    PlotIntervalSelector selector;
    for (PlotType type : types) {
        auto* plot = new TrackPlot(type, &window);
        layout->addWidget(plot);
        plot->setTrack(track, from, to);
        plot->setCurrentTime(now);
        selector.attach(plot);
    }
    selector.setRange(from, to);
    selector.setActive(true);
    selector.setInterval(selectFrom, selectTo);
    window.resize(size);
    window.show();
    QApplication::processEvents();
    // The pointer resting over the first plot shows its readout.
    auto* first = window.findChild<TrackPlot*>();
    const QPoint pointer(first->canvas()->width() / 3, first->canvas()->height() / 2);
    QMouseEvent move(QEvent::MouseMove, pointer, first->canvas()->mapToGlobal(pointer), Qt::NoButton, Qt::NoButton,
                     Qt::NoModifier);
    QApplication::sendEvent(first->canvas(), &move);
    QApplication::processEvents();
    window.grab().save(path);
    fmt::print("wrote {}\n", path.toStdString());
}
} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() >= 4 && arguments.at(1) == QLatin1String("--screenshot")) {
        const QString dir = arguments.at(2);
        const TrackPositions real = TrackLoader::load(arguments.at(3)).positions;
        if (real.empty()) {
            fmt::print(stderr, "no fixes in {}\n", arguments.at(3).toStdString());
            return 1;
        }
        const QDateTime from = trackTimeToDateTime(real.front().time), to = trackTimeToDateTime(real.back().time);
        const qint64 length = from.secsTo(to);
        screenshot(dir + "/plots-real.png", real, from, to, from.addSecs(length / 4), from.addSecs(length * 2 / 3),
                   from.addSecs(length / 2));
        // The smallest the player's plot pane gets: one plot in 110 pixels.
        screenshot(dir + "/plots-compact.png", real, from, to, from, to, from.addSecs(length / 3), {PlotType::Satellites},
                   {600, 110});
        const TrackPositions day = dayOfDriving();
        screenshot(dir + "/plots-day.png", day, timeOf(kStart), timeOf(kStart + kDaySeconds), timeOf(kStart + 20'000),
                   timeOf(kStart + 40'000), timeOf(kStart + 36'000));
        return 0;
    }
    benchDay();
    return 0;
}
