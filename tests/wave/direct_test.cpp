// Direct inversion and AIDE: plane waves against each kernel's own response, a random field
// against SciPy, the fix-ups and quirks, the drivers and the two-region phantom.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <string>
#include <vector>

#include "tests/peer.h"
#include "tests/wave/buffer_driver.h"
#include "tests/wave/wave_test_util.h"
#include "wave/direct.h"
#include "wave/kernels.h"
#include "wave/messages.h"
#include "wave/stages.h"

using wave_test::f32;
using wave_test::floats;
using wave_test::max_error;
using wave_test::median;

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kDx = 0.0015, kF = 60.0;

// Planar pair of a wave exp(i phase(x, y)).
template <class Phase>
std::vector<float> wave(int nx, int ny, Phase phase, double amp = 1.0) {
    std::vector<float> v(2 * size_t(nx) * ny);
    size_t n = size_t(nx) * ny;
    for (int y = 0; y < ny; ++y)
        for (int x = 0; x < nx; ++x) {
            double p = phase(x, y);
            v[size_t(y) * nx + x] = float(amp * std::cos(p));
            v[n + size_t(y) * nx + x] = float(amp * std::sin(p));
        }
    return v;
}

struct Result {
    std::vector<float> speed2, atten, cre, cim;
    int status;
};

Result run_di(const std::vector<float>& pair, int nx, int ny, int type, int win, int order,
              int flags = 0, float regular = 1e-6f, const uint8_t* mask = nullptr,
              int median_win = 1) {
    size_t n = size_t(nx) * ny;
    Result r{std::vector<float>(n), std::vector<float>(n), std::vector<float>(n),
             std::vector<float>(n), 0};
    int dims[2] = {ny, nx}, w[2] = {win, win}, o[2] = {order, order},
        med[2] = {median_win, median_win};
    float pixel[2] = {float(kDx), float(kDx)};
    r.status = direct_division2(pair.data(), pair.data() + n, r.speed2.data(), r.atten.data(),
                                r.cre.data(), r.cim.data(), dims, o, w, regular, pixel, float(kF),
                                med, flags, type, mask, nullptr, 0, 1);
    return r;
}

// Median of v over the pixels at least `edge` from every border.
double interior(const std::vector<float>& v, int nx, int ny, int edge) {
    std::vector<double> in;
    for (int y = edge; y < ny - edge; ++y)
        for (int x = edge; x < nx - edge; ++x) in.push_back(v[size_t(y) * nx + x]);
    return median(in);
}

std::string list(const std::vector<float>& v) { return peer::Literal(v.data(), v.size()); }

}  // namespace

