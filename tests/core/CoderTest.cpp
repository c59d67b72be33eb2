// Transcoded cuts checked with ffprobe: the turned picture, joins between files, sound, cancel and failure.
#include "core/encoding/Coder.h"

#include "CutFixture.h"
#include "support/TestSupport.h"

#include <QThread>
#include <QTimer>

#include <atomic>
#include <cmath>
#include <cstring>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace cutfixture;

using CoderTest = CutTest;

TEST_F(CoderTest, quarter_turn_swaps_the_size_and_keeps_the_codec_and_the_sound) {
    const QString file = output("turned.mp4");
    Coder coder(Media::instance().items(), {at(0.5), at(2.5)}, settings(file, true, 1));
    EncoderRun run(coder);
    ASSERT_EQ(run.doneTrue, 1);
    EXPECT_EQ(run.endSignals(), 1);
    const auto streams = testsupport::probeStreams(file);
    ASSERT_EQ(streams.size(), 2u);
    EXPECT_EQ(streams[0].codec, "h264");
    EXPECT_EQ(streams[0].width, 180);
    EXPECT_EQ(streams[0].height, 320);
    EXPECT_EQ(streams[1].type, "audio");
    EXPECT_NEAR(testsupport::probeDuration(file), 2.0, 0.2);
}

TEST_F(CoderTest, half_turn_and_rear_camera_keep_the_rear_size_without_sound) {
    const QString file = output("rear.mkv");
    EncodingSettings chosen = settings(file, true, 2);
    chosen.camera = 1;
    chosen.onlyVideo = true;
    Coder coder(Media::instance().items(), {at(1.0), at(2.0)}, chosen);
    EncoderRun run(coder);
    ASSERT_EQ(run.doneTrue, 1);
    const auto streams = testsupport::probeStreams(file);
    ASSERT_EQ(streams.size(), 1u);
    EXPECT_EQ(streams[0].width, 160);
    EXPECT_EQ(streams[0].height, 96);
}

TEST_F(CoderTest, cut_over_three_files_is_continuous_and_progress_reaches_the_end) {
    const QString file = output("joined.mp4");
    Coder coder(Media::instance().items(), {at(1.5), at(7.5)}, settings(file, true, 3));
    EncoderRun run(coder);
    ASSERT_EQ(run.doneTrue, 1);
    EXPECT_NEAR(testsupport::probeDuration(file), 6.0, 0.2);
    expectContinuousTimestamps(file);
    // 6 s at 25 frames a second, no frame lost or doubled at the joins.
    const auto packets = testsupport::probePackets(file);
    EXPECT_NEAR(std::count_if(packets.begin(), packets.end(), [](const auto& p) { return p.stream == 0; }), 150, 2);
    EXPECT_TRUE(run.progressNeverFalls());
    ASSERT_FALSE(run.progress.empty());
    EXPECT_GE(run.progress.back(), 95);
    EXPECT_LE(run.progress.back(), 105);
}

// The decoded sound of a file as the player hears it: mono samples one after another, whatever the timestamps say.
static std::vector<float> heardSamples(const QString& file, int sampleRate) {
    QProcess ffmpeg;
    ffmpeg.start("ffmpeg", {"-v", "error", "-i", file, "-map", "0:a", "-ac", "1", "-ar", QString::number(sampleRate),
                            "-f", "f32le", "-"});
    if (!ffmpeg.waitForFinished(60000) || ffmpeg.exitCode() != 0)
        return {};
    const QByteArray bytes = ffmpeg.readAllStandardOutput();
    std::vector<float> samples(static_cast<std::size_t>(bytes.size()) / sizeof(float));
    std::memcpy(samples.data(), bytes.constData(), samples.size() * sizeof(float));
    return samples;
}

TEST_F(CoderTest, sound_longer_or_shorter_than_the_picture_stays_with_it_over_ten_files) {
    // Ten 2 s files whose sound (a beep at each file's start) runs 3 % longer or shorter than the picture.
    constexpr int kRate = 44100;
    Playlist::RawItems items;
    for (int i = 0; i < 10; ++i) {
        const QString file = output(QStringLiteral("beep%1.mp4").arg(i));
        const QString soundSeconds = i % 2 == 0 ? "2.06" : "1.94";
        QProcess ffmpeg;
        ffmpeg.start("ffmpeg", {"-v", "error", "-y", "-t", "2", "-f", "lavfi", "-i", "color=black:size=160x90:rate=25",
                                "-t", soundSeconds, "-f", "lavfi", "-i",
                                QStringLiteral("aevalsrc=0.5*sin(2*PI*880*t)*lt(t\\,0.25):s=%1").arg(kRate),
                                "-c:v", "libx264", "-preset", "ultrafast", "-c:a", "aac", file});
        ASSERT_TRUE(ffmpeg.waitForFinished(60000) && ffmpeg.exitCode() == 0) << ffmpeg.readAllStandardError().toStdString();
        auto item = std::make_shared<Playlist::RawItem>();
        item->mainVideo = QFileInfo(file);
        item->from = at(2.0 * i);
        item->to = at(2.0 * i + 2.0);
        items.push_back(item);
    }
    const QString file = output("beeps.mp4");
    Coder coder(items, {at(0.0), at(20.0)}, settings(file, true));
    EncoderRun run(coder);
    ASSERT_EQ(run.doneTrue, 1);

    std::vector<double> frames;
    for (const auto& packet : testsupport::probePackets(file))
        if (packet.stream == 0)
            frames.push_back(packet.pts);
    std::sort(frames.begin(), frames.end());
    ASSERT_EQ(frames.size(), 500u) << "every picture of the ten files, none doubled";
    const std::vector<float> sound = heardSamples(file, kRate);
    const auto onsetAfter = [&](double seconds) {
        const auto from = sound.begin() + std::min<std::ptrdiff_t>(sound.size(), std::llround(seconds * kRate));
        const auto loud = std::find_if(from, sound.end(), [](float sample) { return std::abs(sample) > 0.25f; });
        return static_cast<double>(loud - sound.begin()) / kRate;
    };
    // The first file's beep against its first picture gives the codecs' own delay; the last file's beep
    // must lie as far from the last file's first picture, within one audio frame.
    const double codecDelay = onsetAfter(0.0) - frames[0];
    const double lastFileStart = frames[450];
    EXPECT_NEAR(onsetAfter(lastFileStart - 0.5) - lastFileStart, codecDelay, 1024.0 / kRate);
}

