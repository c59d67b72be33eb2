// The video area: lays out the visible camera outputs side by side or one above the other, whichever shows
// the pictures bigger, and shows a message label instead when no output is visible.
#pragma once

#include <QLabel>
#include <QPointer>
#include <QWidget>

#include <vector>

namespace av {
class VideoWidget;
}

class VideoWidgetParent : public QWidget {
    Q_OBJECT
public:
    explicit VideoWidgetParent(QWidget* parent = nullptr);

    // The outputs in camera order (main first); they become children of this widget.
    void setOutputs(std::vector<av::VideoWidget*> outputs);
    const std::vector<av::VideoWidget*>& outputs() const { return m_outputs; }
    // Shown centred when no output is visible, with the given text.
    void setMessageLabel(QLabel* label) { m_label = label; }
    void showMessage(const QString& text);
    void hideMessage();

    // Where each visible output goes in an area of `size`, given the outputs' picture aspect ratios
    // (width / height): a row or a column, whichever gives the pictures more area.
    static std::vector<QRect> arrange(const QSize& size, const std::vector<double>& aspects);

public slots:
    void relayout();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    std::vector<av::VideoWidget*> m_outputs;
    QPointer<QLabel> m_label;
    bool m_messageShown = false;
};
