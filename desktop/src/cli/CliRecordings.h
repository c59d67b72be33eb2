// What the export commands of reelvue-cli share: reading PATH into recordings, and their time options.
#pragma once

#include "core/ExportTarget.h"
#include "core/Playlist.h"
#include "core/TimeInterval.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>

// The raw items of a card or folder (every recorder layout below it), of one video file (with its rear
// file and track), or of one NMEA track file (an item with only a track). Sets `error` and returns
// nothing when PATH holds no recording.
std::optional<Playlist::RawItems> cliLoadRecordings(const QString& path, QString* error);

// "yyyy-MM-ddTHH:mm:ss" in local time, as the recordings' times are.
extern const char* const kCliTimeFormat;
std::optional<QDateTime> cliParseTime(const QString& text);

// Options of the form "--name VALUE" (or "-o VALUE") and one positional PATH, in any order.
struct CliOptions {
    QString path;
    QStringList names;  // as given, e.g. "--from"
    QStringList values; // beside names
    QString value(const QString& name) const {
        const int index = names.lastIndexOf(name);
        return index < 0 ? QString() : values[index];
    }
    bool has(const QString& name) const { return names.contains(name); }
};
// Fails (nothing returned) on an unknown option, an option without value or a second PATH. `flags` are
// options without a value, such as "--force".
std::optional<CliOptions> cliParseOptions(const QStringList& arguments, const QStringList& known, QString* error,
                                          const QStringList& flags = {});

// What an export of the recordings read from PATH may do: nothing is written inside PATH when it is a
// folder (the card), and an existing output is replaced only with --force.
exporttarget::Permissions cliPermissions(const QString& path, bool force);
// The refusal's text for the command line, with the way out where there is one.
QString cliRefusalText(const exporttarget::Refusal& refusal);
