#include "ui/PictureSaver.h"

#include "logging/Logging.h"
#include "ui/ExifWriter.h"
#include "ui/PictureFileNames.h"
#include "ui/PlaybackController.h"
#include "ui/PlaybackSession.h"

#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QStandardPaths>

namespace {
constexpr const char* kLogger = "ui.MainWindow"; // its lines are the window's

// Picked once per process, like the save dialogs' memory of where the user last put a picture.
QString& lastImageDirectory() {
    static QString directory;
    return directory;
}
} // namespace

PictureSaver::PictureSaver(QWidget* videoArea, QWidget* window, PlaybackSession* session, const FileChoosers& choosers)
    : QObject(window), m_window(window), m_session(session), m_choosers(choosers), m_menu(new QMenu(window)) {
    m_menu->setObjectName(QStringLiteral("videoContextMenu"));
    connect(m_menu->addAction(QString()), &QAction::triggered, this, &PictureSaver::saveFrame);
    connect(m_menu->addAction(QString()), &QAction::triggered, this, &PictureSaver::saveMainCameraFrame);
    connect(m_menu->addAction(QString()), &QAction::triggered, this, &PictureSaver::saveRearCameraFrame);
    m_menu->addSeparator();
    connect(m_menu->addAction(QString()), &QAction::triggered, this, &PictureSaver::saveWindow);
    videoArea->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(videoArea, &QWidget::customContextMenuRequested, this, [this, videoArea](const QPoint& at) {
        const QList<QAction*> actions = m_menu->actions();
        const MultiAVPlayer* player = m_controller ? m_controller->currentPlayer() : nullptr;
        actions[0]->setEnabled(player);
        actions[1]->setEnabled(player);
        actions[2]->setEnabled(player && player->playerCount() > 1);
        m_menu->popup(videoArea->mapToGlobal(at));
    });
}

void PictureSaver::retranslate() {
    const QList<QAction*> actions = m_menu->actions();
    actions[0]->setText(tr("Save video frame"));
    actions[1]->setText(tr("Save video frame (main camera)"));
    actions[2]->setText(tr("Save video frame (rear camera)"));
    actions[4]->setText(tr("Save window"));
}

void PictureSaver::onControllerChanged(PlaybackController* controller) {
    if (m_controller)
        disconnect(m_controller, nullptr, this, nullptr);
    m_controller = controller;
    m_shownTime = QDateTime();
    m_pendingBaseName.reset();
    if (!controller)
        return;
    connect(controller, &PlaybackController::imageCaptured, this, &PictureSaver::onImageCaptured);
    // Only a position with a player on screen is a picture: the end of the item after Stop is not.
    connect(controller, &PlaybackController::positionUpdated, this, [this](const QDateTime& time) {
        if (m_controller && m_controller->currentPlayer())
            m_shownTime = time;
    });
}

void PictureSaver::captureFrame(std::set<size_t> cameras) {
    if (!m_controller) {
        LOG_WARN(kLogger, "Trying to capture video frame without playback controller");
        return;
    }
    const QDateTime time = m_shownTime.isValid() ? m_shownTime : m_controller->currentTime();
    const bool all = cameras.empty();
    const MultiAVPlayer* player = m_controller->currentPlayer();
    const size_t cameraCount = player ? player->playerCount() : 0;
    const bool main = all ? cameraCount >= 1 && m_session->isCameraShown(0) : cameras.count(0) > 0;
    const bool rear = all ? cameraCount >= 2 && m_session->isCameraShown(1) : cameras.count(1) > 0;
    if (all) {
        // Only the cameras on screen are saved.
        if (main)
            cameras.insert(0);
        if (rear)
            cameras.insert(1);
    }
    try {
        m_pendingBaseName = frameBaseName(main, rear, time);
        m_pendingTime = time;
        m_controller->capture(cameras);
    } catch (const std::exception& error) {
        m_pendingBaseName.reset();
        LOG_ERROR(kLogger, "{} exception: {}", "capture", error.what());
    }
}

void PictureSaver::saveFrame() { captureFrame({}); }
void PictureSaver::saveMainCameraFrame() { captureFrame({0}); }
void PictureSaver::saveRearCameraFrame() { captureFrame({1}); }

void PictureSaver::onImageCaptured(const QImage& image) {
    if (!m_pendingBaseName)
        return;
    const QString baseName = *m_pendingBaseName;
    m_pendingBaseName.reset();
    if (image.isNull()) {
        LOG_WARN(kLogger, "The captured video frame is empty, nothing saved");
        return;
    }
    saveImage([image](const QString& path) { return image.save(path); }, baseName, m_pendingTime);
}

void PictureSaver::saveWindow() {
    if (m_controller && !m_controller->isPaused())
        m_controller->togglePause();
    const QPixmap picture = m_window->grab();
    if (picture.isNull())
        return;
    saveImage([picture](const QString& path) { return picture.save(path); }, windowBaseName(QDateTime::currentDateTime()),
              m_shownTime);
}

void PictureSaver::saveImage(const std::function<bool(const QString&)>& write, const QString& baseName,
                             const QDateTime& time) {
    QString& directory = lastImageDirectory();
    const QString start =
        directory.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::PicturesLocation) : directory;
    QString proposal = proposeImagePath(start, baseName);
    for (;;) {
        const QString path = m_choosers.saveFileName(m_window, tr("Save image to"), proposal, tr("JPEG (*.jpg);;PNG (*.png)"));
        if (path.isEmpty())
            return;
        directory = QFileInfo(path).absolutePath();
        if (!write(path)) {
            LOG_WARN(kLogger, "Couldn't write image to {}", path.toStdString());
            QMessageBox::warning(m_window, tr("Save image to"), tr("Specified file path is not suitable"));
            proposal = path;
            continue;
        }
        LOG_INFO(kLogger, "Saved image to {}", path.toStdString());
        if (m_controller && time.isValid()) {
            const std::optional<TrackPosition> position = trackPositionAt(m_controller->track(), time);
            if (position && writeExifPosition(path, *position, time))
                LOG_INFO(kLogger, "Updated EXIF Header in {}", path.toStdString());
        }
        return;
    }
}
