// Matrix operators through the language and from code: products, divisions, inverses,
// diagonals and traces against NumPy (matrix_check.py) on random stacks of every working
// type, and the failure texts, log lines and size limits.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <complex>
#include <random>
#include <sstream>

#include "eval/function_table.h"
#include "ops/matrix.h"
#include "tests/eval/eval_fixture.h"
#include "tests/ops/op_test_util.h"
#include "tests/peer.h"

namespace {

using Res = std::array<res_t, 6>;

std::string Letters(int p, int q) { return {"xyztuv"[p], "xyztuv"[q]}; }

// Random values in (-1, 1), whole numbers in [-3, 3] for integer types; `boost` is added to
// the diagonal of every (p, q) plane, which keeps the planes far from singular.
void Fill(CZrkData* a, std::mt19937& g, int p = 0, int q = 1, float boost = 0) {
    std::uniform_real_distribution<float> u(-1, 1);
    std::uniform_int_distribution<int> whole(-3, 3);
    CDataCursor<float> c(a);
    res_t res[6];
    a->GetRes(res);
    uint64_t stride[6], s = 1;
    for (int d = 0; d < 6; ++d) stride[d] = s, s *= res[d];
    for (uint64_t k = 0; k < a->Count(); ++k) {
        float pair[2] = {u(g), u(g)};
        if (!IsFloatType(a->type)) pair[0] = static_cast<float>(whole(g)), pair[1] = 0;
        const uint64_t i = k / stride[p] % res[p], j = k / stride[q] % res[q];
        if (i == j) pair[0] += boost;
        c.SetIQ(pair, k);
    }
}

// Cases whose references NumPy computes in one run: each keeps its operands with the peer
// and our result here, and Check compares them element by element.
class NumpyCases {
  public:
    // `result` null records a failure of ours, which fails the case.
    void Add(const std::string& label, const std::string& op, int p, int q, double thresh,
             const CZrkData* a, const CZrkData* b, const CZrkData* result) {
        const std::string name = "m" + std::to_string(entries_.size());
        std::ostringstream line;
        line << op << ' ' << p << ' ' << q << ' ' << thresh << ' ' << name << "_a";
        peer_.Put(name + "_a", a);
        if (b) {
            line << ' ' << name << "_b";
            peer_.Put(name + "_b", b);
        }
        Entry e{label, peer_.Case(line.str()), {}, {}};
        if (result) {
            e.shape = Shape(result);
            e.values = peer::FromRecord(result).Complex();
        }
        entries_.push_back(std::move(e));
    }

    void Check(double tolerance = 2e-4) {
        ASSERT_TRUE(peer_.Run("ops/matrix_check.py"));
        for (const Entry& e : entries_) {
            SCOPED_TRACE(e.label);
            const peer::Array want = peer_.Get(e.id);
            ASSERT_EQ(e.shape, want.Shape6());
            const std::vector<std::complex<double>> ref = want.Complex();
            ASSERT_EQ(ref.size(), e.values.size()) << "reference too short";
            double scale = 1;
            for (const auto& v : ref) scale = std::max(scale, std::abs(v));
            for (size_t i = 0; i < ref.size(); ++i)
                ASSERT_LE(std::abs(e.values[i] - ref[i]), tolerance * scale)
                    << "element " << i << ": " << e.values[i] << " vs " << ref[i];
        }
    }

  private:
    struct Entry {
        std::string label;
        std::string id;
        std::vector<res_t> shape;
        std::vector<std::complex<double>> values;
    };

