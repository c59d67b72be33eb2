// The worker-thread opening of the next video and its return to the user-interface thread.
#include "ui/VideoLoader.h"

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
