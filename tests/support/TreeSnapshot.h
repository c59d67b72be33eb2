// What a folder holds, file by file (content hash, size, modification time), to prove that an export touched
// nothing it was not asked to write.
#pragma once

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <map>
#include <set>

namespace testsupport {

struct FileState {
    QByteArray hash; // empty for a folder
    qint64 size = 0;
    qint64 modifiedMs = 0;
    bool operator==(const FileState& other) const {
        return hash == other.hash && size == other.size && modifiedMs == other.modifiedMs;
    }
};

// Every file and folder below `root`, hidden ones included, by path relative to it.
using TreeSnapshot = std::map<QString, FileState>;

inline TreeSnapshot snapshot(const QString& root) {
    TreeSnapshot tree;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QFileInfo info(path);
        FileState state;
        if (!info.isDir()) {
            QFile file(path);
            if (file.open(QIODevice::ReadOnly)) {
                QCryptographicHash hash(QCryptographicHash::Sha256);
                hash.addData(&file);
                state.hash = hash.result();
            }
            state.size = info.size();
            state.modifiedMs = info.lastModified().toMSecsSinceEpoch();
        }
        tree[QDir(root).relativeFilePath(path)] = state;
    }
    return tree;
}

// The relative paths added, removed or changed from `before` to `after`, sorted.
inline QStringList changedPaths(const TreeSnapshot& before, const TreeSnapshot& after) {
    std::set<QString> changed;
    for (const auto& [path, state] : before) {
        const auto found = after.find(path);
        if (found == after.end() || !(found->second == state))
            changed.insert(path);
    }
    for (const auto& entry : after)
        if (!before.count(entry.first))
            changed.insert(entry.first);
    return QStringList(changed.begin(), changed.end());
}

} // namespace testsupport
