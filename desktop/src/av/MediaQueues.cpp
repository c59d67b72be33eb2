// Packet and frame queues with back-pressure and serials.
#include "av/MediaQueues.h"

namespace av {
namespace {
// 10 ms: how often a blocked producer looks again at its give-up condition (seek, stop).
constexpr auto kRecheck = std::chrono::milliseconds(10);
// Fewer frames than this would leave the presenter nothing to choose from while the decoder works.
constexpr size_t kMinFrames = 2;

size_t bytesOf(const PacketEntry& entry) {
    return entry.packet ? static_cast<size_t>(entry.packet->size) : 0;
}

size_t bytesOf(const VideoFrame& frame) {
    size_t bytes = static_cast<size_t>(frame.picture.sizeInBytes());
    if (frame.frame)
        for (const AVBufferRef* buffer : frame.frame->buf)
            if (buffer)
                bytes += buffer->size;
    return bytes;
}
} // namespace

bool PacketQueue::push(PacketEntry entry, const std::function<bool()>& giveUp) {
    std::unique_lock<std::mutex> lock(m_mutex);
    // Markers always go in, so that a flush or end of file is never lost behind a full queue.
    while (entry.kind == PacketEntry::Kind::Packet && !m_entries.empty() &&
           (m_entries.size() >= m_capacity || m_bytes >= m_byteBudget)) {
        if (giveUp && giveUp())
            return false;
        m_changed.wait_for(lock, kRecheck);
    }
    m_bytes += bytesOf(entry);
    m_entries.push_back(std::move(entry));
    m_changed.notify_all();
    return true;
}

std::optional<PacketEntry> PacketQueue::pop(std::chrono::milliseconds wait) {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_entries.empty())
        m_changed.wait_for(lock, wait, [this] { return !m_entries.empty(); });
    if (m_entries.empty())
        return std::nullopt;
    PacketEntry entry = std::move(m_entries.front());
    m_entries.pop_front();
    m_bytes -= bytesOf(entry);
    m_changed.notify_all();
    return entry;
}

void PacketQueue::clear() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.clear();
    m_bytes = 0;
    m_changed.notify_all();
}

bool FrameQueue::push(VideoFrame frame, const std::function<bool()>& giveUp) {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (full()) {
        if (giveUp && giveUp())
            return false;
        m_changed.wait_for(lock, kRecheck);
    }
    m_bytes += bytesOf(frame);
    m_frames.push_back(std::move(frame));
    return true;
}

bool FrameQueue::full() const {
    return m_frames.size() >= m_capacity || (m_frames.size() >= kMinFrames && m_bytes >= m_byteBudget);
}

std::optional<VideoFrame> FrameQueue::peek() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_frames.empty())
        return std::nullopt;
    return m_frames.front();
}

void FrameQueue::pop() {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_frames.empty()) {
        m_bytes -= bytesOf(m_frames.front());
        m_frames.pop_front();
    }
    m_changed.notify_all();
}

void FrameQueue::clear() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_frames.clear();
    m_bytes = 0;
    m_changed.notify_all();
}

size_t FrameQueue::size() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_frames.size();
}

} // namespace av
