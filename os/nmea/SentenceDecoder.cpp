// Decoding of one framed sentence into its record and the call to the handler.
#include "os/nmea/SentenceDecoder.h"

#include "os/nmea/FieldDecoding.h"

#include <array>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace os::nmea {
namespace {

// The longest recognised sentence (GSV) has 20 fields after the address; later fields are ignored.
constexpr std::size_t kMaxFields = 32;

// The fields of one sentence as views into its text; a field past the end reads as empty. Only the comma
// positions are stored (the body is at most 252 characters), so building it costs a scan and no more.
class Fields {
public:
    explicit Fields(std::string_view body) : m_body(body) {
        const char* const text = body.data();
        const std::size_t size = body.size();
        std::size_t count = 0; // kept local: the stores to m_ends would otherwise force it to memory
        const auto addEnd = [&](std::size_t position) {
            if (count < kMaxFields)
                m_ends[count++] = static_cast<std::uint16_t>(position);
        };
        std::size_t i = 0;
#if defined(__SSE2__)
        for (; i + 16 <= size; i += 16) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + i));
            auto mask = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_set1_epi8(','))));
            for (; mask != 0; mask &= mask - 1)
                addEnd(i + static_cast<std::size_t>(__builtin_ctz(mask)));
        }
#endif
        for (; i < size; ++i)
            if (text[i] == ',')
                addEnd(i);
        addEnd(size);
        m_count = count;
    }
    std::string_view operator[](std::size_t index) const {
        if (index >= m_count)
            return {};
        const std::size_t begin = index == 0 ? 0 : m_ends[index - 1] + 1u;
        return m_body.substr(begin, m_ends[index] - begin);
    }

private:
    std::string_view m_body;
    std::uint16_t m_ends[kMaxFields]; // where each field ends: at its comma, or at the end of the body
    std::size_t m_count = 0;
};

constexpr std::string_view kModes = "ADEMSN";

std::optional<Status> decodeStatus(std::string_view field) {
    const auto letter = decodeLetter(field, "AV");
    return letter ? std::optional<Status>(static_cast<Status>(*letter)) : std::nullopt;
}

std::optional<Mode> decodeMode(std::string_view field) {
    const auto letter = decodeLetter(field, kModes);
    return letter ? std::optional<Mode>(static_cast<Mode>(*letter)) : std::nullopt;
}

std::optional<Unit> decodeUnit(std::string_view field, std::string_view allowed) {
    const auto letter = decodeLetter(field, allowed);
    return letter ? std::optional<Unit>(static_cast<Unit>(*letter)) : std::nullopt;
}

// A value followed by its unit letter, e.g. "12.5,T"; the value counts only with the expected letter.
std::optional<double> decodeTagged(std::string_view value, std::string_view tag, char expected) {
    if (tag.size() != 1 || tag[0] != expected)
        return std::nullopt;
    return decodeDecimal(value);
}

// Field 0 is the address; the fields of each type are numbered from 1 as in NMEA 0183.
void decodeGga(const Fields& f, ISentenceHandler& handler) {
    GgaSentence s;
    s.utc = decodeUtcTime(f[1]);
    s.latitude = decodeLatitude(f[2], f[3]);
    s.longitude = decodeLongitude(f[4], f[5]);
    s.quality = decodeUnsigned(f[6]);
    s.satellitesInUse = decodeUnsigned(f[7]);
    s.hdop = decodeDecimal(f[8]);
    s.altitude = decodeDecimal(f[9]);
    s.altitudeUnit = decodeUnit(f[10], "M");
    s.geoidSeparation = decodeDecimal(f[11]);
    s.geoidSeparationUnit = decodeUnit(f[12], "M");
    s.dgpsAge = decodeDecimal(f[13]);
    s.dgpsStation = decodeUnsigned(f[14]);
    handler.onGga(s);
}

void decodeGll(const Fields& f, ISentenceHandler& handler) {
    GllSentence s;
    s.latitude = decodeLatitude(f[1], f[2]);
    s.longitude = decodeLongitude(f[3], f[4]);
    s.utc = decodeUtcTime(f[5]);
    s.status = decodeStatus(f[6]);
    s.mode = decodeMode(f[7]);
    handler.onGll(s);
}

void decodeGsa(const Fields& f, ISentenceHandler& handler) {
    GsaSentence s;
    s.selectionMode = decodeLetter(f[1], "AM");
    s.fixMode = decodeUnsigned(f[2]);
    for (int channel = 0; channel < GsaSentence::kChannels; ++channel)
        s.satellites[channel] = decodeUnsigned(f[3 + channel]);
    s.pdop = decodeDecimal(f[15]);
    s.hdop = decodeDecimal(f[16]);
    s.vdop = decodeDecimal(f[17]);
    handler.onGsa(s);
}

