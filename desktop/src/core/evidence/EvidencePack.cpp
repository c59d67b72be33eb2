// The incident evidence pack: everything about an interval of recordings in one new folder, laid out as a
// BagIt bag whose manifests prove that nothing in it was altered afterwards.
#include "core/evidence/EvidencePack.h"

#include "core/ExportPaths.h"
#include "core/Startup.h"
#include "core/TrackExtracter.h"
#include "core/encoding/Remuxer.h"
#include "core/evidence/Bag.h"
#include "core/evidence/OverviewVideo.h"
#include "core/evidence/OverviewVideoOverlay.h"
#include "logging/Logging.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QStorageInfo>
#include <QTimeZone>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <limits>
#include <set>
#include <vector>

namespace {
constexpr const char* kLogger = "core.EvidencePack";
// 1 MiB blocks: copying costs little beyond the disks themselves.
constexpr qint64 kBlockSize = 1 << 20;
// Below this much free space a failed write is taken for a full disk: not even one more block would fit.
constexpr qint64 kNearlyFull = kBlockSize;
// The track files are tiny; this share keeps their step visible on the bar.
constexpr qint64 kTrackUnits = 4 * kBlockSize;
// Re-encoding the overview takes some twenty times as long per byte of the cameras' files as copying them
// (x264 "veryfast" on 1080p against a disk copy): its share of the bar, so that the remaining time holds.
constexpr qint64 kOverviewUnitsPerByte = 20;
// A frame and the report are drawn in about the time a few megabytes take to copy.
constexpr qint64 kPictureUnits = 4 * kBlockSize;

const char* const kCameraNames[] = {"front", "rear"};

std::string text(const QString& value) { return value.toStdString(); }

QString offsetText(int seconds) {
    const int minutes = std::abs(seconds) / 60;
    return QStringLiteral("%1%2:%3")
        .arg(seconds < 0 ? QLatin1Char('-') : QLatin1Char('+'))
        .arg(minutes / 60, 2, 10, QLatin1Char('0'))
        .arg(minutes % 60, 2, 10, QLatin1Char('0'));
}

// "2024-06-14T09:01:30+02:00": the moment in local time with its offset.
QString localText(const QDateTime& time) {
    return time.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")) + offsetText(time.offsetFromUtc());
}

QString utcText(const QDateTime& time) { return time.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ssZ")); }

qint64 freeBytes(const QString& folder) {
    const QStorageInfo storage(folder);
    return storage.isValid() ? storage.bytesAvailable() : std::numeric_limits<qint64>::max();
}

// Whether a failed write of about `bytes` was for want of space. A sub-job removes its partial file when it
// fails, so the space it took is free again: what was free before it started tells.
bool isDiskFull(const QString& folder, qint64 freeBefore = std::numeric_limits<qint64>::max(), qint64 bytes = 0) {
    return freeBytes(folder) < kNearlyFull || freeBefore < bytes + kNearlyFull;
}

QString megabytes(qint64 bytes) { return QString::number(double(bytes) / (1024.0 * 1024.0), 'f', 1); }

// Opens a file of the card for reading without touching even its access time where the system allows.
int openSource(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    int fd = ::open(name.constData(), O_RDONLY | O_CLOEXEC | O_NOATIME);
    if (fd < 0 && errno == EPERM) // O_NOATIME is only for the file's owner
        fd = ::open(name.constData(), O_RDONLY | O_CLOEXEC);
    return fd;
}

bool writeAll(int fd, const char* data, qint64 count) {
    while (count > 0) {
        const ssize_t written = ::write(fd, data, static_cast<size_t>(count));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        data += written;
        count -= written;
    }
    return true;
}

qint64 overlapMs(const Playlist::RawItem& item, const TimeInterval& interval) {
    const QDateTime from = std::max(item.from, interval.from);
    const QDateTime to = std::min(item.to, interval.to);
    return from < to ? from.msecsTo(to) : 0;
}

// The items that hold a camera's picture: every item for the front, those with a rear file for the rear
// (a rear clip must never show the front picture).
Playlist::RawItems itemsOfCamera(const Playlist::RawItems& items, int camera) {
    Playlist::RawItems result;
    for (const Playlist::RawItemPtr& item : items)
        if (camera == 0 || item->rearVideo)
            result.push_back(item);
    return result;
}

// About how many bytes a stream copy of the interval reads from a camera's files: each file's share of its time.
qint64 clipBytes(const Playlist::RawItems& items, const TimeInterval& interval, int camera) {
    qint64 bytes = 0;
    for (const Playlist::RawItemPtr& item : itemsOfCamera(items, camera)) {
        const QFileInfo& file = camera == 0 ? item->mainVideo : *item->rearVideo;
        bytes += file.size() * overlapMs(*item, interval) / std::max<qint64>(1, item->from.msecsTo(item->to));
    }
    return bytes;
}

bool hasPositionIn(const Playlist::RawItems& items, const TimeInterval& interval) {
    const TrackTime from = trackTimeFromSeconds(interval.from.toSecsSinceEpoch());
    const TrackTime to = trackTimeFromSeconds(interval.to.toSecsSinceEpoch());
    for (const Playlist::RawItemPtr& item : items)
        if (item->track)
            for (const TrackPosition& position : item->track->positions)
                if (from <= position.time && position.time <= to)
                    return true;
    return false;
}

} // namespace

EvidencePack::EvidencePack(EvidenceRequest request, QObject* parent)
    : BaseEncoder(request.items, request.interval, EncodingSettings{}, parent), m_request(std::move(request)) {
    m_settings.filePath = m_request.folder;
}

QString EvidencePack::refusal(const QString& folder, const QString& cardPath) {
    if (folder.isEmpty())
        return tr("No folder was given for the evidence pack.");
    const QFileInfo target(folder);
    if (target.exists() || target.isSymLink())
        return tr("%1 already exists: an evidence pack always goes into a new folder.").arg(folder);
    const QFileInfo parent(target.absolutePath());
    if (!parent.isDir())
        return tr("The folder %1 does not exist.").arg(parent.absoluteFilePath());
    if (!cardPath.isEmpty()) {
        const QFileInfo card(cardPath);
        const QString cardRoot = card.isDir() ? card.canonicalFilePath() : card.canonicalPath();
        const QString where = parent.canonicalFilePath();
        if (!cardRoot.isEmpty() && (where == cardRoot || where.startsWith(cardRoot + QLatin1Char('/'))))
            return tr("%1 is on the card being read: choose a folder elsewhere.").arg(folder);
    }
    return {};
}

void EvidencePack::encode() {
    m_canceled = false;
    m_failure.clear();
    m_payload.clear();
    m_trackSources.clear();
    m_missingFrames.clear();
    m_track.clear();
    m_marks.clear();
    m_doneUnits = 0;
    m_lastPercent = -1;
    const auto started = std::chrono::steady_clock::now();
    LOG_INFO(kLogger, "Start the evidence pack of {} to {} in '{}'", text(localText(m_interval.from)),
             text(localText(m_interval.to)), text(m_request.folder));
    emit progress(0);

    if (const QString refused = refusal(m_request.folder, m_request.cardPath); !refused.isEmpty()) {
        LOG_ERROR(kLogger, "Refused the evidence pack: {}", text(refused));
        m_failure = refused;
        emit done(false);
        return;
    }
    if (!m_interval.from.isValid() || !m_interval.to.isValid() || !(m_interval.from < m_interval.to)) {
        m_failure = tr("The interval of the evidence pack is empty.");
        emit done(false);
        return;
    }
    if (!QDir().mkdir(m_request.folder)) {
        m_failure = tr("The folder %1 can't be made.").arg(m_request.folder);
        emit done(false);
        return;
    }
    Outcome outcome = Outcome::Failed;
    try {
        outcome = build();
    } catch (const std::exception& error) {
        outcome = fail(tr("The evidence pack failed: %1").arg(QString::fromLocal8Bit(error.what())));
    }
    if (outcome == Outcome::Done && m_canceled)
        outcome = Outcome::Canceled;
    if (outcome != Outcome::Done && !QDir(m_request.folder).removeRecursively())
        LOG_ERROR(kLogger, "Could not remove all of '{}'", text(m_request.folder));

    switch (outcome) {
    case Outcome::Done: {
        const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - started);
        LOG_INFO(kLogger, "The evidence pack in '{}' has been finished ({} ms)", text(m_request.folder), ms.count());
        emit progress(100);
        emit done(true);
        break;
    }
    case Outcome::Failed:
        LOG_ERROR(kLogger, "The evidence pack in '{}' failed: {}", text(m_request.folder), text(m_failure));
        emit done(false);
        break;
    case Outcome::Canceled:
        LOG_INFO(kLogger, "The evidence pack in '{}' has been canceled", text(m_request.folder));
        emit canceled();
        break;
    }
}

