// The top-level boxes (atoms) of an MP4 or MOV file, read from their headers alone.
#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

struct Mp4Box {
    QByteArray type;   // four characters: "ftyp", "mdat", "moov", ...
    qint64 offset = 0; // of its header in the file
    qint64 size = 0;   // header included; as far as the file goes for a box that runs to its end
    int headerSize = 8; // 16 with a 64-bit size
    bool cutShort = false; // its header promises more bytes than the file has
};

// The boxes one after another from the start of the file; stops at the first header that does not fit (a file
// cut off there) or cannot be read. Empty for a file that cannot be opened.
//
//   hasIndexLost(topLevelBoxes(path))  // true for a recording whose camera lost power while writing it
std::vector<Mp4Box> topLevelBoxes(const QString& path);

// A file with media data but no index: the recorder writes the index ("moov") last, when it closes the file.
bool hasIndexLost(const std::vector<Mp4Box>& boxes);
