// The unwrap solvers and their driver: truth and noise against scikit-image's unwrap_phase on
// smooth surfaces, the max-flow against exhaustive minimum cuts, the edge cases on small
// hand-computed planes, bad input, and the options through the preferences file.
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "core/data_space.h"
#include "core/host.h"
#include "core/zrk_data.h"
#include "ops/unwrap/grid_graph.h"
#include "ops/unwrap/minimum_discontinuity.h"
#include "ops/unwrap/solvers.h"
#include "ops/unwrap/unwrap.h"
#include "shell/option_table.h"
#include "shell/shell_modules.h"
#include "tests/peer.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

// A smooth surface in radians: a ramp and Gaussian bumps, `cycles` from lowest to highest.
std::vector<double> Surface(int64_t w, int64_t h, int64_t d, double cycles, bool ramp,
                            unsigned seed) {
    std::mt19937 g(seed);
    std::uniform_real_distribution<double> u(0.2, 0.8), s(-1, 1);
    const double ax = ramp ? s(g) : 0, ay = ramp ? s(g) : 0, az = ramp ? s(g) : 0;
    struct Bump {
        double x, y, z, r, a;
    };
    std::vector<Bump> bumps;
    for (int k = 0; k < 2; ++k) bumps.push_back({u(g), u(g), u(g), 0.15 + 0.1 * u(g), s(g)});
    std::vector<double> v(static_cast<size_t>(w * h * d));
    for (int64_t z = 0, k = 0; z < d; ++z)
        for (int64_t y = 0; y < h; ++y)
            for (int64_t x = 0; x < w; ++x, ++k) {
                const double fx = double(x) / w, fy = double(y) / h, fz = d > 1 ? double(z) / d : 0;
                double t = ax * fx + ay * fy + az * fz;
                for (const Bump& b : bumps) {
                    const double r2 = (fx - b.x) * (fx - b.x) + (fy - b.y) * (fy - b.y) +
                                      (d > 1 ? (fz - b.z) * (fz - b.z) : 0);
                    t += b.a * std::exp(-r2 / (b.r * b.r));
                }
                v[k] = t;
            }
    const auto [lo, hi] = std::minmax_element(v.begin(), v.end());
    const double scale = cycles * 2 * kPi / (*hi - *lo), base = *lo;
    for (double& t : v) t = (t - base) * scale;
    return v;
}

double Wrap(double t) { return t - 2 * kPi * std::floor((t + kPi) / (2 * kPi)); }

// Counts points that are not the truth plus the most common whole number of cycles.
int64_t WrongPoints(const std::vector<double>& got, const std::vector<double>& truth,
                    std::vector<bool>* right = nullptr) {
    std::map<long, int64_t> offsets;
    std::vector<long> k(got.size());
    for (size_t i = 0; i < got.size(); ++i) {
        const double cycles = (got[i] - truth[i]) / (2 * kPi);
        k[i] = std::fabs(cycles - std::round(cycles)) < 0.25 ? std::lround(cycles) : LONG_MIN;
        ++offsets[k[i]];
    }
    long best = LONG_MIN;
    int64_t count = -1;
    for (const auto& [off, n] : offsets)
        if (off != LONG_MIN && n > count) best = off, count = n;
    if (right) right->assign(got.size(), false);
    int64_t wrong = 0;
    for (size_t i = 0; i < got.size(); ++i) {
        if (k[i] == best && right) (*right)[i] = true;
        wrong += k[i] != best;
    }
    return wrong;
}

// Sum of squared differences of neighbours along x, y (and z).
double Energy(const std::vector<double>& v, int64_t w, int64_t h, int64_t d) {
    double e = 0;
    for (int64_t z = 0, k = 0; z < d; ++z)
        for (int64_t y = 0; y < h; ++y)
            for (int64_t x = 0; x < w; ++x, ++k) {
                if (x + 1 < w) e += (v[k + 1] - v[k]) * (v[k + 1] - v[k]);
                if (y + 1 < h) e += (v[k + w] - v[k]) * (v[k + w] - v[k]);
                if (z + 1 < d) e += (v[k + w * h] - v[k]) * (v[k + w * h] - v[k]);
            }
    return e;
}

struct Plane {
    int64_t w, h, d;
    std::vector<double> truth, wrapped, magnitude;
};

