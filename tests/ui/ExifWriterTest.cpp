// EXIF position and time in saved pictures, read back with exiv2 and its command-line tool; and the position of
// a moment between track fixes.
#include "ui/ExifWriter.h"

#include "support/TestSupport.h"
#include "support/TmpfsMount.h"

#include <QFile>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <exiv2/exiv2.hpp>
#pragma GCC diagnostic pop

#include <gtest/gtest.h>

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <ctime>

namespace {
constexpr std::int64_t kStart = 1'709'637'300; // 2024-03-05 11:15:00 UTC

// Moscow time all year round, without depending on the zone database.
class MoscowTime {
public:
    MoscowTime() : m_previous(qgetenv("TZ")), m_hadPrevious(qEnvironmentVariableIsSet("TZ")) {
        qputenv("TZ", "MSK-3");
        tzset();
    }
    ~MoscowTime() {
        if (m_hadPrevious)
            qputenv("TZ", m_previous);
        else
            qunsetenv("TZ");
        tzset();
    }

private:
    QByteArray m_previous;
    bool m_hadPrevious;
};

QString savedPicture(const QTemporaryDir& dir, const char* name, const char* format) {
    QImage image(64, 48, QImage::Format_RGB32);
    image.fill(QColor(40, 120, 200));
    const QString path = dir.filePath(QString::fromLatin1(name));
    EXPECT_TRUE(image.save(path, format));
    return path;
}

TrackPosition moscowFix() {
    TrackPosition position;
    position.time = trackTimeFromSeconds(kStart);
    position.latitude = 55.7558391;
    position.longitude = 37.6172999;
    position.altitude = 156.4;
    position.speed = 63.25;
    position.course = 271.5;
    position.satellites = 9;
    position.hdop = 0.9;
    return position;
}

QDateTime frameTime() { return QDateTime::fromMSecsSinceEpoch((kStart + 3) * 1000 + 42, Qt::UTC); }

Exiv2::ExifData readExif(const QString& path) {
    auto image = Exiv2::ImageFactory::open(path.toStdString());
    image->readMetadata();
    return image->exifData();
}

bool has(const Exiv2::ExifData& exif, const char* key) { return exif.findKey(Exiv2::ExifKey(key)) != exif.end(); }

std::string text(const Exiv2::ExifData& exif, const char* key) {
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    return found == exif.end() ? std::string("<absent>") : found->toString();
}

double rational(const Exiv2::Value& value, long n) {
    const Exiv2::Rational r = value.toRational(n);
    return static_cast<double>(r.first) / r.second;
}

double number(const Exiv2::ExifData& exif, const char* key) {
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    return found == exif.end() ? std::nan("") : rational(found->value(), 0);
}

// Signed decimal degrees from the degrees-minutes-seconds rationals and the hemisphere ref.
double degrees(const Exiv2::ExifData& exif, const char* key, const char* refKey, const char* negativeRef) {
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    if (found == exif.end() || found->count() != 3)
        return std::nan("");
    const Exiv2::Value& v = found->value();
    const double magnitude = rational(v, 0) + rational(v, 1) / 60.0 + rational(v, 2) / 3600.0;
    return text(exif, refKey) == negativeRef ? -magnitude : magnitude;
}

constexpr double kDegreeTolerance = 1e-6; // about 10 cm

TrackPosition fix(int second, double latitude, double longitude) {
    TrackPosition position;
    position.time = trackTimeFromSeconds(kStart + second);
    position.latitude = latitude;
    position.longitude = longitude;
    return position;
}

QDateTime at(double second) {
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>((kStart + second) * 1000.0), Qt::UTC);
}
} // namespace

