// Writes the GPS track of a time interval to a file: an NMEA copy, KML, GPX 1.0, CSV, OziExplorer PLT or GPX 1.1.
#include "core/TrackExtracter.h"

#include "core/ExtracterNmeaSentenceHandler.h"
#include "core/GpxWriter.h"
#include "core/NmeaStreamAdapter.h"
#include "core/Startup.h"
#include "core/TrackFormatWriters.h"
#include "core/TrackLoader.h"
#include "logging/Logging.h"
#include "os/OutputStream.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <chrono>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <vector>

namespace {
constexpr const char* kLogger = "ui.TrackExtracter";
// Loading the track files is most of the work; writing takes the rest of the bar.
constexpr int kLoadingPercent = 90;
// 1 MiB: a 24-hour KML is some 40 MB; larger writes spare most of the stream's system calls.
constexpr std::size_t kWriteBufferSize = 1 << 20;

const char* const kExtensions[] = {"nmea", "kml", "csv", "gpx", "plt", "gpx"};

// The sentence copier writes through the parser library's stream interface.
class StdOutputStream : public os::COutputStream {
public:
    explicit StdOutputStream(std::ostream& out) : m_out(out) {}
    void write(const void* data, std::size_t count) override {
        m_out.write(static_cast<const char*>(data), static_cast<std::streamsize>(count));
        if (!m_out)
            throw std::runtime_error("Writing the track file failed");
    }

private:
    std::ostream& m_out;
};

// An output file with a large buffer; the buffer must be in place before the file is opened.
class BufferedOutputFile {
public:
    explicit BufferedOutputFile(const QString& path) : m_buffer(kWriteBufferSize) {
        m_out.rdbuf()->pubsetbuf(m_buffer.data(), static_cast<std::streamsize>(m_buffer.size()));
        // The file was created empty; opening it without truncating spares ext4's flush on close.
        m_out.open(QFile::encodeName(path).toStdString(), std::ios::in | std::ios::out | std::ios::binary);
    }
    bool isOpen() const { return m_out.is_open(); }
    std::ofstream& stream() { return m_out; }
    // Flushes and closes; false when anything written was lost.
    bool close() {
        m_out.close();
        return !m_out.fail();
    }

private:
    std::vector<char> m_buffer;
    std::ofstream m_out;
};

std::string text(const QDateTime& time) { return time.toString(Qt::ISODate).toStdString(); }

} // namespace

TrackExtracter::TrackExtracter(Playlist::RawItems items, QString outputPath, TrackType type, TimeInterval interval)
    : BaseEncoder(std::move(items), std::move(interval), EncodingSettings{}), m_type(type) {
    m_settings.filePath = std::move(outputPath);
}

QString TrackExtracter::extension(TrackType type) {
    return type >= Nmea && type <= Gpx11 ? QString::fromLatin1(kExtensions[type]) : QString();
}

std::optional<TrackExtracter::TrackType> TrackExtracter::typeFromName(const QString& name) {
    if (name.compare(QLatin1String("gpx11"), Qt::CaseInsensitive) == 0)
        return Gpx11;
    for (int type = Nmea; type <= Plt; ++type)
        if (name.compare(QLatin1String(kExtensions[type]), Qt::CaseInsensitive) == 0)
            return static_cast<TrackType>(type);
    return std::nullopt;
}

