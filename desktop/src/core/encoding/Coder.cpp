// Saves a cut of the recordings by decoding and encoding again, turning the picture when asked.
#include "core/encoding/Coder.h"

#include "core/encoding/CutItems.h"
#include "logging/Logging.h"

#include <QElapsedTimer>
#include <QFile>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

constexpr const char* kLogger = "ui.Coder";

[[noreturn]] void fail(const std::string& text) {
    throw std::runtime_error(text);
}

std::string errorText(int error) {
    return encoding::ffmpegErrorText(error);
}

bool turnsSideways(int rotation) {
    return rotation == 1 || rotation == 3;
}

// What the output is made of, read from the first camera file of the cut.
struct OutputStreamParams {
    AVCodecID videoCodecId = AV_CODEC_ID_NONE;
    int width = 0;
    int height = 0;
    AVRational sampleAspectRatio{0, 1};
    AVPixelFormat pixelFormat = AV_PIX_FMT_NONE;
    AVRational timeBase{1, 25};
    AVRational frameRate{25, 1};
    std::int64_t bitRate = 0;
    AVCodecID audioCodecId = AV_CODEC_ID_NONE;
    int audioSampleRate = 0;
    int audioChannels = 0;
    bool withAudio = false;
};

struct FrameDeleter {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using FramePtr = std::unique_ptr<AVFrame, FrameDeleter>;

struct PacketDeleter {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using PacketPtr = std::unique_ptr<AVPacket, PacketDeleter>;

FramePtr allocFrame(const char* failure) {
    FramePtr frame(av_frame_alloc());
    if (!frame)
        fail(failure);
    return frame;
}

// One camera file with the decoders of its first video and first audio stream.
struct InputFile {
    AVFormatContext* format = nullptr;
    AVCodecContext* video = nullptr;
    int videoIndex = -1;
    AVCodecContext* audio = nullptr;
    int audioIndex = -1;

    ~InputFile() {
        avcodec_free_context(&video);
        avcodec_free_context(&audio);
        avformat_close_input(&format);
    }
};

std::unique_ptr<InputFile> openInputFile(const QString& path) {
    auto input = std::make_unique<InputFile>();
    const std::string utf8Path = encoding::ffmpegPath(path);
    int result = avformat_open_input(&input->format, utf8Path.c_str(), nullptr, nullptr);
    if (result < 0)
        fail(fmt::format("avformat_open_input : {}", errorText(result)));
    result = avformat_find_stream_info(input->format, nullptr);
    if (result < 0)
        fail(fmt::format("avformat_find_stream_info: {}", errorText(result)));
    for (unsigned i = 0; i < input->format->nb_streams && (input->videoIndex < 0 || input->audioIndex < 0); ++i) {
        AVStream* stream = input->format->streams[i];
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
            fail(fmt::format("avcodec_parameters_to_context on stream {}: {}", i, errorText(result)));
        context->pkt_timebase = stream->time_base;
        context->time_base = stream->time_base;
        context->thread_count = 0; // as many as the machine has, like the ffmpeg command line
        if (isVideo)
            context->framerate = av_guess_frame_rate(input->format, stream, nullptr);
        result = avcodec_open2(context, decoder, nullptr);
        if (result < 0)
            fail(fmt::format("avcodec_open2 on stream {}: {}", i, errorText(result)));
        if (isVideo) {
            input->videoIndex = static_cast<int>(i);
            LOG_DEBUG(kLogger, "Found video: {}", i);
        } else {
            input->audioIndex = static_cast<int>(i);
            LOG_DEBUG(kLogger, "Found audio: {}", i);
        }
    }
    if (logging::isEnabled(logging::DEBUG))
        av_dump_format(input->format, 0, utf8Path.c_str(), 0);
    return input;
}

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

// The muxer and the encoders, alive for the whole run.
struct OutputFile {
    AVFormatContext* format = nullptr;
    AVCodecContext* video = nullptr;
    AVStream* videoStream = nullptr;
    AVCodecContext* audio = nullptr;
    AVStream* audioStream = nullptr;
    bool withAudio = false;
    AVAudioFifo* fifo = nullptr;  // converted samples waiting to fill an encoder frame
    std::int64_t nextAudioPts = 0; // in the audio encoder's time base

