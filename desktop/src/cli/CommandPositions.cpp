// reelvue-cli positions: loads one track file, or the track embedded in a video, and prints every position.
#include "cli/CliCommand.h"
#include "core/RecordingFileName.h"
#include "core/TrackLoader.h"
#include "core/embedded/EmbeddedTrackReader.h"

#include <QFileInfo>

#include <fmt/format.h>

#include <optional>
#include <stdexcept>
#include <string>

namespace {

constexpr std::size_t kFlushBytes = 64 * 1024; // keeps output of long tracks in bounded pieces

// A video's track is the one inside it; for a video the RMC count is the count of its GPS records.
bool isVideoName(const QString& name) {
    return name.endsWith(QLatin1String(".mp4"), Qt::CaseInsensitive) ||
           name.endsWith(QLatin1String(".mov"), Qt::CaseInsensitive);
}

template <typename T>
std::string optionalText(const std::optional<T>& value) {
    return value ? fmt::format("{}", *value) : std::string("null");
}

class Output {
public:
    void append(const std::string& text) {
        m_buffer += text;
        if (m_buffer.size() >= kFlushBytes)
            flush();
    }
    void flush() {
        cliPrint(QString::fromStdString(m_buffer));
        m_buffer.clear();
    }

private:
    std::string m_buffer;
};

void printText(const TrackLoader::Result& track, Output& out) {
    out.append(fmt::format("RMC sentences: {}\nPositions: {}\n", track.rmcCount, track.positions.size()));
    out.append("time latitude longitude sentence speed course altitude hdop pdop vdop satellites\n");
    for (const TrackPosition& p : track.positions)
        out.append(fmt::format("{} {} {} {} {} {} {} {} {} {} {}\n", trackTimeToSeconds(p.time), p.latitude,
                               p.longitude, p.sentenceNumber, optionalText(p.speed), optionalText(p.course),
                               optionalText(p.altitude), optionalText(p.hdop), optionalText(p.pdop),
                               optionalText(p.vdop), optionalText(p.satellites)));
}

void printJson(const TrackLoader::Result& track, Output& out) {
    out.append(fmt::format("{{\"rmcCount\": {}, \"positions\": [", track.rmcCount));
    const char* separator = "\n";
    for (const TrackPosition& p : track.positions) {
        out.append(fmt::format("{}{{\"time\": {}, \"latitude\": {}, \"longitude\": {}, \"sentenceNumber\": {}, "
                               "\"speed\": {}, \"course\": {}, \"altitude\": {}, \"hdop\": {}, \"pdop\": {}, "
                               "\"vdop\": {}, \"satellites\": {}}}",
                               separator, trackTimeToSeconds(p.time), p.latitude, p.longitude, p.sentenceNumber,
                               optionalText(p.speed), optionalText(p.course), optionalText(p.altitude),
                               optionalText(p.hdop), optionalText(p.pdop), optionalText(p.vdop),
                               optionalText(p.satellites)));
        separator = ",\n";
    }
    out.append("\n]}\n");
}

// Reads one file's track; on failure says why on standard error and returns nothing.
std::optional<TrackLoader::Result> readTrack(const QString& path) {
    TrackLoader::Result track;
    const QFileInfo file(path);
    if (isVideoName(file.fileName())) {
        std::optional<EmbeddedTrack> embedded = EmbeddedTrackReader::read(path, startTimeFromFileName(file.fileName()));
        if (!embedded) {
            cliError(QStringLiteral("No embedded GPS track in '%1'").arg(path));
            return std::nullopt;
        }
        track.positions = std::move(embedded->positions);
        track.rmcCount = embedded->recordCount;
        return track;
    }
    try {
        return TrackLoader::load(path);
    } catch (const std::exception& error) {
        cliError(QString::fromStdString(error.what()));
        return std::nullopt;
    }
}

// One file prints its track alone, as it always did; several print each under a "File:" line (text) or as an
// array of tracks with their "file" (JSON), and a file that fails is said on standard error while the rest go on.
int run(const QStringList& arguments) {
    const QString usage = QStringLiteral("Usage: reelvue-cli positions FILE [--json]");
    QStringList paths;
    bool json = false;
    for (const QString& argument : arguments) {
        if (argument == QLatin1String("--json"))
            json = true;
        else if (argument.startsWith(QLatin1String("--"))) {
            cliError(usage);
            return 2;
        } else
            paths << argument;
    }
    if (paths.isEmpty()) {
        cliError(usage);
        return 2;
    }
    const bool several = paths.size() > 1;
    Output out;
    int exitCode = 0;
    const char* separator = "[\n";
    for (const QString& path : paths) {
        const std::optional<TrackLoader::Result> track = readTrack(path);
        if (!track) {
            exitCode = 1;
            continue;
        }
        if (several && json)
            out.append(fmt::format("{}{{\"file\": \"{}\", \"track\": ", separator,
                                   QString(path).replace('\\', QLatin1String("\\\\")).replace('"', QLatin1String("\\\"")).toStdString()));
        else if (several)
            out.append(fmt::format("File: {}\n", path.toStdString()));
        if (json)
            printJson(*track, out);
        else
            printText(*track, out);
        if (several && json) {
            out.append("}");
            separator = ",\n";
        }
    }
    if (several && json)
        out.append(separator[0] == '[' ? "[]\n" : "\n]\n");
    out.flush();
    return exitCode;
}

const CliCommandRegistration registration{
    {"positions", "FILE... [--json]",
     "Print the RMC count and every position of a track file, or of the GPS track embedded in an MP4 or MOV video "
     "(time in Unix seconds, absent values as null); several files one after another", &run}};

} // namespace
