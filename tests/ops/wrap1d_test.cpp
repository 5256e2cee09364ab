// wrap1d against numpy.unwrap along each of the six directions for r4, r8 and complex r4; huge
// and non-finite steps; the failure lines; and the call as the language writes it.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "core/data_space.h"
#include "core/host.h"
#include "core/report.h"
#include "ops/unwrap/unwrap_1d.h"
#include "tests/eval/eval_fixture.h"
#include "tests/peer.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

// Random walks with steps up to 1.5 pi, so that many steps wrap and few lie near pi.
CZrkData* Walk(CDataSpace& s, int type, unsigned seed) {
    CZrkData* a = s.NewData(type, 5, 4, 3, 3, 2, 2, "");
    std::mt19937 g(seed);
    std::uniform_real_distribution<double> u(-4, 4);
    const bool complex = a->IsComplex();
    for (uint64_t k = 0; k < a->Count(); ++k) {
        const double v = u(g);
        if (type == TYPE_R8) static_cast<double*>(a->data)[k] = v;
        if (type == TYPE_R4) static_cast<float*>(a->data)[k] = static_cast<float>(v);
        if (complex) {
            static_cast<float*>(a->data)[2 * k] = static_cast<float>(3 * std::cos(v));
            static_cast<float*>(a->data)[2 * k + 1] = static_cast<float>(3 * std::sin(v));
        }
    }
    return a;
}

TEST(Wrap1d, EveryDirectionMatchesNumpyUnwrap) {
    for (int type : {TYPE_R4, TYPE_R8, TYPE_CR4}) {
        SCOPED_TRACE(peer::DType(type));
        CDataSpace s;
        const CZrkData* a = Walk(s, type, 40 + type);
        peer::Peer p;
        p.Put("a", a);
        std::vector<std::string> ids;
        for (int d = 0; d < 6; ++d) ids.push_back(p.Case("numpy a " + std::to_string(d)));
        ASSERT_TRUE(p.Run("ops/unwrap_check.py"));
        for (int d = 0; d < 6; ++d) {
            SCOPED_TRACE(d);
            const std::vector<double> want = p.Get(ids[d]).Pairs();
            CDataSpace t;
            const CZrkData* r = Unwrap1d(t, d, a);
            ASSERT_EQ(r->Type(), TYPE_R4);
            ASSERT_TRUE(r->SameRes(*a));
            const float* got = static_cast<const float*>(r->data);
            for (uint64_t k = 0; k < r->Count(); ++k)
                ASSERT_NEAR(got[k], want[2 * k], 2e-5 * (1 + std::fabs(want[2 * k]))) << k;
        }
    }
}

// One step of 1e30 or an infinity is brought into range at once: the loop never turns for
// long, and a non-finite step spoils only what follows it on its line.
TEST(Wrap1d, HugeAndNonFiniteStepsEndQuickly) {
    CDataSpace s;
    CZrkData* a = s.NewData(TYPE_R8, 4, 2, 1, 1, 1, 1, "");
    const double inf = std::numeric_limits<double>::infinity();
    const double v[] = {0, 1e30, 1e30 + 1, 0, 0, 0.5, inf, 1};
    std::copy(v, v + 8, static_cast<double*>(a->data));
    CDataSpace t;
    const CZrkData* r = Unwrap1dX(t, a);
    const float* got = static_cast<const float*>(r->data);
    EXPECT_LE(std::fabs(got[1]), kPi + 1e-6);
    EXPECT_TRUE(std::isfinite(got[2]));
    EXPECT_FLOAT_EQ(got[5], 0.5f);
    EXPECT_FALSE(std::isfinite(got[6]));
}

class Wrap1dCall : public EvalTest {};

TEST_F(Wrap1dCall, TheLanguageReadsLettersOrDigitsAndLogsItsFailures) {
    ASSERT_EQ(Report("d0 = rampx(0,35,8); d1 = tiley(d0,3);"), "");
    const auto by_letter = Eval("wrap1d(\"x\", d1);");
    EXPECT_EQ(by_letter.first, "r4 [8][3]");
    EXPECT_EQ(Eval("wrap1d(\"1\", d1);"), by_letter);
    const double step = 5 - 2 * kPi;  // each step of 5 comes back by one cycle
    for (int k = 0; k < 8; ++k) EXPECT_NEAR(by_letter.second[k], k * step, 1e-4) << k;
    EXPECT_NE(Report("a = wrap1d(\"q\", d1);").find("direction"), std::string::npos);

    host.history.clear();
    CDataSpace t;
    EXPECT_THROW(Unwrap1dT(t, nullptr), ZrkError);
    ASSERT_FALSE(host.history.empty());
    EXPECT_EQ(host.history.back(), "error caught: Unwrap1dT:\r\n");
}

}  // namespace
