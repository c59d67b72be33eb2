// The main window's removable-storage flow over the real notifier: open at once, choose, removal.
#include "ui/MainWindow.h"

#include "core/StorageWatcher.h"
#include "logging/Logging.h"
#include "support/BoxAnswerer.h"
#include "support/TestSupport.h"
#include "support/TmpfsMount.h"
#include "ui/OpenDialog.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QListView>
#include <QPushButton>

#include <gtest/gtest.h>

using testsupport::TmpfsMount;
using testsupport::waitUntil;

namespace {

class MainWindowStorageTest : public testing::Test {
protected:
    void SetUp() override {
        const QString why = TmpfsMount::whyNotPossible();
        if (!why.isEmpty())
            GTEST_SKIP() << why.toStdString();
        window = std::make_unique<MainWindow>();
        window->show();
        ASSERT_TRUE(waitUntil([&] { return window->storageWatcher()->isInitialScanFinished(); }));
        ASSERT_TRUE(window->storageWatcher()->supportedStorages().empty()) << "a card is already in this machine";
        openDevice = window->findChild<QAction*>(QStringLiteral("actionOpenDevice"));
        ASSERT_NE(openDevice, nullptr);
    }

    bool openedOnce(const QString& path) {
        return log.linesContaining("INFO ui.MainWindow - Open directory " + path.toStdString()).size() == 1;
    }

    testsupport::MountTestLock mountLock;
    testsupport::LogCapture log;
    std::unique_ptr<MainWindow> window;
    QAction* openDevice = nullptr;
};

} // namespace

TEST_F(MainWindowStorageTest, single_card_opens_at_once_and_its_removal_restores_the_title_and_tells_the_user) {
    EXPECT_FALSE(openDevice->isEnabled());
    testsupport::BoxAnswerer answerer(QStringLiteral("OK")); // the empty card loads nothing and says so
    TmpfsMount card("reelvue-mw-card");
    card.makeRecorderLayout();
    ASSERT_TRUE(waitUntil([&] { return openedOnce(card.path()); }, 2000));
    EXPECT_TRUE(openDevice->isEnabled());
    EXPECT_EQ(log.linesContaining("Found only one good external storage " + card.path().toStdString() + ", open it").size(), 1u);
    ASSERT_TRUE(waitUntil([&] { return answerer.texts.size() == 1; }, 5000));

    card.unmount();
    ASSERT_TRUE(waitUntil([&] { return answerer.texts.size() == 2; }, 2000));
    waitUntil([] { return false; }, 100); // a second box would show now
    ASSERT_EQ(answerer.texts.size(), 2u);
    EXPECT_NE(answerer.texts[1].find("was removed"), std::string::npos);
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Lumicor Reelvue"));
    EXPECT_FALSE(openDevice->isEnabled());
}

TEST_F(MainWindowStorageTest, open_external_drive_with_two_cards_asks_in_the_open_dialog) {
    testsupport::BoxAnswerer answerer(QStringLiteral("OK")); // empty cards load nothing and say so
    TmpfsMount first("reelvue-mw-first");
    first.makeRecorderLayout();
    ASSERT_TRUE(waitUntil([&] { return openedOnce(first.path()) && answerer.texts.size() == 1; }, 5000));
    TmpfsMount second("reelvue-mw-second");
    second.makeRecorderLayout();
    ASSERT_TRUE(waitUntil([&] { return openedOnce(second.path()) && answerer.texts.size() == 2; }, 5000));

    // The user picks the first card in the dialog.
    int dialogsSeen = 0;
    QTimer chooser;
    QObject::connect(&chooser, &QTimer::timeout, [&] {
        auto* dialog = qobject_cast<OpenDialog*>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible())
            return;
        ++dialogsSeen;
        EXPECT_EQ(dialog->listView()->model()->rowCount(), 3);
        dialog->listView()->selectionModel()->select(dialog->listView()->model()->index(0, 0),
                                                    QItemSelectionModel::ClearAndSelect);
        dialog->buttonBox()->button(QDialogButtonBox::Open)->click();
    });
    chooser.start(10);
    openDevice->trigger();
    EXPECT_EQ(dialogsSeen, 1);
    EXPECT_TRUE(waitUntil([&] { return log.linesContaining("Open directory " + first.path().toStdString()).size() == 2; }, 2000));
}
