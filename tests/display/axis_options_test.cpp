// The axis options of 1d and xy plots: their keys out and back in, hand-edited values
// brought into range, and the looks they reach.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "display/look.h"
#include "display/plot_options.h"

namespace {

class AxisOptionsTest : public ::testing::Test {
  protected:
    void SetUp() override { saved_1d_ = LookDefaults(LOOK_1D), saved_xy_ = LookDefaults(LOOK_XY); }
    // The look defaults are the process's; the other tests find them as they were.
    void TearDown() override {
        LookDefaults(LOOK_1D) = saved_1d_;
        LookDefaults(LOOK_XY) = saved_xy_;
    }
    // Feeds `text` to `options` key by key; the number of keys taken.
    static int Scan(C1d& options, const std::string& text) {
        FILE* in = fmemopen(const_cast<char*>(text.data()), text.size(), "r");
        CKeyReader reader(in);
        int taken = 0;
        try {
            for (;;) {
                reader.Next();
                taken += options.ScanfOptions(reader);
            }
        } catch (const CKeyReader::EndOfFile&) {
        }
        std::fclose(in);
        return taken;
    }
    static std::string Print(const C1d& options) {
        char buffer[4096] = {};
        FILE* out = fmemopen(buffer, sizeof buffer, "w");
        options.PrintfOptions(out);
        std::fclose(out);
        return buffer;
    }

    CLookDefaults saved_1d_, saved_xy_;
};

TEST_F(AxisOptionsTest, KeysGoOutAndComeBackPerKindAndDirection) {
    C1d out;
    out.axis_lock = 1;
    CAxisStyle& x = out.axes_1d.axis[0];
    x.tick = 2.5f, x.minortick = 0.5f, x.ticklen = 9, x.grid = 1, x.tickformat = "%.2e";
    CAxisStyle& y = out.axes_xy.axis[1];
    y.tickscale = -2.0f, y.tickoff = 0.125f, y.skipinter = 2, y.thick = 3, y.mticklen = 1;
    const std::string text = Print(out);
    EXPECT_NE(text.find("\n//1d options\n1d_axis_lock= 1\n1d_x_tick= 2.5\n"), std::string::npos);
    EXPECT_NE(text.find("1d_x_tickformat= %.2e\n"), std::string::npos);
    EXPECT_NE(text.find("xy_y_tickscale= -2\n"), std::string::npos);
    EXPECT_NE(text.find("xy_y_tickformat= default\n"), std::string::npos);

    C1d back;
    EXPECT_EQ(Scan(back, text), 41);  // the lock and 2 kinds x 2 directions x 10 fields
    EXPECT_EQ(back.axis_lock, 1);
    for (int k = 0; k < 2; ++k) {
        const CAxisOptions& o = k ? out.axes_xy : out.axes_1d;
        const CAxisOptions& b = k ? back.axes_xy : back.axes_1d;
        for (int d = 0; d < 2; ++d) {
            SCOPED_TRACE(k * 2 + d);
            EXPECT_EQ(b.axis[d].tick, o.axis[d].tick);
            EXPECT_EQ(b.axis[d].minortick, o.axis[d].minortick);
            EXPECT_EQ(b.axis[d].ticklen, o.axis[d].ticklen);
            EXPECT_EQ(b.axis[d].mticklen, o.axis[d].mticklen);
            EXPECT_EQ(b.axis[d].skipinter, o.axis[d].skipinter);
            EXPECT_EQ(b.axis[d].grid, o.axis[d].grid);
            EXPECT_EQ(b.axis[d].thick, o.axis[d].thick);
            EXPECT_EQ(b.axis[d].tickscale, o.axis[d].tickscale);
            EXPECT_EQ(b.axis[d].tickoff, o.axis[d].tickoff);
            EXPECT_EQ(b.axis[d].tickformat, o.axis[d].tickformat);
        }
    }
    // Reading them set the looks of new plots: kinds 1 and 3 are x, 2 and 4 y.
    const CLook one(LOOK_1D), xy(LOOK_XY);
    for (int k : {0, 2}) {
        EXPECT_EQ(one.axes[k].tick, 2.5f);
        EXPECT_EQ(one.axes[k].showmtick, 1);
        EXPECT_EQ(one.axes[k].ticklen[0], 9);
        EXPECT_STREQ(one.axes[k].tickformat, "%.2e");
        EXPECT_EQ(xy.axes[k].tick, 0.0f);
    }
    for (int k : {1, 3}) {
        EXPECT_EQ(one.axes[k].tick, 0.0f);
        EXPECT_EQ(one.axes[k].showmtick, 0);
        EXPECT_EQ(xy.axes[k].tickscale, -2.0f);
        EXPECT_EQ(xy.axes[k].ax_thick, 3);
        EXPECT_EQ(xy.axes[k].tk_thick, 3);
        EXPECT_EQ(xy.axes[k].skipinter, 2);
    }
}

TEST_F(AxisOptionsTest, HandEditedValuesAreBroughtIntoRange) {
    C1d o;
    const std::string long_format(300, 'f');
    const std::string text =
        "1d_x_tick= -3\n1d_x_minortick= nan\n1d_x_ticklen= 5000\n1d_x_grid= 7\n"
        "1d_y_thick= 0\n1d_y_tickscale= 0\n1d_y_skipinter= -4\n1d_y_tickformat= " +
        long_format + "\nxy_x_tickoff= inf\nunknown_key= 3\n";
    EXPECT_EQ(Scan(o, text), 9);
    const CAxisStyle& x = o.axes_1d.axis[0];
    const CAxisStyle& y = o.axes_1d.axis[1];
    EXPECT_EQ(x.tick, 0.0f);
    EXPECT_EQ(x.minortick, 0.0f);
    EXPECT_EQ(x.ticklen, 100);
    EXPECT_EQ(x.grid, 1);
    EXPECT_EQ(y.thick, 1);
    EXPECT_EQ(y.tickscale, 1.0f);
    EXPECT_EQ(y.skipinter, 0);
    EXPECT_EQ(y.tickformat, "default");
    EXPECT_EQ(o.axes_xy.axis[0].tickoff, 0.0f);
    // A look that is open takes the same values.
    CLook look(LOOK_1D);
    o.axes_1d.axis[0].tick = 4;
    o.axes_1d.Apply(look);
    EXPECT_EQ(look.axes[0].tick, 4.0f);
    EXPECT_EQ(look.axes[2].grid, 1);
    EXPECT_EQ(look.axes[1].tickscale, 1.0f);
    EXPECT_STREQ(look.axes[3].tickformat, "default");
}

}  // namespace
