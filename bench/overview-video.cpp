// The evidence overview against the ffmpeg command line: two 1080p cameras over a file change, side by side,
// H.264 + AAC with a drawtext overlay, against ffmpeg making the same (size, codec, preset, overlay), and
// against cp of the originals. Media is made once into /tmp/reelvue-bench-overview; --keep leaves it there,
// --seconds N sets the length (default 120, the pack's target case; each camera file is half of it).
#include "core/evidence/OverviewVideo.h"
#include "logging/Logging.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

extern "C" {
#include <libavutil/log.h>
}

#include <cstdio>
#include <sys/resource.h>

namespace {

const QString kDir = QStringLiteral("/tmp/reelvue-bench-overview");
const QDateTime kStart(QDate(2024, 6, 14), QTime(9, 0, 0));

bool run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(-1) || process.exitCode() != 0) {
        std::fprintf(stderr, "%s failed: %s\n", qPrintable(program), process.readAllStandardError().constData());
        return false;
    }
    return true;
}

QString sourceFile(int camera, int i) {
    return kDir + QStringLiteral("/src/%1%2.mp4").arg(camera == 0 ? "front" : "rear").arg(i);
}

// Two files a camera, 1080p at 25 fps, a key frame a second, 8 Mbit/s like a dash camera; sound on the front.
bool makeMedia(int fileSeconds) {
    QDir().mkpath(kDir + "/src");
    for (int camera = 0; camera < 2; ++camera) {
        const QString first = sourceFile(camera, 0);
        if (!QFile::exists(first)) {
            std::printf("making %d s of 1080p for camera %d (once)...\n", fileSeconds, camera);
            std::fflush(stdout);
            QStringList arguments{"-v", "error", "-y", "-f", "lavfi", "-i",
                                  camera == 0 ? "testsrc2=size=1920x1080:rate=25" : "smptehdbars=size=1920x1080:rate=25"};
            if (camera == 0)
                arguments << "-f" << "lavfi" << "-i" << "sine=frequency=440:sample_rate=48000" << "-c:a" << "aac";
            arguments << "-t" << QString::number(fileSeconds) << "-c:v" << "libx264" << "-preset" << "ultrafast"
                      << "-g" << "25" << "-pix_fmt" << "yuv420p" << "-b:v" << "8M" << first;
            if (!run("ffmpeg", arguments))
                return false;
        }
        if (!QFile::exists(sourceFile(camera, 1)) && !QFile::copy(first, sourceFile(camera, 1)))
            return false;
    }
    return true;
}

QString loadAverage() {
    QFile file("/proc/loadavg");
    return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()).section(' ', 0, 2) : QStringLiteral("?");
}

