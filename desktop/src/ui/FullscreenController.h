// Full screen: the video area, its progress strip and tool bar move into a black window of their own and back;
// while the mouse rests there the controls and the pointer step aside.
//
// Lives on the GUI thread. Owns the full-screen window (a top-level widget, deleted with the controller), the
// double-click filter of the video outputs and the timer that hides the controls; borrows the moved widgets.
#pragma once

#include <QObject>
#include <QTimer>

#include <functional>
#include <vector>

class FullscreenVideoWidget;
class QAbstractButton;
class QWidget;

class FullscreenController : public QObject {
    Q_OBJECT
public:
    struct Widgets {
        QWidget* pane = nullptr;      // whose vertical layout holds the three below when not full screen
        QWidget* videoArea = nullptr; // double clicks on it and on `outputs` toggle full screen
        QWidget* progressStrip = nullptr;
        QWidget* toolbar = nullptr;
        QAbstractButton* enterButton = nullptr;
        QAbstractButton* leaveButton = nullptr;
        std::vector<QWidget*> outputs;
    };
    // `window`: the screen it is on is the one filled. `prepare` is called once with the full-screen window
    // (the window's keyboard shortcuts go there too).
    FullscreenController(const Widgets& widgets, QWidget* window, std::function<void(QWidget*)> prepare);
    ~FullscreenController() override;

    bool isFullscreen() const;

public slots:
    void toggle();
    void leave();
    void hideControls(); // the hide timer's end

signals:
    // The videos must lay out again: the area changed its size.
    void resized();

private:
    void enter();

    Widgets m_widgets;
    QWidget* m_window;
    std::function<void(QWidget*)> m_prepare;
    FullscreenVideoWidget* m_fullscreen = nullptr;
    QTimer m_hideTimer;
};
