// Loads a card of 1,000 one-minute recordings with tracks and prints where the time and memory go, and
// the same recordings named and filed as today's cameras do (four cameras a recording, a folder a day).
// The cards are generated once under /tmp (outside the repository): one tiny one-minute video made with
// ffmpeg, hard-linked as every camera's file, and a 1 Hz NMEA track (RMC, GGA, GSA, VTG) for each.
#include "core/PlaylistLoader.h"
#include "logging/Logging.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include <sys/resource.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

constexpr int kRecordings = 1000;

QString checksummed(const QByteArray& body) {
    unsigned char sum = 0;
    for (char c : body)
        sum ^= static_cast<unsigned char>(c);
    return QStringLiteral("$%1*%2\r\n").arg(QString::fromLatin1(body), QString::number(sum, 16).rightJustified(2, '0').toUpper());
}

QByteArray trackOf(const QDateTime& localStart, int index) {
    QString text;
    const QDateTime utcStart = localStart.toUTC();
    for (int second = 0; second < 60; ++second) {
        const QDateTime utc = utcStart.addSecs(second);
        const double travelled = (index * 60 + second) * 12.0; // metres along a straight road, 43 km/h
        const double latitude = 49.0 + travelled / 111195.0;
        const QString time = utc.toString("HHmmss") + ".00";
        const QString position = QStringLiteral("%1%2,N,01430.0000,E")
                                     .arg(int(latitude), 2, 10, QLatin1Char('0'))
                                     .arg((latitude - int(latitude)) * 60, 7, 'f', 4, QLatin1Char('0'));
        text += checksummed(QStringLiteral("GPRMC,%1,A,%2,23.33,0.0,%3,,,A").arg(time, position, utc.toString("ddMMyy")).toLatin1());
        text += checksummed(QStringLiteral("GPGGA,%1,%2,1,09,0.9,231.0,M,44.0,M,,").arg(time, position).toLatin1());
        text += checksummed(QByteArray("GPGSA,A,3,02,05,07,09,13,16,20,26,29,,,,1.6,0.9,1.3"));
        text += checksummed(QByteArray("GPVTG,0.0,T,,M,23.33,N,43.20,K,A"));
    }
    return text.toLatin1();
}

// The recorder's own names (FILE240614-060000F.MP4 and R, in Normal/), or today's cameras' names
// (RecentClips/2024-06-14/2024-06-14_06-00-00-front.mp4, back, left_repeater, right_repeater).
enum class Naming { Recorder, TodaysCamera };

