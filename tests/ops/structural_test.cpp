// Behaviour of the structural operators beyond the NumPy cross-check: failure texts and
// labels, edge cases of the sizes, types and the line orders.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <utility>

#include "core/host.h"
#include "core/report.h"
#include "display/roi_mask.h"
#include "ops/generators.h"
#include "ops/permute.h"
#include "ops/structural_fill.h"
#include "ops/structural_join.h"
#include "ops/structural_shape.h"
#include "ops/twister.h"
#include "ops/vector_product.h"
#include "tests/ops/op_test_util.h"
#include "tests/peer.h"

namespace {

using Op = std::function<CZrkData*(CDataSpace&)>;

// Runs an operator as a handler does; the raised text, or "" on success.
std::string Failure(const Op& op, CDataSpace& temp) {
    err_func.clear();
    try {
        op(temp);
    } catch (const ZrkError& e) {
        return e.what();
    }
    return "";
}

TEST(Structural, BadArgumentsGiveTheOperatorsText) {
    CDataSpace s;
    CZrkData* a = Array(s, TYPE_R4, {4, 3, 2});
    CZrkData* wide = Array(s, TYPE_R4, {4, 5, 2});
    CZrkData* c = Array(s, TYPE_CR4, {4, 3, 2});
    const int64_t huge = int64_t{1} << 62;
    struct Row {
        const char* func;
        const char* text;
        Op op;
    } rows[] = {
        {"cat('z')", "y resolutions not compatible",
         [&](CDataSpace& t) { return Cat(t, 2, a, wide); }},
        {"cut('y')", "y index > resolution", [&](CDataSpace& t) { return Cut(t, 1, a, 0, 3); }},
        {"cut('x')", "x index > resolution", [&](CDataSpace& t) { return Cut(t, 0, a, -1, 2); }},
        {"fill('x')", "invalid fill range",
         [&](CDataSpace& t) { return Fill(t, 0, a, 0, 4, Scalar(s, 1)); }},
        {"fill('z')", "fill index > resolution",
         [&](CDataSpace& t) { return Fill(t, 2, a, 2, 0, Scalar(s, 1)); }},
        {"strip('y')", "index > resolution",
         [&](CDataSpace& t) { return Strip(t, 1, a, 0, 9, Scalar(s, 1)); }},
        {"pad('x')", "resolution must be positive", [&](CDataSpace& t) { return Pad(t, 0, a, 0); }},
        {"padsim('t')", "resolution must be positive",
         [&](CDataSpace& t) { return PadSim(t, 3, a, -4); }},
        {"pad('y')", "out of memory", [&](CDataSpace& t) { return Pad(t, 1, a, huge); }},
        {"replicate('x')", "out of memory",
         [&](CDataSpace& t) { return Replicate(t, 0, a, huge); }},
        {"step('x')", "resolution must be at positive",
         [&](CDataSpace& t) { return Step(t, 0, 1, 0); }},
        {"ramp('v')", "out of memory", [&](CDataSpace& t) { return Ramp(t, 5, 0, 1, huge); }},
        {"reshape()", "requested size is greater than points in data",
         [&](CDataSpace& t) {
             const int64_t r[6] = {5, 5, 1, 1, 1, 1};
             return Reshape(t, a, r);
         }},
        {"reshape()", "resolution must be positive",
         [&](CDataSpace& t) {
             const int64_t r[6] = {0, 5, 1, 1, 1, 1};
             return Reshape(t, a, r);
         }},
        {"shape()", "requested size is greater than points in data",
         [&](CDataSpace& t) {
             return Shape(t, a, Array(s, TYPE_I4, {3}, {1e6, 1e6, 4}));
         }},
        {"permute()", "invalid direction",
         [&](CDataSpace& t) { return Permute(t, Text(s, "x"), a); }},
        {"permute()", "invalid direction",
         [&](CDataSpace& t) { return Permute(t, Text(s, "xyx"), a); }},
        {"trans('')", "invalid direction",
         [&](CDataSpace& t) { return Trans(t, Text(s, "q"), a); }},
        {"select()", "invalid mask", [&](CDataSpace& t) { return Select(t, wide, a); }},
        {"scatter()", "scatter must have at least 4 arguments",
         [&](CDataSpace& t) { return Scatter(t, Text(s, "x"), a, a, {}); }},
        {"gather()", "argument number mismatch",
         [&](CDataSpace& t) { return Gather(t, Text(s, "xy"), a, a, {a}); }},
        {"eflip()", "etl must be positive", [&](CDataSpace& t) { return EFlip(t, a, 0); }},
        {"esor('t')", "etl must be positive", [&](CDataSpace& t) { return ESort(t, a, 0); }},
        {"cross('y')", "y dimension must be 3",
         [&](CDataSpace& t) { return Cross(t, 1, wide, wide); }},
        {"dot('y')", "y resolution must match", [&](CDataSpace& t) { return Dot(t, 1, a, wide); }},
        {"stuff1d('x')", "index > resolution",
         [&](CDataSpace& t) { return Stuff1d(t, 0, a, c, 4); }},
        {"noise()", "resolution must be positive",
         [&](CDataSpace& t) {
             return Noise(t, Text(s, "gauss"), 1, Array(s, TYPE_I4, {2}, {3, -1}));
         }},
    };
    for (const Row& row : rows) {
        CDataSpace t;
        EXPECT_EQ(Failure(row.op, t), row.text) << row.func;
        EXPECT_EQ(err_func, row.func) << row.text;
    }
}

TEST(Structural, InputsStayUnchangedAndResultsKeepTheFirstSteps) {
    CDataSpace s;
    CZrkData* a = Array(s, TYPE_R4, {4, 3, 2});
    a->SetMm(0.5f, 2, 3, 4, 5, 6);
    CZrkData* b = Array(s, TYPE_CI2, {4, 3, 2});
    const std::vector<float> before = Values(a);
    CZrkData* one = Scalar(s, 1);
    const Op ops[] = {
        [&](CDataSpace& t) { return Cat(t, 1, a, b); },
        [&](CDataSpace& t) { return Chop(t, 0, a); },
        [&](CDataSpace& t) { return Cut(t, 2, a, 1, 1); },
        [&](CDataSpace& t) { return Fill(t, 1, a, 0, 1, one); },
        [&](CDataSpace& t) { return FillR(t, a, 0, 1, one); },
        [&](CDataSpace& t) { return FillInf(t, a, one); },
        [&](CDataSpace& t) { return Flip(t, 0, a); },
        [&](CDataSpace& t) { return Pad(t, 1, a, 7); },
        [&](CDataSpace& t) { return Replicate(t, 0, a, 9); },
        [&](CDataSpace& t) { return Shift(t, 2, a, one); },
        [&](CDataSpace& t) { return Stuff1d(t, 0, a, b, 1); },
        [&](CDataSpace& t) { return Strip(t, 0, a, 1, 2, one); },
        [&](CDataSpace& t) { return EFlip(t, a, 2); },
        [&](CDataSpace& t) { return ESort(t, a, 3); },
        [&](CDataSpace& t) { return Cross(t, 1, a, b); },
        [&](CDataSpace& t) { return Dot(t, 0, a, b); },
    };
    for (size_t k = 0; k < std::size(ops); ++k) {
        CDataSpace t;
        const CZrkData* r = ops[k](t);
        EXPECT_EQ(Values(a), before) << k;
        EXPECT_EQ(r->mm[0], 0.5f) << k;
        EXPECT_EQ(r->mm[5], 6.0f) << k;
    }
}

TEST(Structural, EdgeCasesOfSizes) {
    CDataSpace s;
    CZrkData* a = Array(s, TYPE_I2, {4, 3});
    CDataSpace t;
    EXPECT_EQ(Values(Fill(t, 0, a, 3, 1, Scalar(s, 9))), Values(a));  // j < i fills nothing
    EXPECT_EQ(Shape(Cut(t, 1, a, 2, 2)), (std::vector<res_t>{4, 1, 1, 1, 1, 1}));
    EXPECT_EQ(Values(Cut(t, 1, a, 2, 2)), (std::vector<float>{8, 9, 10, 11}));
    EXPECT_EQ(Values(Pad(t, 0, a, 4)), Values(a));
    EXPECT_EQ(Values(Pad(t, 0, a, 2)), (std::vector<float>{0, 1, 4, 5, 8, 9}));
    const int64_t r[6] = {5, 1, 1, 1, 1, 1};
    EXPECT_EQ(Values(Reshape(t, a, r)), (std::vector<float>{0, 1, 2, 3, 4}));
    EXPECT_EQ(Values(Step(t, 0, 0, 3)), (std::vector<float>{1, 1, 1}));
    EXPECT_EQ(Values(Step(t, 1, 2, 4)), (std::vector<float>{0, 0, 1, 1}));
    EXPECT_EQ(Values(Delta(t, 0, 1, 3)), (std::vector<float>{0, 1, 0}));
    EXPECT_EQ(Values(Ramp(t, 0, 1, 2, 5)), (std::vector<float>{1, 1.25, 1.5, 1.75, 2}));
    EXPECT_EQ(Values(Line(t, 3, 2, -1, 3)), (std::vector<float>{-1, 1, 3}));
    EXPECT_EQ(Shape(Line(t, 3, 2, -1, 3)), (std::vector<res_t>{1, 1, 1, 3, 1, 1}));
    EXPECT_EQ(Values(Eye(t, Text(s, "zx"), 2)), (std::vector<float>{1, 0, 0, 1}));
    EXPECT_EQ(Shape(Eye(t, Text(s, "zx"), 2)), (std::vector<res_t>{2, 1, 2, 1, 1, 1}));
    EXPECT_EQ(Shape(Squeeze(t, Array(s, TYPE_R4, {1, 3, 1, 2}))),
              (std::vector<res_t>{3, 2, 1, 1, 1, 1}));
}

TEST(Structural, TypesOfJoinedAndFilledArrays) {
    CDataSpace s, t;
    CZrkData* re = Array(s, TYPE_R4, {2}, {1, 2});
    CZrkData* cx = Array(s, TYPE_CR4, {1}, {3});
    CZrkData* joined = Cat(t, 0, re, cx);
    EXPECT_EQ(joined->type, TYPE_CR4);
    EXPECT_EQ(Values(joined), (std::vector<float>{1, 2, 3}));
    EXPECT_EQ(Cat(t, 0, Array(s, TYPE_I2, {1}), Array(s, TYPE_I2, {2}))->type, TYPE_I2);
    // The fill value is cast once to the array's type: 300.7 into n1 is 44.
    EXPECT_EQ(Values(Fill(t, 0, Array(s, TYPE_N1, {2}), 1, 1, Scalar(s, 300.7))),
              (std::vector<float>{0, 44}));
    // Complex i8 keeps a value beyond float precision.
    CZrkData* big = Array(s, TYPE_I8, {1});
    *static_cast<int64_t*>(big->data) = (int64_t{1} << 60) + 1;
    CZrkData* filled = Fill(t, 0, Array(s, TYPE_CI8, {2}), 0, 0, big);
    EXPECT_EQ(static_cast<int64_t*>(filled->data)[0], (int64_t{1} << 60) + 1);
}

TEST(Structural, ElementsOfEveryWidthMove) {
    CDataSpace s, t;
    for (int type : {TYPE_N1, TYPE_I2, TYPE_R4, TYPE_R8, TYPE_CR8}) {
        CZrkData* a = Array(s, type, {3, 2});
        EXPECT_EQ(Values(Flip(t, 0, a)), (std::vector<float>{2, 1, 0, 5, 4, 3})) << type;
        EXPECT_EQ(Values(RotXy(t, a)), (std::vector<float>{3, 0, 4, 1, 5, 2})) << type;
        EXPECT_EQ(Values(Replicate(t, 0, a, 6)),
                  (std::vector<float>{0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5}))
            << type;
    }
}

TEST(Structural, ReplicateChopAndShiftByLine) {
    CDataSpace s, t;
    CZrkData* a = Array(s, TYPE_R4, {4, 2});
    EXPECT_EQ(Values(Replicate(t, 0, a, 2)), (std::vector<float>{1, 3, 5, 7}));
    EXPECT_EQ(Values(Replicate(t, 1, a, 3)),
              (std::vector<float>{0, 1, 2, 3, 0, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(Values(Chop(t, 0, a)), (std::vector<float>{0, -1, 2, -3, 4, -5, 6, -7}));
    EXPECT_EQ(Values(Chop(t, 1, Array(s, TYPE_N1, {1, 2}, {5, 5}))), (std::vector<float>{5, 251}));
    // Each line along x shifts by the amount at its y.
    CZrkData* n = Array(s, TYPE_I4, {1, 2}, {1, -1});
    EXPECT_EQ(Values(Shift(t, 0, a, n)), (std::vector<float>{3, 0, 1, 2, 5, 6, 7, 4}));
}

TEST(Structural, EchoPlanarLineOrders) {
    CDataSpace s, t;
    // One column of 6 lines, 2 wide: lines numbered by their first element / 2.
    CZrkData* a = Array(s, TYPE_R4, {2, 6});
    EXPECT_EQ(Values(EFlip(t, a, 2)), (std::vector<float>{0, 1, 2, 3, 4, 5, 7, 6, 9, 8, 11, 10}));
    EXPECT_EQ(Values(ESort(t, a, 3)), (std::vector<float>{0, 1, 6, 7, 2, 3, 8, 9, 4, 5, 10, 11}));
    // 5 lines with etl 2: the last output line is not reached and stays zero.
    EXPECT_EQ(Values(ESort(t, Array(s, TYPE_R4, {1, 5}), 2)), (std::vector<float>{0, 2, 1, 3, 0}));
}

TEST(Structural, FillFamilyAndPicking) {
    CDataSpace s, t;
    CZrkData* a = Array(s, TYPE_R4, {3, 3}, {1, 1, 1, 1, 1, 1, 1, 1, 1});
    EXPECT_EQ(Values(FillR(t, a, 0, 0.5, Scalar(s, 0))),
              (std::vector<float>{1, 1, 1, 1, 0, 1, 1, 1, 1}));
    EXPECT_EQ(Values(StripR(t, a, 0, 1, Scalar(s, 0))),
              (std::vector<float>{0, 1, 0, 1, 1, 1, 0, 1, 0}));
    CZrkData* bad = Array(s, TYPE_R4, {3}, {1, NAN, INFINITY});
    EXPECT_EQ(Values(FillInf(t, bad, Scalar(s, 7))), (std::vector<float>{1, 7, 7}));
    CZrkData* mask = Array(s, TYPE_N1, {2, 2}, {1, 0, 0, 1});
    CZrkData* cube = Array(s, TYPE_I4, {2, 2, 3});
    CZrkData* picked = Select(t, mask, cube);
    EXPECT_EQ(Shape(picked), (std::vector<res_t>{2, 1, 3, 1, 1, 1}));
    EXPECT_EQ(Values(picked), (std::vector<float>{0, 3, 4, 7, 8, 11}));
    // gather: out[k] = a[index[k]], out of range keeps init; scatter writes the other way.
    CZrkData* src = Array(s, TYPE_R4, {4}, {10, 11, 12, 13});
    CZrkData* init = Array(s, TYPE_R4, {3}, {-1, -1, -1});
    CZrkData* index = Array(s, TYPE_I4, {3}, {3, 9, 0});
    EXPECT_EQ(Values(Gather(t, Text(s, "x"), src, init, {index})),
              (std::vector<float>{13, -1, 10}));
    EXPECT_EQ(Values(Scatter(t, Text(s, "x"), Array(s, TYPE_R4, {3}, {5, 6, 7}), init, {index})),
              (std::vector<float>{7, -1, -1}));
    EXPECT_EQ(Values(Stuff1d(t, 0, Array(s, TYPE_R4, {4}), Array(s, TYPE_R4, {3}, {9, 9, 9}), 2)),
              (std::vector<float>{0, 1, 9, 9}));
}

TEST(Structural, VectorProducts) {
    CDataSpace s, t;
    CZrkData* x = Array(s, TYPE_R4, {3}, {1, 0, 0});
    CZrkData* y = Array(s, TYPE_R8, {3}, {0, 1, 0});
    CZrkData* z = Cross(t, 0, x, y);
    EXPECT_EQ(z->type, TYPE_R8);
    EXPECT_EQ(Values(z), (std::vector<float>{0, 0, 1}));
    EXPECT_EQ(
        Values(Dot(t, 0, Array(s, TYPE_R4, {3}, {1, 2, 3}), Array(s, TYPE_R4, {3}, {4, 5, 6}))),
        (std::vector<float>{32}));
}

TEST(Structural, RandomArraysRepeat) {
    CDataSpace s, t;
    CZrkData* list = Array(s, TYPE_I4, {2}, {100, 100});
    const std::vector<float> first = Values(Noise(t, Text(s, "gauss"), 2, list));
    EXPECT_EQ(Values(Noise(t, Text(s, "normal"), 2, list)), first);
    double sum = 0, sq = 0;
    for (float v : first) sum += v, sq += v * v;
    const double mean = sum / first.size(), sd = std::sqrt(sq / first.size() - mean * mean);
    EXPECT_NEAR(mean, 0, 0.1);
    EXPECT_NEAR(sd, 2, 0.1);
    CZrkData* r = Rand(t, list);
    EXPECT_EQ(r->type, TYPE_CR4);
    EXPECT_EQ(std::memcmp(r->data, SRand(t, 777, list)->data, r->Bytes()), 0);
    EXPECT_NE(std::memcmp(r->data, SRand(t, 778, list)->data, r->Bytes()), 0);
}

// The block twister gives the standard engine's draws, across the joins of its blocks, for
// blocks shorter and longer than its state.
TEST(Structural, TwisterFollowsTheStandardEngine) {
    for (const uint64_t block :
         {uint64_t{1}, uint64_t{7}, uint64_t{623}, uint64_t{624}, uint64_t{1000}, CTwister::kBlock})
        for (const uint32_t seed : {0u, 777u, 0xffffffffu}) {
            CTwister blocks(seed, block);
            std::mt19937 engine(seed);
            uint64_t wrong = 0;
            for (uint64_t drawn = 0; drawn < std::max<uint64_t>(2 * block, 3000);) {
                const uint32_t* words = blocks.NextBlock();
                for (uint64_t k = 0; k < blocks.Block(); ++k, ++drawn)
                    wrong += CTwister::Temper(words[k]) != engine();
            }
            EXPECT_EQ(wrong, 0u) << "seed " << seed << ", block " << block;
        }
}

// The generators draw from the Mersenne twister seeded 777 (or the seed given), whose
// sequence NumPy's legacy RandomState reproduces; the transforms of the draws are redone there.
// The size is odd, and large enough for the Gaussian transform to run in more than one block.
TEST(Structural, RandomArraysFollowTheTwisterSequence) {
    CDataSpace s, t;
    CZrkData* list = Array(s, TYPE_I4, {2}, {513, 257});
    peer::Peer p;
    const std::pair<const char*, CZrkData*> made[] = {
        {"gauss", Noise(t, Text(s, "gauss"), 2.5, list)},
        {"uniform", Noise(t, Text(s, "uniform"), 2.5, list)},
        {"rand", SRand(t, 4321, list)}};
    ASSERT_TRUE(p.RunText(R"(
n = 513 * 257
def draws(seed, count):
    raw = np.random.RandomState(seed).randint(0, 2**32, size=count, dtype=np.uint32)
    return raw.astype(np.float64) * 2.0**-32
u = draws(777, n + 1)
r = np.sqrt(-2.0 * np.log(1.0 - u[0::2]))
a = 2.0 * np.pi * u[1::2]
g = np.empty(n + 1, np.float32)
g[0::2] = (r * np.cos(a)).astype(np.float32)
g[1::2] = (r * np.sin(a)).astype(np.float32)
g = (g[:n].astype(np.float64) * 2.5).astype(np.float32)
peer.save(FOLDER, "want_gauss", g.reshape(513, 257, order="F"))
w = ((draws(777, n) - 0.5) * (2.5 * np.sqrt(12.0))).astype(np.float32)
peer.save(FOLDER, "want_uniform", w.reshape(513, 257, order="F"))
c = draws(4321, 2 * n).astype(np.float32)
peer.save(FOLDER, "want_rand", (c[0::2] + 1j * c[1::2]).astype(np.complex64).reshape(513, 257, order="F"))
)"));
    // Only the Gaussian's logarithm, sine and cosine may differ from NumPy's in a last bit.
    for (const auto& [name, got] : made)
        EXPECT_TRUE(peer::Near(peer::FromRecord(got), p.Get(std::string("want_") + name),
                               std::string(name) == "gauss" ? 1e-7 : 0))
            << name;
}

TEST(Structural, FailureGoesToTheHistory) {
    CHeadlessHost host;
    CScopedHost scope(host);
    CDataSpace s, t;
    CZrkData* a = Array(s, TYPE_R4, {2});
    EXPECT_THROW(Flip(t, 0, nullptr), ZrkError);
    EXPECT_THROW(Cat(t, 1, a, Array(s, TYPE_R4, {3})), ZrkError);
    EXPECT_EQ(host.history,
              (std::vector<std::string>{"flip('x') failed\r\n", "error caught: FlipX:\r\n",
                                        "CatY failed\r\n"}));
}

}  // namespace

namespace {

TEST(Structural, RegionOperators) {
    CDataSpace& g = GlobalDataSpace();
    auto clear = [&] {
        while (g.Count() > 0) g.DelData(0);
    };
    clear();
    CDataSpace s, t;
    CZrkData* a = Array(s, TYPE_R4, {4, 3, 2});
    EXPECT_EQ(Failure([&](CDataSpace& u) { return Points2d(u, a); }, t), "2d roi must be active");
    EXPECT_EQ(Failure([&](CDataSpace& u) { return Crop1d(u, a); }, t), "1d roi does not exist");
    // A mask of the image exists, so set2droi rebuilds it: the rectangle x 1..2, y 0..1.
    GetRoiMask(1, 4, 3);
    CZrkData* corners = Array(s, TYPE_R4, {2, 2}, {2, 1, 1, 0});
    EXPECT_EQ(Values(Set2dRoi(t, Text(s, "rect"), corners)), (std::vector<float>{2, 1, 1, 0}));
    EXPECT_EQ(Shape(Crop2d(t, a)), (std::vector<res_t>{2, 2, 2, 1, 1, 1}));
    EXPECT_EQ(Values(Crop2d(t, a)), (std::vector<float>{1, 2, 5, 6, 13, 14, 17, 18}));
    EXPECT_EQ(Values(Points2d(t, a)), (std::vector<float>{1, 2, 5, 6, 13, 14, 17, 18}));
    EXPECT_EQ(Values(Fill2d(t, Array(s, TYPE_R4, {4, 3}), Scalar(s, 9))),
              (std::vector<float>{0, 9, 9, 3, 4, 9, 9, 7, 8, 9, 10, 11}));
    EXPECT_EQ(Values(Strip2d(t, Array(s, TYPE_R4, {4, 3}), Scalar(s, 9))),
              (std::vector<float>{9, 1, 2, 9, 9, 5, 6, 9, 9, 9, 9, 9}));
    EXPECT_EQ(Failure(
                  [&](CDataSpace& u) {
                      return Fill2d(u, Array(s, TYPE_R4, {5, 3}), a);
                  },
                  t),
              "invalid mask");
    EXPECT_EQ(Failure([&](CDataSpace& u) { return Set2dRoi(u, Text(s, "circle"), corners); }, t),
              "invalid roi type");
    EXPECT_EQ(
        Failure([&](CDataSpace& u) { return Set2dRoi(u, Text(s, "draw"), Array(s, TYPE_R4, {2})); },
                t),
        "y resolution must be at least 2");
    // 1d: roi_x from two numbers; low above high is invalid.
    Set1dRoi(t, Array(s, TYPE_R4, {2}, {1, 2}));
    EXPECT_EQ(Values(Crop1d(t, Array(s, TYPE_R4, {4}))), (std::vector<float>{1, 2}));
    EXPECT_EQ(Values(Strip1d(t, Array(s, TYPE_R4, {4}), Scalar(s, 0))),
              (std::vector<float>{0, 1, 2, 0}));
    Set1dRoi(t, Array(s, TYPE_R4, {2}, {3, 1}));
    EXPECT_EQ(Failure([&](CDataSpace& u) { return Fill1d(u, a, a); }, t), "1d roi is invalid");
    EXPECT_EQ(Failure([&](CDataSpace& u) { return Set1dRoi(u, Scalar(s, 1)); }, t),
              "x resolution must be at least 2");
    clear();
}

}  // namespace

namespace {

// Results of 32 MB and more are written with streaming stores, in gathered blocks.
TEST(Structural, LargeResultsTakeTheStreamingPath) {
    CDataSpace s, t;
    const res_t nx = 1024, ny = 8192;
    CZrkData* a = s.NewData(TYPE_R4, nx, ny, 1, 1, 1, 1, "");
    float* p = static_cast<float*>(a->data);
    for (uint64_t k = 0; k < nx * ny; ++k) p[k] = static_cast<float>(k);
    const float* shifted = static_cast<const float*>(Shift(t, 0, a, Scalar(s, 3))->data);
    const float* flipped = static_cast<const float*>(Flip(t, 1, a)->data);
    const float* padded = static_cast<const float*>(Pad(t, 0, a, nx + 5)->data);
    const float* joined = static_cast<const float*>(Cat(t, 1, a, a)->data);
    uint64_t wrong = 0;
    for (res_t y = 0; y < ny; ++y)
        for (res_t x = 0; x < nx; ++x) {
            wrong += shifted[y * nx + x] != p[y * nx + (x + nx - 3) % nx];
            wrong += flipped[y * nx + x] != p[(ny - 1 - y) * nx + x];
            wrong += padded[y * (nx + 5) + x] != p[y * nx + x];
            wrong += joined[(y + ny) * nx + x] != p[y * nx + x];
        }
    for (res_t y = 0; y < ny; ++y)
        for (res_t x = nx; x < nx + 5; ++x) wrong += padded[y * (nx + 5) + x] != 0;
    EXPECT_EQ(wrong, 0u);
}

}  // namespace
