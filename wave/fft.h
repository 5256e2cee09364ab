// The engine's Fourier layer over FFTW 3 single precision. Complex data are interleaved
// (re, im). One plan is cached per signed length (positive forward, negative inverse),
// measured once and kept until fft_cleanup; rows, and blocks of columns gathered by the flip
// paths, go through one batched plan per block. Forward is FFTW_FORWARD
// (negative exponent). Scale modes: not above 0 none, 1.0 divide by n, 2.0 by sqrt(n), any
// other v by v. Failures here are fatal: the text goes to standard error and the process
// exits with status -1.
#pragma once

#include <fftw3.h>

#include <cstddef>

extern int cache_kb;         // block size (KB) of the flip paths; below 1 means 64
extern int flip_flag;        // y and z lines through contiguous blocks (initial 1)
extern float fwd_scale;      // initial 0: forward unscaled
extern float inv_scale;      // initial 1.0: inverse divided by n
extern int skip_zero_lines;  // lines of zeros are left as they are (initial 0)

void* fft_malloc(size_t size);

// The layer's work buffer, grown to hold `points` complex points; null when out of memory.
float* fft_work(size_t points);
// In-place plan of `howmany` lines of n points, points `stride` apart and lines `dist` apart
// (complex units); dir > 0 forward. It runs on `target` and any buffer of the same offset
// from FFTW's alignment (null: any buffer from fftwf_malloc). Measured once per shape on the
// work buffer, which it overwrites, and kept until fft_cleanup. Null when FFTW cannot plan
// it. Plans are made on one thread only; running them is safe from any.
fftwf_plan fft_batch_plan(int n, int dir, int howmany, int stride, int dist, const float* target);

// One line of n complex points at a stride in complex units; dir > 0 forward. Returns 0.
int cvfft(float* buf, int stride, int n, int dir);
int cvfft_3d_yonly_flip(float* buf, int nx, int ny, int nz, int dir);
int cvfft_3d_zonly_flip(float* buf, int nx, int ny, int nz, int dir);
// Axes with a negative size have that length but are not transformed.
int BASE_cvfft_3d(float* buf, int nx, int ny, int nz, int dir);
int GENERAL_cvfft_3d(float* buf, int nx, int ny, int nz, int dir);

// rvfft's twiddle table: n/2 (cos, sin) pairs; its signed length sits in the word before.
int calc_table(float** table_holder, int n, int dir);
// Real line of even length n in place; packed form: element 0 holds re(0) and re(n/2).
int rvfft(float* buf, int n, int dir);
// Real volume; the buffer holds (nx + 2) * ny * nz floats, rows unpacked to nx/2 + 1 points.
int rvfft_3d(float* buf, int nx, int ny, int nz, int dir);

// Octant swap of a complex volume (quadrants for 2-D): origin to the centre. Odd sizes copy
// into a new block and free the old one, so the caller must take the returned pointer; null
// on sizes below 1 or a failed allocation (which also frees the input).
float* fft_shift_3d(float* buf, int nx, int ny, int nz);
float* fft_shift_2d(float* buf, int nx, int ny);

// End of a run: block buffers, work line and plan; then the rvfft table.
void fft_cleanup();
void rvfft_cleanup();
