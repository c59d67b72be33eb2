// Copies whole recording files, unchanged and with their modification times, as a background job.
#include "core/FileCopier.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include <vector>

namespace {

// 1 MiB: large enough that a minute of 4K video takes a few hundred calls, small enough for any thread.
constexpr std::size_t kBufferSize = 1 << 20;

using exporttarget::systemErrorText;
using exporttarget::TargetError;

struct Descriptor {
    int fd;
    ~Descriptor() {
        if (fd >= 0)
            ::close(fd);
    }
};

// Copies `source` to a new file at `destination` and gives it the source's modification time; throws
// TargetError for the destination's failures and runtime_error for the source's.
void copyFile(const QString& source, const QString& destination) {
    struct stat existing {};
    if (::lstat(QFile::encodeName(destination).constData(), &existing) == 0)
        throw TargetError(fmt::format("'{}' already exists", destination.toStdString()));
    const Descriptor in{::open(QFile::encodeName(source).constData(), O_RDONLY | O_CLOEXEC)};
    struct stat status {};
    if (in.fd < 0 || ::fstat(in.fd, &status) != 0)
        throw std::runtime_error(fmt::format("Can't read '{}': {}", source.toStdString(), systemErrorText(errno)));
    PartialFile partial(destination);
    partial.create();
    std::vector<char> buffer(kBufferSize);
    for (;;) {
        const ssize_t got = ::read(in.fd, buffer.data(), buffer.size());
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            throw std::runtime_error(fmt::format("Can't read '{}': {}", source.toStdString(), systemErrorText(errno)));
        if (got == 0)
            break;
        for (ssize_t written = 0; written < got;) {
            const ssize_t put = ::write(partial.descriptor(), buffer.data() + written, static_cast<std::size_t>(got - written));
            if (put < 0 && errno == EINTR)
                continue;
            if (put < 0)
                throw TargetError(fmt::format("Can't write '{}': {}", destination.toStdString(), systemErrorText(errno)));
            written += put;
        }
    }
    // The times go on last: every write above moves the modification time.
    const struct timespec times[2] = {status.st_atim, status.st_mtim};
    ::fchmod(partial.descriptor(), status.st_mode & 0777);
    if (::futimens(partial.descriptor(), times) != 0)
        throw TargetError(fmt::format("Can't keep the time of '{}': {}", destination.toStdString(), systemErrorText(errno)));
    partial.commit(false);
}

} // namespace

FileCopier::FileCopier(QObject* parent) : QObject(parent) {
    // The command vector crosses threads in a queued call, which needs it under this exact name.
    qRegisterMetaType<FileCopierCommandVector>("FileCopierCommandVector");
}

void FileCopier::cancel() { m_canceled = true; }

void FileCopier::fail(const QString& reason, bool onTarget) {
    m_failureReason = reason;
    m_failedOnTarget = onTarget;
    emit done(false);
}

void FileCopier::copy(FileCopierCommandVector copyCommands) {
    m_failureReason.clear();
    m_failedOnTarget = false;
    emit progress(0);
    const std::size_t count = copyCommands.size();
    QStringList sources;
    for (const auto& command : copyCommands)
        sources << command.first;
    // An existing destination stops the run at its turn, below; these stop it before anything is copied.
    const exporttarget::Permissions upFront{m_permissions.protectedFolder, true};
    for (const auto& command : copyCommands)
        if (const exporttarget::Refusal refused = exporttarget::refusal(command.second, sources, upFront))
            return fail(refused.text, true);
    for (std::size_t i = 0; i < count; ++i) {
        if (m_canceled) {
            // Only whole files were copied; take them all back.
            for (std::size_t copied = 0; copied < i; ++copied)
                QFile::remove(copyCommands[copied].second);
            emit canceled();
            return;
        }
        try {
            copyFile(copyCommands[i].first, copyCommands[i].second);
        } catch (const std::exception& error) {
            return fail(QString::fromStdString(error.what()), dynamic_cast<const TargetError*>(&error) != nullptr);
        }
        emit progress(static_cast<int>(100 * (i + 1) / count));
    }
    emit done(true);
}
