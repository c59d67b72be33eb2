// reelvue-cli copy PATH --from T --to T -o DIR: copies the original files (main and rear video, track) of
// the recordings that share time with the interval into DIR, unchanged and with their modification times,
// as the player's "Save" does. DIR must not lie inside PATH when PATH is a folder (the card); nothing is
// ever overwritten.
#include "cli/CliCommand.h"
#include "cli/CliRecordings.h"
#include "core/ExportPaths.h"
#include "core/FileCopier.h"

#include <QDir>

namespace {

const char* const kUsage = "PATH --from T --to T -o DIR";

int usageError(const QString& message) {
    cliError(QStringLiteral("%1\nUsage: reelvue-cli copy %2\nT is %3 in local time")
                 .arg(message, QLatin1String(kUsage), QLatin1String(kCliTimeFormat)));
    return 2;
}

int runCopy(const QStringList& arguments) {
    QString error;
    const auto options = cliParseOptions(arguments, {"--from", "--to", "-o", "--output"}, &error);
    if (!options)
        return usageError(error);
    if (options->path.isEmpty())
        return usageError(QStringLiteral("PATH is missing"));
    const QString directory = options->has("-o") ? options->value("-o") : options->value("--output");
    if (directory.isEmpty())
        return usageError(QStringLiteral("-o DIR is missing"));
    const auto from = cliParseTime(options->value("--from"));
    const auto to = cliParseTime(options->value("--to"));
    if (!from || !to)
        return usageError(QStringLiteral("--from and --to are needed, of the form %1").arg(QLatin1String(kCliTimeFormat)));
    if (*to < *from)
        return usageError(QStringLiteral("--to is before --from"));

    const auto items = cliLoadRecordings(options->path, &error);
    if (!items) {
        cliError(QStringLiteral("%1: %2").arg(options->path, error));
        return 1;
    }
    const Playlist::RawItems chosen = exportpaths::itemsOverlapping(*items, {*from, *to});
    if (chosen.empty()) {
        cliError(QStringLiteral("No recording between %1 and %2").arg(from->toString(kCliTimeFormat), to->toString(kCliTimeFormat)));
        return 1;
    }
    const exporttarget::Permissions permissions = cliPermissions(options->path, false);
    if (const exporttarget::Refusal refused = exporttarget::folderRefusal(directory, permissions)) {
        cliError(cliRefusalText(refused));
        return 1;
    }
    const FileCopierCommandVector commands = exportpaths::copyCommands(chosen, directory);
    const QStringList inputs = exporttarget::inputFiles(*items);
    for (const auto& command : commands) {
        if (const exporttarget::Refusal refused = exporttarget::refusal(command.second, inputs, {QString(), true})) {
            cliError(cliRefusalText(refused));
            return 1;
        }
    }
    if (!QDir().mkpath(directory)) {
        cliError(QStringLiteral("%1: can't create the folder").arg(directory));
        return 1;
    }
    // The copier never overwrites and would stop at the first existing file; say which ones at once.
    const QStringList existing = exportpaths::existingDestinations(commands);
    if (!existing.isEmpty()) {
        cliError(QStringLiteral("Already there, nothing copied:\n  %1").arg(existing.join(QStringLiteral("\n  "))));
        return 1;
    }

    FileCopier copier;
    copier.setPermissions(permissions);
    bool copied = false;
    QObject::connect(&copier, &FileCopier::done, [&copied](bool ok) { copied = ok; });
    copier.copy(commands);
    if (!copied) {
        cliError(QStringLiteral("Failed to copy into %1: %2\nThe files copied before the failure are kept")
                     .arg(directory, copier.failureReason()));
        return 1;
    }
    for (const auto& command : commands)
        cliPrint(command.second + QLatin1Char('\n'));
    return 0;
}

const CliCommandRegistration registration{
    {"copy", kUsage, "Copy the original files of the recordings of an interval into a folder", &runCopy}};

} // namespace
