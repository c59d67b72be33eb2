#include "ui/FileChoosers.h"

#include <QFileDialog>

FileChoosers FileChoosers::dialogs() {
    FileChoosers choosers;
    choosers.saveFileName = [](QWidget* parent, const QString& caption, const QString& proposal, const QString& filter) {
        return QFileDialog::getSaveFileName(parent, caption, proposal, filter);
    };
    choosers.existingDirectory = [](QWidget* parent, const QString& caption, const QString& start) {
        return QFileDialog::getExistingDirectory(parent, caption, start);
    };
    choosers.openFileName = [](QWidget* parent, const QString& caption, const QString& start, const QString& filter) {
        return QFileDialog::getOpenFileName(parent, caption, start, filter);
    };
    return choosers;
}
