// The reading loop: dispatch in order, progress over any garbage, and when input is not NMEA at all.
#include "os/MemoryInputStream.h"
#include "os/nmea/Parser.h"

#include "support/NmeaSentences.h"
#include "support/PlainStream.h"
#include "support/RecordingFixtures.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

using testsupport::PlainStream;
using testsupport::sentence;

namespace {

class TypeRecorder : public os::nmea::ISentenceHandler {
public:
    std::string calls;
    void onGga(const os::nmea::GgaSentence&) override { calls += "GGA "; }
    void onRmc(const os::nmea::RmcSentence&) override { calls += "RMC "; }
    void onVtg(const os::nmea::VtgSentence&) override { calls += "VTG "; }
    void onUnknown(const os::nmea::SentenceAddress&) override { calls += "? "; }
    void onChecksumMismatch() override { calls += "bad "; }
};

struct ParseRun {
    bool ok;
    std::string calls;
    os::nmea::ParseStatistics statistics;
};

ParseRun parse(const std::string& text, bool inMemory = true,
          os::nmea::ParseOption option = os::nmea::ParseOption::RequireSentence) {
    TypeRecorder handler;
    os::nmea::ParseStatistics statistics;
    std::unique_ptr<os::CInputStream> input;
    if (inMemory)
        input = std::make_unique<os::CMemoryInputStream>(text.data(), text.size());
    else
        input = std::make_unique<PlainStream>(text.data(), text.size());
    const bool ok = os::nmea::parse(*input, handler, option, &statistics);
    EXPECT_TRUE(input->atEnd());
    return {ok, handler.calls, statistics};
}

std::string randomBytes(std::size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    for (char& c : bytes)
        c = static_cast<char>(random());
    return bytes;
}

const std::string kRmc = sentence("GPRMC,120005,A,4916.45,N,12311.12,W,,,191124,,");
const std::string kGga = sentence("GPGGA,120005,4916.45,N,12311.12,W,1,08,0.9,545.4,M,46.9,M,,");

} // namespace

TEST(NmeaParser, dispatches_sentences_in_order_and_skips_what_lies_between) {
    std::string bad = kGga;
    bad[bad.size() - 3] = bad[bad.size() - 3] == '0' ? '1' : '0';
    const std::string text = "free text line\r\n" + kRmc + bad + "$GPGGA,cut" + kGga + sentence("GPXTE,A") +
                             std::string("\0\0\xff", 3) + kRmc.substr(0, kRmc.size() - 2) + "\n"; // a bare line feed ends one too
    for (const bool inMemory : {true, false}) {
        SCOPED_TRACE(inMemory ? "memory" : "plain");
        const ParseRun run = parse(text, inMemory);
        EXPECT_TRUE(run.ok);
        EXPECT_EQ(run.calls, "RMC bad GGA ? RMC ");
        EXPECT_EQ(run.statistics.sentences, 4u);
        EXPECT_EQ(run.statistics.recognised, 3u);
        EXPECT_EQ(run.statistics.checksumMismatches, 1u);
    }
}

TEST(NmeaParser, input_without_one_valid_sentence_is_not_nmea) {
    EXPECT_FALSE(parse(randomBytes(100000, 1)).ok);
    EXPECT_FALSE(parse(std::string(1 << 20, '$')).ok);
    EXPECT_FALSE(parse("just text\n").ok);
    EXPECT_TRUE(parse("just text\n", true, os::nmea::ParseOption::AcceptAnything).ok);
    EXPECT_TRUE(parse("").ok); // nothing to read is not a failure
    EXPECT_FALSE(parse(testsupport::readFile(testsupport::fixturePath("nmea/utf16-encoded.nmea")).toStdString()).ok);
}

TEST(NmeaParser, always_progresses_through_hostile_input) {
    // Start characters everywhere, sentences too long, lines without end: each byte is passed in bounded work.
    std::string hostile;
    for (int i = 0; i < 2000; ++i)
        hostile += "$" + std::string(i % 300, 'A');
    hostile += "$GPRMC," + std::string(10 << 20, '7');
    const ParseRun run = parse(hostile + kRmc);
    EXPECT_EQ(run.calls, "RMC ");
    const ParseRun plain = parse(std::string(50000, '!') + kRmc + "$", false);
    EXPECT_EQ(plain.calls, "RMC ");
}

TEST(NmeaParser, memory_and_plain_streams_read_the_same_sentences) {
    for (const char* name : {"nmea/receiver-2004.nmea", "nmea/with-text-and-proprietary.nmea"}) {
        const std::string text = testsupport::readFile(testsupport::fixturePath(name)).toStdString();
        std::string damaged = text;
        for (std::size_t i = 7; i < damaged.size(); i += 97)
            damaged[i] = static_cast<char>(damaged[i] ^ 0x20);
        for (const std::string& input : {text, damaged}) {
            const ParseRun memory = parse(input, true);
            const ParseRun plain = parse(input, false);
            EXPECT_EQ(memory.calls, plain.calls);
            EXPECT_EQ(memory.statistics.sentences, plain.statistics.sentences);
            EXPECT_EQ(memory.statistics.skippedBytes, plain.statistics.skippedBytes);
        }
    }
}
