// Derivative and smoothing kernels: Savitzky-Golay coefficients in 1-D, 2-D and 3-D (all in
// double, results in float), the Farid and Romano kernels, the pseudo-inverse they rest on,
// and medians. Pair arrays (deriv, win, order, pixel) are indexed 0 = y, 1 = x, 2 = z.
// Functions return 0 on success and non-zero after reporting.
#pragma once

// Pseudo-inverse (n x m) of the row-major m x n matrix `a` by singular value decomposition,
// keeping singular values above `tol`. Returns -1 when the decomposition fails.
int pinv_svd(const double* a, double* ainv, int m, int n, double tol);
// 1-D least-squares polynomial fit of `order` over nl points left and nr right; coef holds
// nl + nr + 1 values in window order.
int SGcoeff(int deriv, int order, int nl, int nr, float* coef);
// 2-D and 3-D fits on products of Legendre polynomials; coef in window order (index 0 outer).
int SGcoeff2d(const int* deriv2, int order, const int* nl2, const int* nr2, float* coef);
int SGcoeff3d(const int* deriv3, int order, const int* nl3, const int* nr3, float* coef);
// order 0 (smoothing) or 2 (second derivative); half 1 to 6; 2 * half + 1 taps.
int Farid_coeff(int order, int half, float* coef);
int Romano_coeff(int order, int half, float* coef);

// Element (n - 1) / 2 of the sorted order, NaN sorted last (the lower middle of an even
// count); reorders buf.
float median_select(float* buf, int n);
// Window median with the window cut at the edges but taken over the full window size: the
// missing slots count as zeros. medwin and dims are (y, x).
void median_filter_2d(float* out, const float* in, const int* medwin, const int* dims);

// Savitzky-Golay kernels for the filters below, by mode (flags & 192): 0 separable invariant
// (x kernel of win[1] taps, then y of win[0], then z of win[2]); 64 separable variant (per
// axis, one kernel per position in the window: kernel p fits p points before the pixel);
// 128 one non-separable kernel (index 0 outer); 192 one non-separable kernel per edge
// position, position (p0, p1[, p2]) at ((p0 * win[1] + p1) * win[2] + p2) * area.
// Coefficient counts: sg_kernel_size() floats.
int sg_kernel_size(const int* win, int flags, int dims);
int sg_kernel_2d(const int* deriv2, const int* order2, const int* win2, float* coef, int flags);
int sg_smooth_2d(const int* order2, const int* win2, float* coef, int flags);
// The Laplacian: separable modes hold the second derivative of each axis over its pixel size
// squared (to be applied with serial 0, which sums the axes); non-separable ones the sum.
int sg_laplacian_2d(const int* order2, const int* win2, const float* pixel, float* coef, int flags);
int sg_kernel_3d(const int* deriv3, const int* order3, const int* win3, float* coef, int flags);
int sg_smooth_3d(const int* order3, const int* win3, float* coef, int flags);
int sg_laplacian_3d(const int* order3, const int* win3, const float* pixel, float* coef, int flags);
// Applies a kernel set of the dispatchers to the image (dims y, x) or volume (y, x, z).
// serial 1 runs the axes one after the other (a product kernel); serial 0 filters the input
// along each axis and sums (the separable Laplacian). Invariant modes cut the kernel at the
// edges (zero padding); variant modes keep the window inside the image, so they need windows
// no larger than the image. Returns 1, after reporting, on such a window or a bad argument.
int apply_sg_filter_2d(const float* in, float* out, const float* coef, const int* win,
                       const int* dims, int flags, int serial);
int apply_sg_filter_3d(const float* in, float* out, const float* coef, const int* win,
                       const int* dims, int flags, int serial);
