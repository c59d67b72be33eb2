// The boxes (atoms) of an MP4 or MOV file, read from their headers alone.
#pragma once

#include "core/ByteSource.h"

#include <QByteArray>
#include <QString>

#include <vector>

struct Mp4Box {
    QByteArray type;   // four characters: "ftyp", "mdat", "moov", ...
    qint64 offset = 0; // of its header in the file
    qint64 size = 0;   // header included; as far as its parent (or the file) goes for a box that runs past it
    int headerSize = 8; // 16 with a 64-bit size
    bool cutShort = false; // its header promises more bytes than its parent (or the file) has

    qint64 payloadOffset() const { return offset + headerSize; }
    qint64 payloadSize() const { return size - headerSize; }
    qint64 end() const { return offset + size; }
};

// The boxes one after another from the start of the file; stops at the first header that does not fit (a file
// cut off there) or cannot be read. Empty for a file that cannot be opened.
//
//   hasIndexLost(topLevelBoxes(path))  // true for a recording whose camera lost power while writing it
std::vector<Mp4Box> topLevelBoxes(const QString& path);
std::vector<Mp4Box> topLevelBoxes(const ByteSource& source);
// The boxes inside a container box (moov, trak, udta, ...), read the same way within its payload.
std::vector<Mp4Box> childBoxes(const ByteSource& source, const Mp4Box& parent);
// The first box of a type, or nullptr.
const Mp4Box* findBox(const std::vector<Mp4Box>& boxes, const char* type);

// A file with media data but no index: the recorder writes the index ("moov") last, when it closes the file.
bool hasIndexLost(const std::vector<Mp4Box>& boxes);
