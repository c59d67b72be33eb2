// The whole player on a generated card: loading, playing, the map, pictures with EXIF, settings, language,
// drops, and the save flows of cuts, tracks and original files.
#include "ui/MainWindow.h"

#include "core/Startup.h"
#include "core/evidence/Bag.h"
#include "support/BoxAnswerer.h"
#include "support/EventWait.h"
#include "support/GeneratedMedia.h"
#include "support/RecordingFixtures.h"
#include "support/TestSupport.h"
#include "support/TmpfsMount.h"
#include "support/TreeSnapshot.h"
#include "ui/EncodingSettingsDialog.h"
#include "ui/ExifWriter.h"
#include "ui/PlaybackController.h"
#include "ui/PlaylistView.h"
#include "ui/PlotIntervalSelector.h"
#include "ui/ProgressDialog.h"
#include "ui/QPlaylistTabWidget.h"
#include "ui/TrackPlot.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QDirIterator>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QProcess>
#include <QPushButton>
#include <QSettings>
#include <QSlider>
#include <QSplitter>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QWebEngineView>

#include <exiv2/exiv2.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <numeric>

#include <fcntl.h>
#include <unistd.h>

using testsupport::waitUntil;

namespace {
constexpr int kLoadTimeoutMs = 30000;

// Degrees from EXIF's degrees, minutes and seconds rationals.
double exifDegrees(const Exiv2::ExifData& exif, const char* key) {
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    if (found == exif.end() || found->count() != 3)
        return NAN;
    return found->toFloat(0) + found->toFloat(1) / 60.0 + found->toFloat(2) / 3600.0;
}

std::string exifText(const Exiv2::ExifData& exif, const char* key) {
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    return found == exif.end() ? std::string() : found->toString();
}

class MainWindowTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        s_card = new QTemporaryDir;
        QProcess make;
        make.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        make.start(QStringLiteral(REELVUE_SOURCE_DIR "/tools/make-demo-card"), {s_card->path()});
        ASSERT_TRUE(make.waitForFinished(180000) && make.exitCode() == 0) << "the demo card could not be made";
        // The window finds its map page and translations in the run tree, as the installed program does.
        s_previousDirectory = QDir::currentPath();
        QDir::setCurrent(QStringLiteral(REELVUE_RUN_DIR));
        provideWebChannelScript(QDir(QStringLiteral(REELVUE_RUN_DIR)));
    }

    static void TearDownTestSuite() {
        QDir::setCurrent(s_previousDirectory);
        delete s_card;
        s_card = nullptr;
    }

    void SetUp() override {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_settingsDir.path());
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    }

    void TearDown() override { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    std::unique_ptr<MainWindow> openWindow() {
        auto window = std::make_unique<MainWindow>();
        MainWindow::FileChoosers choosers;
        choosers.saveFileName = [this](QWidget*, const QString&, const QString& proposal, const QString&) {
            proposals.push_back(proposal);
            return nextSavePath;
        };
        choosers.existingDirectory = [this](QWidget*, const QString&, const QString&) { return nextDirectory; };
        window->setFileChoosers(choosers);
        window->resize(1366, 768);
        window->show();
        return window;
    }

    // Loads the card and waits until the first trip plays.
    static void loadCard(MainWindow& window) {
        window.loadDirectory(cardPath());
        ASSERT_TRUE(waitUntil([&] { return window.playbackController() && window.playbackController()->currentPlayer(); },
                              kLoadTimeoutMs));
    }

    static QString cardPath() { return s_card->path(); }

    template <typename T> static T* child(MainWindow& window, const char* name) {
        T* found = window.findChild<T*>(QLatin1String(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

    static QString outputPath(const QTemporaryDir& dir, const char* name) { return dir.filePath(QLatin1String(name)); }

    // Answers the encoding dialog of a cut as a user would: the output path, re-encoding or not, Save.
    static std::unique_ptr<QTimer> answerEncodingDialog(const QString& path, bool reencode) {
        auto timer = std::make_unique<QTimer>();
        QObject::connect(timer.get(), &QTimer::timeout, [path, reencode] {
            auto* dialog = qobject_cast<EncodingSettingsDialog*>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            dialog->findChild<QLineEdit*>("filePathEdit")->setText(path);
            dialog->findChild<QCheckBox*>("forceEncodingChkBox")->setChecked(reencode);
            dialog->accept();
        });
        timer->start(20);
        return timer;
    }

    static inline QTemporaryDir* s_card = nullptr;
    static inline QString s_previousDirectory;

    testsupport::MountTestLock mountLock; // the window watches the mount table
    testsupport::LogCapture log;
    QTemporaryDir m_settingsDir;
    QTemporaryDir out;
    QString nextSavePath;
    QString nextDirectory;
    std::vector<QString> proposals;
};

QVariant evaluate(QWebEngineView& view, const QString& script) {
    auto result = std::make_shared<std::optional<QVariant>>();
    view.page()->runJavaScript(script, [result](const QVariant& value) { *result = value; });
    waitUntil([&] { return result->has_value(); }, 10000);
    return result->value_or(QVariant());
}

} // namespace

TEST_F(MainWindowTest, loading_fills_the_four_tabs_plays_the_first_trip_and_shows_its_track_on_the_map) {
    auto window = openWindow();
    loadCard(*window);

    EXPECT_EQ(window->windowTitle(), QStringLiteral("Lumicor Reelvue (%1)").arg(QDir::toNativeSeparators(cardPath())));
    for (const char* table : {"tripPlaylistTable", "parkingPlaylistTable", "eventPlaylistTable", "rawPlaylistTable"}) {
        auto* view = child<PlaylistView>(*window, table);
        ASSERT_TRUE(view && view->model()) << table;
        EXPECT_GT(view->model()->rowCount(), 1) << table; // a date row and at least one item
    }
    // The first trip of the card starts at 09:00 local time and runs six minutes.
    PlaybackController* controller = window->playbackController();
    EXPECT_EQ(controller->from().time(), QTime(9, 0));
    EXPECT_EQ(controller->from().secsTo(controller->to()), 360);

    auto* status = child<QLabel>(*window, "statusLabel");
    ASSERT_TRUE(waitUntil([&] { return !status->text().isEmpty(); }));
    const QString first = status->text();
    EXPECT_TRUE(first.startsWith(QStringLiteral("2024.06.14 09:00:"))) << first.toStdString();
    EXPECT_TRUE(waitUntil([&] { return status->text() != first; }, 3000)) << "the status time stands still";

    auto* map = child<QWebEngineView>(*window, "mapWidget");
    EXPECT_TRUE(waitUntil([&] { return evaluate(*map, QStringLiteral("reelvueMap.state.track.length")).toInt() > 10; }, 20000));

    // Choosing the second trip plays it.
    auto* trips = child<PlaylistView>(*window, "tripPlaylistTable");
    const QModelIndex secondTrip = trips->model()->index(2, 0); // date row, first trip, second trip
    QTest::mouseClick(trips->viewport(), Qt::LeftButton, {}, trips->visualRect(secondTrip).center());
    EXPECT_TRUE(waitUntil([&] { return window->playbackController() && window->playbackController()->from().time() == QTime(9, 10); }));
}

// At 1366x768 the map shows the whole track of what plays, whatever room its pane has when the item starts
// or gets afterwards, also once the vehicle has appeared on it; the marks of a parking period, all on one
// spot, are shown as one.
TEST_F(MainWindowTest, the_map_fits_the_event_and_a_single_file_and_marks_a_parking_period_once) {
    auto window = openWindow();
    loadCard(*window);
    auto* map = child<QWebEngineView>(*window, "mapWidget");
    auto* tabs = child<QPlaylistTabWidget>(*window, "playlistContainer");
    const auto giveMap = [&](QSize size) {
        for (auto [splitter, length] : {std::pair(child<QSplitter>(*window, "mainSplitter"), size.width()),
                                        std::pair(child<QSplitter>(*window, "leftContainerSplitter"), size.height())}) {
            QList<int> sizes = splitter->sizes();
            const int total = std::accumulate(sizes.begin(), sizes.end(), 0);
            const int pane = splitter->orientation() == Qt::Horizontal ? 0 : 1;
            sizes[pane] = length;
            sizes[1 - pane] = total - length - std::accumulate(sizes.begin() + 2, sizes.end(), 0);
            splitter->setSizes(sizes);
        }
    };
    const auto playFirstOf = [&](int tab, const char* table, QTime from) {
        tabs->setCurrentIndex(tab);
        auto* view = child<PlaylistView>(*window, table);
        // Return plays the current row again even when it is still selected from before.
        view->selectionModel()->setCurrentIndex(view->model()->index(1, 0), QItemSelectionModel::NoUpdate); // under the date row
        QTest::keyClick(view, Qt::Key_Return);
        ASSERT_TRUE(waitUntil([&] { return window->playbackController() && window->playbackController()->from().time() == from; }));
    };
    const auto expectWholeTrackShown = [&](const char* item) {
        EXPECT_TRUE(waitUntil([&] { return evaluate(*map, QStringLiteral("!!reelvueMap.vehicleShown()")).toBool(); }, 20000));
        waitUntil([] { return false; }, 600); // the page lays out, and the vehicle moves on
        EXPECT_TRUE(evaluate(*map, QStringLiteral("reelvueMap.map.getBounds().contains("
                                                  "reelvueMap.state.track.map(function (p) { return [p.latitude, p.longitude]; }))"))
                        .toBool())
            << item << " in a map of " << map->width() << "x" << map->height();
    };
    const std::vector<QSize> mapSizes{{380, 300}, {380, 360}, {430, 300}, {430, 360}};

    window->onActionTrackTimeStamps30s();
    for (const QSize size : mapSizes) {
        giveMap(size);
        ASSERT_NO_FATAL_FAILURE(playFirstOf(1, "parkingPlaylistTable", QTime(9, 6)));
        EXPECT_TRUE(waitUntil([&] { return evaluate(*map, QStringLiteral("reelvueMap.state.marks.length")).toInt() == 1; }, 20000))
            << evaluate(*map, QStringLiteral("reelvueMap.state.marks.length")).toInt() << " marks in the parking period";
        ASSERT_NO_FATAL_FAILURE(playFirstOf(2, "eventPlaylistTable", QTime(9, 13)));
        expectWholeTrackShown("the event");
    }
    giveMap({380, 240});
    expectWholeTrackShown("the event, its map made smaller");

    for (const QSize size : mapSizes) {
        giveMap(size);
        window->loadFile(QDir(cardPath()).filePath(QStringLiteral("Normal/FILE240614-090300F.MP4")));
        ASSERT_TRUE(waitUntil([&] { return window->playbackController() && window->playbackController()->from().time() == QTime(9, 3); },
                              kLoadTimeoutMs));
        expectWholeTrackShown("a single file");
    }
}

TEST_F(MainWindowTest, mute_silences_the_player_and_unmute_returns_to_the_slider_volume) {
    auto window = openWindow();
    loadCard(*window);
    auto* slider = child<QSlider>(*window, "volumeSlider");
    auto* muted = child<QToolButton>(*window, "volumeMutedButton");
    slider->setValue(30);
    EXPECT_DOUBLE_EQ(window->playbackController()->volume(), 0.3);
    EXPECT_TRUE(child<QToolButton>(*window, "volumeMediumButton")->isVisible());

    child<QToolButton>(*window, "volumeMediumButton")->click();
    EXPECT_DOUBLE_EQ(window->playbackController()->volume(), 0.0);
    EXPECT_TRUE(muted->isVisible());
    muted->click();
    EXPECT_DOUBLE_EQ(window->playbackController()->volume(), 0.3);
    EXPECT_FALSE(muted->isVisible());
}

TEST_F(MainWindowTest, a_saved_frame_carries_the_time_and_track_position_in_its_exif_block) {
    auto window = openWindow();
    loadCard(*window);
    PlaybackController* controller = window->playbackController();
    controller->seekTo(controller->from().addSecs(90));
    ASSERT_TRUE(waitUntil([&] { return controller->currentTime() >= controller->from().addSecs(90); }));
    controller->togglePause();
    ASSERT_TRUE(waitUntil([&] { return controller->isPaused(); }));
    waitUntil([] { return false; }, 200);
    const QDateTime shown = controller->currentTime();

    nextSavePath = outputPath(out, "frame.jpg");
    window->onSaveMainCameraFrame();
    ASSERT_TRUE(waitUntil([&] { return !log.linesContaining("Updated EXIF Header in").empty(); }));
    ASSERT_EQ(proposals.size(), 1u);
    EXPECT_TRUE(proposals[0].endsWith("/lumicor-reelvue-video-front-" + shown.toString("yyyyMMddTHHmmsszzz") + ".jpg"))
        << proposals[0].toStdString();

    auto image = Exiv2::ImageFactory::open(nextSavePath.toStdString());
    image->readMetadata();
    const Exiv2::ExifData& exif = image->exifData();
    const std::optional<TrackPosition> expected = trackPositionAt(controller->track(), shown);
    ASSERT_TRUE(expected);
    EXPECT_NEAR(exifDegrees(exif, "Exif.GPSInfo.GPSLatitude"), std::abs(expected->latitude), 1e-5);
    EXPECT_NEAR(exifDegrees(exif, "Exif.GPSInfo.GPSLongitude"), std::abs(expected->longitude), 1e-5);
    EXPECT_EQ(exifText(exif, "Exif.Photo.DateTimeOriginal"), shown.toString("yyyy:MM:dd HH:mm:ss").toStdString());
    EXPECT_EQ(QImage(nextSavePath).size(), QSize(640, 360));
}

TEST_F(MainWindowTest, first_start_shows_only_the_speed_plot_and_choices_survive_a_restart) {
    {
        auto window = openWindow();
        auto* speed = child<QAction>(*window, "actionShowSpeedPlot");
        auto* altitude = child<QAction>(*window, "actionShowAltitudePlot");
        EXPECT_TRUE(speed->isChecked());
        EXPECT_FALSE(altitude->isChecked());
        EXPECT_TRUE(window->plot(PlotType::Speed)->isVisible());
        EXPECT_FALSE(window->plot(PlotType::Altitude)->isVisible());
        EXPECT_FALSE(child<QAction>(*window, "actionShowHDOPPlot")->isVisible()) << "needs its start-up option";

        altitude->setChecked(true);
        speed->setChecked(false);
        child<QAction>(*window, "actionShowRearCamera")->setChecked(false);
        window->close();
        EXPECT_EQ(log.linesContaining("INFO ui.MainWindow - Save app state to").size(), 1u);
    }
    auto window = openWindow();
    EXPECT_FALSE(child<QAction>(*window, "actionShowSpeedPlot")->isChecked());
    EXPECT_TRUE(child<QAction>(*window, "actionShowAltitudePlot")->isChecked());
    EXPECT_TRUE(window->plot(PlotType::Altitude)->isVisible());
    EXPECT_FALSE(window->plot(PlotType::Empty)->isVisible());
    EXPECT_FALSE(child<QAction>(*window, "actionShowRearCamera")->isChecked());
    EXPECT_FALSE(child<QAction>(*window, "actionShowMainCamera")->isChecked() == false);
    EXPECT_EQ(log.linesContaining("INFO ui.MainWindow - Read app state from").size(), 2u);
}

TEST_F(MainWindowTest, switching_to_russian_translates_the_menus_and_the_chosen_language_cannot_be_chosen_again) {
    auto window = openWindow();
    auto* menuFile = child<QMenu>(*window, "menuFile");
    auto* russian = child<QAction>(*window, "actionSetRussianLanguage");
    auto* english = child<QAction>(*window, "actionSetEnglishLanguage");
    EXPECT_FALSE(english->isEnabled());
    ASSERT_EQ(menuFile->title(), QStringLiteral("&File"));

    // The language is chosen where a user finds it: View > Language.
    auto* menuView = child<QMenu>(*window, "menuView");
    auto* menuLanguage = child<QMenu>(*window, "menuLanguage");
    ASSERT_TRUE(menuView->actions().contains(menuLanguage->menuAction()));
    ASSERT_TRUE(menuLanguage->actions().contains(russian));
    russian->trigger();
    EXPECT_NE(menuFile->title(), QStringLiteral("&File"));
    EXPECT_FALSE(russian->isEnabled());
    EXPECT_TRUE(english->isEnabled());
    QMessageBox box; // Qt's own buttons follow too
    EXPECT_NE(box.addButton(QMessageBox::Cancel)->text(), QStringLiteral("Cancel"));
    EXPECT_EQ(QSettings(kOrganizationName, kApplicationName).value("locale").toString(), QStringLiteral("ru_RU"));

    english->trigger();
    EXPECT_EQ(menuFile->title(), QStringLiteral("&File"));
}

TEST_F(MainWindowTest, three_dropped_files_open_the_third_with_one_warning) {
    auto window = openWindow();
    QList<QUrl> urls;
    for (const char* name : {"a.mp4", "b.mp4", "c.mp4"}) {
        testsupport::placeVideo(out.filePath(name));
        urls.append(QUrl::fromLocalFile(out.filePath(name)));
    }
    testsupport::BoxAnswerer answerer(QStringLiteral("OK")); // a lone video without a track loads nothing
    auto* tabs = child<QPlaylistTabWidget>(*window, "playlistContainer");
    QMimeData data;
    data.setUrls(urls);
    const QPoint at = tabs->rect().center();
    QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(tabs, &enter);
    QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(tabs, &drop);

    EXPECT_TRUE(waitUntil([&] { return !log.linesContaining("ui.MainWindow - Open file " + out.filePath("c.mp4").toStdString()).empty(); }));
    EXPECT_EQ(log.linesContaining("WARN ui.QPlaylistTabWidget - Too many files droped, will use last one").size(), 1u);
    EXPECT_TRUE(log.linesContaining("Open file " + out.filePath("a.mp4").toStdString()).empty());
}

TEST_F(MainWindowTest, saves_a_cut_with_its_track_beside_the_track_alone_and_the_original_files) {
    auto window = openWindow();
    loadCard(*window);
    testsupport::BoxAnswerer answerer(QStringLiteral("OK"));

    // Cut: the selector's interval (the whole trip) into an MP4, confirmed in the encoding dialog.
    const QString cutPath = outputPath(out, "cut.mp4");
    const auto dialogAnswerer = answerEncodingDialog(cutPath, false);
    window->onCutButtonClicked();
    EXPECT_TRUE(child<QWidget>(*window, "cutButtonContainer")->isVisible());
    window->cutCurrentItem();
    ASSERT_TRUE(waitUntil([&] { return !answerer.texts.empty(); }, 60000));
    // The box names the file and offers its folder.
    EXPECT_EQ(answerer.texts.back(), "Encoding completed\n\n" + cutPath.toStdString());
    EXPECT_THAT(answerer.buttons.back(), testing::HasSubstr("Show in folder"));
    EXPECT_NEAR(testsupport::probeDuration(cutPath), 360.0, 2.0);
    EXPECT_TRUE(QFileInfo(outputPath(out, "cut.nmea")).size() > 0) << "no track beside the cut";
    EXPECT_EQ(log.linesContaining("INFO ui.MainWindow - Cut from 2024-06-14T09:00:00 to 2024-06-14T09:06:00").size(), 1u);

    // The track alone, as GPX.
    nextSavePath = outputPath(out, "track.gpx");
    window->onSaveTrack(3);
    ASSERT_TRUE(waitUntil([&] { return answerer.texts.size() == 2; }, 20000));
    EXPECT_EQ(answerer.texts.back(), "Track saving completed");
    EXPECT_TRUE(proposals.back().endsWith("/dvr-20240614T090000-20240614T090600.gpx")) << proposals.back().toStdString();
    EXPECT_GT(QFileInfo(nextSavePath).size(), 1000);

    // The original files of the six recordings: front, rear and track each.
    nextDirectory = outputPath(out, "copy");
    QDir().mkpath(nextDirectory);
    window->onSavePlaylistItem();
    ASSERT_TRUE(waitUntil([&] { return answerer.texts.size() == 3; }, 20000));
    EXPECT_EQ(answerer.texts.back(), "\u0421opying completed");
    EXPECT_EQ(QDir(nextDirectory).entryList(QDir::Files).size(), 18);
    EXPECT_TRUE(window->isEnabled());
}

// Nothing is saved into the card, a file is replaced only where the save dialog asked, and a failed save says why.
TEST_F(MainWindowTest, saves_stay_off_the_card_replace_only_confirmed_files_and_say_why_they_failed) {
    auto window = openWindow();
    loadCard(*window);
    const testsupport::TreeSnapshot card = testsupport::snapshot(cardPath());
    testsupport::BoxAnswerer answerer(QStringLiteral("OK"));
    std::vector<QString> folders{QDir(cardPath()).filePath("Normal"), QString()}; // the card, then Cancel
    MainWindow::FileChoosers choosers;
    choosers.existingDirectory = [&](QWidget*, const QString&, const QString&) {
        const QString folder = folders.front();
        folders.erase(folders.begin());
        return folder;
    };
    choosers.saveFileName = [this](QWidget*, const QString&, const QString&, const QString&) { return nextSavePath; };
    window->setFileChoosers(choosers);

    window->onSavePlaylistItem();
    ASSERT_TRUE(waitUntil([&] { return answerer.texts.size() == 1 && folders.empty(); }, 10000));
    EXPECT_NE(answerer.texts[0].find("card"), std::string::npos) << answerer.texts[0];

    nextSavePath = outputPath(out, "track.kml"); // the dialog confirmed replacing it
    testsupport::writeFile(nextSavePath, "an older track");
    window->onSaveTrack(1);
    ASSERT_TRUE(waitUntil([&] { return answerer.texts.size() == 2; }, 20000));
    EXPECT_EQ(answerer.texts[1], "Track saving completed");
    EXPECT_TRUE(testsupport::readFile(nextSavePath).contains("<kml"));

    nextSavePath = outputPath(out, "missing/track.kml");
    window->onSaveTrack(1);
    ASSERT_TRUE(waitUntil([&] { return answerer.texts.size() == 3; }, 20000));
    EXPECT_EQ(answerer.texts[2].rfind("Failed to save track\n\n", 0), 0u) << answerer.texts[2];
    EXPECT_EQ(testsupport::snapshot(cardPath()), card);
}

// Cut mode and cycle play both choose on the plots' interval selector; it stays while either needs it.
TEST_F(MainWindowTest, cut_mode_and_cycle_play_share_the_interval_selector_and_a_new_item_ends_both) {
    auto window = openWindow();
    loadCard(*window);
    PlotIntervalSelector* selector = window->intervalSelector();
    child<QAction>(*window, "actionShowSpeedPlot")->setChecked(false);
    window->onCutButtonClicked();
    EXPECT_TRUE(selector->isActive());
    EXPECT_TRUE(child<QAction>(*window, "actionShowSpeedPlot")->isChecked()) << "the selector needs a plot to lie on";
    window->onCyclePlayStart();
    window->onCyclePlayStop();
    EXPECT_TRUE(selector->isActive()) << "still cutting";
    window->onRejectCutButtonClicked();
    EXPECT_FALSE(selector->isActive());

    window->onCyclePlayStart();
    window->onCutButtonClicked();
    window->onToEndButtonClicked(); // the next trip
    ASSERT_TRUE(waitUntil([&] { return window->playbackController() && window->playbackController()->from().time() == QTime(9, 10); }));
    EXPECT_FALSE(selector->isActive());
    EXPECT_FALSE(child<QWidget>(*window, "cutButtonContainer")->isVisible());
}

// The evidence pack of an interval chosen on the plots, with a moment marked by its key while playing.
TEST_F(MainWindowTest, save_evidence_chooses_the_interval_like_a_cut_and_packs_the_marked_moment) {
    auto window = openWindow();
    loadCard(*window);
    testsupport::BoxAnswerer answerer(QStringLiteral("OK"));
    ASSERT_TRUE(waitUntil([&] { return window->playbackController()->currentTime().isValid(); }));
    QApplication::setActiveWindow(window.get()); // shortcuts reach the active window only
    QTest::keyClick(window.get(), Qt::Key_M);
    EXPECT_EQ(log.linesContaining("INFO ui.MainWindow - Marked the moment 2024-06-14T09:0").size(), 1u);

    child<QToolButton>(*window, "evidenceButton")->click();
    ASSERT_TRUE(child<QWidget>(*window, "cutButtonContainer")->isVisible()) << "no interval to choose";
    // The first minute of the trip, which holds the moment marked just after it started.
    window->intervalSelector()->setInterval(QDateTime(QDate(2024, 6, 14), QTime(9, 0, 0)),
                                            QDateTime(QDate(2024, 6, 14), QTime(9, 1, 0)));
    nextDirectory = out.path();
    child<QToolButton>(*window, "confirmCutButton")->click();
    ASSERT_TRUE(waitUntil([&] { return !answerer.texts.empty(); }, 60000));
    const QString folder = out.filePath("evidence-20240614T090000-20240614T090100");
    EXPECT_EQ(answerer.texts.back(), "The evidence pack is in " + folder.toStdString());
    EXPECT_TRUE(bagit::verify(folder).empty());
    for (const char* made : {"data/overview.mp4", "data/report.pdf", "data/frames/2024-06-14_09-00-00.000_front.jpg"})
        EXPECT_TRUE(QFileInfo::exists(folder + "/" + made)) << made;
    QFile info(folder + "/bag-info.txt");
    ASSERT_TRUE(info.open(QIODevice::ReadOnly));
    EXPECT_TRUE(info.readAll().contains("Marked-Moment: 2024-06-14T09:0"));
    EXPECT_TRUE(window->isEnabled());
    EXPECT_FALSE(child<QWidget>(*window, "cutButtonContainer")->isVisible());
}

// Every job runs alone behind its own progress window, whose Cancel works although the window is disabled.
TEST_F(MainWindowTest, cancel_in_the_window_stops_a_load_and_a_reencoded_cut_which_runs_as_one_job) {
    auto window = openWindow();
    const auto runningDialog = [&window] {
        ProgressDialog* shown = nullptr;
        for (ProgressDialog* dialog : window->findChildren<ProgressDialog*>())
            if (dialog->isVisible())
                shown = dialog;
        return shown;
    };
    const auto clickCancel = [](ProgressDialog* dialog) {
        QTest::mouseClick(dialog->findChild<QPushButton*>(QStringLiteral("cancelButton")), Qt::LeftButton);
    };

    // A write lease on one track holds the loader inside open() until it is let go: a card that answers slowly,
    // so the load is still running when Cancel is clicked, however fast the machine.
    QDirIterator tracks(cardPath(), {QStringLiteral("*.NMEA"), QStringLiteral("*.nmea")}, QDir::Files,
                        QDirIterator::Subdirectories);
    ASSERT_TRUE(tracks.hasNext());
    std::signal(SIGIO, SIG_IGN); // the kernel's word to the holder that someone waits
    const int leased = ::open(QFile::encodeName(tracks.next()).constData(), O_RDWR);
    ASSERT_EQ(::fcntl(leased, F_SETLEASE, F_WRLCK), 0);
    window->loadDirectory(cardPath());
    ASSERT_NE(runningDialog(), nullptr);
    EXPECT_FALSE(window->isEnabled());
    clickCancel(runningDialog());
    testsupport::runEventsFor(300);
    ::fcntl(leased, F_SETLEASE, F_UNLCK);
    ::close(leased);
    ASSERT_TRUE(waitUntil([&] { return !log.linesContaining("Loading " + cardPath().toStdString() + " canceled").empty(); }));
    EXPECT_EQ(window->playbackController(), nullptr);
    EXPECT_TRUE(window->isEnabled());

    loadCard(*window);
    testsupport::BoxAnswerer answerer(QStringLiteral("OK"));
    const QString cutPath = outputPath(out, "cut.mp4");
    const auto dialogAnswerer = answerEncodingDialog(cutPath, true);
    window->onCutButtonClicked();
    window->cutCurrentItem();
    // The track copy comes first; past its share the video is being encoded, under the same window.
    ASSERT_TRUE(waitUntil([&] { return runningDialog() && runningDialog()->value() > 5; }, 30000));
    EXPECT_EQ(runningDialog()->windowTitle(), QStringLiteral("Encoding status"));
    nextSavePath = outputPath(out, "track.gpx");
    window->onSaveTrack(3);
    EXPECT_TRUE(proposals.empty()) << "a second job was offered while the cut runs";
    clickCancel(runningDialog());
    ASSERT_TRUE(waitUntil([&] { return window->isEnabled(); }, 20000));
    EXPECT_FALSE(QFileInfo::exists(cutPath));
    EXPECT_FALSE(QFileInfo::exists(outputPath(out, "cut.nmea"))) << "the track of a canceled cut stays";
    EXPECT_TRUE(answerer.texts.empty());
    EXPECT_EQ(log.linesContaining("The background operation was canceled").size(), 1u);
}

// After Stop the controller's time is the item's end, but the picture on screen is where playback stopped.
TEST_F(MainWindowTest, a_window_saved_after_stop_carries_the_moment_of_the_picture_in_its_exif_block) {
    auto window = openWindow();
    loadCard(*window);
    auto* trips = child<PlaylistView>(*window, "tripPlaylistTable");
    QTest::mouseClick(trips->viewport(), Qt::LeftButton, {}, trips->visualRect(trips->model()->index(2, 0)).center());
    ASSERT_TRUE(waitUntil([&] {
        PlaybackController* controller = window->playbackController();
        return controller && controller->from().time() == QTime(9, 10) && controller->currentPlayer();
    }));
    PlaybackController* controller = window->playbackController();
    controller->seekTo(controller->from().addSecs(264));
    ASSERT_TRUE(waitUntil([&] { return controller->currentTime() >= controller->from().addSecs(264); }));
    const QDateTime shown = controller->currentTime();
    window->onStopButtonClicked();
    ASSERT_EQ(controller->currentTime(), controller->to());

    nextSavePath = outputPath(out, "window.jpg");
    window->onSaveWindow();
    ASSERT_TRUE(waitUntil([&] { return !log.linesContaining("Updated EXIF Header in").empty(); }));
    auto image = Exiv2::ImageFactory::open(nextSavePath.toStdString());
    image->readMetadata();
    EXPECT_EQ(exifText(image->exifData(), "Exif.Photo.DateTimeOriginal"), shown.toString("yyyy:MM:dd HH:mm:ss").toStdString());
    const std::optional<TrackPosition> expected = trackPositionAt(controller->track(), shown);
    ASSERT_TRUE(expected);
    EXPECT_NEAR(exifDegrees(image->exifData(), "Exif.GPSInfo.GPSLatitude"), std::abs(expected->latitude), 1e-5);
}

// Pictures of the window for a person to look at (REELVUE_SCREENSHOT_DIR=/some/dir): both screen sizes, cut mode
// with the selector, and Russian.
TEST_F(MainWindowTest, screenshots_for_review) {
    const QString directory = qEnvironmentVariable("REELVUE_SCREENSHOT_DIR");
    if (directory.isEmpty())
        GTEST_SKIP() << "set REELVUE_SCREENSHOT_DIR to take them";
    auto window = openWindow();
    loadCard(*window);
    child<QAction>(*window, "actionShowAltitudePlot")->setChecked(true);
    for (const QSize size : {QSize(1366, 768), QSize(1920, 1080)}) {
        window->resize(size);
        waitUntil([] { return false; }, 2500);
        window->grab().save(QStringLiteral("%1/window-%2.png").arg(directory).arg(size.width()));
    }
    window->resize(1366, 768);
    window->onCutButtonClicked();
    waitUntil([] { return false; }, 500);
    window->grab().save(directory + "/window-cut.png");
    // The encoding dialog with the overlay on and a folder that is not there, so its reason shows.
    auto grabEncodingDialog = [&](const QString& name) {
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            auto* dialog = qobject_cast<EncodingSettingsDialog*>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            timer.stop();
            dialog->findChild<QCheckBox*>("burnInOverlayCheckBox")->setChecked(true);
            dialog->findChild<QLineEdit*>("filePathEdit")->setText(out.filePath("Videos/dvr-cut.mp4"));
            dialog->adjustSize();
            QApplication::processEvents();
            dialog->grab().save(QStringLiteral("%1/%2.png").arg(directory, name));
            dialog->reject();
        });
        timer.start(50);
        window->cutCurrentItem();
    };
    grabEncodingDialog("encoding-dialog");
    window->onRejectCutButtonClicked();
    window->onFullscreenButtonClicked();
    waitUntil([] { return false; }, 1000);
    if (QWidget* fullscreen = QApplication::activeWindow())
        fullscreen->grab().save(directory + "/window-fullscreen.png");
    window->onFullscreenButtonClicked();
    child<QAction>(*window, "actionSetRussianLanguage")->trigger();
    waitUntil([] { return false; }, 1000);
    window->grab().save(directory + "/window-ru.png");
    grabEncodingDialog("encoding-dialog-ru");
}
