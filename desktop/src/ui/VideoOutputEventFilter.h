// Watches the video outputs: a double click on a picture toggles full screen.
#pragma once

#include <QObject>

class VideoOutputEventFilter : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

signals:
    void dblClickEvent();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};
