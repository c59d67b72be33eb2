// The input side of the transcoder: the decoders of one camera file's first video and first audio stream.
#pragma once

#include <QString>

#include <memory>

struct AVCodecContext;
struct AVFormatContext;

namespace encoding {

// The demuxer belongs to the caller; the decoders are freed with this.
struct InputFile {
    AVFormatContext* format = nullptr;
    AVCodecContext* video = nullptr;
    int videoIndex = -1;
    AVCodecContext* audio = nullptr;
    int audioIndex = -1;

    ~InputFile();
};

// Reads the stream information of an opened file and opens its decoders; throws with FFmpeg's reason.
std::unique_ptr<InputFile> openDecoders(AVFormatContext* format, const QString& path);

} // namespace encoding
