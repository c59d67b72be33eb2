// The process-wide record of the command-line options and the parsing that fills it.
#pragma once

#include <QString>
#include <QStringList>

class QCommandLineParser;
class QCoreApplication;

struct ApplicationOptions {
    bool showFps = false;
    bool satellitesPlot = false;
    bool hdopPlot = false;
    bool pdopPlot = false;
    bool vdopPlot = false;
    QString updaterUrl = defaultUpdaterUrl();
    QString logLevel = QStringLiteral("info");
    bool forceUpdate = false;
    QString openPath; // the card, folder or video named on the command line, if any
    QStringList mapFiles; // offline map files (MBTiles) for this run

    // The update server's version description; the host is a build setting.
    static QString defaultUpdaterUrl();
};

// The single record, created with its defaults on first access.
ApplicationOptions& applicationOptions();

// Adds the help switch and the options, in their documented order, with the record's values as defaults.
void addApplicationOptions(QCommandLineParser& parser, const ApplicationOptions& options);
// Copies what the parser found into the record.
void readApplicationOptions(const QCommandLineParser& parser, ApplicationOptions& options);
// Parses the application's arguments into the record; help and parser errors end the process, as Qt's parser does.
void parseCommandLine(const QCoreApplication& app, ApplicationOptions& options);

// Maps "error" / "warn" / "info" / "debug" / "trace" (case-sensitive) to a log level and makes it the
// process-wide one; any other text logs an ERROR record and selects DEBUG. Returns the chosen level.
int applyLogLevel(const QString& logLevel);
