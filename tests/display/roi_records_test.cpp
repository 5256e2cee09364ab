// Region records of every kind of element type: a binary image larger than one block
// against NumPy, and corners that pass through float.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "core/block_io.h"
#include "core/data_cursor.h"
#include "core/data_space.h"
#include "display/roi_mask.h"
#include "tests/peer.h"

namespace {

class RoiRecords : public ::testing::Test {
  protected:
    void SetUp() override { Clear(); }
    void TearDown() override { Clear(); }
    static void Clear() {
        while (GlobalDataSpace().Count() > 0) GlobalDataSpace().DelData(0);
    }
    static std::string Bytes(const CZrkData* m) {
        return std::string(static_cast<const char*>(m->data), m->Bytes());
    }
};

// Doubles as a Python list literal, exactly.
std::string DoubleList(const std::vector<double>& v) {
    std::string s = "[";
    char num[40];
    for (double x : v) {
        std::snprintf(num, sizeof num, "%.17g,", x);
        s += num;
    }
    return s + "]";
}

TEST_F(RoiRecords, BinaryImageMarksWhereItsIIsNonZeroAsAFloat) {
    const res_t nx = 70, ny = 45;  // 3150 elements: two blocks and a part
    std::mt19937 g(11);
    for (int type : {TYPE_R8, TYPE_R4, TYPE_CR4, TYPE_I2, TYPE_N1, TYPE_CI4}) {
        SCOPED_TRACE(TypeName(type));
        CZrkData* b = GlobalDataSpace().NewData(type, nx, ny, 1, 1, 1, 1, "roi_binary");
        CDataCursor<double> c(b);
        // Zeros, values that vanish in float (1e-50) or not (1e-40), -0, NaN, and a q that
        // must not count.
        const double odd[] = {0.0, 1e-50, -1e-50, 1e-40, -0.0, NAN, 3.0, -2.0};
        for (uint64_t k = 0; k < b->Count(); ++k) {
            const double pair[2] = {odd[g() % std::size(odd)], (g() & 1) ? 5.0 : 0.0};
            c.SetIQ(pair, k);
        }
        // The numbers as stored, for NumPy to judge.
        std::vector<double> stored(2 * b->Count());
        const double* p = CBlockReader<double>(b, 2).Read(0, b->Count(), stored.data());
        stored.assign(p, p + stored.size());
        const std::vector<double> ref =
            peer::Values("nan = np.nan\nv = np.array(" + DoubleList(stored) +
                         ")\nfor x in (v[0::2].astype(np.float32) != 0): print(int(x))\n");
        ASSERT_EQ(ref.size(), nx * ny);
        const CZrkData* m = GetRoiMask(ROI_BINARY, nx, ny);
        const auto* got = static_cast<const unsigned char*>(m->data);
        for (size_t k = 0; k < ref.size(); ++k)
            ASSERT_EQ(got[k], ref[k]) << "element " << k << " i " << stored[2 * k];
        GlobalDataSpace().DelData("roi_binary");
    }
}

TEST_F(RoiRecords, CornersOfAnyTypeActAsTheirFloats) {
    // Just below 3 and 7 in double, 3 and 7 in float: the same rectangle as the r4 record.
    const double corners[] = {2.99999999999, 1.0, 6.99999999999, 4.5};
    std::string want;
    for (int type : {TYPE_R4, TYPE_R8, TYPE_CR8}) {
        SCOPED_TRACE(TypeName(type));
        CZrkData* r = GlobalDataSpace().NewData(type, 4, 1, 1, 1, 1, 1, "roi_rect");
        CDataCursor<double> c(r);
        for (uint64_t k = 0; k < 4; ++k) c.SetI(corners[k], k);
        const std::string got = Bytes(GetRoiMask(ROI_RECT, 9, 6));
        if (want.empty()) {
            want = got;
            EXPECT_EQ(want[1 * 9 + 3], 1);  // corner (3, 1) is in
            EXPECT_EQ(want[4 * 9 + 7], 1);  // and (7, 4)
            EXPECT_EQ(want[4 * 9 + 8], 0);
        }
        EXPECT_EQ(got, want);
        GlobalDataSpace().DelData("roi_rect");
    }
}

}  // namespace
