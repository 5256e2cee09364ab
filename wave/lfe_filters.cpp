#include "wave/lfe_filters.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

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
// weighted by the squared cosine to that axis. Values depend on the folded indices only, so
// they are computed once over the first octant and copied out.
void fill(float* filter, int nx, int ny, int nz, const double* fov, double f, double c, int axis) {
    int n[3] = {nx, ny, nz}, h[3] = {nx / 2 + 1, ny / 2 + 1, nz / 2 + 1};
    std::vector<float> octant(size_t(h[0]) * h[1] * h[2]);
    std::vector<double> w2[3];
    for (int a = 0; a < 3; ++a) {
        w2[a].resize(h[a]);
        for (int i = 0; i < h[a]; ++i) w2[a][i] = (i / fov[a]) * (i / fov[a]);
    }
    for (int z = 0; z < h[2]; ++z)
        for (int y = 0; y < h[1]; ++y)
            for (int x = 0; x < h[0]; ++x) {
                double rho2 = w2[0][x] + w2[1][y] + w2[2][z];
                double v = radial(rho2, f, c);
                if (axis >= 0 && v != 0.0) {
                    int idx[3] = {x, y, z};
                    v *= w2[axis][idx[axis]] / rho2;
                }
                octant[(size_t(z) * h[1] + y) * h[0] + x] = float(v);
            }
    // Along the filter's own axis the mirror half is 0, not a copy.
    auto source = [&](int a, int i) { return i <= n[a] / 2 ? i : (a == axis ? -1 : n[a] - i); };
    for (int z = 0; z < nz; ++z) {
        int sz = source(2, z);
        for (int y = 0; y < ny; ++y) {
            int sy = source(1, y);
            float* row = filter + (size_t(z) * ny + y) * nx;
            if (sz < 0 || sy < 0) {
                std::fill(row, row + nx, 0.0f);
                continue;
            }
            const float* o = &octant[(size_t(sz) * h[1] + sy) * h[0]];
            for (int x = 0; x < nx; ++x) {
                int sx = source(0, x);
                row[x] = sx < 0 ? 0.0f : o[sx];
            }
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