TEST_F(CoderTest, still_picture_under_one_kilobit_a_second_encodes_at_the_floor) {
    // A still grey picture at one frame a second: some 600 bit/s, where x264 would get 0 kbit/s.
    const QString still = output("still.mp4");
    QProcess ffmpeg;
    ffmpeg.start("ffmpeg", {"-v", "error", "-y", "-f", "lavfi", "-i", "color=gray:size=320x180:rate=1:duration=12",
                            "-c:v", "libx264", "-crf", "51", "-g", "1000", "-pix_fmt", "yuv420p", still});
    ASSERT_TRUE(ffmpeg.waitForFinished(60000) && ffmpeg.exitCode() == 0);
    auto item = std::make_shared<Playlist::RawItem>(*Media::instance().items()[0]);
    item->mainVideo = QFileInfo(still);
    item->to = at(12.0);
    testsupport::LogCapture log;
    const QString file = output("still-cut.mp4");
    Coder coder({item}, {at(2.0), at(10.0)}, settings(file, true));
    EncoderRun run(coder);
    ASSERT_EQ(run.doneTrue, 1);
    EXPECT_NEAR(testsupport::probeDuration(file), 8.0, 1.0);
    EXPECT_EQ(log.linesContaining("below the 1000 bit/s the encoder takes for 320x180").size(), 1u);
}

TEST_F(CoderTest, later_file_at_another_sample_rate_fails_and_leaves_nothing) {
    testsupport::LogCapture log;
    Playlist::RawItems items = Media::instance().items();
    auto other = std::make_shared<Playlist::RawItem>(*items[1]);
    other->mainVideo = QFileInfo(Media::instance().path("other48k.mp4"));
    items[1] = other;
    const QString file = output("rates.mp4");
    Coder coder(items, {at(2.0), at(4.0)}, settings(file, true));
    EncoderRun run(coder);
    EXPECT_EQ(run.doneFalse, 1);
    EXPECT_EQ(run.endSignals(), 1);
    EXPECT_EQ(log.linesContaining("Sample rate is differs").size(), 3u) << "loop, item and run level";
    EXPECT_FALSE(QFile::exists(file));
}

TEST_F(CoderTest, cancel_mid_way_deletes_the_file_and_signals_canceled_once) {
    const QString file = output("canceled.mp4");
    Coder coder(Media::instance().items(), {at(0.0), at(9.0)}, settings(file, true));
    EncoderRun run(coder, 20);
    EXPECT_EQ(run.canceled, 1);
    EXPECT_EQ(run.endSignals(), 1);
    EXPECT_FALSE(QFile::exists(file));
}

TEST_F(CoderTest, full_disk_fails_once_and_leaves_nothing) {
    FullDisk disk;
    if (!disk.mounted())
        GTEST_SKIP() << disk.skipReason();
    const QString file = disk.filePath("full.mp4");
    Coder coder(Media::instance().items(), {at(0.0), at(9.0)}, settings(file, true));
    EncoderRun run(coder);
    EXPECT_EQ(run.doneFalse, 1);
    EXPECT_EQ(run.endSignals(), 1);
    EXPECT_TRUE(disk.entries().isEmpty()) << disk.entries().join(", ").toStdString();
}

TEST_F(CoderTest, runs_on_a_worker_thread_and_cancel_from_this_thread_stops_it) {
    const QString file = output("worker.mp4");
    auto* coder = new Coder(Media::instance().items(), {at(0.0), at(9.0)}, settings(file, true, 1));
    QThread worker;
    coder->moveToThread(&worker);
    QObject::connect(&worker, &QThread::finished, coder, &QObject::deleteLater);
    std::atomic<int> lastPercent{0};
    int canceled = 0;
    int done = 0;
    QObject context;
    QObject::connect(coder, &BaseEncoder::progress, &context, [&](int percent) { lastPercent = percent; });
    QObject::connect(coder, &BaseEncoder::canceled, &context, [&] { ++canceled; });
    QObject::connect(coder, &BaseEncoder::done, &context, [&](bool) { ++done; });
    worker.start();
    QTimer::singleShot(0, coder, &BaseEncoder::encode);
    EXPECT_TRUE(testsupport::waitUntil([&] { return lastPercent >= 5 || done > 0; }, 60000));
    coder->cancel(); // as the progress dialog does, through a direct connection
    EXPECT_TRUE(testsupport::waitUntil([&] { return canceled + done > 0; }, 60000));
    testsupport::waitUntil([] { return false; }, 100); // no second end signal may follow
    EXPECT_EQ(canceled, 1);
    EXPECT_EQ(done, 0);
    EXPECT_LT(lastPercent, 100);
    EXPECT_FALSE(QFile::exists(file));
    worker.quit();
    worker.wait();
}
