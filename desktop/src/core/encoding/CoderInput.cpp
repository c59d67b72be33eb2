// The input side of the transcoder: the decoders of one camera file.
#include "core/encoding/CoderInput.h"

#include "core/encoding/CoderParts.h"
#include "core/encoding/CutItems.h"
#include "logging/Logging.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace encoding {

InputFile::~InputFile() {
    avcodec_free_context(&video);
    avcodec_free_context(&audio);
}

std::unique_ptr<InputFile> openDecoders(AVFormatContext* format, const QString& path) {
    auto input = std::make_unique<InputFile>();
    input->format = format;
    int result = avformat_find_stream_info(format, nullptr);
    if (result < 0)
        fail(fmt::format("avformat_find_stream_info: {}", ffmpegErrorText(result)));
    for (unsigned i = 0; i < format->nb_streams && (input->videoIndex < 0 || input->audioIndex < 0); ++i) {
        AVStream* stream = format->streams[i];
        const AVMediaType type = stream->codecpar->codec_type;
        const bool isVideo = type == AVMEDIA_TYPE_VIDEO && input->videoIndex < 0;
        const bool isAudio = type == AVMEDIA_TYPE_AUDIO && input->audioIndex < 0;
        if (!isVideo && !isAudio)
            continue;
        const AVCodec* decoder = avcodec_find_decoder(stream->codecpar->codec_id);
        if (!decoder)
            fail(fmt::format("avcodec_find_decoder({}) on stream {}", avcodec_get_name(stream->codecpar->codec_id), i));
        AVCodecContext* context = avcodec_alloc_context3(decoder);
        if (!context)
            fail(fmt::format("avcodec_alloc_context3 on stream {}", i));
        (isVideo ? input->video : input->audio) = context; // owned from here on
        result = avcodec_parameters_to_context(context, stream->codecpar);
        if (result < 0)
            fail(fmt::format("avcodec_parameters_to_context on stream {}: {}", i, ffmpegErrorText(result)));
        context->pkt_timebase = stream->time_base;
        context->time_base = stream->time_base;
        context->thread_count = 0; // as many as the machine has, like the ffmpeg command line
        if (isVideo)
            context->framerate = av_guess_frame_rate(format, stream, nullptr);
        result = avcodec_open2(context, decoder, nullptr);
        if (result < 0)
            fail(fmt::format("avcodec_open2 on stream {}: {}", i, ffmpegErrorText(result)));
        if (isVideo) {
            input->videoIndex = static_cast<int>(i);
            LOG_DEBUG(kCoderLogger, "Found video: {}", i);
        } else {
            input->audioIndex = static_cast<int>(i);
            LOG_DEBUG(kCoderLogger, "Found audio: {}", i);
        }
    }
    if (logging::isEnabled(logging::DEBUG))
        av_dump_format(format, 0, ffmpegPath(path).c_str(), 0);
    return input;
}

} // namespace encoding
