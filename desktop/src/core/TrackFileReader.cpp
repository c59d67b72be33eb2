#include "core/TrackFileReader.h"

#include "core/TrackLoader.h"
#include "logging/Logging.h"

#include <QDateTime>
#include <QXmlStreamReader>

#include <stdexcept>

namespace {
constexpr const char* kLogger = "core.TrackFileReader";
constexpr double kMetresPerSecondToKmh = 3.6;

std::optional<TrackTime> parseTime(const QString& text) {
    QDateTime time = QDateTime::fromString(text.trimmed(), Qt::ISODateWithMs);
    if (!time.isValid())
        time = QDateTime::fromString(text.trimmed(), Qt::ISODate);
    if (!time.isValid())
        return std::nullopt;
    const QDateTime utc = time.toUTC();
    return makeTrackTime(utc.date(), utc.time().hour(), utc.time().minute(),
                         utc.time().second() + utc.time().msec() / 1000.0);
}

std::optional<double> parseNumber(const QString& text) {
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    return ok ? std::optional<double>(value) : std::nullopt;
}

// Appends a fix unless its second is not after the last one's.
void append(TrackPositions& positions, TrackPosition position) {
    if (!positions.empty() && position.time <= positions.back().time)
        return;
    position.sentenceNumber = static_cast<std::uint32_t>(positions.size());
    positions.push_back(position);
}

// "lon lat [alt]" (gx:coord) or "lon,lat[,alt]" (coordinates).
bool parseCoordinates(const QString& text, QChar separator, TrackPosition& position) {
    const QStringList parts = text.trimmed().split(separator, Qt::SkipEmptyParts);
    if (parts.size() < 2)
        return false;
    const auto longitude = parseNumber(parts[0]);
    const auto latitude = parseNumber(parts[1]);
    if (!longitude || !latitude)
        return false;
    position.longitude = *longitude;
    position.latitude = *latitude;
    if (parts.size() > 2)
        position.altitude = parseNumber(parts[2]);
    return true;
}

void throwIfXmlFailed(const QXmlStreamReader& xml) {
    if (xml.hasError())
        throw std::runtime_error("Broken XML: " + xml.errorString().toStdString());
}
} // namespace

TrackPositions TrackFileReader::read(const QString& path) {
    TrackPositions positions = readBytes(TrackLoader::readFile(path));
    LOG_INFO(kLogger, "Read {} positions from {}", positions.size(), path.toStdString());
    return positions;
}

TrackPositions TrackFileReader::readBytes(const QByteArray& bytes) {
    TrackPositions positions;
    if (bytes.trimmed().startsWith('<')) {
        QXmlStreamReader xml(bytes);
        while (!xml.atEnd() && !xml.isStartElement())
            xml.readNext();
        const QStringRef root = xml.name();
        if (root == QLatin1String("gpx"))
            positions = readGpx(bytes);
        else if (root == QLatin1String("kml"))
            positions = readKml(bytes);
    } else {
        positions = TrackLoader::loadBytes(bytes).positions;
    }
    if (positions.empty())
        throw std::runtime_error("No timed positions in the track");
    return positions;
}

