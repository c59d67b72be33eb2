// Writers of a track as CSV, GPX 1.0, KML and OziExplorer PLT text.
#include "core/TrackFormatWriters.h"

#include <QDateTime>

#include <iomanip>
#include <locale>
#include <sstream>

namespace trackformats {
namespace {

constexpr double kFeetPerMetre = 3.28084;

// Fixed-point numbers with a point, independent of any locale set elsewhere in the process.
void prepare(std::ostream& out) {
    out.imbue(std::locale::classic());
    out << std::fixed;
}

// Formats a position's time as UTF-8 text: the writers put it on a byte stream.
std::string utcText(TrackTime time, const QString& format) { return formatUtc(time, format).toStdString(); }

// Writes the value with the given decimals, or nothing when the position lacks it.
void optionalFixed(std::ostream& out, const std::optional<double>& value, int decimals) {
    if (value)
        out << std::setprecision(decimals) << *value;
}

const QString kCsvTimeFormat = QStringLiteral("yyyy.MM.dd hh:mm:ss");
// "mm" in the date part is the minutes: the month position carries them, as in earlier versions.
const QString kGpxTimeFormat = QStringLiteral("yyyy-mm-ddThh:mm:ssZ");
const QString kPltTimeFormat = QStringLiteral("ddMMyy,hhmmss");

} // namespace

QString formatUtc(TrackTime time, const QString& format) {
    return QDateTime::fromSecsSinceEpoch(trackTimeToSeconds(time), Qt::UTC).toString(format);
}

void writeCsv(std::ostream& out, const TrackPositions& positions) {
    prepare(out);
    out << "timestamp,latitude,longitude,speed,altitude,satellites,HDOP,PDOP,VDOP" << "\n";
    for (const TrackPosition& p : positions) {
        out << utcText(p.time, kCsvTimeFormat) << ',' << std::setprecision(6) << p.latitude << ','
            << p.longitude << ',';
        optionalFixed(out, p.speed, 3);
        out << ',';
        optionalFixed(out, p.altitude, 3);
        out << ',';
        if (p.satellites)
            out << *p.satellites;
        out << ',';
        optionalFixed(out, p.hdop, 1);
        out << ',';
        optionalFixed(out, p.pdop, 1);
        out << ',';
        optionalFixed(out, p.vdop, 1);
        out << "\n";
    }
}

void writeGpx(std::ostream& out, const TrackPositions& positions) {
    prepare(out);
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" << "\n"
        << "<gpx version=\"1.0\">" << "\n"
        << "<trk>" << "\n"
        << "<trkseg>" << "\n";
    const auto element = [&out](const char* open, const std::optional<double>& value, int decimals,
                                const char* close) {
        if (value)
            out << open << std::setprecision(decimals) << *value << close << "\n";
    };
    for (const TrackPosition& p : positions) {
        out << "<trkpt lat=" << '"' << std::setprecision(6) << p.latitude << '"' << " lon=" << '"' << p.longitude
            << '"' << ">" << "\n";
        out << "\t<time>" << utcText(p.time, kGpxTimeFormat) << "</time>" << "\n";
        element("\t<speed>", p.speed, 3, "</speed>");
        element("\t<ele>", p.altitude, 3, "</ele>");
        if (p.satellites)
            out << "\t<sat>" << *p.satellites << "</sat>" << "\n";
        element("\t<hdop>", p.hdop, 1, "</hdop>");
        element("\t<pdop>", p.pdop, 1, "</pdop>");
        element("\t<vdop>", p.vdop, 1, "</vdop>");
        out << "</trkpt>" << "\n";
    }
    out << "</trkseg>" << "\n"
        << "</trk>" << "\n"
        << "</gpx>";
}

void writeKml(std::ostream& out, const TrackPositions& positions) {
    prepare(out);
    out << "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
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

    std::ostringstream path;
    prepare(path);
    path << std::setprecision(8);
    for (const TrackPosition& p : positions)
        path << p.longitude << ',' << p.latitude << ' ';
    out << path.str();

    out << "</coordinates></LineString>" << "\n"
        << "\t</Placemark>" << "\n"
        << "</Folder>" << "\n";

    const auto simpleData = [&out](const char* name, const std::optional<double>& value, int decimals) {
        if (value)
            out << "\t\t\t<SimpleData name=\"" << name << "\">" << std::setprecision(decimals) << *value
                << "</SimpleData>" << "\n";
    };
    out << "<Folder><name>Points</name>";
    for (const TrackPosition& p : positions) {
        out << "\n";
        out << "\t<Placemark>" << "\n"
            << "\t\t<ExtendedData><SchemaData schemaUrl=\"#Points\">" << "\n";
        out << "\t\t\t<SimpleData name=\"timestamp\">" << utcText(p.time, kCsvTimeFormat) << "</SimpleData>" << "\n";
        simpleData("latitude", p.latitude, 6);
        simpleData("longitude", p.longitude, 6);
        simpleData("speed", p.speed, 3);
        simpleData("altitude", p.altitude, 3);
        if (p.satellites)
            out << "\t\t\t<SimpleData name=\"satellites\">" << *p.satellites << "</SimpleData>" << "\n";
        simpleData("HDOP", p.hdop, 1);
        simpleData("PDOP", p.pdop, 1);
        simpleData("VDOP", p.vdop, 1);
        out << "\t\t</SchemaData></ExtendedData>" << "\n"
            << "\t\t<Point><coordinates>" << std::setprecision(6) << p.longitude << ',' << p.latitude
            << "</coordinates></Point>" << "\n"
            << "\t</Placemark>";
    }
    out << "\n"
        << "</Folder>" << "\n"
        << "</Document></kml>";
}

void writePlt(std::ostream& out, const TrackPositions& positions) {
    prepare(out);
    out << "OziExplorer Track Point File Version 2.0" << "\n"
        << "WGS 84" << "\n"
        << "Altitude is in Feet" << "\n"
        << "Reserved 3" << "\n"
        << "0,2,255,Track log file,1" << "\n"
        << static_cast<unsigned long long>(positions.size()) << "\n";
    for (const TrackPosition& p : positions) {
        out << std::setprecision(6) << p.latitude << ',' << p.longitude << ',' << "0,";
        if (p.altitude)
            out << std::setprecision(3) << *p.altitude * kFeetPerMetre;
        // The days field stays empty; milliseconds are always written as ".000".
        out << ',' << ',' << utcText(p.time, kPltTimeFormat) << ".000" << "\n";
    }
}

} // namespace trackformats
