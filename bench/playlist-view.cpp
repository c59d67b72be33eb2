// Playlist table figures for a big card: time to set a model of N files over many days (headings, column
// widths), to paint the view, and per arrow-key step. Run under Xvfb: bench-playlist-view [--items N] (20000).
#include "core/PlaylistItemModel.h"
#include "ui/PlaylistView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>

#include <cstdio>

namespace {

// One-minute recordings, 200 a day.
Playlist::RawItems recordings(int count) {
    Playlist::RawItems items;
    const QDateTime start(QDate(2024, 1, 1), QTime(6, 0), Qt::LocalTime);
    for (int i = 0; i < count; ++i) {
        auto item = std::make_shared<Playlist::RawItem>();
        item->from = start.addDays(i / 200).addSecs(60 * (i % 200));
        item->to = item->from.addSecs(60);
        item->mainVideo = QFileInfo(QStringLiteral("/card/Normal/FILE%1F.MP4").arg(i, 6, 10, QLatin1Char('0')));
        items.push_back(item);
    }
    return items;
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    int count = 20000;
    for (int i = 1; i + 1 < argc; ++i)
        if (QString(argv[i]) == "--items")
            count = QString(argv[i + 1]).toInt();

    PlaylistRawItemModel model(recordings(count));
    PlaylistView view;
    view.resize(350, 700);
    view.show();
    app.processEvents();

    QElapsedTimer timer;
    timer.start();
    view.setModel(&model);
    const qint64 setModelMs = timer.elapsed();

    timer.restart();
    view.repaint();
    const qint64 paintMs = timer.elapsed();

    view.selectItem(count / 2);
    constexpr int kSteps = 400;
    timer.restart();
    for (int i = 0; i < kSteps; ++i) {
        QKeyEvent down(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
        QApplication::sendEvent(&view, &down);
    }
    view.repaint();
    const double stepUs = timer.nsecsElapsed() / 1000.0 / kSteps;

    std::printf("items %d, rows %d\n", count, model.rowCount());
    std::printf("setModel: %lld ms\npaint: %lld ms\narrow key step (with a heading every 200 rows): %.0f us\n",
                static_cast<long long>(setModelMs), static_cast<long long>(paintMs), stepUs);
    std::printf("selected item after %d steps from %d: %d\n", kSteps, count / 2, view.selectedItem());
    return 0;
}
