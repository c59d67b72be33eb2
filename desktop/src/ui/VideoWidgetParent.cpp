#include "ui/VideoWidgetParent.h"

#include "av/VideoWidget.h"

#include <QLabel>
#include <QResizeEvent>

#include <algorithm>

namespace {
constexpr double kDefaultAspect = 16.0 / 9.0;
constexpr int kSpacing = 2;

// Area of a picture of aspect `aspect` fitted into a cell.
double fittedArea(double cellWidth, double cellHeight, double aspect) {
    const double width = std::min(cellWidth, cellHeight * aspect);
    return width * (width / aspect);
}

double aspectOf(const av::VideoWidget* output) {
    QSize size = output->frameSize();
    if (output->orientation() == 90 || output->orientation() == 270)
        size.transpose();
    return size.isEmpty() ? kDefaultAspect : double(size.width()) / size.height();
}
} // namespace

VideoWidgetParent::VideoWidgetParent(QWidget* parent) : QWidget(parent) {
    setAutoFillBackground(true);
    QPalette black = palette();
    black.setColor(QPalette::Window, Qt::black);
    black.setColor(QPalette::WindowText, Qt::white);
    setPalette(black);
}

void VideoWidgetParent::setOutputs(std::vector<av::VideoWidget*> outputs) {
    m_outputs = std::move(outputs);
    for (av::VideoWidget* output : m_outputs) {
        output->setParent(this);
        connect(output, &av::VideoWidget::frameSizeChanged, this, &VideoWidgetParent::relayout);
    }
    relayout();
}

void VideoWidgetParent::showMessage(const QString& text) {
    m_messageShown = true;
    if (m_label)
        m_label->setText(text);
    relayout();
}

void VideoWidgetParent::hideMessage() {
    m_messageShown = false;
    relayout();
}

std::vector<QRect> VideoWidgetParent::arrange(const QSize& size, const std::vector<double>& aspects) {
    std::vector<QRect> cells;
    const size_t count = aspects.size();
    if (count == 0 || size.isEmpty())
        return cells;
    const double rowCell = (size.width() - kSpacing * double(count - 1)) / count;
    const double columnCell = (size.height() - kSpacing * double(count - 1)) / count;
    double rowArea = 0, columnArea = 0;
    for (double aspect : aspects) {
        rowArea += fittedArea(rowCell, size.height(), aspect);
        columnArea += fittedArea(size.width(), columnCell, aspect);
    }
    const bool inRow = rowArea >= columnArea;
    for (size_t i = 0; i < count; ++i) {
        if (inRow) {
            const int left = int(i * (rowCell + kSpacing));
            const int right = i + 1 == count ? size.width() : int(i * (rowCell + kSpacing) + rowCell);
            cells.emplace_back(QPoint(left, 0), QPoint(right - 1, size.height() - 1));
        } else {
            const int top = int(i * (columnCell + kSpacing));
            const int bottom = i + 1 == count ? size.height() : int(i * (columnCell + kSpacing) + columnCell);
            cells.emplace_back(QPoint(0, top), QPoint(size.width() - 1, bottom - 1));
        }
    }
    return cells;
}

void VideoWidgetParent::relayout() {
    std::vector<av::VideoWidget*> visible;
    std::vector<double> aspects;
    for (av::VideoWidget* output : m_outputs) {
        if (output->isVisibleTo(this)) {
            visible.push_back(output);
            aspects.push_back(aspectOf(output));
        }
    }
    const std::vector<QRect> cells = arrange(size(), aspects);
    for (size_t i = 0; i < cells.size(); ++i)
        visible[i]->setGeometry(cells[i]);
    if (m_label) {
        m_label->setVisible(m_messageShown || visible.empty());
        m_label->setGeometry(rect().adjusted(8, 8, -8, -8));
        m_label->raise();
    }
}

void VideoWidgetParent::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    relayout();
}
