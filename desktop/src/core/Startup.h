// Start-up helpers shared by the player and the command-line tool: locale choice, Qt diagnostics, resources.
#pragma once

class QLocale;
class QTranslator;

#include <QDir>
#include <QString>
#include <QtGlobal>

// The interface locale: the user's "locale" setting, else the installer's language, else the system locale.
QString chooseLocaleName();

// Routes Qt's own diagnostics into the log as records of the logger "ui.Qt".
void qtMessageHandler(QtMsgType type, const QMessageLogContext& context, const QString& message);

// Where the run-time resources (map/dist, media, translations) are: the working directory when it holds
// the map page, else the directory of the executable.
QDir resourceDirectory();

// Loads Qt's own texts (standard buttons, file dialogs) for the locale from Qt's translations directory.
bool loadQtTranslation(QTranslator& translator, const QLocale& locale);

// Copies Qt's web-channel script beside the map page unless one is there already. Failures are ignored.
void provideWebChannelScript(const QDir& resources);

// Settings stores of the application; the machine-wide one is written by the installer (or an administrator).
constexpr const char* kOrganizationName = "Lumicor";
constexpr const char* kApplicationName = "Lumicor Reelvue";
constexpr const char* kApplicationVersion = REELVUE_VERSION;
