// The reading loop: frames every sentence of a stream, decodes the recognised ones and hands them to a
// handler, skipping anything that is not a valid sentence.
#pragma once

#include "os/InputStream.h"
#include "os/nmea/SentenceHandler.h"

#include <cstdint>

namespace os::nmea {

enum class ParseOption {
    // Fail when a non-empty stream holds not one sentence with a valid checksum: it is not NMEA at all
    // (binary data, text in another encoding).
    RequireSentence,
    // Succeed on any input; garbage is only skipped.
    AcceptAnything,
};

struct ParseStatistics {
    std::uint64_t sentences = 0;          // framed with a matching checksum
    std::uint64_t recognised = 0;         // of those, decoded and handed to the handler
    std::uint64_t checksumMismatches = 0; // framed, but rejected by their checksum
    std::uint64_t skippedBytes = 0;       // bytes outside any framed sentence
};

// Reads from the stream's position to its end. Returns false when the input could not be read as NMEA
// (see ParseOption). Lets exceptions of the stream and the handler through.
//   MySentenceHandler handler;
//   os::CMemoryInputStream input(bytes.data(), bytes.size());
//   if (!os::nmea::parse(input, handler)) ...
bool parse(CInputStream& input, ISentenceHandler& handler, ParseOption option = ParseOption::RequireSentence,
           ParseStatistics* statistics = nullptr);

} // namespace os::nmea
