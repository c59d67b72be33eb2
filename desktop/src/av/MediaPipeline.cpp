// Opening a file, the reader thread and the video decoder thread.
#include "av/MediaPipeline.h"

#include "av/AudioDecoder.h"
#include "logging/Logging.h"

#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <pthread.h>

#include <algorithm>
#include <stdexcept>

namespace av {
namespace {
constexpr const char* kLogger = "av.MediaPipeline";
// A decoded frame this far behind the clock is dropped before it reaches the presenter.
constexpr double kDecoderLateMs = 60;
// Lag behind the clock at which the decoder skips non-reference frames, and then all but key frames.
constexpr double kSkipNonRefMs = 60;
// (Beyond the second, decoding every picture cannot catch up: it jumps to the next key frame instead.)
constexpr double kSkipNonKeyMs = 300;
// Frame threads of one camera's decoder. Each holds pictures and a copy of the decoder's state (several MB in
// 1080p), and one 1080p30 stream needs well under a core: beyond 4 the cameras only compete for the cores.
constexpr int kMaxDecoderThreads = 4;

std::runtime_error failure(const std::string& text) {
    return std::runtime_error(text);
}
} // namespace

MediaPipeline::MediaPipeline(const QString& file, const Clock& clock, AudioSink* sink) : m_clock(clock) {
    open(file, sink);
    primeFirstFrame();
}

MediaPipeline::~MediaPipeline() {
    m_stop = true;
    m_videoPackets.wake();
    m_frames.wake();
    if (m_reader.joinable())
        m_reader.join();
    if (m_decoder.joinable())
        m_decoder.join();
    m_audio.reset();
}

double MediaPipeline::toMs(int64_t pts, AVRational timeBase) const {
    return static_cast<double>(pts) * av_q2d(timeBase) * 1000.0 - m_originMs;
}

QSize MediaPipeline::frameSize() const {
    return QSize(m_video->width, m_video->height);
}

void MediaPipeline::open(const QString& file, AudioSink* sink) {
    const std::string path = file.toStdString();
    if (!QFileInfo(file).isFile())
        throw failure(fmt::format("No such file: {}", path));
    AVFormatContext* format = nullptr;
    // The name's own bytes: it need not be UTF-8.
    int ret = avformat_open_input(&format, QFile::encodeName(file).constData(), nullptr, nullptr);
    if (ret < 0)
        throw failure(fmt::format("avformat_open_input for {}: {}", path, ffmpegError(ret)));
    m_format.reset(format);
    ret = avformat_find_stream_info(format, nullptr);
    if (ret < 0)
        throw failure(fmt::format("avformat_find_stream_info for {}: {}", path, ffmpegError(ret)));

    const AVCodec* videoCodec = nullptr;
    m_videoStream = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, &videoCodec, 0);
    if (m_videoStream < 0 || !videoCodec)
        throw failure(fmt::format("No video stream in {}", path));
    AVStream* video = format->streams[m_videoStream];
    m_video.reset(avcodec_alloc_context3(videoCodec));
    avcodec_parameters_to_context(m_video.get(), video->codecpar);
    m_video->thread_count = std::clamp(QThread::idealThreadCount(), 1, kMaxDecoderThreads);
    m_video->thread_type = FF_THREAD_FRAME | FF_THREAD_SLICE;
    ret = avcodec_open2(m_video.get(), videoCodec, nullptr);
    if (ret < 0)
        throw failure(fmt::format("avcodec_open2 for video stream: {}", ffmpegError(ret)));

    m_originMs = video->start_time == AV_NOPTS_VALUE ? 0 : static_cast<double>(video->start_time) * av_q2d(video->time_base) * 1000.0;
    if (format->duration > 0)
        m_durationMs = static_cast<double>(format->duration) / 1000.0;
    else if (video->duration > 0)
        m_durationMs = static_cast<double>(video->duration) * av_q2d(video->time_base) * 1000.0;
    const AVRational rate = video->avg_frame_rate.num > 0 ? video->avg_frame_rate : video->r_frame_rate;
    if (rate.num > 0 && rate.den > 0)
        m_frameDurationMs = 1000.0 / av_q2d(rate);

