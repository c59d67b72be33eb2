// The Linux source of removable-storage events: a poll() loop over udev, the mount table and a wake-up pipe.
#include "device-notify/DeviceNotifyTools.h"

#include "device-notify/MountTable.h"
#include "logging/Logging.h"

#include <QMetaObject>

#include <libmount/libmount.h>
#include <libudev.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

using devicenotify::MountEntry;

namespace {

constexpr const char* kLogger = "ui.DeviceNotifyTools";
// Without libmount's monitor the table is read this often: well inside the one second a user waits.
constexpr int kMountTablePollMs = 250;

QByteArray text(const char* value) { return value ? QByteArray(value).trimmed() : QByteArray(); }

bool isDisk(udev_device* device) {
    const char* type = udev_device_get_devtype(device);
    return type && std::strcmp(type, "disk") == 0;
}

// RAM disks never hold a card, and an unused loop device has nothing on it.
bool isIgnored(udev_device* device) {
    const QByteArray name = text(udev_device_get_sysname(device));
    if (name.startsWith("ram") || name.startsWith("zram"))
        return true;
    return name.startsWith("loop") && text(udev_device_get_sysattr_value(device, "size")) == "0";
}

} // namespace

DeviceNotifyTools::DeviceNotifyTools() = default;

DeviceNotifyTools::~DeviceNotifyTools() { stop(); }

bool DeviceNotifyTools::isLumicorRecorder(const QByteArray& vendor, const QByteArray& model) {
    return vendor.toLower().contains("lumicor") || model.toLower().contains("lumicor");
}

void DeviceNotifyTools::start(QObject* listener) {
    if (m_thread.joinable()) {
        LOG_WARN(kLogger, "DeviceNotifyTools::start() called twice");
        return;
    }
    m_listener = listener;
    if (::pipe2(m_wakeUp, O_CLOEXEC | O_NONBLOCK) != 0) {
        LOG_ERROR(kLogger, "Failed to create the wake-up pipe: {}", std::strerror(errno));
        return;
    }
    m_thread = std::thread([this] { run(); });
}

void DeviceNotifyTools::stop() {
    if (!m_thread.joinable())
        return;
    const char byte = 'q';
    if (::write(m_wakeUp[1], &byte, 1) != 1)
        LOG_ERROR(kLogger, "Failed to wake the device notification thread: {}", std::strerror(errno));
    m_thread.join();
    ::close(m_wakeUp[0]);
    ::close(m_wakeUp[1]);
    m_wakeUp[0] = m_wakeUp[1] = -1;
}

void DeviceNotifyTools::openSources() {
    m_udev = udev_new();
    if (m_udev) {
        m_udevMonitor = udev_monitor_new_from_netlink(m_udev, "udev");
        if (m_udevMonitor &&
            (udev_monitor_filter_add_match_subsystem_devtype(m_udevMonitor, "block", nullptr) < 0 ||
             udev_monitor_enable_receiving(m_udevMonitor) < 0)) {
            udev_monitor_unref(m_udevMonitor);
            m_udevMonitor = nullptr;
        }
    }
    if (!m_udevMonitor)
        LOG_WARN(kLogger, "udev block device events are not available; only mounts will be noticed");

    m_mountMonitor = mnt_new_monitor();
    if (m_mountMonitor && (mnt_monitor_enable_kernel(m_mountMonitor, 1) < 0 || mnt_monitor_get_fd(m_mountMonitor) < 0)) {
        mnt_unref_monitor(m_mountMonitor);
        m_mountMonitor = nullptr;
    }
    if (!m_mountMonitor)
        LOG_WARN(kLogger, "The mount table monitor is not available; the table is read every {} ms", kMountTablePollMs);
}

void DeviceNotifyTools::closeSources() {
    if (m_mountMonitor)
        mnt_unref_monitor(m_mountMonitor);
    if (m_udevMonitor)
        udev_monitor_unref(m_udevMonitor);
    if (m_udev)
        udev_unref(m_udev);
    m_mountMonitor = nullptr;
    m_udevMonitor = nullptr;
    m_udev = nullptr;
}

void DeviceNotifyTools::run() {
    // The monitors are set up before the scan, so nothing that happens during it is missed.
    openSources();
    std::vector<MountEntry> mounts;
    initialScan(mounts);

    for (;;) {
        pollfd fds[3] = {{m_wakeUp[0], POLLIN, 0}, {-1, POLLIN, 0}, {-1, POLLIN, 0}};
        if (m_udevMonitor)
            fds[1].fd = udev_monitor_get_fd(m_udevMonitor);
        if (m_mountMonitor)
            fds[2].fd = mnt_monitor_get_fd(m_mountMonitor);
        const int ready = ::poll(fds, 3, m_mountMonitor ? -1 : kMountTablePollMs);
        if (ready < 0) {
            if (errno == EINTR)
                continue;
            LOG_ERROR(kLogger, "poll() failed: {}", std::strerror(errno));
            break;
        }
        if (fds[0].revents)
            break;
        if (fds[1].revents)
            handleUdevEvent();
        if (fds[2].revents || !m_mountMonitor)
            handleMountTableChange(mounts);
    }
    closeSources();
}

