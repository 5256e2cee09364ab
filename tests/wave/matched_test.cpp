// Matched filter: the separable correlation against the double sum, plane waves against the
// 3-tap Laplacian's response, the quirks and the drivers.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

#include "tests/peer.h"
#include "tests/wave/buffer_driver.h"
#include "tests/wave/wave_test_util.h"
#include "wave/matched.h"
#include "wave/messages.h"
#include "wave/stages.h"

using wave_test::median;

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kDx = 0.0015, kF = 60.0;

std::vector<float> plane_pair(int nx, int ny, double kx, double ky) {
    size_t n = size_t(nx) * ny;
    std::vector<float> v(2 * n);
    for (int y = 0; y < ny; ++y)
        for (int x = 0; x < nx; ++x) {
            double p = kx * x + ky * y + 0.4;
            v[y * nx + x] = float(std::cos(p));
            v[n + y * nx + x] = float(std::sin(p));
        }
    return v;
}

}  // namespace

TEST(MatchedFilter, SeparableCorrelationEqualsTheDoubleSum) {
    const int win[2] = {7, 9}, rows = 7, cols = 9;
    auto r = wave_test::noise(2 * rows * cols, 21);
    std::vector<mf_complex> core(rows * cols), F(rows * cols);
    for (int i = 0; i < rows * cols; ++i) core[i] = {r[2 * i], r[2 * i + 1]};
    std::vector<float> g1(rows * cols), g2(rows * cols), gy(rows), gx(cols);
    gauss_window_norm(g1.data(), win, 3.2f);
    gauss_window_norm(g2.data(), win, 1.4f);
    for (int a = 0; a < rows; ++a) gy[a] = std::exp(-std::pow((a - 3) / 3.0, 2) * 3.2 * 3.2 / 2);
    for (int b = 0; b < cols; ++b) gx[b] = std::exp(-std::pow((b - 4) / 4.0, 2) * 3.2 * 3.2 / 2);
    window_correlate(core.data(), F.data(), gy.data(), gx.data(), g2.data(), win);
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) {
            std::complex<double> s = 0.0;
            for (int k = 0; k < rows; ++k)
                for (int l = 0; l < cols; ++l) {
                    int a = i - k + 3, b = j - l + 4;
                    if (a < 0 || a >= rows || b < 0 || b >= cols) continue;
                    s += std::conj(std::complex<double>(core[k * cols + l])) *
                         double(g1[a * cols + b]);
                }
            s *= g2[i * cols + j];
            EXPECT_NEAR(F[i * cols + j].real(), s.real(), 1e-5);
            EXPECT_NEAR(F[i * cols + j].imag(), s.imag(), 1e-5);
        }
}

TEST(MatchedFilter, PlaneWavesGiveTheThreeTapLaplaciansResponse) {
    const int nx = 64, ny = 48, win[2] = {11, 11};
    size_t n = size_t(nx) * ny;
    std::vector<float> o(4 * n);
    for (double lam : {11.0, 22.0, 44.0}) {
        for (double angle : {0.0, 0.5}) {
            double k = 2 * kPi / lam;
            auto pair = plane_pair(nx, ny, k * std::cos(angle), k * std::sin(angle));
            ASSERT_EQ(
                matched_filter(pair.data(), pair.data() + n, o.data(), o.data() + n,
                               o.data() + 2 * n, o.data() + 3 * n, nx, ny, float(nx * kDx),
                               float(ny * kDx), float(kF), win, 1e-6f, nullptr, nullptr, 0, 0),
                0);
            // (f / k)^2 scaled by the response of the 5-point Laplacian along each axis.
            double kx = k * std::cos(angle), ky = k * std::sin(angle);
            double resp = k * k / ((2 - 2 * std::cos(kx)) + (2 - 2 * std::cos(ky)));
            double want = std::pow(kF * lam * kDx, 2) * resp;
            for (int y = 6; y < ny - 6; y += 5)
                for (int x = 6; x < nx - 6; x += 5)
                    EXPECT_NEAR(o[y * nx + x] / want, 1.0, 0.01) << lam << " " << angle;
        }
    }
}

