// A real tmpfs mount on a temporary folder for the removable-storage tests; needs root (CI runs as root).
#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace testsupport {

// Held by every test that mounts or watches the real mount table, for its whole life: such tests run in
// parallel processes and would otherwise see each other's cards.
class MountTestLock {
public:
    MountTestLock() : m_fd(::open("/tmp/reelvue-mount-tests.lock", O_CREAT | O_RDWR | O_CLOEXEC, 0666)) {
        if (m_fd >= 0)
            ::flock(m_fd, LOCK_EX);
    }
    ~MountTestLock() {
        if (m_fd >= 0)
            ::close(m_fd); // releases the lock
    }
    MountTestLock(const MountTestLock&) = delete;
    MountTestLock& operator=(const MountTestLock&) = delete;

private:
    int m_fd;
};

// Mounted on construction, unmounted when it goes out of scope. Its source name is the device identifier
// that QStorageInfo::device() and the notifiers report, so give each mount of a test its own. `size` is tmpfs's
// size option ("1m", "5m").
class TmpfsMount {
public:
    explicit TmpfsMount(QByteArray source, QByteArray size = "1m") : m_source(std::move(source)), m_size(std::move(size)) {
        mount();
    }
    ~TmpfsMount() { unmount(); }
    TmpfsMount(const TmpfsMount&) = delete;
    TmpfsMount& operator=(const TmpfsMount&) = delete;

    // Empty when mounting is possible here; otherwise why not, for GTEST_SKIP().
    static QString whyNotPossible() {
        if (::geteuid() != 0)
            return QStringLiteral("not running as root: mounting a tmpfs needs root");
        TmpfsMount probe("reelvue-mount-probe");
        return probe.isMounted() ? QString() : QStringLiteral("mount is not permitted here: ") + probe.error();
    }

    bool isMounted() const { return m_mounted; }
    QString error() const { return m_error; }
    QString path() const { return m_dir.path(); }
    QByteArray device() const { return m_source; }

    // A recorder's card as the suitable-path check knows it: a DCIM folder at the root.
    void makeRecorderLayout() const { QDir(path()).mkpath(QStringLiteral("DCIM/100MEDIA")); }

    bool mount() {
        if (m_mounted)
            return true;
        if (::mount(m_source.constData(), QFile::encodeName(path()).constData(), "tmpfs", 0, ("size=" + m_size).constData()) != 0) {
            m_error = QString::fromLocal8Bit(std::strerror(errno));
            return false;
        }
        m_mounted = true;
        return true;
    }

    void unmount() {
        if (m_mounted && ::umount2(QFile::encodeName(path()).constData(), MNT_DETACH) == 0)
            m_mounted = false;
    }

private:
    QByteArray m_source;
    QByteArray m_size;
    QTemporaryDir m_dir;
    bool m_mounted = false;
    QString m_error;
};

} // namespace testsupport

// Skips the calling test where tmpfs cannot be mounted here. A macro: GTEST_SKIP only returns from the
// function it is written in.
#define SKIP_UNLESS_TMPFS_MOUNTS()                                                              \
    do {                                                                                        \
        const QString whyNot = testsupport::TmpfsMount::whyNotPossible();                       \
        if (!whyNot.isEmpty())                                                                  \
            GTEST_SKIP() << whyNot.toStdString();                                               \
    } while (false)
