// How the window's companions ask the user for paths: the file dialogs, or a test answering in the user's place.
#pragma once

#include <QString>

#include <functional>

class QWidget;

struct FileChoosers {
    std::function<QString(QWidget* parent, const QString& caption, const QString& proposal, const QString& filter)>
        saveFileName;
    std::function<QString(QWidget* parent, const QString& caption, const QString& start)> existingDirectory;
    std::function<QString(QWidget* parent, const QString& caption, const QString& start, const QString& filter)>
        openFileName;

    // The usual dialogs.
    static FileChoosers dialogs();
};
