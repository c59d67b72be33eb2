// The overview's file with its H.264 and AAC encoders, in the container its name asks for.
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

    // Opens writePath and writes its header: yuv420p pictures of width x height at frameRate, sound at
    // sampleRate with `channels` channels (none when 0). The container follows targetPath's extension
    // (mp4, mov, mkv, avi...), so a file written under a temporary name keeps the kind its name promises.
    OverviewOutput(const QString& targetPath, const QString& writePath, int width, int height, AVRational frameRate,
                   int sampleRate, int channels);
    // Closes the file; without finish() it has no trailer.
    ~OverviewOutput();
    OverviewOutput(const OverviewOutput&) = delete;
    OverviewOutput& operator=(const OverviewOutput&) = delete;

    // Sends a frame (nullptr: flush) and writes every packet the encoder gives back.
    void encode(AVCodecContext* encoder, AVStream* stream, const AVFrame* frame);
    // Flushes the video encoder, writes the trailer and closes the file; the sound is flushed by its track.
    void finish();

private:
    void open(const QString& targetPath, const QString& writePath, int width, int height, AVRational frameRate,
              int sampleRate, int channels);
    void openSound(int sampleRate, int channels, bool globalHeader);
    void close();
};

} // namespace evidence::detail
