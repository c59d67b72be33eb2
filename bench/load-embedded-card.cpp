// Loads a card of 1,000 one-minute recordings whose GPS tracks are embedded in the videos (no track files) and
// prints the time of each run; the target is 2 s warm. The same card with track files is bench-load-card.
// The card is generated once under /tmp (outside the repository): one tiny one-minute video made with ffmpeg,
// copied for every recording with a store of its own (freeGPS, GPMF, CAMM and NMEA text in turn).
#include "core/PlaylistLoader.h"
#include "logging/Logging.h"
#include "support/EmbeddedGps.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include <cstdio>

namespace gps = testsupport::gps;

namespace {

constexpr int kRecordings = 1000;

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
    const QDateTime start(QDate(2024, 6, 14), QTime(6, 0), Qt::UTC);
    for (int i = 0; i < kRecordings; ++i) {
        const QString path = root + QStringLiteral("/Normal/MOVI%1.MP4").arg(i, 4, 10, QLatin1Char('0'));
        const std::vector<gps::Fix> fixes = gps::drive(start.addSecs(i * 60), 60);
        bool added = QFile::copy(video, path);
        switch (i % 4) {
        case 0: added = added && gps::addFreeGpsListed(path, gps::FreeGpsLayout::Plain, fixes); break;
        case 1: added = added && gps::addGpmfTrack(path, fixes, false); break;
        case 2: added = added && gps::addCammTrack(path, fixes); break;
        default: added = added && gps::addNmeaTextTrack(path, fixes); break;
        }
        if (!added)
            return false;
    }
    QFile marker(root + "/.complete");
    return marker.open(QIODevice::WriteOnly);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    logging::setLevel(logging::WARN);
    const QString root = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("/tmp/reelvue-bench-embedded-card");
    if (!makeCard(root)) {
        std::fprintf(stderr, "Could not generate the card in %s\n", qPrintable(root));
        return 1;
    }

    PlaylistLoader loader;
    std::size_t rawItems = 0, trips = 0, positions = 0, withTrack = 0;
    QString error;
    QObject::connect(&loader, &PlaylistLoader::loaded,
                     [&](Playlist* playlist, PlaylistProcessedItemModel* t, PlaylistProcessedItemModel* p,
                         PlaylistRawItemModel* e, PlaylistRawItemModel* r) {
                         rawItems = playlist->rawItems().size();
                         trips = playlist->processedItemsOfKind(Playlist::Trip).size();
                         positions = withTrack = 0;
                         for (const auto& item : playlist->rawItems()) {
                             positions += item->track ? item->track->positions.size() : 0;
                             withTrack += item->track ? 1 : 0;
                         }
                         delete playlist;
                         delete t;
                         delete p;
                         delete e;
                         delete r;
                     });
    QObject::connect(&loader, &PlaylistLoader::failed, [&](const QString& message) { error = message; });

    std::printf("%-6s %8s %8s %8s %8s\n", "run", "total", "listing", "probing", "tracks");
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
        std::printf("%-6s %5lld ms %5lld ms %5lld ms %5lld ms\n", run, (long long)total, (long long)t.discovery.listingMs,
                    (long long)t.discovery.probingMs, (long long)t.discovery.trackLoadingMs);
    }
    std::printf("%zu raw items, %zu with an embedded track, %zu positions, %zu trips (target: 2000 ms warm)\n", rawItems,
                withTrack, positions, trips);
    return 0;
}
