// The convolution and median families against NumPy and SciPy on random arrays of several
// types and ranks, their names, labels and failure texts, and NaN input.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "core/host.h"
#include "core/report.h"
#include "core/zrk_error.h"
#include "eval/function_table.h"
#include "ops/convolution.h"
#include "ops/median.h"
#include "tests/eval/eval_fixture.h"
#include "tests/ops/op_test_util.h"
#include "tests/peer.h"

namespace {

// Random values: integers in -20 ... 20 for integer types, else uniform in -10 ... 10.
CZrkData* Random(CDataSpace& s, int type, std::initializer_list<res_t> shape, std::mt19937& g) {
    res_t r[6] = {1, 1, 1, 1, 1, 1};
    int k = 0;
    for (res_t v : shape) r[k++] = v;
    CZrkData* a = s.NewData(type, r[0], r[1], r[2], r[3], r[4], r[5], "");
    std::uniform_real_distribution<float> u(-10, 10);
    std::uniform_int_distribution<int> n(-20, 20);
    const bool integer = !IsFloatType(type);
    CDataCursor<float> c(a);
    for (uint64_t i = 0; i < a->Count(); ++i) {
        const float pair[2] = {integer ? float(n(g)) : u(g), integer ? float(n(g)) : u(g)};
        c.SetIQ(pair, i);
    }
    return a;
}

struct Case {
    std::string line;  // op and arguments as convolution_check.py reads them
    std::function<CZrkData*(CDataSpace&)> run;
};

TEST(ConvolutionCross, MatchesNumpyAndScipy) {
    CDataSpace s;
    std::mt19937 g(4711);
    std::map<std::string, CZrkData*> in = {
        {"A2r4", Random(s, TYPE_R4, {13, 11}, g)},    {"A2k", Random(s, TYPE_R4, {4, 3}, g)},
        {"A3r8", Random(s, TYPE_R8, {9, 7, 5}, g)},   {"A3k", Random(s, TYPE_R8, {3, 2, 3}, g)},
        {"A2i2", Random(s, TYPE_I2, {10, 9}, g)},     {"A2ki", Random(s, TYPE_I2, {3, 3}, g)},
        {"A2c", Random(s, TYPE_CR4, {12, 10}, g)},    {"A2kc", Random(s, TYPE_CR4, {3, 4}, g)},
        {"A3r4", Random(s, TYPE_R4, {8, 6, 5}, g)},   {"A3c", Random(s, TYPE_CR4, {8, 6, 5}, g)},
        {"Ax", Random(s, TYPE_R4, {3}, g)},           {"Ay", Random(s, TYPE_R4, {1, 3}, g)},
        {"Az", Random(s, TYPE_CR4, {1, 1, 2}, g)},    {"Apy", Random(s, TYPE_R4, {8, 2, 5}, g)},
        {"Apz", Random(s, TYPE_R4, {1, 6, 4}, g)},    {"Along", Random(s, TYPE_R4, {11}, g)},
        {"Apc", Random(s, TYPE_CR4, {8, 4, 5}, g)},   {"A4", Random(s, TYPE_R4, {5, 4, 3, 4}, g)},
        {"A4k", Random(s, TYPE_R4, {2, 3, 1, 2}, g)}, {"A2n1", Random(s, TYPE_N1, {9, 8}, g)},
    };
    // NaN and infinity in places, for the orderings (NaN sorts last).
    CZrkData* nan = Random(s, TYPE_R4, {7, 6}, g);
    static_cast<float*>(nan->data)[3] = std::numeric_limits<float>::quiet_NaN();
    static_cast<float*>(nan->data)[12] = std::numeric_limits<float>::infinity();
    static_cast<float*>(nan->data)[20] = -std::numeric_limits<float>::infinity();
    in["Anan"] = nan;

    std::vector<Case> cases;
    auto two = [&](const char* op, CZrkData* (*f)(CDataSpace&, const CZrkData*, const CZrkData*),
                   const char* a, const char* k) {
        const CZrkData *pa = in[a], *pk = in[k];
        cases.push_back(
            {std::string(op) + " " + a + " " + k, [=](CDataSpace& t) { return f(t, pa, pk); }});
    };
    for (auto [a, k] : std::vector<std::pair<const char*, const char*>>{{"A2r4", "A2k"},
                                                                        {"A3r8", "A3k"},
                                                                        {"A2i2", "A2ki"},
                                                                        {"A2c", "A2kc"},
                                                                        {"A2r4", "A2kc"},
                                                                        {"A2c", "A2k"},
                                                                        {"A4", "A4k"},
                                                                        {"A2r4", "A2r4"}}) {
        two("conv", Conv, a, k);
        two("corr", Corr, a, k);
        two("cconv", CConv, a, k);
        two("ccorr", CCorr, a, k);
    }
    // A kernel larger than the data in one direction wraps in the circular forms.
    two("ccorr", CCorr, "A2k", "A2r4");
    two("cconv", CConv, "Ax", "Along");

    using OneDir = CZrkData* (*)(CDataSpace&, int, const CZrkData*, const CZrkData*);
    const std::pair<const char*, OneDir> one_dir[] = {
        {"corr1d", Corr1d}, {"ccorr1d", CCorr1d}, {"ssd", Ssd}, {"cssd", CSsd}};
    const struct {
        int dir;
        const char *a, *k;
    } lines[] = {{0, "A3r4", "Ax"},  {1, "A3r4", "Ay"}, {2, "A3r4", "Az"}, {1, "A3r4", "Apy"},
                 {2, "A3r4", "Apz"}, {1, "A3c", "Apy"}, {1, "A3c", "Apc"}, {0, "A3c", "Ax"},
                 {0, "A2i2", "Ax"},  {1, "A3r8", "Ay"}, {0, "A2n1", "Ax"}};
    for (const auto& [name, f] : one_dir)
        for (const auto& l : lines) {
            const CZrkData *pa = in[l.a], *pk = in[l.k];
            const int d = l.dir;
            cases.push_back({std::string(name) + " " + std::to_string(d) + " " + l.a + " " + l.k,
                             [=](CDataSpace& t) { return f(t, d, pa, pk); }});
        }
    // The circular forms take the longer of the two: d1 longer than d0.
    for (const auto& [name, f] : {one_dir[1], one_dir[3]}) {
        const CZrkData *pa = in["Ax"], *pk = in["Along"];
        cases.push_back(
            {std::string(name) + " 0 Ax Along", [=](CDataSpace& t) { return f(t, 0, pa, pk); }});
    }

    for (const char* a : {"A3r4", "A3c", "Anan", "A2i2", "A2n1"})
        for (int d = 0; d < 3; ++d) {
            const CZrkData* pa = in[a];
            cases.push_back({"median " + std::to_string(d) + " " + a,
                             [=](CDataSpace& t) { return Median(t, d, pa); }});
            cases.push_back({"sort " + std::to_string(d) + " " + a,
                             [=](CDataSpace& t) { return Sort(t, d, pa); }});
        }

    auto list = [&](std::vector<double> v) { return Array(s, TYPE_I4, {v.size()}, v); };
    const struct {
        const char* a;
        std::vector<double> win;
    } windows[] = {{"A2r4", {3, 3}},    {"A2r4", {4, 2}}, {"A3r8", {3, 1, 3}},
                   {"A3r4", {1, 4, 5}}, {"A2i2", {5, 3}}, {"A2r4", {15, 1}}};
    for (const auto& w : windows) {
        std::string sizes;
        for (double v : w.win) sizes.append(" ").append(std::to_string(int(v)));
        const CZrkData *pa = in[w.a], *pl = list(w.win);
        cases.push_back({std::string("cmedian ") + w.a + sizes,
                         [=](CDataSpace& t) { return CMedian(t, pa, 0, pl); }});
    }
    // Complex windows ordered by each of the four keys.
    for (int key = 0; key < 4; ++key)
        for (const char* a : {"A2c", "A3c"}) {
            const CZrkData *pa = in[a], *pl = list({3, 2, 3});
            cases.push_back({"cmediankey " + std::string(a) + " " + std::to_string(key) + " 3 2 3",
                             [=](CDataSpace& t) { return CMedian(t, pa, key, pl); }});
        }
    const struct {
        const char* a;
        std::vector<double> win;
    } boxes[] = {{"A3r4", {3, 2, 1}}, {"A3c", {2, 3, 2}},  {"A2i2", {3, 3}},
                 {"A2n1", {2, 4}},    {"A3r8", {9, 1, 5}}, {"A2r4", {4}}};
    for (const auto& b : boxes)
        for (int circ = 0; circ < 2; ++circ) {
            std::string sizes;
            for (double v : b.win) sizes.append(" ").append(std::to_string(int(v)));
            const CZrkData *pa = in[b.a], *pl = list(b.win);
            const std::string tail = std::string(" ") + b.a + " " + std::to_string(circ) + sizes;
            cases.push_back(
                {"dilate" + tail, [=](CDataSpace& t) { return Dilate(t, pl, pa, circ == 1); }});
            cases.push_back(
                {"erode" + tail, [=](CDataSpace& t) { return Erode(t, pl, pa, circ == 1); }});
        }

    peer::Peer p;
    for (const auto& [name, a] : in) p.Put(name, a);
    std::vector<std::string> ids;
    for (const Case& c : cases) ids.push_back(p.Case(c.line));
    ASSERT_TRUE(p.Run("ops/convolution_check.py"));

    for (size_t k = 0; k < cases.size(); ++k) {
        SCOPED_TRACE(cases[k].line);
        const peer::Array want = p.Get(ids[k]);
        CDataSpace t;
        const CZrkData* r = cases[k].run(t);
        ASSERT_NE(r, nullptr);
        // The sums of squares are real; a complex input still gives a complex record.
        if (cases[k].line.find("ssd") == std::string::npos) {
            EXPECT_EQ(r->IsComplex(), want.IsComplex());
        }
        EXPECT_TRUE(peer::Near(peer::FromRecord(r), want, 2e-6));
    }
}

TEST(ConvolutionRows, NamesOutsideTheFamiliesAndTheSenseOfTheFilters) {
    // The variants named in the u and v spelling are not functions of the language.
    for (const char* name : {"ccorr1dt", "medianx", "sortx", "ssdu", "cssdv", "corr1du"})
        EXPECT_EQ(FunctionIndex(name), -1) << name;
    // The sense of the two filters is written in their help.
    const CFuncHelp dilate = ReadHelp(FunctionRow(FunctionIndex("dilate"))->help);
    ASSERT_GT(dilate.lines.size(), 1u);
    EXPECT_NE(std::string(dilate.lines[1]).find("minimum"), std::string::npos);
}

class ConvolutionLanguage : public EvalTest {
  protected:
    std::vector<double> Of(const char* name) { return Values(Find(name)); }
};

TEST_F(ConvolutionLanguage, ByNameAndByArgumentAreTheSameCall) {
    ASSERT_EQ(Report("d0 = reshape(rampx(0,23,24),3,2,2,2); k = rampx(1,2,2); ky = reshape(k,1,2);"
                     "kz = reshape(k,1,1,2); kt = reshape(k,1,1,1,2);"),
              "");
    const struct {
        const char* by_name;
        const char* by_argument;
    } pairs[] = {
        {"corr1dx(d0,k)", "corr1d(\"x\",d0,k)"},     {"corr1dy(d0,ky)", "corr1d(\"2\",d0,ky)"},
        {"ccorr1dz(d0,kz)", "ccorr1d(\"z\",d0,kz)"}, {"ccorrt(d0,kt)", "ccorr1d(\"t\",d0,kt)"},
        {"ssdx(d0,k)", "ssd(\"x\",d0,k)"},           {"cssdy(d0,ky)", "cssd(\"y\",d0,ky)"},
        {"corr1dt(d0,kt)", "corr1d(\"t\",d0,kt)"},
    };
    for (const auto& p : pairs) {
        ASSERT_EQ(Report(std::string("a = ") + p.by_name + "; b = " + p.by_argument + ";"), "")
            << p.by_name;
        EXPECT_EQ(Shape(Find("a")), Shape(Find("b"))) << p.by_name;
        EXPECT_EQ(Of("a"), Of("b")) << p.by_name;
    }
    // 0 1 2 3 with the kernel 1 2: correlation 0+2, 1+4, 2+6; convolution flips it.
    ASSERT_EQ(Report("e = rampx(0,3,4); c = corr(e,k); v = conv(e,k); m = median(\"x\",e);"
                     "s = sort(\"x\",flipx(e)); lo = dilate({2},e,0); hi = erode({2},e,1);"),
              "");
    EXPECT_EQ(Of("c"), (std::vector<double>{2, 5, 8}));
    EXPECT_EQ(Of("v"), (std::vector<double>{1, 4, 7}));
    EXPECT_EQ(Of("m"), (std::vector<double>{2}));
    EXPECT_EQ(Of("s"), (std::vector<double>{0, 1, 2, 3}));
    EXPECT_EQ(Of("lo"), (std::vector<double>{0, 1, 2}));
    EXPECT_EQ(Of("hi"), (std::vector<double>{3, 1, 2, 3}));
}

TEST_F(ConvolutionLanguage, Reports) {
    ASSERT_EQ(Report("d0 = rampx(0,3,4); w = reshape(rampx(0,11,12),4,3);"
                     "k = reshape(rampx(0,5,6),3,2); big = rampx(0,5,6);"),
              "");
    const struct {
        const char* line;
        const char* report;
    } rows[] = {
        {"a = conv(d0,big);", "conv() returned 'resolution must be positive'"},
        {"a = corr(d0,big);", "corr() returned 'resolution must be positive'"},
        {"a = conv(d0,w);", "conv() returned 'resolution must be positive'"},
        {"a = corr1dx(d0,big);", "corr1d('x') returned 'resolution must be positive'"},
        {"a = ccorr1dy(w,k);", "ccorr1d('y') returned 'incompatible x res'"},
        {"a = corr1d(\"q\",d0,d0);", "corr1d() returned 'direction invalid'"},
        {"a = median(\"q\",d0);", "median() returned 'direction invalid'"},
        {"a = sort(\"\",d0);", "sort() returned 'direction invalid'"},
        {"a = ssd(\"k\",d0,d0);", "ssd() returned 'direction invalid'"},
        {"a = ssdx(d0,big);", "sse('x') returned 'resolution must be positive'"},
        {"a = ssdy(w,rampx(0,2,3));", "sse('y') returned 'incompatible x res'"},
        {"a = ssdt(w,rampx(0,2,3));", "sse('t') returned 'incompatible x res'"},
        {"a = ssd(\"v\",w,k);", "sse('v') returned 'incompatible x res'"},
        // The straight family's u member leaves the general function's label.
        {"a = ssd(\"u\",w,k);", "ssd() returned 'incompatible x res'"},
        {"a = cssdx(w,k);", "cssd('x') returned 'incompatible y res'"},
        {"a = cssdy(w,k);", "csse('y') returned 'incompatible x res'"},
        {"a = cssdz(w,k);", "csse('z') returned 'incompatible x res'"},
        {"a = cssdt(w,k);", "csse('t') returned 'incompatible x res'"},
        {"a = cssd(\"u\",w,k);", "sse('u') returned 'incompatible x res'"},
        {"a = cssd(\"v\",w,k);", "ssd('v') returned 'incompatible x res'"},
        {"a = dilate({5},d0,0);", "dilate() returned 'resolution must be positive'"},
        {"a = erode({0},d0,1);", "erode() returned 'resolution must be positive'"},
        {"a = cmedian(d0,4,{3});", "cmedian() returned 'invalid sort type'"},
        {"a = conv(d0);", "CallFunction() returned 'argument number mismatch'"},
        {"a = dilate({3},d0);", "CallFunction() returned 'argument number mismatch'"},
    };
    for (const auto& row : rows) EXPECT_EQ(Report(row.line), row.report) << row.line;
}

TEST_F(ConvolutionLanguage, FailureLinesInTheHistory) {
    ASSERT_EQ(Report("w = reshape(rampx(0,11,12),4,3); k = reshape(rampx(0,5,6),3,2);"), "");
    const struct {
        const char* line;
        const char* history;
    } rows[] = {
        {"a = conv(w,rampx(0,5,6));", "error caught: eval_conv:\r\n"},
        {"a = ccorr1dy(w,k);", "error caught: CCorr1dY:\r\n"},
        {"a = ssdx(w,k);", "sse('x') failed\r\n"},
        {"a = ssd(\"u\",w,k);", "sse('u') failed\r\n"},
        {"a = cssdx(w,k);", "cssd('x') failed\r\n"},
        {"a = cssd(\"u\",w,k);", "csse('u') failed\r\n"},
        {"a = cssd(\"v\",w,k);", "csse('v') failed\r\n"},
        {"a = dilate({9},w,0);", "error caught: EvalDilate:\r\n"},
    };
    for (const auto& row : rows) {
        host.history.clear();
        ASSERT_NE(Report(row.line), "") << row.line;
        EXPECT_EQ(host.history, std::vector<std::string>{row.history}) << row.line;
    }
}

// The t members of median and sort keep their label without the closing quote.
TEST(ConvolutionLabels, MedianAndSortOfTheT) {
    CHeadlessHost host;
    CScopedHost scoped(host);
    CDataSpace t;
    CZrkData empty;  // a type but no samples
    empty.SetHeader(TYPE_R4, 2, 1, 1, 3, 1, 1);
    EXPECT_THROW(Median(t, 3, &empty), ZrkError);
    EXPECT_EQ(err_func, "median('t)");
    EXPECT_THROW(Sort(t, 3, &empty), ZrkError);
    EXPECT_EQ(err_func, "sort('t)");
    EXPECT_THROW(Median(t, 1, &empty), ZrkError);
    EXPECT_EQ(err_func, "median('y')");
    EXPECT_EQ(host.history, (std::vector<std::string>{"error caught: EvalMedian:\r\n",
                                                      "error caught: EvalSort:\r\n",
                                                      "error caught: EvalMedian:\r\n"}));
}

// NaN and infinity pass through every operator; a NaN spoils only the sums that see it.
TEST(ConvolutionNan, NoCrashAndLocalSpread) {
    CDataSpace s;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    std::vector<double> v(64, 1.0);
    v[9] = nan;   // (1, 1)
    v[50] = inf;  // (2, 6)
    v[63] = -inf;
    CZrkData* a = Array(s, TYPE_R4, {8, 8}, v);
    CZrkData* ac = Array(s, TYPE_CR4, {8, 8}, v);
    CZrkData* k = Array(s, TYPE_R4, {2, 2}, {1, 1, 1, 1});
    CZrkData* kl = Array(s, TYPE_R4, {3}, {1, 1, 1});
    CZrkData* win = Array(s, TYPE_I4, {2}, {3, 3});
    using Two = CZrkData* (*)(CDataSpace&, const CZrkData*, const CZrkData*);
    for (Two f : {Two(Conv), Two(Corr), Two(CConv), Two(CCorr)})
        for (const CZrkData* x : {a, ac}) EXPECT_NE(f(s, x, k), nullptr);
    using OneDir = CZrkData* (*)(CDataSpace&, int, const CZrkData*, const CZrkData*);
    for (OneDir f : {OneDir(Corr1d), OneDir(CCorr1d), OneDir(Ssd), OneDir(CSsd)})
        for (const CZrkData* x : {a, ac}) EXPECT_NE(f(s, 0, x, kl), nullptr);
    for (const CZrkData* x : {a, ac}) {
        for (int d = 0; d < 2; ++d) {
            EXPECT_NE(Median(s, d, x), nullptr);
            EXPECT_NE(Sort(s, d, x), nullptr);
        }
        for (int key = 0; key < 4; ++key) EXPECT_NE(CMedian(s, x, key, win), nullptr);
        for (bool circ : {false, true}) {
            EXPECT_NE(Dilate(s, win, x, circ), nullptr);
            EXPECT_NE(Erode(s, win, x, circ), nullptr);
        }
    }
    // corr with a 2 x 2 of ones: the NaN at (1, 1) reaches outputs (0..1, 0..1) only.
    const std::vector<float> c = Values(Corr(s, a, k));
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 7; ++x)
            EXPECT_EQ(std::isnan(c[y * 7 + x]), x <= 1 && y <= 1) << x << ' ' << y;
}

}  // namespace
