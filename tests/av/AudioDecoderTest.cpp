// Sound of a file through the pipeline into the sink: amount per media time at each speed.
#include "av/AudioSink.h"
#include "av/Clock.h"
#include "av/MediaPipeline.h"
#include "support/EventWait.h"
#include "support/TestSupport.h"
#include "support/StripeMedia.h"

#include <gtest/gtest.h>

namespace {
constexpr double kBytesPerMs = 48000 * 4 / 1000.0;  // 16-bit stereo at 48 kHz

// Runs `wallMs` of manual time at `speed` while a device would drain the sink; returns the sound produced,
// in milliseconds of output.
double soundProduced(double speed, double wallMs) {
    auto time = std::make_shared<av::ManualTimeSource>();
    av::Clock clock(time);
    av::AudioSink sink;
    av::MediaPipeline pipeline(testsupport::sharedFrontVideo(), clock, &sink);
    EXPECT_TRUE(pipeline.hasAudio());
    clock.setSpeed(speed);
    clock.start();
    pipeline.start();
    qint64 bytes = 0;
    for (double passed = 0; passed < wallMs; passed += 20) {
        time->advanceMs(20);
        testsupport::runEventsFor(15);
        const qint64 queued = sink.queuedBytes();
        bytes += sink.read(queued).size();
        // Keep the video side flowing as a presenter would.
        while (auto frame = pipeline.frames().peek())
            pipeline.frames().pop();
    }
    return bytes / kBytesPerMs;
}
} // namespace

TEST(AudioDecoderTest, plays_sound_in_real_time_at_normal_and_double_speed_and_none_above) {
    // 1 s of wall time; the decoder may run up to a quarter second ahead of the clock.
    const double normal = soundProduced(1.0, 1000);
    EXPECT_GT(normal, 800);
    EXPECT_LT(normal, 1400);
    const double twice = soundProduced(2.0, 1000);  // 2 s of media squeezed into 1 s of sound, same pitch
    EXPECT_GT(twice, 800);
    EXPECT_LT(twice, 1400);
    EXPECT_EQ(soundProduced(4.0, 500), 0);
}
