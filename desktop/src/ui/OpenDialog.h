// Lets the user pick one of the supported storages, or any directory, as the source of recordings.
#pragma once

#include <QDialog>
#include <QStorageInfo>

#include <functional>
#include <optional>

class QDialogButtonBox;
class QItemSelection;
class QListView;
class OpenDialogItemModel;
class StorageWatcher;

// GUI thread only.
//   OpenDialog dialog(this, watcher);
//   if (dialog.exec() == QDialog::Accepted) loadDirectory(dialog.result().path);
class OpenDialog : public QDialog {
    Q_OBJECT
public:
    struct Result {
        QStorageInfo storage; // the storage holding path
        QString path;         // a storage's root path, or the absolute path of the chosen directory
    };
    // Shows a directory chooser; returns the chosen directory, or an empty string when cancelled.
    using DirectoryChooser = std::function<QString(QWidget* parent, const QString& caption, const QString& start)>;

    OpenDialog(QWidget* parent, StorageWatcher* watcher);

    // Only after the dialog was accepted; throws std::logic_error otherwise.
    Result result() const;
    bool hasResult() const { return m_result.has_value(); }

    // Tests answer the chooser here; by default it is QFileDialog's.
    void setDirectoryChooser(DirectoryChooser chooser) { m_chooseDirectory = std::move(chooser); }

    QListView* listView() const { return m_listView; }
    QDialogButtonBox* buttonBox() const { return m_buttonBox; }

public slots:
    void onSelectionChanged(const QItemSelection& selected);
    void onAccept();

private:
    void updateOpenButton();
    QString chooseDirectory();

    OpenDialogItemModel* m_model;
    QListView* m_listView;
    QDialogButtonBox* m_buttonBox;
    DirectoryChooser m_chooseDirectory;
    std::optional<Result> m_result;
};
