// Where an export may write and how its file gets there whole.
#include "core/ExportTarget.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

namespace {

// Enough tries to step over leftovers of earlier runs; a clash of six random letters is rare.
constexpr int kNameAttempts = 100;

QByteArray native(const QString& path) { return QFile::encodeName(path); }

} // namespace

namespace exporttarget {
namespace {

bool statOf(const QString& path, struct stat* result) { return ::stat(native(path).constData(), result) == 0; }

bool sameNode(const struct stat& a, const struct stat& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

bool sameFile(const QString& a, const QString& b) {
    if (QDir::cleanPath(QFileInfo(a).absoluteFilePath()) == QDir::cleanPath(QFileInfo(b).absoluteFilePath()))
        return true;
    struct stat first {};
    struct stat second {};
    return statOf(a, &first) && statOf(b, &second) && sameNode(first, second);
}

// The nearest folder of `path` (itself included) that exists, as the system resolves it.
QString nearestExistingFolder(const QString& path) {
    QString folder = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    while (!QFileInfo(folder).isDir() && folder != QDir::rootPath())
        folder = QFileInfo(folder).path();
    const QString canonical = QFileInfo(folder).canonicalFilePath();
    return canonical.isEmpty() ? folder : canonical;
}

// True when `folder` is `root` or lies below it, by name or by the nodes on its way up.
bool isInside(const QString& folder, const QString& root) {
    const QString canonicalRoot = QFileInfo(root).canonicalFilePath();
    struct stat rootNode {};
    if (canonicalRoot.isEmpty() || !statOf(canonicalRoot, &rootNode))
        return false;
    QString current = nearestExistingFolder(folder);
    if (current == canonicalRoot || current.startsWith(canonicalRoot + QLatin1Char('/')))
        return true;
    for (;;) {
        struct stat node {};
        if (statOf(current, &node) && sameNode(node, rootNode))
            return true;
        if (current == QDir::rootPath() || current.isEmpty())
            return false;
        current = QFileInfo(current).path();
    }
}

Refusal insideCard(const QString& what, const Permissions& permissions) {
    return {Refusal::InsideCard, QStringLiteral("%1 lies inside %2, the card being read; nothing is written there")
                                     .arg(what, permissions.protectedFolder)};
}

} // namespace

Refusal refusal(const QString& target, const QStringList& inputs, const Permissions& permissions) {
    if (target.isEmpty())
        return {Refusal::NotAFile, QStringLiteral("No output file was given")};
    for (const QString& input : inputs)
        if (sameFile(target, input))
            return {Refusal::IsInput, QStringLiteral("%1 is %2, one of the recordings being read").arg(target, input)};
    const QFileInfo file(target);
    if (!permissions.protectedFolder.isEmpty() && isInside(file.absolutePath(), permissions.protectedFolder))
        return insideCard(target, permissions);
    if (file.isDir())
        return {Refusal::NotAFile, QStringLiteral("%1 is a folder").arg(target)};
    struct stat node {};
    if (!permissions.overwrite && ::lstat(native(target).constData(), &node) == 0)
        return {Refusal::Exists, QStringLiteral("%1 already exists").arg(target)};
    return {};
}

Refusal folderRefusal(const QString& folder, const Permissions& permissions) {
    if (!permissions.protectedFolder.isEmpty() && isInside(folder, permissions.protectedFolder))
        return insideCard(folder, permissions);
    return {};
}

QStringList inputFiles(const Playlist::RawItems& items) {
    QStringList files;
    for (const Playlist::RawItemPtr& item : items) {
        if (!item)
            continue;
        if (!item->mainVideo.filePath().isEmpty())
            files << item->mainVideo.absoluteFilePath();
        if (item->rearVideo)
            files << item->rearVideo->absoluteFilePath();
        if (item->track && !item->hasEmbeddedTrack())
            files << item->track->file.absoluteFilePath();
    }
    return files;
}

std::string systemErrorText(int error) { return std::strerror(error); }

} // namespace exporttarget

PartialFile::PartialFile(QString target) : m_target(std::move(target)) {}

PartialFile::~PartialFile() { discard(); }

void PartialFile::create() {
    const QFileInfo target(m_target);
    const QDir folder = target.absoluteDir();
    static const char kLetters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    int error = EEXIST;
    for (int attempt = 0; attempt < kNameAttempts && error == EEXIST; ++attempt) {
        QString tag;
        for (int i = 0; i < 6; ++i)
            tag += QLatin1Char(kLetters[QRandomGenerator::global()->bounded(int(sizeof kLetters - 1))]);
        const QString candidate = folder.filePath(QStringLiteral(".%1.%2.part").arg(target.fileName(), tag));
        const int descriptor = ::open(native(candidate).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor >= 0) {
            m_path = candidate;
            m_descriptor = descriptor;
            return;
        }
        error = errno;
    }
    throw exporttarget::TargetError(fmt::format("Can't create a file in '{}': {}", folder.path().toStdString(),
                                                exporttarget::systemErrorText(error)));
}

void PartialFile::closeDescriptor() {
    if (m_descriptor < 0)
        return;
    const int closed = ::close(m_descriptor);
    const int error = errno;
    m_descriptor = -1;
    if (closed != 0)
        throw exporttarget::TargetError(
            fmt::format("Writing '{}' failed: {}", m_target.toStdString(), exporttarget::systemErrorText(error)));
}

void PartialFile::commit(bool overwrite) {
    closeDescriptor();
    const QByteArray from = native(m_path);
    const QByteArray to = native(m_target);
    bool placed = false;
    int error = 0;
    if (overwrite) {
        placed = std::rename(from.constData(), to.constData()) == 0;
        error = errno;
    } else {
        // Renaming without replacing is one step on most file systems; a link does the same where it is not.
        placed = ::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0;
        error = errno;
        if (!placed && (error == EINVAL || error == ENOSYS)) {
            placed = ::link(from.constData(), to.constData()) == 0;
            error = errno;
            if (placed) {
                ::unlink(from.constData());
            } else if (error == EPERM || error == EOPNOTSUPP) { // FAT cards have no links
                if (QFileInfo::exists(m_target)) {
                    error = EEXIST;
                } else {
                    placed = std::rename(from.constData(), to.constData()) == 0;
                    error = errno;
                }
            }
        }
    }
    if (!placed)
        throw exporttarget::TargetError(
            fmt::format("Can't put the file in place as '{}': {}", m_target.toStdString(), exporttarget::systemErrorText(error)));
    m_committed = true;
}

void PartialFile::discard() {
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
        m_descriptor = -1;
    }
    if (!m_committed && !m_path.isEmpty())
        ::unlink(native(m_path).constData());
    m_path.clear();
}
