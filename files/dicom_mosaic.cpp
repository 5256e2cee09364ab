#include "files/dicom_mosaic.h"

#include <cmath>

namespace {

bool Fits(int columns, int rows, int tiles, int tileX, int tileY, CMosaicLayout& out) {
    if (tileX <= 0 || tileY <= 0 || columns % tileX || rows % tileY) return false;
    const int across = columns / tileX, down = rows / tileY;
    if (static_cast<int64_t>(across) * down < tiles) return false;
    out = {tiles, tileX, tileY, across};
    return true;
}

}  // namespace

bool MosaicLayoutOf(int columns, int rows, int tiles, const uint16_t matrix[4],
                    CMosaicLayout& out) {
    if (tiles < 1 || columns < 1 || rows < 1) return false;
    const int mrows = matrix[0] + matrix[2], mcols = matrix[1] + matrix[3];
    if (Fits(columns, rows, tiles, mcols, mrows, out)) return true;
    if (Fits(columns, rows, tiles, mrows, mcols, out)) return true;
    // Without a usable matrix: the square grid the scanner uses.
    const int grid = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(tiles))));
    return columns % grid == 0 && rows % grid == 0 &&
           Fits(columns, rows, tiles, columns / grid, rows / grid, out);
}