    peer::Peer peer_;
    std::vector<Entry> entries_;
};

class MatrixTest : public EvalTest {
  protected:
    CZrkData* Named(const char* name, int type, const Res& r) {
        GlobalDataSpace().DelData(name);
        CZrkData* a = GlobalDataSpace().NewData(type, r[0], r[1], r[2], r[3], r[4], r[5], name);
        std::memset(a->data, 0, a->Bytes());
        return a;
    }
    // A copy of a record that outlives the names of the equation.
    CZrkData* Keep(const CZrkData* a) {
        CZrkData* r = kept.NewData(a->type, a->nx, a->ny, a->nz, a->nt, a->nu, a->nv, "");
        std::memcpy(r->data, a->data, a->Bytes());
        return r;
    }
    // Runs `equation` and keeps c; null (with the failure in the trace) when it failed.
    const CZrkData* RunC(const std::string& equation) {
        if (Run(equation)) {
            ADD_FAILURE() << equation << ": " << ErrorText();
            return nullptr;
        }
        return Keep(Find("c"));
    }

    CDataSpace kept;
    std::mt19937 g{20261123};
};

const int kTypes[] = {TYPE_R4, TYPE_R8, TYPE_CR4, TYPE_CR8};

// The sixteen products and fifteen divisions, each with operands of a stack that the other
// operand's single plane is broadcast over, in every working type and a few mixed ones.
TEST_F(MatrixTest, ProductsAndDivisionsOfEveryPairMatchNumpy) {
    struct Pair {
        int p, q;
        bool divide;
    };
    std::vector<Pair> pairs;
    for (bool divide : {false, true})
        for (int p = 0; p < 6; ++p)
            for (int q = p + 1; q < 6; ++q) pairs.push_back({p, q, divide});
    pairs.push_back({5, 4, false});
    ASSERT_EQ(pairs.size(), 31u);

    NumpyCases cases;
    int n = 0;
    for (const Pair& pr : pairs) {
        const int ta = kTypes[n % 4], tb = n % 5 == 0 ? kTypes[(n + 1) % 4] : ta;
        ++n;
        Res ra = {1, 1, 1, 1, 1, 1}, rb = ra;
        ra[pr.p] = 3, ra[pr.q] = 4;
        rb[pr.p] = 4, rb[pr.q] = pr.divide ? 4 : 2;
        // a stacks along its first free direction, b along the second.
        int outer[4], k = 0;
        for (int d = 0; d < 6; ++d)
            if (d != pr.p && d != pr.q) outer[k++] = d;
        ra[outer[0]] = 2;
        rb[outer[1]] = 3;
        CZrkData* a = Named("a", ta, ra);
        CZrkData* b = Named("b", tb, rb);
        Fill(a, g);
        Fill(b, g, pr.p, pr.q, pr.divide ? 4.0f : 0.0f);
        const std::string eq =
            std::string("c = a ") + (pr.divide ? "/" : "*") + Letters(pr.p, pr.q) + " b";
        const CZrkData* c = RunC(eq);
        if (c) {
            EXPECT_EQ(c->type, Promote(ta, tb)) << eq;
        }
        cases.Add(eq, pr.divide ? "div" : "mul", pr.p, pr.q, 0, Keep(a), Keep(b), c);
    }

    // A plain matrix acting on a stack, and whole numbers staying whole.
    CZrkData* m = Named("m", TYPE_R4, {3, 3, 1, 1, 1, 1});
    CZrkData* s = Named("s", TYPE_R4, {3, 3, 10, 1, 1, 1});
    Fill(m, g);
    Fill(s, g);
    const CZrkData* c = RunC("c = m *xy s");
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(Shape(c), (std::vector<res_t>{3, 3, 10, 1, 1, 1}));
    cases.Add("m *xy s", "mul", 0, 1, 0, Keep(m), Keep(s), c);
    CZrkData* i = Named("i", TYPE_I2, {2, 3, 2, 1, 1, 1});
    CZrkData* j = Named("j", TYPE_I2, {3, 4, 1, 1, 1, 1});
    Fill(i, g);
    Fill(j, g);
    c = RunC("c = i *xy j");
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->type, TYPE_I2);
    cases.Add("i *xy j", "mul", 0, 1, 0, Keep(i), Keep(j), c);
    cases.Check();
}

