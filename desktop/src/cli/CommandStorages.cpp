// reelvue-cli storages [--watch]: the mounted storages that hold recordings, and with --watch their comings and goings.
#include "cli/CliCommand.h"
#include "core/StorageWatcher.h"
#include "device-notify/DeviceNotifyTools.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

namespace {

QString describe(const QStorageInfo& storage) {
    return QStringLiteral("%1\t%2\t%3\t%4\n")
        .arg(storage.rootPath(), storage.displayName(), QString::fromLocal8Bit(storage.device()),
             QString::fromLocal8Bit(storage.fileSystemType()));
}

// Ctrl+C ends --watch through a pipe: a signal handler may only write(), the event loop does the rest.
int g_signalPipe[2] = {-1, -1};

void writeToSignalPipe(int) {
    const char byte = 's';
    [[maybe_unused]] const ssize_t written = ::write(g_signalPipe[1], &byte, 1);
}

int run(const QStringList& arguments) {
    bool watch = false;
    for (const QString& argument : arguments) {
        if (argument == QLatin1String("--watch")) {
            watch = true;
        } else {
            cliError(QStringLiteral("Unknown argument: %1\nUsage: reelvue-cli storages [--watch]").arg(argument));
            return 2;
        }
    }

    StorageWatcher watcher(std::make_unique<DeviceNotifyTools>());
    // The first announcement is the whole list, at the end of the initial scan.
    bool listed = false;
    QObject::connect(&watcher, &StorageWatcher::supportedStoragesArrived,
                     [&](const std::vector<QStorageInfo>& storages) {
                         if (!listed) {
                             listed = true;
                             for (const QStorageInfo& storage : storages)
                                 cliPrint(describe(storage));
                             if (storages.empty())
                                 cliError(QStringLiteral("No storage with recordings is mounted"));
                             if (!watch)
                                 QCoreApplication::quit();
                             return;
                         }
                         for (const QStorageInfo& storage : storages)
                             cliPrint(QStringLiteral("arrived\t") + describe(storage));
                     });
    QObject::connect(&watcher, &StorageWatcher::supportedStorageRemoved, [](const QStorageInfo& storage) {
        cliPrint(QStringLiteral("removed\t") + describe(storage));
    });
    std::unique_ptr<QSocketNotifier> signalNotifier;
    if (watch && ::pipe2(g_signalPipe, O_CLOEXEC | O_NONBLOCK) == 0) {
        signalNotifier = std::make_unique<QSocketNotifier>(g_signalPipe[0], QSocketNotifier::Read);
        QObject::connect(signalNotifier.get(), &QSocketNotifier::activated, [] { QCoreApplication::quit(); });
        std::signal(SIGINT, &writeToSignalPipe);
        std::signal(SIGTERM, &writeToSignalPipe);
    }
    watcher.start();
    QCoreApplication::exec();
    return 0;
}

const CliCommandRegistration registration{
    {"storages", "[--watch]",
     "List the mounted storages that hold recordings (root, name, device, file system); with --watch also print "
     "each arrival and removal until Ctrl+C",
     &run}};

} // namespace
