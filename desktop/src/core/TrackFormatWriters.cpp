// Writers of a track as CSV, GPX 1.0, KML and OziExplorer PLT text.
#include "core/TrackFormatWriters.h"

#include <QDateTime>

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>

namespace trackformats {
namespace {

constexpr double kFeetPerMetre = 3.28084;
// 1 MiB: text is handed to the stream in chunks of this size rather than a number at a time.
constexpr std::size_t kChunkSize = 1 << 20;

const QString kCsvTimeFormat = QStringLiteral("yyyy.MM.dd hh:mm:ss");
// "mm" in the date part is the minutes: the month position carries them, as in earlier versions.
const QString kGpxTimeFormat = QStringLiteral("yyyy-mm-ddThh:mm:ssZ");
const QString kPltTimeFormat = QStringLiteral("ddMMyy,hhmmss");

// Text collected for the stream. Numbers go through std::to_chars, which writes exactly what "%.*f"
// writes in the C locale (and so what a classic-locale stream with std::fixed writes), without the
// stream's per-number locale work that would make a day's track take seconds.
class Text {
public:
    explicit Text(std::ostream& out) : m_out(out) { m_text.reserve(kChunkSize + 4096); }

    Text& operator<<(std::string_view text) {
        m_text.append(text);
        return *this;
    }
    Text& operator<<(char c) {
        m_text.push_back(c);
        return *this;
    }
    void fixed(double value, int decimals) {
        char digits[400]; // 1e308 in fixed notation has 309 digits
        const auto result = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals);
        m_text.append(digits, static_cast<std::size_t>(result.ptr - digits));
    }
    void optionalFixed(const std::optional<double>& value, int decimals) {
        if (value)
            fixed(*value, decimals);
    }
    void integer(unsigned long long value) {
        char digits[24];
        const auto result = std::to_chars(digits, digits + sizeof digits, value);
        m_text.append(digits, static_cast<std::size_t>(result.ptr - digits));
    }
    void time(TrackTime time, const UtcFormat& format) { format.append(m_text, time); }

    // Hands a full chunk to the stream; call between points.
    void flushIfFull() {
        if (m_text.size() >= kChunkSize)
            flush();
    }
    void flush() {
        m_out.write(m_text.data(), static_cast<std::streamsize>(m_text.size()));
        m_text.clear();
    }
    const std::string& text() const { return m_text; }

private:
    std::ostream& m_out;
    std::string m_text;
};

// Days since 1970-01-01 to a proleptic Gregorian date (H. Hinnant's civil_from_days).
void civilFromDays(std::int64_t days, std::int64_t& year, int& month, int& day) {
    days += 719468;
    const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const auto dayOfEra = static_cast<unsigned>(days - era * 146097);
    const unsigned yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const unsigned monthIndex = (5 * dayOfYear + 2) / 153;
    day = static_cast<int>(dayOfYear - (153 * monthIndex + 2) / 5 + 1);
    month = static_cast<int>(monthIndex < 10 ? monthIndex + 3 : monthIndex - 9);
    year = static_cast<std::int64_t>(yearOfEra) + era * 400 + (month <= 2 ? 1 : 0);
}

void appendDigits(std::string& out, int value, int width) {
    char digits[4];
    for (int i = width - 1; i >= 0; --i, value /= 10)
        digits[i] = static_cast<char>('0' + value % 10);
    out.append(digits, static_cast<std::size_t>(width));
}

} // namespace

UtcFormat::UtcFormat(const QString& format) : m_format(format) {
    // Qt's own letters that this renderer does not handle: any of them leaves the work to QDateTime.
    static const QString kOtherSpecials = QStringLiteral("aAtzH'");
    for (int i = 0; i < format.size();) {
        const QChar c = format[i];
        int run = 1;
        while (i + run < format.size() && format[i + run] == c)
            ++run;
        Field field = Literal;
        if (c == 'y' && run == 4)
            field = Year4;
        else if (c == 'y' && run == 2)
            field = Year2;
        else if (c == 'M' && run == 2)
            field = Month;
        else if (c == 'd' && run == 2)
            field = Day;
        else if (c == 'h' && run == 2)
            field = Hour;
        else if (c == 'm' && run == 2)
            field = Minute;
        else if (c == 's' && run == 2)
            field = Second;
        else if (QStringLiteral("yMdhms").contains(c) || kOtherSpecials.contains(c) || c.unicode() > 0x7F) {
            m_fallback = true;
            return;
        }
        if (field == Literal) {
            for (int k = 0; k < run; ++k)
                m_tokens.push_back({Literal, static_cast<char>(c.unicode())});
        } else {
            m_tokens.push_back({field, 0});
        }
        i += run;
    }
}

