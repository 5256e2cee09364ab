// Wave direction analysis: the range rules, plane waves at known angles, the energies of two
// waves, masks, and the energies of a random field against NumPy.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "tests/wave/buffer_driver.h"
#include "tests/wave/wave_test_util.h"
#include "wave/image_buffers.h"
#include "wave/messages.h"
#include "wave/stages.h"
#include "wave/wave_direction.h"

using wave_test::f32;
using wave_test::floats;
using wave_test::noise;

namespace {

constexpr double kPi = std::numbers::pi;

struct Wave {
    int cx, cy;  // cycles over the image along x and down the rows
    double amp;
};

// Offsets of travelling waves a cos(phi - 2 pi t / nt) with phi = -2 pi (cx x / nx + cy y / ny):
// their harmonic is a e^(-i phi), whose spectrum sits at (cx, cy), the grid angle
// atan2(cy, cx), which is the direction filter's angle with the sign turned.
std::vector<float> offsets(int nx, int ny, int nt, const std::vector<Wave>& waves) {
    std::vector<float> st(size_t(nx) * ny * nt, 0.0f);
    for (int t = 0; t < nt; ++t)
        for (int y = 0; y < ny; ++y)
            for (int x = 0; x < nx; ++x) {
                double v = 0.0;
                for (const Wave& w : waves) {
                    double phi = -2.0 * kPi * (double(w.cx) * x / nx + double(w.cy) * y / ny);
                    v += w.amp * std::cos(phi - 2.0 * kPi * t / nt);
                }
                st[(size_t(t) * ny + y) * nx + x] = float(v);
            }
    return st;
}

wave_params square(int n, int nt) {
    wave_params p;
    p.nx = p.ny = n;
    p.nz = 1;
    p.nt = nt;
    p.fov[0] = p.fov[1] = 0.2f;
    p.harmonic_number = 1;
    p.dirf_cut[0] = 1.0f;
    p.dirf_cut[1] = 12.0f;
    p.dirf_order = 2;
    p.dirf_ncos = 1;
    return p;
}

// The direction filter's Butterworth band-pass at radius r (cycles over the field).
double butterworth(double r, double c1, double c2, int order) {
    double q = (c1 * c2 - r * r) / (r * (c2 - c1));
    return 1.0 / std::sqrt(1.0 + std::pow(q, 2 * order));
}

}  // namespace

TEST(WaveDirection, RangesAreCleaned) {
    struct Case {
        wave_range in, out;
    } cases[] = {
        {{-10, 90, 30, 0}, {0, 90, 30, 4}},        // start below the limit
        {{100, 50, 10, 0}, {0, 50, 10, 6}},        // start beyond the stop
        {{400, 500, 10, 0}, {0, 359, 10, 36}},     // start beyond the last angle
        {{0, 500, 45, 0}, {0, 359, 45, 8}},        // stop clamped: 360 is 0 again
        {{10, 100, 0, 4}, {10, 100, 30, 4}},       // step from the count
        {{10, 10, 0, 1}, {10, 10, 1, 1}},          // one value: step 1.0
        {{20, 20, -5, 3}, {20, 20, 1, 3}},         // no span to share out: step 1.0
        {{0, 90, 30, 2}, {0, 90, 30, 2}},          // a given count stands
        {{0, 0.3f, 0.1f, 0}, {0, 0.3f, 0.1f, 4}},  // a stop the steps meet in floats
        {{0, 359, 0.5f, 0}, {0, 359, 1, 360}},     // too many: the whole span by 1.0
        {{5, 100, 0, 500}, {0, 359, 1, 360}},
        {{NAN, NAN, NAN, 3}, {0, 0, 1, 3}},  // nothing to go by
        {{30, NAN, 10, 0}, {30, 30, 10, 1}},
    };
    for (const Case& c : cases) {
        wave_range r = c.in;
        clean_range(&r, kWaveAngleFirst, kWaveAngleLast);
        std::string at = std::to_string(c.in.start) + " " + std::to_string(c.in.stop) + " " +
                         std::to_string(c.in.step) + " " + std::to_string(c.in.count);
        EXPECT_FLOAT_EQ(r.start, c.out.start) << at;
        EXPECT_FLOAT_EQ(r.stop, c.out.stop) << at;
        EXPECT_FLOAT_EQ(r.step, c.out.step) << at;
        EXPECT_EQ(r.count, c.out.count) << at;
    }
}

