// reelvue-cli cut on a folder of recorder files: stream copy, rear camera turned, the burned-in overlay in
// other containers, Ctrl+C and the other stopping signals, bad arguments.
#include "support/CliRunner.h"
#include "support/GeneratedMedia.h"
#include "support/StripeMedia.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

using testing::HasSubstr;
using testsupport::CliResult;

namespace {

// Three 3-second recordings from 2024-03-07 14:00:00 local time, each with a rear file.
class CutCommandTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        s_card = new QTemporaryDir;
        QDir(s_card->path()).mkpath(QStringLiteral("Normal"));
        for (const char* time : {"140000", "140003", "140006"}) {
            testsupport::MediaOptions main;
            s_ready = testsupport::generateVideo(s_card->filePath(QStringLiteral("Normal/2024_0307_%1_F.MP4").arg(time)), main);
            testsupport::MediaOptions rear;
            rear.width = 160;
            rear.height = 96;
            s_ready = s_ready && testsupport::generateVideo(
                                     s_card->filePath(QStringLiteral("Normal/2024_0307_%1_R.MP4").arg(time)), rear);
            if (!s_ready)
                return;
        }
    }
    static void TearDownTestSuite() {
        delete s_card;
        s_card = nullptr;
    }
    void SetUp() override { ASSERT_TRUE(s_ready) << "ffmpeg could not make the recordings"; }

    static CliResult cut(const QStringList& arguments) {
        return testsupport::runCli(QStringList{"cut", s_card->path()} + arguments, 120000);
    }
    QString output(const QString& name) const { return m_out.filePath(name); }

    static inline QTemporaryDir* s_card = nullptr;
    static inline bool s_ready = false;
    QTemporaryDir m_out;
};

} // namespace

TEST_F(CutCommandTest, stream_copy_over_two_files_prints_the_file_and_draws_progress) {
    const QString file = output("cut.mp4");
    const CliResult result = cut({"--from", "2024-03-07T14:00:01", "--to", "2024-03-07T14:00:05", "-o", file});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, file.toStdString() + "\n");
    EXPECT_THAT(result.err, HasSubstr("] 100%"));
    EXPECT_NEAR(testsupport::probeDuration(file), 4.0, 1.0);
    EXPECT_EQ(testsupport::probeStreams(file).size(), 2u);
}

