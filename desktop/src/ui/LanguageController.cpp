#include "ui/LanguageController.h"

#include "core/Startup.h"
#include "logging/Logging.h"
#include "ui/WindowSettings.h"

#include <QAction>
#include <QActionGroup>
#include <QCoreApplication>
#include <QDir>

#include <algorithm>

namespace {
constexpr const char* kLogger = "ui.MainWindow"; // its lines are the window's
} // namespace

LanguageController::LanguageController(const std::vector<std::pair<QAction*, QLocale>>& languages, QObject* parent)
    : QObject(parent), m_actions(new QActionGroup(this)) {
    m_actions->setExclusionPolicy(QActionGroup::ExclusionPolicy::None);
    for (const auto& [action, locale] : languages) {
        action->setData(locale);
        m_actions->addAction(action);
    }
    connect(m_actions, &QActionGroup::triggered, this, [this](QAction* action) { change(action->data().toLocale()); });
}

void LanguageController::setStartupTranslators(const std::vector<QTranslator*>& translators) {
    m_startupTranslators.assign(translators.begin(), translators.end());
}

void LanguageController::change(const QLocale& locale) {
    LOG_INFO(kLogger, "Changing locale to '{}'", locale.name().toStdString());
    QLocale::setDefault(locale);
    // The start-up translation and an earlier choice give way, so that English really is English.
    for (const QPointer<QTranslator>& translator : m_startupTranslators)
        if (translator)
            QCoreApplication::removeTranslator(translator);
    QCoreApplication::removeTranslator(&m_translator);
    QCoreApplication::removeTranslator(&m_qtTranslator);
    if (loadQtTranslation(m_qtTranslator, locale))
        QCoreApplication::installTranslator(&m_qtTranslator);
    const QString directory = resourceDirectory().absolutePath() + QLatin1Char('/');
    if (m_translator.load(QLocale(), QStringLiteral("video-player-ui"), QStringLiteral("."), directory, QStringLiteral(".qm")))
        QCoreApplication::installTranslator(&m_translator);
    emit changed(locale); // also for English, when no translator was installed and no change event comes
    updateActions();
    WindowSettings::saveLocale(locale.name());
}

void LanguageController::updateActions() {
    QLocale::Language current = QLocale().language();
    // Without a translation of its own (C.UTF-8, German) the window shows its English texts.
    const QList<QAction*> actions = m_actions->actions();
    if (std::none_of(actions.begin(), actions.end(),
                     [current](QAction* action) { return action->data().toLocale().language() == current; }))
        current = QLocale::English;
    for (QAction* action : actions)
        action->setEnabled(action->data().toLocale().language() != current);
}
