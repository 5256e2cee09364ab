// Harmonic extraction, direction, band and spatial filters against NumPy evaluations of their
// formulas (tests/wave/wave_filters_numpy.py), and the texts of the filter stages.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "tests/wave/buffer_driver.h"
#include "tests/wave/wave_test_util.h"
#include "wave/band_filter.h"
#include "wave/direction_filter.h"
#include "wave/mem.h"
#include "wave/messages.h"
#include "wave/stages.h"

using wave_test::f32;
using wave_test::floats;
using wave_test::max_error;
using wave_test::noise;

namespace {

constexpr double kPi = std::numbers::pi;
const char* const kScript = "wave/wave_filters_numpy.py";

struct Verbose {
    Verbose() { wave_quiet[WF_FILTER] = 0; }
    ~Verbose() { wave_quiet[WF_FILTER] = 1; }
};

}  // namespace

TEST(Harmonic, EqualsScaledFftAtTheHarmonicAndLeavesPlaneZero) {
    const int nx = 7, ny = 5, nt = 8, n = nx * ny;
    std::vector<float> stack = noise(size_t(n) * nt, 3);
    peer::Peer py;
    py.Put("st", f32(stack, {nx, ny, nt}));
    std::string h1 = py.Case("harmonic st 1"), h3 = py.Case("harmonic st 3");
    ASSERT_TRUE(py.Run(kScript));
    for (auto [h, id] : {std::pair{1, h1}, std::pair{3, h3}}) {
        std::vector<float> s = stack;
        ASSERT_EQ(phase_offset_filtering(s.data(), nx, ny, nt, h), 0);
        std::vector<float> got(s.begin() + n, s.begin() + 3 * n);
        EXPECT_LT(max_error(got, floats(py.Get(id))), 1e-5) << h;
        EXPECT_TRUE(std::equal(s.begin(), s.begin() + n, stack.begin()));
    }

    // a cos(phi - 2 pi t / n) gives R^2 + I^2 = a^2, in a volume too.
    const int nz = 3, m = nx * ny * nz;
    std::vector<float> wave(size_t(m) * nt);
    for (int t = 0; t < nt; ++t)
        for (int i = 0; i < m; ++i)
            wave[size_t(t) * m + i] = float((1 + i % 5) * std::cos(0.3 * i - 2 * kPi * t / nt));
    ASSERT_EQ(phase_offset_filtering_3d(wave.data(), nx, ny, nz, nt, 1), 0);
    for (int i = 0; i < m; ++i) {
        double r = wave[m + i], q = wave[2 * m + i];
        EXPECT_NEAR(r * r + q * q, double((1 + i % 5) * (1 + i % 5)), 1e-4) << i;
        EXPECT_NEAR(std::atan2(q, r), std::remainder(-0.3 * i, 2 * kPi), 1e-5) << i;
    }
}

TEST(Harmonic, AboveTheLimitLeavesTheStackAndTellsTheTimeWhenVerbose) {
    const int nx = 4, ny = 3, nt = 4;
    std::vector<float> stack = noise(nx * ny * nt, 5), before = stack;
    ASSERT_EQ(phase_offset_filtering(stack.data(), nx, ny, nt, 2), 0);  // (4 - 1) / 2 is 1
    EXPECT_EQ(stack, before);

    Verbose verbose;
    testing::internal::CaptureStdout();
    phase_offset_filtering(stack.data(), nx, ny, nt, 1);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out.rfind("Phase offset filtering (", 0), 0u) << out;
    EXPECT_EQ(out.substr(out.size() - 3), "s) ");
}

