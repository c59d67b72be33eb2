// The list model of the open dialog: the supported storages and one last row to choose a directory.
#pragma once

#include <QAbstractListModel>
#include <QStorageInfo>

#include <vector>

class StorageWatcher;

// Follows the watcher: rows come and go as storages are announced and removed (the selection of the
// other rows stays), and the extra row is always the last.
class OpenDialogItemModel : public QAbstractListModel {
    Q_OBJECT
public:
    explicit OpenDialogItemModel(StorageWatcher* watcher, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    bool isExtraRow(const QModelIndex& index) const;
    // The storage of a storage row.
    QStorageInfo storageAt(const QModelIndex& index) const;

    // "NAME (/media/user/NAME)", or the root path alone when the storage has no name of its own.
    static QString storageText(const QStorageInfo& storage);

public slots:
    void onStoragesChanged();

private:
    StorageWatcher* m_watcher;
    std::vector<QStorageInfo> m_storages; // in the order the watcher reported them
};
