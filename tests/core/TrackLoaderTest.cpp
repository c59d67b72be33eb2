// Track loading: how sentences become fixes, real receiver logs, and bad input.
#include "core/TrackLoader.h"

#include "support/ErrorOf.h"
#include "support/NmeaSentences.h"
#include "support/RecordingFixtures.h"
#include "support/TestSupport.h"

#include "logging/Logging.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>


using testsupport::errorOf;
using testsupport::sentence;

namespace {

TrackLoader::Result loadText(const std::string& text) {
    return TrackLoader::loadBytes(QByteArray(text.data(), static_cast<int>(text.size())));
}

TrackTime utc(int year, int month, int day, int hour, int minute, int second) {
    return makeTrackTime(QDate(year, month, day), hour, minute, second);
}

const std::string kRmc1 = sentence("GPRMC,120005.90,A,4916.45,N,12311.12,W,10.0,54.7,191124,020.3,E,A");
const std::string kRmc2 = sentence("GPRMC,120006.00,A,4916.46,N,12311.13,W,20.0,55.0,191124,,,A");

} // namespace

TEST(TrackLoaderFixes, rmc_gives_a_fix_with_time_position_speed_and_course) {
    const auto result = loadText(kRmc1);
    ASSERT_EQ(result.positions.size(), 1u);
    const TrackPosition& fix = result.positions[0];
    EXPECT_EQ(fix.time, utc(2024, 11, 19, 12, 0, 5)); // fraction of the second dropped
    EXPECT_NEAR(fix.latitude, 49 + 16.45 / 60, 1e-12);
    EXPECT_NEAR(fix.longitude, -(123 + 11.12 / 60), 1e-12);
    EXPECT_DOUBLE_EQ(*fix.speed, 10.0 * 1.852);
    EXPECT_DOUBLE_EQ(*fix.course, 54.7);
    EXPECT_FALSE(fix.altitude.has_value()); // absent, not 0
    EXPECT_FALSE(fix.satellites.has_value());
    EXPECT_EQ(fix.sentenceNumber, 0u);
    EXPECT_EQ(result.rmcCount, 1u);
}

TEST(TrackLoaderFixes, rmc_without_date_adds_no_fix_but_is_counted) {
    testsupport::LogCapture log;
    logging::setLevel(logging::TRACE);
    const auto result = loadText(sentence("GPRMC,120004,A,4916.45,N,12311.12,W,1.0,54.7,,,") + kRmc1);
    ASSERT_EQ(result.positions.size(), 1u);
    EXPECT_EQ(result.rmcCount, 2u);
    EXPECT_EQ(result.positions[0].sentenceNumber, 1u);
    EXPECT_EQ(log.linesContaining("Ignore invalid RMC Sentence, hasUtc: true, hasDate: false, hasStatus: true").size(), 1u);
    EXPECT_EQ(log.linesContaining("Found RMC #1").size(), 1u);
}

TEST(TrackLoaderFixes, two_rmc_in_the_same_second_give_one_fix) {
    const auto result = loadText(sentence("GPRMC,120005.00,A,4916.45,N,12311.12,W,1.0,54.7,191124,,") + kRmc1);
    EXPECT_EQ(result.positions.size(), 1u);
    EXPECT_EQ(result.rmcCount, 2u);
}

TEST(TrackLoaderFixes, gga_before_the_first_rmc_gives_no_fix_but_its_altitude_carries_into_it) {
    const std::string gga = sentence("GPGGA,120004,4916.40,N,12311.10,W,1,08,0.9,545.4,M,46.9,M,,");
    const auto result = loadText(gga + kRmc1);
    ASSERT_EQ(result.positions.size(), 1u);
    EXPECT_DOUBLE_EQ(*result.positions[0].altitude, 545.4);
    EXPECT_EQ(*result.positions[0].satellites, 8u);
    EXPECT_DOUBLE_EQ(*result.positions[0].hdop, 0.9);
    EXPECT_NEAR(result.positions[0].latitude, 49 + 16.45 / 60, 1e-12); // the RMC's own position wins
}

