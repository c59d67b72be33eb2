// The GPS tracks embedded in videos: every family against the fixes written and against exiftool's reading of
// the same file, damaged stores, and a file without any.
#include "core/embedded/EmbeddedTrackReader.h"

#include "logging/Logging.h"
#include "support/EmbeddedGps.h"
#include "support/RecordingFixtures.h"
#include "support/TestSupport.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace gps = testsupport::gps;
using testing::IsEmpty;
using testing::Not;

namespace {

const QDateTime kStart(QDate(2024, 6, 14), QTime(6, 0, 0), Qt::UTC);
constexpr int kFixes = 6;

struct Family {
    const char* name;
    std::function<bool(const QString&, const std::vector<gps::Fix>&)> add;
    bool speed, course, altitude, acceleration;
    bool exiftoolReads;       // exiftool 12.57 (Debian 12) predates GPS9
    int exiftoolSecondsAhead; // CAMM: exiftool shows GPS time, which runs 18 s ahead of UTC
};

const Family kFamilies[] = {
    {"freeGPS plain, listed", [](auto& p, auto& f) { return gps::addFreeGpsListed(p, gps::FreeGpsLayout::Plain, f); },
     true, true, false, false, true, 0},
    {"freeGPS compact with accelerometer, listed",
     [](auto& p, auto& f) { return gps::addFreeGpsListed(p, gps::FreeGpsLayout::Compact, f); }, true, true, false, true, true, 0},
    {"freeGPS doubles with accelerometer, in mdat",
     [](auto& p, auto& f) { return gps::addFreeGpsInMdat(p, gps::FreeGpsLayout::Double, f); }, true, true, false, true, true, 0},
    {"NMEA in a tx3g track", gps::addNmeaTextTrack, true, true, true, false, true, 0},
    {"NMEA log in a box", gps::addNmeaBox, true, true, true, false, true, 0},
    {"GPS box dated by the name", gps::addGpsBox, true, false, false, false, true, 0},
    {"GPMF GPS5", [](auto& p, auto& f) { return gps::addGpmfTrack(p, f, false); }, true, false, true, true, true, 0},
    {"GPMF GPS9", [](auto& p, auto& f) { return gps::addGpmfTrack(p, f, true); }, true, false, true, true, false, 0},
    {"CAMM", gps::addCammTrack, true, true, true, true, true, 18},
};

// "2024:06:14 06:00:03.5Z" as seconds since 1970, or -1.
qint64 exiftoolSeconds(const QString& text) {
    QDateTime time = QDateTime::fromString(text.left(19), "yyyy:MM:dd HH:mm:ss");
    time.setTimeSpec(Qt::UTC);
    return time.isValid() ? time.toSecsSinceEpoch() : -1;
}

class EmbeddedTrackReaderTest : public testing::Test {
protected:
    // A 2 s video the store is added to; named like the recordings of a camera that dates its files.
    QString video(const QString& name = QStringLiteral("2024_0614_060000_F.MP4")) {
        const QString path = m_dir.filePath(name);
        QFile::remove(path);
        EXPECT_TRUE(QFile::copy(testsupport::tinyVideo(2), path));
        QFile(path).setPermissions(QFile::ReadOwner | QFile::WriteOwner);
        return path;
    }
    QTemporaryDir m_dir;
};

} // namespace

TEST_F(EmbeddedTrackReaderTest, every_family_gives_the_fixes_written_and_agrees_with_exiftool) {
    // The name is local time; the GPS box takes its date from it.
    const QDateTime localStart = kStart.toLocalTime();
    const QString name = localStart.toString("yyyy_MMdd_HHmmss") + "_F.MP4";
    const std::vector<gps::Fix> fixes = gps::drive(kStart, kFixes);
    for (const Family& family : kFamilies) {
        SCOPED_TRACE(family.name);
        const QString path = video(name);
        ASSERT_TRUE(family.add(path, fixes));
        // tools/fuzz-boxes/run starts from these files.
        if (const QString seeds = qEnvironmentVariable("REELVUE_FUZZ_SEEDS"); !seeds.isEmpty())
            QFile::copy(path, seeds + "/" + QString::fromLatin1(family.name).replace(' ', '-'));
        const std::optional<EmbeddedTrack> track = EmbeddedTrackReader::read(path, localStart);
        ASSERT_TRUE(track);
        ASSERT_EQ(track->positions.size(), fixes.size());
        EXPECT_EQ(track->recordCount, fixes.size());
        for (std::size_t i = 0; i < fixes.size(); ++i) {
            const TrackPosition& p = track->positions[i];
            const gps::Fix& fix = fixes[i];
            EXPECT_EQ(trackTimeToSeconds(p.time), fix.utc.toSecsSinceEpoch()) << i;
            EXPECT_NEAR(p.latitude, fix.latitude, 1e-5) << i;
            EXPECT_NEAR(p.longitude, fix.longitude, 1e-5) << i;
            EXPECT_EQ(p.speed.has_value(), family.speed);
            if (p.speed) {
                EXPECT_NEAR(*p.speed, fix.speedKmh, 0.05) << i;
            }
            EXPECT_EQ(p.course.has_value(), family.course);
            if (p.course) {
                EXPECT_NEAR(*p.course, fix.course, 0.05) << i;
            }
            EXPECT_EQ(p.altitude.has_value(), family.altitude);
            if (p.altitude) {
                EXPECT_NEAR(*p.altitude, fix.altitude, 0.05) << i;
            }
        }
        EXPECT_EQ(!track->acceleration.empty(), family.acceleration);
        if (!track->acceleration.empty()) {
            EXPECT_NEAR(track->acceleration.back().x, fixes.back().accelerationG[0], 0.01);
            EXPECT_NEAR(track->acceleration.back().z, fixes.back().accelerationG[2], 0.01);
        }

        // The oracle: every position is one exiftool reads too, at the same second.
        if (!family.exiftoolReads)
            continue;
        const auto documents = gps::exiftoolDocuments(path);
        ASSERT_THAT(documents, Not(IsEmpty()));
        for (const TrackPosition& p : track->positions) {
            const bool found = std::any_of(documents.begin(), documents.end(), [&](const auto& doc) {
                const auto latitude = doc.find("GPSLatitude"), longitude = doc.find("GPSLongitude");
                const auto time = doc.find("GPSDateTime");
                return latitude != doc.end() && longitude != doc.end() &&
                       std::fabs(latitude->second.toDouble() - p.latitude) < 1e-5 &&
                       std::fabs(longitude->second.toDouble() - p.longitude) < 1e-5 &&
                       (time == doc.end() || exiftoolSeconds(time->second) - family.exiftoolSecondsAhead ==
                                                 trackTimeToSeconds(p.time));
            });
            EXPECT_TRUE(found) << "no exiftool document at " << p.latitude << " " << p.longitude;
        }
    }
}

