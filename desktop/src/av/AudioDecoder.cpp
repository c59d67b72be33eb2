// Audio decoding, tempo and pacing against the clock.
#include "av/AudioDecoder.h"

#include "av/AudioSink.h"
#include "logging/Logging.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

#include <cmath>
#include <string>

namespace av {
namespace {
constexpr const char* kLogger = "av.AudioDecoder";
// Sound later than this behind the clock is dropped: it would only add to the lag.
constexpr double kLateMs = 100;
// Sound is queued at most this far ahead of the clock; the rest waits, so a seek or pause loses little.
constexpr double kAheadMs = 250;
constexpr double kMaxTempoSpeed = 2.0;

// "atempo=0.5,atempo=0.5" for 0.25: one atempo accepts 0.5..2 without artefacts.
std::string tempoChain(double speed) {
    std::string chain;
    while (speed < 0.5) {
        chain += "atempo=0.5,";
        speed /= 0.5;
    }
    return chain + fmt::format("atempo={}", speed);
}
} // namespace

AudioDecoder::AudioDecoder(CodecContextPtr codec, AVRational timeBase, double originMs, const Clock& clock,
                           AudioSink* sink)
    : m_codec(std::move(codec)), m_timeBase(timeBase), m_originMs(originMs), m_clock(clock), m_sink(sink) {}

AudioDecoder::~AudioDecoder() {
    stop();
    freeFilters();
}

void AudioDecoder::start() {
    m_thread = std::thread([this] { run(); });
}

void AudioDecoder::stop() {
    m_stop = true;
    m_packets.wake();
    if (m_thread.joinable())
        m_thread.join();
}

void AudioDecoder::freeFilters() {
    avfilter_graph_free(&m_graph);
    m_source = m_output = nullptr;
    m_graphSpeed = 0;
}

bool AudioDecoder::buildFilters(double speed) {
    freeFilters();
    m_graph = avfilter_graph_alloc();
    char layout[64] = {};
    av_channel_layout_describe(&m_codec->ch_layout, layout, sizeof layout);
    const std::string sourceArgs =
        fmt::format("time_base={}/{}:sample_rate={}:sample_fmt={}:channel_layout={}", m_timeBase.num,
                    m_timeBase.den, m_codec->sample_rate, av_get_sample_fmt_name(m_codec->sample_fmt), layout);
    const std::string chain =
        tempoChain(speed) + ",aresample=48000,aformat=sample_fmts=s16:channel_layouts=stereo:sample_rates=48000";
    AVFilterInOut* outputs = avfilter_inout_alloc();
    AVFilterInOut* inputs = avfilter_inout_alloc();
    int ret = avfilter_graph_create_filter(&m_source, avfilter_get_by_name("abuffer"), "in", sourceArgs.c_str(),
                                           nullptr, m_graph);
    if (ret >= 0)
        ret = avfilter_graph_create_filter(&m_output, avfilter_get_by_name("abuffersink"), "out", nullptr, nullptr,
                                           m_graph);
    if (ret >= 0) {
        outputs->name = av_strdup("in");
        outputs->filter_ctx = m_source;
        inputs->name = av_strdup("out");
        inputs->filter_ctx = m_output;
        ret = avfilter_graph_parse_ptr(m_graph, chain.c_str(), &inputs, &outputs, nullptr);
    }
    if (ret >= 0)
        ret = avfilter_graph_config(m_graph, nullptr);
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    if (ret < 0) {
        LOG_ERROR(kLogger, "Audio filter '{}' failed: {}", chain, ffmpegError(ret));
        freeFilters();
        return false;
    }
    m_graphSpeed = speed;
    return true;
}

void AudioDecoder::run() {
    while (!m_stop) {
        // While paused nothing is decoded, so the sound resumes where it stopped.
        if (!m_clock.isRunning()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            continue;
        }
        auto entry = m_packets.pop(std::chrono::milliseconds(20));
        if (!entry)
            continue;
        if (entry->kind == PacketEntry::Kind::Flush) {
            avcodec_flush_buffers(m_codec.get());
            freeFilters();
            m_serial = entry->serial;
            if (m_sink)
                m_sink->clear();
            continue;
        }
        if (entry->serial != m_serial || entry->kind != PacketEntry::Kind::Packet)
            continue;
        decodePacket(entry->packet.get());
    }
}

void AudioDecoder::decodePacket(const AVPacket* packet) {
    if (avcodec_send_packet(m_codec.get(), packet) < 0)
        return;  // a damaged audio packet costs a moment of sound, nothing more
    FramePtr frame(av_frame_alloc());
    while (!m_stop && avcodec_receive_frame(m_codec.get(), frame.get()) >= 0) {
        filterAndQueue(frame.get());
        av_frame_unref(frame.get());
    }
}

void AudioDecoder::filterAndQueue(AVFrame* frame) {
    const double speed = m_clock.speed();
    if (!m_sink || speed > kMaxTempoSpeed)
        return;  // silent above 2x, or without a device
    const double ptsMs =
        frame->best_effort_timestamp == AV_NOPTS_VALUE
            ? m_clock.valueMs()
            : static_cast<double>(frame->best_effort_timestamp) * av_q2d(m_timeBase) * 1000.0 - m_originMs;
    const double durationMs = 1000.0 * frame->nb_samples / std::max(1, frame->sample_rate);
    if (!m_clock.isRunning() || ptsMs + durationMs < m_clock.valueMs() - kLateMs)
        return;
    if (m_graphSpeed != speed && !buildFilters(speed))
        return;
    frame->pts = frame->best_effort_timestamp;  // the filters only need a rising time; the clock paces output
    if (av_buffersrc_add_frame_flags(m_source, frame, AV_BUFFERSRC_FLAG_KEEP_REF) < 0)
        return;
    FramePtr out(av_frame_alloc());
    while (!m_stop && av_buffersink_get_frame(m_output, out.get()) >= 0) {
        const qint64 bytes = static_cast<qint64>(out->nb_samples) * 4;
        // Wait while this sound lies ahead of the clock or the ring is full; give up on pause or stop.
        while (!m_stop && m_clock.isRunning() &&
               (ptsMs > m_clock.valueMs() + kAheadMs || m_sink->freeBytes() < bytes))
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        if (!m_stop && m_clock.isRunning())
            m_sink->write(reinterpret_cast<const char*>(out->data[0]), bytes);
        av_frame_unref(out.get());
    }
}

} // namespace av
