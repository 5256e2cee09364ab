// The region edits of CRoi: fill, keep, zero, crop and paste change what the mask says and
// nothing else, Undo gives the bytes back, and bad regions leave the array alone.
#include "display/roi.h"

#include <gtest/gtest.h>

#include <complex>
#include <cstring>
#include <string>
#include <vector>

#include "core/data_space.h"
#include "core/host.h"
#include "display/binary_copy.h"
#include "display/roi_mask.h"

namespace {

class RoiTest : public ::testing::Test {
  protected:
    void SetUp() override {
        Clear();
        a = GlobalDataSpace().NewData(TYPE_I2, 12, 9, 3, 1, 1, 1, "a");
        for (uint64_t k = 0; k < a->Count(); ++k)
            static_cast<int16_t*>(a->data)[k] = static_cast<int16_t>(k * 31 % 509 + 1);
        before = Bytes(a);
        Set("roi_ellip", {2, 1, 10, 7});
    }
    void TearDown() override { Clear(); }
    static void Clear() {
        while (GlobalDataSpace().Count() > 0) GlobalDataSpace().DelData(0);
    }
    static void Set(const char* name, const std::vector<float>& v) {
        GlobalDataSpace().DelData(name);
        CZrkData* r = GlobalDataSpace().NewData(TYPE_R4, v.size(), 1, 1, 1, 1, 1, name);
        std::memcpy(r->data, v.data(), v.size() * sizeof(float));
    }
    static std::string Bytes(const CZrkData* d) {
        return std::string(static_cast<const char*>(d->data), d->Bytes());
    }
    int16_t At(uint64_t k) const { return static_cast<const int16_t*>(a->data)[k]; }
    int16_t Before(uint64_t k) const { return reinterpret_cast<const int16_t*>(before.data())[k]; }
    std::vector<uint8_t> Mask() const {
        const CZrkData* m = GlobalDataSpace().FindData("roi_mask");
        const auto* p = static_cast<const uint8_t*>(m->data);
        return {p, p + m->Count()};
    }
    // Every sample of `plane` (or all planes) that the mask marks (inside) or not is `value`;
    // all others are as they were.
    void ExpectSet(int plane, bool inside, int16_t value) {
        const std::vector<uint8_t> m = Mask();
        ASSERT_EQ(m.size(), 108u);
        int changed = 0;
        for (uint64_t k = 0; k < a->Count(); ++k) {
            const bool hit = (plane < 0 || k / 108 == static_cast<uint64_t>(plane)) &&
                             (m[k % 108] != 0) == inside;
            EXPECT_EQ(At(k), hit ? value : Before(k)) << k;
            changed += hit;
        }
        EXPECT_GT(changed, 0);
    }
    void ExpectUndoRestores(CRoi& roi) {
        ASSERT_EQ(roi.Undo(a), 1);
        EXPECT_EQ(a->nx, 12u);
        EXPECT_EQ(a->ny, 9u);
        EXPECT_EQ(Bytes(a), before);
    }

