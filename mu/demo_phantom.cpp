#include "mu/demo_phantom.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <random>

namespace {

// Phase of a wave running along +x (axis 0) or +y (axis 1): the running sum of 2 pi f / c.
std::vector<double> Travel(const CDemoPhantom& ph, const std::vector<double>& speed, int axis) {
    const CDemoPhantomSpec& s = ph.spec;
    std::vector<double> phase(size_t(s.nx) * s.ny);
    const double k = 2.0 * std::numbers::pi * s.freq * s.voxel;
    for (int a = 0; a < (axis ? s.nx : s.ny); ++a) {
        double sum = 0.0;
        for (int b = 0; b < (axis ? s.ny : s.nx); ++b) {
            size_t i = axis ? size_t(b) * s.nx + a : size_t(a) * s.nx + b;
            sum += k / speed[i];
            phase[i] = sum - 0.5 * k / speed[i];
        }
    }
    return phase;
}

}  // namespace

CDemoPhantom MakeDemoPhantom(const CDemoPhantomSpec& spec) {
    CDemoPhantom ph;
    ph.spec = spec;
    const int nx = spec.nx, ny = spec.ny, nz = spec.nz;
    // Diameters of about 1.3 wavelengths of their own stiffness, spread along x.
    const double kpa[] = {1.0, 4.0, 6.0};
    for (int c = 0; c < 3; ++c) {
        double lambda = std::sqrt(kpa[c] * 1000.0 / CDemoPhantom::kDensity) / spec.freq;
        ph.cylinders.push_back(
            {nx * (c + 0.5) / 3.0, ny * 0.5, 0.65 * lambda / spec.voxel, kpa[c]});
    }
    const size_t plane = size_t(nx) * ny, n = plane * nz;
    std::vector<double> speed(plane);
    std::vector<uint8_t> label(plane, 0);
    for (int y = 0; y < ny; ++y)
        for (int x = 0; x < nx; ++x) {
            double mu = CDemoPhantom::kBackgroundKpa;
            for (size_t c = 0; c < ph.cylinders.size(); ++c) {
                const auto& cy = ph.cylinders[c];
                if (std::hypot(x - cy.x, y - cy.y) <= cy.radius) {
                    mu = cy.kpa;
                    label[size_t(y) * nx + x] = uint8_t(c + 1);
                }
            }
            speed[size_t(y) * nx + x] = std::sqrt(mu * 1000.0 / CDemoPhantom::kDensity);
        }
    ph.stiffness.resize(n);
    ph.region.resize(n);
    ph.magnitude.resize(n);
    std::mt19937 random(spec.seed);
    std::normal_distribution<double> gauss(0.0, 1.0);
    for (size_t i = 0; i < n; ++i) {
        size_t p = i % plane;
        double c = speed[p];
        ph.stiffness[i] = float(CDemoPhantom::kDensity * c * c / 1000.0);
        ph.region[i] = label[p];
        ph.magnitude[i] = float(1000.0 + 20.0 * gauss(random));
    }
    // Waves along x and y, and one along z whose phase only grows with the slice.
    std::vector<double> along_x = Travel(ph, speed, 0), along_y = Travel(ph, speed, 1);
    const double kz = 2.0 * std::numbers::pi * spec.freq * spec.voxel;
    const double amp[3][3] = {{0.5, 0.25, 0.15}, {0.2, 0.5, 0.15}, {0.25, 0.2, 0.4}};
    const double shift[3] = {0.0, 1.1, 2.3};
    ph.phase.resize(n * size_t(spec.noff) * size_t(spec.ncomp));
    std::vector<std::complex<double>> wave(n);
    for (int comp = 0; comp < spec.ncomp; ++comp) {
        const double* a = amp[comp % 3];
        for (size_t i = 0; i < n; ++i) {
            size_t p = i % plane;
            double z = double(i / plane);
            wave[i] = a[0] * std::polar(1.0, along_x[p] + shift[comp % 3]) +
                      a[1] * std::polar(1.0, along_y[p] - shift[comp % 3]) +
                      a[2] * std::polar(1.0, kz * z / speed[p]);
        }
        for (int t = 0; t < spec.noff; ++t) {
            std::complex<double> turn = std::polar(1.0, -2.0 * std::numbers::pi * t / spec.noff);
            float* out = ph.phase.data() + (size_t(comp) * spec.noff + t) * n;
            for (size_t i = 0; i < n; ++i)
                out[i] = float((wave[i] * turn).real() +
                               (spec.noise > 0 ? spec.noise * gauss(random) : 0.0));
        }
    }
    return ph;
}

double RegionMedian(const std::vector<float>& values, const CDemoPhantom& ph, int label,
                    int erode) {
    const int nx = ph.spec.nx, ny = ph.spec.ny, nz = ph.spec.nz;
    std::vector<float> kept;
    for (int z = 0; z < nz; ++z)
        for (int y = erode; y < ny - erode; ++y)
            for (int x = erode; x < nx - erode; ++x) {
                bool inside = true;
                for (int dy = -erode; dy <= erode && inside; ++dy)
                    for (int dx = -erode; dx <= erode && inside; ++dx)
                        inside = ph.region[(size_t(z) * ny + y + dy) * nx + x + dx] == label;
                size_t i = (size_t(z) * ny + y) * nx + x;
                if (inside && i < values.size() && std::isfinite(values[i]))
                    kept.push_back(values[i]);
            }
    if (kept.empty()) return std::numeric_limits<double>::quiet_NaN();
    std::nth_element(kept.begin(), kept.begin() + ptrdiff_t(kept.size() / 2), kept.end());
    return kept[kept.size() / 2];
}
