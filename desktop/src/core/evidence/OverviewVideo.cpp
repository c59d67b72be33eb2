// The overview of an interval: cameras side by side, re-encoded with a burned-in overlay.
#include "core/evidence/OverviewVideo.h"

#include "core/evidence/OverviewVideoCamera.h"
#include "core/evidence/OverviewVideoOutput.h"
#include "core/evidence/OverviewVideoOverlay.h"
#include "core/evidence/OverviewVideoPicture.h"
#include "core/evidence/OverviewVideoSound.h"
#include "logging/Logging.h"

#include <QElapsedTimer>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

using namespace evidence::detail;

namespace {

constexpr const char* kLogger = "core.OverviewVideo";
// Rates above this are thinned out: the overview is for reading what happened, not for frame analysis.
constexpr int kMaxFramesPerSecond = 60;
// Without any sound in the recordings, the silent track has this rate (that of most recorders).
constexpr int kDefaultSampleRate = 48000;

int even(double value) {
    return std::max(2, static_cast<int>(std::lround(value / 2.0)) * 2);
}

} // namespace

OverviewVideo::OverviewVideo(Playlist::RawItems items, TimeInterval interval, QString filePath,
                             TrackPositions positions, SpeedUnit speedUnit, QStringList cameraNames, QObject* parent)
    : OverviewVideo(std::move(items), std::move(interval), EncodingSettings{false, true, 0, std::move(filePath), 0},
                    std::move(positions), speedUnit, std::move(cameraNames), parent) {}

OverviewVideo::OverviewVideo(Playlist::RawItems items, TimeInterval interval, EncodingSettings settings,
                             TrackPositions positions, SpeedUnit speedUnit, QStringList cameraNames, QObject* parent)
    : BaseEncoder(std::move(items), std::move(interval), std::move(settings), parent),
      m_positions(std::move(positions)), m_speedUnit(speedUnit), m_cameraNames(std::move(cameraNames)) {
    m_settings.forceReencoding = true;
}

QString OverviewVideo::defaultFontFile() {
    return QStringLiteral("/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf");
}

void OverviewVideo::encode() {
    m_canceled = false;
    setFailure({}, false);
    const QString target = m_settings.filePath;
    LOG_INFO(kLogger, "Start writing the overview to '{}'", target.toStdString());
    QElapsedTimer stopwatch;
    stopwatch.start();
    emit progress(0);
    if (const exporttarget::Refusal refused = targetRefusal()) {
        LOG_ERROR(kLogger, "Failed to write the overview to '{}': {}", target.toStdString(), refused.text.toStdString());
        setFailure(refused.text, true);
        emit done(false);
        return;
    }
    PartialFile partial(target);
    bool stopped = false; // the user's cancel, as last seen before the file took its place
    try {
        partial.create();
        partial.closeDescriptor(); // the muxer opens the file by its name
        run(partial.path());
        stopped = m_canceled;
        if (!stopped)
            partial.commit(m_permissions.overwrite);
    } catch (const std::exception& error) {
        LOG_ERROR(kLogger, "Failed to write the overview to '{}': {}", target.toStdString(), error.what());
        partial.discard();
        setFailure(QString::fromStdString(error.what()), dynamic_cast<const exporttarget::TargetError*>(&error) != nullptr);
        emit done(false);
        return;
    }
    if (stopped) {
        partial.discard();
        emit canceled();
        return;
    }
    LOG_INFO(kLogger, "Overview '{}' has been finished ({} ms)", target.toStdString(), stopwatch.elapsed());
    emit done(true);
}

