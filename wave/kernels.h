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
