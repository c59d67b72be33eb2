// The storage watcher: re-evaluates a device's mounted volumes on each event and keeps the supported list.
#include "core/StorageWatcher.h"

#include "core/IsSuitablePath.h"
#include "logging/Logging.h"

#include <QDebug>

#include <algorithm>

namespace {

constexpr const char* kLogger = "ui.StorageWatcher";

std::string nameOf(const QStorageInfo& storage) { return storage.displayName().toStdString(); }

std::vector<QStorageInfo> mountedStoragesOf(const QByteArray& device) {
    std::vector<QStorageInfo> storages;
    for (const QStorageInfo& storage : QStorageInfo::mountedVolumes())
        if (storage.device() == device)
            storages.push_back(storage);
    return storages;
}

bool containsStorage(const std::vector<QStorageInfo>& storages, const QStorageInfo& storage) {
    return std::any_of(storages.begin(), storages.end(),
                       [&](const QStorageInfo& other) { return StorageWatcher::isSameStorage(other, storage); });
}

} // namespace

StorageWatcher::StorageWatcher(std::unique_ptr<IDeviceNotifier> notifier, QObject* parent)
    : QObject(parent), m_notifier(std::move(notifier)) {
    qRegisterMetaType<QStorageInfo>();
    qRegisterMetaType<std::vector<QStorageInfo>>();
}

StorageWatcher::~StorageWatcher() {
    // Events the notifier already posted die with this object; stopping it means no more are posted.
    if (m_notifier)
        m_notifier->stop();
}

void StorageWatcher::start() {
    if (m_notifier)
        m_notifier->start(this);
}

bool StorageWatcher::isSameStorage(const QStorageInfo& a, const QStorageInfo& b) {
    return a.device() == b.device() && a.rootPath() == b.rootPath();
}

void StorageWatcher::onStorageDeviceArrived(const QByteArray& device) {
    qDebug("StorageWatcher::onStorageDeviceArrived");
    reevaluate(device);
}

void StorageWatcher::onStorageDriveArrived(const QByteArray& drive) {
    qDebug("StorageWatcher::onStorageDriveArrived");
    reevaluate(drive);
}

void StorageWatcher::onStorageDriveRemoved(const QByteArray& drive) {
    qDebug("StorageWatcher::onStorageDriveRemoved");
    reevaluate(drive);
}

void StorageWatcher::onStorageDriveMediaArrived(const QByteArray& drive) {
    qDebug("StorageWatcher::onStorageDriveMediaArrived");
    reevaluate(drive);
}

void StorageWatcher::onStorageDriveMediaRemoved(const QByteArray& drive) {
    qDebug("StorageWatcher::onStorageDriveMediaRemoved");
    reevaluate(drive);
}

void StorageWatcher::onStorageDeviceRemoved(const QByteArray& device) {
    qDebug("StorageWatcher::onStorageDeviceRemoved");
    const auto known = m_deviceStorages.find(device);
    if (known == m_deviceStorages.end()) {
        LOG_WARN(kLogger, "Somehow device {} is unknown {}", device.toStdString(),
                 fmt::format("(known devices: {})", m_deviceStorages.size()));
        return;
    }
    const std::vector<QStorageInfo> dropped = std::move(known->second);
    m_deviceStorages.erase(known);
    for (const QStorageInfo& storage : dropped) {
        if (unlistSupported(storage)) {
            LOG_INFO(kLogger, "Removed suitable storage: {}", nameOf(storage));
            emit supportedStorageRemoved(storage);
        }
        emit storageRemoved(storage);
    }
}

void StorageWatcher::onStorageInitialScanFinished() {
    qDebug("StorageWatcher::onStorageInitialScanFinished");
    if (m_initialScanFinished)
        LOG_WARN(kLogger, "onStorageInitialScanFinished called twice");
    m_initialScanFinished = true;
    emit supportedStoragesArrived(m_supported);
}

void StorageWatcher::reevaluate(const QByteArray& device) {
    const std::vector<QStorageInfo> now = mountedStoragesOf(device);
    const std::vector<QStorageInfo> before = m_deviceStorages[device]; // an unknown device becomes known

    // Volumes that are gone.
    for (const QStorageInfo& storage : before) {
        if (containsStorage(now, storage))
            continue;
        if (unlistSupported(storage)) {
            LOG_INFO(kLogger, "Removed suitable storage: {}", nameOf(storage));
            emit supportedStorageRemoved(storage);
        }
        emit storageRemoved(storage);
    }

    std::vector<QStorageInfo> arrived;
    for (const QStorageInfo& storage : now) {
        const bool valid = storage.isValid();
        const bool supported = valid && storage.isReady() && IsSuitablePath(storage.rootPath());
        LOG_DEBUG(kLogger, "Device: {} isValid: {} isSupported: {}", nameOf(storage), valid, supported);
        if (supported && !isListedSupported(storage)) {
            LOG_INFO(kLogger, "Found new suitable storage: {}", nameOf(storage));
            m_supported.push_back(storage);
            arrived.push_back(storage);
        } else if (!supported && unlistSupported(storage)) {
            // Still mounted but no longer usable: the medium went away or the folders were removed.
            LOG_INFO(kLogger, "Removed suitable storage: {}", nameOf(storage));
            emit supportedStorageRemoved(storage);
        }
    }
    m_deviceStorages[device] = now;

    // Storages found during the initial scan are announced all together when it finishes (in one
    // supportedStoragesArrived with the whole list), so that two cards present at start-up are offered
    // as a choice instead of the first one being opened at once.
    if (!arrived.empty() && m_initialScanFinished)
        emit supportedStoragesArrived(arrived);
}

bool StorageWatcher::isListedSupported(const QStorageInfo& storage) const {
    return containsStorage(m_supported, storage);
}

bool StorageWatcher::unlistSupported(const QStorageInfo& storage) {
    const auto it = std::find_if(m_supported.begin(), m_supported.end(),
                                 [&](const QStorageInfo& other) { return isSameStorage(other, storage); });
    if (it == m_supported.end())
        return false;
    m_supported.erase(it);
    return true;
}