Plane MakePlane(int64_t w, int64_t h, int64_t d, double cycles, bool ramp, unsigned seed,
                double noise) {
    Plane p{w, h, d, Surface(w, h, d, cycles, ramp, seed), {}, {}};
    std::mt19937 g(seed + 1000);
    std::normal_distribution<double> n(0, noise > 0 ? noise : 1);
    const std::vector<double> shape = Surface(w, h, d, 1, false, seed + 7);
    for (size_t k = 0; k < p.truth.size(); ++k) {
        p.wrapped.push_back(Wrap(p.truth[k] + (noise > 0 ? n(g) : 0)));
        p.magnitude.push_back(1 + shape[k]);
    }
    return p;
}

CZrkData* Record(CDataSpace& s, const Plane& p, const std::vector<double>& v) {
    CZrkData* r = s.NewData(TYPE_R4, p.w, p.h, p.d, 1, 1, 1, "");
    float* f = static_cast<float*>(r->data);
    for (size_t k = 0; k < v.size(); ++k) f[k] = static_cast<float>(v[k]);
    return r;
}

std::vector<double> Doubles(const CZrkData* r) {
    const float* f = static_cast<const float*>(r->data);
    return std::vector<double>(f, f + r->Count());
}

// The driver's result for `method`, with the magnitude as quality or uniform quality.
std::vector<double> Unwrapped(const Plane& p, int method, bool magnitude, bool do_3d = false) {
    CDataSpace s;
    CZrkData* in = Record(s, p, p.wrapped);
    CZrkData* q = magnitude ? Record(s, p, p.magnitude) : nullptr;
    CZrkData* out = s.NewData("out");
    CUnwrap u;
    u.unwrap_method = method;
    u.unwrap_do_3d = do_3d;
    u.SetPreset(UNWRAP_RANGE_PI);
    u.Unwrap({.phase = in, .output = out, .quality = q});
    return Doubles(out);
}

peer::Array Skimage(const Plane& p) {
    CDataSpace s;
    peer::Peer peer;
    peer.Put("w", Record(s, p, p.wrapped));
    const std::string id = peer.Case("skimage w");
    EXPECT_TRUE(peer.Run("ops/unwrap_check.py"));
    return peer.Get(id);
}

std::vector<double> Reals(const peer::Array& a) {
    const std::vector<double> pairs = a.Pairs();
    std::vector<double> v;
    for (size_t k = 0; k < pairs.size(); k += 2) v.push_back(pairs[k]);
    return v;
}

// Noise-free surfaces: wherever unwrap_phase is right, every solver is right, and all of them
// are right everywhere. Minimum discontinuity weighs by the magnitude on surfaces with a ramp:
// with uniform quality every inside edge costs what a border edge costs, so a wrap that runs
// from border to border costs as much to remove as to keep.
TEST(UnwrapTruth, EverySolverMatchesTheTruthWhereverUnwrapPhaseDoes) {
    const struct {
        int64_t w, h;
        double cycles;
        bool ramp;
        unsigned seed;
    } cases[] = {{96, 80, 8, true, 1}, {64, 64, 6, true, 2}, {80, 72, 5, false, 3}};
    for (const auto& c : cases) {
        const Plane p = MakePlane(c.w, c.h, 1, c.cycles, c.ramp, c.seed, 0);
        std::vector<bool> sk_right;
        WrongPoints(Reals(Skimage(p)), p.truth, &sk_right);
        for (int method : {0, 1, 2}) {
            SCOPED_TRACE(std::string(kUnwrapMethodLabels[method]) + " seed " +
                         std::to_string(c.seed));
            const bool weighed = method == UNWRAP_MIN_DISCONTINUITY && c.ramp;
            std::vector<bool> right;
            EXPECT_EQ(WrongPoints(Unwrapped(p, method, weighed), p.truth, &right), 0);
            for (size_t k = 0; k < right.size(); ++k)
                ASSERT_TRUE(!sk_right[k] || right[k]) << "point " << k;
        }
    }
}

