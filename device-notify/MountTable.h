// Snapshots of the kernel's mount table and what changed between two of them.
#pragma once

#include <QByteArray>

#include <vector>

namespace devicenotify {

struct MountEntry {
    QByteArray source; // the device identifier, as QStorageInfo::device() gives it ("/dev/sdb1", "tmpfs")
    QByteArray target; // the mount point
    QByteArray fsType;
};

bool operator==(const MountEntry& a, const MountEntry& b);

// The mounts of /proc/self/mountinfo (or another file of that format) that can hold recordings: kernel
// pseudo file systems (proc, sysfs, cgroup...) are left out, tmpfs and anything on a device node are kept.
// An unreadable table gives an empty list and a logged error.
std::vector<MountEntry> readMountTable(const char* path = "/proc/self/mountinfo");

struct MountChanges {
    std::vector<QByteArray> mountedSources;   // sources with a mount point they did not have before
    std::vector<QByteArray> unmountedSources; // sources that lost a mount point
};

// Each source appears at most once in each list, in table order.
MountChanges compareMountTables(const std::vector<MountEntry>& before, const std::vector<MountEntry>& after);

} // namespace devicenotify
