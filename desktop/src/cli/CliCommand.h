// Subcommands of reelvue-cli. Each command lives in a file of its own and registers itself:
//   static const CliCommandRegistration scan{{"scan", "PATH [--json]", "List the recordings of a card", &runScan}};
#pragma once

#include <QStringList>

#include <vector>

struct CliCommand {
    const char* name;
    const char* usage;   // arguments after the name
    const char* summary; // one line for --help
    // Runs with the arguments after the command name; returns the process exit code.
    int (*run)(const QStringList& arguments);
};

std::vector<CliCommand>& cliCommands();

struct CliCommandRegistration {
    explicit CliCommandRegistration(const CliCommand& command) { cliCommands().push_back(command); }
};

// Output helpers: results go to standard output, errors to standard error.
void cliPrint(const QString& text);
void cliError(const QString& text);

// Reads the arguments "PATH [--json]". On anything else prints the usage line and returns false.
bool parsePathAndJsonFlag(const QStringList& arguments, const QString& usage, QString* path, bool* json);
