// The background loader on a real card: signal order, progress, models on the GUI thread, failure, cancel.
#include "core/ExportPaths.h"
#include "core/PlaylistLoader.h"
#include "core/TrackLoader.h"

#include "support/EmbeddedGps.h"
#include "support/RecordingFixtures.h"
#include "support/TestSupport.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QThread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>

using testsupport::placeVideo;

namespace {

// Runs a loader on a worker thread of its own, as the main window does, and records what reaches the
// GUI thread.
class LoaderRun : public QObject {
public:
    LoaderRun() {
        m_loader.moveToThread(&m_thread);
        m_thread.start();
        connect(&m_loader, &PlaylistLoader::loadStarted, this, [this] { events.push_back("loadStarted"); });
        connect(&m_loader, &PlaylistLoader::progress, this, [this](int percent) { progress.push_back(percent); });
        connect(&m_loader, &PlaylistLoader::canceled, this, [this] { finish("canceled"); });
        connect(&m_loader, &PlaylistLoader::failed, this, [this](const QString& message) {
            error = message.toStdString();
            finish("failed");
        });
        connect(&m_loader, &PlaylistLoader::loaded, this,
                [this](Playlist* p, PlaylistProcessedItemModel* t, PlaylistProcessedItemModel* pk,
                       PlaylistRawItemModel* e, PlaylistRawItemModel* r) {
                    playlist.reset(p);
                    trips.reset(t);
                    parking.reset(pk);
                    eventModel.reset(e);
                    raw.reset(r);
                    finish("loaded");
                });
    }
    ~LoaderRun() override {
        m_thread.quit();
        m_thread.wait();
    }

    void start(const char* slot, const QString& path) {
        QMetaObject::invokeMethod(&m_loader, slot, Qt::QueuedConnection, Q_ARG(QString, path));
        QElapsedTimer timer;
        timer.start();
        while (!m_finished && timer.elapsed() < 60000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        ASSERT_TRUE(m_finished) << "the load did not end";
    }
    PlaylistLoader& loader() { return m_loader; }

    std::vector<std::string> events;
    std::vector<int> progress;
    std::string error;
    std::unique_ptr<Playlist> playlist;
    std::unique_ptr<PlaylistProcessedItemModel> trips, parking;
    std::unique_ptr<PlaylistRawItemModel> eventModel, raw;

private:
    void finish(const char* event) {
        events.push_back(event);
        m_finished = true;
    }

    QThread m_thread;
    PlaylistLoader m_loader;
    bool m_finished = false;
};

class PlaylistLoaderTest : public testing::Test {
protected:
    QString path(const QString& relative) const { return m_dir.filePath(relative); }
    void makeCard() {
        placeVideo(path("Normal/2024_0307_140000_F.MP4"), 2);
        placeVideo(path("Normal/2024_0307_140000_R.MP4"), 2);
        placeVideo(path("Normal/2024_0307_140010_F.MP4"), 2);
        placeVideo(path("Parking/2024_0307_140100_F.MP4"), 2);
        placeVideo(path("Event/2024_0307_140200_F.MP4"), 1);
        placeVideo(path("Normal/2024_0308_090000_F.MP4"), 1);
    }