TEST(DirectInversion, PlaneWavesGiveEachKernelsOwnResponse) {
    const int nx = 132, ny = 40;
    struct Kernel {
        int type, win, order;
    } kernels[] = {{0, 7, 5}, {1, 7, 0}, {1, 11, 0}, {2, 11, 0}, {3, 7, 5}, {3, 11, 3}};
    // The response k^2 S(k) / -(D(k) + S(k) D(0)) of each kernel at each wavelength, from
    // SciPy's Savitzky-Golay coefficients, the Farid table and the 3-tap Laplacian.
    std::vector<float> farid7(7), farid7d(7), farid11(11), farid11d(11);
    Farid_coeff(0, 3, farid7.data());
    Farid_coeff(2, 3, farid7d.data());
    Farid_coeff(0, 5, farid11.data());
    Farid_coeff(2, 5, farid11d.data());
    const double lambdas[] = {11.0, 16.0, 27.0, 44.0};
    std::string script =
        "from scipy.signal import savgol_coeffs as sg\n"
        "def resp(s, d, k, d0=True):\n"
        "    j = np.arange(len(s)) - len(s) // 2\n"
        "    S = np.sum(s * np.cos(k * j)); D = np.sum(d * np.cos(k * j))\n"
        "    return k * k * S / -(D + (S * np.sum(d) if d0 else 0))\n"
        "F = {7: (np.array(" +
        list(farid7) + "), np.array(" + list(farid7d) + ")), 11: (np.array(" + list(farid11) +
        "), np.array(" + list(farid11d) +
        "))}\n"
        "for lam in [11.0, 16.0, 27.0, 44.0]:\n"
        "    k = 2 * np.pi / lam\n"
        "    print(k * k / -np.sum(sg(7, 5, deriv=2) * np.cos(k * (np.arange(7) - 3))))\n"
        "    print(resp(*F[7], k)); print(resp(*F[11], k))\n"
        "    print(k * k / (2 - 2 * np.cos(k)))\n"
        "    print(resp(sg(7, 5), sg(7, 5, deriv=2), k)); print(resp(sg(11, 3), sg(11, 3, "
        "deriv=2), k))\n";
    auto want = peer::Values(script);
    ASSERT_EQ(want.size(), 24u);
    for (int l = 0; l < 4; ++l) {
        double lam = lambdas[l];
        auto pair = wave(nx, ny, [&](int x, int) { return 2 * kPi * x / lam; });
        double truth = std::pow(kF * lam * kDx, 2);
        for (int k = 0; k < 6; ++k) {
            Result r = run_di(pair, nx, ny, kernels[k].type, kernels[k].win, kernels[k].order);
            ASSERT_EQ(r.status, 0);
            double got = interior(r.speed2, nx, ny, kernels[k].win) / truth;
            EXPECT_NEAR(got / want[l * 6 + k], 1.0, 0.005)
                << "type " << kernels[k].type << " win " << kernels[k].win << " lambda " << lam;
        }
    }
    // Romano stays within 3 % over the range; SG order 5 on 7 taps within 1.1 %.
    for (int l = 0; l < 4; ++l) {
        EXPECT_NEAR(want[l * 6 + 3], 1.0, 0.03);
        EXPECT_NEAR(want[l * 6 + 4], 1.0, 0.011);
    }
}

TEST(DirectInversion, RandomSmoothFieldEqualsScipyWithTheSameKernels) {
    const int nx = 40, ny = 30;
    size_t n = size_t(nx) * ny;
    // A sum of plane waves of random direction and phase: smooth and complex.
    auto r = wave_test::noise(16, 3);
    auto pair = wave(nx, ny, [&](int x, int y) {
        return r[0] * 3 + 0.35 * (std::cos(r[1] * 3) * x + std::sin(r[1] * 3) * y) +
               0.6 * std::sin(0.21 * x + r[2]) * std::cos(0.17 * y + r[3]);
    });
    std::vector<uint8_t> mask(n, 0);
    for (size_t i = n / 3; i < n; ++i) mask[i] = 1;
    std::vector<float> maskf(mask.begin(), mask.end());
    peer::Peer p;
    p.Put("re", f32({pair.begin(), pair.begin() + n}, {nx, ny}));
    p.Put("im", f32({pair.begin() + n, pair.end()}, {nx, ny}));
    p.Put("mask", f32(maskf, {nx, ny}));
    double w = 2 * kPi * kF;
    struct Case {
        int type, win, order;
        std::string id;
    } cases[] = {{1, 7, 0, ""}, {2, 11, 0, ""}, {3, 9, 4, ""}};
    for (auto& c : cases) {
        std::vector<float> s(c.win), d(c.win);
        int h = c.win / 2;
        if (c.type == 1) Farid_coeff(0, h, s.data()), Farid_coeff(2, h, d.data());
        if (c.type == 2) Romano_coeff(0, h, s.data()), d.assign(c.win, 0.0f);
        if (c.type == 3) SGcoeff(0, c.order, h, h, s.data()), SGcoeff(2, c.order, h, h, d.data());
        std::string t = std::to_string(c.type);
        p.Put("s" + t, f32(s, {uint64_t(c.win)}));
        p.Put("d" + t, f32(d, {uint64_t(c.win)}));
        c.id = p.Case("direct re im s" + t + " s" + t + " d" + t + " d" + t + " " +
                      std::to_string(kDx) + " " + std::to_string(kDx) + " 1e-6 " +
                      std::to_string(w) + " mask " + (c.type == 2 ? "1" : "0"));
    }
    ASSERT_TRUE(p.Run("wave/inversion_numpy.py"));
    for (auto& c : cases) {
        Result got = run_di(pair, nx, ny, c.type, c.win, c.order, 0, 1e-6f, mask.data());
        ASSERT_EQ(got.status, 0);
        auto want = floats(p.Get(c.id));  // (x, y, 3) x first: cmu re, cmu im, speed2
        std::vector<float> wre(want.begin(), want.begin() + n),
            wim(want.begin() + n, want.begin() + 2 * n), wsp(want.begin() + 2 * n, want.end());
        EXPECT_LT(max_error(got.cre, wre), 1e-4) << c.type;
        EXPECT_LT(max_error(got.cim, wim), 1e-4) << c.type;
        EXPECT_LT(max_error(got.speed2, wsp), 1e-4) << c.type;
    }
}

