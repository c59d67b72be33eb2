// One picture of the overview: the cameras side by side, then the burned-in text.
#include "core/evidence/OverviewVideoPicture.h"

#include <fmt/format.h>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <cstring>

namespace evidence::detail {
namespace {

// Text height as a share of the picture height: 40 px on 1080 lines, readable on a phone; never below 12 px.
constexpr int kTextHeightDivisor = 27;
constexpr int kMinTextHeight = 12;
// The picture's text travels to drawtext as frame metadata under this key.
constexpr const char* kTextKey = "reelvue_overlay";

// Video black (Y 16, U and V 128) over the columns [x, x + width) of a yuv420p picture; x and width even.
void fillBlack(AVFrame& picture, int x, int width) {
    for (int y = 0; y < picture.height; ++y)
        std::memset(picture.data[0] + y * picture.linesize[0] + x, 16, static_cast<std::size_t>(width));
    for (int y = 0; y < picture.height / 2; ++y) {
        std::memset(picture.data[1] + y * picture.linesize[1] + x / 2, 128, static_cast<std::size_t>(width / 2));
        std::memset(picture.data[2] + y * picture.linesize[2] + x / 2, 128, static_cast<std::size_t>(width / 2));
    }
}

AVFilterContext* link(AVFilterContext* from, AVFilterContext* to) {
    check(avfilter_link(from, 0, to, 0), "avfilter_link");
    return to;
}

} // namespace

double shownWidth(const AVFrame& frame) {
    const AVRational sar = frame.sample_aspect_ratio;
    return sar.num > 0 && sar.den > 0 ? frame.width * av_q2d(sar) : frame.width;
}

OverviewCanvas::OverviewCanvas(std::vector<int> widths, int height)
    : m_widths(std::move(widths)), m_height(height), m_scalers(m_widths.size(), nullptr) {
    for (int w : m_widths)
        m_width += w;
}

OverviewCanvas::~OverviewCanvas() {
    for (SwsContext* scaler : m_scalers)
        sws_freeContext(scaler);
}

int OverviewCanvas::left(std::size_t camera) const {
    int x = 0;
    for (std::size_t i = 0; i < camera; ++i)
        x += m_widths[i];
    return x;
}

FramePtr OverviewCanvas::compose(const std::vector<const AVFrame*>& pictures) {
    FramePtr canvas = newFrame();
    canvas->format = AV_PIX_FMT_YUV420P;
    canvas->width = m_width;
    canvas->height = m_height;
    check(av_frame_get_buffer(canvas.get(), 0), "av_frame_get_buffer");
    for (std::size_t i = 0; i < m_widths.size(); ++i) {
        const AVFrame* picture = i < pictures.size() ? pictures[i] : nullptr;
        if (!picture) {
            fillBlack(*canvas, left(i), m_widths[i]);
            continue;
        }
        m_scalers[i] = sws_getCachedContext(m_scalers[i], picture->width, picture->height,
                                            static_cast<AVPixelFormat>(picture->format), m_widths[i], m_height,
                                            AV_PIX_FMT_YUV420P, SWS_BILINEAR, nullptr, nullptr, nullptr);
        if (!m_scalers[i])
            fail("sws_getCachedContext failed");
        const int x = left(i);
        uint8_t* planes[4] = {canvas->data[0] + x, canvas->data[1] + x / 2, canvas->data[2] + x / 2, nullptr};
        sws_scale(m_scalers[i], picture->data, picture->linesize, 0, picture->height, planes, canvas->linesize);
    }
    return canvas;
}

void OverviewTextFilter::GraphDeleter::operator()(AVFilterGraph* graph) const {
    avfilter_graph_free(&graph);
}

OverviewTextFilter::OverviewTextFilter(const OverviewCanvas& canvas, AVRational timeBase,
                                       const QStringList& cameraNames, const QString& fontFile, int rotation)
    : m_graph(avfilter_graph_alloc()), m_filtered(newFrame()) {
    if (!m_graph)
        fail("avfilter_graph_alloc failed");
    // The shorter side sets the size, so that a turned picture's lines still fit its width.
    const int textHeight = std::max(kMinTextHeight, std::min(canvas.width(), canvas.height()) / kTextHeightDivisor);
    const int margin = textHeight / 2;
    const std::string font = fontFile.toStdString();
    const std::string args = fmt::format("video_size={}x{}:pix_fmt={}:time_base={}/{}:pixel_aspect=1/1", canvas.width(),
                                         canvas.height(), static_cast<int>(AV_PIX_FMT_YUV420P), timeBase.num, timeBase.den);
    check(avfilter_graph_create_filter(&m_source, avfilter_get_by_name("buffer"), "in", args.c_str(), nullptr,
                                       m_graph.get()),
          "avfilter_graph_create_filter(buffer)");
    // The turns a cut's re-encode makes: transpose "2" turns a quarter one way, "1" the other.
    std::vector<const char*> turns;
    if (rotation == 1)
        turns = {"2"};
    else if (rotation == 2)
        turns = {"1", "1"};
    else if (rotation == 3)
        turns = {"1"};
    AVFilterContext* last = m_source;
    for (std::size_t i = 0; i < turns.size(); ++i) {
        AVFilterContext* turn = nullptr;
        check(avfilter_graph_create_filter(&turn, avfilter_get_by_name("transpose"), fmt::format("turn{}", i).c_str(),
                                           turns[i], nullptr, m_graph.get()),
              "avfilter_graph_create_filter(transpose)");
        last = link(last, turn);
    }
    last = link(last, drawText("info", font, fmt::format("%{{metadata:{}}}", kTextKey), textHeight,
                                                    std::to_string(margin), std::to_string(margin), true));
    for (int i = 0; i < cameraNames.size(); ++i) {
        if (cameraNames[i].isEmpty())
            continue; // drawtext refuses an empty text
        const int x = (turns.empty() ? canvas.left(static_cast<std::size_t>(i)) : 0) + margin;
        last = link(last, drawText(fmt::format("camera{}", i), font, cameraNames[i].toStdString(), textHeight,
                                   std::to_string(x), fmt::format("h-th-{}", margin), false));
    }
    check(avfilter_graph_create_filter(&m_sink, avfilter_get_by_name("buffersink"), "out", nullptr, nullptr,
                                       m_graph.get()),
          "avfilter_graph_create_filter(buffersink)");
    link(last, m_sink);
    check(avfilter_graph_config(m_graph.get(), nullptr), "avfilter_graph_config");
}

OverviewTextFilter::~OverviewTextFilter() = default;

void OverviewTextFilter::draw(FramePtr picture, const QString& text, const std::function<void(const AVFrame*)>& use) {
    av_dict_set(&picture->metadata, kTextKey, text.toUtf8().constData(), 0);
    check(av_buffersrc_add_frame_flags(m_source, picture.get(), 0), "av_buffersrc_add_frame_flags");
    while (av_buffersink_get_frame(m_sink, m_filtered.get()) >= 0) {
        use(m_filtered.get());
        av_frame_unref(m_filtered.get());
    }
}

AVFilterContext* OverviewTextFilter::drawText(const std::string& name, const std::string& font,
                                              const std::string& text, int size, const std::string& x,
                                              const std::string& y, bool expand) {
    const AVFilter* drawtext = avfilter_get_by_name("drawtext");
    if (!drawtext)
        fail("The drawtext filter is missing from FFmpeg");
    AVFilterContext* context = avfilter_graph_alloc_filter(m_graph.get(), drawtext, name.c_str());
    if (!context)
        fail("avfilter_graph_alloc_filter(drawtext) failed");
    av_opt_set(context, "fontfile", font.c_str(), AV_OPT_SEARCH_CHILDREN);
    av_opt_set(context, "text", text.c_str(), AV_OPT_SEARCH_CHILDREN);
    av_opt_set(context, "expansion", expand ? "normal" : "none", AV_OPT_SEARCH_CHILDREN);
    av_opt_set(context, "fontsize", std::to_string(size).c_str(), AV_OPT_SEARCH_CHILDREN);
    av_opt_set(context, "fontcolor", "white", AV_OPT_SEARCH_CHILDREN);
    av_opt_set_int(context, "box", 1, AV_OPT_SEARCH_CHILDREN);
    av_opt_set(context, "boxcolor", "black@0.6", AV_OPT_SEARCH_CHILDREN);
    av_opt_set_int(context, "boxborderw", std::max(2, size / 4), AV_OPT_SEARCH_CHILDREN);
    av_opt_set_int(context, "line_spacing", std::max(1, size / 4), AV_OPT_SEARCH_CHILDREN);
    av_opt_set(context, "x", x.c_str(), AV_OPT_SEARCH_CHILDREN);
    av_opt_set(context, "y", y.c_str(), AV_OPT_SEARCH_CHILDREN);
    check(avfilter_init_str(context, nullptr), "avfilter_init_str(drawtext)");
    return context;
}

} // namespace evidence::detail
