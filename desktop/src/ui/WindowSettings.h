// The main window's user settings as one typed record, read and written in one place.
//
// A plain value on the GUI thread (no signals, so no QObject): load() reads every key once after the window is
// built, save() writes them all on close; the locale alone is written at once when the language changes.
// The keys are in core/SettingsKeys.h, shared with start-up.
#pragma once

#include "ui/PlotType.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <set>
#include <vector>

class QMainWindow;
class QSplitter;

struct WindowSettings {
    // The parts of the window whose layout is kept.
    struct Layout {
        QMainWindow* window;
        QSplitter* mainSplitter;
        QSplitter* leftSplitter;
        QSplitter* middleSplitter;
    };

    QByteArray geometry; // empty: nothing stored, keep the window's own
    QByteArray state;
    QByteArray mainSplitter;
    QByteArray leftSplitter;
    QByteArray middleSplitter;
    std::optional<std::vector<int>> plots; // the checked plot types in ascending order; none on first start
    std::optional<bool> mainCamera;
    std::optional<bool> rearCamera;

    // Logs "Read app state from <store>" and "Save app state to <store>".
    static WindowSettings load();
    void save() const;
    static void saveLocale(const QString& name);

    // Puts the window and its splitters as stored; on first start the window takes most of its screen.
    void restoreLayout(const Layout& layout) const;
    void captureLayout(const Layout& layout);

    // The plot types to check of those that have a show action: the stored ones (skipping with a log line the
    // placeholder, unknown and disabled types), or the speed plot on first start.
    std::set<PlotType> checkedPlots(const std::set<PlotType>& available) const;
};
