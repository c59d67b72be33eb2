// GPS and accelerometer readings of a GPMF metadata track.
#include "core/embedded/GpmfReader.h"

#include "logging/Logging.h"

#include <cmath>

namespace {

constexpr const char* kLogger = "core.GpmfReader";
constexpr double kStandardGravity = 9.80665; // m/s^2 in one g
// 1 MB: a second of every sensor of a camera is under 100 kB.
constexpr qint64 kMaxSampleBytes = 1 << 20;
// Cameras nest two deep (DEVC, STRM); deeper lists are damage, and without a limit a crafted sample could
// exhaust the stack.
constexpr int kMaxNesting = 8;

using embedded::bigEndian;

struct Item {
    QByteArray key;
    char type = 0;
    int elementSize = 0;
    int count = 0;
    int valueOffset = 0; // in the sample
    int valueSize() const { return elementSize * count; }
};

// What a stream told so far: the values that apply to the GPS and accelerometer items that follow.
struct StreamState {
    std::vector<double> scale;
    QByteArray structure; // TYPE
    std::optional<TrackTime> gpsTime;
    std::optional<double> gpsTimeFraction;
    int fix = -1;
    std::optional<double> dop;
};

double scaleOf(const StreamState& state, std::size_t field) {
    if (state.scale.empty())
        return 1.0;
    const double scale = state.scale[state.scale.size() == 1 ? 0 : std::min(field, state.scale.size() - 1)];
    return scale == 0.0 ? 1.0 : scale;
}

// A signed or unsigned integer element of `size` bytes as the type character says.
double numberAt(const QByteArray& sample, int offset, char type) {
    switch (type) {
    case 'b': return static_cast<qint8>(sample[offset]);
    case 'B': return static_cast<quint8>(sample[offset]);
    case 's': return bigEndian<qint16>(sample, offset);
    case 'S': return bigEndian<quint16>(sample, offset);
    case 'l': return bigEndian<qint32>(sample, offset);
    case 'L': return bigEndian<quint32>(sample, offset);
    case 'f': return embedded::floatFromBits<float>(bigEndian<quint32>(sample, offset));
    case 'd': return embedded::floatFromBits<double>(bigEndian<quint64>(sample, offset));
    case 'j': return static_cast<double>(bigEndian<qint64>(sample, offset));
    case 'J': return static_cast<double>(bigEndian<quint64>(sample, offset));
    default: return 0.0;
    }
}

// The kind of fix a GPSF value or a GPS9 field gives: 0 none, 2 2D, 3 3D; anything else counts as none.
int fixKind(double value) {
    return value == 2.0 || value == 3.0 ? static_cast<int>(value) : 0;
}

int sizeOfType(char type) {
    switch (type) {
    case 'b': case 'B': case 'c': return 1;
    case 's': case 'S': return 2;
    case 'l': case 'L': case 'f': case 'F': return 4;
    case 'd': case 'j': case 'J': return 8;
    default: return 0;
    }
}

class SampleParser {
public:
    SampleParser(const ByteSource& source, const Mp4Sample& where, const QByteArray& sample, FixSequence& sequence)
        : m_source(source), m_where(where), m_sample(sample), m_sequence(sequence) {}

    // Walks the items between `begin` and `end`; false when a damaged item ended the walk.
    bool walk(int begin, int end, StreamState* stream, int depth = 0) {
        if (depth > kMaxNesting) {
            LOG_WARN(kLogger, "'{}': GPMF lists nested deeper than {} at offset {}; the rest of the sample is skipped",
                     m_source.name().toStdString(), kMaxNesting, m_where.offset + begin);
            return false;
        }
        int at = begin;
        while (at + 8 <= end) {
            Item item;
            item.key = m_sample.mid(at, 4);
            item.type = m_sample[at + 4];
            item.elementSize = static_cast<quint8>(m_sample[at + 5]);
            item.count = bigEndian<quint16>(m_sample, at + 6);
            item.valueOffset = at + 8;
            if (item.key == QByteArray(4, '\0'))
                return true; // padding at the end of the sample
            if (item.valueOffset + item.valueSize() > end) {
                LOG_WARN(kLogger, "'{}': GPMF item '{}' at offset {} runs past its sample; the rest of the sample is skipped",
                         m_source.name().toStdString(), item.key.toStdString(), m_where.offset + at);
                return false;
            }
            if (item.type == 0) {
                StreamState nested;
                if (!walk(item.valueOffset, item.valueOffset + item.valueSize(), item.key == "STRM" ? &nested : stream,
                          depth + 1))
                    return false;
            } else if (stream) {
                take(item, *stream);
            }
            at = item.valueOffset + ((item.valueSize() + 3) & ~3);
        }
        return true;
    }

private:
    void take(const Item& item, StreamState& state) {
        if (item.key == "SCAL") {
            state.scale.clear();
            for (int i = 0; i < item.count && item.elementSize > 0; ++i)
                state.scale.push_back(numberAt(m_sample, item.valueOffset + i * item.elementSize, item.type));
        } else if (item.key == "TYPE") {
            state.structure = m_sample.mid(item.valueOffset, item.valueSize());
        } else if (item.key == "GPSU" && item.valueSize() >= 16) {
            const QString text = QString::fromLatin1(m_sample.mid(item.valueOffset, 16));
            bool ok[6] = {};
            const int fields[6] = {text.mid(0, 2).toInt(&ok[0]), text.mid(2, 2).toInt(&ok[1]), text.mid(4, 2).toInt(&ok[2]),
                                   text.mid(6, 2).toInt(&ok[3]), text.mid(8, 2).toInt(&ok[4]), text.mid(10, 2).toInt(&ok[5])};
            const double fraction = text.mid(12).toDouble(); // ".sss"
            if (std::all_of(std::begin(ok), std::end(ok), [](bool b) { return b; })) {
                state.gpsTime = embedded::utcTrackTime(2000 + fields[0], fields[1], fields[2], fields[3], fields[4], fields[5]);
                state.gpsTimeFraction = fraction >= 0.0 && fraction < 1.0 ? fraction : 0.0;
            }
        } else if (item.key == "GPSF" && item.count > 0) {
            state.fix = fixKind(numberAt(m_sample, item.valueOffset, item.type));
        } else if (item.key == "GPSP" && item.count > 0) {
            state.dop = numberAt(m_sample, item.valueOffset, item.type) / 100.0;
        } else if (item.key == "GPS5" && item.type == 'l' && item.elementSize >= 20) {
            takeGps5(item, state);
        } else if (item.key == "GPS9" && item.elementSize >= 32) {
            takeGps9(item, state);
        } else if (item.key == "ACCL" && item.elementSize >= 3 * sizeOfType(item.type) && sizeOfType(item.type) > 0) {
            const int width = sizeOfType(item.type);
            for (int i = 0; i < item.count; ++i) {
                const int at = item.valueOffset + i * item.elementSize;
                AccelerationSample sample;
                sample.seconds = m_where.seconds + m_where.duration * i / item.count;
                sample.x = numberAt(m_sample, at, item.type) / scaleOf(state, 0) / kStandardGravity;
                sample.y = numberAt(m_sample, at + width, item.type) / scaleOf(state, 1) / kStandardGravity;
                sample.z = numberAt(m_sample, at + 2 * width, item.type) / scaleOf(state, 2) / kStandardGravity;
                m_sequence.addAcceleration(sample);
            }
        }
    }

