// Turns a decoded picture into a QImage of a chosen size (colour conversion and scaling in one pass).
#pragma once

#include <QImage>
#include <QSize>

struct AVFrame;
struct SwsContext;

namespace av {

// Keeps its scaler between calls, so converting a stream of same-sized frames sets it up once.
// Not thread-safe: one converter per thread.
class FrameConverter {
public:
    FrameConverter() = default;
    ~FrameConverter();
    FrameConverter(const FrameConverter&) = delete;
    FrameConverter& operator=(const FrameConverter&) = delete;

    // An empty `size` keeps the frame's own size. Returns a null image for a null frame.
    QImage convert(const AVFrame* frame, QSize size = {}, QImage::Format format = QImage::Format_RGB888);

private:
    SwsContext* m_scaler = nullptr;
};

// The size a frame should be shown at: its coded size corrected by the sample aspect ratio.
QSize displaySize(const AVFrame* frame);

} // namespace av