TEST(Harmonic, InterpolatedImagesOverOneCycle) {
    buffer_driver d;
    const int nx = 4, ny = 2, n = nx * ny;
    std::vector<float> pair = noise(2 * n, 8);
    wave_params p;
    p.nx = nx;
    p.ny = ny;
    p.ninterp = 6;
    p.harmonic_number = 2;
    p.type_code = 8;
    p.interp_mask = 1;
    int out = 0;
    p.interp_out = &out;
    std::vector<uint8_t> mask(n, 1);
    mask[3] = 0;
    ASSERT_EQ(interp_images(pair.data(), mask.data(), &p, 1, 2), 0);
    EXPECT_EQ(d.status, "interpolating images");
    for (int s = 0; s < 6; ++s) {
        const std::vector<float>& img = d.images[&out][6 + s];  // after the first pass's
        ASSERT_EQ(img.size(), size_t(n));
        double x = 2.0 * s * 2 * kPi / 6;
        for (int i = 0; i < n; ++i) {
            double want = mask[i] ? pair[i] * std::cos(x) - pair[n + i] * std::sin(x) + 128 : 0;
            EXPECT_NEAR(img[i], want, 1e-4) << s << " " << i;
        }
    }
    EXPECT_EQ(mem_count(), 0);
}

TEST(DirectionFilters, Cos2AndSectorEqualTheirFormulas) {
    peer::Peer py;
    struct Cos2 {
        int nx, ny, nz;
        float v[3];
    };
    const Cos2 cases[] = {{8, 6, 4, {0.3f, -0.5f, 0.8f}}, {7, 5, 3, {-1.0f, 2.0f, 0.5f}}};
    const float fov[3] = {0.24f, 0.2f, 0.1f};
    std::vector<std::string> ids;
    for (const Cos2& c : cases)
        ids.push_back(py.Case(wave_fmt("cos2 %d %d %d %.9g %.9g %.9g %.9g %.9g %.9g", c.nx, c.ny,
                                       c.nz, fov[0], fov[1], fov[2], c.v[0], c.v[1], c.v[2])));
    struct Sector {
        int nx, ny;
        float angle;
        double ncos;
    };
    const Sector sectors[] = {{9, 8, 30.0f, 1.0}, {10, 7, -60.0f, 1.5}, {8, 8, 120.0f, 3.0}};
    for (const Sector& s : sectors)
        ids.push_back(py.Case(wave_fmt("sector %d %d %.9g %.9g %.9g %.9g", s.nx, s.ny, fov[0],
                                       fov[1], s.angle, s.ncos)));
    ASSERT_TRUE(py.Run(kScript));
    size_t k = 0;
    for (const Cos2& c : cases) {
        std::vector<float> f(c.nx * c.ny * c.nz), g(f.size());
        cos2_filter_3d(f.data(), c.nx, c.ny, c.nz, fov[0], fov[1], fov[2], c.v[0], c.v[1], c.v[2]);
        EXPECT_LT(max_error(f, floats(py.Get(ids[k++]))), 1e-5);
        // The opposite vector keeps the other half-space: the supports never overlap but at
        // the origin (index 0 after the shift), where both are 1.0, and together they give
        // the squared cosine over the whole of k-space, the same at k and -k.
        cos2_filter_3d(g.data(), c.nx, c.ny, c.nz, fov[0], fov[1], fov[2], -c.v[0], -c.v[1],
                       -c.v[2]);
        EXPECT_EQ(f[0], 1.0f);
        EXPECT_EQ(g[0], 1.0f);
        for (int z = 0; z < c.nz; ++z)
            for (int y = 0; y < c.ny; ++y)
                for (int x = 0; x < c.nx; ++x) {
                    size_t i = (size_t(z) * c.ny + y) * c.nx + x;
                    size_t m = (size_t((c.nz - z) % c.nz) * c.ny + (c.ny - y) % c.ny) * c.nx +
                               (c.nx - x) % c.nx;
                    if (i == 0) continue;
                    EXPECT_EQ(f[i] * g[i], 0.0f) << i;
                    // -k of an even axis's last frequency is off the grid.
                    auto nyquist = [](int j, int n) { return n % 2 == 0 && j == n / 2; };
                    if (nyquist(x, c.nx) || nyquist(y, c.ny) || nyquist(z, c.nz)) continue;
                    EXPECT_NEAR(f[i] + g[i], f[m] + g[m], 1e-6) << i;
                    EXPECT_EQ(f[i], g[m]) << i;
                }
    }
    for (const Sector& s : sectors) {
        std::vector<float> f(s.nx * s.ny);
        cos2_sector_2d(f.data(), s.nx, s.ny, fov[0], fov[1], s.angle, s.ncos);
        EXPECT_LT(max_error(f, floats(py.Get(ids[k++]))), 1e-5) << s.ncos;
    }
}

