// The main window of the player.
#pragma once

#include <QMainWindow>
#include <QPointer>
#include <QStorageInfo>

#include <vector>

class ProgressDialog;
class StorageWatcher;

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(QWidget* parent = nullptr);

    StorageWatcher* storageWatcher() const { return m_storageWatcher; }

public slots:
    // Loads the recordings of a directory (invoked by name, queued, from the storage and drop paths).
    void loadDirectory(QString path);

private slots:
    void onActionOpenDevice();
    void onSupportedStorageDevicesArrived(const std::vector<QStorageInfo>& storages);
    void onStorageDeviceRemoved(const QStorageInfo& storage);

    void onActionCheckUpdate();
    void onAppUpdaterStarted();
    void onAppUpdaterFinished(const QString& message);
    void onBackgroundOperationProgress(int percent);
    void onBackgroundOperationCanceled();

private:
    void createMenus();
    void showProgressDialog(const QString& title);
    void closeProgressDialog();
    void createStorageWatcher();
    // One storage opens at once, several are offered in the open dialog.
    void openOneOf(const std::vector<QStorageInfo>& storages);
    void openStorage(const QStorageInfo& storage, const QString& path);
    void closeRemovedRecordings(const QStorageInfo& storage);

    QPointer<ProgressDialog> m_progressDialog; // of the running background operation, at most one
    StorageWatcher* m_storageWatcher = nullptr;
    QAction* m_actionOpenDevice = nullptr;
    std::vector<QStorageInfo> m_supportedStorages; // as the watcher last reported them
    QStorageInfo m_openedStorage;                  // the storage whose recordings are loaded
    bool m_storageOpened = false;
};
