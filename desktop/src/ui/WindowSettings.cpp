#include "ui/WindowSettings.h"

#include "core/SettingsKeys.h"
#include "core/Startup.h"
#include "logging/Logging.h"

#include <QSettings>

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
