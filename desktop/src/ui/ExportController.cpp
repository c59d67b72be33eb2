#include "ui/ExportController.h"

#include "ui_MainWindow.h"

#include "av/VideoWidget.h"
#include "core/ExportPaths.h"
#include "core/FileCopier.h"
#include "core/TrackExtracter.h"
#include "core/encoding/Coder.h"
#include "core/encoding/CutEncoder.h"
#include "core/encoding/CutNaming.h"
#include "core/encoding/Remuxer.h"
#include "core/evidence/OverlayCut.h"
#include "core/evidence/OverviewVideoOverlay.h"
#include "logging/Logging.h"
#include "ui/EncodingSettingsDialog.h"
#include "ui/PlaybackController.h"
#include "ui/PlaybackSession.h"
#include "ui/PlotIntervalSelector.h"
#include "ui/PlotPanel.h"

#include <QDesktopServices>
#include <QDir>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QSet>
#include <QStandardPaths>
#include <QToolButton>
#include <QUrl>

#include <algorithm>
#include <memory>
#include <type_traits>
#include <utility>

namespace {
constexpr const char* kLogger = "ui.MainWindow"; // its lines are the window's
// Shares of a cut's progress bar: the track copy is small beside the video.
constexpr int kTrackCopyWeight = 1;
constexpr int kVideoWeight = 19;

bool hasRearCamera(const Playlist::RawItems& items) {
    return std::any_of(items.begin(), items.end(), [](const Playlist::RawItemPtr& item) { return item->rearVideo.has_value(); });
}

bool hasTrack(const Playlist::RawItems& items) {
    return std::any_of(items.begin(), items.end(), [](const Playlist::RawItemPtr& item) { return item->track.has_value(); });
}

// What a job said of its end, copied on the worker thread as it ends: the runner deletes the job before the
// window hears of it.
struct JobOutcome {
    QString failureReason;
    bool failedOnTarget = false;
    std::int64_t askedMs = 0;
    std::int64_t writtenMs = 0;
    bool short_ = false;
};

template <class Job> std::shared_ptr<JobOutcome> watchOutcome(Job* job) {
    auto outcome = std::make_shared<JobOutcome>();
    QObject::connect(job, &Job::done, job, [job, outcome](bool) {
        outcome->failureReason = job->failureReason();
        outcome->failedOnTarget = job->failedOnTarget();
        if constexpr (std::is_base_of_v<BaseEncoder, Job>) {
            if (const auto* cut = dynamic_cast<const CutEncoder*>(job)) {
                outcome->short_ = cut->wroteLessThanAsked();
                outcome->askedMs = cut->askedMs();
                outcome->writtenMs = cut->writtenMs();
            }
        }
    }, Qt::DirectConnection);
    return outcome;
}
} // namespace

