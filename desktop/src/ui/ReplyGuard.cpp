#include "ui/ReplyGuard.h"

#include <QNetworkReply>

#include <fmt/format.h>

ReplyGuard::ReplyGuard(QNetworkReply* reply, std::chrono::milliseconds stallLimit, qint64 sizeLimit)
    : QObject(reply), m_reply(reply), m_sizeLimit(sizeLimit) {
    m_stallTimer.setSingleShot(true);
    m_stallTimer.setInterval(stallLimit);
    connect(&m_stallTimer, &QTimer::timeout, this, [this, stallLimit] {
        abort(Stop::Stalled, fmt::format("no data for {:g} s", stallLimit.count() / 1000.0));
    });
    // The clock runs from the request on, so a server that accepts the connection and never answers stalls too.
    // The announced length is checked as soon as the headers are in, before any of the body is taken.
    connect(reply, &QNetworkReply::metaDataChanged, this, [this] {
        const QVariant length = m_reply->header(QNetworkRequest::ContentLengthHeader);
        onProgress(0, length.isValid() ? length.toLongLong() : -1);
    });
    connect(reply, &QNetworkReply::downloadProgress, this, &ReplyGuard::onProgress);
    connect(reply, &QNetworkReply::finished, &m_stallTimer, &QTimer::stop);
    m_stallTimer.start();
}

ReplyGuard* ReplyGuard::of(const QNetworkReply* reply) {
    return reply ? reply->findChild<ReplyGuard*>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
}

void ReplyGuard::abort(Stop stop, std::string reason) {
    if (m_stop != Stop::None || m_reply->isFinished())
        return;
    m_stop = stop;
    m_reason = std::move(reason);
    m_stallTimer.stop();
    m_reply->abort(); // reports error() and finished() before it returns
}

void ReplyGuard::onProgress(qint64 received, qint64 total) {
    if (received > m_sizeLimit || total > m_sizeLimit) {
        abort(Stop::TooLarge, fmt::format("larger than the limit of {} bytes", m_sizeLimit));
        return;
    }
    m_stallTimer.start();
}
