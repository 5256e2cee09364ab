// Region statistics and masks against NumPy and scikit-image on the same masks.
#include "display/roi_stats.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdlib>
#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "core/data_space.h"
#include "core/host.h"
#include "display/roi_mask.h"
#include "tests/peer.h"

namespace {

class RoiStatsTest : public ::testing::Test {
  protected:
    void SetUp() override { Clear(); }
    void TearDown() override { Clear(); }
    static void Clear() {
        while (GlobalDataSpace().Count() > 0) GlobalDataSpace().DelData(0);
    }
    static CZrkData* Set(const char* name, const std::vector<float>& v) {
        GlobalDataSpace().DelData(name);
        CZrkData* r = GlobalDataSpace().NewData(TYPE_R4, v.size(), 1, 1, 1, 1, 1, name);
        std::memcpy(r->data, v.data(), v.size() * sizeof(float));
        return r;
    }
    // The numbers of a report line, whatever separates them.
    static std::vector<double> Numbers(const std::string& line) {
        std::vector<double> out;
        const char* p = line.c_str();
        while (*p) {
            char* end = nullptr;
            const double v = std::strtod(p, &end);
            if (end != p && (std::isdigit(static_cast<unsigned char>(*p)) || *p == '-')) {
                out.push_back(v);
                p = end;
            } else {
                ++p;
            }
        }
        return out;
    }
    CHeadlessHost host;
    CScopedHost scoped{host};
};

TEST_F(RoiStatsTest, RectangleReportAndStatus) {
    CZrkData* a = GlobalDataSpace().NewData(TYPE_R4, 4, 4, 1, 1, 1, 1, "a");
    for (int k = 0; k < 16; ++k) static_cast<float*>(a->data)[k] = k % 4 + 4 * (k / 4);
    Set("roi_rect", {1, 1, 2, 2});
    ASSERT_EQ(CalcRoi(a, 0, ROI_RECT, 0), 1);
    EXPECT_EQ(host.history_text, "[][]a 7.500, 2.062, 3.638, 4\r\n");
    ASSERT_FALSE(host.status.empty());
    EXPECT_EQ(host.status.back(), " mean=7.500; sd=2.062; snr=3.638; n=4");
}

TEST_F(RoiStatsTest, EmptyOrMissingRegion) {
    CZrkData* a = GlobalDataSpace().NewData(TYPE_R4, 8, 8, 1, 1, 1, 1, "a");
    std::memset(a->data, 0, a->Bytes());
    // No record: nothing computed, the status says why.
    EXPECT_EQ(CalcRoi(a, 0, ROI_ELLIPSE, 0), 0);
    EXPECT_EQ(host.status.back(), "roi_mask does not exist");
    EXPECT_TRUE(host.history_text.empty());
    // A record under 2 wide is no region.
    Set("roi_rect", {1});
    EXPECT_EQ(CalcRoi(a, 0, ROI_RECT, 0), 0);
    // An empty binary region: n = 0, nothing divided.
    CZrkData* b = GlobalDataSpace().NewData(TYPE_N1, 8, 8, 1, 1, 1, 1, "roi_binary");
    std::memset(b->data, 0, b->Bytes());
    CRoiStats s;
    ASSERT_TRUE(RoiStats(a, 0, ROI_BINARY, 0, &s));
    EXPECT_EQ(s.n, 0u);
    EXPECT_EQ(s.snr, 0);
    // A plane of one value: sd 0, snr 0; a rectangle wholly outside clamps to the corner.
    Set("roi_rect", {20, 20, 30, 30});
    ASSERT_TRUE(RoiStats(a, 0, ROI_RECT, 0, &s));
    EXPECT_EQ(s.n, 1u);
    EXPECT_EQ(s.sd, 0);
    EXPECT_EQ(s.snr, 0);
    // The 1d forms check roi_x.
    EXPECT_EQ(CalcRoiX(a, 0, 0), 0);
    EXPECT_EQ(host.status.back(), "1d roi does not exist");
    Set("roi_x", {5, 2});
    EXPECT_EQ(CalcRoiX(a, 0, 0), 0);
    EXPECT_EQ(host.status.back(), "1d roi is invalid");
}

// Every kind on a 256 x 256 plane with NaN, and a complex plane through each channel, against
// NumPy on the mask the build left in roi_mask.
TEST_F(RoiStatsTest, EveryKindAndChannelAgainstNumPy) {
    const res_t n = 256;
    std::mt19937 rng(7);
    std::normal_distribution<float> g(100, 20);
    CZrkData* r = GlobalDataSpace().NewData(TYPE_R4, n, n, 3, 1, 1, 1, "r");
    auto* rv = static_cast<float*>(r->data);
    for (uint64_t k = 0; k < r->Count(); ++k) rv[k] = k % 97 == 0 ? NAN : g(rng);
    CZrkData* c = GlobalDataSpace().NewData(TYPE_CR4, n, n, 1, 1, 1, 1, "c");
    auto* cv = static_cast<std::complex<float>*>(c->data);
    for (uint64_t k = 0; k < c->Count(); ++k) cv[k] = {g(rng) - 100, g(rng) - 90};

    Set("roi_x", {10, 40});
    Set("roi_y", {200, 300});  // partly outside: clamped
    Set("roi_rect", {-5, 30, 90, 120});
    Set("roi_ellip", {20, 40, 220, 180});
    Set("roi_draw", {30, 10, 240, 60, 120, 250, 5, 140});
    CZrkData* bin = GlobalDataSpace().NewData(TYPE_N1, n, n, 1, 1, 1, 1, "roi_binary");
    for (uint64_t k = 0; k < bin->Count(); ++k) static_cast<uint8_t*>(bin->data)[k] = k % 3 == 0;

    peer::Peer p;
    struct Want {
        std::string id;
        CRoiStats got;
    };
    std::vector<Want> wants;
    int m = 0;
    for (int kind : {ROI_X, ROI_Y, ROI_RECT, ROI_ELLIPSE, ROI_DRAW, ROI_BINARY}) {
        const std::string mask = "m" + std::to_string(m++);
        for (uint64_t plane : {0, 2}) {
            Want w;
            ASSERT_TRUE(RoiStats(r, plane, kind, 0, &w.got)) << kind;
            p.Put(mask, GlobalDataSpace().FindData("roi_mask"));
            CZrkData view;
            view.SetHeaderData(TYPE_R4, n, n, 1, 1, 1, 1, rv + plane * n * n);
            const std::string name = "r" + std::to_string(plane);
            p.Put(name, &view);
            w.id = p.Case("stats " + name + " " + mask + " 0");
            wants.push_back(w);
            view.data = nullptr;
        }
        for (int ch = 0; ch < 4; ++ch) {
            Want w;
            ASSERT_TRUE(RoiStats(c, 0, kind, ch, &w.got));
            p.Put("c", c);
            w.id = p.Case("stats c " + mask + " " + std::to_string(ch));
            wants.push_back(w);
        }
    }
    ASSERT_TRUE(p.Run("display/roi_check.py"));
    for (const Want& w : wants) {
        const std::vector<double> v = p.Get(w.id).Pairs();
        ASSERT_EQ(v.size(), 6u);
        EXPECT_NEAR(w.got.mean, v[0], 1e-5 * (std::abs(v[0]) + 1)) << w.id;
        EXPECT_NEAR(w.got.sd, v[2], 1e-4 * (std::abs(v[2]) + 1)) << w.id;
        EXPECT_EQ(static_cast<double>(w.got.n), v[4]) << w.id;
    }
}

// The All forms report each plane in turn, the same figures as one plane at a time.
TEST_F(RoiStatsTest, AllFormsLineByLine) {
    CZrkData* a = GlobalDataSpace().NewData(TYPE_I2, 16, 12, 3, 2, 1, 1, "seq");
    for (uint64_t k = 0; k < a->Count(); ++k)
        static_cast<int16_t*>(a->data)[k] = static_cast<int16_t>((k * 7919) % 301 - 150);
    Set("roi_ellip", {2, 1, 13, 10});
    ASSERT_EQ(CalcRoiAll(a, ROI_ELLIPSE, 0), 1);
    ASSERT_EQ(host.history.size(), 6u);
    peer::Peer p;
    p.Put("a", a);
    p.Put("m", GlobalDataSpace().FindData("roi_mask"));
    ASSERT_TRUE(
        p.RunText("a = peer.load(FOLDER, 'a').reshape(16, 12, 6, order='F').astype(float)\n"
                  "m = peer.load(FOLDER, 'm').reshape(16, 12) != 0\n"
                  "for k in range(6):\n"
                  "    v = a[:, :, k][m]\n"
                  "    print(v.mean(), v.std(), m.sum())\n"));
    std::istringstream out(p.Output());
    for (size_t k = 0; k < 6; ++k) {
        double mean, sd, count;
        out >> mean >> sd >> count;
        const std::vector<double> got = Numbers(host.history[k]);
        ASSERT_EQ(got.size(), 4u) << host.history[k];
        EXPECT_NEAR(got[0], mean, 5e-3 + 5e-4 * std::abs(mean)) << k;
        EXPECT_NEAR(got[1], sd, 5e-3 + 5e-4 * sd) << k;
        EXPECT_NEAR(got[2], sd ? mean / sd : 0, 5e-3 + 5e-3 * std::abs(mean / sd)) << k;
        EXPECT_EQ(got[3], count) << k;
    }
    // Each z of the volume of plane 4 (t = 1): planes 3, 4, 5, named.
    host.history.clear();
    ASSERT_EQ(CalcRoiZAll(a, 4, ROI_ELLIPSE, 0), 1);
    ASSERT_EQ(host.history.size(), 3u);
    for (size_t z = 0; z < 3; ++z) EXPECT_EQ(host.history[z].rfind("[][]seq ", 0), 0u);
}

TEST_F(RoiStatsTest, XRangeMinMax) {
    CZrkData* a = GlobalDataSpace().NewData(TYPE_R4, 10, 2, 1, 1, 1, 1, "p");
    for (int k = 0; k < 20; ++k) static_cast<float*>(a->data)[k] = (k * 37 % 11) - 5.0f;
    Set("roi_x", {2, 30});  // high beyond the end: clamped
    ASSERT_EQ(CalcRoiXAll(a, 0), 1);
    ASSERT_EQ(host.history.size(), 2u);
    const std::vector<double> want = peer::Values(
        "a = (np.arange(20) * 37 % 11 - 5.0).reshape(2, 10)[:, 2:]\n"
        "for r in a: print(r.min(), r.max(), r.size)\n");
    ASSERT_EQ(want.size(), 6u);
    for (size_t k = 0; k < 2; ++k) {
        const std::vector<double> got = Numbers(host.history[k]);
        ASSERT_EQ(got.size(), 3u);
        for (size_t j = 0; j < 3; ++j) EXPECT_EQ(got[j], want[3 * k + j]) << k;
    }
}

// Masks against slices and skimage.draw.polygon; a pentagram's centre is inside.
TEST_F(RoiStatsTest, MasksAgainstSlicesAndPolygons) {
    Set("roi_rect", {3, 5, 17, 9});
    Set("roi_y", {4, 6});
    const CZrkData* m = GetRoiMask(ROI_RECT, 24, 16);
    const auto* v = static_cast<const uint8_t*>(m->data);
    for (res_t y = 0; y < 16; ++y)
        for (res_t x = 0; x < 24; ++x)
            EXPECT_EQ(v[y * 24 + x], x >= 3 && x <= 17 && y >= 5 && y <= 9) << x << "," << y;
    v = static_cast<const uint8_t*>(GetRoiMask(ROI_Y, 24, 16)->data);
    for (res_t k = 0; k < 24 * 16; ++k) EXPECT_EQ(v[k], k / 24 >= 4 && k / 24 <= 6) << k;

    const std::vector<float> convex = {4, 2, 30, 6, 36, 25, 12, 33, 2, 18};
    const std::vector<float> star = {20, 2, 31, 36, 2, 14, 38, 14, 9, 36};
    peer::Peer p;
    std::vector<std::string> ids;
    for (const auto& pts : {convex, star}) {
        std::string line = "poly 40 40";
        for (size_t k = 0; k < pts.size(); k += 2) line += " " + std::to_string(pts[k]);
        for (size_t k = 1; k < pts.size(); k += 2) line += " " + std::to_string(pts[k]);
        ids.push_back(p.Case(line));
    }
    ASSERT_TRUE(p.Run("display/roi_check.py"));
    Set("roi_draw", convex);
    v = static_cast<const uint8_t*>(GetRoiMask(ROI_DRAW, 40, 40)->data);
    const std::string want = p.Get(ids[0]).bytes;
    ASSERT_EQ(want.size(), 1600u);
    int compared = 0;
    for (size_t k = 0; k < 1600; ++k)
        if (want[k] != 2) {
            EXPECT_EQ(v[k], want[k]) << k % 40 << "," << k / 40;
            ++compared;
        }
    EXPECT_GT(compared, 1400);
    Set("roi_draw", star);
    v = static_cast<const uint8_t*>(GetRoiMask(ROI_DRAW, 40, 40)->data);
    EXPECT_EQ(v[20 * 40 + 20], 1);  // winding 2 at the centre
    // Even-odd scikit-image leaves the centre out.
    EXPECT_EQ(p.Get(ids[1]).bytes[20 * 40 + 20], 0);
}

}  // namespace