    ~OutputFile() {
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
};

std::unique_ptr<OutputFile> createOutputFile(const OutputStreamParams& params, const QString& path, int rotation) {
    auto output = std::make_unique<OutputFile>();
    const std::string utf8Path = encoding::ffmpegPath(path);
    int result = avformat_alloc_output_context2(&output->format, nullptr, nullptr, utf8Path.c_str());
    if (result < 0)
        fail(fmt::format("avformat_alloc_output_context2: {}", errorText(result)));
    if (!output->format || !output->format->oformat)
        fail("avformat_alloc_output_context2: null in format");
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
    video->bit_rate = params.bitRate;
    video->thread_count = 0;
    if (globalHeader)
        video->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    result = avcodec_open2(video, videoEncoder, nullptr);
    if (result < 0)
        fail(fmt::format("avcodec_open2 for video stream: {}", errorText(result)));
    result = avcodec_parameters_from_context(output->videoStream->codecpar, video);
    if (result < 0)
        fail(fmt::format("avcodec_parameters_from_context for video stream: {}", errorText(result)));
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
            fail(fmt::format("avcodec_open2 for audio stream: {}", errorText(result)));
        result = avcodec_parameters_from_context(output->audioStream->codecpar, audio);
        if (result < 0)
            fail(fmt::format("avcodec_parameters_from_context for audio stream: {}", errorText(result)));
        output->audioStream->time_base = audio->time_base;
        output->withAudio = true;
        output->fifo = av_audio_fifo_alloc(audio->sample_fmt, audio->ch_layout.nb_channels, 1);
        if (!output->fifo)
            fail("av_audio_fifo_realloc failed");
    }

