// Tracks recorded apart from the camera: GPX, KML and NMEA read alike (gpsbabel converts one GPX into the
// others), and their positions matched to recordings without a track, moved by the offset.
#include "core/TrackAttachment.h"
#include "core/TrackExtracter.h"
#include "core/TrackFileReader.h"
#include "core/TrackLoader.h"

#include "support/ErrorOf.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using testsupport::errorOf;

namespace {

// Three fixes a second apart, the second one with a fraction, then one 2 s later; speed in m/s.
const char* const kGpx10 = R"(<?xml version="1.0"?>
<gpx version="1.0" creator="test" xmlns="http://www.topografix.com/GPX/1/0"><trk><trkseg>
<trkpt lat="50.087500" lon="14.421300"><ele>201.5</ele><time>2024-05-01T10:00:00Z</time><course>90.0</course><speed>10.0</speed><sat>9</sat><hdop>0.8</hdop></trkpt>
<trkpt lat="50.087600" lon="14.421500"><ele>202.0</ele><time>2024-05-01T10:00:01.700Z</time><speed>12.5</speed></trkpt>
<trkpt lat="50.087650" lon="14.421550"><time>2024-05-01T10:00:01.900Z</time></trkpt>
<trkpt lat="50.087700" lon="14.421700"><ele>203.0</ele><time>2024-05-01T10:00:03Z</time></trkpt>
</trkseg></trk></gpx>)";

TrackTime at(int second) { return makeTrackTime(QDate(2024, 5, 1), 10, 0, second); }

QString write(const QTemporaryDir& dir, const QString& name, const QByteArray& bytes) {
    QFile file(dir.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    return file.fileName();
}

QString convert(const QTemporaryDir& dir, const QString& gpx, const QString& format, const QString& name) {
    QProcess gpsbabel;
    gpsbabel.start("gpsbabel", {"-i", "gpx", "-f", gpx, "-o", format, "-F", dir.filePath(name)});
    EXPECT_TRUE(gpsbabel.waitForFinished(10000) && gpsbabel.exitCode() == 0) << gpsbabel.readAllStandardError().toStdString();
    return dir.filePath(name);
}

} // namespace

TEST(TrackFileReader, gpx_kml_and_nmea_of_one_track_read_alike) {
    QTemporaryDir dir;
    const QString gpx = write(dir, "phone.gpx", kGpx10);
    struct Case {
        QString path;
        double tolerance; // degrees: NMEA keeps thousandths of a minute
        bool hasSpeed;
    };
    const std::vector<Case> cases = {
        {gpx, 1e-9, true},
        {convert(dir, gpx, "kml", "points.kml"), 1e-6, false},
        {convert(dir, gpx, "kml,track=1", "track.kml"), 1e-6, false},
        {convert(dir, gpx, "nmea", "track.nmea"), 2e-5, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path.toStdString());
        const TrackPositions positions = TrackFileReader::read(c.path);
        // The fix at 01.9 falls in the second of the one at 01.7 and is dropped.
        ASSERT_EQ(positions.size(), 3u);
        EXPECT_EQ(positions[0].time, at(0));
        EXPECT_EQ(positions[1].time, at(1));
        EXPECT_EQ(positions[2].time, at(3));
        EXPECT_NEAR(positions[1].latitude, 50.0876, c.tolerance);
        EXPECT_NEAR(positions[1].longitude, 14.4215, c.tolerance);
        ASSERT_TRUE(positions[2].altitude.has_value());
        EXPECT_NEAR(*positions[2].altitude, 203.0, 0.01);
        if (c.hasSpeed) {
            EXPECT_NEAR(*positions[0].speed, 36.0, 1e-9);
            EXPECT_EQ(positions[0].course, 90.0);
            EXPECT_EQ(positions[0].satellites, 9u);
            EXPECT_EQ(positions[0].hdop, 0.8);
            EXPECT_FALSE(positions[2].speed.has_value());
        }
    }
}