TEST(DirectInversion, QuirksZeroImageClampRegularisationAndEmptyMask) {
    const int nx = 30, ny = 20;
    size_t n = size_t(nx) * ny;
    // A zero image gives zeros on every path.
    std::vector<float> zero(2 * n, 0.0f);
    for (int type : {0, 1, 2, 3}) {
        Result r = run_di(zero, nx, ny, type, 7, 3, 0, 1e-6f, nullptr, 3);
        ASSERT_EQ(r.status, 0);
        for (auto* v : {&r.speed2, &r.atten, &r.cre, &r.cim})
            for (float x : *v) EXPECT_EQ(x, 0.0f) << type;
    }
    // A growing exponential has G = -1 / a^2 < 0: clamped to 0 in the division path only.
    auto grow = wave(nx, ny, [](int, int) { return 0.0; });
    for (int y = 0; y < ny; ++y)
        for (int x = 0; x < nx; ++x)
            grow[y * nx + x] = float(std::exp(0.2 * x)), grow[n + y * nx + x] = 0.0f;
    Result sg0 = run_di(grow, nx, ny, 0, 7, 3);
    Result sg3 = run_di(grow, nx, ny, 3, 7, 3);
    EXPECT_EQ(interior(sg0.cre, nx, ny, 7), 0.0);
    EXPECT_EQ(interior(sg0.speed2, nx, ny, 7), 0.0);
    EXPECT_LT(interior(sg3.cre, nx, ny, 7), -1.0);
    // regular at 1e-7 or below takes no median; an empty mask gathers nothing: reg is 0 both ways.
    auto pw = wave(nx, ny, [](int x, int y) { return 0.4 * x + 0.1 * y; });
    std::vector<uint8_t> empty(n, 0);
    Result none = run_di(pw, nx, ny, 2, 7, 0, 0, 0.0f);
    Result tiny = run_di(pw, nx, ny, 2, 7, 0, 0, 1e-7f);
    Result masked = run_di(pw, nx, ny, 2, 7, 0, 0, 1e-2f, empty.data());
    Result regular = run_di(pw, nx, ny, 2, 7, 0, 0, 1e-2f);
    EXPECT_EQ(none.cre, tiny.cre);
    EXPECT_EQ(none.cre, masked.cre);
    EXPECT_NE(none.cre, regular.cre);
}

TEST(DirectInversion, NanStaysLocalAndNeverReachesTheMedian) {
    const int nx = 40, ny = 30;
    size_t n = size_t(nx) * ny;
    auto pw = wave(nx, ny, [](int x, int y) { return 0.4 * x + 0.1 * y; });
    auto holed = pw;
    holed[15 * nx + 20] = NAN;
    for (int type : {0, 2}) {
        Result a = run_di(pw, nx, ny, type, 7, 3, 0, 0.0f, nullptr, 3);
        Result b = run_di(holed, nx, ny, type, 7, 3, 0, 0.0f, nullptr, 3);
        for (int y = 0; y < ny; ++y)
            for (int x = 0; x < nx; ++x) {
                size_t i = size_t(y) * nx + x;
                if (std::abs(x - 20) <= 6 || std::abs(y - 15) <= 6) continue;
                EXPECT_EQ(a.speed2[i], b.speed2[i]) << type << " " << x << " " << y;
            }
        // With regularisation the NaN Laplacians stay out of the median: finite far away.
        Result c = run_di(holed, nx, ny, type, 7, 3, 0, 1e-6f, nullptr, 3);
        EXPECT_TRUE(std::isfinite(c.speed2[2 * nx + 2]));
        EXPECT_GT(c.speed2[5 * nx + 5], 0.0f);
    }
    (void)n;
}