TEST(TrackLoaderFixes, optional_values_carry_over_until_replaced) {
    // A fix is appended when the next time arrives, with the values known then.
    const std::string text = sentence("GPGSA,A,3,04,05,,,,,,,,,,,2.5,1.3,2.1") + kRmc1 + kRmc2 +
                             sentence("GPGSV,2,1,07,07,79,048,42,02,51,062,43,26,36,256,42,27,27,138,42") +
                             sentence("PGRMZ,1000,f,3");
    const auto result = loadText(text);
    ASSERT_EQ(result.positions.size(), 2u);
    EXPECT_DOUBLE_EQ(*result.positions[0].pdop, 2.5);
    EXPECT_DOUBLE_EQ(*result.positions[0].vdop, 2.1);
    EXPECT_FALSE(result.positions[0].satellites.has_value());
    // The second fix keeps the dilutions and takes satellites in view and the PGRMZ altitude in metres.
    EXPECT_DOUBLE_EQ(*result.positions[1].pdop, 2.5);
    EXPECT_EQ(*result.positions[1].satellites, 7u);
    EXPECT_DOUBLE_EQ(*result.positions[1].altitude, 1000 * 0.3048);
    EXPECT_EQ(result.positions[1].sentenceNumber, 1u);
}

TEST(TrackLoaderFixes, vtg_prefers_kmh_and_falls_back_to_knots) {
    const std::string both = kRmc1 + sentence("GPVTG,054.7,T,034.4,M,005.5,N,010.2,K");
    EXPECT_DOUBLE_EQ(*loadText(both).positions[0].speed, 10.2);
    const std::string knots = kRmc1 + sentence("GPVTG,054.7,T,034.4,M,005.5,N,,K");
    EXPECT_DOUBLE_EQ(*loadText(knots).positions[0].speed, 5.5 * 1.852);
}

TEST(TrackLoaderFixes, gll_sets_time_on_the_stored_date_only_when_valid) {
    testsupport::LogCapture log;
    logging::setLevel(logging::DEBUG);
    const std::string text = kRmc1 + sentence("GPGLL,4917.00,N,12312.00,W,120010,V,A") +
                             sentence("GPGLL,4917.00,N,12312.00,W,120011,A,A");
    const auto result = loadText(text);
    ASSERT_EQ(result.positions.size(), 2u);
    EXPECT_EQ(result.positions[1].time, utc(2024, 11, 19, 12, 0, 11));
    EXPECT_NEAR(result.positions[1].latitude, 49 + 17.0 / 60, 1e-12);
    EXPECT_EQ(log.linesContaining("Ignore invalid GLL").size(), 1u);
}

TEST(TrackLoaderFixes, zda_supplies_the_date_and_partial_dates_need_a_full_one_first) {
    testsupport::LogCapture log;
    logging::setLevel(logging::DEBUG);
    const std::string gga = sentence("GPGGA,235959,5013.498,N,01709.946,E,1,09,0.8,470.720,M,0.0,M,,");
    // Only a year before any full date: ignored.
    const auto ignored = loadText(gga + sentence("GPZDA,000000,,,2019,00,00"));
    EXPECT_TRUE(ignored.positions.empty());
    EXPECT_EQ(log.linesContaining("Partial change without previous full date is not supported, ingore ZDA sentence").size(), 1u);
    // A full date, then a ZDA that changes only the day.
    const auto dated = loadText(gga + sentence("GPZDA,000000,09,03,2019,00,00") + sentence("GPZDA,000001,10,,,00,00"));
    ASSERT_EQ(dated.positions.size(), 2u);
    EXPECT_EQ(dated.positions[0].time, utc(2019, 3, 9, 0, 0, 0));
    EXPECT_EQ(dated.positions[1].time, utc(2019, 3, 10, 0, 0, 1));
}

