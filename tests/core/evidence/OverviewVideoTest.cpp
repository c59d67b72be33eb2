// The overview video checked with ffprobe and against overlays drawn by the ffmpeg command's drawtext.
#include "core/evidence/OverviewVideo.h"
#include "core/evidence/OverviewVideoOverlay.h"

#include "../CutFixture.h"
#include "support/StripeMedia.h"

#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace cutfixture;

namespace {

// Plain grey recordings, so that the only detail in a picture is the burned-in text: three items of 3 s,
// the first two with a rear file half the size.
class GreyMedia {
public:
    static GreyMedia& instance() {
        static GreyMedia media;
        return media;
    }
    Playlist::RawItems items() const {
        Playlist::RawItems result;
        for (int i = 0; i < 3; ++i) {
            auto item = std::make_shared<Playlist::RawItem>();
            item->mainVideo = QFileInfo(m_dir.filePath(QStringLiteral("main%1.mp4").arg(i)));
            if (i < 2)
                item->rearVideo = QFileInfo(m_rear);
            item->from = at(3.0 * i);
            item->to = at(3.0 * i + 3.0);
            result.push_back(item);
        }
        return result;
    }

private:
    GreyMedia() {
        for (int i = 0; i < 3; ++i)
            write(m_dir.filePath(QStringLiteral("main%1.mp4").arg(i)), 320, 180, true);
        m_rear = m_dir.filePath(QStringLiteral("rear.mp4"));
        write(m_rear, 160, 96, false);
    }
    static void write(const QString& path, int width, int height, bool sound) {
        QStringList args{"-f", "lavfi", "-i", QStringLiteral("color=c=gray:s=%1x%2:r=25:d=3").arg(width).arg(height)};
        if (sound)
            args << "-f" << "lavfi" << "-i" << "sine=frequency=440:sample_rate=44100:duration=3" << "-c:a" << "aac";
        testsupport::runFfmpeg(args << "-c:v" << "libx264" << "-g" << "25" << "-pix_fmt" << "yuv420p" << path);
    }
    QTemporaryDir m_dir;
    QString m_rear;
};

// A fix a second from base(), driving north-east at 50 km/h.
TrackPositions track(int seconds) {
    TrackPositions positions;
    for (int s = 0; s < seconds; ++s) {
        TrackPosition fix;
        fix.time = trackTimeFromSeconds(at(s).toSecsSinceEpoch());
        fix.latitude = 55.75 + s * 1e-4;
        fix.longitude = 37.61 + s * 1e-4;
        fix.speed = 50.0;
        fix.course = 45.0;
        positions.push_back(fix);
    }
    return positions;
}

// Of the pixels where two renderings clearly differ, the share where `picture` is nearer the first.
double shareNearer(const QImage& picture, const QImage& right, const QImage& wrong) {
    int telling = 0;
    int nearer = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const int r = qGray(right.pixel(x, y));
            const int w = qGray(wrong.pixel(x, y));
            if (std::abs(r - w) < 64)
                continue;
            const int p = qGray(picture.pixel(x, y));
            ++telling;
            nearer += std::abs(p - r) < std::abs(p - w);
        }
    }
    return telling > 0 ? static_cast<double>(nearer) / telling : 0.0;
}

} // namespace

class OverviewVideoTest : public CutTest {
protected:
    // What drawtext of the ffmpeg command draws for `text` with the overview's settings on a grey picture.
    QImage reference(const QString& text, const QString& name) {
        const QString textFile = output(name + ".txt");
        QFile file(textFile);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text.toUtf8());
        file.close();
        const QString png = output(name + ".png");
        testsupport::runFfmpeg(
            {"-f", "lavfi", "-i", "color=c=gray:s=620x180", "-frames:v", "1", "-vf",
             QStringLiteral("format=yuv420p,drawtext=fontfile=%1:textfile=%2:expansion=none:fontsize=12:"
                            "fontcolor=white:box=1:boxcolor=black@0.6:boxborderw=3:line_spacing=3:x=6:y=6")
                 .arg(OverviewVideo::defaultFontFile(), textFile),
             png});
        return QImage(png).convertToFormat(QImage::Format_Grayscale8);
    }
};