TEST(DirectionFiltersDeathTest, ZeroVectorExits) {
    std::vector<float> f(8);
    EXPECT_EXIT(cos2_filter_3d(f.data(), 2, 2, 2, 1, 1, 1, 0, 0, 0), testing::ExitedWithCode(255),
                "cos2_filter_3d: Invalid \\(zero\\) direction vector.");
}

TEST(DirectionFilters, TableLookupStopsAtTheZeroVector) {
    float v[3] = {9, 9, 9};
    EXPECT_EQ(dirf_table_vector(20, 3, v), 0);
    EXPECT_FLOAT_EQ(v[0], 0.0f);
    EXPECT_FLOAT_EQ(v[1], -0.3568f);
    EXPECT_FLOAT_EQ(v[2], 0.9342f);
    EXPECT_EQ(dirf_table_vector(20, 19, v), 0);
    EXPECT_FLOAT_EQ(v[0], 0.9342f);
    EXPECT_FLOAT_EQ(v[2], -0.3568f);
    EXPECT_NE(dirf_table_vector(20, 20, v), 0);
    EXPECT_EQ(v[0] * v[0] + v[1] * v[1] + v[2] * v[2], 0.0f);
    v[0] = 5;
    EXPECT_NE(dirf_table_vector(7, 0, v), 0);  // not a set: v untouched
    EXPECT_EQ(v[0], 5.0f);
    for (int count : {6, 12, 16, 24, 28, 32}) {
        EXPECT_EQ(dirf_table_vector(count, 0, v), 0) << count;  // x of vertex 1
        EXPECT_FLOAT_EQ(v[0], 0.5774f);
        EXPECT_NE(dirf_table_vector(count, count, v), 0) << count;
    }
    EXPECT_NE(dirf_table_vector(32, 25, v), 0);  // past the stored values
}

TEST(DirectionFilters, StackModeEqualsTheNumpyTimeAndSpaceSplit) {
    buffer_driver d;
    const int nx = 16, ny = 12, nt = 8, n = nx * ny;
    wave_params p;
    p.nx = nx;
    p.ny = ny;
    p.nt = nt;
    p.fov[0] = 0.24f;
    p.fov[1] = 0.18f;
    p.dirf_angle = 30.0f;
    p.dirf_ncos = 1;
    p.dirf_cut[0] = 1.0f;
    p.dirf_cut[1] = 6.0f;
    p.dirf_order = 2;
    std::vector<float> stack = noise(size_t(n) * nt, 11), out = stack;
    ASSERT_EQ(direction_filter_2d(out.data(), &p, 0), 0);

    // The filters as the two sectors times the band-pass, each checked on its own above.
    filter_spec band;
    band.type = 7;
    band.cut[0] = 1.0f;
    band.cut[1] = 6.0f;
    band.order = 2;
    std::vector<float> fp(n), fm(n), b(n);
    cos2_sector_2d(fp.data(), nx, ny, p.fov[0], p.fov[1], -30.0f, 1);
    cos2_sector_2d(fm.data(), nx, ny, p.fov[0], p.fov[1], 150.0f, 1);
    ASSERT_EQ(fill_band_filter(b.data(), "complex", nx, ny, 1, 0.24 / 0.18, 1.0, &band), 0);
    for (int i = 0; i < n; ++i) {
        fp[i] *= b[i];
        fm[i] *= b[i];
    }
    peer::Peer py;
    py.Put("st", f32(stack, {nx, ny, nt}));
    py.Put("fp", f32(fp, {nx, ny}));
    py.Put("fm", f32(fm, {nx, ny}));
    std::string id = py.Case("dirstack st fp fm");
    ASSERT_TRUE(py.Run(kScript));
    EXPECT_LT(max_error(out, floats(py.Get(id))), 1e-4);

    // Two offsets: slices 0 and 1 are both cleared.
    p.nt = 2;
    std::vector<float> two = noise(2 * n, 12);
    ASSERT_EQ(direction_filter_2d(two.data(), &p, 0), 0);
    for (float v : two) EXPECT_NEAR(v, 0.0f, 1e-6);
}