TEST(DirectInversion, FixUpsAlterTheCallersArraysWithTheirTexts) {
    buffer_driver d;
    const int nx = 20, ny = 16;
    size_t n = size_t(nx) * ny;
    auto pw = wave(nx, ny, [](int x, int) { return 0.5 * x; });
    std::vector<float> o(4 * n);
    float pixel[2] = {1.0f, 1.0f};
    {
        int dims[2] = {ny, nx}, win[2] = {4, 6}, order[2] = {1, 9}, med[2] = {2, 31};
        ASSERT_EQ(direct_division2(pw.data(), pw.data() + n, o.data(), o.data() + n,
                                   o.data() + 2 * n, o.data() + 3 * n, dims, order, win, 1e-6f,
                                   pixel, 60.0f, med, 0, 0, nullptr, nullptr, 0, 0),
                  0);
        EXPECT_EQ(
            d.log,
            "\ndirect_division2: Median filter window cannot be bigger than image, fixing to "
            "3x3.\n"
            "\ndirect_division2: Polynomial order must be at least 2:\n     fixing so Or[0] = "
            "2.\n"
            "\ndirect_division2: Polynomial order must be smaller than window size:\n"
            "     fixing so Or[1] = 6\n");
        EXPECT_EQ(win[0], 5);
        EXPECT_EQ(win[1], 7);
        EXPECT_EQ(order[0], 2);
        EXPECT_EQ(order[1], 6);
        EXPECT_EQ(med[0], 3);
        EXPECT_EQ(med[1], 3);
    }
    {
        d.log.clear();
        int dims[2] = {ny, nx}, win[2] = {5, 5}, order[2] = {6, 6}, med[2] = {1, 1};
        ASSERT_EQ(direct_division2(pw.data(), pw.data() + n, o.data(), o.data() + n,
                                   o.data() + 2 * n, o.data() + 3 * n, dims, order, win, 1e-6f,
                                   pixel, 60.0f, med, 128, 0, nullptr, nullptr, 0, 0),
                  0);
        EXPECT_EQ(d.log,
                  "\ndirect_division2: Polynomial order must be smaller than available data in "
                  "window:\n     fixing so Or[0] = 5 \n     fixing so Or[1] = 5 \n");
        EXPECT_EQ(order[0], 5);
    }
    {
        d.log.clear();
        wave_quiet[WF_DI] = 0;
        testing::internal::CaptureStderr();
        int dims[2] = {ny, nx}, win[2] = {41, 6}, order[2] = {1, 9}, med[2] = {3, 3};
        ASSERT_EQ(direct_division2(pw.data(), pw.data() + n, o.data(), o.data() + n,
                                   o.data() + 2 * n, o.data() + 3 * n, dims, order, win, 1e-6f,
                                   pixel, 60.0f, med, 0, 3, nullptr, nullptr, 0, 0),
                  0);
        std::string err = testing::internal::GetCapturedStderr();
        wave_quiet[WF_DI] = 1;
        EXPECT_EQ(
            err,
            "\ndirect_inversion_2d: Filter window cannot be bigger than image, fixing to 5x5.\n"
            "\ndirect_inversion_2d: Polynomial order must be at least 2:\n     fixing so "
            "SG_order[Y] = 2.\n"
            "\ndirect_inversion_2d: Polynomial order must be smaller than window size:\n"
            "     fixing so SG_order[X] = 4\n");
        EXPECT_EQ(win[0], 5);
        EXPECT_EQ(order[1], 4);
    }
    {
        d.log.clear();
        int dims[2] = {2, nx}, win[2] = {3, 3}, order[2] = {2, 2}, med[2] = {1, 1};
        EXPECT_EQ(direct_division2(pw.data(), pw.data() + n, o.data(), o.data() + n,
                                   o.data() + 2 * n, o.data() + 3 * n, dims, order, win, 1e-6f,
                                   pixel, 60.0f, med, 0, 2, nullptr, nullptr, 0, 0),
                  1);
        EXPECT_EQ(d.log,
                  "\ndirect_inversion_2d: Image must be at least 3 pixels along each axis.\n");
        dims[0] = ny;
        d.log.clear();
        EXPECT_EQ(direct_division2(pw.data(), pw.data() + n, o.data(), o.data() + n,
                                   o.data() + 2 * n, o.data() + 3 * n, dims, order, win, 1e-6f,
                                   pixel, 60.0f, med, 0, 7, nullptr, nullptr, 0, 0),
                  1);
        EXPECT_EQ(d.log, "\ndirect_inversion_2d: Unknown filter type 7.\n");
        // A Farid window beyond its table fails in the kernel.
        d.log.clear();
        win[0] = win[1] = 15;
        EXPECT_EQ(direct_division2(pw.data(), pw.data() + n, o.data(), o.data() + n,
                                   o.data() + 2 * n, o.data() + 3 * n, dims, order, win, 1e-6f,
                                   pixel, 60.0f, med, 0, 1, nullptr, nullptr, 0, 0),
                  1);
        EXPECT_EQ(d.log, "\nInvalid filter size in function Farid_coeff. \n\n");
    }
}

