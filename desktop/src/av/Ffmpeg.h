// Small owners and error texts for FFmpeg objects used across the playback engine.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
}

#include <memory>
#include <string>

namespace av {

// FFmpeg's text for an error code, e.g. "Invalid data found when processing input".
std::string ffmpegError(int code);

struct FrameDeleter {
    void operator()(AVFrame* f) const { av_frame_free(&f); }
};
struct PacketDeleter {
    void operator()(AVPacket* p) const { av_packet_free(&p); }
};
struct CodecContextDeleter {
    void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
};
struct FormatContextDeleter {
    void operator()(AVFormatContext* f) const { avformat_close_input(&f); }
};

using FramePtr = std::unique_ptr<AVFrame, FrameDeleter>;
using PacketPtr = std::unique_ptr<AVPacket, PacketDeleter>;
using CodecContextPtr = std::unique_ptr<AVCodecContext, CodecContextDeleter>;
using FormatContextPtr = std::unique_ptr<AVFormatContext, FormatContextDeleter>;

// A decoded picture shared between the frame queue, the player, the widget and a capture.
using SharedFrame = std::shared_ptr<const AVFrame>;
SharedFrame shareFrame(FramePtr frame);

} // namespace av