QString EvidencePack::diskFullText() const {
    return tr("The disk is full: the evidence pack does not fit into %1.").arg(m_request.folder);
}

EvidencePack::Outcome EvidencePack::fail(const QString& text) {
    if (m_failure.isEmpty())
        m_failure = text;
    return Outcome::Failed;
}

void EvidencePack::advance(qint64 units) {
    m_doneUnits += units;
    // 99 at most until the bag is whole: the last percent is the manifests.
    const int percent = static_cast<int>(std::min<qint64>(99, m_doneUnits * 100 / std::max<qint64>(1, m_totalUnits)));
    if (percent > m_lastPercent) {
        m_lastPercent = percent;
        emit progress(percent);
    }
}

std::vector<EvidencePack::Original> EvidencePack::plannedOriginals() const {
    const qint64 margin = std::max(0, m_request.marginSeconds);
    const TimeInterval widened{m_interval.from.addSecs(-margin), m_interval.to.addSecs(margin)};
    const QFileInfo card(m_request.cardPath);
    const QDir cardDir(card.isDir() ? card.absoluteFilePath() : card.absolutePath());
    std::vector<Original> originals;
    std::set<QString> sources;
    std::set<QString> targets;
    auto add = [&](const QFileInfo& file) {
        if (!sources.insert(file.absoluteFilePath()).second)
            return; // a file that two items share is one original
        // Where the card's layout is known, its folders are kept: Normal/ and Event/ may share names.
        QString relative = cardDir.relativeFilePath(file.absoluteFilePath());
        if (m_request.cardPath.isEmpty() || relative.startsWith(QLatin1String("..")) || QDir::isAbsolutePath(relative))
            relative = file.fileName();
        QString target = QStringLiteral("data/originals/") + relative;
        for (int n = 1; targets.count(target); ++n)
            target = QStringLiteral("data/originals/%1/%2").arg(n).arg(relative);
        targets.insert(target);
        originals.push_back({file.absoluteFilePath(), target});
    };
    for (const Playlist::RawItemPtr& item : exportpaths::itemsOverlapping(m_items, widened)) {
        add(item->mainVideo);
        if (item->rearVideo)
            add(*item->rearVideo);
        if (item->track && item->track->file.isFile() && !item->hasEmbeddedTrack())
            add(item->track->file);
    }
    return originals;
}

