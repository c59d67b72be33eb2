// Writes dash-camera GPS stores into small ffmpeg-made videos, built from the formats' public descriptions,
// and reads what exiftool makes of them (the oracle the reader is checked against).
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <map>
#include <vector>

namespace testsupport::gps {

struct Fix {
    QDateTime utc;
    double latitude = 0.0;
    double longitude = 0.0;
    double speedKmh = 0.0;
    double course = 0.0;
    double altitude = 0.0;
    bool valid = true; // false: a record of a second without a fix
    double accelerationG[3] = {0.0, 0.0, 0.0};
};

// `count` fixes one second apart from `startUtc`, on a road north-east at about 50 km/h south of the
// equator and west of Greenwich (so both hemisphere letters are exercised), with varying acceleration.
std::vector<Fix> drive(const QDateTime& startUtc, int count);

enum class FreeGpsLayout { Plain, Compact, Double };
// One freeGPS block of `blockSize` bytes (a `free` box).
QByteArray freeGpsBlock(FreeGpsLayout layout, const Fix& fix, int blockSize = 0x400);

// Each adds one store to the video at `path` (made by ffmpeg: its moov comes last) and rewrites the file;
// false when the file is not laid out that way.
bool addFreeGpsListed(const QString& path, FreeGpsLayout layout, const std::vector<Fix>& fixes);
bool addFreeGpsInMdat(const QString& path, FreeGpsLayout layout, const std::vector<Fix>& fixes);
bool addNmeaTextTrack(const QString& path, const std::vector<Fix>& fixes); // tx3g samples, RMC + GGA
bool addNmeaBox(const QString& path, const std::vector<Fix>& fixes);       // [ms]$GPRMC lines in free > gps
bool addGpsBox(const QString& path, const std::vector<Fix>& fixes);        // top-level GPS records
bool addGpmfTrack(const QString& path, const std::vector<Fix>& fixes, bool gps9);
bool addCammTrack(const QString& path, const std::vector<Fix>& fixes);
// A data track of arbitrary samples (tx3g sample entry), for damaged-media cases.
bool addTextTrack(const QString& path, const std::vector<QByteArray>& samples);

// The NMEA text of a fix: an RMC and a GGA sentence with their checksums.
QByteArray nmeaOf(const Fix& fix);
// One GPMF payload (a DEVC with one GPS stream and one accelerometer stream) for one second of fixes.
QByteArray gpmfPayload(const Fix& fix, bool gps9);

// What `exiftool -ee -n` reads from a file, one map of tag to value per embedded document, in order.
std::vector<std::map<QString, QString>> exiftoolDocuments(const QString& path);

// The file's bytes, and a rewrite of them.
QByteArray readAll(const QString& path);
bool writeAll(const QString& path, const QByteArray& bytes);

} // namespace testsupport::gps
