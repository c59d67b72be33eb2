// An input stream over a block of memory that the caller keeps alive.
#include "os/MemoryInputStream.h"

#include <fmt/format.h>

#include <cstring>
#include <stdexcept>

namespace os {

CMemoryInputStream::CMemoryInputStream(const void* data, std::size_t size, std::string name)
    : m_data(static_cast<const char*>(data)), m_size(size), m_name(std::move(name)) {}

std::size_t CMemoryInputStream::read(void* buffer, std::size_t count) {
    const std::size_t available = m_size - m_position;
    const std::size_t n = count < available ? count : available;
    if (n > 0)
        std::memcpy(buffer, m_data + m_position, n);
    m_position += n;
    return n;
}

void CMemoryInputStream::seek(std::int64_t offset, SeekOrigin origin) {
    std::int64_t base = 0;
    switch (origin) {
    case SeekOrigin::Begin: base = 0; break;
    case SeekOrigin::Current: base = static_cast<std::int64_t>(m_position); break;
    case SeekOrigin::End: base = static_cast<std::int64_t>(m_size); break;
    default: throw std::runtime_error(fmt::format("seek error in {}, size: {}, invalid origin {}", m_name, m_size,
                                                  static_cast<int>(origin)));
    }
    const std::int64_t target = base + offset;
    if (target < 0 || static_cast<std::uint64_t>(target) > m_size)
        throw std::runtime_error(fmt::format("seek error in {}, size: {}, {}", m_name, m_size, target));
    m_position = static_cast<std::size_t>(target);
}

std::unique_ptr<CInputStream> CMemoryInputStream::clone() const {
    auto copy = std::make_unique<CMemoryInputStream>(m_data, m_size, m_name);
    copy->m_position = m_position;
    return copy;
}

} // namespace os
