// Hands a file's bytes, held in memory, to the NMEA sentence parser as its input stream.
#include "core/NmeaStreamAdapter.h"

#include "logging/Logging.h"

#include <cstring>
#include <stdexcept>

namespace {
constexpr const char* kLogger = "NmeaStreamAdapter";
}

NmeaStreamAdapter::NmeaStreamAdapter(QByteArray bytes)
    : m_bytes(std::move(bytes)), m_size(static_cast<std::size_t>(m_bytes.size())) {}

std::size_t NmeaStreamAdapter::read(void* buffer, std::size_t count) {
    if (m_position >= m_size) {
        LOG_DEBUG(kLogger, "Reading at EOF");
        return 0;
    }
    const std::size_t n = std::min(count, m_size - m_position);
    std::memcpy(buffer, m_bytes.constData() + m_position, n);
    m_position += n;
    return n;
}

void NmeaStreamAdapter::seek(std::int64_t offset, os::SeekOrigin origin) {
    std::int64_t base = 0;
    switch (origin) {
    case os::SeekOrigin::Begin: base = 0; break;
    case os::SeekOrigin::Current: base = static_cast<std::int64_t>(m_position); break;
    case os::SeekOrigin::End: base = static_cast<std::int64_t>(m_size); break;
    default: throw std::invalid_argument(fmt::format("Invalid seek origin: {}", static_cast<int>(origin)));
    }
    const std::int64_t target = base + offset;
    if (target < 0 || static_cast<std::uint64_t>(target) > m_size)
        throw std::runtime_error(fmt::format("seek error in NmeaStreamAdapter, size: {}, {}", m_size, target));
    m_position = static_cast<std::size_t>(target);
}

void NmeaStreamAdapter::close() {
    throw std::logic_error("NmeaStreamAdapter::Close - Unimplemented. Must not be called");
}

std::unique_ptr<os::CInputStream> NmeaStreamAdapter::clone() const {
    throw std::logic_error("NmeaStreamAdapter::clone - Unimplemented. Must not be called");
}
