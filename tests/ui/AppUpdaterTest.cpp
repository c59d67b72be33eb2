// The updater against a real HTTP server on 127.0.0.1, with the real message boxes answered as a user would.
#include "core/ApplicationOptions.h"
#include "support/BoxAnswerer.h"
#include "support/LocalHttpServer.h"
#include "support/TestSupport.h"
#include "ui/AppUpdater.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sodium.h>
#include <unistd.h>

using testsupport::BoxAnswerer;
using testsupport::LocalHttpServer;
using testsupport::LogCapture;
using testsupport::waitUntil;

namespace {

const QString kVersionPath = QStringLiteral("/update/Reelvue/WINDOWS/stable");
const QByteArray kQuestion = "A new version is available. Want to update?";

// An Ed25519 key pair; sign() appends the signature line as tools/sign-update does.
class SigningKey {
public:
    SigningKey() : m_public(crypto_sign_PUBLICKEYBYTES, 0), m_secret(crypto_sign_SECRETKEYBYTES, 0) {
        EXPECT_GE(sodium_init(), 0);
        crypto_sign_keypair(bytes(m_public), bytes(m_secret));
    }
    const QByteArray& publicKey() const { return m_public; }
    QByteArray sign(const QByteArray& lines) const {
        QByteArray signature(crypto_sign_BYTES, 0);
        crypto_sign_detached(bytes(signature), nullptr, bytes(lines), lines.size(), bytes(m_secret));
        return lines + signature.toBase64() + "\n";
    }

private:
    static unsigned char* bytes(const QByteArray& data) { return reinterpret_cast<unsigned char*>(const_cast<char*>(data.data())); }
    QByteArray m_public, m_secret;
};

QByteArray lines(const QByteArray& version, const QByteArray& url, const QByteArray& sha256 = QByteArray(64, '0')) {
    return version + "\n" + url + "\n" + sha256 + "\n";
}

// The peak growth of this process's resident memory while it lives, sampled every 5 ms.
class ResidentGrowth {
public:
    ResidentGrowth() {
        QObject::connect(&m_timer, &QTimer::timeout, [this] { m_peak = std::max(m_peak, resident()); });
        m_timer.start(5);
    }
    qint64 megabytes() const { return (std::max(m_peak, resident()) - m_start) >> 20; }

private:
    static qint64 resident() {
        QFile statm(QStringLiteral("/proc/self/statm"));
        statm.open(QIODevice::ReadOnly);
        return statm.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE);
    }
    const qint64 m_start = resident();
    qint64 m_peak = m_start;
    QTimer m_timer;
};

class QuitRecordingUpdater : public AppUpdater {
public:
    using AppUpdater::AppUpdater;
    bool quitRequested = false;

protected:
    void quitApplication() override { quitRequested = true; }
};

class AppUpdaterTest : public testing::Test {
protected:
    void SetUp() override {
        // Downloads land in a folder of this test alone.
        m_savedTmp = qgetenv("TMPDIR");
        qputenv("TMPDIR", m_tmp.path().toUtf8());
        applicationOptions().forceUpdate = false;
        applicationOptions().updaterUrl = server.url(kVersionPath).toString();
        // The signing key second, as while releases move to a new key.
        settings.publicKeys = {SigningKey().publicKey(), key.publicKey()};
        settings.maxDownloadBytes = 64 << 20;
        settings.versionStall = settings.downloadStall = std::chrono::milliseconds(300);
    }
    void TearDown() override {
        applicationOptions() = ApplicationOptions();
        qputenv("TMPDIR", m_savedTmp);
    }

    void publishVersion(const QByteArray& version, const QByteArray& url = "http://127.0.0.1/x.sh") {
        server.route(kVersionPath, {200, key.sign(lines(version, url)), {}, -1});
    }
    QByteArray installerUrl(const char* name) const { return server.url(QStringLiteral("/files/") + name).toEncoded(); }
    QStringList tmpFiles() const { return QDir::temp().entryList(QDir::Files | QDir::Hidden); }
    LocalHttpServer server;
    SigningKey key;
    UpdaterSettings settings;

private:
    QTemporaryDir m_tmp;
    QByteArray m_savedTmp;
};

} // namespace

