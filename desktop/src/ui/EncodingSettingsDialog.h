// The modal dialog in which the user chooses how a cut of video is saved: streams, re-encoding,
// container, camera and output file.
#pragma once

#include "core/EncodingSettings.h"

#include <QDialog>

class QCheckBox;
class QDialogButtonBox;
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

public slots:
    void onFilePathButton();
    void onFilePathChanged(const QString& text);
    void onContainerChanged();

private:
    QString chosenExtension() const;
    QString filterForChosenContainer() const;
    QString validate(const QString& path) const;
    QPushButton* acceptButton() const;

    QCheckBox* m_onlyVideo;
    QCheckBox* m_forceEncoding;
    QRadioButton* m_mkv;
    QRadioButton* m_mov;
    QRadioButton* m_mp4;
    QRadioButton* m_mainCamera;
    QRadioButton* m_rearCamera;
    QLineEdit* m_filePathEdit;
    QToolButton* m_filePathButton;
    QDialogButtonBox* m_buttons;
    QString m_movFilter;
    QString m_mkvFilter;
    QString m_mp4Filter;
    QString m_validationMessage;
};
