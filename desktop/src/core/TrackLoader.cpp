// Loads one NMEA 0183 track file into track positions.
#include "core/TrackLoader.h"

#include "core/NmeaSentenceHandler.h"
#include "core/NmeaStreamAdapter.h"
#include "logging/Logging.h"
#include "os/nmea/Parser.h"

#include <QFile>

#include <stdexcept>

namespace {
constexpr const char* kLogger = "core.TrackLoader";
}

TrackLoader::Result TrackLoader::load(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error(fmt::format("Failed to read file: invalid stream ('{}')", path.toStdString()));
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
