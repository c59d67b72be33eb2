// FFmpeg owners and error checks shared by the parts of the overview video.
#include "core/evidence/OverviewVideoFfmpeg.h"

#include "core/encoding/CutItems.h"

#include <fmt/format.h>

#include <stdexcept>

namespace evidence::detail {

void fail(const std::string& text) {
    throw std::runtime_error(text);
}

std::string errorText(int error) {
    return encoding::ffmpegErrorText(error);
}

void check(int result, const char* what) {
    if (result < 0)
        fail(fmt::format("{}: {}", what, errorText(result)));
}

FramePtr newFrame() {
    FramePtr frame(av_frame_alloc());
    if (!frame)
        fail("av_frame_alloc failed");
    return frame;
}

CodecPtr openDecoder(AVFormatContext* format, int index) {
    AVStream* stream = format->streams[index];
    const AVCodec* decoder = avcodec_find_decoder(stream->codecpar->codec_id);
    if (!decoder)
        fail(fmt::format("avcodec_find_decoder({}) on stream {}", avcodec_get_name(stream->codecpar->codec_id), index));
    CodecPtr context(avcodec_alloc_context3(decoder));
    if (!context)
        fail(fmt::format("avcodec_alloc_context3 on stream {}", index));
    check(avcodec_parameters_to_context(context.get(), stream->codecpar), "avcodec_parameters_to_context");
    context->pkt_timebase = stream->time_base;
    context->thread_count = 0;
    check(avcodec_open2(context.get(), decoder, nullptr), "avcodec_open2");
    return context;
}

} // namespace evidence::detail
