// Arrays made from numbers: line, ramp, step, delta and eye (r4), and the random arrays
// noise, rand and srand. Random numbers come from one Mersenne twister per call, seeded with
// 777 unless a seed is given, so two calls give the same numbers; a uniform value is the
// 32-bit draw times 2^-32, a Gaussian pair comes from two draws by Box-Muller.
#pragma once

#include <cstdint>

#include "core/data_space.h"
#include "core/zrk_data.h"

// n points along dir, every other direction 1.
CZrkData* Line(CDataSpace& temp, int dir, double slope, double intercept, int64_t n);
CZrkData* Ramp(CDataSpace& temp, int dir, double a, double b, int64_t n);
CZrkData* Step(CDataSpace& temp, int dir, int64_t i, int64_t n);
CZrkData* Delta(CDataSpace& temp, int dir, int64_t i, int64_t n);
// n x n identity in the first two directions named in `dirs`.
CZrkData* Eye(CDataSpace& temp, const CZrkData* dirs, int64_t n);
// r4 noise of standard deviation sd in the shape of `list`: Gaussian for a distribution
// naming "gauss" or "normal", else uniform around 0.
CZrkData* Noise(CDataSpace& temp, const CZrkData* distribution, double sd, const CZrkData* list);
// complex r4, i and q uniform in [0, 1).
CZrkData* Rand(CDataSpace& temp, const CZrkData* list);
CZrkData* SRand(CDataSpace& temp, int64_t seed, const CZrkData* list);
