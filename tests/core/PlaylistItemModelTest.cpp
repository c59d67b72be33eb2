// The playlist tables: date rows, item rows, columns and the figures taken from the tracks.
#include "core/PlaylistItemModel.h"

#include <gtest/gtest.h>

namespace {

QDateTime at(int day, const char* time) {
    return QDateTime(QDate(2024, 5, day), QTime::fromString(time, "HH:mm:ss"), Qt::LocalTime);
}

// A raw item whose track drives north 100 m a second for its whole length, speeding up by 1 km/h a second.
Playlist::RawItemPtr drivenItem(int day, const char* from, int seconds, double startNorth = 0.0) {
    auto item = std::make_shared<Playlist::RawItem>();
    item->mainVideo = QFileInfo(QStringLiteral("/card/%1-%2.MP4").arg(day).arg(from));
    item->from = at(day, from);
    item->to = item->from.addSecs(seconds);
    Playlist::Track track;
    for (int i = 0; i <= seconds; ++i) {
        TrackPosition position;
        position.time = trackTimeFromSeconds(item->from.toSecsSinceEpoch() + i);
        position.latitude = 50.0 + (startNorth + i * 100.0) / 111195.0;
        position.longitude = 14.0;
        position.speed = 30.0 + i;
        track.positions.push_back(position);
    }
    item->track = track;
    return item;
}

Playlist::ProcessedItemPtr processed(const Playlist::RawItems& items, std::uint32_t kind) {
    auto item = std::make_shared<Playlist::ProcessedItem>();
    item->from = items.front()->from;
    item->to = items.back()->to;
    item->items = items;
    item->kind = kind;
    return item;
}

} // namespace

TEST(PlaylistItemModel, puts_a_date_row_above_each_days_items) {
    const Playlist::RawItems items{drivenItem(4, "10:00:00", 60), drivenItem(4, "11:00:00", 60),
                                   drivenItem(5, "09:00:00", 60)};
    PlaylistRawItemModel model(items);
    ASSERT_EQ(model.rowCount(), 5);
    EXPECT_TRUE(model.isDateRow(0));
    EXPECT_EQ(model.itemIndex(1), 0);
    EXPECT_EQ(model.itemIndex(2), 1);
    EXPECT_TRUE(model.isDateRow(3));
    EXPECT_EQ(model.itemIndex(4), 2);
    EXPECT_EQ(model.rowOfItem(2), 4);
    EXPECT_EQ(model.item(4), items[2]);
    EXPECT_EQ(model.item(3), nullptr);
    EXPECT_EQ(model.data(model.index(3, 0), PlaylistItemModel::DateRole).toDate(), QDate(2024, 5, 5));
    EXPECT_FALSE(model.flags(model.index(0, 0)) & Qt::ItemIsSelectable);
    EXPECT_TRUE(model.flags(model.index(1, 0)) & Qt::ItemIsSelectable);
    EXPECT_FALSE(model.index(0, 0).parent().isValid());
    EXPECT_EQ(model.rowCount(model.index(0, 0)), 0);
}

TEST(PlaylistItemModel, trip_rows_show_times_duration_distance_and_top_speed) {
    const Playlist::RawItems items{drivenItem(4, "10:00:00", 60), drivenItem(4, "10:01:00", 60, 6000.0)};
    PlaylistProcessedItemModel model({processed(items, Playlist::Trip)}, Playlist::Trip);
    ASSERT_EQ(model.columnCount(), 5);
    EXPECT_EQ(model.headerData(0, Qt::Horizontal).toString(), "Start");
    EXPECT_EQ(model.headerData(3, Qt::Horizontal).toString(), "Distance");
    EXPECT_EQ(model.headerData(4, Qt::Horizontal).toString(), "Top speed");
    EXPECT_TRUE(model.headerData(4, Qt::Horizontal, Qt::TextAlignmentRole).toInt() & Qt::AlignRight);
    EXPECT_FALSE(model.headerData(0, Qt::Horizontal, Qt::TextAlignmentRole).isValid());
    EXPECT_EQ(model.data(model.index(1, 0)).toString(), "10:00:00");
    EXPECT_EQ(model.data(model.index(1, 1)).toString(), "10:02:00");
    EXPECT_EQ(model.data(model.index(1, 2)).toString(), "02:00");
    // 2 x 60 s at 100 m/s; the fix at the joint second is in both tracks and adds no distance.
    EXPECT_EQ(model.data(model.index(1, 3)).toString(), "12.0 km");
    EXPECT_EQ(model.data(model.index(1, 4)).toString(), "90 km/h");
}

