// The contract of a long export that runs on the main window's worker thread.
#pragma once

#include "core/EncodingSettings.h"
#include "core/Playlist.h"
#include "core/TimeInterval.h"

#include <QObject>

#include <atomic>

// Lives on the worker thread and is started there by a queued call of encode(). cancel() is the one
// call made from the GUI thread (a direct connection from the progress dialog), so it only raises an
// atomic flag that encode() polls. Every run ends with exactly one of done(true), done(false) or
// canceled(); a failed or cancelled run deletes its partial output.
//
//   auto* job = new Remuxer(items, interval, settings);
//   job->moveToThread(&workerThread);
//   connect(job, &BaseEncoder::done, window, &MainWindow::onEncodeDone);
//   connect(dialog, &ProgressDialog::canceled, job, &BaseEncoder::cancel, Qt::DirectConnection);
//   QTimer::singleShot(0, job, &BaseEncoder::encode);
class BaseEncoder : public QObject {
    Q_OBJECT
public:
    BaseEncoder(Playlist::RawItems items, TimeInterval interval, EncodingSettings settings)
        : m_items(std::move(items)), m_interval(std::move(interval)), m_settings(std::move(settings)) {}

signals:
    void done(bool ok);
    void canceled();
    void progress(int percents);

public slots:
    // Runs the whole export synchronously on the calling thread; each concrete encoder declares it again.
    virtual void encode() = 0;
    void cancel() { m_canceled = true; }

protected:
    Playlist::RawItems m_items; // in playlist time order
    TimeInterval m_interval;
    EncodingSettings m_settings;
    std::atomic<bool> m_canceled{false}; // reset at the start of every encode()
};
