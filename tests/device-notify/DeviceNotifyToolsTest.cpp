// The Linux notifier feeding a real storage watcher: real tmpfs mounts are announced and removed.
#include "core/StorageWatcher.h"
#include "device-notify/DeviceNotifyTools.h"
#include "logging/Logging.h"
#include "support/TestSupport.h"
#include "support/TmpfsMount.h"

#include <QElapsedTimer>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <iostream>

using testsupport::TmpfsMount;
using testsupport::waitUntil;

namespace {

class DeviceNotifyToolsTest : public testing::Test {
protected:
    testsupport::MountTestLock mountLock;

    void SetUp() override {
        logging::setLevel(logging::DEBUG);
        const QString why = TmpfsMount::whyNotPossible();
        if (!why.isEmpty())
            GTEST_SKIP() << why.toStdString();
    }

    // A watcher over the real notifier, past its initial scan.
    std::unique_ptr<StorageWatcher> startedWatcher() {
        auto watcher = std::make_unique<StorageWatcher>(std::make_unique<DeviceNotifyTools>());
        watcher->start();
        EXPECT_TRUE(waitUntil([&] { return watcher->isInitialScanFinished(); }, 5000));
        return watcher;
    }

    static bool hasRoot(const std::vector<QStorageInfo>& storages, const QString& root) {
        return std::any_of(storages.begin(), storages.end(),
                           [&](const QStorageInfo& storage) { return storage.rootPath() == root; });
    }

    testsupport::LogCapture log;
};

} // namespace

TEST(DeviceNotifyTools, recognises_the_makers_recorder_by_vendor_or_model) {
    EXPECT_TRUE(DeviceNotifyTools::isLumicorRecorder("LUMICOR", "Card Reader"));
    EXPECT_TRUE(DeviceNotifyTools::isLumicorRecorder("Generic", "Lumicor DVR-X1"));
    EXPECT_FALSE(DeviceNotifyTools::isLumicorRecorder("Generic", "STORAGE DEVICE"));
}

TEST_F(DeviceNotifyToolsTest, card_mounted_later_is_announced_within_a_second_and_removed_on_unmount) {
    auto watcher = startedWatcher();
    QSignalSpy arrived(watcher.get(), &StorageWatcher::supportedStoragesArrived);
    QSignalSpy supportedRemoved(watcher.get(), &StorageWatcher::supportedStorageRemoved);

    TmpfsMount card("reelvue-dn-card");
    QElapsedTimer sinceMount;
    sinceMount.start();
    ASSERT_TRUE(card.isMounted()) << card.error().toStdString();
    card.makeRecorderLayout(); // the watcher looks at it on this thread's event loop, so after this
    ASSERT_TRUE(waitUntil([&] { return arrived.count() > 0; }, 1000)) << "not announced within a second";
    const qint64 latencyMs = sinceMount.elapsed();
    std::cout << "[ figures  ] announced " << latencyMs << " ms after the mount" << std::endl;
    RecordProperty("announceLatencyMs", static_cast<int>(latencyMs));
    const auto storages = arrived.at(0).at(0).value<std::vector<QStorageInfo>>();
    ASSERT_EQ(storages.size(), 1u);
    EXPECT_EQ(storages[0].rootPath(), card.path());
    EXPECT_EQ(storages[0].device(), QByteArray("reelvue-dn-card"));

    card.unmount();
    ASSERT_TRUE(waitUntil([&] { return supportedRemoved.count() > 0; }, 1000));
    EXPECT_EQ(supportedRemoved.at(0).at(0).value<QStorageInfo>().rootPath(), card.path());
    EXPECT_FALSE(hasRoot(watcher->supportedStorages(), card.path()));
}

TEST_F(DeviceNotifyToolsTest, mount_without_a_recorder_layout_is_never_announced) {
    auto watcher = startedWatcher();
    QSignalSpy arrived(watcher.get(), &StorageWatcher::supportedStoragesArrived);
    TmpfsMount plain("reelvue-dn-plain");
    ASSERT_TRUE(plain.isMounted());
    QDir(plain.path()).mkpath(QStringLiteral("Documents"));
    const std::string looked = "Device: " + plain.path().toStdString() + " isValid: true isSupported: false";
    EXPECT_TRUE(waitUntil([&] { return !log.linesContaining(looked).empty(); }, 1000));
    waitUntil([] { return false; }, 300); // anything late would show now
    EXPECT_EQ(arrived.count(), 0);
    EXPECT_TRUE(watcher->supportedStorages().empty() || !hasRoot(watcher->supportedStorages(), plain.path()));
}

TEST_F(DeviceNotifyToolsTest, card_mounted_before_start_is_offered_by_the_initial_scan) {
    TmpfsMount card("reelvue-dn-early");
    card.makeRecorderLayout();
    auto watcher = std::make_unique<StorageWatcher>(std::make_unique<DeviceNotifyTools>());
    QSignalSpy arrived(watcher.get(), &StorageWatcher::supportedStoragesArrived);
    watcher->start();
    ASSERT_TRUE(waitUntil([&] { return arrived.count() > 0; }, 5000));
    EXPECT_TRUE(watcher->isInitialScanFinished());
    EXPECT_TRUE(hasRoot(arrived.at(0).at(0).value<std::vector<QStorageInfo>>(), card.path()));
    watcher.reset(); // stops the notifier's thread
    EXPECT_TRUE(log.linesContaining("ERROR").empty());
}
