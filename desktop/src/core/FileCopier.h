// Copies whole recording files, unchanged and with their modification times, as a background job.
#pragma once

#include "core/ExportTarget.h"

#include <QMetaType>
#include <QObject>
#include <QString>

#include <atomic>
#include <utility>
#include <vector>

// Copy commands (source path, destination path), carried out in this order.
using FileCopierCommandVector = std::vector<std::pair<QString, QString>>;
Q_DECLARE_METATYPE(FileCopierCommandVector)

// Lives on the worker thread and runs copy() once, started by a queued call; cancel() is called
// directly from the GUI thread and takes effect before the next file. Ends with exactly one of done(true),
// done(false) or canceled(). A failed copy keeps the files copied before it; a cancelled one removes them.
// Each file is written beside its destination under a temporary name and renamed into place when whole,
// so a failure leaves no partial file. It never overwrites a destination, never writes over one of its
// sources, and never into the protected folder (the card being read); failureReason() then says why.
//
//   auto* copier = new FileCopier;
//   copier->setPermissions({loadedCardFolder, false});
//   copier->moveToThread(&workerThread);
//   connect(dialog, &ProgressDialog::canceled, copier, &FileCopier::cancel, Qt::DirectConnection);
//   QMetaObject::invokeMethod(copier, "copy", Qt::QueuedConnection, Q_ARG(FileCopierCommandVector, commands));
class FileCopier : public QObject {
    Q_OBJECT
public:
    explicit FileCopier(QObject* parent = nullptr);

    // Set before copy(); only the protected folder counts: a copy never replaces a file.
    void setPermissions(exporttarget::Permissions permissions) { m_permissions = std::move(permissions); }
    // Why the run ended with done(false), with the system's reason; read after that signal arrived.
    const QString& failureReason() const { return m_failureReason; }
    // The failure came from the destination (disk full, folder missing or read-only, file already there, refused).
    bool failedOnTarget() const { return m_failedOnTarget; }

signals:
    void done(bool ok);
    void canceled();
    void progress(int percents); // 0..100, after each file

public slots:
    void copy(FileCopierCommandVector copyCommands);
    void cancel();

private:
    void fail(const QString& reason, bool onTarget);

    std::atomic<bool> m_canceled{false};
    exporttarget::Permissions m_permissions;
    QString m_failureReason;
    bool m_failedOnTarget = false;
};
