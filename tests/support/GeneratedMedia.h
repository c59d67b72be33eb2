// Small camera-like videos made with the ffmpeg command, and what ffprobe says about a file.
#pragma once

#include <QString>

#include <vector>

namespace testsupport {

struct MediaOptions {
    int width = 320;
    int height = 180;
    double seconds = 3.0;
    int keyFrameInterval = 25; // frames at 25 fps: one key frame a second
    int sampleRate = 44100;    // 0: no audio
    QString pattern = QStringLiteral("testsrc2");
    bool withVideo = true;   // false: a file of sound alone
    bool indexFirst = false; // the MP4 index (moov) before the data, so a cut-off file still opens
};

// Writes an H.264/AAC file; false (with the reason on stderr) when ffmpeg fails.
bool generateVideo(const QString& path, const MediaOptions& media = {});

struct ProbedStream {
    int index = 0;
    QString type; // "video", "audio"
    QString codec;
    int width = 0;
    int height = 0;
    int sampleRate = 0;
};

struct ProbedPacket {
    int stream = 0;
    double pts = 0.0; // seconds
    double dts = 0.0;
    double duration = 0.0;
    bool key = false;
};

std::vector<ProbedStream> probeStreams(const QString& path);
std::vector<ProbedPacket> probePackets(const QString& path);
// The container's duration in seconds, or -1 when ffprobe cannot read it.
double probeDuration(const QString& path);
// The container as ffprobe names it ("mov,mp4,m4a,3gp,3g2,mj2", "matroska,webm", "avi"); empty when unreadable.
QString probeFormatName(const QString& path);

} // namespace testsupport