TEST(TrackLoaderFixes, zda_without_time_keeps_the_stored_time_or_stores_only_the_date) {
    const std::string gll = sentence("GPGLL,4917.00,N,12312.00,W,101500,A,A");
    const auto withTime = loadText(gll + sentence("GPZDA,,01,02,2020,,"));
    ASSERT_EQ(withTime.positions.size(), 1u);
    EXPECT_EQ(withTime.positions[0].time, utc(2020, 2, 1, 10, 15, 0));
    // Date first, time from a GLL afterwards.
    const auto dateFirst = loadText(sentence("GPZDA,,01,02,2020,,") + gll);
    ASSERT_EQ(dateFirst.positions.size(), 1u);
    EXPECT_EQ(dateFirst.positions[0].time, utc(2020, 2, 1, 10, 15, 0));
}

TEST(TrackLoaderFixes, rmc_years_are_two_digits_after_2000_and_times_cross_midnight) {
    const auto result = loadText(sentence("GPRMC,235959,A,4916.45,N,12311.12,W,,,311299,,") +
                                 sentence("GNRMC,000000,A,4916.45,N,12311.12,W,,,010100,,"));
    ASSERT_EQ(result.positions.size(), 2u);
    EXPECT_EQ(result.positions[0].time, utc(2099, 12, 31, 23, 59, 59));
    EXPECT_EQ(result.positions[1].time, utc(2000, 1, 1, 0, 0, 0));
}

TEST(TrackLoaderRealLogs, load_with_plausible_counts) {
    struct Expected {
        const char* file;
        std::size_t positions;
        std::uint32_t rmc;
        bool ascending; // the short log's dates step through the years 2098, 2099, 2000...
    };
    // One fix a second for logs with dates; the mixed log's three malformed times are dropped;
    // GGA alone has no date, and one ZDA at the end dates only the last fix.
    const Expected expected[] = {
        {"nmea/receiver-2004.nmea", 154, 154, true},      {"nmea/rmc-gga-vtg-gsa.nmea", 6, 6, false},
        {"nmea/mixed-time-precision.nmea", 16, 19, true}, {"nmea/gga-only.nmea", 0, 0, true},
        {"nmea/gga-then-zda.nmea", 1, 0, true},          {"nmea/with-text-and-proprietary.nmea", 4, 4, true},
    };
    for (const Expected& e : expected) {
        SCOPED_TRACE(e.file);
        TrackLoader::Result result;
        ASSERT_NO_THROW(result = TrackLoader::load(testsupport::fixturePath(e.file)));
        EXPECT_EQ(result.positions.size(), e.positions);
        EXPECT_EQ(result.rmcCount, e.rmc);
        for (std::size_t i = 1; e.ascending && i < result.positions.size(); ++i)
            EXPECT_LT(result.positions[i - 1].time, result.positions[i].time);
    }
    const auto receiver = TrackLoader::load(testsupport::fixturePath("nmea/receiver-2004.nmea"));
    EXPECT_EQ(receiver.positions.front().time, utc(2004, 8, 7, 3, 29, 8));
    EXPECT_NEAR(receiver.positions.front().latitude, 42 + 31.8291 / 60, 1e-12);
    EXPECT_NEAR(receiver.positions.front().longitude, -(88 + 7.3033 / 60), 1e-12);
}

