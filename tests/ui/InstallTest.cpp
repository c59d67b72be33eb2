// The desktop entry, and an installed copy of the program that finds its map page, translations and media.
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;

namespace {
const QString kDesktopEntry = QStringLiteral(REELVUE_SOURCE_DIR "/media/reelvue.desktop");

QString run(const QString& program, const QStringList& arguments, int* exitCode) {
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(120000)) {
        *exitCode = -1;
        return QStringLiteral("timed out");
    }
    *exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    return QString::fromUtf8(process.readAll());
}
} // namespace

TEST(Install, desktop_entry_passes_validation_and_names_the_program_and_its_icon) {
    const QString validator = QStandardPaths::findExecutable(QStringLiteral("desktop-file-validate"));
    ASSERT_FALSE(validator.isEmpty()) << "desktop-file-utils is installed by scripts/setup";
    int exitCode = 0;
    const QString output = run(validator, {kDesktopEntry}, &exitCode);
    EXPECT_EQ(exitCode, 0) << output.toStdString();
    EXPECT_TRUE(output.trimmed().isEmpty()) << "no warnings either: " << output.toStdString();

    QSettings entry(kDesktopEntry, QSettings::IniFormat);
    entry.beginGroup(QStringLiteral("Desktop Entry"));
    EXPECT_EQ(entry.value("Name").toString(), "Lumicor Reelvue");
    EXPECT_EQ(entry.value("Exec").toString(), "reelvue %f");
    EXPECT_EQ(entry.value("Icon").toString(), "reelvue");
}

TEST(Install, installed_program_runs_from_its_link_and_finds_its_resources) {
    const QString buildDir = QDir(QStringLiteral(REELVUE_RUN_DIR "/..")).absolutePath();
    for (const char* program : {"reelvue", "reelvue-cli"})
        if (!QFileInfo::exists(QStringLiteral(REELVUE_RUN_DIR "/") + program))
            GTEST_SKIP() << program << " is not built; build everything to test the install";
    const QString cmake = QStandardPaths::findExecutable(QStringLiteral("cmake"));
    ASSERT_FALSE(cmake.isEmpty());

    QTemporaryDir prefix;
    int exitCode = 0;
    const QString log = run(cmake, {"--install", buildDir, "--prefix", prefix.path()}, &exitCode);
    ASSERT_EQ(exitCode, 0) << log.toStdString();

    const QDir root(prefix.path());
    const QFileInfo link(root.filePath("bin/reelvue"));
    EXPECT_TRUE(link.isSymLink());
    EXPECT_EQ(link.symLinkTarget(), root.filePath("lib/reelvue/reelvue"));
    EXPECT_TRUE(QFileInfo(root.filePath("bin/reelvue-cli")).isExecutable());
    for (const char* file : {"lib/reelvue/map/dist/index.html", "lib/reelvue/map/dist/qwebchannel.js",
                             "lib/reelvue/map/dist/leaflet/leaflet.js", "share/applications/reelvue.desktop",
                             "share/icons/hicolor/scalable/apps/reelvue.svg"})
        EXPECT_TRUE(root.exists(file)) << file;
    const QStringList translations = QDir(QStringLiteral(REELVUE_RUN_DIR)).entryList({"video-player-ui.*.qm"});
    EXPECT_EQ(QDir(root.filePath("lib/reelvue")).entryList({"video-player-ui.*.qm"}), translations);

    const QString help = run(link.filePath(), {"--help"}, &exitCode);
    EXPECT_EQ(exitCode, 0);
    EXPECT_THAT(help.toStdString(), HasSubstr("--log-level"));

    // Started through the link from an unrelated directory, it finds its resources in its own tree.
    QTemporaryDir elsewhere;
    QProcess player;
    player.setProcessChannelMode(QProcess::MergedChannels);
    player.setWorkingDirectory(elsewhere.path());
    player.start(link.filePath(), {"--log-level=info"});
    ASSERT_TRUE(player.waitForStarted());
    QString output;
    for (int i = 0; i < 150 && !output.contains("Changing locale"); ++i) {
        player.waitForReadyRead(200);
        output += QString::fromUtf8(player.readAll());
    }
    player.terminate();
    player.waitForFinished(10000);
    EXPECT_THAT(output.toStdString(), HasSubstr("INFO ui.Main - Resources in " + root.filePath("lib/reelvue").toStdString() + " ["));
    EXPECT_FALSE(QFileInfo::exists(elsewhere.filePath("map")));
}
