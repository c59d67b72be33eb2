// Loads a card of 1,000 one-minute recordings with tracks and prints where the time and memory go.
// The card is generated once under /tmp (outside the repository): one tiny one-minute video made with
// ffmpeg, hard-linked as every front and rear file, and a 1 Hz NMEA track (RMC, GGA, GSA, VTG) for each.
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

bool makeCard(const QString& root) {
    if (QFile::exists(root + "/.complete"))
        return true;
    std::printf("Generating the card in %s (once)...\n", qPrintable(root));
    QDir(root).removeRecursively();
    QDir().mkpath(root + "/Normal");
    const QString video = root + "/one-minute.mp4";
    if (QProcess::execute("ffmpeg", {"-v", "error", "-y", "-f", "lavfi", "-i", "testsrc=size=160x90:rate=2", "-t", "60",
                                     "-c:v", "libx264", "-preset", "ultrafast", "-g", "2", "-pix_fmt", "yuv420p", video}) != 0)
        return false;
    const QDateTime start(QDate(2024, 6, 14), QTime(6, 0), Qt::LocalTime);
    for (int i = 0; i < kRecordings; ++i) {
        const QString base = root + "/Normal/" + start.addSecs(i * 60).toString("'FILE'yyMMdd-HHmmss");
        for (const char* camera : {"F.MP4", "R.MP4"})
            if (::link(QFile::encodeName(video).constData(), QFile::encodeName(base + camera).constData()) != 0)
                return false;
        QFile track(base + "F.NMEA");
        if (!track.open(QIODevice::WriteOnly) || track.write(trackOf(start.addSecs(i * 60), i)) < 0)
            return false;
    }
    QFile marker(root + "/.complete");
    return marker.open(QIODevice::WriteOnly);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    logging::setLevel(logging::WARN);
    const QString root = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("/tmp/reelvue-bench-card");
    if (!makeCard(root)) {
        std::fprintf(stderr, "Could not generate the card in %s\n", qPrintable(root));
        return 1;
    }

    PlaylistLoader loader;
    std::size_t rawItems = 0, trips = 0, parking = 0, positions = 0;
    QString error;
    QObject::connect(&loader, &PlaylistLoader::loaded,
                     [&](Playlist* playlist, PlaylistProcessedItemModel* t, PlaylistProcessedItemModel* p,
                         PlaylistRawItemModel* e, PlaylistRawItemModel* r) {
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
    QObject::connect(&loader, &PlaylistLoader::failed, [&](const QString& message) { error = message; });

    std::printf("%-6s %8s %8s %8s %8s %10s %8s %8s\n", "run", "total", "listing", "probing", "tracks", "processing",
                "models", "items");
    for (const char* run : {"first", "warm", "warm"}) {
        QElapsedTimer timer;
        timer.start();
        loader.loadDirectory(root);
        const qint64 total = timer.elapsed();
        if (!error.isEmpty()) {
            std::fprintf(stderr, "Load failed: %s\n", qPrintable(error));
            return 1;
        }
        const PlaylistLoader::Timings& t = loader.lastTimings();
        std::printf("%-6s %6lld ms %5lld ms %5lld ms %5lld ms %7lld ms %5lld ms %8zu\n", run, (long long)total,
                    (long long)t.discovery.listingMs, (long long)t.discovery.probingMs,
                    (long long)t.discovery.trackLoadingMs, (long long)t.processingMs, (long long)t.modelsMs, rawItems);
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%zu raw items, %zu positions, %zu trips, %zu parking periods\n", rawItems, positions, trips, parking);
    std::printf("Peak memory (max RSS): %.1f MB\n", usage.ru_maxrss / 1024.0);
    return 0;
}
