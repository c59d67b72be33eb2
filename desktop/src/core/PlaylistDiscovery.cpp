// Recording discovery: folder layouts, companion files, timing of each recording and repair of the gaps.
#include "core/PlaylistDiscovery.h"

#include "core/ParallelFor.h"
#include "core/RecordingFileName.h"
#include "core/TrackLoader.h"
#include "core/embedded/EmbeddedTrackReader.h"
#include "logging/Logging.h"

#include <QDir>
#include <QElapsedTimer>
#include <QSet>

#include <algorithm>
#include <unordered_map>

namespace {

constexpr const char* kLogger = "core.Playlist";

// The masks "*.mp4", "*.MP4", "*.mov", "*.MOV" and "*.nmea", "*.NMEA", matched without regard to case.
const QStringList kVideoSuffixes = {QStringLiteral(".mp4"), QStringLiteral(".mov")};
const QStringList kTrackSuffixes = {QStringLiteral(".nmea")};

// The recorder's own category folders, in the order they are scanned.
struct CategoryFolder {
    std::uint32_t category;
    const char* name;
};
constexpr CategoryFolder kCategoryFolders[] = {
    {Playlist::Normal, "Normal/"}, {Playlist::Parking, "Parking/"}, {Playlist::Event, "Event/"}};

// The clip folders of cars that record to a USB drive.
constexpr const char* kRecentClips = "RecentClips";
constexpr const char* kSavedClips = "SavedClips";
constexpr const char* kParkedClips = "SentryClips";

// Share of the discovery's progress each stage ends at.
constexpr int kListedPercent = 5;
constexpr int kProbedPercent = 50;
constexpr int kTracksLoadedPercent = 95;

bool isReadableDirectory(const QString& path) {
    const QFileInfo info(path);
    return info.isDir() && info.isReadable();
}

// Matched here rather than by QDir's name filters: those are regular expressions, which skip a name whose
// bytes are not UTF-8 without a word.
QFileInfoList listFiles(const QDir& dir, const QStringList& suffixes) {
    QFileInfoList files;
    for (const QFileInfo& file :
         dir.entryInfoList(QDir::Files | QDir::Readable, QDir::Name | QDir::IgnoreCase | QDir::LocaleAware)) {
        const QString name = file.fileName();
        if (std::any_of(suffixes.begin(), suffixes.end(),
                        [&](const QString& suffix) { return name.endsWith(suffix, Qt::CaseInsensitive); }))
            files.append(file);
    }
    return files;
}

QString describe(const Playlist::RawItem& item) {
    return QStringLiteral("'%1' (%2 - %3)")
        .arg(item.mainVideo.filePath(), item.from.toString(Qt::ISODate), item.to.toString(Qt::ISODate));
}

} // namespace

struct PlaylistDiscovery::Entry {
    QFileInfo mainVideo;
    std::optional<QFileInfo> rearVideo;
    std::uint32_t category = Playlist::Normal;
    QString trackPath; // empty: no track file beside the video
    int folder = 0;    // position of its folder in the scanning order
    std::vector<QFileInfo> furtherVideos;
};

struct PlaylistDiscovery::Probe {
    VideoProbe video;
    std::optional<TrackLoader::Result> track;
    bool embeddedTrack = false; // the track came from inside the main video, which then is its file
};