namespace {

// AIDE on components x and y (planes Rx, Ix, Ry, Iy).
Result run_aide(const std::vector<float>& ux, const std::vector<float>& uy, int nx, int ny,
                int flags, int nd = 2) {
    size_t n = ux.size() / 2;
    std::vector<float> planes;
    planes.insert(planes.end(), ux.begin(), ux.end());
    planes.insert(planes.end(), uy.begin(), uy.end());
    Result r{std::vector<float>(n), std::vector<float>(n), std::vector<float>(n),
             std::vector<float>(n), 0};
    int dims[2] = {ny, nx}, win[2] = {7, 7}, order[2] = {5, 5}, med[2] = {1, 1};
    float pixel[2] = {float(kDx), float(kDx)};
    (void)nd;
    r.status =
        aide_2d(planes.data(), planes.data() + n, r.speed2.data(), r.atten.data(), r.cre.data(),
                r.cim.data(), dims, order, win, 1e-6f, pixel, float(kF), med, flags);
    return r;
}

}  // namespace

TEST(Aide, TransverseWaveEqualsDirectInversionAndSeparatesTwoSpeeds) {
    const int nx = 120, ny = 40;
    const double ls = 22.0, lp = 40.0;  // wavelengths in pixels
    auto none = wave(
        nx, ny, [](int, int) { return 0.0; }, 0.0);
    auto shear = wave(nx, ny, [&](int x, int) { return 2 * kPi * x / ls; });
    auto press = wave(nx, ny, [&](int x, int) { return 2 * kPi * x / lp + 0.3; });
    // Transverse: y displacement travelling along x, no divergence.
    Result a = run_aide(none, shear, nx, ny, kAideSpeed);
    ASSERT_EQ(a.status, 0);
    Result di = run_di(shear, nx, ny, 0, 7, 5);
    double got = interior(a.speed2, nx, ny, 8), want = interior(di.speed2, nx, ny, 8);
    EXPECT_NEAR(got / want, 1.0, 0.01);
    // Plus a longitudinal wave along x: mu from k_s, lambda + 2 mu from k_p.
    Result b = run_aide(press, shear, nx, ny, kAideSpeed);
    ASSERT_EQ(b.status, 0);
    EXPECT_NEAR(interior(b.speed2, nx, ny, 8) / std::pow(kF * ls * kDx, 2), 1.0, 0.05);
    EXPECT_NEAR(interior(b.cre, nx, ny, 8) / (kF * lp * kDx), 1.0, 0.05);
    // Without 0x400 the outputs are the moduli times w^2, the first squared all the same.
    Result m = run_aide(press, shear, nx, ny, 0);
    double w2 = std::pow(2 * kPi * kF, 2);
    EXPECT_NEAR(std::sqrt(interior(m.speed2, nx, ny, 8)) / w2 / std::pow(ls * kDx / (2 * kPi), 2),
                1.0, 0.05);
    EXPECT_NEAR(interior(m.cre, nx, ny, 8) / w2 / std::pow(lp * kDx / (2 * kPi), 2), 1.0, 0.05);
    // 0x100 folds the divergence into the Laplacian, 0x200 drops it: nu is 0 in both.
    for (int f : {kAideDivergence, kAideNoDivergence}) {
        Result z = run_aide(press, shear, nx, ny, f);
        for (float v : z.cre) EXPECT_EQ(v, 0.0f);
        EXPECT_GT(interior(z.speed2, nx, ny, 8), 0.0);
    }
    // Zero input: zeros.
    Result zero = run_aide(none, none, nx, ny, kAideSpeed);
    for (float v : zero.speed2) EXPECT_EQ(v, 0.0f);
}

