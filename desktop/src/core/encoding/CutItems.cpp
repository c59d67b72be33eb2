// What the encoders share about a cut: its length, which file of an item to read, FFmpeg error texts.
#include "core/encoding/CutItems.h"

#include "core/ExportTarget.h"

#include <QFile>

extern "C" {
#include <libavformat/avio.h>
#include <libavutil/dict.h>
#include <libavutil/error.h>
}

#include <algorithm>
#include <cerrno>

namespace encoding {

std::int64_t cutLengthMs(const Playlist::RawItems& items, const TimeInterval& interval) {
    std::int64_t total = 0;
    for (const auto& item : items) {
        if (!item)
            continue;
        const QDateTime start = std::max(item->from, interval.from);
        const QDateTime end = std::min(item->to, interval.to);
        if (start < end)
            total += start.msecsTo(end);
    }
    return total;
}

QFileInfo cutInputFile(const Playlist::RawItem& item, int camera) {
    if (camera == 1 && item.rearVideo)
        return *item.rearVideo;
    return item.mainVideo;
}

// The file system's own bytes: a name that is not UTF-8 reaches FFmpeg as it is on the card.
std::string ffmpegPath(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

std::string ffmpegErrorText(int error) {
    char buffer[512] = {};
    av_strerror(error, buffer, sizeof buffer);
    return buffer;
}

int openCreatedOutput(AVIOContext** io, const std::string& path) {
    AVDictionary* options = nullptr;
    av_dict_set(&options, "truncate", "0", 0);
    const int result = avio_open2(io, path.c_str(), AVIO_FLAG_WRITE, nullptr, &options);
    av_dict_free(&options);
    return result;
}

void failWriting(const std::string& text, int error) {
    for (int code : {ENOSPC, EDQUOT, EIO, EROFS, EACCES, EPERM, ENOENT, ENOTDIR, EFBIG, ENODEV, ENXIO})
        if (error == AVERROR(code))
            throw exporttarget::TargetError(text);
    throw std::runtime_error(text);
}

} // namespace encoding
