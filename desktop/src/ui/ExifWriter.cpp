// Stores the time and the vehicle's position in the EXIF block of a saved picture.
#include "ui/ExifWriter.h"

#include "logging/Logging.h"

#include <QFile>
#include <QTimeZone>

// exiv2 0.27 still hands images out as std::auto_ptr.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <exiv2/exiv2.hpp>
#pragma GCC diagnostic pop

#include <algorithm>
#include <cmath>
#include <mutex>

namespace {
constexpr const char* kLogger = "ui.ExifUtils";

// Denominators of the stored rationals: 1/1000 of an arc second is 3 cm on the ground, 1 cm of altitude,
// 1/100 km/h and 1/100 degree are finer than any recorder's GPS.
constexpr std::int32_t kSecondsDenominator = 1000;
constexpr std::int32_t kValueDenominator = 100;

TrackTime ticksOf(const QDateTime& time) { return time.toMSecsSinceEpoch() * (kTrackTicksPerSecond / 1000); }

std::optional<double> interpolateOptional(const std::optional<double>& a, const std::optional<double>& b,
                                          double fraction) {
    if (a && b)
        return *a + (*b - *a) * fraction;
    const auto& nearer = fraction < 0.5 ? a : b;
    return nearer ? nearer : (a ? a : b);
}

// Course between two headings, turning the short way: 350° to 10° passes through 0°, not 180°.
std::optional<double> interpolateCourse(const std::optional<double>& a, const std::optional<double>& b,
                                        double fraction) {
    if (!(a && b))
        return interpolateOptional(a, b, fraction);
    const double turn = std::remainder(*b - *a, 360.0);
    const double course = std::fmod(*a + turn * fraction, 360.0);
    return course < 0.0 ? course + 360.0 : course;
}

// exiv2 writes its own warnings to stderr; they belong in our log.
void exiv2LogHandler(int level, const char* message) {
    std::string text(message ? message : "");
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.pop_back();
    if (level >= Exiv2::LogMsg::error)
        LOG_WARN(kLogger, "exiv2: {}", text);
    else
        LOG_DEBUG(kLogger, "exiv2: {}", text);
}

void routeExiv2Log() {
    static std::once_flag once;
    std::call_once(once, [] {
        Exiv2::LogMsg::setHandler(exiv2LogHandler);
        Exiv2::XmpParser::initialize(); // not thread safe on first use; done once here
    });
}

// Degrees as the three rationals degrees, minutes and seconds.
Exiv2::URationalValue degreesMinutesSeconds(double value) {
    const auto thousandths = static_cast<std::uint64_t>(std::llround(std::fabs(value) * 3600.0 * kSecondsDenominator));
    const std::uint64_t perDegree = 3600ull * kSecondsDenominator;
    const std::uint64_t perMinute = 60ull * kSecondsDenominator;
    Exiv2::URationalValue result;
    result.value_.emplace_back(static_cast<std::uint32_t>(thousandths / perDegree), 1);
    result.value_.emplace_back(static_cast<std::uint32_t>(thousandths % perDegree / perMinute), 1);
    result.value_.emplace_back(static_cast<std::uint32_t>(thousandths % perMinute), kSecondsDenominator);
    return result;
}

Exiv2::URationalValue unsignedRational(double value) {
    Exiv2::URationalValue result;
    result.value_.emplace_back(static_cast<std::uint32_t>(std::llround(std::fabs(value) * kValueDenominator)),
                               kValueDenominator);
    return result;
}

// "+03:00" and the like, as OffsetTime* wants it.
std::string utcOffsetText(const QDateTime& time) {
    const int offsetMinutes = time.offsetFromUtc() / 60;
    const int magnitude = std::abs(offsetMinutes);
    return fmt::format("{}{:02}:{:02}", offsetMinutes < 0 ? '-' : '+', magnitude / 60, magnitude % 60);
}

void setOrErase(Exiv2::ExifData& exif, const char* key, const std::optional<Exiv2::URationalValue>& value) {
    if (value) {
        exif[key] = *value;
        return;
    }
    auto found = exif.findKey(Exiv2::ExifKey(key));
    if (found != exif.end())
        exif.erase(found);
}

void eraseKey(Exiv2::ExifData& exif, const char* key) { setOrErase(exif, key, std::nullopt); }

void fillTime(Exiv2::ExifData& exif, const QDateTime& frameTime) {
    const QDateTime local = frameTime.toLocalTime();
    const std::string wallClock = local.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss")).toStdString();
    const std::string subSeconds = fmt::format("{:03}", local.time().msec());
    const std::string offset = utcOffsetText(local);
    exif["Exif.Photo.DateTimeOriginal"] = wallClock;
    exif["Exif.Photo.DateTimeDigitized"] = wallClock;
    exif["Exif.Photo.SubSecTimeOriginal"] = subSeconds;
    exif["Exif.Photo.SubSecTimeDigitized"] = subSeconds;
    exif["Exif.Photo.OffsetTimeOriginal"] = offset;
    exif["Exif.Photo.OffsetTimeDigitized"] = offset;

    const QDateTime utc = frameTime.toUTC();
    exif["Exif.GPSInfo.GPSDateStamp"] = utc.toString(QStringLiteral("yyyy:MM:dd")).toStdString();
    Exiv2::URationalValue timeStamp;
    const QTime clock = utc.time();
    timeStamp.value_.emplace_back(clock.hour(), 1);
    timeStamp.value_.emplace_back(clock.minute(), 1);
    timeStamp.value_.emplace_back(clock.second() * kSecondsDenominator + clock.msec(), kSecondsDenominator);
    exif["Exif.GPSInfo.GPSTimeStamp"] = timeStamp;
}

void fillPosition(Exiv2::ExifData& exif, const TrackPosition& position) {
    Exiv2::DataValue version(Exiv2::unsignedByte);
    version.read("2 3 0 0");
    exif["Exif.GPSInfo.GPSVersionID"] = version;
    exif["Exif.GPSInfo.GPSMapDatum"] = std::string("WGS-84");

    exif["Exif.GPSInfo.GPSLatitudeRef"] = std::string(position.latitude < 0.0 ? "S" : "N");
    exif["Exif.GPSInfo.GPSLatitude"] = degreesMinutesSeconds(position.latitude);
    exif["Exif.GPSInfo.GPSLongitudeRef"] = std::string(position.longitude < 0.0 ? "W" : "E");
    exif["Exif.GPSInfo.GPSLongitude"] = degreesMinutesSeconds(position.longitude);

    if (position.altitude) {
        Exiv2::DataValue belowSeaLevel(Exiv2::unsignedByte);
        belowSeaLevel.read(*position.altitude < 0.0 ? "1" : "0");
        exif["Exif.GPSInfo.GPSAltitudeRef"] = belowSeaLevel;
        exif["Exif.GPSInfo.GPSAltitude"] = unsignedRational(*position.altitude);
    } else {
        eraseKey(exif, "Exif.GPSInfo.GPSAltitudeRef");
        eraseKey(exif, "Exif.GPSInfo.GPSAltitude");
    }

    if (position.speed) {
        exif["Exif.GPSInfo.GPSSpeedRef"] = std::string("K");
        exif["Exif.GPSInfo.GPSSpeed"] = unsignedRational(*position.speed);
    } else {
        eraseKey(exif, "Exif.GPSInfo.GPSSpeedRef");
        eraseKey(exif, "Exif.GPSInfo.GPSSpeed");
    }

    // A dash camera looks where the car goes, so the picture's direction is the course.
    if (position.course) {
        const Exiv2::URationalValue heading = unsignedRational(std::fmod(*position.course + 360.0, 360.0));
        exif["Exif.GPSInfo.GPSTrackRef"] = std::string("T");
        exif["Exif.GPSInfo.GPSTrack"] = heading;
        exif["Exif.GPSInfo.GPSImgDirectionRef"] = std::string("T");
        exif["Exif.GPSInfo.GPSImgDirection"] = heading;
    } else {
        for (const char* key : {"Exif.GPSInfo.GPSTrackRef", "Exif.GPSInfo.GPSTrack", "Exif.GPSInfo.GPSImgDirectionRef",
                                "Exif.GPSInfo.GPSImgDirection"})
            eraseKey(exif, key);
    }

    if (position.satellites)
        exif["Exif.GPSInfo.GPSSatellites"] = std::to_string(*position.satellites);
    else
        eraseKey(exif, "Exif.GPSInfo.GPSSatellites");
    const std::optional<double> dop = position.pdop ? position.pdop : position.hdop;
    setOrErase(exif, "Exif.GPSInfo.GPSDOP", dop ? std::optional(unsignedRational(*dop)) : std::nullopt);
}
} // namespace

