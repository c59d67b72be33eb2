// Writes a 24-hour track (86,400 fixes) in each export format and prints the times beside gpsbabel
// converting the same NMEA file to GPX and KML. Target: each format written in at most 0.5 s.
//
//   build/bench/bench-track-export [WORK_DIR]
#include "core/TrackExtracter.h"
#include "core/GpxWriter.h"
#include "core/TrackFormatWriters.h"
#include "core/TrackLoader.h"
#include "logging/Logging.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <cmath>
#include <cstdio>
#include <ctime>
#include <sys/resource.h>
#include <fstream>
#include <string>

namespace {

constexpr int kFixes = 86400;   // one a second for a day
constexpr double kTargetMs = 500.0;

std::string framed(const char* body) {
    unsigned checksum = 0;
    for (const char* c = body; *c; ++c)
        checksum ^= static_cast<unsigned char>(*c);
    char line[200];
    std::snprintf(line, sizeof line, "$%s*%02X\r\n", body, checksum);
    return line;
}

// ddmm.mmmm or dddmm.mmmm and the hemisphere letter.
std::string coordinate(double degrees, int degreeDigits, char positive, char negative) {
    const double magnitude = std::fabs(degrees);
    const int whole = static_cast<int>(magnitude);
    char text[32];
    std::snprintf(text, sizeof text, "%0*d%07.4f,%c", degreeDigits, whole, (magnitude - whole) * 60.0,
                  degrees < 0 ? negative : positive);
    return text;
}

// A day's drive around Prague: RMC, GGA and GSA every second, crossing no midnight (starts 00:00:00 UTC).
void writeDayOfNmea(const QString& path) {
    std::ofstream out(QFile::encodeName(path).toStdString(), std::ios::binary);
    double latitude = 50.08, longitude = 14.42;
    for (int second = 0; second < kFixes; ++second) {
        const int h = second / 3600, m = second / 60 % 60, s = second % 60;
        const double course = std::fmod(second * 0.1, 360.0);
        latitude += 0.00005 * std::cos(course * M_PI / 180.0);
        longitude += 0.00008 * std::sin(course * M_PI / 180.0);
        const std::string lat = coordinate(latitude, 2, 'N', 'S'), lon = coordinate(longitude, 3, 'E', 'W');
        char body[160];
        std::snprintf(body, sizeof body, "GPRMC,%02d%02d%02d.00,A,%s,%s,%.1f,%.1f,070324,,,A", h, m, s, lat.c_str(),
                      lon.c_str(), 30.0 + 10.0 * std::sin(second / 300.0), course);
        out << framed(body);
        std::snprintf(body, sizeof body, "GPGGA,%02d%02d%02d.00,%s,%s,1,%02d,%.1f,%.1f,M,45.0,M,,", h, m, s, lat.c_str(),
                      lon.c_str(), 6 + second % 6, 0.8 + (second % 10) / 10.0, 200.0 + 50.0 * std::sin(second / 900.0));
        out << framed(body);
        std::snprintf(body, sizeof body, "GPGSA,A,3,04,05,09,12,,,,,,,,,%.1f,%.1f,%.1f", 1.8, 0.9, 1.5);
        out << framed(body);
    }
}

double msSince(const QElapsedTimer& timer) { return timer.nsecsElapsed() / 1e6; }

// CPU time of this process: on a loaded machine it shows the work itself, apart from waiting for a core.
double cpuMs() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

const char* verdict(double ms) { return ms <= kTargetMs ? "ok" : "OVER TARGET"; }

// CPU time of the child processes that have ended so far.
double childrenCpuMs() {
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3 + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3;
}

// gpsbabel on the same file: wall and CPU milliseconds, or -1 when it is not installed or fails.
std::pair<double, double> gpsbabelMs(const QString& input, const char* format, const QString& output) {
    const QString program = QStandardPaths::findExecutable(QStringLiteral("gpsbabel"));
    if (program.isEmpty())
        return {-1, -1};
    QElapsedTimer timer;
    timer.start();
    const double cpu = childrenCpuMs();
    QProcess process;
    process.start(program, {"-i", "nmea", "-f", input, "-o", format, "-F", output});
    if (!process.waitForFinished(120000) || process.exitCode() != 0)
        return {-1, -1};
    return {msSince(timer), childrenCpuMs() - cpu};
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    logging::setLevel(logging::WARN);
    QTemporaryDir temporary;
    const QString work = argc > 1 ? QString::fromLocal8Bit(argv[1]) : temporary.path();
    QDir().mkpath(work);
    const QString nmea = QDir(work).filePath(QStringLiteral("day.nmea"));
    writeDayOfNmea(nmea);

    QElapsedTimer timer;
    timer.start();
    double cpu = cpuMs();
    const TrackPositions positions = TrackLoader::load(nmea).positions;
    const double loadMs = msSince(timer);
    std::printf("24-hour track: %zu fixes, NMEA file %.1f MB, loaded in %.1f ms (%.1f ms CPU)\n\n", positions.size(),
                QFileInfo(nmea).size() / 1e6, loadMs, cpuMs() - cpu);

    const TimeInterval wholeDay{QDateTime(QDate(2024, 3, 7), QTime(0, 0), Qt::UTC),
                                QDateTime(QDate(2024, 3, 7), QTime(23, 59, 59), Qt::UTC)};
    auto item = std::make_shared<Playlist::RawItem>();
    item->track = Playlist::Track{QFileInfo(nmea), {}, {}, {}};

    std::printf("Target: each format written in at most %.0f ms (the writer from positions in memory; for the NMEA\n"
                "copy, which has no separate writer, the whole job). Wall time, CPU time in brackets.\n\n",
                kTargetMs);
    std::printf("%-6s %8s %22s %22s %8s\n", "format", "size MB", "write ms", "job (read+write) ms", "target");
    for (int type = TrackExtracter::Nmea; type <= TrackExtracter::Gpx11; ++type) {
        const auto trackType = static_cast<TrackExtracter::TrackType>(type);
        const QString extension = trackType == TrackExtracter::Gpx11 ? QStringLiteral("gpx11") : TrackExtracter::extension(trackType);
        const QString output = QDir(work).filePath("writer." + extension);

        // The writer alone, from positions in memory (the NMEA copy has no separate writer: it is the job).
        double writeMs = -1, writeCpuMs = -1;
        if (trackType != TrackExtracter::Nmea) {
            timer.restart();
            cpu = cpuMs();
            std::ofstream out(QFile::encodeName(output).toStdString(), std::ios::binary);
            switch (trackType) {
            case TrackExtracter::Kml: trackformats::writeKml(out, positions); break;
            case TrackExtracter::Csv: trackformats::writeCsv(out, positions); break;
            case TrackExtracter::Gpx: trackformats::writeGpx(out, positions); break;
            case TrackExtracter::Plt: trackformats::writePlt(out, positions); break;
            case TrackExtracter::Gpx11: trackformats::writeGpx11(out, positions, "bench"); break;
            case TrackExtracter::Nmea: break;
            }
            out.close();
            writeMs = msSince(timer);
            writeCpuMs = cpuMs() - cpu;
        }

        // The whole job as the main window runs it: read the track file, select, write, rename.
        const QString jobOutput = QDir(work).filePath("job." + extension);
        QFile::remove(jobOutput); // the job never replaces a file of an earlier run
        TrackExtracter job({item}, jobOutput, trackType, wholeDay);
        bool ok = false;
        QObject::connect(&job, &TrackExtracter::done, [&ok](bool result) { ok = result; });
        timer.restart();
        cpu = cpuMs();
        job.run();
        const double jobMs = msSince(timer);
        const double jobCpuMs = cpuMs() - cpu;
        const double judged = trackType == TrackExtracter::Nmea ? jobMs : writeMs;
        const QString write = writeMs < 0 ? QStringLiteral("-")
                                          : QStringLiteral("%1 (%2)").arg(writeMs, 0, 'f', 1).arg(writeCpuMs, 0, 'f', 1);
        const QString whole = QStringLiteral("%1 (%2)").arg(jobMs, 0, 'f', 1).arg(jobCpuMs, 0, 'f', 1);
        std::printf("%-6s %8.1f %22s %22s %8s%s\n", qPrintable(extension), QFileInfo(jobOutput).size() / 1e6,
                    qPrintable(write), qPrintable(whole), verdict(judged), ok ? "" : "  (job FAILED)");
    }

    std::printf("\ngpsbabel on the same NMEA file (reads and writes, like the job column):\n");
    for (const char* format : {"gpx", "kml"}) {
        const auto [ms, cpuUsed] = gpsbabelMs(nmea, format, QDir(work).filePath(QStringLiteral("gpsbabel.%1").arg(format)));
        if (ms < 0)
            std::printf("  %-4s not available\n", format);
        else
            std::printf("  %-4s %10.1f ms (%.1f ms CPU), %.1f MB\n", format, ms, cpuUsed,
                        QFileInfo(QDir(work).filePath(QStringLiteral("gpsbabel.%1").arg(format))).size() / 1e6);
    }
    return 0;
}
