// An input stream over a block of memory that the caller keeps alive.
#pragma once

#include "os/InputStream.h"

#include <string>

namespace os {

class CMemoryInputStream : public CInputStream {
public:
    // name appears in error texts, so a failing seek says which stream it was.
    CMemoryInputStream(const void* data, std::size_t size, std::string name = "memory stream");

    std::size_t read(void* buffer, std::size_t count) override;
    // Throws std::runtime_error "seek error in <name>, size: <size>, <target>" outside [0, size].
    void seek(std::int64_t offset, SeekOrigin origin) override;
    std::uint64_t position() const override { return m_position; }
    std::uint64_t size() const override { return m_size; }
    const char* contiguousData() const override { return m_data; }
    std::unique_ptr<CInputStream> clone() const override;

private:
    const char* m_data;
    std::size_t m_size;
    std::size_t m_position = 0;
    std::string m_name;
};

} // namespace os
