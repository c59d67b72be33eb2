// The waiting spinner over a widget: shown a moment after start, following the widget, letting clicks through.
#include "ui/WaitingAnimation.h"

#include "support/TestSupport.h"

#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using testsupport::waitUntil;

TEST(WaitingAnimation, covers_its_widget_while_running_and_lets_the_mouse_through) {
    QWidget pane;
    pane.resize(300, 200);
    auto* button = new QPushButton(QStringLiteral("under"), &pane);
    button->setGeometry(0, 0, 300, 200);
    WaitingAnimation waiting(&pane);
    pane.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&pane));

    waiting.start();
    EXPECT_TRUE(waiting.isRunning());
    EXPECT_FALSE(waiting.isVisible()) << "a short wait shows nothing";
    EXPECT_TRUE(waitUntil([&] { return waiting.isVisible(); }, 2000));
    EXPECT_EQ(waiting.geometry(), pane.rect());
    pane.resize(500, 260);
    EXPECT_TRUE(waitUntil([&] { return waiting.geometry() == pane.rect(); }, 2000));

    // The spinner is painted in the middle, not over the corners.
    const QImage picture = pane.grab().toImage();
    EXPECT_NE(picture.pixelColor(250, 130), picture.pixelColor(5, 5));

    QSignalSpy clicked(button, &QPushButton::clicked);
    // Through the window, as a real click: the widget under the pointer gets it.
    QTest::mouseClick(pane.windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(250, 130));
    EXPECT_EQ(clicked.count(), 1);

    waiting.stop();
    EXPECT_FALSE(waiting.isRunning());
    EXPECT_FALSE(waiting.isVisible());
}