    if (logging::isEnabled(logging::DEBUG))
        av_dump_format(output->format, 0, utf8Path.c_str(), 1);
    if (!(output->format->oformat->flags & AVFMT_NOFILE)) {
        result = avio_open(&output->format->pb, utf8Path.c_str(), AVIO_FLAG_WRITE);
        if (result < 0)
            fail(fmt::format("avio_open: {}", errorText(result)));
    }
    result = avformat_write_header(output->format, nullptr);
    if (result < 0)
        fail(fmt::format("avformat_write_header: {}", errorText(result)));
    return output;
}

// Sends one frame (nullptr: flush) to an encoder and writes every packet it gives back.
void encodeAndWrite(OutputFile& output, AVCodecContext* encoder, AVStream* stream, const AVFrame* frame) {
    int result = avcodec_send_frame(encoder, frame);
    if (result < 0 && !(frame == nullptr && result == AVERROR_EOF))
        fail(fmt::format("avcoded_send_frame: {}", errorText(result)));
    PacketPtr packet(av_packet_alloc());
    while (true) {
        result = avcodec_receive_packet(encoder, packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        if (result < 0)
            fail(fmt::format("avcodec_receive_packet: {}", errorText(result)));
        av_packet_rescale_ts(packet.get(), encoder->time_base, stream->time_base);
        packet->stream_index = stream->index;
        result = av_interleaved_write_frame(output.format, packet.get());
        if (result < 0)
            fail(fmt::format("av_interleaved_write_frame: {}", errorText(result)));
    }
}

void encodeVideo(OutputFile& output, const AVFrame* frame) {
    try {
        encodeAndWrite(output, output.video, output.videoStream, frame);
    } catch (const std::exception& error) {
        fail(fmt::format("Failed to encode video frame: {}", error.what()));
    }
}

// Scale (when the size differs from the output) and transpose (for the rotation) between "in" and "out".
struct VideoFilter {
    AVFilterGraph* graph = nullptr;
    AVFilterContext* source = nullptr;
    AVFilterContext* sink = nullptr;

    ~VideoFilter() {
        if (graph)
            avfilter_graph_free(&graph);
        else if (source || sink)
            LOG_WARN(kLogger, "There is no filter graph but there is filter context. Memory leak...");
    }
};

// Built from the first decoded frame of a file, whose timestamps are already in the encoder's time base.
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
        fail(fmt::format("avfilter_graph_create_filter(buffer): {}", errorText(result)));
    result = avfilter_graph_create_filter(&filter->sink, buffersink, "out", nullptr, nullptr, filter->graph);
    if (result < 0)
        fail(fmt::format("avfilter_graph_create_filter(buffersink): {}", errorText(result)));
    result = av_opt_set_bin(filter->sink, "pix_fmts", reinterpret_cast<const uint8_t*>(&encoder.pix_fmt),
                            sizeof(encoder.pix_fmt), AV_OPT_SEARCH_CHILDREN);
    if (result < 0)
        fail(fmt::format("av_opt_set_bin(buffersink, pix_fmts): {}", errorText(result)));

    std::vector<AVFilterContext*> chain{filter->source};
    // The scale comes before the turn, so for a sideways turn it aims at the encoder's size turned back.
    const int scaledWidth = turnsSideways(rotation) ? encoder.height : encoder.width;
    const int scaledHeight = turnsSideways(rotation) ? encoder.width : encoder.height;
    if (frame.width != scaledWidth || frame.height != scaledHeight) {
        AVFilterContext* context = nullptr;
        std::snprintf(args, sizeof args, "w=%d:h=%d", scaledWidth, scaledHeight);
        result = avfilter_graph_create_filter(&context, scale, "scale", args, nullptr, filter->graph);
        if (result < 0)
            fail(fmt::format("avfilter_graph_create_filter(scale): {}", errorText(result)));
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
            fail(fmt::format("avfilter_graph_create_filter(transpose): {}", errorText(result)));
        chain.push_back(context);
    }
    for (std::size_t i = 0; i + 1 < chain.size(); ++i) {
        result = avfilter_link(chain[i], 0, chain[i + 1], 0);
        if (result < 0)
            fail(fmt::format("avfilter_link() at {} step: {}", i, errorText(result)));
    }
    result = avfilter_link(chain.back(), 0, filter->sink, 0);
    if (result < 0)
        fail(fmt::format("avfilter_link() at the last step: {}", errorText(result)));
    result = avfilter_graph_config(filter->graph, nullptr);
    if (result < 0)
        fail(fmt::format("avfilter_graph_config: {}", errorText(result)));
    return filter;
}

// Changes the sample format and channel layout of one file's audio to the encoder's; never the rate.
struct AudioConverter {
    SwrContext* resampler = nullptr;
    ~AudioConverter() { swr_free(&resampler); }
};

std::unique_ptr<AudioConverter> createAudioConverter(const AVCodecContext& decoder, const AVCodecContext& encoder) {
    auto converter = std::make_unique<AudioConverter>();
    AVChannelLayout inputLayout;
    av_channel_layout_default(&inputLayout, decoder.ch_layout.nb_channels);
    const int result = swr_alloc_set_opts2(&converter->resampler, const_cast<AVChannelLayout*>(&encoder.ch_layout), encoder.sample_fmt,
                                           encoder.sample_rate, &inputLayout, decoder.sample_fmt,
                                           decoder.sample_rate, 0, nullptr);
    av_channel_layout_uninit(&inputLayout);
    if (result < 0 || !converter->resampler)
        fail("Failed to allocate resample context");
    if (decoder.sample_rate != encoder.sample_rate)
        fail("Sample rate is differs");
    const int initialized = swr_init(converter->resampler);
    if (initialized < 0)
        fail(fmt::format("swr_init: {}", errorText(initialized)));
    return converter;
}

// Converts a decoded audio frame and queues its samples for the encoder.
void queueAudio(OutputFile& output, AudioConverter& converter, const AVFrame& frame) {
    const int channels = output.audio->ch_layout.nb_channels;
    std::vector<uint8_t*> planes(static_cast<std::size_t>(std::max(channels, 1)), nullptr);
    int result = av_samples_alloc(planes.data(), nullptr, channels, frame.nb_samples, output.audio->sample_fmt, 0);
    if (result < 0)
        fail(fmt::format("av_samples_alloc: {}", errorText(result)));
    struct Release {
        uint8_t** data;
        ~Release() { av_freep(&data[0]); }
    } release{planes.data()};
    const int converted = swr_convert(converter.resampler, planes.data(), frame.nb_samples,
                                      const_cast<const uint8_t**>(frame.extended_data), frame.nb_samples);
    if (converted < 0)
        fail(fmt::format("swr_convert: {}", errorText(converted)));
    if (av_audio_fifo_realloc(output.fifo, av_audio_fifo_size(output.fifo) + converted) < 0)
        fail("av_audio_fifo_realloc failed");
    if (av_audio_fifo_write(output.fifo, reinterpret_cast<void**>(planes.data()), converted) < converted)
        fail("av_audio_fifo_write failed");
}

// Encodes whole encoder frames from the queue; at the end of the cut also the short rest.
void encodeQueuedAudio(OutputFile& output, bool endOfInput) {
    const int frameSize = output.audio->frame_size > 0 ? output.audio->frame_size : 1024;
    while (av_audio_fifo_size(output.fifo) >= frameSize || (endOfInput && av_audio_fifo_size(output.fifo) > 0)) {
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
            fail(fmt::format("av_frame_get_buffer: {}", errorText(result)));
        frame->pts = output.nextAudioPts;
        output.nextAudioPts += samples;
        const int read = av_audio_fifo_read(output.fifo, reinterpret_cast<void**>(frame->data), samples);
        if (read < samples)
            fail(fmt::format("av_audio_fifo_read: {}", errorText(read < 0 ? read : AVERROR(EIO))));
        encodeAndWrite(output, output.audio, output.audioStream, frame.get());
    }
}

std::int64_t toTimeBase(double ms, AVRational timeBase) {
    return std::llround(timeBase.den * (ms / 1000.0) / timeBase.num);
}

// Decodes one camera file from startMs to endMs (offsets into the file) and encodes its frames so that
// they continue the output at outputStartMs.
class FileTranscoder {
public:
    FileTranscoder(InputFile& input, OutputFile& output, int rotation, double startMs, double endMs,
                   double outputStartMs, AVRational frameRate)
        : m_input(input), m_output(output), m_rotation(rotation), m_startMs(startMs), m_endMs(endMs),
          m_outputStartMs(outputStartMs), m_outputEndMs(outputStartMs),
          m_frameMs(frameRate.num > 0 ? 1000.0 * frameRate.den / frameRate.num : 40.0) {
        m_audioDone = !m_output.withAudio || !m_input.audio;
        if (!m_audioDone)
            m_converter = createAudioConverter(*m_input.audio, *m_output.audio);
        // MPEG-TS and the like count from an arbitrary start; MP4 and MOV from zero.
        if (m_input.format->start_time != AV_NOPTS_VALUE && m_input.format->start_time > 0)
            m_fileStartMs = m_input.format->start_time / 1000.0;
    }

