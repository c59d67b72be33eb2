// The incident evidence pack on the demo card: reelvue-cli evidence and verify as a user runs them, the standard
// tools as the oracles (sha256sum, ffprobe, gpsbabel), and the pack job's cancel and full-disk endings.
#include "core/PlaylistItemModel.h"
#include "core/PlaylistLoader.h"
#include "core/evidence/EvidencePack.h"
#include "support/CliRunner.h"
#include "support/TmpfsMount.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <map>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;
using testsupport::CliResult;
using testsupport::runCli;

namespace {

// The interval crosses the change from the 09:01 recordings to the 09:02 ones.
const QString kFrom = QStringLiteral("2024-06-14T09:01:30");
const QString kTo = QStringLiteral("2024-06-14T09:02:30");

QDateTime local(const QString& text) { return QDateTime::fromString(text, Qt::ISODate); }

// Path -> SHA-256 and (when asked) modification time of every file below a folder.
std::map<std::string, std::string> snapshot(const QString& root, bool withTimes = true) {
    std::map<std::string, std::string> files;
    QDirIterator it(root, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        file.open(QIODevice::ReadOnly);
        QByteArray value = QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256).toHex();
        if (withTimes)
            value += ' ' + QByteArray::number(QFileInfo(file).lastModified().toMSecsSinceEpoch());
        files[QDir(root).relativeFilePath(file.fileName()).toStdString()] = value.toStdString();
    }
    return files;
}

QByteArray run(const QString& program, const QStringList& arguments, const QString& directory = {}, int* exitCode = nullptr) {
    QProcess process;
    process.setWorkingDirectory(directory);
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(60000)) << program.toStdString();
    if (exitCode)
        *exitCode = process.exitCode();
    return process.readAllStandardOutput();
}

class EvidenceTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        s_card = new QTemporaryDir;
        QProcess make;
        make.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        make.start(QStringLiteral(REELVUE_SOURCE_DIR "/tools/make-demo-card"), {s_card->path()});
        ASSERT_TRUE(make.waitForFinished(300000) && make.exitCode() == 0) << "the demo card could not be made";
    }
    static void TearDownTestSuite() {
        delete s_card;
        s_card = nullptr;
    }
    static QString card() { return s_card->path(); }

    // The card's recordings as the player loads them.
    static EvidenceRequest request(const QString& folder, int margin) {
        Playlist::RawItems items;
        PlaylistLoader loader;
        QObject::connect(&loader, &PlaylistLoader::loaded,
                         [&items](Playlist* playlist, PlaylistProcessedItemModel* trips, PlaylistProcessedItemModel* parking,
                                  PlaylistRawItemModel* events, PlaylistRawItemModel* raw) {
                             items = playlist->rawItems();
                             for (QObject* model : std::initializer_list<QObject*>{trips, parking, events, raw})
                                 delete model;
                             delete playlist;
                         });
        loader.loadDirectory(card());
        EXPECT_FALSE(items.empty());
        EvidenceRequest request;
        request.items = items;
        request.interval = {local(kFrom), local(kTo)};
        request.folder = folder;
        request.cardPath = card();
        request.marginSeconds = margin;
        return request;
    }

    static QTemporaryDir* s_card;
    QTemporaryDir m_out;
};

QTemporaryDir* EvidenceTest::s_card = nullptr;

} // namespace

