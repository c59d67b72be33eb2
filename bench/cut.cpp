// Cutting speed against the ffmpeg command line: a 10-minute stream copy over ten one-minute 1080p files
// (against ffmpeg's concat and against cp of the same bytes), and a 1-minute 1080p re-encode turned by
// 90 degrees (against ffmpeg with the same codec, size, filter and bit rate).
// Media is made once into /tmp/reelvue-bench-cut; pass --keep to leave it there for the next run and
// --remux-only to skip the re-encode.
#include "core/encoding/Coder.h"
#include "core/encoding/Remuxer.h"
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
#include <functional>
#include <memory>

namespace {

const QString kDir = QStringLiteral("/tmp/reelvue-bench-cut");
constexpr int kFiles = 10;
constexpr int kFileSeconds = 60;
const QDateTime kStart(QDate(2024, 6, 14), QTime(9, 0, 0));

bool run(const QString& program, const QStringList& arguments, QString* out = nullptr) {
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(-1) || process.exitCode() != 0) {
        std::fprintf(stderr, "%s failed: %s\n", qPrintable(program), process.readAllStandardError().constData());
        return false;
    }
    if (out)
        *out = QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    return true;
}

QString sourceFile(int i) {
    return kDir + QStringLiteral("/src/%1.mp4").arg(i, 2, 10, QLatin1Char('0'));
}

// One minute of 1080p at 25 fps, a key frame a second, 8 Mbit/s like a dash camera, AAC sound; copied to ten files.
bool makeMedia() {
    QDir().mkpath(kDir + "/src");
    if (!QFile::exists(sourceFile(0))) {
        std::printf("making %d s of 1080p (once)...\n", kFileSeconds);
        std::fflush(stdout);
        if (!run("ffmpeg", {"-v", "error", "-y", "-f", "lavfi", "-i", "testsrc2=size=1920x1080:rate=25", "-f", "lavfi",
                            "-i", "sine=frequency=440:sample_rate=44100", "-t", QString::number(kFileSeconds), "-c:v",
                            "libx264", "-preset", "ultrafast", "-g", "25", "-pix_fmt", "yuv420p", "-b:v", "8M", "-c:a",
                            "aac", "-b:a", "64k", sourceFile(0)}))
            return false;
    }
    for (int i = 1; i < kFiles; ++i)
        if (!QFile::exists(sourceFile(i)) && !QFile::copy(sourceFile(0), sourceFile(i)))
            return false;
    return true;
}

Playlist::RawItems items(int count) {
    Playlist::RawItems result;
    for (int i = 0; i < count; ++i) {
        auto item = std::make_shared<Playlist::RawItem>();
        item->mainVideo = QFileInfo(sourceFile(i));
        item->from = kStart.addSecs(i * kFileSeconds);
        item->to = kStart.addSecs((i + 1) * kFileSeconds);
        result.push_back(item);
    }
    return result;
}

// Wall time of the best of `runs` runs, in milliseconds; -1 when a run fails.
double bestOf(int runs, const std::function<bool()>& job, const std::function<void()>& cleanUp) {
    double best = -1;
    for (int i = 0; i < runs; ++i) {
        cleanUp();
        QElapsedTimer timer;
        timer.start();
        if (!job())
            return -1;
        const double ms = timer.nsecsElapsed() / 1e6;
        best = best < 0 ? ms : std::min(best, ms);
    }
    return best;
}

bool runEncoder(BaseEncoder& encoder) {
    bool ok = false;
    QObject::connect(&encoder, &BaseEncoder::done, [&ok](bool result) { ok = result; });
    encoder.encode();
    return ok;
}

QString loadAverage() {
    QFile file("/proc/loadavg");
    return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()).section(' ', 0, 2) : QStringLiteral("?");
}

