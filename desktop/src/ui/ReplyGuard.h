// Keeps one network reply within bounds: it is aborted when no byte arrives for a while or when it grows too large.
#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <string>

class QNetworkReply;

// A child of its reply, living on the reply's thread (the GUI thread). The reply's abort() reports
// QNetworkReply::OperationCanceledError; stop() and reason() tell what really happened.
class ReplyGuard : public QObject {
    Q_OBJECT
public:
    enum class Stop { None, Stalled, TooLarge, Other };

    ReplyGuard(QNetworkReply* reply, std::chrono::milliseconds stallLimit, qint64 sizeLimit);

    // The guard of a reply, or nullptr when it has none.
    static ReplyGuard* of(const QNetworkReply* reply);

    // Aborts the reply for the given reason. Only the first reason is kept.
    void abort(Stop stop, std::string reason);

    Stop stop() const { return m_stop; }
    const std::string& reason() const { return m_reason; } // empty while stop() is None

private:
    void onProgress(qint64 received, qint64 total);

    QNetworkReply* m_reply;
    QTimer m_stallTimer;
    qint64 m_sizeLimit;
    Stop m_stop = Stop::None;
    std::string m_reason;
};
