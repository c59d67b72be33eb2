// Recording discovery on real folders: names, companions, layouts, timing, repair and bad input.
#include "core/PlaylistDiscovery.h"

#include "core/PlaylistLoader.h"
#include "core/TrackLoader.h"
#include "logging/Logging.h"
#include "support/ErrorOf.h"
#include "support/RecordingFixtures.h"
#include "support/StripeMedia.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

using testing::HasSubstr;
using testsupport::placeVideo;

namespace {

QDateTime localTime(int h, int m, int s) { return QDateTime(QDate(2024, 3, 7), QTime(h, m, s), Qt::LocalTime); }

class PlaylistDiscoveryTest : public testing::Test {
protected:
    QString path(const QString& relative) const { return m_dir.filePath(relative); }
    Playlist::RawItems discover(unsigned threads = 0) {
        PlaylistDiscovery discovery(&PlaylistLoader::probeVideo);
        discovery.setThreadCount(threads);
        return discovery.fromDirectory(m_dir.path());
    }
    std::string failureOf() { return testsupport::errorOf([this] { discover(); }); }
    static QString fileName(const Playlist::RawItemPtr& item) { return item->mainVideo.fileName(); }

    QTemporaryDir m_dir;
};

} // namespace

TEST_F(PlaylistDiscoveryTest, times_an_item_by_its_file_name_and_video_duration) {
    placeVideo(path("Normal/2024_0307_140509_F.MP4"), 2);
    const auto items = discover();
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0]->from, localTime(14, 5, 9));
    EXPECT_EQ(items[0]->to, localTime(14, 5, 11));
    EXPECT_EQ(items[0]->length, 2);
    EXPECT_EQ(items[0]->timeSource, Playlist::TimeSource::ByFileName);
    EXPECT_TRUE(items[0]->timeFromFileName);
    EXPECT_FALSE(items[0]->track);
}

TEST_F(PlaylistDiscoveryTest, pairs_front_with_rear_and_finds_an_upper_case_track) {
    placeVideo(path("Normal/2024_0307_140509_F.MP4"));
    placeVideo(path("Normal/2024_0307_140509_R.MP4"));
    testsupport::writeFile(path("Normal/2024_0307_140509_F.NMEA"), "");
    testsupport::LogCapture capture;
    logging::setLevel(logging::DEBUG);
    const auto items = discover();
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(fileName(items[0]), "2024_0307_140509_F.MP4");
    ASSERT_TRUE(items[0]->rearVideo);
    EXPECT_EQ(items[0]->rearVideo->fileName(), "2024_0307_140509_R.MP4");
    EXPECT_EQ(capture.linesContaining("Found corresponding track file '" +
                                      path("Normal/2024_0307_140509_F.NMEA").toStdString() + "'")
                  .size(),
              1u);
    EXPECT_EQ(capture.linesContaining("Track file base name: 2024_0307_140509_F").size(), 1u);
}

TEST_F(PlaylistDiscoveryTest, rear_file_without_main_file_is_an_item_of_its_own) {
    placeVideo(path("Normal/2024_0307_140509_R.MP4"));
    placeVideo(path("Normal/2024_0307_140609_F.MP4"));
    const auto items = discover();
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(fileName(items[0]), "2024_0307_140509_R.MP4");
    EXPECT_FALSE(items[0]->rearVideo); // a name ending in R has no rear partner of its own
    EXPECT_FALSE(items[1]->rearVideo);
}

TEST_F(PlaylistDiscoveryTest, rear_partner_of_a_name_without_camera_letter_replaces_its_last_character) {
    placeVideo(path("DCIM/DVR-2024-03-07_14-05-09.MP4"));
    placeVideo(path("DCIM/DVR-2024-03-07_14-05-0R.MP4"));
    const auto single = PlaylistDiscovery::rearVideoOf(QFileInfo(path("DCIM/DVR-2024-03-07_14-05-09.MP4")));
    ASSERT_TRUE(single);
    EXPECT_EQ(single->fileName(), "DVR-2024-03-07_14-05-0R.MP4");
    EXPECT_FALSE(PlaylistDiscovery::rearVideoOf(QFileInfo(path("DCIM/DVR-2024-03-07_14-05-0R.MP4"))));
}

