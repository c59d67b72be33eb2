// The modal dialog in which the user chooses how a cut of video is saved.
#include "ui/EncodingSettingsDialog.h"

#include "core/ExportTarget.h"
#include "core/SettingsKeys.h"
#include "core/Startup.h"
#include "ui/Icons.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QGroupBox>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QToolButton>
#include <QToolTip>
#include <QVBoxLayout>

#include <tuple>

namespace {

const QString kMkvExtension = QStringLiteral("mkv");
const QString kMovExtension = QStringLiteral("mov");
const QString kMp4Extension = QStringLiteral("mp4");

// A reason that keeps Save disabled stands out from a plain note.
const QString kBlockingStyle = QStringLiteral("color: #b3261e;");

QString native(const QString& path) { return QDir::toNativeSeparators(path); }

template <typename Widget>
Widget* named(Widget* widget, const char* name) {
    widget->setObjectName(QLatin1String(name));
    return widget;
}

} // namespace

EncodingSettingsDialog::EncodingSettingsDialog(QWidget* parent, const QString& filePath, bool rearCameraAvailable)
    : QDialog(parent) {
    setWindowTitle(tr("Encoding settings"));
    setModal(true);

    auto* optionsGroup = named(new QGroupBox(tr("Video file options")), "optionsGroupBox");
    m_onlyVideo = named(new QCheckBox(tr("Only video")), "onlyVideoCheckBox");
    m_forceEncoding = named(new QCheckBox(tr("Force reencoding")), "forceEncodingChkBox");
    m_burnIn = named(new QCheckBox(tr("Burn in time, speed and position")), "burnInOverlayCheckBox");
    m_burnIn->setToolTip(tr("The text is drawn into the pictures, so the cut is always re-encoded."));
    auto* optionsLayout = named(new QVBoxLayout(optionsGroup), "verticalLayout_5");
    optionsLayout->addWidget(m_onlyVideo);
    optionsLayout->addWidget(m_forceEncoding);
    optionsLayout->addWidget(m_burnIn);

    auto* containerGroup = named(new QGroupBox(tr("Container type:")), "conteinerGroupBox");
    m_mkv = named(new QRadioButton(kMkvExtension), "mkvRadioBtn");
    m_mov = named(new QRadioButton(kMovExtension), "movRadioBtn");
    m_mp4 = named(new QRadioButton(kMp4Extension), "mp4RadioBtn");
    auto* containerLayout = named(new QVBoxLayout(containerGroup), "verticalLayout_3");
    containerLayout->addWidget(m_mkv);
    containerLayout->addWidget(m_mov);
    containerLayout->addWidget(m_mp4);

    auto* cameraGroup = named(new QGroupBox(tr("Camera")), "cameraGroupBox");
    m_mainCamera = named(new QRadioButton(tr("Main")), "mainCameraRadioBtn");
    m_rearCamera = named(new QRadioButton(tr("Rear")), "rearCameraRadioBtn");
    auto* cameraLayout = named(new QVBoxLayout(cameraGroup), "verticalLayout_2");
    cameraLayout->addWidget(m_mainCamera);
    cameraLayout->addWidget(m_rearCamera);
    m_mainCamera->setChecked(true);
    m_rearCamera->setEnabled(rearCameraAvailable);

    auto* topLayout = named(new QHBoxLayout, "topHLayout");
    topLayout->addWidget(optionsGroup);
    topLayout->addWidget(containerGroup);
    topLayout->addWidget(cameraGroup);

    m_filePathEdit = named(new QLineEdit, "filePathEdit");
    m_filePathEdit->setMinimumWidth(420);
    m_filePathButton = named(new QToolButton, "filePathButton");
    m_filePathButton->setIcon(reelvueIcon(QStringLiteral("open-directory")));
    auto* bottomLayout = named(new QHBoxLayout, "bottomHLayout");
    bottomLayout->addWidget(m_filePathEdit);
    bottomLayout->addWidget(m_filePathButton);

    m_pathNote = named(new QLabel, "pathNoteLabel");
    m_pathNote->setWordWrap(true);
    m_pathNote->hide();

    m_buttons = named(new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel), "dialogButtonBox");
    m_buttons->button(QDialogButtonBox::Save)->setText(tr("Save"));
    m_buttons->button(QDialogButtonBox::Cancel)->setText(tr("Cancel"));

    auto* layout = named(new QVBoxLayout(this), "verticalLayout");
    layout->addLayout(topLayout);
    layout->addLayout(bottomLayout);
    layout->addWidget(m_pathNote);
    layout->addWidget(m_buttons);

    m_movFilter = tr("QuickTime file format (*.%1)").arg(kMovExtension);
    m_mkvFilter = tr("Matroska Multimedia file format (*.%1)").arg(kMkvExtension);
    m_mp4Filter = tr("MPEG-4 Part 12 file format (*.%1)").arg(kMp4Extension);

    // The container follows the proposed name; anything else starts as MP4.
    const QString suffix = QFileInfo(filePath).suffix().toLower();
    (suffix == kMkvExtension ? m_mkv : suffix == kMovExtension ? m_mov : m_mp4)->setChecked(true);

    connect(m_burnIn, &QCheckBox::toggled, this, &EncodingSettingsDialog::onBurnInToggled);
    connect(m_filePathButton, &QToolButton::clicked, this, &EncodingSettingsDialog::onFilePathButton);
    connect(m_filePathEdit, &QLineEdit::textChanged, this, &EncodingSettingsDialog::onFilePathChanged);
    for (QRadioButton* button : {m_mkv, m_mov, m_mp4})
        connect(button, &QRadioButton::toggled, this, &EncodingSettingsDialog::onContainerChanged);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    m_filePathEdit->setText(filePath);
    onFilePathChanged(m_filePathEdit->text()); // an empty proposal is checked too
}