namespace {

constexpr qint64 kMaxDaysFromNow = 18250; // as for the times in names: further off is a clock never set

// Where no recording of a load could be dated by its name or its track (videos copied off a phone, a camera
// whose names carry no date), each takes the creation time its container states, or else the time its file
// was last written (when the recording ended) less its duration; in whole seconds, as the other times.
template <typename Items, typename Probes>
void dateByFileTimes(Items& items, const Probes& probes) {
    const QDateTime now = QDateTime::currentDateTime();
    const auto plausible = [&](const QDateTime& time) {
        return time.isValid() && std::abs(time.daysTo(now)) < kMaxDaysFromNow;
    };
    for (std::size_t i = 0; i < items.size(); ++i) {
        Playlist::RawItem& item = *items[i];
        const QDateTime created = probes[i].video.creationTime;
        const QDateTime written = item.mainVideo.lastModified();
        if (plausible(created)) {
            item.from = QDateTime::fromSecsSinceEpoch(created.toSecsSinceEpoch(), Qt::LocalTime);
            item.timeSource = Playlist::TimeSource::ByCreationTime;
        } else if (plausible(written)) {
            const qint64 endSeconds = written.toSecsSinceEpoch();
            item.from = QDateTime::fromSecsSinceEpoch(endSeconds - item.durationMs / 1000, Qt::LocalTime);
            item.timeSource = Playlist::TimeSource::ByModificationTime;
        } else {
            continue;
        }
        item.to = item.from.addMSecs(item.durationMs > 0 ? item.durationMs : item.length * 1000);
        LOG_DEBUG(kLogger, "{} {}", Playlist::timeSourceName(item.timeSource), describe(item).toStdString());
    }
}

// The folders of the cameras whose layouts do not start at the card's root, below `base` (the root, or a
// folder of the camera's own name inside it): a Record folder, and the clip folders of cars that record to a
// USB drive, whose recent clips lie in a folder per day and whose kept ones in a folder per event.
void appendClipFolders(const QString& base, std::vector<PlaylistDiscovery::Folder>& folders) {
    folders.push_back({base + "/Record/", Playlist::Normal});
    const std::pair<const char*, std::uint32_t> clipFolders[] = {
        {kRecentClips, Playlist::Normal}, {kSavedClips, Playlist::Event}, {kParkedClips, Playlist::Parking}};
    for (const auto& [name, category] : clipFolders) {
        const QString path = base + "/" + name;
        folders.push_back({path + "/", category});
        for (const QString& day : QDir(path).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name))
            folders.push_back({path + "/" + day + "/", category});
    }
}

bool holdsClipFolders(const QString& path) {
    for (const char* name : {"Record", kRecentClips, kSavedClips, kParkedClips})
        if (isReadableDirectory(path + "/" + name))
            return true;
    return false;
}

void appendTodaysLayouts(const QString& root, std::vector<PlaylistDiscovery::Folder>& folders) {
    folders.push_back({root + "/DCIM/Movie/", Playlist::Normal});
    folders.push_back({root + "/DCIM/Movie/RO/", Playlist::Event});
    folders.push_back({root + "/DCIM/Movie/Parking/", Playlist::Parking});
    appendClipFolders(root, folders);
    for (const QString& sub : QDir(root).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name))
        if (holdsClipFolders(root + "/" + sub))
            appendClipFolders(root + "/" + sub, folders);
}

} // namespace

PlaylistDiscovery::PlaylistDiscovery(ProbeFunction probe, ProgressFunction progress, const std::atomic_bool* cancel)
    : m_probe(std::move(probe)), m_progress(std::move(progress)), m_cancel(cancel) {}

PlaylistDiscovery::PlaylistDiscovery(DurationFunction duration, ProgressFunction progress,
                                     const std::atomic_bool* cancel)
    : PlaylistDiscovery(
          [duration = std::move(duration)](const QString& path) {
              VideoProbe probe;
              probe.durationMs = duration ? duration(path) : 0;
              return probe;
          },
          std::move(progress), cancel) {}

std::vector<PlaylistDiscovery::Folder> PlaylistDiscovery::layoutFolders(const QString& root) {
    // Categories of the layouts: the Parking folder holds parking surveillance, the Event, SOS, RO and
    // DVRlocked folders hold the recorder's locked event recordings, everything else is normal driving.
    std::vector<Folder> candidates = {{root + "/F", Playlist::Normal}};
    for (const CategoryFolder& folder : kCategoryFolders)
        candidates.push_back({root + "/" + folder.name, folder.category});
    candidates.push_back({root + "/DCIM/", Playlist::Normal});
    candidates.push_back({root + "/CARDV/", Playlist::Normal});
    if (isReadableDirectory(root + "/CARDV/")) {
        candidates.push_back({root + "/CARDV/MOVIE/", Playlist::Normal});
        if (isReadableDirectory(root + "/CARDV/MOVIE/")) {
            candidates.push_back({root + "/CARDV/MOVIE/SOS/", Playlist::Event});
            candidates.push_back({root + "/CARDV/MOVIE/RO/", Playlist::Event});
        }
    }
    candidates.push_back({root + "/Lumicor DVR/", Playlist::Normal});
    candidates.push_back({root + "/Lumicor DVR/DVRlocked", Playlist::Event});
    candidates.push_back({root + "/DVRlocked", Playlist::Event});
    appendTodaysLayouts(root, candidates);

    std::vector<Folder> folders;
    for (const Folder& folder : candidates) {
        if (isReadableDirectory(folder.path))
            folders.push_back(folder);
        else
            LOG_TRACE(kLogger, "Skip folder '{}': not a readable directory", folder.path.toStdString());
    }
    return folders;
}

