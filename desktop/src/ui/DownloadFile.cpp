#include "ui/DownloadFile.h"

#include <QDir>
#include <QFileInfo>

DownloadFile::DownloadFile(const QUrl& url) {
    const QFileInfo urlFile(url.path());
    const QString suffix = urlFile.suffix();
    m_file = std::make_unique<QTemporaryFile>(QDir::temp().filePath(
        urlFile.completeBaseName() + QStringLiteral("-XXXXXX") + (suffix.isEmpty() ? QString() : QLatin1Char('.') + suffix)));
    m_file->setAutoRemove(false);
}

DownloadFile::~DownloadFile() {
    m_file.reset();
    if (!m_keep && !m_path.isEmpty())
        QFile::remove(m_path);
}

bool DownloadFile::open() {
    if (!m_file->open())
        return false;
    m_path = m_file->fileName();
    return true;
}

QString DownloadFile::fileName() const { return m_path.isEmpty() && m_file ? m_file->fileTemplate() : m_path; }

bool DownloadFile::append(const QByteArray& chunk) {
    m_sha256.addData(chunk);
    if (!m_file || m_file->write(chunk) != chunk.size())
        m_writeFailed = true;
    return !m_writeFailed;
}

bool DownloadFile::finishAsProgram() {
    const bool flushed = m_file && m_file->flush();
    // A temporary file keeps its handle open until it is destroyed, and a file open for writing cannot be run.
    m_file.reset();
    return flushed && QFile::setPermissions(m_path, QFileDevice::ReadUser | QFileDevice::WriteUser | QFileDevice::ExeUser);
}
