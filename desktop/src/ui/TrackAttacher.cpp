#include "ui/TrackAttacher.h"

#include "core/SettingsKeys.h"
#include "core/Startup.h"
#include "core/TrackFileJob.h"
#include "logging/Logging.h"
#include "ui/JobRunner.h"
#include "ui/PlaybackController.h"
#include "ui/PlaybackSession.h"
#include "ui/PlaylistPane.h"

#include <QAction>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QSettings>
#include <QSpinBox>
#include <QStatusBar>

namespace {
constexpr const char* kLogger = "ui.TrackAttacher";
// 300 ms: a held arrow steps the box several times a second, and every apply reopens the video that plays.
constexpr int kApplyDelayMs = 300;
constexpr int kMessageMs = 10000; // long enough to read a file name and its reason
const QString kFileKey = QStringLiteral("file");
const QString kOffsetKey = QStringLiteral("offset");

QSettings userSettings() { return QSettings(kOrganizationName, kApplicationName); }
QString cardKey(const QString& path) { return QDir::cleanPath(QDir(path).absolutePath()); }
} // namespace

TrackAttacher::TrackAttacher(Controls controls, PlaylistPane* playlist, PlaybackSession* session, JobRunner* jobs,
                             const FileChoosers& choosers, QWidget* window)
    : QObject(window), m_playlist(playlist), m_session(session), m_jobs(jobs), m_choosers(choosers), m_window(window),
      m_statusBar(controls.statusBar) {
    m_attachAction = new QAction(this);
    m_attachAction->setObjectName(QStringLiteral("actionAttachTrack"));
    m_detachAction = new QAction(this);
    m_detachAction->setObjectName(QStringLiteral("actionDetachTrack"));
    controls.menu->insertActions(controls.before, {m_attachAction, m_detachAction});
    controls.menu->insertSeparator(m_attachAction);

    m_offsetControl = new QWidget;
    auto* layout = new QHBoxLayout(m_offsetControl);
    layout->setContentsMargins(0, 0, 0, 0);
    m_offsetLabel = new QLabel;
    m_offsetBox = new QSpinBox;
    m_offsetBox->setObjectName(QStringLiteral("trackOffsetBox"));
    m_offsetBox->setRange(-kMaxOffsetSeconds, kMaxOffsetSeconds);
    m_offsetBox->setAccelerated(true);
    layout->addWidget(m_offsetLabel);
    layout->addWidget(m_offsetBox);
    m_statusBar->addPermanentWidget(m_offsetControl);

    m_applyTimer.setSingleShot(true);
    m_applyTimer.setInterval(kApplyDelayMs);
    connect(&m_applyTimer, &QTimer::timeout, this, &TrackAttacher::apply);
    connect(m_attachAction, &QAction::triggered, this, &TrackAttacher::attach);
    connect(m_detachAction, &QAction::triggered, this, &TrackAttacher::detach);
    connect(m_offsetBox, qOverload<int>(&QSpinBox::valueChanged), this, &TrackAttacher::setOffset);
    connect(m_playlist, &PlaylistPane::loadedPathChanged, this, &TrackAttacher::onLoadedPathChanged);
    retranslate();
    updateControls();
}

void TrackAttacher::retranslate() {
    m_attachAction->setText(tr("Attach track..."));
    m_detachAction->setText(tr("Detach track"));
    m_offsetLabel->setText(tr("Track offset:"));
    m_offsetBox->setSuffix(tr(" s"));
    m_offsetBox->setToolTip(tr("Seconds added to the times of the attached track: when its positions come too early "
                               "on the video, make the offset larger"));
}

void TrackAttacher::updateControls() {
    m_attachAction->setEnabled(m_playlist->isLoaded());
    m_detachAction->setEnabled(m_attachment.has_value());
    m_offsetControl->setVisible(m_attachment.has_value());
}

void TrackAttacher::attach() {
    if (!m_playlist->isLoaded())
        return;
    const QString path = m_choosers.openFileName(m_window, tr("Attach track"), m_lastDirectory,
                                                 tr("Tracks (*.gpx *.kml *.nmea *.nma *.txt *.log);;All files (*)"));
    if (path.isEmpty())
        return;
    m_lastDirectory = QFileInfo(path).absolutePath();
    attachFile(path, m_attachment ? static_cast<int>(m_attachment->offsetSeconds) : 0);
}

