// The output file of the transcoder: the muxer and its encoders, made like the first camera file of the cut.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/audio_fifo.h>
}

#include <QString>

#include <cstdint>
#include <memory>

struct AVFormatContext;
struct AVStream;

namespace encoding {

struct InputFile;

// What the output is made of, read from the first camera file of the cut.
struct OutputStreamParams {
    AVCodecID videoCodecId = AV_CODEC_ID_NONE;
    int width = 0;
    int height = 0;
    AVRational sampleAspectRatio{0, 1};
    AVPixelFormat pixelFormat = AV_PIX_FMT_NONE;
    AVRational timeBase{1, 25};
    AVRational frameRate{25, 1};
    std::int64_t bitRate = 0;
    AVCodecID audioCodecId = AV_CODEC_ID_NONE;
    int audioSampleRate = 0;
    int audioChannels = 0;
    bool withAudio = false;
};

OutputStreamParams readStreamParams(const InputFile& input, bool onlyVideo);

// The muxer and the encoders, alive for the whole run.
struct OutputFile {
    AVFormatContext* format = nullptr;
    AVCodecContext* video = nullptr;
    AVStream* videoStream = nullptr;
    AVCodecContext* audio = nullptr;
    AVStream* audioStream = nullptr;
    bool withAudio = false;
    AVAudioFifo* fifo = nullptr;   // converted samples waiting to fill an encoder frame
    std::int64_t nextAudioPts = 0; // in the audio encoder's time base

    ~OutputFile();
};

// The container follows `targetPath`'s extension; the bytes go to `writePath`. Fails with "There is no
// video context in output" when the first file has no picture.
std::unique_ptr<OutputFile> createOutputFile(const OutputStreamParams& params, const QString& targetPath,
                                             const QString& writePath, int rotation);

// Sends one frame (nullptr: drain) to an encoder and writes every packet it gives back.
void encodeAndWrite(OutputFile& output, AVCodecContext* encoder, AVStream* stream, const AVFrame* frame);
void encodeVideo(OutputFile& output, const AVFrame* frame);
// Encodes whole encoder frames from the audio queue, none reaching past `endPts` (the picture written so far,
// so that sound running longer than its file's picture can still be dropped); at the end of the cut also the
// short rest.
void encodeQueuedAudio(OutputFile& output, bool endOfInput, std::int64_t endPts = INT64_MAX);
// Drains the encoders and writes the trailer (only the trailer when cancelled).
void finishOutputFile(OutputFile& output, bool canceled);

} // namespace encoding
