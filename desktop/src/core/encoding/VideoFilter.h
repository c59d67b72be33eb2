// The video filter graph of the transcoder: the picture of one camera file scaled to the output's size and
// turned as it is shown on screen.
#pragma once

#include <memory>

struct AVCodecContext;
struct AVFilterContext;
struct AVFilterGraph;
struct AVFrame;

namespace encoding {

// Scale (when the size differs from the output) and transpose (for the rotation) between "in" and "out".
struct VideoFilter {
    AVFilterGraph* graph = nullptr;
    AVFilterContext* source = nullptr;
    AVFilterContext* sink = nullptr;

    ~VideoFilter();
};

// Built from the first decoded frame of a file, whose timestamps are already in the encoder's time base.
std::unique_ptr<VideoFilter> createVideoFilter(const AVFrame& frame, const AVCodecContext& encoder, int rotation);

} // namespace encoding
