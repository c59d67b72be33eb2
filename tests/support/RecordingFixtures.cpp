// Tiny generated videos (cached for the whole test run) and NMEA tracks written by the tests.
#include "support/RecordingFixtures.h"

#include "core/TrackLoader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <unistd.h>

#include <cmath>
#include <map>
#include <stdexcept>

namespace testsupport {
namespace {

QTemporaryDir& videoCache() {
    static QTemporaryDir dir(QDir::tempPath() + QStringLiteral("/reelvue-test-videos-XXXXXX"));
    return dir;
}

QString checksummed(const QByteArray& body) {
    unsigned char sum = 0;
    for (char c : body)
        sum ^= static_cast<unsigned char>(c);
    return QStringLiteral("$%1*%2\r\n").arg(QString::fromLatin1(body), QString::number(sum, 16).rightJustified(2, '0').toUpper());
}

QString degreesMinutes(double value, int width) {
    value = std::abs(value);
    const int degrees = static_cast<int>(value);
    return QStringLiteral("%1%2").arg(degrees, width, 10, QLatin1Char('0')).arg((value - degrees) * 60, 7, 'f', 4, QLatin1Char('0'));
}

} // namespace

QString tinyVideo(int seconds) {
    static std::map<int, QString> made;
    auto found = made.find(seconds);
    if (found != made.end())
        return found->second;
    const QString path = videoCache().filePath(QStringLiteral("tiny-%1s.mp4").arg(seconds));
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"),
                 {"-v", "error", "-y", "-f", "lavfi", "-i", "testsrc=size=64x64:rate=5", "-t", QString::number(seconds),
                  "-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p", path});
    if (!ffmpeg.waitForFinished(60000) || ffmpeg.exitCode() != 0)
        throw std::runtime_error("ffmpeg failed to make a test video: " + ffmpeg.readAllStandardError().toStdString());
    made[seconds] = path;
    return path;
}

void placeVideo(const QString& path, int seconds) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile::remove(path);
    const QString source = tinyVideo(seconds);
    // A hard link (or a copy across file systems), never a symbolic link: discovery must see a regular file.
    if (::link(QFile::encodeName(source).constData(), QFile::encodeName(path).constData()) != 0 &&
        !QFile::copy(source, path))
        throw std::runtime_error("cannot copy test video to " + path.toStdString());
}

void writeFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
        throw std::runtime_error("cannot write " + path.toStdString());
}

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::vector<Fix> standingFixes(const QDateTime& utcStart, int count, double latitude, double longitude,
                               int withoutFix) {
    std::vector<Fix> fixes;
    for (int i = 0; i < count; ++i)
        fixes.push_back({utcStart.addSecs(i), latitude, longitude, 0.0, i >= withoutFix});
    return fixes;
}

QByteArray nmeaTrack(const std::vector<Fix>& fixes) {
    QString text;
    for (const Fix& fix : fixes) {
        const QDateTime utc = fix.utc.toUTC();
        const QString time = utc.toString(QStringLiteral("HHmmss")) + QStringLiteral(".00");
        const QString date = utc.toString(QStringLiteral("ddMMyy"));
        if (!fix.valid) {
            text += checksummed(QStringLiteral("GPRMC,%1,V,,,,,,,%2,,,N").arg(time, date).toLatin1());
            continue;
        }
        const QString position = QStringLiteral("%1,%2,%3,%4")
                                     .arg(degreesMinutes(fix.latitude, 2), fix.latitude >= 0 ? "N" : "S",
                                          degreesMinutes(fix.longitude, 3), fix.longitude >= 0 ? "E" : "W");
        text += checksummed(QStringLiteral("GPRMC,%1,A,%2,%3,0.0,%4,,,A")
                                .arg(time, position, QString::number(fix.kmh / 1.852, 'f', 2), date)
                                .toLatin1());
        text += checksummed(QStringLiteral("GPGGA,%1,%2,1,08,0.9,230.0,M,44.0,M,,").arg(time, position).toLatin1());
    }
    return text.toLatin1();
}

void writeTrack(const QString& path, const std::vector<Fix>& fixes) { writeFile(path, nmeaTrack(fixes)); }

} // namespace testsupport