TEST_F(PlaylistDiscoveryTest, finds_every_layout_with_its_category) {
    struct Case {
        const char* file;
        std::uint32_t category;
    };
    const Case cases[] = {
        {"F/2024_0307_100000_F.MP4", Playlist::Normal},
        {"Normal/2024_0307_100100_F.MP4", Playlist::Normal},
        {"Parking/2024_0307_100200_F.MP4", Playlist::Parking},
        {"Event/2024_0307_100300_F.MP4", Playlist::Event},
        {"DCIM/2024_0307_100400_F.mov", Playlist::Normal},
        {"CARDV/2024_0307_100500_F.MP4", Playlist::Normal},
        {"CARDV/MOVIE/2024_0307_100600_F.MOV", Playlist::Normal},
        {"CARDV/MOVIE/SOS/2024_0307_100700_F.MP4", Playlist::Event},
        {"CARDV/MOVIE/RO/2024_0307_100800_F.mp4", Playlist::Event},
        {"Lumicor DVR/2024_0307_100900_F.MP4", Playlist::Normal},
        {"Lumicor DVR/DVRlocked/2024_0307_101000_F.MP4", Playlist::Event},
        {"DVRlocked/2024_0307_101100_F.MP4", Playlist::Event},
    };
    for (const Case& c : cases)
        placeVideo(path(c.file));
    placeVideo(path("Other/2024_0307_101200_F.MP4")); // not a recorder folder
    placeVideo(path("2024_0307_101300_F.MP4"));       // beside the layouts, not in one
    const auto items = discover();
    ASSERT_EQ(items.size(), std::size(cases));
    for (std::size_t i = 0; i < items.size(); ++i) {
        SCOPED_TRACE(cases[i].file);
        EXPECT_EQ(items[i]->mainVideo.filePath(), path(cases[i].file));
        EXPECT_EQ(items[i]->category, cases[i].category);
    }
}

