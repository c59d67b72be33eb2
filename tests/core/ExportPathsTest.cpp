// Names of saved cuts and tracks, the track beside a saved video, and the commands that copy an item.
#include "core/ExportPaths.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QDateTime local(int hour, int minute, int second) { return QDateTime(QDate(2019, 9, 13), QTime(hour, minute, second)); }

Playlist::RawItemPtr item(const QString& main, std::optional<QString> rear, std::optional<QString> track,
                          QDateTime from = {}, QDateTime to = {}) {
    auto raw = std::make_shared<Playlist::RawItem>();
    raw->mainVideo = QFileInfo(main);
    if (rear)
        raw->rearVideo = QFileInfo(*rear);
    if (track)
        raw->track = Playlist::Track{QFileInfo(*track), {}, {}, {}};
    raw->from = from;
    raw->to = to;
    return raw;
}

} // namespace

TEST(ExportPaths, proposed_name_is_dvr_with_both_ends_and_the_extension) {
    EXPECT_EQ(exportpaths::proposedFileName({local(10, 30, 20), local(10, 45, 0)}, "gpx"),
              "dvr-20190913T103020-20190913T104500.gpx");
}

TEST(ExportPaths, track_beside_a_video_keeps_its_folder_and_base_name) {
    EXPECT_EQ(exportpaths::trackPathBesideVideo("/home/me/Videos/dvr-1-2.mp4"), "/home/me/Videos/dvr-1-2.nmea");
    EXPECT_EQ(exportpaths::trackPathBesideVideo("/tmp/a.b.mkv"), "/tmp/a.b.nmea");
}

// No ~/Videos on a fresh system: the save dialog starts in the next folder that is there, in the end home.
TEST(ExportPaths, first_existing_folder_passes_over_missing_and_empty_ones) {
    QTemporaryDir dir;
    const QString missing = dir.filePath("Videos");
    EXPECT_EQ(exportpaths::firstExistingFolder({QString(), missing, dir.path()}), dir.path());
    EXPECT_EQ(exportpaths::firstExistingFolder({missing, QString()}), QDir::homePath());
}

TEST(ExportPaths, copy_commands_take_main_rear_and_track_of_each_item_under_their_own_names) {
    const Playlist::RawItems items = {item("/card/Normal/F/A_F.MP4", QString("/card/Normal/R/A_R.MP4"), QString("/card/Normal/F/A_F.NMEA")),
                                      item("/card/Normal/F/B_F.MP4", std::nullopt, std::nullopt)};
    const FileCopierCommandVector commands = exportpaths::copyCommands(items, "/save");
    const FileCopierCommandVector expected = {{"/card/Normal/F/A_F.MP4", "/save/A_F.MP4"},
                                              {"/card/Normal/R/A_R.MP4", "/save/A_R.MP4"},
                                              {"/card/Normal/F/A_F.NMEA", "/save/A_F.NMEA"},
                                              {"/card/Normal/F/B_F.MP4", "/save/B_F.MP4"}};
    EXPECT_EQ(commands, expected);
}

TEST(ExportPaths, existing_destinations_are_listed) {
    QTemporaryDir dir;
    QFile(dir.filePath("here.MP4")).open(QIODevice::WriteOnly);
    const FileCopierCommandVector commands = {{"/a", dir.filePath("here.MP4")}, {"/b", dir.filePath("not-here.MP4")}};
    EXPECT_EQ(exportpaths::existingDestinations(commands), QStringList{dir.filePath("here.MP4")});
}

TEST(ExportPaths, overlapping_items_share_some_time_with_the_interval) {
    const Playlist::RawItems items = {item("/a", {}, {}, local(10, 0, 0), local(10, 1, 0)),
                                      item("/b", {}, {}, local(10, 1, 0), local(10, 2, 0)),
                                      item("/c", {}, {}, local(10, 2, 0), local(10, 3, 0))};
    const auto names = [](const Playlist::RawItems& chosen) {
        QStringList list;
        for (const auto& i : chosen)
            list << i->mainVideo.fileName();
        return list;
    };
    EXPECT_EQ(names(exportpaths::itemsOverlapping(items, {local(10, 0, 30), local(10, 1, 30)})), (QStringList{"a", "b"}));
    // Touching ends share no time.
    EXPECT_EQ(names(exportpaths::itemsOverlapping(items, {local(10, 1, 0), local(10, 2, 0)})), QStringList{"b"});
}
