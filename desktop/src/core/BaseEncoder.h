// The contract of a long export: runs in a worker thread, reports whole percent, can be cancelled from
// the GUI thread, and ends with exactly one of done(true), done(false) or canceled().
#pragma once

#include "core/EncodingSettings.h"
#include "core/ExportTarget.h"
#include "core/Playlist.h"
#include "core/TimeInterval.h"

#include <QObject>

#include <atomic>

// An export never writes over one of its inputs or into the protected folder, and replaces an existing file
// only when allowed (see core/ExportTarget.h). The setters are called before encode() starts; the failure
// accessors are read after done(false) arrived (the queued signal orders the write before the read).
//
//   auto* encoder = new Remuxer(items, interval, settings);
//   encoder->setPermissions({loadedCardFolder, /*overwrite=*/dialogConfirmedReplacing});
//   ... on done(false): box text + "\n\n" + encoder->failureReason()
class BaseEncoder : public QObject {
    Q_OBJECT
public:
    BaseEncoder(Playlist::RawItems items, TimeInterval interval, EncodingSettings settings,
                QObject* parent = nullptr)
        : QObject(parent), m_items(std::move(items)), m_interval(std::move(interval)),
          m_settings(std::move(settings)) {}

    void setPermissions(exporttarget::Permissions permissions) { m_permissions = std::move(permissions); }
    const exporttarget::Permissions& permissions() const { return m_permissions; }

    // Why the last run ended with done(false), with the system's or FFmpeg's reason ("Error while write a
    // frame: No space left on device"); empty after done(true) or canceled().
    const QString& failureReason() const { return m_failureReason; }
    // That failure came from the place written to (disk full, folder missing or read-only, target taken
    // or refused), so another container or re-encoding would not help.
    bool failedOnTarget() const { return m_failedOnTarget; }

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
    // Why m_settings.filePath must not be written by this export; see exporttarget::refusal.
    exporttarget::Refusal targetRefusal() const {
        return exporttarget::refusal(m_settings.filePath, exporttarget::inputFiles(m_items), m_permissions);
    }
    void setFailure(QString reason, bool onTarget) {
        m_failureReason = std::move(reason);
        m_failedOnTarget = onTarget;
    }

    Playlist::RawItems m_items; // in playlist time order
    TimeInterval m_interval;
    EncodingSettings m_settings;
    exporttarget::Permissions m_permissions;
    std::atomic<bool> m_canceled{false};

private:
    QString m_failureReason;
    bool m_failedOnTarget = false;
};
