// What the parts of the transcoder share: its logger, failing with a text, owning FFmpeg frames and packets.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
}

#include <cmath>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

namespace encoding {

constexpr const char* kCoderLogger = "ui.Coder";

[[noreturn]] inline void fail(const std::string& text) { throw std::runtime_error(text); }

struct FrameDeleter {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using FramePtr = std::unique_ptr<AVFrame, FrameDeleter>;

struct PacketDeleter {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using PacketPtr = std::unique_ptr<AVPacket, PacketDeleter>;

inline FramePtr allocFrame(const char* failure) {
    FramePtr frame(av_frame_alloc());
    if (!frame)
        fail(failure);
    return frame;
}

inline PacketPtr allocPacket(const char* failure) {
    PacketPtr packet(av_packet_alloc());
    if (!packet)
        fail(failure);
    return packet;
}

// Rotation 1 (90 degrees) and 3 (270 degrees) swap width and height.
inline bool turnsSideways(int rotation) { return rotation == 1 || rotation == 3; }

inline std::int64_t toTimeBase(double ms, AVRational timeBase) {
    return std::llround(timeBase.den * (ms / 1000.0) / timeBase.num);
}

} // namespace encoding
