// The audio converter of the transcoder: one camera file's sound in the output encoder's sample format and
// channel layout, queued until it fills the encoder's frames.
#pragma once

#include <cstdint>
#include <memory>

struct AVCodecContext;
struct AVFrame;
struct SwrContext;

namespace encoding {

struct OutputFile;

// Changes the sample format and channel layout of one file's audio to the encoder's; never the rate.
struct AudioConverter {
    SwrContext* resampler = nullptr;
    ~AudioConverter();
};

// Fails with "Sample rate is differs" when the rates differ: the converter never changes the rate.
std::unique_ptr<AudioConverter> createAudioConverter(const AVCodecContext& decoder, const AVCodecContext& encoder);

// Converts a decoded audio frame and queues its samples in the output's FIFO.
void queueAudio(OutputFile& output, AudioConverter& converter, const AVFrame& frame);

// Makes the queued sound end at `pts` (the audio encoder's time base), so that it meets the picture there:
// silence fills a shortfall, and sound past `pts` is dropped as far as it is still queued. Whole frames up
// to `pts` are encoded on the way.
void endQueuedAudioAt(OutputFile& output, std::int64_t pts);

} // namespace encoding
