#include "core/Startup.h"

#include "core/SettingsKeys.h"
#include "logging/Logging.h"

#include <QCoreApplication>
#include <QFile>
#include <QLibraryInfo>
#include <QLocale>
#include <QSettings>
#include <QTranslator>

namespace {
constexpr const char* kLogger = "ui.Main";
constexpr const char* kQtLogger = "ui.Qt";

int logLevelOf(QtMsgType type) {
    switch (type) {
    case QtDebugMsg: return logging::DEBUG;
    case QtInfoMsg: return logging::INFO;
    case QtWarningMsg: return logging::WARN;
    case QtCriticalMsg: return logging::ERROR;
    case QtFatalMsg: return logging::FATAL;
    }
    return logging::DEBUG;
}
} // namespace

QString chooseLocaleName() {
    const QString systemName = QLocale::system().name();
    const QVariant configured = QSettings(kOrganizationName, kApplicationName).value(settingskeys::kLocale);
    LOG_DEBUG(kLogger, "System locale '{}'", systemName.toStdString());
    LOG_DEBUG(kLogger, "Configured locale '{}'", configured.toString().toStdString());

    // On Linux the installer's choice lives in the system-scope settings (/etc/xdg/Lumicor/Lumicor Reelvue.conf).
    const QVariant installerLanguage =
        QSettings(QSettings::NativeFormat, QSettings::SystemScope, kOrganizationName, kApplicationName)
            .value(QStringLiteral("InstallerLanguage"));
    LOG_DEBUG(kLogger, "Installer language '{}'", installerLanguage.toInt());

    if (!configured.isNull())
        return configured.toString();
    if (installerLanguage.isNull())
        return systemName;
    // Windows language identifiers, as the installer stores them. Any other language gets English, not the
    // system locale: the installer asked the user, so their answer wins.
    switch (installerLanguage.toInt()) {
    case 1029: return QStringLiteral("cs_CZ");
    case 1045: return QStringLiteral("pl_PL");
    case 1049: return QStringLiteral("ru_RU");
    default: return QStringLiteral("en_US");
    }
}

void qtMessageHandler(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    const int level = logLevelOf(type);
    if (!logging::isEnabled(level))
        return;
    const std::string prefix = context.file && context.function
                                   ? fmt::format("({}:{} {}) ", context.file, context.line, context.function)
                                   : std::string();
    logging::log(context.file ? context.file : "", context.line, context.function ? context.function : "", kQtLogger,
                 level, "{}{}", prefix, message.toStdString());
}

QDir resourceDirectory() {
    const QDir current = QDir::current();
    if (current.exists(QStringLiteral("map/dist/index.html")))
        return current;
    return QDir(QCoreApplication::applicationDirPath());
}

bool loadQtTranslation(QTranslator& translator, const QLocale& locale) {
    return translator.load(locale, QStringLiteral("qtbase"), QStringLiteral("_"),
                           QLibraryInfo::location(QLibraryInfo::TranslationsPath));
}

void provideWebChannelScript(const QDir& resources) {
    const QString target = resources.absoluteFilePath(QStringLiteral("map/dist/qwebchannel.js"));
    if (!QFile::exists(target))
        QFile::copy(QStringLiteral(":/qtwebchannel/qwebchannel.js"), target);
}