ExportController::ExportController(Ui::MainWindow& ui, PlaybackSession* session, PlotPanel* plots, JobRunner* jobs,
                                   const FileChoosers& choosers, QWidget* window)
    : QObject(window), m_ui(ui), m_session(session), m_plots(plots), m_jobs(jobs), m_choosers(choosers),
      m_window(window), m_saveMenu(new QMenu(window)) {
    // The save button offers the item's original files and its track in every format.
    m_saveMenu->setObjectName(QStringLiteral("saveMenu"));
    QAction* saveVideo = m_saveMenu->addAction(QString());
    saveVideo->setObjectName(QStringLiteral("actionSaveVideo"));
    connect(saveVideo, &QAction::triggered, this, &ExportController::saveVideo);
    QAction* saveVideoAndTrack = m_saveMenu->addAction(QString());
    saveVideoAndTrack->setObjectName(QStringLiteral("actionSaveVideoAndTrack"));
    connect(saveVideoAndTrack, &QAction::triggered, this, &ExportController::saveItem);
    QMenu* trackMenu = m_saveMenu->addMenu(QString());
    trackMenu->setObjectName(QStringLiteral("saveTrackMenu"));
    for (int format : {TrackExtracter::Nmea, TrackExtracter::Kml, TrackExtracter::Csv, TrackExtracter::Gpx,
                       TrackExtracter::Plt, TrackExtracter::Gpx11}) {
        QAction* action = trackMenu->addAction(format == TrackExtracter::Gpx11
                                                   ? QStringLiteral("GPX 1.1")
                                                   : TrackExtracter::extension(TrackExtracter::TrackType(format)).toUpper());
        action->setObjectName(QStringLiteral("actionSaveTrack%1").arg(format));
        connect(action, &QAction::triggered, this, [this, format] { saveTrack(format); });
    }
    ui.saveButton->setMenu(m_saveMenu);
    ui.saveItemButton->setEnabled(false);
    ui.cutButtonContainer->hide();
    ui.cutOnButton->hide();

    connect(ui.saveItemButton, &QToolButton::clicked, this, &ExportController::saveItem);
    connect(ui.cutButton, &QToolButton::clicked, this, &ExportController::enterCutMode);
    connect(ui.cutOnButton, &QToolButton::clicked, this, &ExportController::leaveCutMode);
    connect(ui.confirmCutButton, &QToolButton::clicked, this, &ExportController::cut);
    connect(ui.rejectCutButton, &QToolButton::clicked, this, &ExportController::leaveCutMode);

}

exporttarget::Permissions ExportController::permissions(bool overwrite) const {
    return exporttarget::Permissions{m_cardFolder, overwrite};
}

void ExportController::retranslate() {
    const QList<QAction*> actions = m_saveMenu->actions();
    actions[0]->setText(tr("Save video"));
    actions[1]->setText(tr("Save video and track"));
    actions[2]->setText(tr("Save track"));
}

void ExportController::onControllerChanged(PlaybackController* controller) {
    if (!controller && m_cutMode)
        setCutMode(false);
}

void ExportController::setLoaded(const QString& path) {
    m_cardFolder = QFileInfo(path).isDir() ? path : QString();
}

bool ExportController::hasController(const char* method) const {
    if (!m_session->controller()) {
        LOG_WARN(kLogger, "MainWindow::{}() has been called without m_playbackController", method);
        return false;
    }
    return true;
}

// Where saved videos go first: the last folder used, else the user's movies; a folder that is not there
// (no ~/Videos on a fresh system, a removed disk) gives way to the next, and in the end to home.
QString ExportController::saveDirectory() const {
    return exportpaths::firstExistingFolder(
        {m_lastSaveDirectory, QStandardPaths::writableLocation(QStandardPaths::MoviesLocation)});
}

TimeInterval ExportController::saveInterval() const {
    PlaybackController* controller = m_session->controller();
    if (m_cutMode || controller->isCyclePlayActive()) {
        const auto [from, to] = m_plots->intervalSelector()->interval();
        return TimeInterval{from, to};
    }
    return TimeInterval{controller->from(), controller->to()};
}

bool ExportController::wasCanceled(const JobRunner::Endings& endings) {
    if (std::find(endings.begin(), endings.end(), JobRunner::Ending::Canceled) == endings.end())
        return false;
    LOG_INFO(kLogger, "The background operation was canceled");
    return true;
}

void ExportController::saveItem() { copyItemFiles(true); }

void ExportController::saveVideo() { copyItemFiles(false); }

