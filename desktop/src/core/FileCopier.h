// Copies whole recording files, unchanged, as a background job.
#pragma once

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
// directly from the GUI thread and takes effect before the next file. Never overwrites a destination.
// Ends with exactly one of done(true), done(false) or canceled(). A failed copy keeps the files copied
// before it; a cancelled one removes them.
//
//   auto* copier = new FileCopier;
//   copier->moveToThread(&workerThread);
//   connect(dialog, &ProgressDialog::canceled, copier, &FileCopier::cancel, Qt::DirectConnection);
//   QMetaObject::invokeMethod(copier, "copy", Qt::QueuedConnection, Q_ARG(FileCopierCommandVector, commands));
class FileCopier : public QObject {
    Q_OBJECT
public:
    explicit FileCopier(QObject* parent = nullptr);

signals:
    void done(bool ok);
    void canceled();
    void progress(int percents); // 0..100, after each file

public slots:
    void copy(FileCopierCommandVector copyCommands);
    void cancel();

private:
    std::atomic<bool> m_canceled{false};
};
