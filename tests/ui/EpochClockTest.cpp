// Epoch time of local date-times with the cached offset, across the clock changes of a real zone.
#include "ui/EpochClock.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace {
// Runs the test body in a zone with daylight saving time, then restores the process's zone.
class EpochClockTest : public testing::Test {
protected:
    void SetUp() override {
        m_hadZone = qEnvironmentVariableIsSet("TZ");
        m_previousZone = qgetenv("TZ");
        qputenv("TZ", "Europe/Prague");
        tzset();
    }
    void TearDown() override {
        if (m_hadZone)
            qputenv("TZ", m_previousZone);
        else
            qunsetenv("TZ");
        tzset();
    }

private:
    bool m_hadZone = false;
    QByteArray m_previousZone;
};

// 40 ms steps from one UTC moment for so many hours, each compared with Qt's own conversion.
void playAndCompare(EpochClock& clock, qint64 fromUtcMs, int hours) {
    for (qint64 ms = fromUtcMs; ms < fromUtcMs + hours * 3'600'000LL; ms += 40) {
        const QDateTime moment = QDateTime::fromMSecsSinceEpoch(ms);
        ASSERT_EQ(clock.millisecondsOf(moment), ms) << moment.toString(Qt::ISODateWithMs).toStdString();
    }
}
} // namespace

TEST_F(EpochClockTest, play_through_the_spring_and_autumn_clock_changes_keeps_exact_time) {
    EpochClock clock;
    // 2023-03-26 01:00 UTC: 02:00 CET becomes 03:00 CEST. 2023-10-29 01:00 UTC: 03:00 CEST becomes 02:00 CET.
    playAndCompare(clock, QDateTime(QDate(2023, 3, 25), QTime(23, 0), Qt::UTC).toMSecsSinceEpoch(), 4);
    playAndCompare(clock, QDateTime(QDate(2023, 10, 28), QTime(23, 0), Qt::UTC).toMSecsSinceEpoch(), 4);
}

TEST_F(EpochClockTest, the_repeated_autumn_hour_tells_its_two_passes_apart) {
    EpochClock clock;
    const qint64 firstPass = QDateTime(QDate(2023, 10, 29), QTime(0, 40), Qt::UTC).toMSecsSinceEpoch();  // 02:40 CEST
    const qint64 secondPass = QDateTime(QDate(2023, 10, 29), QTime(1, 40), Qt::UTC).toMSecsSinceEpoch(); // 02:40 CET
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(clock.millisecondsOf(QDateTime::fromMSecsSinceEpoch(secondPass + i * 1000)), secondPass + i * 1000);
        EXPECT_EQ(clock.millisecondsOf(QDateTime::fromMSecsSinceEpoch(firstPass + i * 1000)), firstPass + i * 1000);
    }
}

TEST_F(EpochClockTest, date_times_in_utc_or_made_from_a_reading_convert_exactly) {
    EpochClock clock;
    const QDateTime utc(QDate(2024, 7, 1), QTime(12, 0), Qt::UTC);
    EXPECT_EQ(clock.millisecondsOf(utc), utc.toMSecsSinceEpoch());
    const QDateTime local(QDate(2024, 7, 1), QTime(14, 0, 0, 40)); // CEST
    EXPECT_EQ(clock.millisecondsOf(local), utc.toMSecsSinceEpoch() + 40);
    EXPECT_EQ(clock.millisecondsOf(local.addSecs(60)), utc.toMSecsSinceEpoch() + 60'040);
    const QDateTime winter(QDate(2024, 1, 1), QTime(14, 0)); // CET, far from the cached summer quarter
    EXPECT_EQ(clock.millisecondsOf(winter), QDateTime(QDate(2024, 1, 1), QTime(13, 0), Qt::UTC).toMSecsSinceEpoch());
}
