// Direct inversion of the time-harmonic wave equation, pixel by pixel: for the complex
// harmonic U of one displacement component the complex modulus over rho w^2 is
// G = -U conj(L) / (|L|^2 + reg) with L the Laplacian of U, from which come the squared wave
// speed, the attenuation and the complex modulus times w^2. AIDE solves two moduli at once
// from several components, keeping the gradient of the divergence.
//
// Pair arrays are indexed 0 = y, 1 = x (2 = z): dims, order, win, pixel, med. Window and
// order fix-ups are reported and written back to the caller's arrays. Outputs are four float
// images: speed2, atten, cmu_re, cmu_im. Functions return 0, or 1 after reporting a kernel
// that cannot be made or an image too small to filter.
//
//   int dims[2] = {ny, nx}, order[2] = {3, 3}, win[2] = {11, 11}, med[2] = {3, 3};
//   float pixel[2] = {fov_y / ny, fov_x / nx};
//   direct_division2(re, im, s2, at, cr, ci, dims, order, win, 1e-6f, pixel, 60.0f, med, 0,
//                    3, mask, nullptr, 0, 1);
#pragma once

#include <cstdint>

// Flag bits beside the Savitzky-Golay mode (flags & 192).
constexpr int kAideDivergence = 0x100;  // add the divergence term to the Laplacian
constexpr int kAideNoDivergence = 0x200;
constexpr int kAideSpeed = 0x400;  // moduli to speed and attenuation

// Savitzky-Golay through the mode kernels when type is 0, else direct_inversion_2d with the
// same arguments. The speed output is squared.
int direct_division2(const float* re, const float* im, float* speed2, float* atten, float* cmu_re,
                     float* cmu_im, int* dims, int* order, int* win, float regular,
                     const float* pixel, float mech_freq, int* med, int flags, int type,
                     const uint8_t* mask, const uint8_t* aux_mask, int seq, int nseq);
// type 1 Farid, 2 Romano (with the 3-tap Laplacian), 3 Savitzky-Golay, all separable.
int direct_inversion_2d(const float* re, const float* im, float* speed2, float* atten,
                        float* cmu_re, float* cmu_im, int* dims, int* order, int* win,
                        float regular, const float* pixel, float mech_freq, int* med, int flags,
                        int type, const uint8_t* mask, const uint8_t* aux_mask, int seq, int nseq);
int direct_division3(const float* re, const float* im, float* speed2, float* atten, float* cmu_re,
                     float* cmu_im, int* dims, int* order, int* win, float regular,
                     const float* pixel, float mech_freq, int* med, int flags, int type,
                     const uint8_t* mask, const uint8_t* aux_mask, int seq, int nseq);
int direct_inversion_3d(const float* re, const float* im, float* speed2, float* atten,
                        float* cmu_re, float* cmu_im, int* dims, int* order, int* win,
                        float regular, const float* pixel, float mech_freq, int* med, int flags,
                        int type, const uint8_t* mask, const uint8_t* aux_mask, int seq, int nseq);

// rx, ix: the x component's planes; the y (and z) component's follow two planes further on.
// Outputs: Re and Im of mu and of nu = lambda + 2 mu, times w^2, or with kAideSpeed their
// speeds and attenuations; the first output is squared in both cases.
int aide_2d(const float* rx, const float* ix, float* speed2, float* atten, float* p2,
            float* p2_atten, int* dims, int* order, int* win, float regular, const float* pixel,
            float mech_freq, int* med, int flags);
int aide_3d(const float* rx, const float* ix, float* speed2, float* atten, float* p2,
            float* p2_atten, int* dims, int* order, int* win, float regular, const float* pixel,
            float mech_freq, int* med, int flags);
