// NMEA 0183 sentences stored inside a video, handed to the track loader's parser.
#include "core/embedded/NmeaInVideoReader.h"

#include "core/TrackLoader.h"
#include "logging/Logging.h"

namespace {

constexpr const char* kLogger = "core.NmeaInVideoReader";
// A track is taken for NMEA when one of its first samples holds a sentence.
constexpr std::size_t kProbedSamples = 8;
// 64 kB: a sample holds a few sentences of at most 82 characters; a larger one is not text.
constexpr qint64 kMaxSampleBytes = 64 * 1024;
// 16 MB: a day of one-second RMC and GGA lines with timestamps is under 15 MB.
constexpr qint64 kMaxBoxBytes = 16 << 20;

QByteArray textOf(const QByteArray& sample, const QByteArray& format) {
    if ((format == "tx3g" || format == "text") && sample.size() >= 2) {
        const int length = embedded::bigEndian<quint16>(sample, 0);
        if (length <= sample.size() - 2)
            return sample.mid(2, length);
    }
    return sample;
}

bool holdsSentence(const QByteArray& text) {
    return text.contains("$G") || text.contains("$P");
}

// Each line from its first '$' on: timestamps and other leading text never reach the parser.
QByteArray sentencesOf(const QByteArray& text) {
    QByteArray sentences;
    sentences.reserve(text.size());
    for (const QByteArray& line : text.split('\n')) {
        const int dollar = line.indexOf('$');
        if (dollar < 0)
            continue;
        sentences.append(line.constData() + dollar, line.size() - dollar);
        if (!sentences.endsWith('\r'))
            sentences.append('\r');
        sentences.append('\n');
    }
    return sentences;
}

std::optional<EmbeddedTrack> parse(const QByteArray& sentences, const ByteSource& source) {
    EmbeddedTrack track;
    track.format = "NMEA";
    try {
        TrackLoader::Result result = TrackLoader::loadBytes(sentences);
        track.positions = std::move(result.positions);
        track.recordCount = result.rmcCount;
    } catch (const std::exception& error) {
        LOG_WARN(kLogger, "'{}': NMEA sentences in the video could not be read: {}", source.name().toStdString(),
                 error.what());
    }
    return track;
}

} // namespace

std::optional<EmbeddedTrack> NmeaInVideoReader::readTrack(const ByteSource& source, const Mp4Track& track) {
    QByteArray text;
    std::size_t withoutSentence = 0;
    bool found = false;
    for (std::size_t i = 0; i < track.samples.size(); ++i) {
        const Mp4Sample& sample = track.samples[i];
        if (sample.size > kMaxSampleBytes) {
            ++withoutSentence;
            continue;
        }
        const QByteArray sampleText = textOf(source.read(sample.offset, sample.size), track.format);
        if (!holdsSentence(sampleText)) {
            ++withoutSentence;
            if (!found && i + 1 >= kProbedSamples)
                break;
            continue;
        }
        found = true;
        text.append(sampleText);
        text.append('\n');
    }
    if (!found) {
        LOG_TRACE(kLogger, "'{}': {} track '{}' holds no NMEA sentences", source.name().toStdString(),
                  track.handler.toStdString(), track.format.toStdString());
        return std::nullopt;
    }
    if (withoutSentence > 0)
        LOG_WARN(kLogger, "'{}': {} of {} samples of the NMEA track hold no sentence and were skipped",
                 source.name().toStdString(), withoutSentence, track.samples.size());
    return parse(sentencesOf(text), source);
}

std::optional<EmbeddedTrack> NmeaInVideoReader::readBox(const ByteSource& source, const Mp4Box& box) {
    const QByteArray head = source.read(box.payloadOffset(), 64);
    if (!head.startsWith('[') && !head.startsWith('$'))
        return std::nullopt;
    if (!holdsSentence(head))
        return std::nullopt;
    if (box.cutShort)
        LOG_WARN(kLogger, "'{}': NMEA box at offset {} is cut short; the sentences before the cut are read",
                 source.name().toStdString(), box.offset);
    return parse(sentencesOf(source.read(box.payloadOffset(), std::min(box.payloadSize(), kMaxBoxBytes))), source);
}