void printRatio(const char* what, double ours, double theirs, double target) {
    const double ratio = ours / theirs;
    std::printf("  %-34s %8.0f ms vs %8.0f ms  ratio %.2f (target <= %.1f) %s\n", what, ours, theirs, ratio, target,
                ratio <= target ? "ok" : "MISSED");
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    logging::setLevel(logging::WARN);
    av_log_set_level(AV_LOG_ERROR);
    const bool keep = app.arguments().contains(QStringLiteral("--keep"));
    // --remux-only skips the re-encode, which takes minutes on a busy machine.
    const bool remuxOnly = app.arguments().contains(QStringLiteral("--remux-only"));
    if (!makeMedia())
        return 1;
    const QString out = kDir + "/out";
    QDir().mkpath(out);
    auto clean = [&] { QDir(out).removeRecursively(); QDir().mkpath(out); };
    std::printf("load average before: %s (2 cores, shared with other builds)\n", qPrintable(loadAverage()));

    // Stream copy of the whole ten minutes.
    const TimeInterval tenMinutes{kStart, kStart.addSecs(kFiles * kFileSeconds)};
    const double remux = bestOf(3, [&] {
        EncodingSettings settings;
        settings.filePath = out + "/remux.mp4";
        Remuxer remuxer(items(kFiles), tenMinutes, settings);
        return runEncoder(remuxer);
    }, clean);
    QFile list(kDir + "/concat.txt");
    list.open(QIODevice::WriteOnly | QIODevice::Truncate);
    for (int i = 0; i < kFiles; ++i)
        list.write(QStringLiteral("file '%1'\n").arg(sourceFile(i)).toUtf8());
    list.close();
    const double ffmpegCopy = bestOf(3, [&] {
        return run("ffmpeg", {"-v", "error", "-y", "-f", "concat", "-safe", "0", "-ss", "0", "-to",
                              QString::number(kFiles * kFileSeconds), "-i", list.fileName(), "-c", "copy",
                              out + "/ffmpeg-copy.mp4"});
    }, clean);
    const double cp = bestOf(3, [&] {
        QStringList arguments;
        for (int i = 0; i < kFiles; ++i)
            arguments << sourceFile(i);
        arguments << out + "/";
        return run("cp", arguments);
    }, clean);

    // Re-encode of the first minute, turned by 90 degrees, at the camera's bit rate.
    QString bitRate;
    run("ffprobe", {"-v", "error", "-select_streams", "v:0", "-show_entries", "stream=bit_rate", "-of", "csv=p=0",
                    sourceFile(0)}, &bitRate);
    const TimeInterval oneMinute{kStart, kStart.addSecs(kFileSeconds)};
    const double coder = remuxOnly ? 1 : bestOf(1, [&] {
        EncodingSettings settings;
        settings.filePath = out + "/coder.mp4";
        settings.forceReencoding = true;
        settings.rotation = 1;
        Coder encoder(items(1), oneMinute, settings);
        return runEncoder(encoder);
    }, clean);
    const double ffmpegEncode = remuxOnly ? 1 : bestOf(1, [&] {
        return run("ffmpeg", {"-v", "error", "-y", "-i", sourceFile(0), "-t", QString::number(kFileSeconds), "-vf",
                              "transpose=2", "-c:v", "libx264", "-b:v", bitRate, "-c:a", "aac", out + "/ffmpeg-encode.mp4"});
    }, clean);
    std::printf("load average after:  %s\n", qPrintable(loadAverage()));

    std::printf("remux of %d min over %d files of 1080p (best of 3):\n", kFiles * kFileSeconds / 60, kFiles);
    printRatio("Remuxer vs ffmpeg concat -c copy", remux, ffmpegCopy, 1.2);
    printRatio("Remuxer vs cp of the same bytes", remux, cp, 2.0);
    if (!remuxOnly) {
        std::printf("re-encode of 1 min of 1080p, rotation 90, libx264 at %s bit/s (one run):\n", qPrintable(bitRate));
        printRatio("Coder vs ffmpeg -vf transpose=2", coder, ffmpegEncode, 1.3);
    }
    clean();
    if (!keep)
        QDir(kDir).removeRecursively();
    return remux < 0 || ffmpegCopy < 0 || cp < 0 || coder < 0 || ffmpegEncode < 0 ? 1 : 0;
}
