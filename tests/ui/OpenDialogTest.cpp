// The open dialog over a storage watcher: selection, the extra row, choosing a directory, storages leaving.
#include "ui/OpenDialog.h"

#include "support/BoxAnswerer.h"
#include "support/StubDeviceNotifier.h"
#include "support/TestSupport.h"
#include "support/TmpfsMount.h"
#include "ui/OpenDialogItemModel.h"

#include <QDialogButtonBox>
#include <QListView>
#include <QPushButton>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testsupport::TmpfsMount;
using testsupport::waitUntil;

namespace {

class OpenDialogTest : public testing::Test {
protected:
    testsupport::MountTestLock mountLock; // its cards would show in other tests' watchers
    void SetUp() override { stub->initialScanFinished(); }

    void deliver() { waitUntil([] { return false; }, 30); }

    QPushButton* openButton(OpenDialog& dialog) { return dialog.buttonBox()->button(QDialogButtonBox::Open); }

    void select(OpenDialog& dialog, int row) {
        dialog.listView()->selectionModel()->select(dialog.listView()->model()->index(row, 0),
                                                    QItemSelectionModel::ClearAndSelect);
    }

    QString rowText(OpenDialog& dialog, int row) {
        return dialog.listView()->model()->index(row, 0).data().toString();
    }

    testsupport::LogCapture log;
    testsupport::StubbedStorageWatcher watched;
    testsupport::StubDeviceNotifier* stub = watched.stub;
    StorageWatcher* watcher = watched.watcher.get();
};

} // namespace

TEST_F(OpenDialogTest, open_is_enabled_only_while_a_row_is_selected_and_the_directory_row_is_last) {
    OpenDialog dialog(nullptr, watcher);
    EXPECT_EQ(dialog.objectName(), QStringLiteral("OpenDialog"));
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Open external drive"));
    EXPECT_EQ(openButton(dialog)->text(), QStringLiteral("Open"));
    EXPECT_EQ(dialog.buttonBox()->button(QDialogButtonBox::Cancel)->text(), QStringLiteral("Cancel"));
    ASSERT_EQ(dialog.listView()->model()->rowCount(), 1);
    EXPECT_EQ(rowText(dialog, 0), QStringLiteral("Choose directory to open"));

    EXPECT_FALSE(openButton(dialog)->isEnabled());
    select(dialog, 0);
    EXPECT_TRUE(openButton(dialog)->isEnabled());
    dialog.listView()->selectionModel()->clearSelection();
    EXPECT_FALSE(openButton(dialog)->isEnabled());
}

TEST_F(OpenDialogTest, unsuitable_or_no_directory_keeps_the_dialog_open_and_only_the_first_warns) {
    QTemporaryDir plain;
    const std::pair<QString, std::vector<std::string>> cases[] = {
        {plain.path(), {"Specified directory is not suitable"}},
        {QString(), {}}, // the chooser cancelled
    };
    for (const auto& [chosen, boxes] : cases) {
        OpenDialog dialog(nullptr, watcher);
        QStringList captions;
        dialog.setDirectoryChooser([&, chosen = chosen](QWidget*, const QString& caption, const QString&) {
            captions << caption;
            return chosen;
        });
        dialog.show();
        select(dialog, 0);
        testsupport::BoxAnswerer answerer(QStringLiteral("OK"));
        openButton(dialog)->click();
        deliver();
        EXPECT_EQ(captions, QStringList{QStringLiteral("Open directory")});
        EXPECT_EQ(answerer.texts, boxes);
        EXPECT_TRUE(dialog.isVisible());
        EXPECT_FALSE(dialog.hasResult());
        try {
            dialog.result();
            ADD_FAILURE() << "no result expected";
        } catch (const std::logic_error& error) {
            EXPECT_STREQ(error.what(), "There is no result in OpenDialog");
        }
    }
}

TEST_F(OpenDialogTest, suitable_directory_is_the_result_with_the_storage_holding_it) {
    QTemporaryDir card;
    QDir(card.path()).mkpath(QStringLiteral("DCIM"));
    OpenDialog dialog(nullptr, watcher);
    dialog.setDirectoryChooser([&](QWidget*, const QString&, const QString&) { return card.path() + "/./"; });
    dialog.show();
    select(dialog, 0);
    openButton(dialog)->click();
    EXPECT_EQ(dialog.QDialog::result(), QDialog::Accepted);
    ASSERT_TRUE(dialog.hasResult());
    EXPECT_EQ(dialog.result().path, QDir(card.path()).absolutePath());
    EXPECT_EQ(dialog.result().storage.rootPath(), QStorageInfo(card.path()).rootPath());
    EXPECT_EQ(log.linesContaining("INFO ui.OpenDialog - User choosed directory on storage").size(), 1u);
}

TEST_F(OpenDialogTest, storage_row_gives_the_storage_and_its_root_and_the_last_one_removed_leaves_the_extra_row) {
    SKIP_UNLESS_TMPFS_MOUNTS();
    TmpfsMount first("reelvue-od-first");
    TmpfsMount second("reelvue-od-second");
    first.makeRecorderLayout();
    second.makeRecorderLayout();
    stub->deviceArrived(first.device());
    deliver();

    OpenDialog dialog(nullptr, watcher);
    dialog.show();
    ASSERT_EQ(dialog.listView()->model()->rowCount(), 2);
    EXPECT_EQ(rowText(dialog, 0), first.path()) << "a tmpfs has no name of its own";

    // A card arriving while the dialog is open is listed before the extra row; the selection stays.
    select(dialog, 0);
    stub->deviceArrived(second.device());
    deliver();
    ASSERT_EQ(dialog.listView()->model()->rowCount(), 3);
    EXPECT_EQ(rowText(dialog, 1), second.path());
    EXPECT_EQ(rowText(dialog, 2), QStringLiteral("Choose directory to open"));
    EXPECT_TRUE(openButton(dialog)->isEnabled());

    // Both removed: the selected row goes, "Open" is disabled, only the extra row is left.
    first.unmount();
    stub->mediaRemoved(first.device());
    stub->deviceRemoved(second.device());
    deliver();
    ASSERT_EQ(dialog.listView()->model()->rowCount(), 1);
    EXPECT_EQ(rowText(dialog, 0), QStringLiteral("Choose directory to open"));
    EXPECT_FALSE(openButton(dialog)->isEnabled());

    stub->deviceArrived(second.device());
    deliver();
    ASSERT_EQ(dialog.listView()->model()->rowCount(), 2);
    select(dialog, 0);
    openButton(dialog)->click();
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.result().path, second.path());
    EXPECT_EQ(dialog.result().storage.device(), QByteArray("reelvue-od-second"));
}

TEST(OpenDialogItemModel, storage_text_is_name_and_root_or_the_root_alone) {
    const QStorageInfo root = QStorageInfo::root();
    const QString text = OpenDialogItemModel::storageText(root);
    if (root.name().isEmpty())
        EXPECT_EQ(text, root.rootPath());
    else
        EXPECT_EQ(text, root.name() + " (" + root.rootPath() + ")");
}