TEST_F(PlaylistDiscoveryTest, todays_layouts_pair_their_cameras_and_take_category_and_time_from_folder_and_name) {
    struct Item {
        const char* main;
        const char* rear; // "" for none
        std::size_t further;
        std::uint32_t category;
        QDateTime from;
    };
    struct Layout {
        std::vector<const char*> files;
        std::vector<Item> items; // in time order
    };
    const Layout layouts[] = {
        {{"Record/20240307_140000_NF.mp4", "Record/20240307_140000_NR.mp4", "Record/20240307_140000_NI.mp4",
          "Record/20240307_140100_PF.mp4", "Record/20240307_140200_EF.mp4", "Record/20240307_140200_ER.mp4"},
         {{"Record/20240307_140000_NF.mp4", "Record/20240307_140000_NR.mp4", 1, Playlist::Normal, localTime(14, 0, 0)},
          {"Record/20240307_140100_PF.mp4", "", 0, Playlist::Parking, localTime(14, 1, 0)},
          {"Record/20240307_140200_EF.mp4", "Record/20240307_140200_ER.mp4", 0, Playlist::Event, localTime(14, 2, 0)}}},
        {{"DCIM/Movie/2024_0307_140000_0001F.MP4", "DCIM/Movie/2024_0307_140000_0002R.MP4",
          "DCIM/Movie/RO/2024_0307_140100_0003A.MP4", "DCIM/Movie/RO/2024_0307_140100_0003B.MP4",
          "DCIM/Movie/Parking/2024_0307_140200_0004PF.MP4"},
         {{"DCIM/Movie/2024_0307_140000_0001F.MP4", "DCIM/Movie/2024_0307_140000_0002R.MP4", 0, Playlist::Normal,
           localTime(14, 0, 0)},
          {"DCIM/Movie/RO/2024_0307_140100_0003A.MP4", "DCIM/Movie/RO/2024_0307_140100_0003B.MP4", 0, Playlist::Event,
           localTime(14, 1, 0)},
          {"DCIM/Movie/Parking/2024_0307_140200_0004PF.MP4", "", 0, Playlist::Parking, localTime(14, 2, 0)}}},
        {{"DCIM/NO20240307-140000-000001F.MP4", "DCIM/NO20240307-140000-000001B.MP4",
          "DCIM/EV20240307-140100-000002F.MP4", "DCIM/PA20240307-140200-000003F.MP4"},
         {{"DCIM/NO20240307-140000-000001F.MP4", "DCIM/NO20240307-140000-000001B.MP4", 0, Playlist::Normal,
           localTime(14, 0, 0)},
          {"DCIM/EV20240307-140100-000002F.MP4", "", 0, Playlist::Event, localTime(14, 1, 0)},
          {"DCIM/PA20240307-140200-000003F.MP4", "", 0, Playlist::Parking, localTime(14, 2, 0)}}},
        {{"Car/RecentClips/2024-03-07/2024-03-07_14-00-00-front.mp4",
          "Car/RecentClips/2024-03-07/2024-03-07_14-00-00-back.mp4",
          "Car/RecentClips/2024-03-07/2024-03-07_14-00-00-left_repeater.mp4",
          "Car/RecentClips/2024-03-07/2024-03-07_14-00-00-right_repeater.mp4",
          "Car/SavedClips/2024-03-07_14-01-30/2024-03-07_14-01-00-front.mp4",
          "SentryClips/2024-03-07_14-02-30/2024-03-07_14-02-00-left_repeater.mp4",
          "SentryClips/2024-03-07_14-02-30/2024-03-07_14-02-00-right_repeater.mp4"},
         {{"Car/RecentClips/2024-03-07/2024-03-07_14-00-00-front.mp4",
           "Car/RecentClips/2024-03-07/2024-03-07_14-00-00-back.mp4", 2, Playlist::Normal, localTime(14, 0, 0)},
          {"Car/SavedClips/2024-03-07_14-01-30/2024-03-07_14-01-00-front.mp4", "", 0, Playlist::Event,
           localTime(14, 1, 0)},
          // Without the front and back cameras the first further one stands for the recording.
          {"SentryClips/2024-03-07_14-02-30/2024-03-07_14-02-00-left_repeater.mp4", "", 1, Playlist::Parking,
           localTime(14, 2, 0)}}},
    };
    for (const Layout& layout : layouts) {
        QTemporaryDir card;
        SCOPED_TRACE(layout.files.front());
        for (const char* file : layout.files)
            placeVideo(card.filePath(file));
        testsupport::LogCapture capture;
        PlaylistDiscovery discovery(&PlaylistLoader::probeVideo);
        const auto items = discovery.fromDirectory(card.path());
        ASSERT_EQ(items.size(), layout.items.size());
        for (std::size_t i = 0; i < items.size(); ++i) {
            const Item& expected = layout.items[i];
            SCOPED_TRACE(expected.main);
            EXPECT_EQ(items[i]->mainVideo.filePath(), card.filePath(expected.main));
            EXPECT_EQ(items[i]->rearVideo ? items[i]->rearVideo->filePath() : QString(),
                      *expected.rear ? card.filePath(expected.rear) : QString());
            EXPECT_EQ(items[i]->furtherVideos.size(), expected.further);
            EXPECT_EQ(items[i]->category, expected.category);
            EXPECT_EQ(items[i]->from, expected.from);
            EXPECT_EQ(items[i]->timeSource, Playlist::TimeSource::ByFileName);
        }
        // The further cameras are told about once a folder (here: a folder for each such item), not once a file.
        const auto withFurther = std::count_if(layout.items.begin(), layout.items.end(),
                                               [](const Item& item) { return item.further > 0; });
        EXPECT_EQ(capture.linesContaining("kept with their recordings, not played").size(),
                  static_cast<std::size_t>(withFurther));
        // A single file opened finds the same companions.
        const auto single = discovery.fromFile(card.filePath(layout.items.front().main));
        ASSERT_EQ(single.size(), 1u);
        EXPECT_EQ(single[0]->rearVideo.has_value(), *layout.items.front().rear != '\0');
        EXPECT_EQ(single[0]->furtherVideos.size(), layout.items.front().further);
        EXPECT_EQ(single[0]->category, layout.items.front().category);
    }
}