std::optional<TrackPosition> trackPositionAt(const TrackPositions& track, const QDateTime& time) {
    if (track.empty())
        return std::nullopt;
    const TrackTime at = ticksOf(time);
    if (at <= track.front().time)
        return track.front();
    if (at >= track.back().time)
        return track.back();

    // The first fix after the moment; the one before it is at or before the moment.
    const auto after = std::upper_bound(track.begin(), track.end(), at,
                                        [](TrackTime t, const TrackPosition& p) { return t < p.time; });
    const TrackPosition& a = *(after - 1);
    const TrackPosition& b = *after;
    const double fraction = static_cast<double>(at - a.time) / static_cast<double>(b.time - a.time);
    const TrackPosition& nearer = fraction < 0.5 ? a : b;

    TrackPosition result = nearer;
    result.time = at;
    result.longitude = a.longitude + (b.longitude - a.longitude) * fraction;
    result.latitude = a.latitude + (b.latitude - a.latitude) * fraction;
    result.speed = interpolateOptional(a.speed, b.speed, fraction);
    result.course = interpolateCourse(a.course, b.course, fraction);
    result.altitude = interpolateOptional(a.altitude, b.altitude, fraction);
    result.hdop = interpolateOptional(a.hdop, b.hdop, fraction);
    result.pdop = interpolateOptional(a.pdop, b.pdop, fraction);
    result.vdop = interpolateOptional(a.vdop, b.vdop, fraction);
    result.satellites = nearer.satellites ? nearer.satellites : (a.satellites ? a.satellites : b.satellites);
    return result;
}

bool writeExifPosition(const QString& path, const TrackPosition& position, const QDateTime& frameTime) {
    routeExiv2Log();
    try {
        auto image = Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString());
        image->readMetadata();
        Exiv2::ExifData& exif = image->exifData();
        if (frameTime.isValid())
            fillTime(exif, frameTime);
        else
            LOG_WARN(kLogger, "No frame time for {}, writing the position only", path.toStdString());
        fillPosition(exif, position);
        image->writeMetadata();
    } catch (const Exiv2::AnyError& error) {
        LOG_ERROR(kLogger, "Failed to write EXIF position into {}: {}", path.toStdString(), error.what());
        return false;
    } catch (const std::exception& error) {
        LOG_ERROR(kLogger, "Failed to write EXIF position into {}: {}", path.toStdString(), error.what());
        return false;
    }
    return true;
}
