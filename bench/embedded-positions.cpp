// Times `reelvue-cli positions VIDEO` against `exiftool -ee` on the same one-minute 1080p files with an
// embedded GPS track, one process per file as a user runs them, and the reader alone (the box walk and the GPS
// payload, as discovery runs it) in this process; prints the ratios measured in this run. Times are CPU time
// (user and system) of the processes, which the other work on a shared machine disturbs far less than wall time.
// The files are made once under /tmp (outside the repository): one minute of 1080p at 30 fps made with ffmpeg
// (a plain picture, so it encodes in seconds; the index is that of any such recording), and one store each.
// A second table runs each tool once over a card's worth of such files (links to the four), as a user reads a
// whole card: there the process start-up, which is most of one file's time for both tools, is paid once.
#include "core/embedded/EmbeddedTrackReader.h"
#include "logging/Logging.h"
#include "support/EmbeddedGps.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>

#include <sys/resource.h>
#include <sys/times.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <functional>

namespace gps = testsupport::gps;

namespace {

constexpr int kRounds = 5;        // each file this many times per tool; the figure is the mean
constexpr int kReaderRounds = 200; // the reader in this process, warm
constexpr int kCardFiles = 1000;   // files of the one-process run: a card of 1,000 one-minute recordings

// CPU milliseconds used so far by the children that have ended.
double childrenCpuMs() {
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3 + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3;
}

double selfCpuMs() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

struct Store {
    const char* name;
    std::function<bool(const QString&, const std::vector<gps::Fix>&)> add;
};

bool run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(120000) && process.exitCode() == 0;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QString root = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("/tmp/reelvue-bench-embedded");
    QDir().mkpath(root);
    const QString base = root + "/base-1080p.mp4";
    if (!QFile::exists(base)) {
        std::printf("Making one minute of 1080p in %s (once)...\n", qPrintable(base));
        if (!run("ffmpeg", {"-v", "error", "-y", "-f", "lavfi", "-i", "color=c=gray:s=1920x1080:r=30", "-t", "60",
                            "-c:v", "libx264", "-preset", "ultrafast", "-g", "30", "-pix_fmt", "yuv420p", base}))
            return 1;
    }
    const QDateTime start(QDate(2024, 6, 14), QTime(6, 0), Qt::UTC);
    const std::vector<gps::Fix> fixes = gps::drive(start, 60);
    const Store stores[] = {
        {"freeGPS", [](auto& p, auto& f) { return gps::addFreeGpsListed(p, gps::FreeGpsLayout::Plain, f); }},
        {"GPMF", [](auto& p, auto& f) { return gps::addGpmfTrack(p, f, false); }},
        {"CAMM", gps::addCammTrack},
        {"NMEA text", gps::addNmeaTextTrack},
    };
    const QString cli = QStringLiteral(REELVUE_RUN_DIR "/reelvue-cli");
    logging::setLevel(logging::WARN);
    std::printf("CPU ms per file  %12s %12s %12s %10s %10s\n", "reelvue-cli", "reader", "exiftool -ee", "cli ratio",
                "reader ratio");
    double cliTotal = 0, readerTotal = 0, exiftoolTotal = 0;
    for (const Store& store : stores) {
        const QString path = root + "/" + QString::fromLatin1(store.name).replace(' ', '-') + ".mp4";
        if (!QFile::exists(path) && !(QFile::copy(base, path) && store.add(path, fixes)))
            return 1;
        double before = childrenCpuMs();
        for (int i = 0; i < kRounds; ++i)
            if (!run(cli, {"positions", path}))
                return 1;
        const double cliMs = (childrenCpuMs() - before) / kRounds;
        before = selfCpuMs();
        std::size_t positions = 0;
        for (int i = 0; i < kReaderRounds; ++i)
            positions += EmbeddedTrackReader::read(path) ? 1 : 0;
        const double readerMs = (selfCpuMs() - before) / kReaderRounds;
        if (positions != std::size_t(kReaderRounds))
            return 1;
        before = childrenCpuMs();
        for (int i = 0; i < kRounds; ++i)
            run("exiftool", {"-ee", "-n", "-api", "largefilesupport=1", "-GPSLatitude", "-GPSLongitude", path});
        const double exiftoolMs = (childrenCpuMs() - before) / kRounds;
        std::printf("%-16s %9.2f ms %9.3f ms %9.2f ms %9.1fx %9.0fx\n", store.name, cliMs, readerMs, exiftoolMs,
                    exiftoolMs / cliMs, exiftoolMs / readerMs);
        cliTotal += cliMs;
        readerTotal += readerMs;
        exiftoolTotal += exiftoolMs;
    }
    std::printf("%-16s %9.2f ms %9.3f ms %9.2f ms %9.1fx %9.0fx  (target: 50x)\n", "all", cliTotal, readerTotal,
                exiftoolTotal, exiftoolTotal / cliTotal, exiftoolTotal / readerTotal);

    QDir card(root + "/card");
    card.mkpath(".");
    QStringList files;
    for (int i = 0; i < kCardFiles; ++i) {
        const Store& store = stores[i % std::size(stores)];
        const QString source = root + "/" + QString::fromLatin1(store.name).replace(' ', '-') + ".mp4";
        const QString file = card.filePath(QString("%1-%2.mp4").arg(i, 4, 10, QChar('0')).arg(store.name).replace(' ', '-'));
        if (!QFile::exists(file) && ::link(QFile::encodeName(source).constData(), QFile::encodeName(file).constData()) != 0)
            return 1;
        files << file;
    }
    double before = childrenCpuMs();
    if (!run(cli, QStringList{"positions"} + files))
        return 1;
    const double cardCliMs = childrenCpuMs() - before;
    before = childrenCpuMs();
    run("exiftool", QStringList{"-ee", "-n", "-api", "largefilesupport=1", "-GPSLatitude", "-GPSLongitude"} + files);
    const double cardExiftoolMs = childrenCpuMs() - before;
    std::printf("\nOne process over %d files: reelvue-cli positions %.0f ms, exiftool -ee %.0f ms: %.1fx  (target: 50x)\n",
                kCardFiles, cardCliMs, cardExiftoolMs, cardExiftoolMs / cardCliMs);
    return 0;
}
