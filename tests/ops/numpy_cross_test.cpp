// The reordering, padding, cutting and joining operators against NumPy on random 4-D arrays:
// the results must be the same bytes.
#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "core/elementwise.h"
#include "ops/permute.h"
#include "ops/structural_join.h"
#include "ops/structural_shape.h"
#include "tests/ops/op_test_util.h"
#include "tests/peer.h"

namespace {

struct Case {
    std::string line;  // op and arguments as numpy_check.py reads them
    std::function<CZrkData*(CDataSpace&)> run;
};

CZrkData* RandomArray(CDataSpace& s, int type, std::mt19937& g) {
    CZrkData* a = s.NewData(type, 5, 4, 3, 2, 1, 1, "");
    std::uniform_real_distribution<float> u(-100, 100);
    CDataCursor<float> c(a);
    for (uint64_t k = 0; k < a->Count(); ++k) {
        const float pair[2] = {u(g), u(g)};
        c.SetIQ(pair, k);
    }
    return a;
}

// One element width per type: 4 (r4), 8 (r8) and 16 (complex r8) bytes.
class NumpyCross : public ::testing::TestWithParam<int> {};

TEST_P(NumpyCross, StructuralOperatorsMatchNumpy) {
    const int type = GetParam();
    CDataSpace s;
    std::mt19937 g(12345);
    CZrkData* a = RandomArray(s, type, g);
    CZrkData* b = RandomArray(s, type, g);
    const res_t size[4] = {5, 4, 3, 2};

    std::vector<Case> cases;
    auto text = [&](const std::string& t) { return Text(s, t.c_str()); };
    auto num = [&](double v) { return Scalar(s, v); };
    for (int d = 0; d < 4; ++d) {
        const std::string l(1, "xyzt"[d]);
        const int64_t n = static_cast<int64_t>(size[d]);
        cases.push_back({"flip " + l, [=](CDataSpace& t) { return Flip(t, d, a); }});
        for (int64_t k : {int64_t{2}, int64_t{-3}, n + 1})
            cases.push_back({"shift " + l + " " + std::to_string(k),
                             [=](CDataSpace& t) { return Shift(t, d, a, num(k)); }});
        cases.push_back({"pad " + l + " " + std::to_string(n + 3),
                         [=](CDataSpace& t) { return Pad(t, d, a, n + 3); }});
        for (int64_t k : {n + 3, n + 4})
            cases.push_back({"padsim " + l + " " + std::to_string(k),
                             [=](CDataSpace& t) { return PadSim(t, d, a, k); }});
        cases.push_back({"cut " + l + " 1 " + std::to_string(n - 1),
                         [=](CDataSpace& t) { return Cut(t, d, a, 1, n - 1); }});
        cases.push_back({"cat " + l, [=](CDataSpace& t) { return Cat(t, d, a, b); }});
        cases.push_back({"tile " + l + " " + std::to_string(2 * n + 1), [=](CDataSpace& t) {
                             res_t res[6] = {5, 4, 3, 2, 1, 1};
                             res[d] = 2 * n + 1;
                             return TileTo(t, a, res);
                         }});
    }
    for (const char* order : {"tzyx", "yx", "zxty", "ty", "xtz"})
        cases.push_back({std::string("permute ") + order,
                         [=](CDataSpace& t) { return Permute(t, text(order), a); }});
    for (const char* pair : {"xy", "yt", "xz", "tz"})
        cases.push_back(
            {std::string("trans ") + pair, [=](CDataSpace& t) { return Trans(t, text(pair), a); }});
    cases.push_back({"rotxy", [=](CDataSpace& t) { return RotXy(t, a); }});
    cases.push_back({"rotmxy", [=](CDataSpace& t) { return RotMXy(t, a); }});
    cases.push_back({"reshape 4 5 3 2", [=](CDataSpace& t) {
                         const int64_t r[6] = {4, 5, 3, 2, 1, 1};
                         return Reshape(t, a, r);
                     }});
    cases.push_back({"reshape 3 3 2 1", [=](CDataSpace& t) {
                         const int64_t r[6] = {3, 3, 2, 1, 1, 1};
                         return Reshape(t, a, r);
                     }});

    peer::Peer p;
    p.Put("a", a);
    p.Put("b", b);
    std::vector<std::string> ids;
    for (const Case& c : cases) ids.push_back(p.Case(c.line));
    ASSERT_TRUE(p.Run("ops/numpy_check.py"));

    for (size_t k = 0; k < cases.size(); ++k) {
        SCOPED_TRACE(cases[k].line);
        CDataSpace t;
        const CZrkData* r = cases[k].run(t);
        ASSERT_NE(r, nullptr);
        EXPECT_TRUE(peer::Same(peer::FromRecord(r), p.Get(ids[k])));
    }
}

INSTANTIATE_TEST_SUITE_P(Types, NumpyCross,
                         ::testing::Values(int{TYPE_R4}, int{TYPE_R8}, int{TYPE_CR8}),
                         [](const auto& info) { return std::string(peer::DType(info.param)); });

}  // namespace