TEST(UnwrapTruth, GraphCutIn3dMatchesTheTruthOfAVolume) {
    const Plane p = MakePlane(40, 36, 10, 6, true, 4, 0);
    std::vector<bool> sk_right;
    WrongPoints(Reals(Skimage(p)), p.truth, &sk_right);
    std::vector<bool> right;
    EXPECT_EQ(WrongPoints(Unwrapped(p, UNWRAP_GRAPH_CUT, false, true), p.truth, &right), 0);
    for (size_t k = 0; k < right.size(); ++k)
        ASSERT_TRUE(!sk_right[k] || right[k]) << "point " << k;
}

// With noise of 0.3 rad graph cut reaches at most the energy of unwrap_phase's result and of
// the truth; quality guided with the magnitude as quality makes at most 1 % more wrong points.
TEST(UnwrapNoise, GraphCutEnergyAndQualityGuidedErrorsStayWithinUnwrapPhase) {
    for (unsigned seed : {5u, 6u}) {
        SCOPED_TRACE(seed);
        const Plane p = MakePlane(96, 96, 1, 6, true, seed, 0.3);
        const std::vector<double> sk = Reals(Skimage(p));
        const std::vector<double> gc = Unwrapped(p, UNWRAP_GRAPH_CUT, false);
        const double e = Energy(gc, p.w, p.h, 1);
        EXPECT_LE(e, Energy(sk, p.w, p.h, 1) * (1 + 1e-6));
        // The truth scored on the noisy samples: the noise unwrapped by the truth.
        std::vector<double> noisy_truth(p.truth.size());
        for (size_t k = 0; k < p.truth.size(); ++k)
            noisy_truth[k] = p.truth[k] + Wrap(p.wrapped[k] - p.truth[k]);
        EXPECT_LE(e, Energy(noisy_truth, p.w, p.h, 1) * (1 + 1e-6));

        const int64_t qg = WrongPoints(Unwrapped(p, UNWRAP_QUALITY_GUIDED, true), noisy_truth);
        const int64_t ref = WrongPoints(sk, noisy_truth);
        EXPECT_LE(qg, ref + static_cast<int64_t>(p.truth.size() / 100)) << "unwrap_phase " << ref;
    }
}

// Every min cut the graph finds is one of least cost among all 2^n labellings, in 2-D and 3-D.
template <int Dims>
void CheckMinimumCuts(unsigned seed) {
    std::mt19937 g(seed);
    std::uniform_real_distribution<double> u(0, 1);
    for (int trial = 0; trial < 400; ++trial) {
        const int w = 1 + trial % 4, h = 1 + trial / 4 % 3, d = Dims == 3 ? 1 + trial / 12 % 3 : 1;
        const int n = w * h * d;
        if (n > 12) continue;  // 4096 labellings at most
        std::vector<double> s(n), t(n), c[6];
        const int step[6] = {-1, 1, -w, w, -w * h, w * h};
        for (auto& v : c) v.assign(n, 0);
        for (int k = 0; k < n; ++k) {
            s[k] = u(g) < 0.5 ? u(g) : 0;
            t[k] = u(g) < 0.5 ? u(g) : 0;
            const int x = k % w, y = k / w % h, z = k / (w * h);
            const bool inside[6] = {x > 0, x + 1 < w, y > 0, y + 1 < h, z > 0, z + 1 < d};
            for (int e = 0; e < 2 * Dims; ++e)
                if (inside[e] && u(g) < 0.7) c[e][k] = u(g);
        }
        // Cost of a labelling, bit k set when k is on the sink side.
        auto cost = [&](unsigned m) {
            double e = 0;
            for (int k = 0; k < n; ++k) {
                const bool sink = (m >> k) & 1;
                e += sink ? s[k] : t[k];
                for (int dir = 0; dir < 2 * Dims; ++dir)
                    if (c[dir][k] > 0 && !sink && ((m >> (k + step[dir])) & 1)) e += c[dir][k];
            }
            return e;
        };
        double best = std::numeric_limits<double>::max();
        for (unsigned m = 0; m < (1u << n); ++m) best = std::min(best, cost(m));
        GridGraph<Dims> graph(w, h, d);
        const double* caps[6] = {c[0].data(), c[1].data(), c[2].data(),
                                 c[3].data(), c[4].data(), c[5].data()};
        graph.Load(s.data(), t.data(), caps);
        const double flow = graph.MaxFlow();
        unsigned m = 0;
        for (int k = 0; k < n; ++k)
            if (graph.InSinkTree(graph.Node(k % w, k / w % h, k / (w * h)))) m |= 1u << k;
        ASSERT_NEAR(flow, best, 1e-4) << "trial " << trial;
        ASSERT_NEAR(cost(m), best, 1e-4) << "trial " << trial;
    }
}

