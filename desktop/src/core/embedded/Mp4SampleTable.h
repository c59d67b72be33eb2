// The samples of the timed tracks of an MP4 or MOV file, read from the index (moov) alone.
#pragma once

#include "core/ByteSource.h"
#include "core/Mp4Boxes.h"

#include <QByteArray>

#include <vector>

struct Mp4Sample {
    qint64 offset = 0;
    qint64 size = 0;
    double seconds = 0.0;  // presentation time from the start of the track
    double duration = 0.0; // seconds
};

struct Mp4Track {
    QByteArray handler; // "vide", "soun", "text", "meta", "sbtl", ...
    QByteArray format;  // the four characters of its first sample entry: "avc1", "tx3g", "gpmd", "camm", ...
    std::vector<Mp4Sample> samples; // only for tracks that are neither video nor sound
};

// The tracks of a moov box in file order. Sample tables are read for data tracks only (video and sound are
// never needed and have the largest tables). A sample that lies beyond the end of the file ends its track's
// list there, with a WARN naming the file and the offset.
std::vector<Mp4Track> mp4Tracks(const ByteSource& source, const Mp4Box& moov);

// The creation time of the movie in moov's mvhd, seconds since 1970 UTC; 0 when absent.
qint64 mp4CreationTime(const ByteSource& source, const Mp4Box& moov);
