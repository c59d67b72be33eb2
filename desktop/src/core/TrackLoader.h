// Loads one NMEA 0183 track file into track positions.
#pragma once

#include "core/TrackPosition.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

class TrackLoader {
public:
    struct Result {
        TrackPositions positions;
        std::uint32_t rmcCount = 0; // RMC sentences read, used or not
    };

    // Reads the whole file and parses it. Throws std::runtime_error with "Failed to read file: invalid
    // stream ('<path>')" when the file cannot be read and "Failed to parse as NMEA" when parsing fails.
    static Result load(const QString& path);
    // The same over bytes already in memory.
    static Result loadBytes(const QByteArray& bytes);
};
