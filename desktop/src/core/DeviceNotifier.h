// The source of removable-storage events that feeds the storage watcher; the Linux one lives in device-notify/.
#pragma once

class QObject;

// Reports block devices, drives and their media as they come and go, each as a queued call of one of the
// listener's slots (so they run on the listener's thread):
//   onStorageDeviceArrived(QByteArray), onStorageDeviceRemoved(QByteArray),
//   onStorageDriveArrived(QByteArray), onStorageDriveRemoved(QByteArray),
//   onStorageDriveMediaArrived(QByteArray), onStorageDriveMediaRemoved(QByteArray),
//   onStorageInitialScanFinished().
// A device identifier is what QStorageInfo::device() gives for its mounted volumes ("/dev/sdb1").
// First comes every device present at start, then onStorageInitialScanFinished, then changes as they happen.
class IDeviceNotifier {
public:
    virtual ~IDeviceNotifier() = default;
    virtual void start(QObject* listener) = 0;
    // Returns once no further event will be posted.
    virtual void stop() = 0;
};