TrackPositions TrackFileReader::readGpx(const QByteArray& bytes) {
    TrackPositions positions;
    QXmlStreamReader xml(bytes);
    std::optional<TrackPosition> point; // the point being read; its children, extensions included, are visited
    bool timed = false;
    const auto text = [&xml] { return xml.readElementText(QXmlStreamReader::SkipChildElements); };
    const auto isPoint = [](const QStringRef& name) {
        return name == QLatin1String("trkpt") || name == QLatin1String("rtept") || name == QLatin1String("wpt");
    };
    while (!xml.atEnd()) {
        xml.readNext();
        const QStringRef name = xml.name();
        if (xml.isEndElement() && point && isPoint(name)) {
            if (timed)
                append(positions, *point);
            point.reset();
        }
        if (!xml.isStartElement())
            continue;
        if (isPoint(name)) {
            const auto latitude = parseNumber(xml.attributes().value(QLatin1String("lat")).toString());
            const auto longitude = parseNumber(xml.attributes().value(QLatin1String("lon")).toString());
            timed = false;
            point.reset();
            if (latitude && longitude) {
                point.emplace();
                point->latitude = *latitude;
                point->longitude = *longitude;
            }
        } else if (!point) {
            continue;
        } else if (name == QLatin1String("time")) {
            if (const auto time = parseTime(text())) {
                point->time = *time;
                timed = true;
            }
        } else if (name == QLatin1String("ele")) {
            point->altitude = parseNumber(text());
        } else if (name == QLatin1String("speed")) { // GPX 1.0, or an extension of 1.1
            if (const auto speed = parseNumber(text()))
                point->speed = *speed * kMetresPerSecondToKmh;
        } else if (name == QLatin1String("course")) {
            point->course = parseNumber(text());
        } else if (name == QLatin1String("sat")) {
            if (const auto satellites = parseNumber(text()); satellites && *satellites >= 0)
                point->satellites = static_cast<std::uint32_t>(*satellites);
        } else if (name == QLatin1String("hdop")) {
            point->hdop = parseNumber(text());
        } else if (name == QLatin1String("vdop")) {
            point->vdop = parseNumber(text());
        } else if (name == QLatin1String("pdop")) {
            point->pdop = parseNumber(text());
        }
    }
    throwIfXmlFailed(xml);
    return positions;
}

TrackPositions TrackFileReader::readKml(const QByteArray& bytes) {
    TrackPositions fromTracks;
    TrackPositions fromPlacemarks;
    QXmlStreamReader xml(bytes);
    std::vector<TrackTime> whens;     // of the gx:Track being read
    TrackTime stamp = -1;             // of the placemark being read; -1: none
    std::optional<TrackPosition> point;
    bool inTrack = false;
    size_t coordIndex = 0;
    while (!xml.atEnd()) {
        xml.readNext();
        const QStringRef name = xml.name();
        if (xml.isStartElement()) {
            if (name == QLatin1String("Track")) {
                inTrack = true;
                whens.clear();
                coordIndex = 0;
            } else if (name == QLatin1String("Placemark")) {
                stamp = -1;
                point.reset();
            } else if (name == QLatin1String("when")) {
                const auto time = parseTime(xml.readElementText(QXmlStreamReader::SkipChildElements));
                if (inTrack)
                    whens.push_back(time.value_or(-1)); // keeps the pairing with the coords
                else if (time)
                    stamp = *time;
            } else if (inTrack && name == QLatin1String("coord")) {
                TrackPosition position;
                const size_t index = coordIndex++;
                if (parseCoordinates(xml.readElementText(QXmlStreamReader::SkipChildElements), QLatin1Char(' '), position) && index < whens.size() &&
                    whens[index] >= 0) {
                    position.time = whens[index];
                    append(fromTracks, position);
                }
            } else if (!inTrack && name == QLatin1String("Point")) {
                point.emplace();
            } else if (point && name == QLatin1String("coordinates")) {
                if (!parseCoordinates(xml.readElementText(QXmlStreamReader::SkipChildElements), QLatin1Char(','), *point))
                    point.reset();
            } else if (name == QLatin1String("LineString") || name == QLatin1String("LookAt")) {
                xml.skipCurrentElement();
            }
        } else if (xml.isEndElement()) {
            if (name == QLatin1String("Track")) {
                inTrack = false;
            } else if (name == QLatin1String("Placemark")) {
                if (point && stamp >= 0) {
                    point->time = stamp;
                    append(fromPlacemarks, *point);
                }
                point.reset();
                stamp = -1;
            }
        }
    }
    throwIfXmlFailed(xml);
    // A file with both (GPS programs write the fixes twice) is read from its track.
    return fromTracks.empty() ? fromPlacemarks : fromTracks;
}
