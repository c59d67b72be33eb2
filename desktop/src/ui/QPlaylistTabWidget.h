// The tab widget of the four playlist tables; a file or folder dropped anywhere on it is opened.
#pragma once

#include <QTabWidget>

class QMimeData;

// Accepts drags that carry URLs. On a drop it takes the last URL (several: logged at WARN), checks that
// it names an existing local file or directory and emits dropToPlaylist() with its absolute path.
// Children that accept no drops themselves (the playlist tables) pass theirs up to this widget.
//
// dropToPlaylist() is emitted inside the drop event, while the dragging application waits for it to
// finish: connect it queued when the receiver may block (message boxes, long work).
//
//   connect(tabs, &QPlaylistTabWidget::dropToPlaylist, window, &MainWindow::onDropToPlaylist, Qt::QueuedConnection);
class QPlaylistTabWidget : public QTabWidget {
    Q_OBJECT
public:
    explicit QPlaylistTabWidget(QWidget* parent = nullptr);

signals:
    // An existing local file or directory was dropped.
    void dropToPlaylist(const QString& path);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    static bool carriesUrls(const QMimeData* mimeData);
    // The path to open for a drop, or an empty string (logged) when there is none.
    static QString droppedPath(const QMimeData* mimeData);
    void showDropHighlight(bool shown);

    // A frame over the tabs while something droppable hovers them.
    QWidget* m_dropHighlight;
};