TEST(GridGraph, CutsAreMinimalAgainstEveryLabelling) {
    CheckMinimumCuts<2>(11);
    CheckMinimumCuts<3>(12);
}

TEST(GridGraph, AGraphTooLargeIsABadAllocation) {
    try {
        GridGraph<2> g(int64_t{1} << 20, int64_t{1} << 20, 1);
        FAIL() << "no exception";
    } catch (const std::bad_alloc& e) {
        EXPECT_STREQ(e.what(), "bad allocation");
    }
}

// The driver on plain buffers, with the range 0 ... 8 (one cycle is 8).
std::vector<float> Planes(const CUnwrap& u, std::vector<float> phase, int64_t w, int64_t h,
                          const std::vector<float>& quality = {},
                          const std::vector<uint8_t>& region = {}) {
    std::vector<float> out(phase.size());
    UnwrapPlanes(u, phase.data(), quality.empty() ? nullptr : quality.data(),
                 region.empty() ? nullptr : region.data(), out.data(), w, h, 1, {});
    return out;
}

CUnwrap RangeOf8(int method) {
    CUnwrap u;
    u.unwrap_method = method;
    u.low = 0;
    u.high = 8;
    return u;
}

TEST(UnwrapDriver, CentringKeepsAMeanOfExactlyHalfAndMovesByWholeCycles) {
    for (int method : {UNWRAP_QUALITY_GUIDED, UNWRAP_GRAPH_CUT}) {
        SCOPED_TRACE(kUnwrapMethodLabels[method]);
        const CUnwrap u = RangeOf8(method);
        // 7 then 1 unwraps to 7, 9: the mean of (out - 0.5) is exactly 0.5 and stays.
        std::vector<float> out = Planes(u, {7, 1}, 2, 1);
        EXPECT_EQ(out, (std::vector<float>{7, 9})) << out[0] << " " << out[1];
        // 7 then 2 unwraps to 7, 10: mean 0.5625 cycles, so one cycle comes off.
        out = Planes(u, {7, 2}, 2, 1);
        EXPECT_EQ(out, (std::vector<float>{-1, 2})) << out[0] << " " << out[1];
    }
}

TEST(UnwrapDriver, MaskedPointsKeepTheirInputOrTakeTheMiddle) {
    CUnwrap u = RangeOf8(UNWRAP_QUALITY_GUIDED);
    u.thresh_check = true;
    u.unwrap_thresh = 5;
    const std::vector<float> quality = {9, 1, 9, 9};
    EXPECT_EQ(Planes(u, {1, 3, 2, 7}, 4, 1, quality), (std::vector<float>{1, 4, 2, -1}));
    u.keep_masked = true;
    EXPECT_EQ(Planes(u, {1, 3, 2, 7}, 4, 1, quality), (std::vector<float>{1, 3, 2, -1}));

    // Nothing passes the threshold: no seeds, and the middle or the input everywhere.
    const std::vector<uint8_t> none(4, 0);
    std::vector<float> out(4);
    const std::vector<float> in = {0.1f, 0.2f, 0.3f, 0.4f}, q = {1, 1, 1, 1};
    EXPECT_EQ(UnwrapQualityGuided(in.data(), q.data(), none.data(), out.data(), 2, 2), 0u);
    u.unwrap_thresh = 10;
    EXPECT_EQ(Planes(u, {1, 3, 2, 7}, 2, 2, quality), (std::vector<float>{1, 3, 2, 7}));
    u.keep_masked = false;
    EXPECT_EQ(Planes(u, {1, 3, 2, 7}, 2, 2, quality), (std::vector<float>(4, 4)));
}

