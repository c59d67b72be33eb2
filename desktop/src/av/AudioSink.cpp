// The sound ring between the audio decoder and the audio device.
#include "av/AudioSink.h"

#include <algorithm>
#include <cstring>

namespace av {
namespace {
// 0.5 s of 48 kHz stereo 16-bit: enough to ride over a busy GUI thread, short enough to follow a seek.
constexpr qint64 kCapacityBytes = 48000 * 4 / 2;
} // namespace

AudioSink::AudioSink(QObject* parent) : QIODevice(parent) {
    // Unbuffered: QIODevice's own read-ahead would hide sound (and silence) from the ring.
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

QAudioFormat AudioSink::format() {
    QAudioFormat format;
    format.setSampleRate(48000);
    format.setChannelCount(2);
    format.setSampleSize(16);
    format.setCodec(QStringLiteral("audio/pcm"));
    format.setByteOrder(QAudioFormat::LittleEndian);
    format.setSampleType(QAudioFormat::SignedInt);
    return format;
}

qint64 AudioSink::freeBytes() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return std::max<qint64>(0, kCapacityBytes - m_buffer.size());
}

qint64 AudioSink::queuedBytes() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_buffer.size();
}

void AudioSink::write(const char* data, qint64 size) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_buffer.append(data, static_cast<int>(size));
}

void AudioSink::clear() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_buffer.clear();
}

qint64 AudioSink::bytesAvailable() const {
    return queuedBytes() + QIODevice::bytesAvailable();
}

qint64 AudioSink::readData(char* data, qint64 maxSize) {
    std::lock_guard<std::mutex> lock(m_mutex);
    // An empty ring plays silence rather than stalling the device.
    const qint64 n = std::min<qint64>(maxSize, m_buffer.size());
    std::memcpy(data, m_buffer.constData(), static_cast<size_t>(n));
    m_buffer.remove(0, static_cast<int>(n));
    std::memset(data + n, 0, static_cast<size_t>(maxSize - n));
    return maxSize;
}

} // namespace av
