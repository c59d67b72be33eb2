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

int run(const QStringList& arguments) {
    QString path;
    bool json = false;
    if (!parsePathAndJsonFlag(arguments, QStringLiteral("Usage: reelvue-cli positions FILE [--json]"), &path, &json))
        return 2;
    TrackLoader::Result track;
    const QFileInfo file(path);
    if (isVideoName(file.fileName())) {
        std::optional<EmbeddedTrack> embedded = EmbeddedTrackReader::read(path, startTimeFromFileName(file.fileName()));
        if (!embedded) {
            cliError(QStringLiteral("No embedded GPS track in '%1'").arg(path));
            return 1;
        }
        track.positions = std::move(embedded->positions);
        track.rmcCount = embedded->recordCount;
    } else {
        try {
            track = TrackLoader::load(path);
        } catch (const std::exception& error) {
            cliError(QString::fromStdString(error.what()));
            return 1;
        }
    }
    Output out;
    if (json)
        printJson(track, out);
    else
        printText(track, out);
    out.flush();
    return 0;
}

const CliCommandRegistration registration{
    {"positions", "FILE [--json]",
     "Print the RMC count and every position of a track file, or of the GPS track embedded in an MP4 or MOV video "
     "(time in Unix seconds, absent values as null)", &run}};

} // namespace