TEST(PlaylistItemModel, parking_rows_show_times_only) {
    const Playlist::RawItems items{drivenItem(4, "10:00:00", 3700)};
    PlaylistProcessedItemModel model({processed(items, Playlist::ParkingPeriod)}, Playlist::ParkingPeriod);
    EXPECT_EQ(model.columnCount(), 3);
    EXPECT_EQ(model.data(model.index(1, 2)).toString(), "1:01:40");
}

TEST(PlaylistItemModel, figures_are_absent_without_a_track) {
    auto item = std::make_shared<Playlist::RawItem>();
    item->mainVideo = QFileInfo("/card/a.MP4");
    item->from = at(4, "10:00:00");
    item->to = at(4, "10:01:00");
    PlaylistRawItemModel model({item});
    EXPECT_EQ(model.data(model.index(1, PlaylistItemModel::DistanceColumn)).toString(), "");
    EXPECT_EQ(model.data(model.index(1, PlaylistItemModel::TopSpeedColumn)).toString(), "");
    EXPECT_EQ(model.data(model.index(1, PlaylistItemModel::FileColumn)).toString(), "a.MP4");
    EXPECT_EQ(PlaylistRawItemModel({}).rowCount(), 0);
}

TEST(PlaylistItemModel, marks_recordings_that_cannot_be_played_and_trips_holding_them) {
    auto damaged = std::make_shared<Playlist::RawItem>(*drivenItem(4, "10:01:00", 60));
    damaged->damage = Playlist::Damage::IndexMissing;
    auto unreadable = std::make_shared<Playlist::RawItem>(*drivenItem(4, "10:02:00", 60));
    unreadable->damage = Playlist::Damage::Unreadable;
    unreadable->damageDetail = QStringLiteral("Invalid data found when processing input");
    const Playlist::RawItems items{drivenItem(4, "10:00:00", 60), damaged, unreadable};

    PlaylistRawItemModel files(items);
    const auto cell = [](const PlaylistItemModel& model, int row, int role) { return model.index(row, 0).data(role); };
    EXPECT_FALSE(cell(files, 1, PlaylistItemModel::DamagedRole).toBool());
    EXPECT_TRUE(cell(files, 1, Qt::ToolTipRole).toString().isEmpty());
    EXPECT_TRUE(cell(files, 2, PlaylistItemModel::DamagedRole).toBool());
    EXPECT_TRUE(cell(files, 2, Qt::ToolTipRole).toString().contains("lost its index"));
    EXPECT_EQ(cell(files, 3, Qt::ToolTipRole).toString(),
              "The recording cannot be read as a video: Invalid data found when processing input");
    EXPECT_EQ(files.index(2, PlaylistItemModel::DurationColumn).data().toString(), "01:00"); // its place in time stays
    // Only a recording whose index was lost can be repaired.
    EXPECT_TRUE(cell(files, 2, PlaylistItemModel::RepairableRole).toBool());
    EXPECT_FALSE(cell(files, 3, PlaylistItemModel::RepairableRole).toBool());

    PlaylistProcessedItemModel trips({processed(items, Playlist::Trip)}, Playlist::Trip);
    EXPECT_TRUE(cell(trips, 1, PlaylistItemModel::DamagedRole).toBool());
    EXPECT_FALSE(cell(trips, 1, PlaylistItemModel::RepairableRole).toBool());
    const QStringList tip = cell(trips, 1, Qt::ToolTipRole).toString().split('\n');
    ASSERT_EQ(tip.size(), 3);
    EXPECT_TRUE(tip[1].startsWith("4-10:01:00.MP4: The recording has lost its index"));
    EXPECT_FALSE(cell(trips, 0, PlaylistItemModel::DamagedRole).toBool()); // the date row
}

TEST(PlaylistItemModel, a_recordings_tooltip_says_where_its_time_came_from_after_why_it_cannot_be_played) {
    auto item = std::make_shared<Playlist::RawItem>(*drivenItem(4, "10:00:00", 60));
    item->timeSource = Playlist::TimeSource::ByModificationTime;
    item->damage = Playlist::Damage::IndexMissing;
    PlaylistRawItemModel files({item});
    const QStringList tip = files.index(1, 0).data(Qt::ToolTipRole).toString().split('\n');
    ASSERT_EQ(tip.size(), 2);
    EXPECT_TRUE(tip[0].contains("lost its index"));
    EXPECT_EQ(tip[1], "Time from the file's modification time, less the length of the recording");
}
