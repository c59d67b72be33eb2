// The program's entry point: options, log level, locale and translation, then the main window.
#include "core/ApplicationOptions.h"
#include "core/FileNames.h"
#include "core/Startup.h"
#include "logging/Logging.h"
#include "ui/AppUpdater.h"
#include "ui/Icons.h"
#include "ui/MainWindow.h"
#include "ui/TileSchemeHandler.h"

#include <QApplication>
#include <QFileInfo>
#include <QLocale>
#include <QTranslator>
#include <QWebChannel>

#include <memory>

namespace {
constexpr const char* kLogger = "ui.Main";

// Help is answered without a display, so they work in any terminal.
bool asksOnlyForText(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const QByteArray argument(argv[i]);
        if (argument == "-h" || argument == "--help" || argument == "-?" || argument == "--help-all")
            return true;
    }
    return false;
}
} // namespace

int main(int argc, char** argv) {
    // Qt::AA_UseOpenGLES is left unset: the Linux desktop renders with desktop OpenGL.
    qInstallMessageHandler(qtMessageHandler);
    keepFileNamesAsGiven();
    if (asksOnlyForText(argc, argv)) {
        QCoreApplication textOnly(argc, argv);
        QCoreApplication::setApplicationName(kApplicationName);
        QCoreApplication::setApplicationVersion(kApplicationVersion);
        parseCommandLine(textOnly, applicationOptions());
    }
    // The map page's tile scheme must be known before the browser engine starts with the application object.
    TileSchemeHandler::registerScheme();
    auto app = std::make_unique<QApplication>(argc, argv);
    QCoreApplication::setOrganizationName(kOrganizationName);
    QCoreApplication::setApplicationName(kApplicationName);
    QCoreApplication::setApplicationVersion(kApplicationVersion);
    QApplication::setWindowIcon(reelvueIcon(QStringLiteral("reelvue")));
    QGuiApplication::setDesktopFileName(QStringLiteral("reelvue")); // ties the windows to reelvue.desktop

    // The resources' place is known only once the application object can tell where the executable is.
    const QDir resources = resourceDirectory();
    // The script is a resource of Qt WebChannel; this use keeps the library linked in.
    (void)QWebChannel::staticMetaObject.className();
    provideWebChannelScript(resources);

    ApplicationOptions& options = applicationOptions();
    parseCommandLine(*app, options);
    applyLogLevel(options.logLevel);
    LOG_INFO(kLogger, "Resources in {}", resources.absolutePath().toStdString());

    const QString localeName = chooseLocaleName();
    LOG_INFO(kLogger, "Changing locale to '{}'", localeName.toStdString());
    QLocale::setDefault(QLocale(localeName));
    auto translator = std::make_unique<QTranslator>();
    (void)translator->load(QLocale(), QStringLiteral("video-player-ui"), QStringLiteral("."),
                           resources.absolutePath() + QLatin1Char('/'), QStringLiteral(".qm"));
    QCoreApplication::installTranslator(translator.get());
    auto qtTranslator = std::make_unique<QTranslator>();
    if (loadQtTranslation(*qtTranslator, QLocale()))
        QCoreApplication::installTranslator(qtTranslator.get());

    auto window = std::make_unique<MainWindow>();
    window->setStartupTranslators({translator.get(), qtTranslator.get()});
    window->show();
    if (!options.openPath.isEmpty()) {
        const QFileInfo path(options.openPath);
        QMetaObject::invokeMethod(window.get(), path.isDir() ? "loadDirectory" : "loadFile", Qt::QueuedConnection,
                                  Q_ARG(QString, path.absoluteFilePath()));
    }
    AppUpdater::instance().checkForUpdate();

    const int exitCode = app->exec();
    window.reset();
    translator.reset();
    qtTranslator.reset();
    app.reset();
    return exitCode;
}
