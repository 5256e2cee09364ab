// The operators: one table per precedence level of input, expected header and values.
#include <cmath>

#include "core/math_errors.h"
#include "eval/matrix_hook.h"
#include "tests/eval/eval_fixture.h"

namespace {

struct Case {
    const char* text;
    const char* header;
    std::vector<double> values;
};

class OperatorTest : public EvalTest {
  protected:
    void Check(const std::vector<Case>& cases) {
        for (const Case& c : cases) {
            Clear();
            ASSERT_EQ(0,
                      Run("a = {1,2,3,4}; b = (i2)5; z = iq({1,2},{1,-1}); w = iq({3,-1},{0,2});"));
            const auto [header, values] = Eval(c.text);
            EXPECT_EQ(header, c.header) << c.text;
            ASSERT_EQ(values.size(), c.values.size()) << c.text;
            for (size_t k = 0; k < values.size(); ++k)
                EXPECT_NEAR(values[k], c.values[k], 1e-5 * (1 + std::fabs(c.values[k])))
                    << c.text << " element " << k;
        }
    }
};

TEST_F(OperatorTest, Multiplicative) {
    Check({{"6 * 7", "r4", {42}},
           {"7 / 2", "r4", {3.5}},
           {"7 % 3", "r4", {1}},
           {"-7 % 3", "r4", {-1}},
           {"a * 2", "r4 [4]", {2, 4, 6, 8}},
           {"b * b", "r4", {25}},
           {"z * w", "complex r4 [2]", {3, 3, 0, 5}},
           {"z / w", "complex r4 [2]", {1.0 / 3, 1.0 / 3, -0.8, -0.6}},
           {"(r8)1 / 3", "r8", {1.0 / 3}},
           {"2 * 3 + 4 * 5", "r4", {26}}});
}

TEST_F(OperatorTest, AdditiveAndTiling) {
    Check({{"a + 1", "r4 [4]", {2, 3, 4, 5}},
           {"b + 1", "r4", {6}},
           {"(ci2)b + 1", "complex r4", {6, 0}},
           {"{1,2,3,4} + {10,20,30}", "r4 [4]", {11, 22, 33, 14}},
           {"y{{1,2},{3,4}} + {10,20}", "r4 [2][2]", {11, 22, 13, 24}},
           {"1 - 2 - 3", "r4", {-4}},
           {"z + 1", "complex r4 [2]", {2, 1, 3, -1}}});
}

TEST_F(OperatorTest, ShiftsAndBits) {
    Check({{"1 << 4", "r4", {16}},
           {"256 >> 2", "r4", {64}},
           {"6 & 3", "n4", {2}},
           {"6 | 3", "n4", {7}},
           {"6 ^ 3", "n4", {5}},
           {"(i1)-1 & (n2)255", "i2", {255}},
           {"1 << 2 + 1", "r4", {8}},
           {"~(n1)1", "n1", {254}}});
}

TEST_F(OperatorTest, ComparisonsAndLogic) {
    Check({{"a > 2", "n1 [4]", {0, 0, 1, 1}},
           {"a <= 2", "n1 [4]", {1, 1, 0, 0}},
           {"a == 3", "n1 [4]", {0, 0, 1, 0}},
           {"a != 3", "n1 [4]", {1, 1, 0, 1}},
           {"z == (cr4)x{1,3}", "complex n1 [2]", {1, 0, 0, 0}},
           {"a > 1 && a < 4", "n1 [4]", {0, 1, 1, 0}},
           {"a < 2 || a > 3", "n1 [4]", {1, 0, 0, 1}},
           {"1 < 2 == 1", "n1", {1}},
           {"!a", "n1 [4]", {0, 0, 0, 0}},
           {"!0", "n1", {1}}});
}

TEST_F(OperatorTest, UnaryAndTernary) {
    Check({{"-1", "i4", {-1}},
           {"-(n1)200", "i1", {56}},
           {"-a", "r4 [4]", {-1, -2, -3, -4}},
           {"+b", "i2", {5}},
           {"a > 2 ? a : 0", "r4 [4]", {0, 0, 3, 4}},
           {"0 ? 1 : 2", "r4", {2}},
           {"(r8)1 ? 2 : 3", "r4", {2}}});
}

struct Failure {
    const char* text;
    const char* func;
    const char* msg;
};

TEST_F(EvalTest, FailuresReportTheirRoutine) {
    // The matrix operators are absent until their family installs itself.
    const MatrixOperator installed = SetMatrixOperator(nullptr);
    const Failure cases[] = {
        {"c = 1.5 & 1", "&", "invalid data type"},
        {"c = z_new + 1", "+", "invalid data type"},
        {"c = (cr4)1 << 1", "<<", "internal error, no operator"},
        {"c = ~1.5", "~", "internal error, no operator"},
        {"c = #", "Lex()", "unknown token"},
        {"c = \xc3\xa9", "Lex()", "unknown token"},
        // the parser reduces the assignment before it looks at the refused token
        {"c = 1 $ 2", "Lex()", "unknown token"},
        {"c = (1", "parse()", "syntax error"},
        {"c = 1 +", "parse()", "syntax error"},
        {"", "parse()", "syntax error"},
        {"c = 2 *xz 3", "CEval::EvalMatrixMul", "matrix operators not available"},
        {"sin", "parse()", "syntax error"},
    };
    for (const Failure& f : cases) {
        EXPECT_EQ(1, Run(f.text)) << f.text;
        EXPECT_EQ(err_func, f.func) << f.text;
        EXPECT_EQ(err_msg, f.msg) << f.text;
    }
    SetMatrixOperator(installed);
}

TEST_F(EvalTest, RefusedTokenAfterACompleteExpressionIsTheLexersReport) {
    EXPECT_EQ(Run("a = 1 $ 2"), 1);
    EXPECT_EQ(ErrorText(), "Lex() returned 'unknown token' at: '$ 2'");
}

TEST_F(EvalTest, ErrorTextNamesFileAndPlace) {
    err_file = "s1";
    err_func = "Assignment()";
    err_msg = "out of memory";
    err_at = "b*c";
    EXPECT_EQ(ErrorText(), "in file s1: Assignment() returned 'out of memory' at: 'b*c'");
    err_file.clear();
    err_at.clear();
    EXPECT_EQ(ErrorText(), "Assignment() returned 'out of memory'");
}

TEST_F(EvalTest, AssignmentTakesTypeAndKeepsUndo) {
    ASSERT_EQ(0, Run("a = {1,2,3};"));
    ASSERT_EQ(0, Run("a = 3;"));
    CZrkData* a = Find("a");
    EXPECT_EQ(a->HeaderText(), "n4");
    EXPECT_TRUE(a->HasUndo());
    EXPECT_EQ(a->undo_text, "undo equation");
    ASSERT_EQ(0, Run("a = 3.0"));
    EXPECT_EQ(Find("a")->HeaderText(), "r4");
    ASSERT_EQ(0, Run("a += 2"));
    EXPECT_EQ(Values(Find("a")), std::vector<double>{5});
    // the right side is no assignment
    EXPECT_EQ(1, Run("c = a = 7"));
    EXPECT_EQ(err_msg, "syntax error");
}

TEST_F(EvalTest, FailedEquationKeepsCompletedWork) {
    ASSERT_EQ(0, Run("b = 9;"));
    EXPECT_EQ(1, Run("a=1; b=log(x); c=2;"));
    EXPECT_EQ(err_msg, "null input data set");
    EXPECT_EQ(Values(Find("a")), std::vector<double>{1});
    EXPECT_EQ(Values(Find("b")), std::vector<double>{9});
    EXPECT_FALSE(Find("b")->HasUndo());
    EXPECT_EQ(Find("c"), nullptr);
    EXPECT_EQ(Find("x"), nullptr);  // the typeless name is gone
}

TEST_F(EvalTest, IncrementInPlaceWithoutUndo) {
    ASSERT_EQ(0, Run("a = (i2){1,2};"));
    ASSERT_EQ(0, Run("a++"));
    ASSERT_EQ(0, Run("--a; ++a; ++a;"));
    CZrkData* a = Find("a");
    EXPECT_EQ(a->HeaderText(), "i2 [2]");
    EXPECT_EQ(Values(a), (std::vector<double>{3, 4}));
    EXPECT_FALSE(a->HasUndo());
}

TEST_F(EvalTest, LexerChoosesByLength) {
    // a name with a dot can't be typed when its prefix exists: make it directly
    ASSERT_EQ(0, Run("ab = 1;"));
    CZrkData* abx = GlobalDataSpace().NewData(TYPE_R4, 1, 1, 1, 1, 1, 1, "ab.x");
    *static_cast<float*>(abx->Data()) = 2;
    // "ab.x" is a record; "ab.y" is the name ab, ".", y
    EXPECT_EQ(0, Run("c = ab.x + 1"));
    EXPECT_EQ(Values(Find("c")), std::vector<double>{3});
    EXPECT_EQ(1, Run("c = ab.y"));
    EXPECT_EQ(err_msg, "syntax error");
    // a record hides the function of the same name
    CZrkData* log = GlobalDataSpace().NewData(TYPE_R4, 1, 1, 1, 1, 1, 1, "log");
    *static_cast<float*>(log->Data()) = 5;
    ASSERT_EQ(0, Run("c = log"));
    EXPECT_EQ(Values(Find("c")), std::vector<double>{5});
    // a longer name is a new name, not the function
    ASSERT_EQ(0, Run("log2x = 4; c = log2(log2x);"));
    EXPECT_EQ(Values(Find("c")), std::vector<double>{2});
    ASSERT_EQ(0, Run("c = 12; d = 1e3; e2 = 1.; /* comment */ f = 7; // trailing"));
    EXPECT_EQ(Find("c")->HeaderText(), "n4");
    EXPECT_EQ(Find("d")->HeaderText(), "r4");
    EXPECT_EQ(Find("e2")->HeaderText(), "r4");
    ASSERT_EQ(0, Run("s = \"ab\"; t = 'q';"));
    EXPECT_EQ(Values(Find("s")), (std::vector<double>{'a', 'b', 0}));
    EXPECT_EQ(Values(Find("t")), (std::vector<double>{'q', 0}));
}

TEST_F(EvalTest, MathErrorsAreZeroAndCounted) {
    ASSERT_EQ(0, Run("a = log({0, 1, -1}); b = exp(-1000); c = exp(1000); d = sqrt(-1);"));
    EXPECT_EQ(Values(Find("a")), (std::vector<double>{0, 0, 0}));
    EXPECT_EQ(math_error_count[MATH_SINGULARITY], 1);
    EXPECT_EQ(math_error_count[MATH_DOMAIN], 2);
    EXPECT_EQ(math_error_count[MATH_UNDERFLOW], 1);
    EXPECT_EQ(math_error_count[MATH_OVERFLOW], 1);
    MathErrorReport();
    ASSERT_EQ(host.messages.size(), 1u);
    EXPECT_EQ(host.messages[0],
              "2 DOMAIN errors\n1 SINGULARITY errors\n1 OVERFLOW errors\n1 UNDERFLOW errors\n0 "
              "TOTAL LOSS OF SIGNIFICANCE errors\n0 PARTIAL LOSS OF SIGNIFICANCE errors\n");
    ASSERT_EQ(0, Run("e = 1"));
    EXPECT_EQ(MathErrorTotal(), 0);
}

TEST_F(EvalTest, BadInputNeverCrashes) {
    EXPECT_EQ(1, Run(std::string(10000, '(') + "1" + std::string(10000, ')')));
    EXPECT_EQ(err_msg, "stack overflow");
    EXPECT_EQ(1, Run("a = ((1]"));
    EXPECT_EQ(1, Run("a = {1,2"));
    EXPECT_EQ(1, Run("a = \"abc"));
    EXPECT_EQ(1, Run(std::string("a = \x01\xff")));
    std::string big = "a = 1";
    while (big.size() < (1u << 20)) big += "+1";
    EXPECT_EQ(0, Run(big));
    EXPECT_EQ(Values(Find("a")), std::vector<double>{double((big.size() - 5) / 2 + 1)});
    EXPECT_EQ(0, Run("n" + std::string(300, 'x') + " = 1"));
}

}  // namespace
