// Signal-to-noise maps of the magnitude and of the phase difference, and the SNR mask.
#pragma once

#include <cstdint>

#include "wave/wave_params.h"

// Runs the SNR stage on the planar harmonic pair; returns a new table-owned mask (at the
// caller's level) when SNR masking is on, else null. Failures leave the mask to the caller.
// The magnitude and phase difference maps are stored in the pair's two-plane form, the same
// map in both planes; each stored output gets its report line with its name.
uint8_t* snr_maps(const float* pair, const uint8_t* mask, wave_params* p);

// The name of an output for the report lines of the stored maps; the driver that makes the
// outputs knows it. Without one the lines call an output "unnamed".
using wave_output_namer = const char* (*)(wave_output output);
// Installs `namer` (null removes it); returns the previous one.
wave_output_namer set_snr_output_namer(wave_output_namer namer);

// Windowed sums of value, squared value and count over masked pixels (all when mask is null);
// a window of wx x wy x wz centred on each pixel, cut at the edges. Any output may be null.
void window_stats(const float* data, const uint8_t* mask, int nx, int ny, int nz, int wx, int wy,
                  int wz, float* sum, float* sumsq, float* count);
// The background: the inverted mask eroded by ex, ey, ez pixels (z too unless nz is 1 or
// `flag` asks for slices). Table-owned.
uint8_t* snr_background_mask(const uint8_t* mask, int nx, int ny, int nz, int ex, int ey, int ez,
                             int flag);
// Deviation of the background. mode 0: sample deviation of all values; 1 (more than one
// image): per-voxel deviation over images, window-smoothed, median over the background;
// 2 (or one image): windowed deviation, median over the background.
float snr_background_sd(const float* data, const uint8_t* bg, int nx, int ny, int nz, int nimages,
                        int wx, int wy, int wz, int mode);
// Window mean of the magnitude over space and all images, divided by bg * 1.662. Table-owned;
// null when the noise is not above 0.
float* snr_magnitude(const float* mag, const uint8_t* mask, const uint8_t* bg, int nx, int ny,
                     int nz, int nimages, wave_params* p);
// Local mean amplitude over the window divided by scale and by the phase noise of the
// magnitude SNR. Table-owned; null when no masked pixel has a phase noise (every magnitude
// SNR there below 1).
float* snr_phase_difference(const float* amp, const float* snr_mag, const uint8_t* mask, int nx,
                            int ny, int nz, float scale, wave_params* p);
// 1 at or above the threshold, a checker of `pattern` below it (0 without), 0 outside.
void snr_mask(const float* snr, const uint8_t* mask, uint8_t* out, int nx, int ny, int nz,
              float threshold, int pattern);
