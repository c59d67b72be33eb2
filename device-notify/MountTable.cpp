// Reading the mount table through libmount, and comparing two snapshots of it.
#include "device-notify/MountTable.h"

#include "logging/Logging.h"

#include <libmount/libmount.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace devicenotify {
namespace {

constexpr const char* kLogger = "ui.DeviceNotifyTools";

void appendOnce(std::vector<QByteArray>& list, const QByteArray& value) {
    if (std::find(list.begin(), list.end(), value) == list.end())
        list.push_back(value);
}

bool contains(const std::vector<MountEntry>& table, const MountEntry& entry) {
    return std::find(table.begin(), table.end(), entry) != table.end();
}

// Cards are vfat, exfat, ext4... on a device node; tmpfs is kept for mounts made by hand and by the tests.
bool canHoldRecordings(libmnt_fs* fs) {
    const char* source = mnt_fs_get_source(fs);
    const char* type = mnt_fs_get_fstype(fs);
    if (source && source[0] == '/')
        return true;
    if (type && std::strcmp(type, "tmpfs") == 0)
        return true;
    return !mnt_fs_is_pseudofs(fs);
}

} // namespace

bool operator==(const MountEntry& a, const MountEntry& b) { return a.source == b.source && a.target == b.target; }

std::vector<MountEntry> readMountTable(const char* path) {
    std::vector<MountEntry> entries;
    std::unique_ptr<libmnt_table, void (*)(libmnt_table*)> table(mnt_new_table(), &mnt_unref_table);
    if (!table || mnt_table_parse_file(table.get(), path) != 0) {
        LOG_ERROR(kLogger, "Failed to read the mount table {}", path);
        return entries;
    }
    std::unique_ptr<libmnt_iter, void (*)(libmnt_iter*)> iterator(mnt_new_iter(MNT_ITER_FORWARD), &mnt_free_iter);
    libmnt_fs* fs = nullptr;
    while (mnt_table_next_fs(table.get(), iterator.get(), &fs) == 0) {
        if (!canHoldRecordings(fs))
            continue;
        const char* source = mnt_fs_get_source(fs);
        const char* target = mnt_fs_get_target(fs);
        const char* type = mnt_fs_get_fstype(fs);
        entries.push_back({QByteArray(source ? source : "none"), QByteArray(target ? target : ""),
                           QByteArray(type ? type : "")});
    }
    return entries;
}

MountChanges compareMountTables(const std::vector<MountEntry>& before, const std::vector<MountEntry>& after) {
    MountChanges changes;
    for (const MountEntry& entry : after)
        if (!contains(before, entry))
            appendOnce(changes.mountedSources, entry.source);
    for (const MountEntry& entry : before)
        if (!contains(after, entry))
            appendOnce(changes.unmountedSources, entry.source);
    return changes;
}

} // namespace devicenotify
