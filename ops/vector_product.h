// cross and dot along one direction, in the arithmetic type of the two inputs.
#pragma once

#include "core/data_space.h"
#include "core/zrk_data.h"

// The vector product of the 3-element vectors along dir.
CZrkData* Cross(CDataSpace& temp, int dir, const CZrkData* a, const CZrkData* b);
// The sum of a * b along dir (no conjugate); dir becomes 1.
CZrkData* Dot(CDataSpace& temp, int dir, const CZrkData* a, const CZrkData* b);