void TrackExtracter::encode() {
    m_canceled = false;
    m_lastPercent = 0;
    setFailure({}, false);
    const QString& target = m_settings.filePath;
    const auto started = std::chrono::steady_clock::now();
    LOG_INFO(kLogger, "Start saving the {} track from {} to {} into '{}'", extension(m_type).toStdString(),
             text(m_interval.from), text(m_interval.to), target.toStdString());
    emit progress(0);

    if (extension(m_type).isEmpty()) {
        LOG_ERROR(kLogger, "Failed to save track to '{}': unknown track type {}", target.toStdString(),
                  static_cast<int>(m_type));
        setFailure(QStringLiteral("Unknown track type %1").arg(static_cast<int>(m_type)), false);
        emit done(false);
        return;
    }
    if (!m_interval.from.isValid() || !m_interval.to.isValid() || m_interval.to < m_interval.from) {
        LOG_ERROR(kLogger, "Failed to save track to '{}': invalid interval from {} to {}", target.toStdString(),
                  text(m_interval.from), text(m_interval.to));
        setFailure(QStringLiteral("Invalid interval"), false);
        emit done(false);
        return;
    }
    m_from = trackTimeFromSeconds(m_interval.from.toSecsSinceEpoch());
    m_to = trackTimeFromSeconds(m_interval.to.toSecsSinceEpoch());

    if (const exporttarget::Refusal refused = targetRefusal()) {
        LOG_ERROR(kLogger, "Failed to save track to '{}': {}", target.toStdString(), refused.text.toStdString());
        setFailure(refused.text, true);
        emit done(false);
        return;
    }
    PartialFile partial(target);
    Outcome outcome = Outcome::Failed;
    try {
        partial.create();
        partial.closeDescriptor(); // the stream opens the file by its name
        outcome = writeTo(partial.path());
        if (outcome == Outcome::Written && m_canceled)
            outcome = Outcome::Canceled;
        if (outcome == Outcome::Written)
            partial.commit(m_permissions.overwrite);
    } catch (const std::exception& error) {
        LOG_ERROR(kLogger, "Failed to save track to '{}': {}", target.toStdString(), error.what());
        setFailure(QString::fromStdString(error.what()), dynamic_cast<const exporttarget::TargetError*>(&error) != nullptr);
        outcome = Outcome::Failed;
    }
    if (outcome != Outcome::Written)
        partial.discard();

    switch (outcome) {
    case Outcome::Written: {
        const auto ms =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - started).count();
        LOG_INFO(kLogger, "Saving the track to '{}' has been finished ({} ms)", target.toStdString(), ms);
        emit progress(100);
        emit done(true);
        break;
    }
    case Outcome::Failed:
        emit done(false);
        break;
    case Outcome::Canceled:
        LOG_INFO(kLogger, "Saving the track to '{}' has been canceled", target.toStdString());
        emit canceled();
        break;
    }
}

TrackExtracter::Outcome TrackExtracter::writeTo(const QString& path) {
    return m_type == Nmea ? writeNmeaCopy(path) : writePositions(path);
}

Playlist::RawItems TrackExtracter::itemsWithTrackInInterval() const {
    const std::int64_t from = trackTimeToSeconds(m_from);
    const std::int64_t to = trackTimeToSeconds(m_to);
    Playlist::RawItems items;
    for (const Playlist::RawItemPtr& item : m_items) {
        if (!item || !item->track)
            continue;
        const Playlist::Track& track = *item->track;
        // An item whose fixes are known and all lie outside the interval is not read at all. The fixes
        // loaded with the playlist say it best (a receiver's clock may jump back); else the first and last.
        if (!track.positions.empty()) {
            const auto [earliest, latest] = std::minmax_element(
                track.positions.begin(), track.positions.end(),
                [](const TrackPosition& a, const TrackPosition& b) { return a.time < b.time; });
            if (latest->time < m_from || m_to < earliest->time)
                continue;
        } else if (track.from.isValid() && track.to.isValid() &&
                   (track.to.toSecsSinceEpoch() < from || to < track.from.toSecsSinceEpoch())) {
            continue;
        }
        items.push_back(item);
    }
    if (items.empty())
        LOG_ERROR(kLogger, "No track file covers {} to {}", text(m_interval.from), text(m_interval.to));
    return items;
}

void TrackExtracter::reportItemProgress(std::size_t done, std::size_t total) {
    const int percent = static_cast<int>(kLoadingPercent * done / total);
    if (percent > m_lastPercent) {
        m_lastPercent = percent;
        emit progress(percent);
    }
}

