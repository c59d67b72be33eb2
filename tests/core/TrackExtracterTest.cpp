// The track export job on real NMEA logs: each format, the NMEA copy loading back, failure and cancel.
#include "core/TrackExtracter.h"

#include "core/TrackLoader.h"
#include "support/JobEvents.h"
#include "support/NmeaSentences.h"
#include "support/RecordingFixtures.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QThread>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using testsupport::JobEvents;
using testsupport::readFile;

namespace {

QDateTime utc(int year, int month, int day, int hour, int minute, int second) {
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second), Qt::UTC).toLocalTime();
}

// receiver-2004.nmea: one fix a second from 03:29:08 to 03:31:41 UTC on 7 August 2004.
const TimeInterval kMinuteOfReceiver{utc(2004, 8, 7, 3, 29, 30), utc(2004, 8, 7, 3, 30, 29)};

Playlist::RawItemPtr itemWithTrack(const QString& trackPath) {
    auto item = std::make_shared<Playlist::RawItem>();
    item->mainVideo = QFileInfo(QFileInfo(trackPath).dir().filePath(QFileInfo(trackPath).completeBaseName() + ".mp4"));
    item->track = Playlist::Track{QFileInfo(trackPath), {}, {}, {}};
    return item;
}

Playlist::RawItems receiverItems() { return {itemWithTrack(testsupport::fixturePath("nmea/receiver-2004.nmea"))}; }

TrackPositions positionsBetween(const QString& trackPath, const TimeInterval& interval) {
    TrackPositions all = TrackLoader::load(trackPath).positions;
    const TrackTime from = trackTimeFromSeconds(interval.from.toSecsSinceEpoch());
    const TrackTime to = trackTimeFromSeconds(interval.to.toSecsSinceEpoch());
    TrackPositions inside;
    std::copy_if(all.begin(), all.end(), std::back_inserter(inside),
                 [&](const TrackPosition& p) { return from <= p.time && p.time <= to; });
    return inside;
}

QStringList filesIn(const QTemporaryDir& dir) {
    return QDir(dir.path()).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
}

class TrackExtracterTest : public ::testing::Test {
protected:
    QTemporaryDir dir;
    QString output(const QString& name) const { return dir.filePath(name); }
};

} // namespace

TEST_F(TrackExtracterTest, csv_of_an_interval_holds_its_fixes_with_both_ends_included) {
    TrackExtracter job(receiverItems(), output("minute.csv"), TrackExtracter::Csv, kMinuteOfReceiver);
    JobEvents record(job);
    job.run();
    EXPECT_EQ(record.endings(), std::vector<std::string>{"done 1"});
    EXPECT_EQ(record.events.front(), "progress 0");
    EXPECT_EQ(record.events[record.events.size() - 2], "progress 100");

    const QList<QByteArray> lines = readFile(output("minute.csv")).split('\n');
    ASSERT_EQ(lines.size(), 1 + 60 + 1); // header, 60 fixes, nothing after the last line end
    EXPECT_TRUE(lines[1].startsWith("2004.08.07 03:29:30,42.")) << lines[1].toStdString();
    EXPECT_TRUE(lines[60].startsWith("2004.08.07 03:30:29,42.")) << lines[60].toStdString();
    EXPECT_EQ(lines[61], "");
    for (int i = 1; i <= 60; ++i)
        EXPECT_EQ(lines[i].count(','), 8) << lines[i].toStdString();
    EXPECT_EQ(filesIn(dir), QStringList{"minute.csv"}); // no partial file left beside it
}

