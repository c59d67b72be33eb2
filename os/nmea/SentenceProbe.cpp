// The sentence probe over a block in memory, scanning the body sixteen characters at a time.
#include "os/nmea/SentenceProbe.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace os::nmea::detail {

std::size_t probe(MemoryCursor& in) {
    const unsigned char* const entry = in.current;
    const unsigned char* const end = in.end;
    if (entry == end || !kClasses.start[*entry])
        return 0;
    // A failure rewinds to the entry, unless the cursor stood at the end when it failed.
    const auto fail = [&](const unsigned char* at) -> std::size_t {
        in.current = at == end ? end : entry;
        return 0;
    };
    // A body character here or later makes the sentence too long (it and "*hh\n" must fit in 256).
    const unsigned char* const tooLong = entry + (kMaxSentenceLength - 4);
    const unsigned char* p = entry + 1;
    unsigned checksum = 0;
#if defined(__SSE2__)
    __m128i sum = _mm_setzero_si128();
    while (end - p >= 16 && p < tooLong) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        // Signed compare: bytes of 0x80 and above are negative, so they count as below 0x20.
        __m128i bad = _mm_cmplt_epi8(v, _mm_set1_epi8(0x20));
        bad = _mm_or_si128(bad, _mm_cmpeq_epi8(v, _mm_set1_epi8(0x7F)));
        bad = _mm_or_si128(bad, _mm_cmpeq_epi8(v, _mm_set1_epi8('$')));
        bad = _mm_or_si128(bad, _mm_cmpeq_epi8(v, _mm_set1_epi8('!')));
        bad = _mm_or_si128(bad, _mm_cmpeq_epi8(v, _mm_set1_epi8('*')));
        const int mask = _mm_movemask_epi8(bad);
        if (mask != 0) {
            const unsigned char* const stop = p + __builtin_ctz(static_cast<unsigned>(mask));
            for (; p != stop; ++p)
                checksum ^= *p;
            break;
        }
        sum = _mm_xor_si128(sum, v);
        p += 16;
    }
    sum = _mm_xor_si128(sum, _mm_srli_si128(sum, 8));
    sum = _mm_xor_si128(sum, _mm_srli_si128(sum, 4));
    sum = _mm_xor_si128(sum, _mm_srli_si128(sum, 2));
    sum = _mm_xor_si128(sum, _mm_srli_si128(sum, 1));
    checksum ^= static_cast<unsigned>(_mm_cvtsi128_si32(sum)) & 0xFFu;
    if (p > tooLong)
        return fail(tooLong + 1);
#endif
    for (; p != end && kClasses.body[*p]; ++p) {
        if (p == tooLong)
            return fail(p + 1);
        checksum ^= *p;
    }
    if (p == end)
        return fail(end);
    if (*p++ != '*' || p == end)
        return fail(p);
    const int high = kClasses.upperHex[*p++];
    if (high == 0 || p == end)
        return fail(p);
    const int low = kClasses.upperHex[*p++];
    if (low == 0 || p == end)
        return fail(p);
    unsigned c = *p++;
    if (c == '\r') {
        if (static_cast<std::size_t>(p - entry) >= kMaxSentenceLength || p == end)
            return fail(p);
        c = *p++;
    }
    if (c != '\n')
        return fail(p);
    if (static_cast<unsigned>((high - 1) * 16 + (low - 1)) != checksum) {
        in.current = p; // the rejected sentence stays consumed
        return 0;
    }
    in.current = entry;
    return static_cast<std::size_t>(p - entry);
}

} // namespace os::nmea::detail
