// Stream-copy cuts checked with ffprobe: where they start and end, which streams, joins between files,
// cancel and failure.
#include "core/encoding/Remuxer.h"

#include "CutFixture.h"
#include "logging/Logging.h"
#include "support/StripeMedia.h"
#include "support/TestSupport.h"


#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace cutfixture;

using RemuxerTest = CutTest;

TEST_F(RemuxerTest, cut_inside_one_file_starts_at_zero_and_lasts_the_request_within_a_key_frame) {
    const QString file = output("inside.mp4");
    Remuxer remuxer(Media::instance().items(), {at(1.0), at(2.5)}, settings(file));
    EncoderRun run(remuxer);
    EXPECT_EQ(run.doneTrue, 1);
    EXPECT_EQ(run.endSignals(), 1);
    EXPECT_NEAR(testsupport::probeDuration(file), 1.5, 1.0);
    const auto packets = testsupport::probePackets(file);
    ASSERT_FALSE(packets.empty());
    EXPECT_TRUE(packets.front().key);
}

TEST_F(RemuxerTest, cut_over_three_files_joins_them_without_going_back_or_leaving_gaps) {
    const QString file = output("joined.mp4");
    Remuxer remuxer(Media::instance().items(), {at(1.5), at(7.5)}, settings(file));
    EncoderRun run(remuxer);
    ASSERT_EQ(run.doneTrue, 1);
    EXPECT_EQ(run.endSignals(), 1);
    EXPECT_NEAR(testsupport::probeDuration(file), 6.0, 1.0);
    const auto streams = testsupport::probeStreams(file);
    EXPECT_EQ(countOf(streams, "video"), 1);
    EXPECT_EQ(countOf(streams, "audio"), 1);
    expectContinuousTimestamps(file);
    EXPECT_TRUE(run.progressNeverFalls());
    ASSERT_FALSE(run.progress.empty());
    EXPECT_EQ(run.progress.front(), 0);
    EXPECT_GE(run.progress.back(), 80);
}

TEST_F(RemuxerTest, end_runs_on_to_the_first_key_frame_after_the_request) {
    const QString file = output("end.mkv");
    Remuxer remuxer(Media::instance().items(), {at(0.0), at(1.4)}, settings(file));
    EncoderRun run(remuxer);
    ASSERT_EQ(run.doneTrue, 1);
    // Key frames each second: the cut stops before the one at 2 s, so 2 s of pictures (50 frames).
    const auto packets = testsupport::probePackets(file);
    const auto video = std::count_if(packets.begin(), packets.end(), [](const auto& p) { return p.stream == 0; });
    EXPECT_EQ(video, 50);
    EXPECT_EQ(std::count_if(packets.begin(), packets.end(), [](const auto& p) { return p.stream == 0 && p.key; }), 2);
}

