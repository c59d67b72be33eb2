// tools/make-demo-card makes a card that the player reads as a drive, a parking period, a drive and an event.
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

TEST(DemoCard, scans_as_two_trips_a_parking_period_and_one_event) {
    QTemporaryDir dir;
    const QString card = dir.filePath("card");
    QProcess make;
    make.start(QStringLiteral(REELVUE_SOURCE_DIR "/tools/make-demo-card"), {card});
    ASSERT_TRUE(make.waitForFinished(240000));
    ASSERT_EQ(make.exitCode(), 0) << make.readAllStandardError().toStdString();
    EXPECT_TRUE(QFile::exists(card + "/.complete"));

    QProcess check;
    check.start(QStringLiteral(REELVUE_RUN_DIR "/reelvue-cli"), {"check", card});
    ASSERT_TRUE(check.waitForFinished(30000));
    EXPECT_EQ(check.exitCode(), 0);

    QProcess scan;
    scan.start(QStringLiteral(REELVUE_RUN_DIR "/reelvue-cli"), {"scan", card, "--json"});
    ASSERT_TRUE(scan.waitForFinished(60000));
    ASSERT_EQ(scan.exitCode(), 0) << scan.readAllStandardError().toStdString();
    const QJsonObject root = QJsonDocument::fromJson(scan.readAllStandardOutput()).object();

    const QJsonArray raw = root["rawItems"].toArray();
    ASSERT_EQ(raw.size(), 16);
    for (const QJsonValue& item : raw) {
        EXPECT_FALSE(item.toObject()["rear"].isNull());
        EXPECT_EQ(item.toObject()["positions"].toInt() > 0, true);
    }
    // The day starts with a receiver still looking for satellites: dated from the sentences before the fix.
    EXPECT_EQ(raw[0].toObject()["timeSource"].toString(), "ByTrackAndOffset");
    EXPECT_EQ(raw[0].toObject()["from"].toString(), "2024-06-14T09:00:00");
    EXPECT_EQ(raw[1].toObject()["timeSource"].toString(), "ByTrack");

    const QJsonArray trips = root["trips"].toArray();
    ASSERT_EQ(trips.size(), 2);
    EXPECT_EQ(trips[0].toObject()["from"].toString(), "2024-06-14T09:00:00");
    EXPECT_EQ(trips[1].toObject()["to"].toString(), "2024-06-14T09:16:00");
    const QJsonArray parking = root["parking"].toArray();
    ASSERT_EQ(parking.size(), 1);
    EXPECT_EQ(parking[0].toObject()["from"].toString(), "2024-06-14T09:06:00");
    EXPECT_EQ(parking[0].toObject()["to"].toString(), "2024-06-14T09:10:00");
    const QJsonArray events = root["events"].toArray();
    ASSERT_EQ(events.size(), 1);
    EXPECT_EQ(events[0].toObject()["from"].toString(), "2024-06-14T09:13:00");
}
