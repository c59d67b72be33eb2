// Packet and frame queues with back-pressure and serials.
#include "av/MediaQueues.h"

namespace av {
namespace {
// 10 ms: how often a blocked producer looks again at its give-up condition (seek, stop).
constexpr auto kRecheck = std::chrono::milliseconds(10);
} // namespace

bool PacketQueue::push(PacketEntry entry, const std::function<bool()>& giveUp) {
    std::unique_lock<std::mutex> lock(m_mutex);
    // Markers always go in, so that a flush or end of file is never lost behind a full queue.
    while (entry.kind == PacketEntry::Kind::Packet && m_entries.size() >= m_capacity) {
        if (giveUp && giveUp())
            return false;
        m_changed.wait_for(lock, kRecheck);
    }
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
    m_changed.notify_all();
    return entry;
}

void PacketQueue::clear() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.clear();
    m_changed.notify_all();
}

bool FrameQueue::push(VideoFrame frame, const std::function<bool()>& giveUp) {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (m_frames.size() >= m_capacity) {
        if (giveUp && giveUp())
            return false;
        m_changed.wait_for(lock, kRecheck);
    }
    m_frames.push_back(std::move(frame));
    return true;
}

std::optional<VideoFrame> FrameQueue::peek() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_frames.empty())
        return std::nullopt;
    return m_frames.front();
}

void FrameQueue::pop() {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_frames.empty())
        m_frames.pop_front();
    m_changed.notify_all();
}

void FrameQueue::clear() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_frames.clear();
    m_changed.notify_all();
}

size_t FrameQueue::size() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_frames.size();
}

} // namespace av
