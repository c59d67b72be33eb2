// Copies the sentences of an NMEA file that lie within a time interval, unchanged, to another stream.
#include "core/ExtracterNmeaSentenceHandler.h"

#include "core/NmeaSentenceHandler.h"
#include "logging/Logging.h"
#include "os/nmea/SentenceDecoder.h"
#include "os/nmea/SentenceProbe.h"

#include <stdexcept>
#include <string_view>

namespace {
constexpr const char* kLogger = "core.ExtracterNmeaSentenceHandler";
constexpr std::int64_t kSecondsPerDay = 86400;
// A time of day this much earlier than the last one means midnight has passed without a new date.
constexpr std::int64_t kMidnightJump = kSecondsPerDay / 2;

bool isStartCharacter(char c) { return c == '$' || c == '!'; }
} // namespace

ExtracterNmeaSentenceHandler::ExtracterNmeaSentenceHandler(TrackTime from, TrackTime to) : m_from(from), m_to(to) {}

std::optional<TrackTime> ExtracterNmeaSentenceHandler::currentTime() const {
    if (!m_day || !m_secondOfDay)
        return std::nullopt;
    return (*m_day * kSecondsPerDay + *m_secondOfDay) * kTrackTicksPerSecond;
}

void ExtracterNmeaSentenceHandler::setTimeOfDay(const os::nmea::UtcTime& utc) {
    const std::int64_t second = utc.hours * 3600 + utc.minutes * 60 + static_cast<std::int64_t>(utc.seconds);
    if (m_day && m_secondOfDay && second + kMidnightJump < *m_secondOfDay)
        ++*m_day;
    m_secondOfDay = second;
}

void ExtracterNmeaSentenceHandler::onGga(const os::nmea::GgaSentence& sentence) {
    if (sentence.utc)
        setTimeOfDay(*sentence.utc);
}

void ExtracterNmeaSentenceHandler::onGll(const os::nmea::GllSentence& sentence) {
    if (sentence.utc)
        setTimeOfDay(*sentence.utc);
}

void ExtracterNmeaSentenceHandler::onGst(const os::nmea::GstSentence& sentence) {
    if (sentence.utc)
        setTimeOfDay(*sentence.utc);
}

void ExtracterNmeaSentenceHandler::onRmc(const os::nmea::RmcSentence& sentence) {
    if (!sentence.utc || !sentence.date)
        return;
    // The date first, so the time of day is not taken for a midnight passing.
    m_day = NmeaSentenceHandler::daysSinceEpoch(sentence.date->year + 2000, sentence.date->month, sentence.date->day);
    m_secondOfDay.reset();
    setTimeOfDay(*sentence.utc);
}

void ExtracterNmeaSentenceHandler::onZda(const os::nmea::ZdaSentence& sentence) {
    if (sentence.year && sentence.month && sentence.day) {
        m_day = NmeaSentenceHandler::daysSinceEpoch(static_cast<int>(*sentence.year), static_cast<int>(*sentence.month),
                                                    static_cast<int>(*sentence.day));
        if (sentence.utc)
            m_secondOfDay.reset();
    }
    if (sentence.utc)
        setTimeOfDay(*sentence.utc);
}

std::uint64_t ExtracterNmeaSentenceHandler::extract(os::CInputStream* input, os::COutputStream* output) {
    if (!input)
        throw std::runtime_error("Failed to read file: invalid input stream");
    if (!output)
        throw std::runtime_error("Failed to read file: invalid output stream");
    std::uint64_t copied = 0;
    char sentence[os::nmea::kMaxSentenceLength];
    while (!input->atEnd()) {
        const std::uint64_t entry = input->position();
        const std::size_t length = os::nmea::probeSentence(*input);
        if (length > 0) {
            const std::size_t got = input->read(sentence, length);
            os::nmea::decodeSentence(std::string_view(sentence, got), *this);
            const auto time = currentTime();
            if (time && *time >= m_from && *time <= m_to) {
                output->write(sentence, got);
                ++copied;
            }
            continue;
        }
        if (input->position() != entry)
            continue; // a rejected sentence, already consumed
        // Not a sentence: step over this byte and on to the next start character.
        char c = 0;
        input->read(&c, 1);
        while (input->read(&c, 1) == 1) {
            if (isStartCharacter(c)) {
                input->seek(-1, os::SeekOrigin::Current);
                break;
            }
        }
    }
    LOG_DEBUG(kLogger, "Copied {} sentences", copied);
    return copied;
}
