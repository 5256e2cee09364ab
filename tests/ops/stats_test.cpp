// The line, plane and volume statistics against NumPy through each channel of a complex
// array (i, q, magnitude, phase), on planes and volumes longer than one block and starting
// off a block boundary, with non-finite values left out and odd and even median counts.
#include "ops/stats.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "core/block_io.h"
#include "core/data_space.h"
#include "core/host.h"
#include "display/roi_mask.h"
#include "tests/peer.h"

namespace {

constexpr res_t kNx = 70, kNy = 40, kNz = 2, kNt = 2;

class StatsNumpy : public ::testing::TestWithParam<int> {
  protected:
    void SetUp() override { Clear(); }
    void TearDown() override { Clear(); }
    static void Clear() {
        while (GlobalDataSpace().Count() > 0) GlobalDataSpace().DelData(0);
    }
    CHeadlessHost host;
    CScopedHost scoped{host};
};

// Random i and q; a few elements are not finite in i and NaN in q, so that every channel
// loses the same ones: four in volume 0 (an even count remains, two of them on either side
// of a block edge, one on the line), three in volume 1 (odd; one in the plane).
CZrkData* Volumes(CDataSpace& s) {
    CZrkData* a = s.NewData(TYPE_CR4, kNx, kNy, kNz, kNt, 1, 1, "");
    auto* v = static_cast<float*>(a->data);
    std::mt19937 g(5);
    std::uniform_real_distribution<float> u(-100, 100);
    for (uint64_t k = 0; k < 2 * a->Count(); ++k) v[k] = u(g);
    const uint64_t volume = kNx * kNy * kNz;
    const uint64_t bad[] = {17,         2047,          2048,          45 * kNx + 20,
                            volume + 3, volume + 4100, 2 * volume - 1};
    const float specials[] = {NAN, INFINITY, -INFINITY};
    for (size_t k = 0; k < std::size(bad); ++k) {
        v[2 * bad[k]] = specials[k % 3];
        v[2 * bad[k] + 1] = NAN;
    }
    return a;
}

TEST_P(StatsNumpy, EveryFormMatchesNumpyThroughTheChannel) {
    const int iqmp = GetParam();
    CDataSpace s;
    const CZrkData* a = Volumes(s);
    CZrkData* ellipse = GlobalDataSpace().NewData(TYPE_R4, 4, 1, 1, 1, 1, 1, "roi_ellip");
    const float corners[] = {3, 2, 66, 37};
    std::copy(corners, corners + 4, static_cast<float*>(ellipse->data));
    // The mask the plane forms build; its shape is the region tests' business.
    const CZrkData* mask = GetRoiMask(ROI_ELLIPSE, kNx, kNy);
    std::vector<float> mask_values(mask->Count());
    CBlockReader<float> mask_reader(mask, 1);
    const float* m = mask_reader.Read(0, mask->Count(), mask_values.data());
    mask_values.assign(m, m + mask->Count());

    const uint64_t line = 45, plane = 3;  // plane 3 starts at element 8400, inside a block
    const res_t x0 = 10, x1 = 999;        // clamped to 69
    const std::vector<float> iq(static_cast<const float*>(a->data),
                                static_cast<const float*>(a->data) + 2 * a->Count());
    std::string script =
        "import warnings\nwarnings.simplefilter('ignore')\nnan = np.nan\n"
        "inf = np.inf\nv = np.array(" +
        peer::Literal(iq.data(), iq.size()) +
        ", dtype=np.float32).astype(np.float64)\ni, q = v[0::2], v[1::2]\n"
        "mask = np.array(" +
        peer::Literal(mask_values.data(), mask_values.size()) + ") != 0\n";
    script +=
        "c = [i, q, np.sqrt((i * i + q * q).astype(np.float32)),"
        " np.arctan2(q, i).astype(np.float32)][" +
        std::to_string(iqmp) + "].astype(np.float64)\n";
    script += "vol = " + std::to_string(kNx * kNy * kNz) + "\narea = " + std::to_string(kNx * kNy) +
              "\nline = c[" + std::to_string(line * kNx + x0) + ":" +
              std::to_string((line + 1) * kNx) + "]\nplane = c[" + std::to_string(plane) +
              " * area:" + std::to_string(plane + 1) +
              " * area][mask]\n"
              "def finite(x): return x[np.isfinite(x)]\n"
              "for x in (c[:vol], c[vol:]):\n"
              "    f = finite(x)\n"
              "    print(f.min(), f.max(), f.mean(), f.std(), np.median(f))\n"
              "for x in (line, plane):\n"
              "    f = finite(x)\n"
              "    print(len(x), f.min(), f.max(), f.mean(), f.std())\n";
    const std::vector<double> ref = peer::Values(script);
    ASSERT_EQ(ref.size(), 20u);

    auto near = [](float got, double want) { EXPECT_NEAR(got, want, 1e-6 * (1 + std::abs(want))); };
    for (uint64_t volume = 0; volume < 2; ++volume) {
        SCOPED_TRACE("volume " + std::to_string(volume));
        const double* r = &ref[5 * volume];
        float lo = 0, hi = 0, mean = 0, sd = 0, median = 0;
        EXPECT_EQ(MinMaxXyz(a, volume, &lo, &hi, iqmp), kNx * kNy * kNz);
        EXPECT_FLOAT_EQ(lo, float(r[0]));
        EXPECT_FLOAT_EQ(hi, float(r[1]));
        EXPECT_EQ(MeanSdXyz(a, volume, &mean, &sd, iqmp), kNx * kNy * kNz);
        near(mean, r[2]);
        near(sd, r[3]);
        EXPECT_EQ(MedianXyz(a, volume, &median, iqmp), kNx * kNy * kNz);
        EXPECT_FLOAT_EQ(median, float(r[4]));
    }
    {
        SCOPED_TRACE("line");
        const double* r = &ref[10];
        float lo = 0, hi = 0, mean = 0, sd = 0;
        EXPECT_EQ(MinMaxX(a, line, x0, x1, &lo, &hi, iqmp), uint64_t(r[0]));
        EXPECT_FLOAT_EQ(lo, float(r[1]));
        EXPECT_FLOAT_EQ(hi, float(r[2]));
        EXPECT_EQ(MeanSdX(a, line, x0, x1, &mean, &sd, iqmp), uint64_t(r[0]));
        near(mean, r[3]);
        near(sd, r[4]);
    }
    {
        SCOPED_TRACE("plane");
        const double* r = &ref[15];
        float lo = 0, hi = 0, mean = 0, sd = 0;
        EXPECT_EQ(MinMaxXy(a, plane, ROI_ELLIPSE, &lo, &hi, iqmp), uint64_t(r[0]));
        EXPECT_FLOAT_EQ(lo, float(r[1]));
        EXPECT_FLOAT_EQ(hi, float(r[2]));
        EXPECT_EQ(MeanSdXy(a, plane, ROI_ELLIPSE, &mean, &sd, iqmp), uint64_t(r[0]));
        near(mean, r[3]);
        near(sd, r[4]);
    }
}

const char* const kChannels[] = {"i", "q", "magnitude", "phase"};

INSTANTIATE_TEST_SUITE_P(Channels, StatsNumpy, ::testing::Values(0, 1, 2, 3),
                         [](const auto& info) { return std::string(kChannels[info.param]); });

}  // namespace
