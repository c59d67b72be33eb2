// Random access to the bytes of a file or of a buffer.
#include "core/ByteSource.h"

#include <algorithm>

FileByteSource::FileByteSource(const QString& path) : m_file(path) {
    // Unbuffered: the readers seek to small pieces far apart, and a buffer would read ahead of each for nothing.
    if (m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        m_size = m_file.size();
}

QByteArray FileByteSource::read(qint64 offset, qint64 length) const {
    if (!m_file.isOpen() || offset < 0 || length <= 0 || offset >= m_size || !m_file.seek(offset))
        return {};
    return m_file.read(std::min(length, m_size - offset));
}

QByteArray MemoryByteSource::read(qint64 offset, qint64 length) const {
    if (offset < 0 || length <= 0 || offset >= m_bytes.size())
        return {};
    return m_bytes.mid(static_cast<int>(offset), static_cast<int>(std::min<qint64>(length, m_bytes.size() - offset)));
}

void CachingByteSource::cache(qint64 offset, qint64 length) {
    QByteArray bytes = m_source.read(offset, length);
    if (!bytes.isEmpty())
        m_pieces.push_back({offset, std::move(bytes)});
}

QByteArray CachingByteSource::read(qint64 offset, qint64 length) const {
    for (const Piece& piece : m_pieces) {
        const qint64 end = piece.offset + piece.bytes.size();
        if (offset >= piece.offset && offset < end && (offset + length <= end || end == size()))
            return piece.bytes.mid(static_cast<int>(offset - piece.offset),
                                   static_cast<int>(std::min(length, end - offset)));
    }
    return m_source.read(offset, length);
}