TEST(DirectionFilters, StackThenHarmonicEqualsHarmonicThenPair) {
    // The stack mode's positive time frequencies get the filter the pair mode uses, so
    // filtering the offsets and then extracting the harmonic is the same as the other way.
    // Odd sizes: an even axis's last frequency has no opposite, which the real part folds in.
    buffer_driver d;
    const int nx = 7, ny = 5, nz = 5, nt = 8, n = nx * ny * nz;
    wave_params p;
    p.nx = nx;
    p.ny = ny;
    p.nz = nz;
    p.nt = nt;
    p.dirf_vector[0] = 0.5f;
    p.dirf_vector[1] = -0.3f;
    p.dirf_vector[2] = 0.8f;
    p.dirf_cut[0] = 1.0f;
    p.dirf_cut[1] = 4.0f;
    p.dirf_order = 2;
    for (int use_z : {1, 0}) {
        p.dirf_use[2] = use_z;
        std::vector<float> a = noise(size_t(n) * nt, 61), b = a;
        ASSERT_EQ(direction_filter(a.data(), &p, 0), 0);
        ASSERT_EQ(phase_offset_filtering_3d(a.data(), nx, ny, nz, nt, 1), 0);
        ASSERT_EQ(phase_offset_filtering_3d(b.data(), nx, ny, nz, nt, 1), 0);
        ASSERT_EQ(direction_filter(b.data() + n, &p, 1), 0);
        std::vector<float> pa(a.begin() + n, a.begin() + 3 * n),
            pb(b.begin() + n, b.begin() + 3 * n);
        EXPECT_LT(max_error(pa, pb), 1e-5) << use_z;
        EXPECT_GT(max_error(pa, std::vector<float>(2 * n, 0.0f)), 1e-2);
    }
}

TEST(DirectionFilters, BandOnlyIgnoresTheSignAndUnusedAxesAreLeftAlone) {
    buffer_driver d;
    const int nx = 8, ny = 6, nz = 4, n = nx * ny * nz;
    wave_params p;
    p.nx = nx;
    p.ny = ny;
    p.nz = nz;
    p.dirf_cut[0] = 1.0f;
    p.dirf_cut[1] = 3.0f;
    p.dirf_order = 2;
    p.dirf_ncos = 0;
    std::vector<float> pair = noise(2 * n, 21), a = pair, b = pair;
    p.dirf_vector[0] = 1.0f;
    ASSERT_EQ(direction_filter(a.data(), &p, 1), 0);
    p.dirf_vector[0] = -1.0f;
    ASSERT_EQ(direction_filter(b.data(), &p, 1), 0);
    EXPECT_EQ(a, b);
    EXPECT_GT(max_error(a, pair), 1e-2);

    // z left out: each slice is filtered alone, so a pair constant along x and y in every
    // slice passes nothing but its (removed) DC, whatever varies along z.
    p.dirf_use[2] = 0;
    std::vector<float> flat(2 * n);
    for (int i = 0; i < 2 * n; ++i) flat[i] = float((i / (nx * ny)) % nz + 1);
    ASSERT_EQ(direction_filter(flat.data(), &p, 1), 0);
    for (float v : flat) EXPECT_NEAR(v, 0.0f, 1e-5);
}

