// Walking the box headers of an MP4 or MOV file.
#include "core/Mp4Boxes.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>

namespace {
// 16 bytes: a header with a 64-bit size; the walk stops after this many boxes, far more than a recording has.
constexpr int kMaxBoxes = 4096;
} // namespace

std::vector<Mp4Box> topLevelBoxes(const QString& path) {
    std::vector<Mp4Box> boxes;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return boxes;
    const qint64 fileSize = file.size();
    qint64 offset = 0;
    while (offset + 8 <= fileSize && static_cast<int>(boxes.size()) < kMaxBoxes) {
        if (!file.seek(offset))
            break;
        const QByteArray header = file.read(16);
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
            size = static_cast<qint64>(qFromBigEndian<quint64>(header.constData() + 8));
            headerSize = 16;
        } else if (size == 0) { // runs to the end of the file
            size = fileSize - offset;
        }
        if (size < headerSize)
            break; // not a box header: the rest cannot be walked
        box.headerSize = static_cast<int>(headerSize);
        box.cutShort = offset + size > fileSize;
        box.size = std::min(size, fileSize - offset);
        boxes.push_back(box);
        offset += size;
    }
    return boxes;
}

bool hasIndexLost(const std::vector<Mp4Box>& boxes) {
    const auto has = [&](const char* type) {
        return std::any_of(boxes.begin(), boxes.end(), [&](const Mp4Box& box) { return box.type == type; });
    };
    return has("mdat") && !has("moov");
}