// minv against numpy.linalg.pinv with rcond = thresh: well-conditioned stacks, rank-deficient
// stacks whose small singular values the threshold must drop, and a threshold above 1.
TEST_F(MatrixTest, InverseMatchesPinvWithTheSameCutoff) {
    NumpyCases cases;
    const struct { int p, q; } pairs[] = {{0, 1}, {1, 3}, {2, 5}, {0, 4}};
    int n = 0;
    for (int type : kTypes) {
        for (const auto& pr : pairs) {
            const std::string dirs = Letters(pr.p, pr.q);
            Res ra = {1, 1, 1, 1, 1, 1};
            ra[pr.p] = ra[pr.q] = 5;
            const int stack = pr.p == 0 ? (pr.q == 1 ? 2 : 1) : 0;
            ra[stack] = 3;
            CZrkData* a = Named("a", type, ra);
            Fill(a, g, pr.p, pr.q, 3.0f);
            std::string eq = "c = minv(\"" + dirs + "\", a, 1e-6)";
            cases.Add(eq, "minv", pr.p, pr.q, 1e-6, Keep(a), nullptr, RunC(eq));
            eq = "c = minv(\"" + dirs + "\", a, 2)";
            cases.Add(eq, "minv", pr.p, pr.q, 2, Keep(a), nullptr, RunC(eq));

            // Rank 2 planes: x (5 x 2) times y (2 x 5), over a stack of 2.
            Res rx = {1, 1, 1, 1, 1, 1}, ry = rx;
            rx[pr.p] = 5, rx[pr.q] = 2, ry[pr.p] = 2, ry[pr.q] = 5;
            rx[stack] = 2;
            Fill(Named("x", type, rx), g);
            Fill(Named("y", type, ry), g);
            ASSERT_EQ(Run("r = x *" + dirs + " y"), 0) << ErrorText();
            eq = "c = minv(\"" + dirs + "\", r, 1e-3)";
            cases.Add(eq, "minv", pr.p, pr.q, 1e-3, Keep(Find("r")), nullptr, RunC(eq));
            ++n;
        }
    }
    cases.Check(5e-4);
}

TEST_F(MatrixTest, DiagAndTraceMatchNumpy) {
    NumpyCases cases;
    for (int type : {TYPE_R4, TYPE_CR8, TYPE_I2}) {
        CZrkData* sq = Named("sq", type, {2, 1, 4, 4, 1, 1});
        CZrkData* vec = Named("vec", type, {3, 1, 1, 2, 1, 1});
        Fill(sq, g);
        Fill(vec, g);
        cases.Add("diag zt square", "diag", 2, 3, 0, Keep(sq), nullptr,
                  RunC("c = diag(\"zt\", sq)"));
        cases.Add("diag xz vector", "diag", 0, 2, 0, Keep(vec), nullptr,
                  RunC("c = diag(\"xz\", vec)"));
        const CZrkData* c = Find("c");
        if (c) {
            EXPECT_EQ(c->type, type) << "diag keeps the element type";
        }
        CDataSpace t;
        const CZrkData* tr = Trace(t, Text(t, "zt"), sq);
        EXPECT_EQ(tr->type, MatrixType(type));
        cases.Add("trace zt", "trace", 2, 3, 0, Keep(sq), nullptr, tr);
    }
    cases.Check();
}

