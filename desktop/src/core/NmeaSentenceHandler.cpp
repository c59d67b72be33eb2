// Gathers the fields of consecutive NMEA sentences into fixes and appends one whenever the time moves on.
#include "core/NmeaSentenceHandler.h"

#include "logging/Logging.h"

#include <cmath>

namespace {
constexpr const char* kLogger = "core.NmeaTrackParser";
constexpr double kKilometresPerNauticalMile = 1.852;
constexpr double kMetresPerFoot = 0.3048;

template <typename T>
void takeIfPresent(std::optional<T>& target, const std::optional<T>& value) {
    if (value)
        target = value;
}
} // namespace

std::int64_t NmeaSentenceHandler::daysSinceEpoch(int year, int month, int day) {
    // Civil-from-days inverse over 400-year eras (March-based years put the leap day last).
    year -= month <= 2 ? 1 : 0;
    const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
    const auto yearOfEra = static_cast<unsigned>(year - era * 400);
    const unsigned monthFromMarch = static_cast<unsigned>(month > 2 ? month - 3 : month + 9);
    const unsigned dayOfYear = (153 * monthFromMarch + 2) / 5 + static_cast<unsigned>(day) - 1;
    const unsigned dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + static_cast<std::int64_t>(dayOfEra) - 719468;
}

void NmeaSentenceHandler::emitPendingFix() {
    if (!m_time || !m_date || !m_longitude || !m_latitude)
        return;
    const std::int64_t seconds = daysSinceEpoch(m_date->year, m_date->month, m_date->day) * 86400 +
                                 m_time->hours * 3600 + m_time->minutes * 60 +
                                 static_cast<std::int64_t>(std::trunc(m_time->seconds));
    const TrackTime time = seconds * kTrackTicksPerSecond;
    if (!m_positions.empty() && m_positions.back().time == time)
        return;
    TrackPosition& position = m_positions.emplace_back();
    position.time = time;
    position.longitude = *m_longitude;
    position.latitude = *m_latitude;
    position.sentenceNumber = m_counterAtTime;
    position.speed = m_speed;
    position.course = m_course;
    position.altitude = m_altitude;
    position.hdop = m_hdop;
    position.pdop = m_pdop;
    position.vdop = m_vdop;
    position.satellites = m_satellites;
    LOG_TRACE(kLogger, "Found position at {}", time);
}

void NmeaSentenceHandler::setTimeAndDate(const TimeOfDay& time, const std::optional<CalendarDate>& date) {
    emitPendingFix();
    m_time = time;
    m_date = date;
    m_counterAtTime = m_rmcCounter;
}

void NmeaSentenceHandler::takeCoordinates(const std::optional<double>& latitude,
                                          const std::optional<double>& longitude) {
    takeIfPresent(m_latitude, latitude);
    takeIfPresent(m_longitude, longitude);
}

void NmeaSentenceHandler::onRmc(const os::nmea::RmcSentence& sentence) {
    LOG_TRACE(kLogger, "Found RMC #{}", m_rmcCounter);
    if (sentence.utc && sentence.date && sentence.status) {
        const os::nmea::UtcTime& utc = *sentence.utc;
        const os::nmea::Date& date = *sentence.date;
        setTimeAndDate({utc.hours, utc.minutes, utc.seconds}, CalendarDate{date.year + 2000, date.month, date.day});
        takeCoordinates(sentence.latitude, sentence.longitude);
        if (sentence.speedKnots)
            m_speed = *sentence.speedKnots * kKilometresPerNauticalMile;
        takeIfPresent(m_course, sentence.courseTrue);
    } else {
        LOG_DEBUG(kLogger, "Ignore invalid RMC Sentence, hasUtc: {}, hasDate: {}, hasStatus: {}",
                  sentence.utc.has_value(), sentence.date.has_value(), sentence.status.has_value());
    }
    ++m_rmcCounter;
}

void NmeaSentenceHandler::onGll(const os::nmea::GllSentence& sentence) {
    if (sentence.status != os::nmea::Status::Valid) {
        LOG_DEBUG(kLogger, "Ignore invalid GLL");
        return;
    }
    if (sentence.utc) {
        const os::nmea::UtcTime& utc = *sentence.utc;
        setTimeAndDate({utc.hours, utc.minutes, utc.seconds}, m_date);
    }
    takeCoordinates(sentence.latitude, sentence.longitude);
}

void NmeaSentenceHandler::onGga(const os::nmea::GgaSentence& sentence) {
    takeCoordinates(sentence.latitude, sentence.longitude);
    takeIfPresent(m_satellites, sentence.satellitesInUse);
    takeIfPresent(m_hdop, sentence.hdop);
    takeIfPresent(m_altitude, sentence.altitude);
}

void NmeaSentenceHandler::onGsa(const os::nmea::GsaSentence& sentence) {
    takeIfPresent(m_pdop, sentence.pdop);
    takeIfPresent(m_hdop, sentence.hdop);
    takeIfPresent(m_vdop, sentence.vdop);
}

void NmeaSentenceHandler::onGsv(const os::nmea::GsvSentence& sentence) {
    takeIfPresent(m_satellites, sentence.satellitesInView);
}

void NmeaSentenceHandler::onVtg(const os::nmea::VtgSentence& sentence) {
    if (sentence.speedKmh)
        m_speed = *sentence.speedKmh;
    else if (sentence.speedKnots)
        m_speed = *sentence.speedKnots * kKilometresPerNauticalMile;
    takeIfPresent(m_course, sentence.courseTrue);
}

void NmeaSentenceHandler::onZda(const os::nmea::ZdaSentence& sentence) {
    CalendarDate date;
    if (m_date) {
        date = *m_date;
        if (sentence.year)
            date.year = static_cast<int>(*sentence.year);
        if (sentence.month)
            date.month = static_cast<int>(*sentence.month);
        if (sentence.day)
            date.day = static_cast<int>(*sentence.day);
    } else if (sentence.year && sentence.month && sentence.day) {
        date = {static_cast<int>(*sentence.year), static_cast<int>(*sentence.month), static_cast<int>(*sentence.day)};
    } else {
        LOG_DEBUG(kLogger, "Partial change without previous full date is not supported, ingore ZDA sentence");
        return;
    }
    if (!m_time && !sentence.utc) {
        m_date = date;
        return;
    }
    const TimeOfDay time = sentence.utc ? TimeOfDay{sentence.utc->hours, sentence.utc->minutes, sentence.utc->seconds}
                                        : *m_time;
    setTimeAndDate(time, date);
}

void NmeaSentenceHandler::onPgrmz(const os::nmea::PgrmzSentence& sentence) {
    // Receivers send feet; a sentence that says metres is taken as it stands.
    if (sentence.altitude)
        m_altitude = sentence.unit == os::nmea::Unit::Metres ? *sentence.altitude : *sentence.altitude * kMetresPerFoot;
}
