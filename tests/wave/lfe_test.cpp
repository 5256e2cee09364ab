// Local frequency estimation: the filter bank and the combination against a NumPy bank written
// from the formulas (tests/wave/wave_filters_numpy.py), tones and plane waves of known
// frequency, the input checks, and the first stiffness map through the whole chain.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "tests/wave/buffer_driver.h"
#include "tests/wave/wave_test_util.h"
#include "wave/chain.h"
#include "wave/lfe.h"
#include "wave/lfe_filters.h"
#include "wave/mem.h"
#include "wave/messages.h"
#include "wave/stages.h"

using wave_test::f32;
using wave_test::floats;
using wave_test::max_error;
using wave_test::median;
using wave_test::noise;

namespace {

constexpr double kPi = std::numbers::pi;
const char* const kScript = "wave/wave_filters_numpy.py";

// cos(2 pi k (x cos a + y sin a)) on a grid of pixel `dx` metres, k in waves per metre.
std::vector<float> plane_wave(int nx, int ny, double dx, double k, double degrees) {
    double a = degrees * kPi / 180.0;
    std::vector<float> v(size_t(nx) * ny);
    for (int y = 0; y < ny; ++y)
        for (int x = 0; x < nx; ++x)
            v[size_t(y) * nx + x] =
                float(std::cos(2 * kPi * k * dx * (x * std::cos(a) + y * std::sin(a))));
    return v;
}

struct Estimate {
    std::vector<float> est, cert;
};

Estimate run_lfe_2d(const std::vector<float>& img, int nx, int ny, float fov_x, float fov_y,
                    int nbands, float base, float ratio, int complex_flag = 0) {
    float *est = nullptr, *cert = nullptr;
    int n = lfe_2d(img.data(), nullptr, nullptr, nx, ny, 1, 0, 0, fov_x, fov_y, nbands, base, 0, 0,
                   complex_flag, ratio, nullptr, &est, &cert, 0, 0);
    EXPECT_EQ(n, 1);
    Estimate e{{est, est + nx * ny}, {cert, cert + nx * ny}};
    mem_free_all(0);
    return e;
}

// Est and cert agree with the reference to `tol` relative wherever the reference is certain.
void expect_close(const Estimate& got, const std::vector<float>& ref, double tol) {
    size_t n = got.est.size(), compared = 0;
    ASSERT_EQ(ref.size(), 2 * n);
    for (size_t i = 0; i < n; ++i) {
        if (!(ref[n + i] > 0.5f)) continue;
        ++compared;
        EXPECT_NEAR(got.est[i], ref[i], tol * std::fabs(ref[i])) << i;
        EXPECT_NEAR(got.cert[i], ref[n + i], tol) << i;
    }
    EXPECT_GT(compared, n / 4);
}

}  // namespace

TEST(LfeFilters, LognormalFamilyEqualsItsFormula) {
    peer::Peer py;
    struct Case {
        int nx, ny, nz;
        double f, ratio;
        int axis;
    };
    const Case cases[] = {{12, 10, 1, 20.0, 2.0, 0}, {11, 9, 1, 35.0, 1.4142135, 1},
                          {12, 9, 1, 15.0, 4.0, -1}, {10, 8, 6, 25.0, 2.0, 0},
                          {9, 8, 5, 25.0, 2.0, 1},   {8, 7, 6, 40.0, 2.0, 2}};
    const float fov[3] = {0.24f, 0.2f, 0.09f};
    std::vector<std::string> ids;
    for (const Case& c : cases)
        ids.push_back(py.Case(wave_fmt("lognormal %d %d %d %.9g %.9g %.9g %.17g %.17g %d", c.nx,
                                       c.ny, c.nz, fov[0], fov[1], fov[2], c.f, c.ratio, c.axis)));
    ASSERT_TRUE(py.Run(kScript));
    for (size_t k = 0; k < std::size(cases); ++k) {
        const Case& c = cases[k];
        std::vector<float> f(size_t(c.nx) * c.ny * c.nz);
        if (c.nz > 1) {
            auto fn = c.axis == 0 ? lognormal_x_3d : c.axis == 1 ? lognormal_y_3d : lognormal_z_3d;
            fn(f.data(), c.nx, c.ny, c.nz, fov[0], fov[1], fov[2], c.f);
        } else {
            auto fn = c.axis == 0   ? lognormal_x_2d
                      : c.axis == 1 ? lognormal_y_2d
                                    : lognormal_iso_2d;
            fn(f.data(), c.nx, c.ny, fov[0], fov[1], c.f, c.ratio);
        }
        EXPECT_LT(max_error(f, floats(py.Get(ids[k]))), 1e-6) << k;
    }
    // The soft filter is the octave x filter; the row filter is its v = 0 profile on every row.
    std::vector<float> soft(120), x(120), row(120);
    lognormal_soft_2d(soft.data(), 12, 10, fov[0], fov[1], 20.0);
    lognormal_x_2d(x.data(), 12, 10, fov[0], fov[1], 20.0, 2.0);
    EXPECT_LT(max_error(soft, x), 1e-6);
    lognormal_1d(row.data(), 12, 10, fov[0], 20.0);
    for (int y = 0; y < 10; ++y)
        for (int i = 0; i < 12; ++i) EXPECT_NEAR(row[y * 12 + i], x[i], 1e-6) << i;
}

