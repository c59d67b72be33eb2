// The reading loop over a stream of NMEA 0183 sentences.
#include "os/nmea/Parser.h"

#include "logging/Logging.h"
#include "os/nmea/SentenceDecoder.h"
#include "os/nmea/SentenceProbe.h"

#include <string_view>

namespace os::nmea {
namespace {

constexpr const char* kLogger = "os.NmeaParser";

// A cursor over any stream, one byte at a time; used when the stream is not a block in memory.
class StreamCursor {
public:
    explicit StreamCursor(CInputStream& stream) : m_stream(stream), m_size(stream.size()) {}
    bool atEnd() const { return m_stream.position() >= m_size; }
    unsigned get() {
        unsigned char c = 0;
        m_stream.read(&c, 1);
        return c;
    }
    void unget() { m_stream.seek(-1, SeekOrigin::Current); }
    std::uint64_t tell() const { return m_stream.position(); }
    void seekTo(std::uint64_t position) { m_stream.seek(static_cast<std::int64_t>(position), SeekOrigin::Begin); }

private:
    CInputStream& m_stream;
    std::uint64_t m_size;
};

// The loop, written once for both cursors. After a failed probe that left the cursor where it was, it
// steps over the start character and on to the next one, so every pass makes progress.
template <typename Cursor, typename ReadSentence>
void readSentences(Cursor& cursor, ISentenceHandler& handler, ParseStatistics& statistics, ReadSentence readSentence) {
    while (!cursor.atEnd()) {
        const std::uint64_t entry = cursor.tell();
        const std::size_t length = detail::probe(cursor);
        if (length > 0) {
            ++statistics.sentences;
            if (decodeSentence(readSentence(length), handler) != SentenceKind::Any)
                ++statistics.recognised;
            continue;
        }
        if (cursor.tell() != entry) {
            if (cursor.atEnd()) {
                // A sentence cut off by the end of the input.
                statistics.skippedBytes += cursor.tell() - entry;
            } else {
                ++statistics.checksumMismatches;
                handler.onChecksumMismatch();
            }
            continue;
        }
        cursor.get();
        while (!cursor.atEnd()) {
            if (detail::kClasses.start[cursor.get()]) {
                cursor.unget();
                break;
            }
        }
        statistics.skippedBytes += cursor.tell() - entry;
    }
}

} // namespace

std::size_t probeSentence(CInputStream& input) {
    if (const char* data = input.contiguousData()) {
        const auto* begin = reinterpret_cast<const unsigned char*>(data);
        detail::MemoryCursor cursor{begin, begin + input.position(), begin + input.size()};
        const std::size_t length = detail::probe(cursor);
        input.seek(static_cast<std::int64_t>(cursor.tell()), SeekOrigin::Begin);
        return length;
    }
    StreamCursor cursor(input);
    return detail::probe(cursor);
}

bool parse(CInputStream& input, ISentenceHandler& handler, ParseOption option, ParseStatistics* statistics) {
    ParseStatistics counts;
    const std::uint64_t start = input.position();
    if (const char* data = input.contiguousData()) {
        // In memory: sentences are decoded in place, nothing is copied.
        const auto* begin = reinterpret_cast<const unsigned char*>(data);
        detail::MemoryCursor cursor{begin, begin + start, begin + input.size()};
        readSentences(cursor, handler, counts, [&](std::size_t length) {
            const std::string_view sentence(reinterpret_cast<const char*>(cursor.current), length);
            cursor.current += length;
            return sentence;
        });
        input.seek(static_cast<std::int64_t>(cursor.tell()), SeekOrigin::Begin);
    } else {
        StreamCursor cursor(input);
        char buffer[kMaxSentenceLength];
        readSentences(cursor, handler, counts, [&](std::size_t length) {
            const std::size_t got = input.read(buffer, length);
            return std::string_view(buffer, got);
        });
    }
    LOG_DEBUG(kLogger, "Read {} sentences ({} recognised), {} checksum mismatches, {} bytes skipped", counts.sentences,
              counts.recognised, counts.checksumMismatches, counts.skippedBytes);
    if (statistics)
        *statistics = counts;
    const bool empty = input.size() == start;
    return option == ParseOption::AcceptAnything || empty || counts.sentences > 0;
}

} // namespace os::nmea