    CHeadlessHost host;
    CScopedHost scoped{host};
    CZrkData* a = nullptr;
    std::string before;
    CRoi roi;
};

TEST_F(RoiTest, FillKeepAndZeroFollowTheMask) {
    // roi_fill is made when missing: complex r4, 0.
    ASSERT_EQ(roi.Fill2dRoi(a, 1, ROI_ELLIPSE), 1);
    const CZrkData* f = GlobalDataSpace().FindData("roi_fill");
    ASSERT_TRUE(f);
    EXPECT_EQ(f->type, TYPE_CR4);
    EXPECT_EQ(f->Count(), 1u);
    ExpectSet(1, true, 0);
    EXPECT_EQ(a->undo_text, "undo fill");
    ExpectUndoRestores(roi);

    // A set fill value, cast to the image's type; every plane.
    *static_cast<std::complex<float>*>(GlobalDataSpace().FindData("roi_fill")->data) = {-7.0f,
                                                                                        3.0f};
    ASSERT_EQ(roi.Keep2dRoiAll(a, ROI_ELLIPSE), 1);
    ExpectSet(-1, false, -7);
    ExpectUndoRestores(roi);

    ASSERT_EQ(roi.OnZeroOutside(a, 2, ROI_ELLIPSE), 1);
    EXPECT_EQ(a->undo_text, "undo zero");
    ExpectSet(2, false, 0);
    ExpectUndoRestores(roi);
    // Nothing more to undo.
    EXPECT_EQ(roi.Undo(a), 0);
    EXPECT_EQ(Bytes(a), before);
}

TEST_F(RoiTest, OneDimensionalFormsTakeTheXRange) {
    Set("roi_x", {3, 5});
    ASSERT_EQ(roi.Fill1dRoi(a, 0), 1);
    for (uint64_t k = 0; k < a->Count(); ++k) {
        const bool hit = k < 108 && k % 12 >= 3 && k % 12 <= 5;
        EXPECT_EQ(At(k), hit ? 0 : Before(k)) << k;
    }
    ExpectUndoRestores(roi);
    ASSERT_EQ(roi.Crop1dRoi(a), 1);
    EXPECT_EQ(a->nx, 3u);
    EXPECT_EQ(a->ny, 9u);
    EXPECT_EQ(a->nz, 3u);
    for (uint64_t k = 0; k < a->Count(); ++k) EXPECT_EQ(At(k), Before(k / 3 * 12 + 3 + k % 3));
    ExpectUndoRestores(roi);

    Set("roi_x", {6, 2});
    EXPECT_EQ(roi.Keep1dRoiAll(a), 0);
    EXPECT_EQ(host.status.back(), "1d roi is invalid");
    EXPECT_EQ(host.history.back(), "error caught: CRoi::Keep1dRoiAll:\r\n");
    GlobalDataSpace().DelData("roi_x");
    EXPECT_EQ(roi.Crop1dRoi(a), 0);
    EXPECT_EQ(host.status.back(), "1d roi does not exist");
    EXPECT_EQ(Bytes(a), before);
}

TEST_F(RoiTest, CropCutsTheMasksBoundingBox) {
    Set("roi_draw", {4, 2, 9, 3, 6, 6});
    res_t x0, y0, x1, y1;
    ASSERT_TRUE(roi.Get2dRoiRange(ROI_DRAW, 12, 9, &x0, &y0, &x1, &y1));
    const std::vector<uint8_t> m = Mask();
    res_t lx = 99, ly = 99, hx = 0, hy = 0;
    for (res_t k = 0; k < 108; ++k)
        if (m[k]) {
            lx = std::min(lx, k % 12), hx = std::max(hx, k % 12);
            ly = std::min(ly, k / 12), hy = std::max(hy, k / 12);
        }
    EXPECT_EQ(x0, lx);
    EXPECT_EQ(x1, hx);
    EXPECT_EQ(y0, ly);
    EXPECT_EQ(y1, hy);
    ASSERT_EQ(roi.Crop2dRoi(a, ROI_DRAW), 1);
    EXPECT_EQ(a->nx, hx - lx + 1);
    EXPECT_EQ(a->ny, hy - ly + 1);
    for (res_t z = 0; z < 3; ++z)
        for (res_t y = 0; y < a->ny; ++y)
            for (res_t x = 0; x < a->nx; ++x)
                EXPECT_EQ(At((z * a->ny + y) * a->nx + x),
                          Before(z * 108 + (y + ly) * 12 + x + lx));
    ExpectUndoRestores(roi);

    // An empty region, a missing one and a missing mask change nothing.
    CZrkData* bin = GlobalDataSpace().NewData(TYPE_N1, 12, 9, 1, 1, 1, 1, "roi_binary");
    std::memset(bin->data, 0, bin->Bytes());
    EXPECT_EQ(roi.Crop2dRoi(a, ROI_BINARY), 0);
    EXPECT_EQ(host.status.back(), "invalid 2d roi");
    EXPECT_EQ(host.history.back(), "error caught: CRoi::Crop2dRoi:\r\n");
    EXPECT_FALSE(roi.Get2dRoiRange(ROI_BINARY, 12, 9, &x0, &y0, &x1, &y1));
    EXPECT_EQ(roi.Crop2dRoi(a, ROI_RECT), 0);
    EXPECT_EQ(host.status.back(), "invalid 2d roi");
    GlobalDataSpace().DelData("roi_mask");
    EXPECT_EQ(roi.Fill2dRoiAll(a, ROI_2D), 0);
    EXPECT_EQ(host.status.back(), "roi_mask does not exist");
    EXPECT_EQ(host.history.back(), "error caught: CRoi::Fill2dRoiAll:\r\n");
    EXPECT_EQ(Bytes(a), before);
}

TEST_F(RoiTest, PasteReplacesUnderTheMask) {
    CDataSpace other;
    CZrkData* src = other.NewData(TYPE_R4, 12, 9, 1, 1, 1, 1, "src");
    for (uint64_t k = 0; k < 108; ++k) static_cast<float*>(src->data)[k] = -1000.0f - k;
    const std::string payload = BinaryCopy(src);
    ASSERT_EQ(roi.OnPaste(a, 1, ROI_ELLIPSE, payload), 1);
    EXPECT_EQ(host.status.back(), "paste complete");
    EXPECT_EQ(a->undo_text, "undo paste");
    const std::vector<uint8_t> m = Mask();
    for (uint64_t k = 0; k < a->Count(); ++k) {
        const bool hit = k / 108 == 1 && m[k % 108];
        EXPECT_EQ(At(k), hit ? static_cast<int16_t>(-1000 - int(k % 108)) : Before(k)) << k;
    }
    ExpectUndoRestores(roi);

    // Malformed, cut short, or of another size: refused.
    EXPECT_EQ(roi.OnPaste(a, 1, ROI_ELLIPSE, "not a copy"), 0);
    EXPECT_EQ(roi.OnPaste(a, 1, ROI_ELLIPSE, payload.substr(0, payload.size() - 1)), 0);
    CZrkData* small = other.NewData(TYPE_R4, 6, 9, 1, 1, 1, 1, "small");
    std::memset(small->data, 0, small->Bytes());
    EXPECT_EQ(roi.OnPaste(a, 1, ROI_ELLIPSE, BinaryCopy(small)), 0);
    EXPECT_EQ(host.history.back(), "error caught: CRoi::OnPaste:\r\n");
    EXPECT_EQ(Bytes(a), before);
}

TEST_F(RoiTest, CompositeGathersAddedRegionsAndRestartsOnANewSize) {
    Set("roi_rect", {0, 0, 1, 1});
    roi.OrIntoComposite(GetRoiMask(ROI_RECT, 12, 9));
    roi.OrIntoComposite(GetRoiMask(ROI_ELLIPSE, 12, 9));
    const std::vector<uint8_t> ellipse = Mask();
    const auto* c = static_cast<const uint8_t*>(roi.Composite().data);
    for (res_t k = 0; k < 108; ++k) {
        const bool rect = k % 12 <= 1 && k / 12 <= 1;
        EXPECT_EQ(c[k], rect || ellipse[k]) << k;
    }
    roi.OrIntoComposite(GetRoiMask(ROI_RECT, 4, 4));
    EXPECT_EQ(roi.Composite().nx, 4u);
    c = static_cast<const uint8_t*>(roi.Composite().data);
    EXPECT_EQ(c[0] + c[1] + c[4] + c[5], 4);
    EXPECT_EQ(c[2], 0);
}

}  // namespace