    bool finished() const { return m_videoDone && m_audioDone; }
    void decodePacket(AVPacket* packet);
    // Drains the decoders and the filter at the end of the file.
    void flush();
    // Output time written so far, in milliseconds.
    double outputEndMs() const { return m_outputEndMs; }

private:
    void decode(AVCodecContext* decoder, const AVPacket* packet, bool isVideo);
    void processVideo(AVFrame* frame, double ms);
    void processAudio(AVFrame* frame, double ms);
    void drainFilter();

    InputFile& m_input;
    OutputFile& m_output;
    int m_rotation;
    double m_startMs;
    double m_endMs;
    double m_outputStartMs;
    double m_outputEndMs;
    double m_frameMs;
    double m_fileStartMs = 0.0;
    bool m_videoDone = false;
    bool m_audioDone = false;
    bool m_audioAligned = false;
    std::int64_t m_lastVideoPts = AV_NOPTS_VALUE;
    std::int64_t m_lastAudioPts = AV_NOPTS_VALUE; // decoded, in the decoder's time base
    std::unique_ptr<VideoFilter> m_filter;
    std::unique_ptr<AudioConverter> m_converter;
};

void FileTranscoder::decodePacket(AVPacket* packet) {
    const bool isVideo = packet->stream_index == m_input.videoIndex;
    const bool isAudio = packet->stream_index == m_input.audioIndex;
    if (isVideo && !m_videoDone) {
        decode(m_input.video, packet, true);
    } else if (isAudio && !m_audioDone) {
        decode(m_input.audio, packet, false);
    }
}

void FileTranscoder::flush() {
    if (m_input.video)
        decode(m_input.video, nullptr, true);
    if (m_input.audio && m_converter)
        decode(m_input.audio, nullptr, false);
    if (m_filter) {
        const int result = av_buffersrc_add_frame_flags(m_filter->source, nullptr, 0);
        if (result < 0)
            fail(fmt::format("av_buffersrc_add_frame_flags: {}", errorText(result)));
        drainFilter();
    }
}

void FileTranscoder::decode(AVCodecContext* decoder, const AVPacket* packet, bool isVideo) {
    if (packet) {
        AVPacket* copy = const_cast<AVPacket*>(packet);
        av_packet_rescale_ts(copy, m_input.format->streams[packet->stream_index]->time_base, decoder->time_base);
    }
    int result = avcodec_send_packet(decoder, packet);
    if (result < 0 && result != AVERROR_EOF)
        fail(fmt::format("avcodec_send_packet (isVideo: {}): {}", isVideo, errorText(result)));
    FramePtr frame = allocFrame("Failed to alloc frame");
    while (true) {
        result = avcodec_receive_frame(decoder, frame.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        if (result < 0)
            fail(fmt::format("avcodec_receive_frame (isVideo: {}): {}", isVideo, errorText(result)));
        const std::int64_t pts = frame->best_effort_timestamp;
        if (pts != AV_NOPTS_VALUE) {
            const double ms = pts * av_q2d(decoder->time_base) * 1000.0 - m_fileStartMs;
            LOG_TRACE(kLogger, "Process frame at {} ms (max: {})", ms, m_endMs);
            if (isVideo)
                processVideo(frame.get(), ms);
            else
                processAudio(frame.get(), ms);
        }
        av_frame_unref(frame.get());
    }
}

void FileTranscoder::processVideo(AVFrame* frame, double ms) {
    if (m_videoDone)
        return;
    if (ms > m_endMs) {
        m_videoDone = true;
        return;
    }
    if (ms < m_startMs)
        return; // decoded from the key frame before the cut only to reach its first picture
    const double outputMs = m_outputStartMs + (ms - m_startMs);
    const std::int64_t pts = toTimeBase(outputMs, m_output.video->time_base);
    LOG_TRACE(kLogger, "isVideo: {} old: {} new: {} ms: {} prev: {}", true, frame->pts, pts, outputMs, m_lastVideoPts);
    if (m_lastVideoPts != AV_NOPTS_VALUE && pts <= m_lastVideoPts)
        return;
    m_lastVideoPts = pts;
    frame->pts = pts;
    frame->pict_type = AV_PICTURE_TYPE_NONE;
    m_outputEndMs = std::max(m_outputEndMs, outputMs + m_frameMs);
    if (!m_filter)
        m_filter = createVideoFilter(*frame, *m_output.video, m_rotation);
    const int result = av_buffersrc_add_frame_flags(m_filter->source, frame, AV_BUFFERSRC_FLAG_KEEP_REF);
    if (result < 0)
        fail(fmt::format("av_buffersrc_add_frame_flags: {}", errorText(result)));
    drainFilter();
}

void FileTranscoder::drainFilter() {
    FramePtr filtered = allocFrame("Failed to alloc filter frame");
    while (true) {
        const int result = av_buffersink_get_frame(m_filter->sink, filtered.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        if (result < 0)
            fail(fmt::format("Failed to get filter frame: {}", errorText(result)));
        encodeVideo(m_output, filtered.get());
        av_frame_unref(filtered.get());
    }
}

void FileTranscoder::processAudio(AVFrame* frame, double ms) {
    if (m_audioDone)
        return;
    if (ms > m_endMs) {
        m_audioDone = true;
        return;
    }
    if (ms < m_startMs)
        return;
    if (m_lastAudioPts != AV_NOPTS_VALUE && frame->best_effort_timestamp <= m_lastAudioPts)
        return;
    m_lastAudioPts = frame->best_effort_timestamp;
    if (!m_audioAligned) {
        // The queue continues the earlier files' audio; when that falls short (a file without sound),
        // the new sound starts at its own time rather than early.
        m_audioAligned = true;
        const double outputMs = m_outputStartMs + (ms - m_startMs);
        const std::int64_t wanted = toTimeBase(outputMs, m_output.audio->time_base);
        const std::int64_t queuedEnd = m_output.nextAudioPts + av_audio_fifo_size(m_output.fifo);
        if (wanted - queuedEnd > m_output.audio->frame_size) {
            encodeQueuedAudio(m_output, true);
            m_output.nextAudioPts = wanted;
        }
        LOG_TRACE(kLogger, "isVideo: {} old: {} new: {} ms: {} prev: {}", false, frame->pts, wanted, outputMs, queuedEnd);
    }
    queueAudio(m_output, *m_converter, *frame);
    encodeQueuedAudio(m_output, false);
}

} // namespace

Coder::Coder(Playlist::RawItems items, TimeInterval interval, EncodingSettings settings, QObject* parent)
    : BaseEncoder(std::move(items), std::move(interval), std::move(settings), parent) {}

void Coder::encode() {
    m_canceled = false;
    const QString outputPath = m_settings.filePath;
    LOG_INFO(kLogger, "Start encoding to '{}'", outputPath.toStdString());
    QElapsedTimer stopwatch;
    stopwatch.start();
    const Playlist::RawItems items = m_items;
    const std::int64_t totalMs = encoding::cutLengthMs(items, m_interval);
    emit progress(0);

    std::unique_ptr<OutputFile> output;
    try {
        OutputStreamParams params;
        double writtenMs = 0.0; // output time written by the files before the current one
        int lastPercent = 0;
        for (const auto& itemPtr : items) {
            if (m_canceled)
                break;
            const Playlist::RawItem& item = *itemPtr;
            if (!(m_interval.from < item.to))
                continue;
            if (!(item.from < m_interval.to))
                break;
            const QString inputPath = encoding::cutInputFile(item, m_settings.camera).filePath();
            try {
                const double startMs = item.from < m_interval.from ? item.from.msecsTo(m_interval.from) : 0;
                const double endMs = item.from.msecsTo(m_interval.to);
                LOG_DEBUG(kLogger, "Transcode from '{}' ({} ms, max: {} ms)", inputPath.toStdString(), startMs, endMs);
                std::unique_ptr<InputFile> input;
                try {
                    input = openInputFile(inputPath);
                } catch (const std::exception& error) {
                    LOG_ERROR(kLogger, "Could not open input file '{}': {}", inputPath.toStdString(), error.what());
                    continue;
                }
                if (!input->video) {
                    LOG_WARN(kLogger, "No video stream in '{}', skipped", inputPath.toStdString());
                    continue;
                }
                if (!output) {
                    try {
                        params = readStreamParams(*input, m_settings.onlyVideo);
                        output = createOutputFile(params, outputPath, m_settings.rotation);
                    } catch (const std::exception& error) {
                        LOG_ERROR(kLogger, "{} exception: {}", "createOutputFile", error.what());
                        throw;
                    }
                    if (!output->video)
                        fail("There is no video context in output");
                }
                if (startMs > 0) {
                    const auto ts = static_cast<std::int64_t>(startMs / 1000.0 * AV_TIME_BASE);
                    if (av_seek_frame(input->format, -1, ts, AVSEEK_FLAG_BACKWARD) < 0)
                        fail(fmt::format("Failed seek in file: '{}'", inputPath.toStdString()));
                }
                try {
                    FileTranscoder file(*input, *output, m_settings.rotation, startMs, endMs, writtenMs, params.frameRate);
                    PacketPtr packet(av_packet_alloc());
                    while (!m_canceled && !file.finished()) {
                        const int result = av_read_frame(input->format, packet.get());
                        if (result == AVERROR_EOF)
                            break;
                        if (result < 0)
                            fail(fmt::format("Failed to read frame: {}", errorText(result)));
                        file.decodePacket(packet.get());
                        av_packet_unref(packet.get());
                        if (totalMs > 0) {
                            const int percent = static_cast<int>((file.outputEndMs()) * 100.0 / totalMs);
                            if (percent > lastPercent) {
                                lastPercent = percent;
                                emit progress(percent);
                            }
                        }
                    }
                    if (!m_canceled)
                        file.flush();
                    writtenMs = file.outputEndMs();
                } catch (const std::exception& error) {
                    LOG_ERROR(kLogger, "Caught exception in enc/dec loop on '{}': {}", inputPath.toStdString(), error.what());
                    throw;
                }
            } catch (const std::exception& error) {
                LOG_WARN(kLogger, "Caught exception on '{}' ({}): {}", inputPath.toStdString(),
                         m_settings.camera != 0 ? "associated rear video" : "", error.what());
                throw;
            }
        }
        if (output) {
            if (!m_canceled) {
                encodeVideo(*output, nullptr);
                if (output->withAudio) {
                    encodeQueuedAudio(*output, true);
                    encodeAndWrite(*output, output->audio, output->audioStream, nullptr);
                }
            }
            const int result = av_write_trailer(output->format);
            if (result < 0 && !m_canceled)
                fail(fmt::format("av_write_trailer: {}", errorText(result)));
            if (totalMs > 0 && !m_canceled) {
                const int percent = static_cast<int>(writtenMs * 100.0 / totalMs);
                if (percent > lastPercent)
                    emit progress(percent);
            }
        }
    } catch (const std::exception& error) {
        LOG_ERROR(kLogger, "Failed to encode to '{}': {}", outputPath.toStdString(), error.what());
        output.reset();
        QFile::remove(outputPath);
        emit done(false);
        return;
    }
    output.reset();
    if (m_canceled) {
        QFile::remove(outputPath);
        emit canceled();
        return;
    }
    LOG_INFO(kLogger, "Encoding to '{}' has been finished ({} ms)", outputPath.toStdString(), stopwatch.elapsed());
    emit done(true);
}
