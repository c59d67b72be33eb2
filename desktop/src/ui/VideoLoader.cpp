// The worker-thread opening of the next video and its return to the user-interface thread.
#include "ui/VideoLoader.h"

#include <QCoreApplication>
#include <QThread>

#include <set>

namespace {
// Retired threads that have not finished yet; touched on the GUI thread only.
std::set<QThread*>& runningRetiredThreads() {
    static std::set<QThread*> threads;
    return threads;
}

void waitForRetiredThreads() {
    for (QThread* thread : runningRetiredThreads())
        thread->wait();
    runningRetiredThreads().clear();
}
} // namespace

VideoLoader::VideoLoader(std::shared_ptr<MultiAVPlayer> player)
    : m_player(std::move(player)), m_result(m_promise.get_future().share()) {}

void VideoLoader::run() {
    try {
        m_player->load();
        m_promise.set_value();
    } catch (...) {
        m_promise.set_exception(std::current_exception());
    }
    emit done();
}

VideoLoadingHandler::VideoLoadingHandler(std::weak_ptr<MultiAVPlayer> player, std::function<void()> callback)
    : m_player(std::move(player)), m_callback(std::move(callback)) {}

void VideoLoadingHandler::onLoad() {
    if (!m_player.expired() && m_callback)
        m_callback();
    deleteLater();
}

void retireLoaderThread(QThread* thread) {
    static const bool waitAtExit = [] {
        qAddPostRoutine(&waitForRetiredThreads);
        return true;
    }();
    Q_UNUSED(waitAtExit)
    runningRetiredThreads().insert(thread);
    // Queued to the GUI thread, where the thread object lives.
    QObject::connect(thread, &QThread::finished, thread, [thread] {
        runningRetiredThreads().erase(thread);
        thread->deleteLater();
    });
    thread->quit();
}
