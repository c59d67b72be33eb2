// The player program as started from a shell: help text, log level, resources found from any directory.
#include <QProcess>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;

namespace {
QProcess* startPlayer(const QStringList& arguments, const QString& workingDirectory) {
    auto* process = new QProcess;
    process->setWorkingDirectory(workingDirectory);
    process->start(QStringLiteral(REELVUE_RUN_DIR "/reelvue"), arguments);
    return process;
}
} // namespace

TEST(MainProgram, help_prints_the_eight_options_without_a_display) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("DISPLAY"));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(REELVUE_RUN_DIR "/reelvue"), {QStringLiteral("--help")});
    ASSERT_TRUE(process.waitForFinished(30000));
    EXPECT_EQ(process.exitCode(), 0);
    const std::string help = process.readAllStandardOutput().toStdString();
    EXPECT_THAT(help, HasSubstr("--force-update               Force application update"));
    EXPECT_THAT(help, HasSubstr("--log-level <log-level>      error/warn/info/debug/trace"));
}

TEST(MainProgram, unknown_log_level_then_runs_at_debug_from_another_directory) {
    QTemporaryDir elsewhere;
    std::unique_ptr<QProcess> process(startPlayer({QStringLiteral("--log-level=verbose")}, elsewhere.path()));
    ASSERT_TRUE(process->waitForStarted());
    QString output;
    for (int i = 0; i < 100 && !output.contains(QStringLiteral("Changing locale")); ++i) {
        process->waitForReadyRead(200);
        output += QString::fromUtf8(process->readAllStandardOutput());
    }
    process->terminate();
    process->waitForFinished(10000);
    const std::string text = output.toStdString();
    EXPECT_THAT(text, testing::ContainsRegex(R"(\[[0-9]+\] ERROR ui\.Main - Unknown log level verbose, use debug \[)"));
    EXPECT_THAT(text, HasSubstr("DEBUG ui.Main - System locale '"));
    EXPECT_THAT(text, HasSubstr("INFO ui.Main - Changing locale to '"));
    // The web-channel script lands beside the run tree's map page, not in the unrelated working directory.
    EXPECT_TRUE(QFile::exists(QStringLiteral(REELVUE_RUN_DIR "/map/dist/qwebchannel.js")));
    EXPECT_FALSE(QFile::exists(elsewhere.filePath(QStringLiteral("map/dist/qwebchannel.js"))));
}