TEST(UnwrapDriver, ARegionKeepsTheInputOutsideAndIsNotCentred) {
    const CUnwrap u = RangeOf8(UNWRAP_QUALITY_GUIDED);
    // Inside: 7, 2, 5 unwraps to 7, 10, 13 and is not brought back by whole cycles.
    const std::vector<uint8_t> region = {1, 1, 1, 0};
    EXPECT_EQ(Planes(u, {7, 2, 5, 3}, 4, 1, {}, region), (std::vector<float>{7, 10, 13, 3}));
    // Without the region the mean of 7, 10, 13, 16 comes down by one cycle.
    EXPECT_EQ(Planes(u, {7, 2, 5, 0}, 4, 1), (std::vector<float>{-1, 2, 5, 8}));
}

TEST(UnwrapDriver, SmoothingNeedsMoreThan40OfTheBoxAndClearsTheBorder) {
    CUnwrap u = RangeOf8(UNWRAP_QUALITY_GUIDED);
    u.thresh_check = true;
    u.unwrap_thresh = 1;
    u.unwrap_smooth = 1;
    const int64_t n = 24;
    std::vector<float> phase(n * n, 3), quality(n * n, 1);
    quality[12 * n + 12] = 0;  // a hole of one point
    const std::vector<float> out = Planes(u, phase, n, n, quality);
    auto at = [&](int64_t x, int64_t y) { return out[y * n + x]; };
    EXPECT_EQ(at(12, 12), 3.0f);  // filled: 80 of 81
    EXPECT_EQ(at(3, 12), 4.0f);   // the border of 4
    EXPECT_EQ(at(12, 20), 4.0f);
    // After the first pass 4 ... 19 are set; the second keeps (6, 6) with 7 x 7 = 49 of its
    // box and drops (5, 5) with 6 x 6 = 36.
    EXPECT_EQ(at(6, 6), 3.0f);
    EXPECT_EQ(at(5, 5), 4.0f);
    EXPECT_EQ(at(4, 12), 3.0f);  // 5 x 9 = 45
    // Too small for a box: everything is masked.
    EXPECT_EQ(Planes(u, std::vector<float>(64, 3), 8, 8, std::vector<float>(64, 1)),
              std::vector<float>(64, 4));
}

// NaN and infinite samples count as masked out, and nothing hangs or crashes on them, on empty
// or single points, or on a quality that is all NaN.
TEST(UnwrapDriver, NonFiniteSamplesAreMaskedOut) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    for (int method : {0, 1, 2}) {
        SCOPED_TRACE(kUnwrapMethodLabels[method]);
        const CUnwrap u = RangeOf8(method);
        const std::vector<float> out = Planes(u, {1, nan, 7, inf, 3, 5}, 3, 2);
        EXPECT_EQ(out[1], 4.0f);
        EXPECT_EQ(out[3], 4.0f);
        for (int k : {0, 2, 4, 5}) EXPECT_TRUE(std::isfinite(out[k])) << k;
        EXPECT_EQ(Planes(u, {nan, nan, 2, 3}, 2, 2, {nan, nan, nan, nan}),
                  (std::vector<float>(4, 4)));
        EXPECT_EQ(Planes(u, {6}, 1, 1), (std::vector<float>{6}));
        EXPECT_TRUE(Planes(u, {}, 0, 0).empty());
    }
}

// A single column has no horizontal jumps: minimum discontinuity unwraps it through the
// vertical ones alone, given the weight of a good quality.
TEST(UnwrapSolvers, MinimumDiscontinuityUnwrapsAColumnOfWidthOne) {
    const int64_t h = 40;
    std::vector<float> phase(h), quality(h, 1.0f), out(h);
    for (int64_t y = 0; y < h; ++y) phase[y] = static_cast<float>(0.3 * y - std::floor(0.3 * y));
    EXPECT_EQ(UnwrapMinimumDiscontinuity(phase.data(), quality.data(), out.data(), 1, h), 0);
    for (int64_t y = 1; y < h; ++y) EXPECT_NEAR(out[y] - out[y - 1], 0.3, 1e-5) << y;
}

// With random quality the list fills up and half of it is postponed, over and over; still
// every point gets its value, and noise-free data comes out right.
TEST(UnwrapSolvers, QualityGuidedGivesEveryPointAValueWhenTheListFills) {
    const Plane p = MakePlane(64, 48, 1, 6, true, 8, 0);
    std::vector<float> phase, quality, out(p.truth.size(), -99);
    std::mt19937 g(3);
    std::uniform_real_distribution<float> u(0, 1);
    for (double t : p.wrapped) phase.push_back(static_cast<float>((t + kPi) / (2 * kPi)));
    for (size_t k = 0; k < phase.size(); ++k) quality.push_back(u(g));
    const std::vector<uint8_t> mask(phase.size(), 1);
    EXPECT_EQ(UnwrapQualityGuided(phase.data(), quality.data(), mask.data(), out.data(), p.w, p.h),
              1u);
    std::vector<double> got;
    for (float v : out) got.push_back(v * 2 * kPi);
    EXPECT_EQ(WrongPoints(got, p.truth), 0);
}

