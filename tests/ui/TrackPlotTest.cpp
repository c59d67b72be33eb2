// The track plot on screen: gaps in the drawn line, the time under a click, wheel zoom within the item.
#include "ui/TrackPlot.h"

#include "ui/PlotIntervalSelector.h"

#include "support/MouseEvents.h"
#include "support/TestSupport.h"

#include <QCursor>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <functional>

namespace {
const QDateTime kFrom = QDateTime(QDate(2024, 5, 1), QTime(12, 0, 0));

// Speed 50 km/h every second over [0, 300] s, except: no speed in [100, 200), no fixes at all in (240, 270).
TrackPositions trackWithGaps() {
    TrackPositions track;
    for (int s = 0; s <= 300; ++s) {
        if (s > 240 && s < 270)
            continue;
        TrackPosition position;
        position.time = trackTimeFromSeconds(kFrom.toSecsSinceEpoch() + s);
        if (s < 100 || s >= 200)
            position.speed = 50.0;
        position.altitude = 100.0 + s;
        track.push_back(position);
    }
    return track;
}

// Whether the column of the canvas picture at the time has a pixel of the speed line's blue.
bool lineAt(TrackPlot& plot, int second) {
    const QImage picture = plot.canvas()->grab().toImage();
    const int x = qRound(plot.canvasXOf(kFrom.addSecs(second)));
    for (int y = 0; y < picture.height(); ++y) {
        const QColor pixel = picture.pixelColor(x, y);
        if (pixel.blue() > 150 && pixel.red() < 120 && pixel.green() < 170)
            return true;
    }
    return false;
}

struct TrackPlotTest : testing::Test {
    TrackPlot plot{PlotType::Speed};
    void SetUp() override {
        plot.resize(640, 140);
        plot.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&plot));
        plot.setTrack(trackWithGaps(), kFrom, kFrom.addSecs(300));
        QApplication::processEvents();
    }
    QPointF canvasPoint(double x) const { return {x, plot.canvas()->height() / 2.0}; }
};
} // namespace

