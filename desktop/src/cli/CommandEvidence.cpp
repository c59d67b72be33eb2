// reelvue-cli evidence and verify: an incident evidence pack of an interval (a BagIt bag in a new folder), and
// the check of such a pack against its manifests.
#include "cli/CliCommand.h"
#include "cli/CliRecordings.h"
#include "cli/SignalCancel.h"
#include "core/evidence/Bag.h"
#include "core/evidence/BagZip.h"
#include "core/evidence/EvidencePack.h"
#include "logging/Logging.h"
#include "ui/EvidenceDrawing.h"

#include <QEventLoop>
#include <QFileInfo>
#include <QThread>

extern "C" {
#include <libavutil/log.h>
}

#include <algorithm>
#include <cstdio>

namespace {

const char* const kEvidenceUsage = "PATH --from T --to T -o DIR [--margin SECONDS] [--mark T ...] [--zip]";
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;
constexpr int kExitCanceled = 130; // what shells report for a program ended by SIGINT


int usageError(const QString& message) {
    cliError(QStringLiteral("%1\nUsage: reelvue-cli evidence %2\nT is %3 in local time")
                 .arg(message, QLatin1String(kEvidenceUsage), QLatin1String(kCliTimeFormat)));
    return kExitUsage;
}

void drawProgressBar(int percent) {
    constexpr int kWidth = 40;
    const int filled = std::clamp(percent, 0, 100) * kWidth / 100;
    std::fprintf(stderr, "\r[%s%s] %3d%%", std::string(filled, '#').c_str(), std::string(kWidth - filled, '.').c_str(),
                 std::clamp(percent, 0, 100));
    std::fflush(stderr);
}

int runEvidence(QStringList arguments) {
    QString error;
    const bool zip = arguments.removeAll(QStringLiteral("--zip")) > 0;
    const auto options = cliParseOptions(arguments, {"--from", "--to", "-o", "--output", "--margin", "--mark"}, &error);
    if (!options)
        return usageError(error);
    EvidenceRequest request;
    request.cardPath = options->path;
    request.folder = options->has("-o") ? options->value("-o") : options->value("--output");
    if (request.cardPath.isEmpty() || request.folder.isEmpty() || !options->has("--from") || !options->has("--to"))
        return usageError(QStringLiteral("PATH, --from, --to and -o are required"));
    const auto from = cliParseTime(options->value("--from"));
    const auto to = cliParseTime(options->value("--to"));
    if (!from || !to)
        return usageError(QStringLiteral("A time is not of the form %1").arg(QLatin1String(kCliTimeFormat)));
    if (!(*from < *to))
        return usageError(QStringLiteral("--from must come before --to"));
    request.interval = {*from, *to};
    if (options->has("--margin")) {
        bool ok = false;
        request.marginSeconds = options->value("--margin").toInt(&ok);
        if (!ok || request.marginSeconds < 0)
            return usageError(QStringLiteral("--margin takes whole seconds, not '%1'").arg(options->value("--margin")));
    }
    for (int i = 0; i < options->names.size(); ++i) {
        if (options->names[i] != QLatin1String("--mark"))
            continue;
        const auto mark = cliParseTime(options->values[i]);
        if (!mark)
            return usageError(QStringLiteral("--mark %1 is not of the form %2").arg(options->values[i], QLatin1String(kCliTimeFormat)));
        request.marks.push_back(*mark);
    }
    request.folder = QFileInfo(request.folder).absoluteFilePath();
    if (const QString refused = EvidencePack::refusal(request.folder, request.cardPath); !refused.isEmpty()) {
        cliError(refused);
        return kExitFailed;
    }
    const QString zipPath = request.folder + QStringLiteral(".zip");
    if (zip && QFileInfo::exists(zipPath)) {
        cliError(QStringLiteral("%1 already exists").arg(zipPath));
        return kExitFailed;
    }

    const auto items = cliLoadRecordings(request.cardPath, &error);
    if (!items) {
        cliError(QStringLiteral("%1: %2").arg(request.cardPath, error));
        return kExitFailed;
    }
    request.items = *items;
    setEvidenceDrawing(request);
    // FFmpeg's own chatter only when the log is detailed too.
    if (!logging::isEnabled(logging::DEBUG))
        av_log_set_level(AV_LOG_ERROR);

    EvidencePack pack(request);
    QThread worker;
    pack.moveToThread(&worker);
    QEventLoop loop;
    int exitCode = kExitFailed;
    QObject::connect(&pack, &EvidencePack::progress, &loop, &drawProgressBar);
    QObject::connect(&pack, &EvidencePack::done, &loop, [&](bool ok) {
        exitCode = ok ? 0 : kExitFailed;
        loop.quit();
    });
    QObject::connect(&pack, &EvidencePack::canceled, &loop, [&] {
        exitCode = kExitCanceled;
        loop.quit();
    });
    worker.start();
    {
        const SignalCancel cancelOnSignals(&pack);
        QMetaObject::invokeMethod(&pack, "encode", Qt::QueuedConnection);
        loop.exec();
    }
    worker.quit();
    worker.wait();
    std::fputc('\n', stderr);

    if (exitCode == 0 && zip && !bagit::writeZip(request.folder, zipPath, &error)) {
        cliError(QStringLiteral("The pack is whole in %1, but %2").arg(request.folder, error));
        return kExitFailed;
    }
    if (exitCode == 0)
        cliPrint(request.folder + QLatin1Char('\n') + (zip ? zipPath + QLatin1Char('\n') : QString()));
    else if (exitCode == kExitCanceled)
        cliError(QStringLiteral("Canceled; %1 was removed").arg(request.folder));
    else
        cliError(pack.failureText() + QStringLiteral(" Nothing was left in %1.").arg(request.folder));
    return exitCode;
}

int runVerify(QStringList arguments) {
    if (arguments.size() != 1 || arguments.first().startsWith(QLatin1Char('-'))) {
        cliError(QStringLiteral("Usage: reelvue-cli verify DIR"));
        return kExitUsage;
    }
    const QString root = arguments.first();
    if (!QFileInfo(root).isDir()) {
        cliError(QStringLiteral("%1 is not a folder").arg(root));
        return kExitFailed;
    }
    const std::vector<bagit::Problem> problems = bagit::verify(root);
    for (const bagit::Problem& problem : problems)
        cliPrint(QStringLiteral("%1: %2 (%3)\n").arg(bagit::kindName(problem.kind).toUpper(), problem.path, problem.detail));
    if (!problems.empty()) {
        cliError(QStringLiteral("%1: %2 problem(s); the pack is not as it was made").arg(root).arg(problems.size()));
        return kExitFailed;
    }
    cliPrint(QStringLiteral("%1: every file matches its manifest\n").arg(root));
    return 0;
}

const CliCommandRegistration evidence{
    {"evidence", kEvidenceUsage,
     "Make an incident evidence pack (a BagIt folder: originals, clips, track) of an interval; --zip also as DIR.zip",
     [](const QStringList& arguments) { return runEvidence(arguments); }}};
const CliCommandRegistration verify{
    {"verify", "DIR", "Check an evidence pack against its manifests; exit 0 only when every file matches",
     [](const QStringList& arguments) { return runVerify(arguments); }}};

} // namespace
