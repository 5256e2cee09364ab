// Phase gradient: plane waves (also wrapping many times), the projected and direction
// outputs, a random smooth phase against NumPy, the input checks and the drivers.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "tests/peer.h"
#include "tests/wave/buffer_driver.h"
#include "tests/wave/wave_test_util.h"
#include "wave/mem.h"
#include "wave/messages.h"
#include "wave/phgrad.h"
#include "wave/stages.h"

using wave_test::f32;
using wave_test::floats;
using wave_test::median;

namespace {

constexpr double kPi = std::numbers::pi;

// Wrapped phase of a plane wave of k waves per metre at `angle` radians (y downwards), over a
// field of view of fov by fov.
std::vector<float> ramp(int nx, int ny, double fov, double k, double angle) {
    std::vector<float> v(size_t(nx) * ny);
    double dx = fov / nx, dy = fov / ny;
    for (int y = 0; y < ny; ++y)
        for (int x = 0; x < nx; ++x) {
            double p = 2 * kPi * k * (std::cos(angle) * x * dx + std::sin(angle) * y * dy) + 0.7;
            v[size_t(y) * nx + x] = float(std::remainder(p, 2 * kPi));
        }
    return v;
}

}  // namespace

TEST(PhaseGradient, PlaneWavesGiveTheirFrequencyAlsoWhenWrappingOften) {
    const int nx = 48, ny = 40;
    const double fov = 0.24;
    const int win[2] = {5, 5};
    // From 0.1 to 2.5 radians a pixel: the steep ramp wraps every 2.5 pixels.
    for (double k : {3.0, 20.0, 60.0, 80.0}) {
        for (double angle : {0.0, 0.6, 2.0}) {
            auto ph = ramp(nx, ny, fov, k, angle);
            float* est = nullptr;
            int level = mem_next_level();
            ASSERT_EQ(phgrad_2d(ph.data(), nullptr, nullptr, nx, ny, 1, 0, 0, float(fov),
                                float(fov), win, nullptr, &est, nullptr, 0, 0.0f),
                      1);
            for (int y = 0; y < ny; ++y)
                for (int x = 0; x < nx; ++x)
                    ASSERT_NEAR(est[y * nx + x], k, 0.005 * k)
                        << k << " " << angle << " " << x << " " << y;
            mem_free_level(level, 0);
        }
    }
    EXPECT_EQ(mem_count(), 0);
}

TEST(PhaseGradient, ProjectionAndDirectionOutputs) {
    const int nx = 40, ny = 32;
    const double fov = 0.2, k = 30.0, angle = 0.5;
    auto ph = ramp(nx, ny, fov, k, angle);
    const int win[2] = {5, 7};
    std::vector<float> est(size_t(nx) * ny), dir(est.size()), plain(est.size());
    pg_core_2d(ph.data(), nullptr, plain.data(), dir.data(), nx, ny, float(fov), float(fov), 5, 7,
               0, 0, 0, 0.0f);
    // dir_angle 0 gives |sx| / (2 pi).
    pg_core_2d(ph.data(), nullptr, est.data(), nullptr, nx, ny, float(fov), float(fov), 5, 7, 0, 0,
               1, 0.0f);
    for (size_t i = 0; i < est.size(); ++i) EXPECT_NEAR(est[i], k * std::cos(angle), 0.005 * k);
    // Along the wave (y downwards, angles clockwise) the projection is the whole frequency.
    std::vector<float> along(est.size()), sdir(est.size());
    pg_core_2d(ph.data(), nullptr, along.data(), sdir.data(), nx, ny, float(fov), float(fov), 5, 7,
               0, 0, 1, float(-angle * 180 / kPi));
    for (size_t i = 0; i < est.size(); ++i) EXPECT_NEAR(along[i], k, 0.005 * k);
    // Direction: atan2(sy, sx) * -57.29578, plus 360 below 0; the same with smoothed vectors.
    double want = 360.0 - angle * 180 / kPi;
    for (size_t i = 0; i < est.size(); ++i) {
        EXPECT_NEAR(dir[i], want, 0.2);
        EXPECT_NEAR(sdir[i], want, 0.2);
    }
    // A mask: zeros outside, and the window only counts inside.
    std::vector<uint8_t> mask(est.size(), 1);
    for (int x = 0; x < nx; ++x) mask[x] = 0;
    pg_core_2d(ph.data(), mask.data(), est.data(), dir.data(), nx, ny, float(fov), float(fov), 5, 5,
               0, 0, 0, 0.0f);
    EXPECT_EQ(est[3], 0.0f);
    EXPECT_EQ(dir[3], 0.0f);
    EXPECT_NEAR(est[nx + 3], k, 0.005 * k);
    (void)win;
}