TEST_F(OverviewVideoTest, cameras_side_by_side_in_h264_and_aac_over_a_file_change) {
    const QString file = output("overview.mp4");
    OverviewVideo overview(Media::instance().items(), {at(1.0), at(5.0)}, file, track(10),
                           SpeedUnit::KilometresPerHour);
    EncoderRun run(overview);
    ASSERT_EQ(run.doneTrue, 1);
    EXPECT_EQ(run.endSignals(), 1);
    EXPECT_TRUE(run.progressNeverFalls());
    EXPECT_EQ(run.progress.back(), 100);
    const auto streams = testsupport::probeStreams(file);
    ASSERT_EQ(streams.size(), 2u);
    EXPECT_EQ(streams[0].codec, "h264");
    // 320x180 beside 160x96 scaled to the same height: 300x180.
    EXPECT_EQ(streams[0].width, 320 + 300);
    EXPECT_EQ(streams[0].height, 180);
    EXPECT_EQ(streams[1].codec, "aac");
    EXPECT_NEAR(testsupport::probeDuration(file), 4.0, 0.1);
    expectContinuousTimestamps(file);
    EXPECT_EQ(QDir(m_out.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"overview.mp4"});
}

TEST_F(OverviewVideoTest, overlay_shows_each_moment_and_a_camera_without_a_file_is_black) {
    const QString file = output("grey.mp4");
    const TrackPositions positions = track(10);
    OverviewVideo overview(GreyMedia::instance().items(), {at(0.0), at(9.0)}, file, positions,
                           SpeedUnit::KilometresPerHour);
    EncoderRun run(overview);
    ASSERT_EQ(run.doneTrue, 1);
    for (int second : {1, 4}) {
        SCOPED_TRACE(second);
        const QImage frame = testsupport::extractFrame(file, second + 0.3, output(QStringLiteral("frame%1.png").arg(second)));
        ASSERT_EQ(frame.size(), QSize(620, 180));
        auto expected = [&](int s) {
            return reference(evidence::overlayText(at(s), &positions[static_cast<std::size_t>(s)],
                                                   SpeedUnit::KilometresPerHour),
                             QStringLiteral("ref%1-%2").arg(second).arg(s));
        };
        // Where the text of its own second and that of the next one differ, it shows its own.
        EXPECT_GT(shareNearer(frame, expected(second), expected(second + 1)), 0.9);
    }
    // The rear camera has no file in the third item: its place is black there, grey before.
    const QRect rearMiddle(450, 60, 40, 40);
    const QImage withRear = testsupport::extractFrame(file, 4.5, output("rear4.png"));
    const QImage withoutRear = testsupport::extractFrame(file, 7.5, output("rear7.png"));
    EXPECT_NEAR(qGray(withRear.pixel(rearMiddle.center())), 128, 20);
    EXPECT_LT(qGray(withoutRear.pixel(rearMiddle.center())), 30);
    // Each camera's name in white at the foot of its picture.
    for (int left : {0, 320}) {
        int white = 0;
        for (int y = 150; y < 180; ++y)
            for (int x = left; x < left + 60; ++x)
                white += qGray(withRear.pixel(x, y)) > 200;
        EXPECT_GT(white, 10) << "no name at x " << left;
    }
}

