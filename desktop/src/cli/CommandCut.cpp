// reelvue-cli cut: saves an interval of a card, folder or video as one new video, by stream copy or
// re-encoded (turned, and with --overlay the time, speed and position burned in), with a progress bar on standard error; Ctrl+C, SIGTERM and SIGHUP cancel and remove
// the partial file. It never writes over a recording it reads or into the card, nor over an existing file
// without --force.
#include "cli/CliCommand.h"
#include "cli/CliRecordings.h"
#include "cli/SignalCancel.h"
#include "core/PlaylistLoader.h"
#include "core/encoding/Coder.h"
#include "core/encoding/CutItems.h"
#include "core/encoding/Remuxer.h"
#include "core/evidence/OverlayCut.h"
#include "core/evidence/OverviewVideoOverlay.h"
#include "logging/Logging.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFileInfo>
#include <QThread>

extern "C" {
#include <libavutil/log.h>
}

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <vector>

namespace {

const QString kTimeFormat = QStringLiteral("yyyy-MM-ddTHH:mm:ss");
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;
constexpr int kExitSignaled = 128; // plus the signal's number, as shells report a program ended by it

struct CutRequest {
    bool force = false;
    QString path;
    TimeInterval interval;
    EncodingSettings settings;
};

std::optional<CutRequest> parseArguments(const QStringList& arguments, QString& error) {
    CutRequest request;
    QString from;
    QString to;
    for (int i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        auto value = [&]() -> QString {
            if (i + 1 >= arguments.size()) {
                error = QStringLiteral("%1 needs a value").arg(argument);
                return {};
            }
            return arguments[++i];
        };
        if (argument == QLatin1String("--from")) {
            from = value();
        } else if (argument == QLatin1String("--to")) {
            to = value();
        } else if (argument == QLatin1String("-o") || argument == QLatin1String("--output")) {
            request.settings.filePath = value();
        } else if (argument == QLatin1String("--camera")) {
            const QString camera = value();
            if (camera == QLatin1String("main"))
                request.settings.camera = 0;
            else if (camera == QLatin1String("rear"))
                request.settings.camera = 1;
            else if (error.isEmpty())
                error = QStringLiteral("--camera must be main or rear, not '%1'").arg(camera);
        } else if (argument == QLatin1String("--only-video")) {
            request.settings.onlyVideo = true;
        } else if (argument == QLatin1String("--force")) {
            request.force = true;
        } else if (argument == QLatin1String("--reencode")) {
            request.settings.forceReencoding = true;
        } else if (argument == QLatin1String("--overlay")) {
            request.settings.burnInOverlay = true;
            request.settings.forceReencoding = true; // text is drawn into the pictures
        } else if (argument == QLatin1String("--rotation")) {
            const QString degrees = value();
            const int index = QStringList{"0", "90", "180", "270"}.indexOf(degrees);
            if (index < 0 && error.isEmpty())
                error = QStringLiteral("--rotation must be 0, 90, 180 or 270, not '%1'").arg(degrees);
            request.settings.rotation = std::max(index, 0);
        } else if (argument.startsWith(QLatin1Char('-'))) {
            error = QStringLiteral("Unknown option: %1").arg(argument);
        } else if (request.path.isEmpty()) {
            request.path = argument;
        } else {
            error = QStringLiteral("Unexpected argument: %1").arg(argument);
        }
        if (!error.isEmpty())
            return std::nullopt;
    }
    if (request.path.isEmpty() || from.isEmpty() || to.isEmpty() || request.settings.filePath.isEmpty()) {
        error = QStringLiteral("PATH, --from, --to and -o are required");
        return std::nullopt;
    }
    request.interval.from = QDateTime::fromString(from, kTimeFormat);
    request.interval.to = QDateTime::fromString(to, kTimeFormat);
    if (!request.interval.from.isValid() || !request.interval.to.isValid()) {
        error = QStringLiteral("Times are written as %1 (local time)").arg(kTimeFormat);
        return std::nullopt;
    }
    if (!(request.interval.from < request.interval.to)) {
        error = QStringLiteral("--from must come before --to");
        return std::nullopt;
    }
    if (request.settings.rotation != 0 && !request.settings.forceReencoding) {
        error = QStringLiteral("--rotation needs --reencode: a stream copy cannot turn the picture");
        return std::nullopt;
    }
    request.settings.filePath = QFileInfo(request.settings.filePath).absoluteFilePath();
    return request;
}

// The recordings of the path, as the player finds them; an empty list and a message when there are none.
Playlist::RawItems loadRecordings(const QString& path, QString& error) {
    Playlist::RawItems items;
    PlaylistLoader loader;
    QObject::connect(&loader, &PlaylistLoader::loaded,
                     [&](Playlist* playlist, PlaylistProcessedItemModel* trips, PlaylistProcessedItemModel* parking,
                         PlaylistRawItemModel* events, PlaylistRawItemModel* raw) {
                         std::unique_ptr<Playlist> owned(playlist);
                         items = owned->rawItems();
                         delete trips;
                         delete parking;
                         delete events;
                         delete raw;
                     });
    QObject::connect(&loader, &PlaylistLoader::failed, [&](const QString& message) { error = message; });
    if (QFileInfo(path).isDir())
        loader.loadDirectory(path);
    else
        loader.loadFile(path);
    if (items.empty() && error.isEmpty())
        error = QStringLiteral("No recordings found in %1").arg(path);
    return items;
}

void drawProgressBar(int percent) {
    constexpr int kWidth = 40;
    static int drawn = -1;
    const int clamped = std::clamp(percent, 0, 100);
    if (clamped == drawn)
        return;
    drawn = clamped;
    const int filled = clamped * kWidth / 100;
    std::fprintf(stderr, "\r[%s%s] %3d%%", std::string(filled, '#').c_str(), std::string(kWidth - filled, '.').c_str(),
                 clamped);
    std::fflush(stderr);
}

int runCut(const QStringList& arguments) {
    QString error;
    const std::optional<CutRequest> request = parseArguments(arguments, error);
    if (!request) {
        cliError(error);
        return kExitUsage;
    }
    const Playlist::RawItems items = loadRecordings(request->path, error);
    if (items.empty()) {
        cliError(error);
        return kExitFailed;
    }
    if (encoding::cutLengthMs(items, request->interval) <= 0) {
        cliError(QStringLiteral("Nothing was recorded between %1 and %2")
                     .arg(request->interval.from.toString(kTimeFormat), request->interval.to.toString(kTimeFormat)));
        return kExitFailed;
    }

    const exporttarget::Permissions permissions = cliPermissions(request->path, request->force);
    const exporttarget::Refusal refused = exporttarget::refusal(
        request->settings.filePath, exporttarget::inputFiles(items), permissions);
    if (refused) {
        cliError(cliRefusalText(refused));
        return kExitFailed;
    }

    // FFmpeg's own chatter (encoder statistics) only when the log is detailed too.
    if (!logging::isEnabled(logging::DEBUG))
        av_log_set_level(AV_LOG_ERROR);
    std::unique_ptr<BaseEncoder> encoder;
    if (request->settings.burnInOverlay)
        encoder = overlaycut::make(items, request->interval, request->settings, evidence::localeSpeedUnit(),
                                   request->settings.camera == 1 ? QStringLiteral("Rear") : QStringLiteral("Front"));
    else if (request->settings.forceReencoding)
        encoder = std::make_unique<Coder>(items, request->interval, request->settings);
    else
        encoder = std::make_unique<Remuxer>(items, request->interval, request->settings);
    encoder->setPermissions(permissions);
    const auto* cutEncoder = dynamic_cast<const CutEncoder*>(encoder.get()); // tells of a short cut

    QThread worker;
    encoder->moveToThread(&worker);
    QEventLoop loop;
    int exitCode = kExitFailed;
    QObject::connect(encoder.get(), &BaseEncoder::progress, &loop, [&encoder](int percent) {
        // encode() clears the flag as it starts; a signal that came just before must not be lost.
        if (SignalCancel::received() != 0)
            encoder->cancel();
        drawProgressBar(percent);
    });
    QObject::connect(encoder.get(), &BaseEncoder::done, &loop, [&](bool ok) {
        exitCode = ok ? 0 : kExitFailed;
        loop.quit();
    });
    QObject::connect(encoder.get(), &BaseEncoder::canceled, &loop, [&] {
        exitCode = kExitSignaled + SignalCancel::received();
        loop.quit();
    });
    worker.start();
    {
        const SignalCancel cancelOnSignals(encoder.get());
        QMetaObject::invokeMethod(encoder.get(), "encode", Qt::QueuedConnection);
        loop.exec();
    }
    worker.quit();
    worker.wait();
    std::fputc('\n', stderr);

    const QString output = request->settings.filePath;
    if (exitCode == 0) {
        cliPrint(output + QLatin1Char('\n'));
        if (cutEncoder && cutEncoder->wroteLessThanAsked())
            cliError(QStringLiteral("Only %1 s of the %2 s asked were written: the recordings end early or could not "
                                    "be read (the log above tells which)")
                         .arg(cutEncoder->writtenMs() / 1000.0, 0, 'f', 1)
                         .arg(cutEncoder->askedMs() / 1000.0, 0, 'f', 1));
    } else if (exitCode == kExitFailed) {
        QString message = QStringLiteral("Failed to save the cut to %1: %2").arg(output, encoder->failureReason());
        // Another container or re-encoding cannot help a full disk or a missing folder.
        if (!encoder->failedOnTarget())
            message += request->settings.forceReencoding
                           ? QStringLiteral("\nTry another container or --only-video.")
                           : QStringLiteral("\nTry another container or --only-video; if all else fails, --reencode.");
        cliError(message);
    } else {
        cliError(QStringLiteral("Canceled; the partial file %1 was removed").arg(output));
    }
    return exitCode;
}

const CliCommandRegistration registration{
    {"cut", "PATH --from T --to T -o OUT [--camera main|rear] [--only-video] [--reencode] [--rotation 0|90|180|270] "
            "[--overlay] [--force]",
     "Save an interval (times yyyy-MM-ddTHH:mm:ss, local) of a card, folder or video as a new video; --overlay "
     "re-encodes it with the time, speed and position burned in",
     &runCut}};

} // namespace