TEST_F(MatrixTest, SmallAndDegenerateInverses) {
    const double inf = std::numeric_limits<double>::infinity();
    const struct {
        const char* setup;
        const char* equation;
        std::vector<double> want;  // i and q interleaved when complex
    } cases[] = {
        {"a = (r4)4", "c = minv(\"xy\", a, 0)", {0.25}},
        {"a = (r8)-8", "c = minv(\"xy\", a, 0.5)", {-0.125}},
        {"a = (cr4)iq(1, 1)", "c = minv(\"xy\", a, 1e-6)", {0.5, -0.5}},
        {"a = (r4)0", "c = minv(\"xy\", a, 0)", {inf}},
        // All values zero: the largest is 0, so any threshold passes 0 and gives 1 / 0.
        {"a = (r4)0", "c = minv(\"xy\", a, 1e-6)", {inf}},
        {"a = eye(\"xy\", 2) * 3", "c = minv(\"xy\", a, 2)", {0, 0, 0, 0}},
        {"a = eye(\"zt\", 2) * 4", "c = minv(\"zt\", a, 1)", {0.25, 0, 0, 0.25}},
    };
    for (const auto& k : cases) {
        SCOPED_TRACE(k.equation);
        ASSERT_EQ(Run(k.setup), 0) << ErrorText();
        ASSERT_EQ(Run(k.equation), 0) << ErrorText();
        const std::vector<double> got = Values(Find("c"));
        ASSERT_EQ(got.size(), k.want.size());
        for (size_t i = 0; i < got.size(); ++i) EXPECT_FLOAT_EQ(got[i], k.want[i]) << i;
    }
}

TEST_F(MatrixTest, FailuresReportTextsAndLogLines) {
    Named("a34", TYPE_R4, {3, 4, 1, 1, 1, 1});
    Named("a33", TYPE_R4, {3, 3, 1, 1, 1, 1});
    Named("a44", TYPE_CR4, {4, 4, 1, 1, 1, 1});
    Named("auv", TYPE_R8, {1, 1, 1, 1, 3, 2});
    const struct {
        const char* equation;
        const char* func;
        const char* msg;
        std::vector<std::string> history;
    } cases[] = {
        {"c = a34 *xy a34",
         "CEval::EvalMatrixMul",
         "matrix size incompatible",
         {"MatrixMul is flaky\r\n", "MatrixMulXy zarnik is flaky\r\n"}},
        {"c = auv *vu auv",
         "CEval::EvalMatrixMul",
         "matrix size incompatible",
         {"MatrixMul is flaky\r\n", "MatrixMulVu zarnik is flaky\r\n"}},
        {"c = a34 /xy a34",
         "CEval::EvalMatrixDiv",
         "inverse matrix needs to be square",
         {"MatrixDivXyunknown error\r\n"}},
        {"c = a34 /xy a33",
         "CEval::EvalMatrixDiv",
         "matrix size incompatible",
         {"MatrixDivXyunknown error\r\n"}},
        {"c = a34 *yx a34", "CEval::EvalMatrixMul", "invalid direction", {}},
        {"c = a33 /vu a33", "CEval::EvalMatrixDiv", "invalid direction", {}},
        {"c = minv(\"yx\", a34, 1e-6)",
         "minv('xy')",
         "inverse matrix needs to be square",
         {"error caught: MatrixInverseXy:\r\n"}},
        {"c = minv(\"x\", a33, 0)",
         "minv('')",
         "invalid direction",
         {"error caught: MatrixInverse:\r\n"}},
        {"c = minv(\"xy\", a33)", "CallFunction()", "argument number mismatch", {}},
        {"c = diag(\"xy\", a34)",
         "diag('xy')",
         "matrix size incompatible",
         {"diag('xy') failed\r\n"}},
    };
    for (const auto& k : cases) {
        SCOPED_TRACE(k.equation);
        host.history.clear();
        EXPECT_EQ(Run(k.equation), 1);
        EXPECT_EQ(err_func, k.func);
        EXPECT_EQ(err_msg, k.msg);
        EXPECT_EQ(host.history, k.history);
    }
}

TEST_F(MatrixTest, StatusShowsTheOperator) {
    Fill(Named("a", TYPE_R4, {1, 1, 1, 2, 2, 1}), g);
    ASSERT_EQ(Run("c = a *tu a"), 0) << ErrorText();
    ASSERT_FALSE(host.status.empty());
    EXPECT_EQ(host.status.front(), "*tu");
    host.status.clear();
    ASSERT_EQ(Run("c = a /tu (a + eye(\"tu\", 2) * 4)"), 0) << ErrorText();
    ASSERT_FALSE(host.status.empty());
    EXPECT_EQ(host.status.front(), "/tu");
}