void DeviceNotifyTools::initialScan(std::vector<MountEntry>& mounts) {
    std::set<QByteArray> reported;
    if (m_udev) {
        udev_enumerate* enumerate = udev_enumerate_new(m_udev);
        udev_enumerate_add_match_subsystem(enumerate, "block");
        udev_enumerate_scan_devices(enumerate);
        udev_list_entry* entry = nullptr;
        udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(enumerate)) {
            udev_device* device = udev_device_new_from_syspath(m_udev, udev_list_entry_get_name(entry));
            if (!device)
                continue;
            if (!isIgnored(device) && udev_device_get_devnode(device)) {
                reported.insert(text(udev_device_get_devnode(device)));
                reportBlockDevice(device, "add");
            }
            udev_device_unref(device);
        }
        udev_enumerate_unref(enumerate);
    }
    // What is mounted but not a block device udev knows (tmpfs, network shares...) is reported as well.
    mounts = devicenotify::readMountTable();
    for (const MountEntry& mount : mounts)
        if (reported.insert(mount.source).second) {
            noteRecorderOfSource(mount.source);
            post("onStorageDeviceArrived", mount.source);
        }
    LOG_DEBUG(kLogger, "Initial scan: {} block devices and mount sources", reported.size());
    post("onStorageInitialScanFinished");
}

void DeviceNotifyTools::handleUdevEvent() {
    udev_device* device = udev_monitor_receive_device(m_udevMonitor);
    if (!device)
        return;
    const char* action = udev_device_get_action(device);
    if (action && !isIgnored(device))
        reportBlockDevice(device, action);
    udev_device_unref(device);
}

void DeviceNotifyTools::reportBlockDevice(udev_device* device, const char* action) {
    const QByteArray node = text(udev_device_get_devnode(device));
    if (node.isEmpty())
        return;
    const bool disk = isDisk(device);
    LOG_DEBUG(kLogger, "Block {} {}: {}", disk ? "disk" : "partition", node.constData(), action);
    if (std::strcmp(action, "add") == 0) {
        noteRecorder(device);
        post(disk ? "onStorageDriveArrived" : "onStorageDeviceArrived", node);
    } else if (std::strcmp(action, "remove") == 0) {
        post(disk ? "onStorageDriveRemoved" : "onStorageDeviceRemoved", node);
    } else if (std::strcmp(action, "change") == 0) {
        if (disk && text(udev_device_get_property_value(device, "DISK_MEDIA_CHANGE")) == "1") {
            // A reader's disk keeps existing; its size tells whether a card is in it now.
            const bool hasMedia = text(udev_device_get_sysattr_value(device, "size")) != "0";
            if (hasMedia)
                noteRecorder(device);
            post(hasMedia ? "onStorageDriveMediaArrived" : "onStorageDriveMediaRemoved", node);
        } else if (!disk) {
            post("onStorageDeviceArrived", node); // a new file system or label: look again
        }
    }
}

void DeviceNotifyTools::handleMountTableChange(std::vector<MountEntry>& mounts) {
    if (m_mountMonitor) {
        const char* filename = nullptr;
        while (mnt_monitor_next_change(m_mountMonitor, &filename, nullptr) == 0) {
        }
    }
    std::vector<MountEntry> now = devicenotify::readMountTable();
    if (now == mounts)
        return;
    const devicenotify::MountChanges changes = devicenotify::compareMountTables(mounts, now);
    mounts = std::move(now);
    for (const QByteArray& source : changes.unmountedSources) {
        LOG_DEBUG(kLogger, "Unmounted {}", source.constData());
        post("onStorageDriveMediaRemoved", source);
    }
    for (const QByteArray& source : changes.mountedSources) {
        LOG_DEBUG(kLogger, "Mounted {}", source.constData());
        noteRecorderOfSource(source);
        post("onStorageDeviceArrived", source);
    }
}

void DeviceNotifyTools::noteRecorderOfSource(const QByteArray& source) {
    struct stat status {};
    if (!m_udev || !source.startsWith('/') || ::stat(source.constData(), &status) != 0 || !S_ISBLK(status.st_mode))
        return;
    if (udev_device* device = udev_device_new_from_devnum(m_udev, 'b', status.st_rdev)) {
        noteRecorder(device);
        udev_device_unref(device);
    }
}

// udev's database gives ID_VENDOR/ID_MODEL where udevd runs; sysfs gives the SCSI inquiry texts everywhere.
void DeviceNotifyTools::noteRecorder(udev_device* device) {
    const QByteArray node = text(udev_device_get_devnode(device));
    if (node.isEmpty() || m_recordersNoted.count(node))
        return;
    udev_device* disk = isDisk(device) ? device : udev_device_get_parent_with_subsystem_devtype(device, "block", "disk");
    QByteArray vendor = text(udev_device_get_property_value(device, "ID_VENDOR"));
    QByteArray model = text(udev_device_get_property_value(device, "ID_MODEL"));
    if (disk) {
        vendor += ' ' + text(udev_device_get_sysattr_value(disk, "device/vendor"));
        model += ' ' + text(udev_device_get_sysattr_value(disk, "device/model"));
    }
    if (!isLumicorRecorder(vendor, model))
        return;
    m_recordersNoted.insert(node);
    LOG_INFO(kLogger, "Device {} is a Lumicor recorder (vendor: {}, model: {})", node.constData(),
             vendor.trimmed().constData(), model.trimmed().constData());
}

void DeviceNotifyTools::post(const char* slot, const QByteArray& device) {
    if (!QMetaObject::invokeMethod(m_listener, slot, Qt::QueuedConnection, Q_ARG(QByteArray, device)))
        LOG_ERROR(kLogger, "The listener has no slot {}(QByteArray)", slot);
}

void DeviceNotifyTools::post(const char* slot) {
    if (!QMetaObject::invokeMethod(m_listener, slot, Qt::QueuedConnection))
        LOG_ERROR(kLogger, "The listener has no slot {}()", slot);
}