EvidencePack::Outcome EvidencePack::build() {
    const std::vector<Original> originals = plannedOriginals();
    if (originals.empty())
        return fail(tr("Nothing was recorded between %1 and %2.").arg(localText(m_interval.from), localText(m_interval.to)));
    const Playlist::RawItems inInterval = exportpaths::itemsOverlapping(m_items, m_interval);

    // The work, in bytes: each original is read twice (copy, check), each clip about its share of its files.
    qint64 originalBytes = 0;
    for (const Original& original : originals)
        originalBytes += QFileInfo(original.source).size();
    // The interval's track and marks, for the overview, the frames and the report.
    m_track = evidence::trackIn(inInterval, m_interval);
    std::copy_if(m_request.marks.begin(), m_request.marks.end(), std::back_inserter(m_marks),
                 [this](const QDateTime& mark) { return m_interval.from <= mark && mark <= m_interval.to; });
    std::sort(m_marks.begin(), m_marks.end());

    // Each clip is written, then read for its hash; the overview is re-encoded from the same bytes.
    const qint64 clips = clipBytes(inInterval, m_interval, 0) + clipBytes(inInterval, m_interval, 1);
    m_overviewUnits = kOverviewUnitsPerByte * clips;
    const qint64 pictures = (m_request.writeFrames ? qint64(2 + m_marks.size()) * kPictureUnits : 0) +
                            (m_request.writeReport ? kPictureUnits : 0);
    m_totalUnits = 2 * originalBytes + 2 * clips + kTrackUnits + m_overviewUnits + pictures;

    // The originals alone must fit; saying so now spares a long wait for a full disk.
    const QStorageInfo storage(m_request.folder);
    if (storage.isValid() && storage.bytesAvailable() < originalBytes)
        return fail(tr("The disk is full: the evidence pack needs at least %1 MB in %2, and %3 MB are free.")
                        .arg(megabytes(originalBytes), m_request.folder, megabytes(storage.bytesAvailable())));

    for (const Original& original : originals)
        if (const Outcome outcome = copyOriginal(original); outcome != Outcome::Done)
            return outcome;
    if (const Outcome outcome = cutClips(); outcome != Outcome::Done)
        return outcome;
    for (auto step : {&EvidencePack::writeTracks, &EvidencePack::makeOverview, &EvidencePack::writeFrames,
                      &EvidencePack::hashPayload, &EvidencePack::writeReport})
        if (const Outcome outcome = (this->*step)(); outcome != Outcome::Done)
            return outcome;
    return finishBag();
}

