#include "ui/MainWindow.h"

#include "logging/Logging.h"
#include "ui/AppUpdater.h"
#include "ui/ProgressDialog.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>

namespace {
constexpr const char* kLogger = "ui.MainWindow";
}

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent) {
    setObjectName(QStringLiteral("MainWindow"));
    setWindowTitle(QStringLiteral("Lumicor Reelvue"));
    auto* placeholder = new QLabel(tr("Open a card or a folder of recordings"), this);
    placeholder->setAlignment(Qt::AlignCenter);
    setCentralWidget(placeholder);
    createMenus();
    resize(1280, 800);

    // updater -> window
    AppUpdater& updater = AppUpdater::instance();
    connect(&updater, &AppUpdater::started, this, &MainWindow::onAppUpdaterStarted);
    connect(&updater, &AppUpdater::progress, this, &MainWindow::onBackgroundOperationProgress);
    connect(&updater, &AppUpdater::finished, this, &MainWindow::onAppUpdaterFinished);
}

void MainWindow::createMenus() {
    QMenu* menuFile = menuBar()->addMenu(tr("&File"));
    menuFile->setObjectName(QStringLiteral("menuFile"));
    QAction* actionQuit = menuFile->addAction(tr("&Quit"), this, &QWidget::close, QKeySequence(tr("Ctrl+Q")));
    actionQuit->setObjectName(QStringLiteral("actionQuit"));

    QMenu* menuHelp = menuBar()->addMenu(tr("&Help"));
    menuHelp->setObjectName(QStringLiteral("menuHelp"));
    QAction* actionCheckUpdate = menuHelp->addAction(tr("Check update"), this, &MainWindow::onActionCheckUpdate);
    actionCheckUpdate->setObjectName(QStringLiteral("actionCheckUpdate"));
}

void MainWindow::onActionCheckUpdate() { AppUpdater::instance().checkForUpdate(); }

void MainWindow::onAppUpdaterStarted() { showProgressDialog(tr("Updating status")); }

void MainWindow::onAppUpdaterFinished(const QString& message) {
    closeProgressDialog();
    if (!message.isEmpty())
        QMessageBox::warning(this, QCoreApplication::applicationName(), message);
}

void MainWindow::onBackgroundOperationProgress(int percent) {
    if (m_progressDialog)
        m_progressDialog->setProgress(percent);
}

void MainWindow::onBackgroundOperationCanceled() {
    if (sender() == m_progressDialog)
        AppUpdater::instance().cancel();
}

void MainWindow::showProgressDialog(const QString& title) {
    if (m_progressDialog) {
        LOG_WARN(kLogger, "A background operation is already in progress");
        return;
    }
    m_progressDialog = new ProgressDialog(title, this);
    m_progressDialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_progressDialog, &ProgressDialog::canceled, this, &MainWindow::onBackgroundOperationCanceled);
    setEnabled(false);
    m_progressDialog->setEnabled(true);
    m_progressDialog->show();
}

void MainWindow::closeProgressDialog() {
    if (m_progressDialog)
        m_progressDialog->accept(); // close() would ask to cancel, as the close button does
    setEnabled(true);
}
