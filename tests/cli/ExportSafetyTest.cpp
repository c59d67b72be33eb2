// reelvue-cli cut, track and copy never touch a file they were not asked to write: the card and the output
// folder are hashed before and after every export. Refusals, forced replacing, failures with the system's
// reason, and a cut-off recording that yields less than asked.
#include "support/CliRunner.h"
#include "support/GeneratedMedia.h"
#include "support/RecordingFixtures.h"
#include "support/TmpfsMount.h"
#include "support/TreeSnapshot.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

using testing::HasSubstr;
using testing::Not;
using testsupport::CliResult;
using testsupport::changedPaths;
using testsupport::snapshot;

namespace {

// A card of two 3-second recordings from 14:00:00 (front, rear, track), a cut-off recording of 10 s at
// 15:00:00 and a recording of sound alone at 16:00:00, each of the last two in a folder of its own.
class ExportSafetyTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        s_dir = new QTemporaryDir;
        s_ready = true;
        for (const char* time : {"140000", "140003"}) {
            const QString base = s_dir->filePath(QStringLiteral("card/Normal/2024_0307_%1_").arg(time));
            QDir().mkpath(QFileInfo(base).path());
            testsupport::MediaOptions rear;
            rear.width = 160;
            rear.height = 96;
            s_ready = s_ready && testsupport::generateVideo(base + "F.MP4") && testsupport::generateVideo(base + "R.MP4", rear);
            const QTime start = QTime::fromString(QString::fromLatin1(time), QStringLiteral("HHmmss"));
            testsupport::writeTrack(base + "F.NMEA",
                                    testsupport::standingFixes(QDateTime(QDate(2024, 3, 7), start).toUTC(), 3, 50.0, 14.0));
        }
        testsupport::MediaOptions tenSeconds;
        tenSeconds.seconds = 10;
        tenSeconds.indexFirst = true;
        const QString cutOff = s_dir->filePath("cutoff/2024_0307_150000_F.MP4");
        QDir().mkpath(QFileInfo(cutOff).path());
        s_ready = s_ready && testsupport::generateVideo(cutOff, tenSeconds);
        QFile file(cutOff);
        s_ready = s_ready && file.resize(file.size() * 31 / 100);
        testsupport::MediaOptions sound;
        sound.withVideo = false;
        const QString soundOnly = s_dir->filePath("sound/2024_0307_160000_F.MP4");
        QDir().mkpath(QFileInfo(soundOnly).path());
        s_ready = s_ready && testsupport::generateVideo(soundOnly, sound);
    }
    static void TearDownTestSuite() {
        delete s_dir;
        s_dir = nullptr;
    }
    void SetUp() override {
        ASSERT_TRUE(s_ready) << "ffmpeg could not make the recordings";
        testsupport::writeFile(out("thesis.docx"), "four years of work");
        testsupport::writeFile(out("old.gpx"), "an earlier export");
        testsupport::writeFile(out("old.mp4"), "an earlier cut");
        ASSERT_EQ(::link(QFile::encodeName(card("Normal/2024_0307_140000_F.MP4")).constData(),
                         QFile::encodeName(out("link.MP4")).constData()), 0);
    }

    static QString card(const QString& relative = {}) { return s_dir->filePath("card/" + relative); }
    QString out(const QString& relative) const { return m_out.filePath(relative); }

    // Runs one export and checks that, of the card and the output folder, only `written` (paths relative to
    // the output folder) changed.
    CliResult exportAndCompare(const QStringList& arguments, const QStringList& written = {}) {
        const auto cardBefore = snapshot(s_dir->path());
        const auto outBefore = snapshot(m_out.path());
        const CliResult result = testsupport::runCli(arguments, 120000);
        EXPECT_EQ(changedPaths(cardBefore, snapshot(s_dir->path())), QStringList()) << arguments.join(' ').toStdString();
        EXPECT_EQ(changedPaths(outBefore, snapshot(m_out.path())), written) << arguments.join(' ').toStdString();
        return result;
    }

    static QStringList cut(const QString& output, const QStringList& more = {}) {
        return QStringList{"cut", card(), "--from", "2024-03-07T14:00:01", "--to", "2024-03-07T14:00:05", "-o", output} + more;
    }
    static QStringList track(const QString& output, const QStringList& more = {}) {
        return QStringList{"track", card(), "--format", "gpx", "-o", output} + more;
    }

    static inline QTemporaryDir* s_dir = nullptr;
    static inline bool s_ready = false;
    QTemporaryDir m_out;
};

} // namespace

