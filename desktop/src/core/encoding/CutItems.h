// What the encoders share about a cut: its length, which file of an item to read, FFmpeg error texts.
#pragma once

#include "core/Playlist.h"
#include "core/TimeInterval.h"

#include <QFileInfo>

struct AVIOContext;

#include <cstdint>
#include <string>

namespace encoding {

// Sum over the items of their overlap with the interval, in milliseconds.
std::int64_t cutLengthMs(const Playlist::RawItems& items, const TimeInterval& interval);

// The rear file when the rear camera is chosen and the item has one, otherwise the main file.
QFileInfo cutInputFile(const Playlist::RawItem& item, int camera);

// The path as FFmpeg wants it: UTF-8.
std::string ffmpegPath(const QString& path);

// av_strerror's text for an FFmpeg error code.
std::string ffmpegErrorText(int error);

// avio_open for writing into the file that PartialFile created empty. It is not truncated again: on ext4
// a truncated file is flushed to disk when it is closed, which costs a long cut a third of its time.
int openCreatedOutput(AVIOContext** io, const std::string& path);

// Throws `text` as an exporttarget::TargetError when FFmpeg's `error` is one of the disk or folder written
// to (full, gone, read-only, not allowed), otherwise as a std::runtime_error.
[[noreturn]] void failWriting(const std::string& text, int error);

} // namespace encoding
