// Track time and the playlist's filters.
#include "core/Playlist.h"

#include <gtest/gtest.h>

TEST(TrackTime, fraction_of_a_second_is_truncated) {
    const QDate date(2021, 3, 4);
    EXPECT_EQ(makeTrackTime(date, 12, 0, 5.9), makeTrackTime(date, 12, 0, 5.0));
    EXPECT_EQ(makeTrackTime(date, 12, 0, 5.0) - makeTrackTime(date, 12, 0, 4.999), kTrackTicksPerSecond);
    EXPECT_EQ(makeTrackTime(QDate(1970, 1, 1), 0, 0, 1.5), kTrackTicksPerSecond);
}

TEST(TrackTime, converts_to_the_utc_moment_shown_in_local_time) {
    const TrackTime time = makeTrackTime(QDate(2021, 3, 4), 17, 5, 9.25);
    const QDateTime moment = trackTimeToDateTime(time);
    EXPECT_EQ(moment.timeSpec(), Qt::LocalTime);
    EXPECT_EQ(moment.toUTC(), QDateTime(QDate(2021, 3, 4), QTime(17, 5, 9), Qt::UTC));
}

TEST(Playlist, filters_keep_playlist_order_and_share_items) {
    auto raw = [](std::uint32_t category, int minute) {
        auto item = std::make_shared<Playlist::RawItem>();
        item->category = category;
        item->from = QDateTime(QDate(2022, 1, 1), QTime(10, minute));
        item->to = item->from.addSecs(60);
        return Playlist::RawItemPtr(item);
    };
    auto processed = [](std::uint32_t kind, const Playlist::RawItemPtr& item) {
        auto result = std::make_shared<Playlist::ProcessedItem>();
        result->kind = kind;
        result->from = item->from;
        result->to = item->to;
        result->items = {item};
        return Playlist::ProcessedItemPtr(result);
    };
    const Playlist::RawItems raws = {raw(Playlist::Normal, 0), raw(Playlist::Event, 1), raw(Playlist::Parking, 2),
                                     raw(Playlist::Event, 3)};
    const Playlist playlist(raws, {processed(Playlist::Trip, raws[0]), processed(Playlist::ParkingPeriod, raws[2]),
                                   processed(Playlist::Trip, raws[3])});

    const auto events = playlist.rawItemsOfCategory(Playlist::Event);
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0], raws[1]);
    EXPECT_EQ(events[1], raws[3]);
    const auto trips = playlist.processedItemsOfKind(Playlist::Trip);
    ASSERT_EQ(trips.size(), 2u);
    EXPECT_EQ(trips[1]->items.front(), raws[3]);
    EXPECT_EQ(playlist.processedItemsOfKind(Playlist::ParkingPeriod).size(), 1u);
}

TEST(Playlist, absent_optional_values_are_not_zero) {
    TrackPosition position;
    EXPECT_FALSE(position.speed.has_value());
    position.speed = 0.0;
    EXPECT_TRUE(position.speed.has_value());
    Playlist::RawItem item;
    EXPECT_FALSE(item.track.has_value());
    EXPECT_FALSE(item.hasValidInterval());
}