    // Without a sound device the sound is not even read.
    const AVCodec* audioCodec = nullptr;
    m_audioStream = av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, m_videoStream, &audioCodec, 0);
    if (m_audioStream >= 0 && audioCodec && sink) {
        AVStream* audio = format->streams[m_audioStream];
        CodecContextPtr context(avcodec_alloc_context3(audioCodec));
        avcodec_parameters_to_context(context.get(), audio->codecpar);
        ret = avcodec_open2(context.get(), audioCodec, nullptr);
        if (ret < 0) {
            LOG_WARN(kLogger, "Sound of {} is not played: avcodec_open2 for audio stream: {}", path, ffmpegError(ret));
            m_audioStream = -1;
        } else {
            m_audio = std::make_unique<AudioDecoder>(std::move(context), audio->time_base, m_originMs, m_clock, sink);
        }
    } else {
        m_audioStream = -1;
    }
    for (unsigned i = 0; i < format->nb_streams; ++i)
        if (static_cast<int>(i) != m_videoStream && static_cast<int>(i) != m_audioStream)
            format->streams[i]->discard = AVDISCARD_ALL;
}

// Reads and decodes until the first picture is out, so that a loaded player can show it at once.
void MediaPipeline::primeFirstFrame() {
    PacketPtr packet(av_packet_alloc());
    double noTarget = -1;
    bool draining = false;
    while (!m_frames.peek()) {
        if (!draining) {
            const int ret = av_read_frame(m_format.get(), packet.get());
            if (ret < 0) {
                draining = true;  // a file shorter than the decoder's delay: flush it out
                avcodec_send_packet(m_video.get(), nullptr);
            } else if (packet->stream_index == m_audioStream) {
                m_audio->packets().push({PacketEntry::Kind::Packet, PacketPtr(av_packet_clone(packet.get())), 0, 0},
                                        [] { return true; });
                av_packet_unref(packet.get());
                continue;
            } else if (packet->stream_index != m_videoStream) {
                av_packet_unref(packet.get());
                continue;
            }
        }
        if (!draining) {
            sendVideoPacket(packet.get(), 0, noTarget);
            av_packet_unref(packet.get());
        } else {
            FramePtr frame(av_frame_alloc());
            if (avcodec_receive_frame(m_video.get(), frame.get()) < 0)
                throw failure("No picture could be decoded from the video stream");
            deliverFrame(std::move(frame), 0, noTarget);
        }
    }
    m_firstFrame = *m_frames.peek();
    m_frames.pop();
    m_firstFrame.seekResult = true;
    if (draining)
        m_videoPackets.push({PacketEntry::Kind::EndOfFile, nullptr, 0, 0}, nullptr);
}

void MediaPipeline::start() {
    if (m_started)
        return;
    m_started = true;
    if (m_audio)
        m_audio->start();
    m_decoder = std::thread([this] {
        pthread_setname_np(pthread_self(), "av-video");  // named for profilers and top -H
        videoLoop();
    });
    m_reader = std::thread([this] {
        pthread_setname_np(pthread_self(), "av-reader");
        readLoop();
    });
}

int MediaPipeline::seek(double targetMs) {
    std::lock_guard<std::mutex> lock(m_seekMutex);
    m_seekTargetMs = targetMs;
    m_seekSerial = ++m_serial;
    m_seekPending = true;
    m_videoPackets.wake();
    m_frames.wake();
    return m_seekSerial;
}

void MediaPipeline::setPictureTarget(std::shared_ptr<const PictureTarget> target) {
    std::lock_guard<std::mutex> lock(m_targetMutex);
    m_target = std::move(target);
}

