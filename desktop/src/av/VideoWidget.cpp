// Aspect-fit, turned drawing of decoded pictures.
#include "av/VideoWidget.h"

#include <QPainter>

namespace av {

VideoWidget::VideoWidget(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(16, 16);
}

void VideoWidget::setFrame(SharedFrame frame) {
    m_frame = std::move(frame);
    m_imageStale = true;
    const QSize size = displaySize(m_frame.get());
    if (size != m_frameSize) {
        m_frameSize = size;
        emit frameSizeChanged(size);
    }
    update();
}

void VideoWidget::clear() {
    setFrame(nullptr);
    m_image = QImage();
}

void VideoWidget::setOrientation(int degrees) {
    const int normalized = ((((degrees + 45) / 90) * 90) % 360 + 360) % 360;
    if (normalized == m_orientation)
        return;
    m_orientation = normalized;
    m_imageStale = true;
    update();
}

void VideoWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    if (!m_frame || m_frameSize.isEmpty())
        return;
    const bool sideways = m_orientation == 90 || m_orientation == 270;
    const QSize turned = sideways ? m_frameSize.transposed() : m_frameSize;
    const QSize fitted = turned.scaled(size(), Qt::KeepAspectRatio);
    if (fitted.isEmpty())
        return;
    const QSize imageSize = sideways ? fitted.transposed() : fitted;
    if (m_imageStale || m_image.size() != imageSize) {
        m_image = m_converter.convert(m_frame.get(), imageSize, QImage::Format_RGB32);
        m_imageStale = false;
    }
    painter.translate(width() / 2.0, height() / 2.0);
    painter.rotate(-m_orientation);  // QPainter turns clockwise
    painter.drawImage(QPointF(-imageSize.width() / 2.0, -imageSize.height() / 2.0), m_image);
}

} // namespace av
