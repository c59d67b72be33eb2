// The language actions: each carries its locale; the current one, also as start-up chose it, is disabled, and
// English when the system's language is none of them.
#include "ui/LanguageController.h"

#include <QAction>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

TEST(LanguageController, the_language_start_up_chose_cannot_be_chosen_again_and_each_action_carries_its_locale) {
    QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    QLocale::setDefault(QLocale(QLocale::Czech, QLocale::CzechRepublic)); // as start-up chose it
    QAction english, polish, czech;
    LanguageController languages({{&english, QLocale(QLocale::English, QLocale::UnitedStates)},
                                  {&polish, QLocale(QLocale::Polish, QLocale::Poland)},
                                  {&czech, QLocale(QLocale::Czech, QLocale::CzechRepublic)}},
                                 nullptr);
    languages.updateActions();
    EXPECT_FALSE(czech.isEnabled());
    EXPECT_TRUE(english.isEnabled() && polish.isEnabled());
    // A system locale of no offered language (C.UTF-8, German) shows the English texts.
    for (const QLocale& system : {QLocale::c(), QLocale(QLocale::German, QLocale::Germany)}) {
        QLocale::setDefault(system);
        languages.updateActions();
        EXPECT_FALSE(english.isEnabled()) << system.name().toStdString();
        EXPECT_TRUE(czech.isEnabled() && polish.isEnabled());
    }

    polish.trigger();
    EXPECT_EQ(QLocale().name(), QStringLiteral("pl_PL"));
    EXPECT_FALSE(polish.isEnabled());
    EXPECT_TRUE(czech.isEnabled());
    languages.change(QLocale(QLocale::English, QLocale::UnitedStates));
}