TEST_F(TrackExtracterTest, gpx_and_kml_of_a_real_log_are_well_formed_with_one_point_per_fix) {
    const std::size_t fixes = positionsBetween(testsupport::fixturePath("nmea/receiver-2004.nmea"), kMinuteOfReceiver).size();
    const struct {
        TrackExtracter::TrackType type;
        const char* name;
        const char* pointElement;
        std::size_t extraElements;
    } cases[] = {{TrackExtracter::Gpx, "minute.gpx", "trkpt", 0}, {TrackExtracter::Kml, "minute.kml", "Placemark", 1}};
    for (const auto& c : cases) {
        TrackExtracter job(receiverItems(), output(c.name), c.type, kMinuteOfReceiver);
        JobEvents record(job);
        job.run();
        ASSERT_EQ(record.endings(), std::vector<std::string>{"done 1"}) << c.name;
        QXmlStreamReader reader(readFile(output(c.name)));
        std::size_t points = 0;
        while (!reader.atEnd())
            if (reader.readNext() == QXmlStreamReader::StartElement && reader.name() == QLatin1String(c.pointElement))
                ++points;
        EXPECT_FALSE(reader.hasError()) << c.name << ": " << reader.errorString().toStdString();
        EXPECT_EQ(points, fixes + c.extraElements) << c.name;
    }
}

TEST_F(TrackExtracterTest, plt_counts_its_points_in_the_header) {
    TrackExtracter job(receiverItems(), output("minute.plt"), TrackExtracter::Plt, kMinuteOfReceiver);
    job.run();
    const QList<QByteArray> lines = readFile(output("minute.plt")).split('\n');
    ASSERT_GT(lines.size(), 7);
    EXPECT_EQ(lines[5], "60");
    EXPECT_EQ(lines.size(), 6 + 60 + 1);
    EXPECT_TRUE(lines[6].endsWith(",070804,032930.000")) << lines[6].toStdString();
    const QList<QByteArray> fields = lines[6].split(',');
    ASSERT_EQ(fields.size(), 7);
    EXPECT_GT(fields[3].toDouble(), 600.0); // some 209 m from the GGA sentences, in feet
}

TEST_F(TrackExtracterTest, nmea_copy_of_an_interval_loads_back_to_the_same_positions) {
    for (const char* fixture : {"nmea/receiver-2004.nmea", "nmea/mixed-time-precision.nmea", "nmea/with-text-and-proprietary.nmea"}) {
        const QString source = testsupport::fixturePath(fixture);
        const TrackPositions all = TrackLoader::load(source).positions;
        ASSERT_GE(all.size(), 4u) << fixture;
        // From the second fix to the one before the last: both ends fall inside the log.
        const TimeInterval interval{trackTimeToDateTime(all[1].time), trackTimeToDateTime(all[all.size() - 2].time)};
        const TrackPositions expected = positionsBetween(source, interval);

        const QString copy = output(QFileInfo(source).completeBaseName() + ".copy.nmea");
        TrackExtracter job({itemWithTrack(source)}, copy, TrackExtracter::Nmea, interval);
        JobEvents record(job);
        job.run();
        ASSERT_EQ(record.endings(), std::vector<std::string>{"done 1"}) << fixture;

        const TrackPositions copied = TrackLoader::load(copy).positions;
        ASSERT_EQ(copied.size(), expected.size()) << fixture;
        for (std::size_t i = 0; i < copied.size(); ++i) {
            EXPECT_EQ(copied[i].time, expected[i].time) << fixture << " #" << i;
            EXPECT_EQ(copied[i].latitude, expected[i].latitude) << fixture << " #" << i;
            EXPECT_EQ(copied[i].longitude, expected[i].longitude) << fixture << " #" << i;
            EXPECT_EQ(copied[i].altitude, expected[i].altitude) << fixture << " #" << i;
        }
        // Every copied line is a sentence of the source, unchanged.
        const QByteArray original = readFile(source);
        for (const QByteArray& line : readFile(copy).split('\n')) {
            if (!line.isEmpty()) {
                EXPECT_TRUE(original.contains(line + '\n')) << line.toStdString();
            }
        }
    }
}

