// The background playlist load: discovery, processing into trips and parking, the table models.
#include "core/PlaylistLoader.h"

#include "core/Mp4Boxes.h"
#include "core/PlaylistRawItemProcessor.h"
#include "logging/Logging.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QThread>

extern "C" {
#include <libavformat/avformat.h>
}

#include <memory>

namespace {

constexpr const char* kLogger = "ui.PlaylistLoader";

// Share of the whole load that ends with discovery, and with processing; the models take the rest.
constexpr int kDiscoveredPercent = 90;
constexpr int kProcessedPercent = 97;

} // namespace

PlaylistLoader::PlaylistLoader(QObject* parent) : QObject(parent) { qRegisterMetaType<Playlist*>("Playlist*"); }

TrackAnalyzer::Settings PlaylistLoader::analyzerSettings() {
    TrackAnalyzer::Settings settings;
    settings.initialState = TrackAnalyzer::Trip;
    settings.minSatellites = 0;
    settings.speedThreshold = 5;
    settings.tripStartTime = 5;
    settings.parkingStartTime = 300;
    settings.parkingRadius = 50;
    settings.stopRadius = 100;
    return settings;
}

std::int64_t PlaylistLoader::videoDurationMs(const QString& path) { return probeVideo(path).durationMs; }

PlaylistDiscovery::VideoProbe PlaylistLoader::probeVideo(const QString& path) {
    PlaylistDiscovery::VideoProbe probe;
    const auto unplayable = [&](int error) {
        LOG_WARN(kLogger, "Unable to get duration of video {}", path.toStdString());
        char text[AV_ERROR_MAX_STRING_SIZE] = {};
        av_strerror(error, text, sizeof text);
        probe.damage =
            hasIndexLost(topLevelBoxes(path)) ? Playlist::Damage::IndexMissing : Playlist::Damage::Unreadable;
        probe.damageDetail = QString::fromUtf8(text);
        return probe;
    };
    AVFormatContext* context = nullptr;
    const QByteArray encodedPath = QFile::encodeName(path); // the name's own bytes: it need not be UTF-8
    // Recorder files are MP4 or MOV: naming the demuxer saves probing the format of every file.
    const QString suffix = QFileInfo(path).suffix().toLower();
    const AVInputFormat* format =
        suffix == QLatin1String("mp4") || suffix == QLatin1String("mov") ? av_find_input_format("mov") : nullptr;
    int result = avformat_open_input(&context, encodedPath.constData(), format, nullptr);
    // A file whose name lies about its format is opened again with probing.
    if (result < 0 && format)
        result = avformat_open_input(&context, encodedPath.constData(), nullptr, nullptr);
    if (result < 0)
        return unplayable(result);
    std::unique_ptr<AVFormatContext*, void (*)(AVFormatContext**)> closer(&context, &avformat_close_input);
    if (context->duration == AV_NOPTS_VALUE && (result = avformat_find_stream_info(context, nullptr)) < 0)
        return unplayable(result);
    probe.durationMs = context->duration == AV_NOPTS_VALUE ? 0 : context->duration / 1000;
    // "2024-03-07T14:05:09.000000Z": the moment the recording began, as the camera's clock had it.
    if (const AVDictionaryEntry* created = av_dict_get(context->metadata, "creation_time", nullptr, 0))
        probe.creationTime = QDateTime::fromString(QString::fromLatin1(created->value), Qt::ISODateWithMs);
    return probe;
}

void PlaylistLoader::loadDirectory(const QString& dir) { load(Source::Directory, dir); }

void PlaylistLoader::loadFile(const QString& filePath) { load(Source::File, filePath); }

void PlaylistLoader::emitProgressSignal(int percent) {
    if (percent <= m_lastPercent)
        return;
    m_lastPercent = percent;
    emit progress(percent);
}

void PlaylistLoader::cancel() { m_cancel = true; }

void PlaylistLoader::load(Source source, const QString& path) {
    m_cancel = false;
    m_lastPercent = -1;
    m_timings = {};
    emit loadStarted();
    emitProgressSignal(0);
    LOG_INFO(kLogger, "Load playlist from '{}'", path.toStdString());

    try {
        PlaylistDiscovery discovery(
            &PlaylistLoader::probeVideo,
            [this](int percent) { emitProgressSignal(percent * kDiscoveredPercent / 100); }, &m_cancel);
        discovery.setThreadCount(m_threads);
        Playlist::RawItems rawItems =
            source == Source::Directory ? discovery.fromDirectory(path) : discovery.fromFile(path);
        m_timings.discovery = discovery.timings();

        QElapsedTimer timer;
        timer.start();
        PlaylistRawItemProcessor processor(analyzerSettings(), kGapThresholdSeconds);
        for (const Playlist::RawItemPtr& item : rawItems) {
            if (m_cancel)
                throw PlaylistLoadCanceled();
            processor.process(item);
        }
        auto playlist = std::make_unique<Playlist>(std::move(rawItems), processor.processedItems());
        m_timings.processingMs = timer.restart();
        LOG_INFO(kLogger, "Playlist loaded");
        emitProgressSignal(kProcessedPercent);

        auto tripModel = std::make_unique<PlaylistProcessedItemModel>(playlist->processedItemsOfKind(Playlist::Trip),
                                                                      Playlist::Trip);
        auto parkingModel = std::make_unique<PlaylistProcessedItemModel>(
            playlist->processedItemsOfKind(Playlist::ParkingPeriod), Playlist::ParkingPeriod);
        auto eventModel = std::make_unique<PlaylistRawItemModel>(playlist->rawItemsOfCategory(Playlist::Event));
        auto rawModel = std::make_unique<PlaylistRawItemModel>(playlist->rawItems());
        LOG_INFO(kLogger, "Playlist item models initialized");
        if (m_cancel)
            throw PlaylistLoadCanceled();

        // The models are used on the GUI thread from now on.
        if (QCoreApplication::instance()) {
            QThread* guiThread = QCoreApplication::instance()->thread();
            for (QObject* model : {static_cast<QObject*>(tripModel.get()), static_cast<QObject*>(parkingModel.get()),
                                   static_cast<QObject*>(eventModel.get()), static_cast<QObject*>(rawModel.get())})
                model->moveToThread(guiThread);
        }
        m_timings.modelsMs = timer.elapsed();
        emitProgressSignal(100);
        emit loaded(playlist.release(), tripModel.release(), parkingModel.release(), eventModel.release(),
                    rawModel.release());
    } catch (const PlaylistLoadCanceled&) {
        LOG_INFO(kLogger, "Playlist load canceled");
        emit canceled();
    } catch (const std::exception& error) {
        LOG_ERROR(kLogger, "{} exception: {}", "PlaylistLoader::load", error.what());
        emit failed(QString::fromStdString(error.what()));
    }
}
