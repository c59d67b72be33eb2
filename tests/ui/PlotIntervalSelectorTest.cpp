// The interval selector on two real plots: edges dragged with the mouse, limits, the inactive state, and its
// time labels on a short interval.
#include "ui/PlotIntervalSelector.h"

#include "support/MouseEvents.h"
#include "ui/TrackPlot.h"

#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

using testsupport::dragMouse;

namespace {
const QDateTime kFrom = QDateTime(QDate(2024, 5, 1), QTime(12, 0, 0));
const QDateTime kTo = kFrom.addSecs(600);

struct PlotIntervalSelectorTest : testing::Test {
    QWidget window;
    TrackPlot* speed = new TrackPlot(PlotType::Speed, &window);
    TrackPlot* altitude = new TrackPlot(PlotType::Altitude, &window);
    PlotIntervalSelector selector;

    void SetUp() override {
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(speed);
        layout->addWidget(altitude);
        window.resize(700, 280);
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
        TrackPositions track(1);
        track[0].time = trackTimeFromSeconds(kFrom.toSecsSinceEpoch());
        for (TrackPlot* plot : {speed, altitude}) {
            plot->setTrack(track, kFrom, kTo);
            selector.attach(plot);
        }
        selector.setRange(kFrom, kTo);
        selector.setActive(true);
        QApplication::processEvents();
    }
    QPointF at(TrackPlot* plot, const QDateTime& time) const {
        return {plot->canvasXOf(time), plot->canvas()->height() / 2.0};
    }
    // The time of one pixel, the precision a drag has.
    qint64 pixelMs() const { return 600'000 / speed->canvas()->width() + 1; }
};
} // namespace

TEST_F(PlotIntervalSelectorTest, dragging_an_edge_on_either_plot_moves_the_interval) {
    QSignalSpy changed(&selector, &PlotIntervalSelector::intervalChanged);
    QSignalSpy clicked(speed, &TrackPlot::clicked);
    EXPECT_EQ(selector.interval(), std::make_pair(kFrom, kTo));

    dragMouse(speed->canvas(), at(speed, kFrom), at(speed, kFrom.addSecs(100)));
    EXPECT_GE(changed.count(), 1);
    EXPECT_EQ(clicked.count(), 0) << "a drag of an edge is no seek";
    EXPECT_NEAR(selector.interval().first.msecsTo(kFrom.addSecs(100)), 0, pixelMs());

    const int before = changed.count();
    dragMouse(altitude->canvas(), at(altitude, kTo), at(altitude, kFrom.addSecs(400)));
    EXPECT_GT(changed.count(), before);
    EXPECT_NEAR(selector.interval().second.msecsTo(kFrom.addSecs(400)), 0, pixelMs());
    EXPECT_NEAR(selector.interval().first.msecsTo(kFrom.addSecs(100)), 0, pixelMs());
}

TEST_F(PlotIntervalSelectorTest, edges_stay_in_the_range_and_never_cross) {
    selector.setInterval(kFrom.addSecs(200), kFrom.addSecs(300));

    // The end dragged far before the start stops at the start: a zero-length interval.
    dragMouse(speed->canvas(), at(speed, kFrom.addSecs(300)), at(speed, kFrom.addSecs(50)));
    EXPECT_EQ(selector.interval().first, kFrom.addSecs(200));
    EXPECT_EQ(selector.interval().second, kFrom.addSecs(200));

    // Two edges that meet: the direction of the drag picks one.
    dragMouse(speed->canvas(), at(speed, kFrom.addSecs(200)), at(speed, kFrom.addSecs(350)));
    EXPECT_EQ(selector.interval().first, kFrom.addSecs(200));
    EXPECT_NEAR(selector.interval().second.msecsTo(kFrom.addSecs(350)), 0, pixelMs());

    // Out of the canvas on either side: the range's ends.
    dragMouse(speed->canvas(), at(speed, kFrom.addSecs(200)), QPointF(-80, 10));
    EXPECT_EQ(selector.interval().first, kFrom);
    dragMouse(speed->canvas(), at(speed, selector.interval().second), QPointF(speed->canvas()->width() + 80, 10));
    EXPECT_EQ(selector.interval().second, kTo);

    selector.setInterval(kFrom.addSecs(-10), kTo.addSecs(10));
    EXPECT_EQ(selector.interval(), std::make_pair(kFrom, kTo));
}

TEST_F(PlotIntervalSelectorTest, inactive_it_leaves_the_mouse_to_the_plot_and_a_new_range_resets_it) {
    selector.setInterval(kFrom.addSecs(100), kFrom.addSecs(200));
    selector.setActive(false);
    QSignalSpy changed(&selector, &PlotIntervalSelector::intervalChanged);
    QSignalSpy clicked(speed, &TrackPlot::clicked);
    dragMouse(speed->canvas(), at(speed, kFrom.addSecs(100)), at(speed, kFrom.addSecs(150)));
    EXPECT_GE(clicked.count(), 1);
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(selector.interval().first, kFrom.addSecs(100));

    selector.setRange(kFrom.addSecs(60), kTo);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(selector.interval(), std::make_pair(kFrom.addSecs(60), kTo));

    // A plot that goes away drops out; the selector goes on with the other.
    delete altitude;
    selector.setActive(true);
    dragMouse(speed->canvas(), at(speed, kTo), at(speed, kFrom.addSecs(500)));
    EXPECT_NEAR(selector.interval().second.msecsTo(kFrom.addSecs(500)), 0, pixelMs());
}

// On an interval a few pixels wide the two time labels must not be drawn over each other: the rows of the
// canvas that show label text (the edges' colour away from the edge lines) form two separate groups.
TEST_F(PlotIntervalSelectorTest, the_edge_labels_of_a_short_interval_do_not_overlap) {
    selector.setInterval(kFrom.addSecs(300), kFrom.addSecs(302));
    QApplication::processEvents();
    const QImage picture = speed->canvas()->grab().toImage();
    const double fromX = speed->canvasXOf(kFrom.addSecs(300)), toX = speed->canvasXOf(kFrom.addSecs(302));
    std::vector<int> rows;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            const QColor c = picture.pixelColor(x, y);
            const bool edgeColour = c.blue() > 150 && c.red() < 90 && c.green() < 140;
            if (edgeColour && std::abs(x - fromX) > 4 && std::abs(x - toX) > 4) {
                rows.push_back(y);
                break;
            }
        }
    ASSERT_FALSE(rows.empty());
    int groups = 1;
    for (size_t i = 1; i < rows.size(); ++i)
        groups += rows[i] > rows[i - 1] + 1;
    EXPECT_EQ(groups, 2) << "label rows from " << rows.front() << " to " << rows.back();
}
