#include "ui/VideoOutputEventFilter.h"

#include <QEvent>

bool VideoOutputEventFilter::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseButtonDblClick) {
        emit dblClickEvent();
        return true;
    }
    return QObject::eventFilter(watched, event);
}
