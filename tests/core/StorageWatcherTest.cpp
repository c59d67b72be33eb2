// The storage watcher's logic over real tmpfs mounts, fed by a stub notifier raising device events.
#include "core/Startup.h"
#include "support/StubDeviceNotifier.h"
#include "support/TestSupport.h"
#include "support/TmpfsMount.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

using testsupport::TmpfsMount;

namespace {

class StorageWatcherTest : public testing::Test {
protected:
    testsupport::MountTestLock mountLock; // its cards must not reach other tests' watchers
    testsupport::LogCapture log;
    testsupport::StubbedStorageWatcher watched;
    testsupport::StubDeviceNotifier* stub = watched.stub;
    StorageWatcher* watcher = watched.watcher.get();

    // Lets the queued events reach the watcher.
    static void deliver() {
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
    }

    static std::vector<QStorageInfo> storagesOf(const QSignalSpy& spy, int index) {
        return spy.at(index).at(0).value<std::vector<QStorageInfo>>();
    }
};

} // namespace

TEST_F(StorageWatcherTest, two_cards_present_at_start_up_are_announced_together_after_the_initial_scan) {
    SKIP_UNLESS_TMPFS_MOUNTS();
    TmpfsMount first("reelvue-card-a");
    TmpfsMount second("reelvue-card-b");
    first.makeRecorderLayout();
    second.makeRecorderLayout();
    QSignalSpy arrived(watcher, &StorageWatcher::supportedStoragesArrived);

    stub->deviceArrived(first.device());
    stub->deviceArrived(second.device());
    deliver();
    EXPECT_EQ(arrived.count(), 0) << "nothing is announced before the initial scan is over";
    EXPECT_EQ(watcher->supportedStorages().size(), 2u);

    stub->initialScanFinished();
    deliver();
    ASSERT_EQ(arrived.count(), 1);
    const std::vector<QStorageInfo> storages = storagesOf(arrived, 0);
    ASSERT_EQ(storages.size(), 2u);
    EXPECT_EQ(storages[0].rootPath(), first.path());
    EXPECT_EQ(storages[1].rootPath(), second.path());
    EXPECT_EQ(log.linesContaining("Found new suitable storage: " + first.path().toStdString()).size(), 1u);
}

TEST_F(StorageWatcherTest, card_reader_without_card_announces_nothing_until_the_card_is_mounted) {
    SKIP_UNLESS_TMPFS_MOUNTS();
    QSignalSpy arrived(watcher, &StorageWatcher::supportedStoragesArrived);
    stub->driveArrived("reelvue-reader");
    stub->initialScanFinished();
    deliver();
    ASSERT_EQ(arrived.count(), 1);
    EXPECT_TRUE(storagesOf(arrived, 0).empty());

    TmpfsMount card("reelvue-reader");
    card.makeRecorderLayout();
    stub->mediaArrived("reelvue-reader");
    deliver();
    ASSERT_EQ(arrived.count(), 2);
    ASSERT_EQ(storagesOf(arrived, 1).size(), 1u);
    EXPECT_EQ(storagesOf(arrived, 1)[0].rootPath(), card.path());
    EXPECT_EQ(storagesOf(arrived, 1)[0].device(), QByteArray("reelvue-reader"));

    // The same card looked at again is not new.
    stub->deviceArrived("reelvue-reader");
    deliver();
    EXPECT_EQ(arrived.count(), 2);
}

TEST_F(StorageWatcherTest, card_failing_the_suitable_path_check_is_logged_and_never_announced) {
    SKIP_UNLESS_TMPFS_MOUNTS();
    TmpfsMount card("reelvue-plain-card");
    QDir(card.path()).mkpath(QStringLiteral("Music"));
    QSignalSpy arrived(watcher, &StorageWatcher::supportedStoragesArrived);
    QSignalSpy removed(watcher, &StorageWatcher::storageRemoved);
    stub->initialScanFinished();
    stub->deviceArrived(card.device());
    deliver();
    EXPECT_EQ(arrived.count(), 1) << "only the empty list of the initial scan";
    EXPECT_TRUE(watcher->supportedStorages().empty());
    EXPECT_EQ(log.linesContaining("Device: " + card.path().toStdString() + " isValid: true isSupported: false").size(), 1u);
    EXPECT_EQ(log.linesContaining("does not fit: there isn't one of required directories").size(), 1u);

    // Removing it is only a storage removal.
    QSignalSpy supportedRemoved(watcher, &StorageWatcher::supportedStorageRemoved);
    stub->deviceRemoved(card.device());
    deliver();
    EXPECT_EQ(supportedRemoved.count(), 0);
    ASSERT_EQ(removed.count(), 1);
    EXPECT_EQ(removed.at(0).at(0).value<QStorageInfo>().rootPath(), card.path());
}