TEST(UnwrapSolvers, GraphCutStopsAtOnceOrAfter24Moves) {
    std::vector<std::string> lines;
    const UnwrapStatusFn status = [&](const std::string& s) { lines.push_back(s); };
    // Nothing to do: the first cut moves nobody.
    std::vector<float> flat(64, 0.25f), out(64);
    EXPECT_EQ(UnwrapGraphCut(flat.data(), out.data(), 8, 8, status), 1);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].rfind("iteration 1 of 25: ", 0), 0u) << lines[0];
    EXPECT_EQ(lines[1], "unchanged; early exit");
    EXPECT_EQ(out, flat);

    // 60 cycles along a line need more moves than there are: 24 run, the 25th never does.
    lines.clear();
    const int64_t w = 600;
    std::vector<float> ramp(w), line(w);
    for (int64_t x = 0; x < w; ++x) ramp[x] = static_cast<float>(0.1 * x - std::floor(0.1 * x));
    EXPECT_EQ(UnwrapGraphCut(ramp.data(), line.data(), w, 1, status), 24);
    ASSERT_EQ(lines.size(), 24u);
    EXPECT_EQ(lines.back().rfind("iteration 24 of 25: ", 0), 0u) << lines.back();
}

TEST(UnwrapDriver, StoresByUndoAndStopsOnInterruptOrABadRange) {
    CHeadlessHost host;
    CScopedHost scoped(host);
    CDataSpace s;
    const Plane p = MakePlane(32, 24, 3, 3, true, 9, 0);
    CZrkData* in = Record(s, p, p.wrapped);
    CUnwrap u;
    u.SetPreset(UNWRAP_RANGE_PI);
    EXPECT_EQ(u.Run({.phase = in}), 0);
    EXPECT_EQ(in->undo_text, "undo unwrap");
    EXPECT_EQ(host.status.back(), "complete");
    const std::vector<double> got = Doubles(in);
    const int64_t n = p.w * p.h;
    for (int64_t z = 0; z < p.d; ++z)
        EXPECT_EQ(WrongPoints({got.begin() + z * n, got.begin() + (z + 1) * n},
                              {p.truth.begin() + z * n, p.truth.begin() + (z + 1) * n}),
                  0);

    CZrkData* again = Record(s, p, p.wrapped);
    const std::vector<double> before = Doubles(again);
    host.interrupt = true;
    EXPECT_EQ(u.Run({.phase = again}), 1);
    EXPECT_EQ(host.status.back(), "user interupt");
    EXPECT_EQ(Doubles(again), before);
    host.interrupt = false;

    u.SetPreset(UNWRAP_RANGE_OTHER);
    u.low = u.high = 2;
    EXPECT_EQ(u.Run({.phase = again}), 1);
    EXPECT_EQ(host.status.back(), "phase range low and high must differ");
    EXPECT_EQ(Doubles(again), before);
}

// Without the stack only the shown plane changes; a complex input is read as its phase.
TEST(UnwrapDriver, OnePlaneOfAStackAndComplexInput) {
    CDataSpace s;
    const Plane p = MakePlane(20, 16, 2, 3, true, 10, 0);
    CZrkData* in = s.NewData(TYPE_CR4, p.w, p.h, p.d, 1, 1, 1, "");
    float* iq = static_cast<float*>(in->data);
    for (size_t k = 0; k < p.truth.size(); ++k) {
        iq[2 * k] = static_cast<float>(2 * std::cos(p.truth[k]));
        iq[2 * k + 1] = static_cast<float>(2 * std::sin(p.truth[k]));
    }
    CZrkData* out = s.NewData("out");
    CUnwrap u;
    u.SetPreset(UNWRAP_RANGE_PI);
    u.unwrap_stack = 0;
    u.Unwrap({.phase = in, .output = out, .plane = 1});
    ASSERT_EQ(out->Type(), TYPE_R4);
    const std::vector<double> got = Doubles(out);
    const int64_t n = p.w * p.h;
    for (int64_t k = 0; k < n; ++k) EXPECT_NEAR(got[k], Wrap(p.truth[k]), 1e-5) << k;
    EXPECT_EQ(WrongPoints({got.begin() + n, got.end()}, {p.truth.begin() + n, p.truth.end()}), 0);
}

