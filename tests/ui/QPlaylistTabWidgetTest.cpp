// Dropping files and folders on the playlist tabs.
#include "ui/PlaylistView.h"
#include "ui/QPlaylistTabWidget.h"

#include "support/RecordingFixtures.h"
#include "support/TestSupport.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QUrl>

#include <gtest/gtest.h>

#include <memory>

namespace {

constexpr const char* kTooMany = "WARN ui.QPlaylistTabWidget - Too many files droped, will use last one";

struct DropOutcome {
    bool enterAccepted;
    bool dropAccepted;
};

// Enters and drops as the window system does.
DropOutcome drop(QWidget& target, const QMimeData& data) {
    QDragEnterEvent enter(QPoint(20, 40), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QApplication::sendEvent(&target, &enter);
    QDropEvent dropEvent(QPointF(20, 40), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    dropEvent.ignore();
    QApplication::sendEvent(&target, &dropEvent);
    return {enter.isAccepted(), dropEvent.isAccepted()};
}

std::unique_ptr<QMimeData> urls(const QStringList& paths) {
    auto data = std::make_unique<QMimeData>();
    QList<QUrl> list;
    for (const QString& path : paths)
        list << (path.contains(QLatin1String("://")) ? QUrl(path) : QUrl::fromLocalFile(path));
    data->setUrls(list);
    return data;
}

} // namespace

TEST(QPlaylistTabWidget, of_several_dropped_files_opens_the_last_with_one_warning) {
    QTemporaryDir dir;
    const QStringList files{dir.filePath("a.MP4"), dir.filePath("b.MP4"), dir.filePath("c.MP4")};
    for (const QString& file : files)
        testsupport::writeFile(file, "x");
    QPlaylistTabWidget tabs;
    QSignalSpy dropped(&tabs, &QPlaylistTabWidget::dropToPlaylist);
    testsupport::LogCapture log;

    const DropOutcome outcome = drop(tabs, *urls(files));

    EXPECT_TRUE(outcome.enterAccepted);
    EXPECT_TRUE(outcome.dropAccepted);
    ASSERT_EQ(dropped.count(), 1);
    EXPECT_EQ(dropped.at(0).at(0).toString(), files[2]);
    EXPECT_EQ(log.linesContaining(kTooMany).size(), 1u);
    EXPECT_EQ(log.linesContaining("WARN").size(), 1u);
}

TEST(QPlaylistTabWidget, opens_a_dropped_directory) {
    QTemporaryDir dir;
    QPlaylistTabWidget tabs;
    QSignalSpy dropped(&tabs, &QPlaylistTabWidget::dropToPlaylist);
    testsupport::LogCapture log;

    drop(tabs, *urls({dir.path()}));

    ASSERT_EQ(dropped.count(), 1);
    EXPECT_EQ(dropped.at(0).at(0).toString(), dir.path());
    EXPECT_TRUE(log.linesContaining("WARN").empty());
}

TEST(QPlaylistTabWidget, ignores_a_drop_without_an_existing_local_file) {
    QTemporaryDir dir;
    QPlaylistTabWidget tabs;
    QSignalSpy dropped(&tabs, &QPlaylistTabWidget::dropToPlaylist);
    testsupport::LogCapture log;

    const DropOutcome missing = drop(tabs, *urls({dir.filePath("gone.MP4")}));
    EXPECT_FALSE(missing.dropAccepted);
    EXPECT_EQ(log.linesContaining("WARN ui.QPlaylistTabWidget - Dropped file " + dir.filePath("gone.MP4").toStdString() +
                                  " does not exist")
                  .size(),
              1u);

    const DropOutcome remote = drop(tabs, *urls({"https://example.org/video.mp4"}));
    EXPECT_FALSE(remote.dropAccepted);
    EXPECT_EQ(log.linesContaining("is not a local file").size(), 1u);

    EXPECT_EQ(dropped.count(), 0);
}

TEST(QPlaylistTabWidget, rejects_a_drag_without_urls) {
    QPlaylistTabWidget tabs;
    QSignalSpy dropped(&tabs, &QPlaylistTabWidget::dropToPlaylist);
    QMimeData text;
    text.setText("/some/path");

    const DropOutcome outcome = drop(tabs, text);

    EXPECT_FALSE(outcome.enterAccepted);
    EXPECT_FALSE(outcome.dropAccepted);
    EXPECT_EQ(dropped.count(), 0);
}

TEST(QPlaylistTabWidget, its_playlist_tables_leave_drops_to_it) {
    QPlaylistTabWidget tabs;
    auto* view = new PlaylistView;
    tabs.addTab(view, "FILES");
    EXPECT_TRUE(tabs.acceptDrops());
    EXPECT_FALSE(view->acceptDrops());
    EXPECT_FALSE(view->viewport()->acceptDrops());
}
