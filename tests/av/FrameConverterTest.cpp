// The frame converter: one scaler for a run of same-sized frames, correct colours at the target size.
#include "av/Ffmpeg.h"
#include "av/FrameConverter.h"

extern "C" {
#include <libavutil/imgutils.h>
}

#include <cstring>

#include <gtest/gtest.h>

namespace {
// A mid-grey 1080p picture as a decoder hands it out (limited-range YUV 4:2:0).
av::FramePtr greyFrame(int width = 1920, int height = 1080) {
    av::FramePtr frame(av_frame_alloc());
    frame->width = width;
    frame->height = height;
    frame->format = AV_PIX_FMT_YUV420P;
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        return nullptr;
    std::memset(frame->data[0], 126, static_cast<size_t>(frame->linesize[0]) * height);
    std::memset(frame->data[1], 128, static_cast<size_t>(frame->linesize[1]) * ((height + 1) / 2));
    std::memset(frame->data[2], 128, static_cast<size_t>(frame->linesize[2]) * ((height + 1) / 2));
    return frame;
}
} // namespace

TEST(FrameConverterTest, builds_one_scaler_for_a_run_of_same_sized_frames_at_odd_and_even_widths) {
    const av::FramePtr frame = greyFrame();
    ASSERT_TRUE(frame);
    for (const QSize target : {QSize(667, 375), QSize(666, 374), QSize(1921, 1080)}) {
        SCOPED_TRACE(target.width());
        av::FrameConverter converter;
        for (int i = 0; i < 5; ++i) {
            const QImage image = converter.convert(frame.get(), target, QImage::Format_RGB32);
            ASSERT_EQ(image.size(), target);
            const QRgb middle = image.pixel(target.width() / 2, target.height() / 2);
            EXPECT_NEAR(qGreen(middle), 128, 3);
            EXPECT_NEAR(qRed(middle), qBlue(middle), 2);
        }
        EXPECT_EQ(converter.scalersBuilt(), 1);
        converter.convert(frame.get(), target + QSize(1, 0), QImage::Format_RGB32);
        converter.convert(frame.get(), target + QSize(1, 0), QImage::Format_RGB888);
        EXPECT_EQ(converter.scalersBuilt(), 3) << "a new size or format needs a new scaler";
    }
}