TEST(Aide, FixUpTexts) {
    buffer_driver d;
    const int nx = 12, ny = 10;
    size_t n = size_t(nx) * ny;
    std::vector<float> planes(4 * n, 0.0f), o(4 * n);
    int dims[2] = {ny, nx}, win[2] = {20, 6}, order[2] = {1, 9}, med[2] = {3, 13};
    float pixel[2] = {1.0f, 1.0f};
    ASSERT_EQ(aide_2d(planes.data(), planes.data() + n, o.data(), o.data() + n, o.data() + 2 * n,
                      o.data() + 3 * n, dims, order, win, 1e-6f, pixel, 60.0f, med, 0),
              0);
    EXPECT_EQ(d.log,
              "\naide_2d: Median filter window cannot be bigger than image, fixing to 3x3.\n"
              "\naide_2d: Filter window cannot be bigger than image, fixing to 5x5.\n"
              "\naide_2d: Polynomial order must be at least 2:  fixing so Or[0] = 2.\n"
              "\naide_2d: Polynomial order must be smaller than window size:\n"
              "     fixing so Or[1] = 4\n");
    EXPECT_EQ(win[1], 5);
    EXPECT_EQ(order[1], 4);
}

namespace {

// Harmonic two-region phantom: c 1.5 and 3.0 m/s either side of x = 80 at 60 Hz.
struct Phantom {
    static constexpr int nx = 160, ny = 96, split = 80;
    static constexpr double c1 = 1.5, c2 = 3.0;
    std::vector<float> pair = wave(nx, ny, [](int x, int) {
        double travel = std::min(x, split) * kDx / c1 + std::max(x - split, 0) * kDx / c2;
        return 2 * kPi * kF * travel;
    });

    wave_params params() const {
        wave_params p;
        p.nx = nx;
        p.ny = ny;
        p.fov[0] = float(nx * kDx);
        p.fov[1] = float(ny * kDx);
        p.mech_freq = float(kF);
        return p;
    }

    // Medians of each region, one wavelength in from the interface and the borders.
    void expect_regions(const std::vector<float>& stiff, const char* what) const {
        ASSERT_EQ(stiff.size(), size_t(nx) * ny) << what;
        const double cs[2] = {c1, c2};
        for (int r = 0; r < 2; ++r) {
            int w = int(std::ceil(cs[r] / kF / kDx));
            int x0 = r == 0 ? w : split + w, x1 = r == 0 ? split - w : nx - w;
            std::vector<double> v;
            for (int y = w; y < ny - w; ++y)
                for (int x = x0; x < x1; ++x) v.push_back(stiff[size_t(y) * nx + x]);
            double want = cs[r] * cs[r];  // kPa at 1000 kg/m^3
            EXPECT_NEAR(median(v), want, 0.05 * want) << what << " region " << r;
        }
    }
};

}  // namespace