TEST_F(PlaylistDiscoveryTest, recordings_without_a_dated_one_take_the_container_time_or_the_file_time) {
    // The container's creation time (UTC), as a phone or a camera writes it.
    testsupport::runFfmpeg({"-i", testsupport::tinyVideo(2), "-c", "copy", "-metadata",
                            "creation_time=2024-03-07T13:05:09.000000Z", path("holiday.mp4")});
    // No creation time: the file was last written when the recording ended.
    ASSERT_TRUE(QFile::copy(testsupport::tinyVideo(2), path("beach.MOV")));
    const QDateTime written = QDateTime::fromSecsSinceEpoch(
        QDateTime(QDate(2024, 3, 7), QTime(12, 0, 2), Qt::UTC).toSecsSinceEpoch(), Qt::LocalTime);
    {
        QFile file(path("beach.MOV"));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(written, QFileDevice::FileModificationTime));
    }
    testsupport::LogCapture capture;
    logging::setLevel(logging::DEBUG);
    const auto items = discover();
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(fileName(items[0]), "beach.MOV");
    EXPECT_EQ(items[0]->timeSource, Playlist::TimeSource::ByModificationTime);
    EXPECT_EQ(items[0]->from, written.addSecs(-2));
    EXPECT_EQ(items[0]->to, written);
    EXPECT_EQ(fileName(items[1]), "holiday.mp4");
    EXPECT_EQ(items[1]->timeSource, Playlist::TimeSource::ByCreationTime);
    EXPECT_EQ(items[1]->from, QDateTime(QDate(2024, 3, 7), QTime(13, 5, 9), Qt::UTC).toLocalTime());
    EXPECT_EQ(capture.linesContaining("ByCreationTime '" + path("holiday.mp4").toStdString()).size(), 1u);
    EXPECT_EQ(capture.linesContaining("ByModificationTime '" + path("beach.MOV").toStdString()).size(), 1u);
    // A single such video opens too, and one dated recording leaves the others to be placed by it.
    EXPECT_EQ(PlaylistDiscovery(&PlaylistLoader::probeVideo).fromFile(path("holiday.mp4")).at(0)->timeSource,
              Playlist::TimeSource::ByCreationTime);
    placeVideo(path("2024_0307_100000_F.MP4"), 2);
    EXPECT_EQ(discover().at(1)->timeSource, Playlist::TimeSource::ByPrev);
}

TEST_F(PlaylistDiscoveryTest, plain_directory_of_videos_is_scanned_itself) {
    placeVideo(path("2024_0307_101300_F.MP4"));
    placeVideo(path("sub/2024_0307_101400_F.MP4"));
    const auto items = discover();
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(fileName(items[0]), "2024_0307_101300_F.MP4");
}

TEST_F(PlaylistDiscoveryTest, fails_without_videos_or_without_a_dated_one) {
    EXPECT_EQ(failureOf(), "Nothing found");
    testsupport::writeFile(path("Normal/notes.txt"), "x");
    testsupport::writeFile(path("Normal/2024_0307_140509_F.NMEA"), "");
    EXPECT_EQ(failureOf(), "Nothing found");
    // Neither name, track, container nor file time: a file last written in 1970 is a clock never set.
    ASSERT_TRUE(QFile::copy(testsupport::tinyVideo(1), path("Normal/clip.MP4")));
    QFile file(path("Normal/clip.MP4"));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.setFileTime(QDateTime::fromSecsSinceEpoch(60), QFileDevice::FileModificationTime));
    file.close();
    EXPECT_EQ(failureOf(), "Files not contain any valid GPS position.");
}

TEST_F(PlaylistDiscoveryTest, undated_items_follow_the_item_before_them) {
    placeVideo(path("Normal/2024_0307_140509_F.MP4"), 2);
    placeVideo(path("Normal/clipA.MP4"), 2);
    placeVideo(path("Normal/clipB.MP4"), 1);
    const auto items = discover();
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(fileName(items[1]), "clipA.MP4");
    EXPECT_EQ(items[1]->timeSource, Playlist::TimeSource::ByPrev);
    EXPECT_EQ(items[1]->from, localTime(14, 5, 12)); // one second after the first ends at 14:05:11
    EXPECT_EQ(items[1]->to, localTime(14, 5, 14));
    EXPECT_EQ(items[2]->timeSource, Playlist::TimeSource::ByPrev);
    EXPECT_EQ(items[2]->from, localTime(14, 5, 15));
    EXPECT_EQ(items[2]->to, localTime(14, 5, 16));
}