void ExportController::copyItemFiles(bool withTracks) {
    if (!hasController("onSavePlaylistItem") || m_jobs->isBusy())
        return;
    const Playlist::RawItems items = exportpaths::itemsOverlapping(m_session->controller()->items(), saveInterval());
    for (;;) {
        const QString directory = m_choosers.existingDirectory(m_window, tr("Save to"), saveDirectory());
        if (directory.isEmpty())
            return;
        m_lastSaveDirectory = directory;
        if (const exporttarget::Refusal refusal = exporttarget::folderRefusal(directory, permissions(false))) {
            LOG_WARN(kLogger, "{}", refusal.text.toStdString());
            QMessageBox::warning(m_window, tr("Saving"),
                                 tr("Copies cannot go onto the card they come from.\n\nChoose another folder."));
            continue;
        }
        FileCopierCommandVector commands = exportpaths::copyCommands(items, directory);
        if (!withTracks) {
            QSet<QString> trackFiles;
            for (const Playlist::RawItemPtr& item : items)
                if (item->track && !item->hasEmbeddedTrack())
                    trackFiles.insert(item->track->file.absoluteFilePath());
            commands.erase(std::remove_if(commands.begin(), commands.end(),
                                          [&trackFiles](const auto& command) { return trackFiles.contains(command.first); }),
                           commands.end());
        }
        const QStringList existing = exportpaths::existingDestinations(commands);
        if (!existing.isEmpty()) {
            // Recordings are evidence: an existing file is never replaced.
            QMessageBox::warning(m_window, tr("Saving"),
                                 tr("The folder already holds files of the same names:\n%1\n\nChoose another folder.")
                                     .arg(existing.mid(0, 5).join(QLatin1Char('\n'))));
            continue;
        }
        LOG_INFO(kLogger, "Copy {} files to {}", commands.size(), directory.toStdString());
        auto* copier = new FileCopier;
        copier->setPermissions(permissions(false));
        const auto outcome = watchOutcome(copier);
        m_jobs->run(tr("Copying status"), {JobRunner::step(copier, [copier, commands] { copier->copy(commands); })},
                    [this, outcome](const JobRunner::Endings& endings) {
                        if (wasCanceled(endings))
                            return;
                        m_doneDetail = outcome->failureReason;
                        onCopyingDone(endings.front() == JobRunner::Ending::Done);
                    });
        return;
    }
}

void ExportController::saveTrack(int format) {
    PlaybackController* controller = m_session->controller();
    if (!controller) {
        LOG_WARN(kLogger, "MainWindow::onSaveTrack() called when there is no m_playbackController");
        return;
    }
    if (controller->items().empty()) {
        LOG_WARN(kLogger, "MainWindow::onSaveTrack() called with no raw items");
        return;
    }
    if (m_jobs->isBusy())
        return;
    const auto type = static_cast<TrackExtracter::TrackType>(format);
    const TimeInterval interval = saveInterval();
    const QString name = exportpaths::proposedFileName(interval, TrackExtracter::extension(type));
    const QString start = QStandardPaths::writableLocation(QStandardPaths::HomeLocation);
    const QString path = m_choosers.saveFileName(m_window, tr("Save to"), QDir(start).filePath(name), QString());
    if (path.isEmpty())
        return;
    auto* job = new TrackExtracter(controller->items(), path, type, interval);
    job->setPermissions(permissions(QFileInfo::exists(path))); // the save dialog asked before replacing
    const auto outcome = watchOutcome(job);
    m_jobs->run(tr("Encoding status"), {JobRunner::step(job, [job] { job->encode(); })},
                [this, outcome](const JobRunner::Endings& endings) {
                    if (wasCanceled(endings))
                        return;
                    m_doneDetail = outcome->failureReason;
                    onTrackSaveDone(endings.front() == JobRunner::Ending::Done);
                });
}

void ExportController::enterCutMode() {
    if (m_session->controller())
        setCutMode(true);
}

void ExportController::leaveCutMode() { setCutMode(false); }

void ExportController::chooseIntervalForEvidence() {
    if (!m_session->controller())
        return;
    setCutMode(true);
    m_cutForEvidence = true;
}

void ExportController::rememberSaveDirectory(const QString& directory) { m_lastSaveDirectory = directory; }

void ExportController::setCutMode(bool on) {
    m_cutMode = on;
    if (!on)
        m_cutForEvidence = false;
    m_ui.cutButtonContainer->setVisible(on);
    m_ui.cutButton->setVisible(!on);
    m_ui.cutOnButton->setVisible(on);
    m_ui.cutOnButton->setChecked(true);
    emit cutModeChanged(on);
    // The selector lives on the plots: without a visible plot there is nothing to choose on.
    if (on)
        m_plots->ensureOneShown();
}

