// bench-nmea-parse FILE [REPEATS]: track loading throughput (MB/s, positions/s) and peak memory.
#include "core/TrackLoader.h"
#include "logging/Logging.h"

#include <QFile>
#include <QFileInfo>

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

// Wall time and this thread's processor time: on a shared machine the second is the fair measure.
struct Stopwatch {
    std::chrono::steady_clock::time_point wallStart = std::chrono::steady_clock::now();
    double cpuStart = cpuSeconds();

    static double cpuSeconds() {
        timespec now{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
    }
    double wall() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - wallStart).count(); }
    double cpu() const { return cpuSeconds() - cpuStart; }
};

long peakResidentKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "Usage: bench-nmea-parse FILE [REPEATS]\n");
        return 2;
    }
    logging::setLevel(logging::WARN);
    const int repeats = argc > 2 ? std::max(1, std::atoi(argv[2])) : 5;
    const QString path = QString::fromLocal8Bit(argv[1]);
    const long baseline = peakResidentKilobytes();

    // Once from the file, as the player loads a track: reading included, and the memory it takes.
    const Stopwatch loadWatch;
    TrackLoader::Result result = TrackLoader::load(path);
    const double loadWall = loadWatch.wall();
    const double loadCpu = loadWatch.cpu();
    const long peak = peakResidentKilobytes();
    const double fileBytes = static_cast<double>(QFileInfo(path).size());
    const double positionBytes = static_cast<double>(result.positions.capacity() * sizeof(TrackPosition));
    result = {};

    // Parsing alone, from bytes already in memory: the best of several runs.
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 1;
    const QByteArray bytes = file.readAll();
    double bestWall = 1e9;
    double bestCpu = 1e9;
    std::size_t positions = 0;
    for (int i = 0; i < repeats; ++i) {
        const Stopwatch watch;
        const auto parsed = TrackLoader::loadBytes(bytes);
        bestWall = std::min(bestWall, watch.wall());
        bestCpu = std::min(bestCpu, watch.cpu());
        positions = parsed.positions.size();
    }
    const double megabytes = bytes.size() / 1e6;
    std::printf("file: %.1f MB, %zu positions\n", megabytes, positions);
    std::printf("load from file: %.3f s processor time (%.0f MB/s), %.3f s wall\n", loadCpu, megabytes / loadCpu,
                loadWall);
    std::printf("parse in memory, best of %d: %.3f s processor time: %.0f MB/s, %.0f positions/s (wall %.3f s: %.0f MB/s)\n",
                repeats, bestCpu, megabytes / bestCpu, positions / bestCpu, bestWall, megabytes / bestWall);
    std::printf("peak memory of the load: %.1f MB above start (file %.1f MB + positions %.1f MB = %.1f MB)\n",
                (peak - baseline) / 1024.0, fileBytes / 1048576.0, positionBytes / 1048576.0,
                (fileBytes + positionBytes) / 1048576.0);
    std::printf("LOAD_CPU_SECONDS=%.6f\nLOAD_WALL_SECONDS=%.6f\n", loadCpu, loadWall);
    return 0;
}
