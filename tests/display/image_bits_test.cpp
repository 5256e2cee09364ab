// The pixel pipeline: the fixed figures of the window/level rules on a ramp, the bitmap's
// layout, companions, rgb, and a NumPy reference written from the rules on 10^6 samples.
#include "display/image_bits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "core/data_space.h"
#include "tests/peer.h"

namespace {

class ImageBitsTest : public ::testing::Test {
  protected:
    // A 256 x 4 r4 ramp 0 ... 255 in x.
    CZrkData* Ramp(const char* name = "ramp", res_t ny = 4) {
        CZrkData* a = space_.NewData(TYPE_R4, 256, ny, 1, 1, 1, 1, name);
        auto* f = static_cast<float*>(a->Data());
        for (res_t y = 0; y < ny; ++y)
            for (int x = 0; x < 256; ++x) f[y * 256 + x] = float(x);
        return a;
    }
    CPlane Plane(float w, float l, const char* pal = "grey") {
        CPlane p;
        p.window = w;
        p.level = l;
        p.SetPalette(7, pal, &space_);
        return p;
    }
    // The index at x = v of row 0 of the ramp through `plane`.
    int At(const CPlane& plane, int v) {
        CFrame f;
        EXPECT_EQ(ImageBits(&space_, ramp_, plane, page_, 8, f), 0);
        return f.pixels[v];
    }

