// Reading mount tables and telling what was mounted and unmounted between two of them.
#include "device-notify/MountTable.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using devicenotify::MountEntry;

TEST(MountTable, keeps_device_and_tmpfs_mounts_and_leaves_out_kernel_pseudo_file_systems) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("mountinfo"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("22 27 0:21 / /proc rw,relatime - proc proc rw\n"
               "23 27 0:22 / /sys rw,relatime - sysfs sysfs rw\n"
               "27 1 254:0 / / rw,relatime - ext4 /dev/vda rw\n"
               "32 31 0:29 / /sys/fs/cgroup/cpu rw,relatime - cgroup cgroup rw,cpu\n"
               "50 27 8:17 / /media/user/CARD\\040ONE rw,nosuid - vfat /dev/sdb1 rw\n"
               "51 27 0:40 / /tmp/card rw,relatime - tmpfs reelvue-card rw\n");
    file.close();

    const std::vector<MountEntry> mounts = devicenotify::readMountTable(QFile::encodeName(path).constData());
    ASSERT_EQ(mounts.size(), 3u);
    EXPECT_EQ(mounts[0].source, QByteArray("/dev/vda"));
    EXPECT_EQ(mounts[1].source, QByteArray("/dev/sdb1"));
    EXPECT_EQ(mounts[1].target, QByteArray("/media/user/CARD ONE")) << "octal escapes are decoded";
    EXPECT_EQ(mounts[1].fsType, QByteArray("vfat"));
    EXPECT_EQ(mounts[2].source, QByteArray("reelvue-card"));
}

TEST(MountTable, unreadable_table_gives_nothing) {
    EXPECT_TRUE(devicenotify::readMountTable("/nonexistent/mountinfo").empty());
}

TEST(MountTable, changes_name_each_source_once_in_table_order) {
    const std::vector<MountEntry> before = {
        {"/dev/vda", "/", "ext4"}, {"/dev/sdb1", "/media/a", "vfat"}, {"/dev/sdc1", "/media/c", "vfat"}};
    const std::vector<MountEntry> after = {{"/dev/vda", "/", "ext4"},
                                           {"/dev/sdb1", "/media/a", "vfat"},
                                           {"/dev/sdd1", "/media/d", "exfat"},
                                           {"/dev/sdd1", "/mnt/d-again", "exfat"},
                                           {"/dev/sdb1", "/mnt/a-bound", "vfat"}};
    const devicenotify::MountChanges changes = devicenotify::compareMountTables(before, after);
    EXPECT_EQ(changes.mountedSources, (std::vector<QByteArray>{"/dev/sdd1", "/dev/sdb1"}));
    EXPECT_EQ(changes.unmountedSources, (std::vector<QByteArray>{"/dev/sdc1"}));

    const devicenotify::MountChanges none = devicenotify::compareMountTables(after, after);
    EXPECT_TRUE(none.mountedSources.empty());
    EXPECT_TRUE(none.unmountedSources.empty());
}
