// The three phase unwrapping solvers. Each takes one plane (or one volume, x fastest) of
// 32-bit floats in normalised units, where one cycle is 1.0, and writes the unwrapped values
// to `out` of the same size. They hold nothing between calls.
//
//   std::vector<uint8_t> mask(w * h, 1);
//   uint64_t seeds = UnwrapQualityGuided(phase, quality, mask.data(), out, w, h);
//   UnwrapMinimumDiscontinuity(phase, quality, out, w, h);
//   UnwrapGraphCut(phase, out, w, h, [](const std::string& s) { ... });
#pragma once

#include <cstdint>
#include <functional>
#include <string>

// Where graph cut tells its progress ("iteration 3 of 25: 0.0123"); may be empty.
using UnwrapStatusFn = std::function<void(const std::string&)>;

// Quality guided region growing from seeds in row order: the point of best quality in the
// list goes next. `quality` in 0 ... 1; points with mask 0 are never touched (out 0).
// Returns the number of seeds.
uint64_t UnwrapQualityGuided(const float* phase, const float* quality, const uint8_t* mask,
                             float* out, int64_t width, int64_t height);

// Minimum weighted discontinuity over the corners between points; `quality` in 0 ... 1
// weighs each discontinuity (a value outside is held to the range, NaN counts as 0). Throws
// std::bad_alloc for a plane too large to hold. Returns 0.
int UnwrapMinimumDiscontinuity(const float* phase, const float* quality, float* out, int64_t width,
                               int64_t height);

// Whole-cycle moves of +1 and -1 in turn, each the minimum cut of the squared differences
// of neighbours, until a move changes nothing or 24 moves are made. Returns the number of
// the last iteration run.
int UnwrapGraphCut(const float* phase, float* out, int64_t width, int64_t height,
                   const UnwrapStatusFn& status = {});
int UnwrapGraphCut3d(const float* phase, float* out, int64_t width, int64_t height, int64_t depth,
                     const UnwrapStatusFn& status = {});