TEST_F(PlaylistDiscoveryTest, undated_items_before_the_first_dated_one_are_filled_from_the_end) {
    placeVideo(path("Normal/AAA.MP4"), 1);
    placeVideo(path("Normal/BBB.MP4"), 2);
    placeVideo(path("Normal/DVR-2024-03-07_14-05-09.MP4"), 1);
    const auto items = discover();
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(fileName(items[0]), "AAA.MP4");
    EXPECT_EQ(items[0]->timeSource, Playlist::TimeSource::ByNext);
    EXPECT_EQ(items[1]->timeSource, Playlist::TimeSource::ByNext);
    EXPECT_EQ(items[1]->to, localTime(14, 5, 8));
    EXPECT_EQ(items[1]->from, localTime(14, 5, 6));
    EXPECT_EQ(items[0]->to, localTime(14, 5, 5));
    EXPECT_EQ(items[0]->from, localTime(14, 5, 4));
}

TEST_F(PlaylistDiscoveryTest, items_are_sorted_by_start_across_folders) {
    placeVideo(path("Event/2024_0307_140100_F.MP4"));
    placeVideo(path("Normal/2024_0307_140200_F.MP4"));
    placeVideo(path("Normal/2024_0307_140000_F.MP4"));
    const auto items = discover();
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(fileName(items[0]), "2024_0307_140000_F.MP4");
    EXPECT_EQ(fileName(items[1]), "2024_0307_140100_F.MP4");
    EXPECT_EQ(fileName(items[2]), "2024_0307_140200_F.MP4");
}

TEST_F(PlaylistDiscoveryTest, an_undated_item_is_placed_by_its_neighbours_in_time_not_by_the_folder_listed_before) {
    placeVideo(path("Normal/2024_0307_100000_F.MP4"), 1);
    placeVideo(path("Event/0clip.MP4"), 1); // named before the event recording it precedes
    placeVideo(path("Event/2024_0307_080000_F.MP4"), 1);
    const auto items = discover();
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(fileName(items[0]), "0clip.MP4");
    EXPECT_EQ(items[0]->timeSource, Playlist::TimeSource::ByNext);
    EXPECT_EQ(items[0]->to, localTime(7, 59, 59));
    EXPECT_EQ(fileName(items[2]), "2024_0307_100000_F.MP4");
}

TEST_F(PlaylistDiscoveryTest, truncated_video_without_index_is_marked_damaged_and_placed) {
    const QByteArray bytes = testsupport::readFile(testsupport::tinyVideo(2));
    // ffmpeg writes the index (moov) at the end: the first half of the file has none.
    testsupport::writeFile(path("Normal/2024_0307_140509_F.MP4"), bytes.left(bytes.size() / 2));
    placeVideo(path("Normal/2024_0307_140609_F.MP4"), 1);
    testsupport::writeFile(path("Normal/2024_0307_140709_F.MP4"), "not a video at all");
    testsupport::LogCapture capture;
    const auto items = discover();
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(items[0]->durationMs, 0);
    EXPECT_EQ(items[0]->damage, Playlist::Damage::IndexMissing);
    EXPECT_EQ(items[1]->damage, Playlist::Damage::None);
    EXPECT_EQ(items[2]->damage, Playlist::Damage::Unreadable);
    EXPECT_EQ(items[2]->damageDetail, "Invalid data found when processing input"); // FFmpeg's own words
    EXPECT_EQ(items[0]->from, localTime(14, 5, 9));
    EXPECT_EQ(items[0]->to, items[0]->from);
    EXPECT_EQ(capture.linesContaining("Unable to get duration of video " + path("Normal/2024_0307_140509_F.MP4").toStdString()).size(), 1u);
}

