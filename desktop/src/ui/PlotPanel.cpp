#include "ui/PlotPanel.h"

#include "core/ApplicationOptions.h"
#include "logging/Logging.h"
#include "ui/PlotIntervalSelector.h"
#include "ui/TrackPlot.h"

#include <QAction>
#include <QLayout>
#include <QWidget>

#include <algorithm>

namespace {
constexpr const char* kLogger = "ui.MainWindow"; // its lines are the window's
constexpr int kPlotContainerMinimumHeight = 110;
constexpr int kPlotMinimumHeight = 105; // room for the axis titles; the splitter keeps it

bool optionAllows(PlotType type) {
    const ApplicationOptions& options = applicationOptions();
    switch (type) {
    case PlotType::Satellites: return options.satellitesPlot;
    case PlotType::Hdop: return options.hdopPlot;
    case PlotType::Pdop: return options.pdopPlot;
    case PlotType::Vdop: return options.vdopPlot;
    default: return true;
    }
}
} // namespace

PlotPanel::PlotPanel(QWidget* container, const std::map<PlotType, QAction*>& actions, QObject* parent)
    : QObject(parent), m_intervalSelector(new PlotIntervalSelector(this)) {
    auto addPlot = [this, container](PlotType type, QAction* action) {
        auto* plot = new TrackPlot(type, container);
        plot->setObjectName(QStringLiteral("plot%1").arg(static_cast<int>(type)));
        plot->hide();
        plot->setMinimumHeight(kPlotMinimumHeight);
        container->layout()->addWidget(plot);
        m_intervalSelector->attach(plot);
        m_plots[type] = Entry{plot, action};
        if (action)
            connect(action, &QAction::toggled, this, &PlotPanel::updateVisibility);
    };
    addPlot(PlotType::Empty, nullptr);
    for (const auto& [type, action] : actions) {
        action->setVisible(optionAllows(type));
        if (optionAllows(type))
            addPlot(type, action);
    }
    container->setMinimumHeight(kPlotContainerMinimumHeight);
}

TrackPlot* PlotPanel::plot(PlotType type) const {
    const auto entry = m_plots.find(type);
    return entry == m_plots.end() ? nullptr : entry->second.plot;
}

std::map<PlotType, TrackPlot*> PlotPanel::plots() const {
    std::map<PlotType, TrackPlot*> result;
    for (const auto& [type, entry] : m_plots)
        result[type] = entry.plot;
    return result;
}

std::set<PlotType> PlotPanel::available() const {
    std::set<PlotType> result;
    for (const auto& [type, entry] : m_plots)
        if (entry.action)
            result.insert(type);
    return result;
}

std::set<PlotType> PlotPanel::checked() const {
    std::set<PlotType> result;
    for (const auto& [type, entry] : m_plots)
        if (entry.action && entry.action->isChecked())
            result.insert(type);
    return result;
}

void PlotPanel::setChecked(const std::set<PlotType>& types) {
    for (const auto& [type, entry] : m_plots)
        if (entry.action)
            entry.action->setChecked(types.count(type) > 0);
    updateVisibility();
}

void PlotPanel::ensureOneShown() {
    if (checked().empty() && m_plots.count(PlotType::Speed))
        m_plots[PlotType::Speed].action->setChecked(true);
}

void PlotPanel::retranslate() {
    for (const auto& [type, entry] : m_plots)
        entry.plot->retranslate();
}

void PlotPanel::updateVisibility() {
    bool anyVisible = false;
    for (const auto& [type, entry] : m_plots) {
        if (!entry.action)
            continue;
        entry.plot->setVisible(entry.action->isChecked());
        anyVisible = anyVisible || entry.action->isChecked();
    }
    const auto empty = m_plots.find(PlotType::Empty);
    if (empty == m_plots.end()) {
        if (!anyVisible)
            LOG_ERROR(kLogger, "Failed to find empty plot!");
        return;
    }
    empty->second.plot->setVisible(!anyVisible);
}
