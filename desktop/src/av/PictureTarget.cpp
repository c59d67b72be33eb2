// Aspect-fit picture sizes for the video widget and its decoder.
#include "av/PictureTarget.h"

namespace av {

QSize fittedPictureSize(QSize frameSize, QSize area, int orientation) {
    if (frameSize.isEmpty() || area.isEmpty())
        return {};
    const bool sideways = orientation == 90 || orientation == 270;
    const QSize turned = sideways ? frameSize.transposed() : frameSize;
    const QSize fitted = turned.scaled(area, Qt::KeepAspectRatio);
    QSize picture = sideways ? fitted.transposed() : fitted;
    if (picture.width() > 1 && picture.width() % 2 != 0)
        picture.rwidth() -= 1;
    return picture.isEmpty() ? QSize() : picture;
}

void PictureTarget::set(QSize area, int orientation) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_area = area;
    m_orientation = orientation;
}

QSize PictureTarget::pictureSizeFor(QSize frameSize) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return fittedPictureSize(frameSize, m_area, m_orientation);
}

} // namespace av