void MediaPipeline::readLoop() {
    PacketPtr packet(av_packet_alloc());
    int serial = 0;
    bool endOfFile = false;
    const auto giveUp = [this] { return m_stop.load() || m_seekPending.load(); };
    while (!m_stop) {
        if (m_seekPending) {
            double target;
            {
                std::lock_guard<std::mutex> lock(m_seekMutex);
                target = m_seekTargetMs;
                serial = m_seekSerial;
                m_seekPending = false;
            }
            AVStream* video = m_format->streams[m_videoStream];
            const auto ts = static_cast<int64_t>((target + m_originMs) / 1000.0 / av_q2d(video->time_base));
            const int ret = av_seek_frame(m_format.get(), m_videoStream, ts, AVSEEK_FLAG_BACKWARD);
            if (ret < 0) {
                LOG_WARN(kLogger, "Seek to {} ms failed: {}", target, ffmpegError(ret));
                av_seek_frame(m_format.get(), m_videoStream, 0, AVSEEK_FLAG_BACKWARD);
            }
            m_videoPackets.clear();
            m_videoPackets.push({PacketEntry::Kind::Flush, nullptr, serial, target}, nullptr);
            if (m_audio) {
                m_audio->packets().clear();
                m_audio->packets().push({PacketEntry::Kind::Flush, nullptr, serial, target}, nullptr);
            }
            endOfFile = false;
            continue;
        }
        if (endOfFile) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            continue;
        }
        const int ret = av_read_frame(m_format.get(), packet.get());
        if (ret < 0) {
            if (ret != AVERROR_EOF)
                LOG_WARN(kLogger, "Reading stopped before the end: {}", ffmpegError(ret));
            m_videoPackets.push({PacketEntry::Kind::EndOfFile, nullptr, serial, 0}, nullptr);
            endOfFile = true;
            continue;
        }
        PacketEntry entry{PacketEntry::Kind::Packet, PacketPtr(av_packet_alloc()), serial, 0};
        av_packet_move_ref(entry.packet.get(), packet.get());
        if (entry.packet->stream_index == m_videoStream)
            m_videoPackets.push(std::move(entry), giveUp);
        else if (m_audio && entry.packet->stream_index == m_audioStream)
            m_audio->packets().push(std::move(entry), giveUp);
    }
}

void MediaPipeline::videoLoop() {
    int serial = 0;
    double seekTarget = -1;
    while (!m_stop) {
        auto entry = m_videoPackets.pop(std::chrono::milliseconds(20));
        if (!entry)
            continue;
        if (entry->kind == PacketEntry::Kind::Flush) {
            avcodec_flush_buffers(m_video.get());
            serial = entry->serial;
            seekTarget = entry->targetMs;
            m_discard = AVDISCARD_DEFAULT;
            m_video->skip_frame = AVDISCARD_DEFAULT;
            continue;
        }
        if (entry->serial != serial)
            continue;
        if (entry->kind == PacketEntry::Kind::EndOfFile) {
            sendVideoPacket(nullptr, serial, seekTarget);
            avcodec_flush_buffers(m_video.get());  // ready to decode again after a later seek
            const auto giveUp = [this, serial] { return m_stop.load() || m_serial.load() != serial; };
            VideoFrame end;
            end.endOfStream = true;
            end.serial = serial;
            const bool answersSeek = seekTarget >= 0;
            if (seekTarget >= 0 && m_lastPassed.frame) {
                // Sought past the last picture: that picture is the answer.
                m_lastPassed.seekResult = true;
                m_frames.push(std::move(m_lastPassed), giveUp);
            } else if (seekTarget >= 0) {
                end.seekResult = true;
                end.ptsMs = seekTarget;
            }
            m_lastPassed = {};
            seekTarget = -1;
            if (m_frames.push(std::move(end), giveUp) && answersSeek && m_seekAnswered)
                m_seekAnswered();
            continue;
        }
        sendVideoPacket(entry->packet.get(), serial, seekTarget);
    }
}

