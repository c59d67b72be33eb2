// Playback engine figures: two cameras at 1x..8x, exact seek latency, load time, decode throughput
// against the ffmpeg tool, memory. Run under Xvfb: bench-playback [--seconds N] (length of the media, 60).
// bench/app-playback runs single parts on its own files and reads their one-line figures:
// bench-playback --decode FILE | --seek FILE | --first-picture FRONT REAR
#include "av/Clock.h"
#include "av/MediaPipeline.h"
#include "av/Player.h"
#include "av/VideoWidget.h"
#include "ui/MultiAVPlayer.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// Resident memory now and at its peak, in MiB, from /proc.
std::pair<double, double> residentMiB() {
    std::ifstream status("/proc/self/status");
    std::string line;
    double now = 0, peak = 0;
    while (std::getline(status, line)) {
        if (line.rfind("VmRSS:", 0) == 0)
            now = std::stod(line.substr(6)) / 1024;
        if (line.rfind("VmHWM:", 0) == 0)
            peak = std::stod(line.substr(6)) / 1024;
    }
    return {now, peak};
}

double percentile(std::vector<double> values, double p) {
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, static_cast<size_t>(p * (values.size() - 1) + 0.5))];
}

void runEvents(int ms) {
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::msleep(1);
    }
}

bool runFfmpeg(const QStringList& args, double* seconds = nullptr) {
    QProcess ffmpeg;
    ffmpeg.setProcessChannelMode(QProcess::MergedChannels);
    QElapsedTimer timer;
    timer.start();
    ffmpeg.start("ffmpeg", QStringList{"-y", "-nostdin", "-loglevel", "error"} + args);
    const bool ok = ffmpeg.waitForFinished(-1) && ffmpeg.exitCode() == 0;
    if (seconds)
        *seconds = timer.elapsed() / 1000.0;
    if (!ok)
        std::printf("ffmpeg failed: %s\n", ffmpeg.readAll().constData());
    return ok;
}

// A dash camera's kind of file: H.264 at a camera's bit rate, one key frame a second, no B-frames.
bool makeMedia(const QString& path, int width, int height, int seconds, const char* bitrate, bool sound) {
    QStringList args{"-f", "lavfi", "-i", QString("testsrc2=s=%1x%2:r=30:d=%3").arg(width).arg(height).arg(seconds)};
    if (sound)
        args << "-f" << "lavfi" << "-i" << QString("sine=frequency=440:sample_rate=48000:duration=%1").arg(seconds);
    args << "-c:v" << "libx264" << "-preset" << "veryfast" << "-b:v" << bitrate << "-maxrate" << bitrate << "-bufsize"
         << bitrate << "-g" << "30" << "-bf" << "0" << "-pix_fmt" << "yuv420p";
    if (sound)
        args << "-c:a" << "aac" << "-b:a" << "128k";
    return runFfmpeg(args << path);
}

struct Window {
    QWidget window;
    av::VideoWidget front;
    av::VideoWidget rear;
    Window() {
        auto* layout = new QHBoxLayout(&window);
        layout->addWidget(&front);
        layout->addWidget(&rear);
        window.resize(1280, 400);
        window.show();
    }
};

