// Full screen over real widgets: the video area and its controls move out and come back in their places.
#include "ui/FullscreenController.h"

#include <QApplication>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QToolButton>
#include <QVBoxLayout>

#include <gtest/gtest.h>

TEST(FullscreenController, a_double_click_moves_the_video_and_its_controls_to_a_window_of_their_own_and_back) {
    QWidget window;
    auto* pane = new QWidget(&window);
    auto* layout = new QVBoxLayout(pane);
    auto* area = new QWidget;
    auto* strip = new QWidget;
    auto* toolbar = new QWidget;
    for (QWidget* widget : {area, strip, toolbar})
        layout->addWidget(widget);
    auto* enter = new QToolButton(&window);
    auto* leave = new QToolButton(&window);
    int prepared = 0;
    FullscreenController fullscreen({pane, area, strip, toolbar, enter, leave, {}}, &window,
                                    [&prepared](QWidget*) { ++prepared; });
    window.show();
    QSignalSpy resized(&fullscreen, &FullscreenController::resized);

    QMouseEvent doubleClick(QEvent::MouseButtonDblClick, QPointF(5, 5), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(area, &doubleClick);
    ASSERT_TRUE(fullscreen.isFullscreen());
    EXPECT_NE(area->window(), &window);
    EXPECT_EQ(strip->window(), area->window());
    EXPECT_TRUE(leave->isVisibleTo(&window));
    EXPECT_FALSE(enter->isVisibleTo(&window));
    fullscreen.hideControls(); // the mouse rested
    EXPECT_FALSE(strip->isVisibleTo(area->window()));
    EXPECT_FALSE(toolbar->isVisibleTo(area->window()));

    fullscreen.toggle();
    EXPECT_FALSE(fullscreen.isFullscreen());
    EXPECT_EQ(layout->indexOf(area), 0);
    EXPECT_EQ(layout->indexOf(strip), 1);
    EXPECT_EQ(layout->indexOf(toolbar), 2);
    EXPECT_TRUE(strip->isVisibleTo(&window)) << "the controls come back with the area";
    EXPECT_TRUE(strip->styleSheet().isEmpty());
    EXPECT_GE(resized.count(), 1);
    fullscreen.toggle();
    fullscreen.leave();
    EXPECT_EQ(prepared, 1) << "the full-screen window is made once";
}
