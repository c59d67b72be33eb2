// The byte output stream that writers of this library take, and one that collects into memory.
#pragma once

#include <cstddef>
#include <string>

namespace os {

class COutputStream {
public:
    virtual ~COutputStream() = default;
    // Writes all count bytes or throws std::runtime_error.
    virtual void write(const void* data, std::size_t count) = 0;
};

// Appends everything written to a string; for tests and small in-memory results.
class CMemoryOutputStream : public COutputStream {
public:
    void write(const void* data, std::size_t count) override {
        m_bytes.append(static_cast<const char*>(data), count);
    }
    const std::string& bytes() const { return m_bytes; }

private:
    std::string m_bytes;
};

} // namespace os
