// The track plots under the video: which exist (by start-up option), which are shown, and the interval
// selector that lies over them.
//
// Lives on the GUI thread. Owns the plots (children of the borrowed container) and the interval selector;
// each plot but the empty placeholder has a borrowed "show" action whose check state shows or hides it.
#pragma once

#include "ui/PlotType.h"

#include <QObject>

#include <map>
#include <set>

class PlotIntervalSelector;
class QAction;
class QWidget;
class TrackPlot;

class PlotPanel : public QObject {
    Q_OBJECT
public:
    // `actions`: the show action of every plot type; those of types whose option is off are hidden.
    PlotPanel(QWidget* container, const std::map<PlotType, QAction*>& actions, QObject* parent);

    TrackPlot* plot(PlotType type) const;
    std::map<PlotType, TrackPlot*> plots() const; // the placeholder too
    PlotIntervalSelector* intervalSelector() const { return m_intervalSelector; }

    // Types that have a show action, that is that can be shown.
    std::set<PlotType> available() const;
    std::set<PlotType> checked() const;
    void setChecked(const std::set<PlotType>& types);
    // Shows the speed plot when none is shown: the interval selector needs a plot to lie on.
    void ensureOneShown();
    void retranslate();

private:
    // The placeholder shows only while no plot is.
    void updateVisibility();

    struct Entry {
        TrackPlot* plot = nullptr;
        QAction* action = nullptr; // none for the placeholder
    };
    std::map<PlotType, Entry> m_plots; // ascending type order
    PlotIntervalSelector* m_intervalSelector;
};
