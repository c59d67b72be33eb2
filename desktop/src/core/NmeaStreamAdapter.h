// Hands a file's bytes, held in memory, to the NMEA sentence parser as its input stream.
#pragma once

#include "os/InputStream.h"

#include <QByteArray>

class NmeaStreamAdapter : public os::CInputStream {
public:
    // Shares the bytes (no copy) for as long as the adapter lives.
    explicit NmeaStreamAdapter(QByteArray bytes);

    // At the end it logs "Reading at EOF" and copies nothing.
    std::size_t read(void* buffer, std::size_t count) override;
    // Throws std::invalid_argument "Invalid seek origin: <n>" for an unknown origin, and
    // std::runtime_error when the target lies outside the bytes.
    void seek(std::int64_t offset, os::SeekOrigin origin) override;
    std::uint64_t position() const override { return m_position; }
    std::uint64_t size() const override { return m_size; }
    const char* contiguousData() const override { return m_bytes.constData(); }

    // The parser never closes or clones its input; both throw std::logic_error.
    void close() override;
    std::unique_ptr<os::CInputStream> clone() const override;

private:
    QByteArray m_bytes;
    std::size_t m_size;
    std::size_t m_position = 0;
};
