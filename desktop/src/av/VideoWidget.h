// Shows a player's current picture aspect-fit on black, turned counter-clockwise by 0, 90, 180 or 270 degrees.
#pragma once

#include "av/Ffmpeg.h"
#include "av/FrameConverter.h"

#include <QImage>
#include <QWidget>

namespace av {

// GUI thread only. A player hands it every picture it puts on display (Player::setRenderer); the widget
// converts and scales a picture once, at the size it is drawn, and only when it is painted.
//
//   av::VideoWidget view;  player.setRenderer(&view);  view.setOrientation(90);
class VideoWidget : public QWidget {
    Q_OBJECT
public:
    explicit VideoWidget(QWidget* parent = nullptr);

    void setFrame(SharedFrame frame);
    // Back to black, e.g. when the camera of this widget has no file in the next recording.
    void clear();
    bool hasFrame() const { return m_frame != nullptr; }
    // The displayed size of the current picture (before turning); empty when cleared.
    QSize frameSize() const { return m_frameSize; }

    // Counter-clockwise degrees: 0, 90, 180 or 270; other values are brought to the nearest of those.
    // Turning a captured picture by -orientation (QTransform::rotate) makes it look as shown.
    void setOrientation(int degrees);
    int orientation() const { return m_orientation; }

signals:
    void frameSizeChanged(QSize size);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    SharedFrame m_frame;
    QSize m_frameSize;
    int m_orientation = 0;
    FrameConverter m_converter;
    QImage m_image;        // m_frame converted at the last painted size
    bool m_imageStale = true;
};

} // namespace av
