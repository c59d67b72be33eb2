// File names as the file system gives them: any bytes survive QString, the recordings behind them are found
// and probed, and text output escapes them.
#include "core/FileNames.h"

#include "core/PlaylistDiscovery.h"
#include "core/PlaylistLoader.h"
#include "core/TrackLoader.h"
#include "support/RecordingFixtures.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {
struct FileNamesTest : testing::Test {
    static void SetUpTestSuite() { keepFileNamesAsGiven(); }
};
} // namespace

TEST_F(FileNamesTest, every_byte_string_comes_back_unchanged) {
    const QByteArray names[] = {
        "plain.mp4", "caf\xc3\xa9.mp4", "latin1 caf\xe9.mp4", "\xff\xfe\x80", "cut \xe2\x82", // a sequence cut short
        "overlong \xc0\xaf", "surrogate \xed\xa0\x80", "emoji \xf0\x9f\x9a\x97", "\x7f\x01 control",
    };
    for (const QByteArray& name : names)
        EXPECT_EQ(QFile::encodeName(QFile::decodeName(name)), name) << name.toHex().toStdString();
    EXPECT_EQ(QFile::decodeName("caf\xc3\xa9"), QStringLiteral("caf\u00e9")); // UTF-8 stays text
}

TEST_F(FileNamesTest, printable_names_escape_what_a_terminal_would_misread) {
    const struct {
        QByteArray name;
        const char* shown;
    } cases[] = {
        {"2024_0307_140000_F.MP4", "2024_0307_140000_F.MP4"},
        {"caf\xc3\xa9", "caf\xc3\xa9"},
        {"a\xff" "b", "a\\xFFb"},
        {"line\nbreak\ttab\rreturn\x1b[31m", "line\\nbreak\\ttab\\rreturn\\x1B[31m"},
        {"back\\slash", "back\\\\slash"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(printableFileNameUtf8(QFile::decodeName(c.name)), c.shown);
}

TEST_F(FileNamesTest, a_card_and_recordings_whose_names_are_not_utf8_are_loaded) {
    QTemporaryDir dir;
    const QString card = dir.filePath(QFile::decodeName("Karte \xfc"));
    const QString video = card + QFile::decodeName("/Normal/2024_0307_140000_\xe9t\xe9_F.MP4");
    testsupport::placeVideo(video, 2);
    const QDateTime noon(QDate(2024, 3, 7), QTime(12, 0, 0), Qt::UTC);
    testsupport::writeTrack(card + QFile::decodeName("/Normal/2024_0307_140000_\xe9t\xe9_F.NMEA"),
                            testsupport::standingFixes(noon, 2, 50, 10));

    PlaylistDiscovery discovery(&PlaylistLoader::videoDurationMs);
    const Playlist::RawItems items = discovery.fromDirectory(card);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(QFile::encodeName(items[0]->mainVideo.filePath()), QFile::encodeName(video));
    EXPECT_EQ(items[0]->durationMs, 2000);
    ASSERT_TRUE(items[0]->track);
    EXPECT_EQ(items[0]->track->positions.size(), 2u);
}
