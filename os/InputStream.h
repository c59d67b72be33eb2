// The byte input stream that readers of this library take: read, seek, position and size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace os {

enum class SeekOrigin : int { Begin = 0, Current = 1, End = 2 };

class CInputStream {
public:
    virtual ~CInputStream() = default;

    // Copies up to count bytes to buffer and advances; returns how many were copied (0 at the end).
    virtual std::size_t read(void* buffer, std::size_t count) = 0;
    // Moves the read position; throws std::runtime_error when the target lies outside the stream.
    virtual void seek(std::int64_t offset, SeekOrigin origin) = 0;
    virtual std::uint64_t position() const = 0;
    virtual std::uint64_t size() const = 0;
    bool atEnd() const { return position() >= size(); }

    // The whole stream as one block when it lives in memory, else nullptr. Readers use it to look at
    // bytes in place instead of calling read() per byte; the block stays valid while the stream lives.
    virtual const char* contiguousData() const { return nullptr; }

    virtual void close() {}
    virtual std::unique_ptr<CInputStream> clone() const = 0;
};

} // namespace os