TEST(UnwrapOptions, KeysSurviveThePreferencesFile) {
    const std::string path = ::testing::TempDir() + "quelmor_unwrap_prefs.txt";
    CDataSpace space;
    CShellModules modules;
    COptionTable table;
    modules.Register(table, space);
    modules.unwrap.unwrap_thresh = 140;
    modules.unwrap.unwrap_stack = 0;
    modules.unwrap.unwrap_do_3d = 1;
    modules.unwrap.unwrap_method = UNWRAP_GRAPH_CUT;
    modules.unwrap.unwrap_smooth = 1;
    ASSERT_EQ(table.WriteOptions(path), 0);
    std::FILE* f = std::fopen(path.c_str(), "r");
    ASSERT_NE(f, nullptr);
    std::string text(4096, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), f));
    std::fclose(f);
    EXPECT_NE(text.find("\n// unwrap options\nunwrap_thresh= 140\nunwrap_stack= 0\n"
                        "unwrap_do_3d= 1\nunwrap_method= 2\nunwrap_smooth= 1\n"),
              std::string::npos);

    CShellModules back;
    COptionTable back_table;
    back.Register(back_table, space);
    back_table.ReadOptions(path);
    std::remove(path.c_str());
    EXPECT_EQ(back.unwrap.unwrap_thresh, 140);
    EXPECT_EQ(back.unwrap.unwrap_stack, 0);
    EXPECT_EQ(back.unwrap.unwrap_do_3d, 1);
    EXPECT_EQ(back.unwrap.unwrap_method, UNWRAP_GRAPH_CUT);
    EXPECT_EQ(back.unwrap.unwrap_smooth, 1);
}

// A quality outside 0 ... 1 reaches the solver only by a direct call: it is held to the range,
// where negative weights would let the values climb for ever.
TEST(UnwrapBadInput, MinimumDiscontinuityHoldsAQualityOutsideTheRange) {
    const Plane p = MakePlane(12, 10, 1, 3, true, 12, 0.6);
    std::mt19937 g(4);
    std::uniform_real_distribution<float> u(-3, 4);
    std::vector<float> phase, wild, held;
    for (double t : p.wrapped) phase.push_back(static_cast<float>((t + kPi) / (2 * kPi)));
    for (size_t k = 0; k < phase.size(); ++k) {
        wild.push_back(k % 7 == 0 ? (k % 2 ? -1e30f : 1e30f) : u(g));
        held.push_back(std::clamp(wild.back(), 0.0f, 1.0f));
    }
    std::vector<float> out(phase.size()), expected(phase.size());
    UnwrapMinimumDiscontinuity(phase.data(), wild.data(), out.data(), p.w, p.h);
    UnwrapMinimumDiscontinuity(phase.data(), held.data(), expected.data(), p.w, p.h);
    EXPECT_EQ(out, expected);
}

// A large noisy plane: the noise never wraps except in a patch of random phase, whose
// discontinuities the trees must route. The walks keep their own stack, so size is no
// danger. Unoptimised, as under the sanitizer, 4096 x 4096 takes some twenty seconds; such a
// build walks 1024 x 1024.
TEST(UnwrapBadInput, MinimumDiscontinuityTakesALargeNoisyPlane) {
#ifdef __OPTIMIZE__
    const int64_t n = 4096;
#else
    const int64_t n = 1024;
#endif
    const int64_t patch = 64, at = n / 2;
    std::mt19937 g(5);
    std::normal_distribution<float> noise(0, static_cast<float>(0.3 / (2 * kPi)));
    std::uniform_real_distribution<float> u(0, 1);
    std::vector<float> phase(static_cast<size_t>(n * n)), quality(phase.size(), 0.0f),
        out(phase.size());
    for (float& v : phase) v = 0.5f + noise(g);
    for (int64_t y = at; y < at + patch; ++y)
        for (int64_t x = at; x < at + patch; ++x) phase[y * n + x] = u(g);
    EXPECT_EQ(UnwrapMinimumDiscontinuity(phase.data(), quality.data(), out.data(), n, n), 0);
    int64_t fractions = 0, movedAway = 0, moved = 0;
    for (int64_t y = 0; y < n; ++y)
        for (int64_t x = 0; x < n; ++x) {
            const double d = double(out[y * n + x]) - phase[y * n + x];
            fractions += std::fabs(d - std::round(d)) > 1e-4;
            moved += d != 0;
            const bool near =
                y >= at - patch && y < at + 2 * patch && x >= at - patch && x < at + 2 * patch;
            movedAway += d != 0 && !near;
        }
    EXPECT_EQ(fractions, 0);
    EXPECT_EQ(movedAway, 0);
    EXPECT_GT(moved, 0);
}