std::uint32_t PlaylistDiscovery::categoryOfFolderName(const QString& folderName) {
    if (folderName == QLatin1String("Parking") || folderName == QLatin1String(kParkedClips))
        return Playlist::Parking;
    if (folderName == QLatin1String("Event") || folderName == QLatin1String("SOS") ||
        folderName == QLatin1String("RO") || folderName == QLatin1String("DVRlocked") ||
        folderName == QLatin1String(kSavedClips))
        return Playlist::Event;
    return Playlist::Normal;
}

std::uint32_t PlaylistDiscovery::categoryOfFolder(const QDir& folder) {
    const std::uint32_t own = categoryOfFolderName(folder.dirName());
    if (own != Playlist::Normal)
        return own;
    QDir parent(folder);
    return parent.cdUp() ? categoryOfFolderName(parent.dirName()) : own;
}

std::optional<QFileInfo> PlaylistDiscovery::rearVideoOf(const QFileInfo& mainVideo) {
    const QString baseName = mainVideo.baseName();
    if (baseName.isEmpty())
        return std::nullopt;
    const QFileInfo rear(mainVideo.dir(), baseName.chopped(1) + "R." + mainVideo.completeSuffix());
    if (!rear.exists() || rear.absoluteFilePath() == mainVideo.absoluteFilePath())
        return std::nullopt;
    return rear;
}

std::vector<PlaylistDiscovery::Entry> PlaylistDiscovery::listFolder(const Folder& folder) const {
    const QDir dir(folder.path);
    const QFileInfoList videos = listFiles(dir, kVideoSuffixes);
    QSet<QString> trackNames;
    for (const QFileInfo& track : listFiles(dir, kTrackSuffixes))
        trackNames.insert(track.fileName());

    auto trackOf = [&](const QString& baseName) -> QString {
        LOG_DEBUG(kLogger, "Track file base name: {}", baseName.toStdString());
        for (const char* suffix : {".nmea", ".NMEA"})
            if (trackNames.contains(baseName + suffix))
                return dir.filePath(baseName + suffix);
        return {};
    };

    // The files of one recording share their name but for the camera (and the suffix as it is written).
    struct Recording {
        std::vector<int> mains, rears, further;
    };
    std::unordered_map<QString, Recording> recordings;
    std::vector<RecordingCamera> cameras;
    std::vector<const Recording*> recordingOf; // per video
    cameras.reserve(videos.size());
    for (int i = 0; i < videos.size(); ++i) {
        cameras.push_back(cameraOfFileName(videos[i].baseName()));
        Recording& recording = recordings[cameras.back().recording + '.' + videos[i].completeSuffix()];
        recordingOf.push_back(&recording); // stays where it is while the map grows
        switch (cameras.back().role) {
        case RecordingCamera::Role::Main: recording.mains.push_back(i); break;
        case RecordingCamera::Role::Rear: recording.rears.push_back(i); break;
        case RecordingCamera::Role::Further: recording.further.push_back(i); break;
        }
    }
    auto entryOf = [&](int video) {
        // A name that states parking or an event says more than a folder of normal recordings.
        const std::uint32_t named = cameras[video].category.value_or(Playlist::Normal);
        const std::uint32_t category = folder.category == Playlist::Normal ? named : folder.category;
        return Entry{videos[video], std::nullopt, category, trackOf(videos[video].baseName()), 0, {}};
    };
    std::vector<Entry> entries;
    int furtherKept = 0;
    auto keepFurther = [&](Entry& entry, const Recording& recording, std::size_t from) {
        for (std::size_t k = from; k < recording.further.size(); ++k) {
            const int video = recording.further[k];
            LOG_DEBUG(kLogger, "Camera '{}' of '{}' is kept with its recording, not played",
                      cameras[video].camera.toStdString(), entry.mainVideo.filePath().toStdString());
            entry.furtherVideos.push_back(videos[video]);
            ++furtherKept;
        }
    };

    // Main-camera files first claim their rear-camera partners and the further cameras.
    std::vector<bool> claimed(videos.size(), false);
    for (int i = 0; i < videos.size(); ++i) {
        if (cameras[i].role != RecordingCamera::Role::Main)
            continue;
        const Recording& recording = *recordingOf[i];
        Entry entry = entryOf(i);
        if (!recording.rears.empty()) {
            entry.rearVideo = videos[recording.rears.front()];
            claimed[recording.rears.front()] = true;
        }
        if (recording.mains.front() == i)
            keepFurther(entry, recording, 0);
        entries.push_back(std::move(entry));
    }
    // A rear-camera file without a main-camera partner is still a recording the user must be able to
    // see, so it becomes an item of its own; so does a further camera's file of a recording without both.
    for (int i = 0; i < videos.size(); ++i) {
        const RecordingCamera::Role role = cameras[i].role;
        if (role == RecordingCamera::Role::Main || claimed[i])
            continue;
        const Recording& recording = *recordingOf[i];
        if (!recording.mains.empty() && role == RecordingCamera::Role::Further)
            continue; // kept above
        if (role == RecordingCamera::Role::Further && (!recording.rears.empty() || recording.further.front() != i))
            continue; // kept with the rear file, or with the first further camera
        LOG_DEBUG(kLogger, "{} file '{}' has no main-camera file, listed on its own",
                  role == RecordingCamera::Role::Rear ? "Rear-camera" : "Camera", videos[i].filePath().toStdString());
        Entry entry = entryOf(i);
        if (role == RecordingCamera::Role::Further)
            keepFurther(entry, recording, 1);
        else if (recording.rears.front() == i)
            keepFurther(entry, recording, 0);
        entries.push_back(std::move(entry));
    }
    if (furtherKept > 0)
        LOG_INFO(kLogger, "{} files of cameras beyond the first two in '{}' are kept with their recordings, not played",
                 furtherKept, folder.path.toStdString());
    return entries;
}

