// The queues between the reader, the decoders and the presenter: packets and decoded video frames.
#pragma once

#include "av/Ffmpeg.h"

#include <QImage>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>

namespace av {

// One entry of a packet queue. A seek starts a new serial: the reader first sends a flush entry carrying
// the new serial and the seek target, and every entry of an older serial is dropped by the decoder.
struct PacketEntry {
    enum class Kind { Packet, Flush, EndOfFile };
    Kind kind = Kind::Packet;
    PacketPtr packet;
    int serial = 0;
    double targetMs = 0;  // Flush: the exact time the seek asked for
};

// A bounded queue of packets; push blocks while full so that the reader never runs far ahead. Full at
// `capacity` packets or `byteBudget` bytes, whichever comes first (one packet always fits).
class PacketQueue {
public:
    PacketQueue(size_t capacity, size_t byteBudget) : m_capacity(capacity), m_byteBudget(byteBudget) {}

    // Blocks while full; returns false without queueing when `giveUp` turns true.
    bool push(PacketEntry entry, const std::function<bool()>& giveUp);
    // Waits up to `wait` for an entry.
    std::optional<PacketEntry> pop(std::chrono::milliseconds wait);
    void clear();
    // Wakes every waiter, e.g. to let it see a stop request.
    void wake() { m_changed.notify_all(); }

private:
    const size_t m_capacity;
    const size_t m_byteBudget;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<PacketEntry> m_entries;
    size_t m_bytes = 0;
};

// A decoded picture with its media time.
struct VideoFrame {
    SharedFrame frame;        // empty for the end-of-stream marker
    QImage picture;           // the frame converted for display by the decoder, or null
    double ptsMs = 0;         // media time, from the start of the file
    double durationMs = 0;
    int serial = 0;
    bool endOfStream = false;
    bool seekResult = false;  // the first frame at or after a seek target

    double endMs() const { return ptsMs + durationMs; }
};

// A small ring of decoded frames. The decoder blocks when it is full (back-pressure); the presenter only
// peeks and pops and never waits. Full at `capacity` frames, or once the frames (with their converted
// pictures) hold `byteBudget` bytes and there are two of them: big pictures get a shorter ring.
class FrameQueue {
public:
    FrameQueue(size_t capacity, size_t byteBudget) : m_capacity(capacity), m_byteBudget(byteBudget) {}

    bool push(VideoFrame frame, const std::function<bool()>& giveUp);
    std::optional<VideoFrame> peek() const;
    void pop();
    void clear();
    size_t size() const;
    void wake() { m_changed.notify_all(); }

private:
    bool full() const;

    const size_t m_capacity;
    const size_t m_byteBudget;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<VideoFrame> m_frames;
    size_t m_bytes = 0;
};

} // namespace av
