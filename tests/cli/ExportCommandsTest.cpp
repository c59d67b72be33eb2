// reelvue-cli track and copy on generated cards and real track files, as a user runs them.
#include "core/TrackLoader.h"
#include "support/CliRunner.h"
#include "support/RecordingFixtures.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;

using testsupport::CliResult;
using testsupport::runCli;

namespace {

QDateTime local(int hour, int minute, int second) { return QDateTime(QDate(2024, 3, 7), QTime(hour, minute, second)); }
QString arg(const QDateTime& time) { return time.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")); }

// A card with two recordings of a drive: 14:00:00 (front, rear, track) and 14:00:10 (front, track),
// each track a fix a second for ten seconds.
class ExportCommandsTest : public testing::Test {
protected:
    void SetUp() override {
        testsupport::placeVideo(card("Normal/2024_0307_140000_F.MP4"), 2);
        testsupport::placeVideo(card("Normal/2024_0307_140000_R.MP4"), 2);
        testsupport::writeTrack(card("Normal/2024_0307_140000_F.NMEA"),
                                testsupport::standingFixes(local(14, 0, 0), 10, 50.0, 14.0));
        testsupport::placeVideo(card("Normal/2024_0307_140010_F.MP4"), 2);
        testsupport::writeTrack(card("Normal/2024_0307_140010_F.NMEA"),
                                testsupport::standingFixes(local(14, 0, 10), 10, 50.1, 14.1));
    }
    QString card(const QString& relative) const { return m_card.filePath(relative); }
    QString out(const QString& relative) const { return m_out.filePath(relative); }

    QTemporaryDir m_card;
    QTemporaryDir m_out;
};

} // namespace

TEST_F(ExportCommandsTest, track_of_a_card_interval_spans_both_recordings) {
    const CliResult result =
        runCli({"track", m_card.path(), "--format", "csv", "--from", arg(local(14, 0, 5)), "--to", arg(local(14, 0, 14)), "-o", out("drive.csv")});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, out("drive.csv").toStdString() + "\n");
    const QList<QByteArray> lines = testsupport::readFile(out("drive.csv")).split('\n');
    EXPECT_EQ(lines.size(), 1 + 10 + 1); // header, 14:00:05 to 14:00:14, the final line end
}

TEST_F(ExportCommandsTest, track_of_a_video_file_uses_its_own_track) {
    const CliResult result = runCli({"track", card("Normal/2024_0307_140010_F.MP4"), "--format", "gpx", "-o", out("one.gpx")});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(testsupport::readFile(out("one.gpx")).count("<trkpt "), 10);
}

TEST_F(ExportCommandsTest, track_file_in_every_format_and_the_nmea_copy_loads_back) {
    const QString source = testsupport::fixturePath("nmea/receiver-2004.nmea");
    for (const char* format : {"nmea", "kml", "gpx", "csv", "plt"}) {
        const QString output = out(QStringLiteral("whole.%1").arg(format));
        const CliResult result = runCli({"track", source, "--format", format, "-o", output});
        ASSERT_EQ(result.exitCode, 0) << format << ": " << result.err;
        EXPECT_GT(QFileInfo(output).size(), 0) << format;
    }
    const TrackPositions original = TrackLoader::load(source).positions;
    const TrackPositions copied = TrackLoader::load(out("whole.nmea")).positions;
    ASSERT_EQ(copied.size(), original.size());
    EXPECT_EQ(copied.back().time, original.back().time);
    EXPECT_EQ(copied.back().latitude, original.back().latitude);
}

TEST_F(ExportCommandsTest, track_refuses_bad_arguments_and_writes_nothing) {
    const std::vector<QStringList> bad = {
        {"track", m_card.path(), "--format", "shp", "-o", out("x")},
        {"track", m_card.path(), "--format", "gpx"},
        {"track", m_card.path(), "--format", "gpx", "--from", "7.3.2024 14:00", "-o", out("x")},
        {"track", m_card.path(), "--format", "gpx", "--from", arg(local(14, 0, 9)), "--to", arg(local(14, 0, 1)), "-o", out("x")},
        {"track", "--format", "gpx", "-o", out("x")},
        {"track", m_card.path(), "--format", "gpx", "--attach", card("x.gpx"), "--offset", "1.5", "-o", out("x")},
        {"track", m_card.path(), "--format", "gpx", "--offset", "5", "-o", out("x")},
    };
    for (const QStringList& arguments : bad) {
        const CliResult result = runCli(arguments);
        EXPECT_EQ(result.exitCode, 2) << arguments.join(' ').toStdString();
        EXPECT_THAT(result.err, HasSubstr("Usage: reelvue-cli track"));
    }
    EXPECT_TRUE(QDir(m_out.path()).isEmpty());
}

