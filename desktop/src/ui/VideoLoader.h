// Opens a multi-camera player on a worker thread, and hands the result back to the user-interface thread.
#pragma once

#include "ui/MultiAVPlayer.h"

#include <QObject>

class QThread;

#include <functional>
#include <future>
#include <memory>

// Moved to a worker thread; run() is invoked there by a queued call. Holds the player alive while it opens.
// Destroyed before run() has finished, it breaks its promise (the future then reports "broken promise").
class VideoLoader : public QObject {
    Q_OBJECT
public:
    explicit VideoLoader(std::shared_ptr<MultiAVPlayer> player);

    // The outcome of load(): a value, or the exception it threw.
    std::shared_future<void> result() const { return m_result; }

public slots:
    void run();

signals:
    void done();

private:
    std::shared_ptr<MultiAVPlayer> m_player;
    std::promise<void> m_promise;
    std::shared_future<void> m_result;
};

// Lives on the user-interface thread and deletes itself after one completion. It only holds a weak
// reference: a player dropped meanwhile makes the completion a no-op.
class VideoLoadingHandler : public QObject {
    Q_OBJECT
public:
    VideoLoadingHandler(std::weak_ptr<MultiAVPlayer> player, std::function<void()> callback);

public slots:
    void onLoad();

private:
    std::weak_ptr<MultiAVPlayer> m_player;
    std::function<void()> m_callback;
};

// Ends a loader thread without waiting for it: a file still opening on it (seconds on a slow card) finishes
// in the background, then the thread quits and deletes itself. GUI thread only. Threads still running when the
// application object goes are waited for then, so that none outlives the libraries it uses.
void retireLoaderThread(QThread* thread);
