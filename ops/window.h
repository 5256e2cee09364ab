// Data windows and the filter kernels built on them.
//
// A data window multiplies an array by a separable product of one weight per dimension;
// dimensions of size 1 weigh 1.0. Weights are computed in double and multiplied as floats.
// A kernel (bart, black, hann, hamm) is an r4 array of `points` in each named direction and
// 1 in the others: a separable sinc-like base, lo or hi pass, times its window.
//
//   CZrkData* k = Kernel(temp, FT_WINDOW_BARTLETT, Text("xy"), 0.6, 27, true);  // 27 x 27
#pragma once

#include <cstdint>
#include <vector>

#include "core/data_space.h"
#include "core/zrk_data.h"
#include "ops/ft_options.h"

// Weight of each index of a dimension of n points; all 1.0 for FT_WINDOW_NONE or n of 1.
std::vector<double> WindowWeights(int window, uint64_t n);

// Multiplies `a` in place by the window over all six dimensions.
void ApplyWindow(CZrkData* a, int window);

// The base weight of index i of a dimension of n points along direction dir.
float KernelWeight(int dir, uint64_t i, uint64_t n, float cutoff, bool lo_pass);

// bart, black, hann, hamm: `window` names the kernel. Raises "direction invalid",
// "cutoff must be between 0 and 1" and "resolution must be positive".
CZrkData* Kernel(CDataSpace& temp, int window, const CZrkData* directions, double cutoff,
                 int64_t points, bool lo_pass);