TEST_F(RemuxerTest, start_with_no_key_frame_after_it_takes_the_key_frame_before) {
    // A file of one group of pictures, and a start in the last second of a file whose key frames come each
    // second: no key frame follows either start in its file.
    testsupport::MediaOptions oneGroup;
    oneGroup.keyFrameInterval = 1000;
    const QString single = output("one-group.mp4");
    ASSERT_TRUE(testsupport::generateVideo(single, oneGroup));
    auto singleItem = std::make_shared<Playlist::RawItem>(*Media::instance().items()[0]);
    singleItem->mainVideo = QFileInfo(single);
    const struct {
        const char* name;
        Playlist::RawItems items;
        TimeInterval interval;
        double seconds; // from the key frame before the start
    } cases[] = {
        {"one-group.mp4", {singleItem}, {at(1.5), at(2.5)}, 3.0},
        {"near-end.mp4", Media::instance().items(), {at(2.5), at(4.0)}, 3.0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        testsupport::LogCapture log;
        const QString file = output(QStringLiteral("cut-") + c.name);
        Remuxer remuxer(c.items, c.interval, settings(file));
        EncoderRun run(remuxer);
        ASSERT_EQ(run.doneTrue, 1);
        EXPECT_NEAR(testsupport::probeDuration(file), c.seconds, 0.2);
        const auto packets = testsupport::probePackets(file);
        EXPECT_TRUE(!packets.empty() && packets.front().key);
        EXPECT_EQ(log.linesContaining("key frame before").size(), 1u);
    }
}

TEST_F(RemuxerTest, later_file_with_more_streams_keeps_the_streams_of_the_first) {
    Playlist::RawItems items = Media::instance().items();
    auto extra = std::make_shared<Playlist::RawItem>(*items[1]);
    extra->mainVideo = QFileInfo(Media::instance().path("extra1.mp4"));
    items[1] = extra;
    const QString file = output("extra.mp4");
    Remuxer remuxer(items, {at(1.0), at(5.0)}, settings(file));
    EncoderRun run(remuxer);
    ASSERT_EQ(run.doneTrue, 1);
    EXPECT_EQ(testsupport::probeStreams(file).size(), 2u);
    expectContinuousTimestamps(file);
}

TEST_F(RemuxerTest, only_video_drops_the_sound) {
    const QString file = output("silent.mov");
    EncodingSettings chosen = settings(file);
    chosen.onlyVideo = true;
    Remuxer remuxer(Media::instance().items(), {at(2.0), at(4.0)}, chosen);
    EncoderRun run(remuxer);
    ASSERT_EQ(run.doneTrue, 1);
    const auto streams = testsupport::probeStreams(file);
    ASSERT_EQ(streams.size(), 1u);
    EXPECT_EQ(streams[0].type, "video");
}

TEST_F(RemuxerTest, rear_camera_is_cut_from_the_rear_files_and_falls_back_to_the_main_file) {
    const QString rear = output("rear.mp4");
    EncodingSettings chosen = settings(rear);
    chosen.camera = 1;
    Remuxer remuxer(Media::instance().items(), {at(0.0), at(2.0)}, chosen);
    EncoderRun run(remuxer);
    ASSERT_EQ(run.doneTrue, 1);
    const auto streams = testsupport::probeStreams(rear);
    ASSERT_FALSE(streams.empty());
    EXPECT_EQ(streams[0].width, 160);

    // The third item has no rear file: its main file is read instead, and logged as such.
    testsupport::LogCapture log;
    logging::setLevel(logging::DEBUG);
    const QString fallback = output("fallback.mp4");
    chosen.filePath = fallback;
    Remuxer third(Media::instance().items(), {at(6.5), at(8.0)}, chosen);
    EncoderRun thirdRun(third);
    ASSERT_EQ(thirdRun.doneTrue, 1);
    EXPECT_EQ(testsupport::probeStreams(fallback)[0].width, 320);
    const auto opened = log.linesContaining("Remuxe from");
    ASSERT_EQ(opened.size(), 1u);
    EXPECT_THAT(opened[0], testing::HasSubstr("main2.mp4"));
}

TEST_F(RemuxerTest, missing_file_is_skipped_and_a_cut_outside_the_items_makes_no_file) {
    testsupport::LogCapture log;
    Playlist::RawItems items = Media::instance().items();
    auto missing = std::make_shared<Playlist::RawItem>(*items[0]);
    missing->mainVideo = QFileInfo(output("gone.mp4"));
    items[0] = missing;
    const QString file = output("skipped.mp4");
    Remuxer remuxer(items, {at(1.0), at(4.0)}, settings(file));
    EncoderRun run(remuxer);
    EXPECT_EQ(run.doneTrue, 1);
    EXPECT_EQ(log.linesContaining("Could not open input file").size(), 1u);
    EXPECT_GT(testsupport::probeDuration(file), 0.5);

    const QString none = output("none.mp4");
    Remuxer outside(Media::instance().items(), {at(20.0), at(30.0)}, settings(none));
    EncoderRun outsideRun(outside);
    EXPECT_EQ(outsideRun.doneTrue, 1);
    EXPECT_FALSE(QFile::exists(none));
}

TEST_F(RemuxerTest, cancel_mid_way_deletes_the_file_and_signals_canceled_once) {
    const QString file = output("canceled.mp4");
    Remuxer remuxer(Media::instance().items(), {at(0.0), at(9.0)}, settings(file));
    EncoderRun run(remuxer, 30);
    EXPECT_EQ(run.canceled, 1);
    EXPECT_EQ(run.endSignals(), 1);
    EXPECT_LT(run.progress.back(), 60);
    EXPECT_FALSE(QFile::exists(file));
}

TEST_F(RemuxerTest, unknown_container_fails_without_leaving_a_file) {
    testsupport::LogCapture log;
    const QString file = output("cut.nosuchformat");
    Remuxer remuxer(Media::instance().items(), {at(0.0), at(2.0)}, settings(file));
    EncoderRun run(remuxer);
    EXPECT_EQ(run.doneFalse, 1);
    EXPECT_EQ(run.endSignals(), 1);
    EXPECT_EQ(log.linesContaining("Failed to remuxe to").size(), 1u);
    EXPECT_FALSE(QFile::exists(file));
}

TEST_F(RemuxerTest, full_disk_fails_once_and_leaves_nothing) {
    FullDisk disk;
    if (!disk.mounted())
        GTEST_SKIP() << disk.skipReason();
    testsupport::LogCapture log;
    const QString file = disk.filePath("full.mp4");
    Remuxer remuxer(Media::instance().items(), {at(0.0), at(9.0)}, settings(file));
    EncoderRun run(remuxer);
    EXPECT_EQ(run.doneFalse, 1);
    EXPECT_EQ(run.endSignals(), 1);
    EXPECT_FALSE(log.linesContaining("Failed to remuxe to").empty());
    EXPECT_TRUE(disk.entries().isEmpty()) << disk.entries().join(", ").toStdString();
}

TEST_F(RemuxerTest, streams_a_container_cannot_hold_are_left_out_with_one_line_each) {
    // A camera file with a text track (GPS sentences as timed text) and a time-code track beside its picture
    // and sound.
    const QString source = output("telemetry.mp4");
    const QString text = output("gps.srt");
    QFile srt(text);
    ASSERT_TRUE(srt.open(QIODevice::WriteOnly));
    srt.write("1\n00:00:00,000 --> 00:00:02,000\n$GPRMC,100000.00,A,5000.0,N,01400.0,E,0.0,0.0,010524,,,A*00\n");
    srt.close();
    testsupport::runFfmpeg({"-i", Media::instance().path("main0.mp4"), "-i", text, "-map", "0", "-map", "1", "-c",
                            "copy", "-c:s", "mov_text", "-timecode", "10:00:00:00", source});
    auto item = std::make_shared<Playlist::RawItem>(*Media::instance().items()[0]);
    item->mainVideo = QFileInfo(source);
    ASSERT_EQ(testsupport::probeStreams(source).size(), 4u);

    const struct {
        const char* container;
        int subtitles; // the text track kept
        std::size_t leftOut;
    } cases[] = {{"mp4", 1, 1}, {"mov", 1, 1}, {"mkv", 0, 2}, {"avi", 0, 2}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.container);
        testsupport::LogCapture log;
        const QString file = output(QStringLiteral("telemetry-cut.") + c.container);
        Remuxer remuxer({item}, {at(0.0), at(2.0)}, settings(file));
        EncoderRun run(remuxer);
        ASSERT_EQ(run.doneTrue, 1) << remuxer.failureReason().toStdString();
        const auto streams = testsupport::probeStreams(file);
        EXPECT_EQ(countOf(streams, "video"), 1);
        EXPECT_EQ(countOf(streams, "audio"), 1);
        EXPECT_EQ(countOf(streams, "subtitle"), c.subtitles);
        EXPECT_EQ(log.linesContaining("is left out").size(), c.leftOut);
        EXPECT_EQ(log.linesContaining("Stream #3 (data 'tmcd') is left out").size(), 1u);
        EXPECT_GT(testsupport::probeDuration(file), 1.5);
    }
}