TEST(MatchedFilter, ZeroWaveRegularisationAndBadSizes) {
    buffer_driver d;
    const int nx = 24, ny = 20, win[2] = {7, 7};
    size_t n = size_t(nx) * ny;
    std::vector<float> zero(2 * n, 0.0f), o(4 * n, 5.0f);
    ASSERT_EQ(matched_filter(zero.data(), zero.data() + n, o.data(), o.data() + n, o.data() + 2 * n,
                             o.data() + 3 * n, nx, ny, 0.1f, 0.1f, 60.0f, win, 1e-6f, nullptr,
                             nullptr, 0, 0),
              0);
    for (float v : o) EXPECT_EQ(v, 0.0f);
    // mf_regular 0: d = |r|^2, so cmu is exactly 1 / r times w^2; with regularisation smaller.
    auto pw = plane_pair(nx, ny, 0.4, 0.2);
    std::vector<float> a(4 * n), b(4 * n);
    matched_filter(pw.data(), pw.data() + n, a.data(), a.data() + n, a.data() + 2 * n,
                   a.data() + 3 * n, nx, ny, 0.1f, 0.1f, 60.0f, win, 0.0f, nullptr, nullptr, 0, 0);
    matched_filter(pw.data(), pw.data() + n, b.data(), b.data() + n, b.data() + 2 * n,
                   b.data() + 3 * n, nx, ny, 0.1f, 0.1f, 60.0f, win, 0.5f, nullptr, nullptr, 0, 0);
    size_t c = 10 * nx + 12;
    EXPECT_NEAR(b[2 * n + c] / a[2 * n + c], 1.0 / 1.5, 1e-3);
    // Too small, too wide.
    EXPECT_EQ(matched_filter(pw.data(), pw.data() + n, a.data(), a.data() + n, a.data() + 2 * n,
                             a.data() + 3 * n, 2, ny, 0.1f, 0.1f, 60.0f, win, 0.0f, nullptr,
                             nullptr, 0, 0),
              1);
    const int wide[2] = {7, 31};
    EXPECT_EQ(matched_filter(pw.data(), pw.data() + n, a.data(), a.data() + n, a.data() + 2 * n,
                             a.data() + 3 * n, nx, ny, 0.1f, 0.1f, 60.0f, wide, 0.0f, nullptr,
                             nullptr, 0, 0),
              1);
    EXPECT_EQ(d.log,
              "\nmatched_filter: Image must be at least 3 pixels along each axis.\n"
              "\nmatched_filter: Filter window cannot be bigger than image.\n");
}

TEST(MatchedFilterDrivers, PhantomOneAndThreeComponents) {
    buffer_driver d;
    const int nx = 160, ny = 48, split = 80;
    const double c1 = 1.5, c2 = 3.0;
    size_t n = size_t(nx) * ny;
    std::vector<float> pair(2 * n);
    for (int y = 0; y < ny; ++y)
        for (int x = 0; x < nx; ++x) {
            double t = std::min(x, split) * kDx / c1 + std::max(x - split, 0) * kDx / c2;
            pair[y * nx + x] = float(std::cos(2 * kPi * kF * t));
            pair[n + y * nx + x] = float(std::sin(2 * kPi * kF * t));
        }
    wave_params p;
    p.nx = nx;
    p.ny = ny;
    p.fov[0] = float(nx * kDx);
    p.fov[1] = float(ny * kDx);
    p.mech_freq = float(kF);
    p.mf_win[0] = p.mf_win[1] = 11;
    int stiff = 0, stack = 0;
    p.mf_stiff = &stiff;
    p.mf_stack_out = &stack;
    auto regions = [&](const std::vector<float>& s, const char* what) {
        const double cs[2] = {c1, c2};
        for (int r = 0; r < 2; ++r) {
            int w = int(std::ceil(cs[r] / kF / kDx));
            int x0 = r == 0 ? w : split + w, x1 = r == 0 ? split - w : nx - w;
            std::vector<double> v;
            for (int y = 8; y < ny - 8; ++y)
                for (int x = x0; x < x1; ++x) v.push_back(s[y * nx + x]);
            EXPECT_NEAR(median(v), cs[r] * cs[r], 0.05 * cs[r] * cs[r]) << what << " " << r;
        }
    };
    wave_quiet[WF_MF] = 0;
    testing::internal::CaptureStdout();
    ASSERT_EQ(mf_2d(&p, pair.data(), nullptr, nullptr), 0);
    std::string out = testing::internal::GetCapturedStdout();
    wave_quiet[WF_MF] = 1;
    EXPECT_EQ(out.rfind("Matched Filter Inversion (11 x 11 window) \n\rProcessing row 1 of 48 ", 0),
              0u);
    regions(d.images[&stiff][0], "one");
    EXPECT_EQ(d.images[&stack].size(), 4u);
    std::vector<float> three;
    for (double a : {1.0, 0.3, 2.0})
        for (float v : pair) three.push_back(float(v * a));
    ASSERT_EQ(mf_2d_XYZ(&p, three.data(), nullptr), 0);
    regions(d.images[&stiff][0], "XYZ");
    EXPECT_EQ(mem_count(), 0);
}
