// Random access to the bytes of a file or of a buffer.
#include "core/ByteSource.h"

#include <algorithm>

FileByteSource::FileByteSource(const QString& path) : m_file(path) {
    if (m_file.open(QIODevice::ReadOnly))
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
