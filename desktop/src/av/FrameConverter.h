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
    // Converts into `image` (RGB888 or RGB32), which the caller has allocated at the target size; false on failure.
    bool convertInto(const AVFrame* frame, QImage& image);

    // How many scalers this converter has set up so far.
    int scalersBuilt() const { return m_built; }

private:
    // What a scaler was asked for. sws_getCachedContext compares its own, adjusted copy of the flags (it
    // adds one at odd widths), so it would rebuild the scaler for every frame: this key is ours.
    struct Key {
        int sourceWidth = 0, sourceHeight = 0, sourceFormat = -1;
        int targetWidth = 0, targetHeight = 0, targetFormat = -1;
        bool operator==(const Key& other) const;
    };

    SwsContext* m_scaler = nullptr;
    Key m_key;
    int m_built = 0;
};

// The size a frame should be shown at: its coded size corrected by the sample aspect ratio.
QSize displaySize(const AVFrame* frame);

} // namespace av
