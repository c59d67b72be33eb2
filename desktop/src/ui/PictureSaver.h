// Saving pictures: a video frame (both cameras, or one) or the whole window, as JPEG or PNG with the time and
// track position of the picture in its EXIF block.
//
// Lives on the GUI thread. Owns the video area's context menu, the frame capture under way and the moment of
// the picture on screen: the last position reported while a player showed it. A stopped item keeps showing
// its last picture while the controller's time moves to the item's end; the EXIF block follows the picture.
#pragma once

#include "ui/FileChoosers.h"

#include <QDateTime>
#include <QObject>
#include <QPointer>

#include <functional>
#include <optional>
#include <set>

class PlaybackController;
class PlaybackSession;
class QImage;
class QMenu;
class QWidget;

class PictureSaver : public QObject {
    Q_OBJECT
public:
    // `videoArea` gets the context menu; `window` is what a window save grabs.
    PictureSaver(QWidget* videoArea, QWidget* window, PlaybackSession* session, const FileChoosers& choosers);

    // The moment of the picture on screen; invalid when none has been shown.
    QDateTime shownTime() const { return m_shownTime; }

public slots:
    void saveFrame(); // the cameras on screen
    void saveMainCameraFrame();
    void saveRearCameraFrame();
    void saveWindow();
    void onControllerChanged(PlaybackController* controller);
    void retranslate();

private:
    void captureFrame(std::set<size_t> cameras);
    void onImageCaptured(const QImage& image);
    // The save dialog; `write` stores the picture at a path and tells whether it could. `time` is the moment
    // whose track position goes into the picture's EXIF block.
    void saveImage(const std::function<bool(const QString&)>& write, const QString& baseName, const QDateTime& time);

    QWidget* m_window;
    PlaybackSession* m_session;
    const FileChoosers& m_choosers;
    QMenu* m_menu;
    QPointer<PlaybackController> m_controller;
    QDateTime m_shownTime;
    std::optional<QString> m_pendingBaseName; // a frame capture under way
    QDateTime m_pendingTime;
};
