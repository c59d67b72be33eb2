// reelvue-cli: the player's command-line companion. Log records go to standard error, results to standard output.
#include "cli/CliCommand.h"
#include "core/ApplicationOptions.h"
#include "core/FileNames.h"
#include "core/Startup.h"
#include "logging/Logging.h"

#include <QCoreApplication>
#include <QGuiApplication>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

namespace {

void writeLogToStderr(const std::string& line) {
    std::fwrite(line.data(), 1, line.size(), stderr);
    std::fflush(stderr);
}

QString usageText() {
    QString text = QStringLiteral("Usage: reelvue-cli [--log-level LEVEL] COMMAND [ARGUMENTS]\n\n"
                                  "Options:\n"
                                  "  -h, --help           Show this help\n"
                                  "  -v, --version        Show the version\n"
                                  "  --log-level LEVEL    error/warn/info/debug/trace (default warn)\n\n"
                                  "Commands:\n");
    auto commands = cliCommands();
    std::sort(commands.begin(), commands.end(),
              [](const CliCommand& a, const CliCommand& b) { return qstrcmp(a.name, b.name) < 0; });
    for (const CliCommand& command : commands)
        text += QStringLiteral("  %1 %2\n      %3\n").arg(command.name, command.usage, command.summary);
    return text;
}

} // namespace

std::vector<CliCommand>& cliCommands() {
    static std::vector<CliCommand> commands;
    return commands;
}

void cliPrint(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, bytes.size(), stdout);
    std::fflush(stdout);
}

void cliError(const QString& text) {
    const QByteArray bytes = text.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, bytes.size(), stderr);
    std::fflush(stderr);
}

bool parsePathAndJsonFlag(const QStringList& arguments, const QString& usage, QString* path, bool* json) {
    path->clear();
    *json = false;
    for (const QString& argument : arguments) {
        if (argument == QLatin1String("--json")) {
            *json = true;
        } else if (path->isEmpty() && !argument.startsWith(QLatin1String("--"))) {
            *path = argument;
        } else {
            path->clear();
            break;
        }
    }
    if (path->isEmpty())
        cliError(usage);
    return !path->isEmpty();
}

int main(int argc, char** argv) {
    logging::setLineWriter(&writeLogToStderr);
    qInstallMessageHandler(qtMessageHandler);
    keepFileNamesAsGiven();
    // The evidence pack draws its report with Qt Gui's fonts: that command gets a Gui application, on the
    // offscreen platform unless told otherwise, as nothing is shown.
    const bool drawing = std::any_of(argv + 1, argv + argc, [](const char* a) { return std::strcmp(a, "evidence") == 0; });
    if (drawing && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const std::unique_ptr<QCoreApplication> application =
        drawing ? std::make_unique<QGuiApplication>(argc, argv) : std::make_unique<QCoreApplication>(argc, argv);
    QCoreApplication& app = *application;
    QCoreApplication::setOrganizationName(kOrganizationName);
    QCoreApplication::setApplicationName(kApplicationName);
    QCoreApplication::setApplicationVersion(kApplicationVersion);

    // Global options come before the command; everything after the command name belongs to it.
    QStringList arguments = app.arguments().mid(1);
    QString logLevel = QStringLiteral("warn");
    while (!arguments.isEmpty() && arguments.first().startsWith(QLatin1Char('-'))) {
        const QString option = arguments.takeFirst();
        if (option == QLatin1String("-h") || option == QLatin1String("--help")) {
            cliPrint(usageText());
            return 0;
        }
        if (option == QLatin1String("-v") || option == QLatin1String("--version")) {
            cliPrint(QStringLiteral("reelvue-cli %1\n").arg(kApplicationVersion));
            return 0;
        }
        if (option.startsWith(QLatin1String("--log-level="))) {
            logLevel = option.section(QLatin1Char('='), 1);
        } else if (option == QLatin1String("--log-level") && !arguments.isEmpty()) {
            logLevel = arguments.takeFirst();
        } else {
            cliError(QStringLiteral("Unknown option: %1\n\n%2").arg(option, usageText()));
            return 2;
        }
    }
    applicationOptions().logLevel = logLevel;
    applyLogLevel(logLevel);

    if (arguments.isEmpty()) {
        cliError(usageText());
        return 2;
    }
    const QString name = arguments.takeFirst();
    for (const CliCommand& command : cliCommands())
        if (name == QLatin1String(command.name))
            return command.run(arguments);
    cliError(QStringLiteral("Unknown command: %1\n\n%2").arg(name, usageText()));
    return 2;
}