    QTemporaryDir m_dir;
};

} // namespace

TEST_F(PlaylistLoaderTest, loads_a_card_with_signals_in_order_and_growing_progress) {
    makeCard();
    LoaderRun run;
    run.start("loadDirectory", m_dir.path());
    EXPECT_EQ(run.events, (std::vector<std::string>{"loadStarted", "loaded"}));
    ASSERT_FALSE(run.progress.empty());
    EXPECT_EQ(run.progress.front(), 0);
    EXPECT_EQ(run.progress.back(), 100);
    EXPECT_TRUE(std::is_sorted(run.progress.begin(), run.progress.end()));
    EXPECT_EQ(std::adjacent_find(run.progress.begin(), run.progress.end()), run.progress.end());

    ASSERT_TRUE(run.playlist);
    EXPECT_EQ(run.playlist->rawItems().size(), 5u);
    // A trip, the parking period, and after the night's gap another trip; the event file does not split.
    const auto trips = run.playlist->processedItemsOfKind(Playlist::Trip);
    ASSERT_EQ(trips.size(), 2u);
    EXPECT_EQ(run.playlist->processedItemsOfKind(Playlist::ParkingPeriod).size(), 1u);

    QThread* guiThread = QCoreApplication::instance()->thread();
    for (QObject* model : {static_cast<QObject*>(run.trips.get()), static_cast<QObject*>(run.parking.get()),
                           static_cast<QObject*>(run.eventModel.get()), static_cast<QObject*>(run.raw.get())})
        EXPECT_EQ(model->thread(), guiThread);
    EXPECT_EQ(run.trips->itemCount(), 2);
    EXPECT_EQ(run.trips->rowCount(), 4); // two days, each under its date row
    EXPECT_EQ(run.parking->itemCount(), 1);
    EXPECT_EQ(run.eventModel->itemCount(), 1);
    EXPECT_EQ(run.raw->itemCount(), 5);
    EXPECT_EQ(run.raw->rowCount(), 7);
}

TEST_F(PlaylistLoaderTest, loads_a_single_file) {
    makeCard();
    LoaderRun run;
    run.start("loadFile", path("Normal/2024_0307_140000_F.MP4"));
    ASSERT_TRUE(run.playlist);
    ASSERT_EQ(run.playlist->rawItems().size(), 1u);
    EXPECT_TRUE(run.playlist->rawItems()[0]->rearVideo);
    EXPECT_EQ(run.trips->itemCount(), 1);
}

TEST_F(PlaylistLoaderTest, reports_failure_of_discovery) {
    LoaderRun run;
    run.start("loadDirectory", m_dir.path());
    EXPECT_EQ(run.events, (std::vector<std::string>{"loadStarted", "failed"}));
    EXPECT_EQ(run.error, "Nothing found");
    EXPECT_FALSE(run.playlist);
}

TEST_F(PlaylistLoaderTest, cancel_during_the_load_ends_it_with_canceled) {
    for (int i = 0; i < 200; ++i)
        placeVideo(path(QStringLiteral("Normal/2024_0307_14%1_F.MP4").arg(i + 1000, 4, 10, QLatin1Char('0'))));
    LoaderRun run;
    // Cancelled from the loader's own thread as soon as probing is under way, so the moment is certain.
    QObject::connect(&run.loader(), &PlaylistLoader::progress, &run.loader(),
                     [&run](int percent) {
                         if (percent >= 10)
                             run.loader().cancel();
                     },
                     Qt::DirectConnection);
    run.start("loadDirectory", m_dir.path());
    EXPECT_EQ(run.events, (std::vector<std::string>{"loadStarted", "canceled"}));
    EXPECT_FALSE(run.playlist);
    EXPECT_LT(run.progress.back(), 100);
}

TEST_F(PlaylistLoaderTest, tracks_split_a_morning_into_trip_parking_and_trip) {
    // Ten one-minute recordings: two minutes of driving, six standing, two driving again.
    const QDateTime start(QDate(2024, 3, 7), QTime(14, 0), Qt::LocalTime);
    double north = 0.0;
    for (int minute = 0; minute < 10; ++minute) {
        std::vector<testsupport::Fix> fixes;
        for (int second = minute * 60; second < minute * 60 + 60; ++second) {
            const bool driving = second < 120 || second >= 480;
            if (driving)
                north += 14.0;
            fixes.push_back({start.addSecs(second), 50.0 + north * 9e-6, 14.0, driving ? 50.0 : 0.0, true});
        }
        const QString base = start.addSecs(minute * 60).toString(QStringLiteral("'Normal/FILE'yyMMdd-HHmmss'F'"));
        placeVideo(path(base + ".MP4"), 60);
        testsupport::writeTrack(path(base + ".NMEA"), fixes);
    }
    LoaderRun run;
    run.start("loadDirectory", m_dir.path());
    ASSERT_TRUE(run.playlist) << run.error;
    const auto& processed = run.playlist->processedItems();
    ASSERT_EQ(processed.size(), 3u);
    EXPECT_EQ(processed[0]->kind, Playlist::Trip);
    EXPECT_EQ(processed[0]->from, start);
    EXPECT_EQ(processed[1]->kind, Playlist::ParkingPeriod);
    EXPECT_EQ(processed[1]->from, start.addSecs(119)); // the last moving fix before the stop
    EXPECT_EQ(processed[2]->kind, Playlist::Trip);
    EXPECT_EQ(processed[2]->from, start.addSecs(479)); // the last standing fix before leaving
    EXPECT_EQ(processed[2]->to, start.addSecs(600));
    // Recordings cut by a change belong to both sides.
    EXPECT_EQ(processed[0]->items.back(), processed[1]->items.front());
    EXPECT_EQ(processed[1]->items.back(), processed[2]->items.front());
    // The trip's figures come from its tracks: 2 minutes at 14 m/s.
    EXPECT_EQ(run.trips->data(run.trips->index(1, PlaylistItemModel::DistanceColumn)).toString(), "1.7 km");
    EXPECT_EQ(run.trips->data(run.trips->index(1, PlaylistItemModel::TopSpeedColumn)).toString(), "50 km/h");
}

TEST_F(PlaylistLoaderTest, a_card_of_videos_with_embedded_tracks_and_no_track_files_plays_with_its_trips) {
    namespace gps = testsupport::gps;
    // Four undated names: the times come from the tracks inside, each of another family. The third recording
    // started three seconds before its first fix; the fourth came twenty minutes later, a trip of its own.
    const QDateTime utc(QDate(2024, 6, 14), QTime(6, 0), Qt::UTC);
    const QDateTime starts[] = {utc, utc.addSecs(10), utc.addSecs(20), utc.addSecs(1230)};
    const std::function<bool(const QString&, const std::vector<gps::Fix>&)> stores[] = {
        [](auto& p, auto& f) { return gps::addFreeGpsListed(p, gps::FreeGpsLayout::Plain, f); },
        [](auto& p, auto& f) { return gps::addGpmfTrack(p, f, false); }, gps::addCammTrack, gps::addNmeaTextTrack};
    for (int i = 0; i < 4; ++i) {
        std::vector<gps::Fix> fixes = gps::drive(starts[i], 10);
        if (i == 2)
            fixes[0].valid = fixes[1].valid = fixes[2].valid = false;
        const QString video = path(QStringLiteral("Normal/MOVI%1.MP4").arg(i));
        placeVideo(video, 10);
        ASSERT_TRUE(stores[i](video, fixes));
    }
    LoaderRun run;
    run.start("loadDirectory", m_dir.path());
    ASSERT_TRUE(run.playlist) << run.error;
    const Playlist::RawItems& items = run.playlist->rawItems();
    ASSERT_EQ(items.size(), 4u);
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(items[i]->from, starts[i].toLocalTime());
        EXPECT_EQ(items[i]->timeSource, i == 2 ? Playlist::TimeSource::ByTrackAndOffset : Playlist::TimeSource::ByTrack);
        ASSERT_TRUE(items[i]->track);
        EXPECT_EQ(items[i]->track->file.filePath(), items[i]->mainVideo.filePath()); // the video is the track's file
    }
    EXPECT_EQ(run.playlist->processedItemsOfKind(Playlist::Trip).size(), 2u);
    // A copy takes each video once, though it is its own track's file.
    EXPECT_EQ(exportpaths::copyCommands(items, path("copies")).size(), 4u);
}

TEST(PlaylistLoaderSettings, uses_the_fixed_analyzer_settings) {
    const TrackAnalyzer::Settings settings = PlaylistLoader::analyzerSettings();
    EXPECT_EQ(settings.initialState, TrackAnalyzer::Trip);
    EXPECT_EQ(settings.minSatellites, 0u);
    EXPECT_EQ(settings.speedThreshold, 5u);
    EXPECT_EQ(settings.tripStartTime, 5);
    EXPECT_EQ(settings.parkingStartTime, 300);
    EXPECT_EQ(settings.parkingRadius, 50u);
    EXPECT_EQ(settings.stopRadius, 100u);
    EXPECT_EQ(PlaylistLoader::kGapThresholdSeconds, 300);
}