TEST_F(PlaylistDiscoveryTest, unparsable_track_leaves_the_item_without_track) {
    placeVideo(path("Normal/2024_0307_140509_F.MP4"));
    testsupport::writeFile(path("Normal/2024_0307_140509_F.nmea"), QByteArray("\x00\x01garbage\xff\xfe", 12));
    testsupport::LogCapture capture;
    const auto items = discover();
    ASSERT_EQ(items.size(), 1u);
    EXPECT_FALSE(items[0]->track);
    EXPECT_EQ(items[0]->timeSource, Playlist::TimeSource::ByFileName);
    EXPECT_EQ(capture.linesContaining("Failed to parse track file " + path("Normal/2024_0307_140509_F.nmea").toStdString()).size(), 1u);
}

TEST_F(PlaylistDiscoveryTest, layout_path_that_is_a_file_or_unreadable_is_skipped_and_the_rest_goes_on) {
    testsupport::writeFile(path("DCIM"), "not a folder");
    placeVideo(path("CARDV/2024_0307_140409_F.MP4"));
    placeVideo(path("Normal/2024_0307_140509_F.MP4"));
    const bool root = geteuid() == 0; // root reads every folder
    if (!root)
        QFile::setPermissions(path("CARDV"), QFile::Permissions());
    const auto items = discover();
    QFile::setPermissions(path("CARDV"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    ASSERT_EQ(items.size(), root ? 2u : 1u);
    EXPECT_EQ(fileName(items.back()), "2024_0307_140509_F.MP4");
}

TEST_F(PlaylistDiscoveryTest, names_with_spaces_and_non_ascii_characters) {
    placeVideo(path(QStringLiteral("Lumicor DVR/DVR-2024-03-07_14-05-09 утро F.MP4")));
    placeVideo(path(QStringLiteral("Lumicor DVR/DVR-2024-03-07_14-05-09 утро R.MP4")));
    placeVideo(path(QStringLiteral("Lumicor DVR/Поездка у моря F.MP4")));
    placeVideo(path(QStringLiteral("Lumicor DVR/Поездка у моря R.MP4")));
    const auto items = discover();
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0]->from, localTime(14, 5, 9));
    ASSERT_TRUE(items[0]->rearVideo);
    EXPECT_EQ(items[0]->rearVideo->fileName(), QStringLiteral("DVR-2024-03-07_14-05-09 утро R.MP4"));
    EXPECT_EQ(fileName(items[1]), QStringLiteral("Поездка у моря F.MP4"));
    ASSERT_TRUE(items[1]->rearVideo);
    EXPECT_EQ(items[1]->timeSource, Playlist::TimeSource::ByPrev);
}

TEST_F(PlaylistDiscoveryTest, ten_thousand_files_in_one_folder) {
    const QDateTime start(QDate(2024, 3, 7), QTime(0, 0), Qt::LocalTime);
    for (int i = 0; i < 10000; ++i)
        placeVideo(path(start.addSecs(i * 5).toString(QStringLiteral("'Normal/'yyyy_MMdd_HHmmss'_F.MP4'"))));
    QElapsedTimer timer;
    timer.start();
    const auto items = discover();
    ASSERT_EQ(items.size(), 10000u);
    EXPECT_EQ(items.front()->from, start);
    EXPECT_EQ(items.back()->from, start.addSecs(9999 * 5));
    for (std::size_t i = 1; i < items.size(); ++i)
        ASSERT_LT(items[i - 1]->from, items[i]->from);
    std::cout << "10,000 files discovered in " << timer.elapsed() << " ms\n";
}

TEST_F(PlaylistDiscoveryTest, results_do_not_depend_on_the_number_of_threads) {
    for (int i = 0; i < 40; ++i)
        placeVideo(path(QStringLiteral("Normal/2024_0307_14%1_F.MP4").arg(i * 100 + 1000, 4, 10, QLatin1Char('0'))),
                   1 + i % 3);
    placeVideo(path("Normal/undated.MP4"), 2);
    const auto one = discover(1);
    const auto many = discover(4);
    ASSERT_EQ(one.size(), many.size());
    for (std::size_t i = 0; i < one.size(); ++i) {
        EXPECT_EQ(one[i]->mainVideo.filePath(), many[i]->mainVideo.filePath());
        EXPECT_EQ(one[i]->from, many[i]->from);
        EXPECT_EQ(one[i]->to, many[i]->to);
        EXPECT_EQ(one[i]->durationMs, many[i]->durationMs);
    }
}

