// The frameless black window that holds the video area while the player is full screen.
#pragma once

#include <QWidget>

class FullscreenVideoWidget : public QWidget {
    Q_OBJECT
public:
    explicit FullscreenVideoWidget(QWidget* parent = nullptr);

signals:
    void resized();
    // The mouse moved over the window: the control strip comes back for a while.
    void mouseMoved();

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
};
