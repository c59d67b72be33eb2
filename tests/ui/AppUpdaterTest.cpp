// The updater against a real HTTP server on 127.0.0.1, with the real message boxes answered as a user would.
#include "core/ApplicationOptions.h"
#include "support/BoxAnswerer.h"
#include "support/LocalHttpServer.h"
#include "support/TestSupport.h"
#include "ui/AppUpdater.h"

#include <QApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;
using testsupport::BoxAnswerer;
using testsupport::LocalHttpServer;
using testsupport::LogCapture;
using testsupport::waitUntil;

namespace {

class QuitRecordingUpdater : public AppUpdater {
public:
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
        applicationOptions().updaterUrl = server.url(QStringLiteral("/update/Reelvue/WINDOWS/stable")).toString();
    }
    void TearDown() override {
        applicationOptions() = ApplicationOptions();
        qputenv("TMPDIR", m_savedTmp);
    }

    void publishVersion(const QByteArray& description) {
        server.route(QStringLiteral("/update/Reelvue/WINDOWS/stable"), {200, description, {}, -1});
    }
    // Runs one check and waits until the server's answer has been handled.
    void check(QuitRecordingUpdater& updater) {
        const int before = server.requestCount(QStringLiteral("/update/Reelvue/WINDOWS/stable"));
        updater.checkForUpdate();
        EXPECT_TRUE(waitUntil([&] { return server.requestCount(QStringLiteral("/update/Reelvue/WINDOWS/stable")) > before; }));
        QTest::qWait(150);
    }

    LocalHttpServer server;

private:
    QTemporaryDir m_tmp;
    QByteArray m_savedTmp;
};

} // namespace

TEST_F(AppUpdaterTest, same_version_is_silent_on_the_first_check_and_up_to_date_on_later_ones) {
    LogCapture capture;
    publishVersion("1.3.12\nhttp://127.0.0.1/x.sh\n");
    BoxAnswerer answerer(QStringLiteral("OK"));
    QuitRecordingUpdater updater;
    check(updater);
    EXPECT_TRUE(answerer.texts.empty());
    check(updater);
    EXPECT_THAT(answerer.texts, testing::ElementsAre("Application is up-to-date"));
    EXPECT_EQ(capture.linesContaining("DEBUG ui.AppUpdater - Version 1.3.12 is up-to-date").size(), 1u);
}

TEST_F(AppUpdaterTest, each_number_compared_on_its_own_decides_newer_and_force_offers_any) {
    const auto offered = [&](const char* version) {
        publishVersion(QByteArray(version) + "\nhttp://127.0.0.1/x.sh\n");
        BoxAnswerer answerer(QStringLiteral("No"));
        QuitRecordingUpdater updater;
        QSignalSpy started(&updater, &AppUpdater::started);
        check(updater);
        EXPECT_EQ(started.count(), 0);
        return answerer.texts == std::vector<std::string>{"A new version is available. Want to update?"};
    };
    for (const char* version : {"2.0.0", "1.4.0", "1.3.13", "1.2.13", "0.4.0"})
        EXPECT_TRUE(offered(version)) << version;
    LogCapture capture;
    for (const char* version : {"1.3.12", "1.3.11", "1.0.0", "0.2.9", "1.3"})
        EXPECT_FALSE(offered(version)) << version;
    EXPECT_EQ(capture.linesContaining("WARN ui.AppUpdater - Failed to parse remote version").size(), 1u);
    applicationOptions().forceUpdate = true;
    EXPECT_TRUE(offered("1.0.0"));
}

TEST_F(AppUpdaterTest, unreachable_server_is_silent_first_then_logged_with_a_box) {
    QTcpServer closed;
    closed.listen(QHostAddress::LocalHost);
    const quint16 port = closed.serverPort();
    closed.close();
    applicationOptions().updaterUrl = QStringLiteral("http://127.0.0.1:%1/stable").arg(port);

    LogCapture capture;
    BoxAnswerer answerer(QStringLiteral("OK"));
    QuitRecordingUpdater updater;
    updater.checkForUpdate();
    QTest::qWait(500);
    EXPECT_TRUE(answerer.texts.empty());
    EXPECT_TRUE(capture.linesContaining("ui.AppUpdater").empty());

    updater.checkForUpdate();
    EXPECT_TRUE(waitUntil([&] { return answerer.texts.size() == size_t(1); }, 5000));
    EXPECT_EQ(answerer.texts[0], "Application is up-to-date");
    EXPECT_EQ(capture.linesContaining("ERROR ui.AppUpdater - Failed to define last version. ").size(), 1u);
}

