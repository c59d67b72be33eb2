#include "core/TrackLoader.h"

#include <stdexcept>

// Placeholder until the NMEA parser lands: every load fails as an unparsable track.
TrackLoader::Result TrackLoader::load(const QString&) { throw std::runtime_error("Failed to parse as NMEA"); }
TrackLoader::Result TrackLoader::loadBytes(const QByteArray&) { throw std::runtime_error("Failed to parse as NMEA"); }
