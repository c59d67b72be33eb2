// One open media file and the threads that read and decode it: a reader, a video decoder and, when there is
// sound and a device, an audio decoder.
#pragma once

#include "av/Clock.h"
#include "av/Ffmpeg.h"
#include "av/FrameConverter.h"
#include "av/MediaQueues.h"
#include "av/PictureTarget.h"

#include <QSize>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace av {

class AudioDecoder;
class AudioSink;

// Opened and primed synchronously by the constructor (on any thread), then started; the owner (the player)
// takes decoded frames from frames() and never waits for the threads. Seeks bump the serial.
class MediaPipeline {
public:
    // Throws std::runtime_error with a readable text when the file cannot be played. `sink` may be null
    // (no sound device): the sound is then skipped.
    MediaPipeline(const QString& file, const Clock& clock, AudioSink* sink);
    ~MediaPipeline();
    MediaPipeline(const MediaPipeline&) = delete;
    MediaPipeline& operator=(const MediaPipeline&) = delete;

    // The first picture of the file, decoded by the constructor.
    const VideoFrame& firstFrame() const { return m_firstFrame; }
    double durationMs() const { return m_durationMs; }
    double frameDurationMs() const { return m_frameDurationMs; }
    QSize frameSize() const;
    bool hasAudio() const { return m_audio != nullptr; }

    // Starts the reader and decoder threads; until then only the first picture is held. Idempotent.
    void start();
    // Asks for the exact frame at targetMs; returns the serial whose frames answer it.
    int seek(double targetMs);
    int serial() const { return m_serial.load(); }
    FrameQueue& frames() { return m_frames; }
    // Called on the decoder thread once the answer to a seek is in frames(). Set it before start().
    void setSeekAnswered(std::function<void()> callback) { m_seekAnswered = std::move(callback); }
    // Where the pictures go: the decoder converts each frame it delivers to the size the target asks for
    // (VideoFrame::picture). Null (no widget, e.g. a file loaded ahead) converts nothing. Any thread.
    void setPictureTarget(std::shared_ptr<const PictureTarget> target);

    // Frames thrown away by the decoder because they were already late.
    int lateFramesDropped() const { return m_lateDropped.load(); }

private:
    void open(const QString& file, AudioSink* sink);
    void primeFirstFrame();
    void readLoop();
    void videoLoop();
    // False when a seek or stop made the work pointless.
    bool sendVideoPacket(const AVPacket* packet, int serial, double& seekTarget);
    bool deliverFrame(FramePtr frame, int serial, double& seekTarget);
    void adjustSkipping(double framePtsMs, bool keyPacket);
    double toMs(int64_t pts, AVRational timeBase) const;

    const Clock& m_clock;
    FormatContextPtr m_format;
    CodecContextPtr m_video;
    int m_videoStream = -1;
    int m_audioStream = -1;
    std::unique_ptr<AudioDecoder> m_audio;
    double m_originMs = 0;
    double m_durationMs = 0;
    double m_frameDurationMs = 40;
    VideoFrame m_firstFrame;
    VideoFrame m_lastPassed;  // decoder thread: the latest picture a seek went past

    // 3 s at 30 fps, and 6 MB (a second of 48 Mbit/s 4K): enough to ride out a slow card, little memory.
    PacketQueue m_videoPackets{90, 6 << 20};
    // A few pictures ahead: 4 of 720p, 3 of 1080p (4 MB each with the converted picture), 2 of 4K.
    FrameQueue m_frames{4, 12 << 20};
    std::atomic<int> m_serial{0};
    std::atomic<bool> m_stop{false};

    std::mutex m_seekMutex;
    double m_seekTargetMs = 0;
    int m_seekSerial = 0;
    std::atomic<bool> m_seekPending{false};

    std::function<void()> m_seekAnswered;
    std::mutex m_targetMutex;
    std::shared_ptr<const PictureTarget> m_target;
    FrameConverter m_converter;  // decoder thread

    std::atomic<int> m_lateDropped{0};
    int m_discard = 0;  // AVDiscard in force
    bool m_started = false;
    std::thread m_reader;
    std::thread m_decoder;
};

} // namespace av