TEST_F(StorageWatcherTest, removed_or_unmounted_supported_card_leaves_the_list_with_both_signals) {
    SKIP_UNLESS_TMPFS_MOUNTS();
    TmpfsMount pulled("reelvue-pulled");
    TmpfsMount unmounted("reelvue-unmounted");
    pulled.makeRecorderLayout();
    unmounted.makeRecorderLayout();
    stub->initialScanFinished();
    stub->deviceArrived(pulled.device());
    stub->deviceArrived(unmounted.device());
    deliver();
    ASSERT_EQ(watcher->supportedStorages().size(), 2u);
    QSignalSpy supportedRemoved(watcher, &StorageWatcher::supportedStorageRemoved);
    QSignalSpy removed(watcher, &StorageWatcher::storageRemoved);

    stub->deviceRemoved(pulled.device()); // pulled out: the device is gone, whatever the mount table says
    deliver();
    ASSERT_EQ(supportedRemoved.count(), 1);
    EXPECT_EQ(supportedRemoved.at(0).at(0).value<QStorageInfo>().rootPath(), pulled.path());
    EXPECT_EQ(removed.count(), 1);
    ASSERT_EQ(watcher->supportedStorages().size(), 1u);
    EXPECT_EQ(watcher->supportedStorages()[0].rootPath(), unmounted.path());

    unmounted.unmount();
    stub->mediaRemoved(unmounted.device());
    deliver();
    ASSERT_EQ(supportedRemoved.count(), 2);
    EXPECT_EQ(supportedRemoved.at(1).at(0).value<QStorageInfo>().rootPath(), unmounted.path());
    EXPECT_EQ(removed.count(), 2);
    EXPECT_TRUE(watcher->supportedStorages().empty());
    EXPECT_EQ(log.linesContaining("Removed suitable storage: ").size(), 2u);
}

TEST_F(StorageWatcherTest, card_whose_recorder_folders_are_deleted_stops_being_supported_but_stays_mounted) {
    SKIP_UNLESS_TMPFS_MOUNTS();
    TmpfsMount card("reelvue-emptied");
    card.makeRecorderLayout();
    stub->initialScanFinished();
    stub->deviceArrived(card.device());
    deliver();
    ASSERT_EQ(watcher->supportedStorages().size(), 1u);
    QSignalSpy supportedRemoved(watcher, &StorageWatcher::supportedStorageRemoved);
    QSignalSpy removed(watcher, &StorageWatcher::storageRemoved);

    QDir(card.path() + QStringLiteral("/DCIM")).removeRecursively();
    stub->driveArrived(card.device());
    deliver();
    EXPECT_EQ(supportedRemoved.count(), 1);
    EXPECT_EQ(removed.count(), 0);
    EXPECT_TRUE(watcher->supportedStorages().empty());
}

TEST_F(StorageWatcherTest, removal_of_an_unknown_device_is_only_logged) {
    QSignalSpy removed(watcher, &StorageWatcher::storageRemoved);
    stub->deviceRemoved("/dev/reelvue-nothing");
    deliver();
    EXPECT_EQ(removed.count(), 0);
    EXPECT_EQ(log.linesContaining("WARN ui.StorageWatcher - Somehow device /dev/reelvue-nothing is unknown").size(), 1u);
}

TEST_F(StorageWatcherTest, second_initial_scan_is_warned_about_and_repeats_the_whole_list) {
    QSignalSpy arrived(watcher, &StorageWatcher::supportedStoragesArrived);
    stub->initialScanFinished();
    stub->initialScanFinished();
    deliver();
    EXPECT_EQ(arrived.count(), 2);
    EXPECT_EQ(log.linesContaining("onStorageInitialScanFinished called twice").size(), 1u);
    EXPECT_TRUE(watcher->isInitialScanFinished());
}

TEST_F(StorageWatcherTest, each_slot_names_itself_in_a_qt_debug_message) {
    qInstallMessageHandler(qtMessageHandler);
    stub->deviceArrived("reelvue-none");
    stub->driveArrived("reelvue-none");
    stub->driveRemoved("reelvue-none");
    stub->mediaArrived("reelvue-none");
    stub->mediaRemoved("reelvue-none");
    stub->deviceRemoved("reelvue-none");
    stub->initialScanFinished();
    deliver();
    qInstallMessageHandler(nullptr);
    for (const char* slot : {"onStorageDeviceArrived", "onStorageDriveArrived", "onStorageDriveRemoved",
                             "onStorageDriveMediaArrived", "onStorageDriveMediaRemoved", "onStorageDeviceRemoved",
                             "onStorageInitialScanFinished"}) {
        int found = 0;
        for (const std::string& line : log.linesContaining(std::string("StorageWatcher::") + slot))
            found += line.find("DEBUG ui.Qt - ") != std::string::npos;
        EXPECT_EQ(found, 1) << slot;
    }
}
