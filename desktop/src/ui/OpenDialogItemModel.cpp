// The open dialog's list model over the storage watcher's supported storages.
#include "ui/OpenDialogItemModel.h"

#include "core/StorageWatcher.h"

#include <algorithm>

namespace {
bool containsStorage(const std::vector<QStorageInfo>& storages, const QStorageInfo& storage) {
    return std::any_of(storages.begin(), storages.end(),
                       [&](const QStorageInfo& other) { return StorageWatcher::isSameStorage(other, storage); });
}
} // namespace

OpenDialogItemModel::OpenDialogItemModel(StorageWatcher* watcher, QObject* parent)
    : QAbstractListModel(parent), m_watcher(watcher), m_storages(watcher->supportedStorages()) {
    connect(watcher, &StorageWatcher::supportedStoragesArrived, this, &OpenDialogItemModel::onStoragesChanged);
    connect(watcher, &StorageWatcher::supportedStorageRemoved, this, &OpenDialogItemModel::onStoragesChanged);
}

int OpenDialogItemModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_storages.size()) + 1;
}

QVariant OpenDialogItemModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount() || role != Qt::DisplayRole)
        return {};
    if (isExtraRow(index))
        return tr("Choose directory to open");
    return storageText(m_storages[static_cast<size_t>(index.row())]);
}

bool OpenDialogItemModel::isExtraRow(const QModelIndex& index) const {
    return index.isValid() && index.row() == static_cast<int>(m_storages.size());
}

QStorageInfo OpenDialogItemModel::storageAt(const QModelIndex& index) const {
    if (!index.isValid() || isExtraRow(index))
        return {};
    return m_storages[static_cast<size_t>(index.row())];
}

QString OpenDialogItemModel::storageText(const QStorageInfo& storage) {
    const QString name = storage.displayName().trimmed();
    if (name.isEmpty() || name == storage.rootPath())
        return storage.rootPath();
    return name + QStringLiteral(" (") + storage.rootPath() + QLatin1Char(')');
}

void OpenDialogItemModel::onStoragesChanged() {
    const std::vector<QStorageInfo>& current = m_watcher->supportedStorages();
    for (int row = static_cast<int>(m_storages.size()) - 1; row >= 0; --row) {
        if (containsStorage(current, m_storages[static_cast<size_t>(row)]))
            continue;
        beginRemoveRows({}, row, row);
        m_storages.erase(m_storages.begin() + row);
        endRemoveRows();
    }
    for (const QStorageInfo& storage : current) {
        if (containsStorage(m_storages, storage))
            continue;
        const int row = static_cast<int>(m_storages.size()); // before the extra row
        beginInsertRows({}, row, row);
        m_storages.push_back(storage);
        endInsertRows();
    }
}
