// Matched filter inversion: in a window about each pixel the wave is correlated with a
// Gaussian-smoothed, tapered copy of its own conjugate (the filter F) and with the discrete
// negative Laplacian of F, which moves the derivative off the noisy data; their ratio is the
// local -lap(U)/U, and an error figure comes with it. Pair arrays are indexed 0 = y, 1 = x.
//
//   int win[2] = {17, 17};
//   matched_filter(re, im, s2, at, cr, ci, nx, ny, fov_x, fov_y, 60.0f, win, 1e-6f, mask,
//                  nullptr, 0, 1);
#pragma once

#include <complex>
#include <cstdint>

using mf_complex = std::complex<float>;

// exp((a^2 / h0^2 + b^2 / h1^2) * (-sigma^2 / 2)) over the (2 h0 + 1) by (2 h1 + 1) window
// (rows a); an axis of half-width 0 contributes 1.
void gauss_window_norm(float* buf, const int* win, float sigma);
// The (2 h0 + 3) by (2 h1 + 3) window about (y, x) into `ext` and its inner part into `core`;
// outside the image coordinates reflect (-1 is 0, n is n - 1), and clamp where they would
// still fall outside.
void window_extract(const mf_complex* wave, mf_complex* ext, mf_complex* core, int nx, int ny,
                    int x, int y, const int* win);
// F = g2 * (conj(core) correlated with g1), g1 the product of `g1y` and `g1x` (separable).
void window_correlate(const mf_complex* core, mf_complex* F, const float* g1y, const float* g1x,
                      const float* g2, const int* win);
// The 5-point negative Laplacian of F onto the extended grid, -c along y and -1 along x.
void laplacian_filter(const mf_complex* F, mf_complex* L, const int* win, float c);
// Sum of a[i] * b[i], no conjugate.
mf_complex complex_dot(const mf_complex* a, const mf_complex* b, int n);
// E_L over the extended window, E_F and E_c = sum Re(conj F L) over the central part.
void mf_energies(const mf_complex* F, const mf_complex* L, const float* extw, const int* win,
                 double* e_l, double* e_f, double* e_c);
// The complex ratio per pixel (interleaved) and its error figure.
void mf_core(const mf_complex* wave, mf_complex* ratio, const float* weights, float* err,
             const int* dims, const float* pixel, const float* sigmas, const int* win, int seq,
             int nseq);
// The outputs as in direct inversion. Returns 1 after reporting an image below 3 pixels or a
// window larger than it.
int matched_filter(const float* re, const float* im, float* speed2, float* atten, float* cmu_re,
                   float* cmu_im, int nx, int ny, float fov_x, float fov_y, float mech_freq,
                   const int* win, float regular, const uint8_t* mask, const uint8_t* aux_mask,
                   int seq, int nseq);