EvidencePack::Outcome EvidencePack::copyOriginal(const Original& original) {
    if (m_canceled)
        return Outcome::Canceled;
    const QString target = QDir(m_request.folder).filePath(original.target);
    QDir().mkpath(QFileInfo(target).absolutePath());
    LOG_DEBUG(kLogger, "Copy '{}' to '{}'", text(original.source), text(target));

    const int in = openSource(original.source);
    if (in < 0)
        return fail(tr("Can't read %1: %2").arg(original.source, QString::fromLocal8Bit(std::strerror(errno))));
    const int out = ::open(QFile::encodeName(target).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (out < 0) {
        const int error = errno;
        ::close(in);
        return fail(tr("Can't write %1: %2").arg(target, QString::fromLocal8Bit(std::strerror(error))));
    }
    QCryptographicHash hash(QCryptographicHash::Sha256);
    std::vector<char> block(kBlockSize);
    Outcome outcome = Outcome::Done;
    int writeError = 0;
    for (;;) {
        if (m_canceled) {
            outcome = Outcome::Canceled;
            break;
        }
        const ssize_t count = ::read(in, block.data(), kBlockSize);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0) {
            outcome = fail(tr("Can't read %1: %2").arg(original.source, QString::fromLocal8Bit(std::strerror(errno))));
            break;
        }
        if (count == 0)
            break;
        hash.addData(block.data(), static_cast<int>(count));
        if (!writeAll(out, block.data(), count)) {
            writeError = errno;
            outcome = Outcome::Failed;
            break;
        }
        advance(count);
    }
    struct stat source {};
    if (outcome == Outcome::Done && ::fstat(in, &source) == 0) {
        // The copy keeps the original's modification time: it is part of what the card says.
        const struct timespec times[2] = {{0, UTIME_OMIT}, source.st_mtim};
        ::futimens(out, times);
    }
    ::close(in);
    if (::close(out) != 0 && outcome == Outcome::Done) {
        writeError = errno;
        outcome = Outcome::Failed;
    }
    if (outcome == Outcome::Failed && m_failure.isEmpty()) {
        if (writeError == ENOSPC || writeError == EDQUOT || isDiskFull(m_request.folder))
            return fail(diskFullText());
        return fail(tr("Can't write %1: %2").arg(target, QString::fromLocal8Bit(std::strerror(writeError))));
    }
    if (outcome != Outcome::Done)
        return outcome;

    // The copy is read back and must give the original's hash.
    const QByteArray sourceHash = hash.result().toHex();
    const QByteArray copyHash = bagit::sha256OfFile(target, [this](qint64 count) { advance(count); }, &m_canceled);
    if (m_canceled)
        return Outcome::Canceled;
    if (copyHash != sourceHash)
        return fail(tr("The copy %1 differs from its original %2.").arg(target, original.source));
    m_payload.emplace_back(original.target, sourceHash);
    return Outcome::Done;
}

