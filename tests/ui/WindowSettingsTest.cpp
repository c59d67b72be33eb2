// The window's settings record: which plots a stored list checks, and keys that were never written.
#include "ui/WindowSettings.h"

#include "core/Startup.h"
#include "logging/Logging.h"
#include "support/TestSupport.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct WindowSettingsTest : testing::Test {
    void SetUp() override {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settingsDir.path());
        logging::setLevel(logging::DEBUG);
    }
    QTemporaryDir settingsDir;
    testsupport::LogCapture log;
};

} // namespace

TEST_F(WindowSettingsTest, checked_plots_are_the_stored_types_that_can_be_shown_and_every_other_is_logged) {
    const std::set<PlotType> speedAndAltitude{PlotType::Speed, PlotType::Altitude};
    const struct {
        std::optional<std::vector<int>> stored;
        std::set<PlotType> available;
        std::set<PlotType> checked;
        std::vector<std::string> logged;
    } cases[] = {
        {std::nullopt, {PlotType::Altitude}, {}, {"ERROR ui.MainWindow - Failed to find speed plot!"}},
        {std::vector<int>{}, speedAndAltitude, {}, {}}, // the user hid them all
        {std::vector<int>{0, 2, 9, 5},
         speedAndAltitude,
         {PlotType::Altitude},
         {"WARN ui.MainWindow - Empty plot is settings, skip", "ERROR ui.MainWindow - Failed to find plot QAction for type: 9",
          "DEBUG ui.MainWindow - Plot 5 is disabled, but visibility is true in stored settings"}},
    };
    for (const auto& c : cases) {
        const size_t before = log.lines().size();
        WindowSettings settings;
        settings.plots = c.stored;
        EXPECT_EQ(settings.checkedPlots(c.available), c.checked);
        const std::vector<std::string> lines = log.lines();
        ASSERT_EQ(lines.size() - before, c.logged.size());
        for (size_t i = 0; i < c.logged.size(); ++i)
            EXPECT_NE(lines[before + i].find(c.logged[i]), std::string::npos) << lines[before + i];
    }
}

// A full round trip is in MainWindowTest (choices survive a restart); here what it does not reach.
TEST_F(WindowSettingsTest, keys_never_written_stay_absent_and_start_up_reads_the_locale_the_window_wrote) {
    WindowSettings saved;
    saved.rearCamera = false;
    saved.save();
    WindowSettings::saveLocale(QStringLiteral("cs_CZ"));
    const WindowSettings loaded = WindowSettings::load();
    EXPECT_EQ(loaded.rearCamera, std::optional<bool>(false));
    EXPECT_FALSE(loaded.mainCamera) << "a camera never chosen keeps the window's default";
    EXPECT_TRUE(loaded.geometry.isEmpty());
    EXPECT_EQ(chooseLocaleName(), QStringLiteral("cs_CZ"));
}