TEST(DirectionFilters, TextsQuietAndVerbose) {
    buffer_driver d;
    wave_params p;
    p.nx = 8;
    p.ny = 8;
    p.nz = 2;
    p.nt = 4;
    p.dirf_cut[0] = 1.0f;
    p.dirf_cut[1] = 3.0f;
    p.dirf_order = 2;
    p.dirf_angle = 45.0f;
    p.dirf_use[1] = 0;
    p.dirf_vector[0] = 1.0f;
    std::vector<float> pair(2 * 128, 1.0f);
    ASSERT_EQ(direction_filter(pair.data(), &p, 1), 0);
    EXPECT_EQ(d.status, "DirFilt (x z ) (1.000 0.000 1.000)  ");
    d.status.clear();
    p.nangles = 4;
    p.angle = 2;
    p.dirf_mode = 1;
    ASSERT_EQ(direction_filter(pair.data(), &p, 1), 0);
    EXPECT_EQ(d.status, "2-D DirFilt 45.00 ");

    Verbose verbose;
    testing::internal::CaptureStdout();
    p.dirf_mode = 0;
    direction_filter(pair.data(), &p, 1);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(
        out.rfind("Direction filter, vector 1.000 0.000 1.000 (x z ) (bandpass 1.00 3.00 2) (", 0),
        0u)
        << out;
    testing::internal::CaptureStdout();
    p.dirf_use[1] = 1;
    direction_filter_2d(pair.data(), &p, 1);
    out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out.rfind("Direction filter 45.00 (bandpass 1.00 3.00 2) (", 0), 0u) << out;
}

TEST(DirectionFilters, ZOnlyKeepsOneDirectionOfTravel) {
    buffer_driver d;
    const int nx = 2, ny = 2, nz = 16, nt = 8, plane = nx * ny;
    wave_params p;
    p.nx = nx;
    p.ny = ny;
    p.nz = nz;
    p.nt = nt;
    p.zonly_cut[0] = 1.0f;
    p.zonly_cut[1] = 4.0f;  // passes 2 waves per length at full gain
    p.zonly_order = 2;
    // cos(2 pi (2 z / nz - t / nt)) travels towards +z.
    std::vector<float> stack(size_t(plane) * nz * nt);
    for (int t = 0; t < nt; ++t)
        for (int z = 0; z < nz; ++z)
            for (int i = 0; i < plane; ++i)
                stack[(size_t(t) * nz + z) * plane + i] =
                    float(std::cos(2 * kPi * (2.0 * z / nz - double(t) / nt)));
    std::vector<float> removed = stack, kept = stack;
    ASSERT_EQ(zonly_filter(removed.data(), &p), 0);
    EXPECT_EQ(d.status, "Z-only direction filtering ");
    p.zonly_arg = 1.0f;
    ASSERT_EQ(zonly_filter(kept.data(), &p), 0);
    EXPECT_EQ(d.status, "Z-only direction filtering Z-only direction filtering (1)");
    for (size_t i = 0; i < stack.size(); ++i) {
        EXPECT_NEAR(removed[i], 0.0f, 1e-5) << i;
        EXPECT_NEAR(kept[i], stack[i], 1e-5) << i;
    }
}

