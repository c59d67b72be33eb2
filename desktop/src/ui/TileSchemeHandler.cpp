// The tile scheme: requests from the page in, pictures out; the looking up happens on the fetcher's thread.
#include "ui/TileSchemeHandler.h"

#include "core/MbtilesSource.h"
#include "core/Startup.h"
#include "core/TileCache.h"
#include "logging/Logging.h"

#include <QBuffer>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QWebEngineProfile>
#include <QWebEngineUrlRequestJob>
#include <QWebEngineUrlScheme>

#include <chrono>

namespace {
constexpr const char* kLogger = "ui.TileSchemeHandler";
// A tile that has not come in this time will not come soon: the page shows the background instead.
constexpr int kFetchTimeoutMs = 6000;
// After the server failed to answer, tiles are not asked for during this time: offline, every tile of a
// view would otherwise wait for its own failure.
constexpr std::chrono::seconds kRetryServerAfter{30};
} // namespace

// Finds tiles: map files first, then the cache, then the server (whose answers go into the cache).
// Lives on the handler's thread; all its members are used there only.
class TileFetcher : public QObject {
    Q_OBJECT
public:
    explicit TileFetcher(const TileSchemeHandler::Config& config)
        : m_serverUrl(config.serverUrl), m_cache(config.cacheDirectory, config.cacheBytes) {}

    void setMapFiles(std::vector<std::shared_ptr<const MbtilesSource>> files) { m_mapFiles = std::move(files); }

    void fetch(quint64 id, TileKey key) {
        for (const auto& file : m_mapFiles)
            if (std::optional<QByteArray> picture = file->tile(key))
                return answer(id, *picture);
        if (std::optional<QByteArray> picture = m_cache.read(key))
            return answer(id, *picture);
        if (m_serverUrl.isEmpty() || std::chrono::steady_clock::now() < m_serverPausedUntil)
            return emit answered(id, {}, {});
        askServer(id, key);
    }

signals:
    void answered(quint64 id, const QByteArray& picture, const QByteArray& mimeType);

private:
    void answer(quint64 id, const QByteArray& picture) { emit answered(id, picture, pictureMimeType(picture)); }

    void askServer(quint64 id, TileKey key) {
        if (!m_network)
            m_network = new QNetworkAccessManager(this); // made here, on the fetcher's thread
        QString url = m_serverUrl;
        url.replace(QLatin1String("{z}"), QString::number(key.z))
            .replace(QLatin1String("{x}"), QString::number(key.x))
            .replace(QLatin1String("{y}"), QString::number(key.y));
        QNetworkRequest request{QUrl(url)};
        // The tile server's usage policy asks every application to name itself.
        request.setHeader(QNetworkRequest::UserAgentHeader,
                          QStringLiteral("%1/%2").arg(QLatin1String("Reelvue"), QLatin1String(kApplicationVersion)));
        request.setTransferTimeout(kFetchTimeoutMs);
        request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
        QNetworkReply* reply = m_network->get(request);
        connect(reply, &QNetworkReply::finished, this, [this, reply, id, key] {
            reply->deleteLater();
            const QByteArray picture = reply->readAll();
            const QByteArray mimeType = pictureMimeType(picture);
            const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
            if (reply->error() == QNetworkReply::NoError && !mimeType.isEmpty()) {
                if (m_offline)
                    LOG_INFO(kLogger, "Tile server answers again");
                m_offline = false;
                m_cache.store(key, picture);
                return emit answered(id, picture, mimeType);
            }
            // A server that answers, but not with this tile, is not offline.
            if (status == 0) {
                m_serverPausedUntil = std::chrono::steady_clock::now() + kRetryServerAfter;
                if (!m_offline)
                    LOG_WARN(kLogger,
                             "No answer from the tile server ({}): the map shows only map files and cached tiles",
                             reply->errorString().toStdString());
                m_offline = true;
            }
            emit answered(id, {}, {});
        });
    }

