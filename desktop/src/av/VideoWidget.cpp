// Aspect-fit, turned drawing of decoded pictures.
#include "av/VideoWidget.h"

#include <QPainter>

namespace av {

VideoWidget::VideoWidget(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(16, 16);
}

void VideoWidget::setFrame(SharedFrame frame, QImage picture) {
    m_frame = std::move(frame);
    m_image = std::move(picture);
    m_imageStale = m_image.isNull();
    const QSize size = displaySize(m_frame.get());
    if (size != m_frameSize) {
        m_frameSize = size;
        emit frameSizeChanged(size);
    }
    update();
}

void VideoWidget::clear() {
    setFrame(nullptr);
}

void VideoWidget::setOrientation(int degrees) {
    const int normalized = ((((degrees + 45) / 90) * 90) % 360 + 360) % 360;
    if (normalized == m_orientation)
        return;
    m_orientation = normalized;
    updateTarget();
    update();
}

void VideoWidget::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    updateTarget();
}

void VideoWidget::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    updateTarget();
}

void VideoWidget::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    updateTarget();
}

void VideoWidget::updateTarget() {
    m_target->set(isVisible() ? size() : QSize(), m_orientation);
}

void VideoWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QSize imageSize = fittedPictureSize(m_frameSize, size(), m_orientation);
    if (!m_frame || imageSize.isEmpty()) {
        painter.fillRect(rect(), Qt::black);
        return;
    }
    if (m_imageStale || m_image.size() != imageSize) {
        m_image = m_converter.convert(m_frame.get(), imageSize, QImage::Format_RGB32);
        m_imageStale = false;
    }
    if (m_orientation == 0) {
        // Only the bars around the picture are filled: the picture covers the rest.
        const QRect picture(QPoint((width() - imageSize.width()) / 2, (height() - imageSize.height()) / 2), imageSize);
        for (const QRect& bar : QRegion(rect()).subtracted(picture))
            painter.fillRect(bar, Qt::black);
        painter.drawImage(picture.topLeft(), m_image);
        return;
    }
    painter.fillRect(rect(), Qt::black);
    painter.translate(width() / 2.0, height() / 2.0);
    painter.rotate(-m_orientation);  // QPainter turns clockwise
    painter.drawImage(QPointF(-imageSize.width() / 2.0, -imageSize.height() / 2.0), m_image);
}

} // namespace av
