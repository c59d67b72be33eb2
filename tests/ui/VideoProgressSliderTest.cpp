// The progress slider: times and steps, delayed and immediate reports, silent moves, seeking under the pointer.
#include "ui/VideoProgressSlider.h"

#include "support/TestSupport.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using testsupport::waitUntil;

namespace {
const QDateTime kFrom = QDateTime(QDate(2024, 5, 1), QTime(12, 0, 0));
const QDateTime kTo = kFrom.addSecs(2000);  // 2 ms per step
} // namespace

TEST(VideoProgressSlider, maps_times_to_steps_over_the_interval) {
    VideoProgressSlider slider;
    slider.setInterval(kFrom, kTo);
    EXPECT_EQ(slider.valueOf(kFrom), 0);
    EXPECT_EQ(slider.valueOf(kTo), VideoProgressSlider::kSteps);
    EXPECT_EQ(slider.valueOf(kFrom.addSecs(1000)), 500'000);
    EXPECT_EQ(slider.valueOf(kFrom.addSecs(-5)), 0);
    EXPECT_EQ(slider.timeOf(250'000), kFrom.addSecs(500));

    slider.setInterval(kFrom, kFrom);
    EXPECT_EQ(slider.valueOf(kFrom.addSecs(3)), 0);
    EXPECT_EQ(slider.timeOf(10), kFrom);
}

TEST(VideoProgressSlider, reports_a_new_value_after_a_delay_and_the_current_one_at_once) {
    VideoProgressSlider slider;
    slider.setInterval(kFrom, kTo);
    QSignalSpy reported(&slider, &VideoProgressSlider::positionChanged);

    slider.setTime(kFrom.addSecs(100));
    EXPECT_EQ(slider.value(), 50'000);
    waitUntil([] { return false; }, 150);
    EXPECT_EQ(reported.count(), 0);

    slider.seekTo(kFrom.addMSecs(99'999));  // the same step
    ASSERT_EQ(reported.count(), 1);
    EXPECT_EQ(reported[0][0].toDateTime(), kFrom.addMSecs(99'999));

    slider.seekTo(kFrom.addSecs(300));
    EXPECT_EQ(reported.count(), 1);
    EXPECT_TRUE(waitUntil([&] { return reported.count() == 2; }));
    EXPECT_EQ(reported[1][0].toDateTime(), kFrom.addSecs(300));
}

TEST(VideoProgressSlider, a_press_seeks_under_the_pointer_and_holds_until_released) {
    VideoProgressSlider slider;
    slider.setInterval(kFrom, kTo);
    slider.resize(400, 30);
    slider.show();
    QSignalSpy pressed(&slider, &VideoProgressSlider::mousePressed);
    QSignalSpy released(&slider, &VideoProgressSlider::mouseReleased);
    QSignalSpy reported(&slider, &VideoProgressSlider::positionChanged);

    QTest::mousePress(&slider, Qt::LeftButton, {}, QPoint(300, 15));
    EXPECT_EQ(pressed.count(), 1);
    EXPECT_NEAR(slider.value(), 750'000, 40'000);
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, QPoint(300, 15));
    EXPECT_EQ(released.count(), 1);
    EXPECT_TRUE(waitUntil([&] { return reported.count() == 1; }));
    EXPECT_EQ(reported[0][0].toDateTime(), slider.time());
}
