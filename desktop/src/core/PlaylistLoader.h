// Loads a playlist and its four table models in the background.
#pragma once

#include "core/Playlist.h"
#include "core/PlaylistDiscovery.h"
#include "core/PlaylistItemModel.h"
#include "core/TrackAnalyzer.h"

#include <QObject>
#include <QString>

#include <atomic>
#include <cstdint>

// Lives on a worker thread; its slots are invoked by queued calls and its signals reach the GUI thread
// queued. cancel() is the exception: it is called directly from the GUI thread and only raises a flag.
// Every load ends with exactly one of loaded(), failed() or canceled(). On loaded() the playlist and the
// models, built on the worker thread and moved to the thread of the application object, belong to the
// receiver.
//
//   auto* loader = new PlaylistLoader;
//   loader->moveToThread(&workerThread);
//   connect(loader, &PlaylistLoader::loaded, window, &MainWindow::onPlaylistLoaded);
//   QMetaObject::invokeMethod(loader, "loadDirectory", Qt::QueuedConnection, Q_ARG(QString, root));
class PlaylistLoader : public QObject, public Playlist::ILoader {
    Q_OBJECT
public:
    // Wall time of each stage of the last load, in milliseconds.
    struct Timings {
        PlaylistDiscovery::Timings discovery;
        std::int64_t processingMs = 0;
        std::int64_t modelsMs = 0;
    };

    explicit PlaylistLoader(QObject* parent = nullptr);

    // The analyzer settings and gap threshold every load uses.
    static TrackAnalyzer::Settings analyzerSettings();
    static constexpr std::int64_t kGapThresholdSeconds = 300;

    // Duration of a video in milliseconds read by libavformat, or 0 (logged) when it cannot be read.
    static std::int64_t videoDurationMs(const QString& path);
    // The duration, and for a video libavformat cannot open, why it cannot be played.
    static PlaylistDiscovery::VideoProbe probeVideo(const QString& path);

    const Timings& lastTimings() const { return m_timings; }
    // Threads for probing and track loading; 0 (the default) uses every core.
    void setThreadCount(unsigned threads) { m_threads = threads; }

signals:
    void loaded(Playlist* playlist, PlaylistProcessedItemModel* tripItemModel,
                PlaylistProcessedItemModel* parkingItemModel, PlaylistRawItemModel* eventItemModel,
                PlaylistRawItemModel* rawItemModel);
    void canceled();
    void progress(int percents);
    void loadStarted();
    // The load failed; `message` is the reason in English ("Nothing found", ...).
    void failed(const QString& message);

public slots:
    void loadDirectory(const QString& dir) override;
    void loadFile(const QString& filePath) override;
    void emitProgressSignal(int percent);
    void cancel() override;

private:
    enum class Source { Directory, File };
    void load(Source source, const QString& path);

    std::atomic_bool m_cancel{false};
    unsigned m_threads = 0;
    int m_lastPercent = -1;
    Timings m_timings;
};

// loaded() carries the playlist across threads.
Q_DECLARE_METATYPE(Playlist*)
