// One-dimensional unwrapping along one direction, the operator behind wrap1d. Each line
// along the direction is taken alone: the first sample stands, and each step to the next is
// brought into -pi ... pi and added on. The result is r4 of the input's sizes; a complex
// input is read as its phase, r8 and complex r8 are worked in double.
//
//   CZrkData* w = Unwrap1dY(temp, phase);   // failures log "error caught: Unwrap1dY:"
#pragma once

#include "core/data_space.h"
#include "core/zrk_data.h"

CZrkData* Unwrap1dX(CDataSpace& temp, const CZrkData* a);
CZrkData* Unwrap1dY(CDataSpace& temp, const CZrkData* a);
CZrkData* Unwrap1dZ(CDataSpace& temp, const CZrkData* a);
CZrkData* Unwrap1dT(CDataSpace& temp, const CZrkData* a);
CZrkData* Unwrap1dU(CDataSpace& temp, const CZrkData* a);
CZrkData* Unwrap1dV(CDataSpace& temp, const CZrkData* a);

// The member of direction 0 ... 5.
CZrkData* Unwrap1d(CDataSpace& temp, int direction, const CZrkData* a);
