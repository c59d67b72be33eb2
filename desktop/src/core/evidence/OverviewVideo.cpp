// The overview of an interval: cameras side by side, re-encoded with a burned-in overlay.
#include "core/evidence/OverviewVideo.h"

#include "core/encoding/CutItems.h"
#include "core/evidence/OverviewVideoOverlay.h"
#include "logging/Logging.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <cmath>
#include <cstring>
#include <deque>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

constexpr const char* kLogger = "core.OverviewVideo";

// A picture older than this is not shown: no recording's frames lie a second apart, so the camera has no
// recording at that moment (a gap between files, or an item without a rear file) and its place stays black.
constexpr double kMaxPictureAgeMs = 1000.0;
// Rates above this are thinned out: the overview is for reading what happened, not for frame analysis.
constexpr int kMaxFramesPerSecond = 60;
// One key frame every two seconds keeps seeking in a player quick without costing much size.
constexpr int kKeyFrameSeconds = 2;
// x264 "veryfast" at CRF 23: a quarter of the time "medium" takes, and the overlay's text stays sharp.
constexpr const char* kX264Preset = "veryfast";
constexpr const char* kX264Crf = "23";
constexpr std::int64_t kAudioBitRate = 128000;
// Without any sound in the recordings, the silent track has this rate (that of most recorders).
constexpr int kDefaultSampleRate = 48000;
// Text height as a share of the picture height: 40 px on 1080 lines, readable on a phone; never below 12 px.
constexpr int kTextHeightDivisor = 27;
constexpr int kMinTextHeight = 12;
constexpr const char* kOverlayKey = "reelvue_overlay";
// Muxers interleave sound within about half a second of the pictures it goes with.
constexpr double kSoundLeadMs = 500.0;

[[noreturn]] void fail(const std::string& text) {
    throw std::runtime_error(text);
}

std::string errorText(int error) {
    return encoding::ffmpegErrorText(error);
}

void check(int result, const char* what) {
    if (result < 0)
        fail(fmt::format("{}: {}", what, errorText(result)));
}

