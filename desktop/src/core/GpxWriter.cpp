// Writer of a track as standard GPX 1.1, the form that mapping programs and GPS tools read.
#include "core/GpxWriter.h"

#include "core/TrackFormatWriters.h"

#include <charconv>
#include <string_view>

namespace trackformats {
namespace {

constexpr double kKmhPerMetrePerSecond = 3.6;
// 1 MiB: text is handed to the stream in chunks of this size rather than a number at a time.
constexpr std::size_t kChunkSize = 1 << 20;

void appendFixed(std::string& text, double value, int decimals) {
    char digits[400]; // 1e308 in fixed notation has 309 digits
    const auto result = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals);
    text.append(digits, static_cast<std::size_t>(result.ptr - digits));
}

void appendElement(std::string& text, std::string_view indent, std::string_view name, double value, int decimals) {
    text.append(indent).append("<").append(name).append(">");
    appendFixed(text, value, decimals);
    text.append("</").append(name).append(">\n");
}

// The creator is an attribute value: the five characters XML reserves are escaped.
std::string xmlAttribute(const std::string& value) {
    std::string escaped;
    for (const char c : value) {
        switch (c) {
        case '&': escaped += "&amp;"; break;
        case '<': escaped += "&lt;"; break;
        case '>': escaped += "&gt;"; break;
        case '"': escaped += "&quot;"; break;
        case '\'': escaped += "&apos;"; break;
        default: escaped += c;
        }
    }
    return escaped;
}

} // namespace

void writeGpx11(std::ostream& out, const TrackPositions& positions, const std::string& creator) {
    const UtcFormat timeFormat(QStringLiteral("yyyy-MM-ddThh:mm:ssZ"));
    std::string text;
    text.reserve(kChunkSize + 4096);
    text += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<gpx version=\"1.1\" creator=\"" + xmlAttribute(creator) + "\"\n"
            "     xmlns=\"http://www.topografix.com/GPX/1/1\"\n"
            "     xmlns:gpxtpx=\"http://www.garmin.com/xmlschemas/TrackPointExtension/v2\"\n"
            "     xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"\n"
            "     xsi:schemaLocation=\"http://www.topografix.com/GPX/1/1 http://www.topografix.com/GPX/1/1/gpx.xsd "
            "http://www.garmin.com/xmlschemas/TrackPointExtension/v2 "
            "http://www.garmin.com/xmlschemas/TrackPointExtensionv2.xsd\">\n"
            "<trk>\n<trkseg>\n";
    for (const TrackPosition& p : positions) {
        text += "<trkpt lat=\"";
        appendFixed(text, p.latitude, 6);
        text += "\" lon=\"";
        appendFixed(text, p.longitude, 6);
        text += "\">\n";
        // wptType's order: ele, time, ..., sat, hdop, vdop, pdop, ..., extensions.
        if (p.altitude)
            appendElement(text, "\t", "ele", *p.altitude, 3);
        text += "\t<time>";
        timeFormat.append(text, p.time);
        text += "</time>\n";
        if (p.satellites)
            text += "\t<sat>" + std::to_string(*p.satellites) + "</sat>\n";
        if (p.hdop)
            appendElement(text, "\t", "hdop", *p.hdop, 1);
        if (p.vdop)
            appendElement(text, "\t", "vdop", *p.vdop, 1);
        if (p.pdop)
            appendElement(text, "\t", "pdop", *p.pdop, 1);
        if (p.speed || p.course) {
            text += "\t<extensions><gpxtpx:TrackPointExtension>\n";
            if (p.speed)
                appendElement(text, "\t\t", "gpxtpx:speed", *p.speed / kKmhPerMetrePerSecond, 3);
            if (p.course)
                appendElement(text, "\t\t", "gpxtpx:course", *p.course, 1);
            text += "\t</gpxtpx:TrackPointExtension></extensions>\n";
        }
        text += "</trkpt>\n";
        if (text.size() >= kChunkSize) {
            out.write(text.data(), static_cast<std::streamsize>(text.size()));
            text.clear();
        }
    }
    text += "</trkseg>\n</trk>\n</gpx>\n";
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

} // namespace trackformats
