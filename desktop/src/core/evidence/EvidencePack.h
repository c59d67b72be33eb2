// The incident evidence pack: everything about an interval of recordings in one new folder, laid out as a
// BagIt bag whose manifests prove that nothing in it was altered afterwards.
#pragma once

#include "core/BaseEncoder.h"
#include "core/evidence/EvidenceSummary.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

struct EvidenceRequest {
    Playlist::RawItems items; // the recordings loaded, in time order; the pack takes those it needs
    TimeInterval interval;    // local time of the recordings
    QString folder;           // the folder to make; it must not exist yet
    QString cardPath;         // where the recordings were loaded from: only read, never written into
    int marginSeconds = 30;   // originals cover the interval widened by this much on both sides
    std::vector<QDateTime> marks; // moments the user marked, in local time
    SpeedUnit speedUnit = SpeedUnit::KilometresPerHour; // of the overview's overlay and the report
    QString placeName;     // for the report: where it happened, from the map page; empty when it gave none
    QByteArray mapPicture; // for the report: the map page's picture of the track; empty: the report draws it

    // The parts drawn with Qt Gui, handed in by the callers that have it (the window, reelvue-cli); without them
    // the pack has no frames/ or report.pdf. The frame writer returns the pictures it could not make, described.
    using FrameWriter = std::function<QStringList(const Playlist::RawItems& items, const TrackPositions& track,
                                                  const std::vector<QDateTime>& moments, const QString& folder,
                                                  const std::atomic<bool>* canceled)>;
    using ReportWriter = std::function<bool(const EvidenceSummary& summary, const QString& pdfPath, QString* error)>;
    FrameWriter writeFrames;
    ReportWriter writeReport;
};

// The pack in data/: originals/ (byte-identical copies of every file of every camera that overlaps the
// widened interval, with their tracks, each checked by SHA-256 against its source and keeping its
// modification time), clips/ (a stream-copied cut per camera), track/ (KML, CSV, NMEA, GPX 1.1), and what this
// program derives: overview.mp4 (all cameras side by side with the time, speed and position burned in),
// frames/ (every camera's picture at the interval's ends and each marked moment) and report.pdf; around it
// bagit.txt, bag-info.txt, manifest-sha256.txt and tagmanifest-sha256.txt.
//
// A background job in the shape of every export: moved to the worker thread, encode() started by a queued
// call, cancel() called directly from the GUI thread (it only raises the atomic flag, polled between blocks).
// Progress is in percent of the bytes to handle. Ends with exactly one of done(true), done(false) with
// failureText(), or canceled(); a failed or cancelled pack leaves nothing behind. The card is opened
// read-only.
//
//   auto* pack = new EvidencePack({items, interval, "/home/me/incident", "/media/card"});
//   pack->moveToThread(&workerThread);
//   QMetaObject::invokeMethod(pack, "encode", Qt::QueuedConnection);
class EvidencePack : public BaseEncoder {
    Q_OBJECT
public:
    explicit EvidencePack(EvidenceRequest request, QObject* parent = nullptr);

    // Why a pack cannot be made in `folder` for recordings read from `cardPath`; empty when it can.
    static QString refusal(const QString& folder, const QString& cardPath);

    // The message for the user after done(false), e.g. "The disk is full: ...".
    const QString& failureText() const { return m_failure; }
    const EvidenceRequest& request() const { return m_request; }

public slots:
    void encode() override;

private:
    enum class Outcome { Done, Failed, Canceled };
    struct Original {
        QString source;
        QString target; // relative to the folder
    };

    Outcome build();
    std::vector<Original> plannedOriginals() const;
    Outcome copyOriginal(const Original& original);
    Outcome cutClips();
    Outcome writeTracks();
    Outcome makeOverview();
    Outcome writeFrames();
    Outcome hashPayload();
    Outcome writeReport();
    Outcome finishBag();
    // Runs a sub-job synchronously on this thread, its progress counted as `units`, cancelled with this job.
    Outcome runSubJob(BaseEncoder& job, qint64 units);
    Outcome fail(const QString& text);
    QString diskFullText() const;
    void advance(qint64 units);

    EvidenceRequest m_request;
    QString m_failure;
    std::vector<std::pair<QString, QByteArray>> m_payload; // path in the bag, SHA-256
    QStringList m_trackSources;                             // bag-info lines on the tracks
    QStringList m_missingFrames;                            // bag-info lines on the pictures not made
    TrackPositions m_track;                                 // the interval's, in time order
    std::vector<QDateTime> m_marks;                         // those in the interval, ascending
    qint64 m_overviewUnits = 0;
    qint64 m_totalUnits = 1;
    qint64 m_doneUnits = 0;
    int m_lastPercent = -1;
};