TEST(Lfe, EstimateAndCertaintyEqualTheNumpyBank) {
    buffer_driver d;
    const int nx = 32, ny = 24, nz = 8;
    const float fov[3] = {0.24f, 0.18f, 0.06f};
    // Two crossing waves and noise: bands of varied ratio.
    std::vector<float> img = plane_wave(nx, ny, fov[0] / nx, 45.0, 20.0);
    std::vector<float> second = plane_wave(nx, ny, fov[0] / nx, 20.0, 100.0);
    std::vector<float> grain = noise(img.size(), 51, -0.2f, 0.2f);
    for (size_t i = 0; i < img.size(); ++i) img[i] += 0.5f * second[i] + grain[i];
    std::vector<float> pair = img;
    pair.insert(pair.end(), second.begin(), second.end());
    std::vector<float> vol = noise(size_t(nx) * ny * nz, 52);
    for (size_t i = 0; i < vol.size(); ++i) vol[i] += img[i % img.size()];

    peer::Peer py;
    py.Put("img", f32(img, {nx, ny}));
    py.Put("pair", f32(pair, {nx, ny, 2}));
    py.Put("vol", f32(vol, {nx, ny, nz}));
    std::string octave = py.Case("lfe img 6 6 2 0.24 0.18");
    std::string half = py.Case("lfe img 8 8 1.4142135 0.24 0.18");
    std::string cplx = py.Case("lfec pair 6 6 2 0.24 0.18");
    std::string volume = py.Case("lfe vol 6 6 2 0.24 0.18 0.06");
    ASSERT_TRUE(py.Run(kScript));

    expect_close(run_lfe_2d(img, nx, ny, fov[0], fov[1], 6, 6, 2), floats(py.Get(octave)), 1e-3);
    expect_close(run_lfe_2d(img, nx, ny, fov[0], fov[1], 8, 8, 1.4142135f), floats(py.Get(half)),
                 1e-3);
    expect_close(run_lfe_2d(pair, nx, ny, fov[0], fov[1], 6, 6, 2, 1), floats(py.Get(cplx)), 1e-3);

    float *est = nullptr, *cert = nullptr;
    ASSERT_EQ(lfe_3d(vol.data(), nullptr, nullptr, nx, ny, nz, 1, 0, 0, fov[0], fov[1], fov[2], 6,
                     6, nullptr, &est, &cert, 0, 0),
              1);
    Estimate e3{{est, est + vol.size()}, {cert, cert + vol.size()}};
    mem_free_all(0);
    expect_close(e3, floats(py.Get(volume)), 1e-3);
}

