// Copies the sentences of an NMEA file that lie within a time interval, unchanged, to another stream.
#pragma once

#include "core/TrackPosition.h"
#include "os/InputStream.h"
#include "os/OutputStream.h"
#include "os/nmea/SentenceHandler.h"

#include <cstdint>
#include <optional>

// Follows only the time: the UTC time of the time-bearing sentences (RMC, GGA, GLL, GST, ZDA) on the
// current date (from RMC and ZDA), in whole seconds. Every sentence, of a recognised type or not, is
// copied when the time after reading it lies within [from, to]; sentences before the first known time,
// with a bad checksum, or outside any sentence are not.
class ExtracterNmeaSentenceHandler : public os::nmea::ISentenceHandler {
public:
    ExtracterNmeaSentenceHandler(TrackTime from, TrackTime to);

    // Returns the number of sentences copied. Throws std::runtime_error "Failed to read file: invalid
    // input stream" or "... invalid output stream" for a missing stream, and lets stream errors through.
    std::uint64_t extract(os::CInputStream* input, os::COutputStream* output);

    void onGga(const os::nmea::GgaSentence& sentence) override;
    void onGll(const os::nmea::GllSentence& sentence) override;
    void onGst(const os::nmea::GstSentence& sentence) override;
    void onRmc(const os::nmea::RmcSentence& sentence) override;
    void onZda(const os::nmea::ZdaSentence& sentence) override;

    // The time after the sentences read so far, if both a time and a date have been seen.
    std::optional<TrackTime> currentTime() const;

private:
    void setTimeOfDay(const os::nmea::UtcTime& utc);

    TrackTime m_from;
    TrackTime m_to;
    std::optional<std::int64_t> m_day; // days since 1970
    std::optional<std::int64_t> m_secondOfDay;
};
