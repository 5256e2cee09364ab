// Phase gradient: the local spatial frequency |grad phase| / (2 pi), in waves per metre, from
// lines fitted to the unwrapped phase along the rows (and columns, and z lines) of a
// Gaussian-weighted window; the weighted mean of the row slopes is the slope of the pixel.
//
// Window images hold one value per window element (i, j, k), i in -hx..hx, j in -hy..hy,
// k in -hz..hz, at rows[k * (2 hy + 1) + j][i] where `rows` points at the centre row, so
// signed indices address them directly.
//
//   float* est = nullptr;
//   phgrad_2d(phase, nullptr, mask, nx, ny, 1, 0, 0, fov_x, fov_y, win, nullptr, &est,
//             nullptr, 0, 0.0f);
#pragma once

#include <cstdint>

#include "wave/lfe.h"

// The separable Gaussian weights, sigma = (2h + 1) / 4 along each axis. The image and its
// row table are one block of the allocation table, held in *block.
float** weight_image(void** block, int hx, int hy, int hz);
// The pixel offset (k * ny + j) * nx + i of each element.
int32_t** offset_image(void** block, int hx, int hy, int hz, int nx, int ny);
// Frees a weight or offset image with its row table.
void free_window_image(void** block);

// Slope of the phase (radians per metre) along x, y or z at each masked pixel (a null mask
// is all inside); a pixel whose window holds fewer than 3 accepted points keeps what `out`
// held. `seq` of `nseq` places the call in the progress (nseq 0: none).
void slope_x_2d(const float* phase, const uint8_t* mask, float* out, int nx, int ny, float fov_x,
                float** W, int32_t** offs, int hx, int hy, int seq, int nseq);
void slope_y_2d(const float* phase, const uint8_t* mask, float* out, int nx, int ny, float fov_y,
                float** W, int32_t** offs, int hx, int hy, int seq, int nseq);
void slope_x_3d(const float* phase, const uint8_t* mask, float* out, int nx, int ny, int nz,
                float fov_x, float** W, int32_t** offs, int hx, int hy, int hz, int seq, int nseq);
void slope_y_3d(const float* phase, const uint8_t* mask, float* out, int nx, int ny, int nz,
                float fov_y, float** W, int32_t** offs, int hx, int hy, int hz, int seq, int nseq);
void slope_z_3d(const float* phase, const uint8_t* mask, float* out, int nx, int ny, int nz,
                float fov_z, float** W, int32_t** offs, int hx, int hy, int hz, int seq, int nseq);

// Unit vectors (ux, uy) averaged over the window with weights W * mag over masked pixels,
// renormalised; 0 where the weights vanish.
void direction_smooth(float* ux, float* uy, const float* mag, const uint8_t* mask, int nx, int ny,
                      int32_t** offs, float** W, int hx, int hy);

// The estimate of one phase image; with dir_on the gradient projected on dir_angle degrees.
// `dir` (may be null) gets the direction of the gradient, in degrees clockwise from x.
void pg_core_2d(const float* phase, const uint8_t* mask, float* est, float* dir, int nx, int ny,
                float fov_x, float fov_y, int winx, int winy, int seq, int nseq, int dir_on,
                float dir_angle);
void pg_core_3d(const float* phase, const uint8_t* mask, float* est, int nx, int ny, int nz,
                float fov_x, float fov_y, float fov_z, const int* win, int seq, int nseq);

// `n` phase images (pairs R, I with pairs_flag 1); average_flag 0 none, 1 root mean square,
// 2 weighted by the squared amplitude (amp2_buf, or R^2 + I^2 of each pair). win is x, y
// (, z). Null holders are allocated through the table at the caller's level. Returns the
// number of result images, 0 after reporting bad input. With an average, the direction is
// that of the image of largest weight at each pixel.
int phgrad_2d(const float* in, const float* amp2_buf, const uint8_t* mask, int nx, int ny, int n,
              int pairs_flag, int average_flag, float fov_x, float fov_y, const int* win,
              lfe_callback callback, float** est_holder, float** dir_holder, int dir_on,
              float dir_angle);
int phgrad_3d(const float* in, const float* amp2_buf, const uint8_t* mask, int nx, int ny, int nz,
              int n, int pairs_flag, int average_flag, float fov_x, float fov_y, float fov_z,
              const int* win, lfe_callback callback, float** est_holder);