void playTwoCameras(const QString& frontFile, const QString& rearFile, double speed, int maxSeconds) {
    Window view;
    MultiAVPlayer cameras(2);
    cameras.setFiles({frontFile, rearFile});
    cameras.load();
    cameras.setRenderers({&view.front, &view.rear});
    cameras.setSpeed(speed);
    bool ended = false;
    QObject::connect(&cameras, &MultiAVPlayer::lastFramePlayed, [&] { ended = true; });

    std::vector<double> pairSkew, clockLag;
    QTimer sampler;
    sampler.setTimerType(Qt::PreciseTimer);
    QObject::connect(&sampler, &QTimer::timeout, [&] {
        if (ended)
            return;
        const double front = cameras.player(0)->currentFrame().ptsMs;
        const double rear = cameras.player(1)->currentFrame().ptsMs;
        pairSkew.push_back(std::abs(front - rear));
        clockLag.push_back(cameras.clock().valueMs() - std::min(front, rear));
    });
    const double cpuBefore = cpuSeconds();
    QElapsedTimer wall;
    wall.start();
    cameras.play();
    const double clockStart = cameras.clock().valueMs();
    wall.restart();
    runEvents(200);
    sampler.start(10);
    while (!ended && wall.elapsed() < maxSeconds * 1000)
        runEvents(50);
    sampler.stop();
    const double seconds = wall.elapsed() / 1000.0;
    const double media = (cameras.clock().valueMs() - clockStart) / 1000.0;
    const double cpu = cpuSeconds() - cpuBefore;
    std::printf("%gx: %.2f s wall, %.2f s media: the clock is %.0f ms off real time x speed%s\n", speed, seconds, media,
                (media - seconds * speed) * 1000, ended ? " (played to the end)" : "");
    for (size_t i = 0; i < 2; ++i) {
        const av::Player* p = cameras.player(i);
        const int shown = p->framesShown();
        const int dropped = p->framesDropped();
        std::printf("  %s: %d frames shown, %d dropped (%.1f%%), display %.1f fps\n", i == 0 ? "front 1080p" : "rear 720p ",
                    shown, dropped, 100.0 * dropped / std::max(1, shown + dropped), shown / seconds);
    }
    std::printf("  pair skew ms: median %.1f, p95 %.1f, max %.1f; clock lead over shown frame ms: median %.1f, p95 %.1f, "
                "max %.1f\n",
                percentile(pairSkew, 0.5), percentile(pairSkew, 0.95), percentile(pairSkew, 1), percentile(clockLag, 0.5),
                percentile(clockLag, 0.95), percentile(clockLag, 1));
    const auto memory = residentMiB();
    std::printf("  CPU %.1f s (%.0f%% of one core), resident %.0f MiB (peak so far %.0f MiB)\n", cpu, 100 * cpu / seconds,
                memory.first, memory.second);
}