TEST(PhaseGradient, RandomSmoothPhaseEqualsNumpyUnwrapAndPolyfit) {
    const int nx = 24, ny = 20;
    const float fov_x = 0.12f, fov_y = 0.1f;
    auto r = wave_test::noise(6, 9);
    std::vector<float> ph(size_t(nx) * ny);
    for (int y = 0; y < ny; ++y)
        for (int x = 0; x < nx; ++x)
            ph[y * nx + x] = float(std::remainder(
                0.9 * x + 0.4 * y + r[0] * std::sin(0.3 * x + r[1]) * std::cos(0.25 * y + r[2]) * 3,
                2 * kPi));
    peer::Peer p;
    p.Put("ph", f32(ph, {nx, ny}));
    std::string id = p.Case("pg ph 2 3 " + std::to_string(double(fov_x) / nx) + " " +
                            std::to_string(double(fov_y) / ny));
    ASSERT_TRUE(p.Run("wave/inversion_numpy.py"));
    auto want = floats(p.Get(id));
    std::vector<float> est(ph.size());
    pg_core_2d(ph.data(), nullptr, est.data(), nullptr, nx, ny, fov_x, fov_y, 5, 7, 0, 0, 0, 0.0f);
    ASSERT_EQ(want.size(), est.size());
    for (size_t i = 0; i < est.size(); ++i) EXPECT_NEAR(est[i], want[i], 1e-4 * want[i]) << i;
}

TEST(PhaseGradient, ChecksAveragingAndHoles) {
    buffer_driver d;
    const int nx = 16, ny = 12, win[3] = {5, 5, 3};
    float* est = nullptr;
    std::vector<float> ph(2 * nx * ny, 0.0f);
    EXPECT_EQ(phgrad_2d(ph.data(), nullptr, nullptr, nx, ny, 0, 0, 0, 0.1f, 0.1f, win, nullptr,
                        &est, nullptr, 0, 0.0f),
              0);
    EXPECT_EQ(phgrad_2d(ph.data(), nullptr, nullptr, nx, ny, 2, 0, 3, 0.1f, 0.1f, win, nullptr,
                        &est, nullptr, 0, 0.0f),
              0);
    EXPECT_EQ(phgrad_3d(ph.data(), nullptr, nullptr, nx, ny, 1, 2, 0, 2, 0.1f, 0.1f, 0.1f, win,
                        nullptr, &est),
              0);
    EXPECT_EQ(d.log,
              "\nInvalid number of input images in phgrad_2d\n"
              "\npairs_flag or average_flag invalid in phgrad_2d\n"
              "\nrequired amp2_buf is null in phgrad_3d\n");
    wave_quiet[WF_PG] = 0;
    testing::internal::CaptureStderr();
    phgrad_2d(ph.data(), nullptr, nullptr, nx, ny, 2, 0, 2, 0.1f, 0.1f, win, nullptr, &est, nullptr,
              0, 0.0f);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "\nNULL amp2_buf in phgrad_2d; amp2_buf is REQUIRED \n"
              "for squared-amplitude-weighted averaging when input \n"
              "array is multiple phase images. \n"
              "  pairs_flag = 0, average_flag = 2 \n\n");
    wave_quiet[WF_PG] = 1;
    // Two pairs of frequencies 10 and 20 weighted by amplitudes 1 and 2 (squares 1 and 4):
    // sqrt((1 * 100 + 4 * 400) / 5).
    const double fov = 0.2;
    auto a = ramp(40, 30, fov, 10.0, 0.0), b = ramp(40, 30, fov, 20.0, 0.0);
    size_t n = a.size();
    std::vector<float> pairs(4 * n);
    for (size_t i = 0; i < n; ++i) {
        pairs[i] = std::cos(a[i]), pairs[n + i] = std::sin(a[i]);
        pairs[2 * n + i] = 2 * std::cos(b[i]), pairs[3 * n + i] = 2 * std::sin(b[i]);
    }
    int level = mem_next_level();
    est = nullptr;
    ASSERT_EQ(phgrad_2d(pairs.data(), nullptr, nullptr, 40, 30, 2, 1, 2, float(fov), float(fov),
                        win, nullptr, &est, nullptr, 0, 0.0f),
              1);
    EXPECT_NEAR(est[15 * 40 + 20], std::sqrt((100.0 + 4 * 400.0) / 5), 0.05);
    // A NaN phase is a hole: its neighbours keep their slope, nothing else changes.
    auto holed = a;
    holed[15 * 40 + 20] = NAN;
    float* e2 = nullptr;
    ASSERT_EQ(phgrad_2d(holed.data(), nullptr, nullptr, 40, 30, 1, 0, 0, float(fov), float(fov),
                        win, nullptr, &e2, nullptr, 0, 0.0f),
              1);
    for (size_t i = 0; i < n; ++i) EXPECT_NEAR(e2[i], 10.0, 0.05) << i;
    // 3-D: a ramp along z.
    const int nz = 8;
    std::vector<float> vol(size_t(nx) * ny * nz);
    for (int z = 0; z < nz; ++z)
        for (int i = 0; i < nx * ny; ++i)
            vol[size_t(z) * nx * ny + i] =
                float(std::remainder(2 * kPi * 25.0 * z * 0.08 / nz, 2 * kPi));
    float* e3 = nullptr;
    ASSERT_EQ(phgrad_3d(vol.data(), nullptr, nullptr, nx, ny, nz, 1, 0, 0, 0.1f, 0.1f, 0.08f, win,
                        nullptr, &e3),
              1);
    EXPECT_NEAR(e3[(4 * ny + 6) * nx + 8], 25.0, 0.125);
    mem_free_level(level, 0);
}

