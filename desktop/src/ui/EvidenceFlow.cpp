// "Save evidence" and "Mark moment": from the chosen interval to the pack's folder.
#include "ui/EvidenceFlow.h"

#include "ui_MainWindow.h"

#include "core/evidence/EvidencePack.h"
#include "logging/Logging.h"
#include "ui/EvidenceDrawing.h"
#include "ui/ExportController.h"
#include "ui/Icons.h"
#include "ui/JobRunner.h"
#include "ui/PlaybackController.h"
#include "ui/PlaybackSession.h"

#include <QBuffer>
#include <QDir>
#include <QMessageBox>
#include <QToolButton>
#include <QToolTip>

#include <algorithm>
#include <memory>

namespace {
constexpr const char* kLogger = "ui.MainWindow"; // its lines are the window's

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
} // namespace

EvidenceFlow::EvidenceFlow(Ui::MainWindow& ui, PlaybackSession* session, ExportController* cuts, JobRunner* jobs,
                           const FileChoosers& choosers, QWidget* window)
    : QObject(window), m_ui(ui), m_session(session), m_cuts(cuts), m_jobs(jobs), m_choosers(choosers),
      m_window(window), m_button(new QToolButton(window)), m_action(new QAction(window)),
      m_markAction(new QAction(window)) {
    // A tool button beside the cut, and in the File menu with the key that marks a moment.
    m_button->setObjectName(QStringLiteral("evidenceButton"));
    m_button->setAutoRaise(true);
    m_button->setIcon(reelvueIcon(QStringLiteral("save-evidence")));
    m_button->setIconSize(QSize(22, 22));
    ui.videoToolbarLayout->insertWidget(ui.videoToolbarLayout->indexOf(ui.cutOnButton) + 1, m_button);
    m_action->setObjectName(QStringLiteral("actionSaveEvidence"));
    m_action->setIcon(m_button->icon());
    m_markAction->setObjectName(QStringLiteral("actionMarkMoment"));
    m_markAction->setShortcut(QKeySequence(Qt::Key_M));
    m_markAction->setShortcutContext(Qt::WindowShortcut);
    QAction* beforeQuit = ui.menuFile->actions().value(ui.menuFile->actions().indexOf(ui.actionQuit) - 1, ui.actionQuit);
    ui.menuFile->insertActions(beforeQuit, {m_action, m_markAction});
    m_action->setEnabled(false);
    m_markAction->setEnabled(false);
    connect(m_button, &QToolButton::clicked, this, &EvidenceFlow::saveEvidence);
    connect(m_action, &QAction::triggered, this, &EvidenceFlow::saveEvidence);
    connect(m_markAction, &QAction::triggered, this, &EvidenceFlow::markMoment);
}

void EvidenceFlow::retranslate() {
    m_button->setToolTip(tr("Save evidence"));
    m_button->setText(tr("Save evidence"));
    m_action->setText(tr("Save evidence"));
    m_markAction->setText(tr("Mark moment"));
}

void EvidenceFlow::onControllerChanged(PlaybackController* controller) {
    m_marks.clear(); // marks belong to the item they were made on
    m_action->setEnabled(controller != nullptr);
    m_markAction->setEnabled(controller != nullptr);
}

void EvidenceFlow::setLoaded(const QString& path, const Playlist::RawItems& recordings) {
    m_loadedPath = path;
    m_recordings = recordings;
}

void EvidenceFlow::saveEvidence() {
    PlaybackController* controller = m_session->controller();
    if (!controller) {
        LOG_WARN(kLogger, "MainWindow::saveEvidence() has been called without m_playbackController");
        return;
    }
    if (m_jobs->isBusy() || controller->items().empty())
        return;
    if (!m_cuts->isCutMode() && !controller->isCyclePlayActive()) {
        // No interval chosen yet: the selector comes up as for a cut, and Confirm makes the pack.
        m_cuts->chooseIntervalForEvidence();
        return;
    }
    start(m_cuts->saveInterval());
}

void EvidenceFlow::markMoment() {
    PlaybackController* controller = m_session->controller();
    if (!controller || !controller->currentTime().isValid())
        return;
    const QDateTime moment = controller->currentTime();
    m_marks.push_back(moment);
    LOG_INFO(kLogger, "Marked the moment {}", moment.toString(Qt::ISODate).toStdString());
    QToolTip::showText(m_button->mapToGlobal(QPoint(0, m_button->height())),
                       tr("Moment marked: %1").arg(moment.toString(QStringLiteral("HH:mm:ss"))), m_button);
}

void EvidenceFlow::start(const TimeInterval& interval) {
    m_cuts->leaveCutMode();
    LOG_INFO(kLogger, "Evidence pack from {} to {}", interval.from.toString(Qt::ISODate).toStdString(),
             interval.to.toString(Qt::ISODate).toStdString());
    QString folder;
    for (;;) {
        const QString directory = m_choosers.existingDirectory(m_window, tr("Save evidence to"), m_cuts->saveDirectory());
        if (directory.isEmpty())
            return;
        m_cuts->rememberSaveDirectory(directory);
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
                    if (std::find(endings.begin(), endings.end(), JobRunner::Ending::Canceled) != endings.end()) {
                        LOG_INFO(kLogger, "The background operation was canceled");
                        return;
                    }
                    onEvidenceDone(endings.front() == JobRunner::Ending::Done, folder, *failure);
                });
}

void EvidenceFlow::onEvidenceDone(bool ok, const QString& folder, const QString& failure) {
    LOG_DEBUG(kLogger, "onEvidenceDone ok: {}", ok);
    if (ok)
        QMessageBox::information(m_window, tr("Save evidence"), tr("The evidence pack is in %1").arg(folder));
    else
        QMessageBox::warning(m_window, tr("Save evidence"), tr("The evidence pack was not made.\n\n%1").arg(failure));
}