TEST_F(EvidenceTest, pack_across_a_file_change_holds_the_untouched_originals_and_verify_names_every_alteration) {
    const auto cardBefore = snapshot(card());
    const QString pack = m_out.filePath("incident");
    const CliResult made =
        runCli({"evidence", card(), "--from", kFrom, "--to", kTo, "-o", pack, "--mark", "2024-06-14T09:02:00", "--zip"}, 120000);
    ASSERT_EQ(made.exitCode, 0) << made.err;
    EXPECT_EQ(snapshot(card()), cardBefore) << "the card was written to";

    // The ZIP holds the bag under its own name, every file whole (unzip checks each CRC).
    int exitCode = -1;
    run("unzip", {"-q", pack + ".zip", "-d", m_out.filePath("unzipped")}, {}, &exitCode);
    EXPECT_EQ(exitCode, 0);
    EXPECT_EQ(snapshot(m_out.filePath("unzipped/incident"), false), snapshot(pack, false));

    // The standard tools agree with the pack's own check.
    run("sha256sum", {"-c", "--quiet", "manifest-sha256.txt"}, pack, &exitCode);
    EXPECT_EQ(exitCode, 0);
    run("sha256sum", {"-c", "--quiet", "tagmanifest-sha256.txt"}, pack, &exitCode);
    EXPECT_EQ(exitCode, 0);
    EXPECT_EQ(runCli({"verify", pack}).exitCode, 0);

    // Originals: both recordings of the interval and their neighbours within the 30 s margin, every camera and
    // track, identical in content and modification time.
    const auto originals = snapshot(pack + "/data/originals");
    for (const char* name : {"Normal/FILE240614-090100F.MP4", "Normal/FILE240614-090100R.MP4", "Normal/FILE240614-090100F.NMEA",
                             "Normal/FILE240614-090200F.MP4", "Normal/FILE240614-090200R.MP4", "Normal/FILE240614-090200F.NMEA"})
        EXPECT_EQ(originals.at(name), cardBefore.at(name)) << name;
    EXPECT_EQ(originals.count("Normal/FILE240614-090400F.MP4"), 0u);
    QFile info(pack + "/bag-info.txt");
    ASSERT_TRUE(info.open(QIODevice::ReadOnly));
    const std::string infoText = info.readAll().toStdString();
    EXPECT_THAT(infoText, HasSubstr("Interval-UTC: 2024-06-14T09:01:30Z to 2024-06-14T09:02:30Z"));
    EXPECT_THAT(infoText, HasSubstr("Marked-Moment: 2024-06-14T09:02:00"));
    EXPECT_THAT(infoText, HasSubstr("Card-Path: " + card().toStdString()));

    // Clips: one per camera, stream copies of a minute running on to the next key frame (at most 10 s here).
    for (const char* clip : {"front.mp4", "rear.mp4"}) {
        const double seconds = run("ffprobe", {"-v", "error", "-show_entries", "format=duration", "-of", "csv=p=0",
                                               pack + "/data/clips/" + clip}).trimmed().toDouble();
        EXPECT_GE(seconds, 59.5) << clip;
        EXPECT_LE(seconds, 70.5) << clip;
    }

    // What is derived: the overview has both cameras side by side (front 640x360, rear 480x270 scaled to the front's
    // height) with sound; a picture of each camera at the start, the mark and the end; a report naming every file's
    // hash (pdftotext reads it).
    EXPECT_EQ(run("ffprobe", {"-v", "error", "-show_entries", "stream=codec_name,width,height", "-of", "csv=p=0",
                              pack + "/data/overview.mp4"}).trimmed().toStdString(),
              "h264,1280,360\naac");
    EXPECT_EQ(QDir(pack + "/data/frames").entryList(QDir::Files).size(), 6);
    const QString report = QString::fromUtf8(run("pdftotext", {"-layout", pack + "/data/report.pdf", "-"}));
    QFile manifest(pack + "/manifest-sha256.txt");
    ASSERT_TRUE(manifest.open(QIODevice::ReadOnly));
    for (const QByteArray& line : manifest.readAll().trimmed().split('\n')) {
        const bool listed = line.endsWith("data/report.pdf") || report.contains(QString::fromLatin1(line.left(64)));
        EXPECT_TRUE(listed) << "the report lacks " << line.toStdString();
    }

    // Each alteration, on its own copy of the pack, is named by verify, which then fails.
    const struct {
        const char* alteration;
        std::function<void(const QString&)> alter;
        std::string expected;
    } cases[] = {
        {"one byte of a clip", [](const QString& root) {
             QFile clip(root + "/data/clips/front.mp4");
             clip.open(QIODevice::ReadWrite);
             clip.seek(1000);
             const char byte = clip.peek(1).at(0);
             clip.write(QByteArray(1, char(byte ^ 0x01)));
         }, "CHANGED: data/clips/front.mp4"},
        {"a removed track", [](const QString& root) { QFile::remove(root + "/data/track/track.csv"); },
         "MISSING: data/track/track.csv"},
        {"an added file", [](const QString& root) {
             QFile added(root + "/data/originals/note.txt");
             added.open(QIODevice::WriteOnly);
             added.write("added later");
         }, "EXTRA: data/originals/note.txt"},
        {"an edited bag-info.txt", [](const QString& root) {
             QFile file(root + "/bag-info.txt");
             file.open(QIODevice::Append);
             file.write("Note: edited\n");
         }, "CHANGED: bag-info.txt"},
        {"a manifest naming a file outside the pack", [](const QString& root) {
             QFile manifest(root + "/manifest-sha256.txt");
             manifest.open(QIODevice::Append);
             manifest.write(QByteArray(64, 'a') + "  ../../etc/passwd\n");
         }, "INVALID: manifest-sha256.txt"},
    };
    for (const auto& test : cases) {
        const QString copy = m_out.filePath(QString::fromLatin1(test.alteration).replace(' ', '-'));
        run("cp", {"-a", pack, copy});
        test.alter(copy);
        const CliResult verified = runCli({"verify", copy});
        EXPECT_EQ(verified.exitCode, 1) << test.alteration;
        EXPECT_THAT(verified.out, HasSubstr(test.expected)) << test.alteration;
    }

    // The GPX 1.1 track reads back in gpsbabel with the times and positions of the CSV track beside it.
    const QList<QByteArray> gpx = run("gpsbabel", {"-t", "-i", "gpx", "-f", pack + "/data/track/track.gpx", "-o", "unicsv,utc=0", "-F", "-"})
                                      .trimmed().split('\n');
    const QList<QByteArray> csv = run("cat", {pack + "/data/track/track.csv"}).trimmed().split('\n');
    ASSERT_EQ(gpx.size(), csv.size());
    ASSERT_EQ(gpx.size(), 1 + 61); // header, 09:01:30 to 09:02:30
    for (int i = 1; i < csv.size(); ++i) {
        const QList<QByteArray> g = gpx[i].trimmed().split(','); // No,Latitude,Longitude,Altitude,HDOP,VDOP,PDOP,Satellites,Date,Time
        const QList<QByteArray> c = csv[i].split(','); // timestamp,latitude,longitude,speed,altitude,satellites,...
        EXPECT_EQ((g[8] + ' ' + g[9]).toStdString(), QByteArray(c[0]).replace('.', '/').toStdString()) << i;
        EXPECT_DOUBLE_EQ(g[1].toDouble(), c[1].toDouble()) << i;
        EXPECT_DOUBLE_EQ(g[2].toDouble(), c[2].toDouble()) << i;
        EXPECT_DOUBLE_EQ(g[3].toDouble(), c[4].toDouble()) << i;
        EXPECT_EQ(g[7].toStdString(), c[5].toStdString()) << i;
    }
}