TrackExtracter::Outcome TrackExtracter::writePositions(const QString& path) {
    const Playlist::RawItems items = itemsWithTrackInInterval();
    if (items.empty()) {
        setFailure(QStringLiteral("No track file covers %1 to %2").arg(m_interval.from.toString(Qt::ISODate),
                                                                         m_interval.to.toString(Qt::ISODate)), false);
        return Outcome::Failed;
    }

    TrackPositions positions;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (m_canceled)
            return Outcome::Canceled;
        const QString trackPath = items[i]->track->file.absoluteFilePath();
        const auto inInterval = [this](const TrackPosition& p) { return m_from <= p.time && p.time <= m_to; };
        try {
            // A track inside a video or attached from a phone was read whole at loading; a track file is read again,
            // as it is now.
            const TrackPositions loaded = items[i]->hasEmbeddedTrack() || items[i]->track->attached
                                              ? items[i]->track->positions
                                              : TrackLoader::load(trackPath).positions;
            std::copy_if(loaded.begin(), loaded.end(), std::back_inserter(positions), inInterval);
        } catch (const std::exception& error) {
            LOG_ERROR(kLogger, "Failed to load track file '{}': {}", trackPath.toStdString(), error.what());
        }
        reportItemProgress(i + 1, items.size());
    }
    if (m_canceled)
        return Outcome::Canceled;
    if (positions.empty()) {
        LOG_ERROR(kLogger, "No track position from {} to {}", text(m_interval.from), text(m_interval.to));
        setFailure(QStringLiteral("No GPS position from %1 to %2").arg(m_interval.from.toString(Qt::ISODate),
                                                                         m_interval.to.toString(Qt::ISODate)), false);
        return Outcome::Failed;
    }
    // Items are in playlist order; tracks of neighbouring items may still interleave.
    std::stable_sort(positions.begin(), positions.end(),
                     [](const TrackPosition& a, const TrackPosition& b) { return a.time < b.time; });

    BufferedOutputFile file(path);
    if (!file.isOpen())
        throw exporttarget::TargetError(fmt::format("Can't open '{}' for writing: {}", path.toStdString(),
                                                    exporttarget::systemErrorText(errno)));
    switch (m_type) {
    case Kml:
        trackformats::writeKml(file.stream(), positions);
        break;
    case Csv:
        trackformats::writeCsv(file.stream(), positions);
        break;
    case Gpx:
        trackformats::writeGpx(file.stream(), positions);
        break;
    case Plt:
        trackformats::writePlt(file.stream(), positions);
        break;
    case Gpx11:
        trackformats::writeGpx11(file.stream(), positions,
                                 std::string(kApplicationName) + " " + kApplicationVersion);
        break;
    case Nmea:
        break;
    }
    if (!file.close())
        throw exporttarget::TargetError(fmt::format("Writing '{}' failed: {}", path.toStdString(),
                                                    exporttarget::systemErrorText(errno)));
    LOG_DEBUG(kLogger, "Wrote {} positions", positions.size());
    return Outcome::Written;
}

TrackExtracter::Outcome TrackExtracter::writeNmeaCopy(const QString& path) {
    const Playlist::RawItems items = itemsWithTrackInInterval();
    if (items.empty()) {
        setFailure(QStringLiteral("No track file covers %1 to %2").arg(m_interval.from.toString(Qt::ISODate),
                                                                         m_interval.to.toString(Qt::ISODate)), false);
        return Outcome::Failed;
    }

    BufferedOutputFile file(path);
    if (!file.isOpen())
        throw exporttarget::TargetError(fmt::format("Can't open '{}' for writing: {}", path.toStdString(),
                                                    exporttarget::systemErrorText(errno)));
    StdOutputStream output(file.stream());
    std::uint64_t copied = 0;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (m_canceled)
            return Outcome::Canceled;
        const QString trackPath = items[i]->track->file.absoluteFilePath();
        std::optional<QByteArray> bytes;
        if (items[i]->hasEmbeddedTrack() || items[i]->track->attached) {
            // No sentences to copy from a video or a GPX/KML file: the positions read from it are written as
            // sentences.
            TrackPositions inInterval;
            std::copy_if(items[i]->track->positions.begin(), items[i]->track->positions.end(),
                         std::back_inserter(inInterval),
                         [this](const TrackPosition& p) { return m_from <= p.time && p.time <= m_to; });
            trackformats::writeNmea(file.stream(), inInterval);
            copied += 2 * inInterval.size();
            reportItemProgress(i + 1, items.size());
            continue;
        }
        try {
            bytes = TrackLoader::readFile(trackPath); // regular files of a sane size only
        } catch (const std::exception& error) {
            LOG_ERROR(kLogger, "Failed to read track file '{}': {}", trackPath.toStdString(), error.what());
        }
        if (bytes) {
            NmeaStreamAdapter input(*bytes);
            ExtracterNmeaSentenceHandler extracter(m_from, m_to);
            try {
                copied += extracter.extract(&input, &output);
            } catch (const std::exception& error) {
                LOG_ERROR(kLogger, "Failed to copy sentences of '{}': {}", trackPath.toStdString(), error.what());
                if (!file.stream()) // the output broke, not the input
                    throw exporttarget::TargetError(fmt::format("Writing '{}' failed: {}", path.toStdString(),
                                                                exporttarget::systemErrorText(errno)));
            }
        }
        reportItemProgress(i + 1, items.size());
    }
    if (m_canceled)
        return Outcome::Canceled;
    if (!file.close())
        throw exporttarget::TargetError(fmt::format("Writing '{}' failed: {}", path.toStdString(),
                                                    exporttarget::systemErrorText(errno)));
    if (copied == 0) {
        LOG_ERROR(kLogger, "No NMEA sentence from {} to {}", text(m_interval.from), text(m_interval.to));
        setFailure(QStringLiteral("No NMEA sentence from %1 to %2").arg(m_interval.from.toString(Qt::ISODate),
                                                                          m_interval.to.toString(Qt::ISODate)), false);
        return Outcome::Failed;
    }
    LOG_DEBUG(kLogger, "Copied {} sentences", copied);
    return Outcome::Written;
}