void OverviewVideo::run(const QString& writePath) {
    // The overview runs from the first recorded moment of the interval to the last.
    QDateTime start, end;
    for (const auto& item : m_items) {
        if (!(m_interval.from < item->to) || !(item->from < m_interval.to))
            continue;
        const QDateTime from = std::max(item->from, m_interval.from);
        const QDateTime to = std::min(item->to, m_interval.to);
        if (!start.isValid() || from < start)
            start = from;
        if (!end.isValid() || end < to)
            end = to;
    }
    if (!start.isValid() || !(start < end))
        fail("No recording in the interval");
    const double totalMs = start.msecsTo(end);

    std::vector<std::unique_ptr<OverviewCamera>> cameras;
    for (int camera = 0; camera < 2; ++camera) {
        auto pictures = std::make_unique<OverviewCamera>(m_items, camera, start, end, camera == 0 && !m_settings.onlyVideo);
        if (pictures->hasFiles())
            cameras.push_back(std::move(pictures));
    }
    if (cameras.empty())
        fail("No recording in the interval");
    // The sound comes from the main camera; its first file tells the sound's format.
    OverviewCamera& main = *cameras.front();
    const AVFrame* first = main.firstPicture();
    if (!first)
        fail("None of the main camera's files could be read");
    const int height = even(first->height);
    std::vector<int> widths;
    for (auto& camera : cameras) {
        const AVFrame* picture = camera->firstPicture();
        if (!picture) {
            widths.push_back(0);
            continue;
        }
        widths.push_back(even(shownWidth(*picture) * height / picture->height));
    }
    // Cameras whose files all failed drop out of the picture.
    for (std::size_t i = cameras.size(); i-- > 0;) {
        if (widths[i] == 0) {
            cameras.erase(cameras.begin() + static_cast<std::ptrdiff_t>(i));
            widths.erase(widths.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }
    AVRational frameRate = main.frameRate();
    if (frameRate.num <= 0 || frameRate.den <= 0 || av_q2d(frameRate) > kMaxFramesPerSecond)
        frameRate = AVRational{25, 1};

    OverviewCanvas canvas(widths, height);
    const int rotation = m_settings.rotation;
    const bool sideways = rotation == 1 || rotation == 3;
    const int sampleRate = main.sampleRate() > 0 ? main.sampleRate() : kDefaultSampleRate;
    const int channels = m_settings.onlyVideo ? 0 : main.sampleRate() > 0 ? std::min(main.channels(), 2) : 1;
    OverviewOutput output(m_settings.filePath, writePath, sideways ? canvas.height() : canvas.width(),
                          sideways ? canvas.width() : canvas.height(), frameRate, sampleRate, channels);
    std::unique_ptr<OverviewSound> sound;
    if (channels > 0) {
        sound = std::make_unique<OverviewSound>(output, totalMs);
        main.setSound(sound.get());
    }

    QStringList names;
    for (std::size_t i = 0; i < cameras.size(); ++i)
        names << m_cameraNames.value(static_cast<int>(i));
    const QString fontFile = defaultFontFile();
    if (!QFileInfo::exists(fontFile))
        fail(fmt::format("The font of the overlay is missing: '{}'", fontFile.toStdString()));
    OverviewTextFilter overlay(canvas, output.video->time_base, names, fontFile, rotation);

    const std::int64_t frames = static_cast<std::int64_t>(std::ceil(totalMs * av_q2d(frameRate) / 1000.0));
    int lastPercent = 0;
    std::vector<const AVFrame*> pictures(cameras.size());
    const QString noFix = tr("no GPS fix");
    for (std::int64_t n = 0; n < frames && !m_canceled; ++n) {
        const double ms = n * 1000.0 / av_q2d(frameRate);
        for (std::size_t i = 0; i < cameras.size(); ++i)
            pictures[i] = cameras[i]->pictureAt(ms);
        FramePtr picture = canvas.compose(pictures);
        picture->pts = n;
        const QDateTime moment = start.addMSecs(static_cast<qint64>(ms));
        const QString text =
            evidence::overlayText(moment, evidence::fixInForce(m_positions, moment), m_speedUnit, noFix);
        overlay.draw(std::move(picture), text,
                     [&output](const AVFrame* drawn) { output.encode(output.video.get(), output.videoStream, drawn); });
        const int percent = static_cast<int>((n + 1) * 100 / frames);
        if (percent > lastPercent) {
            lastPercent = percent;
            emit progress(percent);
        }
    }
    if (m_canceled)
        return; // the caller removes the partial file; the output closes without a trailer
    if (sound) {
        main.drainSound(totalMs);
        sound->finish();
    }
    output.finish();
}
