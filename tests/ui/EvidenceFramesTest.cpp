// Pictures of an evidence pack: the frame of each moment found by the number it carries, EXIF read back by exiv2.
#include "ui/EvidenceFrames.h"

#include "support/StripeMedia.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

const QDateTime kBase(QDate(2024, 5, 1), QTime(10, 0, 0));

QDateTime at(double seconds) {
    return kBase.addMSecs(static_cast<qint64>(seconds * 1000));
}

// Two 4 s items at 30 frames a second, numbered on from 0 and 120; only the first has a rear file.
Playlist::RawItems items(const QString& dir) {
    Playlist::RawItems result;
    for (int i = 0; i < 2; ++i) {
        testsupport::StripeVideo video;
        video.firstFrame = 120 * i;
        auto item = std::make_shared<Playlist::RawItem>();
        item->mainVideo = QFileInfo(dir + QStringLiteral("/main%1.mp4").arg(i));
        testsupport::writeStripeVideo(item->mainVideo.filePath(), video);
        if (i == 0) {
            video.width = 160;
            video.height = 96;
            item->rearVideo = QFileInfo(dir + QStringLiteral("/rear0.mp4"));
            testsupport::writeStripeVideo(item->rearVideo->filePath(), video);
        }
        item->from = at(4.0 * i);
        item->to = at(4.0 * i + 4.0);
        result.push_back(item);
    }
    return result;
}

QString exiv2(const QString& key, const QString& path) {
    QProcess process;
    process.start(QStringLiteral("exiv2"), {"-q", "-Pv", "-K", key, path});
    process.waitForFinished(30000);
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

} // namespace

TEST(EvidenceFrames, each_camera_at_each_moment_with_time_and_position_in_exif) {
    QTemporaryDir dir;
    const Playlist::RawItems recordings = items(dir.path());
    TrackPositions track;
    for (int s = 0; s <= 8; ++s) {
        TrackPosition fix;
        fix.time = trackTimeFromSeconds(at(s).toSecsSinceEpoch());
        fix.latitude = 50.0 + s * 0.001;
        fix.longitude = 14.0;
        fix.speed = 36.0;
        track.push_back(fix);
    }
    const QString folder = dir.filePath(QStringLiteral("frames"));
    ASSERT_TRUE(QDir().mkpath(folder));

    QStringList errors;
    const auto frames = EvidenceFrames(recordings, track).write({at(0.0), at(1.5), at(5.0), at(8.0)}, folder, &errors);
    EXPECT_TRUE(errors.isEmpty()) << errors.join('\n').toStdString();
    struct Expected {
        double seconds;
        int camera;
        int frameNumber; // the picture on screen then: the last one at or before the moment
        QSize size;
    } expected[] = {
        {0.0, 0, 0, {320, 180}}, {0.0, 1, 0, {160, 96}}, {1.5, 0, 45, {320, 180}},
        {1.5, 1, 45, {160, 96}}, {5.0, 0, 150, {320, 180}}, {8.0, 0, 239, {320, 180}}, // the end: the last picture
    };
    ASSERT_EQ(frames.size(), std::size(expected));
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const Expected& e = expected[i];
        SCOPED_TRACE(frames[i].path.toStdString());
        EXPECT_EQ(frames[i].moment, at(e.seconds));
        EXPECT_EQ(frames[i].camera, e.camera);
        EXPECT_EQ(QFileInfo(frames[i].path).fileName(), EvidenceFrames::fileName(at(e.seconds), e.camera));
        const QImage picture(frames[i].path);
        EXPECT_EQ(picture.size(), e.size);
        EXPECT_EQ(testsupport::readFrameNumber(picture), e.frameNumber);
        EXPECT_EQ(exiv2("Exif.Photo.DateTimeOriginal", frames[i].path),
                  at(e.seconds).toString(QStringLiteral("yyyy:MM:dd HH:mm:ss")));
        EXPECT_EQ(exiv2("Exif.GPSInfo.GPSLatitudeRef", frames[i].path), "N");
        EXPECT_FALSE(exiv2("Exif.GPSInfo.GPSLongitude", frames[i].path).isEmpty());
    }
    // 1.5 s lies half-way between the fixes of 1 s and 2 s: 50.0015 degrees = 50° 0' 5.4".
    EXPECT_EQ(exiv2("Exif.GPSInfo.GPSLatitude", frames[2].path), "50/1 0/1 5400/1000");
    EXPECT_EQ(QDir(folder).entryList(QDir::Files).size(), 6);

    // A moment without any recording gives no picture; a cancel before the first picture gives none at all.
    EXPECT_TRUE(EvidenceFrames(recordings, track).write({at(20.0)}, folder).empty());
    const std::atomic<bool> canceled{true};
    EXPECT_TRUE(EvidenceFrames(recordings, track).write({at(1.0)}, folder, nullptr, &canceled).empty());
}