TEST(PhaseGradientDrivers, TextsStoresAndStiffness) {
    buffer_driver d;
    const int nx = 40, ny = 32;
    const double fov = 0.2, k = 30.0;
    auto ph = ramp(nx, ny, fov, k, 0.0);
    size_t n = ph.size();
    std::vector<float> pair(2 * n);
    for (size_t i = 0; i < n; ++i) pair[i] = std::cos(ph[i]), pair[n + i] = std::sin(ph[i]);
    wave_params p;
    p.nx = nx;
    p.ny = ny;
    p.fov[0] = p.fov[1] = float(fov);
    p.mech_freq = 60.0f;
    int stack = 0, est = 0, stiff = 0, dir = 0;
    p.lfe_stack_out = &stack;
    p.pg_est = &est;
    p.pg_stiff = &stiff;
    p.pg_dir = &dir;
    wave_quiet[WF_PG] = 0;
    testing::internal::CaptureStdout();
    ASSERT_EQ(pg_2d_1axis(&p, pair.data(), nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Phase Gradient (5 x 5 window) ");
    std::vector<float> three;
    for (int c = 0; c < 3; ++c) three.insert(three.end(), pair.begin(), pair.end());
    testing::internal::CaptureStdout();
    ASSERT_EQ(pg_2d_XYZ(&p, three.data(), nullptr), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Phase Gradient XYZ (5 x 5 window) ");
    wave_quiet[WF_PG] = 1;
    ASSERT_EQ(d.images[&stack].size(), 2u);
    EXPECT_EQ(d.images[&stack][3], d.images[&est][0]);
    EXPECT_EQ(d.images[&stack][4], d.images[&stiff][0]);
    EXPECT_NEAR(median({d.images[&est][0].begin(), d.images[&est][0].end()}), k, 0.005 * k);
    EXPECT_NEAR(median({d.images[&stiff][0].begin(), d.images[&stiff][0].end()}),
                (60.0 / k) * (60.0 / k), 0.01 * (60.0 / k) * (60.0 / k));
    EXPECT_EQ(d.images[&dir][0].size(), n);
    p.nz = 3;
    p.fov[2] = 0.1f;
    std::vector<float> vol(6 * n);
    for (int z = 0; z < 3; ++z)
        for (size_t i = 0; i < n; ++i) vol[z * n + i] = pair[i], vol[(3 + z) * n + i] = pair[n + i];
    p.pg_mode = 1;
    ASSERT_EQ(pg_3d_1axis(&p, vol.data(), nullptr, nullptr, nullptr), 0);
    EXPECT_NEAR(d.images[&est][0][n + 10 * nx + 10], k, 0.005 * k);
    p.pg_mode = 0;
    ASSERT_EQ(pg_3d_1axis(&p, vol.data(), nullptr, nullptr, nullptr), 0);
    EXPECT_NEAR(d.images[&est][0][n + 10 * nx + 10], k, 0.005 * k);
    EXPECT_EQ(mem_count(), 0);
}