TEST_F(EmbeddedTrackReaderTest, a_recording_that_starts_without_a_fix_counts_the_seconds_before_it) {
    std::vector<gps::Fix> fixes = gps::drive(kStart, kFixes);
    fixes[0].valid = fixes[1].valid = false;
    for (const Family& family : {kFamilies[0], kFamilies[6], kFamilies[8]}) {
        SCOPED_TRACE(family.name);
        const QString path = video();
        ASSERT_TRUE(family.add(path, fixes));
        const std::optional<EmbeddedTrack> track = EmbeddedTrackReader::read(path);
        ASSERT_TRUE(track);
        EXPECT_EQ(track->recordCount, std::uint32_t(kFixes));
        ASSERT_EQ(track->positions.size(), std::size_t(kFixes - 2));
        EXPECT_EQ(track->positions.front().sentenceNumber, 2u);
        EXPECT_EQ(trackTimeToSeconds(track->positions.front().time), fixes[2].utc.toSecsSinceEpoch());
    }
}

TEST_F(EmbeddedTrackReaderTest, damaged_stores_keep_the_positions_before_the_damage_with_a_warning) {
    const std::vector<gps::Fix> fixes = gps::drive(kStart, kFixes);
    struct Damage {
        const char* name;
        std::function<bool(const QString&)> make;
        std::size_t positionsKept;
        const char* warning;
    };
    const auto cutEnd = [](const QString& path, int bytes) {
        const QByteArray all = gps::readAll(path);
        return gps::writeAll(path, all.left(all.size() - bytes));
    };
    const Damage damages[] = {
        // The blocks come last: cutting into the fourth leaves three whole ones and a list that points past the end.
        {"a gps box pointing past the end of the file",
         [&](const QString& p) {
             return gps::addFreeGpsListed(p, gps::FreeGpsLayout::Plain, fixes) && cutEnd(p, 0x400 * 2 + 0x200);
         },
         3, "runs past the end of the file"},
        {"a truncated free block in mdat",
         [&](const QString& p) { return gps::addFreeGpsInMdat(p, gps::FreeGpsLayout::Double, fixes) && cutEnd(p, 0x8000 - 0x40); },
         kFixes - 1, "cut short"},
        {"a GPMF length running past its sample",
         [&](const QString& p) {
             if (!gps::addGpmfTrack(p, fixes, false))
                 return false;
             // The last sample's DEVC claims far more than the sample holds.
             QByteArray all = gps::readAll(p);
             const int devc = all.lastIndexOf("DEVC");
             all[devc + 6] = char(0x7f);
             return gps::writeAll(p, all);
         },
         kFixes - 1, "runs past its sample"},
        {"a text track with garbage between the sentences",
         [&](const QString& p) {
             std::vector<QByteArray> samples;
             for (const gps::Fix& fix : fixes)
                 samples.push_back(fix.utc.time().second() % 2 ? QByteArray("\x01\xff garbage \x7f", 12) : gps::nmeaOf(fix));
             return gps::addTextTrack(p, samples);
         },
         kFixes / 2, "hold no sentence"},
    };
    for (const Damage& damage : damages) {
        SCOPED_TRACE(damage.name);
        const QString path = video();
        ASSERT_TRUE(damage.make(path));
        testsupport::LogCapture log;
        const std::optional<EmbeddedTrack> track = EmbeddedTrackReader::read(path);
        ASSERT_TRUE(track);
        EXPECT_EQ(track->positions.size(), damage.positionsKept);
        const auto warnings = log.linesContaining(damage.warning);
        ASSERT_THAT(warnings, Not(IsEmpty()));
        EXPECT_THAT(warnings.front(), testing::HasSubstr("WARN"));
        EXPECT_THAT(warnings.front(), testing::HasSubstr(path.toStdString()));
    }
}

TEST_F(EmbeddedTrackReaderTest, a_video_without_a_known_store_gives_nothing_and_one_debug_line) {
    const QString path = video();
    testsupport::LogCapture log;
    logging::setLevel(logging::DEBUG);
    EXPECT_FALSE(EmbeddedTrackReader::read(path));
    const auto lines = log.linesContaining("no embedded GPS track");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_THAT(lines.front(), testing::HasSubstr("DEBUG"));
    EXPECT_THAT(log.linesContaining("WARN"), IsEmpty());
}
