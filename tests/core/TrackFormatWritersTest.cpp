// The CSV, GPX, KML and PLT writers, byte for byte, with and without the optional values.
#include "core/TrackFormatWriters.h"
#include "core/TrackLoader.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <locale>
#include <random>
#include <sstream>

namespace {

TrackTime utc(int year, int month, int day, int hour, int minute, int second) {
    return makeTrackTime(QDate(year, month, day), hour, minute, second);
}

// 13 September 2019, 10:30:20 UTC: a moment whose minutes (30) cannot pass for a month.
const TrackTime kMoment = utc(2019, 9, 13, 10, 30, 20);

// Every optional value present.
TrackPosition fullPosition() {
    TrackPosition p;
    p.time = kMoment;
    p.latitude = 55.751244;
    p.longitude = 37.618423;
    p.speed = 45.5;
    p.altitude = 100.0;
    p.satellites = 7;
    p.hdop = 0.9;
    p.pdop = 1.6;
    p.vdop = 1.3;
    return p;
}

// Everything but HDOP.
TrackPosition positionWithoutHdop() {
    TrackPosition p = fullPosition();
    p.time = kMoment + kTrackTicksPerSecond;
    p.hdop.reset();
    return p;
}

// Only the time and the place, south and west.
TrackPosition barePosition() {
    TrackPosition p;
    p.time = kMoment + 2 * kTrackTicksPerSecond;
    p.latitude = -33.86882;
    p.longitude = -70.0000001;
    return p;
}

const TrackPositions kTrack = {fullPosition(), positionWithoutHdop(), barePosition()};

std::string written(void (*writer)(std::ostream&, const TrackPositions&), const TrackPositions& positions) {
    std::ostringstream out;
    writer(out, positions);
    return out.str();
}

// A locale that writes decimal commas, as a user's locale might.
struct CommaDecimals : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
};

} // namespace

TEST(TrackFormatWriters, csv_has_nine_fields_and_leaves_missing_values_empty) {
    EXPECT_EQ(written(trackformats::writeCsv, kTrack),
              "timestamp,latitude,longitude,speed,altitude,satellites,HDOP,PDOP,VDOP\n"
              "2019.09.13 10:30:20,55.751244,37.618423,45.500,100.000,7,0.9,1.6,1.3\n"
              "2019.09.13 10:30:21,55.751244,37.618423,45.500,100.000,7,,1.6,1.3\n"
              "2019.09.13 10:30:22,-33.868820,-70.000000,,,,,,\n");
}

TEST(TrackFormatWriters, gpx_puts_minutes_in_the_month_position_and_writes_only_present_values) {
    EXPECT_EQ(written(trackformats::writeGpx, kTrack),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<gpx version=\"1.0\">\n"
              "<trk>\n"
              "<trkseg>\n"
              "<trkpt lat=\"55.751244\" lon=\"37.618423\">\n"
              "\t<time>2019-30-13T10:30:20Z</time>\n"
              "\t<speed>45.500</speed>\n"
              "\t<ele>100.000</ele>\n"
              "\t<sat>7</sat>\n"
              "\t<hdop>0.9</hdop>\n"
              "\t<pdop>1.6</pdop>\n"
              "\t<vdop>1.3</vdop>\n"
              "</trkpt>\n"
              "<trkpt lat=\"55.751244\" lon=\"37.618423\">\n"
              "\t<time>2019-30-13T10:30:21Z</time>\n"
              "\t<speed>45.500</speed>\n"
              "\t<ele>100.000</ele>\n"
              "\t<sat>7</sat>\n"
              "\t<pdop>1.6</pdop>\n"
              "\t<vdop>1.3</vdop>\n"
              "</trkpt>\n"
              "<trkpt lat=\"-33.868820\" lon=\"-70.000000\">\n"
              "\t<time>2019-30-13T10:30:22Z</time>\n"
              "</trkpt>\n"
              "</trkseg>\n"
              "</trk>\n"
              "</gpx>");
}

