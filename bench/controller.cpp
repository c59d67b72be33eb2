// Playback controller figures: the gap at each change of file over an item of 5 one-minute files, and the
// time a slider seek into another file takes to show its picture. Run under Xvfb:
// bench-controller [--seconds N] (length of each file, 60).
#include "av/VideoWidget.h"
#include "ui/PlaybackController.h"
#include "ui/VideoProgressSlider.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {
constexpr int kFiles = 5;
constexpr int kFps = 30;

bool makeFile(const QString& path, int seconds) {
    QProcess ffmpeg;
    ffmpeg.setProcessChannelMode(QProcess::MergedChannels);
    ffmpeg.start("ffmpeg", {"-y", "-nostdin", "-loglevel", "error", "-f", "lavfi", "-i",
                            QString("testsrc2=s=640x360:r=%1:d=%2").arg(kFps).arg(seconds), "-c:v", "libx264",
                            "-preset", "veryfast", "-g", QString::number(kFps), "-pix_fmt", "yuv420p", path});
    const bool ok = ffmpeg.waitForFinished(-1) && ffmpeg.exitCode() == 0;
    if (!ok)
        std::printf("ffmpeg failed: %s\n", ffmpeg.readAll().constData());
    return ok;
}

bool runUntil(const std::function<bool()>& condition, int timeoutMs) {
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QThread::usleep(200);
    }
    return true;
}
} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    int seconds = 60;
    const QStringList args = app.arguments();
    if (const int at = args.indexOf("--seconds"); at >= 0 && at + 1 < args.size())
        seconds = args[at + 1].toInt();

    QTemporaryDir dir;
    const QDateTime start = QDateTime::currentDateTime().addDays(-1);
    Playlist::RawItems items;
    std::printf("generating %d files of %d s...\n", kFiles, seconds);
    for (int i = 0; i < kFiles; ++i) {
        const QString path = dir.filePath(QString("file-%1.mp4").arg(i));
        if (!makeFile(path, seconds))
            return 1;
        auto item = std::make_shared<Playlist::RawItem>();
        item->mainVideo = QFileInfo(path);
        item->from = start.addSecs(i * seconds);
        item->to = item->from.addSecs(seconds);
        items.push_back(item);
    }

    QWidget window;
    auto* front = new av::VideoWidget(&window);
    auto* rear = new av::VideoWidget(&window);
    auto* slider = new VideoProgressSlider(&window);
    auto* status = new QLabel(&window);
    front->setGeometry(0, 0, 640, 360);
    rear->setGeometry(640, 0, 320, 180);
    slider->setGeometry(0, 370, 960, 20);
    window.resize(960, 400);
    window.show();

    // Gapless changes: wall time from the last picture of one file to the first picture of the next.
    {
        PlaybackController controller(items, items.front()->from, items.back()->to,
                                      PlaybackViews{nullptr, status, slider, front, rear}, false);
        QElapsedTimer clock;
        clock.start();
        qint64 lastShownUs = -1;
        double lastPts = -1;
        std::vector<double> gaps;
        int wrongPictures = 0;
        int files = 0;
        QObject::connect(&controller, &PlaybackController::playerChanged, [&](MultiAVPlayer* player) {
            if (!player)
                return;
            ++files;
            const double firstPts = player->player(0)->currentFrame().ptsMs;
            if (lastShownUs >= 0) {
                gaps.push_back((clock.nsecsElapsed() / 1000 - lastShownUs) / 1000.0);
                // The previous file ended on its last picture; the next starts on its first.
                if (firstPts != 0 || lastPts < seconds * 1000.0 - 2 * 1000.0 / kFps)
                    ++wrongPictures;
            }
            QObject::connect(player->player(0), &av::Player::frameShown, [&, player] {
                lastShownUs = clock.nsecsElapsed() / 1000;
                lastPts = player->player(0)->currentFrame().ptsMs;
            });
        });
        bool done = false;
        QObject::connect(&controller, &PlaybackController::stopped, [&] { done = true; });
        // Skip most of each file: seek close to its end, let the change happen, then on to the next.
        for (int i = 0; i < kFiles; ++i) {
            runUntil([&] { return files == i + 1; }, 10000);
            if (seconds > 3)
                controller.seekTo(items[i]->to.addMSecs(-1500));
        }
        runUntil([&] { return done; }, seconds * 1000 + 10000);
        const double worst = gaps.empty() ? 0 : *std::max_element(gaps.begin(), gaps.end());
        std::printf("file changes: %zu, worst gap from the last picture to the next file's first %.1f ms "
                    "(one frame is %.1f ms), wrong pictures at a change: %d\n",
                    gaps.size(), worst, 1000.0 / kFps, wrongPictures);
    }
    runUntil([] { return false; }, 200);

    // Seeks by the slider into another file: from the request to the target picture on screen.
    {
        PlaybackController controller(items, items.front()->from, items.back()->to,
                                      PlaybackViews{nullptr, status, slider, front, rear}, false);
        runUntil([&] { return controller.currentPlayer() != nullptr; }, 10000);
        std::vector<double> latencies;
        for (int i = 0; i < 10; ++i) {
            const int file = (i + 1) % kFiles;
            const qint64 offsetMs = (seconds * 1000 / 10) * (i % 9 + 1) + 17;
            const QDateTime target = items[file]->from.addMSecs(offsetMs);
            QElapsedTimer timer;
            timer.start();
            controller.seekTo(target);
            const bool ok = runUntil([&] {
                const MultiAVPlayer* player = controller.currentPlayer();
                if (!player || player->player(0)->file() != items[file]->mainVideo.absoluteFilePath())
                    return false;
                const double pts = player->player(0)->currentFrame().ptsMs;
                return pts <= offsetMs && offsetMs < pts + 1000.0 / kFps + 1;
            }, 5000);
            latencies.push_back(ok ? timer.nsecsElapsed() / 1e6 : 5000);
            runUntil([] { return false; }, 300);
        }
        std::sort(latencies.begin(), latencies.end());
        std::printf("seek into another file (10 seeks, slider delay included): median %.0f ms, max %.0f ms\n",
                    latencies[latencies.size() / 2], latencies.back());
    }
    return 0;
}
