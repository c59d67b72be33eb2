// The map's tile sources as the user sees them: offline map files added from the View menu or the command line,
// the disk cache's bound and the tile server from the settings.
#pragma once

#include "ui/FileChoosers.h"
#include "ui/TileSchemeHandler.h"

#include <QObject>
#include <QStringList>

#include <memory>
#include <vector>

class MapTileState;
class MbtilesSource;
class QAction;
class QMenu;
class QWebEngineProfile;

// Lives on the user-interface thread; map files are opened on the global thread pool and come back by a queued
// call. Owns the scheme handler that serves the page's tiles. Usage:
//   auto* maps = new OfflineMaps(ui.menuView, ui.menuLanguage->menuAction(), tileState,
//                                OfflineMaps::configFromSettings(), choosers, window);
//   maps->install(view->page()->profile());
//   maps->open(options.mapFiles, false);
class OfflineMaps : public QObject {
    Q_OBJECT
public:
    // Puts "Add offline map..." and the list of maps in use into the menu before `before`, and opens the maps
    // remembered in the settings. The tiles are served as `tiles` says.
    OfflineMaps(QMenu* menu, QAction* before, MapTileState* tileState, const TileSchemeHandler::Config& tiles,
                const FileChoosers& choosers, QWidget* window);
    // The tile server and the cache's bound from the settings, the cache in the per-user cache folder.
    static TileSchemeHandler::Config configFromSettings();
    ~OfflineMaps() override;

    void install(QWebEngineProfile* profile);
    // Opens map files for this run (remember: also for the next ones). A file that cannot serve is reported by
    // message() and left out; the others are used.
    void open(const QStringList& paths, bool remember);
    // The maps in use, in the order they are asked.
    const std::vector<std::shared_ptr<const MbtilesSource>>& files() const { return m_files; }
    QAction* addAction() const { return m_addAction; }
    // Call after the interface language has changed.
    void retranslate();

signals:
    // A map file could not be used, with the reason (for the status bar or a message box).
    void message(const QString& text);
    // The list of maps in use changed.
    void filesChanged();

private:
    void onAddMap();
    void onForgetMaps();
    void onOpened(const std::vector<std::shared_ptr<const MbtilesSource>>& opened, const QStringList& errors,
                  bool remember);
    void showFiles();

    MapTileState* m_tileState;
    const FileChoosers& m_choosers; // borrowed from the window
    QWidget* m_window;
    TileSchemeHandler* m_handler; // child
    QAction* m_addAction;         // child
    QMenu* m_listMenu;            // child of the window's menu
    std::vector<std::shared_ptr<const MbtilesSource>> m_files;
    bool m_asked = false; // the current open() came from the menu: answer with a message box
};
