// Serves the map page's tiles (reelvue-tiles:z/x/y) from the map files, the disk cache and the tile server.
#pragma once

#include "core/TileKey.h"

#include <QHash>
#include <QPointer>
#include <QThread>
#include <QWebEngineUrlSchemeHandler>

#include <memory>
#include <vector>

class MbtilesSource;
class QWebEngineProfile;
class QWebEngineUrlRequestJob;
class TileFetcher;

// Lives on the user-interface thread and owns the thread m_thread, on which a TileFetcher reads the map files
// and the cache and asks the server; requests and answers cross between them by queued calls only, so the
// user-interface thread never waits for a disk or the network. A tile that nobody has is failed, and the page
// leaves the plain background in its place.
// Usage (registerScheme() before the application object exists):
//   auto* tiles = new TileSchemeHandler({serverUrl, TileCache::defaultDirectory(), bytes}, this);
//   tiles->install(view->page()->profile());
class TileSchemeHandler : public QWebEngineUrlSchemeHandler {
    Q_OBJECT
public:
    static constexpr const char* kScheme = "reelvue-tiles";
    // The page's tile layer takes tiles from this address.
    static QString urlTemplate();
    // Makes the scheme known to the browser engine; call before QApplication is created.
    static void registerScheme();

    struct Config {
        // The online server, "{z}", "{x}" and "{y}" to be filled in; empty: no online tiles.
        QString serverUrl;
        QString cacheDirectory;
        qint64 cacheBytes;
    };
    explicit TileSchemeHandler(const Config& config, QObject* parent = nullptr);
    ~TileSchemeHandler() override;

    // The default online server (OpenStreetMap's standard tiles) and the credit it asks for.
    static QString defaultServerUrl();
    static QString serverAttribution();

    // Answers the scheme for the profile's pages (the same handler may serve several profiles).
    void install(QWebEngineProfile* profile);
    // Map files asked first, in order; replaces the previous list.
    void setMapFiles(std::vector<std::shared_ptr<const MbtilesSource>> files);

    void requestStarted(QWebEngineUrlRequestJob* job) override;

private:
    void onAnswered(quint64 id, const QByteArray& picture, const QByteArray& mimeType);

    QThread m_thread;
    TileFetcher* m_fetcher; // lives on m_thread, deleted when it finishes
    QHash<quint64, QPointer<QWebEngineUrlRequestJob>> m_jobs;
    quint64 m_nextId = 1;
};
