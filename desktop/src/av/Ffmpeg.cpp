// Error texts and shared frames for the FFmpeg helpers.
#include "av/Ffmpeg.h"

namespace av {

std::string ffmpegError(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return text;
}

SharedFrame shareFrame(FramePtr frame) {
    return SharedFrame(frame.release(), [](const AVFrame* f) {
        auto* owned = const_cast<AVFrame*>(f);
        av_frame_free(&owned);
    });
}

} // namespace av
