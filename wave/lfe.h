// Local frequency estimation: the local spatial frequency of a wave image, in waves per metre,
// from the ratios of the envelopes of a bank of lognormal quadrature filters one band ratio R
// apart, with a certainty in [0, 1].
//
// A core takes one image already spread to interleaved complex in `buf` (overwritten), runs
// one forward transform, and per band two (or three) inverse transforms of the filtered
// spectrum; a band's value is the sum of the envelopes. lfe_combine turns the band stack into
// the estimate: for a pure tone of frequency k bracketed by two bands it gives k exactly.
// Where every band vanishes the estimate is NaN (the divisions have no guard); the callers'
// masks remove it, and freq_to_stiffness turns it into 0.
//
//   float *est = nullptr, *cert = nullptr;  // allocated through the table
//   if (lfe_2d(image, nullptr, mask, nx, ny, 1, 0, 0, fov_x, fov_y, 6, 10.0f, 0, 0, 0, 2.0f,
//              nullptr, &est, &cert, 0, 0) == 0)
//       ...  // bad input, reported
#pragma once

#include <cstdint>

#include "wave/wave_params.h"

// Called before each image with its index and where its results go.
using lfe_callback = void (*)(int index, float* est, float* cert);

// Bands q over npix pixels (band b at bands + b * npix). Band centres are base * r * (r^2)^b,
// the geometric means of neighbouring filters (r is the square root of the filter ratio).
// With stiff_flag the estimate becomes nx / est^2 (est below 1e-6 counting as 1e-6).
void lfe_combine(const float* bands, float* est, float* cert, int npix, int nx, int nbands,
                 float base_freq, float ratio_root, int stiff_flag);

// Real image spread to complex: half-plane filters along y and x per band, ratio R, optional
// Gaussian low-pass (lp_sigma above 0). `seq` of `nseq` places the image in the progress.
int lfe_core_real_2d(float* buf, float* est, float* cert, int nx, int ny, float fov_x, float fov_y,
                     int nbands, float base, float lp_sigma, int stiff_flag, float ratio, int seq,
                     int nseq);
// Interleaved R, I: one isotropic filter per band.
int lfe_core_complex_2d(float* buf, float* est, float* cert, int nx, int ny, float fov_x,
                        float fov_y, int nbands, float base, float lp_sigma, int stiff_flag,
                        float ratio, int seq, int nseq);
// Along rows only, octave bands.
int lfe_pure_1d(float* buf, float* est, float* cert, int nx, int ny, float fov_x, int nbands,
                float base, int seq, int nseq);
// Full 2-D transform, the x half-plane octave filter.
int lfe_soft_1d(float* buf, float* est, float* cert, int nx, int ny, float fov_x, float fov_y,
                int nbands, float base, int seq, int nseq);
// Volume: three half-space octave filters per band.
int lfe_core_3d(float* buf, float* est, float* cert, int nx, int ny, int nz, float fov_x,
                float fov_y, float fov_z, int nbands, float base, int seq, int nseq);

// One real image through lfe_pure_1d (soft 0) or lfe_soft_1d (soft 1), non-finite values set
// aside as in lfe_2d. Returns 0, or 1 after reporting fewer than 2 bands or a base not above 0.
// The cores return 1 after the same reports.
int lfe_1d(const float* image, float* est, float* cert, int nx, int ny, float fov_x, float fov_y,
           int nbands, float base, int soft, int seq, int nseq);

// `n` images (pairs with pairs_flag 1) of nx by ny; average_flag 0 none, 1 root mean square,
// 2 weighted by the squared amplitude (amp2_buf planes, or R^2 + I^2 of each pair). Null
// holders are allocated through the table at the caller's level. Returns the number of result
// images, 0 after reporting bad input.
int lfe_2d(const float* in, const float* amp2_buf, const uint8_t* mask, int nx, int ny, int n,
           int pairs_flag, int average_flag, float fov_x, float fov_y, int nbands, float base_freq,
           float lp_sigma, int stiff_flag, int complex_flag, float ratio, lfe_callback callback,
           float** est_holder, float** cert_holder, int seq, int nseq);
int lfe_3d(const float* in, const float* amp2_buf, const uint8_t* mask, int nx, int ny, int nz,
           int n, int pairs_flag, int average_flag, float fov_x, float fov_y, float fov_z,
           int nbands, float base_freq, lfe_callback callback, float** est_holder,
           float** cert_holder, int seq, int nseq);

// mech_freq^2 / est^2 in place; 0 where est^2 is below 1e-20 (or NaN).
void freq_to_stiffness(float* buf, int n, float mech_freq);
// A staircase (x >> 4) + 1 in the first 10 rows, to check the scale of a display.
void stamp_wedge(float* buf, int nx, int ny);
// Certainty-weighted mean of `values` over a window, into `out` (see lfe_weight_2d).
// mode 0: every pixel; otherwise only pixels inside the mask, and with mode 2 or more only
// masked neighbours count. Pixels whose weights sum to 0 keep what `out` held.
void window_weighted_mean(const float* values, const float* weights, const uint8_t* mask,
                          float* out, int nx, int ny, int nz, int winx, int winy, int winz,
                          int mode);
// Replaces the stiffness by its certainty-weighted window mean over lfe_weight_win.
int lfe_weight_2d(float* stiff, const float* cert, const uint8_t* mask, wave_params* p,
                  int verbose);
int lfe_weight_3d(float* stiff, const float* cert, const uint8_t* mask, wave_params* p,
                  int verbose);
