// FFmpeg owners and error checks shared by the parts of the overview video.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
}

#include <memory>
#include <string>

namespace evidence::detail {

[[noreturn]] void fail(const std::string& text);
// A negative FFmpeg result raises "<what>: <FFmpeg's text>".
void check(int result, const char* what);
std::string errorText(int error);

struct FrameDeleter {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct PacketDeleter {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct CodecDeleter {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct InputDeleter {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
using FramePtr = std::unique_ptr<AVFrame, FrameDeleter>;
using PacketPtr = std::unique_ptr<AVPacket, PacketDeleter>;
using CodecPtr = std::unique_ptr<AVCodecContext, CodecDeleter>;
using InputPtr = std::unique_ptr<AVFormatContext, InputDeleter>;

FramePtr newFrame();
// The decoder of a stream, opened, with as many threads as the machine has.
CodecPtr openDecoder(AVFormatContext* format, int index);

} // namespace evidence::detail