TEST_F(ExportCommandsTest, track_with_a_phone_track_attached_fills_the_recording_without_one_moved_by_the_offset) {
    testsupport::placeVideo(card("Normal/2024_0307_140020_F.MP4"), 2);
    QByteArray gpx = "<gpx version=\"1.1\" xmlns=\"http://www.topografix.com/GPX/1/1\"><trk><trkseg>\n";
    for (int second = 0; second < 40; ++second)
        gpx += QStringLiteral("<trkpt lat=\"51\" lon=\"%1\"><time>%2</time></trkpt>\n")
                   .arg(15.0 + second * 0.001, 0, 'f', 3)
                   .arg(local(14, 0, second).toUTC().toString(Qt::ISODate))
                   .toUtf8();
    testsupport::writeFile(out("phone.gpx"), gpx + "</trkseg></trk></gpx>\n");
    const CliResult result = runCli({"track", m_card.path(), "--format", "csv", "--from", arg(local(14, 0, 20)), "--to",
                                     arg(local(14, 0, 21)), "--attach", out("phone.gpx"), "--offset", "5", "-o", out("a.csv")});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const QList<QByteArray> lines = testsupport::readFile(out("a.csv")).trimmed().split('\n');
    ASSERT_EQ(lines.size(), 3); // the header, 14:00:20 and 14:00:21, where the phone was at 14:00:15 and 16
    EXPECT_TRUE(lines[1].contains(",15.015000,")) << lines[1].toStdString();
    EXPECT_TRUE(lines[2].contains(",15.016000,")) << lines[2].toStdString();
}

TEST_F(ExportCommandsTest, track_of_an_interval_without_fixes_fails_and_leaves_no_file) {
    const CliResult result =
        runCli({"track", m_card.path(), "--format", "kml", "--from", arg(local(15, 0, 0)), "--to", arg(local(16, 0, 0)), "-o", out("none.kml")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.err, HasSubstr("Failed to save track"));
    EXPECT_TRUE(QDir(m_out.path()).isEmpty());
}

TEST_F(ExportCommandsTest, copy_takes_the_original_files_of_the_overlapping_recordings_once) {
    const QString target = out("saved");
    const QStringList arguments = {"copy", m_card.path(), "--from", arg(local(14, 0, 0)), "--to", arg(local(14, 0, 1)), "-o", target};
    const CliResult result = runCli(arguments);
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(QDir(target).entryList(QDir::Files),
              (QStringList{"2024_0307_140000_F.MP4", "2024_0307_140000_F.NMEA", "2024_0307_140000_R.MP4"}));
    for (const QString& name : QDir(target).entryList(QDir::Files))
        EXPECT_EQ(testsupport::readFile(target + "/" + name), testsupport::readFile(card("Normal/" + name))) << name.toStdString();

    // A second copy into the same folder overwrites nothing and says which files are in the way.
    const CliResult again = runCli(arguments);
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_THAT(again.err, HasSubstr("Already there"));
    EXPECT_THAT(again.err, HasSubstr("2024_0307_140000_R.MP4"));
}

TEST_F(ExportCommandsTest, copy_needs_both_times_and_an_overlapping_recording) {
    EXPECT_EQ(runCli({"copy", m_card.path(), "--from", arg(local(14, 0, 0)), "-o", out("saved")}).exitCode, 2);
    const CliResult none = runCli({"copy", m_card.path(), "--from", arg(local(18, 0, 0)), "--to", arg(local(19, 0, 0)), "-o", out("saved")});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_THAT(none.err, HasSubstr("No recording between"));
    EXPECT_FALSE(QFileInfo::exists(out("saved")));
}
