// The installer as it arrives: a temporary file written and hashed chunk by chunk, removed again unless kept.
#pragma once

#include <QCryptographicHash>
#include <QString>
#include <QTemporaryFile>
#include <QUrl>

#include <memory>

class DownloadFile {
public:
    // Names the file in the system temporary folder after the URL's file: "Reelvue-2.0.0-XXXXXX.sh".
    explicit DownloadFile(const QUrl& url);
    ~DownloadFile(); // removes the file unless keep() was called
    DownloadFile(const DownloadFile&) = delete;
    DownloadFile& operator=(const DownloadFile&) = delete;

    bool open();
    QString fileName() const; // the name pattern until open() succeeded

    // Writes the chunk and adds it to the hash; false when the write failed.
    bool append(const QByteArray& chunk);
    bool writeFailed() const { return m_writeFailed; }
    QByteArray sha256Hex() const { return m_sha256.result().toHex(); }

    // Closes the file and makes it executable for the user alone. Call it only once the checksum is checked.
    bool finishAsProgram();
    void keep() { m_keep = true; }

private:
    std::unique_ptr<QTemporaryFile> m_file;
    QString m_path;
    QCryptographicHash m_sha256{QCryptographicHash::Sha256};
    bool m_writeFailed = false;
    bool m_keep = false;
};
