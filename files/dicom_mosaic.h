// The tiles of a mosaic image: an echo-planar scanner stores all slices of one volume as
// tiles of a single large image, row by row. The layout comes from the tile count and the
// acquisition matrix; a layout that does not fit the image is refused, and the file then
// opens as the plain mosaic.
//
//   CMosaicLayout m;
//   if (MosaicLayoutOf(384, 384, 30, matrix, m)) ... m.tileX, m.tileY, m.across
#pragma once

#include <cstdint>

struct CMosaicLayout {
    int tiles = 0;
    int tileX = 0, tileY = 0;  // columns and rows of one tile
    int across = 0;            // tiles in one row of the mosaic

    // Offset in samples, within the mosaic image, of row `row` of tile `tile`.
    uint64_t RowOffset(int tile, int row, int columns) const {
        const uint64_t top = static_cast<uint64_t>(tile / across) * tileY + row;
        return top * columns + static_cast<uint64_t>(tile % across) * tileX;
    }
};

// `matrix` is the acquisition matrix: frequency rows, frequency columns, phase rows, phase
// columns, two of them zero. False when no layout fits `tiles` into columns x rows.
bool MosaicLayoutOf(int columns, int rows, int tiles, const uint16_t matrix[4], CMosaicLayout& out);
