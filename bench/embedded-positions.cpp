// Times `reelvue-cli positions VIDEO` against `exiftool -ee` on the same one-minute 1080p files with an
// embedded GPS track, one process per file as a user runs them, and prints the ratio measured in this run.
// The files are made once under /tmp (outside the repository): one minute of 1080p at 30 fps made with ffmpeg
// (a plain picture, so it encodes in seconds; the index is that of any such recording), and one store each.
#include "support/EmbeddedGps.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include <cstdio>
#include <functional>

namespace gps = testsupport::gps;

namespace {

constexpr int kRounds = 5; // each file this many times per tool; the figure is the mean

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
    std::printf("%-10s %12s %12s %8s\n", "store", "reelvue-cli", "exiftool -ee", "ratio");
    double cliTotal = 0, exiftoolTotal = 0;
    for (const Store& store : stores) {
        const QString path = root + "/" + QString::fromLatin1(store.name).replace(' ', '-') + ".mp4";
        if (!QFile::exists(path) && !(QFile::copy(base, path) && store.add(path, fixes)))
            return 1;
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < kRounds; ++i)
            if (!run(cli, {"positions", path}))
                return 1;
        const double cliMs = timer.nsecsElapsed() / 1e6 / kRounds;
        timer.restart();
        for (int i = 0; i < kRounds; ++i)
            run("exiftool", {"-ee", "-n", "-api", "largefilesupport=1", "-GPSLatitude", "-GPSLongitude", path});
        const double exiftoolMs = timer.nsecsElapsed() / 1e6 / kRounds;
        std::printf("%-10s %9.1f ms %9.1f ms %7.1fx\n", store.name, cliMs, exiftoolMs, exiftoolMs / cliMs);
        cliTotal += cliMs;
        exiftoolTotal += exiftoolMs;
    }
    std::printf("%-10s %9.1f ms %9.1f ms %7.1fx  (target: 50x)\n", "all", cliTotal, exiftoolTotal,
                exiftoolTotal / cliTotal);
    return 0;
}
