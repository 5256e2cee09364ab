#include "wave/lfe_filters.h"

#include <cmath>
#include <cstddef>

namespace {

// exp(-L*L / 5.5451775): the octave (R = 2) filters of the plane, and of the volume.
constexpr double kOctavePlane = -1.0 / 5.5451775;
constexpr double kOctaveVolume = -1.0 / 5.545177444479562;

double radial(double rho2, double f, double c) {
    if (!(rho2 > 0.0)) return 0.0;
    double L = std::log(rho2 / (f * f));
    return std::exp(L * L * c);
}

double c_of_ratio(double ratio) { return -0.125 / std::log(ratio); }

// Index distance to the origin along an axis of n: i up to n/2, n - i beyond.
int folded(int i, int n) { return i <= n / 2 ? i : n - i; }

// axis -1: isotropic; 0, 1, 2: the half-space of non-negative indices along x, y or z,
// weighted by the squared cosine to that axis.
void fill(float* filter, int nx, int ny, int nz, const double* fov, double f, double c, int axis) {
    int n[3] = {nx, ny, nz};
    for (int z = 0; z < nz; ++z)
        for (int y = 0; y < ny; ++y) {
            float* row = filter + (size_t(z) * ny + y) * nx;
            for (int x = 0; x < nx; ++x) {
                int idx[3] = {x, y, z};
                double w[3], rho2 = 0.0;
                bool outside = false;
                for (int a = 0; a < 3; ++a) {
                    outside = outside || (a == axis && idx[a] > n[a] / 2);
                    w[a] = folded(idx[a], n[a]) / fov[a];
                    rho2 += w[a] * w[a];
                }
                double v = outside ? 0.0 : radial(rho2, f, c);
                if (axis >= 0 && v != 0.0) v *= w[axis] * w[axis] / rho2;
                row[x] = float(v);
            }
        }
}

void fill_2d(float* filter, int nx, int ny, float fov_x, float fov_y, double f, double c,
             int axis) {
    const double fov[3] = {fov_x, fov_y, 1.0};
    fill(filter, nx, ny, 1, fov, f, c, axis);
}

void fill_3d(float* filter, int nx, int ny, int nz, float fov_x, float fov_y, float fov_z, double f,
             int axis) {
    const double fov[3] = {fov_x, fov_y, fov_z};
    fill(filter, nx, ny, nz, fov, f, kOctaveVolume, axis);
}

}  // namespace

void lognormal_x_2d(float* filter, int nx, int ny, float fov_x, float fov_y, double f,
                    double ratio) {
    fill_2d(filter, nx, ny, fov_x, fov_y, f, c_of_ratio(ratio), 0);
}

void lognormal_y_2d(float* filter, int nx, int ny, float fov_x, float fov_y, double f,
                    double ratio) {
    fill_2d(filter, nx, ny, fov_x, fov_y, f, c_of_ratio(ratio), 1);
}

void lognormal_iso_2d(float* filter, int nx, int ny, float fov_x, float fov_y, double f,
                      double ratio) {
    fill_2d(filter, nx, ny, fov_x, fov_y, f, c_of_ratio(ratio), -1);
}

void lognormal_soft_2d(float* filter, int nx, int ny, float fov_x, float fov_y, double f) {
    fill_2d(filter, nx, ny, fov_x, fov_y, f, kOctavePlane, 0);
}

void lognormal_1d(float* filter, int nx, int ny, float fov_x, double f) {
    for (int x = 0; x < nx; ++x) {
        double u = x / double(fov_x);
        filter[x] = (x >= 1 && x <= nx / 2) ? float(radial(u * u, f, kOctavePlane)) : 0.0f;
    }
    for (int y = 1; y < ny; ++y)
        for (int x = 0; x < nx; ++x) filter[size_t(y) * nx + x] = filter[x];
}

void lognormal_x_3d(float* filter, int nx, int ny, int nz, float fov_x, float fov_y, float fov_z,
                    double f) {
    fill_3d(filter, nx, ny, nz, fov_x, fov_y, fov_z, f, 0);
}

void lognormal_y_3d(float* filter, int nx, int ny, int nz, float fov_x, float fov_y, float fov_z,
                    double f) {
    fill_3d(filter, nx, ny, nz, fov_x, fov_y, fov_z, f, 1);
}

void lognormal_z_3d(float* filter, int nx, int ny, int nz, float fov_x, float fov_y, float fov_z,
                    double f) {
    fill_3d(filter, nx, ny, nz, fov_x, fov_y, fov_z, f, 2);
}

void gauss_lp_2d(float* filter, double sigma, int nx, int ny, float fov_x, float fov_y) {
    for (int y = 0; y < ny; ++y) {
        double v = folded(y, ny) / double(fov_y) / sigma;
        for (int x = 0; x < nx; ++x) {
            double u = folded(x, nx) / double(fov_x) / sigma;
            double h = (u * u + v * v) / 2.0;
            filter[size_t(y) * nx + x] = h > 20.0 ? 0.0f : float(std::exp(-h));
        }
    }
}