Playlist::RawItems PlaylistDiscovery::fromDirectory(const QString& root) {
    m_timings = {};
    m_lastProgress = -1;
    reportProgress(0);
    QElapsedTimer timer;
    timer.start();
    std::vector<Entry> entries;
    int folderIndex = 0;
    for (const Folder& folder : layoutFolders(root)) {
        throwIfCanceled();
        std::vector<Entry> found = listFolder(folder);
        for (Entry& entry : found)
            entry.folder = folderIndex;
        ++folderIndex;
        LOG_DEBUG(kLogger, "Found {} videos in '{}'", found.size(), folder.path.toStdString());
        std::move(found.begin(), found.end(), std::back_inserter(entries));
    }
    // A plain directory of videos (copied off a card, say) is scanned itself when no layout matched.
    if (entries.empty() && isReadableDirectory(root))
        entries = listFolder({root, Playlist::Normal});
    m_timings.listingMs = timer.elapsed();
    if (entries.empty()) {
        LOG_ERROR(kLogger, "Nothing found in '{}'", root.toStdString());
        throw std::runtime_error(kNothingFound);
    }
    LOG_INFO(kLogger, "Found {} videos in '{}'", entries.size(), root.toStdString());
    return buildItems(std::move(entries));
}

Playlist::RawItems PlaylistDiscovery::fromFile(const QString& videoPath) {
    m_timings = {};
    m_lastProgress = -1;
    reportProgress(0);
    const QFileInfo video(videoPath);
    if (!video.isFile() || !video.isReadable()) {
        LOG_ERROR(kLogger, "Video file '{}' is not a readable file", videoPath.toStdString());
        throw std::runtime_error(kNothingFound);
    }
    // The file's recording as its folder lists it: its rear and further cameras and its track.
    std::vector<Entry> entries;
    for (Entry& entry : listFolder({video.path(), categoryOfFolder(video.dir())})) {
        if (entry.mainVideo.fileName() == video.fileName()) {
            entry.mainVideo = video; // the path as given
            entries.push_back(std::move(entry));
            break;
        }
    }
    // Not the main file of a recording there (a rear camera's file, a video of another format): on its own.
    if (entries.empty()) {
        Entry entry{video, rearVideoOf(video), categoryOfFolder(video.dir()), {}, 0, {}};
        LOG_DEBUG(kLogger, "Track file base name: {}", video.baseName().toStdString());
        for (const char* suffix : {".nmea", ".NMEA"}) {
            const QFileInfo track(video.dir(), video.baseName() + suffix);
            if (track.isFile() && track.isReadable()) {
                entry.trackPath = track.filePath();
                break;
            }
        }
        entries.push_back(std::move(entry));
    }
    return buildItems(std::move(entries));
}