    const QString m_serverUrl;
    TileCache m_cache;
    std::vector<std::shared_ptr<const MbtilesSource>> m_mapFiles;
    QNetworkAccessManager* m_network = nullptr; // child
    bool m_offline = false;                     // logged once, until the server answers again
    std::chrono::steady_clock::time_point m_serverPausedUntil{};
};

QString TileSchemeHandler::urlTemplate() {
    return QLatin1String(kScheme) + QStringLiteral(":{z}/{x}/{y}");
}

void TileSchemeHandler::registerScheme() {
    QWebEngineUrlScheme scheme{QByteArray(kScheme)};
    scheme.setSyntax(QWebEngineUrlScheme::Syntax::Path);
    // The page is a local file; its pictures may come from this scheme like from any secure origin.
    scheme.setFlags(QWebEngineUrlScheme::SecureScheme | QWebEngineUrlScheme::LocalAccessAllowed |
                    QWebEngineUrlScheme::CorsEnabled);
    QWebEngineUrlScheme::registerScheme(scheme);
}

QString TileSchemeHandler::defaultServerUrl() {
    return QStringLiteral("https://tile.openstreetmap.org/{z}/{x}/{y}.png");
}

QString TileSchemeHandler::serverAttribution() {
    return QStringLiteral("\u00a9 OpenStreetMap contributors");
}

TileSchemeHandler::TileSchemeHandler(const Config& config, QObject* parent)
    : QWebEngineUrlSchemeHandler(parent), m_fetcher(new TileFetcher(config)) {
    m_thread.setObjectName(QStringLiteral("Map tiles"));
    m_fetcher->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, m_fetcher, &QObject::deleteLater);
    connect(m_fetcher, &TileFetcher::answered, this, &TileSchemeHandler::onAnswered);
    m_thread.start();
}

TileSchemeHandler::~TileSchemeHandler() {
    m_thread.quit();
    m_thread.wait();
    // Requests still open would keep the page loading for ever.
    for (const QPointer<QWebEngineUrlRequestJob>& job : qAsConst(m_jobs))
        if (job)
            job->fail(QWebEngineUrlRequestJob::RequestAborted);
}

void TileSchemeHandler::install(QWebEngineProfile* profile) {
    if (profile->urlSchemeHandler(kScheme) == this)
        return;
    profile->removeUrlScheme(kScheme); // another window's handler: the profile takes one per scheme
    profile->installUrlSchemeHandler(kScheme, this);
}

void TileSchemeHandler::setMapFiles(std::vector<std::shared_ptr<const MbtilesSource>> files) {
    QMetaObject::invokeMethod(
        m_fetcher,
        [fetcher = m_fetcher, files = std::move(files)]() mutable { fetcher->setMapFiles(std::move(files)); },
        Qt::QueuedConnection);
}

void TileSchemeHandler::requestStarted(QWebEngineUrlRequestJob* job) {
    const std::optional<TileKey> key = TileKey::fromPath(job->requestUrl().path());
    if (!key) {
        job->fail(QWebEngineUrlRequestJob::UrlInvalid);
        return;
    }
    const quint64 id = m_nextId++;
    m_jobs.insert(id, job);
    QMetaObject::invokeMethod(
        m_fetcher, [fetcher = m_fetcher, id, key = *key] { fetcher->fetch(id, key); }, Qt::QueuedConnection);
}

void TileSchemeHandler::onAnswered(quint64 id, const QByteArray& picture, const QByteArray& mimeType) {
    const QPointer<QWebEngineUrlRequestJob> job = m_jobs.take(id);
    if (!job) // the page no longer wants it (scrolled away, closed)
        return;
    if (picture.isEmpty()) {
        job->fail(QWebEngineUrlRequestJob::UrlNotFound);
        return;
    }
    // The engine reads the buffer on its own thread until the job ends; the buffer goes with the job.
    auto* buffer = new QBuffer;
    buffer->setData(picture);
    buffer->open(QIODevice::ReadOnly);
    connect(job, &QObject::destroyed, buffer, &QObject::deleteLater);
    job->reply(mimeType, buffer);
}

#include "TileSchemeHandler.moc"