void UtcFormat::append(std::string& out, TrackTime time) const {
    const std::int64_t seconds = trackTimeToSeconds(time);
    std::int64_t days = seconds / 86400;
    std::int64_t secondOfDay = seconds % 86400;
    if (secondOfDay < 0) {
        secondOfDay += 86400;
        --days;
    }
    std::int64_t year = 0;
    int month = 0, day = 0;
    civilFromDays(days, year, month, day);
    if (m_fallback || year < 1000 || year > 9999) {
        out += formatUtc(time, m_format).toStdString();
        return;
    }
    const int hour = static_cast<int>(secondOfDay / 3600);
    const int minute = static_cast<int>(secondOfDay / 60 % 60);
    const int second = static_cast<int>(secondOfDay % 60);
    for (const Token& token : m_tokens) {
        switch (token.field) {
        case Literal: out.push_back(token.literal); break;
        case Year4: appendDigits(out, static_cast<int>(year), 4); break;
        case Year2: appendDigits(out, static_cast<int>(year % 100), 2); break;
        case Month: appendDigits(out, month, 2); break;
        case Day: appendDigits(out, day, 2); break;
        case Hour: appendDigits(out, hour, 2); break;
        case Minute: appendDigits(out, minute, 2); break;
        case Second: appendDigits(out, second, 2); break;
        }
    }
}

QString formatUtc(TrackTime time, const QString& format) {
    return QDateTime::fromSecsSinceEpoch(trackTimeToSeconds(time), Qt::UTC).toString(format);
}

void writeCsv(std::ostream& out, const TrackPositions& positions) {
    static const UtcFormat timeFormat(kCsvTimeFormat);
    Text text(out);
    text << "timestamp,latitude,longitude,speed,altitude,satellites,HDOP,PDOP,VDOP" << "\n";
    for (const TrackPosition& p : positions) {
        text.time(p.time, timeFormat);
        text << ',';
        text.fixed(p.latitude, 6);
        text << ',';
        text.fixed(p.longitude, 6);
        text << ',';
        text.optionalFixed(p.speed, 3);
        text << ',';
        text.optionalFixed(p.altitude, 3);
        text << ',';
        if (p.satellites)
            text.integer(*p.satellites);
        text << ',';
        text.optionalFixed(p.hdop, 1);
        text << ',';
        text.optionalFixed(p.pdop, 1);
        text << ',';
        text.optionalFixed(p.vdop, 1);
        text << "\n";
        text.flushIfFull();
    }
    text.flush();
}

void writeGpx(std::ostream& out, const TrackPositions& positions) {
    static const UtcFormat timeFormat(kGpxTimeFormat);
    Text text(out);
    text << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" << "\n"
         << "<gpx version=\"1.0\">" << "\n"
         << "<trk>" << "\n"
         << "<trkseg>" << "\n";
    const auto element = [&text](std::string_view open, const std::optional<double>& value, int decimals,
                                 std::string_view close) {
        if (value) {
            text << open;
            text.fixed(*value, decimals);
            text << close << "\n";
        }
    };
    for (const TrackPosition& p : positions) {
        text << "<trkpt lat=" << '"';
        text.fixed(p.latitude, 6);
        text << '"' << " lon=" << '"';
        text.fixed(p.longitude, 6);
        text << '"' << ">" << "\n";
        text << "\t<time>";
        text.time(p.time, timeFormat);
        text << "</time>" << "\n";
        element("\t<speed>", p.speed, 3, "</speed>");
        element("\t<ele>", p.altitude, 3, "</ele>");
        if (p.satellites) {
            text << "\t<sat>";
            text.integer(*p.satellites);
            text << "</sat>" << "\n";
        }
        element("\t<hdop>", p.hdop, 1, "</hdop>");
        element("\t<pdop>", p.pdop, 1, "</pdop>");
        element("\t<vdop>", p.vdop, 1, "</vdop>");
        text << "</trkpt>" << "\n";
        text.flushIfFull();
    }
    text << "</trkseg>" << "\n"
         << "</trk>" << "\n"
         << "</gpx>";
    text.flush();
}