TEST_F(TrackPlotTest, leaves_gaps_where_a_value_or_the_fixes_are_missing) {
    EXPECT_EQ(plot.runCount(), 3);
    EXPECT_TRUE(lineAt(plot, 50));
    EXPECT_FALSE(lineAt(plot, 150));
    EXPECT_TRUE(lineAt(plot, 220));
    EXPECT_FALSE(lineAt(plot, 255));
    EXPECT_TRUE(lineAt(plot, 285));
    // The pointer's readout: the nearest value, none inside a gap.
    const double fromMs = kFrom.toMSecsSinceEpoch();
    EXPECT_EQ(plot.readoutAt(fromMs + 50'400), QStringLiteral("12:00:50  50"));
    EXPECT_EQ(plot.readoutAt(fromMs + 150'000), QStringLiteral("12:02:30"));

    // Altitude has every fix's value: only the hole without fixes breaks it.
    TrackPlot altitude(PlotType::Altitude);
    altitude.setTrack(trackWithGaps(), kFrom, kFrom.addSecs(300));
    EXPECT_EQ(altitude.runCount(), 2);
    altitude.clearTrack();
    EXPECT_EQ(altitude.runCount(), 0);
    EXPECT_EQ(altitude.shownTrack(), nullptr);
}

TEST_F(TrackPlotTest, a_click_reports_the_time_under_the_pointer) {
    QSignalSpy clicked(&plot, &TrackPlot::clicked);
    const int width = plot.canvas()->width();
    const double secondsPerPixel = 300.0 / width;
    testsupport::sendMouse(plot.canvas(), QEvent::MouseButtonPress, canvasPoint(width * 0.25));
    testsupport::sendMouse(plot.canvas(), QEvent::MouseButtonRelease, canvasPoint(width * 0.25));
    ASSERT_EQ(clicked.count(), 1);
    EXPECT_NEAR(clicked[0][0].toDouble(), kFrom.toSecsSinceEpoch() + 75.0, 2 * secondsPerPixel);

    // Past the canvas' end (a drag that left it): the item's end, never beyond.
    testsupport::dragMouse(plot.canvas(), canvasPoint(width * 0.5), canvasPoint(width + 40));
    EXPECT_NEAR(clicked.last()[0].toDouble(), kFrom.toSecsSinceEpoch() + 300.0, 1e-3);
}

TEST_F(TrackPlotTest, wheel_zooms_around_the_pointer_and_never_beyond_the_item) {
    QSignalSpy changed(&plot, &TrackPlot::visibleRangeChanged);
    const QPointF quarter = canvasPoint(plot.canvasXOf(kFrom.addSecs(75)));
    const int width = plot.canvas()->width();
    testsupport::sendWheel(plot.canvas(), quarter, 3);
    auto range = plot.visibleRange();
    EXPECT_EQ(changed.count(), 1);
    EXPECT_NEAR(range.first.msecsTo(range.second), 300'000 * 0.512, 10);
    EXPECT_NEAR(plot.msAtCanvasX(quarter.x()), kFrom.addSecs(75).toMSecsSinceEpoch(), 600) << "the time under the pointer stays";
    EXPECT_EQ(plot.canvas()->width(), width) << "new labels leave the canvas as it was";

    // Panning left stops at the item's start; zooming out stops at the whole item.
    testsupport::sendWheel(plot.canvas(), quarter, 20, Qt::ShiftModifier);
    EXPECT_EQ(plot.visibleRange().first, kFrom);
    testsupport::sendWheel(plot.canvas(), quarter, -20);
    range = plot.visibleRange();
    EXPECT_EQ(range.first, kFrom);
    EXPECT_EQ(range.second, kFrom.addSecs(300));
}

TEST_F(TrackPlotTest, the_marker_stays_within_the_item) {
    plot.setCurrentTime(kFrom.addSecs(120));
    EXPECT_EQ(plot.currentTime(), kFrom.addSecs(120));
    plot.setCurrentTime(kFrom.addSecs(-50));
    EXPECT_EQ(plot.currentTime(), kFrom);
    plot.setCurrentTime(kFrom.addSecs(1000));
    EXPECT_EQ(plot.currentTime(), kFrom.addSecs(300));
}

// The readout under the pointer goes with the pointer, also where Qt reports no Leave to the canvas. The real
// pointer rests far from the plot; the events below are what the canvas would get.
TEST_F(TrackPlotTest, the_readout_goes_when_the_pointer_is_no_longer_over_the_canvas) {
    plot.move(400, 400);
    QCursor::setPos(5, 5);
    QApplication::processEvents();
    QWidget* canvas = plot.canvas();
    const QPoint at(canvas->width() * 3 / 4, canvas->height() / 2);
    const auto hover = [&] {
        QEnterEvent enter(at, at, canvas->mapToGlobal(at));
        QApplication::sendEvent(canvas, &enter);
        testsupport::sendMouse(canvas, QEvent::MouseMove, at, Qt::NoButton);
    };
    PlotIntervalSelector selector;
    selector.attach(&plot);
    selector.setRange(kFrom, kFrom.addSecs(300));

    const std::vector<std::pair<const char*, std::function<void()>>> ways{
        {"Leave", [&] { QEvent leave(QEvent::Leave); QApplication::sendEvent(canvas, &leave); }},
        {"a drag out of the canvas", [&] { testsupport::dragMouse(canvas, at, QPoint(canvas->width() + 40, at.y())); }},
        {"hidden and shown again", [&] { plot.hide(); plot.show(); }},
        {"its window deactivated", [&] { QEvent off(QEvent::WindowDeactivate); QApplication::sendEvent(&plot, &off); }},
        {"laid out smaller", [&] { plot.resize(plot.width() / 2, plot.height()); }},
        {"a new track", [&] { plot.setTrack(trackWithGaps(), kFrom.addSecs(-60), kFrom.addSecs(300)); }},
        {"an interval edge dragged", [&] {
             selector.setActive(true);
             testsupport::sendMouse(canvas, QEvent::MouseButtonPress, QPointF(plot.canvasXOf(kFrom.addSecs(300)), at.y()));
             testsupport::sendMouse(canvas, QEvent::MouseMove, QPointF(plot.canvasXOf(kFrom.addSecs(200)), at.y()));
             testsupport::sendMouse(canvas, QEvent::MouseButtonRelease, QPointF(plot.canvasXOf(kFrom.addSecs(200)), at.y()));
             selector.setActive(false);
         }},
    };
    for (const auto& [way, leave] : ways) {
        plot.resize(640, 140);
        plot.show();
        QApplication::processEvents();
        hover();
        ASSERT_EQ(plot.readoutText().toStdString(), plot.readoutAt(plot.msAtCanvasX(at.x())).toStdString()) << way;
        leave();
        QApplication::processEvents();
        EXPECT_EQ(plot.readoutText().toStdString(), "") << way;
    }

    // A wheel zoom keeps the box, with the time now under the pointer.
    plot.setTrack(trackWithGaps(), kFrom, kFrom.addSecs(300));
    hover();
    testsupport::sendWheel(canvas, at, 3);
    EXPECT_EQ(plot.readoutText().toStdString(), plot.readoutAt(plot.msAtCanvasX(at.x())).toStdString());
}
