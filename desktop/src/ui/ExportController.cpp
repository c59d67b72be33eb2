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
#include "core/evidence/EvidencePack.h"
#include "logging/Logging.h"
#include "ui/EncodingSettingsDialog.h"
#include "ui/EvidenceDrawing.h"
#include "ui/Icons.h"
#include "ui/PlaybackController.h"
#include "ui/PlaybackSession.h"
#include "ui/PlotIntervalSelector.h"
#include "ui/PlotPanel.h"

#include <QBuffer>
#include <QDir>
#include <QMenu>
#include <QMessageBox>
#include <QSet>
#include <QStandardPaths>
#include <QToolButton>
#include <QToolTip>

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

// "evidence-20240614T090130-20240614T090330", with "-2", "-3"... when a folder of that name is there already.
QString evidenceFolder(const QString& directory, const TimeInterval& interval) {
    const QString format = QStringLiteral("yyyyMMddTHHmmss");
    const QString name =
        QStringLiteral("evidence-%1-%2").arg(interval.from.toString(format), interval.to.toString(format));
    QString folder = QDir(directory).filePath(name);
    for (int n = 2; QFileInfo::exists(folder); ++n)
        folder = QDir(directory).filePath(QStringLiteral("%1-%2").arg(name).arg(n));
    return folder;
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
        if constexpr (std::is_base_of_v<CutEncoder, Job>) {
            outcome->short_ = job->wroteLessThanAsked();
            outcome->askedMs = job->askedMs();
            outcome->writtenMs = job->writtenMs();
        }
    }, Qt::DirectConnection);
    return outcome;
}
} // namespace

ExportController::ExportController(Ui::MainWindow& ui, PlaybackSession* session, PlotPanel* plots, JobRunner* jobs,
                                   const FileChoosers& choosers, QWidget* window)
    : QObject(window), m_ui(ui), m_session(session), m_plots(plots), m_jobs(jobs), m_choosers(choosers),
      m_window(window), m_saveMenu(new QMenu(window)), m_evidenceButton(new QToolButton(window)),
      m_evidenceAction(new QAction(window)), m_markAction(new QAction(window)) {
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

    // The evidence pack: a tool button beside the cut, and in the File menu with the key that marks a moment.
    m_evidenceButton->setObjectName(QStringLiteral("evidenceButton"));
    m_evidenceButton->setAutoRaise(true);
    m_evidenceButton->setIcon(reelvueIcon(QStringLiteral("save-item")));
    m_evidenceButton->setIconSize(QSize(22, 22));
    ui.videoToolbarLayout->insertWidget(ui.videoToolbarLayout->indexOf(ui.cutOnButton) + 1, m_evidenceButton);
    m_evidenceAction->setObjectName(QStringLiteral("actionSaveEvidence"));
    m_markAction->setObjectName(QStringLiteral("actionMarkMoment"));
    m_markAction->setShortcut(QKeySequence(Qt::Key_M));
    m_markAction->setShortcutContext(Qt::WindowShortcut);
    QAction* beforeQuit = ui.menuFile->actions().value(ui.menuFile->actions().indexOf(ui.actionQuit) - 1, ui.actionQuit);
    ui.menuFile->insertActions(beforeQuit, {m_evidenceAction, m_markAction});
    m_evidenceAction->setEnabled(false);
    m_markAction->setEnabled(false);
    connect(m_evidenceButton, &QToolButton::clicked, this, &ExportController::saveEvidence);
    connect(m_evidenceAction, &QAction::triggered, this, &ExportController::saveEvidence);
    connect(m_markAction, &QAction::triggered, this, &ExportController::markMoment);
}

exporttarget::Permissions ExportController::permissions(bool overwrite) const {
    return exporttarget::Permissions{m_cardFolder, overwrite};
}

void ExportController::retranslate() {
    const QList<QAction*> actions = m_saveMenu->actions();
    actions[0]->setText(tr("Save video"));
    actions[1]->setText(tr("Save video and track"));
    actions[2]->setText(tr("Save track"));
    m_evidenceButton->setToolTip(tr("Save evidence"));
    m_evidenceButton->setText(tr("Save evidence"));
    m_evidenceAction->setText(tr("Save evidence"));
    m_markAction->setText(tr("Mark moment"));
}

void ExportController::onControllerChanged(PlaybackController* controller) {
    if (!controller && m_cutMode)
        setCutMode(false);
    m_marks.clear(); // marks belong to the item they were made on
    m_evidenceAction->setEnabled(controller != nullptr);
    m_markAction->setEnabled(controller != nullptr);
}

void ExportController::setLoaded(const QString& path, const Playlist::RawItems& recordings) {
    m_loadedPath = path;
    m_cardFolder = QFileInfo(path).isDir() ? path : QString();
    m_recordings = recordings;
}

bool ExportController::hasController(const char* method) const {
    if (!m_session->controller()) {
        LOG_WARN(kLogger, "MainWindow::{}() has been called without m_playbackController", method);
        return false;
    }
    return true;
}