struct FrameDeleter {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using FramePtr = std::unique_ptr<AVFrame, FrameDeleter>;
struct PacketDeleter {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using PacketPtr = std::unique_ptr<AVPacket, PacketDeleter>;
struct CodecDeleter {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
using CodecPtr = std::unique_ptr<AVCodecContext, CodecDeleter>;
struct InputDeleter {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
using InputPtr = std::unique_ptr<AVFormatContext, InputDeleter>;

FramePtr newFrame() {
    FramePtr frame(av_frame_alloc());
    if (!frame)
        fail("av_frame_alloc failed");
    return frame;
}

int even(double value) {
    return std::max(2, static_cast<int>(std::lround(value / 2.0)) * 2);
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

// The muxer with its H.264 and AAC encoders.
struct Output {
    AVFormatContext* format = nullptr;
    CodecPtr video;
    AVStream* videoStream = nullptr;
    CodecPtr audio;
    AVStream* audioStream = nullptr;

    ~Output() {
        if (format) {
            if (format->pb)
                avio_closep(&format->pb);
            avformat_free_context(format);
        }
    }

    // Sends a frame (nullptr: flush) and writes every packet the encoder gives back.
    void encode(AVCodecContext* encoder, AVStream* stream, const AVFrame* frame) {
        const int sent = avcodec_send_frame(encoder, frame);
        if (sent < 0 && !(frame == nullptr && sent == AVERROR_EOF))
            fail(fmt::format("avcodec_send_frame: {}", errorText(sent)));
        PacketPtr packet(av_packet_alloc());
        while (true) {
            const int result = avcodec_receive_packet(encoder, packet.get());
            if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
                return;
            check(result, "avcodec_receive_packet");
            av_packet_rescale_ts(packet.get(), encoder->time_base, stream->time_base);
            packet->stream_index = stream->index;
            check(av_interleaved_write_frame(format, packet.get()), "av_interleaved_write_frame");
        }
    }
};

std::unique_ptr<Output> createOutput(const QString& path, int width, int height, AVRational frameRate,
                                     int sampleRate, int channels) {
    auto output = std::make_unique<Output>();
    const std::string utf8Path = encoding::ffmpegPath(path);
    check(avformat_alloc_output_context2(&output->format, nullptr, "mp4", utf8Path.c_str()),
          "avformat_alloc_output_context2");
    const bool globalHeader = output->format->oformat->flags & AVFMT_GLOBALHEADER;

    const AVCodec* h264 = avcodec_find_encoder_by_name("libx264");
    if (!h264)
        h264 = avcodec_find_encoder(AV_CODEC_ID_H264);
    if (!h264)
        fail("No H.264 encoder");
    output->video.reset(avcodec_alloc_context3(h264));
    AVCodecContext* video = output->video.get();
    video->width = width;
    video->height = height;
    video->sample_aspect_ratio = AVRational{1, 1};
    video->pix_fmt = AV_PIX_FMT_YUV420P;
    video->framerate = frameRate;
    video->time_base = av_inv_q(frameRate);
    video->gop_size = kKeyFrameSeconds * frameRate.num / std::max(1, frameRate.den);
    video->thread_count = 0;
    if (globalHeader)
        video->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    av_opt_set(video->priv_data, "preset", kX264Preset, 0);
    av_opt_set(video->priv_data, "crf", kX264Crf, 0);
    check(avcodec_open2(video, h264, nullptr), "avcodec_open2 for video stream");
    output->videoStream = avformat_new_stream(output->format, nullptr);
    if (!output->videoStream)
        fail("avformat_new_stream for video stream");
    check(avcodec_parameters_from_context(output->videoStream->codecpar, video), "avcodec_parameters_from_context");
    output->videoStream->time_base = video->time_base;

    const AVCodec* aac = avcodec_find_encoder(AV_CODEC_ID_AAC);
    if (!aac)
        fail("No AAC encoder");
    output->audio.reset(avcodec_alloc_context3(aac));
    AVCodecContext* audio = output->audio.get();
    audio->sample_rate = sampleRate;
    av_channel_layout_default(&audio->ch_layout, channels);
    audio->sample_fmt = aac->sample_fmts ? aac->sample_fmts[0] : AV_SAMPLE_FMT_FLTP;
    audio->bit_rate = kAudioBitRate;
    audio->time_base = AVRational{1, sampleRate};
    if (globalHeader)
        audio->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    check(avcodec_open2(audio, aac, nullptr), "avcodec_open2 for audio stream");
    output->audioStream = avformat_new_stream(output->format, nullptr);
    if (!output->audioStream)
        fail("avformat_new_stream for audio stream");
    check(avcodec_parameters_from_context(output->audioStream->codecpar, audio), "avcodec_parameters_from_context");
    output->audioStream->time_base = audio->time_base;

    check(avio_open(&output->format->pb, utf8Path.c_str(), AVIO_FLAG_WRITE), "avio_open");
    check(avformat_write_header(output->format, nullptr), "avformat_write_header");
    return output;
}

// The overview's sound: decoded audio converted to the encoder's format and placed at its output time,
// with silence wherever the recordings have none.
class SoundTrack {
public:
    SoundTrack(Output& output, double endMs) : m_output(output), m_encoder(*output.audio), m_end(samplesAt(endMs)) {
        m_fifo = av_audio_fifo_alloc(m_encoder.sample_fmt, m_encoder.ch_layout.nb_channels, m_encoder.frame_size);
        if (!m_fifo)
            fail("av_audio_fifo_alloc failed");
    }
    ~SoundTrack() {
        swr_free(&m_resampler);
        av_channel_layout_uninit(&m_inputLayout);
        av_audio_fifo_free(m_fifo);
    }

    // A decoded frame whose first sample belongs at outputMs.
    void add(const AVFrame& frame, double outputMs) {
        const std::int64_t at = samplesAt(outputMs);
        const std::int64_t length = av_rescale(frame.nb_samples, m_encoder.sample_rate, std::max(frame.sample_rate, 1));
        const std::int64_t queuedEnd = m_written + av_audio_fifo_size(m_fifo);
        if (at >= m_end || at + length <= queuedEnd)
            return; // past the overview's end, or over sound already placed (a file running on past the next one's start)
        if (at > queuedEnd + m_encoder.frame_size)
            addSilence(at - queuedEnd);
        convert(frame);
        encodeQueued(false);
    }

    // Pads with silence up to the end and writes everything out.
    void finish() {
        const std::int64_t queuedEnd = m_written + av_audio_fifo_size(m_fifo);
        if (m_end > queuedEnd)
            addSilence(m_end - queuedEnd);
        encodeQueued(true);
        m_output.encode(&m_encoder, m_output.audioStream, nullptr);
    }

    std::int64_t samplesAt(double ms) const {
        return static_cast<std::int64_t>(std::llround(ms * m_encoder.sample_rate / 1000.0));
    }

private:
    void convert(const AVFrame& frame) {
        if (!m_resampler || frame.sample_rate != m_inputRate || frame.format != m_inputFormat ||
            av_channel_layout_compare(&frame.ch_layout, &m_inputLayout) != 0) {
            swr_free(&m_resampler);
            av_channel_layout_uninit(&m_inputLayout);
            check(av_channel_layout_copy(&m_inputLayout, &frame.ch_layout), "av_channel_layout_copy");
            if (m_inputLayout.order == AV_CHANNEL_ORDER_UNSPEC)
                av_channel_layout_default(&m_inputLayout, frame.ch_layout.nb_channels);
            m_inputRate = frame.sample_rate;
            m_inputFormat = frame.format;
            check(swr_alloc_set_opts2(&m_resampler, &m_encoder.ch_layout, m_encoder.sample_fmt, m_encoder.sample_rate,
                                      &m_inputLayout, static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0,
                                      nullptr),
                  "swr_alloc_set_opts2");
            check(swr_init(m_resampler), "swr_init");
        }
        const int capacity = swr_get_out_samples(m_resampler, frame.nb_samples);
        FramePtr converted = samplesFrame(capacity);
        const int count = swr_convert(m_resampler, converted->data, capacity,
                                      const_cast<const uint8_t**>(frame.extended_data), frame.nb_samples);
        check(count, "swr_convert");
        check(av_audio_fifo_write(m_fifo, reinterpret_cast<void**>(converted->data), count), "av_audio_fifo_write");
    }

    void addSilence(std::int64_t samples) {
        while (samples > 0) {
            const int count = static_cast<int>(std::min<std::int64_t>(samples, m_encoder.frame_size));
            FramePtr silence = samplesFrame(count);
            av_samples_set_silence(silence->data, 0, count, m_encoder.ch_layout.nb_channels, m_encoder.sample_fmt);
            check(av_audio_fifo_write(m_fifo, reinterpret_cast<void**>(silence->data), count), "av_audio_fifo_write");
            encodeQueued(false);
            samples -= count;
        }
    }

    void encodeQueued(bool all) {
        const int frameSize = m_encoder.frame_size;
        while (av_audio_fifo_size(m_fifo) >= frameSize || (all && av_audio_fifo_size(m_fifo) > 0)) {
            const int count = std::min(av_audio_fifo_size(m_fifo), frameSize);
            FramePtr frame = samplesFrame(count);
            check(av_audio_fifo_read(m_fifo, reinterpret_cast<void**>(frame->data), count), "av_audio_fifo_read");
            frame->pts = m_written;
            m_written += count;
            m_output.encode(&m_encoder, m_output.audioStream, frame.get());
        }
    }

    FramePtr samplesFrame(int samples) const {
        FramePtr frame = newFrame();
        frame->nb_samples = std::max(samples, 1);
        frame->format = m_encoder.sample_fmt;
        frame->sample_rate = m_encoder.sample_rate;
        check(av_channel_layout_copy(&frame->ch_layout, &m_encoder.ch_layout), "av_channel_layout_copy");
        check(av_frame_get_buffer(frame.get(), 0), "av_frame_get_buffer");
        return frame;
    }

    Output& m_output;
    AVCodecContext& m_encoder;
    std::int64_t m_end; // samples of the whole overview
    AVAudioFifo* m_fifo = nullptr;
    SwrContext* m_resampler = nullptr;
    AVChannelLayout m_inputLayout{};
    int m_inputRate = 0;
    int m_inputFormat = -1;
    std::int64_t m_written = 0; // samples handed to the encoder; the pts of the next frame
};

// One camera's pictures over the interval, file after file, asked for in rising output time.
class CameraPictures {
public:
    // withSound: the sound of the files is decoded too, and kept until setSound() names its track.
    CameraPictures(const Playlist::RawItems& items, int camera, const QDateTime& start, const QDateTime& end,
                   bool withSound)
        : m_withSound(withSound) {
        for (const auto& item : items) {
            if (!(start < item->to) || !(item->from < end))
                continue;
            if (camera == 1 && !item->rearVideo)
                continue;
            const QFileInfo file = camera == 1 ? *item->rearVideo : item->mainVideo;
            m_files.push_back({file.filePath(), static_cast<double>(start.msecsTo(item->from)),
                               item->from < start ? static_cast<double>(item->from.msecsTo(start)) : 0.0});
        }
    }

    bool hasFiles() const { return !m_files.empty(); }
    void setSound(SoundTrack* sound) {
        m_sound = sound;
        for (auto& [ms, frame] : m_soundFrames)
            m_sound->add(*frame, ms);
        m_soundFrames.clear();
    }

    // The first picture, read ahead to learn the camera's size and rate; nullptr when no file opens.
    const AVFrame* firstPicture() {
        if (!m_next)
            fetch();
        return m_next.get();
    }
    AVRational frameRate() const { return m_frameRate; }
    // The sound format of the first file that has sound; sample rate 0 when none did so far.
    int sampleRate() const { return m_sampleRate; }
    int channels() const { return m_channels; }

    // The latest picture at or before outputMs; nullptr when the camera has none at that moment.
    const AVFrame* pictureAt(double outputMs) {
        while (m_next || fetch()) {
            if (m_nextMs > outputMs)
                break;
            m_current = std::move(m_next);
            m_currentMs = m_nextMs;
        }
        if (!m_current || outputMs - m_currentMs > kMaxPictureAgeMs)
            return nullptr;
        return m_current.get();
    }

    // Reads on past the last picture so that the sound interleaved with it reaches the end too.
    void drainSound(double endMs) { pictureAt(endMs + kSoundLeadMs); }

private:
    struct File {
        QString path;
        double outputStartMs; // where the file's start lies on the output's time line
        double skipMs;        // time at the file's start before the interval
    };

    // Fills m_next with the next picture; false when every file is used up.
    bool fetch() {
        PacketPtr packet(av_packet_alloc());
        while (m_pending.empty()) {
            if (!m_input && !openNextFile())
                return false;
            const int result = av_read_frame(m_input.get(), packet.get());
            if (result < 0) {
                if (result != AVERROR_EOF)
                    LOG_WARN(kLogger, "Failed to read '{}': {}", m_files[m_fileIndex - 1].path.toStdString(),
                             errorText(result));
                decode(m_video.get(), nullptr, true);
                if (m_audio)
                    decode(m_audio.get(), nullptr, false);
                closeFile();
                continue;
            }
            if (packet->stream_index == m_videoIndex)
                decode(m_video.get(), packet.get(), true);
            else if (packet->stream_index == m_audioIndex && m_audio)
                decode(m_audio.get(), packet.get(), false);
            av_packet_unref(packet.get());
        }
        m_nextMs = m_pending.front().first;
        m_next = std::move(m_pending.front().second);
        m_pending.pop_front();
        return true;
    }

    bool openNextFile() {
        while (m_fileIndex < m_files.size()) {
            const File& file = m_files[m_fileIndex++];
            try {
                open(file);
                return true;
            } catch (const std::exception& error) {
                LOG_ERROR(kLogger, "Could not open input file '{}': {}", file.path.toStdString(), error.what());
                closeFile();
            }
        }
        return false;
    }

    void open(const File& file) {
        const std::string path = encoding::ffmpegPath(file.path);
        AVFormatContext* format = nullptr;
        check(avformat_open_input(&format, path.c_str(), nullptr, nullptr), "avformat_open_input");
        m_input.reset(format);
        check(avformat_find_stream_info(format, nullptr), "avformat_find_stream_info");
        m_videoIndex = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
        if (m_videoIndex < 0)
            fail("no video stream");
        m_video = openDecoder(format, m_videoIndex);
        if (m_frameRate.num == 0)
            m_frameRate = av_guess_frame_rate(format, format->streams[m_videoIndex], nullptr);
        m_audioIndex = m_withSound ? av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, m_videoIndex, nullptr, 0) : -1;
        if (m_audioIndex >= 0) {
            try {
                m_audio = openDecoder(format, m_audioIndex);
                if (m_sampleRate == 0) {
                    m_sampleRate = m_audio->sample_rate;
                    m_channels = m_audio->ch_layout.nb_channels;
                }
            } catch (const std::exception& error) {
                LOG_WARN(kLogger, "Sound of '{}' left out: {}", file.path.toStdString(), error.what());
                m_audioIndex = -1;
            }
        }
        m_fileStartMs = format->start_time != AV_NOPTS_VALUE ? format->start_time / 1000.0 : 0.0;
        m_file = &file;
        if (file.skipMs > 0) {
            const auto ts = static_cast<std::int64_t>((m_fileStartMs + file.skipMs) * 1000.0);
            if (av_seek_frame(format, -1, ts, AVSEEK_FLAG_BACKWARD) < 0)
                LOG_WARN(kLogger, "Failed seek in file: '{}'", file.path.toStdString());
        }
        LOG_DEBUG(kLogger, "Overview from '{}' at {} ms", file.path.toStdString(), file.outputStartMs);
    }

    void closeFile() {
        m_video.reset();
        m_audio.reset();
        m_input.reset();
        m_videoIndex = m_audioIndex = -1;
        m_file = nullptr;
    }

    void decode(AVCodecContext* decoder, const AVPacket* packet, bool isVideo) {
        const int sent = avcodec_send_packet(decoder, packet);
        if (sent < 0 && sent != AVERROR_EOF) {
            LOG_WARN(kLogger, "avcodec_send_packet (isVideo: {}): {}", isVideo, errorText(sent));
            return; // a damaged packet costs a picture, not the overview
        }
        while (true) {
            FramePtr frame = newFrame();
            const int result = avcodec_receive_frame(decoder, frame.get());
            if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
                return;
            if (result < 0) {
                LOG_WARN(kLogger, "avcodec_receive_frame (isVideo: {}): {}", isVideo, errorText(result));
                return;
            }
            if (frame->best_effort_timestamp == AV_NOPTS_VALUE)
                continue;
            const double inFileMs =
                frame->best_effort_timestamp * av_q2d(decoder->pkt_timebase) * 1000.0 - m_fileStartMs;
            if (inFileMs < m_file->skipMs - (isVideo ? 0.0 : 1.0))
                continue; // decoded from the key frame before the interval only to reach its start
            const double outputMs = m_file->outputStartMs + inFileMs;
            if (isVideo) {
                if (outputMs <= m_lastVideoMs)
                    continue; // the previous file ran on past this one's start
                m_lastVideoMs = outputMs;
                m_pending.emplace_back(outputMs, std::move(frame));
            } else if (m_sound) {
                m_sound->add(*frame, outputMs);
            } else {
                m_soundFrames.emplace_back(outputMs, std::move(frame));
            }
        }
    }

    std::vector<File> m_files;
    std::size_t m_fileIndex = 0;
    const File* m_file = nullptr;
    bool m_withSound;
    SoundTrack* m_sound = nullptr;
    std::deque<std::pair<double, FramePtr>> m_soundFrames; // decoded before the track existed
    InputPtr m_input;
    CodecPtr m_video;
    CodecPtr m_audio;
    int m_videoIndex = -1;
    int m_audioIndex = -1;
    double m_fileStartMs = 0.0;
    AVRational m_frameRate{0, 1};
    int m_sampleRate = 0;
    int m_channels = 0;
    double m_lastVideoMs = -1e18;
    std::deque<std::pair<double, FramePtr>> m_pending;
    FramePtr m_current;
    double m_currentMs = 0.0;
    FramePtr m_next;
    double m_nextMs = 0.0;
};

// The shown width of a picture: its coded width corrected by the sample aspect ratio.
double shownWidth(const AVFrame& frame) {
    const AVRational sar = frame.sample_aspect_ratio;
    return sar.num > 0 && sar.den > 0 ? frame.width * av_q2d(sar) : frame.width;
}

// The side-by-side picture: each camera scaled into its place, black where it has no picture.
class Canvas {
public:
    Canvas(std::vector<int> widths, int height) : m_widths(std::move(widths)), m_height(height) {
        m_scalers.resize(m_widths.size(), nullptr);
        for (int w : m_widths)
            m_width += w;
    }
    ~Canvas() {
        for (SwsContext* scaler : m_scalers)
            sws_freeContext(scaler);
    }
    int width() const { return m_width; }
    int height() const { return m_height; }
    int left(std::size_t camera) const {
        int x = 0;
        for (std::size_t i = 0; i < camera; ++i)
            x += m_widths[i];
        return x;
    }