TEST_F(TrackExtracterTest, positions_of_two_items_come_out_in_time_order) {
    // Two recordings of one drive, handed over newest first.
    const QString first = output("first.nmea"), second = output("second.nmea");
    testsupport::writeFile(first, QByteArray::fromStdString(testsupport::sentence("GPRMC,100000,A,5000.000,N,01000.000,E,10.0,90.0,130919,,") +
                                               testsupport::sentence("GPRMC,100001,A,5000.001,N,01000.000,E,10.0,90.0,130919,,")));
    testsupport::writeFile(second, QByteArray::fromStdString(testsupport::sentence("GPRMC,100100,A,5001.000,N,01000.000,E,10.0,90.0,130919,,")));
    const TimeInterval wholeDay{utc(2019, 9, 13, 0, 0, 0), utc(2019, 9, 13, 23, 59, 59)};
    TrackExtracter job({itemWithTrack(second), itemWithTrack(first)}, output("drive.csv"), TrackExtracter::Csv, wholeDay);
    job.run();
    const QList<QByteArray> lines = readFile(output("drive.csv")).split('\n');
    ASSERT_EQ(lines.size(), 5);
    EXPECT_TRUE(lines[1].startsWith("2019.09.13 10:00:00,"));
    EXPECT_TRUE(lines[2].startsWith("2019.09.13 10:00:01,"));
    EXPECT_TRUE(lines[3].startsWith("2019.09.13 10:01:00,"));
}

TEST_F(TrackExtracterTest, an_unreadable_track_is_logged_and_the_others_are_written) {
    testsupport::LogCapture log;
    Playlist::RawItems items = {itemWithTrack(output("missing.nmea")), receiverItems().front()};
    TrackExtracter job(items, output("minute.gpx"), TrackExtracter::Gpx, kMinuteOfReceiver);
    JobEvents record(job);
    job.run();
    EXPECT_EQ(record.endings(), std::vector<std::string>{"done 1"});
    EXPECT_FALSE(log.linesContaining("missing.nmea").empty());
}

TEST_F(TrackExtracterTest, a_track_whose_loaded_fixes_lie_outside_the_interval_is_not_read) {
    testsupport::LogCapture log;
    auto elsewhere = std::make_shared<Playlist::RawItem>(*itemWithTrack(output("gone.nmea")));
    TrackPosition fix;
    fix.time = trackTimeFromSeconds(utc(2019, 9, 13, 10, 0, 0).toSecsSinceEpoch());
    elsewhere->track->positions = {fix};
    TrackExtracter job({elsewhere, receiverItems().front()}, output("minute.csv"), TrackExtracter::Csv, kMinuteOfReceiver);
    JobEvents record(job);
    job.run();
    EXPECT_EQ(record.endings(), std::vector<std::string>{"done 1"});
    EXPECT_TRUE(log.linesContaining("gone.nmea").empty());
}

TEST_F(TrackExtracterTest, no_track_in_the_interval_or_no_folder_fails_without_leaving_a_file) {
    testsupport::LogCapture log;
    const TimeInterval otherDay{utc(2019, 9, 13, 10, 0, 0), utc(2019, 9, 13, 11, 0, 0)};
    const struct {
        Playlist::RawItems items;
        TimeInterval interval;
        const char* name;
    } cases[] = {
        {receiverItems(), otherDay, "out"},                                          // track elsewhere in time
        {{std::make_shared<Playlist::RawItem>()}, kMinuteOfReceiver, "out"},         // an item without a track
        {receiverItems(), {kMinuteOfReceiver.to, kMinuteOfReceiver.from}, "out"},   // to before from
        {receiverItems(), kMinuteOfReceiver, "no-such-folder/out"},                 // nowhere to write
    };
    for (int type = TrackExtracter::Nmea; type <= TrackExtracter::Plt; ++type) {
        for (const auto& c : cases) {
            TrackExtracter job(c.items, output(c.name), static_cast<TrackExtracter::TrackType>(type), c.interval);
            JobEvents record(job);
            job.run();
            EXPECT_EQ(record.endings(), std::vector<std::string>{"done 0"}) << type << " " << c.name;
        }
    }
    EXPECT_TRUE(filesIn(dir).isEmpty()) << filesIn(dir).join(' ').toStdString();
}

TEST_F(TrackExtracterTest, a_failed_run_keeps_a_file_already_at_the_output_path) {
    testsupport::LogCapture log;
    testsupport::writeFile(output("old.gpx"), "an earlier export");
    const TimeInterval otherDay{utc(2019, 9, 13, 10, 0, 0), utc(2019, 9, 13, 11, 0, 0)};
    TrackExtracter job(receiverItems(), output("old.gpx"), TrackExtracter::Gpx, otherDay);
    job.run();
    EXPECT_EQ(readFile(output("old.gpx")), "an earlier export");
    EXPECT_EQ(filesIn(dir), QStringList{"old.gpx"});
}

