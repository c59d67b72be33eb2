// Runs the built reelvue-cli as a user would and collects what it printed.
#pragma once

#include <QProcess>
#include <QStringList>

#include <gtest/gtest.h>

#include <string>

namespace testsupport {

struct CliResult {
    int exitCode;
    std::string out;
    std::string err;
};

inline CliResult runCli(const QStringList& arguments, int timeoutMs = 60000) {
    QProcess process;
    process.start(QStringLiteral(REELVUE_RUN_DIR "/reelvue-cli"), arguments);
    EXPECT_TRUE(process.waitForFinished(timeoutMs)) << "reelvue-cli did not finish";
    return {process.exitCode(), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
}

} // namespace testsupport
