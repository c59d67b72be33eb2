// The playlist tab widget: accepting dropped files and folders.
#include "ui/QPlaylistTabWidget.h"

#include "logging/Logging.h"

#include <QDragEnterEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QPainter>
#include <QUrl>

namespace {

constexpr const char* kLogger = "ui.QPlaylistTabWidget";

// Drawn above the tables; lets the pointer through so the drop still reaches the tab widget.
class DropHighlight : public QWidget {
public:
    explicit DropHighlight(QWidget* parent) : QWidget(parent) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        hide();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QColor fill = palette().color(QPalette::Highlight);
        fill.setAlpha(32);
        QPen pen(palette().color(QPalette::Highlight), 2, Qt::DashLine);
        painter.setPen(pen);
        painter.setBrush(fill);
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 4, 4);
    }
};

} // namespace

QPlaylistTabWidget::QPlaylistTabWidget(QWidget* parent)
    : QTabWidget(parent), m_dropHighlight(new DropHighlight(this)) {
    setAcceptDrops(true);
}

bool QPlaylistTabWidget::carriesUrls(const QMimeData* mimeData) {
    return mimeData && mimeData->hasUrls() && !mimeData->urls().isEmpty();
}

void QPlaylistTabWidget::dragEnterEvent(QDragEnterEvent* event) {
    if (!carriesUrls(event->mimeData())) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    showDropHighlight(true);
}

void QPlaylistTabWidget::dragMoveEvent(QDragMoveEvent* event) {
    if (carriesUrls(event->mimeData()))
        event->acceptProposedAction();
    else
        event->ignore();
}

void QPlaylistTabWidget::dragLeaveEvent(QDragLeaveEvent* event) {
    showDropHighlight(false);
    QTabWidget::dragLeaveEvent(event);
}

void QPlaylistTabWidget::dropEvent(QDropEvent* event) {
    showDropHighlight(false);
    if (!carriesUrls(event->mimeData())) {
        event->ignore();
        return;
    }
    const QString path = droppedPath(event->mimeData());
    if (path.isEmpty()) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    LOG_INFO(kLogger, "Dropped {}", path.toStdString());
    emit dropToPlaylist(path);
}

QString QPlaylistTabWidget::droppedPath(const QMimeData* mimeData) {
    const QList<QUrl> urls = mimeData->urls();
    if (urls.size() > 1)
        LOG_WARN(kLogger, "Too many files droped, will use last one");
    const QUrl& url = urls.last();
    if (!url.isLocalFile()) {
        LOG_WARN(kLogger, "Dropped {} is not a local file", url.toString().toStdString());
        return {};
    }
    const QFileInfo file(url.toLocalFile());
    if (!file.exists()) {
        LOG_WARN(kLogger, "Dropped file {} does not exist", file.filePath().toStdString());
        return {};
    }
    return file.absoluteFilePath();
}

void QPlaylistTabWidget::resizeEvent(QResizeEvent* event) {
    QTabWidget::resizeEvent(event);
    m_dropHighlight->setGeometry(rect());
}

void QPlaylistTabWidget::showDropHighlight(bool shown) {
    m_dropHighlight->setGeometry(rect());
    m_dropHighlight->setVisible(shown);
    if (shown)
        m_dropHighlight->raise();
}
