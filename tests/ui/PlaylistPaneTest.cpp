// The playlist pane over a real card: the first item plays at once, stepping stays in its table, an empty
// folder and undated videos are reported, and no second load starts while one runs.
#include "ui/PlaylistPane.h"

#include "core/PlaylistItemModel.h"
#include "support/BoxAnswerer.h"
#include "support/RecordingFixtures.h"
#include "support/TestSupport.h"
#include "ui/JobRunner.h"
#include "ui/PlaylistView.h"
#include "ui/QPlaylistTabWidget.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testsupport::waitUntil;

namespace {

struct PlaylistPaneTest : testing::Test {
    PlaylistPaneTest() {
        for (const char* name : {"trips", "parking", "events", "files"}) {
            views.push_back(new PlaylistView);
            tabs->addTab(views.back(), QLatin1String(name));
        }
        pane = new PlaylistPane(tabs, views, &jobs, choosers, &window);
    }

    testsupport::LogCapture log;
    QTemporaryDir card;
    QWidget window;
    QPlaylistTabWidget* tabs = new QPlaylistTabWidget(&window);
    std::vector<PlaylistView*> views;
    JobRunner jobs{&window};
    FileChoosers choosers;
    PlaylistPane* pane = nullptr;
};

} // namespace

TEST_F(PlaylistPaneTest, the_first_item_of_the_first_filled_table_plays_and_steps_stay_in_that_table) {
    testsupport::placeVideo(card.filePath("Normal/2024_0307_140000_F.MP4"), 2);
    testsupport::placeVideo(card.filePath("Normal/2024_0307_140010_F.MP4"), 2);
    testsupport::placeVideo(card.filePath("Event/2024_0307_140200_F.MP4"), 1);
    QSignalSpy chosen(pane, &PlaylistPane::itemChosen);
    QSignalSpy path(pane, &PlaylistPane::loadedPathChanged);
    pane->loadDirectory(card.path());
    ASSERT_TRUE(waitUntil([&] { return chosen.count() == 1; }, 10000));
    EXPECT_EQ(path.last().at(0).toString(), card.path());

    const int tab = tabs->currentIndex();
    auto* model = static_cast<PlaylistItemModel*>(views[tab]->model());
    for (int earlier = 0; earlier < tab; ++earlier)
        EXPECT_EQ(static_cast<PlaylistItemModel*>(views[earlier]->model())->itemCount(), 0) << earlier;
    for (int step = 1; step < model->itemCount(); ++step)
        EXPECT_TRUE(pane->step(1));
    EXPECT_FALSE(pane->step(1)) << "past the last item of the table";
    EXPECT_EQ(chosen.count(), model->itemCount());

    QSignalSpy closed(pane, &PlaylistPane::closed);
    pane->clear();
    EXPECT_EQ(closed.count(), 1);
    EXPECT_EQ(path.last().at(0).toString(), QString());
    EXPECT_FALSE(pane->step(0));
}

TEST_F(PlaylistPaneTest, an_empty_folder_is_reported_and_no_second_load_starts_meanwhile) {
    testsupport::BoxAnswerer answerer(QStringLiteral("OK"));
    pane->loadDirectory(card.path());
    pane->loadFile(card.filePath("other.mp4"));
    EXPECT_EQ(log.linesContaining("WARN ui.MainWindow - Can't open " + card.filePath("other.mp4").toStdString() +
                                  " while another operation runs").size(), 1u);
    ASSERT_TRUE(waitUntil([&] { return answerer.texts.size() == 1; }));
    EXPECT_EQ(answerer.titles[0], "Failed to load");
    EXPECT_THAT(answerer.texts[0], testing::StartsWith("In the path specified there are no video files"));
    EXPECT_FALSE(pane->isLoaded());

    // A video whose name gives no time and whose file was last written in 1970 (a clock never set): the box
    // says why it cannot be used.
    ASSERT_TRUE(QFile::copy(testsupport::tinyVideo(1), card.filePath("clip.mp4")));
    {
        QFile clip(card.filePath("clip.mp4"));
        ASSERT_TRUE(clip.open(QIODevice::ReadWrite));
        ASSERT_TRUE(clip.setFileTime(QDateTime::fromSecsSinceEpoch(60), QFileDevice::FileModificationTime));
    }
    pane->loadFile(card.filePath("clip.mp4"));
    ASSERT_TRUE(waitUntil([&] { return answerer.texts.size() == 2; }, 10000));
    EXPECT_THAT(answerer.texts[1], testing::StartsWith("None of the videos found could be dated"));
    EXPECT_FALSE(pane->isLoaded());

    // One written lately opens, timed by its file.
    testsupport::placeVideo(card.filePath("holiday.mp4"));
    pane->loadFile(card.filePath("holiday.mp4"));
    ASSERT_TRUE(waitUntil([&] { return pane->isLoaded(); }, 10000));
    EXPECT_EQ(answerer.texts.size(), 2u);
}