// Processor time of this process's threads and of its finished children, in milliseconds.
double cpuMs() {
    double total = 0;
    for (int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        getrusage(who, &usage);
        total += (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3 + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3;
    }
    return total;
}

struct Timing {
    double wallMs = -1;
    double cpuMs = -1;
};

// Wall and processor time of a job: on a machine shared with other builds the wall time swings with their
// load, the processor time much less.
Timing timed(const std::function<bool()>& job) {
    QElapsedTimer timer;
    const double cpuBefore = cpuMs();
    timer.start();
    if (!job())
        return {};
    return {timer.nsecsElapsed() / 1e6, cpuMs() - cpuBefore};
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    logging::setLevel(logging::WARN);
    av_log_set_level(AV_LOG_ERROR);
    const QStringList arguments = app.arguments();
    const bool keep = arguments.contains(QStringLiteral("--keep"));
    const int index = arguments.indexOf(QStringLiteral("--seconds"));
    const int seconds = index > 0 && index + 1 < arguments.size() ? arguments[index + 1].toInt() : 120;
    const int fileSeconds = (seconds + 1) / 2;
    // Media of another length from an earlier --keep run would be measured wrongly.
    QFile stamp(kDir + "/seconds");
    if (stamp.open(QIODevice::ReadOnly) && stamp.readAll().toInt() != fileSeconds)
        QDir(kDir).removeRecursively();
    stamp.close();
    if (!makeMedia(fileSeconds))
        return 1;
    if (stamp.open(QIODevice::WriteOnly | QIODevice::Truncate))
        stamp.write(QByteArray::number(fileSeconds));
    stamp.close();
    const QString out = kDir + "/out";
    QDir(out).removeRecursively();
    QDir().mkpath(out);
    std::printf("load average before: %s (2 cores, shared with other builds)\n", qPrintable(loadAverage()));

    Playlist::RawItems items;
    for (int i = 0; i < 2; ++i) {
        auto item = std::make_shared<Playlist::RawItem>();
        item->mainVideo = QFileInfo(sourceFile(0, i));
        item->rearVideo = QFileInfo(sourceFile(1, i));
        item->from = kStart.addSecs(i * fileSeconds);
        item->to = kStart.addSecs((i + 1) * fileSeconds);
        items.push_back(item);
    }
    TrackPositions track;
    for (int s = 0; s <= seconds; ++s) {
        TrackPosition fix;
        fix.time = trackTimeFromSeconds(kStart.addSecs(s).toSecsSinceEpoch());
        fix.latitude = 50.08 + s * 1e-4;
        fix.longitude = 14.42;
        fix.speed = 50;
        fix.course = 0;
        track.push_back(fix);
    }

    const Timing ours = timed([&] {
        bool ok = false;
        OverviewVideo overview(items, {kStart, kStart.addSecs(seconds)}, out + "/overview.mp4", track,
                               SpeedUnit::KilometresPerHour);
        QObject::connect(&overview, &BaseEncoder::done, [&ok](bool result) { ok = result; });
        overview.encode();
        return ok;
    });

    // The same picture from the command line: both files of a camera joined, stacked, three drawtext filters.
    for (int camera = 0; camera < 2; ++camera) {
        QFile list(kDir + QStringLiteral("/concat%1.txt").arg(camera));
        list.open(QIODevice::WriteOnly | QIODevice::Truncate);
        for (int i = 0; i < 2; ++i)
            list.write(QStringLiteral("file '%1'\n").arg(sourceFile(camera, i)).toUtf8());
    }
    const QString font = OverviewVideo::defaultFontFile();
    const QString box = QStringLiteral(":fontsize=40:fontcolor=white:box=1:boxcolor=black@0.6:boxborderw=10");
    const QString filter =
        QStringLiteral("[0:v][1:v]hstack,drawtext=fontfile=%1:text='%{pts\\:localtime\\:%2}'%3:x=20:y=20,"
                       "drawtext=fontfile=%1:text=Front%3:x=20:y=h-th-20,drawtext=fontfile=%1:text=Rear%3:x=1940:y=h-th-20[v]")
            .arg(font)
            .arg(kStart.toSecsSinceEpoch())
            .arg(box);
    const Timing ffmpeg = timed([&] {
        return run("ffmpeg", {"-v", "error", "-y", "-f", "concat", "-safe", "0", "-i", kDir + "/concat0.txt", "-f",
                              "concat", "-safe", "0", "-i", kDir + "/concat1.txt", "-filter_complex", filter, "-map",
                              "[v]", "-map", "0:a", "-t", QString::number(seconds), "-c:v", "libx264", "-preset",
                              "veryfast", "-crf", "23", "-g", "50", "-c:a", "aac", "-b:a", "128k",
                              out + "/ffmpeg.mp4"});
    });
    const Timing cp = timed([&] {
        QDir().mkpath(out + "/cp");
        return run("cp", {sourceFile(0, 0), sourceFile(0, 1), sourceFile(1, 0), sourceFile(1, 1), out + "/cp/"});
    });
    std::printf("load average after:  %s\n", qPrintable(loadAverage()));
    std::printf("overview of %d s, two 1080p cameras side by side (3840x1080), one run each:\n", seconds);
    std::printf("                        wall ms    cpu ms\n");
    std::printf("  OverviewVideo        %8.0f  %8.0f\n", ours.wallMs, ours.cpuMs);
    std::printf("  ffmpeg command line  %8.0f  %8.0f\n", ffmpeg.wallMs, ffmpeg.cpuMs);
    std::printf("  cp of the originals  %8.0f  %8.0f\n", cp.wallMs, cp.cpuMs);
    std::printf("  OverviewVideo + cp against ffmpeg + cp: wall ratio %.2f, cpu ratio %.2f (target <= 1.5)\n",
                (ours.wallMs + cp.wallMs) / (ffmpeg.wallMs + cp.wallMs), (ours.cpuMs + cp.cpuMs) / (ffmpeg.cpuMs + cp.cpuMs));
    QDir(out).removeRecursively();
    if (!keep)
        QDir(kDir).removeRecursively();
    return ours.wallMs < 0 || ffmpeg.wallMs < 0 || cp.wallMs < 0 ? 1 : 0;
}