TEST_F(EvidenceTest, a_cancelled_or_full_disk_pack_leaves_nothing_and_a_pack_never_goes_over_a_folder_or_into_the_card) {
    const auto cardBefore = snapshot(card());
    {
        // Cancelled half-way: the pack runs on this thread, its progress arrives directly.
        EvidencePack pack(request(m_out.filePath("canceled"), 30));
        bool canceled = false;
        QObject::connect(&pack, &EvidencePack::progress, [&pack](int percent) {
            if (percent >= 50)
                pack.cancel();
        });
        QObject::connect(&pack, &EvidencePack::canceled, [&canceled] { canceled = true; });
        pack.encode();
        EXPECT_TRUE(canceled);
        EXPECT_FALSE(QFileInfo::exists(m_out.filePath("canceled")));
    }
    {
        // Refused before anything is written: an existing folder, a folder inside the card.
        QDir(m_out.path()).mkdir("taken");
        EXPECT_THAT(EvidencePack::refusal(m_out.filePath("taken"), card()).toStdString(), HasSubstr("already exists"));
        EXPECT_THAT(EvidencePack::refusal(card() + "/Normal/pack", card()).toStdString(), HasSubstr("on the card"));
        EXPECT_TRUE(EvidencePack::refusal(m_out.filePath("new"), card()).isEmpty());
    }
    EXPECT_EQ(snapshot(card()), cardBefore);

    // A disk that fills up in the middle: the originals (some 4 MB) fit in 5 MB, the clips do not.
    const QString whyNot = testsupport::TmpfsMount::whyNotPossible();
    if (!whyNot.isEmpty())
        GTEST_SKIP() << whyNot.toStdString();
    testsupport::MountTestLock lock;
    testsupport::TmpfsMount disk("reelvue-evidence-full", "5m");
    ASSERT_TRUE(disk.isMounted()) << disk.error().toStdString();
    EvidencePack pack(request(disk.path() + "/pack", 0));
    bool failed = false;
    QObject::connect(&pack, &EvidencePack::done, [&failed](bool ok) { failed = !ok; });
    pack.encode();
    EXPECT_TRUE(failed);
    EXPECT_THAT(pack.failureText().toStdString(), HasSubstr("The disk is full"));
    EXPECT_TRUE(QDir(disk.path()).isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden));
    EXPECT_EQ(snapshot(card()), cardBefore);
}
