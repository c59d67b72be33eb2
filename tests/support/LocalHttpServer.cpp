#include "support/LocalHttpServer.h"

#include <QTcpSocket>

namespace testsupport {

LocalHttpServer::LocalHttpServer() {
    m_server.listen(QHostAddress::LocalHost);
    connect(&m_server, &QTcpServer::newConnection, this, &LocalHttpServer::onConnection);
}

QUrl LocalHttpServer::url(const QString& path) const {
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path));
}

void LocalHttpServer::route(const QString& path, const Response& response) { m_routes[path] = response; }

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
            const Response response = found == m_routes.constEnd() ? Response{404, "not found", {}, -1} : *found;
            QByteArray head = "HTTP/1.0 " + QByteArray::number(response.status) + " X\r\n";
            head += "Content-Length: " + QByteArray::number(response.body.size()) + "\r\n";
            head += "Content-Type: application/octet-stream\r\n";
            if (!response.location.isEmpty())
                head += "Location: " + response.location + "\r\n";
            socket->write(head + "\r\n");
            socket->write(response.dropAfter >= 0 ? response.body.left(response.dropAfter) : response.body);
            socket->flush();
            socket->disconnectFromHost();
        });
    }
}

} // namespace testsupport