TEST_F(OverviewVideoTest, cancel_failure_and_an_empty_interval_leave_nothing_behind) {
    {
        const QString file = output("canceled.mp4");
        OverviewVideo overview(Media::instance().items(), {at(0.0), at(9.0)}, file, {}, SpeedUnit::MilesPerHour);
        EncoderRun run(overview, 30);
        EXPECT_EQ(run.canceled, 1);
        EXPECT_EQ(run.endSignals(), 1);
    }
    {
        OverviewVideo overview(Media::instance().items(), {at(20.0), at(25.0)}, output("empty.mp4"), {},
                               SpeedUnit::KilometresPerHour);
        EncoderRun run(overview);
        EXPECT_EQ(run.doneFalse, 1);
        EXPECT_EQ(run.endSignals(), 1);
    }
    const QStringList left = QDir(m_out.path()).entryList(QDir::Files | QDir::Hidden); // the partial file is hidden
    EXPECT_TRUE(left.isEmpty()) << left.join(", ").toStdString();

    FullDisk disk;
    if (!disk.mounted())
        GTEST_SKIP() << disk.skipReason();
    OverviewVideo overview(Media::instance().items(), {at(0.0), at(9.0)}, disk.filePath("full.mp4"), {},
                           SpeedUnit::KilometresPerHour);
    EncoderRun run(overview);
    EXPECT_EQ(run.doneFalse, 1);
    EXPECT_EQ(run.endSignals(), 1);
    EXPECT_TRUE(disk.entries().isEmpty()) << disk.entries().join(", ").toStdString();
}

TEST(OverviewVideoOverlay, text_of_a_moment) {
    const QDateTime moscow(QDate(2024, 5, 1), QTime(10, 0, 5), Qt::OffsetFromUTC, 3 * 3600);
    const QDateTime newfoundland(QDate(2024, 1, 2), QTime(23, 59, 59), Qt::OffsetFromUTC, -(3 * 3600 + 1800));
    TrackPosition full;
    full.time = trackTimeFromSeconds(moscow.toSecsSinceEpoch());
    full.latitude = 55.7512345;
    full.longitude = 37.6123456;
    full.speed = 80.0;
    full.course = 359.6;
    TrackPosition southWest = full;
    southWest.latitude = -33.5;
    southWest.longitude = -70.25;
    southWest.speed.reset();
    southWest.course.reset();
    struct Case {
        QDateTime time;
        const TrackPosition* fix;
        SpeedUnit unit;
        const char* text;
    } cases[] = {
        {moscow, &full, SpeedUnit::KilometresPerHour,
         "2024-05-01 10:00:05 UTC+03:00\n80 km/h  0° N\n55.751235° N  37.612346° E"},
        {moscow, &full, SpeedUnit::MilesPerHour, "2024-05-01 10:00:05 UTC+03:00\n50 mph  0° N\n55.751235° N  37.612346° E"},
        {newfoundland, &southWest, SpeedUnit::KilometresPerHour,
         "2024-01-02 23:59:59 UTC-03:30\n-- km/h  --\n33.500000° S  70.250000° W"},
        {newfoundland, nullptr, SpeedUnit::KilometresPerHour, "2024-01-02 23:59:59 UTC-03:30\nno GPS fix"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(evidence::overlayText(c.time, c.fix, c.unit).toStdString(), c.text);

    EXPECT_EQ(evidence::compassPoint(22.4), "N");
    EXPECT_EQ(evidence::compassPoint(22.6), "NE");
    EXPECT_EQ(evidence::compassPoint(-90.0), "W");
    EXPECT_EQ(evidence::compassPoint(200.0), "S");
}

TEST(OverviewVideoOverlay, fix_in_force_is_the_last_one_until_it_is_two_seconds_old) {
    const TrackPositions positions = track(3); // fixes at 0, 1 and 2 s
    struct Case {
        double seconds;
        int fix; // index, -1 none
    } cases[] = {{-0.5, -1}, {0.0, 0}, {0.9, 0}, {1.0, 1}, {2.5, 2}, {3.9, 2}, {4.0, -1}};
    for (const Case& c : cases) {
        const TrackPosition* fix = evidence::fixInForce(positions, at(c.seconds));
        EXPECT_EQ(fix ? static_cast<int>(fix - positions.data()) : -1, c.fix) << c.seconds << " s";
    }
}