EvidencePack::Outcome EvidencePack::runSubJob(BaseEncoder& job, qint64 units) {
    if (m_canceled)
        return Outcome::Canceled;
    const qint64 start = m_doneUnits;
    Outcome outcome = Outcome::Failed;
    // The sub-job lives on this thread: its signals arrive directly, while it runs.
    connect(&job, &BaseEncoder::progress, [&](int percent) {
        if (m_canceled)
            job.cancel();
        advance(start + units * std::clamp(percent, 0, 100) / 100 - m_doneUnits);
    });
    connect(&job, &BaseEncoder::done, [&](bool ok) { outcome = ok ? Outcome::Done : Outcome::Failed; });
    connect(&job, &BaseEncoder::canceled, [&] { outcome = Outcome::Canceled; });
    job.encode();
    advance(start + units - m_doneUnits);
    return m_canceled ? Outcome::Canceled : outcome;
}

EvidencePack::Outcome EvidencePack::cutClips() {
    const Playlist::RawItems inInterval = exportpaths::itemsOverlapping(m_items, m_interval);
    QDir(m_request.folder).mkpath(QStringLiteral("data/clips"));
    for (int camera = 0; camera < 2; ++camera) {
        const Playlist::RawItems items = itemsOfCamera(inInterval, camera);
        if (items.empty())
            continue;
        const QFileInfo& first = camera == 0 ? items.front()->mainVideo : *items.front()->rearVideo;
        // The camera's own container: a stream copy into another may not hold its streams.
        const QString suffix = first.suffix().toLower() == QLatin1String("mov") ? QStringLiteral("mov") : QStringLiteral("mp4");
        const QString clip = QStringLiteral("data/clips/%1.%2").arg(QLatin1String(kCameraNames[camera]), suffix);
        EncodingSettings settings;
        settings.camera = camera;
        settings.filePath = QDir(m_request.folder).filePath(clip);
        const qint64 units = clipBytes(items, m_interval, camera);
        Remuxer remuxer(items, m_interval, settings);
        const qint64 freeBefore = freeBytes(m_request.folder);
        const Outcome outcome = runSubJob(remuxer, units);
        if (outcome == Outcome::Failed)
            return fail(isDiskFull(m_request.folder, freeBefore, units) ? diskFullText()
                        : camera == 0 ? tr("The front camera's clip could not be cut.")
                                      : tr("The rear camera's clip could not be cut."));
        if (outcome != Outcome::Done)
            return outcome;
    }
    return Outcome::Done;
}

EvidencePack::Outcome EvidencePack::writeTracks() {
    const Playlist::RawItems inInterval = exportpaths::itemsOverlapping(m_items, m_interval);
    for (const Playlist::RawItemPtr& item : inInterval)
        m_trackSources << (item->track && item->track->file.isFile()
                               ? QStringLiteral("%1: %2").arg(item->mainVideo.fileName(), item->track->file.fileName())
                               : QStringLiteral("%1: no track file").arg(item->mainVideo.fileName()));
    if (!hasPositionIn(inInterval, m_interval)) {
        LOG_WARN(kLogger, "No GPS position from {} to {}: the pack has no track", text(localText(m_interval.from)),
                 text(localText(m_interval.to)));
        m_trackSources << QStringLiteral("no GPS position in the interval");
        advance(kTrackUnits);
        return Outcome::Done;
    }
    QDir(m_request.folder).mkpath(QStringLiteral("data/track"));
    const std::pair<TrackExtracter::TrackType, const char*> formats[] = {
        {TrackExtracter::Kml, "track.kml"},
        {TrackExtracter::Csv, "track.csv"},
        {TrackExtracter::Nmea, "track.nmea"},
        {TrackExtracter::Gpx11, "track.gpx"},
    };
    for (const auto& [type, name] : formats) {
        TrackExtracter extracter(inInterval, QDir(m_request.folder).filePath(QStringLiteral("data/track/") + name), type,
                                 m_interval);
        const qint64 freeBefore = freeBytes(m_request.folder);
        const Outcome outcome = runSubJob(extracter, kTrackUnits / 4);
        if (outcome == Outcome::Failed)
            return fail(isDiskFull(m_request.folder, freeBefore, kTrackUnits) ? diskFullText()
                                                     : tr("The track could not be written as %1.").arg(QLatin1String(name)));
        if (outcome != Outcome::Done)
            return outcome;
    }
    return Outcome::Done;
}