void decodeGst(const Fields& f, ISentenceHandler& handler) {
    GstSentence s;
    s.utc = decodeUtcTime(f[1]);
    s.rangeRms = decodeDecimal(f[2]);
    s.semiMajorError = decodeDecimal(f[3]);
    s.semiMinorError = decodeDecimal(f[4]);
    s.orientation = decodeDecimal(f[5]);
    s.latitudeError = decodeDecimal(f[6]);
    s.longitudeError = decodeDecimal(f[7]);
    s.altitudeError = decodeDecimal(f[8]);
    handler.onGst(s);
}

void decodeGsv(const Fields& f, ISentenceHandler& handler) {
    GsvSentence s;
    s.messageCount = decodeUnsigned(f[1]);
    s.messageNumber = decodeUnsigned(f[2]);
    s.satellitesInView = decodeUnsigned(f[3]);
    for (int i = 0; i < GsvSentence::kSatellitesPerSentence; ++i) {
        const std::size_t first = 4 + 4 * static_cast<std::size_t>(i);
        s.satellites[i].prn = decodeUnsigned(f[first]);
        s.satellites[i].elevation = decodeUnsigned(f[first + 1]);
        s.satellites[i].azimuth = decodeUnsigned(f[first + 2]);
        s.satellites[i].snr = decodeUnsigned(f[first + 3]);
    }
    handler.onGsv(s);
}

void decodeRmc(const Fields& f, ISentenceHandler& handler) {
    RmcSentence s;
    s.utc = decodeUtcTime(f[1]);
    s.status = decodeStatus(f[2]);
    s.latitude = decodeLatitude(f[3], f[4]);
    s.longitude = decodeLongitude(f[5], f[6]);
    s.speedKnots = decodeDecimal(f[7]);
    s.courseTrue = decodeDecimal(f[8]);
    s.date = decodeDate(f[9]);
    s.magneticVariation = decodeEastWest(f[10], f[11]);
    s.mode = decodeMode(f[12]);
    handler.onRmc(s);
}

void decodeVtg(const Fields& f, ISentenceHandler& handler) {
    VtgSentence s;
    s.courseTrue = decodeTagged(f[1], f[2], 'T');
    s.courseMagnetic = decodeTagged(f[3], f[4], 'M');
    s.speedKnots = decodeTagged(f[5], f[6], 'N');
    s.speedKmh = decodeTagged(f[7], f[8], 'K');
    s.mode = decodeMode(f[9]);
    handler.onVtg(s);
}

void decodeZda(const Fields& f, ISentenceHandler& handler) {
    ZdaSentence s;
    s.utc = decodeUtcTime(f[1]);
    s.day = decodeUnsigned(f[2]);
    if (s.day && (*s.day < 1 || *s.day > 31))
        s.day.reset();
    s.month = decodeUnsigned(f[3]);
    if (s.month && (*s.month < 1 || *s.month > 12))
        s.month.reset();
    s.year = f[4].size() == 4 ? decodeUnsigned(f[4]) : std::nullopt;
    s.zoneHours = decodeSigned(f[5]);
    s.zoneMinutes = decodeUnsigned(f[6]);
    handler.onZda(s);
}

void decodeHdg(const Fields& f, ISentenceHandler& handler) {
    HdgSentence s;
    s.heading = decodeDecimal(f[1]);
    s.deviation = decodeEastWest(f[2], f[3]);
    s.variation = decodeEastWest(f[4], f[5]);
    handler.onHdg(s);
}

void decodeDpt(const Fields& f, ISentenceHandler& handler) {
    DptSentence s;
    s.depth = decodeDecimal(f[1]);
    s.offset = decodeDecimal(f[2]);
    s.maximumRange = decodeDecimal(f[3]);
    handler.onDpt(s);
}

void decodeDbt(const Fields& f, ISentenceHandler& handler) {
    DbtSentence s;
    s.depthFeet = decodeTagged(f[1], f[2], 'f');
    s.depthMetres = decodeTagged(f[3], f[4], 'M');
    s.depthFathoms = decodeTagged(f[5], f[6], 'F');
    handler.onDbt(s);
}

void decodeMtw(const Fields& f, ISentenceHandler& handler) {
    MtwSentence s;
    s.temperature = decodeDecimal(f[1]);
    s.unit = decodeLetter(f[2], "C");
    handler.onMtw(s);
}

void decodePgrmz(const Fields& f, ISentenceHandler& handler) {
    PgrmzSentence s;
    s.altitude = decodeDecimal(f[1]);
    s.unit = decodeUnit(f[2], "fM");
    s.fixDimension = decodeUnsigned(f[3]);
    handler.onPgrmz(s);
}

using Decoder = void (*)(const Fields&, ISentenceHandler&);

struct RecognisedType {
    SentenceDescriptor descriptor;
    Decoder decode;
};

