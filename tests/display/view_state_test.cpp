// The view base: scrolling by mode, the timer's period, the position text and histograms
// against numpy.histogram.
#include "display/view_state.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "core/data_space.h"
#include "core/host.h"
#include "tests/display/view_test_util.h"
#include "tests/peer.h"

namespace {

class ViewStateTest : public ::testing::Test {
  protected:
    CDataSpace space_;
    CHeadlessHost host_;
    CScopedHost scoped_{host_};
    C2d options_;
};

TEST_F(ViewStateTest, ScrollAllCarriesFromZThroughToV) {
    CZrkData* a = space_.NewData(TYPE_R4, 2, 2, 2, 1, 3, 1, "a");
    std::memset(a->Data(), 0, a->Bytes());
    CTestDoc doc(LOOK_2D, a);
    CTestView view(doc, options_, space_);
    view.OnScrollAll();
    std::vector<std::string> seen;
    for (int i = 0; i < 7; ++i) {
        view.OnTimer();
        seen.push_back(std::to_string(view.page[0]) + std::to_string(view.page[1]) +
                       std::to_string(view.page[2]) + std::to_string(view.page[3]));
    }
    // z, t (size 1), u, v (size 1): z wraps straight into u.
    EXPECT_EQ(seen,
              (std::vector<std::string>{"1000", "0010", "1010", "0020", "1020", "0000", "1000"}));
    EXPECT_EQ(view.redraws, 7);
    EXPECT_EQ(doc.page_z, 1);
    EXPECT_EQ(view.shown.back().rfind("a i/q:[1][0] a[0][0][1][0] = ", 0), 0u) << view.shown.back();
    view.OnScrollPrior();
    view.OnScrollPrior();
    EXPECT_EQ(view.page[0], 1u);
    EXPECT_EQ(view.page[2], 2u);
    view.OnScrollT();
    view.OnScrollNext();
    EXPECT_EQ(view.page[1], 0u);  // size 1 stays at 0
    view.OnScrollU();
    view.OnScrollNext();
    EXPECT_EQ(view.page[2], 0u);
}

TEST_F(ViewStateTest, PeriodsStartAndRestartTheTimer) {
    CZrkData* a = space_.NewData(TYPE_R4, 2, 2, 4, 1, 1, 1, "a");
    CTestDoc doc(LOOK_2D, a);
    CTestView view(doc, options_, space_);
    view.OnScroll200ms();
    EXPECT_TRUE(view.scroll_running);
    EXPECT_EQ(view.stops, 0);
    view.OnScroll1s();
    EXPECT_EQ(view.stops, 1);
    EXPECT_EQ(view.starts, (std::vector<int>{200, 1000}));
    EXPECT_EQ(doc.look.scroll_time, 1000);
    view.OnScrollPlus();
    EXPECT_EQ(view.starts.back(), 500);
    view.OnScrollMinus();
    EXPECT_EQ(view.starts.back(), 1000);
    view.OnStopScroll();
    EXPECT_FALSE(view.scroll_running);
    view.timer_works = false;
    view.OnScroll50ms();
    EXPECT_FALSE(view.scroll_running);
    ASSERT_FALSE(host_.messages.empty());
    EXPECT_EQ(host_.messages.back(), "scroll failed");
}

TEST_F(ViewStateTest, PositionTextAndPrefix) {
    CZrkData* a = space_.NewData(TYPE_CR4, 4, 4, 3, 1, 2, 1, "w");
    a->mm[2] = 2.5f;
    CTestDoc doc(LOOK_2D, a);
    CTestView view(doc, options_, space_);
    view.page[0] = 2, view.page[2] = 1;
    EXPECT_EQ(view.PositionText(), "[2][1]");
    EXPECT_EQ(view.ReadoutPrefix(), "w mag:");
    doc.look.palplane.iqmp = 3;
    EXPECT_EQ(view.ReadoutPrefix(), "w phase:");
    doc.look.palplane.iqmp = 0;
    EXPECT_EQ(view.ReadoutPrefix(), "w i/q:");
    doc.look.units = 1;
    EXPECT_EQ(view.PositionText().substr(0, 5), "[5.00");
}

TEST_F(ViewStateTest, HistogramsEqualNumPy) {
    CZrkData* a = space_.NewData(TYPE_R4, 50, 40, 3, 1, 1, 1, "a");
    auto* f = static_cast<float*>(a->Data());
    for (int i = 0; i < 6000; ++i)
        f[i] = std::sin(i * 0.37f) * 40 + (i % 7) * 3.3f + (i / 2000) * 20;
    f[11] = std::numeric_limits<float>::quiet_NaN();
    f[12] = std::numeric_limits<float>::infinity();
    CTestDoc doc(LOOK_2D, a);
    CTestView view(doc, options_, space_);
    view.page[0] = 1;
    ASSERT_EQ(view.CalcHist(space_), 1);
    EXPECT_EQ(host_.status.back(), "display failed");  // no 1d factory yet
    ASSERT_EQ(view.CalcHistAll(space_), 1);
    CZrkData* bins = space_.NewData(TYPE_R4, 1, 1, 1, 1, 1, 1, "hist_nbins");
    *static_cast<float*>(bins->Data()) = 17;
    CZrkData* range = space_.NewData(TYPE_R4, 2, 1, 1, 1, 1, 1, "hist_range");
    static_cast<float*>(range->Data())[0] = -10;
    static_cast<float*>(range->Data())[1] = 30;
    ASSERT_EQ(view.CalcHistZAll(space_), 3);

    peer::Peer p;
    p.Put("a", a);
    ASSERT_TRUE(
        p.RunText("a = peer.load(FOLDER, 'a')[:, :, :, 0, 0, 0].astype(np.float32)\n"
                  "def h(v, **kw):\n"
                  "    v = v.ravel(order='F'); v = v[np.isfinite(v)]\n"
                  "    c, e = np.histogram(v, **kw)\n"
                  "    peer.save(FOLDER, 'c%d' % h.n, c.astype(np.float32))\n"
                  "    peer.save(FOLDER, 'x%d' % h.n, ((e[:-1].astype(np.float64) + e[1:]) / "
                  "2).astype(np.float32))\n"
                  "    h.n += 1\n"
                  "h.n = 0\n"
                  "h(a[:, :, 1], bins=256)\n"
                  "h(a, bins=256)\n"
                  "for z in range(3): h(a[:, :, z], bins=17, range=(-10, 30))\n"));
    const char* names[5] = {"a_h00", "a_h01", "a_h02", "a_h03", "a_h04"};
    for (int k = 0; k < 5; ++k) {
        const CZrkData* y = space_.FindData((std::string(names[k]) + ".y").c_str());
        const CZrkData* x = space_.FindData((std::string(names[k]) + ".x").c_str());
        ASSERT_NE(y, nullptr) << names[k];
        ASSERT_NE(x, nullptr);
        peer::Array want = p.Get("c" + std::to_string(k));
        want.shape = peer::FromRecord(y).shape;
        EXPECT_TRUE(peer::Same(peer::FromRecord(y), want)) << names[k];
        peer::Array want_x = p.Get("x" + std::to_string(k));
        want_x.shape = peer::FromRecord(x).shape;
        EXPECT_TRUE(peer::Near(peer::FromRecord(x), want_x, 1e-6)) << names[k];
    }
}

TEST(HistogramCounts, EqualEndsWidenAndOutsideValuesAreLeftOut) {
    std::vector<float> edges, counts;
    HistogramCounts({5, 5, 5}, 4, 5, 5, edges, counts);
    EXPECT_FLOAT_EQ(edges.front(), 4.5f);
    EXPECT_FLOAT_EQ(edges.back(), 5.5f);
    EXPECT_EQ(counts, (std::vector<float>{0, 0, 3, 0}));
    HistogramCounts({0, 1, 2, 3, 4, -1, 9, std::numeric_limits<float>::quiet_NaN()}, 2, 0, 4, edges,
                    counts);
    EXPECT_EQ(counts, (std::vector<float>{2, 3}));  // the last bin is closed
}

}  // namespace