TEST(WaveDirection, PlaneWavesPeakAtTheirAngle) {
    buffer_driver d;
    const int n = 32, nt = 4;
    wave_params p = square(n, nt);
    struct Case {
        Wave w;
        double angle;  // the direction filter's angle of the wave
    } cases[] = {{{6, 0, 1.5}, 0.0},
                 {{0, -6, 1.0}, 90.0},
                 {{-6, 0, 1.0}, 180.0},
                 {{5, 5, 0.7}, 315.0},
                 {{-4, 7, 1.0}, 360.0 - std::atan2(7.0, -4.0) * 180.0 / kPi}};  // 240.26
    for (const Case& c : cases) {
        std::vector<float> st = offsets(n, n, nt, {c.w});
        wave_range angles{0, 359, 5, 0};
        std::vector<double> e;
        ASSERT_EQ(wave_direction_analysis(st.data(), nullptr, &p, &angles, &e), 0);
        ASSERT_EQ(e.size(), 72u);
        int best = int(std::max_element(e.begin(), e.end()) - e.begin());
        int want = int(std::lround(c.angle / 5.0)) % 72;
        EXPECT_EQ(best, want) << c.angle;
        // The opposite direction keeps nothing of it: the sector is a half-plane.
        EXPECT_LT(e[size_t((want + 36) % 72)], 1e-6 * e[size_t(best)]) << c.angle;
        if (std::fmod(c.angle, 5.0) == 0.0) {
            // On its own angle the sector passes it whole: a^2 per pixel times the band-pass.
            double r = std::hypot(c.w.cx, c.w.cy);
            double b = butterworth(r, p.dirf_cut[0], p.dirf_cut[1], p.dirf_order);
            EXPECT_NEAR(e[size_t(want)] / (c.w.amp * c.w.amp * n * n * b * b), 1.0, 1e-4)
                << c.angle;
        }
    }
    EXPECT_EQ(d.status.rfind("Wave Direction Analysis", 0), 0u) << d.status;
}

TEST(WaveDirection, TwoWavesGiveTwoPeaksInTheRatioOfTheirPowers) {
    // At 0 and 90 degrees each sector is zero on the other wave's frequency (cos^2 of a right
    // angle), the band-pass is the same at the same radius, and with every pixel counted the
    // energies split by Parseval: E = a^2 N B^2 each. Only single-precision rounding of the
    // transforms (about 1e-6 relative over 48 x 48) is left, so 1e-4 is ample.
    buffer_driver d;
    const int n = 48, nt = 6;
    wave_params p = square(n, nt);
    std::vector<float> st = offsets(n, n, nt, {{8, 0, 2.0}, {0, -8, 0.5}});
    wave_range angles{0, 359, 10, 0};
    std::vector<double> e;
    ASSERT_EQ(wave_direction_analysis(st.data(), nullptr, &p, &angles, &e), 0);
    ASSERT_EQ(e.size(), 36u);
    EXPECT_NEAR(e[0] / e[9], 16.0, 16.0 * 1e-4);
    // Two peaks: the local maxima of the circular curve are the two waves' angles.
    std::vector<int> peaks;
    for (int a = 0; a < 36; ++a)
        if (e[a] > e[(a + 35) % 36] && e[a] > e[(a + 1) % 36]) peaks.push_back(a);
    EXPECT_EQ(peaks, (std::vector<int>{0, 9}));

    std::string table = wave_direction_table(angles, e);
    EXPECT_EQ(table.rfind("  angle  energy  % max \r\n", 0), 0u);
    char row[64];
    std::snprintf(row, sizeof row, "%7.2f %7.2f %7.2f \r\n", 90.0, e[9], 100.0 * e[9] / e[0]);
    EXPECT_NE(table.find(row), std::string::npos) << table;
}

TEST(WaveDirection, MasksHolesAndRefusals) {
    buffer_driver d;
    const int n = 16, nt = 4;
    wave_params p = square(n, nt);
    std::vector<float> st = offsets(n, n, nt, {{3, 2, 1.0}});
    std::vector<uint8_t> none(size_t(n) * n, 0);
    wave_range angles{0, 180, 45, 0};
    std::vector<double> e;
    ASSERT_EQ(wave_direction_analysis(st.data(), none.data(), &p, &angles, &e), 0);
    ASSERT_EQ(e.size(), 5u);
    for (double v : e) EXPECT_EQ(v, 0.0);
    EXPECT_NE(wave_direction_table(angles, e).find("   0.00 \r\n"), std::string::npos);

    // A pixel that is not finite counts as no wave instead of spreading over the image.
    st[37] = std::nanf("");
    ASSERT_EQ(wave_direction_analysis(st.data(), nullptr, &p, &angles, &e), 0);
    for (double v : e) EXPECT_TRUE(std::isfinite(v) && v > 0.0);

    // No harmonic in two offsets, and a band-pass without cut-offs, are refused with a text.
    d.log.clear();
    p.nt = 2;
    EXPECT_EQ(wave_direction_analysis(st.data(), nullptr, &p, &angles, &e), 1);
    EXPECT_EQ(d.log, "wave direction analysis: no harmonic 1 in 2 offsets\n");
    EXPECT_TRUE(e.empty());
    p.nt = nt;
    p.dirf_cut[0] = p.dirf_cut[1] = 0.0f;
    EXPECT_EQ(wave_direction_analysis(st.data(), nullptr, &p, &angles, &e), 1);
}

