// interp: linear interpolation of the named directions to a new resolution, one direction
// after the other in the order x ... v, each step feeding the next. A step keeps the input's
// header, made floating-point, with `res` points along its direction; output k samples the
// input at k (n - 1) / (res - 1), and a single output point samples index 0.
//
//   CZrkData* r = Interp(temp, Text("yt"), d0, 64);   // y to 64, then t to 64
#pragma once

#include <cstdint>

#include "core/data_space.h"
#include "core/zrk_data.h"

// One direction. Raises "resolution must be positive" for res below 1.
CZrkData* InterpDir(CDataSpace& temp, int dir, const CZrkData* a, int64_t res);
// The directions named in a string argument; "direction invalid" when none is.
CZrkData* Interp(CDataSpace& temp, const CZrkData* directions, const CZrkData* a, int64_t res);
