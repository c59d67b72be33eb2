// Reads a track file recorded apart from the camera (TrackFileReader) as a background job.
#pragma once

#include "core/TrackPosition.h"

#include <QObject>
#include <QString>

#include <atomic>

// Lives on the worker thread and runs read() once, started by a queued call; cancel() is called directly
// from the GUI thread and only raises a flag, read before the result is handed over. Ends with exactly one
// of done(true), done(false) or canceled(); positions() and failure() are read after that.
class TrackFileJob : public QObject {
    Q_OBJECT
public:
    explicit TrackFileJob(QString path, QObject* parent = nullptr) : QObject(parent), m_path(std::move(path)) {}

    const QString& path() const { return m_path; }
    const TrackPositions& positions() const { return m_positions; }
    const QString& failure() const { return m_failure; } // in English, from the reader

public slots:
    void read();
    void cancel() { m_canceled = true; }

signals:
    void progress(int percent);
    void done(bool ok);
    void canceled();

private:
    QString m_path;
    TrackPositions m_positions;
    QString m_failure;
    std::atomic<bool> m_canceled{false};
};
