// The suitable-path check on real folders: what fits, what does not, and the logged reason.
#include "core/IsSuitablePath.h"

#include "logging/Logging.h"
#include "support/RecordingFixtures.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include <unistd.h>

using testing::HasSubstr;

namespace {

class IsSuitablePathTest : public testing::Test {
protected:
    QString root() const { return m_dir.path(); }
    void makeDir(const QString& relative) { ASSERT_TRUE(QDir(root()).mkpath(relative)); }
    // A fresh folder holding `entries`: names ending in '/' are folders, the others small files.
    static std::unique_ptr<QTemporaryDir> folderWith(const std::vector<QString>& entries) {
        auto dir = std::make_unique<QTemporaryDir>();
        for (const QString& entry : entries) {
            if (entry.endsWith('/'))
                QDir(dir->path()).mkpath(entry);
            else
                testsupport::writeFile(dir->filePath(entry), "x");
        }
        return dir;
    }
    std::string reasonFor(const QString& path) {
        QString reason;
        EXPECT_FALSE(IsSuitablePath(path, &reason));
        return reason.toStdString();
    }

    QTemporaryDir m_dir;
};

} // namespace

TEST_F(IsSuitablePathTest, empty_directory_does_not_fit_and_the_reason_is_logged) {
    testsupport::LogCapture capture;
    logging::setLevel(logging::TRACE);
    EXPECT_FALSE(IsSuitablePath(root()));
    const auto lines = capture.linesContaining("ui.IsSuitablePath");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_THAT(lines.front(), HasSubstr("Path " + root().toStdString() +
                                         " does not fit: there isn't one of required directories"));
}

TEST_F(IsSuitablePathTest, missing_or_file_path_is_not_readable) {
    EXPECT_EQ(reasonFor(root() + "/missing"), "path is not readable");
    testsupport::writeFile(root() + "/file.txt", "x");
    EXPECT_EQ(reasonFor(root() + "/file.txt"), "path is not readable");
}

TEST_F(IsSuitablePathTest, recorder_layouts_and_lone_videos_fit) {
    const std::vector<QString> fitting[] = {
        {"DCIM/"}, {"Lumicor DVR/"}, {"DVRlocked/"}, {"R/"}, {"Normal/", "Event/", "Photo/"}, {"CARDV/MOVIE/"},
        {"clip.MOV"}, {"clip.Mp4"}, {".clip.mp4"}, // any case of suffix; hidden entries are seen
        // Today's cameras: a Record folder or the clip folders, at the root or one folder down.
        {"Record/"}, {"RecentClips/"}, {"SavedClips/"}, {"SentryClips/"}, {"Car/Record/"}, {"Car/SentryClips/"},
    };
    for (const auto& entries : fitting)
        EXPECT_TRUE(IsSuitablePath(folderWith(entries)->path())) << entries.front().toStdString();
}

TEST_F(IsSuitablePathTest, other_folders_do_not_fit_and_say_why) {
    const std::pair<std::vector<QString>, std::string> cases[] = {
        {{"dcim/", "normal/"}, "there isn't one of required directories"}, // names are case sensitive
        {{"Normal/", "Event/"}, "there isn't one of required directories"}, // all three are needed
        {{".hidden/"}, "there isn't one of required directories"},
        {{"CARDV/"}, "there isn't required MOVIE directory"},
        {{"CARDV/MOVIE"}, "there isn't required MOVIE directory"}, // a file, not a folder
        {{"Car/Other/Record/"}, "there isn't one of required directories"}, // two folders down is too deep
        {{"Record/", "CARDV/"}, "there isn't required MOVIE directory"},     // a broken layout still says so
    };
    for (const auto& [entries, reason] : cases) {
        QString why;
        EXPECT_FALSE(IsSuitablePath(folderWith(entries)->path(), &why)) << reason;
        EXPECT_EQ(why.toStdString(), reason) << entries.front().toStdString();
    }
}

TEST_F(IsSuitablePathTest, unreadable_movie_folder_does_not_fit) {
    if (geteuid() == 0)
        GTEST_SKIP() << "root reads every folder";
    makeDir("CARDV/MOVIE");
    QFile::setPermissions(root() + "/CARDV/MOVIE", QFile::Permissions());
    EXPECT_EQ(reasonFor(root()), "/CARDV/MOVIE/ subdirectory is not readable (or not directory)");
    QFile::setPermissions(root() + "/CARDV/MOVIE", QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

TEST_F(IsSuitablePathTest, category_folder_with_one_subfolder_must_be_readable) {
    makeDir("Normal/F");
    makeDir("Event/F");
    makeDir("Photo");
    EXPECT_TRUE(IsSuitablePath(root()));
    if (geteuid() == 0)
        GTEST_SKIP() << "root reads every folder";
    QFile::setPermissions(root() + "/Normal/F", QFile::Permissions());
    EXPECT_EQ(reasonFor(root()), "video subdirectory is not readable (or not directory)");
    QFile::setPermissions(root() + "/Normal/F", QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}
