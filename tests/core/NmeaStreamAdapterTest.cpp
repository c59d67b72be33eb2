// The stream adapter between a file's bytes and the sentence parser.
#include "core/NmeaStreamAdapter.h"

#include "support/TestSupport.h"

#include "logging/Logging.h"

#include <gtest/gtest.h>

#include <stdexcept>

TEST(NmeaStreamAdapter, reads_seeks_and_reports_reading_at_the_end) {
    testsupport::LogCapture log;
    logging::setLevel(logging::DEBUG);
    NmeaStreamAdapter stream(QByteArray("$GPGGA"));
    char buffer[8] = {};
    EXPECT_EQ(stream.read(buffer, 4), 4u);
    EXPECT_EQ(std::string(buffer, 4), "$GPG");
    stream.seek(-1, os::SeekOrigin::Current);
    EXPECT_EQ(stream.read(buffer, 8), 3u);
    EXPECT_EQ(std::string(buffer, 3), "GGA");
    EXPECT_EQ(stream.read(buffer, 8), 0u);
    EXPECT_EQ(log.linesContaining("Reading at EOF").size(), 1u);
    stream.seek(-6, os::SeekOrigin::End);
    EXPECT_EQ(stream.position(), 0u);
    EXPECT_NE(stream.contiguousData(), nullptr); // the parser reads it in place
}

TEST(NmeaStreamAdapter, rejects_unknown_origins_out_of_range_seeks_close_and_clone) {
    NmeaStreamAdapter stream(QByteArray("abc"));
    try {
        stream.seek(0, static_cast<os::SeekOrigin>(7));
        FAIL() << "no error";
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "Invalid seek origin: 7");
    }
    EXPECT_THROW(stream.seek(4, os::SeekOrigin::Begin), std::runtime_error);
    try {
        stream.close();
        FAIL() << "no error";
    } catch (const std::logic_error& error) {
        EXPECT_STREQ(error.what(), "NmeaStreamAdapter::Close - Unimplemented. Must not be called");
    }
    try {
        stream.clone();
        FAIL() << "no error";
    } catch (const std::logic_error& error) {
        EXPECT_STREQ(error.what(), "NmeaStreamAdapter::clone - Unimplemented. Must not be called");
    }
}
