// Modal progress window of a background operation, with an estimate of the time that remains.
#pragma once

#include <QDialog>
#include <QElapsedTimer>

class QLabel;
class QProgressBar;
class QPushButton;

class ProgressDialog : public QDialog {
    Q_OBJECT
public:
    explicit ProgressDialog(const QString& title, QWidget* parent = nullptr);

    int value() const;
    QString remainingTimeText() const;

public slots:
    // percent from 0 to 100
    void setProgress(int percent);

signals:
    void canceled();

protected:
    void changeEvent(QEvent* event) override;
    void reject() override; // Escape and the close button cancel, like the button

private:
    void retranslate();

    QProgressBar* m_progressBar;
    QLabel* m_remainingTimeLabel;
    QPushButton* m_cancelButton;
    QElapsedTimer m_elapsed;
    int m_percent = 0;
};