QString EncodingSettingsDialog::filePath() const {
    return m_filePathEdit->text();
}

EncodingSettings EncodingSettingsDialog::settings() const {
    EncodingSettings settings;
    settings.onlyVideo = m_onlyVideo->isChecked();
    settings.forceReencoding = m_forceEncoding->isChecked();
    settings.camera = m_mainCamera->isChecked() ? 0 : 1;
    settings.filePath = m_filePathEdit->text();
    settings.rotation = 0;
    settings.burnInOverlay = m_burnIn->isChecked();
    return settings;
}

QString EncodingSettingsDialog::pathNote() const {
    return m_pathNote->isHidden() ? QString() : m_pathNote->text();
}

void EncodingSettingsDialog::setCardFolder(const QString& folder) {
    m_cardFolder = folder;
    onFilePathChanged(m_filePathEdit->text());
}

void EncodingSettingsDialog::restoreChoices() {
    using namespace settingskeys;
    const QSettings store(kOrganizationName, kApplicationName);
    const QString container = store.value(kCutContainer).toString();
    for (auto [button, extension] : {std::pair{m_mkv, kMkvExtension}, {m_mov, kMovExtension}, {m_mp4, kMp4Extension}})
        if (container == extension)
            button->setChecked(true);
    if (store.value(kCutCamera).toInt() == 1 && m_rearCamera->isEnabled())
        m_rearCamera->setChecked(true);
    m_forceEncoding->setChecked(store.value(kCutForceReencoding).toBool());
    m_burnIn->setChecked(store.value(kCutBurnInOverlay).toBool());
}

void EncodingSettingsDialog::storeChoices() const {
    using namespace settingskeys;
    QSettings store(kOrganizationName, kApplicationName);
    store.setValue(kCutContainer, chosenExtension());
    store.setValue(kCutCamera, m_mainCamera->isChecked() ? 0 : 1);
    // Re-encoding as the user chose it: the overlay's forcing is not a choice.
    store.setValue(kCutForceReencoding, m_burnIn->isChecked() ? m_forceEncodingChosen : m_forceEncoding->isChecked());
    store.setValue(kCutBurnInOverlay, m_burnIn->isChecked());
}

