// Names proposed for saved pictures: the camera and time forms, and never overwriting an earlier picture.
#include "ui/PictureFileNames.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {
const QDateTime kMoment(QDate(2024, 3, 5), QTime(14, 15, 3, 42));

void touch(const QString& path) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
}
} // namespace

TEST(PictureFileNames, frame_names_say_which_camera_and_the_moment_to_the_millisecond) {
    EXPECT_EQ(frameBaseName(true, false, kMoment), "video-front-20240305T141503042");
    EXPECT_EQ(frameBaseName(false, true, kMoment), "video-rear-20240305T141503042");
    EXPECT_EQ(frameBaseName(true, true, kMoment), "video-20240305T141503042");
    EXPECT_EQ(frameBaseName(false, false, kMoment), "video-20240305T141503042");
    EXPECT_EQ(windowBaseName(kMoment), "window-20240305T141503042");
}

TEST(PictureFileNames, proposes_a_jpeg_with_the_program_prefix_in_the_directory) {
    QTemporaryDir dir;
    EXPECT_EQ(proposeImagePath(dir.path(), "window-20240305T141503042"),
              dir.path() + "/lumicor-reelvue-window-20240305T141503042.jpg");
}

TEST(PictureFileNames, a_second_save_in_the_same_millisecond_gets_a_number_before_the_extension) {
    QTemporaryDir dir;
    const QString base = frameBaseName(true, false, kMoment);
    const QString first = proposeImagePath(dir.path(), base);
    touch(first);
    const QString second = proposeImagePath(dir.path(), base);
    EXPECT_EQ(second, dir.path() + "/lumicor-reelvue-video-front-20240305T141503042(1).jpg");
    touch(second);
    EXPECT_EQ(proposeImagePath(dir.path(), base), dir.path() + "/lumicor-reelvue-video-front-20240305T141503042(2).jpg");

    // A gap left by a deleted picture is filled again.
    QFile::remove(second);
    EXPECT_EQ(proposeImagePath(dir.path(), base), second);
}
