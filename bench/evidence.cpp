// Evidence pack speed against the command line: a pack of a 2-minute interval of two 1080p cameras (four
// one-minute files each within the 30 s margin) against `cp` of the same originals plus the ffmpeg command
// that makes the same overview (both cameras side by side, H.264 + AAC, time burned in with drawtext). The pack
// also holds its frames and report, which the command line does not make.
// Media is made once into /tmp/reelvue-bench-evidence; pass --keep to leave it there for the next run.
// Measure only on a quiet machine: the figures mean little while other builds share the cores.
#include "core/TrackLoader.h"
#include "core/evidence/EvidencePack.h"
#include "logging/Logging.h"
#include "ui/EvidenceDrawing.h"

#include <QGuiApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

extern "C" {
#include <libavutil/log.h>
}

#include <cmath>
#include <cstdio>
#include <functional>

namespace {

const QString kDir = QStringLiteral("/tmp/reelvue-bench-evidence");
const QString kFont = QStringLiteral("/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf");
constexpr int kFiles = 4;
constexpr int kFileSeconds = 60;
const QDateTime kStart(QDate(2024, 6, 14), QTime(9, 0, 0));
// 09:01:00 to 09:03:00: with the 30 s margin every one of the four files is an original.
const TimeInterval kInterval{kStart.addSecs(60), kStart.addSecs(180)};

bool run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(-1) || process.exitCode() != 0) {
        std::fprintf(stderr, "%s failed: %s\n", qPrintable(program), process.readAllStandardError().constData());
        return false;
    }
    return true;
}

QString file(int i, const char* camera, const char* suffix) {
    return kDir + QStringLiteral("/card/Normal/FILE240614-09%1%2.%3").arg(i, 2, 10, QLatin1Char('0')).arg(camera, suffix);
}

QString nmeaSentence(const QByteArray& body) {
    unsigned checksum = 0;
    for (const char c : body)
        checksum ^= static_cast<unsigned char>(c);
    return QStringLiteral("$%1*%2\r\n").arg(QString::fromLatin1(body)).arg(checksum, 2, 16, QLatin1Char('0')).toUpper();
}

// One fix a second, driving north-east at 50 km/h.
void writeTrack(const QString& path, int firstSecond) {
    QFile out(path);
    out.open(QIODevice::WriteOnly);
    for (int s = firstSecond; s < firstSecond + kFileSeconds; ++s) {
        const QDateTime utc = kStart.addSecs(s).toUTC();
        const double lat = 49.2 + s * 0.00007, lon = 16.6 + s * 0.0001;
        auto degrees = [](double value, int width) {
            const int whole = int(value);
            return QStringLiteral("%1%2").arg(whole, width, 10, QLatin1Char('0')).arg((value - whole) * 60.0, 7, 'f', 4, QLatin1Char('0'));
        };
        const QString time = utc.toString("hhmmss") + ".00";
        out.write(nmeaSentence(QStringLiteral("GPRMC,%1,A,%2,N,%3,E,27.0,45.0,%4,,,A").arg(time, degrees(lat, 2), degrees(lon, 3),
                                                                                   utc.toString("ddMMyy")).toLatin1()).toLatin1());
        out.write(nmeaSentence(QStringLiteral("GPGGA,%1,%2,N,%3,E,1,09,0.9,240.0,M,44.0,M,,").arg(time, degrees(lat, 2), degrees(lon, 3))
                                   .toLatin1()).toLatin1());
    }
}

// One minute of 1080p at 25 fps, a key frame a second, 8 Mbit/s like a dash camera, AAC sound; copied to every file.
bool makeMedia() {
    QDir().mkpath(kDir + "/card/Normal");
    const QString source = kDir + "/source.mp4";
    if (!QFile::exists(source)) {
        std::printf("making %d s of 1080p (once)...\n", kFileSeconds);
        std::fflush(stdout);
        if (!run("ffmpeg", {"-v", "error", "-y", "-f", "lavfi", "-i", "testsrc2=size=1920x1080:rate=25", "-f", "lavfi",
                            "-i", "sine=frequency=440:sample_rate=44100", "-t", QString::number(kFileSeconds), "-c:v",
                            "libx264", "-preset", "ultrafast", "-g", "25", "-pix_fmt", "yuv420p", "-b:v", "8M", "-c:a",
                            "aac", "-b:a", "64k", source}))
            return false;
    }
    for (int i = 0; i < kFiles; ++i) {
        for (const char* camera : {"F", "R"})
            if (!QFile::exists(file(i, camera, "MP4")) && !QFile::copy(source, file(i, camera, "MP4")))
                return false;
        writeTrack(file(i, "F", "NMEA"), i * kFileSeconds);
    }
    return true;
}