TEST_F(AppUpdaterTest, same_version_is_silent_on_the_first_check_and_up_to_date_on_later_ones) {
    LogCapture capture;
    publishVersion("1.3.12");
    // Reached through a redirect, which the version request follows.
    applicationOptions().updaterUrl = server.url(QStringLiteral("/old")).toString();
    server.route(QStringLiteral("/old"), {302, {}, server.url(kVersionPath).toEncoded(), -1});
    BoxAnswerer answerer(QStringLiteral("OK"));
    QuitRecordingUpdater updater(settings);
    updater.checkForUpdate();
    EXPECT_TRUE(waitUntil([&] { return server.requestCount(kVersionPath) == 1; }));
    QTest::qWait(150);
    EXPECT_TRUE(answerer.texts.empty());
    updater.checkForUpdate();
    EXPECT_TRUE(waitUntil([&] { return !answerer.texts.empty(); }));
    EXPECT_THAT(answerer.texts, testing::ElementsAre("Application is up-to-date"));
    EXPECT_EQ(capture.linesContaining("DEBUG ui.AppUpdater - Version 1.3.12 is up-to-date").size(), 1u);
}

TEST_F(AppUpdaterTest, each_number_compared_on_its_own_decides_newer_and_force_offers_any) {
    // The first version is offered, so every later check shows a box: the question or "Application is up-to-date".
    QuitRecordingUpdater updater(settings);
    QSignalSpy started(&updater, &AppUpdater::started);
    const auto offered = [&](const char* version) {
        publishVersion(version);
        BoxAnswerer answerer(QStringLiteral("No"));
        updater.checkForUpdate();
        EXPECT_TRUE(waitUntil([&] { return !answerer.texts.empty(); })) << version;
        return answerer.texts == std::vector<std::string>{kQuestion.toStdString()};
    };
    for (const char* version : {"2.0.0", "1.4.0", "1.3.13", "1.2.13", "0.4.0"})
        EXPECT_TRUE(offered(version)) << version;
    LogCapture capture;
    for (const char* version : {"1.3.12", "1.3.11", "1.0.0", "0.2.9", "1.3"})
        EXPECT_FALSE(offered(version)) << version;
    EXPECT_EQ(capture.linesContaining("WARN ui.AppUpdater - Failed to parse remote version").size(), 1u);
    applicationOptions().forceUpdate = true;
    EXPECT_TRUE(offered("1.0.0"));
    EXPECT_EQ(started.count(), 0);
}

TEST_F(AppUpdaterTest, unreachable_or_silent_server_is_quiet_first_then_logged_with_a_box) {
    QTcpServer closed;
    closed.listen(QHostAddress::LocalHost);
    const QString closedUrl = QStringLiteral("http://127.0.0.1:%1/stable").arg(closed.serverPort());
    closed.close();
    server.route(QStringLiteral("/silent"), {200, "2.0.0\n", {}, -1, -1, true, 3});
    const std::pair<QString, std::string> cases[] = {
        {closedUrl, "ERROR ui.AppUpdater - Failed to define last version. Connection refused"},
        {server.url(QStringLiteral("/silent")).toString(), "ERROR ui.AppUpdater - Failed to define last version. no data for 0.3 s"},
    };
    for (const auto& [url, logged] : cases) {
        SCOPED_TRACE(url.toStdString());
        applicationOptions().updaterUrl = url;
        LogCapture capture;
        BoxAnswerer answerer(QStringLiteral("OK"));
        QuitRecordingUpdater updater(settings);
        updater.checkForUpdate();
        QTest::qWait(800);
        EXPECT_TRUE(answerer.texts.empty());
        EXPECT_TRUE(capture.linesContaining("ui.AppUpdater").empty());

        updater.checkForUpdate();
        EXPECT_TRUE(waitUntil([&] { return answerer.texts.size() == size_t(1); }, 5000));
        EXPECT_THAT(answerer.texts, testing::ElementsAre("Application is up-to-date"));
        EXPECT_EQ(capture.linesContaining(logged).size(), 1u);
    }
}