void ExportController::cut() {
    if (!hasController("cutCurrentItem") || m_jobs->isBusy() || m_session->controller()->items().empty())
        return;
    const TimeInterval interval = saveInterval();
    if (m_cutForEvidence) {
        emit evidenceIntervalConfirmed(interval); // its flow leaves cut mode
        return;
    }
    LOG_INFO(kLogger, "Cut from {} to {}", interval.from.toString(Qt::ISODate).toStdString(),
             interval.to.toString(Qt::ISODate).toStdString());
    const Playlist::RawItems items = exportpaths::itemsOverlapping(m_session->controller()->items(), interval);
    const QString proposal = QDir(saveDirectory()).filePath(exportpaths::proposedFileName(interval, QStringLiteral("mp4")));
    EncodingSettingsDialog dialog(m_window, proposal, hasRearCamera(items));
    dialog.setCardFolder(m_cardFolder);
    dialog.restoreChoices();
    if (dialog.exec() != QDialog::Accepted)
        return;
    dialog.storeChoices();
    EncodingSettings settings = dialog.settings();
    m_lastSaveDirectory = QFileInfo(settings.filePath).absolutePath();
    const int cameras = hasRearCamera(items) ? 2 : 1;
    if (settings.camera < 0 || settings.camera >= cameras) {
        LOG_ERROR(kLogger, "Camera No. can't be {}, number of cameras is {}", settings.camera, cameras);
        return;
    }
    settings.rotation = encoding::rotationFromOrientation(m_session->output(settings.camera)->orientation());
    // The encoding dialog takes a typed path as well as a chosen one: a file there is replaced only when the
    // user says so here.
    if (QFileInfo::exists(settings.filePath) &&
        QMessageBox::question(m_window, tr("Encoding"),
                              tr("%1 already exists.\nDo you want to replace it?")
                                  .arg(QDir::toNativeSeparators(settings.filePath))) != QMessageBox::Yes)
        return;
    setCutMode(false);
    startCut(items, interval, settings);
}

// The track goes beside the video first: it is small, and the cut is worth little without it. Both run as one
// job: one progress window, one Cancel; a failed track copy does not stop the video.
void ExportController::startCut(const Playlist::RawItems& items, const TimeInterval& interval,
                                const EncodingSettings& settings) {
    QString trackPath = exportpaths::trackPathBesideVideo(settings.filePath);
    std::vector<JobRunner::Step> steps;
    if (!hasTrack(items) || QFileInfo::exists(trackPath)) {
        LOG_INFO(kLogger, "No track copy beside {}: {}", settings.filePath.toStdString(),
                 hasTrack(items) ? "a file of that name exists" : "the recordings have no track");
        trackPath.clear();
    } else {
        auto* trackCopy = new TrackExtracter(items, trackPath, TrackExtracter::Nmea, interval);
        trackCopy->setPermissions(permissions(false));
        steps.push_back(JobRunner::step(trackCopy, [trackCopy] { trackCopy->encode(); }, kTrackCopyWeight, true));
    }
    BaseEncoder* encoder = nullptr;
    if (settings.burnInOverlay)
        encoder = overlaycut::make(items, interval, settings, evidence::localeSpeedUnit(),
                                   settings.camera == 1 ? tr("Rear") : tr("Front"))
                      .release();
    else if (settings.forceReencoding)
        encoder = new Coder(items, interval, settings);
    else
        encoder = new Remuxer(items, interval, settings);
    encoder->setPermissions(permissions(QFileInfo::exists(settings.filePath))); // confirmed in cut()
    const auto outcome = watchOutcome(encoder);
    steps.push_back(JobRunner::step(encoder, [encoder] { encoder->encode(); }, kVideoWeight));
    m_jobs->run(tr("Encoding status"), std::move(steps),
                [this, trackPath, outcome, file = settings.filePath](const JobRunner::Endings& endings) {
        const bool copiedTrack = !trackPath.isEmpty() && endings.front() == JobRunner::Ending::Done;
        if (!trackPath.isEmpty())
            LOG_DEBUG(kLogger, "onTrackCopyDone ok: {}", endings.front() == JobRunner::Ending::Done);
        const bool videoDone = endings.back() == JobRunner::Ending::Done;
        // A track copied for a video that was then not written would be a stray file.
        if (copiedTrack && !videoDone && QFile::remove(trackPath))
            LOG_INFO(kLogger, "Removed the track copy {} of the unfinished cut", trackPath.toStdString());
        if (wasCanceled(endings))
            return;
        if (!trackPath.isEmpty() && endings.front() == JobRunner::Ending::Failed)
            QMessageBox::warning(m_window, tr("Encoding"), tr("Failed to copy track"));
        m_doneDetail = outcome->failureReason;
        m_failedOnTarget = outcome->failedOnTarget;
        if (videoDone && outcome->short_)
            m_doneDetail = tr("Only %1 s of the %2 s asked were written: the recordings end early or could not be read.")
                               .arg(outcome->writtenMs / 1000.0, 0, 'f', 1)
                               .arg(outcome->askedMs / 1000.0, 0, 'f', 1);
        m_doneFile = file;
        onEncodeDone(videoDone);
    });
}

