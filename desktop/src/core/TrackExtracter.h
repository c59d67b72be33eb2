// Writes the GPS track of a time interval to a file: an NMEA copy, KML, GPX 1.0, CSV, OziExplorer PLT or GPX 1.1.
#pragma once

#include "core/BaseEncoder.h"

#include <QString>

#include <optional>

// A background job in the shape of every export: moved to the worker thread, started by a queued call
// of encode() (or run(), its other name), cancelled by a direct call of cancel(). Ends with exactly one
// of done(true), done(false) or canceled(). The file is written beside the target under a temporary name and
// renamed into place when whole; on failure or cancel only that temporary file is removed. It refuses to
// write over a track or video of its items, into the protected folder, or over an existing file unless
// permitted (BaseEncoder::setPermissions). A run with no position in the interval fails.
//
// The NMEA copy keeps only the sentences that lie in the interval, unchanged, so that the copy loads
// back to the interval's positions. The other formats load the items' track files and write the
// positions whose time lies in [from, to], both ends included, in time order.
//
//   auto* job = new TrackExtracter(items, "/home/me/dvr.gpx", TrackExtracter::Gpx, interval);
//   job->moveToThread(&workerThread);
//   connect(job, &TrackExtracter::done, window, &MainWindow::onTrackSaveDone);
//   QMetaObject::invokeMethod(job, "run", Qt::QueuedConnection);
class TrackExtracter : public BaseEncoder {
    Q_OBJECT
public:
    // The values are the main window's format indexes; Nmea (0) is also what saving a video passes. Gpx is
    // the program's GPX 1.0 of old; Gpx11 the standard GPX 1.1 (same extension, named "gpx11").
    enum TrackType { Nmea = 0, Kml = 1, Csv = 2, Gpx = 3, Plt = 4, Gpx11 = 5 };
    Q_ENUM(TrackType)

    TrackExtracter(Playlist::RawItems items, QString outputPath, TrackType type, TimeInterval interval);

    // "nmea", "kml", "csv", "gpx", "plt", "gpx": the file extension of a type.
    static QString extension(TrackType type);
    // The type of a name, compared without case: the extension, or "gpx11" for GPX 1.1.
    static std::optional<TrackType> typeFromName(const QString& name);

    TrackType trackType() const { return m_type; }
    const QString& outputPath() const { return m_settings.filePath; }

public slots:
    void encode() override;
    void run() { encode(); }

private:
    enum class Outcome { Written, Failed, Canceled };
    Outcome writeTo(const QString& path);
    Outcome writeNmeaCopy(const QString& path);
    Outcome writePositions(const QString& path);
    // The items whose track may hold a moment of the interval; others are never read.
    Playlist::RawItems itemsWithTrackInInterval() const;
    void reportItemProgress(std::size_t done, std::size_t total);

    TrackType m_type;
    TrackTime m_from = 0;
    TrackTime m_to = 0;
    int m_lastPercent = 0;
};
