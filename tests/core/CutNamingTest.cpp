// The names and values the main window derives for a cut.
#include "core/encoding/CutNaming.h"

#include <gtest/gtest.h>

TEST(CutNaming, proposes_dvr_start_end_and_puts_the_track_beside_the_video) {
    const TimeInterval interval{QDateTime(QDate(2024, 6, 14), QTime(9, 0, 5)), QDateTime(QDate(2024, 6, 14), QTime(9, 5, 0))};
    EXPECT_EQ(encoding::proposedCutFileName(interval, "mkv"), "dvr-20240614T090005-20240614T090500.mkv");
    EXPECT_EQ(encoding::trackFileBeside("/films/dvr-a.b.mp4"), "/films/dvr-a.b.nmea");
}

TEST(CutNaming, only_quarter_turns_give_a_rotation) {
    EXPECT_EQ(encoding::rotationFromOrientation(90), 1);
    EXPECT_EQ(encoding::rotationFromOrientation(180), 2);
    EXPECT_EQ(encoding::rotationFromOrientation(270), 3);
    EXPECT_EQ(encoding::rotationFromOrientation(0), 0);
    EXPECT_EQ(encoding::rotationFromOrientation(45), 0);
}
