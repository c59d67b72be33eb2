// The recordings of a card: raw items (one recording interval with its files and track) and processed
// items (trips and parking periods). Items are immutable once loaded and shared as pointers to const.
#pragma once

#include "core/TrackPosition.h"

#include <QDateTime>
#include <QFileInfo>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class Playlist {
public:
    enum Category : std::uint32_t { Normal = 0, Parking = 1, Event = 2 };
    enum Kind : std::uint32_t { Trip = 0, ParkingPeriod = 1 };

    struct Track {
        QFileInfo file;
        QDateTime from; // first fix
        QDateTime to;   // last fix
        TrackPositions positions;
        // Recorded apart from the camera and attached by the user (TrackAttachment): the positions, moved by
        // the user's offset, are the track; the file's own fixes are not.
        bool attached = false;
    };

    // How a raw item got its interval: from its file name, from its track (with the offset of the fixes
    // missing at its start), or from the item before or after it. Where none of a load's recordings is
    // dated that way, each takes the creation time its container states, or else the time its file was
    // last written less its duration.
    enum class TimeSource : std::uint8_t {
        None, ByFileName, ByTrack, ByTrackAndOffset, ByPrev, ByNext, ByCreationTime, ByModificationTime
    };
    static const char* timeSourceName(TimeSource source);

    // Why a recording cannot be played, found while its length is read: its index lost (a camera that lost
    // power before closing the file leaves one behind), or a file the demuxer rejects for another reason.
    enum class Damage : std::uint8_t { None, IndexMissing, Unreadable };

    struct RawItem {
        QFileInfo mainVideo;
        std::optional<QFileInfo> rearVideo;
        std::vector<QFileInfo> furtherVideos; // cameras beyond the first two (interior, sides): not played yet
        std::uint32_t category = Normal;
        QDateTime from;
        QDateTime to;
        std::int64_t length = 0; // whole seconds
        std::optional<Track> track;
        TimeSource timeSource = TimeSource::None;
        bool timeFromFileName = false; // the file name gave a start time (a track may still override it)
        std::int64_t durationMs = 0;   // of the main video; 0 when it could not be read
        Damage damage = Damage::None;  // of the main video
        QString damageDetail;          // the demuxer's own words, in English

        bool hasValidInterval() const { return from.isValid() && to.isValid() && from <= to; }
        bool isDamaged() const { return damage != Damage::None; }
        // The track was read from inside the main video (the camera wrote no track file): its file is the video.
        bool hasEmbeddedTrack() const { return track && track->file.filePath() == mainVideo.filePath(); }
        // Why the main video cannot be played, for the user (translated); empty when it can be.
        QString damageText() const;
    };
    using RawItemPtr = std::shared_ptr<const RawItem>;
    using RawItems = std::vector<RawItemPtr>;

    struct ProcessedItem {
        QDateTime from;
        QDateTime to;
        RawItems items;
        std::uint32_t kind = Trip;
    };
    using ProcessedItemPtr = std::shared_ptr<const ProcessedItem>;
    using ProcessedItems = std::vector<ProcessedItemPtr>;

    // Loads a playlist in the background (PlaylistLoader).
    class ILoader {
    public:
        virtual ~ILoader() = default;
        virtual void loadDirectory(const QString& dir) = 0;
        virtual void loadFile(const QString& filePath) = 0;
        virtual void cancel() = 0;
    };

    Playlist() = default;
    Playlist(RawItems rawItems, ProcessedItems processedItems)
        : m_rawItems(std::move(rawItems)), m_processedItems(std::move(processedItems)) {}

    const RawItems& rawItems() const { return m_rawItems; }
    const ProcessedItems& processedItems() const { return m_processedItems; }

    // The lists behind the tabs: RIDES (Trip), PARKING (ParkingPeriod), EVENTS (category Event).
    ProcessedItems processedItemsOfKind(std::uint32_t kind) const;
    RawItems rawItemsOfCategory(std::uint32_t category) const;

private:
    RawItems m_rawItems;             // ascending by from
    ProcessedItems m_processedItems; // ascending by from
};

using PlaylistPtr = std::shared_ptr<const Playlist>;