bool MediaPipeline::sendVideoPacket(const AVPacket* packet, int serial, double& seekTarget) {
    if (packet && seekTarget < 0)
        adjustSkipping(toMs(packet->pts == AV_NOPTS_VALUE ? packet->dts : packet->pts,
                            m_format->streams[m_videoStream]->time_base),
                       packet->flags & AV_PKT_FLAG_KEY);
    const int sent = avcodec_send_packet(m_video.get(), packet);
    if (sent < 0 && sent != AVERROR_EOF)
        LOG_DEBUG(kLogger, "Damaged video packet skipped: {}", ffmpegError(sent));
    for (;;) {
        FramePtr frame(av_frame_alloc());
        const int ret = avcodec_receive_frame(m_video.get(), frame.get());
        if (ret < 0)
            return true;
        if (!deliverFrame(std::move(frame), serial, seekTarget))
            return false;
    }
}

bool MediaPipeline::deliverFrame(FramePtr frame, int serial, double& seekTarget) {
    const AVRational timeBase = m_format->streams[m_videoStream]->time_base;
    VideoFrame out;
    const int64_t pts = frame->best_effort_timestamp != AV_NOPTS_VALUE ? frame->best_effort_timestamp : frame->pts;
    out.ptsMs = pts == AV_NOPTS_VALUE ? 0 : toMs(pts, timeBase);
    out.durationMs = frame->pkt_duration > 0 ? static_cast<double>(frame->pkt_duration) * av_q2d(timeBase) * 1000.0
                                             : m_frameDurationMs;
    out.serial = serial;
    if (seekTarget >= 0) {
        // Exact seek: everything between the key frame and the target is decoded but not shown.
        if (out.endMs() <= seekTarget + 0.001) {
            out.frame = shareFrame(std::move(frame));
            m_lastPassed = std::move(out);
            return true;
        }
        m_lastPassed = {};
        out.seekResult = true;
        seekTarget = -1;
    } else if (m_discard != AVDISCARD_NONKEY && m_clock.isRunning() &&
               out.endMs() < m_clock.valueMs() - kDecoderLateMs) {
        // Late pictures are thrown away here, except the key frames of fast forward: they are all it has.
        ++m_lateDropped;
        return true;
    }
    std::shared_ptr<const PictureTarget> target;
    {
        std::lock_guard<std::mutex> lock(m_targetMutex);
        target = m_target;
    }
    if (target) {
        // Converted here rather than when painted, so that the GUI thread only draws.
        const QSize size = target->pictureSizeFor(displaySize(frame.get()));
        if (!size.isEmpty()) {
            out.picture = QImage(size, QImage::Format_RGB32);
            if (!m_converter.convertInto(frame.get(), out.picture))
                out.picture = QImage();
        }
    }
    out.frame = shareFrame(std::move(frame));
    const bool answersSeek = out.seekResult;
    if (!m_frames.push(std::move(out), [this, serial] { return m_stop.load() || m_serial.load() != serial; }))
        return false;
    if (answersSeek && m_seekAnswered)
        m_seekAnswered();
    return true;
}

// ffplay's idea: when decoding falls behind the clock (high speed), decode less rather than fall further.
// Leaving key-frames-only waits for a key frame that is not late yet, so that no picture refers to one that
// was skipped and the pictures after it have a chance; nothing refers to non-reference pictures, so that
// level can end at once.
void MediaPipeline::adjustSkipping(double packetMs, bool keyPacket) {
    if (!m_clock.isRunning())
        return;
    const double lag = m_clock.valueMs() - packetMs;
    int wanted = AVDISCARD_DEFAULT;
    if (lag > kSkipNonKeyMs)
        wanted = AVDISCARD_NONKEY;
    else if (lag > kSkipNonRefMs)
        wanted = AVDISCARD_NONREF;
    const bool mayLeaveNonKey = keyPacket && lag <= 0;
    if (wanted > m_discard || (wanted < m_discard && (m_discard != AVDISCARD_NONKEY || mayLeaveNonKey))) {
        m_discard = wanted;
        m_video->skip_frame = static_cast<AVDiscard>(wanted);
    }
}

} // namespace av
