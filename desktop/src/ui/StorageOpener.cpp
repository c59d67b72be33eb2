#include "ui/StorageOpener.h"

#include "core/StorageWatcher.h"
#include "device-notify/DeviceNotifyTools.h"
#include "logging/Logging.h"
#include "ui/OpenDialog.h"

#include <QAbstractButton>
#include <QAction>
#include <QMessageBox>

namespace {
constexpr const char* kLogger = "ui.MainWindow"; // its lines are the window's
} // namespace

StorageOpener::StorageOpener(QAction* openAction, QAbstractButton* openButton, std::function<bool()> busy, QWidget* window)
    : QObject(window), m_openAction(openAction), m_openButton(openButton), m_busy(std::move(busy)), m_window(window),
      m_watcher(new StorageWatcher(std::make_unique<DeviceNotifyTools>(), this)) {
    updateActions(); // disabled until a supported storage is known
    connect(m_openAction, &QAction::triggered, this, &StorageOpener::openDevice);
    connect(m_openButton, &QAbstractButton::clicked, this, &StorageOpener::openDevice);
    connect(m_watcher, &StorageWatcher::supportedStoragesArrived, this, &StorageOpener::onArrived);
    connect(m_watcher, &StorageWatcher::supportedStorageRemoved, this, &StorageOpener::onRemoved);
    connect(m_watcher, &StorageWatcher::storageRemoved, this, &StorageOpener::onRemoved);
}

void StorageOpener::start() { m_watcher->start(); }

void StorageOpener::updateActions() {
    const bool any = !m_watcher->supportedStorages().empty();
    m_openAction->setEnabled(any);
    m_openButton->setEnabled(any);
}

void StorageOpener::openDevice() { openOneOf(m_watcher->supportedStorages()); }

void StorageOpener::onArrived(const std::vector<QStorageInfo>& storages) {
    updateActions();
    if (!m_busy())
        openOneOf(storages);
}

void StorageOpener::openOneOf(const std::vector<QStorageInfo>& storages) {
    if (storages.empty())
        return;
    if (storages.size() == 1) {
        LOG_INFO(kLogger, "Found only one good external storage {}, open it", storages.front().displayName().toStdString());
        open(storages.front(), storages.front().rootPath());
        return;
    }
    OpenDialog dialog(m_window, m_watcher);
    if (dialog.exec() == QDialog::Accepted && dialog.hasResult())
        open(dialog.result().storage, dialog.result().path);
}

void StorageOpener::open(const QStorageInfo& storage, const QString& path) {
    m_opened = storage;
    m_isOpened = true;
    emit openRequested(path);
}

void StorageOpener::onRemoved(const QStorageInfo& storage) {
    updateActions();
    if (!m_isOpened || storage.device() != m_opened.device())
        return;
    m_isOpened = false;
    m_opened = QStorageInfo();
    LOG_INFO(kLogger, "The storage of the loaded recordings was removed: {}", storage.displayName().toStdString());
    emit openedStorageRemoved();
    QMessageBox::information(m_window, QStringLiteral("Lumicor Reelvue"),
                             tr("The storage %1 with the loaded recordings was removed.").arg(storage.rootPath()));
}