const RecognisedType kRecognisedTypes[] = {
    // The most frequent types first: the lookup is a short linear scan.
    {{SentenceKind::Rmc, 0, {}, "RMC", {}, false}, &decodeRmc},
    {{SentenceKind::Gga, 0, {}, "GGA", {}, false}, &decodeGga},
    {{SentenceKind::Gsa, 0, {}, "GSA", {}, false}, &decodeGsa},
    {{SentenceKind::Gsv, 0, {}, "GSV", {}, false}, &decodeGsv},
    {{SentenceKind::Vtg, 0, {}, "VTG", {}, false}, &decodeVtg},
    {{SentenceKind::Gll, 0, {}, "GLL", {}, false}, &decodeGll},
    {{SentenceKind::Zda, 0, {}, "ZDA", {}, false}, &decodeZda},
    {{SentenceKind::Gst, 0, {}, "GST", {}, false}, &decodeGst},
    {{SentenceKind::Hdg, 0, {}, "HDG", {}, false}, &decodeHdg},
    {{SentenceKind::Dpt, 0, {}, "DPT", {}, false}, &decodeDpt},
    {{SentenceKind::Dbt, 0, {}, "DBT", {}, false}, &decodeDbt},
    {{SentenceKind::Mtw, 0, {}, "MTW", {}, false}, &decodeMtw},
    {{SentenceKind::Pgrmz, 0, {}, "Z", "GRM", true}, &decodePgrmz},
};

bool isAddressCharacter(char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); }

} // namespace

bool SentenceDescriptor::matches(const SentenceAddress& address) const {
    if (proprietary != !address.manufacturer.empty())
        return false;
    return (talker.empty() || talker == address.talker) && (type.empty() || type == address.type) &&
           (manufacturer.empty() || manufacturer == address.manufacturer);
}

bool parseAddress(std::string_view field, SentenceAddress& address) {
    if (field.size() < 2)
        return false;
    for (const char c : field)
        if (!isAddressCharacter(c))
            return false;
    address = {};
    if (field[0] == 'P') {
        // "P" + three-letter manufacturer code + the manufacturer's own type.
        if (field.size() < 5)
            return false;
        address.manufacturer = field.substr(1, 3);
        address.type = field.substr(4);
    } else {
        if (field.size() < 3)
            return false;
        address.talker = field.substr(0, 2);
        address.type = field.substr(2);
    }
    return true;
}

const SentenceDescriptor* findDescriptor(const SentenceAddress& address) {
    for (const RecognisedType& recognised : kRecognisedTypes)
        if (recognised.descriptor.matches(address))
            return &recognised.descriptor;
    return nullptr;
}

SentenceKind decodeSentence(std::string_view sentence, ISentenceHandler& handler) {
    // The body lies between the start character and "*".
    const std::size_t star = sentence.rfind('*');
    if (sentence.size() < 2 || star == std::string_view::npos)
        return SentenceKind::Any;
    const Fields fields(sentence.substr(1, star - 1));
    SentenceAddress address;
    if (!parseAddress(fields[0], address)) {
        handler.onUnknown(address);
        return SentenceKind::Any;
    }
    // Same choice as findDescriptor() over the table, by a switch on the type letters.
    const std::string_view type = address.type;
    Decoder decode = nullptr;
    SentenceKind kind = SentenceKind::Any;
    if (address.manufacturer.empty() && type.size() == 3) {
        const auto key = static_cast<std::uint32_t>(type[0]) << 16 | static_cast<std::uint32_t>(type[1]) << 8 |
                         static_cast<std::uint32_t>(type[2]);
        constexpr auto k = [](const char (&t)[4]) {
            return static_cast<std::uint32_t>(t[0]) << 16 | static_cast<std::uint32_t>(t[1]) << 8 |
                   static_cast<std::uint32_t>(t[2]);
        };
        switch (key) {
        case k("RMC"): decode = &decodeRmc; kind = SentenceKind::Rmc; break;
        case k("GGA"): decode = &decodeGga; kind = SentenceKind::Gga; break;
        case k("GSA"): decode = &decodeGsa; kind = SentenceKind::Gsa; break;
        case k("GSV"): decode = &decodeGsv; kind = SentenceKind::Gsv; break;
        case k("VTG"): decode = &decodeVtg; kind = SentenceKind::Vtg; break;
        case k("GLL"): decode = &decodeGll; kind = SentenceKind::Gll; break;
        case k("ZDA"): decode = &decodeZda; kind = SentenceKind::Zda; break;
        case k("GST"): decode = &decodeGst; kind = SentenceKind::Gst; break;
        case k("HDG"): decode = &decodeHdg; kind = SentenceKind::Hdg; break;
        case k("DPT"): decode = &decodeDpt; kind = SentenceKind::Dpt; break;
        case k("DBT"): decode = &decodeDbt; kind = SentenceKind::Dbt; break;
        case k("MTW"): decode = &decodeMtw; kind = SentenceKind::Mtw; break;
        default: break;
        }
    } else if (address.manufacturer == "GRM" && type == "Z") {
        decode = &decodePgrmz;
        kind = SentenceKind::Pgrmz;
    }
    if (!decode) {
        handler.onUnknown(address);
        return SentenceKind::Any;
    }
    decode(fields, handler);
    return kind;
}

} // namespace os::nmea