TEST(Lfe, ToneBetweenTwoBandsGivesItsFrequency) {
    // Bands of a tone k through the lognormal radial part: the combination returns k exactly.
    const double k = 27.0, base = 5.0, ratio = 2.0;
    const int nbands = 6;
    std::vector<float> bands(nbands);
    for (int b = 0; b < nbands; ++b) {
        double f = base * std::pow(ratio, b), L = std::log(k * k / (f * f));
        bands[b] = float(std::exp(-L * L * 0.125 / std::log(ratio)));
    }
    float est, cert;
    lfe_combine(bands.data(), &est, &cert, 1, 1, nbands, float(base), float(std::sqrt(ratio)), 0);
    EXPECT_NEAR(est, k, 1e-4 * k);
    EXPECT_NEAR(cert, 1.0f, 1e-4);
    lfe_combine(bands.data(), &est, &cert, 1, 64, nbands, float(base), float(std::sqrt(ratio)), 1);
    EXPECT_NEAR(est, 64.0 / (k * k), 1e-4 * 64.0 / (k * k));

    // Sampled: a tone of 16 px per wavelength on a periodic grid.
    const int n = 64;
    const float fov = 0.128f;
    double kk = n / 16.0 / fov;
    Estimate e =
        run_lfe_2d(plane_wave(n, n, fov / n, kk, 0.0), n, n, fov, fov, 6, float(kk / 5.66), 2.0f);
    std::vector<double> err;
    for (float v : e.est) err.push_back(std::fabs(v - kk) / kk);
    EXPECT_LT(median(err), 0.015);
}

TEST(Lfe, PlaneWavesGiveTheirFrequencyAndStiffness) {
    const int n = 200;
    const double dx = 0.001, f = 60.0;
    const float fov = float(n * dx);
    for (double px : {11.0, 16.0, 22.0, 32.0, 44.0})
        for (double angle : {0.0, 30.0, 45.0}) {
            double k = 1.0 / (px * dx);
            // Bands one octave apart with k midway between two centres.
            Estimate e = run_lfe_2d(plane_wave(n, n, dx, k, angle), n, n, fov, fov, 6,
                                    float(k / (4 * std::sqrt(2.0))), 2.0f);
            std::vector<float> stiff = e.est;
            freq_to_stiffness(stiff.data(), int(stiff.size()), float(f));
            int m = int(std::ceil(px));
            std::vector<double> est, mu, cert;
            for (int y = m; y < n - m; ++y)
                for (int x = m; x < n - m; ++x) {
                    est.push_back(e.est[y * n + x]);
                    mu.push_back(stiff[y * n + x]);
                    cert.push_back(e.cert[y * n + x]);
                }
            double want_mu = (f / k) * (f / k);  // kPa: rho c^2 with rho 1000 kg/m^3
            EXPECT_NEAR(median(est), k, 0.02 * k) << px << " px at " << angle;
            EXPECT_NEAR(median(mu), want_mu, 0.05 * want_mu) << px << " px at " << angle;
            EXPECT_GT(median(cert), 0.9) << px << " px at " << angle;
        }
}

