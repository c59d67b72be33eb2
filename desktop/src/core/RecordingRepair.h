// Rebuilds a playable copy of a recording whose index (moov) was lost, from its media data and a healthy sibling.
#pragma once

#include <QObject>
#include <QString>

#include <atomic>
#include <functional>
#include <optional>
#include <stdexcept>

// A recorder writes the pictures into "mdat" as it goes and the index into "moov" only when it closes the file;
// power lost in a crash leaves the pictures without an index. The H.264 pictures are found again by walking the
// length-prefixed NAL units of mdat (the sound between them is passed over: it has no framing of its own), and
// the codec parameters and frame rate are taken from a healthy file of the same camera. The copy holds the
// picture only and goes to a folder of the user's choice, never over the original or into its folder.
//
// A job by the contract of the window's jobs: run() on a worker thread; cancel() from the GUI thread only sets
// a flag; it ends with exactly one of done(true), done(false) or canceled(), and a copy that was not finished
// is removed.
//
//   RecordingRepair job(damaged, RecordingRepair::healthySibling(damaged).value(), "/home/me/repaired");
//   job.run();   // the copy: job.outputPath()
class RecordingRepair : public QObject {
    Q_OBJECT
public:
    struct Failure : std::runtime_error {
        using std::runtime_error::runtime_error;
    };
    struct Canceled {};

    RecordingRepair(QString damagedPath, QString siblingPath, QString outputFolder, QObject* parent = nullptr);

    // A file beside `damagedPath` from the same camera (same suffix and camera letter) that has its index,
    // the nearest by name first.
    static std::optional<QString> healthySibling(const QString& damagedPath);

    // The copy: the damaged file's name in the output folder.
    QString outputPath() const;
    // How many pictures the copy holds, after run().
    int pictures() const { return m_pictures; }
    // Why it failed, in English, after done(false).
    QString errorText() const { return m_error; }

    // Synchronous; throws Failure with a readable text, or Canceled. Used by run().
    void repair(const std::function<void(int percent)>& progress = {});

signals:
    void done(bool ok);
    void canceled();
    void progress(int percents);

public slots:
    void run();
    void cancel() { m_canceled = true; }

private:
    QString m_damagedPath;
    QString m_siblingPath;
    QString m_outputFolder;
    std::atomic<bool> m_canceled{false};
    int m_pictures = 0;
    QString m_error;
};
