// Walking the box headers of an MP4 or MOV file.
#include "core/Mp4Boxes.h"

#include <QtEndian>

#include <algorithm>

namespace {
// The walk stops after this many boxes in one container, far more than a recording has.
constexpr int kMaxBoxes = 4096;

// The boxes between `begin` and `end`, headers only.
std::vector<Mp4Box> boxesBetween(const ByteSource& source, qint64 begin, qint64 end) {
    std::vector<Mp4Box> boxes;
    end = std::min(end, source.size());
    qint64 offset = begin;
    while (offset + 8 <= end && static_cast<int>(boxes.size()) < kMaxBoxes) {
        const QByteArray header = source.read(offset, 16);
        if (header.size() < 8)
            break;
        Mp4Box box;
        box.offset = offset;
        box.type = header.mid(4, 4);
        qint64 size = qFromBigEndian<quint32>(header.constData());
        qint64 headerSize = 8;
        if (size == 1) { // the real size follows as 64 bits
            if (header.size() < 16)
                break;
            const quint64 wide = qFromBigEndian<quint64>(header.constData() + 8);
            size = wide > quint64(end) ? end - offset + 1 : static_cast<qint64>(wide);
            headerSize = 16;
        } else if (size == 0) { // runs to the end of its parent
            size = end - offset;
        }
        if (size < headerSize)
            break; // not a box header: the rest cannot be walked
        box.headerSize = static_cast<int>(headerSize);
        box.cutShort = size > end - offset;
        box.size = std::min(size, end - offset);
        boxes.push_back(box);
        offset += box.size;
    }
    return boxes;
}
} // namespace

std::vector<Mp4Box> topLevelBoxes(const ByteSource& source) {
    return boxesBetween(source, 0, source.size());
}

std::vector<Mp4Box> topLevelBoxes(const QString& path) {
    const FileByteSource source(path);
    return topLevelBoxes(source);
}

std::vector<Mp4Box> childBoxes(const ByteSource& source, const Mp4Box& parent) {
    return boxesBetween(source, parent.payloadOffset(), parent.end());
}

const Mp4Box* findBox(const std::vector<Mp4Box>& boxes, const char* type) {
    const auto found = std::find_if(boxes.begin(), boxes.end(), [&](const Mp4Box& box) { return box.type == type; });
    return found == boxes.end() ? nullptr : &*found;
}

bool hasIndexLost(const std::vector<Mp4Box>& boxes) {
    const auto has = [&](const char* type) { return findBox(boxes, type) != nullptr; };
    return has("mdat") && !has("moov");
}
