// A device notifier that tests drive by hand: each call posts the event to the listener as the real one does.
#pragma once

#include "core/DeviceNotifier.h"
#include "core/StorageWatcher.h"
#include "logging/Logging.h"

#include <QByteArray>
#include <QMetaObject>
#include <QObject>

#include <memory>

namespace testsupport {

class StubDeviceNotifier final : public IDeviceNotifier {
public:
    void start(QObject* listener) override { m_listener = listener; }
    void stop() override { m_listener = nullptr; }
    bool isStarted() const { return m_listener != nullptr; }

    void deviceArrived(const QByteArray& device) { post("onStorageDeviceArrived", device); }
    void deviceRemoved(const QByteArray& device) { post("onStorageDeviceRemoved", device); }
    void driveArrived(const QByteArray& drive) { post("onStorageDriveArrived", drive); }
    void driveRemoved(const QByteArray& drive) { post("onStorageDriveRemoved", drive); }
    void mediaArrived(const QByteArray& drive) { post("onStorageDriveMediaArrived", drive); }
    void mediaRemoved(const QByteArray& drive) { post("onStorageDriveMediaRemoved", drive); }
    void initialScanFinished() { QMetaObject::invokeMethod(m_listener, "onStorageInitialScanFinished", Qt::QueuedConnection); }

private:
    void post(const char* slot, const QByteArray& id) {
        QMetaObject::invokeMethod(m_listener, slot, Qt::QueuedConnection, Q_ARG(QByteArray, id));
    }
    QObject* m_listener = nullptr;
};

// A started storage watcher fed by a stub notifier, with debug logging on.
struct StubbedStorageWatcher {
    StubbedStorageWatcher() {
        logging::setLevel(logging::DEBUG);
        auto notifier = std::make_unique<StubDeviceNotifier>();
        stub = notifier.get();
        watcher = std::make_unique<StorageWatcher>(std::move(notifier));
        watcher->start();
    }
    StubDeviceNotifier* stub = nullptr;
    std::unique_ptr<StorageWatcher> watcher;
};

} // namespace testsupport