// The release side as a release is made: a new key and a description signed by tools/sign-update.
TEST_F(AppUpdaterTest, release_signed_by_the_tool_downloads_in_bounded_memory_and_starts_its_installer) {
    QTemporaryDir work;
    const QString marker = work.filePath(QStringLiteral("installer-ran"));
    // A shell script padded to 80 MB, more than the memory bound: sh stops at "exit" before the padding.
    const QByteArray script = "#!/bin/sh\ntouch '" + marker.toUtf8() + "'\nexit 0\n";
    const qint64 size = 80 << 20;
    settings.maxDownloadBytes = UpdaterSettings().maxDownloadBytes;
    {
        QFile installer(work.filePath(QStringLiteral("Reelvue-2.0.0.sh")));
        ASSERT_TRUE(installer.open(QIODevice::WriteOnly));
        installer.write(script);
        for (qint64 left = size - script.size(); left > 0; left -= 1 << 20)
            installer.write(QByteArray(static_cast<int>(std::min<qint64>(left, 1 << 20)), 'x'));
    }
    server.route(QStringLiteral("/files/Reelvue-2.0.0.sh"), {200, script, {}, -1, size});

    const QString tool = QStringLiteral(REELVUE_SOURCE_DIR "/tools/sign-update");
    const auto run = [&](const QStringList& arguments) {
        QProcess process;
        process.start(tool, arguments);
        EXPECT_TRUE(process.waitForFinished(10000));
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
        return process.readAllStandardOutput();
    };
    const QString keyFile = work.filePath(QStringLiteral("release.key"));
    settings.publicKeys = {QByteArray::fromBase64(run({QStringLiteral("--new-key"), keyFile}).trimmed())};
    EXPECT_EQ(QFileInfo(keyFile).permissions() & 0x0077, 0) << "the secret key is readable by others";
    server.route(kVersionPath, {200, run({keyFile, QStringLiteral("2.0.0"), QString::fromUtf8(installerUrl("Reelvue-2.0.0.sh")),
                                          work.filePath(QStringLiteral("Reelvue-2.0.0.sh"))}), {}, -1});

    LogCapture capture;
    BoxAnswerer answerer(QStringLiteral("Yes"));
    QuitRecordingUpdater updater(settings);
    QSignalSpy started(&updater, &AppUpdater::started);
    QSignalSpy progress(&updater, &AppUpdater::progress);
    QSignalSpy finished(&updater, &AppUpdater::finished);
    ResidentGrowth growth;
    updater.checkForUpdate();
    EXPECT_TRUE(waitUntil([&] { return updater.quitRequested; }, 20000));
    EXPECT_LT(growth.megabytes(), 50);
    EXPECT_THAT(answerer.texts, testing::ElementsAre(kQuestion.toStdString()));
    EXPECT_EQ(started.count(), 1);
    ASSERT_GE(progress.count(), 1);
    EXPECT_EQ(progress.last().at(0).toInt(), 100);
    EXPECT_EQ(finished.count(), 0);
    EXPECT_TRUE(waitUntil([&] { return QFileInfo::exists(marker); }, 5000));
    EXPECT_EQ(capture.linesContaining("DEBUG ui.AppUpdater - Downloading is completed").size(), 1u);
    EXPECT_EQ(capture.linesContaining("DEBUG ui.AppUpdater - Updated application started").size(), 1u);
    const QFileInfoList downloaded = QDir::temp().entryInfoList({QStringLiteral("Reelvue-2.0.0-*.sh")}, QDir::Files);
    ASSERT_EQ(downloaded.size(), 1);
    EXPECT_TRUE(downloaded[0].permission(QFileDevice::ExeUser));
    EXPECT_EQ(downloaded[0].permissions() & 0x0077, 0) << "others may change or run the installer";
}

