// Real recordings for tests: tiny videos made once per run with the ffmpeg command, NMEA tracks, card folders.
#pragma once

#include <QDateTime>
#include <QString>

#include <vector>

namespace testsupport {

// Path of a tiny H.264 MP4 (64x64, 5 fps) lasting `seconds`, made with ffmpeg at its first use in this run.
QString tinyVideo(int seconds = 1);
// Copies (hard-links where possible) the tiny video of `seconds` to `path`, creating its folders.
void placeVideo(const QString& path, int seconds = 1);
// Writes `bytes` to `path`, creating its folders.
void writeFile(const QString& path, const QByteArray& bytes);
// The whole file, or nothing when it cannot be read.
QByteArray readFile(const QString& path);

// One second of a track: a fix at `utc`, or a receiver still without a fix (valid false).
struct Fix {
    QDateTime utc;
    double latitude = 0;
    double longitude = 0;
    double kmh = 0;
    bool valid = true;
};
// `count` fixes a second apart from `utcStart`, standing at one place; the first `withoutFix` have no fix.
std::vector<Fix> standingFixes(const QDateTime& utcStart, int count, double latitude, double longitude,
                               int withoutFix = 0);
// RMC and GGA sentences, with checksums, one pair a fix.
QByteArray nmeaTrack(const std::vector<Fix>& fixes);
void writeTrack(const QString& path, const std::vector<Fix>& fixes);


} // namespace testsupport
