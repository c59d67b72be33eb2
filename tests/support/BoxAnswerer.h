// Answers every message box that opens, as a user would, by pressing the button with the given text.
#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <string>
#include <vector>

namespace testsupport {

class BoxAnswerer {
public:
    explicit BoxAnswerer(QString button) : m_button(std::move(button)) {
        m_timer.setInterval(10);
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box || !box->isVisible())
                return;
            texts.push_back(box->text().toStdString());
            titles.push_back(box->windowTitle().toStdString());
            QStringList offered;
            for (QAbstractButton* button : box->buttons())
                offered << button->text();
            buttons.push_back(offered.join(QLatin1Char('|')).toStdString());
            for (QAbstractButton* button : box->buttons())
                if (button->text() == m_button) {
                    button->click();
                    return;
                }
            box->buttons().last()->click(); // an unexpected box must not hang the test
        });
        m_timer.start();
    }

    std::vector<std::string> texts;  // of the boxes answered, in order
    std::vector<std::string> titles;
    std::vector<std::string> buttons; // each box's button texts, joined by '|'

private:
    QString m_button;
    QTimer m_timer;
};

} // namespace testsupport
