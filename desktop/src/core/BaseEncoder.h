// The contract of a long export: runs in a worker thread, reports whole percent, can be cancelled from
// the GUI thread, and ends with exactly one of done(true), done(false) or canceled().
#pragma once

#include "core/EncodingSettings.h"
#include "core/Playlist.h"
#include "core/TimeInterval.h"

#include <QObject>

#include <atomic>

class BaseEncoder : public QObject {
    Q_OBJECT
public:
    BaseEncoder(Playlist::RawItems items, TimeInterval interval, EncodingSettings settings,
                QObject* parent = nullptr)
        : QObject(parent), m_items(std::move(items)), m_interval(std::move(interval)),
          m_settings(std::move(settings)) {}

signals:
    // ok: the file is complete; otherwise it failed and the partial file was deleted.
    void done(bool ok);
    // The user stopped the export; the partial file was deleted.
    void canceled();
    void progress(int percents);

public slots:
    // Runs the whole export synchronously in the calling (worker) thread.
    virtual void encode() = 0;
    // Called from the GUI thread through a direct connection while encode() runs: only sets the flag.
    void cancel() { m_canceled = true; }

protected:
    Playlist::RawItems m_items; // in playlist time order
    TimeInterval m_interval;
    EncodingSettings m_settings;
    std::atomic<bool> m_canceled{false};
};
