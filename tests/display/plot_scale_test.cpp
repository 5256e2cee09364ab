// The numbers of a plot: ranges and their widenings, pixels, ticks, zoom and pan.
#include "display/plot_scale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "tests/peer.h"

namespace {

TEST(PlotScale, RangesWiden) {
    CPlotScale s;
    const std::vector<float> three(5, 3.0f);
    EXPECT_TRUE(s.FindMaxmin(three.data(), three.size(), three.size()));
    EXPECT_EQ(s.ymin, 2);
    EXPECT_EQ(s.ymax, 4);
    const float thin[] = {1000000.0f, 1000000.2f};
    s.FindMaxmin(thin, 2, 2);
    EXPECT_EQ(s.ymin, 999999);
    EXPECT_EQ(s.ymax, 1000001);
    // Taken as written: a thin negative range widens to whole numbers too.
    const float negative[] = {-5.5f, -3.25f};
    s.FindMaxmin(negative, 2, 2);
    EXPECT_EQ(s.ymin, -7);
    EXPECT_EQ(s.ymax, -2);
    // One sample: x widens like y; all NaN: no range found, -1 ... 1.
    const float one[] = {NAN};
    EXPECT_FALSE(s.FindMaxmin(one, 1, 1));
    EXPECT_EQ(s.xmin, -1);
    EXPECT_EQ(s.xmax, 1);
    EXPECT_EQ(s.ymin, -1);
    EXPECT_EQ(s.ymax, 1);
}

TEST(PlotScale, PixelsMeetThePlotCorners) {
    CPlotScale s;
    const float line[] = {0, 1};
    s.FindMaxmin(line, 2, 2);
    s.SetPlot(50, 10, 700, 500);
    EXPECT_EQ(s.XToPixel(0), 50);
    EXPECT_EQ(s.YToPixel(0), 10 + 499);
    EXPECT_EQ(s.XToPixel(1), 50 + 699);
    EXPECT_EQ(s.YToPixel(1), 10);
    EXPECT_DOUBLE_EQ(s.PixelToX(s.XToPixel(0.3)), 0.3);
    EXPECT_DOUBLE_EQ(s.PixelToY(s.YToPixel(0.7)), 0.7);
    EXPECT_EQ(s.NearestSample(-100), 0);
    EXPECT_EQ(s.NearestSample(400), 1);
}

TEST(PlotScale, TicksAgainstNumPy) {
    const struct {
        double lo, hi, tick;
    } rows[] = {{-3.7, 12.2, 2.5}, {0, 1, 0.1}, {999999, 1000001, 0.5}, {-7, -2, 1}};
    std::string code;
    for (const auto& r : rows) {
        char line[320];
        std::snprintf(line, sizeof line,
                      "t = np.arange(np.ceil(%.17g / %.17g), np.floor(%.17g / %.17g) + 1) * %.17g\n"
                      "print(len(t), *t)\n",
                      r.lo, r.tick, r.hi, r.tick, r.tick);
        code += line;
    }
    const std::vector<double> want = peer::Values(code);
    size_t at = 0;
    for (const auto& r : rows) {
        const std::vector<double> got = TickPositions(r.lo, r.hi, r.tick);
        ASSERT_LT(at, want.size());
        ASSERT_EQ(got.size(), static_cast<size_t>(want[at])) << r.lo;
        for (size_t k = 0; k < got.size(); ++k) EXPECT_NEAR(got[k], want[at + 1 + k], 1e-9);
        at += 1 + got.size();
    }
    // Bad ticks: none, or at most 1000.
    EXPECT_TRUE(TickPositions(0, 10, 0).empty());
    EXPECT_TRUE(TickPositions(0, 10, -1).empty());
    EXPECT_TRUE(TickPositions(0, 10, NAN).empty());
    EXPECT_EQ(TickPositions(0, 1e6, 1e-3).size(), 1000u);
    EXPECT_EQ(TickLabel(2.5, "%.1f"), "2.5");
    EXPECT_EQ(TickLabel(2.5, "%s%n"), "2.500");  // not one float conversion: default
    EXPECT_TRUE(TickLabelled(0, 2));
    EXPECT_FALSE(TickLabelled(1, 2));
    EXPECT_TRUE(TickLabelled(3, 2));
}

TEST(PlotScale, ZoomStackAndPan) {
    std::vector<float> v(100);
    for (size_t k = 0; k < v.size(); ++k) v[k] = static_cast<float>(k);
    CPlotScale s;
    s.FindMaxmin(v.data(), v.size(), v.size());
    std::string why;
    EXPECT_FALSE(s.Pan(3, &why));
    EXPECT_EQ(why, " zoom in 1st");
    EXPECT_FALSE(s.DefineZoom(10.2, 10.4, &why));
    EXPECT_EQ(why, "zoomed to less than 1 x point");
    ASSERT_TRUE(s.DefineZoom(40, 20, &why));
    ASSERT_TRUE(s.DefineZoom(25, 30, &why));
    EXPECT_EQ(s.ZoomDepth(), 2u);
    ASSERT_TRUE(s.Pan(100, &why));  // kept inside the data
    EXPECT_EQ(s.xmin, 94);
    EXPECT_EQ(s.xmax, 99);
    ASSERT_TRUE(s.ZoomOut());
    EXPECT_EQ(s.xmin, 20);
    EXPECT_EQ(s.xmax, 40);
    ASSERT_TRUE(s.Rezoom());
    EXPECT_EQ(s.xmin, 94);
    s.Full();
    EXPECT_EQ(s.xmin, 0);
    EXPECT_EQ(s.xmax, 99);
    EXPECT_FALSE(s.ZoomOut());
    // A new size clears the stack.
    s.DefineZoom(1, 5, &why);
    s.FindMaxmin(v.data(), 50, 50);
    EXPECT_EQ(s.ZoomDepth(), 0u);
    EXPECT_EQ(s.xmax, 49);
}

}  // namespace
