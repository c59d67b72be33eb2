// The decoded records of the NMEA 0183 sentences this library recognises. Every field is optional:
// it holds a value only when the sentence had the field and it was valid.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace os::nmea {

struct UtcTime {
    std::uint8_t hours = 0;
    std::uint16_t minutes = 0;
    float seconds = 0.0f; // with the fraction the receiver sent
};

struct Date {
    std::uint8_t day = 0;   // 1..31
    std::uint8_t month = 0; // 1..12
    std::uint8_t year = 0;  // two digits, as sent
};

// Mode indicator of RMC, GLL and VTG: one of "ADEMSN".
enum class Mode : char {
    Autonomous = 'A',
    Differential = 'D',
    Estimated = 'E',
    Manual = 'M',
    Simulated = 'S',
    NotValid = 'N',
};

// Status letter of RMC and GLL: "A" data valid, "V" warning.
enum class Status : char { Valid = 'A', Warning = 'V' };

// Unit letters: "M" metres, "f" feet (PGRMZ).
enum class Unit : char { Metres = 'M', Feet = 'f' };

struct GgaSentence {
    std::optional<UtcTime> utc;
    std::optional<double> latitude;  // signed degrees, north positive
    std::optional<double> longitude; // signed degrees, east positive
    std::optional<std::uint32_t> quality;
    std::optional<std::uint32_t> satellitesInUse;
    std::optional<double> hdop;
    std::optional<double> altitude;
    std::optional<Unit> altitudeUnit;
    std::optional<double> geoidSeparation;
    std::optional<Unit> geoidSeparationUnit;
    std::optional<double> dgpsAge; // seconds
    std::optional<std::uint32_t> dgpsStation;
};

struct GllSentence {
    std::optional<double> latitude;
    std::optional<double> longitude;
    std::optional<UtcTime> utc;
    std::optional<Status> status;
    std::optional<Mode> mode;
};

struct GsaSentence {
    static constexpr int kChannels = 12;
    std::optional<char> selectionMode; // "A" automatic, "M" manual
    std::optional<std::uint32_t> fixMode; // 1 none, 2 2D, 3 3D
    std::array<std::optional<std::uint32_t>, kChannels> satellites; // PRN per channel
    std::optional<double> pdop;
    std::optional<double> hdop;
    std::optional<double> vdop;
};

struct GstSentence {
    std::optional<UtcTime> utc;
    std::optional<double> rangeRms;
    std::optional<double> semiMajorError;
    std::optional<double> semiMinorError;
    std::optional<double> orientation;
    std::optional<double> latitudeError;
    std::optional<double> longitudeError;
    std::optional<double> altitudeError;
};

struct GsvSatellite {
    std::optional<std::uint32_t> prn;
    std::optional<std::uint32_t> elevation; // degrees
    std::optional<std::uint32_t> azimuth;   // degrees true
    std::optional<std::uint32_t> snr;       // dB-Hz
};

struct GsvSentence {
    static constexpr int kSatellitesPerSentence = 4;
    std::optional<std::uint32_t> messageCount;
    std::optional<std::uint32_t> messageNumber;
    std::optional<std::uint32_t> satellitesInView;
    std::array<GsvSatellite, kSatellitesPerSentence> satellites;
};

struct RmcSentence {
    std::optional<UtcTime> utc;
    std::optional<Status> status;
    std::optional<double> latitude;
    std::optional<double> longitude;
    std::optional<double> speedKnots;
    std::optional<double> courseTrue;
    std::optional<Date> date;
    std::optional<double> magneticVariation; // degrees, east positive
    std::optional<Mode> mode;
};

struct VtgSentence {
    std::optional<double> courseTrue;
    std::optional<double> courseMagnetic;
    std::optional<double> speedKnots;
    std::optional<double> speedKmh;
    std::optional<Mode> mode;
};

struct ZdaSentence {
    std::optional<UtcTime> utc;
    std::optional<std::uint32_t> day;
    std::optional<std::uint32_t> month;
    std::optional<std::uint32_t> year; // four digits
    std::optional<std::int32_t> zoneHours;
    std::optional<std::uint32_t> zoneMinutes;
};

struct HdgSentence {
    std::optional<double> heading;   // magnetic sensor heading, degrees
    std::optional<double> deviation; // degrees, east positive
    std::optional<double> variation; // degrees, east positive
};

struct DptSentence {
    std::optional<double> depth;  // metres below the transducer
    std::optional<double> offset; // metres; positive: to the waterline, negative: to the keel
    std::optional<double> maximumRange;
};

struct DbtSentence {
    std::optional<double> depthFeet;
    std::optional<double> depthMetres;
    std::optional<double> depthFathoms;
};

struct MtwSentence {
    std::optional<double> temperature;
    std::optional<char> unit; // "C"
};

// Garmin's proprietary altitude sentence.
struct PgrmzSentence {
    std::optional<double> altitude;
    std::optional<Unit> unit; // "f" feet (what receivers send) or "M"
    std::optional<std::uint32_t> fixDimension; // 2 or 3
};

} // namespace os::nmea
