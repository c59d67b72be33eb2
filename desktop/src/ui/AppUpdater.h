// Asks the update server for the newest version, offers it, downloads the installer and starts it.
// Lives on the GUI thread; everything runs through the network access manager's signals.
#pragma once

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QObject>
#include <QPointer>
#include <QUrl>

class AppUpdater : public QObject {
    Q_OBJECT
public:
    // The process-wide updater, made on first use (after the application object exists).
    static AppUpdater& instance();

    explicit AppUpdater(QObject* parent = nullptr);

    // Sends the version request to the configured URL. The first check is silent unless an update is offered.
    void checkForUpdate();

signals:
    void started();                          // the download begins
    void progress(int percent);              // of the download
    void finished(const QString& message);   // the download ended without starting the installer

public slots:
    void cancel();
    void onVersionRequestFinished();
    void onDownloadProgress(qint64 received, qint64 total);
    void onDownloadNewAppVersionFinished();
    void onDownloadError(QNetworkReply::NetworkError code);

protected:
    // Asks "A new version is available. Want to update?"; true for "Yes".
    virtual bool askToUpdate();
    virtual void showUpToDate();
    // Ends the application's event loop once the installer runs.
    virtual void quitApplication();

private:
    void startDownload();
    bool isDownloadUrlAcceptable() const;
    bool matchesExpectedChecksum(const QByteArray& body) const;

    QNetworkAccessManager m_network;
    QUrl m_versionUrl; // taken from the options on the first check
    bool m_canceled = false;
    bool m_firstCheck = true;
    QUrl m_downloadUrl;
    QByteArray m_expectedSha256; // lower-case hex, empty when the server gave none
    QPointer<QNetworkReply> m_download;
};
