// Cutting raw items into trips and parking periods: gaps, folder events, analyzer events, event files.
#include "core/PlaylistRawItemProcessor.h"

#include "core/PlaylistLoader.h"

#include <gtest/gtest.h>

namespace {

QDateTime at(const char* time) { return QDateTime(QDate(2024, 5, 4), QTime::fromString(time, "HH:mm:ss"), Qt::LocalTime); }

Playlist::RawItemPtr rawItem(const char* from, const char* to, std::uint32_t category = Playlist::Normal,
                             std::optional<Playlist::Track> track = std::nullopt) {
    auto item = std::make_shared<Playlist::RawItem>();
    item->mainVideo = QFileInfo(QStringLiteral("/card/%1.MP4").arg(from));
    item->from = at(from);
    item->to = at(to);
    item->category = category;
    item->track = std::move(track);
    return item;
}

// A track from `from`: `moving` seconds driving north at 50 km/h, then standing until `to`.
Playlist::Track driveThenStand(const char* from, int moving, const char* to) {
    Playlist::Track track;
    const std::int64_t start = at(from).toSecsSinceEpoch();
    const std::int64_t end = at(to).toSecsSinceEpoch();
    double north = 0.0;
    for (std::int64_t second = start; second <= end; ++second) {
        const bool driving = second - start < moving;
        if (driving)
            north += 14.0;
        TrackPosition position;
        position.time = trackTimeFromSeconds(second);
        position.latitude = 50.0 + north * 9e-6;
        position.longitude = 14.0;
        position.speed = driving ? 50.0 : 0.0;
        track.positions.push_back(position);
    }
    track.from = trackTimeToDateTime(track.positions.front().time);
    track.to = trackTimeToDateTime(track.positions.back().time);
    return track;
}

struct Span {
    std::uint32_t kind;
    QDateTime from;
    QDateTime to;
    std::vector<Playlist::RawItemPtr> items;
};

std::vector<Span> process(const Playlist::RawItems& items) {
    PlaylistRawItemProcessor processor(PlaylistLoader::analyzerSettings(), PlaylistLoader::kGapThresholdSeconds);
    for (const auto& item : items)
        processor.process(item);
    std::vector<Span> spans;
    for (const auto& processed : processor.processedItems())
        spans.push_back({processed->kind, processed->from, processed->to, processed->items});
    return spans;
}

} // namespace

TEST(PlaylistRawItemProcessor, a_single_item_without_track_is_one_trip) {
    const auto item = rawItem("10:00:00", "10:01:00");
    const auto spans = process({item});
    ASSERT_EQ(spans.size(), 1u);
    EXPECT_EQ(spans[0].kind, Playlist::Trip);
    EXPECT_EQ(spans[0].from, at("10:00:00"));
    EXPECT_EQ(spans[0].to, at("10:01:00"));
    EXPECT_EQ(spans[0].items, (Playlist::RawItems{item}));
}

TEST(PlaylistRawItemProcessor, a_pause_longer_than_300_seconds_splits_trips_at_the_earlier_end) {
    const auto first = rawItem("10:00:00", "10:05:00");
    const auto afterGap = rawItem("10:10:01", "10:15:00");
    const auto spans = process({first, afterGap});
    ASSERT_EQ(spans.size(), 2u);
    EXPECT_EQ(spans[0].to, at("10:05:00"));
    EXPECT_EQ(spans[0].items, (Playlist::RawItems{first}));
    EXPECT_EQ(spans[1].from, at("10:10:01"));
    EXPECT_EQ(spans[1].items, (Playlist::RawItems{afterGap}));

    const auto exactly300 = rawItem("10:10:00", "10:15:00");
    const auto joined = process({first, exactly300});
    ASSERT_EQ(joined.size(), 1u);
    EXPECT_EQ(joined[0].items, (Playlist::RawItems{first, exactly300}));
}

TEST(PlaylistRawItemProcessor, parking_found_inside_an_item_cuts_it_and_lists_it_on_both_sides) {
    const auto item = rawItem("10:00:00", "10:10:00", Playlist::Normal, driveThenStand("10:00:00", 60, "10:10:00"));
    const auto spans = process({item});
    ASSERT_EQ(spans.size(), 2u);
    EXPECT_EQ(spans[0].kind, Playlist::Trip);
    EXPECT_EQ(spans[0].from, at("10:00:00"));
    EXPECT_EQ(spans[0].to, at("10:00:59")); // the last moving fix
    EXPECT_EQ(spans[1].kind, Playlist::ParkingPeriod);
    EXPECT_EQ(spans[1].from, at("10:00:59"));
    EXPECT_EQ(spans[1].to, at("10:10:00"));
    EXPECT_EQ(spans[0].items, (Playlist::RawItems{item}));
    EXPECT_EQ(spans[1].items, (Playlist::RawItems{item}));
}

TEST(PlaylistRawItemProcessor, an_event_at_the_end_of_an_item_closes_it_there) {
    const auto driving = rawItem("10:00:00", "10:05:00");
    const auto parked = rawItem("10:05:00", "10:06:00", Playlist::Parking);
    const auto parkedMore = rawItem("10:06:01", "10:07:00", Playlist::Parking);
    const auto spans = process({driving, parked, parkedMore});
    ASSERT_EQ(spans.size(), 2u);
    EXPECT_EQ(spans[0].kind, Playlist::Trip);
    EXPECT_EQ(spans[0].to, at("10:05:00"));
    EXPECT_EQ(spans[0].items, (Playlist::RawItems{driving}));
    EXPECT_EQ(spans[1].kind, Playlist::ParkingPeriod);
    EXPECT_EQ(spans[1].from, at("10:05:00"));
    EXPECT_EQ(spans[1].to, at("10:07:00"));
    EXPECT_EQ(spans[1].items, (Playlist::RawItems{parked, parkedMore}));
}

TEST(PlaylistRawItemProcessor, an_event_recording_inside_a_trip_does_not_split_it) {
    const auto before = rawItem("10:00:00", "10:01:00");
    const auto event = rawItem("10:01:00", "10:02:00", Playlist::Event);
    const auto after = rawItem("10:02:00", "10:03:00");
    const auto spans = process({before, event, after});
    ASSERT_EQ(spans.size(), 1u);
    EXPECT_EQ(spans[0].kind, Playlist::Trip);
    EXPECT_EQ(spans[0].from, at("10:00:00"));
    EXPECT_EQ(spans[0].to, at("10:03:00"));
}

TEST(PlaylistRawItemProcessor, only_event_recordings_make_no_trips_or_parking) {
    EXPECT_TRUE(process({rawItem("10:00:00", "10:01:00", Playlist::Event),
                         rawItem("11:00:00", "11:01:00", Playlist::Event)})
                    .empty());
    EXPECT_TRUE(process({}).empty());
}

TEST(PlaylistRawItemProcessor, parking_folder_after_a_trip_starts_a_parking_period) {
    const auto drive = rawItem("10:00:00", "10:05:00");
    const auto park1 = rawItem("10:05:30", "10:06:30", Playlist::Parking);
    const auto drive2 = rawItem("10:07:00", "10:12:00");
    const auto spans = process({drive, park1, drive2});
    ASSERT_EQ(spans.size(), 3u);
    EXPECT_EQ(spans[0].kind, Playlist::Trip);
    EXPECT_EQ(spans[1].kind, Playlist::ParkingPeriod);
    EXPECT_EQ(spans[1].from, at("10:05:30"));
    EXPECT_EQ(spans[2].kind, Playlist::Trip);
    EXPECT_EQ(spans[2].from, at("10:07:00"));
}
