// The live language switch: the translators, the language actions and the stored choice.
//
// Lives on the GUI thread and owns the window's translators (its own texts and Qt's) and one action group
// whose actions carry their locale; it removes the start-up translators when the user first chooses.
// The action of the current language is disabled, as it cannot be chosen again.
#pragma once

#include <QLocale>
#include <QObject>
#include <QPointer>
#include <QTranslator>

#include <utility>
#include <vector>

class QAction;
class QActionGroup;

class LanguageController : public QObject {
    Q_OBJECT
public:
    // `languages`: each action with the locale it chooses.
    LanguageController(const std::vector<std::pair<QAction*, QLocale>>& languages, QObject* parent);

    // The start-up translation, given way to on the first change.
    void setStartupTranslators(const std::vector<QTranslator*>& translators);
    QActionGroup* actions() const { return m_actions; }

public slots:
    // Makes `locale` the default, loads its translations, stores it under "locale" and disables its action.
    void change(const QLocale& locale);
    // Enables every action but the one of the current default locale's language.
    void updateActions();

signals:
    // After the translators changed: the owner retranslates what Qt's change event does not reach.
    void changed(const QLocale& locale);

private:
    QActionGroup* m_actions;
    QTranslator m_translator;
    QTranslator m_qtTranslator; // Qt's own texts in the chosen language
    std::vector<QPointer<QTranslator>> m_startupTranslators;
};
