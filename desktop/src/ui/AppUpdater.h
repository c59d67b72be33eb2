// Asks the update server for the newest version, offers it, downloads the installer and starts it.
// Lives on the GUI thread; everything runs through the network access manager's signals.
#pragma once

#include "ui/DownloadFile.h"

#include <QList>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QObject>
#include <QPointer>
#include <QUrl>

#include <chrono>
#include <memory>

// What a hostile or broken server cannot change: the keys a version description must be signed with, the
// largest installer, and how long a silent server is waited for.
struct UpdaterSettings {
    QList<QByteArray> publicKeys; // Ed25519, 32 bytes each: the current release key and, during a change, the next
    qint64 maxDownloadBytes = qint64(1) << 30;
    // 15 s without a byte: a version description is a few hundred bytes, so a server this slow is not answering.
    std::chrono::milliseconds versionStall{15000};
    // 30 s without a byte: long enough for a congested mobile link to recover, short enough for a user to wait.
    std::chrono::milliseconds downloadStall{30000};

    // The keys and limit this program was built with (REELVUE_UPDATE_KEY, REELVUE_UPDATE_NEXT_KEY,
    // REELVUE_UPDATE_MAX_DOWNLOAD).
    static UpdaterSettings built();
};

class AppUpdater : public QObject {
    Q_OBJECT
public:
    // The process-wide updater with the built settings, made on first use (after the application object exists).
    static AppUpdater& instance();

    explicit AppUpdater(UpdaterSettings settings = UpdaterSettings::built(), QObject* parent = nullptr);
    ~AppUpdater() override;

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
    void onDownloadData();
    // Drops the download and its file, then tells the window.
    void endDownload(const QString& message);
    bool isDownloadUrlAcceptable() const;

    const UpdaterSettings m_settings;
    QNetworkAccessManager m_network;
    QUrl m_versionUrl; // taken from the options on the first check
    bool m_canceled = false;
    bool m_firstCheck = true;
    QUrl m_downloadUrl;
    QByteArray m_expectedSha256; // lower-case hex, from the signed version description
    QPointer<QNetworkReply> m_download;
    std::unique_ptr<DownloadFile> m_file; // the installer while it arrives
};
