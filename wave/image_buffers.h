// Image buffer helpers. A volume is one block indexed (z * ny + y) * nx + x. Complex images
// are interleaved (re, im pairs; every Fourier function) or planar (n reals then n
// imaginaries; the estimators). A mask is one byte a pixel, non-zero inside.
#pragma once

#include <cstddef>
#include <cstdint>

// Planar (re plane, im plane) to interleaved pairs, and back; `n` complex points.
void interleave_planes(const float* planar, float* interleaved, int n);
void split_planes(const float* interleaved, float* planar, int n);
// Planar pair to magnitude and atan2 phase; phase is 0 where |re| and |im| are below 1e-30.
// Either output may be null.
void magnitude_phase(const float* pair, float* mag, float* phase, int n);
// Spreads `n` reals at the front of `buf` into n interleaved complex points in place.
void real_to_complex_inplace(float* buf, int n);
// Zeroes every float whose mask byte is 0; nothing when either pointer is null or n < 1.
void apply_mask(float* buf, const uint8_t* mask, int n);
// Interleaved complex times real, in place.
void complex_times_real(float* cbuf, const float* rbuf, int n);
void add_in_place(float* dst, const float* src, int n);
void scale_in_place(float* dst, float k, int n);
// Zeroes NaN and infinite values so that a transform does not spread them over the image, and
// marks them in `marks` (n bytes, 1 where held). Returns how many were held.
int hold_nonfinite(float* buf, uint8_t* marks, int n);
// NaN where `marks` is set: a value that was not finite stays undefined in its own pixel.
void restore_nan(float* buf, const uint8_t* marks, int n);