void EncodingSettingsDialog::onBurnInToggled(bool on) {
    if (on) {
        m_forceEncodingChosen = m_forceEncoding->isChecked();
        m_forceEncoding->setChecked(true);
    } else {
        m_forceEncoding->setChecked(m_forceEncodingChosen);
    }
    m_forceEncoding->setEnabled(!on);
}

QString EncodingSettingsDialog::chosenExtension() const {
    if (m_mkv->isChecked())
        return kMkvExtension;
    if (m_mov->isChecked())
        return kMovExtension;
    return kMp4Extension;
}

QString EncodingSettingsDialog::filterForChosenContainer() const {
    if (m_mkv->isChecked())
        return m_mkvFilter;
    if (m_mov->isChecked())
        return m_movFilter;
    return m_mp4Filter;
}

QPushButton* EncodingSettingsDialog::acceptButton() const {
    return m_buttons->button(QDialogButtonBox::Save);
}

void EncodingSettingsDialog::onFilePathButton() {
    const QString chosen =
        QFileDialog::getSaveFileName(this, tr("Cut to"), m_filePathEdit->text(), filterForChosenContainer());
    if (!chosen.isEmpty())
        m_filePathEdit->setText(chosen);
}

void EncodingSettingsDialog::onContainerChanged() {
    const QString extension = chosenExtension();
    QString path = m_filePathEdit->text();
    if (QFileInfo(path).suffix() == extension) {
        onFilePathChanged(path); // the same text may have become valid or invalid
        return;
    }
    // Only a dot in the file name starts a suffix; one in a folder name does not.
    const int nameStart = path.lastIndexOf(QLatin1Char('/')) + 1;
    const int dot = path.lastIndexOf(QLatin1Char('.'));
    if (dot >= nameStart && dot >= 0)
        path.truncate(dot);
    m_filePathEdit->setText(path + QLatin1Char('.') + extension);
}

std::pair<QString, QString> EncodingSettingsDialog::validate(const QString& path) const {
    if (path.isEmpty())
        return {tr("File path is empty"), tr("File path is empty")};
    const QString extension = chosenExtension();
    if (QFileInfo(path).suffix().toLower() != extension) {
        const QString message = tr("Invalid file extesion (must be: '%1' )").arg(extension);
        return {message, message};
    }
    const QString invalid = tr("Invalid file path");
    const QFileInfo info(path);
    const QString folder = info.absolutePath();
    if (!QFileInfo(folder).isDir())
        return {invalid, tr("The folder %1 does not exist.").arg(native(folder))};
    if (exporttarget::folderRefusal(folder, {m_cardFolder, true}))
        return {invalid, tr("%1 is on the card the recordings come from: nothing is written there.").arg(native(folder))};
    if (info.isDir())
        return {invalid, tr("%1 is a folder.").arg(native(path))};
    // Opening for appending tells whether the file can be written without harming one that exists.
    QFile file(path);
    const bool existed = file.exists();
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append) || !file.isWritable())
        return {invalid, existed ? tr("%1 cannot be written.").arg(native(path))
                                 : tr("The folder %1 cannot be written to.").arg(native(folder))};
    file.close();
    if (!existed)
        file.remove();
    return {};
}

void EncodingSettingsDialog::onFilePathChanged(const QString& text) {
    QString note;
    std::tie(m_validationMessage, note) = validate(text);
    QPushButton* button = acceptButton();
    button->setEnabled(m_validationMessage.isEmpty());
    if (m_validationMessage.isEmpty() && QFileInfo(text).isFile())
        note = tr("%1 exists: Save asks before replacing it.").arg(QFileInfo(text).fileName());
    m_pathNote->setText(note);
    m_pathNote->setStyleSheet(m_validationMessage.isEmpty() ? QString() : kBlockingStyle);
    m_pathNote->setVisible(!note.isEmpty());
    if (m_validationMessage.isEmpty())
        QToolTip::hideText();
    else
        QToolTip::showText(button->mapToGlobal(QPoint(0, button->height())), m_validationMessage, button);
}
