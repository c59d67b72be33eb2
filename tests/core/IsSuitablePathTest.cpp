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

#include <unistd.h>

using testing::HasSubstr;

namespace {

class IsSuitablePathTest : public testing::Test {
protected:
    QString root() const { return m_dir.path(); }
    void makeDir(const QString& relative) { ASSERT_TRUE(QDir(root()).mkpath(relative)); }
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

TEST_F(IsSuitablePathTest, recorder_folders_fit_whatever_they_hold) {
    for (const char* folder : {"DCIM", "Lumicor DVR", "DVRlocked"}) {
        SCOPED_TRACE(folder);
        QTemporaryDir dir;
        ASSERT_TRUE(QDir(dir.path()).mkdir(folder));
        EXPECT_TRUE(IsSuitablePath(dir.path()));
    }
}

TEST_F(IsSuitablePathTest, names_are_case_sensitive) {
    makeDir("dcim");
    makeDir("normal");
    EXPECT_EQ(reasonFor(root()), "there isn't one of required directories");
}

TEST_F(IsSuitablePathTest, cardv_needs_a_readable_movie_folder) {
    makeDir("CARDV");
    EXPECT_EQ(reasonFor(root()), "there isn't required MOVIE directory");
    testsupport::writeFile(root() + "/CARDV/MOVIE", "not a folder");
    EXPECT_EQ(reasonFor(root()), "there isn't required MOVIE directory");
    QFile::remove(root() + "/CARDV/MOVIE");
    makeDir("CARDV/MOVIE");
    EXPECT_TRUE(IsSuitablePath(root()));
}

TEST_F(IsSuitablePathTest, unreadable_movie_folder_does_not_fit) {
    if (geteuid() == 0)
        GTEST_SKIP() << "root reads every folder";
    makeDir("CARDV/MOVIE");
    QFile::setPermissions(root() + "/CARDV/MOVIE", QFile::Permissions());
    EXPECT_EQ(reasonFor(root()), "/CARDV/MOVIE/ subdirectory is not readable (or not directory)");
    QFile::setPermissions(root() + "/CARDV/MOVIE", QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

TEST_F(IsSuitablePathTest, single_video_file_fits_with_any_case_of_suffix) {
    testsupport::writeFile(root() + "/clip.MOV", "x");
    EXPECT_TRUE(IsSuitablePath(root()));
    QTemporaryDir other;
    testsupport::writeFile(other.path() + "/clip.Mp4", "x");
    EXPECT_TRUE(IsSuitablePath(other.path()));
}

TEST_F(IsSuitablePathTest, camera_folder_fits) {
    makeDir("R");
    EXPECT_TRUE(IsSuitablePath(root()));
}

TEST_F(IsSuitablePathTest, needs_all_three_required_folders) {
    makeDir("Normal");
    makeDir("Event");
    EXPECT_EQ(reasonFor(root()), "there isn't one of required directories");
    makeDir("Photo");
    EXPECT_TRUE(IsSuitablePath(root()));
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

TEST_F(IsSuitablePathTest, hidden_entries_are_seen) {
    makeDir(".hidden");
    EXPECT_EQ(reasonFor(root()), "there isn't one of required directories");
    testsupport::writeFile(root() + "/.clip.mp4", "x");
    EXPECT_TRUE(IsSuitablePath(root()));
}
