// Start times and cameras read from recorder file names: the forms, fixed field positions and the fifty-year window.
#include "core/RecordingFileName.h"

#include "core/Playlist.h"

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

TEST(RecordingFileName, todays_camera_names_give_time_camera_and_category) {
    using Role = RecordingCamera::Role;
    constexpr std::uint32_t kNone = 99; // the name states no category
    struct Case {
        const char* name;
        Role role;
        const char* recording;
        const char* camera;
        std::uint32_t category;
    };
    const Case cases[] = {
        {"20210307_140509_NF", Role::Main, "20210307_140509_N", "NF", Playlist::Normal},
        {"20210307_140509_NR", Role::Rear, "20210307_140509_N", "NR", Playlist::Normal},
        {"20210307_140509_PF", Role::Main, "20210307_140509_P", "PF", Playlist::Parking},
        {"20210307_140509_EI", Role::Further, "20210307_140509_E", "EI", Playlist::Event},
        {"20210307_140509_MF", Role::Main, "20210307_140509_M", "MF", Playlist::Event},
        {"2021_0307_140509_0012F", Role::Main, "2021_0307_140509_", "F", kNone},
        {"2021_0307_140509_0013R", Role::Rear, "2021_0307_140509_", "R", kNone},
        {"2021_0307_140509_0013B", Role::Rear, "2021_0307_140509_", "B", kNone},
        {"2021_0307_140509_0012PA", Role::Main, "2021_0307_140509_P", "PA", Playlist::Parking},
        {"2021_0307_140509_0012EI", Role::Further, "2021_0307_140509_E", "EI", Playlist::Event},
        {"NO20210307-140509-000123F", Role::Main, "NO20210307-140509-", "F", Playlist::Normal},
        {"EV20210307-140509-000124B", Role::Rear, "EV20210307-140509-", "B", Playlist::Event},
        {"PA20210307-140509-000125F", Role::Main, "PA20210307-140509-", "F", Playlist::Parking},
        {"2021-03-07_14-05-09-front", Role::Main, "2021-03-07_14-05-09", "front", kNone},
        {"2021-03-07_14-05-09-back", Role::Rear, "2021-03-07_14-05-09", "back", kNone},
        {"2021-03-07_14-05-09-left_repeater", Role::Further, "2021-03-07_14-05-09", "left_repeater", kNone},
        // The recorder's own forms keep their rule: a last R is the rear camera, any other last character the main.
        {"2021_0307_140509_F", Role::Main, "2021_0307_140509_", "F", kNone},
        {"FILE210307-140509R", Role::Rear, "FILE210307-140509", "R", kNone},
        {"DVR-2021-03-07_14-05-09", Role::Main, "DVR-2021-03-07_14-05-0", "", kNone},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const RecordingCamera camera = cameraOfFileName(QString::fromLatin1(c.name));
        EXPECT_EQ(camera.role, c.role);
        EXPECT_EQ(camera.recording, c.recording);
        EXPECT_EQ(camera.camera, c.camera);
        EXPECT_EQ(camera.category.value_or(kNone), c.category);
        const auto time = timeOf(QString::fromLatin1(c.name) + ".MP4");
        ASSERT_TRUE(time.has_value());
        EXPECT_EQ(*time, kExpected);
    }
    // Today's forms have two-digit fields only, and impossible dates give no time as in the other forms.
    for (const char* name : {"2021037_140509_NF.MP4", "20210230_140509_NF.MP4", "NO20211307-140509-000123F.MP4",
                             "2021-03-07_14-5-09-front.mp4", "2021-03-07_14-05-09.mp4", "XX20210307-140509-1F.MP4"}) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(timeOf(QString::fromLatin1(name)));
    }
}