TEST(BandFilters, TypesTwoToSevenEqualTheirFormulas) {
    buffer_driver d;
    peer::Peer py;
    struct Case {
        const char* kind;
        int type, nx, ny, nz;
        float c0, c1;
        int order;
    };
    const Case cases[] = {
        {"complex", 2, 10, 8, 1, 2.5f, 0, 1},    {"real", 2, 10, 7, 1, 3.0f, 0, 1},
        {"complex", 3, 9, 8, 1, 2.0f, 0, 1},     {"real", 4, 12, 8, 1, 2.0f, 5.0f, 1},
        {"complex", 5, 10, 9, 1, 3.0f, 0, 3},    {"real", 6, 10, 8, 1, 2.0f, 0, 2},
        {"complex", 7, 11, 8, 1, 1.5f, 4.0f, 2}, {"complex", 7, 8, 6, 5, 1.0f, 3.0f, 4},
        {"real", 4, 8, 6, 4, 1.0f, 3.0f, 1},     {"real", 5, 8, 6, 4, 2.0f, 0, 2},
    };
    const float fov[3] = {0.24f, 0.2f, 0.15f};
    double sy = double(fov[0]) / fov[1], sz = double(fov[0]) / fov[2];
    std::vector<std::string> ids;
    for (const Case& c : cases)
        ids.push_back(py.Case(wave_fmt("band %s %d %d %d %d %.17g %.17g %.9g %.9g %d", c.kind,
                                       c.type, c.nx, c.ny, c.nz, sy, sz, c.c0, c.c1, c.order)));
    ASSERT_TRUE(py.Run(kScript));
    for (size_t k = 0; k < std::size(cases); ++k) {
        const Case& c = cases[k];
        wave_params p;
        p.nx = c.nx;
        p.ny = c.ny;
        p.nz = c.nz;
        std::copy(fov, fov + 3, p.fov);
        filter_spec s;
        s.type = c.type;
        s.cut[0] = c.c0;
        s.cut[1] = c.c1;
        s.order = c.order;
        float* f = c.nz > 1 ? build_filter_3d(c.kind, &p, &s) : build_filter(c.kind, &p, &s);
        ASSERT_NE(f, nullptr) << k;
        int cols = std::string(c.kind) == "real" ? c.nx / 2 + 1 : c.nx;
        std::vector<float> got(f, f + cols * c.ny * c.nz);
        EXPECT_LT(max_error(got, floats(py.Get(ids[k]))), 2e-6) << k;
        mem_free(&f, 0);
    }
    EXPECT_EQ(mem_count(), 0);
}

TEST(BandFilters, FrequencyRunsEqualNumpyTransforms) {
    buffer_driver d;
    wave_params p;
    p.ny = 12;
    p.fov[1] = 0.18f;
    filter_spec s;
    s.type = 7;
    s.cut[0] = 1.5f;
    s.cut[1] = 5.0f;
    s.order = 2;
    peer::Peer py;
    std::vector<std::vector<float>> outs;
    std::vector<std::string> ids;
    for (int nx : {16, 15}) {  // odd rows take the complex transform
        p.nx = nx;
        std::vector<float> img = noise(size_t(nx) * p.ny, 30 + nx), out = img;
        ASSERT_EQ(apply_filter_spec(out.data(), 1, 0, nullptr, &p, &s, 0), 0);
        const char* kind = nx % 2 ? "complex" : "real";
        float* f = build_filter(kind, &p, &s);
        int cols = nx % 2 ? nx : nx / 2 + 1;
        std::string x = wave_fmt("x%d", nx), fn = wave_fmt("f%d", nx);
        py.Put(x, f32(img, {uint64_t(nx), uint64_t(p.ny)}));
        py.Put(fn, f32(std::vector<float>(f, f + cols * p.ny), {uint64_t(cols), uint64_t(p.ny)}));
        mem_free(&f, 0);
        ids.push_back(py.Case((nx % 2 ? "cfilter " : "rfilter ") + x + " " + fn));
        outs.push_back(out);
    }
    ASSERT_TRUE(py.Run(kScript));
    for (size_t k = 0; k < outs.size(); ++k)
        EXPECT_LT(max_error(outs[k], floats(py.Get(ids[k]))), 1e-5) << k;
}

TEST(BandFilters, SpatialMeanAndMedianHonourTheMask) {
    const int nx = 9, ny = 7, n = nx * ny;
    std::vector<float> img = noise(n, 41);
    std::vector<uint8_t> mask(n);
    std::vector<float> maskf(n);
    for (int i = 0; i < n; ++i) {
        mask[i] = (i % nx) > 2 && (i / nx) != 3 ? 1 : 0;
        maskf[i] = mask[i];
    }
    mask[5 * nx + 8] = 1;
    maskf[5 * nx + 8] = 1;
    peer::Peer py;
    py.Put("img", f32(img, {nx, ny}));
    py.Put("mask", f32(maskf, {nx, ny}));
    std::string mean_id = py.Case("spatial img mask 3 5 0");
    std::string median_id = py.Case("spatial img mask 3 5 1");
    ASSERT_TRUE(py.Run(kScript));
    const int res[3] = {3, 5, 1};
    std::vector<float> mean = img, med = img;
    spatial_filter(mean.data(), 1, mask.data(), nx, ny, 1, res, 0);
    spatial_filter(med.data(), 1, mask.data(), nx, ny, 1, res, 1);
    EXPECT_LT(max_error(mean, floats(py.Get(mean_id))), 1e-6);
    EXPECT_EQ(med, floats(py.Get(median_id)));
}