TEST(ExifWriter, position_time_and_motion_read_back_from_a_jpeg) {
    MoscowTime moscow;
    QTemporaryDir dir;
    const QString path = savedPicture(dir, "frame.jpg", "JPG");
    ASSERT_TRUE(writeExifPosition(path, moscowFix(), frameTime()));

    const Exiv2::ExifData exif = readExif(path);
    EXPECT_NEAR(degrees(exif, "Exif.GPSInfo.GPSLatitude", "Exif.GPSInfo.GPSLatitudeRef", "S"), 55.7558391, kDegreeTolerance);
    EXPECT_NEAR(degrees(exif, "Exif.GPSInfo.GPSLongitude", "Exif.GPSInfo.GPSLongitudeRef", "W"), 37.6172999, kDegreeTolerance);
    EXPECT_EQ(text(exif, "Exif.GPSInfo.GPSLatitudeRef"), "N");
    EXPECT_EQ(text(exif, "Exif.GPSInfo.GPSLongitudeRef"), "E");
    EXPECT_NEAR(number(exif, "Exif.GPSInfo.GPSAltitude"), 156.4, 0.01);
    EXPECT_EQ(text(exif, "Exif.GPSInfo.GPSAltitudeRef"), "0");
    EXPECT_NEAR(number(exif, "Exif.GPSInfo.GPSSpeed"), 63.25, 0.01);
    EXPECT_EQ(text(exif, "Exif.GPSInfo.GPSSpeedRef"), "K");
    EXPECT_NEAR(number(exif, "Exif.GPSInfo.GPSImgDirection"), 271.5, 0.01);
    EXPECT_NEAR(number(exif, "Exif.GPSInfo.GPSTrack"), 271.5, 0.01);
    EXPECT_EQ(text(exif, "Exif.GPSInfo.GPSImgDirectionRef"), "T");
    EXPECT_EQ(text(exif, "Exif.GPSInfo.GPSTrackRef"), "T");
    EXPECT_EQ(text(exif, "Exif.GPSInfo.GPSVersionID"), "2 3 0 0");
    EXPECT_EQ(text(exif, "Exif.GPSInfo.GPSSatellites"), "9");

    // The camera's wall clock in Moscow, and the same moment in UTC for the GPS stamps.
    EXPECT_EQ(text(exif, "Exif.Photo.DateTimeOriginal"), "2024:03:05 14:15:03");
    EXPECT_EQ(text(exif, "Exif.Photo.DateTimeDigitized"), "2024:03:05 14:15:03");
    EXPECT_EQ(text(exif, "Exif.Photo.SubSecTimeOriginal"), "042");
    EXPECT_EQ(text(exif, "Exif.Photo.OffsetTimeOriginal"), "+03:00");
    EXPECT_EQ(text(exif, "Exif.GPSInfo.GPSDateStamp"), "2024:03:05");
    EXPECT_EQ(text(exif, "Exif.GPSInfo.GPSTimeStamp"), "11/1 15/1 3042/1000");

    QImage reread(path);
    EXPECT_EQ(reread.size(), QSize(64, 48)) << "the picture itself is left intact";
}

