// The sentence probe: what it accepts, and where it leaves the stream after each kind of failure. Every
// case runs over a block in memory (the fast path) and over a plain stream (byte by byte).
#include "os/MemoryInputStream.h"
#include "os/nmea/SentenceProbe.h"

#include "support/NmeaSentences.h"
#include "support/PlainStream.h"

#include <gtest/gtest.h>

#include <string>

using testsupport::PlainStream;
using testsupport::sentence;

namespace {

struct Outcome {
    std::size_t length;
    std::uint64_t position;
};

class SentenceProbe : public testing::TestWithParam<bool> {
protected:
    // Probes text from offset; returns the length and where the stream was left.
    Outcome probe(const std::string& text, std::uint64_t offset = 0) {
        m_text = text;
        if (GetParam())
            m_stream = std::make_unique<os::CMemoryInputStream>(m_text.data(), m_text.size());
        else
            m_stream = std::make_unique<PlainStream>(m_text.data(), m_text.size());
        m_stream->seek(static_cast<std::int64_t>(offset), os::SeekOrigin::Begin);
        const std::size_t length = os::nmea::probeSentence(*m_stream);
        return {length, m_stream->position()};
    }

private:
    std::string m_text;
    std::unique_ptr<os::CInputStream> m_stream;
};

// A sentence of exactly the given length, line end included.
std::string sentenceOfLength(std::size_t length, const std::string& lineEnd) {
    const std::size_t framing = 1 + 3 + lineEnd.size(); // "$", "*hh", line end
    return sentence("GPTXT," + std::string(length - framing - 6, 'x'), lineEnd);
}

} // namespace

TEST_P(SentenceProbe, accepts_a_sentence_and_rewinds_to_its_start) {
    const std::string rmc = sentence("GPRMC,120005,A,4916.45,N,12311.12,W,,,191124,,");
    const Outcome crlf = probe("junk" + rmc + "more", 4);
    EXPECT_EQ(crlf.length, rmc.size());
    EXPECT_EQ(crlf.position, 4u);
    const Outcome lf = probe(sentence("GPGGA,1,2", "\n"));
    EXPECT_EQ(lf.length, sentence("GPGGA,1,2", "\n").size());
    const std::string encapsulated = sentence("AIVDM,1,1,,A,13aG").replace(0, 1, "!"); // "!" starts one too
    EXPECT_EQ(probe(encapsulated).length, encapsulated.size());
    EXPECT_EQ(probe(sentence("")).length, 6u); // an empty body still frames
}

TEST_P(SentenceProbe, rejects_lower_case_checksum) {
    std::string text = sentence("GPGGA,1,2,3");
    ASSERT_EQ(text.substr(text.size() - 4, 2), "4A");
    text[text.size() - 3] = 'a'; // the right value, in the wrong case
    const Outcome outcome = probe(text);
    EXPECT_EQ(outcome.length, 0u);
    EXPECT_EQ(outcome.position, 0u); // a framing failure rewinds
}

TEST_P(SentenceProbe, checksum_mismatch_consumes_the_sentence) {
    std::string text = sentence("GPGGA,1,2,3");
    text[text.size() - 3] = 'E';
    const Outcome outcome = probe(text + "$next");
    EXPECT_EQ(outcome.length, 0u);
    EXPECT_EQ(outcome.position, text.size());
}

TEST_P(SentenceProbe, other_framing_failures_rewind) {
    for (const std::string& text : {std::string("$GPGGA,1,2,3\r\n"),        // no checksum
                                    std::string("$GPGGA,1*3\r\n"),           // one digit
                                    std::string("$GPGGA,1*3G\r\n"),          // not hexadecimal
                                    std::string("$GPGGA,1*31 \r\n"),         // no line end after the digits
                                    std::string("$GPGGA,1*31\r\r\n"),        // CR not followed by LF
                                    std::string("$GPG\tGA,1*31\r\n"),        // control character in the body
                                    std::string("$GPGGA,1$GPRMC*31\r\n"),    // a second start character
                                    std::string("$GPGGA,\xc3\xa9*31\r\n")}) { // bytes above ASCII
        SCOPED_TRACE(text);
        const Outcome outcome = probe(text + "tail");
        EXPECT_EQ(outcome.length, 0u);
        EXPECT_EQ(outcome.position, 0u);
    }
}

TEST_P(SentenceProbe, no_start_character_leaves_the_stream_where_it_was) {
    const Outcome outcome = probe("xx$GPGGA", 1);
    EXPECT_EQ(outcome.length, 0u);
    EXPECT_EQ(outcome.position, 1u);
    EXPECT_EQ(probe("").length, 0u);
}

TEST_P(SentenceProbe, failure_at_the_end_of_the_stream_does_not_rewind) {
    for (const std::string& text : {std::string("$GPGGA,1,2"), std::string("$GPGGA,1*"), std::string("$GPGGA,1*3"),
                                    std::string("$GPGGA,1*31"), std::string("$GPGGA,1*31\r")}) {
        SCOPED_TRACE(text);
        const Outcome outcome = probe(text);
        EXPECT_EQ(outcome.length, 0u);
        EXPECT_EQ(outcome.position, text.size());
    }
}

TEST_P(SentenceProbe, sentences_are_at_most_256_characters_line_end_included) {
    EXPECT_EQ(probe(sentenceOfLength(256, "\r\n") + "tail").length, 256u);
    EXPECT_EQ(probe(sentenceOfLength(256, "\n") + "tail").length, 256u);
    const Outcome crlf = probe(sentenceOfLength(257, "\r\n") + "tail");
    EXPECT_EQ(crlf.length, 0u);
    EXPECT_EQ(crlf.position, 0u);
    const Outcome lf = probe(sentenceOfLength(257, "\n") + "tail");
    EXPECT_EQ(lf.length, 0u);
    EXPECT_EQ(lf.position, 0u);
    const Outcome endless = probe("$" + std::string(10000, 'A'));
    EXPECT_EQ(endless.length, 0u);
    EXPECT_EQ(endless.position, 0u);
}

INSTANTIATE_TEST_SUITE_P(MemoryAndPlainStreams, SentenceProbe, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& info) { return info.param ? "memory" : "plain"; });
