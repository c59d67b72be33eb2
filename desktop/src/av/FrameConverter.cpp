// Picture conversion with libswscale.
#include "av/FrameConverter.h"

extern "C" {
#include <libavutil/frame.h>
#include <libswscale/swscale.h>
}

namespace av {

FrameConverter::~FrameConverter() {
    sws_freeContext(m_scaler);
}

QImage FrameConverter::convert(const AVFrame* frame, QSize size, QImage::Format format) {
    if (!frame || frame->width <= 0 || frame->height <= 0)
        return {};
    if (size.isEmpty())
        size = QSize(frame->width, frame->height);
    const AVPixelFormat target = format == QImage::Format_RGB888 ? AV_PIX_FMT_RGB24 : AV_PIX_FMT_BGRA;
    if (format != QImage::Format_RGB888)
        format = QImage::Format_RGB32;
    m_scaler = sws_getCachedContext(m_scaler, frame->width, frame->height, static_cast<AVPixelFormat>(frame->format),
                                    size.width(), size.height(), target, SWS_BILINEAR, nullptr, nullptr, nullptr);
    if (!m_scaler)
        return {};
    QImage image(size, format);
    uint8_t* planes[4] = {image.bits(), nullptr, nullptr, nullptr};
    int strides[4] = {image.bytesPerLine(), 0, 0, 0};
    sws_scale(m_scaler, frame->data, frame->linesize, 0, frame->height, planes, strides);
    return image;
}

QSize displaySize(const AVFrame* frame) {
    if (!frame)
        return {};
    QSize size(frame->width, frame->height);
    const AVRational sar = frame->sample_aspect_ratio;
    if (sar.num > 0 && sar.den > 0 && sar.num != sar.den)
        size.setWidth(static_cast<int>(frame->width * static_cast<double>(sar.num) / sar.den + 0.5));
    return size;
}

} // namespace av