TEST(ExifWriter, exiv2_tool_shows_what_a_user_expects) {
    MoscowTime moscow;
    QTemporaryDir dir;
    const QString path = savedPicture(dir, "window.jpg", "JPG");
    ASSERT_TRUE(writeExifPosition(path, moscowFix(), frameTime()));

    QProcess exiv2;
    exiv2.start("exiv2", {"-pa", path});
    ASSERT_TRUE(exiv2.waitForFinished(10000)) << "the exiv2 package is installed by scripts/setup";
    const QString listing = QString::fromUtf8(exiv2.readAllStandardOutput());
    EXPECT_EQ(exiv2.exitCode(), 0) << exiv2.readAllStandardError().toStdString();
    EXPECT_TRUE(listing.contains(QRegularExpression(R"(GPSLatitudeRef\s+Ascii\s+2\s+North)"))) << listing.toStdString();
    EXPECT_TRUE(listing.contains(QRegularExpression(R"(GPSLatitude\s+Rational\s+3\s+55deg 45' 21")")))
        << listing.toStdString();
    EXPECT_TRUE(listing.contains(QRegularExpression(R"(GPSLongitudeRef\s+Ascii\s+2\s+East)")));
    EXPECT_TRUE(listing.contains(QRegularExpression(R"(GPSAltitude\s+Rational\s+1\s+156.4 m)")));
    EXPECT_TRUE(listing.contains(QRegularExpression(R"(GPSSpeedRef\s+Ascii\s+2\s+km/h)")));
    EXPECT_TRUE(listing.contains(QRegularExpression(R"(DateTimeOriginal\s+Ascii\s+20\s+2024:03:05 14:15:03)")));
}

TEST(ExifWriter, southern_and_western_hemispheres_and_below_sea_level) {
    QTemporaryDir dir;
    const QString path = savedPicture(dir, "dead-sea.jpg", "JPG");
    TrackPosition position = moscowFix();
    position.latitude = -33.4488897;
    position.longitude = -70.6692655;
    position.altitude = -12.5;
    ASSERT_TRUE(writeExifPosition(path, position, frameTime()));

    const Exiv2::ExifData exif = readExif(path);
    EXPECT_EQ(text(exif, "Exif.GPSInfo.GPSLatitudeRef"), "S");
    EXPECT_EQ(text(exif, "Exif.GPSInfo.GPSLongitudeRef"), "W");
    EXPECT_NEAR(degrees(exif, "Exif.GPSInfo.GPSLatitude", "Exif.GPSInfo.GPSLatitudeRef", "S"), -33.4488897, kDegreeTolerance);
    EXPECT_NEAR(degrees(exif, "Exif.GPSInfo.GPSLongitude", "Exif.GPSInfo.GPSLongitudeRef", "W"), -70.6692655, kDegreeTolerance);
    EXPECT_EQ(text(exif, "Exif.GPSInfo.GPSAltitudeRef"), "1");
    EXPECT_NEAR(number(exif, "Exif.GPSInfo.GPSAltitude"), 12.5, 0.01);
}

TEST(ExifWriter, fields_the_fix_lacks_leave_no_tags_even_over_an_earlier_position) {
    QTemporaryDir dir;
    const QString path = savedPicture(dir, "again.jpg", "JPG");
    ASSERT_TRUE(writeExifPosition(path, moscowFix(), frameTime()));

    TrackPosition bare = fix(0, 50.0, 14.0);
    ASSERT_TRUE(writeExifPosition(path, bare, frameTime()));
    const Exiv2::ExifData exif = readExif(path);
    for (const char* key : {"Exif.GPSInfo.GPSAltitude", "Exif.GPSInfo.GPSAltitudeRef", "Exif.GPSInfo.GPSSpeed",
                            "Exif.GPSInfo.GPSSpeedRef", "Exif.GPSInfo.GPSTrack", "Exif.GPSInfo.GPSImgDirection",
                            "Exif.GPSInfo.GPSSatellites", "Exif.GPSInfo.GPSDOP"})
        EXPECT_FALSE(has(exif, key)) << key;
    EXPECT_NEAR(degrees(exif, "Exif.GPSInfo.GPSLatitude", "Exif.GPSInfo.GPSLatitudeRef", "S"), 50.0, kDegreeTolerance);
    EXPECT_EQ(text(exif, "Exif.GPSInfo.GPSLatitude"), "50/1 0/1 0/1000");

    // Without a frame time the position still goes in, and no empty date is written.
    const QString untimed = savedPicture(dir, "untimed.jpg", "JPG");
    ASSERT_TRUE(writeExifPosition(untimed, bare, QDateTime()));
    const Exiv2::ExifData untimedExif = readExif(untimed);
    EXPECT_FALSE(has(untimedExif, "Exif.Photo.DateTimeOriginal"));
    EXPECT_FALSE(has(untimedExif, "Exif.GPSInfo.GPSDateStamp"));
    EXPECT_EQ(text(untimedExif, "Exif.GPSInfo.GPSLatitudeRef"), "N");
}

TEST(ExifWriter, png_pictures_carry_the_position_too) {
    QTemporaryDir dir;
    const QString path = savedPicture(dir, "frame.png", "PNG");
    ASSERT_TRUE(writeExifPosition(path, moscowFix(), frameTime()));
    const Exiv2::ExifData exif = readExif(path);
    EXPECT_NEAR(degrees(exif, "Exif.GPSInfo.GPSLatitude", "Exif.GPSInfo.GPSLatitudeRef", "S"), 55.7558391, kDegreeTolerance);
    EXPECT_FALSE(QImage(path).isNull());
}

TEST(ExifWriter, files_that_are_no_picture_or_missing_fail_with_a_logged_error) {
    QTemporaryDir dir;
    const QString notAPicture = dir.filePath("notes.jpg");
    {
        QFile file(notAPicture);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("just some text, not a JPEG\n");
    }
    testsupport::LogCapture log;
    EXPECT_FALSE(writeExifPosition(notAPicture, moscowFix(), frameTime()));
    EXPECT_FALSE(writeExifPosition(dir.filePath("missing.jpg"), moscowFix(), frameTime()));
    EXPECT_EQ(log.linesContaining("ERROR ui.ExifUtils - Failed to write EXIF position into " + notAPicture.toStdString()).size(), 1u);
    EXPECT_EQ(log.linesContaining("missing.jpg").size(), 1u);

    QFile file(notAPicture);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "just some text, not a JPEG\n") << "a file that isn't a picture is left alone";
}

TEST(ExifWriter, a_picture_on_a_read_only_file_system_fails_cleanly) {
    // Root writes through file permissions, so a read-only mount is what stops it here.
    if (::geteuid() != 0) {
        QTemporaryDir dir;
        const QString path = savedPicture(dir, "locked.jpg", "JPG");
        ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0444), 0);
        testsupport::LogCapture log;
        EXPECT_FALSE(writeExifPosition(path, moscowFix(), frameTime()));
        EXPECT_EQ(log.linesContaining("Failed to write EXIF position").size(), 1u);
        return;
    }
    const QString why = testsupport::TmpfsMount::whyNotPossible();
    if (!why.isEmpty())
        GTEST_SKIP() << why.toStdString();
    testsupport::MountTestLock lock;
    testsupport::TmpfsMount mount("reelvue-exif-readonly");
    ASSERT_TRUE(mount.isMounted()) << mount.error().toStdString();
    QImage image(64, 48, QImage::Format_RGB32);
    image.fill(Qt::red);
    const QString path = mount.path() + "/locked.jpg";
    ASSERT_TRUE(image.save(path, "JPG"));
    const QByteArray before = [&] { QFile f(path); f.open(QIODevice::ReadOnly); return f.readAll(); }();
    ASSERT_EQ(::mount(nullptr, QFile::encodeName(mount.path()).constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);

    testsupport::LogCapture log;
    EXPECT_FALSE(writeExifPosition(path, moscowFix(), frameTime()));
    EXPECT_EQ(log.linesContaining("Failed to write EXIF position").size(), 1u);
    QFile after(path);
    ASSERT_TRUE(after.open(QIODevice::ReadOnly));
    EXPECT_EQ(after.readAll(), before);
}

