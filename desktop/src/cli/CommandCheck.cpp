// reelvue-cli check PATH: whether a directory looks like a recorder's card, and why not.
#include "cli/CliCommand.h"
#include "core/IsSuitablePath.h"

namespace {

int runCheck(const QStringList& arguments) {
    if (arguments.size() != 1) {
        cliError(QStringLiteral("Usage: reelvue-cli check PATH"));
        return 2;
    }
    const QString& path = arguments.first();
    QString reason;
    if (IsSuitablePath(path, &reason)) {
        cliPrint(QStringLiteral("%1: fits\n").arg(path));
        return 0;
    }
    cliPrint(QStringLiteral("%1: does not fit: %2\n").arg(path, reason));
    return 1;
}

const CliCommandRegistration registration{
    {"check", "PATH", "Tell whether a directory looks like a recorder's card (exit 0) or not (exit 1)", &runCheck}};

} // namespace
