// Keeps the list of mounted storages that hold dash-camera recordings, fed by a device notifier.
#pragma once

#include "core/DeviceNotifier.h"

#include <QByteArray>
#include <QMetaType>
#include <QObject>
#include <QStorageInfo>

#include <map>
#include <memory>
#include <vector>

Q_DECLARE_METATYPE(std::vector<QStorageInfo>)

// Lives on the GUI thread; the notifier hands every event over by a queued call, so nothing here is locked.
// A storage is supported when it is valid, ready and its root passes IsSuitablePath.
// Until the notifier's initial scan is finished, newly supported storages are only listed; the end of the
// scan announces the whole list at once, so cards present at start-up arrive together in one signal.
//
//   StorageWatcher watcher(std::make_unique<DeviceNotifyTools>());
//   connect(&watcher, &StorageWatcher::supportedStoragesArrived, ...);
//   watcher.start();
class StorageWatcher : public QObject {
    Q_OBJECT
public:
    explicit StorageWatcher(std::unique_ptr<IDeviceNotifier> notifier, QObject* parent = nullptr);
    ~StorageWatcher() override;

    // Starts the notifier: the storages present now are announced once its initial scan is finished.
    void start();

    // The supported storages, in the order they were found.
    const std::vector<QStorageInfo>& supportedStorages() const { return m_supported; }
    bool isInitialScanFinished() const { return m_initialScanFinished; }

    // Same device identifier, byte for byte, and same root path.
    static bool isSameStorage(const QStorageInfo& a, const QStorageInfo& b);

signals:
    void supportedStoragesArrived(const std::vector<QStorageInfo>& storages); // the newly supported ones
    void supportedStorageRemoved(const QStorageInfo& storage);
    void storageRemoved(const QStorageInfo& storage); // any storage of a removed device or unmounted volume

public slots:
    void onStorageDeviceArrived(const QByteArray& device);
    void onStorageDeviceRemoved(const QByteArray& device);
    void onStorageDriveArrived(const QByteArray& drive);
    void onStorageDriveRemoved(const QByteArray& drive);
    void onStorageDriveMediaArrived(const QByteArray& drive);
    void onStorageDriveMediaRemoved(const QByteArray& drive);
    void onStorageInitialScanFinished();

private:
    void reevaluate(const QByteArray& device);
    bool isListedSupported(const QStorageInfo& storage) const;
    // Takes a storage off the supported list; false when it was not on it.
    bool unlistSupported(const QStorageInfo& storage);

    std::unique_ptr<IDeviceNotifier> m_notifier;
    std::map<QByteArray, std::vector<QStorageInfo>> m_deviceStorages; // last seen, per device identifier
    std::vector<QStorageInfo> m_supported;
    bool m_initialScanFinished = false;
};
