// Operators called on records the way a file reader, a sheet page or a display calls them:
// this program links the operators and the data core, and no evaluator.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/data_cursor.h"
#include "core/data_space.h"
#include "display/roi_mask.h"
#include "ops/convolution.h"
#include "ops/permute.h"
#include "ops/stats.h"

namespace {

CZrkData* Filled(CDataSpace& s, const char* name, res_t nx, res_t ny, std::vector<float> v) {
    CZrkData* r = s.NewData(TYPE_R4, nx, ny, 1, 1, 1, 1, name);
    CDataCursor<float> c(r);
    c.SetIBlock(v.data(), 0, v.size());
    return r;
}

std::vector<float> Floats(const CZrkData* r) {
    std::vector<float> out(r->Count());
    CDataCursor<float>(r).GetIBlock(out.data(), 0, out.size());
    return out;
}

TEST(DirectOperators, ConvAndFlipOnRecords) {
    CDataSpace temp;
    const CZrkData* a = Filled(temp, "a", 4, 1, {1, 2, 3, 4});
    const CZrkData* k = Filled(temp, "k", 2, 1, {1, 10});
    // conv keeps the n - m + 1 points where the reversed kernel fits: a[i] * 10 + a[i + 1]
    EXPECT_EQ(Floats(Conv(temp, a, k)), (std::vector<float>{12, 23, 34}));
    EXPECT_EQ(Floats(Flip(temp, 0, a)), (std::vector<float>{4, 3, 2, 1}));
}

TEST(DirectOperators, MeanSdXyUnderARectangle) {
    CDataSpace& space = GlobalDataSpace();
    std::vector<float> values(6 * 5);
    for (size_t j = 0; j < values.size(); ++j) values[j] = static_cast<float>(j * j % 17);
    CZrkData* image = Filled(space, "direct_image", 6, 5, values);
    CZrkData* rect = Filled(space, "roi_rect", 4, 1, {1, 1, 3, 2});
    // the reference: the plain mean and deviation of the points the mask lets through
    const auto* mask = static_cast<const unsigned char*>(GetRoiMask(ROI_RECT, 6, 5)->data);
    double sum = 0, n = 0;
    for (size_t j = 0; j < values.size(); ++j)
        if (mask[j]) sum += values[j], ++n;
    const double mean = sum / n;
    double dev = 0;
    for (size_t j = 0; j < values.size(); ++j)
        if (mask[j]) dev += (values[j] - mean) * (values[j] - mean);
    ASSERT_GT(n, 1);
    float m = 0, sd = 0;
    EXPECT_EQ(MeanSdXy(image, 0, ROI_RECT, &m, &sd), static_cast<uint64_t>(n));
    EXPECT_NEAR(m, mean, 1e-5);
    EXPECT_NEAR(sd, std::sqrt(dev / n), 1e-5);
    space.DelData(rect);
    space.DelData(image);
}

}  // namespace