bool TrackAttacher::attachFile(const QString& path, int offsetSeconds, bool quiet) {
    if (!m_playlist->isLoaded())
        return false;
    auto* job = new TrackFileJob(path);
    m_read.clear();
    // Kept here first; the runner, connected after, then reports the end.
    connect(job, &TrackFileJob::done, this, [this, job](bool ok) {
        if (ok)
            m_read = job->positions();
    });
    const QString cardPath = m_playlist->loadedPath();
    return m_jobs->run(tr("Reading track status"), {JobRunner::step(job, [job] { job->read(); })},
                       [this, path, offsetSeconds, cardPath, quiet](const JobRunner::Endings& endings) {
                           if (endings.front() == JobRunner::Ending::Canceled || cardPath != m_playlist->loadedPath())
                               return; // another card came meanwhile
                           if (endings.front() != JobRunner::Ending::Done || m_read.empty()) {
                               showReadFailure(path, quiet);
                               return;
                           }
                           LOG_INFO(kLogger, "Attached track {} to {} with offset {} s", path.toStdString(),
                                    cardPath.toStdString(), offsetSeconds);
                           m_attachment = TrackAttachment{QFileInfo(path), std::move(m_read), offsetSeconds};
                           m_read.clear();
                           m_cardPath = cardPath;
                           const QSignalBlocker quiet(m_offsetBox);
                           m_offsetBox->setValue(offsetSeconds);
                           remember();
                           apply();
                       });
}

void TrackAttacher::showReadFailure(const QString& path, bool quiet) {
    const QString text = tr("%1 could not be read as a GPX, KML or NMEA track with times")
                             .arg(QDir::toNativeSeparators(path));
    if (quiet)
        m_statusBar->showMessage(text, kMessageMs);
    else
        QMessageBox::warning(m_window, tr("Attach track"), text);
}

void TrackAttacher::detach() {
    if (!m_attachment)
        return;
    LOG_INFO(kLogger, "Detached track {} from {}", m_attachment->file.filePath().toStdString(), m_cardPath.toStdString());
    m_applyTimer.stop();
    forget();
    m_attachment.reset();
    apply();
}

void TrackAttacher::setOffset(int seconds) {
    if (!m_attachment || m_attachment->offsetSeconds == seconds)
        return;
    m_attachment->offsetSeconds = seconds;
    if (m_offsetBox->value() != seconds) {
        const QSignalBlocker quiet(m_offsetBox);
        m_offsetBox->setValue(seconds);
    }
    remember();
    m_applyTimer.start();
}

void TrackAttacher::apply() {
    PlaybackController* before = m_session->controller();
    const QDateTime time = before ? before->currentTime() : QDateTime();
    m_playlist->setAttachment(m_attachment);
    // The item chosen again plays on from where it was.
    if (PlaybackController* after = m_session->controller(); after && after != before && time.isValid())
        after->seekTo(time);
    updateControls();
}

void TrackAttacher::onLoadedPathChanged(const QString& path) {
    m_applyTimer.stop();
    m_attachment.reset();
    m_cardPath.clear();
    updateControls();
    if (path.isEmpty())
        return;
    const QVariantMap stored = userSettings().value(settingskeys::kAttachedTracks).toMap().value(cardKey(path)).toMap();
    const QString file = stored.value(kFileKey).toString();
    if (file.isEmpty())
        return;
    const int offset = stored.value(kOffsetKey).toInt();
    LOG_INFO(kLogger, "Attaching track {} again to {}", file.toStdString(), path.toStdString());
    // After the loading job has ended: the runner takes one job at a time.
    QMetaObject::invokeMethod(this, [this, file, offset, path] {
        if (m_playlist->loadedPath() == path && !attachFile(file, offset, true))
            LOG_WARN(kLogger, "Can't attach track {} again while another operation runs", file.toStdString());
    }, Qt::QueuedConnection);
}

void TrackAttacher::remember() const {
    QSettings settings = userSettings();
    QVariantMap tracks = settings.value(settingskeys::kAttachedTracks).toMap();
    tracks.insert(cardKey(m_cardPath), QVariantMap{{kFileKey, m_attachment->file.absoluteFilePath()},
                                                   {kOffsetKey, static_cast<qlonglong>(m_attachment->offsetSeconds)}});
    settings.setValue(settingskeys::kAttachedTracks, tracks);
}

void TrackAttacher::forget() const {
    QSettings settings = userSettings();
    QVariantMap tracks = settings.value(settingskeys::kAttachedTracks).toMap();
    tracks.remove(cardKey(m_cardPath));
    settings.setValue(settingskeys::kAttachedTracks, tracks);
}
