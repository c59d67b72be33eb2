// The open dialog: a list of the supported storages and a row that asks for any directory instead.
#include "ui/OpenDialog.h"

#include "core/IsSuitablePath.h"
#include "logging/Logging.h"
#include "ui/OpenDialogItemModel.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QVBoxLayout>

#include <stdexcept>

namespace {

constexpr const char* kLogger = "ui.OpenDialog";

// Where the directory chooser starts: the last directory chosen in this run, the home folder at first.
QString& lastChosenDirectory() {
    static QString directory = QStandardPaths::writableLocation(QStandardPaths::HomeLocation);
    return directory;
}

} // namespace

OpenDialog::OpenDialog(QWidget* parent, StorageWatcher* watcher)
    : QDialog(parent), m_model(new OpenDialogItemModel(watcher, this)), m_listView(new QListView(this)),
      m_buttonBox(new QDialogButtonBox(QDialogButtonBox::Open | QDialogButtonBox::Cancel, this)) {
    setObjectName(QStringLiteral("OpenDialog"));
    setWindowTitle(tr("Open external drive"));
    auto* layout = new QVBoxLayout(this);
    layout->setObjectName(QStringLiteral("verticalLayout"));
    m_listView->setObjectName(QStringLiteral("listView"));
    m_listView->setSelectionMode(QAbstractItemView::SingleSelection);
    m_listView->setModel(m_model);
    m_buttonBox->setObjectName(QStringLiteral("buttonBox"));
    m_buttonBox->button(QDialogButtonBox::Open)->setText(tr("Open"));
    m_buttonBox->button(QDialogButtonBox::Cancel)->setText(tr("Cancel"));
    layout->addWidget(m_listView);
    layout->addWidget(m_buttonBox);
    resize(420, 260);

    m_chooseDirectory = [](QWidget* parentWidget, const QString& caption, const QString& start) {
        return QFileDialog::getExistingDirectory(parentWidget, caption, start, QFileDialog::ShowDirsOnly);
    };

    connect(m_listView->selectionModel(), &QItemSelectionModel::selectionChanged, this, &OpenDialog::onSelectionChanged);
    // A removed storage takes its selection with it; "Open" must follow.
    connect(m_model, &QAbstractItemModel::rowsRemoved, this, &OpenDialog::updateOpenButton);
    connect(m_buttonBox, &QDialogButtonBox::accepted, this, &OpenDialog::onAccept);
    connect(m_buttonBox, &QDialogButtonBox::rejected, this, &OpenDialog::reject);
    updateOpenButton();
}

OpenDialog::Result OpenDialog::result() const {
    if (!m_result)
        throw std::logic_error("There is no result in OpenDialog");
    return *m_result;
}

void OpenDialog::onSelectionChanged(const QItemSelection& /*selected*/) { updateOpenButton(); }

void OpenDialog::updateOpenButton() {
    m_buttonBox->button(QDialogButtonBox::Open)->setEnabled(m_listView->selectionModel()->hasSelection());
}

void OpenDialog::onAccept() {
    const QModelIndexList selected = m_listView->selectionModel()->selectedIndexes();
    if (selected.isEmpty())
        return;
    const QModelIndex row = selected.first();
    if (!m_model->isExtraRow(row)) {
        const QStorageInfo storage = m_model->storageAt(row);
        m_result = Result{storage, storage.rootPath()};
        accept();
        return;
    }

    const QString directory = chooseDirectory();
    if (directory.isEmpty())
        return; // cancelled: the dialog stays
    if (!IsSuitablePath(directory)) {
        QMessageBox::warning(this, windowTitle(), tr("Specified directory is not suitable"), QMessageBox::Ok);
        return;
    }
    const QStorageInfo storage(directory);
    if (storage.isValid())
        LOG_INFO(kLogger, "User choosed directory on storage {}", storage.displayName().toStdString());
    m_result = Result{storage, QDir(directory).absolutePath()};
    accept();
}

QString OpenDialog::chooseDirectory() {
    const QString directory = m_chooseDirectory(this, tr("Open directory"), lastChosenDirectory());
    if (!directory.isEmpty())
        lastChosenDirectory() = directory;
    return directory;
}