TEST(TrackFileReader, gpx11_speed_in_an_extension_and_foreign_files) {
    const QByteArray gpx11 = R"(<gpx version="1.1" xmlns="http://www.topografix.com/GPX/1/1" xmlns:x="http://www.garmin.com/xmlschemas/TrackPointExtension/v2">
<trk><trkseg><trkpt lat="1.5" lon="2.5"><time>2024-05-01T12:00:00+02:00</time><extensions><x:TrackPointExtension><x:speed>5</x:speed></x:TrackPointExtension></extensions></trkpt>
<trkpt lat="1.6" lon="2.6"><ele>7</ele></trkpt></trkseg></trk></gpx>)";
    const TrackPositions positions = TrackFileReader::readBytes(gpx11);
    ASSERT_EQ(positions.size(), 1u); // a point without a time cannot be matched to video
    EXPECT_EQ(positions[0].time, at(0)); // 12:00 at +02:00 is 10:00 UTC
    EXPECT_NEAR(*positions[0].speed, 18.0, 1e-9);

    for (const QByteArray& foreign : {QByteArray(), QByteArray("<html><body/></html>"), QByteArray("<gpx><trk>"),
                                      QByteArray("just some text\n")})
        EXPECT_NE(errorOf([&] { TrackFileReader::readBytes(foreign); }), "no error") << foreign.toStdString();
}

TEST(TrackAttachment, items_without_a_track_take_the_positions_of_their_interval_moved_by_the_offset) {
    TrackAttachment attachment;
    for (int second = 0; second < 120; ++second) {
        TrackPosition position;
        position.time = at(second);
        position.longitude = 14.0 + second * 1e-4;
        position.latitude = 50.0;
        attachment.positions.push_back(position);
    }
    attachment.offsetSeconds = 37;
    attachment.file = QFileInfo("/home/me/phone.gpx");

    const auto item = [](int from, int to, bool ownTrack) {
        auto raw = std::make_shared<Playlist::RawItem>();
        raw->from = trackTimeToDateTime(at(from));
        raw->to = trackTimeToDateTime(at(to));
        if (ownTrack)
            raw->track = Playlist::Track{QFileInfo("/card/own.nmea"), raw->from, raw->to, TrackPositions(1), false};
        return Playlist::RawItemPtr(raw);
    };
    const Playlist::RawItems items = {item(40, 99, false), item(100, 159, true), item(160, 219, false)};
    auto trip = std::make_shared<Playlist::ProcessedItem>();
    trip->from = items.front()->from;
    trip->to = items.back()->to;
    trip->items = items;
    const Playlist attached = attachment.applyTo(Playlist(items, {trip}));

    // 00:40 on video shows what the phone logged at 00:03.
    const Playlist::RawItemPtr& first = attached.rawItems()[0];
    ASSERT_TRUE(first->track.has_value());
    EXPECT_EQ(first->track->file.fileName(), "phone.gpx");
    ASSERT_EQ(first->track->positions.size(), 60u);
    EXPECT_EQ(first->track->positions.front().time, at(40));
    EXPECT_DOUBLE_EQ(first->track->positions.front().longitude, 14.0 + 3 * 1e-4);
    EXPECT_EQ(first->track->positions.back().time, at(99));
    EXPECT_DOUBLE_EQ(first->track->positions.back().longitude, 14.0 + 62 * 1e-4);
    EXPECT_EQ(first->track->from, first->from);
    // A recording's own track wins; one past the end of the log stays without.
    EXPECT_EQ(attached.rawItems()[1], items[1]);
    EXPECT_FALSE(attached.rawItems()[2]->track.has_value());
    // The trip holds the new items in the old places.
    ASSERT_EQ(attached.processedItems().size(), 1u);
    EXPECT_EQ(attached.processedItems()[0]->items, attached.rawItems());
    EXPECT_EQ(attached.processedItems()[0]->from, trip->from);
    // The original is untouched.
    EXPECT_FALSE(items[0]->track.has_value());

    // Saved as NMEA (written from the positions, there being no sentences to copy), the moved positions
    // read back, and gpsbabel reads the file too.
    QTemporaryDir dir;
    const QString nmea = dir.filePath("saved.nmea");
    TrackExtracter job({first}, nmea, TrackExtracter::Nmea, {first->from, first->to});
    bool written = false;
    QObject::connect(&job, &TrackExtracter::done, [&written](bool ok) { written = ok; });
    job.run();
    ASSERT_TRUE(written);
    const TrackPositions saved = TrackLoader::load(nmea).positions;
    ASSERT_EQ(saved.size(), 60u);
    EXPECT_EQ(saved.front().time, at(40));
    EXPECT_NEAR(saved.front().longitude, 14.0 + 3 * 1e-4, 1e-7);
    QProcess gpsbabel;
    gpsbabel.start("gpsbabel", {"-t", "-i", "nmea", "-f", nmea, "-o", "unicsv,utc=0", "-F", "-"});
    ASSERT_TRUE(gpsbabel.waitForFinished(10000) && gpsbabel.exitCode() == 0);
    EXPECT_EQ(gpsbabel.readAllStandardOutput().trimmed().split('\n').size(), 61); // a header and the fixes
}