TEST_F(CutCommandTest, rear_camera_reencoded_with_a_quarter_turn_and_no_sound) {
    const QString file = output("rear.mkv");
    const CliResult result = cut({"--from", "2024-03-07T14:00:02", "--to", "2024-03-07T14:00:04", "-o", file, "--camera",
                               "rear", "--only-video", "--reencode", "--rotation", "270"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const auto streams = testsupport::probeStreams(file);
    ASSERT_EQ(streams.size(), 1u);
    EXPECT_EQ(streams[0].width, 96);
    EXPECT_EQ(streams[0].height, 160);
    EXPECT_NEAR(testsupport::probeDuration(file), 2.0, 0.2);
}

namespace {
// Of the pixels of `area`, the share whose grey differs by more than a quarter of the range between the two.
double differingShare(const QImage& a, const QImage& b, const QRect& area) {
    int differing = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            differing += std::abs(qGray(a.pixel(x, y)) - qGray(b.pixel(x, y))) > 64;
    return static_cast<double>(differing) / (area.width() * area.height());
}
} // namespace

TEST_F(CutCommandTest, overlay_burns_text_into_a_cut_that_keeps_its_container) {
    struct Case {
        const char* name;
        QStringList options;
        const char* formatName;
        std::size_t streams;
    };
    const Case cases[] = {
        {"cut.mkv", {}, "matroska,webm", 2},
        {"rear.avi", {"--camera", "rear", "--only-video"}, "avi", 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const QString overlaid = output(QStringLiteral("overlay-") + c.name);
        const QString plain = output(QStringLiteral("plain-") + c.name);
        const QStringList interval{"--from", "2024-03-07T14:00:02", "--to", "2024-03-07T14:00:04"};
        const CliResult withOverlay = cut(interval + c.options + QStringList{"--overlay", "-o", overlaid});
        ASSERT_EQ(withOverlay.exitCode, 0) << withOverlay.err;
        ASSERT_EQ(cut(interval + c.options + QStringList{"--reencode", "-o", plain}).exitCode, 0);
        EXPECT_EQ(testsupport::probeFormatName(overlaid), c.formatName);
        EXPECT_EQ(testsupport::probeStreams(overlaid).size(), c.streams);
        EXPECT_NEAR(testsupport::probeDuration(overlaid), 2.0, 0.2);

        // The text box sits at the top left, the camera's name at the bottom left; below the box on the right
        // is the camera's own picture.
        const QImage a = testsupport::extractFrame(overlaid, 1.0, output("a.png"));
        const QImage b = testsupport::extractFrame(plain, 1.0, output("b.png"));
        ASSERT_EQ(a.size(), b.size());
        const QRect band(0, 0, a.width() / 2, a.height() / 4);
        const QRect picture(a.width() / 2, a.height() / 2, a.width() / 2, a.height() / 4);
        EXPECT_GT(differingShare(a, b, band), 0.15);
        EXPECT_LT(differingShare(a, b, picture), 0.05);
    }
}

TEST_F(CutCommandTest, ctrl_c_sigterm_and_sighup_cancel_and_remove_the_partial_file) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const QString file = output(QStringLiteral("interrupted%1.mp4").arg(signal));
        QProcess process;
        process.start(QStringLiteral(REELVUE_RUN_DIR "/reelvue-cli"),
                      {"cut", s_card->path(), "--from", "2024-03-07T14:00:00", "--to", "2024-03-07T14:00:09", "-o", file,
                       "--reencode", "--rotation", "90"});
        ASSERT_TRUE(process.waitForStarted());
        QByteArray err;
        // Interrupt once encoding is visibly under way.
        const QRegularExpression underWay(QStringLiteral("\\] +[1-9][0-9]*%"));
        while (!QString::fromUtf8(err).contains(underWay) && process.state() == QProcess::Running) {
            process.waitForReadyRead(100);
            err += process.readAllStandardError();
        }
        ASSERT_EQ(process.state(), QProcess::Running) << err.toStdString();
        ::kill(static_cast<pid_t>(process.processId()), signal);
        ASSERT_TRUE(process.waitForFinished(60000));
        err += process.readAllStandardError();
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit) << signal;
        EXPECT_EQ(process.exitCode(), 128 + signal) << err.toStdString();
        EXPECT_THAT(err.toStdString(), HasSubstr("Canceled"));
        EXPECT_FALSE(QFile::exists(file));
        const QStringList left = QDir(m_out.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        EXPECT_TRUE(left.isEmpty()) << left.join(' ').toStdString();
    }
}

TEST_F(CutCommandTest, bad_requests_fail_with_the_reason) {
    const CliResult order = cut({"--from", "2024-03-07T14:00:05", "--to", "2024-03-07T14:00:01", "-o", output("x.mp4")});
    EXPECT_EQ(order.exitCode, 2);
    EXPECT_THAT(order.err, HasSubstr("--from must come before --to"));
    const CliResult format = cut({"--from", "07.03.2024 14:00", "--to", "2024-03-07T14:00:01", "-o", output("x.mp4")});
    EXPECT_THAT(format.err, HasSubstr("yyyy-MM-ddTHH:mm:ss"));
    const CliResult nothing = cut({"--from", "2024-03-08T14:00:00", "--to", "2024-03-08T14:00:05", "-o", output("x.mp4")});
    EXPECT_EQ(nothing.exitCode, 1);
    EXPECT_THAT(nothing.err, HasSubstr("Nothing was recorded between"));
    const CliResult unwritable = cut({"--from", "2024-03-07T14:00:01", "--to", "2024-03-07T14:00:02", "-o",
                                   output("no/such/folder/x.mp4")});
    EXPECT_EQ(unwritable.exitCode, 1);
    EXPECT_THAT(unwritable.err, HasSubstr("Failed to save the cut"));
    EXPECT_FALSE(QFile::exists(output("x.mp4")));
}