TEST(BandFilters, BadSpecsStopTheStageWithTheirText) {
    buffer_driver d;
    wave_params p;
    p.nx = 8;
    p.ny = 8;
    p.nt = 1;
    std::vector<float> img(64, 1.0f);
    filter_spec s;
    s.type = 7;
    s.cut[0] = 4.0f;
    s.cut[1] = 2.0f;
    EXPECT_NE(pre_filter(img.data(), nullptr, &p, &s), 0);
    EXPECT_NE(d.log.find("filter cut-offs must be above 0 and in rising order\n"),
              std::string::npos);
    d.log.clear();
    s.type = 2;
    s.cut[0] = 0.0f;
    EXPECT_NE(post_filter(img.data(), nullptr, &p, &s), 0);
    EXPECT_EQ(d.log, "filter cut-offs must be above 0 and in rising order\n");
    d.log.clear();
    s.type = 5;
    s.cut[0] = 2.0f;
    s.order = 0;
    EXPECT_NE(mid_filter(img.data(), nullptr, &p, &s), 0);
    EXPECT_NE(d.log.find("filter order must be at least 1\n"), std::string::npos);
    s.type = 9;  // no filter
    EXPECT_EQ(pre_filter(img.data(), nullptr, &p, &s), 0);
    EXPECT_EQ(mem_count(), 0);
}

TEST(BandFilters, TextsAndSummariesQuietAndVerbose) {
    buffer_driver d;
    wave_params p;
    p.nx = 8;
    p.ny = 8;
    p.nt = 2;
    std::vector<float> img(128, 1.0f);
    filter_spec s;
    s.type = 7;
    s.cut[0] = 2.0f;
    s.cut[1] = 40.0f;
    s.order = 4;
    ASSERT_EQ(pre_filter(img.data(), nullptr, &p, &s), 0);
    ASSERT_EQ(mid_filter(img.data(), nullptr, &p, &s), 0);
    ASSERT_EQ(post_filter(img.data(), nullptr, &p, &s), 0);
    EXPECT_EQ(d.status, "PRE-FILTERMID-FILTER.POST-FILTER");
    const std::string bp =
        "Butterworth BP filter, Passing frequencies between 2.0 and 40.0 cycles/FOV(x)\r\n";
    EXPECT_EQ(d.log, bp + bp + bp);

    const std::pair<int, const char*> summaries[] = {
        {2, "Gaussian LP filter, passing frequencies below 2.0 cycles/FOV(x)\r\n"},
        {3, "Gaussian HP filter, Passing frequencies above 2.0 cycles/FOV(x)\r\n"},
        {4, "Gaussian BP filter, Passing frequencies between 2.0 and 40.0 cycles/FOV(x)\r\n"},
        {5, "Butterworth LP filter, passing frequencies below 2.0 cycles/FOV(x)\r\n"},
        {6, "Butterworth HP filter, Passing frequencies above 2.0 cycles/FOV(x)\r\n"},
        {0, ""},
    };
    for (auto [type, text] : summaries) {
        s.type = type;
        EXPECT_EQ(filter_summary(&s), text) << type;
    }

    Verbose verbose;
    s.type = 5;
    testing::internal::CaptureStdout();
    pre_filter(img.data(), nullptr, &p, &s);
    mid_filter(img.data(), nullptr, &p, &s);
    post_filter(img.data(), nullptr, &p, &s);
    const std::string lp = "Butterworth LP filter, passing frequencies below 2.0 cycles/FOV(x)\r\n";
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "PRE-FILTER: " + lp + "MID-FILTER: " + lp + "   POST-FILTER: " + lp);
}
