// Band filters of the chain: Gaussian and Butterworth filter images, the spatial mean and median
// that honour the mask, and the PRE, MID and POST filters.
//
// Filter images are real, in the Fourier layout with the origin at index 0. Frequencies are in
// cycles per field of view along x: column i is frequency i, row j is j * fov_x / fov_y, slice k
// is k * fov_x / fov_z. A "real" filter has nx/2 + 1 columns and multiplies rvfft_3d spectra
// (rows nx + 2 floats apart); a "complex" one has nx columns. Built images are table-owned.
//
//   float* f = build_filter("complex", p, &p->mid_filter);
//   if (f) filter_complex_pair(pair, p->nx, p->ny, f);
#pragma once

#include <cstdint>
#include <string>

#include "wave/wave_params.h"

// exp(-(i - c)^2 / (2 sigma^2)) for i in 0..n-1, 0 where the exponent is below -20. Wrapped,
// indices above n/2 are measured from c + n (the negative frequencies of the layout).
void gaussian_vector(float* g, int n, double c, double sigma, int wrapped);
// Copies the computed half (columns 0..nx/2 for "complex", rows 0..ny/2, slices 0..nz/2) over
// the other half: column nx-i is column i, row ny-j is row j, slice nz-k is slice k.
void mirror_filter(float* filter, const char* kind, int nx, int ny, int nz = 1);
// Fills a filter of type 2 to 7 of `spec` over nx by ny by nz with y and z frequency steps.
// Returns non-zero, after reporting, on cut-offs that are not above 0 and rising or an order
// below 1; other types return non-zero silently.
int fill_band_filter(float* filter, const char* kind, int nx, int ny, int nz, double step_y,
                     double step_z, const filter_spec* spec);
// The filter of a frequency-domain spec over p's image or volume; null (after reporting) on a
// bad spec or a type outside 2 to 7.
float* build_filter(const char* kind, const wave_params* p, const filter_spec* spec);
float* build_filter_3d(const char* kind, const wave_params* p, const filter_spec* spec);

// `n` real images of nx*ny*nz floats through rvfft_3d and a "real" filter; nx must be even.
int filter_real_images(float* images, int nx, int ny, int n, const float* filter, int nz = 1);
// One planar pair of nx*ny*nz points through the 3-D transform and a "complex" filter.
int filter_complex_pair(float* pair, int nx, int ny, const float* filter, int nz = 1);
// Mean (median 0) or median (median 1) of the window res[0] x res[1] x res[2] (res[2] only with
// nz > 1) over each image. Inside the mask only masked neighbours count, outside all neighbours in
// the image; fewer than 3 values keep the pixel. A null mask counts as all inside.
void spatial_filter(float* images, int nimages, const uint8_t* mask, int nx, int ny, int nz,
                    const int* res, int median);

// The run-log line of a frequency filter ("" for other types).
std::string filter_summary(const filter_spec* spec);
// The filter of `spec` on `nimages` real images (pair 0) or on nimages/2 planar pairs (pair 1)
// of p's image (volume with `volume`), without texts. Types outside 0 to 7 do nothing.
// Returns non-zero after reporting a bad spec.
int apply_filter_spec(float* images, int nimages, int pair, const uint8_t* mask,
                      const wave_params* p, const filter_spec* spec, int volume);

int post_filter(float* image, uint8_t* mask, wave_params* p, filter_spec* spec);
int post_filter_3d(float* image, uint8_t* mask, wave_params* p, filter_spec* spec);