TEST(DirectDrivers, PhantomThroughOneAndThreeComponentsWithTextsAndOutputs) {
    buffer_driver d;
    Phantom ph;
    wave_params p = ph.params();
    p.di_type = 2;
    p.di_win[0] = p.di_win[1] = 11;
    int stack = 0, stiff = 0, atten = 0, cmu = 0;
    p.di_stack_out = &stack;
    p.di_stiff = &stiff;
    p.di_atten = &atten;
    p.di_cmu = &cmu;
    wave_quiet[WF_DI] = 0;
    testing::internal::CaptureStdout();
    ASSERT_EQ(direct_2d_1axis(&p, const_cast<float*>(ph.pair.data()), nullptr, nullptr, nullptr),
              0);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out.rfind("Direct Inversion (Romano, 11 x 11 window) ", 0), 0u) << out;
    EXPECT_NE(out.find(" s) \n"), std::string::npos);
    ph.expect_regions(d.images[&stiff][0], "Romano");
    ASSERT_EQ(d.images[&stack].size(), 4u);
    EXPECT_EQ(d.images[&stack][0], d.images[&stiff][0]);
    EXPECT_EQ(d.images[&stack][1], d.images[&atten][0]);
    ASSERT_EQ(d.images[&cmu][0].size(), 2 * size_t(ph.nx) * ph.ny);
    EXPECT_EQ(
        std::vector<float>(d.images[&cmu][0].begin(), d.images[&cmu][0].begin() + ph.nx * ph.ny),
        d.images[&stack][2]);

    // Three components, the same wave at different amplitudes: the weighted mean of the
    // inverse moduli is the one modulus.
    std::vector<float> three;
    for (double a : {1.0, 0.5, 2.0})
        for (float v : ph.pair) three.push_back(float(v * a));
    testing::internal::CaptureStdout();
    ASSERT_EQ(direct_2d_XYZ(&p, three.data(), nullptr), 0);
    out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out.rfind("XYZ Direct Inversion (Romano, 11 x 11 window) ", 0), 0u) << out;
    ph.expect_regions(d.images[&stiff][0], "XYZ");

    // The SG texts, and a type with no kernels.
    p.di_type = 0;
    testing::internal::CaptureStdout();
    direct_2d_1axis(&p, const_cast<float*>(ph.pair.data()), nullptr, nullptr, nullptr);
    out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out.rfind("Direct Inversion (OLD SG, 11 x 11 window, order 3, 3, type 0) ", 0), 0u)
        << out;
    p.di_type = 9;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(direct_2d_1axis(&p, const_cast<float*>(ph.pair.data()), nullptr, nullptr, nullptr),
              1);
    out = testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    wave_quiet[WF_DI] = 1;
    EXPECT_EQ(out.rfind("Direct Inversion (INVALID FILTER TYPE, 11 x 11 window) ", 0), 0u) << out;
    EXPECT_NE(d.log.find("direct_2d_1axis: Error in Direct Inversion processing.\n"),
              std::string::npos);
    EXPECT_EQ(mem_count(), 0);
}

TEST(DirectDrivers, VolumeSliceBySliceAndWhole) {
    buffer_driver d;
    Phantom ph;
    wave_params p = ph.params();
    const int nz = 3;
    p.nz = nz;
    p.fov[2] = float(nz * kDx);
    size_t n = size_t(ph.nx) * ph.ny;
    std::vector<float> vol(2 * n * nz);
    for (int z = 0; z < nz; ++z)
        for (size_t i = 0; i < n; ++i)
            vol[z * n + i] = ph.pair[i], vol[(nz + z) * n + i] = ph.pair[n + i];
    p.di_type = 2;
    p.di_win[0] = p.di_win[1] = 11;
    p.di_win[2] = 1;
    int stiff = 0;
    p.di_stiff = &stiff;
    p.di_2d = 1;
    ASSERT_EQ(direct_3d_1axis(&p, vol.data(), nullptr, nullptr, nullptr), 0);
    auto slices = d.images[&stiff][0];
    ASSERT_EQ(slices.size(), n * nz);
    ph.expect_regions({slices.begin() + n, slices.begin() + 2 * n}, "2-D of 3-D");
    // The volume form: with a constant z its middle plane (no zero padding reached along z)
    // equals the slice.
    p.di_2d = 0;
    ASSERT_EQ(direct_3d_1axis(&p, vol.data(), nullptr, nullptr, nullptr), 0);
    auto whole = d.images[&stiff][0];
    ASSERT_EQ(whole.size(), n * nz);
    EXPECT_LT(max_error({whole.begin() + n, whole.begin() + 2 * n},
                        {slices.begin() + n, slices.begin() + 2 * n}),
              1e-3);
    EXPECT_EQ(mem_count(), 0);
}
