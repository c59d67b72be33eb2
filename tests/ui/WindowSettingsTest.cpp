// The window's settings record: which plots a stored list checks, and a save that loads back as it was.
#include "ui/WindowSettings.h"

#include "core/SettingsKeys.h"
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

TEST_F(WindowSettingsTest, checked_plots_are_the_stored_usable_types_or_the_speed_plot_on_first_start) {
    const std::set<PlotType> speedAndAltitude{PlotType::Speed, PlotType::Altitude};
    const struct {
        std::optional<std::vector<int>> stored;
        std::set<PlotType> available;
        std::set<PlotType> checked;
        std::vector<std::string> logged;
    } cases[] = {
        {std::nullopt, speedAndAltitude, {PlotType::Speed}, {}},
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

TEST_F(WindowSettingsTest, a_saved_record_loads_back_with_its_log_lines_and_keeps_the_locale_apart) {
    WindowSettings first = WindowSettings::load();
    EXPECT_TRUE(first.geometry.isEmpty());
    EXPECT_FALSE(first.plots || first.mainCamera || first.rearCamera) << "nothing stored yet";

    WindowSettings saved;
    saved.geometry = "geometry";
    saved.middleSplitter = "middle";
    saved.plots = std::vector<int>{1, 4};
    saved.rearCamera = false;
    saved.save();
    WindowSettings::saveLocale(QStringLiteral("cs_CZ"));
    const WindowSettings loaded = WindowSettings::load();
    EXPECT_EQ(loaded.geometry, QByteArray("geometry"));
    EXPECT_EQ(loaded.middleSplitter, QByteArray("middle"));
    EXPECT_EQ(loaded.plots, saved.plots);
    EXPECT_EQ(loaded.rearCamera, std::optional<bool>(false));
    EXPECT_FALSE(loaded.mainCamera);
    EXPECT_EQ(chooseLocaleName(), QStringLiteral("cs_CZ")) << "start-up reads the key the window writes";
    EXPECT_EQ(log.linesContaining("INFO ui.MainWindow - Read app state from").size(), 2u);
    EXPECT_EQ(log.linesContaining("INFO ui.MainWindow - Save app state to").size(), 1u);
}