namespace {
// The box's text, with the job's own words under it when it gave some.
QString withDetail(const QString& text, const QString& detail) {
    return detail.isEmpty() ? text : text + QStringLiteral("\n\n") + detail;
}
} // namespace

void ExportController::onCopyingDone(bool ok) {
    LOG_DEBUG(kLogger, "onCopyingDone ok: {}", ok);
    const QString detail = std::exchange(m_doneDetail, QString());
    if (ok)
        QMessageBox::information(m_window, tr("Saving"), tr("Сopying completed"));
    else
        QMessageBox::warning(m_window, tr("Saving"), withDetail(tr("Failed to copy"), detail));
}

void ExportController::onEncodeDone(bool ok) {
    LOG_DEBUG(kLogger, "onEncodeDone ok: {}", ok);
    const QString detail = std::exchange(m_doneDetail, QString());
    const bool onTarget = std::exchange(m_failedOnTarget, false);
    const QString file = std::exchange(m_doneFile, QString());
    if (ok)
        showEncoded(file, detail);
    else if (onTarget) // a full disk or a missing folder: no container or option would help
        QMessageBox::warning(m_window, tr("Encoding"), withDetail(tr("Failed to encode."), detail));
    else
        QMessageBox::warning(m_window, tr("Encoding"),
                             withDetail(tr("Failed to encode.\n\nNOTE:\nTry choose another container type or choose "
                                           "\"Only video\" option.\nIf all else fails choose \"Force reencoding\"."),
                                        detail));
}

// "Encoding completed" with the file's path, and a button that opens its folder.
void ExportController::showEncoded(const QString& file, const QString& detail) {
    const QString text = file.isEmpty() ? tr("Encoding completed")
                                        : tr("Encoding completed") + QStringLiteral("\n\n") + QDir::toNativeSeparators(file);
    QMessageBox box(QMessageBox::Information, tr("Encoding"), withDetail(text, detail), QMessageBox::Ok, m_window);
    QPushButton* show = file.isEmpty() ? nullptr : box.addButton(tr("Show in folder"), QMessageBox::ActionRole);
    if (show)
        show->setObjectName(QStringLiteral("showInFolderButton"));
    box.exec();
    if (show && box.clickedButton() == show)
        QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(file).absolutePath()));
}

void ExportController::onTrackSaveDone(bool ok) {
    LOG_DEBUG(kLogger, "onTrackSaveDone ok: {}", ok);
    const QString detail = std::exchange(m_doneDetail, QString());
    if (ok)
        QMessageBox::information(m_window, tr("Track saving"), tr("Track saving completed"));
    else
        QMessageBox::warning(m_window, tr("Track saving"), withDetail(tr("Failed to save track"), detail));
}
