// Start times read from recorder file names: the three forms, fixed field positions and the fifty-year window.
#include "core/RecordingFileName.h"

#include <gtest/gtest.h>

namespace {

const QDateTime kNow(QDate(2024, 6, 1), QTime(12, 0), Qt::LocalTime);
const QDateTime kExpected(QDate(2021, 3, 7), QTime(14, 5, 9), Qt::LocalTime);

std::optional<QDateTime> timeOf(const QString& name) { return startTimeFromFileName(name, kNow); }

} // namespace

TEST(RecordingFileName, reads_all_three_recorder_forms_as_local_time) {
    for (const char* name : {"DVR-2021-03-07_14-05-09.MP4", "FILE210307-140509F.MP4", "EMER210307-140509R.MOV",
                             "PARK210307-140509F.mp4", "2021_0307_140509_F.MP4", "DVR-2021-03-07_14-05-09 anything"}) {
        SCOPED_TRACE(name);
        const auto time = timeOf(QString::fromLatin1(name));
        ASSERT_TRUE(time.has_value());
        EXPECT_EQ(*time, kExpected);
        EXPECT_EQ(time->timeSpec(), Qt::LocalTime);
    }
}

TEST(RecordingFileName, pattern_must_match_from_the_first_character) {
    EXPECT_FALSE(timeOf("xFILE210307-140509F.MP4"));
    EXPECT_FALSE(timeOf("copy of 2021_0307_140509_F.MP4"));
    EXPECT_FALSE(timeOf("clip.MP4"));
    EXPECT_FALSE(timeOf("MOVI210307-140509F.MP4"));
}

TEST(RecordingFileName, one_digit_fields_shift_later_fields_and_give_no_time) {
    // The patterns admit a one-digit month or second, but the fields are read at fixed positions.
    EXPECT_FALSE(timeOf("DVR-2021-3-07_14-05-09.MP4"));
    EXPECT_FALSE(timeOf("DVR-2021-03-07_14-05-9.MP4"));
    EXPECT_FALSE(timeOf("2021_307_140509_F.MP4"));
}

TEST(RecordingFileName, impossible_dates_give_no_time) {
    EXPECT_FALSE(timeOf("DVR-2021-02-30_14-05-09.MP4"));
    EXPECT_FALSE(timeOf("FILE210231-140509F.MP4"));
}

TEST(RecordingFileName, accepts_only_dates_less_than_fifty_years_from_now) {
    const QDateTime now(QDate(2024, 6, 1), QTime(12, 0), Qt::LocalTime);
    const QDateTime nearEdge = now.addDays(-18249);
    const QString inside = nearEdge.toString(QStringLiteral("'DVR-'yyyy-MM-dd_HH-mm-ss'.MP4'"));
    EXPECT_TRUE(startTimeFromFileName(inside, now));
    const QString outside = now.addDays(-18251).toString(QStringLiteral("'DVR-'yyyy-MM-dd_HH-mm-ss'.MP4'"));
    EXPECT_FALSE(startTimeFromFileName(outside, now));
    const QString future = now.addDays(18251).toString(QStringLiteral("'DVR-'yyyy-MM-dd_HH-mm-ss'.MP4'"));
    EXPECT_FALSE(startTimeFromFileName(future, now));
    // A recorder whose clock was never set writes the year 2000 in two digits: still inside the window.
    EXPECT_TRUE(startTimeFromFileName("FILE000101-000000F.MP4", now));
}