    TrackPosition positionAt(int at, const StreamState& state) const {
        TrackPosition position;
        position.latitude = bigEndian<qint32>(m_sample, at) / scaleOf(state, 0);
        position.longitude = bigEndian<qint32>(m_sample, at + 4) / scaleOf(state, 1);
        position.altitude = bigEndian<qint32>(m_sample, at + 8) / scaleOf(state, 2);
        position.speed = bigEndian<qint32>(m_sample, at + 12) / scaleOf(state, 3) * 3.6;
        return position;
    }

    void takeGps5(const Item& item, const StreamState& state) {
        for (int i = 0; i < item.count; ++i) {
            const double videoSeconds = m_where.seconds + m_where.duration * i / item.count;
            if (!state.gpsTime || state.fix == 0 || state.fix == 1) {
                m_sequence.add(videoSeconds, std::nullopt);
                continue;
            }
            TrackPosition position = positionAt(item.valueOffset + i * item.elementSize, state);
            // The fixes of a sample are evenly spread over it, from the time GPSU gives for the first.
            const double offset = *state.gpsTimeFraction + m_where.duration * i / item.count;
            position.time = *state.gpsTime + trackTimeFromSeconds(static_cast<std::int64_t>(std::floor(offset)));
            position.hdop = state.dop;
            m_sequence.add(videoSeconds, valid(position));
        }
    }

    void takeGps9(const Item& item, const StreamState& state) {
        if (state.structure != "lllllllSS")
            return;
        for (int i = 0; i < item.count; ++i) {
            const int at = item.valueOffset + i * item.elementSize;
            const double videoSeconds = m_where.seconds + m_where.duration * i / item.count;
            const int fix = fixKind(bigEndian<quint16>(m_sample, at + 30) / scaleOf(state, 8));
            if (fix < 2) {
                m_sequence.add(videoSeconds, std::nullopt);
                continue;
            }
            TrackPosition position = positionAt(at, state);
            const double days = bigEndian<qint32>(m_sample, at + 20) / scaleOf(state, 5);
            const double seconds = bigEndian<qint32>(m_sample, at + 24) / scaleOf(state, 6);
            // 73,000 days: until 2199, the years a receiver can report.
            if (!(days >= 0.0 && days < 73000.0 && seconds >= 0.0 && seconds < 86401.0)) {
                m_sequence.add(videoSeconds, std::nullopt);
                continue;
            }
            const std::int64_t since2000 = static_cast<std::int64_t>(std::floor(days * 86400.0 + seconds));
            position.time = trackTimeFromSeconds(QDateTime(QDate(2000, 1, 1), QTime(0, 0), Qt::UTC).toSecsSinceEpoch() + since2000);
            position.hdop = bigEndian<quint16>(m_sample, at + 28) / scaleOf(state, 7);
            m_sequence.add(videoSeconds, valid(position));
        }
    }

    static std::optional<TrackPosition> valid(const TrackPosition& position) {
        if (!embedded::isFiniteCoordinate(position.latitude, position.longitude))
            return std::nullopt;
        return position;
    }

    const ByteSource& m_source;
    const Mp4Sample& m_where;
    const QByteArray& m_sample;
    FixSequence& m_sequence;
};

} // namespace

std::optional<EmbeddedTrack> GpmfReader::read(const ByteSource& source, const Mp4Track& track) {
    FixSequence sequence("GPMF");
    for (const Mp4Sample& where : track.samples) {
        if (where.size > kMaxSampleBytes) {
            LOG_WARN(kLogger, "'{}': GPMF sample at offset {} is {} bytes, too large to be telemetry; skipped",
                     source.name().toStdString(), where.offset, where.size);
            continue;
        }
        const QByteArray sample = source.read(where.offset, where.size);
        SampleParser(source, where, sample, sequence).walk(0, sample.size(), nullptr);
    }
    if (sequence.empty()) {
        LOG_TRACE(kLogger, "'{}': the GPMF track holds no GPS or accelerometer stream", source.name().toStdString());
        return std::nullopt;
    }
    return sequence.take();
}