EvidencePack::Outcome EvidencePack::makeOverview() {
    const Playlist::RawItems inInterval = exportpaths::itemsOverlapping(m_items, m_interval);
    OverviewVideo overview(inInterval, m_interval, QDir(m_request.folder).filePath(QStringLiteral("data/overview.mp4")),
                           m_track, m_request.speedUnit);
    const qint64 freeBefore = freeBytes(m_request.folder);
    const Outcome outcome = runSubJob(overview, m_overviewUnits);
    if (outcome == Outcome::Failed)
        return fail(isDiskFull(m_request.folder, freeBefore, m_overviewUnits / kOverviewUnitsPerByte)
                        ? diskFullText()
                        : tr("The overview video could not be made."));
    return outcome;
}

EvidencePack::Outcome EvidencePack::writeFrames() {
    if (!m_request.writeFrames)
        return Outcome::Done;
    std::vector<QDateTime> moments{m_interval.from};
    moments.insert(moments.end(), m_marks.begin(), m_marks.end());
    moments.push_back(m_interval.to);
    const QString folder = QDir(m_request.folder).filePath(QStringLiteral("data/frames"));
    QDir().mkpath(folder);
    const Playlist::RawItems inInterval = exportpaths::itemsOverlapping(m_items, m_interval);
    m_missingFrames = m_request.writeFrames(inInterval, m_track, moments, folder, &m_canceled);
    advance(qint64(moments.size()) * kPictureUnits);
    if (m_canceled)
        return Outcome::Canceled;
    if (!m_missingFrames.isEmpty() && isDiskFull(m_request.folder))
        return fail(diskFullText());
    for (const QString& missing : m_missingFrames)
        LOG_WARN(kLogger, "A picture of the pack was not made: {}", text(missing));
    return Outcome::Done;
}

EvidencePack::Outcome EvidencePack::writeReport() {
    if (!m_request.writeReport)
        return Outcome::Done;
    EvidenceSummary summary;
    summary.program = QStringLiteral("%1 %2").arg(QLatin1String(kApplicationName), QLatin1String(kApplicationVersion));
    summary.created = QDateTime::currentDateTime();
    summary.interval = m_interval;
    summary.placeName = m_request.placeName;
    summary.cardPath = QFileInfo(m_request.cardPath).absoluteFilePath();
    summary.cameras << QStringLiteral("Front");
    const Playlist::RawItems inInterval = exportpaths::itemsOverlapping(m_items, m_interval);
    if (!itemsOfCamera(inInterval, 1).empty())
        summary.cameras << QStringLiteral("Rear");
    summary.marks = m_marks;
    summary.track = m_track;
    summary.speedUnit = m_request.speedUnit;
    summary.mapPicture = m_request.mapPicture;
    std::vector<std::pair<QString, QByteArray>> files = m_payload;
    std::sort(files.begin(), files.end());
    for (const auto& [path, hash] : files) {
        const auto kind = path.startsWith(QLatin1String("data/originals/")) ? EvidenceSummary::FileKind::Original
                          : path.startsWith(QLatin1String("data/clips/"))   ? EvidenceSummary::FileKind::Clip
                                                                            : EvidenceSummary::FileKind::Derived;
        summary.files.push_back({path, QFileInfo(QDir(m_request.folder).filePath(path)).size(), QString::fromLatin1(hash), kind});
    }
    const QString report = QStringLiteral("data/report.pdf");
    QString error;
    if (!m_request.writeReport(summary, QDir(m_request.folder).filePath(report), &error))
        return fail(isDiskFull(m_request.folder) ? diskFullText() : tr("The report could not be written: %1").arg(error));
    advance(kPictureUnits);
    if (m_canceled)
        return Outcome::Canceled;
    return hashPayload(); // the report itself
}