TEST_F(AppUpdaterTest, version_request_follows_redirects) {
    applicationOptions().updaterUrl = server.url(QStringLiteral("/old")).toString();
    server.route(QStringLiteral("/old"),
                 {302, {}, server.url(QStringLiteral("/update/Reelvue/WINDOWS/stable")).toEncoded(), -1});
    publishVersion("2.0.0\nhttp://127.0.0.1/x.sh\n");
    BoxAnswerer answerer(QStringLiteral("No"));
    QuitRecordingUpdater updater;
    updater.checkForUpdate();
    EXPECT_TRUE(waitUntil([&] { return answerer.texts.size() == size_t(1); }, 5000));
}

TEST_F(AppUpdaterTest, accepted_download_starts_the_installer_and_quits) {
    QTemporaryDir work;
    const QString marker = work.filePath(QStringLiteral("installer-ran"));
    const QByteArray installer = "#!/bin/sh\ntouch '" + marker.toUtf8() + "'\n";
    server.route(QStringLiteral("/files/Reelvue-2.0.0.sh"), {200, installer, {}, -1});
    publishVersion("2.0.0\n" + server.url(QStringLiteral("/files/Reelvue-2.0.0.sh")).toEncoded() + "\n" +
                   QCryptographicHash::hash(installer, QCryptographicHash::Sha256).toHex() + "\n");

    LogCapture capture;
    BoxAnswerer answerer(QStringLiteral("Yes"));
    QuitRecordingUpdater updater;
    QSignalSpy started(&updater, &AppUpdater::started);
    QSignalSpy progress(&updater, &AppUpdater::progress);
    QSignalSpy finished(&updater, &AppUpdater::finished);
    updater.checkForUpdate();
    EXPECT_TRUE(waitUntil([&] { return updater.quitRequested; }, 10000));
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
}

TEST_F(AppUpdaterTest, failed_download_is_reported_once_and_leaves_no_file) {
    server.route(QStringLiteral("/files/bad-sum.sh"), {200, "#!/bin/sh\nexit 0\n", {}, -1});
    server.route(QStringLiteral("/files/cut.sh"), {200, QByteArray(200000, 'x'), {}, 1000}); // broken off midway
    const std::pair<QByteArray, std::string> cases[] = {
        {"2.0.0\n" + server.url(QStringLiteral("/files/bad-sum.sh")).toEncoded() + "\n" + QByteArray(64, 'a') + "\n",
         "does not match the published one"},
        {"2.0.0\n" + server.url(QStringLiteral("/files/cut.sh")).toEncoded() + "\n",
         "WARN ui.AppUpdater - Failed to download updated application"},
        // Plain HTTP from another host is never fetched.
        {"2.0.0\nhttp://downloads.example.org/Reelvue.sh\n", "Refusing to download application from"},
    };
    for (const auto& [description, logged] : cases) {
        SCOPED_TRACE(description.toStdString());
        publishVersion(description);
        LogCapture capture;
        BoxAnswerer answerer(QStringLiteral("Yes"));
        QuitRecordingUpdater updater;
        QSignalSpy finished(&updater, &AppUpdater::finished);
        updater.checkForUpdate();
        EXPECT_TRUE(waitUntil([&] { return finished.count() == 1; }, 10000));
        QTest::qWait(200);
        ASSERT_EQ(finished.count(), 1);
        EXPECT_EQ(finished.first().at(0).toString(), QStringLiteral("Failed to download updated application"));
        EXPECT_FALSE(updater.quitRequested);
        EXPECT_TRUE(QDir::temp().entryList(QDir::Files).isEmpty());
        EXPECT_FALSE(capture.linesContaining(logged).empty());
    }
}