TEST(WaveDirection, AnAngleKeepsWhatTheDirectionFilterKeeps) {
    // The energy at an angle is that of the chain's pair after direction_filter_2d with that
    // dirf_angle, so the best angle of the table can go to the chain as it is.
    buffer_driver d;
    const int nx = 20, ny = 14, nt = 4, npix = nx * ny;
    wave_params p = square(nx, nt);
    p.ny = ny;
    p.fov[1] = 0.15f;
    p.dirf_ncos = 2;
    std::vector<float> st = noise(size_t(npix) * nt, 41);
    std::vector<uint8_t> mask(npix);
    for (int i = 0; i < npix; ++i) mask[i] = uint8_t((i * 7) % 5 != 0);
    for (float angle : {0.0f, 33.0f, 250.0f}) {
        wave_range angles{angle, angle, 0, 1};
        std::vector<double> e;
        ASSERT_EQ(wave_direction_analysis(st.data(), mask.data(), &p, &angles, &e), 0);
        std::vector<float> h = st;
        ASSERT_EQ(phase_offset_filtering(h.data(), nx, ny, nt, 1), 0);
        p.dirf_angle = angle;
        ASSERT_EQ(direction_filter_2d(h.data() + npix, &p, 1), 0);
        double want = 0.0;
        for (int i = 0; i < npix; ++i)
            if (mask[i])
                want +=
                    double(h[npix + i]) * h[npix + i] + double(h[2 * npix + i]) * h[2 * npix + i];
        ASSERT_EQ(e.size(), 1u);
        EXPECT_NEAR(e[0] / want, 1.0, 1e-5) << angle;
    }
}

TEST(WaveDirection, EnergiesEqualNumpyOnARandomVolume) {
    buffer_driver d;
    const int nx = 12, ny = 10, nz = 2, nt = 6, npix = nx * ny * nz;
    wave_params p;
    p.nx = nx;
    p.ny = ny;
    p.nz = nz;
    p.nt = nt;
    p.fov[0] = 0.24f;
    p.fov[1] = 0.18f;
    p.harmonic_number = 2;
    p.dirf_cut[0] = 1.0f;
    p.dirf_cut[1] = 5.0f;
    p.dirf_order = 2;
    p.dirf_ncos = 2;
    std::vector<float> st = noise(size_t(npix) * nt, 7);
    std::vector<float> mask(npix);
    for (int i = 0; i < npix; ++i) mask[i] = float((i * 13) % 7 < 5);
    std::vector<uint8_t> bytes(mask.begin(), mask.end());
    wave_range angles{10, 300, 37, 0};
    std::vector<double> e;
    ASSERT_EQ(wave_direction_analysis(st.data(), bytes.data(), &p, &angles, &e), 0);
    ASSERT_EQ(angles.count, 8);

    // The reference: the harmonic by numpy.fft along t, per slice fft2, the band-pass and the
    // sector from their formulas (the sector about minus the angle), ifft2, |u|^2 on the mask.
    peer::Peer py;
    py.Put("st", f32(st, {nx, ny, nz, nt}));
    py.Put("mask", f32(mask, {nx, ny, nz}));
    ASSERT_TRUE(py.RunText(R"(
st = peer.load(FOLDER, "st").astype(np.float64).T          # (t, z, y, x)
mask = peer.load(FOLDER, "mask").T != 0                     # (z, y, x)
nt, nz, ny, nx = st.shape
u = np.fft.fft(st, axis=0)[2] * 2 / nt                      # harmonic 2
fx, fy = 0.24, 0.18
kx = np.fft.fftfreq(nx, 1 / nx) / fx
ky = np.fft.fftfreq(ny, 1 / ny) / fy
KY, KX = np.meshgrid(ky, kx, indexing="ij")
# Band-pass in cycles over the x field: r from x and y frequency indices
r = np.hypot(np.fft.fftfreq(nx, 1 / nx)[None, :], np.fft.fftfreq(ny, 1 / ny)[:, None] * fx / fy)
with np.errstate(divide="ignore"):
    q = (1 * 5 - r**2) / (r * (5 - 1))
    band = np.where(r > 0, 1 / np.sqrt(1 + q**4), 0.0)
spec = np.fft.fft2(u, axes=(1, 2))
out = []
for a in range(8):
    th = np.radians(-(10 + 37 * a))
    half = np.pi / 4                                        # ncos 2
    ang = np.arctan2(KY, KX) - th
    inside = np.cos(ang) >= np.cos(half) - 1e-12
    sec = np.where(inside, np.cos(2 * ang) ** 2, 0.0)
    sec[0, 0] = 1.0
    v = np.fft.ifft2(spec * sec * band, axes=(1, 2))
    out.append(np.sum(np.abs(v[mask]) ** 2))
print(" ".join("%.12g" % v for v in out))
)"));
    std::vector<double> want;
    for (const char* at = py.Output().c_str();;) {
        char* end;
        double v = std::strtod(at, &end);
        if (end == at) break;
        want.push_back(v);
        at = end;
    }
    ASSERT_EQ(want.size(), e.size());
    for (size_t a = 0; a < e.size(); ++a) EXPECT_NEAR(e[a] / want[a], 1.0, 2e-5) << a;
}