TEST(Lfe, InputChecksInOrderQuietAndVerbose) {
    buffer_driver d;
    std::vector<float> img(64, 1.0f);
    float *est = nullptr, *cert = nullptr;
    auto call2 = [&](int n, int pairs, int avg, int nbands = 6, float base = 5, float ratio = 2) {
        return lfe_2d(img.data(), nullptr, nullptr, 8, 8, n, pairs, avg, 0.24f, 0.24f, nbands, base,
                      0, 0, 0, ratio, nullptr, &est, &cert, 0, 0);
    };
    auto call3 = [&](int n, int pairs, int avg) {
        return lfe_3d(img.data(), nullptr, nullptr, 4, 4, 4, n, pairs, avg, 0.24f, 0.24f, 0.2f, 6,
                      5, nullptr, &est, &cert, 0, 0);
    };
    struct Row {
        int n, pairs, avg, nbands;
        float base, ratio;
        const char* quiet;
    };
    const Row rows[] = {
        {0, 5, 5, 6, 5, 2, "\nInvalid number of input images in lfe_2d\n"},
        {1, 2, 0, 6, 5, 2, "\npairs_flag or average_flag invalid in lfe_2d\n"},
        {1, 0, 3, 6, 5, 2, "\npairs_flag or average_flag invalid in lfe_2d\n"},
        {2, 0, 2, 6, 5, 2, "\nrequired amp2_buf is null in lfe_2d\n"},
        {1, 0, 0, 1, 5, 2, "lfe: at least 2 bands are needed\n"},
        {1, 0, 0, 6, 0, 2, "lfe: base frequency must be above 0 and ratio above 1\n"},
        {1, 0, 0, 6, 5, 1, "lfe: base frequency must be above 0 and ratio above 1\n"},
    };
    for (const Row& r : rows) {
        d.log.clear();
        EXPECT_EQ(call2(r.n, r.pairs, r.avg, r.nbands, r.base, r.ratio), 0);
        EXPECT_EQ(d.log, r.quiet);
    }
    d.log.clear();
    EXPECT_EQ(call3(0, 0, 0), 0);
    EXPECT_EQ(call3(1, 3, 0), 0);
    EXPECT_EQ(call3(2, 0, 2), 0);
    EXPECT_EQ(d.log,
              "\nInvalid number of input images in lfe_3d\n"
              "\npairs_flag or average_flag invalid in lfe_3d\n"
              "\nrequired amp2_buf is null in lfe_3d\n");
    EXPECT_EQ(mem_count(), 0);

    // The 1-D paths and the cores check their banks too.
    wave_params p;
    p.nx = p.ny = 8;
    p.lfe_nd = 1;
    p.lfe_nbands = 1;
    float* temp = nullptr;
    d.log.clear();
    EXPECT_NE(lfe_2d_1axis(&p, img.data(), nullptr, nullptr, 1, &temp), 0);
    std::vector<float> buf(128, 0.0f), e(64), c(64);
    EXPECT_NE(lfe_core_3d(buf.data(), e.data(), c.data(), 4, 4, 4, 1, 1, 1, 6, -1, 0, 1), 0);
    EXPECT_EQ(d.log,
              "lfe: at least 2 bands are needed\n"
              "lfe: base frequency must be above 0 and ratio above 1\n");
    EXPECT_EQ(mem_count(), 0);

    wave_quiet[WF_LFE] = 0;
    testing::internal::CaptureStderr();
    call2(0, 0, 1);
    call2(1, 2, 1);
    call2(3, 0, 2);
    call3(0, 1, 0);
    std::string err = testing::internal::GetCapturedStderr();
    wave_quiet[WF_LFE] = 1;
    EXPECT_EQ(err,
              "\nInvalid number of input images in lfe_2d: \n"
              "  pairs_flag = 0, average_flag = 1, n = 0 \n\n"
              "\nInvalid flag value(s) in lfe_2d: \n"
              "  pairs_flag = 2, average_flag = 1 \n\n"
              "\nNULL amp2_buf in lfe_2d; amp2_buf is REQUIRED \n"
              "for squared-amplitude-weighted averaging when input \n"
              "array is multiple single images. \n"
              "  pairs_flag = 0, average_flag = 2 \n\n"
              "\nInvalid number of input images in lfe_3d: \n"
              "  pairs_flag = 1, average_flag = 0, n = 0 \n\n");
}

TEST(Lfe, ConstantImageNanAndMaskingKeepResultsFinite) {
    buffer_driver d;
    const int n = 32;
    Estimate flat = run_lfe_2d(std::vector<float>(n * n, 3.0f), n, n, 0.1f, 0.1f, 5, 10, 2);
    for (float v : flat.est) EXPECT_TRUE(std::isnan(v));
    std::vector<float> stiff = flat.est;
    freq_to_stiffness(stiff.data(), n * n, 60.0f);
    for (float v : stiff) EXPECT_EQ(v, 0.0f);  // never infinite

    std::vector<float> img = plane_wave(n, n, 0.1 / n, 80.0, 10.0);
    img[5 * n + 7] = std::numeric_limits<float>::quiet_NaN();
    Estimate e = run_lfe_2d(img, n, n, 0.1f, 0.1f, 6, 15, 2);
    for (int i = 0; i < n * n; ++i) EXPECT_EQ(std::isnan(e.est[i]), i == 5 * n + 7) << i;

    // One image with average 1 and no mask is the plain estimate.
    float *est = nullptr, *cert = nullptr;
    img[5 * n + 7] = 0.0f;
    ASSERT_EQ(lfe_2d(img.data(), nullptr, nullptr, n, n, 1, 0, 1, 0.1f, 0.1f, 6, 15, 0, 0, 0, 2,
                     nullptr, &est, &cert, 0, 0),
              1);
    std::vector<float> averaged(est, est + n * n);
    mem_free_all(0);
    EXPECT_EQ(averaged, run_lfe_2d(img, n, n, 0.1f, 0.1f, 6, 15, 2).est);
}