// Sizes past a 32-bit LAPACK integer stop before anything is allocated: the records below
// claim 2^31 rows over a buffer of a few bytes, which no operator may touch.
TEST(MatrixSizes, LapackIntegerLimitComesBeforeAllocation) {
    const res_t big = res_t{1} << 31;
    float dummy[4] = {};
    CZrkData sq, tall, wide;
    sq.SetHeaderData(TYPE_R4, big, big, 1, 1, 1, 1, dummy);
    tall.SetHeaderData(TYPE_CR4, big, 1, 1, 1, 1, 1, dummy);
    wide.SetHeaderData(TYPE_CR4, 1, big, 1, 1, 1, 1, dummy);
    const char* text = "sample points can not be represented as an MKL_INT";
    CDataSpace temp;
    CZrkData* xy = Text(temp, "xy");
    const int before = temp.Count();
    auto raised = [](auto&& f) -> std::string {
        try {
            f();
        } catch (const ZrkError& e) {
            return e.what();
        }
        return "nothing raised";
    };
    EXPECT_EQ(raised([&] { MatrixInverse(temp, xy, &sq, 0); }), text);
    EXPECT_EQ(raised([&] { MatrixMul(temp, &tall, &wide, 0, 1); }), text);
    EXPECT_EQ(raised([&] { MatrixDiv(temp, &tall, &sq, 0, 1); }), "matrix size incompatible");
    EXPECT_EQ(raised([&] { MatrixDiv(temp, &wide, &sq, 0, 1); }), text);
    EXPECT_EQ(raised([&] { SvdWork w(TYPE_CR8, big, 2); }), text);
    EXPECT_EQ(temp.Count(), before);
}

// NaN and infinity reach LAPACK as they are: the operator either fails as a whole with
// "unknown error" or gives non-finite values for the bad plane and the right inverse for the
// good one; it never crashes.
TEST_F(MatrixTest, NonFiniteValuesNeverCrash) {
    for (int type : kTypes) {
        for (double bad : {std::nan(""), std::numeric_limits<double>::infinity()}) {
            SCOPED_TRACE(std::string(TypeName(type)) + " " + std::to_string(bad));
            CZrkData* a = Named("a", type, {2, 2, 2, 1, 1, 1});
            // Plane 0 is diag(2, 4); plane 1 holds the bad value.
            const float values[8] = {2, 0, 0, 4, 1, static_cast<float>(bad), 0, 1};
            CDataCursor<float> cur(a);
            for (int k = 0; k < 8; ++k) cur.SetI(values[k], k);
            host.history.clear();
            for (const char* eq : {"c = minv(\"xy\", a, 1e-6)", "c = eye(\"xy\", 2) /xy a"}) {
                if (Run(eq)) {
                    EXPECT_EQ(err_msg, "unknown error") << eq;
                    EXPECT_FALSE(host.history.empty()) << eq;
                    continue;
                }
                const std::vector<double> v = Values(Find("c"));
                const int comps = IsComplexType(type) ? 2 : 1;
                ASSERT_EQ(v.size(), 8u * comps);
                EXPECT_NEAR(v[0], 0.5, 1e-5) << eq;
                EXPECT_NEAR(v[3 * comps], 0.25, 1e-5) << eq;
                bool any_bad = false;
                for (size_t k = 4 * comps; k < v.size(); ++k) any_bad |= !std::isfinite(v[k]);
                EXPECT_TRUE(any_bad) << eq;
            }
        }
    }
}

// Trace is an operator for code only.
TEST(MatrixRows, TraceIsNoFunctionOfTheLanguage) { EXPECT_EQ(FunctionIndex("trace"), -1); }

}  // namespace
