// The reductions against NumPy on random 4-D arrays of several types and every direction;
// their types, ties and small cases; failure labels and lines; the masked, line and volume
// statistics; and the functions as the language calls them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "core/host.h"
#include "core/report.h"
#include "display/roi_mask.h"
#include "eval/function_table.h"
#include "ops/reduce.h"
#include "ops/stats.h"
#include "tests/eval/eval_fixture.h"
#include "tests/ops/op_test_util.h"
#include "tests/peer.h"

namespace {

using ReduceFn = CZrkData* (*)(CDataSpace&, int, const CZrkData*);

struct Named {
    const char* name;  // as reduce_numpy.py knows it
    ReduceFn fn;
};
const Named kOps[] = {
    {"mean", Mean},       {"sd", Sd},           {"max", Max}, {"min", Min},
    {"maxndx", MaxIndex}, {"minndx", MinIndex}, {"mip", Mip}, {"integrate", Integrate},
    {"proj", Project},    {"sumsqr", SumSqr}};

// i and q (q = 0 for real records) as doubles.
std::vector<double> Pairs(const CZrkData* r) { return peer::FromRecord(r).Pairs(); }

std::string Bytes(const CZrkData* a) {
    return std::string(static_cast<const char*>(a->data), a->Bytes());
}

struct TypeCase {
    int type;
    double lo, hi;  // range of the random values
};

class ReduceNumpy : public ::testing::TestWithParam<TypeCase> {};

TEST_P(ReduceNumpy, EveryOperatorAndDirectionMatchesNumpy) {
    const TypeCase tc = GetParam();
    CDataSpace s;
    CZrkData* a = s.NewData(tc.type, 5, 4, 3, 2, 1, 1, "");
    std::mt19937 g(777);
    std::uniform_real_distribution<double> u(tc.lo, tc.hi);
    CDataCursor<float> c(a);
    for (uint64_t k = 0; k < a->Count(); ++k) {
        const bool integer = !IsFloatType(tc.type);
        const float pair[2] = {static_cast<float>(integer ? std::floor(u(g)) : u(g)),
                               static_cast<float>(integer ? std::floor(u(g)) : u(g))};
        c.SetIQ(pair, k);
    }
    const std::string before = Bytes(a);

    struct Case {
        std::string line;
        ReduceFn fn;
        int d;
    };
    std::vector<Case> cases;
    for (const Named& op : kOps)
        for (int d = 0; d < 4; ++d)
            cases.push_back({std::string(op.name) + " " + "xyzt"[d], op.fn, d});
    peer::Peer p;
    p.Put("a", a);
    std::vector<std::string> ids;
    for (const Case& c : cases) ids.push_back(p.Case(c.line));
    ASSERT_TRUE(p.Run("ops/reduce_numpy.py"));

    const bool wraps = !IsFloatType(tc.type);
    for (size_t k = 0; k < cases.size(); ++k) {
        SCOPED_TRACE(cases[k].line);
        const peer::Array want = p.Get(ids[k]);
        const std::vector<double> ref = want.Pairs();

        CDataSpace t;
        const CZrkData* r = cases[k].fn(t, cases[k].d, a);
        ASSERT_NE(r, nullptr);
        EXPECT_EQ(Shape(r), want.Shape6());
        const std::vector<double> got = Pairs(r);
        ASSERT_EQ(got.size(), ref.size());
        const bool exact = wraps && (cases[k].line.rfind("integrate", 0) == 0 ||
                                     cases[k].line.rfind("proj", 0) == 0);
        for (size_t e = 0; e < got.size(); ++e) {
            const double tol = exact ? 0 : 1e-3 + 1e-5 * std::abs(ref[e]);
            ASSERT_NEAR(got[e], ref[e], tol) << "element " << e / 2;
        }
    }
    EXPECT_EQ(Bytes(a), before);
}

INSTANTIATE_TEST_SUITE_P(
    Types, ReduceNumpy,
    ::testing::Values(TypeCase{TYPE_R4, -100, 100}, TypeCase{TYPE_CR4, -100, 100},
                      TypeCase{TYPE_R8, -1e3, 1e3}, TypeCase{TYPE_I2, -32768, 32768},
                      TypeCase{TYPE_N1, 0, 256}),
    [](const auto& info) { return std::string(peer::DType(info.param.type)); });

TEST(Reduce, ResultTypesAndShapes) {
    CDataSpace s;
    const struct {
        ReduceFn fn;
        int in, out;
        bool collapses;
    } rows[] = {
        {Mean, TYPE_I2, TYPE_R4, true},       {Mean, TYPE_R8, TYPE_R8, true},
        {Mean, TYPE_CN1, TYPE_CR4, true},     {Sd, TYPE_CR8, TYPE_CR8, true},
        {Max, TYPE_CR8, TYPE_R8, true},       {Min, TYPE_N4, TYPE_R4, true},
        {MaxIndex, TYPE_R8, TYPE_I4, true},   {MinIndex, TYPE_CR4, TYPE_I4, true},
        {Mip, TYPE_CI2, TYPE_R4, true},       {SumSqr, TYPE_CR4, TYPE_R4, true},
        {Integrate, TYPE_N1, TYPE_N1, false}, {Integrate, TYPE_CI4, TYPE_CI4, false},
        {Project, TYPE_I8, TYPE_I8, true},    {Project, TYPE_CR8, TYPE_CR8, true},
    };
    for (const auto& row : rows) {
        for (int d = 0; d < 6; ++d) {
            CZrkData* a = Array(s, row.in, {2, 3, 4, 5, 3, 2});
            a->SetMm(1, 2, 3, 4, 5, 6);
            const CZrkData* r = row.fn(s, d, a);
            std::vector<res_t> want = Shape(a);
            if (row.collapses) want[d] = 1;
            EXPECT_EQ(Shape(r), want) << TypeName(row.in) << " dir " << d;
            EXPECT_EQ(r->type, row.out) << TypeName(row.in) << " dir " << d;
            EXPECT_EQ(r->mm[5], 6.0f);
        }
    }
}

// Small cases worked by hand.
TEST(Reduce, SmallCases) {
    CDataSpace s;
    const float nan = std::nanf("");
    const struct {
        const char* what;
        ReduceFn fn;
        int type, dir;
        std::vector<res_t> shape;
        std::vector<double> in, want;
    } rows[] = {
        {"sd of one point", Sd, TYPE_R4, 0, {1}, {5}, {0}},
        {"sd of 0 and 2", Sd, TYPE_R4, 0, {2}, {0, 2}, {1}},
        {"sd along y", Sd, TYPE_I2, 1, {2, 2}, {0, 7, 2, 7}, {1, 0}},
        {"maxndx ties keep the first", MaxIndex, TYPE_R4, 0, {4}, {3, 7, 7, 1}, {1}},
        {"minndx ties keep the first", MinIndex, TYPE_I4, 0, {4}, {2, 0, 5, 0}, {1}},
        {"maxndx along z", MaxIndex, TYPE_R4, 2, {1, 1, 3}, {4, 4, 4}, {0}},
        {"max of a first NaN stays", Max, TYPE_R4, 0, {3}, {nan, 1, 2}, {nan}},
        {"min skips a later NaN", Min, TYPE_R4, 0, {3}, {2, nan, 1}, {1}},
        {"integrate wraps n1", Integrate, TYPE_N1, 0, {3}, {200, 100, 10}, {200, 44, 54}},
        {"proj wraps i1", Project, TYPE_I1, 1, {1, 3}, {100, 100, -1}, {-57}},
        {"mip of negatives", Mip, TYPE_I2, 0, {3}, {-9, 4, 8}, {9}},
        {"sumsqr", SumSqr, TYPE_R4, 0, {3}, {1, -2, 3}, {14}},
    };
    for (const auto& row : rows) {
        res_t r[3] = {1, 1, 1};
        for (size_t k = 0; k < row.shape.size(); ++k) r[k] = row.shape[k];
        CZrkData* a = Array(s, row.type, {r[0], r[1], r[2]}, row.in);
        const std::vector<float> got = ::Values(row.fn(s, row.dir, a));
        ASSERT_EQ(got.size(), row.want.size()) << row.what;
        for (size_t k = 0; k < got.size(); ++k) {
            if (std::isnan(row.want[k]))
                EXPECT_TRUE(std::isnan(got[k])) << row.what;
            else
                EXPECT_NEAR(got[k], row.want[k], 1e-6) << row.what;
        }
    }
    // Complex: i and q apart for mean and sd, the magnitude for mip and sumsqr.
    CZrkData* z = s.NewData(TYPE_CR4, 2, 1, 1, 1, 1, 1, "");
    const float iq[4] = {3, 4, 1, -2};
    std::memcpy(z->data, iq, sizeof iq);
    EXPECT_EQ(Pairs(Mean(s, 0, z)), (std::vector<double>{2, 1}));
    EXPECT_EQ(Pairs(Sd(s, 0, z)), (std::vector<double>{1, 3}));
    EXPECT_EQ(Pairs(Mip(s, 0, z)), (std::vector<double>{5, 0}));
    EXPECT_EQ(Pairs(SumSqr(s, 0, z)), (std::vector<double>{30, 0}));
    EXPECT_EQ(Pairs(Max(s, 0, z)), (std::vector<double>{3, 0}));
    EXPECT_EQ(Pairs(Integrate(s, 0, z)), (std::vector<double>{3, 4, 4, 2}));
}

// Each operator's label, its failure line and the raised text, for an array whose samples are
// gone.
TEST(Reduce, FailureLabelsAndLines) {
    CHeadlessHost host;
    CScopedHost scoped(host);
    CDataSpace s;
    CZrkData* empty = s.NewData(TYPE_R4, 4, 4, 1, 1, 1, 1, "");
    empty->FreeData();
    const struct {
        ReduceFn fn;
        int dir;
        const char* label;
        const char* line;
    } rows[] = {
        {Mean, 0, "mean('x')", "error caught: MeanX:\r\n"},
        {Mean, 5, "mean('v')", "error caught: MeanV:\r\n"},
        {Sd, 0, "sd('x')", "error caught: SdX:\r\n"},
        {Sd, 2, "sd('z')", "error caught: SdZ:\r\n"},
        {Sd, 3, "sd('z')", "error caught: SdT:\r\n"},
        {Sd, 4, "sd('u')", "error caught: SdU:\r\n"},
        {Max, 1, "max('y')", "error caught: MaxY:\r\n"},
        {Min, 0, "min('x')", "error caught: MinX:\r\n"},
        {MaxIndex, 0, "maxndx('x')", "error caught: MaxIndexX:\r\n"},
        {MinIndex, 3, "minndx('t')", "error caught: MinIndexT:\r\n"},
        {Mip, 0, "mip('x')", "error caught: MipX:\r\n"},
        {Integrate, 0, "integrate('x')", "IntegrateX() failed\r\n"},
        {Integrate, 1, "integrate('y')", "ProjectY() failed\r\n"},
        {Integrate, 2, "integrate('z')", "IntegrateZ() failed\r\n"},
        {Integrate, 3, "integrate('t')", "ProjectT() failed\r\n"},
        {Integrate, 4, "integrate('u')", "ProjectU() failed\r\n"},
        {Integrate, 5, "integrate('v')", "ProjectV() failed\r\n"},
        {Project, 0, "proj('x')", "ProjectX() failed\r\n"},
        {Project, 2, "proj('z')", "ProjectZ() failed\r\n"},
        {Project, 5, "proj('v')", "ProjectV() failed\r\n"},
        {SumSqr, 0, "sumsqr('x')", "error caught: eval_sumsqrx:\r\n"},
        {SumSqr, 1, "sumsqr('y')", "error caught: eval_sumsqry:\r\n"},
    };
    for (const auto& row : rows) {
        host.history.clear();
        err_func.clear();
        std::string raised;
        try {
            row.fn(s, row.dir, empty);
        } catch (const ZrkError& e) {
            raised = e.what();
        }
        EXPECT_EQ(raised, "invalid data type") << row.label;
        EXPECT_EQ(err_func, row.label);
        EXPECT_EQ(host.history, (std::vector<std::string>{row.line})) << row.label;
    }
}

TEST(Reduce, InputsUnchangedAndBigInnerBlocks) {
    // A direction high up: the inner block spans many lines, and a complex input.
    CDataSpace s;
    CZrkData* a = Array(s, TYPE_CR4, {7, 5, 3, 4});
    const std::string before = Bytes(a);
    for (const Named& op : kOps)
        for (int d = 0; d < 6; ++d) ASSERT_NE(op.fn(s, d, a), nullptr) << op.name;
    EXPECT_EQ(Bytes(a), before);
    // proj along t of 0 ... 419: element k of the 105-point slab is the sum of k + 105 j.
    const std::vector<float> p = ::Values(Project(s, 3, a));
    ASSERT_EQ(p.size(), 105u);
    for (size_t k = 0; k < p.size(); ++k) EXPECT_EQ(p[k], 4 * k + 105 * 6) << k;
}

// The statistics read the global data space (regions) and write history lines.
class Stats : public EvalTest {
  protected:
    static void Region(const char* name, std::vector<float> v) {
        CZrkData* r = GlobalDataSpace().NewData(TYPE_R4, v.size(), 1, 1, 1, 1, 1, name);
        std::memcpy(r->data, v.data(), v.size() * sizeof(float));
    }
    CZrkData* Plane(std::vector<double> v, res_t nx, res_t ny, res_t nz = 1) {
        return Array(space, TYPE_R4, {nx, ny, nz}, v);
    }
    static uint32_t Bits(float v) {
        uint32_t b;
        std::memcpy(&b, &v, sizeof b);
        return b;
    }
    int Count(const std::string& line) {
        return static_cast<int>(std::count(host.history.begin(), host.history.end(), line));
    }
    CDataSpace space;
};

const char kMinMaxNan[] = "NAN/INF found in data... min/max of valid data is reported";
const char kMeanSdNan[] = "NAN/INF found in data... mean/sd of valid data is reported";

TEST_F(Stats, NoRegionComputesNothing) {
    CZrkData* a = Plane({1, 2, 3, 4}, 2, 2);
    float lo = -7, hi = -7, mean = -7, sd = -7;
    EXPECT_EQ(MinMaxXy(a, 0, ROI_RECT, &lo, &hi), 0u);
    EXPECT_EQ(MeanSdXy(a, 0, ROI_ELLIPSE, &mean, &sd), 0u);
    EXPECT_EQ(MinMaxXy(a, 0, ROI_2D, &lo, &hi), 0u);
    // A region narrower than 2 in its first direction is none.
    Region("roi_rect", {1});
    EXPECT_EQ(MinMaxXy(a, 0, ROI_RECT, &lo, &hi), 0u);
    EXPECT_EQ((std::vector<float>{lo, hi, mean, sd}), (std::vector<float>{-7, -7, -7, -7}));
    EXPECT_TRUE(host.history.empty());
}

TEST_F(Stats, PlaneUnderTheRegion) {
    // 4 x 3 plane of 1 ... 12, then a second plane of 101 ... 112.
    std::vector<double> v;
    for (int k = 1; k <= 24; ++k) v.push_back(k <= 12 ? k : 88 + k);
    CZrkData* a = Plane(v, 4, 3, 2);
    Region("roi_rect", {1, 0, 2, 1});  // x 1..2, y 0..1: values 2, 3, 6, 7
    float lo = 0, hi = 0, mean = 0, sd = 0;
    EXPECT_EQ(MinMaxXy(a, 0, ROI_RECT, &lo, &hi), 4u);
    EXPECT_EQ(lo, 2);
    EXPECT_EQ(hi, 7);
    EXPECT_EQ(MeanSdXy(a, 0, ROI_RECT, &mean, &sd), 4u);
    EXPECT_FLOAT_EQ(mean, 4.5f);
    EXPECT_FLOAT_EQ(sd, std::sqrt(4.25f));
    EXPECT_EQ(MinMaxXy(a, 1, ROI_RECT, &lo, &hi), 4u);
    EXPECT_EQ(lo, 102);
    EXPECT_EQ(hi, 107);
    // The mask of the region is the one the displays use.
    const CZrkData* mask = GlobalDataSpace().FindData("roi_mask");
    ASSERT_NE(mask, nullptr);
    EXPECT_EQ(mask->nx, 4u);
    EXPECT_TRUE(host.history.empty());
    // Plane 2 does not exist.
    EXPECT_EQ(MinMaxXy(a, 2, ROI_RECT, &lo, &hi), 0u);
    EXPECT_EQ(host.history, (std::vector<std::string>{"error caught: MinMaxXy:\r\n"}));
    EXPECT_EQ(host.status.back(), "index > resolution");
}

TEST_F(Stats, PlaneOfOnlyNan) {
    const double nan = std::nan("");
    CZrkData* a = Plane(std::vector<double>(12, nan), 4, 3);
    Region("roi_rect", {0, 0, 3, 2});
    float lo = 0, hi = 0, mean = -1, sd = -1;
    EXPECT_EQ(MinMaxXy(a, 0, ROI_RECT, &lo, &hi), 12u);
    EXPECT_EQ(Bits(lo), 0x7F7FFFFFu);
    EXPECT_EQ(Bits(hi), 0xFF7FFFFFu);
    EXPECT_EQ(Count(kMinMaxNan), 1);
    EXPECT_EQ(MeanSdXy(a, 0, ROI_RECT, &mean, &sd), 12u);
    EXPECT_EQ(mean, 0);
    EXPECT_EQ(sd, 0);
    EXPECT_EQ(Count(kMeanSdNan), 1);
}

TEST_F(Stats, NanAndInfinityCountButTakeNoPart) {
    const double nan = std::nan(""), inf = INFINITY;
    CZrkData* a = Plane({nan, 4, -inf, 2, 8, nan}, 3, 2);
    float lo = 0, hi = 0, mean = 0, sd = 0, median = 0;
    EXPECT_EQ(MinMaxXyz(a, 0, &lo, &hi), 6u);
    EXPECT_EQ(lo, 2);
    EXPECT_EQ(hi, 8);
    EXPECT_EQ(MeanSdXyz(a, 0, &mean, &sd), 6u);
    EXPECT_FLOAT_EQ(mean, 14.0f / 3);
    EXPECT_FLOAT_EQ(sd, std::sqrt(56.0f / 9));  // deviations -2/3, 10/3, -8/3
    EXPECT_EQ(MedianXyz(a, 0, &median), 6u);
    EXPECT_EQ(median, 4);
    EXPECT_EQ(Count(kMinMaxNan), 1);
    EXPECT_EQ(Count(kMeanSdNan), 1);
    EXPECT_EQ(host.history.size(), 3u);
    // x 0 ... 1 of line 1 (2, 8, NaN): 2 and 8.
    EXPECT_EQ(MinMaxX(a, 1, 0, 1, &lo, &hi), 2u);
    EXPECT_EQ(lo, 2);
    EXPECT_EQ(hi, 8);
    EXPECT_EQ(MeanSdX(a, 0, 1, 99, &mean, &sd), 2u);  // clamped to x 1 ... 2: 4 and -inf
    EXPECT_EQ(mean, 4);
    EXPECT_EQ(sd, 0);
}

TEST_F(Stats, MedianAndChannels) {
    float median = 0, lo = 0, hi = 0;
    EXPECT_EQ(MedianXyz(Plane({5, 1, 3, 9}, 2, 2), 0, &median), 4u);
    EXPECT_EQ(median, 4);
    EXPECT_EQ(MedianXyz(Array(space, TYPE_R4, {2, 1, 1, 3}, {5, 1, 3, 9, 7, 2}), 1, &median), 2u);
    EXPECT_EQ(median, 6);
    // Magnitude channel of a complex volume.
    CZrkData* z = space.NewData(TYPE_CR4, 2, 1, 1, 1, 1, 1, "");
    const float iq[4] = {3, 4, 0, -2};
    std::memcpy(z->data, iq, sizeof iq);
    EXPECT_EQ(MinMaxXyz(z, 0, &lo, &hi, 2), 2u);
    EXPECT_EQ(lo, 2);
    EXPECT_EQ(hi, 5);
    EXPECT_EQ(MinMaxXyz(z, 0, &lo, &hi, 1), 2u);
    EXPECT_EQ(lo, -2);
    EXPECT_EQ(hi, 4);
    EXPECT_TRUE(host.history.empty());
}

// Through the language.
using ReduceRows = EvalTest;

TEST_F(ReduceRows, ByNameAndByArgument) {
    ASSERT_EQ(Report("d0 = reshape(rampx(-11,12,24),2,3,4);"), "");
    ASSERT_EQ(Report("m0 = mean(\"x\", d0); m1 = mean(\"1\", d0);"), "");
    EXPECT_EQ(Shape(Find("m0")), (std::vector<res_t>{1, 3, 4, 1, 1, 1}));
    std::vector<double> want;
    for (int k = 0; k < 12; ++k) want.push_back(-10.5 + 2 * k);
    EXPECT_EQ(Values(Find("m0")), want);
    EXPECT_EQ(Values(Find("m1")), want);
    const struct {
        const char* by_name;
        const char* by_argument;
    } pairs[] = {
        {"mipz(d0)", "mip(\"z\",d0)"},       {"mipx(d0)", "mip(\"x\",d0)"},
        {"projy(d0)", "proj(\"y\",d0)"},     {"integratet(d0)", "integrate(\"t\",d0)"},
        {"sumsqrz(d0)", "sumsqr(\"z\",d0)"}, {"proj(\"y\",projx(d0))", "proj(\"xy\",d0)"},
    };
    for (const auto& p : pairs) {
        ASSERT_EQ(Report(std::string("a = ") + p.by_name + "; b = " + p.by_argument + ";"), "")
            << p.by_name;
        EXPECT_EQ(Shape(Find("a")), Shape(Find("b"))) << p.by_name;
        EXPECT_EQ(Values(Find("a")), Values(Find("b"))) << p.by_name;
    }
    ASSERT_EQ(Report("c = mipz(d0);"), "");
    EXPECT_EQ(Shape(Find("c")), (std::vector<res_t>{2, 3, 1, 1, 1, 1}));
    // Along z the values are j - 11, j - 5, j + 1, j + 7 for j = x + 2y.
    EXPECT_EQ(Values(Find("c")), (std::vector<double>{11, 10, 9, 10, 11, 12}));
    ASSERT_EQ(Report("n = maxndx(\"y\", d0); s = sd(\"u\", d0);"), "");
    EXPECT_EQ(Values(Find("n")), std::vector<double>(8, 2));
    EXPECT_EQ(Values(Find("s")), std::vector<double>(24, 0));
}

TEST_F(ReduceRows, Reports) {
    ASSERT_EQ(Report("d0 = rampx(0,3,4);"), "");
    const struct {
        const char* line;
        const char* report;
    } rows[] = {
        {"a = mean(\"q\", d0);", "mean() returned 'invalid direction'"},
        {"a = sd(\"w\", d0);", "sd() returned 'invalid direction'"},
        {"a = mean(d0);", "CallFunction() returned 'argument number mismatch'"},
        {"a = mipx(d0, d0);", "CallFunction() returned 'argument number mismatch'"},
    };
    for (const auto& row : rows) EXPECT_EQ(Report(row.line), row.report) << row.line;
    EXPECT_NE(Report("a = hist(d0, 64);"), "");
}

// Only mip, integrate, proj and sumsqr have named directions, and none has a u member.
TEST(ReduceTable, NamedDirections) {
    for (const Named& op : kOps) {
        const std::string name = op.name;
        const bool variants =
            name == "mip" || name == "integrate" || name == "proj" || name == "sumsqr";
        for (const char* d : {"x", "y", "z", "t"})
            EXPECT_EQ(FunctionIndex((name + d).c_str()) != -1, variants) << name << d;
        EXPECT_EQ(FunctionIndex((name + "u").c_str()), -1) << name;
    }
}

// The histogram help is for the browser alone: complete, but no row carries it and no
// function takes its name.
TEST(ReduceTable, HistogramHelpBelongsToNoFunction) {
    const CFuncHelp hist = ReadHelp(HistogramHelp());
    EXPECT_GT(std::strlen(hist.title), 0u);
    ASSERT_FALSE(hist.lines.empty());
    EXPECT_NE(std::string(hist.lines[0]).find("hist("), std::string::npos);
    EXPECT_EQ(FunctionIndex("hist"), -1);
    EXPECT_EQ(FunctionIndex("histr"), -1);
    for (const CFuncRow* r : FunctionTable()) EXPECT_NE(r->help, HistogramHelp());
}

}  // namespace