TEST_F(TrackExtracterTest, cancel_during_the_run_ends_with_canceled_and_no_file) {
    for (int type : {TrackExtracter::Nmea, TrackExtracter::Csv}) {
        Playlist::RawItems items = receiverItems();
        items.push_back(items.front());
        TrackExtracter job(items, output("cancelled"), static_cast<TrackExtracter::TrackType>(type), kMinuteOfReceiver);
        JobEvents record(job);
        // The first item's progress is the moment the user presses Cancel.
        QObject::connect(&job, &TrackExtracter::progress, &job, [&job](int p) {
            if (p > 0)
                job.cancel();
        }, Qt::DirectConnection);
        job.run();
        EXPECT_EQ(record.endings(), std::vector<std::string>{"canceled"}) << type;
        EXPECT_TRUE(filesIn(dir).isEmpty()) << filesIn(dir).join(' ').toStdString();
    }
}

TEST_F(TrackExtracterTest, runs_on_a_worker_thread_started_by_a_queued_call) {
    QThread worker;
    worker.start();
    auto* job = new TrackExtracter(receiverItems(), output("worker.kml"), TrackExtracter::Kml, kMinuteOfReceiver);
    job->moveToThread(&worker);
    QObject::connect(&worker, &QThread::finished, job, &QObject::deleteLater);
    std::vector<bool> results;
    QObject context;
    QObject::connect(job, &TrackExtracter::done, &context, [&results](bool ok) { results.push_back(ok); });
    QMetaObject::invokeMethod(job, "run", Qt::QueuedConnection);
    EXPECT_TRUE(testsupport::waitUntil([&] { return !results.empty(); }, 10000));
    EXPECT_EQ(results, std::vector<bool>{true});
    worker.quit();
    worker.wait();
    EXPECT_TRUE(QFileInfo(output("worker.kml")).size() > 0);
}

TEST(TrackExtracterNames, extensions_are_the_format_names_and_read_back) {
    EXPECT_EQ(TrackExtracter::extension(TrackExtracter::Nmea), "nmea");
    EXPECT_EQ(TrackExtracter::extension(TrackExtracter::Plt), "plt");
    EXPECT_EQ(TrackExtracter::typeFromName("GPX"), TrackExtracter::Gpx);
    EXPECT_EQ(TrackExtracter::typeFromName("kml"), TrackExtracter::Kml);
    EXPECT_FALSE(TrackExtracter::typeFromName("shp").has_value());
}

TEST_F(TrackExtracterTest, a_track_inside_a_video_is_written_from_the_positions_read_at_loading) {
    // The video is not even on disk: nothing is read again from it.
    auto item = std::make_shared<Playlist::RawItem>();
    item->mainVideo = QFileInfo(dir.filePath("MOVI0001.MP4"));
    const QString fixture = testsupport::fixturePath("nmea/receiver-2004.nmea");
    item->track = Playlist::Track{item->mainVideo, {}, {}, TrackLoader::load(fixture).positions};
    ASSERT_TRUE(item->hasEmbeddedTrack());
    const TrackPositions expected = positionsBetween(fixture, kMinuteOfReceiver);
    for (const auto& [type, name] : {std::pair{TrackExtracter::Nmea, "minute.nmea"}, std::pair{TrackExtracter::Csv, "minute.csv"}}) {
        TrackExtracter job({item}, output(name), type, kMinuteOfReceiver);
        JobEvents record(job);
        job.run();
        ASSERT_EQ(record.endings(), std::vector<std::string>{"done 1"}) << name;
    }
    const TrackPositions nmea = TrackLoader::load(output("minute.nmea")).positions;
    ASSERT_EQ(nmea.size(), expected.size());
    EXPECT_EQ(nmea.front().time, expected.front().time);
    EXPECT_NEAR(nmea.back().latitude, expected.back().latitude, 1e-6);
    EXPECT_EQ(readFile(output("minute.csv")).count('\n'), int(expected.size()) + 1);
}
