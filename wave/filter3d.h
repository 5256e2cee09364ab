// Separable filtering of volumes with zero padding, and the strided helpers of the kernels.
// Kernels are odd-length correlations centred on the pixel; taps falling outside the volume
// are dropped (zero padding).
#pragma once

// Applies the x, y, z kernels in turn (a null kernel skips the axis); a scale other than 0
// and 1 multiplies that axis's result. With `add` the result is added to `out`. A null `out`
// allocates the result (malloc; the caller frees it). Returns the result, or null.
float* filter3d_zeropad(const float* in, float* out, int nx, int ny, int nz, const float* kx,
                        int nkx, float sx, const float* ky, int nky, float sy, const float* kz,
                        int nkz, float sz, int add);
// Box sums along x or y, the window clipped at the edges; every tap must be 1.0.
void fast_3d_x_mean(const float* in, float* out, int nx, int ny, int nz, const float* k, int nk);
void fast_3d_y_mean(const float* in, float* out, int nx, int ny, int nz, const float* k, int nk);
double dot_strided(const float* a, int stride_a, const float* b, int stride_b, int n);
double sum_strided(const float* a, int stride, int n);
