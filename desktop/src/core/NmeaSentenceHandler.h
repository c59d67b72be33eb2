// Gathers the fields of consecutive NMEA sentences into fixes and appends one whenever the time moves on.
#pragma once

#include "core/TrackPosition.h"
#include "os/nmea/SentenceHandler.h"

#include <cstdint>
#include <optional>

// Time is set by RMC (with its date), GLL and ZDA; position, speed, course, altitude, dilutions and
// satellites come from whichever sentence carries them and are kept until replaced, so a fix carries
// the last known values. Call finish() after the last sentence to append the fix still pending.
class NmeaSentenceHandler : public os::nmea::ISentenceHandler {
public:
    void onGga(const os::nmea::GgaSentence& sentence) override;
    void onGll(const os::nmea::GllSentence& sentence) override;
    void onGsa(const os::nmea::GsaSentence& sentence) override;
    void onGsv(const os::nmea::GsvSentence& sentence) override;
    void onRmc(const os::nmea::RmcSentence& sentence) override;
    void onVtg(const os::nmea::VtgSentence& sentence) override;
    void onZda(const os::nmea::ZdaSentence& sentence) override;
    void onPgrmz(const os::nmea::PgrmzSentence& sentence) override;

    void finish() { emitPendingFix(); }

    const TrackPositions& positions() const { return m_positions; }
    TrackPositions takePositions() { return std::move(m_positions); }
    // RMC sentences seen, used or not.
    std::uint32_t rmcCount() const { return m_rmcCounter; }

    // Days since 1970-01-01 of a proleptic Gregorian date; an out-of-range day runs on into the next month.
    static std::int64_t daysSinceEpoch(int year, int month, int day);

private:
    struct TimeOfDay {
        int hours = 0;
        int minutes = 0;
        float seconds = 0.0f;
    };
    struct CalendarDate {
        int year = 0;
        int month = 0;
        int day = 0;
    };

    void emitPendingFix();
    void setTimeAndDate(const TimeOfDay& time, const std::optional<CalendarDate>& date);
    void takeCoordinates(const std::optional<double>& latitude, const std::optional<double>& longitude);

    std::optional<TimeOfDay> m_time;
    std::optional<CalendarDate> m_date;
    std::optional<double> m_latitude;
    std::optional<double> m_longitude;
    std::optional<double> m_speed;
    std::optional<double> m_course;
    std::optional<double> m_altitude;
    std::optional<double> m_hdop;
    std::optional<double> m_pdop;
    std::optional<double> m_vdop;
    std::optional<std::uint32_t> m_satellites;
    std::uint32_t m_rmcCounter = 0;
    std::uint32_t m_counterAtTime = 0;
    TrackPositions m_positions;
};
