// clip and thresh against numpy.clip and numpy.where for every element type (complex data
// component by component), and as the language calls them.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "core/element_type.h"
#include "core/report.h"
#include "core/zrk_error.h"
#include "ops/threshold.h"
#include "tests/eval/eval_fixture.h"
#include "tests/ops/op_test_util.h"
#include "tests/peer.h"

namespace {

// Random bytes: integers over their whole range, floats with NaN, infinities and huge values.
CZrkData* RandomBytes(CDataSpace& s, int type, std::mt19937& g) {
    CZrkData* a = s.NewData(type, 6, 5, 4, 1, 1, 1, "");
    auto* p = static_cast<unsigned char*>(a->data);
    for (uint64_t k = 0; k < a->Bytes(); ++k) p[k] = static_cast<unsigned char>(g());
    return a;
}

// Puts `v` into component k of `a`, in a's own type.
void SetComponent(CZrkData* a, uint64_t k, double v) {
    WithComponent(a->type, [&](auto zero) {
        using T = decltype(zero);
        static_cast<T*>(a->data)[k] = static_cast<T>(v);
    });
}

// Limits inside each type's range, so NumPy keeps the type, and a float pair exact in r4.
struct Limits {
    std::string low, high, value;
};
Limits LimitsOf(int type) {
    const int base = type % 10;
    if (IsFloatType(type)) return {"-20.5", "30.25", "-7.5"};
    if (base >= TYPE_N1) return {"20", "200", "7"};
    return {"-50", "60", "-7"};
}

TEST(ThresholdNumpy, EveryTypeMatchesClipAndWhere) {
    CDataSpace s, t;
    std::mt19937 g(4711);
    peer::Peer p;
    struct Result {
        std::string id;
        CZrkData* got;
    };
    std::vector<Result> results;
    for (int type = 0; type < TYPE_COUNT; ++type) {
        CZrkData* a = RandomBytes(s, type, g);
        const Limits l = LimitsOf(type);
        // Components on the limits and just beyond them; NaN and infinities for floats.
        const double lo = std::stod(l.low), hi = std::stod(l.high);
        const double edges[] = {lo, hi, lo - 1, hi + 1};
        for (int k = 0; k < 4; ++k) SetComponent(a, k, edges[k]);
        if (IsFloatType(type)) {
            const double inf = std::numeric_limits<double>::infinity();
            const double specials[] = {std::nan(""), inf, -inf};
            for (int k = 0; k < 3; ++k) SetComponent(a, 4 + k, specials[k]);
        }
        const std::string name = std::string("a") + std::to_string(type);
        p.Put(name, a);
        CZrkData* value = Scalar(s, std::stod(l.value));
        results.push_back(
            {p.Case("clip " + name + " " + l.low + " " + l.high + " 0"), Clip(t, a, lo, hi)});
        results.push_back({p.Case("where " + name + " " + l.low + " " + l.high + " " + l.value),
                           Thresh(t, a, lo, hi, value)});
    }
    ASSERT_TRUE(p.RunText(R"(
import warnings
warnings.simplefilter("ignore")
def parts(x, f):
    return f(x.real) + 1j * f(x.imag) if np.iscomplexobj(x) else f(x)
for line in open(FOLDER + "/cases.txt"):
    id, op, name, lo, hi, v = line.split()
    a = peer.load(FOLDER, name)
    num = float if "." in lo else int
    lo, hi, v = num(lo), num(hi), num(v)
    if op == "clip":
        out = parts(a, lambda x: np.clip(x, x.dtype.type(lo), x.dtype.type(hi)))
    else:
        out = parts(a, lambda x: np.where((x < lo) | (x > hi), x.dtype.type(v), x))
    peer.save(FOLDER, id, out)
)"));
    for (const Result& r : results) {
        const peer::Array want = p.Get(r.id);
        EXPECT_EQ(peer::FromRecord(r.got).dtype, peer::DType(r.got->type)) << r.id;
        EXPECT_TRUE(peer::Near(peer::FromRecord(r.got), want, 0))
            << r.id << " " << TypeName(r.got->type);
    }
}

TEST(Threshold, IntegerLimitsRoundInwardsAndStayInRange) {
    CDataSpace s, t;
    CZrkData* a = Array(s, TYPE_I1, {5}, {-128, -3, 2, 3, 127});
    // -1000 is below every i1 value; 2.5 allows at most 2.
    EXPECT_EQ(Values(Clip(t, a, -1000, 2.5)), (std::vector<float>{-128, -3, 2, 2, 2}));
    EXPECT_EQ(Values(Clip(t, a, -2.5, 1e9)), (std::vector<float>{-2, -2, 2, 3, 127}));
    EXPECT_EQ(Values(Clip(t, a, -std::numeric_limits<double>::infinity(), 0)),
              (std::vector<float>{-128, -3, 0, 0, 0}));
}

TEST(Threshold, BadLimitsRaiseTheirTexts) {
    CDataSpace s, t;
    CZrkData* a = Array(s, TYPE_R4, {3});
    CZrkData* zero = Scalar(s, 0);
    const auto raised = [](auto&& f) {
        try {
            f();
        } catch (const ZrkError& e) {
            return std::string(e.what());
        }
        return std::string("nothing raised");
    };
    EXPECT_EQ(raised([&] { Clip(t, a, 2, 1); }), "low must not be above high");
    EXPECT_EQ(raised([&] { Thresh(t, a, 2, 1, zero); }), "low must not be above high");
    EXPECT_EQ(raised([&] { Clip(t, a, std::nan(""), 1); }), "low must not be above high");
    CZrkData* b = Array(s, TYPE_I2, {3});
    EXPECT_EQ(raised([&] { Clip(t, b, 2.2, 2.8); }),
              "no value of the data type lies between low and high");
    // Equal limits are a range of one value.
    EXPECT_EQ(Values(Clip(t, a, 1, 1)), (std::vector<float>{1, 1, 1}));
}

class ThresholdRows : public EvalTest {};

TEST_F(ThresholdRows, LanguageCallsKeepTypeAndShape) {
    ASSERT_EQ(Report("d = (i2) reshape(rampx(-3,4,8),2,4); c = clip(d,-1,2);"
                     " h = thresh(d,-1,2,9);"),
              "");
    EXPECT_EQ(Find("c")->type, TYPE_I2);
    EXPECT_EQ(Find("c")->ny, 4u);
    EXPECT_EQ(Values(Find("c")), (std::vector<double>{-1, -1, -1, 0, 1, 2, 2, 2}));
    EXPECT_EQ(Values(Find("h")), (std::vector<double>{9, 9, -1, 0, 1, 2, 9, 9}));
    // Complex: i and q on their own.
    ASSERT_EQ(Report("z = iq({-5, 0.5, 5}, {3, -3, 0.25}); y = clip(z,-1,1);"), "");
    EXPECT_EQ(Values(Find("y")), (std::vector<double>{-1, 1, 0.5, -1, 1, 0.25}));
}

TEST_F(ThresholdRows, FailuresReportUnderTheirFunction) {
    ASSERT_EQ(Report("d = {1, 2, 3};"), "");
    EXPECT_EQ(Run("c = clip(d, 3, 1);"), 1);
    EXPECT_EQ(std::string(err_func), std::string("clip()"));
    EXPECT_EQ(std::string(err_msg), std::string("low must not be above high"));
    EXPECT_NE(host.history_text.find("error caught: eval_clip:"), std::string::npos);
    EXPECT_EQ(Run("c = thresh(d, 3, 1, 0);"), 1);
    EXPECT_EQ(std::string(err_func), std::string("thresh()"));
    EXPECT_EQ(Run("c = clip(d, 1);"), 1);
    EXPECT_EQ(std::string(err_msg), std::string("argument number mismatch"));
}

}  // namespace