    FramePtr compose(const std::vector<const AVFrame*>& pictures) {
        FramePtr canvas = newFrame();
        canvas->format = AV_PIX_FMT_YUV420P;
        canvas->width = m_width;
        canvas->height = m_height;
        check(av_frame_get_buffer(canvas.get(), 0), "av_frame_get_buffer");
        std::memset(canvas->data[0], 16, static_cast<std::size_t>(canvas->linesize[0]) * m_height); // video black
        std::memset(canvas->data[1], 128, static_cast<std::size_t>(canvas->linesize[1]) * (m_height / 2));
        std::memset(canvas->data[2], 128, static_cast<std::size_t>(canvas->linesize[2]) * (m_height / 2));
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            const AVFrame* picture = pictures[i];
            if (!picture)
                continue;
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

private:
    std::vector<int> m_widths;
    int m_height;
    int m_width = 0;
    std::vector<SwsContext*> m_scalers;
};

// buffer -> drawtext (the frame's overlay text, from its metadata) -> drawtext per camera name -> buffersink.
class OverlayFilter {
public:
    OverlayFilter(const Canvas& canvas, AVRational timeBase, const QStringList& names, const QString& fontFile) {
        m_graph = avfilter_graph_alloc();
        if (!m_graph)
            fail("avfilter_graph_alloc failed");
        const int textHeight = std::max(kMinTextHeight, canvas.height() / kTextHeightDivisor);
        const int margin = textHeight / 2;
        const std::string font = fontFile.toStdString();
        char args[256];
        std::snprintf(args, sizeof args, "video_size=%dx%d:pix_fmt=%d:time_base=%d/%d:pixel_aspect=1/1",
                      canvas.width(), canvas.height(), AV_PIX_FMT_YUV420P, timeBase.num, timeBase.den);
        check(avfilter_graph_create_filter(&m_source, avfilter_get_by_name("buffer"), "in", args, nullptr, m_graph),
              "avfilter_graph_create_filter(buffer)");
        AVFilterContext* last = m_source;
        last = link(last, drawText("info", font, fmt::format("%{{metadata:{}}}", kOverlayKey), textHeight,
                                   std::to_string(margin), std::to_string(margin), true));
        for (int i = 0; i < names.size(); ++i) {
            if (names[i].isEmpty())
                continue; // drawtext refuses an empty text
            const int x = canvas.left(static_cast<std::size_t>(i)) + margin;
            last = link(last, drawText(fmt::format("camera{}", i), font, names[i].toStdString(), textHeight,
                                       std::to_string(x), fmt::format("h-th-{}", margin), false));
        }
        check(avfilter_graph_create_filter(&m_sink, avfilter_get_by_name("buffersink"), "out", nullptr, nullptr,
                                           m_graph),
              "avfilter_graph_create_filter(buffersink)");
        link(last, m_sink);
        check(avfilter_graph_config(m_graph, nullptr), "avfilter_graph_config");
    }
    ~OverlayFilter() { avfilter_graph_free(&m_graph); }

