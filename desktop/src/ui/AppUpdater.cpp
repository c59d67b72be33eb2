#include "ui/AppUpdater.h"

#include "core/ApplicationOptions.h"
#include "logging/Logging.h"
#include "ui/ReplyGuard.h"
#include "ui/VersionDescription.h"

#include <QApplication>
#include <QHostAddress>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>

#include <fmt/format.h>

#include <cstdio>
#include <stdexcept>

namespace {
constexpr const char* kLogger = "ui.AppUpdater";
constexpr const char* kContext = "Version check";

// The running version 1.3.12(.856). Each number is compared on its own on purpose, so 1.2.13 counts as newer.
constexpr int kMajor = 1;
constexpr int kMinor = 3;
constexpr int kPatch = 12;

// 4 KB: a signed description is under 300 bytes; anything much larger is not one and is not read.
constexpr qint64 kMaxVersionDescription = 4096;
// Qt's own buffer of a reply is capped so a fast server cannot fill memory faster than the data is taken:
// 64 KB is enough to notice an oversized description, 1 MB keeps a download's disk writes efficient.
constexpr qint64 kVersionReadBuffer = 64 * 1024;
constexpr qint64 kDownloadReadBuffer = 1024 * 1024;

// Texts are marked with QT_TRANSLATE_NOOP under this same context, so tools/update-translations finds them.
QString translated(const char* text) { return QCoreApplication::translate(kContext, text); }

QString downloadFailedText() {
    return translated(QT_TRANSLATE_NOOP("Version check", "Failed to download updated application"));
}
QString cannotWriteText(const QString& fileName) {
    return translated(QT_TRANSLATE_NOOP("Version check", "Cannot write to file ")) + fileName;
}

bool isLoopback(const QUrl& url) {
    const QString host = url.host();
    return host == QLatin1String("localhost") || QHostAddress(host).isLoopback();
}

QNetworkRequest redirectingRequest(const QUrl& url) {
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    return request;
}
} // namespace

UpdaterSettings UpdaterSettings::built() {
    UpdaterSettings settings;
    for (const char* key : {REELVUE_UPDATE_KEY, REELVUE_UPDATE_NEXT_KEY})
        if (*key)
            settings.publicKeys.append(QByteArray::fromBase64(key));
    settings.maxDownloadBytes = REELVUE_UPDATE_MAX_DOWNLOAD;
    return settings;
}

AppUpdater& AppUpdater::instance() {
    static AppUpdater* updater = new AppUpdater(UpdaterSettings::built(), qApp);
    return *updater;
}

AppUpdater::AppUpdater(UpdaterSettings settings, QObject* parent) : QObject(parent), m_settings(std::move(settings)) {}

AppUpdater::~AppUpdater() {
    if (m_download)
        m_download->blockSignals(true); // its file goes with m_file
}

void AppUpdater::checkForUpdate() {
    if (m_versionUrl.isEmpty())
        m_versionUrl = QUrl(applicationOptions().updaterUrl);
    QNetworkReply* reply = m_network.get(redirectingRequest(m_versionUrl));
    reply->setReadBufferSize(kVersionReadBuffer);
    new ReplyGuard(reply, m_settings.versionStall, kMaxVersionDescription);
    connect(reply, &QNetworkReply::finished, this, &AppUpdater::onVersionRequestFinished);
}

void AppUpdater::onVersionRequestFinished() {
    auto* reply = qobject_cast<QNetworkReply*>(sender());
    if (!reply)
        return;
    const bool firstCheck = m_firstCheck;
    m_firstCheck = false;
    reply->deleteLater();
    const ReplyGuard* guard = ReplyGuard::of(reply);
    const ReplyGuard::Stop stop = guard ? guard->stop() : ReplyGuard::Stop::None;

    // An oversized description is answered like an unreadable one, not like an unreachable server.
    if (reply->error() != QNetworkReply::NoError && stop != ReplyGuard::Stop::TooLarge) {
        if (!firstCheck) {
            LOG_ERROR(kLogger, "Failed to define last version. {}",
                      stop == ReplyGuard::Stop::Stalled ? guard->reason() : reply->errorString().toStdString());
            showUpToDate();
        }
        return;
    }

    // Nothing of an unsigned description is believed: not its version, and never its installer.
    VersionDescription description;
    try {
        const auto tooLarge = [] {
            return std::runtime_error(fmt::format("the version description is larger than {} bytes", kMaxVersionDescription));
        };
        if (stop == ReplyGuard::Stop::TooLarge)
            throw tooLarge(); // the aborted reply holds nothing to read
        const QByteArray text = reply->read(kMaxVersionDescription + 1);
        if (text.size() > kMaxVersionDescription)
            throw tooLarge();
        description = VersionDescription::verify(text, m_settings.publicKeys);
    } catch (const std::exception& e) {
        LOG_WARN(kLogger, "No update: {}", e.what());
        if (!firstCheck)
            showUpToDate();
        return;
    }

    const QByteArray& version = description.version;
    if (!applicationOptions().forceUpdate) {
        int major = 0, minor = 0, patch = 0;
        bool newer = false;
        if (std::sscanf(version.constData(), "%d.%d.%d", &major, &minor, &patch) < 3)
            LOG_WARN(kLogger, "Failed to parse remote version");
        else
            newer = major > kMajor || minor > kMinor || patch > kPatch;
        if (!newer) {
            if (!firstCheck) {
                LOG_DEBUG(kLogger, "Version {} is up-to-date", version.toStdString());
                showUpToDate();
            }
            return;
        }
    }

    LOG_WARN(kLogger, "Video player is need to be updated to version {}", version.toStdString());
    m_downloadUrl = description.installerUrl;
    m_expectedSha256 = description.installerSha256;
    if (askToUpdate())
        startDownload();
}

