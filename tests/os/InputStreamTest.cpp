// The memory input stream: reading, seeking from each origin, and seeking out of bounds.
#include "os/MemoryInputStream.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

TEST(MemoryInputStream, reads_and_seeks_from_each_origin) {
    const std::string text = "0123456789";
    os::CMemoryInputStream stream(text.data(), text.size());
    char buffer[8] = {};
    EXPECT_EQ(stream.read(buffer, 4), 4u);
    EXPECT_EQ(std::string(buffer, 4), "0123");
    stream.seek(2, os::SeekOrigin::Current);
    EXPECT_EQ(stream.position(), 6u);
    stream.seek(-3, os::SeekOrigin::End);
    EXPECT_EQ(stream.read(buffer, 8), 3u); // only what is left
    EXPECT_EQ(std::string(buffer, 3), "789");
    EXPECT_TRUE(stream.atEnd());
    EXPECT_EQ(stream.read(buffer, 8), 0u);
    stream.seek(1, os::SeekOrigin::Begin);
    auto copy = stream.clone();
    EXPECT_EQ(copy->position(), 1u);
    EXPECT_EQ(copy->size(), 10u);
}

TEST(MemoryInputStream, seek_outside_the_block_fails_and_keeps_the_position) {
    const std::string text = "0123456789";
    os::CMemoryInputStream stream(text.data(), text.size(), "track.nmea");
    stream.seek(5, os::SeekOrigin::Begin);
    try {
        stream.seek(6, os::SeekOrigin::Current);
        FAIL() << "no error";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "seek error in track.nmea, size: 10, 11");
    }
    EXPECT_THROW(stream.seek(-1, os::SeekOrigin::Begin), std::runtime_error);
    EXPECT_EQ(stream.position(), 5u);
    stream.seek(0, os::SeekOrigin::End); // the end itself is a valid position
    EXPECT_TRUE(stream.atEnd());
}
