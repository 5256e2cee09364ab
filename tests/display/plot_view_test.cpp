// The plot view's logic without a toolkit: ranges, scale, border, pixel paths, ticks, the
// mouse (zoom, pan, x range), the x-range statistics, crop, and bad input.
#include "display/plot_view.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "core/data_space.h"
#include "core/host.h"
#include "display/display_entry.h"
#include "display/new_display.h"
#include "display/plot_options.h"
#include "tests/peer.h"

namespace {

struct Doc : CDisplayEntry {
    explicit Doc(uint32_t kind) : CDisplayEntry(CLook(kind)) {}
};

class View : public CPlotView {
  public:
    View(CDisplayEntry& doc, const C1d& options, const CNew1d* defaults)
        : CPlotView(doc, options, defaults) {}
    std::vector<std::string> shown;

  protected:
    bool StartTimer(int) override { return true; }
    bool StopTimer() override { return true; }
    void Redraw() override {}
    void ShowStatus(const std::string& text) override { shown.push_back(text); }
};

// 7 pixels a character, lines 12 high.
CTextMetrics Metrics() {
    CTextMetrics m;
    m.width = [](const std::string& s) { return static_cast<int>(s.size()) * 7; };
    m.height = 12;
    return m;
}

class PlotViewTest : public ::testing::Test {
  protected:
    void TearDown() override {
        while (GlobalDataSpace().Count() > 0) GlobalDataSpace().DelData(0);
    }
    CZrkData* Array(const char* name, const std::vector<float>& v, res_t nx, res_t ny = 1,
                    res_t nz = 1) {
        CZrkData* a = GlobalDataSpace().NewData(TYPE_R4, nx, ny, nz, 1, 1, 1, name);
        std::memcpy(a->data, v.data(), v.size() * sizeof(float));
        return a;
    }
    // A view of `a` (and `b`) laid out at 800 x 600.
    View& Plot(CZrkData* a, CZrkData* b = nullptr, uint32_t kind = LOOK_1D) {
        doc_ = std::make_unique<Doc>(kind);
        doc_->data[0] = a;
        doc_->data[1] = b;
        view_ = std::make_unique<View>(*doc_, options_, &defaults_);
        view_->Layout(800, 600, Metrics());
        return *view_;
    }
    CHeadlessHost host_;
    CScopedHost scoped_{host_};
    C1d options_;
    CNew1d defaults_;
    std::unique_ptr<Doc> doc_;
    std::unique_ptr<View> view_;
};

TEST_F(PlotViewTest, RangesOfTheRowsShownWiden) {
    View& v = Plot(Array("a", std::vector<float>(6, 3.0f), 6));
    EXPECT_EQ(v.scale.ymin, 2);
    EXPECT_EQ(v.scale.ymax, 4);
    EXPECT_EQ(v.scale.xmax, 5);
    View& thin = Plot(Array("b", {1000000.0f, 1000000.2f}, 2));
    EXPECT_EQ(thin.scale.ymin, 999999);
    EXPECT_EQ(thin.scale.ymax, 1000001);
    // Two rows: the range covers both, and the second row's overlay shifts it.
    CZrkData* two = Array("c", {0, 1, 2, 3, 10, 11, 12, 13}, 4, 2);
    View& rows = Plot(two);
    EXPECT_EQ(rows.RowCount(), 2u);
    EXPECT_EQ(rows.scale.ymax, 13);
    doc_->look.lines[1].overlay = 100;
    rows.Draw();
    rows.Layout(800, 600, Metrics());
    EXPECT_EQ(rows.scale.ymax, 113);
    rows.lines_overlayed = 1;
    rows.Draw();
    rows.Layout(800, 600, Metrics());
    EXPECT_EQ(rows.scale.ymax, 13);
    // New rows get the options' line colours.
    EXPECT_EQ(doc_->look.lines[0].color, static_cast<int>(defaults_.linecolor));
    EXPECT_EQ(doc_->look.lines[1].color, static_cast<int>(defaults_.linecolor2));
}

TEST_F(PlotViewTest, ALineFromCornerToCornerMeetsThePlotsCorners) {
    View& v = Plot(Array("a", {0, 1}, 2));
    const std::vector<CSeriesPath> paths = v.Paths();
    ASSERT_EQ(paths.size(), 1u);
    ASSERT_EQ(paths[0].x.size(), 2u);
    EXPECT_EQ(paths[0].x[0], v.PlotLeft());
    EXPECT_EQ(paths[0].y[0], v.PlotTop() + v.PlotHeight() - 1);
    EXPECT_EQ(paths[0].x[1], v.PlotLeft() + v.PlotWidth() - 1);
    EXPECT_EQ(paths[0].y[1], v.PlotTop());
    // The border holds the labels: the widest y label and a line of x labels.
    EXPECT_GT(v.PlotLeft(), 8);
    EXPECT_GT(600 - v.PlotTop() - v.PlotHeight(), 12);
}

TEST_F(PlotViewTest, ALongRowDrawsEachColumnsMinAndMax) {
    std::vector<float> y(100000);
    for (size_t i = 0; i < y.size(); ++i) y[i] = std::sin(i * 0.001f);
    y[54321] = 5;       // one spike up
    y[77777] = -5;      // one down
    y[100] = INFINITY;  // left out like NaN
    y[200] = NAN;
    View& v = Plot(Array("a", y, y.size()));
    const std::vector<CSeriesPath> paths = v.Paths();
    ASSERT_EQ(paths.size(), 1u);
    ASSERT_TRUE(paths[0].decimated);
    ASSERT_EQ(paths[0].x.size(), 2u * v.PlotWidth());
    // Each spike stands in exactly one column, at the plot's top and bottom.
    int top = 0, bottom = 0;
    for (size_t k = 0; k < paths[0].y.size(); ++k) {
        top += paths[0].y[k] == v.PlotTop();
        bottom += paths[0].y[k] == v.PlotTop() + v.PlotHeight() - 1;
    }
    EXPECT_EQ(top, 1);
    EXPECT_EQ(bottom, 1);
    for (double py : paths[0].y) EXPECT_TRUE(std::isfinite(py));
    // The spike's column is the one its sample falls in (to the column, as columns split).
    const double column = 54321.0 * v.PlotWidth() / y.size();
    for (size_t k = 0; k < paths[0].y.size(); ++k) {
        if (paths[0].y[k] == v.PlotTop()) {
            EXPECT_NEAR(paths[0].x[k], v.PlotLeft() + column, 1);
        }
    }
}

TEST_F(PlotViewTest, BadInputIsClampedNeverACrash) {
    // One sample: x widens like y; the path is one point in the middle.
    View& one = Plot(Array("a", {7}, 1));
    EXPECT_EQ(one.scale.xmin, -1);
    EXPECT_EQ(one.scale.xmax, 1);
    ASSERT_EQ(one.Paths().size(), 1u);
    EXPECT_EQ(one.Paths()[0].x.size(), 1u);
    // All NaN: the range -1 ... 1 and nothing drawn but gaps.
    View& nan = Plot(Array("b", {NAN, NAN, NAN}, 3));
    EXPECT_EQ(nan.scale.ymin, -1);
    EXPECT_EQ(nan.scale.ymax, 1);
    const std::vector<CSeriesPath> gaps = nan.Paths();
    ASSERT_EQ(gaps.size(), 1u);
    for (double x : gaps[0].x) EXPECT_TRUE(std::isnan(x));
    // Ticks 0, negative and tiny against the range give a spacing that leaves room.
    for (float tick : {0.0f, -2.0f, 1e-9f, NAN}) {
        const double step = TickSpacing(tick, 10, 500, 50);
        EXPECT_GE(500 / (10 / step), 4) << tick;
        EXPECT_LE(step, 10) << tick;
    }
    EXPECT_EQ(TickSpacing(2.5, 10, 500, 50), 2.5);
    View& v = Plot(Array("c", {0, 10}, 2));
    for (GAxis& a : doc_->look.axes) {
        a.tick = 1e-12f;
        std::snprintf(a.tickformat, sizeof a.tickformat, "%%s%%n");
    }
    const std::vector<CAxisMarks> marks = v.AxisMarks(Metrics());
    ASSERT_FALSE(marks.empty());
    for (const CAxisMarks& m : marks) {
        EXPECT_LE(m.major.size(), 1000u);
        for (const std::string& s : m.labels) EXPECT_EQ(s.find('%'), std::string::npos) << s;
    }
    // Zoom to one sample is refused with the status.
    const double px = v.XPixel(0.4);
    v.Press(CPlotView::CURSOR_ZOOM, px, 100);
    v.Release(px + 1, 100);
    EXPECT_EQ(v.shown.back(), "zoomed to less than 1 x point");
    EXPECT_EQ(v.scale.ZoomDepth(), 0u);
    // No data at all.
    View& none = Plot(nullptr);
    EXPECT_TRUE(none.Paths().empty());
    EXPECT_EQ(none.OnCrop(), 0);
}

TEST_F(PlotViewTest, ZoomPanAndTheAxisLock) {
    std::vector<float> y(101);
    for (int i = 0; i <= 100; ++i) y[i] = static_cast<float>(i);
    View& v = Plot(Array("a", y, y.size()));
    v.Press(CPlotView::CURSOR_ZOOM, v.XPixel(10), 50);
    v.Release(v.XPixel(20), 300);
    EXPECT_EQ(v.scale.xmin, 10);
    EXPECT_EQ(v.scale.xmax, 20);
    // y follows the samples of the window when the lock is off.
    EXPECT_EQ(v.scale.ymin, 10);
    EXPECT_EQ(v.scale.ymax, 20);
    // Pan by whole samples: half the plot to the left moves 5 samples on.
    v.OnPan();
    EXPECT_EQ(v.cursor_mode, CPlotView::CURSOR_PAN);
    const double half = v.XPixel(15) - v.XPixel(10);
    v.Press(CPlotView::CURSOR_PAN, 400, 100);
    v.Move(400 - half, 100);
    v.Release(400 - half, 100);
    EXPECT_EQ(v.scale.xmin, 15);
    EXPECT_EQ(v.scale.xmax, 25);
    EXPECT_TRUE(v.OnZoomOut());
    EXPECT_EQ(v.scale.xmax, 100);
    EXPECT_TRUE(v.OnRezoom());
    EXPECT_EQ(v.scale.xmax, 25);
    // Locked: y stays through a zoom.
    v.OnAxisLock();
    const double ymax = v.scale.ymax;
    EXPECT_TRUE(v.OnEditXrange("30 x 60"));
    EXPECT_EQ(v.XrangeText(), "30 x 60");
    EXPECT_EQ(v.scale.ymax, ymax);
    EXPECT_FALSE(v.OnEditXrange("thirty"));
    // The whole range again: no pan.
    v.OnRefresh();
    v.OnPan();
    EXPECT_EQ(v.shown.back(), " zoom in 1st");
    EXPECT_EQ(v.cursor_mode, CPlotView::CURSOR_POINTER);
}

TEST_F(PlotViewTest, ScaleAndLabelsFromTheFirstEnabledAxes) {
    View& v = Plot(Array("a", {0, 100}, 2));
    std::vector<GAxis>& axes = doc_->look.axes;
    axes[0].enable = 0;  // the first x axis is off: the top one (kind 3) gives x
    axes[2].tickoff = 5;
    axes[2].tickscale = 0.5f;
    axes[1].tickscale = 0;  // a zero factor is taken as 1
    v.Draw();
    v.Layout(800, 600, Metrics());
    EXPECT_EQ(v.origin[0], 5);
    EXPECT_EQ(v.factor[0], 0.5);
    EXPECT_EQ(v.factor[1], 1);
    axes[0].show = 1;
    axes[0].tick = 0.1f;  // x runs 5 ... 5.5 when shown
    std::snprintf(axes[0].tickformat, sizeof axes[0].tickformat, "%%.1f");
    const std::vector<CAxisMarks> marks = v.AxisMarks(Metrics());
    const CAxisMarks& bottom = marks[0];
    ASSERT_EQ(bottom.axis->kind, 1);
    ASSERT_EQ(bottom.labels.size(), 6u);
    EXPECT_EQ(bottom.labels.front(), "5.0");
    EXPECT_EQ(bottom.labels.back(), "5.5");
    EXPECT_NEAR(bottom.major.front(), v.PlotLeft(), 0.01);
    EXPECT_NEAR(bottom.major.back(), v.PlotLeft() + v.PlotWidth() - 1, 0.01);
    // skipinter 1: every other label left out.
    axes[0].skipinter = 1;
    const std::vector<CAxisMarks> skipped = v.AxisMarks(Metrics());
    EXPECT_EQ(skipped[0].labels[1], "");
    EXPECT_EQ(skipped[0].labels[2], "5.2");
}

TEST_F(PlotViewTest, ReadoutAndErrorBars) {
    CZrkData* a = Array("a", {1, 4, 9, 16, 0.5f, 1, 1.5f, 2}, 4, 2);
    View& v = Plot(a);
    EXPECT_EQ(v.ReadoutAt(v.XPixel(2), v.YPixel(9)), " a [2][0] = 9");
    double px, py;
    ASSERT_TRUE(v.CursorPixel(&px, &py));
    EXPECT_EQ(px, v.XPixel(2));
    // Row 1 as the error bars of row 0.
    doc_->look.lines[0].err_y = 1;
    v.Draw();
    v.Layout(800, 600, Metrics());
    const CSeriesPath path = v.Paths()[0];
    ASSERT_EQ(path.err0.size(), 4u);
    EXPECT_DOUBLE_EQ(path.err0[2], v.YPixel(9 - 1.5));
    EXPECT_DOUBLE_EQ(path.err1[2], v.YPixel(9 + 1.5));
}

TEST_F(PlotViewTest, XRangeStatisticsAgainstNumPy) {
    std::vector<float> y(3 * 20);
    for (size_t i = 0; i < y.size(); ++i) y[i] = std::cos(i * 0.7f) * 10 + i;
    CZrkData* a = Array("a", y, 20, 3);
    View& v = Plot(a);
    EXPECT_EQ(v.OnMinMax(), 0);
    EXPECT_EQ(v.shown.back(), "1d roi does not exist");
    GlobalDataSpace().NewData(TYPE_R4, 2, 1, 1, 1, 1, 1, "roi_x");
    float* r = static_cast<float*>(GlobalDataSpace().FindData("roi_x")->data);
    r[0] = 9, r[1] = 3;
    EXPECT_EQ(v.OnMinMax(), 0);
    EXPECT_EQ(v.shown.back(), "1d roi is invalid");
    r[0] = 3, r[1] = 12;
    const std::vector<double> want =
        peer::Values("y = np.array(" + peer::Literal(y.data(), y.size()) +
                     ", dtype=np.float32).reshape(3, 20)[:, 3:13]\n"
                     "for row in y: print(row.min(), row.max(), row.mean(), row.std())\n");
    ASSERT_EQ(want.size(), 12u);
    host_.ClearHistory();
    ASSERT_EQ(v.OnMinMax(), 1);
    char line[128];
    std::snprintf(line, sizeof line, "[][]a %.3f, %.3f, 10\r\n", want[0], want[1]);
    EXPECT_EQ(host_.history_text, line);
    host_.ClearHistory();
    ASSERT_EQ(v.OnRoiStdY(), 1);
    std::string lines;
    for (int k = 0; k < 3; ++k) {
        std::snprintf(line, sizeof line, "[][%d]a %.3f, %.3f, 10\r\n", k, want[4 * k + 2],
                      want[4 * k + 3]);
        lines += line;
    }
    EXPECT_EQ(host_.history_text, lines);
    std::snprintf(line, sizeof line, " mean=%.3f; sd=%.3f; n=10", want[10], want[11]);
    EXPECT_EQ(v.shown.back(), line);
}

TEST_F(PlotViewTest, CropToTheWindowShown) {
    std::vector<float> y(2 * 10);
    for (size_t i = 0; i < y.size(); ++i) y[i] = static_cast<float>(i * i);
    CZrkData* a = Array("a", y, 10, 2);
    View& v = Plot(a);
    ASSERT_TRUE(v.OnEditXrange("2 x 5"));
    ASSERT_EQ(v.OnCrop(), 1);
    EXPECT_EQ(host_.history_text, " a[][] crop 2  to 5\r\n");
    ASSERT_EQ(a->nx, 4u);
    ASSERT_EQ(a->ny, 2u);
    const float* c = static_cast<const float*>(a->data);
    EXPECT_EQ(c[0], 4);
    EXPECT_EQ(c[4], 144);
    // A new size clears the zoom: the whole cropped row is shown.
    v.Layout(800, 600, Metrics());
    EXPECT_EQ(v.scale.ZoomDepth(), 0u);
    EXPECT_EQ(v.scale.xmax, 3);
}

TEST_F(PlotViewTest, ChannelsOfComplexRowsAndPhaseInDegrees) {
    CZrkData* a = GlobalDataSpace().NewData(TYPE_CR4, 2, 1, 1, 1, 1, 1, "z");
    const float iq[4] = {3, 4, 0, -2};
    std::memcpy(a->data, iq, sizeof iq);
    View& v = Plot(a);
    v.OnMag();
    v.Layout(800, 600, Metrics());
    EXPECT_EQ(v.scale.ymax, 5);  // |3 + 4i|
    EXPECT_EQ(v.scale.ymin, 2);
    v.OnPhase();
    doc_->look.radians = 0;
    v.Draw();
    v.Layout(800, 600, Metrics());
    // atan2(4, 3) and -90 degrees.
    const std::vector<double> want = peer::Values("print(np.degrees(np.angle(3+4j)), -90.0)\n");
    ASSERT_EQ(want.size(), 2u);
    EXPECT_EQ(v.ReadoutAt(v.XPixel(1), v.YPixel(-90)), " z [1] = -90");
    EXPECT_NEAR(v.scale.ymax, want[0], 1e-4);
    EXPECT_NEAR(v.scale.ymin, want[1], 1e-4);
}

TEST_F(PlotViewTest, AgainstPositionsTheXRangeAndCropKeepSampleIndices) {
    CZrkData* counts = Array("h.y", {3, 8, 6, 1}, 4);
    CZrkData* at = Array("h.x", {-1.5f, -0.5f, 0.5f, 1.5f}, 4);
    View& v = Plot(counts, at);
    EXPECT_TRUE(v.FreeX());
    EXPECT_EQ(v.scale.xmin, -1.5);
    EXPECT_EQ(v.scale.xmax, 1.5);
    // An x range drawn from the second bin to the third holds their indices.
    v.SetCursorMode(CPlotView::CURSOR_XROI);
    v.Press(v.cursor_mode, v.XPixel(-0.45), 100);
    v.Move(v.XPixel(0.6), 100);
    v.Release(v.XPixel(0.6), 100);
    const float* r = static_cast<const float*>(GlobalDataSpace().FindData("roi_x")->data);
    EXPECT_EQ(r[0], 1);
    EXPECT_EQ(r[1], 2);
    double x0, x1;
    ASSERT_TRUE(v.RoiColumns(&x0, &x1));
    EXPECT_DOUBLE_EQ(x0, v.XPixel(-0.5));
    EXPECT_DOUBLE_EQ(x1, v.XPixel(0.5));
    // A box zoom over the middle bins, then crop: both arrays keep those two.
    v.SetCursorMode(CPlotView::CURSOR_ZOOM);
    v.Press(v.cursor_mode, v.XPixel(-1), v.YPixel(8));
    v.Release(v.XPixel(1), v.YPixel(0));
    ASSERT_EQ(v.OnCrop(), 1);
    ASSERT_EQ(counts->nx, 2u);
    ASSERT_EQ(at->nx, 2u);
    EXPECT_EQ(static_cast<const float*>(counts->data)[0], 8);
    EXPECT_EQ(static_cast<const float*>(at->data)[1], 0.5f);
}

TEST_F(PlotViewTest, XyDrawsOneArrayAgainstTheOther) {
    CZrkData* x = Array("x", {-2, 0, 3}, 3);
    CZrkData* y = Array("y", {10, 20, 15}, 3);
    View& v = Plot(x, y, LOOK_XY);
    EXPECT_EQ(v.scale.xmin, -2);
    EXPECT_EQ(v.scale.xmax, 3);
    EXPECT_EQ(v.scale.ymax, 20);
    const CSeriesPath p = v.Paths()[0];
    EXPECT_EQ(p.x[0], v.PlotLeft());
    EXPECT_EQ(p.y[1], v.PlotTop());
    EXPECT_EQ(v.ReadoutAt(v.XPixel(0), v.YPixel(20)), "x(0, 20)");
    // A box zoom sets both ranges; out restores them.
    v.Press(CPlotView::CURSOR_ZOOM, v.XPixel(-1), v.YPixel(18));
    v.Release(v.XPixel(1), v.YPixel(12));
    EXPECT_NEAR(v.scale.xmin, -1, 1e-9);
    EXPECT_NEAR(v.scale.ymax, 18, 1e-9);
    EXPECT_TRUE(v.OnZoomOut());
    EXPECT_EQ(v.scale.xmin, -2);
    // No x range in an xy plot.
    EXPECT_EQ(v.OnMinMax(), 0);
}

TEST(PlotOptions, AxisLockKeyRoundTrips) {
    C1d options;
    options.axis_lock = 1;
    char* text = nullptr;
    size_t size = 0;
    FILE* out = open_memstream(&text, &size);
    options.PrintfOptions(out);
    std::fclose(out);
    // The axis options of both plot kinds follow the lock.
    EXPECT_EQ(std::string(text).rfind("\n//1d options\n1d_axis_lock= 1\n1d_x_tick=", 0), 0u);
    FILE* in = fmemopen(text, size, "r");
    CKeyReader reader(in);
    C1d back;
    int taken = 0;
    try {
        for (;;) {
            reader.Next();
            taken += back.ScanfOptions(reader);
        }
    } catch (const CKeyReader::EndOfFile&) {
    }
    EXPECT_EQ(taken, 41);
    EXPECT_EQ(back.axis_lock, 1);
    std::fclose(in);
    std::free(text);
}

}  // namespace