Playlist::RawItems PlaylistDiscovery::buildItems(std::vector<Entry> entries) {
    reportProgress(kListedPercent);
    const std::size_t count = entries.size();
    std::vector<Probe> probes(count);
    auto stageProgress = [this, count](int from, int to) {
        return [this, count, from, to](std::size_t done) {
            reportProgress(from + static_cast<int>((to - from) * done / count));
        };
    };

    QElapsedTimer timer;
    timer.start();
    parallelFor(
        count, [&](std::size_t i) { if (m_probe) probes[i].video = m_probe(entries[i].mainVideo.filePath()); },
        stageProgress(kListedPercent, kProbedPercent), m_cancel, m_threads);
    throwIfCanceled();
    m_timings.probingMs = timer.restart();

    parallelFor(
        count,
        [&](std::size_t i) {
            if (entries[i].trackPath.isEmpty()) {
                // No track file beside the video: the camera may have stored its track inside it.
                const QFileInfo& video = entries[i].mainVideo;
                if (std::optional<EmbeddedTrack> embedded =
                        EmbeddedTrackReader::read(video.filePath(), startTimeFromFileName(video.fileName()))) {
                    probes[i].track = TrackLoader::Result{std::move(embedded->positions), embedded->recordCount};
                    probes[i].embeddedTrack = true;
                }
                return;
            }
            try {
                probes[i].track = TrackLoader::load(entries[i].trackPath);
            } catch (const std::exception& error) {
                LOG_ERROR(kLogger, "Failed to parse track file {} ({})", entries[i].trackPath.toStdString(),
                          error.what());
            }
        },
        stageProgress(kProbedPercent, kTracksLoadedPercent), m_cancel, m_threads);
    throwIfCanceled();
    m_timings.trackLoadingMs = timer.restart();

    std::vector<std::shared_ptr<Playlist::RawItem>> items;
    items.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        Entry& entry = entries[i];
        Probe& probe = probes[i];
        LOG_TRACE(kLogger, "Found video file '{}'", entry.mainVideo.filePath().toStdString());
        auto item = std::make_shared<Playlist::RawItem>();
        item->mainVideo = entry.mainVideo;
        item->rearVideo = entry.rearVideo;
        item->furtherVideos = entry.furtherVideos;
        item->category = entry.category;
        const std::int64_t durationMs = probe.video.durationMs;
        item->durationMs = durationMs;
        item->length = durationMs / 1000;
        item->damage = probe.video.damage;
        item->damageDetail = probe.video.damageDetail;

        const std::optional<QDateTime> nameTime = startTimeFromFileName(entry.mainVideo.fileName());
        item->timeFromFileName = nameTime.has_value();
        if (nameTime) {
            item->from = *nameTime;
            item->to = item->from.addMSecs(durationMs);
            item->timeSource = Playlist::TimeSource::ByFileName;
            LOG_DEBUG(kLogger, "ByFileName {}", describe(*item).toStdString());
        }

        const QString trackPath = probe.embeddedTrack ? entry.mainVideo.filePath() : entry.trackPath;
        if (!trackPath.isEmpty())
            LOG_DEBUG(kLogger, "Found corresponding track file '{}'", trackPath.toStdString());
        if (probe.track) {
            TrackLoader::Result& track = *probe.track;
            if (track.positions.empty()) {
                LOG_WARN(kLogger, "No positions in track '{}'", trackPath.toStdString());
            } else {
                // A video that could not be probed still spans its track: one RMC sentence a second.
                if (item->length == 0)
                    item->length = track.rmcCount;
                const std::int64_t spanMs = durationMs > 0 ? durationMs : item->length * 1000;
                const TrackPosition& first = track.positions.front();
                const QDateTime firstFix = trackTimeToDateTime(first.time);
                const auto positionCount = static_cast<std::int64_t>(track.positions.size());
                if (std::abs(positionCount - static_cast<std::int64_t>(track.rmcCount)) < 3) {
                    item->from = firstFix;
                    item->timeSource = Playlist::TimeSource::ByTrack;
                } else {
                    // The recording began before the first fix, one RMC sentence a second.
                    item->from = firstFix.addSecs(-static_cast<qint64>(first.sentenceNumber));
                    item->timeSource = Playlist::TimeSource::ByTrackAndOffset;
                }
                item->to = item->from.addMSecs(spanMs);
                item->track = Playlist::Track{QFileInfo(trackPath), firstFix,
                                              trackTimeToDateTime(track.positions.back().time),
                                              std::move(track.positions)};
                LOG_DEBUG(kLogger, "{} {}", Playlist::timeSourceName(item->timeSource), describe(*item).toStdString());
            }
        }
        items.push_back(std::move(item));
    }

    if (std::none_of(items.begin(), items.end(), [](const auto& item) { return item->hasValidInterval(); }))
        dateByFileTimes(items, probes);
    if (std::none_of(items.begin(), items.end(), [](const auto& item) { return item->hasValidInterval(); })) {
        LOG_ERROR(kLogger, "None of {} videos could be dated", items.size());
        throw std::runtime_error(kNoneDated);
    }
    std::vector<int> folders;
    folders.reserve(count);
    for (const Entry& entry : entries)
        folders.push_back(entry.folder);
    items = inTimeOrder(std::move(items), folders);
    // Place each undated item next to a dated neighbour, repeating until a run of undated items is filled
    // in from both ends.
    for (bool repaired = true; repaired;) {
        repaired = false;
        for (std::size_t i = 0; i < items.size(); ++i) {
            Playlist::RawItem& item = *items[i];
            if (item.hasValidInterval())
                continue;
            if (i > 0 && items[i - 1]->hasValidInterval()) {
                item.from = items[i - 1]->to.addSecs(1);
                item.to = item.from.addSecs(item.length);
                item.timeSource = Playlist::TimeSource::ByPrev;
                LOG_TRACE(kLogger, "ByPrev {}", describe(item).toStdString());
                repaired = true;
            } else if (i + 1 < items.size() && items[i + 1]->hasValidInterval()) {
                item.to = items[i + 1]->from.addSecs(-1);
                item.from = item.to.addSecs(-item.length);
                item.timeSource = Playlist::TimeSource::ByNext;
                LOG_TRACE(kLogger, "ByNext {}", describe(item).toStdString());
                repaired = true;
            }
        }
    }
    std::stable_sort(items.begin(), items.end(), [](const auto& a, const auto& b) { return a->from < b->from; });
    m_timings.timingMs = timer.elapsed();
    reportProgress(100);

    return Playlist::RawItems(items.begin(), items.end());
}

