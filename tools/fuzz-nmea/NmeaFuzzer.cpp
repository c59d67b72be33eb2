// libFuzzer target: the sentence probe, the reading loop over both kinds of stream, the track loader and
// the interval extracter must take any bytes without a crash, a hang or a sanitizer report, and agree.
#include "core/ExtracterNmeaSentenceHandler.h"
#include "core/TrackLoader.h"
#include "logging/Logging.h"
#include "os/MemoryInputStream.h"
#include "os/OutputStream.h"
#include "os/nmea/Parser.h"
#include "os/nmea/SentenceProbe.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace {

// Hides the block from the parser, so it takes the byte-by-byte stream path.
class OpaqueStream : public os::CMemoryInputStream {
public:
    using CMemoryInputStream::CMemoryInputStream;
    const char* contiguousData() const override { return nullptr; }
};

// Counts every call, so the two stream paths can be compared.
class CountingHandler : public os::nmea::ISentenceHandler {
public:
    std::uint64_t calls = 0;
    double checksum = 0; // touches decoded values so their use is checked too
    void onGga(const os::nmea::GgaSentence& s) override { ++calls; checksum += s.latitude.value_or(0) + s.altitude.value_or(0); }
    void onGll(const os::nmea::GllSentence& s) override { ++calls; checksum += s.longitude.value_or(0); }
    void onGsa(const os::nmea::GsaSentence& s) override { ++calls; checksum += s.pdop.value_or(0); }
    void onGst(const os::nmea::GstSentence& s) override { ++calls; checksum += s.rangeRms.value_or(0); }
    void onGsv(const os::nmea::GsvSentence& s) override { ++calls; checksum += s.satellitesInView.value_or(0); }
    void onRmc(const os::nmea::RmcSentence& s) override { ++calls; checksum += s.speedKnots.value_or(0); }
    void onVtg(const os::nmea::VtgSentence& s) override { ++calls; checksum += s.speedKmh.value_or(0); }
    void onHdg(const os::nmea::HdgSentence& s) override { ++calls; checksum += s.heading.value_or(0); }
    void onZda(const os::nmea::ZdaSentence& s) override { ++calls; checksum += s.year.value_or(0); }
    void onDpt(const os::nmea::DptSentence& s) override { ++calls; checksum += s.depth.value_or(0); }
    void onDbt(const os::nmea::DbtSentence& s) override { ++calls; checksum += s.depthMetres.value_or(0); }
    void onMtw(const os::nmea::MtwSentence& s) override { ++calls; checksum += s.temperature.value_or(0); }
    void onUnknown(const os::nmea::SentenceAddress& a) override { ++calls; checksum += static_cast<double>(a.type.size()); }
    void onChecksumMismatch() override { ++calls; }
    void onPgrmz(const os::nmea::PgrmzSentence& s) override { ++calls; checksum += s.altitude.value_or(0); }
};

void check(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "invariant broken: %s\n", what);
        std::abort();
    }
}

void discardLine(const std::string&) {}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Records are formatted (so the log calls are exercised) and thrown away; TRACE would halve the speed.
    logging::setLineWriter(&discardLine);
    logging::setLevel(logging::DEBUG);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The probe at the first byte, on both paths.
    {
        os::CMemoryInputStream memory(data, size);
        OpaqueStream opaque(data, size);
        const std::size_t a = os::nmea::probeSentence(memory);
        const std::size_t b = os::nmea::probeSentence(opaque);
        check(a == b && memory.position() == opaque.position(), "probe paths agree");
        check(a <= os::nmea::kMaxSentenceLength, "sentence length limit");
        check(a == 0 || memory.position() == 0, "accepted sentence rewinds");
    }
    // The whole loop, on both paths.
    {
        os::CMemoryInputStream memory(data, size);
        OpaqueStream opaque(data, size);
        CountingHandler first;
        CountingHandler second;
        os::nmea::ParseStatistics firstCounts;
        os::nmea::ParseStatistics secondCounts;
        const bool a = os::nmea::parse(memory, first, os::nmea::ParseOption::RequireSentence, &firstCounts);
        const bool b = os::nmea::parse(opaque, second, os::nmea::ParseOption::RequireSentence, &secondCounts);
        check(a == b && first.calls == second.calls, "parse paths agree");
        check(firstCounts.sentences == secondCounts.sentences && firstCounts.skippedBytes == secondCounts.skippedBytes,
              "parse statistics agree");
        check(memory.atEnd() && opaque.atEnd(), "parse reads to the end");
    }
    // The loader: only its own failure may come out.
    try {
        const auto result = TrackLoader::loadBytes(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));
        for (std::size_t i = 1; i < result.positions.size(); ++i)
            check(result.positions[i].time != result.positions[i - 1].time, "no two consecutive fixes share a time");
    } catch (const std::runtime_error& error) {
        check(std::strcmp(error.what(), "Failed to parse as NMEA") == 0, "only the parse failure escapes");
    }
    // The extracter over all of time copies whole sentences only.
    {
        os::CMemoryInputStream input(data, size);
        os::CMemoryOutputStream output;
        ExtracterNmeaSentenceHandler extracter(std::numeric_limits<TrackTime>::min(), std::numeric_limits<TrackTime>::max());
        const std::uint64_t copied = extracter.extract(&input, &output);
        check(output.bytes().size() <= size, "extract copies no more than it read");
        check(copied == 0 || output.bytes().back() == '\n', "extract copies whole sentences");
    }
    return 0;
}