Playlist::RawItems items() {
    Playlist::RawItems result;
    for (int i = 0; i < kFiles; ++i) {
        auto item = std::make_shared<Playlist::RawItem>();
        item->mainVideo = QFileInfo(file(i, "F", "MP4"));
        item->rearVideo = QFileInfo(file(i, "R", "MP4"));
        item->from = kStart.addSecs(i * kFileSeconds);
        item->to = kStart.addSecs((i + 1) * kFileSeconds);
        Playlist::Track track;
        track.file = QFileInfo(file(i, "F", "NMEA"));
        track.positions = TrackLoader::load(track.file.absoluteFilePath()).positions;
        item->track = track;
        result.push_back(item);
    }
    return result;
}

double timed(const std::function<bool()>& job) {
    QElapsedTimer timer;
    timer.start();
    return job() ? timer.nsecsElapsed() / 1e6 : -1;
}

QString loadAverage() {
    QFile loadavg("/proc/loadavg");
    return loadavg.open(QIODevice::ReadOnly) ? QString::fromLatin1(loadavg.readAll()).section(' ', 0, 2) : QStringLiteral("?");
}

// The overview as the ffmpeg command line makes it: the interval of both cameras, side by side, the time and each
// camera's name drawn in, H.264 (x264 veryfast, CRF 23) and AAC.
bool ffmpegOverview(const QString& output) {
    QStringList arguments{"-v", "error", "-y"};
    for (const char* camera : {"F", "R"}) {
        QFile list(kDir + QStringLiteral("/%1.txt").arg(camera));
        list.open(QIODevice::WriteOnly | QIODevice::Truncate);
        for (int i = 0; i < kFiles; ++i)
            list.write(QStringLiteral("file '%1'\n").arg(file(i, camera, "MP4")).toUtf8());
        arguments << "-ss" << "60" << "-t" << "120" << "-f" << "concat" << "-safe" << "0" << "-i" << list.fileName();
    }
    const QString text = QStringLiteral("fontfile=%1:fontcolor=white:fontsize=40:box=1:boxcolor=black@0.6").arg(kFont);
    arguments << "-filter_complex"
              << QStringLiteral("[0:v][1:v]hstack=inputs=2,drawtext=%1:x=20:y=20:text='%{pts\\:gmtime\\:1718355660}',"
                                "drawtext=%1:x=20:y=h-60:text='FRONT',drawtext=%1:x=w/2+20:y=h-60:text='REAR'[v]")
                     .arg(text)
              << "-map" << "[v]" << "-map" << "0:a" << "-c:v" << "libx264" << "-preset" << "veryfast" << "-crf" << "23"
              << "-g" << "50" << "-c:a" << "aac" << "-b:a" << "128k" << output;
    return run("ffmpeg", arguments);
}

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen"); // the report needs Gui's fonts, nothing is shown
    QGuiApplication app(argc, argv);
    logging::setLevel(logging::WARN);
    av_log_set_level(AV_LOG_ERROR);
    const bool keep = app.arguments().contains(QStringLiteral("--keep"));
    if (!makeMedia())
        return 1;
    const QString out = kDir + "/out";
    auto clean = [&] { QDir(out).removeRecursively(); QDir().mkpath(out); };
    std::printf("load average before: %s (2 cores, shared with other builds)\n", qPrintable(loadAverage()));

    clean();
    const double pack = timed([&] {
        EvidenceRequest request;
        request.items = items();
        request.interval = kInterval;
        request.folder = out + "/pack";
        request.cardPath = kDir + "/card";
        request.marks = {kInterval.from.addSecs(60)};
        setEvidenceDrawing(request); // the frames and the report, as the window makes them
        EvidencePack job(request);
        bool ok = false;
        QObject::connect(&job, &EvidencePack::done, [&ok](bool result) { ok = result; });
        job.encode();
        if (!ok)
            std::fprintf(stderr, "the pack failed: %s\n", qPrintable(job.failureText()));
        return ok;
    });
    clean();
    const double cp = timed([&] {
        QStringList arguments{"-p"};
        for (int i = 0; i < kFiles; ++i)
            arguments << file(i, "F", "MP4") << file(i, "R", "MP4") << file(i, "F", "NMEA");
        return run("cp", arguments << out + "/");
    });
    const double ffmpeg = timed([&] { return ffmpegOverview(out + "/overview.mp4"); });
    std::printf("load average after:  %s\n", qPrintable(loadAverage()));

    std::printf("pack of 2 min of two 1080p cameras (%d originals of 1 min each, one run):\n", kFiles * 3);
    std::printf("  pack %8.0f ms vs cp %8.0f ms + ffmpeg overview %8.0f ms = %8.0f ms\n", pack, cp, ffmpeg, cp + ffmpeg);
    const double ratio = pack / (cp + ffmpeg);
    std::printf("  ratio %.2f (target <= 1.5) %s\n", ratio, ratio <= 1.5 ? "ok" : "MISSED");
    clean();
    if (!keep)
        QDir(kDir).removeRecursively();
    return pack < 0 || cp < 0 || ffmpeg < 0 ? 1 : 0;
}
