// The Linux source of removable-storage events: udev block devices and the mount table, watched on a thread.
#pragma once

#include "core/DeviceNotifier.h"

#include <QByteArray>
#include <QObject>

#include <atomic>
#include <set>
#include <thread>

struct udev;
struct udev_device;
struct udev_monitor;
struct libmnt_monitor;

namespace devicenotify {
struct MountEntry;
}

// Watches, on a thread of its own, udev's block-device events and the kernel's mount table, and posts each
// change to the listener's slots by a queued call (see IDeviceNotifier):
//   - a disk added or removed: drive arrival or removal; a partition: device arrival or removal;
//   - a disk's media change (a card put into or taken out of a reader): media arrival or removal;
//   - a new mount: device arrival of its source; an unmount: media removal of its source, so the
//     listener looks at what is still mounted from it.
// Desktops mount a card a moment after udev reports it, so the mount table is what makes a card usable;
// udev alone would announce it too early. Works without udev (containers): the mount table suffices.
class DeviceNotifyTools final : public IDeviceNotifier {
public:
    DeviceNotifyTools();
    ~DeviceNotifyTools() override;
    DeviceNotifyTools(const DeviceNotifyTools&) = delete;
    DeviceNotifyTools& operator=(const DeviceNotifyTools&) = delete;

    void start(QObject* listener) override;
    void stop() override;

    // True when a device's vendor or model names the maker's own recorder.
    static bool isLumicorRecorder(const QByteArray& vendor, const QByteArray& model);

private:
    void run();
    void initialScan(std::vector<devicenotify::MountEntry>& mounts);
    void handleUdevEvent();
    void handleMountTableChange(std::vector<devicenotify::MountEntry>& mounts);
    void reportBlockDevice(udev_device* device, const char* action);
    void noteRecorder(udev_device* device);
    void noteRecorderOfSource(const QByteArray& source);
    void post(const char* slot, const QByteArray& device);
    void post(const char* slot);
    void openSources();
    void closeSources();

    QObject* m_listener = nullptr; // outlives start()..stop(): its owner stops this first
    std::thread m_thread;
    int m_wakeUp[2] = {-1, -1}; // written to on stop() so poll() returns
    udev* m_udev = nullptr;
    udev_monitor* m_udevMonitor = nullptr;
    libmnt_monitor* m_mountMonitor = nullptr;
    std::set<QByteArray> m_recordersNoted; // device nodes already logged as the maker's recorder
};
