// The overview's sound track: decoded sound placed at its time, with silence where the recordings have none.
#include "core/evidence/OverviewVideoSound.h"

#include <algorithm>
#include <cmath>

namespace evidence::detail {

OverviewSound::OverviewSound(OverviewOutput& output, double endMs)
    : m_output(output), m_encoder(*output.audio), m_end(samplesAt(endMs)) {
    m_fifo = av_audio_fifo_alloc(m_encoder.sample_fmt, m_encoder.ch_layout.nb_channels, m_encoder.frame_size);
    if (!m_fifo)
        fail("av_audio_fifo_alloc failed");
}

OverviewSound::~OverviewSound() {
    swr_free(&m_resampler);
    av_channel_layout_uninit(&m_inputLayout);
    av_audio_fifo_free(m_fifo);
}

void OverviewSound::add(const AVFrame& frame, double outputMs) {
    const std::int64_t at = samplesAt(outputMs);
    const std::int64_t length = av_rescale(frame.nb_samples, m_encoder.sample_rate, std::max(frame.sample_rate, 1));
    const std::int64_t queuedEnd = m_written + av_audio_fifo_size(m_fifo);
    if (at >= m_end || at + length <= queuedEnd)
        return; // past the end, or over sound already placed
    if (at > queuedEnd + m_encoder.frame_size)
        addSilence(at - queuedEnd);
    convert(frame);
    encodeQueued(false);
}

void OverviewSound::finish() {
    const std::int64_t queuedEnd = m_written + av_audio_fifo_size(m_fifo);
    if (m_end > queuedEnd)
        addSilence(m_end - queuedEnd);
    encodeQueued(true);
    m_output.encode(&m_encoder, m_output.audioStream, nullptr);
}

std::int64_t OverviewSound::samplesAt(double ms) const {
    return static_cast<std::int64_t>(std::llround(ms * m_encoder.sample_rate / 1000.0));
}

void OverviewSound::convert(const AVFrame& frame) {
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

void OverviewSound::addSilence(std::int64_t samples) {
    while (samples > 0) {
        const int count = static_cast<int>(std::min<std::int64_t>(samples, m_encoder.frame_size));
        FramePtr silence = samplesFrame(count);
        av_samples_set_silence(silence->data, 0, count, m_encoder.ch_layout.nb_channels, m_encoder.sample_fmt);
        check(av_audio_fifo_write(m_fifo, reinterpret_cast<void**>(silence->data), count), "av_audio_fifo_write");
        encodeQueued(false);
        samples -= count;
    }
}

void OverviewSound::encodeQueued(bool all) {
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

FramePtr OverviewSound::samplesFrame(int samples) const {
    FramePtr frame = newFrame();
    frame->nb_samples = std::max(samples, 1);
    frame->format = m_encoder.sample_fmt;
    frame->sample_rate = m_encoder.sample_rate;
    check(av_channel_layout_copy(&frame->ch_layout, &m_encoder.ch_layout), "av_channel_layout_copy");
    check(av_frame_get_buffer(frame.get(), 0), "av_frame_get_buffer");
    return frame;
}

} // namespace evidence::detail
