// The audio converter of the transcoder: sample format and channel layout, through a FIFO.
#include "core/encoding/AudioConverter.h"

#include "core/encoding/CoderOutput.h"
#include "core/encoding/CoderParts.h"
#include "core/encoding/CutItems.h"
#include "logging/Logging.h"

extern "C" {
#include <libavutil/audio_fifo.h>
#include <libswresample/swresample.h>
}

#include <algorithm>
#include <vector>

namespace encoding {

AudioConverter::~AudioConverter() { swr_free(&resampler); }

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
        fail(fmt::format("swr_init: {}", ffmpegErrorText(initialized)));
    return converter;
}

namespace {

// Samples allocated in the encoder's format; freed when it goes.
class SampleBuffer {
public:
    SampleBuffer(const AVCodecContext& encoder, int samples)
        : m_planes(static_cast<std::size_t>(std::max(encoder.ch_layout.nb_channels, 1)), nullptr) {
        const int result = av_samples_alloc(m_planes.data(), nullptr, encoder.ch_layout.nb_channels, samples,
                                            encoder.sample_fmt, 0);
        if (result < 0)
            fail(fmt::format("av_samples_alloc: {}", ffmpegErrorText(result)));
    }
    ~SampleBuffer() { av_freep(&m_planes[0]); }
    SampleBuffer(const SampleBuffer&) = delete;
    SampleBuffer& operator=(const SampleBuffer&) = delete;

    uint8_t** planes() { return m_planes.data(); }
    void** data() { return reinterpret_cast<void**>(m_planes.data()); }

private:
    std::vector<uint8_t*> m_planes;
};

// One second of silence at a time: a long file without sound never fills the queue with all of it.
constexpr int kSilenceChunkSeconds = 1;

void queueSilence(OutputFile& output, std::int64_t samples, std::int64_t endPts) {
    const AVCodecContext& encoder = *output.audio;
    const int chunk = static_cast<int>(std::min<std::int64_t>(samples, encoder.sample_rate * kSilenceChunkSeconds));
    SampleBuffer silence(encoder, chunk);
    av_samples_set_silence(silence.planes(), 0, chunk, encoder.ch_layout.nb_channels, encoder.sample_fmt);
    while (samples > 0) {
        const int now = static_cast<int>(std::min<std::int64_t>(samples, chunk));
        if (av_audio_fifo_write(output.fifo, silence.data(), now) < now)
            fail("av_audio_fifo_write failed");
        samples -= now;
        encodeQueuedAudio(output, false, endPts);
    }
}

// Keeps the first `keep` queued samples and drops the rest.
void trimQueue(OutputFile& output, int keep) {
    if (keep <= 0) {
        av_audio_fifo_reset(output.fifo);
        return;
    }
    SampleBuffer kept(*output.audio, keep);
    if (av_audio_fifo_read(output.fifo, kept.data(), keep) < keep)
        fail("av_audio_fifo_read failed");
    av_audio_fifo_reset(output.fifo);
    if (av_audio_fifo_write(output.fifo, kept.data(), keep) < keep)
        fail("av_audio_fifo_write failed");
}

} // namespace

void queueAudio(OutputFile& output, AudioConverter& converter, const AVFrame& frame) {
    SampleBuffer converted(*output.audio, frame.nb_samples);
    const int count = swr_convert(converter.resampler, converted.planes(), frame.nb_samples,
                                  const_cast<const uint8_t**>(frame.extended_data), frame.nb_samples);
    if (count < 0)
        fail(fmt::format("swr_convert: {}", ffmpegErrorText(count)));
    if (av_audio_fifo_realloc(output.fifo, av_audio_fifo_size(output.fifo) + count) < 0)
        fail("av_audio_fifo_realloc failed");
    if (av_audio_fifo_write(output.fifo, converted.data(), count) < count)
        fail("av_audio_fifo_write failed");
}

void endQueuedAudioAt(OutputFile& output, std::int64_t pts) {
    const int queued = av_audio_fifo_size(output.fifo);
    const std::int64_t queuedEnd = output.nextAudioPts + queued;
    if (queuedEnd < pts) {
        LOG_TRACE(kCoderLogger, "Sound ends {} samples before the picture: silence added", pts - queuedEnd);
        queueSilence(output, pts - queuedEnd, pts);
    } else if (queuedEnd > pts) {
        const std::int64_t keep = std::max<std::int64_t>(0, pts - output.nextAudioPts);
        if (keep < queued) {
            LOG_TRACE(kCoderLogger, "Sound runs {} samples past the picture: dropped", queued - keep);
            trimQueue(output, static_cast<int>(keep));
        }
    }
    encodeQueuedAudio(output, false, pts);
}

} // namespace encoding
