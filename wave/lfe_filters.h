// The lognormal quadrature filters of local frequency estimation, in the Fourier layout with
// the origin at index 0. Frequencies are in waves per metre: column i is i / fov_x, row j is
// j / fov_y, slice k is k / fov_z, for indices 0 to n/2 and mirrored beyond (n - i is i).
//
// The radial part about the band centre f is exp(L^2 c) with L = ln(rho^2 / f^2) and
// c = -0.125 / ln R for a band ratio R; 0 at the origin. A directional filter multiplies it by
// the squared cosine to its axis and passes only the half-space of non-negative indices along
// that axis (the mirror half is 0), so its inverse transform is analytic along the axis.
#pragma once

// Half-spaces along x or y, and the isotropic filter (both halves), with ratio R.
void lognormal_x_2d(float* filter, int nx, int ny, float fov_x, float fov_y, double f,
                    double ratio);
void lognormal_y_2d(float* filter, int nx, int ny, float fov_x, float fov_y, double f,
                    double ratio);
void lognormal_iso_2d(float* filter, int nx, int ny, float fov_x, float fov_y, double f,
                      double ratio);
// As lognormal_x_2d with the octave constant.
void lognormal_soft_2d(float* filter, int nx, int ny, float fov_x, float fov_y, double f);
// Along rows only: the radial part of |u| for columns 1 to nx/2, 0 elsewhere, on every row.
void lognormal_1d(float* filter, int nx, int ny, float fov_x, double f);
// Octave filters of a volume along x, y or z.
void lognormal_x_3d(float* filter, int nx, int ny, int nz, float fov_x, float fov_y, float fov_z,
                    double f);
void lognormal_y_3d(float* filter, int nx, int ny, int nz, float fov_x, float fov_y, float fov_z,
                    double f);
void lognormal_z_3d(float* filter, int nx, int ny, int nz, float fov_x, float fov_y, float fov_z,
                    double f);
// exp(-a/2) with a = (u/sigma)^2 + (v/sigma)^2, 0 where a/2 exceeds 20.
void gauss_lp_2d(float* filter, double sigma, int nx, int ny, float fov_x, float fov_y);