TEST(Lfe, AmplitudeWeightedAverageOfPairs) {
    buffer_driver d;
    const int n = 32, npix = n * n;
    const float fov = 0.1f;
    std::vector<float> pairs;
    const double ks[3] = {60.0, 90.0, 120.0};
    for (double k : ks) {
        std::vector<float> r = plane_wave(n, n, fov / n, k, 0.0),
                           i = plane_wave(n, n, fov / n, k, 90);
        pairs.insert(pairs.end(), r.begin(), r.end());
        pairs.insert(pairs.end(), i.begin(), i.end());
    }
    std::vector<float> amp2(3 * npix, 1.0f);
    std::fill(amp2.begin() + npix, amp2.begin() + 2 * npix, 0.0f);  // the second pair weighs 0
    std::fill(amp2.begin() + 2 * npix, amp2.end(), 3.0f);
    float *est = nullptr, *cert = nullptr;
    ASSERT_EQ(lfe_2d(pairs.data(), amp2.data(), nullptr, n, n, 3, 1, 2, fov, fov, 6, 15, 0, 0, 0, 2,
                     nullptr, &est, &cert, 0, 0),
              1);
    std::vector<float> got(est, est + npix);
    mem_free_all(0);
    // Each pair alone is the root mean square of its two images.
    std::vector<std::vector<float>> each(3);
    for (int k = 0; k < 3; k += 2) {
        Estimate r = run_lfe_2d({pairs.begin() + 2 * k * npix, pairs.begin() + (2 * k + 1) * npix},
                                n, n, fov, fov, 6, 15, 2);
        Estimate i =
            run_lfe_2d({pairs.begin() + (2 * k + 1) * npix, pairs.begin() + (2 * k + 2) * npix}, n,
                       n, fov, fov, 6, 15, 2);
        for (int p = 0; p < npix; ++p)
            each[k].push_back(
                float(0.5 * (double(r.est[p]) * r.est[p] + double(i.est[p]) * i.est[p])));
    }
    for (int p = 0; p < npix; ++p)
        EXPECT_NEAR(got[p], std::sqrt((each[0][p] + 3 * each[2][p]) / 4), 1e-3 * got[p]) << p;
}

TEST(Lfe, WindowWeightedMeanModesAndTheWedge) {
    const int nx = 5, ny = 4;
    std::vector<float> v(nx * ny), w(nx * ny, 1.0f), out(nx * ny, 0.0f);
    for (int i = 0; i < nx * ny; ++i) v[i] = float(i);
    std::vector<uint8_t> mask(nx * ny, 1);
    mask[0] = 0;
    w[7] = 3.0f;
    window_weighted_mean(v.data(), w.data(), mask.data(), out.data(), nx, ny, 1, 3, 3, 1, 0);
    EXPECT_FLOAT_EQ(out[0], (0 + 1 + 5 + 6) / 4.0f);  // mode 0: all pixels
    EXPECT_FLOAT_EQ(out[6], (0 + 1 + 2 + 5 + 6 + 3 * 7 + 10 + 11 + 12) / 11.0f);
    std::fill(out.begin(), out.end(), -1.0f);
    window_weighted_mean(v.data(), w.data(), mask.data(), out.data(), nx, ny, 1, 3, 3, 1, 2);
    EXPECT_EQ(out[0], -1.0f);                                 // outside: kept
    EXPECT_FLOAT_EQ(out[1], (1 + 2 + 5 + 6 + 3 * 7) / 7.0f);  // masked neighbours only
    std::vector<float> zero(nx * ny, 0.0f);
    out[3] = 7.0f;
    window_weighted_mean(v.data(), zero.data(), mask.data(), out.data(), nx, ny, 1, 3, 3, 1, 1);
    EXPECT_EQ(out[3], 7.0f);  // no weight: the output stays

    std::vector<float> img(40 * 12, 5.0f);
    stamp_wedge(img.data(), 40, 12);
    EXPECT_EQ(img[0], 1.0f);
    EXPECT_EQ(img[9 * 40 + 17], 2.0f);
    EXPECT_EQ(img[3 * 40 + 39], 3.0f);
    EXPECT_EQ(img[10 * 40], 5.0f);
}

namespace {

// Two regions along x, c 1.5 and 3.0 m/s at 60 Hz, pixels of 1.5 mm: eight offsets of
// cos(phi - 2 pi t / 8) with phi = 2 pi f * (travel time from x = 0).
struct Phantom {
    static constexpr int nx = 160, ny = 128, nt = 8, split = 80;
    static constexpr double dx = 0.0015, f = 60.0, c1 = 1.5, c2 = 3.0;
    int nz;
    std::vector<float> stack;

