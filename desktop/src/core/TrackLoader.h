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

    // 256 MB: a whole day of one-second fixes with every sentence type is under 100 MB.
    static constexpr qint64 kMaxFileBytes = qint64(256) << 20;

    // Reads the whole file and parses it. Throws std::runtime_error with "Failed to read file: invalid
    // stream ('<path>')" when the file cannot be read and "Failed to parse as NMEA" when parsing fails.
    static Result load(const QString& path);
    // The bytes of a track file, read only when it is a regular file of at most kMaxFileBytes; throws
    // std::runtime_error with a "Failed to read file: " text naming the reason otherwise.
    static QByteArray readFile(const QString& path);
    // The same over bytes already in memory.
    static Result loadBytes(const QByteArray& bytes);
};
