// The overview's MP4 file with its H.264 and AAC encoders.
#pragma once

#include "core/evidence/OverviewVideoFfmpeg.h"

#include <QString>

namespace evidence::detail {

struct OverviewOutput {
    AVFormatContext* format = nullptr;
    CodecPtr video;
    AVStream* videoStream = nullptr;
    CodecPtr audio;
    AVStream* audioStream = nullptr;

    // Opens the file and writes its header: yuv420p pictures of width x height at frameRate, sound at
    // sampleRate with `channels` channels.
    OverviewOutput(const QString& path, int width, int height, AVRational frameRate, int sampleRate, int channels);
    // Closes the file; without finish() it has no trailer.
    ~OverviewOutput();
    OverviewOutput(const OverviewOutput&) = delete;
    OverviewOutput& operator=(const OverviewOutput&) = delete;

    // Sends a frame (nullptr: flush) and writes every packet the encoder gives back.
    void encode(AVCodecContext* encoder, AVStream* stream, const AVFrame* frame);
    // Flushes the video encoder, writes the trailer and closes the file; the sound is flushed by its track.
    void finish();

private:
    void open(const QString& path, int width, int height, AVRational frameRate, int sampleRate, int channels);
    void close();
};

} // namespace evidence::detail