    explicit Phantom(int nz_) : nz(nz_), stack(size_t(nx) * ny * nz_ * nt) {
        size_t plane = size_t(nx) * ny * nz;
        for (int t = 0; t < nt; ++t)
            for (size_t i = 0; i < plane; ++i) {
                int x = int(i % nx);
                double travel = std::min(x, split) * dx / c1 + std::max(x - split, 0) * dx / c2;
                stack[t * plane + i] = float(std::cos(2 * kPi * f * travel - 2 * kPi * t / nt));
            }
    }

    wave_params params(buffer_driver& d) const {
        wave_params p;
        p.nx = nx;
        p.ny = ny;
        p.nz = nz;
        p.nt = nt;
        p.fov[0] = float(nx * dx);
        p.fov[1] = float(ny * dx);
        p.fov[2] = float(nz * dx);
        p.mech_freq = float(f);
        p.lfe_on = 1;
        p.lfe_base_freq = 5.0f;
        p.lfe_nbands = 6;
        d.phase = stack;
        d.magnitude.assign(size_t(nx) * ny * nz, 100.0f);
        d.magnitudes.assign(3 * size_t(nx) * ny * nz, 100.0f);
        return p;
    }

    // Medians of each region, one local wavelength in from the interface and the borders.
    void expect_regions(const std::vector<float>& stiff, const char* what) const {
        ASSERT_EQ(stiff.size(), size_t(nx) * ny * nz) << what;
        const double cs[2] = {c1, c2};
        for (int r = 0; r < 2; ++r) {
            int w = int(std::ceil(cs[r] / f / dx));
            int x0 = r == 0 ? w : split + w, x1 = r == 0 ? split - w : nx - w;
            std::vector<double> v;
            for (int z = 0; z < nz; ++z)
                for (int y = w; y < ny - w; ++y)
                    for (int x = x0; x < x1; ++x) v.push_back(stiff[(size_t(z) * ny + y) * nx + x]);
            double want = cs[r] * cs[r];
            EXPECT_NEAR(median(v), want, 0.1 * want) << what << " region " << r;
        }
    }
};

}  // namespace

TEST(LfeChain, TwoRegionPhantomStiffnessMap2d) {
    buffer_driver d;
    Phantom ph(1);
    wave_params p = ph.params(d);
    int stiff = 0, est = 0, stack = 0, imu = 0, icert = 0;
    p.lfe_stiff = &stiff;
    p.lfe_est = &est;
    p.lfe_stack_out = &stack;
    p.lfe_individual = 1;
    p.lfe_imu = &imu;
    p.lfe_icert = &icert;
    wave_2d_1axis(&p);
    EXPECT_EQ(d.log, "");
    ph.expect_regions(d.images[&stiff][0], "2-D");
    // R and I each give the map on their own; certainty is stored times 1000.
    ph.expect_regions(d.images[&imu][0], "2-D, R alone");
    ph.expect_regions(d.images[&imu][1], "2-D, I alone");
    EXPECT_GT(median({d.images[&icert][0].begin(), d.images[&icert][0].end()}), 900.0);
    EXPECT_EQ(d.images[&stack].size(), 4u);  // estimate, certainty, stiffness and the mask
    EXPECT_EQ(d.images[&stack][5], std::vector<float>(size_t(ph.nx) * ph.ny, 1.0f));
    EXPECT_EQ(mem_count(), 0);

    // An empty mask: zero outputs.
    p.use_mask = 1;
    d.magnitude.assign(d.magnitude.size(), 0.0f);
    wave_2d_1axis(&p);
    for (float v : d.images[&stiff][0]) EXPECT_EQ(v, 0.0f);
    for (float v : d.images[&est][0]) EXPECT_EQ(v, 0.0f);
}