    CDataSpace space_;
    CZrkData* ramp_ = Ramp();
    const uint64_t page_[4] = {0, 0, 0, 0};
};

TEST_F(ImageBitsTest, GreyRampMapsValueToIndexAndColour) {
    CPlane p = Plane(256, 128);
    CFrame f8, f32;
    ASSERT_EQ(ImageBits(&space_, ramp_, p, page_, 8, f8), 0);
    ASSERT_EQ(ImageBits(&space_, ramp_, p, page_, 32, f32), 0);
    EXPECT_EQ(f8.width, 256);
    EXPECT_EQ(f8.height, 4);
    for (int v = 0; v < 256; ++v) {
        EXPECT_EQ(f8.pixels[3 * f8.stride + v], v);
        const uint8_t* px = &f32.pixels[2 * f32.stride + 4 * v];
        EXPECT_EQ(px[0], v);  // blue
        EXPECT_EQ(px[1], v);
        EXPECT_EQ(px[2], v);
        EXPECT_EQ(px[3], 0);
    }
}

TEST_F(ImageBitsTest, ScalesCyclesAndInversionGiveTheKnownIndices) {
    struct Case {
        int wscale, cycles;
        float nonlin;
        int want[3];  // at 64, 128, 255
    };
    for (const Case& c : {Case{0, 2, 1, {128, 255, 255}}, Case{1, 1, 10, {131, 189, 255}},
                          Case{2, 1, 5, {4, 19, 251}}, Case{0, 1, 1, {64, 128, 255}}}) {
        CPlane p = Plane(256, 128);
        p.wscale = c.wscale, p.wlcycles = c.cycles, p.nonlin = c.nonlin;
        const int at[3] = {64, 128, 255};
        for (int k = 0; k < 3; ++k) {
            EXPECT_EQ(At(p, at[k]), c.want[k]) << "scale " << c.wscale << " at " << at[k];
            p.inv = 1;
            EXPECT_EQ(At(p, at[k]), 255 - c.want[k]);
            p.inv = 0;
        }
    }
}

TEST_F(ImageBitsTest, JetAtTheMiddleIsItsSampleRow) {
    CPlane p = Plane(256, 128, "jet");
    CFrame f;
    ASSERT_EQ(ImageBits(&space_, ramp_, p, page_, 32, f), 0);
    const uint8_t* px = &f.pixels[4 * 128];
    EXPECT_EQ(px[2], 131);
    EXPECT_EQ(px[1], 255);
    EXPECT_EQ(px[0], 128);
    EXPECT_EQ(f.palette[128][0], 131);
}

TEST_F(ImageBitsTest, ZeroWindowNanAndInfinitiesClamp) {
    auto* f = static_cast<float*>(ramp_->Data());
    f[0] = std::numeric_limits<float>::quiet_NaN();
    f[1] = std::numeric_limits<float>::infinity();
    f[2] = -std::numeric_limits<float>::infinity();
    CPlane p = Plane(0, 128);
    CFrame out;
    ASSERT_EQ(ImageBits(&space_, ramp_, p, page_, 8, out), 0);
    EXPECT_EQ(out.pixels[0], 0);    // NaN
    EXPECT_EQ(out.pixels[1], 255);  // +inf
    EXPECT_EQ(out.pixels[2], 0);
    EXPECT_EQ(out.pixels[100], 0);    // below L
    EXPECT_EQ(out.pixels[128], 0);    // at L: 0/0
    EXPECT_EQ(out.pixels[200], 255);  // above L
}

TEST_F(ImageBitsTest, RowsArePaddedWithZerosAndRowZeroIsOnTop) {
    CZrkData* a = space_.NewData(TYPE_R4, 3, 2, 1, 1, 1, 1, "small");
    const float v[6] = {0, 10, 20, 200, 210, 220};
    std::memcpy(a->Data(), v, sizeof v);
    CFrame f;
    ASSERT_EQ(ImageBits(&space_, a, Plane(256, 128), page_, 8, f), 0);
    EXPECT_EQ(f.stride, 4);
    EXPECT_EQ(f.pixels[0], 0);
    EXPECT_EQ(f.pixels[2], 20);
    EXPECT_EQ(f.pixels[3], 0);  // padding
    EXPECT_EQ(f.pixels[4], 200);
    EXPECT_EQ(f.pixels[7], 0);
    ASSERT_EQ(ImageBits(&space_, a, Plane(256, 128), page_, 32, f), 0);
    EXPECT_EQ(f.stride, 12);

    int w, h, stride;
    BitmapSize(0x80000000ull + 5, 7, 8, w, h, stride);
    EXPECT_EQ(w, 0x7fffffff);
    EXPECT_EQ(h, 7);
    EXPECT_EQ(stride % 4, 0);
}

TEST_F(ImageBitsTest, PagesAreClampedAndEmptyInputsRefused) {
    CZrkData* a = space_.NewData(TYPE_R4, 2, 1, 3, 1, 1, 1, "stack");
    const float v[6] = {0, 0, 100, 100, 250, 250};
    std::memcpy(a->Data(), v, sizeof v);
    const uint64_t page1[4] = {1, 0, 0, 0}, page9[4] = {9, 5, 5, 5};
    CFrame f;
    ASSERT_EQ(ImageBits(&space_, a, Plane(256, 128), page1, 8, f), 0);
    EXPECT_EQ(f.pixels[0], 100);
    ASSERT_EQ(ImageBits(&space_, a, Plane(256, 128), page9, 8, f), 0);
    EXPECT_EQ(f.pixels[0], 250);

    CZrkData* one = space_.NewData(TYPE_R4, 1, 1, 1, 1, 1, 1, "one");
    *static_cast<float*>(one->Data()) = 300;
    ASSERT_EQ(ImageBits(&space_, one, Plane(256, 128), page_, 8, f), 0);
    EXPECT_EQ(f.pixels[0], 255);
    EXPECT_EQ(f.stride, 4);

    CZrkData* empty = space_.NewData("empty");
    EXPECT_EQ(ImageBits(&space_, empty, Plane(256, 128), page_, 8, f), 1);
    EXPECT_EQ(ImageBits(&space_, nullptr, Plane(256, 128), page_, 8, f), 1);
    EXPECT_TRUE(f.pixels.empty());
}

TEST_F(ImageBitsTest, CompanionsGiveEachPixelItsWindowAndLevel) {
    // Level 0 at x = 0 rising to 255 at x = 255: every pixel sits at its own level.
    CZrkData* lc = space_.NewData(TYPE_R4, 256, 1, 1, 1, 1, 1, "ramp.level");
    auto* l = static_cast<float*>(lc->Data());
    for (int i = 0; i < 256; ++i) l[i] = float(i);
    CFrame f;
    ASSERT_EQ(ImageBits(&space_, ramp_, Plane(256, 9999), page_, 8, f), 0);
    for (int v = 0; v < 256; v += 17) EXPECT_EQ(f.pixels[f.stride + v], 128);
}

TEST_F(ImageBitsTest, RgbHoldsTheThreeGreyIndices) {
    CZrkData* r = ramp_;
    CZrkData* g = Ramp("g");
    CZrkData* b = Ramp("b");
    auto* gf = static_cast<float*>(g->Data());
    auto* bf = static_cast<float*>(b->Data());
    for (int i = 0; i < 256 * 4; ++i) gf[i] = 255 - gf[i], bf[i] = 77;
    CLook look(LOOK_RGB);
    for (int k = 1; k <= 3; ++k) look.Plane(k)->window = 256, look.Plane(k)->level = 128;
    const CZrkData* data[3] = {r, g, b};
    const CPlane* planes[3] = {&look.rplane, &look.gplane, &look.bplane};
    CFrame f;
    ASSERT_EQ(ImageBitsRgb(&space_, data, planes, page_, f), 0);
    for (int v = 0; v < 256; v += 5) {
        const uint8_t* px = &f.pixels[f.stride * 3 + 4 * v];
        EXPECT_EQ(px[2], v);
        EXPECT_EQ(px[1], 255 - v);
        EXPECT_EQ(px[0], 77);
    }
    const CZrkData* only_green[3] = {nullptr, g, nullptr};
    ASSERT_EQ(ImageBitsRgb(&space_, only_green, planes, page_, f), 0);
    EXPECT_EQ(f.pixels[4 * 10 + 2], 0);
    EXPECT_EQ(f.pixels[4 * 10 + 1], 245);
}

TEST_F(ImageBitsTest, AgreesWithNumPyOnAMillionSamples) {
    constexpr int kNx = 1000, kNy = 84;
    std::mt19937 gen(7);
    std::normal_distribution<float> normal(100.0f, 80.0f);
    CZrkData* a = space_.NewData(TYPE_R4, kNx, kNy, 1, 1, 1, 1, "x");
    auto* f = static_cast<float*>(a->Data());
    for (int i = 0; i < kNx * kNy; ++i) f[i] = i % 3 ? normal(gen) : float(i % 1000) * 0.3f - 20;
    for (int i = 0; i < kNx * kNy; i += 97) f[i] = std::numeric_limits<float>::quiet_NaN();
    for (int i = 5; i < kNx * kNy; i += 131) f[i] = std::numeric_limits<float>::infinity();
    for (int i = 9; i < kNx * kNy; i += 151) f[i] = -std::numeric_limits<float>::infinity();
    // Window ramp along x, level ramp along y: companions of two shapes.
    CZrkData* wc = space_.NewData(TYPE_R4, kNx, 1, 1, 1, 1, 1, "wc");
    CZrkData* lc = space_.NewData(TYPE_R4, 1, kNy, 1, 1, 1, 1, "lc");
    for (int i = 0; i < kNx; ++i) static_cast<float*>(wc->Data())[i] = 10 + i * 0.5f;
    for (int i = 0; i < kNy; ++i) static_cast<float*>(lc->Data())[i] = -50 + i * 3.0f;

    struct Case {
        int wscale;
        float nonlin;
        int cycles, inv;
        float w, l;
        bool companions;
    };
    const Case cases[] = {
        {0, 1, 1, 0, 256, 128, false}, {0, 1, 1, 1, 37.5f, 90, false},
        {0, 1, 0, 0, 0, 100, false},   {0, 1, 2, 0, 300, 80, false},
        {0, 1, 5, 1, 90, 10, false},   {1, 10, 1, 0, 200, 100, false},
        {1, 2, 1, 1, 0, 50, false},    {1, 3.5f, 1, 0, -120, 60, false},
        {2, 5, 1, 0, 150, 70, false},  {2, 100, 1, 1, 400, 0, false},
        {2, 1, 1, 0, 0, 30, false},    {0, 1, 1, 0, 1, 1, true},
    };
    peer::Peer p;
    p.Put("x", a);
    p.Put("wc", wc);
    p.Put("lc", lc);
    std::vector<std::string> ids;
    for (const Case& c : cases) {
        char line[256];
        std::snprintf(line, sizeof line, "index x %d %.9g %d %d %.9g %.9g%s", c.wscale, c.nonlin,
                      c.cycles, c.inv, c.w, c.l, c.companions ? " wc lc" : "");
        ids.push_back(p.Case(line));
    }
    ASSERT_TRUE(p.Run("display/image_bits_check.py"));
    for (size_t k = 0; k < std::size(cases); ++k) {
        const Case& c = cases[k];
        const bool on = c.companions;
        // The companions are read under the array's own name.
        CDataSpace local;
        CZrkData* x = local.NewData(a, "x");
        std::memcpy(x->Data(), a->Data(), a->Bytes());
        if (on) {
            CZrkData* w = local.NewData(wc, "x.window");
            std::memcpy(w->Data(), wc->Data(), wc->Bytes());
            CZrkData* l = local.NewData(lc, "x.level");
            std::memcpy(l->Data(), lc->Data(), lc->Bytes());
        }
        CPlane plane;
        plane.window = c.w, plane.level = c.l, plane.wscale = c.wscale, plane.nonlin = c.nonlin;
        plane.wlcycles = c.cycles, plane.inv = c.inv;
        CFrame out;
        ASSERT_EQ(ImageBits(&local, x, plane, page_, 8, out), 0);
        const peer::Array want = p.Get(ids[k]);
        ASSERT_EQ(want.bytes.size(), size_t(kNx * kNy));
        int wrong = 0;
        for (int y = 0; y < kNy; ++y)
            for (int i = 0; i < kNx; ++i)
                // NumPy's array is x fastest as well.
                wrong += out.pixels[y * out.stride + i] != uint8_t(want.bytes[y * kNx + i]);
        EXPECT_EQ(wrong, 0) << "case " << k;
    }
}

}  // namespace
