// Memory cards: the storage watcher, "Open external drive" (at once for one card, through the open dialog for
// several), and the removal of the card whose recordings are loaded.
//
// Lives on the GUI thread. Owns the storage watcher (started here; its device notifications run on a thread of
// their own) and remembers the storage last opened; borrows the open action and button.
#pragma once

#include <QObject>
#include <QStorageInfo>

#include <functional>
#include <vector>

class QAction;
class QAbstractButton;
class QWidget;
class StorageWatcher;

class StorageOpener : public QObject {
    Q_OBJECT
public:
    // `busy` tells whether a job runs: a card put in meanwhile is only listed.
    StorageOpener(QAction* openAction, QAbstractButton* openButton, std::function<bool()> busy, QWidget* window);

    StorageWatcher* watcher() const { return m_watcher; }
    // Starts watching; call it once the signals below are connected.
    void start();

public slots:
    void openDevice(); // "Open external drive"

signals:
    // Load the recordings under this path.
    void openRequested(const QString& path);
    // The storage whose recordings are loaded has gone; they can neither play nor be saved any more.
    void openedStorageRemoved();

private:
    void onArrived(const std::vector<QStorageInfo>& storages);
    // Reached twice for a supported storage (supportedStorageRemoved and storageRemoved); the first call
    // closes the recordings, the second finds nothing open.
    void onRemoved(const QStorageInfo& storage);
    void updateActions();
    // One storage opens at once, several are offered in the open dialog.
    void openOneOf(const std::vector<QStorageInfo>& storages);
    void open(const QStorageInfo& storage, const QString& path);

    QAction* m_openAction;
    QAbstractButton* m_openButton;
    std::function<bool()> m_busy;
    QWidget* m_window;
    StorageWatcher* m_watcher;
    QStorageInfo m_opened; // the storage whose recordings are loaded
    bool m_isOpened = false;
};
