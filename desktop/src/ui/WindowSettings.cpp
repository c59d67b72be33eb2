#include "ui/WindowSettings.h"

#include "core/SettingsKeys.h"
#include "core/Startup.h"
#include "logging/Logging.h"

#include <QMainWindow>
#include <QScreen>
#include <QSettings>
#include <QSplitter>

namespace {
constexpr const char* kLogger = "ui.MainWindow"; // its lines are the window's

QSettings userSettings() { return QSettings(kOrganizationName, kApplicationName); }

template <typename T> std::optional<T> optionalValue(const QSettings& settings, const QString& key) {
    if (!settings.contains(key))
        return std::nullopt;
    return settings.value(key).value<T>();
}
} // namespace

WindowSettings WindowSettings::load() {
    using namespace settingskeys;
    const QSettings settings = userSettings();
    LOG_INFO(kLogger, "Read app state from {}", settings.fileName().toStdString());
    WindowSettings result;
    result.geometry = settings.value(kGeometry).toByteArray();
    result.state = settings.value(kState).toByteArray();
    result.mainSplitter = settings.value(kMainSplitter).toByteArray();
    result.leftSplitter = settings.value(kLeftSplitter).toByteArray();
    result.middleSplitter = settings.value(kMiddleSplitter).toByteArray();
    if (settings.contains(kPlots)) {
        result.plots.emplace();
        for (const QVariant& value : settings.value(kPlots).toList())
            result.plots->push_back(value.toInt());
    }
    result.mainCamera = optionalValue<bool>(settings, kMainCamera);
    result.rearCamera = optionalValue<bool>(settings, kRearCamera);
    return result;
}

void WindowSettings::save() const {
    using namespace settingskeys;
    QSettings settings = userSettings();
    LOG_INFO(kLogger, "Save app state to {}", settings.fileName().toStdString());
    settings.setValue(kGeometry, geometry);
    settings.setValue(kState, state);
    settings.setValue(kMainSplitter, mainSplitter);
    settings.setValue(kLeftSplitter, leftSplitter);
    settings.setValue(kMiddleSplitter, middleSplitter);
    QVariantList types;
    for (int type : plots.value_or(std::vector<int>()))
        types.append(type);
    settings.setValue(kPlots, types);
    if (mainCamera)
        settings.setValue(kMainCamera, *mainCamera);
    if (rearCamera)
        settings.setValue(kRearCamera, *rearCamera);
}

void WindowSettings::saveLocale(const QString& name) { userSettings().setValue(settingskeys::kLocale, name); }

std::set<PlotType> WindowSettings::checkedPlots(const std::set<PlotType>& available) const {
    if (!plots) {
        if (!available.count(PlotType::Speed)) {
            LOG_ERROR(kLogger, "Failed to find speed plot!");
            return {};
        }
        return {PlotType::Speed};
    }
    std::set<PlotType> result;
    for (int type : *plots) {
        if (type == static_cast<int>(PlotType::Empty)) {
            LOG_WARN(kLogger, "Empty plot is settings, skip");
        } else if (type < static_cast<int>(PlotType::Speed) || type > static_cast<int>(PlotType::Vdop)) {
            LOG_ERROR(kLogger, "Failed to find plot QAction for type: {}", type);
        } else if (!available.count(static_cast<PlotType>(type))) {
            LOG_DEBUG(kLogger, "Plot {} is disabled, but visibility is true in stored settings", type);
        } else {
            result.insert(static_cast<PlotType>(type));
        }
    }
    return result;
}

void WindowSettings::restoreLayout(const Layout& layout) const {
    if (geometry.isEmpty()) {
        // First start: most of the screen, so that the videos, the list and the map all have room.
        if (QScreen* screen = layout.window->screen()) {
            const QRect available = screen->availableGeometry();
            layout.window->resize(available.size() * 0.9);
            layout.window->move(available.center() - layout.window->rect().center());
        }
    } else {
        layout.window->restoreGeometry(geometry);
    }
    if (!state.isEmpty())
        layout.window->restoreState(state);
    for (const auto& [splitter, stored] : {std::pair{layout.mainSplitter, mainSplitter},
                                           {layout.leftSplitter, leftSplitter},
                                           {layout.middleSplitter, middleSplitter}})
        if (!stored.isEmpty())
            splitter->restoreState(stored);
}

void WindowSettings::captureLayout(const Layout& layout) {
    geometry = layout.window->saveGeometry();
    state = layout.window->saveState();
    mainSplitter = layout.mainSplitter->saveState();
    leftSplitter = layout.leftSplitter->saveState();
    middleSplitter = layout.middleSplitter->saveState();
}
