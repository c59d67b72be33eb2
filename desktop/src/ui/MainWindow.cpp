#include "ui/MainWindow.h"

#include <QLabel>

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent) {
    setObjectName(QStringLiteral("MainWindow"));
    setWindowTitle(QStringLiteral("Lumicor Reelvue"));
    auto* placeholder = new QLabel(tr("Open a card or a folder of recordings"), this);
    placeholder->setAlignment(Qt::AlignCenter);
    setCentralWidget(placeholder);
    resize(1280, 800);
}
