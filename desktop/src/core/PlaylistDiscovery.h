// Finds the recordings of a card, directory or single video file and gives each one a time interval.
#pragma once

#include "core/Playlist.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>

// Thrown out of a load when its cancel flag was raised.
struct PlaylistLoadCanceled : std::runtime_error {
    PlaylistLoadCanceled() : std::runtime_error("Load canceled") {}
};

// Turns a storage root or one video file into the time-ordered raw items of a playlist. Runs on the
// loader's worker thread; video durations and tracks are read in parallel on all cores.
//
//   PlaylistDiscovery discovery(&PlaylistLoader::probeVideo);
//   Playlist::RawItems items = discovery.fromDirectory("/media/card"); // throws "Nothing found", ...
//
// Failures are std::runtime_error with the texts "Nothing found" and
// "Files not contain any valid GPS position."; a raised cancel flag throws PlaylistLoadCanceled.
class PlaylistDiscovery {
public:
    // The failures' texts, as what() gives them.
    static constexpr const char* kNothingFound = "Nothing found";
    static constexpr const char* kNoneDated = "Files not contain any valid GPS position.";

    // What opening a video told: its length and whether it can be played at all.
    struct VideoProbe {
        std::int64_t durationMs = 0; // 0: unknown
        Playlist::Damage damage = Playlist::Damage::None;
        QString damageDetail;
        QDateTime creationTime; // as the container states it; invalid when it states none
    };
    using ProbeFunction = std::function<VideoProbe(const QString& videoPath)>;
    using DurationFunction = std::function<std::int64_t(const QString& videoPath)>; // milliseconds, 0 unknown
    using ProgressFunction = std::function<void(int percent)>;                       // 0..100, growing

    // Wall time of each stage of the last load, in milliseconds.
    struct Timings {
        std::int64_t listingMs = 0;
        std::int64_t probingMs = 0;
        std::int64_t trackLoadingMs = 0;
        std::int64_t timingMs = 0;
    };

    explicit PlaylistDiscovery(ProbeFunction probe, ProgressFunction progress = {},
                               const std::atomic_bool* cancel = nullptr);
    // Without a word on damage: every video counts as playable.
    explicit PlaylistDiscovery(DurationFunction duration, ProgressFunction progress = {},
                               const std::atomic_bool* cancel = nullptr);

    // Every folder layout a recorder writes below `root`, in a fixed order (see layoutFolders()).
    Playlist::RawItems fromDirectory(const QString& root);
    // One video file with its rear-camera file and track.
    Playlist::RawItems fromFile(const QString& videoPath);

    const Timings& timings() const { return m_timings; }
    // Threads for probing and track loading; 0 (the default) uses every core.
    void setThreadCount(unsigned threads) { m_threads = threads; }

    // A folder to scan and the category its files receive.
    struct Folder {
        QString path;
        std::uint32_t category;
    };
    // The folders of the recorder layouts below `root` that are readable directories, in scanning order.
    static std::vector<Folder> layoutFolders(const QString& root);
    // The category of a single file, guessed from the name of its folder as the layouts name them.
    static std::uint32_t categoryOfFolderName(const QString& folderName);
    // The same for a folder that may be a folder of the day or the event inside a category's folder.
    static std::uint32_t categoryOfFolder(const QDir& folder);
    // The rear-camera file that belongs to a main-camera file: same folder, the base name's last character
    // replaced by "R". Nothing when it does not exist or would be the main file itself.
    static std::optional<QFileInfo> rearVideoOf(const QFileInfo& mainVideo);

private:
    struct Entry; // one main video with its companions, before it is timed
    struct Probe; // what was read from the files of one entry

    std::vector<Entry> listFolder(const Folder& folder) const;
    Playlist::RawItems buildItems(std::vector<Entry> entries);
    static std::vector<std::shared_ptr<Playlist::RawItem>>
    inTimeOrder(std::vector<std::shared_ptr<Playlist::RawItem>> items, const std::vector<int>& folders);
    void throwIfCanceled() const;
    void reportProgress(int percent);

    ProbeFunction m_probe;
    ProgressFunction m_progress;
    const std::atomic_bool* m_cancel;
    unsigned m_threads = 0;
    int m_lastProgress = -1;
    Timings m_timings;
};