    AVFilterContext* source() const { return m_source; }
    AVFilterContext* sink() const { return m_sink; }

private:
    AVFilterContext* drawText(const std::string& name, const std::string& font, const std::string& text,
                              int size, const std::string& x, const std::string& y, bool expand) {
        const AVFilter* drawtext = avfilter_get_by_name("drawtext");
        if (!drawtext)
            fail("The drawtext filter is missing from FFmpeg");
        AVFilterContext* context = avfilter_graph_alloc_filter(m_graph, drawtext, name.c_str());
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

    static AVFilterContext* link(AVFilterContext* from, AVFilterContext* to) {
        check(avfilter_link(from, 0, to, 0), "avfilter_link");
        return to;
    }

    AVFilterGraph* m_graph = nullptr;
    AVFilterContext* m_source = nullptr;
    AVFilterContext* m_sink = nullptr;
};

} // namespace

OverviewVideo::OverviewVideo(Playlist::RawItems items, TimeInterval interval, QString filePath,
                             TrackPositions positions, SpeedUnit speedUnit, QStringList cameraNames, QObject* parent)
    : BaseEncoder(std::move(items), std::move(interval), EncodingSettings{}, parent),
      m_positions(std::move(positions)), m_speedUnit(speedUnit), m_cameraNames(std::move(cameraNames)) {
    m_settings.filePath = std::move(filePath);
    m_settings.forceReencoding = true;
}

QString OverviewVideo::defaultFontFile() {
    return QStringLiteral("/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf");
}

void OverviewVideo::encode() {
    m_canceled = false;
    const QString target = m_settings.filePath;
    const QString partial = target + QStringLiteral(".part");
    LOG_INFO(kLogger, "Start writing the overview to '{}'", target.toStdString());
    QElapsedTimer stopwatch;
    stopwatch.start();
    emit progress(0);
    try {
        run(partial);
    } catch (const std::exception& error) {
        LOG_ERROR(kLogger, "Failed to write the overview to '{}': {}", target.toStdString(), error.what());
        QFile::remove(partial);
        emit done(false);
        return;
    }
    if (m_canceled) {
        QFile::remove(partial);
        emit canceled();
        return;
    }
    QFile::remove(target);
    if (!QFile::rename(partial, target)) {
        LOG_ERROR(kLogger, "Failed to rename '{}' to '{}'", partial.toStdString(), target.toStdString());
        QFile::remove(partial);
        emit done(false);
        return;
    }
    LOG_INFO(kLogger, "Overview '{}' has been finished ({} ms)", target.toStdString(), stopwatch.elapsed());
    emit done(true);
}

void OverviewVideo::run(const QString& partialPath) {
    // The overview runs from the first recorded moment of the interval to the last.
    QDateTime start, end;
    for (const auto& item : m_items) {
        if (!(m_interval.from < item->to) || !(item->from < m_interval.to))
            continue;
        const QDateTime from = std::max(item->from, m_interval.from);
        const QDateTime to = std::min(item->to, m_interval.to);
        if (!start.isValid() || from < start)
            start = from;
        if (!end.isValid() || end < to)
            end = to;
    }
    if (!start.isValid() || !(start < end))
        fail("No recording in the interval");
    const double totalMs = start.msecsTo(end);

    std::vector<std::unique_ptr<CameraPictures>> cameras;
    for (int camera = 0; camera < 2; ++camera) {
        auto pictures = std::make_unique<CameraPictures>(m_items, camera, start, end, camera == 0);
        if (pictures->hasFiles())
            cameras.push_back(std::move(pictures));
    }
    if (cameras.empty())
        fail("No recording in the interval");
    // The sound comes from the main camera; its first file tells the sound's format.
    CameraPictures& main = *cameras.front();
    const AVFrame* first = main.firstPicture();
    if (!first)
        fail("None of the main camera's files could be read");
    const int height = even(first->height);
    std::vector<int> widths;
    for (auto& camera : cameras) {
        const AVFrame* picture = camera->firstPicture();
        if (!picture) {
            widths.push_back(0);
            continue;
        }
        widths.push_back(even(shownWidth(*picture) * height / picture->height));
    }
    // Cameras whose files all failed drop out of the picture.
    for (std::size_t i = cameras.size(); i-- > 0;) {
        if (widths[i] == 0) {
            cameras.erase(cameras.begin() + static_cast<std::ptrdiff_t>(i));
            widths.erase(widths.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }
    AVRational frameRate = main.frameRate();
    if (frameRate.num <= 0 || frameRate.den <= 0 || av_q2d(frameRate) > kMaxFramesPerSecond)
        frameRate = AVRational{25, 1};

    Canvas canvas(widths, height);
    const int sampleRate = main.sampleRate() > 0 ? main.sampleRate() : kDefaultSampleRate;
    const int channels = main.sampleRate() > 0 ? std::min(main.channels(), 2) : 1;
    auto output = createOutput(partialPath, canvas.width(), canvas.height(), frameRate, sampleRate, channels);
    SoundTrack sound(*output, totalMs);
    main.setSound(&sound);

    QStringList names;
    for (std::size_t i = 0; i < cameras.size(); ++i)
        names << m_cameraNames.value(static_cast<int>(i));
    const QString fontFile = defaultFontFile();
    if (!QFileInfo::exists(fontFile))
        fail(fmt::format("The font of the overlay is missing: '{}'", fontFile.toStdString()));
    OverlayFilter overlay(canvas, output->video->time_base, names, fontFile);

    const std::int64_t frames = static_cast<std::int64_t>(std::ceil(totalMs * av_q2d(frameRate) / 1000.0));
    FramePtr filtered = newFrame();
    int lastPercent = 0;
    std::vector<const AVFrame*> pictures(cameras.size());
    for (std::int64_t n = 0; n < frames && !m_canceled; ++n) {
        const double ms = n * 1000.0 / av_q2d(frameRate);
        for (std::size_t i = 0; i < cameras.size(); ++i)
            pictures[i] = cameras[i]->pictureAt(ms);
        FramePtr picture = canvas.compose(pictures);
        picture->pts = n;
        const QDateTime moment = start.addMSecs(static_cast<qint64>(ms));
        const QString text = evidence::overlayText(moment, evidence::fixInForce(m_positions, moment), m_speedUnit);
        av_dict_set(&picture->metadata, kOverlayKey, text.toUtf8().constData(), 0);
        check(av_buffersrc_add_frame_flags(overlay.source(), picture.get(), 0), "av_buffersrc_add_frame_flags");
        while (av_buffersink_get_frame(overlay.sink(), filtered.get()) >= 0) {
            output->encode(output->video.get(), output->videoStream, filtered.get());
            av_frame_unref(filtered.get());
        }
        const int percent = static_cast<int>((n + 1) * 100 / frames);
        if (percent > lastPercent) {
            lastPercent = percent;
            emit progress(percent);
        }
    }
    if (m_canceled)
        return; // the caller removes the partial file; the output closes without a trailer
    main.drainSound(totalMs);
    sound.finish();
    output->encode(output->video.get(), output->videoStream, nullptr);
    check(av_write_trailer(output->format), "av_write_trailer");
    check(avio_closep(&output->format->pb), "avio_closep");
}