// The process's address space in bytes, from /proc.
int64_t AddressSpace() {
    std::ifstream status("/proc/self/status");
    std::string key;
    int64_t kb = 0;
    while (status >> key)
        if (key == "VmSize:" && status >> kb) return kb * 1024;
    return 0;
}

// In a child held to an address space that takes the graph cut problem of a 1024 x 1024
// plane but not its graph: the graph says "bad allocation", the driver "memory error".
void TellAllocationFailures() {
    // Large blocks are mapped and unmapped, so that none lingers in the heap between calls.
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
    const int64_t w = 1024, h = 1024, n = w * h;
    CHeadlessHost host;
    CScopedHost scoped(host);
    CDataSpace s;
    CZrkData* in = s.NewData(TYPE_R4, w, h, 1, 1, 1, 1, "phase");
    std::vector<float> phase(static_cast<size_t>(n)), out(phase.size());
    for (int64_t k = 0; k < n; ++k) {
        phase[k] = static_cast<float>(0.01 * k - std::floor(0.01 * k));
        static_cast<float*>(in->data)[k] = static_cast<float>(2 * kPi * phase[k] - kPi);
    }
    // Before the graph: 49 bytes a point for the problem alone, 66 through the driver; the
    // graph adds 46 a padded point.
    const rlimit limit = {static_cast<rlim_t>(AddressSpace() + 75 * n),
                          static_cast<rlim_t>(AddressSpace() + 75 * n)};
    setrlimit(RLIMIT_AS, &limit);
    std::string graph = "none";
    try {
        UnwrapGraphCut(phase.data(), out.data(), w, h);
    } catch (const std::bad_alloc& e) {
        graph = e.what();
    }
    CUnwrap u;
    u.unwrap_method = UNWRAP_GRAPH_CUT;
    u.SetPreset(UNWRAP_RANGE_PI);
    const int told = u.Run({.phase = in});
    std::fprintf(stderr, "graph: %s; driver %d: %s\n", graph.c_str(), told,
                 host.status.empty() ? "" : host.status.back().c_str());
    _exit(0);
}

TEST(UnwrapBadInput, AGraphTooLargeForMemoryIsAMemoryError) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer's allocator ends the process rather than fail under a limit";
#else
    EXPECT_EXIT(TellAllocationFailures(), testing::ExitedWithCode(0),
                "graph: bad allocation; driver 1: memory error");
#endif
}

// The host in a dying child: its message goes where the death test reads.
class CStderrHost : public CHost {
  public:
    void Message(const std::string& text) override { std::fputs(text.c_str(), stderr); }
};

// A loop whose start has no way back through the tree: the host hears where, and the process
// ends.
TEST(UnwrapBadInput, ABrokenLoopEndsTheProcess) {
    const std::vector<float> phase(9, 0.25f), quality(9, 1.0f);
    std::vector<float> out(9);
    EXPECT_EXIT(
        {
            CStderrHost host;
            CScopedHost scoped(host);
            CMinimumDiscontinuity solver(phase.data(), quality.data(), out.data(), 3, 3);
            const int64_t a = 2 * solver.stride + 1;  // column 1, row 2, in no tree
            solver.RemoveLoop(a, a - solver.stride, 1);
        },
        testing::ExitedWithCode(1), "Error: broken loop at col 1, row 2\n");
}

}  // namespace
