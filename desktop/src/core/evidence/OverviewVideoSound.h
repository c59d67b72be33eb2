// The overview's sound track: decoded sound placed at its time, with silence where the recordings have none.
#pragma once

#include "core/evidence/OverviewVideoOutput.h"

extern "C" {
#include <libavutil/audio_fifo.h>
#include <libswresample/swresample.h>
}

#include <cstdint>

namespace evidence::detail {

// Converts any decoded sound to the AAC encoder's format and rate, and feeds the encoder whole frames.
class OverviewSound {
public:
    // The track lasts endMs, whatever sound it is given.
    OverviewSound(OverviewOutput& output, double endMs);
    ~OverviewSound();
    OverviewSound(const OverviewSound&) = delete;
    OverviewSound& operator=(const OverviewSound&) = delete;

    // A decoded frame whose first sample belongs at outputMs. A frame over sound already placed (a file
    // running on past the next one's start) or past the end is left out; a gap before it becomes silence.
    void add(const AVFrame& frame, double outputMs);
    // Pads with silence up to the end and writes everything out.
    void finish();

private:
    std::int64_t samplesAt(double ms) const;
    void convert(const AVFrame& frame);
    void addSilence(std::int64_t samples);
    void encodeQueued(bool all);
    FramePtr samplesFrame(int samples) const;

    OverviewOutput& m_output;
    AVCodecContext& m_encoder;
    std::int64_t m_end; // samples of the whole track
    AVAudioFifo* m_fifo = nullptr;
    SwrContext* m_resampler = nullptr;
    AVChannelLayout m_inputLayout{}; // of the sound the resampler was made for
    int m_inputRate = 0;
    int m_inputFormat = -1;
    std::int64_t m_written = 0; // samples handed to the encoder; the pts of the next frame
};

} // namespace evidence::detail
