// The modal dialog in which the user chooses how a cut of video is saved.
#include "ui/EncodingSettingsDialog.h"

#include "ui/Icons.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QToolButton>
#include <QToolTip>
#include <QVBoxLayout>

namespace {

const QString kMkvExtension = QStringLiteral("mkv");
const QString kMovExtension = QStringLiteral("mov");
const QString kMp4Extension = QStringLiteral("mp4");

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
    auto* optionsLayout = named(new QVBoxLayout(optionsGroup), "verticalLayout_5");
    optionsLayout->addWidget(m_onlyVideo);
    optionsLayout->addWidget(m_forceEncoding);

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

    m_buttons = named(new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel), "dialogButtonBox");
    m_buttons->button(QDialogButtonBox::Save)->setText(tr("Save"));
    m_buttons->button(QDialogButtonBox::Cancel)->setText(tr("Cancel"));

    auto* layout = named(new QVBoxLayout(this), "verticalLayout");
    layout->addLayout(topLayout);
    layout->addLayout(bottomLayout);
    layout->addWidget(m_buttons);

    m_movFilter = tr("QuickTime file format (*.%1)").arg(kMovExtension);
    m_mkvFilter = tr("Matroska Multimedia file format (*.%1)").arg(kMkvExtension);
    m_mp4Filter = tr("MPEG-4 Part 12 file format (*.%1)").arg(kMp4Extension);

    // The container follows the proposed name; anything else starts as MP4.
    const QString suffix = QFileInfo(filePath).suffix().toLower();
    (suffix == kMkvExtension ? m_mkv : suffix == kMovExtension ? m_mov : m_mp4)->setChecked(true);

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
    return settings;
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

QString EncodingSettingsDialog::validate(const QString& path) const {
    if (path.isEmpty())
        return tr("File path is empty");
    const QString extension = chosenExtension();
    if (QFileInfo(path).suffix().toLower() != extension)
        return tr("Invalid file extesion (must be: '%1' )").arg(extension);
    // Opening for appending tells whether the file can be written without harming one that exists.
    QFile file(path);
    const bool existed = file.exists();
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append) || !file.isWritable())
        return tr("Invalid file path");
    file.close();
    if (!existed)
        file.remove();
    return {};
}

void EncodingSettingsDialog::onFilePathChanged(const QString& text) {
    m_validationMessage = validate(text);
    QPushButton* button = acceptButton();
    button->setEnabled(m_validationMessage.isEmpty());
    if (m_validationMessage.isEmpty())
        QToolTip::hideText();
    else
        QToolTip::showText(button->mapToGlobal(QPoint(0, button->height())), m_validationMessage, button);
}