// Where saved videos go first: the last folder used, else the user's movies.
QString ExportController::saveDirectory() const {
    return m_lastSaveDirectory.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::MoviesLocation)
                                         : m_lastSaveDirectory;
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
        startEvidence(interval);
        return;
    }
    LOG_INFO(kLogger, "Cut from {} to {}", interval.from.toString(Qt::ISODate).toStdString(),
             interval.to.toString(Qt::ISODate).toStdString());
    const Playlist::RawItems items = exportpaths::itemsOverlapping(m_session->controller()->items(), interval);
    const QString proposal = QDir(saveDirectory()).filePath(exportpaths::proposedFileName(interval, QStringLiteral("mp4")));
    EncodingSettingsDialog dialog(m_window, proposal, hasRearCamera(items));
    if (dialog.exec() != QDialog::Accepted)
        return;
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
    CutEncoder* encoder = settings.forceReencoding ? static_cast<CutEncoder*>(new Coder(items, interval, settings))
                                                   : new Remuxer(items, interval, settings);
    encoder->setPermissions(permissions(QFileInfo::exists(settings.filePath))); // confirmed in cut()
    const auto outcome = watchOutcome(encoder);
    steps.push_back(JobRunner::step(encoder, [encoder] { encoder->encode(); }, kVideoWeight));
    m_jobs->run(tr("Encoding status"), std::move(steps), [this, trackPath, outcome](const JobRunner::Endings& endings) {
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
        onEncodeDone(videoDone);
    });
}

namespace {
// The box's text, with the job's own words under it when it gave some.
QString withDetail(const QString& text, const QString& detail) {
    return detail.isEmpty() ? text : text + QStringLiteral("\n\n") + detail;
}
} // namespace

void ExportController::saveEvidence() {
    if (!hasController("saveEvidence") || m_jobs->isBusy() || m_session->controller()->items().empty())
        return;
    if (!m_cutMode && !m_session->controller()->isCyclePlayActive()) {
        // No interval chosen yet: the selector comes up as for a cut, and Confirm makes the pack.
        setCutMode(true);
        m_cutForEvidence = true;
        return;
    }
    startEvidence(saveInterval());
}

void ExportController::markMoment() {
    PlaybackController* controller = m_session->controller();
    if (!controller || !controller->currentTime().isValid())
        return;
    const QDateTime moment = controller->currentTime();
    m_marks.push_back(moment);
    LOG_INFO(kLogger, "Marked the moment {}", moment.toString(Qt::ISODate).toStdString());
    QToolTip::showText(m_evidenceButton->mapToGlobal(QPoint(0, m_evidenceButton->height())),
                       tr("Moment marked: %1").arg(moment.toString(QStringLiteral("HH:mm:ss"))), m_evidenceButton);
}

void ExportController::startEvidence(const TimeInterval& interval) {
    setCutMode(false);
    LOG_INFO(kLogger, "Evidence pack from {} to {}", interval.from.toString(Qt::ISODate).toStdString(),
             interval.to.toString(Qt::ISODate).toStdString());
    QString folder;
    for (;;) {
        const QString directory = m_choosers.existingDirectory(m_window, tr("Save evidence to"), saveDirectory());
        if (directory.isEmpty())
            return;
        m_lastSaveDirectory = directory;
        folder = evidenceFolder(directory, interval);
        const QString refused = EvidencePack::refusal(folder, m_loadedPath);
        if (refused.isEmpty())
            break;
        QMessageBox::warning(m_window, tr("Save evidence"), refused);
    }
    EvidenceRequest request;
    request.items = m_recordings.empty() ? m_session->controller()->items() : m_recordings;
    request.interval = interval;
    request.folder = folder;
    request.cardPath = m_loadedPath;
    request.marks = m_marks;
    setEvidenceDrawing(request);
    // The map as the user sees it, for the report; without a map on screen the report draws the track itself.
    if (m_ui.mapWidget->isVisible()) {
        QBuffer png(&request.mapPicture);
        png.open(QIODevice::WriteOnly);
        m_ui.mapWidget->grab().save(&png, "PNG");
    }
    auto* pack = new EvidencePack(request);
    // The runner may delete the job before it reports the end: the failure is taken as the job ends, on its
    // thread; the queued end report that follows carries it over to this one.
    auto failure = std::make_shared<QString>();
    connect(pack, &EvidencePack::done, [pack, failure](bool ok) {
        if (!ok)
            *failure = pack->failureText();
    });
    m_jobs->run(tr("Saving evidence"), {JobRunner::step(pack, [pack] { pack->encode(); })},
                [this, folder, failure](const JobRunner::Endings& endings) {
                    if (!wasCanceled(endings))
                        onEvidenceDone(endings.front() == JobRunner::Ending::Done, folder, *failure);
                });
}

void ExportController::onEvidenceDone(bool ok, const QString& folder, const QString& failure) {
    LOG_DEBUG(kLogger, "onEvidenceDone ok: {}", ok);
    if (ok)
        QMessageBox::information(m_window, tr("Save evidence"), tr("The evidence pack is in %1").arg(folder));
    else
        QMessageBox::warning(m_window, tr("Save evidence"), tr("The evidence pack was not made.\n\n%1").arg(failure));
}

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
    if (ok)
        QMessageBox::information(m_window, tr("Encoding"), withDetail(tr("Encoding completed"), detail));
    else if (onTarget) // a full disk or a missing folder: no container or option would help
        QMessageBox::warning(m_window, tr("Encoding"), withDetail(tr("Failed to encode."), detail));
    else
        QMessageBox::warning(m_window, tr("Encoding"),
                             withDetail(tr("Failed to encode.\n\nNOTE:\nTry choose another container type or choose "
                                           "\"Only video\" option.\nIf all else fails choose \"Force reencoding\"."),
                                        detail));
}

void ExportController::onTrackSaveDone(bool ok) {
    LOG_DEBUG(kLogger, "onTrackSaveDone ok: {}", ok);
    const QString detail = std::exchange(m_doneDetail, QString());
    if (ok)
        QMessageBox::information(m_window, tr("Track saving"), tr("Track saving completed"));
    else
        QMessageBox::warning(m_window, tr("Track saving"), withDetail(tr("Failed to save track"), detail));
}