std::vector<double> seekLatencies(const QString& file, int mediaSeconds) {
    Window view;
    av::Player player;
    player.setFile(file);
    player.load();
    player.setRenderer(&view.front);
    std::mt19937 random(7);
    std::uniform_int_distribution<int> position(0, mediaSeconds * 1000 - 1000);
    std::vector<double> latencies;
    bool done = false;
    QObject::connect(&player, &av::Player::seekFinished, [&] { done = true; });
    for (int i = 0; i < 40; ++i) {
        done = false;
        QElapsedTimer timer;
        timer.start();
        player.setPosition(position(random));
        while (!done && timer.elapsed() < 5000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        view.front.repaint();  // the picture drawn: part of the cost the user waits for
        latencies.push_back(timer.nsecsElapsed() / 1e6);
        runEvents(20);
    }
    return latencies;
}

void seekLatency(const QString& file, int mediaSeconds) {
    const std::vector<double> latencies = seekLatencies(file, mediaSeconds);
    std::mt19937 random(7);
    std::uniform_int_distribution<int> position(0, mediaSeconds * 1000 - 1000);
    std::printf("exact seek 1080p (key frame each second, paused, 40 random targets): median %.0f ms, p95 %.0f ms, "
                "max %.0f ms\n",
                percentile(latencies, 0.5), percentile(latencies, 0.95), percentile(latencies, 1));
    // For scale on this machine: the ffmpeg tool's own exact seek to one frame, process start included.
    std::vector<double> tool;
    for (int i = 0; i < 10; ++i) {
        double seconds = 0;
        runFfmpeg({"-ss", QString::number(position(random) / 1000.0), "-i", file, "-an", "-frames:v", "1", "-f", "null", "-"},
                  &seconds);
        tool.push_back(seconds * 1000);
    }
    std::printf("  for scale, ffmpeg -ss T -i FILE -frames:v 1 -f null - (10 targets): median %.0f ms, max %.0f ms\n",
                percentile(tool, 0.5), percentile(tool, 1));
}

void loadTime(const QString& front, const QString& rear) {
    std::vector<double> times;
    for (int i = 0; i < 10; ++i) {
        for (const QString& file : {front, rear}) {
            av::Player player;
            player.setFile(file);
            QElapsedTimer timer;
            timer.start();
            player.load();
            times.push_back(timer.nsecsElapsed() / 1e6);
        }
    }
    std::printf("load() with first frame (1080p and 720p, 10 each): median %.0f ms, max %.0f ms\n",
                percentile(times, 0.5), percentile(times, 1));
}

// Loads both cameras of a recording as the playback controller does and draws their first pictures.
std::vector<double> firstPictureTimes(const QString& front, const QString& rear) {
    std::vector<double> times;
    for (int i = 0; i < 10; ++i) {
        Window view;
        runEvents(50);
        QElapsedTimer timer;
        timer.start();
        MultiAVPlayer cameras(2);
        cameras.setFiles({front, rear});
        cameras.load();
        cameras.setRenderers({&view.front, &view.rear});
        cameras.playPaused();
        view.front.repaint();
        view.rear.repaint();
        times.push_back(timer.nsecsElapsed() / 1e6);
    }
    return times;
}

// Every frame of the file through the pipeline, as fast as it decodes; returns the number of frames.
int decodeAll(const QString& file) {
    av::Clock stopped;  // never started: nothing counts as late, every frame is delivered
    av::MediaPipeline pipeline(file, stopped, nullptr);
    pipeline.start();
    int frames = 1;
    for (;;) {
        auto next = pipeline.frames().peek();
        if (!next) {
            QThread::usleep(200);
            continue;
        }
        pipeline.frames().pop();
        if (next->endOfStream)
            break;
        ++frames;
    }
    return frames;
}

void decodeThroughput(const QString& file) {
    QElapsedTimer timer;
    timer.start();
    const int frames = decodeAll(file);
    const double ours = timer.elapsed() / 1000.0;
    double tool = 0, toolVideoOnly = 0;
    runFfmpeg({"-i", file, "-f", "null", "-"}, &tool);
    runFfmpeg({"-i", file, "-an", "-f", "null", "-"}, &toolVideoOnly);
    std::printf("decode only, 1080p: engine %d frames in %.2f s = %.0f fps; ffmpeg -f null %.2f s = %.0f fps "
                "(video only %.2f s = %.0f fps); engine at %.0f%% of ffmpeg\n",
                frames, ours, frames / ours, tool, frames / tool, toolVideoOnly, frames / toolVideoOnly,
                100 * tool / ours);
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() == 3 && args[1] == "--decode") {
        std::printf("frames: %d\n", decodeAll(args[2]));
        return 0;
    }
    if (args.size() == 3 && args[1] == "--seek") {
        av::Player probe;
        probe.setFile(args[2]);
        probe.load();
        const auto latencies = seekLatencies(args[2], static_cast<int>(probe.duration() / 1000));
        std::printf("seek: %.1f %.1f %.1f\n", percentile(latencies, 0.5), percentile(latencies, 0.95),
                    percentile(latencies, 1));
        return 0;
    }
    if (args.size() == 4 && args[1] == "--first-picture") {
        const auto times = firstPictureTimes(args[2], args[3]);
        std::printf("first-picture: %.1f %.1f\n", percentile(times, 0.5), percentile(times, 1));
        return 0;
    }
    int seconds = 60;
    for (int i = 1; i + 1 < argc; ++i)
        if (std::string(argv[i]) == "--seconds")
            seconds = std::max(5, std::atoi(argv[i + 1]));

    QTemporaryDir dir(QDir::tempPath() + "/reelvue-bench-XXXXXX");
    const QString front = dir.filePath("front-1080p.mp4");
    const QString rear = dir.filePath("rear-720p.mp4");
    std::printf("generating %d s of 1080p30 (12 Mbit/s, AAC) and 720p30 (6 Mbit/s) into %s ...\n", seconds,
                qPrintable(dir.path()));
    std::fflush(stdout);
    if (!makeMedia(front, 1920, 1080, seconds, "12M", true) || !makeMedia(rear, 1280, 720, seconds, "6M", false))
        return 1;

    decodeThroughput(front);
    loadTime(front, rear);
    seekLatency(front, seconds);
    for (double speed : {1.0, 2.0, 4.0, 8.0}) {
        playTwoCameras(front, rear, speed, seconds);
        std::fflush(stdout);
    }
    return 0;
}
