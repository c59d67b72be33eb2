// reelvue-cli scan and check on generated cards, as a user runs them.
#include "core/FileNames.h"
#include "support/CliRunner.h"
#include "support/RecordingFixtures.h"

#include <QDateTime>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;
using testsupport::placeVideo;

using testsupport::CliResult;
using testsupport::runCli;

namespace {


class ScanCommandTest : public testing::Test {
protected:
    void SetUp() override {
        placeVideo(path("Normal/2024_0307_140000_F.MP4"), 2);
        placeVideo(path("Normal/2024_0307_140000_R.MP4"), 2);
        placeVideo(path("Normal/2024_0307_140010_F.MP4"), 2);
        placeVideo(path("Parking/2024_0307_140100_F.MP4"), 2);
        placeVideo(path("Event/2024_0307_140200_F.MP4"), 1);
        testsupport::writeFile(path("Photo/.keep"), "");
    }
    QString path(const QString& relative) const { return m_dir.filePath(relative); }

    QTemporaryDir m_dir;
};

} // namespace

TEST_F(ScanCommandTest, lists_raw_items_trips_parking_and_events_as_json) {
    const CliResult result = runCli({"scan", m_dir.path(), "--json"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const QJsonObject root = QJsonDocument::fromJson(QByteArray::fromStdString(result.out)).object();
    const QJsonArray raw = root["rawItems"].toArray();
    ASSERT_EQ(raw.size(), 4);
    const QJsonObject first = raw[0].toObject();
    EXPECT_EQ(first["main"].toString(), path("Normal/2024_0307_140000_F.MP4"));
    EXPECT_EQ(first["rear"].toString(), path("Normal/2024_0307_140000_R.MP4"));
    EXPECT_EQ(first["category"].toString(), "normal");
    EXPECT_EQ(first["from"].toString(), "2024-03-07T14:00:00");
    EXPECT_EQ(first["to"].toString(), "2024-03-07T14:00:02");
    EXPECT_TRUE(first["track"].isNull());
    EXPECT_EQ(first["positions"].toInt(), 0);
    EXPECT_EQ(first["timeSource"].toString(), "ByFileName");
    EXPECT_EQ(raw[2].toObject()["category"].toString(), "parking");

    const QJsonArray trips = root["trips"].toArray();
    ASSERT_EQ(trips.size(), 1);
    EXPECT_EQ(trips[0].toObject()["items"].toArray(), (QJsonArray{0, 1}));
    const QJsonArray parking = root["parking"].toArray();
    ASSERT_EQ(parking.size(), 1);
    EXPECT_EQ(parking[0].toObject()["from"].toString(), "2024-03-07T14:01:00");
    EXPECT_EQ(parking[0].toObject()["items"].toArray(), (QJsonArray{2, 3}));
    const QJsonArray events = root["events"].toArray();
    ASSERT_EQ(events.size(), 1);
    EXPECT_EQ(events[0].toObject()["item"].toInt(), 3);
}

TEST_F(ScanCommandTest, text_output_names_each_part) {
    const CliResult result = runCli({"scan", m_dir.path()});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("Raw items: 4"));
    EXPECT_THAT(result.out, HasSubstr("#0 2024-03-07T14:00:00 - 2024-03-07T14:00:02 normal (ByFileName)"));
    EXPECT_THAT(result.out, HasSubstr("rear:  " + path("Normal/2024_0307_140000_R.MP4").toStdString()));
    EXPECT_THAT(result.out, HasSubstr("Trips: 1\n  2024-03-07T14:00:00 - 2024-03-07T14:00:12 items 0,1\n"));
    EXPECT_THAT(result.out, HasSubstr("Parking: 1\n"));
    EXPECT_THAT(result.out, HasSubstr("Events: 1\n  #3 2024-03-07T14:02:00"));
}

TEST_F(ScanCommandTest, scans_a_single_video_file) {
    const CliResult result = runCli({"scan", path("Normal/2024_0307_140000_F.MP4"), "--json"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const QJsonObject root = QJsonDocument::fromJson(QByteArray::fromStdString(result.out)).object();
    EXPECT_EQ(root["rawItems"].toArray().size(), 1);
}

TEST(ScanCommand, names_that_are_not_utf8_or_hold_a_newline_are_found_and_printed_escaped) {
    keepFileNamesAsGiven(); // so that the test hands the bytes on to the command unchanged
    QTemporaryDir dir;
    const QString card = dir.filePath(QFile::decodeName("card\xff"));
    const QString odd = QFile::decodeName("Normal/2024_0307_140010_line\nbreak\xfe_F.MP4");
    placeVideo(card + "/Normal/2024_0307_140000_F.MP4", 1);
    placeVideo(card + "/" + odd, 1);
    ASSERT_TRUE(QFile::exists(card + "/" + odd));

    const CliResult result = runCli({"scan", card});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("Raw items: 2"));
    const std::string shownCard = dir.path().toStdString() + "/card\\xFF";
    EXPECT_THAT(result.out, HasSubstr("main:  " + shownCard + "/Normal/2024_0307_140010_line\\nbreak\\xFE_F.MP4\n"));
}

TEST(ScanCommand, errors_go_to_stderr_with_a_non_zero_exit) {
    QTemporaryDir empty;
    const CliResult nothing = runCli({"scan", empty.path()});
    EXPECT_EQ(nothing.exitCode, 1);
    EXPECT_THAT(nothing.err, HasSubstr(empty.path().toStdString() + ": Nothing found"));
    EXPECT_TRUE(nothing.out.empty());

    const CliResult missing = runCli({"scan", empty.path() + "/missing"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_THAT(missing.err, HasSubstr("no such file or directory"));

    EXPECT_EQ(runCli({"scan"}).exitCode, 2);
    EXPECT_EQ(runCli({"scan", empty.path(), "--xml"}).exitCode, 2);
}

TEST(CheckCommand, tells_whether_a_path_fits_and_why_not) {
    QTemporaryDir card;
    testsupport::writeFile(card.filePath("DCIM/.keep"), "");
    const CliResult fits = runCli({"check", card.path()});
    EXPECT_EQ(fits.exitCode, 0);
    EXPECT_EQ(fits.out, card.path().toStdString() + ": fits\n");

    QTemporaryDir other;
    testsupport::writeFile(other.filePath("CARDV/.keep"), "");
    const CliResult notFits = runCli({"check", other.path()});
    EXPECT_EQ(notFits.exitCode, 1);
    EXPECT_EQ(notFits.out, other.path().toStdString() + ": does not fit: there isn't required MOVIE directory\n");
}

TEST(ScanCommand, reports_the_cameras_time_source_and_track_source_of_each_recording) {
    QTemporaryDir card;
    for (const char* camera : {"NF", "NR", "NI"})
        placeVideo(card.filePath(QStringLiteral("Record/20240307_140000_%1.mp4").arg(camera)), 2);
    const QString track = card.filePath("Record/20240307_140000_NF.nmea");
    testsupport::writeTrack(track, testsupport::standingFixes(QDateTime(QDate(2024, 3, 7), QTime(13, 0), Qt::UTC), 2, 50.0, 14.0));

    const CliResult text = runCli({"scan", card.path()});
    ASSERT_EQ(text.exitCode, 0) << text.err;
    EXPECT_THAT(text.out, HasSubstr("Raw items: 1\n"));
    EXPECT_THAT(text.out, HasSubstr("normal (ByTrack)\n"));
    EXPECT_THAT(text.out, HasSubstr("      other: " + card.filePath("Record/20240307_140000_NI.mp4").toStdString() +
                                    "\n      cameras: NF, NR, NI (not played)\n      track: " + track.toStdString() +
                                    " (2 positions)\n"));
    const CliResult json = runCli({"scan", card.path(), "--json"});
    const QJsonObject item =
        QJsonDocument::fromJson(QByteArray::fromStdString(json.out)).object()["rawItems"].toArray()[0].toObject();
    EXPECT_EQ(item["cameras"].toArray(), (QJsonArray{"NF", "NR", "NI"}));
    EXPECT_EQ(item["further"].toArray(), QJsonArray{card.filePath("Record/20240307_140000_NI.mp4")});
    EXPECT_EQ(item["trackSource"].toString(), "20240307_140000_NF.nmea");

    // A video whose name gives no date, without track or creation time: timed by its file.
    const QString holiday = card.filePath("holiday.mp4");
    ASSERT_TRUE(QFile::copy(testsupport::tinyVideo(1), holiday));
    const CliResult single = runCli({"scan", holiday});
    ASSERT_EQ(single.exitCode, 0) << single.err;
    EXPECT_THAT(single.out, HasSubstr("normal (ByModificationTime)\n"));
    EXPECT_THAT(single.out, HasSubstr("      cameras: main\n      track: -\n"));
}
