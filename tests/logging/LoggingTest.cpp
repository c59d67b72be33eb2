// The record format, the level check and the guard around formatting.
#include "logging/Logging.h"
#include "support/TestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

using testing::HasSubstr;
using testsupport::LogCapture;

namespace {

// Formatting it counts how often it was formatted, to prove suppressed records format nothing.
struct CountedArgument {
    mutable int* formatted;
};

} // namespace

template <>
struct fmt::formatter<CountedArgument> : fmt::formatter<int> {
    auto format(const CountedArgument& argument, fmt::format_context& context) const {
        ++*argument.formatted;
        return fmt::formatter<int>::format(*argument.formatted, context);
    }
};

TEST(Logging, record_has_utc_time_thread_level_logger_message_and_source) {
    LogCapture capture;
    logging::setLevel(logging::DEBUG);
    logging::log("src/Unit.cpp", 42, "fn", "core.Playlist", logging::INFO, "Found {} files in '{}'", 3, "DCIM");
    const auto lines = capture.lines();
    ASSERT_EQ(lines.size(), 1u);
    const std::regex format(
        R"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d \[\d+\] INFO core\.Playlist - Found 3 files in 'DCIM' \[src/Unit\.cpp:42\]\n$)");
    EXPECT_TRUE(std::regex_match(lines[0], format)) << lines[0];
}

TEST(Logging, empty_logger_prints_as_root_and_unknown_level_as_invalid) {
    LogCapture capture;
    logging::setLevel(10);
    logging::log("a.cpp", 1, "f", "", logging::WARN, "w");
    logging::log("a.cpp", 2, "f", "ui.Main", 7, "seven");
    const auto lines = capture.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_THAT(lines[0], HasSubstr("] WARN root - w [a.cpp:1]"));
    EXPECT_THAT(lines[1], HasSubstr("] INVALID ui.Main - seven [a.cpp:2]"));
}

TEST(Logging, suppressed_records_write_nothing_and_format_no_argument) {
    LogCapture capture;
    logging::setLevel(logging::INFO);
    int formatted = 0;
    LOG_DEBUG("core.Test", "value {}", CountedArgument{&formatted});
    LOG_TRACE("core.Test", "value {}", CountedArgument{&formatted});
    EXPECT_EQ(formatted, 0);
    EXPECT_TRUE(capture.lines().empty());

    LOG_INFO("core.Test", "value {}", CountedArgument{&formatted});
    LOG_ERROR("core.Test", "value {}", CountedArgument{&formatted});
    EXPECT_EQ(formatted, 2);
    EXPECT_EQ(capture.lines().size(), 2u);
}

TEST(Logging, level_is_shared_by_every_logger) {
    LogCapture capture;
    logging::setLevel(logging::ERROR);
    LOG_WARN("ui.A", "a");
    LOG_WARN("core.B", "b");
    LOG_ERROR("ui.A", "c");
    LOG_FATAL("core.B", "d");
    EXPECT_EQ(capture.lines().size(), 2u);
    EXPECT_EQ(logging::level(), logging::ERROR);
}

TEST(Logging, formatting_failure_becomes_one_fatal_record_of_root) {
    LogCapture capture;
    logging::setLevel(logging::INFO);
    EXPECT_NO_THROW(logging::log("u.cpp", 7, "fn", "ui.MainWindow", logging::INFO, "{} and {}", 5));
    const auto lines = capture.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_THAT(lines[0], HasSubstr("] FATAL root - exception [type=fmt::v9::format_error, message="));
    EXPECT_THAT(lines[0], HasSubstr(" on [stage=formatting log message][logger=ui.MainWindow][level=INFO]\n"
                                    "[format={} and {}]([int] 5) [u.cpp:7]\n"));
}

TEST(Logging, writing_failure_names_its_stage_and_every_argument) {
    LogCapture capture;
    logging::setLevel(logging::DEBUG);
    static int calls = 0;
    calls = 0;
    // The first write fails; the FATAL record written after it succeeds.
    logging::setLineWriter([](const std::string& line) {
        if (calls++ == 0)
            throw std::runtime_error("disk full");
        std::fputs(line.c_str(), stderr);
    });
    testing::internal::CaptureStderr();
    logging::log("w.cpp", 9, "fn", "core.TrackLoader", logging::WARN, "{} {}", std::string("text"), 2.5);
    const std::string written = testing::internal::GetCapturedStderr();
    EXPECT_EQ(calls, 2);
    EXPECT_THAT(written, HasSubstr("FATAL root - exception [type=std::runtime_error, message=disk full] on "
                                   "[stage=sending message to log][logger=core.TrackLoader][level=WARN]"));
    EXPECT_THAT(written, HasSubstr("(["));
    EXPECT_THAT(written, HasSubstr("] text, [double] 2.5)"));
}

TEST(Logging, failure_of_the_failure_record_is_swallowed) {
    LogCapture capture;
    logging::setLevel(logging::DEBUG);
    logging::setLineWriter([](const std::string&) { throw 42; });
    EXPECT_NO_THROW(logging::log("x.cpp", 1, "fn", "ui.Qt", logging::INFO, "{}", 1));
}
