// Test media with machine-readable time: every picture carries its own frame number as a binary stripe.
#pragma once

#include <QImage>
#include <QString>

namespace testsupport {

struct StripeVideo {
    int width = 320;
    int height = 180;
    int fps = 30;
    double seconds = 4;
    int keyFrameInterval = 30;  // pictures per group: one key frame a second at 30 fps
    int bFrames = 0;            // B-frames make decoding order differ from display order
    bool sound = false;         // AAC sine tone
    bool fastStart = false;     // index at the front, so a cut-off tail still opens
    int firstFrame = 0;         // number carried by the first picture (files that continue each other)
};

// Writes an H.264 MP4 with the `ffmpeg` command; frame n shows n as 16 cells (bit 0 leftmost) across
// the dark top quarter, white for 1 and dark grey for 0; below it runs a moving test picture. Throws std::runtime_error when ffmpeg fails.
void writeStripeVideo(const QString& path, const StripeVideo& video);

// An AAC file without any picture.
void writeAudioOnly(const QString& path, double seconds);

// Runs ffmpeg with the given arguments (after "-y -loglevel error"); throws with its output on failure.
void runFfmpeg(const QStringList& arguments);

// The picture shown at `seconds` into `video`, written to `png` by the ffmpeg command, in grey.
QImage extractFrame(const QString& video, double seconds, const QString& png);

// The frame number a picture (unturned, any size) carries, or -1 when it carries none.
int readFrameNumber(const QImage& image);

// Files shared by the tests of one run, generated once into a temporary folder:
// front 320x180 with sound and B-frames, 4 s; rear 256x144 without B-frames, 4 s.
QString sharedFrontVideo();
QString sharedRearVideo();
// A folder for other generated files, removed when the test program ends.
QString sharedMediaDir();

} // namespace testsupport
