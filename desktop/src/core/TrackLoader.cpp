// Loads one NMEA 0183 track file into track positions.
#include "core/TrackLoader.h"

#include "core/NmeaSentenceHandler.h"
#include "core/NmeaStreamAdapter.h"
#include "logging/Logging.h"
#include "os/nmea/Parser.h"

#include <QFile>
#include <QFileInfo>

#include <stdexcept>

namespace {
constexpr const char* kLogger = "core.TrackLoader";
} // namespace

QByteArray TrackLoader::readFile(const QString& path) {
    const std::string shownPath = path.toStdString();
    const QFileInfo info(path);
    // A link to a device, a pipe or a socket would be read without end (or never answer): regular files only.
    if (info.exists() && !info.isFile())
        throw std::runtime_error(fmt::format("Failed to read file: not a regular file ('{}')", shownPath));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error(fmt::format("Failed to read file: invalid stream ('{}')", shownPath));
    if (file.size() > kMaxFileBytes)
        throw std::runtime_error(fmt::format("Failed to read file: {} bytes, more than the {} MB a track may have "
                                             "('{}')",
                                             file.size(), kMaxFileBytes >> 20, shownPath));
    // Read no more than the limit even when the file grows meanwhile.
    QByteArray bytes = file.read(kMaxFileBytes + 1);
    if (file.error() != QFileDevice::NoError) {
        LOG_ERROR(kLogger, "Reading {} failed: {}", shownPath, file.errorString().toStdString());
        throw std::runtime_error(fmt::format("Failed to read file: invalid stream ('{}')", shownPath));
    }
    if (bytes.size() > kMaxFileBytes)
        throw std::runtime_error(fmt::format("Failed to read file: more than the {} MB a track may have ('{}')",
                                             kMaxFileBytes >> 20, shownPath));
    return bytes;
}

TrackLoader::Result TrackLoader::load(const QString& path) {
    return loadBytes(readFile(path));
}

TrackLoader::Result TrackLoader::loadBytes(const QByteArray& bytes) {
    Result result;
    if (bytes.isEmpty()) {
        LOG_DEBUG(kLogger, "Empty file");
        return result;
    }
    NmeaStreamAdapter input(bytes);
    NmeaSentenceHandler handler;
    bool parsed = false;
    try {
        parsed = os::nmea::parse(input, handler);
    } catch (const std::exception& error) {
        LOG_ERROR(kLogger, "Parsing stopped: {}", error.what());
    }
    if (!parsed)
        throw std::runtime_error("Failed to parse as NMEA");
    handler.finish();
    result.rmcCount = handler.rmcCount();
    result.positions = handler.takePositions();
    LOG_DEBUG(kLogger, "Loaded {} positions, {} RMC sentences", result.positions.size(), result.rmcCount);
    return result;
}
