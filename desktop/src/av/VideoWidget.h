// Shows a player's current picture aspect-fit on black, turned counter-clockwise by 0, 90, 180 or 270 degrees.
#pragma once

#include "av/Ffmpeg.h"
#include "av/FrameConverter.h"
#include "av/PictureTarget.h"

#include <QImage>
#include <QWidget>

#include <memory>

namespace av {

// GUI thread only. A player hands it every picture it puts on display (Player::setRenderer), normally
// already converted by the decoder at the size pictureTarget() asks for, so that painting only draws an
// image; a picture that does not fit (just resized or turned) is converted here, once, when painted.
//
//   av::VideoWidget view;  player.setRenderer(&view);  view.setOrientation(90);
class VideoWidget : public QWidget {
    Q_OBJECT
public:
    explicit VideoWidget(QWidget* parent = nullptr);

    // `picture` is the frame converted for display, or null.
    void setFrame(SharedFrame frame, QImage picture = {});
    // Back to black, e.g. when the camera of this widget has no file in the next recording.
    void clear();
    bool hasFrame() const { return m_frame != nullptr; }
    // The displayed size of the current picture (before turning); empty when cleared.
    QSize frameSize() const { return m_frameSize; }

    // Counter-clockwise degrees: 0, 90, 180 or 270; other values are brought to the nearest of those.
    // Turning a captured picture by -orientation (QTransform::rotate) makes it look as shown.
    void setOrientation(int degrees);
    int orientation() const { return m_orientation; }

    // The size a decoder should convert pictures to for this widget; it follows the widget's size and turn.
    std::shared_ptr<const PictureTarget> pictureTarget() const { return m_target; }

signals:
    void frameSizeChanged(QSize size);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void updateTarget();

    SharedFrame m_frame;
    QSize m_frameSize;
    int m_orientation = 0;
    FrameConverter m_converter;
    QImage m_image;        // m_frame converted for display
    bool m_imageStale = true;
    std::shared_ptr<PictureTarget> m_target = std::make_shared<PictureTarget>();
};

} // namespace av
