// The progress window of background operations, alone and in the window's update flow.
#include "ui/AppUpdater.h"
#include "ui/MainWindow.h"
#include "ui/ProgressDialog.h"
#include "support/BoxAnswerer.h"
#include "support/TestSupport.h"
#include "support/TmpfsMount.h"

#include <QApplication>
#include <QPointer>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

TEST(ProgressDialog, estimates_remaining_time_once_progress_is_known) {
    ProgressDialog dialog(QStringLiteral("Copying status"));
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Copying status"));
    EXPECT_EQ(dialog.remainingTimeText(), QStringLiteral("Calculating remaining time..."));
    ASSERT_NE(dialog.findChild<QProgressBar*>(QStringLiteral("progressBar")), nullptr);
    QTest::qWait(600);
    dialog.setProgress(50);
    EXPECT_EQ(dialog.findChild<QProgressBar*>(QStringLiteral("progressBar"))->value(), 50);
    // Half done after about 0.6 s: about 0.6 s remain.
    EXPECT_EQ(dialog.remainingTimeText(), QStringLiteral("Remaining time: 00:00:00"));
    dialog.setProgress(150);
    EXPECT_EQ(dialog.value(), 100);
}

TEST(ProgressDialog, cancel_button_and_escape_emit_canceled) {
    ProgressDialog dialog(QStringLiteral("Encoding status"));
    QSignalSpy canceled(&dialog, &ProgressDialog::canceled);
    dialog.show();
    dialog.findChild<QPushButton*>(QStringLiteral("cancelButton"))->click();
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_EQ(canceled.count(), 2);
    EXPECT_TRUE(dialog.isVisible()); // the owner closes it when the operation has ended
}

TEST(MainWindowUpdate, download_shows_updating_status_until_finished_then_the_message) {
    testsupport::MountTestLock mountLock; // the window watches for cards; none may come from other tests
    MainWindow window;
    window.show();
    AppUpdater& updater = AppUpdater::instance();
    emit updater.started();
    QPointer<ProgressDialog> dialog = window.findChild<ProgressDialog*>(QStringLiteral("ProgressDialog"));
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Updating status"));
    EXPECT_FALSE(window.isEnabled());
    emit updater.progress(40);
    EXPECT_EQ(dialog->value(), 40);

    testsupport::BoxAnswerer answerer(QStringLiteral("OK"));
    emit updater.finished(QStringLiteral("Failed to download updated application"));
    EXPECT_EQ(answerer.texts, std::vector<std::string>{"Failed to download updated application"});
    EXPECT_TRUE(window.isEnabled());
    EXPECT_TRUE(testsupport::waitUntil([&] { return !dialog || !dialog->isVisible(); }));
}
