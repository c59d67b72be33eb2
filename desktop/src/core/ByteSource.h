// Random access to the bytes of a file or of a buffer: the seam the box readers read through.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <vector>

// Bytes at any offset, read on demand. Reading past the end gives fewer bytes (or none), never an error.
// Not thread-safe: one reader at a time.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    virtual qint64 size() const = 0;
    virtual QByteArray read(qint64 offset, qint64 length) const = 0;
    // The name a log line gives the bytes: the file path, or a label for bytes in memory.
    virtual QString name() const = 0;
};

// A file opened read-only; a file that cannot be opened has no bytes.
class FileByteSource : public ByteSource {
public:
    explicit FileByteSource(const QString& path);
    bool isOpen() const { return m_file.isOpen(); }
    qint64 size() const override { return m_size; }
    QByteArray read(qint64 offset, qint64 length) const override;
    QString name() const override { return m_file.fileName(); }

private:
    mutable QFile m_file;
    qint64 m_size = 0;
};

class MemoryByteSource : public ByteSource {
public:
    explicit MemoryByteSource(QByteArray bytes, QString name = QStringLiteral("memory"))
        : m_bytes(std::move(bytes)), m_name(std::move(name)) {}
    qint64 size() const override { return m_bytes.size(); }
    QByteArray read(qint64 offset, qint64 length) const override;
    QString name() const override { return m_name; }

private:
    QByteArray m_bytes;
    QString m_name;
};

// Serves reads that fall inside pieces read ahead from memory, and the rest from the source underneath: one
// read of a whole index instead of one per box header. Not thread-safe, like the source it wraps.
class CachingByteSource : public ByteSource {
public:
    explicit CachingByteSource(const ByteSource& source) : m_source(source) {}
    // Reads the piece now; later reads inside it cost no system call.
    void cache(qint64 offset, qint64 length);
    qint64 size() const override { return m_source.size(); }
    QByteArray read(qint64 offset, qint64 length) const override;
    QString name() const override { return m_source.name(); }

private:
    struct Piece {
        qint64 offset;
        QByteArray bytes;
    };
    const ByteSource& m_source;
    std::vector<Piece> m_pieces;
};
