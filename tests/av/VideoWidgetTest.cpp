// The video widget: aspect fit on black, orientation, clearing, frame size signal.
#include "av/Player.h"
#include "av/VideoWidget.h"
#include "support/EventWait.h"
#include "support/TestSupport.h"
#include "support/StripeMedia.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {
bool isBlack(QRgb pixel) {
    return qRed(pixel) < 8 && qGreen(pixel) < 8 && qBlue(pixel) < 8;
}

struct VideoWidgetTest : testing::Test {
    av::Player player;
    av::VideoWidget widget;

    void SetUp() override {
        widget.resize(400, 400);
        widget.show();
        player.setFile(testsupport::sharedFrontVideo());
        player.load();
    }
    QImage picture() {
        testsupport::runEventsFor(20);
        return widget.grab().toImage();
    }
};
} // namespace

TEST_F(VideoWidgetTest, fits_the_picture_between_black_bars_and_reports_its_size) {
    QSignalSpy sizes(&widget, &av::VideoWidget::frameSizeChanged);
    player.setRenderer(&widget);
    ASSERT_EQ(sizes.count(), 1);
    EXPECT_EQ(sizes[0][0].toSize(), QSize(320, 180));
    const QImage image = picture();
    // 400 wide: the 16:9 picture is 225 high, centred, so 87 rows of black above and below.
    EXPECT_TRUE(isBlack(image.pixel(200, 40)));
    EXPECT_TRUE(isBlack(image.pixel(200, 360)));
    EXPECT_FALSE(isBlack(image.pixel(200, 200)));
    EXPECT_FALSE(isBlack(image.pixel(5, 200)));
}

TEST_F(VideoWidgetTest, turned_sideways_the_bars_are_left_and_right) {
    player.setRenderer(&widget);
    widget.setOrientation(90);
    EXPECT_EQ(widget.orientation(), 90);
    const QImage image = picture();
    EXPECT_TRUE(isBlack(image.pixel(40, 200)));
    EXPECT_TRUE(isBlack(image.pixel(360, 200)));
    EXPECT_FALSE(isBlack(image.pixel(200, 5)));
    EXPECT_FALSE(isBlack(image.pixel(200, 395)));
}

TEST_F(VideoWidgetTest, cleared_it_is_all_black) {
    player.setRenderer(&widget);
    QSignalSpy sizes(&widget, &av::VideoWidget::frameSizeChanged);
    widget.clear();
    EXPECT_FALSE(widget.hasFrame());
    ASSERT_EQ(sizes.count(), 1);
    EXPECT_TRUE(sizes[0][0].toSize().isEmpty());
    const QImage image = picture();
    EXPECT_TRUE(isBlack(image.pixel(200, 200)));
    EXPECT_TRUE(isBlack(image.pixel(5, 200)));
}

TEST_F(VideoWidgetTest, the_decoder_converts_pictures_at_the_size_the_widget_draws_them_at) {
    player.setRenderer(&widget);
    widget.resize(301, 400);  // an odd width: the picture is one column narrower
    player.play();
    const auto convertedAt = [&](QSize size) {
        return testsupport::waitUntil([&] { return player.currentFrame().picture.size() == size; }, 3000);
    };
    EXPECT_TRUE(convertedAt(QSize(300, 169))) << player.currentFrame().picture.size().width();
    widget.setOrientation(90);
    EXPECT_TRUE(convertedAt(QSize(400, 225))) << player.currentFrame().picture.size().width();
    const QImage image = picture();
    EXPECT_TRUE(isBlack(image.pixel(10, 200)));
    EXPECT_FALSE(isBlack(image.pixel(150, 200)));
}