TEST(TrackLoaderRealLogs, padded_times_read_as_gpsbabel_reads_them) {
    // The mixed log pads three times with blanks and spoils three more; GPSBabel turns the spoilt ones into
    // midnight, which a log running at 22:25 cannot hold: those are the fixes that must be missing here.
    const QString log = testsupport::fixturePath("nmea/mixed-time-precision.nmea");
    QProcess gpsbabel;
    gpsbabel.start("gpsbabel", {"-t", "-i", "nmea", "-f", log, "-o", "unicsv,utc=0", "-F", "-"});
    ASSERT_TRUE(gpsbabel.waitForFinished(10000) && gpsbabel.exitCode() == 0) << gpsbabel.errorString().toStdString();
    std::vector<TrackTime> expected;
    for (const QByteArray& line : gpsbabel.readAllStandardOutput().split('\n').mid(1)) {
        const QList<QByteArray> columns = line.split(',');
        if (columns.size() < 2 || columns.back().startsWith("00:00:00"))
            continue;
        const QDate date = QDate::fromString(QString::fromLatin1(columns[columns.size() - 2]), "yyyy/MM/dd");
        const QList<QByteArray> hms = columns.back().split(':');
        ASSERT_EQ(hms.size(), 3) << line.toStdString();
        expected.push_back(makeTrackTime(date, hms[0].toInt(), hms[1].toInt(), hms[2].toDouble()));
    }
    ASSERT_EQ(expected.size(), 16u);
    std::vector<TrackTime> times;
    for (const TrackPosition& fix : TrackLoader::load(log).positions)
        times.push_back(fix.time);
    EXPECT_EQ(times, expected);
}

TEST(TrackLoaderBadInput, unreadable_file_and_non_nmea_content_fail_with_their_messages) {
    QTemporaryDir dir;
    const QString missing = dir.filePath("missing.nmea");
    EXPECT_EQ(errorOf([&] { TrackLoader::load(missing); }),
              "Failed to read file: invalid stream ('" + missing.toStdString() + "')");
    EXPECT_EQ(errorOf([] { TrackLoader::load(testsupport::fixturePath("nmea/utf16-encoded.nmea")); }),
              "Failed to parse as NMEA");
    EXPECT_EQ(errorOf([&] { loadText(std::string(1 << 20, 'x')); }), "Failed to parse as NMEA");
}

TEST(TrackLoaderBadInput, reads_only_regular_files_of_a_sane_size_and_never_waits) {
    QTemporaryDir dir;
    ASSERT_EQ(::symlink("/dev/zero", QFile::encodeName(dir.filePath("zero.nmea")).constData()), 0);
    ASSERT_EQ(::mkfifo(QFile::encodeName(dir.filePath("fifo.nmea")).constData(), 0600), 0);
    QFile huge(dir.filePath("huge.nmea"));
    ASSERT_TRUE(huge.open(QIODevice::WriteOnly) && huge.resize(TrackLoader::kMaxFileBytes + 1)); // sparse
    huge.close();
    const struct {
        const char* file;
        const char* error;
    } cases[] = {
        {"zero.nmea", "Failed to read file: not a regular file"}, // 19 s and 2.1 GB before
        {"fifo.nmea", "Failed to read file: not a regular file"}, // blocked for ever before
        {".", "Failed to read file: not a regular file"},
        {"huge.nmea", "Failed to read file: 268435457 bytes, more than the 256 MB a track may have"},
    };
    for (const auto& c : cases) {
        QElapsedTimer timer;
        timer.start();
        EXPECT_THAT(errorOf([&] { TrackLoader::load(dir.filePath(c.file)); }), testing::StartsWith(c.error)) << c.file;
        EXPECT_LT(timer.elapsed(), 1000) << c.file;
    }
}

TEST(TrackLoaderBadInput, empty_file_gives_no_positions) {
    QTemporaryDir dir;
    testsupport::writeFile(dir.filePath("empty.nmea"), {});
    const auto result = TrackLoader::load(dir.filePath("empty.nmea"));
    EXPECT_TRUE(result.positions.empty());
    EXPECT_EQ(result.rmcCount, 0u);
}

TEST(TrackLoaderBadInput, file_ending_inside_a_sentence_keeps_what_came_before) {
    const std::string cut = kRmc2.substr(0, 30);
    const auto result = loadText(kRmc1 + cut);
    EXPECT_EQ(result.positions.size(), 1u);
    EXPECT_EQ(result.rmcCount, 1u);
    // A truncated sentence followed directly by a whole one: the whole one is found.
    EXPECT_EQ(loadText(cut + kRmc1).positions.size(), 1u);
}
