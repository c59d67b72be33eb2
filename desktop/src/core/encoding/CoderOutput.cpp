// The output file of the transcoder: the muxer and its encoders.
#include "core/encoding/CoderOutput.h"

#include "core/ExportTarget.h"
#include "core/encoding/CoderInput.h"
#include "core/encoding/CoderParts.h"
#include "core/encoding/CutItems.h"
#include "logging/Logging.h"

extern "C" {
#include <libavformat/avformat.h>
}

#include <algorithm>

namespace encoding {
namespace {

// x264 takes its rate in whole kbit/s and refuses 0 kbit/s ("Generic error in an external library"), so
// 1 kbit/s is the least it opens with.
constexpr std::int64_t kMinVideoBitRate = 1000;
// 0.0004 bit per pixel: what x264 spends anyway on a still grey or black picture at its coarsest
// quantizer (about 20 kbit/s for 1920x1080 at 25 frames a second); asking for less only starves the
// rate control of a moving picture.
constexpr double kMinBitsPerPixel = 0.0004;

// The input's bit rate, raised to the least the encoder accepts for this frame size and rate; 0 (not
// known) stays 0, which leaves the encoder its own default quality.
std::int64_t videoBitRate(const OutputStreamParams& params) {
    if (params.bitRate <= 0)
        return 0;
    const double framesPerSecond = params.frameRate.num > 0 && params.frameRate.den > 0 ? av_q2d(params.frameRate) : 25.0;
    const auto floor = std::max(kMinVideoBitRate, static_cast<std::int64_t>(static_cast<double>(params.width) *
                                                                             params.height * framesPerSecond *
                                                                             kMinBitsPerPixel));
    if (params.bitRate >= floor)
        return params.bitRate;
    LOG_INFO(kCoderLogger, "The input's video bit rate of {} bit/s is below the {} bit/s the encoder takes for {}x{}: "
             "encoding at {} bit/s", params.bitRate, floor, params.width, params.height, floor);
    return floor;
}

} // namespace

OutputStreamParams readStreamParams(const InputFile& input, bool onlyVideo) {
    OutputStreamParams params;
    if (input.video) {
        const AVStream* stream = input.format->streams[input.videoIndex];
        params.videoCodecId = input.video->codec_id;
        params.width = input.video->width;
        params.height = input.video->height;
        params.sampleAspectRatio = input.video->sample_aspect_ratio;
        params.pixelFormat = input.video->pix_fmt;
        params.timeBase = stream->time_base;
        if (input.video->framerate.num > 0 && input.video->framerate.den > 0)
            params.frameRate = input.video->framerate;
        params.bitRate = input.video->bit_rate > 0 ? input.video->bit_rate : stream->codecpar->bit_rate;
    }
    if (input.audio) {
        params.audioCodecId = input.audio->codec_id;
        params.audioSampleRate = input.audio->sample_rate;
        params.audioChannels = input.audio->ch_layout.nb_channels;
        params.withAudio = !onlyVideo;
    }
    return params;
}

OutputFile::~OutputFile() {
    if (fifo)
        av_audio_fifo_free(fifo);
    avcodec_free_context(&video);
    avcodec_free_context(&audio);
    if (format) {
        if (!(format->oformat->flags & AVFMT_NOFILE))
            avio_closep(&format->pb);
        avformat_free_context(format);
    }
}

std::unique_ptr<OutputFile> createOutputFile(const OutputStreamParams& params, const QString& targetPath,
                                             const QString& writePath, int rotation) {
    auto output = std::make_unique<OutputFile>();
    const std::string utf8Target = ffmpegPath(targetPath);
    int result = avformat_alloc_output_context2(&output->format, nullptr, nullptr, utf8Target.c_str());
    if (result < 0)
        fail(fmt::format("avformat_alloc_output_context2: {}", ffmpegErrorText(result)));
    if (!output->format || !output->format->oformat)
        fail("avformat_alloc_output_context2: null in format");
    if (params.videoCodecId == AV_CODEC_ID_NONE)
        fail("There is no video context in output");
    const bool globalHeader = output->format->oformat->flags & AVFMT_GLOBALHEADER;

    output->videoStream = avformat_new_stream(output->format, nullptr);
    if (!output->videoStream)
        fail("avformat_new_stream for video stream");
    const AVCodec* videoEncoder = avcodec_find_encoder(params.videoCodecId);
    if (!videoEncoder)
        fail(fmt::format("avcodec_find_encoder({})", avcodec_get_name(params.videoCodecId)));
    AVCodecContext* video = output->video = avcodec_alloc_context3(videoEncoder);
    if (!video)
        fail("avcodec_alloc_context3 for video stream");
    AVRational aspect = params.sampleAspectRatio.num > 0 ? params.sampleAspectRatio : AVRational{1, 1};
    if (turnsSideways(rotation)) {
        video->width = params.height;
        video->height = params.width;
        aspect = AVRational{aspect.den, aspect.num};
    } else {
        video->width = params.width;
        video->height = params.height;
    }
    video->sample_aspect_ratio = aspect;
    video->pix_fmt = videoEncoder->pix_fmts ? videoEncoder->pix_fmts[0] : params.pixelFormat;
    video->time_base = params.timeBase;
    video->framerate = params.frameRate; // rate control counts frames per second, not time base ticks
    video->bit_rate = videoBitRate(params);
    video->thread_count = 0;
    if (globalHeader)
        video->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    result = avcodec_open2(video, videoEncoder, nullptr);
    if (result < 0)
        fail(fmt::format("avcodec_open2 for video stream: {}", ffmpegErrorText(result)));
    result = avcodec_parameters_from_context(output->videoStream->codecpar, video);
    if (result < 0)
        fail(fmt::format("avcodec_parameters_from_context for video stream: {}", ffmpegErrorText(result)));
    output->videoStream->time_base = video->time_base;

    if (params.withAudio) {
        output->audioStream = avformat_new_stream(output->format, nullptr);
        if (!output->audioStream)
            fail("avformat_new_stream for audio stream");
        const AVCodec* audioEncoder = avcodec_find_encoder(params.audioCodecId);
        if (!audioEncoder)
            fail(fmt::format("avcodec_find_encoder({})", avcodec_get_name(params.audioCodecId)));
        AVCodecContext* audio = output->audio = avcodec_alloc_context3(audioEncoder);
        if (!audio)
            fail("avcodec_alloc_context3 for audio stream");
        audio->sample_rate = params.audioSampleRate;
        av_channel_layout_default(&audio->ch_layout, params.audioChannels);
        audio->sample_fmt = audioEncoder->sample_fmts ? audioEncoder->sample_fmts[0] : AV_SAMPLE_FMT_FLTP;
        audio->time_base = AVRational{1, params.audioSampleRate};
        if (globalHeader)
            audio->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        result = avcodec_open2(audio, audioEncoder, nullptr);
        if (result < 0)
            fail(fmt::format("avcodec_open2 for audio stream: {}", ffmpegErrorText(result)));
        result = avcodec_parameters_from_context(output->audioStream->codecpar, audio);
        if (result < 0)
            fail(fmt::format("avcodec_parameters_from_context for audio stream: {}", ffmpegErrorText(result)));
        output->audioStream->time_base = audio->time_base;
        output->withAudio = true;
        output->fifo = av_audio_fifo_alloc(audio->sample_fmt, audio->ch_layout.nb_channels, 1);
        if (!output->fifo)
            fail("av_audio_fifo_alloc failed");
    }

    const std::string utf8Write = ffmpegPath(writePath);
    if (logging::isEnabled(logging::DEBUG))
        av_dump_format(output->format, 0, utf8Target.c_str(), 1);
    if (!(output->format->oformat->flags & AVFMT_NOFILE)) {
        result = openCreatedOutput(&output->format->pb, utf8Write);
        if (result < 0)
            failWriting(fmt::format("avio_open: {}", ffmpegErrorText(result)), result);
    }
    result = avformat_write_header(output->format, nullptr);
    if (result < 0)
        failWriting(fmt::format("avformat_write_header: {}", ffmpegErrorText(result)), result);
    return output;
}

void encodeAndWrite(OutputFile& output, AVCodecContext* encoder, AVStream* stream, const AVFrame* frame) {
    int result = avcodec_send_frame(encoder, frame);
    if (result < 0 && !(frame == nullptr && result == AVERROR_EOF))
        fail(fmt::format("avcoded_send_frame: {}", ffmpegErrorText(result)));
    PacketPtr packet(av_packet_alloc());
    while (true) {
        result = avcodec_receive_packet(encoder, packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        if (result < 0)
            fail(fmt::format("avcodec_receive_packet: {}", ffmpegErrorText(result)));
        av_packet_rescale_ts(packet.get(), encoder->time_base, stream->time_base);
        packet->stream_index = stream->index;
        result = av_interleaved_write_frame(output.format, packet.get());
        if (result < 0)
            failWriting(fmt::format("av_interleaved_write_frame: {}", ffmpegErrorText(result)), result);
    }
}

void encodeVideo(OutputFile& output, const AVFrame* frame) {
    try {
        encodeAndWrite(output, output.video, output.videoStream, frame);
    } catch (const exporttarget::TargetError& error) {
        throw exporttarget::TargetError(fmt::format("Failed to encode video frame: {}", error.what()));
    } catch (const std::exception& error) {
        fail(fmt::format("Failed to encode video frame: {}", error.what()));
    }
}

void encodeQueuedAudio(OutputFile& output, bool endOfInput, std::int64_t endPts) {
    const int frameSize = output.audio->frame_size > 0 ? output.audio->frame_size : 1024;
    while ((av_audio_fifo_size(output.fifo) >= frameSize && output.nextAudioPts + frameSize <= endPts) ||
           (endOfInput && av_audio_fifo_size(output.fifo) > 0)) {
        const int samples = std::min(av_audio_fifo_size(output.fifo), frameSize);
        FramePtr frame(av_frame_alloc());
        if (!frame)
            fail("Failed to allocate output frame");
        frame->nb_samples = samples;
        av_channel_layout_copy(&frame->ch_layout, &output.audio->ch_layout);
        frame->format = output.audio->sample_fmt;
        frame->sample_rate = output.audio->sample_rate;
        const int result = av_frame_get_buffer(frame.get(), 0);
        if (result < 0)
            fail(fmt::format("av_frame_get_buffer: {}", ffmpegErrorText(result)));
        frame->pts = output.nextAudioPts;
        output.nextAudioPts += samples;
        const int read = av_audio_fifo_read(output.fifo, reinterpret_cast<void**>(frame->data), samples);
        if (read < samples)
            fail(fmt::format("av_audio_fifo_read: {}", ffmpegErrorText(read < 0 ? read : AVERROR(EIO))));
        encodeAndWrite(output, output.audio, output.audioStream, frame.get());
    }
}

void finishOutputFile(OutputFile& output, bool canceled) {
    if (!canceled) {
        encodeVideo(output, nullptr);
        if (output.withAudio) {
            encodeQueuedAudio(output, true);
            encodeAndWrite(output, output.audio, output.audioStream, nullptr);
        }
    }
    const int result = av_write_trailer(output.format);
    if (result < 0 && !canceled)
        failWriting(fmt::format("av_write_trailer: {}", ffmpegErrorText(result)), result);
    if (!(output.format->oformat->flags & AVFMT_NOFILE)) {
        const int closed = avio_closep(&output.format->pb);
        if (closed < 0 && !canceled)
            failWriting(fmt::format("avio_close: {}", ffmpegErrorText(closed)), closed);
    }
}

} // namespace encoding
