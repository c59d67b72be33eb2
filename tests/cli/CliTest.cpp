// reelvue-cli as a user runs it: help, version, log level and errors.
#include "support/CliRunner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;

using testsupport::CliResult;
using testsupport::runCli;


TEST(Cli, help_and_version_go_to_stdout) {
    const CliResult help = runCli({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.out, HasSubstr("Usage: reelvue-cli [--log-level LEVEL] COMMAND"));
    const CliResult version = runCli({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.out, "reelvue-cli 1.3.12.856\n");
}

TEST(Cli, unknown_command_or_option_fails_with_usage_on_stderr) {
    const CliResult command = runCli({"frobnicate"});
    EXPECT_NE(command.exitCode, 0);
    EXPECT_THAT(command.err, HasSubstr("Unknown command: frobnicate"));
    const CliResult option = runCli({"--frob"});
    EXPECT_NE(option.exitCode, 0);
    EXPECT_THAT(option.err, HasSubstr("Unknown option: --frob"));
    EXPECT_TRUE(option.out.empty());
}

TEST(Cli, unknown_log_level_is_logged_to_stderr_in_the_record_format) {
    const CliResult result = runCli({"--log-level=verbose", "--help"});
    EXPECT_EQ(result.exitCode, 0);
    const CliResult logged = runCli({"--log-level=verbose", "nothing"});
    EXPECT_THAT(logged.err, testing::ContainsRegex(
                                R"([0-9]+-[0-9]+-[0-9]+ [0-9]+:[0-9]+:[0-9]+ \[[0-9]+\] ERROR ui\.Main - Unknown log level verbose, use debug \[)"));
}
