#include "ui/ProgressDialog.h"

#include <QEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTime>
#include <QVBoxLayout>

ProgressDialog::ProgressDialog(const QString& title, QWidget* parent)
    : QDialog(parent), m_progressBar(new QProgressBar(this)), m_remainingTimeLabel(new QLabel(this)),
      m_cancelButton(new QPushButton(this)) {
    setObjectName(QStringLiteral("ProgressDialog"));
    setWindowTitle(title);
    setModal(true);
    setMinimumWidth(360);
    auto* layout = new QVBoxLayout(this);
    layout->setObjectName(QStringLiteral("verticalLayout"));
    m_progressBar->setObjectName(QStringLiteral("progressBar"));
    m_progressBar->setRange(0, 100);
    m_progressBar->setValue(0);
    m_remainingTimeLabel->setObjectName(QStringLiteral("remainingTimeLabel"));
    m_cancelButton->setObjectName(QStringLiteral("cancelButton"));
    layout->addWidget(m_progressBar);
    layout->addWidget(m_remainingTimeLabel);
    layout->addWidget(m_cancelButton, 0, Qt::AlignRight);
    connect(m_cancelButton, &QPushButton::clicked, this, &ProgressDialog::canceled);
    retranslate();
    m_elapsed.start();
}

int ProgressDialog::value() const { return m_percent; }

QString ProgressDialog::remainingTimeText() const { return m_remainingTimeLabel->text(); }

void ProgressDialog::setProgress(int percent) {
    m_percent = qBound(0, percent, 100);
    m_progressBar->setValue(m_percent);
    retranslate();
}

void ProgressDialog::retranslate() {
    m_cancelButton->setText(tr("Cancel"));
    // An estimate from the first percent alone jumps about too much to be useful.
    if (m_percent < 1 || m_elapsed.elapsed() < 500) {
        m_remainingTimeLabel->setText(tr("Calculating remaining time..."));
        return;
    }
    const qint64 remainingMs = m_elapsed.elapsed() * (100 - m_percent) / m_percent;
    const QTime remaining = QTime(0, 0).addMSecs(qMin<qint64>(remainingMs, 24 * 3600 * 1000 - 1));
    m_remainingTimeLabel->setText(tr("Remaining time: ") + remaining.toString(QStringLiteral("hh:mm:ss")));
}

void ProgressDialog::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QDialog::changeEvent(event);
}

void ProgressDialog::reject() { emit canceled(); }
