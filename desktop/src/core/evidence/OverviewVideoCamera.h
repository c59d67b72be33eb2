// One camera's pictures over the overview's interval, decoded file after file.
#pragma once

#include "core/Playlist.h"
#include "core/evidence/OverviewVideoFfmpeg.h"

#include <QDateTime>
#include <QString>

#include <deque>
#include <utility>
#include <vector>

namespace evidence::detail {

class OverviewSound;

// Asked for pictures in rising output time (milliseconds from the overview's start). A file that does not
// open is logged and skipped; a damaged packet costs a picture, not the overview.
class OverviewCamera {
public:
    // camera: 0 main, 1 rear (items without a rear file leave a gap). withSound: the files' sound is
    // decoded too, and kept until setSound() names its track.
    OverviewCamera(const Playlist::RawItems& items, int camera, const QDateTime& start, const QDateTime& end,
                   bool withSound);

    bool hasFiles() const { return !m_files.empty(); }
    void setSound(OverviewSound* sound);

    // The first picture, read ahead to learn the camera's size and rate; nullptr when no file opens.
    const AVFrame* firstPicture();
    AVRational frameRate() const { return m_frameRate; }
    // The sound format of the first file that has sound; sample rate 0 when none did so far.
    int sampleRate() const { return m_sampleRate; }
    int channels() const { return m_channels; }

    // The latest picture at or before outputMs; nullptr when the camera has none at that moment.
    const AVFrame* pictureAt(double outputMs);
    // Reads on past the last picture so that the sound interleaved with it reaches the end too.
    void drainSound(double endMs);

private:
    struct File {
        QString path;
        double outputStartMs; // where the file's start lies on the output's time line
        double skipMs;        // time at the file's start before the interval
    };

    bool fetch();
    bool openNextFile();
    void open(const File& file);
    void closeFile();
    void decode(AVCodecContext* decoder, const AVPacket* packet, bool isVideo);

    std::vector<File> m_files;
    std::size_t m_fileIndex = 0;
    const File* m_file = nullptr;
    bool m_withSound;
    OverviewSound* m_sound = nullptr;
    std::deque<std::pair<double, FramePtr>> m_soundFrames; // decoded before the track existed
    InputPtr m_input;
    CodecPtr m_video;
    CodecPtr m_audio;
    int m_videoIndex = -1;
    int m_audioIndex = -1;
    double m_fileStartMs = 0.0;
    AVRational m_frameRate{0, 1};
    int m_sampleRate = 0;
    int m_channels = 0;
    double m_lastVideoMs = -1e18;
    std::deque<std::pair<double, FramePtr>> m_pending; // decoded pictures not yet asked for
    FramePtr m_current;
    double m_currentMs = 0.0;
    FramePtr m_next;
    double m_nextMs = 0.0;
};

} // namespace evidence::detail