TEST(TrackFormatWriters, kml_has_the_path_folder_then_one_placemark_per_point) {
    const std::string header = "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
                               "<kml xmlns=\"http://www.opengis.net/kml/2.2\">\n"
                               "<Document id=\"root_doc\">\n"
                               "<Folder><name>Track</name>\n"
                               "\t<Placemark>\n"
                               "\t\t<name>Path</name>\n"
                               "\t\t<Style><LineStyle><color>ff0000ff</color></LineStyle><PolyStyle><fill>0</fill>"
                               "</PolyStyle></Style>\n"
                               "\t\t<ExtendedData><SchemaData schemaUrl=\"#Layer0\">\n"
                               "\t\t\t<SimpleData name=\"tessellate\">1</SimpleData>\n"
                               "\t\t</SchemaData></ExtendedData>\n"
                               "\t\t<LineString><coordinates>";
    const TrackPositions track = {fullPosition(), barePosition()};
    EXPECT_EQ(written(trackformats::writeKml, track),
              header +
                  "37.61842300,55.75124400 -70.00000010,-33.86882000 </coordinates></LineString>\n"
                  "\t</Placemark>\n"
                  "</Folder>\n"
                  "<Folder><name>Points</name>\n"
                  "\t<Placemark>\n"
                  "\t\t<ExtendedData><SchemaData schemaUrl=\"#Points\">\n"
                  "\t\t\t<SimpleData name=\"timestamp\">2019.09.13 10:30:20</SimpleData>\n"
                  "\t\t\t<SimpleData name=\"latitude\">55.751244</SimpleData>\n"
                  "\t\t\t<SimpleData name=\"longitude\">37.618423</SimpleData>\n"
                  "\t\t\t<SimpleData name=\"speed\">45.500</SimpleData>\n"
                  "\t\t\t<SimpleData name=\"altitude\">100.000</SimpleData>\n"
                  "\t\t\t<SimpleData name=\"satellites\">7</SimpleData>\n"
                  "\t\t\t<SimpleData name=\"HDOP\">0.9</SimpleData>\n"
                  "\t\t\t<SimpleData name=\"PDOP\">1.6</SimpleData>\n"
                  "\t\t\t<SimpleData name=\"VDOP\">1.3</SimpleData>\n"
                  "\t\t</SchemaData></ExtendedData>\n"
                  "\t\t<Point><coordinates>37.618423,55.751244</coordinates></Point>\n"
                  "\t</Placemark>\n"
                  "\t<Placemark>\n"
                  "\t\t<ExtendedData><SchemaData schemaUrl=\"#Points\">\n"
                  "\t\t\t<SimpleData name=\"timestamp\">2019.09.13 10:30:22</SimpleData>\n"
                  "\t\t\t<SimpleData name=\"latitude\">-33.868820</SimpleData>\n"
                  "\t\t\t<SimpleData name=\"longitude\">-70.000000</SimpleData>\n"
                  "\t\t</SchemaData></ExtendedData>\n"
                  "\t\t<Point><coordinates>-70.000000,-33.868820</coordinates></Point>\n"
                  "\t</Placemark>\n"
                  "</Folder>\n"
                  "</Document></kml>");
}

TEST(TrackFormatWriters, plt_writes_feet_an_empty_altitude_when_missing_and_literal_milliseconds) {
    EXPECT_EQ(written(trackformats::writePlt, {fullPosition(), barePosition()}),
              "OziExplorer Track Point File Version 2.0\n"
              "WGS 84\n"
              "Altitude is in Feet\n"
              "Reserved 3\n"
              "0,2,255,Track log file,1\n"
              "2\n"
              "55.751244,37.618423,0,328.084,,130919,103020.000\n"
              "-33.868820,-70.000000,0,,,130919,103022.000\n");
}

TEST(TrackFormatWriters, an_empty_track_gives_the_frame_of_each_format) {
    EXPECT_EQ(written(trackformats::writeCsv, {}), "timestamp,latitude,longitude,speed,altitude,satellites,HDOP,PDOP,VDOP\n");
    EXPECT_EQ(written(trackformats::writeGpx, {}),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<gpx version=\"1.0\">\n<trk>\n<trkseg>\n</trkseg>\n</trk>\n</gpx>");
    EXPECT_NE(written(trackformats::writePlt, {}).find("Track log file,1\n0\n"), std::string::npos);
}

TEST(TrackFormatWriters, numbers_keep_a_decimal_point_under_a_comma_locale) {
    std::ostringstream out;
    out.imbue(std::locale(std::locale::classic(), new CommaDecimals));
    trackformats::writeCsv(out, {fullPosition()});
    EXPECT_NE(out.str().find(",55.751244,37.618423,45.500,100.000,7,0.9,"), std::string::npos) << out.str();
}

