// reelvue-cli track PATH --format F [--from T] [--to T] [--attach FILE [--offset S]] -o OUT: saves the GPS
// track of recordings in one of the player's track formats, as its "Save track" does; --attach gives the
// recordings without a track the positions of a phone's or logger's track, moved by S seconds. It never writes over a file it reads or
// into the card, nor over an existing file without --force.
#include "cli/CliCommand.h"
#include "cli/CliRecordings.h"
#include "core/TrackAttachment.h"
#include "core/TrackExtracter.h"
#include "core/TrackFileReader.h"

#include <QFileInfo>

namespace {

const char* const kUsage =
    "PATH --format nmea|kml|gpx|csv|plt [--from T] [--to T] [--attach FILE [--offset S]] -o OUT [--force]";

int usageError(const QString& message) {
    cliError(QStringLiteral("%1\nUsage: reelvue-cli track %2\nT is %3 in local time")
                 .arg(message, QLatin1String(kUsage), QLatin1String(kCliTimeFormat)));
    return 2;
}

// An end that was not given reaches past any recording.
QDateTime endOr(const CliOptions& options, const QString& name, const QDateTime& open, bool* ok) {
    if (!options.has(name))
        return open;
    const auto time = cliParseTime(options.value(name));
    *ok = *ok && time.has_value();
    return time.value_or(QDateTime());
}

int runTrack(const QStringList& arguments) {
    QString error;
    const auto options =
        cliParseOptions(arguments, {"--format", "--from", "--to", "-o", "--output", "--force", "--attach", "--offset"},
                        &error, {"--force"});
    if (!options)
        return usageError(error);
    if (options->path.isEmpty())
        return usageError(QStringLiteral("PATH is missing"));
    const QString output = options->has("-o") ? options->value("-o") : options->value("--output");
    if (output.isEmpty())
        return usageError(QStringLiteral("-o OUT is missing"));
    const auto type = TrackExtracter::typeFromName(options->value("--format"));
    if (!type)
        return usageError(QStringLiteral("Unknown or missing --format: '%1'").arg(options->value("--format")));

    bool timesOk = true;
    const TimeInterval interval{endOr(*options, "--from", QDateTime::fromSecsSinceEpoch(0), &timesOk),
                                endOr(*options, "--to", QDateTime(QDate(9999, 12, 31), QTime(23, 59, 59)), &timesOk)};
    if (!timesOk)
        return usageError(QStringLiteral("A time is not of the form %1").arg(QLatin1String(kCliTimeFormat)));
    if (interval.to < interval.from)
        return usageError(QStringLiteral("--to is before --from"));

    bool offsetOk = true;
    const int offset = options->has("--offset") ? options->value("--offset").toInt(&offsetOk) : 0;
    if (!offsetOk)
        return usageError(QStringLiteral("--offset takes whole seconds, not '%1'").arg(options->value("--offset")));
    if (options->has("--offset") && !options->has("--attach"))
        return usageError(QStringLiteral("--offset needs --attach"));

    auto items = cliLoadRecordings(options->path, &error);
    if (!items) {
        cliError(QStringLiteral("%1: %2").arg(options->path, error));
        return 1;
    }
    if (options->has("--attach")) {
        const QString attached = options->value("--attach");
        try {
            const TrackAttachment attachment{QFileInfo(attached), TrackFileReader::read(attached), offset};
            items = attachment.applyTo(Playlist(*items, {})).rawItems();
        } catch (const std::exception& e) {
            cliError(QStringLiteral("%1: %2").arg(attached, QString::fromUtf8(e.what())));
            return 1;
        }
    }
    const QString target = QFileInfo(output).absoluteFilePath();
    const exporttarget::Permissions permissions = cliPermissions(options->path, options->has("--force"));
    if (const exporttarget::Refusal refused = exporttarget::refusal(target, exporttarget::inputFiles(*items), permissions)) {
        cliError(cliRefusalText(refused));
        return 1;
    }
    TrackExtracter job(*items, target, *type, interval);
    job.setPermissions(permissions);
    bool written = false;
    QObject::connect(&job, &TrackExtracter::done, [&written](bool ok) { written = ok; });
    job.run();
    if (!written) {
        cliError(QStringLiteral("Failed to save track to %1: %2").arg(output, job.failureReason()));
        return 1;
    }
    cliPrint(QStringLiteral("%1\n").arg(output));
    return 0;
}

const CliCommandRegistration registration{
    {"track", kUsage, "Save the GPS track of a card, folder, video or track file as NMEA, KML, GPX, CSV or PLT", &runTrack}};

} // namespace