TEST_F(ExportSafetyTest, exports_refuse_their_inputs_the_card_and_existing_files) {
    struct Case {
        QStringList arguments;
        const char* reason;
    };
    const std::vector<Case> cases = {
        {cut(card("Normal/2024_0307_140000_F.MP4")), "one of the recordings being read"},
        {cut(card("Normal/2024_0307_140003_R.MP4")), "one of the recordings being read"},
        {cut(out("link.MP4")), "one of the recordings being read"}, // the same file by another name
        {cut(card("Normal/../cut.mp4")), "inside"},
        {cut(out("thesis.docx")), "already exists (--force replaces it)"},
        {track(card("Normal/2024_0307_140000_F.NMEA"), {"--force"}), "one of the recordings being read"},
        {track(card("track.gpx")), "inside"},
        {track(out("old.gpx")), "already exists (--force replaces it)"},
        {{"copy", card(), "--from", "2024-03-07T14:00:00", "--to", "2024-03-07T14:00:01", "-o", card("saved")}, "inside"},
    };
    for (const Case& c : cases) {
        const CliResult result = exportAndCompare(c.arguments);
        EXPECT_EQ(result.exitCode, 1) << c.arguments.join(' ').toStdString();
        EXPECT_THAT(result.err, HasSubstr(c.reason)) << c.arguments.join(' ').toStdString();
    }
    // Told to replace, a cut that fails (no container for ".docx") leaves the old file as it was.
    const CliResult failed = exportAndCompare(cut(out("thesis.docx"), {"--force"}));
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_THAT(failed.err, HasSubstr("Failed to save the cut"));
}

TEST_F(ExportSafetyTest, exports_write_only_their_target_and_copies_keep_the_times) {
    const CliResult replaced = exportAndCompare(cut(out("old.mp4"), {"--force"}), {"old.mp4"});
    ASSERT_EQ(replaced.exitCode, 0) << replaced.err;
    EXPECT_NEAR(testsupport::probeDuration(out("old.mp4")), 4.0, 1.0);
    const CliResult track = exportAndCompare(this->track(out("old.gpx"), {"--force"}), {"old.gpx"});
    ASSERT_EQ(track.exitCode, 0) << track.err;
    EXPECT_EQ(testsupport::readFile(out("old.gpx")).count("<trkpt "), 6);

    const QStringList names{"2024_0307_140000_F.MP4", "2024_0307_140000_F.NMEA", "2024_0307_140000_R.MP4"};
    QStringList written{"saved"};
    for (const QString& name : names)
        written << "saved/" + name;
    const CliResult copied = exportAndCompare(
        {"copy", card(), "--from", "2024-03-07T14:00:00", "--to", "2024-03-07T14:00:01", "-o", out("saved")}, written);
    ASSERT_EQ(copied.exitCode, 0) << copied.err;
    for (const QString& name : names) {
        const QFileInfo copy(out("saved/" + name));
        const QFileInfo original(card("Normal/" + name));
        EXPECT_EQ(copy.lastModified(), original.lastModified()) << name.toStdString();
        EXPECT_EQ(testsupport::readFile(copy.filePath()), testsupport::readFile(original.filePath())) << name.toStdString();
    }
}

TEST_F(ExportSafetyTest, failures_give_the_system_reason_and_container_advice_only_where_it_helps) {
    const CliResult missing = exportAndCompare(cut(out("no/such/folder/x.mp4")));
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_THAT(missing.err, HasSubstr("No such file or directory"));
    EXPECT_THAT(missing.err, Not(HasSubstr("Try another container")));

    const CliResult noPicture = exportAndCompare({"cut", s_dir->filePath("sound"), "--from", "2024-03-07T16:00:00", "--to",
                                                  "2024-03-07T16:00:02", "-o", out("sound.mp4"), "--reencode"});
    EXPECT_EQ(noPicture.exitCode, 1);
    EXPECT_THAT(noPicture.err, HasSubstr("There is no video context in output"));

    SKIP_UNLESS_TMPFS_MOUNTS();
    testsupport::MountTestLock lock;
    testsupport::TmpfsMount disk("reelvue-full-disk");
    ASSERT_TRUE(disk.isMounted()) << disk.error().toStdString();
    // 1 MiB of which 32 KiB stay free: less than any of these exports needs.
    testsupport::writeFile(disk.path() + "/filler", QByteArray(1024 * 1024 - 32 * 1024, 'x'));
    const auto before = snapshot(disk.path());
    for (const QStringList& arguments :
         {cut(disk.path() + "/cut.mp4"), cut(disk.path() + "/cut.mkv", {"--reencode"}),
          {"copy", card(), "--from", "2024-03-07T14:00:00", "--to", "2024-03-07T14:00:01", "-o", disk.path()}}) {
        const CliResult full = exportAndCompare(arguments);
        EXPECT_EQ(full.exitCode, 1) << arguments.join(' ').toStdString();
        EXPECT_THAT(full.err, HasSubstr("No space left on device")) << arguments.join(' ').toStdString();
        EXPECT_THAT(full.err, Not(HasSubstr("Try another container")));
        EXPECT_EQ(changedPaths(before, snapshot(disk.path())), QStringList()) << arguments.join(' ').toStdString();
    }
}

TEST_F(ExportSafetyTest, stream_copy_of_a_cut_off_recording_says_how_much_was_written) {
    const CliResult result = exportAndCompare({"cut", s_dir->filePath("cutoff"), "--from", "2024-03-07T15:00:00", "--to",
                                               "2024-03-07T15:00:10", "-o", out("short.mp4")},
                                              {"short.mp4"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const QRegularExpressionMatch said =
        QRegularExpression(QStringLiteral("Only ([0-9.]+) s of the 10.0 s asked were written")).match(QString::fromStdString(result.err));
    ASSERT_TRUE(said.hasMatch()) << result.err;
    EXPECT_NEAR(said.captured(1).toDouble(), 3.1, 0.6);
    EXPECT_NEAR(testsupport::probeDuration(out("short.mp4")), said.captured(1).toDouble(), 0.3);
}
