// The language actions: each carries its locale, the current one is disabled, a choice is stored for start-up.
#include "ui/LanguageController.h"

#include "core/Startup.h"

#include <QAction>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

TEST(LanguageController, the_current_language_cannot_be_chosen_and_a_choice_is_what_start_up_reads_next) {
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

    QSignalSpy changed(&languages, &LanguageController::changed);
    polish.trigger();
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(QLocale().name(), QStringLiteral("pl_PL"));
    EXPECT_FALSE(polish.isEnabled());
    EXPECT_TRUE(czech.isEnabled());
    EXPECT_EQ(chooseLocaleName(), QStringLiteral("pl_PL"));
    languages.change(QLocale(QLocale::English, QLocale::UnitedStates));
}
