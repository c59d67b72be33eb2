#include "ui/MainWindow.h"

#include "core/StorageWatcher.h"
#include "device-notify/DeviceNotifyTools.h"
#include "logging/Logging.h"
#include "ui/AppUpdater.h"
#include "ui/OpenDialog.h"
#include "ui/ProgressDialog.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>

namespace {
constexpr const char* kLogger = "ui.MainWindow";
const QString kWindowTitle = QStringLiteral("Lumicor Reelvue");
}

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent) {
    setObjectName(QStringLiteral("MainWindow"));
    setWindowTitle(kWindowTitle);
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

    createStorageWatcher();
}

void MainWindow::createStorageWatcher() {
    // storage watcher -> window
    m_storageWatcher = new StorageWatcher(std::make_unique<DeviceNotifyTools>(), this);
    connect(m_storageWatcher, &StorageWatcher::supportedStoragesArrived, this,
            &MainWindow::onSupportedStorageDevicesArrived);
    connect(m_storageWatcher, &StorageWatcher::supportedStorageRemoved, this, &MainWindow::onStorageDeviceRemoved);
    connect(m_storageWatcher, &StorageWatcher::storageRemoved, this, &MainWindow::onStorageDeviceRemoved);
    m_storageWatcher->start();
}

void MainWindow::createMenus() {
    QMenu* menuFile = menuBar()->addMenu(tr("&File"));
    menuFile->setObjectName(QStringLiteral("menuFile"));
    m_actionOpenDevice = menuFile->addAction(tr("Open external drive"), this, &MainWindow::onActionOpenDevice);
    m_actionOpenDevice->setObjectName(QStringLiteral("actionOpenDevice"));
    m_actionOpenDevice->setEnabled(false); // until a supported storage is known
    menuFile->addSeparator();
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

void MainWindow::loadDirectory(QString path) {
    LOG_INFO(kLogger, "Open directory {}", path.toStdString());
    // Loading the playlist comes with the full window; for now the window shows what it would load.
    setWindowTitle(kWindowTitle + QStringLiteral(" (") + path + QLatin1Char(')'));
}

void MainWindow::onActionOpenDevice() { openOneOf(m_storageWatcher->supportedStorages()); }

void MainWindow::onSupportedStorageDevicesArrived(const std::vector<QStorageInfo>& storages) {
    m_supportedStorages = m_storageWatcher->supportedStorages();
    m_actionOpenDevice->setEnabled(!m_supportedStorages.empty());
    // A card put in while a job runs is only listed; the user opens it when the job is done.
    if (isEnabled())
        openOneOf(storages);
}

void MainWindow::openOneOf(const std::vector<QStorageInfo>& storages) {
    if (storages.empty())
        return;
    if (storages.size() == 1) {
        LOG_INFO(kLogger, "Found only one good external storage {}, open it", storages.front().displayName().toStdString());
        openStorage(storages.front(), storages.front().rootPath());
        return;
    }
    OpenDialog dialog(this, m_storageWatcher);
    if (dialog.exec() == QDialog::Accepted && dialog.hasResult())
        openStorage(dialog.result().storage, dialog.result().path);
}

void MainWindow::openStorage(const QStorageInfo& storage, const QString& path) {
    m_openedStorage = storage;
    m_storageOpened = true;
    QMetaObject::invokeMethod(this, "loadDirectory", Qt::QueuedConnection, Q_ARG(QString, path));
}

// Reached twice for a supported storage (supportedStorageRemoved and storageRemoved); the first call
// closes the recordings, the second finds nothing open.
void MainWindow::onStorageDeviceRemoved(const QStorageInfo& storage) {
    m_supportedStorages = m_storageWatcher->supportedStorages();
    m_actionOpenDevice->setEnabled(!m_supportedStorages.empty());
    if (m_storageOpened && storage.device() == m_openedStorage.device())
        closeRemovedRecordings(storage);
}

void MainWindow::closeRemovedRecordings(const QStorageInfo& storage) {
    m_storageOpened = false;
    m_openedStorage = QStorageInfo();
    LOG_INFO(kLogger, "The storage of the loaded recordings was removed: {}", storage.displayName().toStdString());
    // Playback is stopped and the views cleared here once the window has them.
    setWindowTitle(kWindowTitle);
    QMessageBox::information(this, kWindowTitle,
                             tr("The storage %1 with the loaded recordings was removed.").arg(storage.rootPath()));
}
