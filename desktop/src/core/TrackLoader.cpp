// Loads one NMEA 0183 track file into track positions.
#include "core/TrackLoader.h"

#include "core/NmeaSentenceHandler.h"
#include "core/NmeaStreamAdapter.h"
#include "logging/Logging.h"
#include "os/nmea/Parser.h"

#include <QFile>

#include <limits>
#include <stdexcept>

namespace {
constexpr const char* kLogger = "core.TrackLoader";
constexpr qint64 kMaxTrackBytes = std::numeric_limits<int>::max() - 4096;
}

TrackLoader::Result TrackLoader::load(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error(fmt::format("Failed to read file: invalid stream ('{}')", path.toStdString()));
    // A byte array holds a little under 2 GiB; a track that large is not a dash camera's.
    if (file.size() > kMaxTrackBytes) {
        LOG_ERROR(kLogger, "{} is too large to load: {} bytes", path.toStdString(), file.size());
        throw std::runtime_error(fmt::format("Failed to read file: invalid stream ('{}')", path.toStdString()));
    }
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        LOG_ERROR(kLogger, "Reading {} failed: {}", path.toStdString(), file.errorString().toStdString());
        throw std::runtime_error(fmt::format("Failed to read file: invalid stream ('{}')", path.toStdString()));
    }
    file.close();
    return loadBytes(bytes);
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
