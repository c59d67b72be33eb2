// Picture conversion with libswscale.
#include "av/FrameConverter.h"

extern "C" {
#include <libavutil/frame.h>
#include <libswscale/swscale.h>
}

#include <tuple>

namespace av {
namespace {
constexpr int kScalerFlags = SWS_BILINEAR;
} // namespace

bool FrameConverter::Key::operator==(const Key& other) const {
    return std::tie(sourceWidth, sourceHeight, sourceFormat, targetWidth, targetHeight, targetFormat) ==
           std::tie(other.sourceWidth, other.sourceHeight, other.sourceFormat, other.targetWidth, other.targetHeight,
                    other.targetFormat);
}

FrameConverter::~FrameConverter() {
    sws_freeContext(m_scaler);
}

QImage FrameConverter::convert(const AVFrame* frame, QSize size, QImage::Format format) {
    if (!frame || frame->width <= 0 || frame->height <= 0)
        return {};
    if (size.isEmpty())
        size = QSize(frame->width, frame->height);
    QImage image(size, format == QImage::Format_RGB888 ? QImage::Format_RGB888 : QImage::Format_RGB32);
    if (image.isNull() || !convertInto(frame, image))
        return {};
    return image;
}

bool FrameConverter::convertInto(const AVFrame* frame, QImage& image) {
    if (!frame || frame->width <= 0 || frame->height <= 0 || image.isNull())
        return false;
    const Key key{frame->width, frame->height, frame->format, image.width(), image.height(),
                  image.format() == QImage::Format_RGB888 ? AV_PIX_FMT_RGB24 : AV_PIX_FMT_BGRA};
    if (!m_scaler || !(key == m_key)) {
        sws_freeContext(m_scaler);
        m_scaler = sws_getContext(key.sourceWidth, key.sourceHeight, static_cast<AVPixelFormat>(key.sourceFormat),
                                  key.targetWidth, key.targetHeight, static_cast<AVPixelFormat>(key.targetFormat),
                                  kScalerFlags, nullptr, nullptr, nullptr);
        m_key = key;
        ++m_built;
    }
    if (!m_scaler)
        return false;
    uint8_t* planes[4] = {image.bits(), nullptr, nullptr, nullptr};
    int strides[4] = {image.bytesPerLine(), 0, 0, 0};
    sws_scale(m_scaler, frame->data, frame->linesize, 0, frame->height, planes, strides);
    return true;
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