void writeKml(std::ostream& out, const TrackPositions& positions) {
    static const UtcFormat timeFormat(kCsvTimeFormat);
    Text text(out);
    text << "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
            "<kml xmlns=\"http://www.opengis.net/kml/2.2\">\n"
            "<Document id=\"root_doc\">\n"
            "<Folder><name>Track</name>\n"
            "\t<Placemark>\n"
            "\t\t<name>Path</name>\n"
            "\t\t<Style><LineStyle><color>ff0000ff</color></LineStyle><PolyStyle><fill>0</fill></PolyStyle></Style>\n"
            "\t\t<ExtendedData><SchemaData schemaUrl=\"#Layer0\">\n"
            "\t\t\t<SimpleData name=\"tessellate\">1</SimpleData>\n"
            "\t\t</SchemaData></ExtendedData>\n"
            "\t\t<LineString><coordinates>";

    // The path is one line of "longitude,latitude " pairs, gathered whole before it is written.
    Text path(out);
    for (const TrackPosition& p : positions) {
        path.fixed(p.longitude, 8);
        path << ',';
        path.fixed(p.latitude, 8);
        path << ' ';
    }
    text << path.text();

    text << "</coordinates></LineString>" << "\n"
         << "\t</Placemark>" << "\n"
         << "</Folder>" << "\n";

    const auto simpleData = [&text](std::string_view name, const std::optional<double>& value, int decimals) {
        if (value) {
            text << "\t\t\t<SimpleData name=\"" << name << "\">";
            text.fixed(*value, decimals);
            text << "</SimpleData>" << "\n";
        }
    };
    text << "<Folder><name>Points</name>";
    for (const TrackPosition& p : positions) {
        text << "\n";
        text << "\t<Placemark>" << "\n"
             << "\t\t<ExtendedData><SchemaData schemaUrl=\"#Points\">" << "\n";
        text << "\t\t\t<SimpleData name=\"timestamp\">";
        text.time(p.time, timeFormat);
        text << "</SimpleData>" << "\n";
        simpleData("latitude", p.latitude, 6);
        simpleData("longitude", p.longitude, 6);
        simpleData("speed", p.speed, 3);
        simpleData("altitude", p.altitude, 3);
        if (p.satellites) {
            text << "\t\t\t<SimpleData name=\"satellites\">";
            text.integer(*p.satellites);
            text << "</SimpleData>" << "\n";
        }
        simpleData("HDOP", p.hdop, 1);
        simpleData("PDOP", p.pdop, 1);
        simpleData("VDOP", p.vdop, 1);
        text << "\t\t</SchemaData></ExtendedData>" << "\n"
             << "\t\t<Point><coordinates>";
        text.fixed(p.longitude, 6);
        text << ',';
        text.fixed(p.latitude, 6);
        text << "</coordinates></Point>" << "\n"
             << "\t</Placemark>";
        text.flushIfFull();
    }
    text << "\n"
         << "</Folder>" << "\n"
         << "</Document></kml>";
    text.flush();
}

void writePlt(std::ostream& out, const TrackPositions& positions) {
    static const UtcFormat timeFormat(kPltTimeFormat);
    Text text(out);
    text << "OziExplorer Track Point File Version 2.0" << "\n"
         << "WGS 84" << "\n"
         << "Altitude is in Feet" << "\n"
         << "Reserved 3" << "\n"
         << "0,2,255,Track log file,1" << "\n";
    text.integer(positions.size());
    text << "\n";
    for (const TrackPosition& p : positions) {
        text.fixed(p.latitude, 6);
        text << ',';
        text.fixed(p.longitude, 6);
        text << ',' << "0,";
        if (p.altitude)
            text.fixed(*p.altitude * kFeetPerMetre, 3);
        // The days field stays empty; milliseconds are always written as ".000".
        text << ',' << ',';
        text.time(p.time, timeFormat);
        text << ".000" << "\n";
        text.flushIfFull();
    }
    text.flush();
}

namespace {
// "4807.0380,N": degrees and minutes to 1/10000 of a minute, as receivers write them.
std::string nmeaCoordinate(double value, int degreeDigits, char positive, char negative) {
    const double magnitude = std::fabs(value);
    long degrees = static_cast<long>(magnitude);
    double minutes = std::round((magnitude - degrees) * 60.0 * 10000.0) / 10000.0;
    if (minutes >= 60.0) {
        ++degrees;
        minutes = 0.0;
    }
    return fmt::format("{:0{}d}{:07.4f},{}", degrees, degreeDigits, minutes, value < 0 ? negative : positive);
}

std::string nmeaSentence(const std::string& body) {
    unsigned checksum = 0;
    for (char c : body)
        checksum ^= static_cast<unsigned char>(c);
    return fmt::format("${}*{:02X}\r\n", body, checksum);
}

template <typename T>
std::string optionalNumber(const std::optional<T>& value, const char* format) {
    return value ? fmt::format(format, *value) : std::string();
}
} // namespace

void writeNmea(std::ostream& out, const TrackPositions& positions) {
    static const UtcFormat timeFormat(QStringLiteral("hhmmss"));
    static const UtcFormat dateFormat(QStringLiteral("ddMMyy"));
    std::string text;
    for (const TrackPosition& p : positions) {
        std::string time, date;
        timeFormat.append(time, p.time);
        time += ".00";
        dateFormat.append(date, p.time);
        const std::string position =
            nmeaCoordinate(p.latitude, 2, 'N', 'S') + "," + nmeaCoordinate(p.longitude, 3, 'E', 'W');
        const std::optional<double> knots = p.speed ? std::optional<double>(*p.speed / 1.852) : std::nullopt;
        text += nmeaSentence(fmt::format("GPRMC,{},A,{},{},{},{},,,A", time, position, optionalNumber(knots, "{:.3f}"),
                                         optionalNumber(p.course, "{:.2f}"), date));
        text += nmeaSentence(fmt::format("GPGGA,{},{},1,{},{},{},M,,M,,", time, position,
                                         optionalNumber(p.satellites, "{:02d}"), optionalNumber(p.hdop, "{:.1f}"),
                                         optionalNumber(p.altitude, "{:.1f}")));
        if (text.size() >= kChunkSize) {
            out << text;
            text.clear();
        }
    }
    out << text;
}

} // namespace trackformats
