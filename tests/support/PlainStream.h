// Bytes in memory without the in-memory view, so that readers take the byte-by-byte path.
#pragma once

#include "os/MemoryInputStream.h"

namespace testsupport {

class PlainStream : public os::CMemoryInputStream {
public:
    using CMemoryInputStream::CMemoryInputStream;
    const char* contiguousData() const override { return nullptr; }
};

} // namespace testsupport
