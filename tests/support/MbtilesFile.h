// MBTiles map files made in a test: SQLite with metadata and tiles, and single-colour PNG tiles to fill them.
#pragma once

#include <QByteArray>
#include <QColor>
#include <QString>

#include <utility>
#include <vector>

namespace testsupport {

struct MbtilesTile {
    int z;
    int x;
    int y; // counted from the north, as the web map does; written flipped, as the format wants
    QByteArray data;
};

// Writes a new file with the standard "metadata" and "tiles" tables.
void writeMbtiles(const QString& path, const std::vector<std::pair<QString, QString>>& metadata,
                  const std::vector<MbtilesTile>& tiles);

// A 256 x 256 PNG of one colour.
QByteArray solidPng(const QColor& colour);

} // namespace testsupport
