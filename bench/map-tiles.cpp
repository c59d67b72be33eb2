// Map tile figures: a cached tile through the tile scheme (request to reply end, in the page), and a full repaint
// of a 1920x1080 map view from the disk cache.
// Run under a display of at least 1920x1080: xvfb-run -a -s "-screen 0 1920x1080x24" build/bench/bench-map-tiles
#include "core/Startup.h"
#include "core/TileCache.h"
#include "ui/MapWidgetAdapter.h"
#include "ui/TileSchemeHandler.h"

#include <QApplication>
#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QEventLoop>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTimer>
#include <QWebEngineProfile>
#include <QWebEngineView>

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <vector>

namespace {
using Clock = std::chrono::steady_clock;
constexpr double kTileTargetMs = 2.0;
constexpr double kRepaintTargetMs = 150.0;
constexpr double kLatitude = 50.08, kLongitude = 14.42;
constexpr int kZoom = 15;

// A picture of the size and make-up of a street map tile (blocks, lines), some 10 to 20 KB as PNG.
QByteArray mapLikeTile(int seed) {
    QImage image(256, 256, QImage::Format_RGB32);
    image.fill(QColor(0xf2, 0xef, 0xe9));
    QPainter painter(&image);
    QRandomGenerator random(static_cast<quint32>(seed));
    for (int i = 0; i < 40; ++i) {
        painter.fillRect(random.bounded(256), random.bounded(256), 8 + random.bounded(40), 8 + random.bounded(40),
                         QColor(0xd9, 0xd0, 0xc9));
        painter.setPen(QPen(QColor(255, 255, 255), 1 + random.bounded(6)));
        painter.drawLine(random.bounded(256), random.bounded(256), random.bounded(256), random.bounded(256));
    }
    painter.setPen(Qt::black);
    painter.drawText(20, 128, QStringLiteral("Street %1").arg(seed));
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

int columnOf(double longitude, int z) {
    return static_cast<int>((longitude + 180.0) / 360.0 * std::pow(2.0, z));
}
int rowOf(double latitude, int z) {
    const double lat = latitude * M_PI / 180.0;
    return static_cast<int>((1.0 - std::log(std::tan(lat) + 1.0 / std::cos(lat)) / M_PI) / 2.0 * std::pow(2.0, z));
}

// Fills the cache with every tile a 1920x1080 view around the place needs at the zoom, and a margin; the same
// pictures go as plain files into `folder`/z/x/y.png, for the browser to read by itself as the reference.
int fillCache(TileCache& cache, const QString& folder) {
    std::vector<QByteArray> variants;
    for (int i = 0; i < 16; ++i)
        variants.push_back(mapLikeTile(i));
    int count = 0;
    const int cx = columnOf(kLongitude, kZoom), cy = rowOf(kLatitude, kZoom);
    for (int x = cx - 6; x <= cx + 6; ++x)
        for (int y = cy - 4; y <= cy + 4; ++y) {
            const QByteArray& picture = variants[static_cast<size_t>(count++) % variants.size()];
            cache.store({kZoom, x, y}, picture);
            const QString path = QStringLiteral("%1/%2/%3/%4.png").arg(folder).arg(kZoom).arg(x).arg(y);
            QDir().mkpath(QFileInfo(path).path());
            QFile file(path);
            if (file.open(QIODevice::WriteOnly))
                file.write(picture);
        }
    fmt::print("cache: {} tiles of {:.1f} KB on average\n", count,
               static_cast<double>(cache.usage().bytes) / count / 1024.0);
    return count;
}

QVariant evaluate(QWebEngineView& view, const QString& script) {
    std::optional<QVariant> result;
    view.page()->runJavaScript(script, [&](const QVariant& value) { result = value; });
    while (!result)
        QApplication::processEvents(QEventLoop::AllEvents, 20);
    return *result;
}

// Starts an asynchronous script that leaves its answer in window.benchAnswer, and waits for it.
QVariant awaitAnswer(QWebEngineView& view, const QString& script) {
    evaluate(view, QStringLiteral("window.benchAnswer = undefined; %1").arg(script));
    for (;;) {
        const QVariant answer = evaluate(view, QStringLiteral("window.benchAnswer"));
        if (answer.isValid() && !answer.isNull())
            return answer;
        QApplication::processEvents(QEventLoop::AllEvents, 20);
    }
}

void printFigure(const char* what, std::vector<double> samples, double target) {
    std::sort(samples.begin(), samples.end());
    const double median = samples[samples.size() / 2];
    fmt::print("{}: median {:.2f} ms, best {:.2f} ms, worst {:.2f} ms ({} runs); target {:.0f} ms, median/target "
               "{:.2f}\n",
               what, median, samples.front(), samples.back(), samples.size(), target, median / target);
}

double median(std::vector<double> samples) {
    std::sort(samples.begin(), samples.end());
    return samples[samples.size() / 2];
}

std::vector<double> numbers(const QVariant& list) {
    std::vector<double> values;
    for (const QVariant& value : list.toList())
        values.push_back(value.toDouble());
    return values;
}
} // namespace

int main(int argc, char** argv) {
    if (geteuid() == 0 && qEnvironmentVariableIsEmpty("QTWEBENGINE_DISABLE_SANDBOX"))
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    if (qEnvironmentVariableIsEmpty("QTWEBENGINE_CHROMIUM_FLAGS"))
        qputenv("QTWEBENGINE_CHROMIUM_FLAGS", "--disable-gpu");
    TileSchemeHandler::registerScheme();
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    provideWebChannelScript(QDir(QStringLiteral(REELVUE_RUN_DIR)));

    QTemporaryDir cacheDir, plainDir;
    TileCache cache(cacheDir.path(), TileCache::kDefaultMaxBytes);
    fillCache(cache, plainDir.path());
    // No server: every tile the page gets comes from the cache.
    TileSchemeHandler handler({QString(), cacheDir.path(), TileCache::kDefaultMaxBytes});

    QWebEngineView view;
    view.resize(1920, 1080);
    view.show();
    handler.install(view.page()->profile());
    MapWidgetAdapter adapter(&view, QUrl::fromLocalFile(QStringLiteral(REELVUE_RUN_DIR "/map/dist/index.html")));
    QEventLoop waiting;
    QObject::connect(&adapter, &MapWidgetAdapter::ready, &waiting, &QEventLoop::quit);
    QTimer::singleShot(60000, &waiting, &QEventLoop::quit);
    waiting.exec();
    fmt::print("view {}x{}, zoom {}\n", view.width(), view.height(), kZoom);
    evaluate(view, QStringLiteral("reelvueMap.map.setView([%1, %2], %3, {animate: false})")
                       .arg(kLatitude)
                       .arg(kLongitude)
                       .arg(kZoom));

    // One tile after the other, each at an address the browser has not seen (no memory cache), from creating the
    // request to the picture's end; the same with the tile as a plain file the browser reads by itself.
    const int cx = columnOf(kLongitude, kZoom), cy = rowOf(kLatitude, kZoom);
    const auto tileTimes = [&view](const QString& url) {
        return numbers(awaitAnswer(view, QStringLiteral(R"(
        (function () {
          var times = [], i = 0;
          function next() {
            if (i === 200) { window.benchAnswer = times; return; }
            var image = new Image(), start = performance.now();
            image.onload = image.onerror = function () { times.push(performance.now() - start); ++i; next(); };
            image.src = '%1?bench=' + i;
          }
          next();
        })();)")
                                             .arg(url)));
    };
    const std::vector<double> tile = tileTimes(QStringLiteral("reelvue-tiles:%1/%2/%3").arg(kZoom).arg(cx).arg(cy));
    const std::vector<double> plainTile =
        tileTimes(QUrl::fromLocalFile(QStringLiteral("%1/%2/%3/%4.png").arg(plainDir.path()).arg(kZoom).arg(cx).arg(cy))
                      .toString());
    printFigure("cached tile through the scheme handler (request to reply end, in the page)", tile, kTileTargetMs);
    printFigure("  the same tile as a plain file read by the browser itself (reference)", plainTile, kTileTargetMs);
    fmt::print("  scheme / plain file: {:.2f} (medians)\n", median(tile) / median(plainTile));

    // The whole view again, every tile at a new address: from the redraw to the layer's "load" and the next frame.
    const auto repaint = [&view](const QString& urlTemplate) {
        return numbers(awaitAnswer(view, QStringLiteral(R"(
        (function () {
          var tiles = reelvueMap.tiles, times = [], rounds = 0;
          tiles.setUrl('%1?v={v}', true);
          function round() {
            if (rounds === 15) { window.benchAnswer = times; return; }
            var start = performance.now();
            tiles.once('load', function () {
              requestAnimationFrame(function () {
                times.push(performance.now() - start);
                ++rounds;
                setTimeout(round, 100);
              });
            });
            tiles.options.v++;
            tiles.redraw();
          }
          round();
        })();)")
                                             .arg(urlTemplate)));
    };
    const std::vector<double> plain =
        repaint(QUrl::fromLocalFile(plainDir.path()).toString() + QStringLiteral("/{z}/{x}/{y}.png"));
    const std::vector<double> cached = repaint(TileSchemeHandler::urlTemplate());
    const int shown =
        evaluate(view, QStringLiteral("document.querySelectorAll('.leaflet-tile-loaded').length")).toInt();
    fmt::print("tiles in the view: {}\n", shown);
    printFigure("full repaint of the 1920x1080 view from the cache", cached, kRepaintTargetMs);
    printFigure("  the same view from plain files read by the browser itself (reference)", plain, kRepaintTargetMs);
    fmt::print("  cache through the scheme / plain files: {:.2f} (medians)\n", median(cached) / median(plain));
    return 0;
}