bool link(const QString& from, const QString& to) {
    return ::link(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

bool makeCard(const QString& root, Naming naming) {
    if (QFile::exists(root + "/.complete"))
        return true;
    std::printf("Generating the card in %s (once)...\n", qPrintable(root));
    QDir(root).removeRecursively();
    QDir().mkpath(root);
    const QString video = root + "/one-minute.mp4";
    if (QProcess::execute("ffmpeg", {"-v", "error", "-y", "-f", "lavfi", "-i", "testsrc=size=160x90:rate=2", "-t", "60",
                                     "-c:v", "libx264", "-preset", "ultrafast", "-g", "2", "-pix_fmt", "yuv420p", video}) != 0)
        return false;
    const QDateTime start(QDate(2024, 6, 14), QTime(6, 0), Qt::LocalTime);
    for (int i = 0; i < kRecordings; ++i) {
        const QDateTime begin = start.addSecs(i * 60);
        QString trackPath;
        if (naming == Naming::Recorder) {
            QDir().mkpath(root + "/Normal");
            const QString base = root + "/Normal/" + begin.toString("'FILE'yyMMdd-HHmmss");
            if (!link(video, base + "F.MP4") || !link(video, base + "R.MP4"))
                return false;
            trackPath = base + "F.NMEA";
        } else {
            const QString folder = root + "/RecentClips/" + begin.toString("yyyy-MM-dd");
            QDir().mkpath(folder);
            const QString base = folder + "/" + begin.toString("yyyy-MM-dd_HH-mm-ss-");
            for (const char* camera : {"front", "back", "left_repeater", "right_repeater"})
                if (!link(video, base + camera + ".mp4"))
                    return false;
            trackPath = base + "front.nmea";
        }
        QFile track(trackPath);
        if (!track.open(QIODevice::WriteOnly) || track.write(trackOf(begin, i)) < 0)
            return false;
    }
    QFile marker(root + "/.complete");
    return marker.open(QIODevice::WriteOnly);
}

// Loads `root` three times (the first from a cold start of this process) and prints each run; returns the
// fastest warm run in milliseconds, or -1 when the load failed.
qint64 loadCard(PlaylistLoader& loader, const QString& root, const char* card) {
    std::size_t rawItems = 0, trips = 0, parking = 0, positions = 0;
    QString error;
    const QMetaObject::Connection loaded = QObject::connect(
        &loader, &PlaylistLoader::loaded,
        [&](Playlist* playlist, PlaylistProcessedItemModel* t, PlaylistProcessedItemModel* p, PlaylistRawItemModel* e,
            PlaylistRawItemModel* r) {
            rawItems = playlist->rawItems().size();
            trips = playlist->processedItemsOfKind(Playlist::Trip).size();
            parking = playlist->processedItemsOfKind(Playlist::ParkingPeriod).size();
            positions = 0;
            for (const auto& item : playlist->rawItems())
                positions += item->track ? item->track->positions.size() : 0;
            delete playlist;
            delete t;
            delete p;
            delete e;
            delete r;
        });
    const QMetaObject::Connection failed =
        QObject::connect(&loader, &PlaylistLoader::failed, [&](const QString& message) { error = message; });

    qint64 fastestWarm = -1;
    for (const char* run : {"first", "warm", "warm"}) {
        QElapsedTimer timer;
        timer.start();
        loader.loadDirectory(root);
        const qint64 total = timer.elapsed();
        if (!error.isEmpty()) {
            std::fprintf(stderr, "Load of %s failed: %s\n", qPrintable(root), qPrintable(error));
            fastestWarm = -1;
            break;
        }
        const PlaylistLoader::Timings& t = loader.lastTimings();
        std::printf("%-9s %-6s %6lld ms %5lld ms %5lld ms %5lld ms %7lld ms %5lld ms %8zu\n", card, run,
                    (long long)total, (long long)t.discovery.listingMs, (long long)t.discovery.probingMs,
                    (long long)t.discovery.trackLoadingMs, (long long)t.processingMs, (long long)t.modelsMs, rawItems);
        if (std::strcmp(run, "warm") == 0 && (fastestWarm < 0 || total < fastestWarm))
            fastestWarm = total;
    }
    QObject::disconnect(loaded);
    QObject::disconnect(failed);
    if (fastestWarm >= 0)
        std::printf("%-9s %zu raw items, %zu positions, %zu trips, %zu parking periods\n", card, rawItems, positions,
                    trips, parking);
    return fastestWarm;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    logging::setLevel(logging::WARN);
    const QString root = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("/tmp/reelvue-bench-card");
    const QString named = root + "-named";
    if (!makeCard(root, Naming::Recorder) || !makeCard(named, Naming::TodaysCamera)) {
        std::fprintf(stderr, "Could not generate the cards in %s\n", qPrintable(root));
        return 1;
    }

    PlaylistLoader loader;
    std::printf("%-9s %-6s %8s %8s %8s %8s %10s %8s %8s\n", "card", "run", "total", "listing", "probing", "tracks",
                "processing", "models", "items");
    const qint64 recorder = loadCard(loader, root, "recorder");
    const qint64 todays = loadCard(loader, named, "today's");
    if (recorder < 0 || todays < 0)
        return 1;
    std::printf("Fastest warm load: recorder names %lld ms, today's names (4 cameras) %lld ms, ratio %.2f\n",
                (long long)recorder, (long long)todays, recorder > 0 ? double(todays) / double(recorder) : 0.0);
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("Peak memory (max RSS): %.1f MB\n", usage.ru_maxrss / 1024.0);
    return 0;
}
