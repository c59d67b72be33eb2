// Command-line options, the log-level mapping and the locale choice.
#include "core/ApplicationOptions.h"
#include "core/Startup.h"
#include "logging/Logging.h"
#include "support/RecordingFixtures.h"
#include "support/TestSupport.h"

#include <QCommandLineParser>
#include <QLocale>
#include <QSettings>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;
using testsupport::LogCapture;

namespace {

ApplicationOptions parse(QStringList arguments) {
    ApplicationOptions options;
    QCommandLineParser parser;
    addApplicationOptions(parser, options);
    arguments.prepend(QStringLiteral("reelvue"));
    EXPECT_TRUE(parser.parse(arguments)) << parser.errorText().toStdString();
    readApplicationOptions(parser, options);
    return options;
}

// Points both settings scopes at empty temporary folders for the life of a test.
class LocaleChoice : public testing::Test {
protected:
    void SetUp() override {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_user.path());
        QSettings::setPath(QSettings::NativeFormat, QSettings::SystemScope, m_system.path());
    }
    static void setUserLocale(const QString& name) {
        QSettings(kOrganizationName, kApplicationName).setValue(QStringLiteral("locale"), name);
    }
    static void setInstallerLanguage(int id) {
        QSettings(QSettings::NativeFormat, QSettings::SystemScope, kOrganizationName, kApplicationName)
            .setValue(QStringLiteral("InstallerLanguage"), id);
    }

private:
    QTemporaryDir m_user;
    QTemporaryDir m_system;
};

} // namespace

TEST(ApplicationOptions, defaults_hide_optional_plots_and_ask_the_default_server_at_info) {
    const ApplicationOptions options = parse({});
    EXPECT_FALSE(options.showFps);
    EXPECT_FALSE(options.satellitesPlot || options.hdopPlot || options.pdopPlot || options.vdopPlot);
    EXPECT_FALSE(options.forceUpdate);
    EXPECT_EQ(options.logLevel, QStringLiteral("info"));
    EXPECT_EQ(options.updaterUrl, ApplicationOptions::defaultUpdaterUrl());
    EXPECT_TRUE(options.updaterUrl.endsWith(QStringLiteral("/update/Reelvue/WINDOWS/stable")));
    EXPECT_EQ(&applicationOptions(), &applicationOptions());
}

TEST(ApplicationOptions, every_option_reaches_its_field) {
    const ApplicationOptions options =
        parse({"--force-update", "--fps", "--satellites-plot", "--hdop-plot", "--pdop-plot", "--vdop-plot",
               "--updater-url", "http://127.0.0.1:8000/v", "--log-level=trace", "--map-file", "a.mbtiles",
               "--map-file=b.mbtiles"});
    EXPECT_TRUE(options.forceUpdate && options.showFps && options.satellitesPlot && options.hdopPlot &&
                options.pdopPlot && options.vdopPlot);
    EXPECT_EQ(options.mapFiles, QStringList({QStringLiteral("a.mbtiles"), QStringLiteral("b.mbtiles")}));
    EXPECT_EQ(options.updaterUrl, QStringLiteral("http://127.0.0.1:8000/v"));
    EXPECT_EQ(options.logLevel, QStringLiteral("trace"));
}

TEST(ApplicationOptions, help_lists_the_eight_options_with_their_descriptions) {
    QCommandLineParser parser;
    addApplicationOptions(parser, ApplicationOptions{});
    const std::string help = parser.helpText().toStdString();
    for (const char* line : {"--force-update", "Force application update", "--fps", "Show video FPS",
                             "Show satellites count plot", "Show HDOP plot", "Show PDOP count plot",
                             "Show VDOP count plot", "--updater-url <updater-url>", "URL to version updater json",
                             "--log-level <log-level>", "error/warn/info/debug/trace"})
        EXPECT_THAT(help, HasSubstr(line));
}

TEST(ApplicationOptions, log_levels_are_case_sensitive_and_unknown_ones_give_debug) {
    LogCapture capture;
    EXPECT_EQ(applyLogLevel(QStringLiteral("error")), logging::ERROR);
    EXPECT_EQ(applyLogLevel(QStringLiteral("warn")), logging::WARN);
    EXPECT_EQ(applyLogLevel(QStringLiteral("trace")), logging::TRACE);
    EXPECT_EQ(applyLogLevel(QStringLiteral("info")), logging::INFO);
    EXPECT_TRUE(capture.lines().empty());

    EXPECT_EQ(applyLogLevel(QStringLiteral("verbose")), logging::DEBUG);
    EXPECT_EQ(logging::level(), logging::DEBUG);
    EXPECT_EQ(applyLogLevel(QStringLiteral("INFO")), logging::DEBUG);
    const auto lines = capture.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_THAT(lines[0], HasSubstr("] ERROR ui.Main - Unknown log level verbose, use debug ["));
    EXPECT_THAT(lines[1], HasSubstr("Unknown log level INFO, use debug"));
}

TEST_F(LocaleChoice, system_locale_without_settings_else_the_installer_language_or_english) {
    EXPECT_EQ(chooseLocaleName(), QLocale::system().name());
    // German (1031) has no translation: English, not the system locale.
    const std::pair<int, const char*> languages[] = {{1029, "cs_CZ"}, {1045, "pl_PL"}, {1049, "ru_RU"}, {1031, "en_US"}};
    for (const auto& [id, name] : languages) {
        setInstallerLanguage(id);
        EXPECT_EQ(chooseLocaleName(), QString::fromLatin1(name)) << id;
    }
}

TEST_F(LocaleChoice, user_setting_beats_installer_language_and_logs_all_three_sources) {
    LogCapture capture;
    logging::setLevel(logging::DEBUG);
    setUserLocale(QStringLiteral("pl_PL"));
    setInstallerLanguage(1049);
    EXPECT_EQ(chooseLocaleName(), QStringLiteral("pl_PL"));
    EXPECT_EQ(capture.linesContaining("DEBUG ui.Main - System locale '").size(), 1u);
    EXPECT_EQ(capture.linesContaining("DEBUG ui.Main - Configured locale 'pl_PL'").size(), 1u);
    EXPECT_EQ(capture.linesContaining("DEBUG ui.Main - Installer language '1049'").size(), 1u);
}

TEST(QtMessageBridge, maps_message_types_to_levels_with_a_context_prefix) {
    LogCapture capture;
    logging::setLevel(logging::WARN);
    const QMessageLogContext withSource("view.cpp", 12, "void View::paint()", "default");
    qtMessageHandler(QtWarningMsg, withSource, QStringLiteral("bad size"));
    qtMessageHandler(QtCriticalMsg, QMessageLogContext(), QStringLiteral("no source"));
    qtMessageHandler(QtDebugMsg, withSource, QStringLiteral("suppressed"));
    const auto lines = capture.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_THAT(lines[0], HasSubstr("] WARN ui.Qt - (view.cpp:12 void View::paint()) bad size ["));
    EXPECT_THAT(lines[1], HasSubstr("] ERROR ui.Qt - no source ["));
}

TEST(Startup, web_channel_script_already_beside_the_page_is_not_overwritten) {
    QTemporaryDir resources;
    const QString script = resources.filePath(QStringLiteral("map/dist/qwebchannel.js"));
    testsupport::writeFile(script, "// ours");
    provideWebChannelScript(QDir(resources.path()));
    EXPECT_EQ(testsupport::readFile(script), QByteArray("// ours"));
}
