// Framing of one NMEA 0183 sentence: where a sentence starts, whether its checksum holds, how long it is.
#pragma once

#include "os/InputStream.h"

#include <cstddef>
#include <cstdint>

namespace os::nmea {

// No sentence, line end included, is longer than this.
constexpr std::size_t kMaxSentenceLength = 256;

// Given a stream positioned where a sentence may start, returns the sentence's length from the start
// character through the final line feed, with the stream rewound to where it was; the caller then reads
// exactly that many bytes. Returns 0 when no valid sentence starts there: after a checksum mismatch the
// rejected sentence stays consumed; after any other failure the stream is rewound, unless it has
// reached its end.
std::size_t probeSentence(CInputStream& input);

namespace detail {

// Printable ASCII except the framing characters "$", "!", "*", CR and LF; commas are allowed.
struct CharacterClasses {
    bool body[256] = {};
    bool start[256] = {};
    std::int8_t upperHex[256] = {}; // digit value + 1, 0 for anything else
    constexpr CharacterClasses() {
        for (int c = 0x20; c <= 0x7E; ++c)
            body[c] = c != '$' && c != '!' && c != '*';
        start[static_cast<unsigned char>('$')] = start[static_cast<unsigned char>('!')] = true;
        for (int c = '0'; c <= '9'; ++c)
            upperHex[c] = static_cast<std::int8_t>(c - '0' + 1);
        for (int c = 'A'; c <= 'F'; ++c)
            upperHex[c] = static_cast<std::int8_t>(c - 'A' + 11);
    }
};
inline constexpr CharacterClasses kClasses{};

// The probe over any cursor that can get, unget, tell, seek back and tell its end. Written once so the
// in-memory reader and the stream reader frame sentences identically.
template <typename Cursor>
std::size_t probe(Cursor& in) {
    if (in.atEnd())
        return 0;
    const std::uint64_t entry = in.tell();
    const auto fail = [&]() -> std::size_t {
        if (!in.atEnd())
            in.seekTo(entry);
        return 0;
    };
    unsigned c = in.get();
    if (!kClasses.start[c]) {
        in.unget();
        return 0;
    }
    unsigned checksum = 0;
    for (;;) {
        if (in.atEnd())
            return fail();
        c = in.get();
        if (!kClasses.body[c]) {
            in.unget();
            break;
        }
        if (in.tell() - entry + 4 > kMaxSentenceLength)
            return fail();
        checksum ^= c;
    }
    if (in.get() != '*' || in.atEnd())
        return fail();
    const int high = kClasses.upperHex[in.get()];
    if (high == 0 || in.atEnd())
        return fail();
    const int low = kClasses.upperHex[in.get()];
    if (low == 0 || in.atEnd())
        return fail();
    c = in.get();
    if (c == '\r') {
        if (in.tell() - entry >= kMaxSentenceLength || in.atEnd())
            return fail();
        c = in.get();
    }
    if (c != '\n')
        return fail();
    const unsigned transmitted = static_cast<unsigned>((high - 1) * 16 + (low - 1));
    if (transmitted != checksum)
        return 0;
    const auto length = static_cast<std::size_t>(in.tell() - entry);
    in.seekTo(entry);
    return length;
}

// A cursor over a block in memory.
struct MemoryCursor {
    const unsigned char* begin;
    const unsigned char* current;
    const unsigned char* end;
    bool atEnd() const { return current == end; }
    unsigned get() { return *current++; }
    void unget() { --current; }
    std::uint64_t tell() const { return static_cast<std::uint64_t>(current - begin); }
    void seekTo(std::uint64_t position) { current = begin + position; }
};

// The same probe over memory, sixteen body characters at a time: the hot path of track loading. It must
// leave the cursor exactly where the generic probe would (the fuzz target compares the two).
std::size_t probe(MemoryCursor& in);

} // namespace detail
} // namespace os::nmea
