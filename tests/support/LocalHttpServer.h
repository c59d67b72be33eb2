// A small HTTP/1.0 server on 127.0.0.1 for tests of network clients. Runs on the test's own thread.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QTcpServer>
#include <QUrl>

namespace testsupport {

class LocalHttpServer : public QObject {
    Q_OBJECT
public:
    struct Response {
        int status = 200;
        QByteArray body;
        QByteArray location{};    // for redirects
        qint64 dropAfter = -1;    // close the connection after this many body bytes (announcing the full length)
        qint64 size = -1;         // the body padded with 'x' to this many bytes, sent as the client reads it,
                                  // so a response of gigabytes costs the test no memory
        bool announceLength = true; // false: no Content-Length, the body ends when the connection closes
        qint64 stallAfter = -1;   // after this many body bytes send nothing more and keep the connection open
    };

    LocalHttpServer();
    QUrl url(const QString& path) const;
    void route(const QString& path, const Response& response);
    // Answers every path without a route of its own (instead of 404).
    void routeOthers(const Response& response) { m_others = response; m_hasOthers = true; }
    int requestCount(const QString& path) const { return m_requests.value(path); }
    int requestCount() const;

private:
    void onConnection();

    QTcpServer m_server;
    QMap<QString, Response> m_routes;
    QMap<QString, int> m_requests;
    Response m_others;
    bool m_hasOthers = false;
};

} // namespace testsupport
