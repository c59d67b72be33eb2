// The modal dialog in which the user chooses how a cut of video is saved: streams, re-encoding, the
// burned-in overlay, container, camera and output file; under the path it says why Save is disabled.
#pragma once

#include "core/EncodingSettings.h"

#include <QDialog>

#include <utility>

class QCheckBox;
class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QToolButton;

class EncodingSettingsDialog : public QDialog {
    Q_OBJECT
    Q_PROPERTY(QString filePath READ filePath)
public:
    // filePath: the proposed output file; rearCameraAvailable: whether the cut has rear recordings to offer.
    EncodingSettingsDialog(QWidget* parent, const QString& filePath, bool rearCameraAvailable);

    QString filePath() const;
    // The choices, read after exec() returned Accepted; rotation is left to the caller.
    EncodingSettings settings() const;
    // The message shown below the Save button, or empty when the path is valid.
    QString validationMessage() const { return m_validationMessage; }
    // What the line under the path says: why Save is disabled, or that an existing file will be replaced
    // only when the user agrees; empty when there is nothing to say.
    QString pathNote() const;

    // The card the cut is made from: nothing may be written inside it.
    void setCardFolder(const QString& folder);
    // The container, camera, re-encoding and overlay chosen for the last cut, from the user's settings; and
    // storing the present ones there.
    void restoreChoices();
    void storeChoices() const;

public slots:
    void onFilePathButton();
    void onFilePathChanged(const QString& text);
    void onContainerChanged();

private:
    QString chosenExtension() const;
    QString filterForChosenContainer() const;
    // The tool tip's message and the line's fuller reason.
    std::pair<QString, QString> validate(const QString& path) const;
    void onBurnInToggled(bool on);
    QPushButton* acceptButton() const;

    QCheckBox* m_onlyVideo;
    QCheckBox* m_forceEncoding;
    QCheckBox* m_burnIn;
    bool m_forceEncodingChosen = false; // the user's own choice, given back when the overlay goes off
    QRadioButton* m_mkv;
    QRadioButton* m_mov;
    QRadioButton* m_mp4;
    QRadioButton* m_mainCamera;
    QRadioButton* m_rearCamera;
    QLineEdit* m_filePathEdit;
    QToolButton* m_filePathButton;
    QLabel* m_pathNote;
    QDialogButtonBox* m_buttons;
    QString m_movFilter;
    QString m_mkvFilter;
    QString m_mp4Filter;
    QString m_validationMessage;
    QString m_cardFolder;
};