TEST(LfeChain, NanStaysInItsPixelThroughTheFilters) {
    buffer_driver d;
    Phantom ph(1);
    wave_params p = ph.params(d);
    const size_t bad = 60 * ph.nx + 40;
    d.phase[3 * size_t(ph.nx) * ph.ny + bad] = std::numeric_limits<float>::quiet_NaN();
    p.pre_on = 1;
    p.pre_filter.type = 7;
    p.pre_filter.cut[0] = 1.0f;
    p.pre_filter.cut[1] = 60.0f;
    p.pre_filter.order = 2;
    p.mid_on = 1;
    p.mid_filter = p.pre_filter;
    p.dirf_on = 1;
    p.dirf_ncos = 0;
    p.dirf_cut[0] = 1.0f;
    p.dirf_cut[1] = 60.0f;
    p.dirf_order = 2;
    int est = 0, stiff = 0;
    p.lfe_est = &est;
    p.lfe_stiff = &stiff;
    wave_2d_1axis(&p);
    EXPECT_EQ(d.log.find("not available"), std::string::npos) << d.log;
    const std::vector<float>& e = d.images[&est][0];
    ASSERT_EQ(e.size(), size_t(ph.nx) * ph.ny);
    for (size_t i = 0; i < e.size(); ++i) EXPECT_EQ(std::isnan(e[i]), i == bad) << i;
    EXPECT_EQ(d.images[&stiff][0][bad], 0.0f);
    ph.expect_regions(d.images[&stiff][0], "filtered");
}

TEST(LfeChain, TwoRegionPhantomStiffnessMap3d) {
    buffer_driver d;
    Phantom ph(4);
    wave_params p = ph.params(d);
    int stiff = 0;
    p.lfe_stiff = &stiff;
    p.ncomponents = 1;
    wave_3d_XYZ(&p);
    EXPECT_EQ(d.log, "");
    ph.expect_regions(d.images[&stiff][0], "wave_3d_XYZ");
    d.images.clear();
    wave_3d_1axis(&p);
    ph.expect_regions(d.images[&stiff][0], "wave_3d_1axis");
    d.images.clear();
    p.lfe_2d_of_3d = 1;
    wave_3d_XYZ(&p);
    ph.expect_regions(d.images[&stiff][0], "wave_3d_XYZ slice by slice");
    EXPECT_EQ(mem_count(), 0);
}

TEST(LfeChain, DriverTextsVerbose) {
    buffer_driver d;
    const int n = 16;
    wave_params p;
    p.nx = n;
    p.ny = n;
    p.lfe_base_freq = 10.0f;
    std::vector<float> pair(2 * n * n, 1.0f);
    std::vector<uint8_t> mask(n * n, 1);
    float* temp = nullptr;
    wave_quiet[WF_LFE] = 0;
    std::string out;
    auto run = [&](int ncomp) {
        testing::internal::CaptureStdout();
        lfe_2d_1axis(&p, pair.data(), mask.data(), nullptr, ncomp, &temp);
        out = testing::internal::GetCapturedStdout();
    };
    run(2);
    EXPECT_EQ(out,
              "LFE base_freq = 10.00 (waves/meter), num_bands = 6 \n"
              "LFE processing component 0 LFE processing component 1 ");
    p.lfe_octave = 4.0f;
    p.lfe_complex = 1;
    run(1);
    EXPECT_EQ(out,
              "LFE base_freq = 10.00 (waves/meter), num_bands = 6 \n"
              "COMPLEX LFE processing R1,I1 pair ");
    p.lfe_complex = 0;
    p.lfe_octave = 3.0f;
    run(1);
    EXPECT_EQ(out,
              "LFE base_freq = 10.00 (waves/meter), num_bands = 6 \n"
              "LFE filter frequency ratio = 3.00 \nLFE processing component 0 ");
    p.lfe_noft = 1;
    p.lfe_octave = 1.4142135f;
    p.post_on = 1;
    p.post_filter.type = 2;
    p.post_filter.cut[0] = 9.0f;
    run(1);
    EXPECT_EQ(out,
              "LFE base_freq = 10.00 (waves/meter), num_bands = 6 \n"
              "HALF-OCTAVE LFE processing offsets \n   AND POST-FILTER: Gaussian LP filter, "
              "passing frequencies below 9.0 cycles/FOV(x)\r\n");
    p.lfe_nd = 2;
    p.post_on = 0;
    run(1);
    EXPECT_EQ(out, "LFE soft-1D processing offsets ");
    p.lfe_noft = 0;
    p.lfe_nd = 1;
    run(1);
    EXPECT_EQ(out, "LFE pure-1D processing component 0 ");
    std::vector<float> three(6 * n * n, 1.0f);
    testing::internal::CaptureStdout();
    lfe_2d_XYZ(&p, three.data(), mask.data(), nullptr, nullptr, &temp);
    out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out.rfind("HALF-OCTAVE LFE processing (X,Y,Z)  ", 0), 0u) << out;
    wave_quiet[WF_LFE] = 1;
    mem_free_all(0);
}