TEST(TrackPositionAt, interpolates_place_and_optional_fields_between_the_fixes_around_the_moment) {
    TrackPosition a = fix(0, 50.0, 14.0);
    a.altitude = 200.0;
    a.speed = 40.0;
    a.hdop = 1.0;
    a.satellites = 7;
    TrackPosition b = fix(10, 51.0, 16.0);
    b.altitude = 300.0;
    b.speed = 60.0;
    b.satellites = 11;
    b.pdop = 2.0;
    const TrackPositions track{fix(-10, 49.0, 13.0), a, b, fix(20, 52.0, 17.0)};

    const auto position = trackPositionAt(track, at(2.5));
    ASSERT_TRUE(position);
    EXPECT_DOUBLE_EQ(position->latitude, 50.25);
    EXPECT_DOUBLE_EQ(position->longitude, 14.5);
    EXPECT_DOUBLE_EQ(*position->altitude, 225.0);
    EXPECT_DOUBLE_EQ(*position->speed, 45.0);
    EXPECT_EQ(position->time, trackTimeFromSeconds(kStart) + kTrackTicksPerSecond * 5 / 2);
    // Present in one fix only: the nearer fix's value, or the one there is.
    EXPECT_EQ(position->satellites, 7u);
    EXPECT_EQ(position->hdop, 1.0);
    EXPECT_EQ(position->pdop, 2.0);
    EXPECT_FALSE(position->course);

    EXPECT_EQ(trackPositionAt(track, at(8))->satellites, 11u);
    EXPECT_DOUBLE_EQ(trackPositionAt(track, at(10))->latitude, 51.0) << "exactly at a fix";
}

TEST(TrackPositionAt, heading_turns_the_short_way_across_north) {
    TrackPosition a = fix(0, 50.0, 14.0);
    a.course = 350.0;
    TrackPosition b = fix(4, 50.0, 14.0);
    b.course = 10.0;
    const TrackPositions track{a, b};
    EXPECT_NEAR(*trackPositionAt(track, at(2))->course, 0.0, 1e-9);
    EXPECT_NEAR(*trackPositionAt(track, at(1))->course, 355.0, 1e-9);
    EXPECT_NEAR(*trackPositionAt(track, at(3))->course, 5.0, 1e-9);
}

TEST(TrackPositionAt, outside_the_track_gives_its_first_or_last_fix_and_nothing_for_no_track) {
    const TrackPositions track{fix(0, 50.0, 14.0), fix(10, 51.0, 16.0)};
    EXPECT_DOUBLE_EQ(trackPositionAt(track, at(-100))->latitude, 50.0);
    EXPECT_EQ(trackPositionAt(track, at(-100))->time, track.front().time);
    EXPECT_DOUBLE_EQ(trackPositionAt(track, at(3600))->latitude, 51.0);
    EXPECT_FALSE(trackPositionAt({}, at(0)));
    EXPECT_DOUBLE_EQ(trackPositionAt({fix(0, 1.0, 2.0)}, at(5))->longitude, 2.0);
}
