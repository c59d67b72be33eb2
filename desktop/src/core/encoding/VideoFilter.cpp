// The video filter graph of the transcoder: scale and turn.
#include "core/encoding/VideoFilter.h"

#include "core/encoding/CoderParts.h"
#include "core/encoding/CutItems.h"
#include "logging/Logging.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavutil/opt.h>
}

#include <cstdio>
#include <vector>

namespace encoding {

VideoFilter::~VideoFilter() {
    if (graph)
        avfilter_graph_free(&graph);
    else if (source || sink)
        LOG_WARN(kCoderLogger, "There is no filter graph but there is filter context. Memory leak...");
}

std::unique_ptr<VideoFilter> createVideoFilter(const AVFrame& frame, const AVCodecContext& encoder, int rotation) {
    const AVFilter* buffer = avfilter_get_by_name("buffer");
    const AVFilter* buffersink = avfilter_get_by_name("buffersink");
    const AVFilter* scale = avfilter_get_by_name("scale");
    const AVFilter* transpose = avfilter_get_by_name("transpose");
    if (!buffer || !buffersink || !scale)
        fail("Failed to found one of avfilter");
    auto filter = std::make_unique<VideoFilter>();
    filter->graph = avfilter_graph_alloc();
    if (!filter->graph)
        fail("avfilter_graph_alloc failed");

    const AVRational aspect = frame.sample_aspect_ratio.num > 0 ? frame.sample_aspect_ratio : AVRational{1, 1};
    char args[512];
    std::snprintf(args, sizeof args, "video_size=%dx%d:pix_fmt=%d:time_base=%d/%d:pixel_aspect=%d/%d", frame.width,
                  frame.height, frame.format, encoder.time_base.num, encoder.time_base.den, aspect.num, aspect.den);
    int result = avfilter_graph_create_filter(&filter->source, buffer, "in", args, nullptr, filter->graph);
    if (result < 0)
        fail(fmt::format("avfilter_graph_create_filter(buffer): {}", ffmpegErrorText(result)));
    result = avfilter_graph_create_filter(&filter->sink, buffersink, "out", nullptr, nullptr, filter->graph);
    if (result < 0)
        fail(fmt::format("avfilter_graph_create_filter(buffersink): {}", ffmpegErrorText(result)));
    result = av_opt_set_bin(filter->sink, "pix_fmts", reinterpret_cast<const uint8_t*>(&encoder.pix_fmt),
                            sizeof(encoder.pix_fmt), AV_OPT_SEARCH_CHILDREN);
    if (result < 0)
        fail(fmt::format("av_opt_set_bin(buffersink, pix_fmts): {}", ffmpegErrorText(result)));

    std::vector<AVFilterContext*> chain{filter->source};
    // The scale comes before the turn, so for a sideways turn it aims at the encoder's size turned back.
    const int scaledWidth = turnsSideways(rotation) ? encoder.height : encoder.width;
    const int scaledHeight = turnsSideways(rotation) ? encoder.width : encoder.height;
    if (frame.width != scaledWidth || frame.height != scaledHeight) {
        AVFilterContext* context = nullptr;
        std::snprintf(args, sizeof args, "w=%d:h=%d", scaledWidth, scaledHeight);
        result = avfilter_graph_create_filter(&context, scale, "scale", args, nullptr, filter->graph);
        if (result < 0)
            fail(fmt::format("avfilter_graph_create_filter(scale): {}", ffmpegErrorText(result)));
        chain.push_back(context);
    }
    std::vector<const char*> turns;
    if (rotation == 1)
        turns = {"2"};
    else if (rotation == 2)
        turns = {"1", "1"};
    else if (rotation == 3)
        turns = {"1"};
    for (std::size_t i = 0; i < turns.size(); ++i) {
        AVFilterContext* context = nullptr;
        const std::string name = fmt::format("transpose{}", i);
        result = avfilter_graph_create_filter(&context, transpose, name.c_str(), turns[i], nullptr, filter->graph);
        if (result < 0)
            fail(fmt::format("avfilter_graph_create_filter(transpose): {}", ffmpegErrorText(result)));
        chain.push_back(context);
    }
    for (std::size_t i = 0; i + 1 < chain.size(); ++i) {
        result = avfilter_link(chain[i], 0, chain[i + 1], 0);
        if (result < 0)
            fail(fmt::format("avfilter_link() at {} step: {}", i, ffmpegErrorText(result)));
    }
    result = avfilter_link(chain.back(), 0, filter->sink, 0);
    if (result < 0)
        fail(fmt::format("avfilter_link() at the last step: {}", ffmpegErrorText(result)));
    result = avfilter_graph_config(filter->graph, nullptr);
    if (result < 0)
        fail(fmt::format("avfilter_graph_config: {}", ffmpegErrorText(result)));
    return filter;
}

} // namespace encoding
