// reelvue-cli positions: a real log printed as text and as JSON, and the failures a user sees.
#include "support/EmbeddedGps.h"
#include "support/RecordingFixtures.h"
#include "support/TestSupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;

namespace {
struct Output {
    int exitCode;
    QByteArray out;
    std::string err;
};

Output runPositions(const QStringList& arguments) {
    QProcess process;
    process.start(QStringLiteral(REELVUE_RUN_DIR "/reelvue-cli"), QStringList{"positions"} + arguments);
    EXPECT_TRUE(process.waitForFinished(30000));
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError().toStdString()};
}
} // namespace

TEST(CliPositions, prints_the_rmc_count_and_one_line_per_position) {
    const Output result = runPositions({testsupport::fixturePath("nmea/receiver-2004.nmea")});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const QList<QByteArray> lines = result.out.trimmed().split('\n');
    ASSERT_EQ(lines.size(), 3 + 154);
    EXPECT_EQ(lines[0].toStdString(), "RMC sentences: 154");
    EXPECT_EQ(lines[1].toStdString(), "Positions: 154");
    // 2004-08-07 03:29:08 UTC; the first fix comes before any speed or course was sent.
    EXPECT_EQ(lines[3].toStdString(), "1091849348 42.530485 -88.12172166666667 0 null null 209.8 1.6 4.9 4.5 5");
}

TEST(CliPositions, json_has_every_field_with_null_for_absent_values) {
    const Output result = runPositions({testsupport::fixturePath("nmea/with-text-and-proprietary.nmea"), "--json"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(result.out, &error);
    ASSERT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    EXPECT_EQ(document["rmcCount"].toInt(), 4);
    const QJsonArray positions = document["positions"].toArray();
    ASSERT_EQ(positions.size(), 4);
    const QJsonObject first = positions[0].toObject();
    EXPECT_EQ(first.keys(), (QStringList{"altitude", "course", "hdop", "latitude", "longitude", "pdop", "satellites",
                                         "sentenceNumber", "speed", "time", "vdop"}));
    EXPECT_EQ(first["time"].toDouble(), 1212696401.0); // 2008-06-05 20:06:41 UTC
    EXPECT_DOUBLE_EQ(first["latitude"].toDouble(), 35 + 49.4991 / 60);
    EXPECT_EQ(first["satellites"].toInt(), 7);

    const Output dateless = runPositions({testsupport::fixturePath("nmea/gga-only.nmea"), "--json"});
    EXPECT_EQ(dateless.exitCode, 0);
    EXPECT_EQ(QJsonDocument::fromJson(dateless.out)["positions"].toArray().size(), 0);
}

TEST(CliPositions, failures_go_to_stderr_with_a_non_zero_exit) {
    QTemporaryDir dir;
    const Output missing = runPositions({dir.filePath("none.nmea")});
    EXPECT_NE(missing.exitCode, 0);
    EXPECT_THAT(missing.err, HasSubstr("Failed to read file: invalid stream ('" + dir.filePath("none.nmea").toStdString() + "')"));
    EXPECT_TRUE(missing.out.isEmpty());
    const Output notNmea = runPositions({testsupport::fixturePath("nmea/utf16-encoded.nmea")});
    EXPECT_NE(notNmea.exitCode, 0);
    EXPECT_THAT(notNmea.err, HasSubstr("Failed to parse as NMEA"));
    // Of several files, one that fails is said and the others are still printed, each under its name.
    const QString log = testsupport::fixturePath("nmea/rmc-gga-vtg-gsa.nmea");
    const Output several = runPositions({dir.filePath("none.nmea"), log});
    EXPECT_EQ(several.exitCode, 1);
    EXPECT_THAT(several.err, HasSubstr("none.nmea"));
    EXPECT_THAT(several.out.toStdString(), HasSubstr("File: " + log.toStdString() + "\nRMC sentences: 6\n"));
    const Output usage = runPositions({});
    EXPECT_EQ(usage.exitCode, 2);
    EXPECT_THAT(usage.err, HasSubstr("Usage: reelvue-cli positions FILE [--json]"));
}

TEST(CliPositions, reads_the_track_embedded_in_a_video) {
    namespace gps = testsupport::gps;
    QTemporaryDir dir;
    const QString video = dir.filePath("MOVI0001.MP4");
    testsupport::placeVideo(video, 2);
    const Output none = runPositions({video});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_THAT(none.err, HasSubstr("No embedded GPS track in '" + video.toStdString() + "'"));

    const QDateTime start(QDate(2024, 6, 14), QTime(6, 0), Qt::UTC);
    ASSERT_TRUE(gps::addFreeGpsListed(video, gps::FreeGpsLayout::Plain, gps::drive(start, 3)));
    const Output result = runPositions({video});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const QList<QByteArray> lines = result.out.trimmed().split('\n');
    ASSERT_EQ(lines.size(), 3 + 3);
    EXPECT_EQ(lines[0].toStdString(), "RMC sentences: 3");
    EXPECT_THAT(lines[3].toStdString(), testing::StartsWith(std::to_string(start.toSecsSinceEpoch()) + " -33.867"));
}