// Whatever goes wrong, nothing is started, the reason is logged once and the temporary folder is left empty.
TEST_F(AppUpdaterTest, failures_start_nothing_log_their_reason_once_and_leave_no_file) {
    const QByteArray script = "#!/bin/sh\nexit 0\n";
    const auto describing = [&](const QByteArray& installer, const QByteArray& url) {
        return key.sign(lines("2.0.0", url, QCryptographicHash::hash(installer, QCryptographicHash::Sha256).toHex()));
    };
    const QByteArray good = describing(script, installerUrl("i.sh"));
    const QByteArray tampered = QByteArray(good).replace("2.0.0", "2.0.1");
    const QString failed = QStringLiteral("Failed to download updated application");
    using Response = LocalHttpServer::Response;
    const Response stalling{200, script, {}, -1, 1 << 20, true, 4096};
    struct Case {
        const char* what;
        Response description;
        Response installer;  // at /files/i.sh
        std::string logged;  // the reason, expected once; empty for a cancel
        QString message;     // what finished() says (its start), null when no download may start
    };
    const Case cases[] = {
        {"tampered", {200, tampered}, {200, script}, "WARN ui.AppUpdater - No update: the signature of the version description matches no update key", {}},
        {"stranger's key", {200, SigningKey().sign(lines("2.0.0", installerUrl("i.sh")))}, {200, script}, "matches no update key", {}},
        {"unsigned", {200, lines("2.0.0", installerUrl("i.sh"))}, {200, script}, "No update: the version description is not signed", {}},
        {"no checksum", {200, key.sign("2.0.0\n" + installerUrl("i.sh") + "\n")}, {200, script}, "has no SHA-256 of the installer", {}},
        {"10 MB description", {200, good, {}, -1, 10 << 20}, {200, script}, "description is larger than 4096 bytes", {}},
        {"checksum mismatch", {200, good}, {200, script + "\n"}, "does not match the published one", failed},
        {"announced too large", {200, good}, {200, script, {}, -1, 100 << 20}, "stopped: larger than the limit of 67108864 bytes", failed},
        {"unannounced too large", {200, good}, {200, script, {}, -1, 100 << 20, false}, "stopped: larger than the limit", failed},
        {"stalled", {200, good}, stalling, "WARN ui.AppUpdater - Download of the application stopped: no data for 0.3 s", failed},
        {"broken off", {200, good}, {200, script, {}, 10, 100000}, "Failed to download updated application. Error", failed},
        {"plain http elsewhere", {200, describing(script, "http://example.org/i.sh")}, {200, script}, "Refusing to download", failed},
        {"cannot run", {200, describing("text", installerUrl("i.sh"))}, {200, "text"}, "WARN ui.AppUpdater - Failed to start ",
         QStringLiteral("Failed to start ")},
        {"cancelled", {200, good}, stalling, "", QStringLiteral("")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        server.route(kVersionPath, c.description);
        server.route(QStringLiteral("/files/i.sh"), c.installer);
        const int downloads = server.requestCount(QStringLiteral("/files/i.sh"));
        LogCapture capture;
        BoxAnswerer answerer(QStringLiteral("Yes"));
        QuitRecordingUpdater updater(settings);
        QSignalSpy finished(&updater, &AppUpdater::finished);
        if (c.logged.empty())
            QObject::connect(&updater, &AppUpdater::progress, &updater, &AppUpdater::cancel, Qt::QueuedConnection);
        ResidentGrowth growth;
        updater.checkForUpdate();
        EXPECT_TRUE(waitUntil([&] {
            return (c.logged.empty() || !capture.linesContaining(c.logged).empty()) && (c.message.isNull() || !finished.empty());
        }, 10000));
        QTest::qWait(200);
        EXPECT_LT(growth.megabytes(), 50);
        EXPECT_FALSE(updater.quitRequested);
        if (!c.logged.empty()) {
            EXPECT_EQ(capture.linesContaining(c.logged).size(), 1u);
        }
        EXPECT_THAT(tmpFiles(), testing::IsEmpty());
        if (c.message.isNull()) {
            EXPECT_EQ(server.requestCount(QStringLiteral("/files/i.sh")), downloads) << "fetched an unsigned installer";
            EXPECT_TRUE(finished.empty());
            EXPECT_TRUE(answerer.texts.empty());
        } else {
            ASSERT_EQ(finished.count(), 1);
            EXPECT_EQ(finished.first().at(0).toString().left(c.message.size()), c.message);
        }
    }
}
