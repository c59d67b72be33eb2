// The address of one map tile in the web map's usual numbering: zoom, column from the west, row from the north.
#pragma once

#include <QString>

#include <optional>

struct TileKey {
    int z = 0;
    int x = 0;
    int y = 0;

    // Zoom 0..24 and a column and row inside the zoom's square of 2^z tiles.
    bool isValid() const { return z >= 0 && z <= 24 && x >= 0 && y >= 0 && x < (1 << z) && y < (1 << z); }
    // The row as MBTiles and TMS count it, from the south.
    int tmsRow() const { return (1 << z) - 1 - y; }

    // Reads "z/x/y" with an optional leading slash and file extension ("/12/2200/1343.png"); nothing when the
    // text is not a valid address.
    static std::optional<TileKey> fromPath(const QString& path);
};