TEST_F(PlaylistDiscoveryTest, single_file_with_its_companions_and_folder_category) {
    placeVideo(path("Parking/2024_0307_140509_F.MP4"));
    placeVideo(path("Parking/2024_0307_140509_R.MP4"));
    placeVideo(path("Parking/2024_0307_140609_F.MP4"));
    PlaylistDiscovery discovery(&PlaylistLoader::videoDurationMs);
    const auto items = discovery.fromFile(path("Parking/2024_0307_140509_F.MP4"));
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0]->category, Playlist::Parking);
    ASSERT_TRUE(items[0]->rearVideo);
    EXPECT_THROW(discovery.fromFile(path("Parking/missing.MP4")), std::runtime_error);
}

TEST_F(PlaylistDiscoveryTest, cancel_stops_the_load) {
    placeVideo(path("Normal/2024_0307_140509_F.MP4"));
    std::atomic_bool cancel{true};
    PlaylistDiscovery discovery(&PlaylistLoader::videoDurationMs, {}, &cancel);
    EXPECT_THROW(discovery.fromDirectory(m_dir.path()), PlaylistLoadCanceled);
}

// Track timing: these need the NMEA parser.

TEST_F(PlaylistDiscoveryTest, track_with_a_fix_every_second_times_the_item_by_track) {
    placeVideo(path("Normal/2024_0307_140509_F.MP4"), 2);
    const QDateTime firstFix = localTime(15, 0, 0); // the file name is wrong: the track decides
    testsupport::writeTrack(path("Normal/2024_0307_140509_F.NMEA"), testsupport::standingFixes(firstFix, 60, 50.0, 14.0));
    const auto items = discover();
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0]->timeSource, Playlist::TimeSource::ByTrack);
    EXPECT_TRUE(items[0]->timeFromFileName);
    EXPECT_EQ(items[0]->from, firstFix);
    EXPECT_EQ(items[0]->to, firstFix.addSecs(2));
    ASSERT_TRUE(items[0]->track);
    EXPECT_EQ(items[0]->track->positions.size(), 60u);
    EXPECT_EQ(items[0]->track->from, firstFix);
    EXPECT_EQ(items[0]->track->to, firstFix.addSecs(59));
}

TEST_F(PlaylistDiscoveryTest, track_starting_without_fix_times_the_item_before_its_first_fix) {
    placeVideo(path("Normal/clip.MP4"), 1);
    const QDateTime start = localTime(15, 0, 0);
    testsupport::writeTrack(path("Normal/clip.nmea"), testsupport::standingFixes(start, 60, 50.0, 14.0, 10));
    const auto items = discover();
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0]->timeSource, Playlist::TimeSource::ByTrackAndOffset);
    EXPECT_EQ(items[0]->track->positions.size(), 50u);
    EXPECT_EQ(items[0]->from, start); // ten seconds before the first fix
}

TEST_F(PlaylistDiscoveryTest, two_missing_fixes_of_sixty_still_count_as_by_track) {
    placeVideo(path("Normal/clip.MP4"), 1);
    const QDateTime start = localTime(15, 0, 0);
    auto fixes = testsupport::standingFixes(start, 60, 50.0, 14.0);
    fixes[20].valid = false;
    fixes[40].valid = false;
    testsupport::writeTrack(path("Normal/clip.nmea"), fixes);
    const auto items = discover();
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0]->timeSource, Playlist::TimeSource::ByTrack);
    EXPECT_EQ(items[0]->from, start);
}

TEST_F(PlaylistDiscoveryTest, track_without_positions_is_dropped) {
    placeVideo(path("Normal/2024_0307_140509_F.MP4"));
    testsupport::writeTrack(path("Normal/2024_0307_140509_F.nmea"),
                            testsupport::standingFixes(localTime(15, 0, 0), 5, 50.0, 14.0, 5));
    testsupport::LogCapture capture;
    const auto items = discover();
    ASSERT_EQ(items.size(), 1u);
    EXPECT_FALSE(items[0]->track);
    EXPECT_EQ(items[0]->timeSource, Playlist::TimeSource::ByFileName);
    EXPECT_EQ(capture.linesContaining("No positions in track").size(), 1u);
}