// A folder lists its files in name order, which is the recorder's order of recording; the folders themselves
// are listed one after another whatever their times. So the dated items are sorted by time, and each undated
// one rides along with the dated item before it in its folder (at the head of a folder: the one after it),
// keeping the neighbours it will be placed by. A folder without any dated item stays after the one listed
// before it.
std::vector<std::shared_ptr<Playlist::RawItem>>
PlaylistDiscovery::inTimeOrder(std::vector<std::shared_ptr<Playlist::RawItem>> items, const std::vector<int>& folders) {
    struct Run {
        QDateTime from; // of its one dated item
        int folder;
        std::vector<std::shared_ptr<Playlist::RawItem>> items;
    };
    std::vector<Run> runs;
    std::vector<std::shared_ptr<Playlist::RawItem>> waiting; // undated, before the first dated item of a folder
    const auto placeWaiting = [&] {
        if (waiting.empty() || runs.empty())
            return; // still nothing to ride with: the next dated item takes them in front of it
        runs.back().items.insert(runs.back().items.end(), waiting.begin(), waiting.end());
        waiting.clear();
    };
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0 && folders[i] != folders[i - 1])
            placeWaiting();
        if (items[i]->hasValidInterval()) {
            waiting.push_back(std::move(items[i]));
            runs.push_back({waiting.back()->from, folders[i], std::move(waiting)});
            waiting.clear();
        } else if (waiting.empty() && !runs.empty() && runs.back().folder == folders[i]) {
            runs.back().items.push_back(std::move(items[i]));
        } else {
            waiting.push_back(std::move(items[i]));
        }
    }
    placeWaiting();
    std::stable_sort(runs.begin(), runs.end(), [](const Run& a, const Run& b) { return a.from < b.from; });
    std::vector<std::shared_ptr<Playlist::RawItem>> ordered;
    ordered.reserve(items.size());
    for (Run& run : runs)
        std::move(run.items.begin(), run.items.end(), std::back_inserter(ordered));
    std::move(waiting.begin(), waiting.end(), std::back_inserter(ordered));
    return ordered;
}

void PlaylistDiscovery::throwIfCanceled() const {
    if (m_cancel && *m_cancel)
        throw PlaylistLoadCanceled();
}

void PlaylistDiscovery::reportProgress(int percent) {
    if (percent <= m_lastProgress)
        return;
    m_lastProgress = percent;
    if (m_progress)
        m_progress(percent);
}