bool AppUpdater::isDownloadUrlAcceptable() const {
    if (m_downloadUrl.scheme() == QLatin1String("https"))
        return true;
    // Plain http only when the whole exchange stays on this machine (local test servers).
    return m_downloadUrl.scheme() == QLatin1String("http") && m_versionUrl.scheme() == QLatin1String("http") &&
           isLoopback(m_versionUrl) && isLoopback(m_downloadUrl);
}

void AppUpdater::startDownload() {
    if (!m_downloadUrl.isValid() || !isDownloadUrlAcceptable()) {
        LOG_ERROR(kLogger, "Refusing to download application from '{}'", m_downloadUrl.toString().toStdString());
        emit finished(downloadFailedText());
        return;
    }
    // The installer goes to its file as it arrives; the whole of it is never in memory.
    m_file = std::make_unique<DownloadFile>(m_downloadUrl);
    if (!m_file->open()) {
        const QString name = m_file->fileName();
        m_file.reset();
        emit finished(cannotWriteText(name));
        return;
    }
    m_canceled = false;
    m_download = m_network.get(redirectingRequest(m_downloadUrl));
    m_download->setReadBufferSize(kDownloadReadBuffer);
    new ReplyGuard(m_download, m_settings.downloadStall, m_settings.maxDownloadBytes);
    connect(m_download, &QNetworkReply::readyRead, this, &AppUpdater::onDownloadData);
    connect(m_download, &QNetworkReply::downloadProgress, this, &AppUpdater::onDownloadProgress);
    connect(m_download, &QNetworkReply::finished, this, &AppUpdater::onDownloadNewAppVersionFinished);
    connect(m_download, &QNetworkReply::errorOccurred, this, &AppUpdater::onDownloadError);
    emit started();
}

void AppUpdater::onDownloadData() {
    if (!m_download || !m_file)
        return;
    if (!m_file->append(m_download->readAll()))
        ReplyGuard::of(m_download)->abort(ReplyGuard::Stop::Other, "cannot write to " + m_file->fileName().toStdString());
}

void AppUpdater::cancel() {
    m_canceled = true;
    if (m_download)
        m_download->abort();
}

void AppUpdater::onDownloadProgress(qint64 received, qint64 total) {
    if (sender() != m_download.data())
        return; // a reply already given up
    if (total > 0)
        emit progress(static_cast<int>(received * 100 / total));
}

void AppUpdater::endDownload(const QString& message) {
    if (m_download) {
        m_download->deleteLater();
        m_download.clear();
    }
    m_file.reset(); // removes the file
    emit finished(message);
}

void AppUpdater::onDownloadError(QNetworkReply::NetworkError code) {
    if (m_canceled)
        return; // the abort of a cancel reports an error too; finished() tells the window
    auto* reply = qobject_cast<QNetworkReply*>(sender());
    if (reply)
        reply->blockSignals(true);
    if (const ReplyGuard* guard = ReplyGuard::of(reply); guard && guard->stop() != ReplyGuard::Stop::None)
        LOG_WARN(kLogger, "Download of the application stopped: {}", guard->reason());
    LOG_WARN(kLogger, "Failed to download updated application. Error code: {}", static_cast<int>(code));
    const bool writeFailed = m_file && m_file->writeFailed();
    endDownload(writeFailed ? cannotWriteText(m_file->fileName()) : downloadFailedText());
}

void AppUpdater::onDownloadNewAppVersionFinished() {
    auto* reply = qobject_cast<QNetworkReply*>(sender());
    if (!reply || reply != m_download)
        return;
    if (m_canceled) {
        endDownload(QString());
        return;
    }
    if (reply->error() != QNetworkReply::NoError) {
        LOG_WARN(kLogger, "Failed to download updated application. Error: {}", reply->errorString().toStdString());
        endDownload(downloadFailedText());
        return;
    }
    if (!m_file->append(reply->readAll())) {
        endDownload(cannotWriteText(m_file->fileName()));
        return;
    }
    const QString path = m_file->fileName();
    if (m_file->sha256Hex() != m_expectedSha256) {
        LOG_WARN(kLogger, "Checksum of the downloaded application {} does not match the published one", path.toStdString());
        endDownload(downloadFailedText());
        return;
    }
    if (!m_file->finishAsProgram()) {
        endDownload(cannotWriteText(path));
        return;
    }

    LOG_DEBUG(kLogger, "Downloading is completed");
    if (!QProcess::startDetached(path, {})) {
        LOG_WARN(kLogger, "Failed to start {}", path.toStdString());
        endDownload(translated(QT_TRANSLATE_NOOP("Version check", "Failed to start ")) + path);
        return;
    }
    LOG_DEBUG(kLogger, "Updated application started");
    m_file->keep();
    m_file.reset();
    m_download->deleteLater();
    m_download.clear();
    quitApplication();
}

bool AppUpdater::askToUpdate() {
    QMessageBox box(QMessageBox::Question, QCoreApplication::applicationName(),
                    translated(QT_TRANSLATE_NOOP("Version check", "A new version is available. Want to update?")),
                    QMessageBox::NoButton, QApplication::activeWindow());
    QPushButton* yes = box.addButton(translated(QT_TRANSLATE_NOOP("Version check", "Yes")), QMessageBox::YesRole);
    box.addButton(translated(QT_TRANSLATE_NOOP("Version check", "No")), QMessageBox::NoRole);
    box.exec();
    return box.clickedButton() == yes;
}

void AppUpdater::showUpToDate() {
    QMessageBox::information(QApplication::activeWindow(), QCoreApplication::applicationName(),
                             translated(QT_TRANSLATE_NOOP("Version check", "Application is up-to-date")));
}

void AppUpdater::quitApplication() { QCoreApplication::exit(0); }