EvidencePack::Outcome EvidencePack::hashPayload() {
    const QDir folder(m_request.folder);
    // Everything in data/ that was not hashed while copying: the clips, the tracks and what is derived.
    std::set<QString> hashed;
    for (const auto& entry : m_payload)
        hashed.insert(entry.first);
    QStringList others;
    QDirIterator files(folder.filePath(QStringLiteral("data")), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = folder.relativeFilePath(files.next());
        if (!hashed.count(path))
            others << path;
    }
    others.sort();
    for (const QString& path : others) {
        const QByteArray hash = bagit::sha256OfFile(folder.filePath(path), [this](qint64 count) { advance(count); }, &m_canceled);
        if (m_canceled)
            return Outcome::Canceled;
        if (hash.isEmpty())
            return fail(tr("Can't read %1: %2").arg(folder.filePath(path), QString::fromLocal8Bit(std::strerror(EIO))));
        m_payload.emplace_back(path, hash);
    }
    return Outcome::Done;
}

EvidencePack::Outcome EvidencePack::finishBag() {
    const QDateTime now = QDateTime::currentDateTime();
    const QStorageInfo card(m_request.cardPath);
    const qint64 margin = std::max(0, m_request.marginSeconds);
    bagit::Info info = {
        {QStringLiteral("Bag-Software-Agent"), QStringLiteral("%1 %2").arg(QLatin1String(kApplicationName), QLatin1String(kApplicationVersion))},
        {QStringLiteral("Bagging-Date"), now.toString(QStringLiteral("yyyy-MM-dd"))},
        {QStringLiteral("Bagging-Time"), localText(now)},
        {QStringLiteral("Time-Zone"), QStringLiteral("%1 (UTC%2)").arg(QString::fromUtf8(QTimeZone::systemTimeZoneId()),
                                                                        offsetText(now.offsetFromUtc()))},
        {QStringLiteral("Interval-Local"), localText(m_interval.from) + QStringLiteral(" to ") + localText(m_interval.to)},
        {QStringLiteral("Interval-UTC"), utcText(m_interval.from) + QStringLiteral(" to ") + utcText(m_interval.to)},
        {QStringLiteral("Originals-Margin-Seconds"), QString::number(margin)},
        {QStringLiteral("Card-Path"), QFileInfo(m_request.cardPath).absoluteFilePath()},
        {QStringLiteral("Card-Volume-Label"), card.isValid() && !card.name().isEmpty() ? card.name() : QStringLiteral("(none)")},
        {QStringLiteral("External-Description"),
         QStringLiteral("Recordings of %1 to %2 (local time). data/originals holds the card's files unchanged; "
                        "data/clips holds stream copies of the interval, not re-encoded; data/track holds the GPS "
                        "track of the interval. Derived by this program, not original: data/overview.mp4 (re-encoded, "
                        "with the time, speed and position burned in), data/frames and data/report.pdf.")
             .arg(localText(m_interval.from), localText(m_interval.to))},
    };
    for (const QDateTime& mark : m_marks)
        info.emplace_back(QStringLiteral("Marked-Moment"), localText(mark) + QStringLiteral(" = ") + utcText(mark));
    for (const QString& source : m_trackSources)
        info.emplace_back(QStringLiteral("Track-Source"), source);
    for (const QString& missing : m_missingFrames)
        info.emplace_back(QStringLiteral("Frame-Not-Made"), missing);

    std::vector<bagit::Entry> payload;
    for (const auto& [path, hash] : m_payload)
        payload.push_back({path, hash});
    QString error;
    if (!bagit::writeTagFiles(m_request.folder, payload, info, &error))
        return fail(isDiskFull(m_request.folder) ? diskFullText() : error);
    return Outcome::Done;
}