TEST(TrackFormatWriters, times_are_utc_whatever_the_local_zone) {
    // Midnight passing in UTC: the date moves with the UTC day, not the local one.
    TrackPosition p = barePosition();
    p.time = utc(2020, 2, 29, 23, 59, 59);
    EXPECT_EQ(trackformats::formatUtc(p.time, QStringLiteral("yyyy.MM.dd hh:mm:ss")), "2020.02.29 23:59:59");
    EXPECT_NE(written(trackformats::writePlt, {p}).find(",290220,235959.000\n"), std::string::npos);
}

TEST(TrackFormatWriters, fast_time_rendering_matches_qdatetime_for_every_format) {
    const QString formats[] = {"yyyy.MM.dd hh:mm:ss", "yyyy-mm-ddThh:mm:ssZ", "ddMMyy,hhmmss",
                               "d.M.yy h:m:s", "yyyy-MM-ddTHH:mm:ss"}; // the last two go to QDateTime
    std::mt19937_64 random(7);
    std::uniform_int_distribution<std::int64_t> seconds(-86400LL * 365 * 70, 86400LL * 365 * 130);
    std::vector<std::int64_t> moments = {0, -1, 86399, 86400, 951782400 /* 2000-02-29 */, 4102444799 /* 2099-12-31 */};
    for (int i = 0; i < 2000; ++i)
        moments.push_back(seconds(random));
    for (const QString& format : formats) {
        const trackformats::UtcFormat fast(format);
        for (const std::int64_t s : moments) {
            std::string text;
            fast.append(text, trackTimeFromSeconds(s));
            ASSERT_EQ(text, trackformats::formatUtc(trackTimeFromSeconds(s), format).toStdString())
                << format.toStdString() << " at " << s;
        }
    }
}

TEST(TrackFormatWriters, numbers_are_what_a_fixed_point_stream_writes) {
    // Rounding ties, negative zero and tiny negatives are where number formatters part ways.
    const double values[] = {0.05, 0.15, 0.25, 2.675, 1.0005, -0.0, -1e-9, 123.4565, 89.9999995, -179.99999995};
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> any(-500.0, 500.0);
    TrackPositions track;
    std::ostringstream expected;
    expected.imbue(std::locale::classic());
    expected << std::fixed << "timestamp,latitude,longitude,speed,altitude,satellites,HDOP,PDOP,VDOP\n";
    for (int i = 0; i < 500; ++i) {
        TrackPosition p;
        p.time = kMoment;
        p.latitude = i < 10 ? values[i] : any(random);
        p.longitude = any(random);
        p.speed = i < 10 ? values[9 - i] : any(random);
        p.altitude = any(random);
        p.hdop = i < 10 ? values[i] : any(random);
        track.push_back(p);
        expected << "2019.09.13 10:30:20," << std::setprecision(6) << p.latitude << ',' << p.longitude << ','
                 << std::setprecision(3) << *p.speed << ',' << *p.altitude << ",," << std::setprecision(1) << *p.hdop
                 << ",,\n";
    }
    EXPECT_EQ(written(trackformats::writeCsv, track), expected.str());
}

TEST(TrackFormatWriters, nmea_reads_back_as_the_same_positions) {
    const TrackLoader::Result read = TrackLoader::loadBytes(QByteArray::fromStdString(written(trackformats::writeNmea, kTrack)));
    EXPECT_EQ(read.rmcCount, kTrack.size());
    ASSERT_EQ(read.positions.size(), kTrack.size());
    for (std::size_t i = 0; i < kTrack.size(); ++i) {
        SCOPED_TRACE(i);
        const TrackPosition& a = kTrack[i];
        const TrackPosition& b = read.positions[i];
        EXPECT_EQ(b.time, a.time);
        EXPECT_NEAR(b.latitude, a.latitude, 1e-6);
        EXPECT_NEAR(b.longitude, a.longitude, 1e-6);
        // A missing value reads back as the last one sent: the loader carries fields over.
        if (a.speed) {
            EXPECT_NEAR(b.speed.value_or(-1), *a.speed, 0.01);
        }
        if (a.altitude) {
            EXPECT_NEAR(b.altitude.value_or(-1), *a.altitude, 0.05);
        }
    }
}
