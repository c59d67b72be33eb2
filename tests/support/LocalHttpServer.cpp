#include "support/LocalHttpServer.h"

#include <QTcpSocket>

#include <algorithm>
#include <memory>

namespace testsupport {

namespace {
// 256 KB: the socket's send buffer is topped up to this much, so a padded body is never whole in memory.
constexpr qint64 kChunk = 256 * 1024;

QByteArray bodyBytes(const LocalHttpServer::Response& response, qint64 from, qint64 count) {
    QByteArray bytes = response.body.mid(from, count);
    if (bytes.size() < count)
        bytes.append(QByteArray(count - bytes.size(), 'x'));
    return bytes;
}

void respond(QTcpSocket* socket, const LocalHttpServer::Response& response) {
    const qint64 length = std::max<qint64>(response.size, response.body.size());
    QByteArray head = "HTTP/1.0 " + QByteArray::number(response.status) + " X\r\n";
    if (response.announceLength)
        head += "Content-Length: " + QByteArray::number(length) + "\r\n";
    head += "Content-Type: application/octet-stream\r\n";
    if (!response.location.isEmpty())
        head += "Location: " + response.location + "\r\n";
    socket->write(head + "\r\n");

    qint64 end = length;
    for (const qint64 cut : {response.dropAfter, response.stallAfter})
        if (cut >= 0)
            end = std::min(end, cut);
    const bool close = response.stallAfter < 0;
    auto sent = std::make_shared<qint64>(0);
    auto done = std::make_shared<bool>(false);
    const auto pump = [socket, response, end, close, sent, done] {
        if (*done)
            return;
        while (*sent < end && socket->bytesToWrite() < kChunk) {
            const qint64 count = std::min(kChunk, end - *sent);
            socket->write(bodyBytes(response, *sent, count));
            *sent += count;
        }
        if (*sent < end)
            return;
        *done = true;
        if (close)
            socket->disconnectFromHost(); // after the buffered bytes are sent
    };
    QObject::connect(socket, &QTcpSocket::bytesWritten, socket, pump);
    pump();
}
} // namespace

LocalHttpServer::LocalHttpServer() {
    m_server.listen(QHostAddress::LocalHost);
    connect(&m_server, &QTcpServer::newConnection, this, &LocalHttpServer::onConnection);
}

QUrl LocalHttpServer::url(const QString& path) const {
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path));
}

void LocalHttpServer::route(const QString& path, const Response& response) { m_routes[path] = response; }

int LocalHttpServer::requestCount() const {
    int count = 0;
    for (const int requests : m_requests)
        count += requests;
    return count;
}

void LocalHttpServer::onConnection() {
    while (QTcpSocket* socket = m_server.nextPendingConnection()) {
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
            const QByteArray request = socket->peek(64 * 1024);
            if (!request.contains("\r\n\r\n"))
                return;
            socket->readAll();
            const QString path = QString::fromLatin1(request.split(' ').value(1));
            ++m_requests[path];
            const auto found = m_routes.constFind(path);
            respond(socket, found != m_routes.constEnd() ? *found
                            : m_hasOthers                  ? m_others
                                                           : Response{404, "not found", {}, -1});
        });
    }
}

} // namespace testsupport
