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

void queueAudio(OutputFile& output, AudioConverter& converter, const AVFrame& frame) {
    const int channels = output.audio->ch_layout.nb_channels;
    std::vector<uint8_t*> planes(static_cast<std::size_t>(std::max(channels, 1)), nullptr);
    int result = av_samples_alloc(planes.data(), nullptr, channels, frame.nb_samples, output.audio->sample_fmt, 0);
    if (result < 0)
        fail(fmt::format("av_samples_alloc: {}", ffmpegErrorText(result)));
    struct Release {
        uint8_t** data;
        ~Release() { av_freep(&data[0]); }
    } release{planes.data()};
    const int converted = swr_convert(converter.resampler, planes.data(), frame.nb_samples,
                                      const_cast<const uint8_t**>(frame.extended_data), frame.nb_samples);
    if (converted < 0)
        fail(fmt::format("swr_convert: {}", ffmpegErrorText(converted)));
    if (av_audio_fifo_realloc(output.fifo, av_audio_fifo_size(output.fifo) + converted) < 0)
        fail("av_audio_fifo_realloc failed");
    if (av_audio_fifo_write(output.fifo, reinterpret_cast<void**>(planes.data()), converted) < converted)
        fail("av_audio_fifo_write failed");
}

} // namespace encoding
