#include "core/ApplicationOptions.h"

#include "logging/Logging.h"

#include <QCommandLineParser>
#include <QCoreApplication>

namespace {
constexpr const char* kLogger = "ui.Main";

struct OptionNames {
    static inline const QString forceUpdate = QStringLiteral("force-update");
    static inline const QString fps = QStringLiteral("fps");
    static inline const QString satellitesPlot = QStringLiteral("satellites-plot");
    static inline const QString hdopPlot = QStringLiteral("hdop-plot");
    static inline const QString pdopPlot = QStringLiteral("pdop-plot");
    static inline const QString vdopPlot = QStringLiteral("vdop-plot");
    static inline const QString updaterUrl = QStringLiteral("updater-url");
    static inline const QString logLevel = QStringLiteral("log-level");
    static inline const QString mapFile = QStringLiteral("map-file");
};
} // namespace

QString ApplicationOptions::defaultUpdaterUrl() {
    return QStringLiteral(REELVUE_UPDATE_HOST "/update/Reelvue/WINDOWS/stable");
}

ApplicationOptions& applicationOptions() {
    static ApplicationOptions options;
    return options;
}

void addApplicationOptions(QCommandLineParser& parser, const ApplicationOptions& options) {
    parser.addHelpOption();
    parser.addOption({OptionNames::forceUpdate, QStringLiteral("Force application update")});
    parser.addOption({OptionNames::fps, QStringLiteral("Show video FPS")});
    parser.addOption({OptionNames::satellitesPlot, QStringLiteral("Show satellites count plot")});
    parser.addOption({OptionNames::hdopPlot, QStringLiteral("Show HDOP plot")});
    // "count" in the next two descriptions is kept on purpose.
    parser.addOption({OptionNames::pdopPlot, QStringLiteral("Show PDOP count plot")});
    parser.addOption({OptionNames::vdopPlot, QStringLiteral("Show VDOP count plot")});
    parser.addOption({OptionNames::updaterUrl, QStringLiteral("URL to version updater json"), OptionNames::updaterUrl,
                      options.updaterUrl});
    parser.addOption({OptionNames::logLevel, QStringLiteral("error/warn/info/debug/trace"), OptionNames::logLevel,
                      options.logLevel});
    parser.addOption({OptionNames::mapFile, QStringLiteral("Offline map (MBTiles) for this run; may be repeated"),
                      QStringLiteral("file")});
}

void readApplicationOptions(const QCommandLineParser& parser, ApplicationOptions& options) {
    options.forceUpdate = parser.isSet(OptionNames::forceUpdate);
    options.showFps = parser.isSet(OptionNames::fps);
    options.satellitesPlot = parser.isSet(OptionNames::satellitesPlot);
    options.hdopPlot = parser.isSet(OptionNames::hdopPlot);
    options.pdopPlot = parser.isSet(OptionNames::pdopPlot);
    options.vdopPlot = parser.isSet(OptionNames::vdopPlot);
    options.updaterUrl = parser.value(OptionNames::updaterUrl);
    options.logLevel = parser.value(OptionNames::logLevel);
    options.mapFiles = parser.values(OptionNames::mapFile);
    // A file manager's "Open with" passes one path; of several, the last wins as with a drop.
    if (!parser.positionalArguments().isEmpty())
        options.openPath = parser.positionalArguments().constLast();
}

void parseCommandLine(const QCoreApplication& app, ApplicationOptions& options) {
    QCommandLineParser parser;
    addApplicationOptions(parser, options);
    // Files, folders or cards to open, as a file manager passes them.
    parser.addPositionalArgument(QStringLiteral("path"), QStringLiteral("Card, folder or video to open"),
                                 QStringLiteral("[path]"));
    parser.process(app);
    readApplicationOptions(parser, options);
}

int applyLogLevel(const QString& logLevel) {
    int level = logging::DEBUG;
    if (logLevel == QLatin1String("error"))
        level = logging::ERROR;
    else if (logLevel == QLatin1String("warn"))
        level = logging::WARN;
    else if (logLevel == QLatin1String("info"))
        level = logging::INFO;
    else if (logLevel == QLatin1String("debug"))
        level = logging::DEBUG;
    else if (logLevel == QLatin1String("trace"))
        level = logging::TRACE;
    else
        LOG_ERROR(kLogger, "Unknown log level {}, use debug", logLevel.toStdString());
    logging::setLevel(level);
    return level;
}
