#include "ui/AppUpdater.h"

#include "core/ApplicationOptions.h"
#include "logging/Logging.h"

#include <QApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QHostAddress>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryFile>

#include <cstdio>

namespace {
constexpr const char* kLogger = "ui.AppUpdater";
constexpr const char* kContext = "Version check";

// The running version 1.3.12(.856). Each number is compared on its own on purpose, so 1.2.13 counts as newer.
constexpr int kMajor = 1;
constexpr int kMinor = 3;
constexpr int kPatch = 12;

// Texts are marked with QT_TRANSLATE_NOOP under this same context, so tools/update-translations finds them.
QString translated(const char* text) { return QCoreApplication::translate(kContext, text); }

QString downloadFailedText() {
    return translated(QT_TRANSLATE_NOOP("Version check", "Failed to download updated application"));
}

bool isLoopback(const QUrl& url) {
    const QString host = url.host();
    return host == QLatin1String("localhost") || QHostAddress(host).isLoopback();
}
} // namespace

AppUpdater& AppUpdater::instance() {
    static AppUpdater* updater = new AppUpdater(qApp);
    return *updater;
}

AppUpdater::AppUpdater(QObject* parent) : QObject(parent) {}

void AppUpdater::checkForUpdate() {
    if (m_versionUrl.isEmpty())
        m_versionUrl = QUrl(applicationOptions().updaterUrl);
    QNetworkRequest request(m_versionUrl);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    QNetworkReply* reply = m_network.get(request);
    connect(reply, &QNetworkReply::finished, this, &AppUpdater::onVersionRequestFinished);
}

void AppUpdater::onVersionRequestFinished() {
    auto* reply = qobject_cast<QNetworkReply*>(sender());
    if (!reply)
        return;
    const bool firstCheck = m_firstCheck;
    m_firstCheck = false;
    reply->deleteLater();

    if (reply->error() != QNetworkReply::NoError) {
        if (!firstCheck) {
            LOG_ERROR(kLogger, "Failed to define last version. {}", reply->errorString().toStdString());
            showUpToDate();
        }
        return;
    }

    const QByteArray version = reply->readLine().trimmed();
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
    m_downloadUrl = QUrl(QString::fromUtf8(reply->readLine().trimmed()));
    m_expectedSha256 = reply->readLine().trimmed().toLower();
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
    m_canceled = false;
    QNetworkRequest request(m_downloadUrl);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    m_download = m_network.get(request);
    connect(m_download, &QNetworkReply::downloadProgress, this, &AppUpdater::onDownloadProgress);
    connect(m_download, &QNetworkReply::finished, this, &AppUpdater::onDownloadNewAppVersionFinished);
    connect(m_download, &QNetworkReply::errorOccurred, this, &AppUpdater::onDownloadError);
    emit started();
}

void AppUpdater::cancel() {
    m_canceled = true;
    if (m_download)
        m_download->abort();
}

void AppUpdater::onDownloadProgress(qint64 received, qint64 total) {
    if (total > 0)
        emit progress(static_cast<int>(received * 100 / total));
}

void AppUpdater::onDownloadError(QNetworkReply::NetworkError code) {
    if (m_canceled)
        return; // the abort of a cancel reports an error too; finished() tells the window
    if (auto* reply = qobject_cast<QNetworkReply*>(sender()))
        reply->blockSignals(true);
    LOG_WARN(kLogger, "Failed to download updated application. Error code: {}", static_cast<int>(code));
    if (m_download) {
        m_download->deleteLater();
        m_download.clear();
    }
    emit finished(downloadFailedText());
}

bool AppUpdater::matchesExpectedChecksum(const QByteArray& body) const {
    if (m_expectedSha256.isEmpty())
        return true;
    return QCryptographicHash::hash(body, QCryptographicHash::Sha256).toHex() == m_expectedSha256;
}

void AppUpdater::onDownloadNewAppVersionFinished() {
    auto* reply = qobject_cast<QNetworkReply*>(sender());
    if (!reply)
        return;
    reply->deleteLater();
    m_download.clear();
    if (m_canceled) {
        emit finished(QString());
        return;
    }
    if (reply->error() != QNetworkReply::NoError) {
        LOG_WARN(kLogger, "Failed to download updated application. Error: {}", reply->errorString().toStdString());
        emit finished(downloadFailedText());
        return;
    }

    const QFileInfo urlFile(m_downloadUrl.path());
    const QString suffix = urlFile.suffix();
    const QByteArray body = reply->readAll();
    QString path;
    bool written = false;
    {
        // A temporary file keeps its handle open until it is destroyed, and a file open for writing cannot
        // be executed: the scope ends before the installer starts.
        QTemporaryFile file(QDir::temp().filePath(urlFile.completeBaseName() + QStringLiteral("-XXXXXX") +
                                                   (suffix.isEmpty() ? QString() : QLatin1Char('.') + suffix)));
        file.setAutoRemove(false);
        if (!file.open()) {
            emit finished(translated(QT_TRANSLATE_NOOP("Version check", "Cannot write to file ")) +
                          file.fileTemplate());
            return;
        }
        path = file.fileName();
        written = file.write(body) == body.size() && file.flush();
        file.setPermissions(QFileDevice::ReadUser | QFileDevice::WriteUser | QFileDevice::ExeUser);
    }
    if (!written) {
        QFile::remove(path);
        emit finished(translated(QT_TRANSLATE_NOOP("Version check", "Cannot write to file ")) + path);
        return;
    }
    if (!matchesExpectedChecksum(body)) {
        LOG_WARN(kLogger, "Checksum of the downloaded application {} does not match the published one", path.toStdString());
        QFile::remove(path);
        emit finished(downloadFailedText());
        return;
    }

    LOG_DEBUG(kLogger, "Downloading is completed");
    if (!QProcess::startDetached(path, {})) {
        emit finished(translated(QT_TRANSLATE_NOOP("Version check", "Failed to start ")) + path);
        return;
    }
    LOG_DEBUG(kLogger, "Updated application started");
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
