// Cutting, padding, resizing, shifting and reshaping along the directions; chop, the
// echo-planar line orders.
#pragma once

#include <cstdint>

#include "core/data_space.h"
#include "core/zrk_data.h"

// chop: elements at odd indices along dir negated.
CZrkData* Chop(CDataSpace& temp, int dir, const CZrkData* a);
// cut: indices i to j inclusive along dir.
CZrkData* Cut(CDataSpace& temp, int dir, const CZrkData* a, int64_t i, int64_t j);
// pad keeps the data at index 0; padsim puts (n - old) / 2 zeros below.
CZrkData* Pad(CDataSpace& temp, int dir, const CZrkData* a, int64_t n);
CZrkData* PadSim(CDataSpace& temp, int dir, const CZrkData* a, int64_t n);
// replicate: n along dir by repeating or dropping elements, never blending.
CZrkData* Replicate(CDataSpace& temp, int dir, const CZrkData* a, int64_t n);
// shift: circular, output i reads input (size - n + i) modulo size. A shift array gives
// each line its own amount, read at the line's position modulo the array's resolutions.
CZrkData* Shift(CDataSpace& temp, int dir, const CZrkData* a, const CZrkData* n);
// reshape: the first elements of a, in order, in the shape res (below 1 is refused).
CZrkData* Reshape(CDataSpace& temp, const CZrkData* a, const int64_t res[6]);
// shape: reshape with the resolutions read from a list.
CZrkData* Shape(CDataSpace& temp, const CZrkData* a, const CZrkData* list);
// squeeze: resolutions of 1 removed.
CZrkData* Squeeze(CDataSpace& temp, const CZrkData* a);
// eflip: line y of each plane reversed in x when y * etl / ny is odd.
CZrkData* EFlip(CDataSpace& temp, const CZrkData* a, int64_t etl);
// esort: time-ordered echo-planar lines put in phase-encoding order; lines the order does
// not reach (ny not a multiple of etl) are zero.
CZrkData* ESort(CDataSpace& temp, const CZrkData* a, int64_t etl);
