// The function table, CallFunction and the rows of this folder.
#include <cmath>
#include <cstring>
#include <set>

#include "eval/function_table.h"
#include "tests/eval/eval_fixture.h"

namespace {

TEST(FunctionTable, OrderAndRows) {
    // the operators first, in their order
    const char* first[] = {"=", "-", "+", "*", "/", "*xy", "/xy", "iqdiv", "iqmul", "cast"};
    for (int k = 0; k < 10; ++k) EXPECT_STREQ(FunctionRow(k)->name, first[k]);
    std::set<std::string> names;
    for (const CFuncRow* row : FunctionTable()) {
        EXPECT_TRUE(names.insert(row->name).second) << "twice: " << row->name;
        EXPECT_LE(row->min_args, row->max_args) << row->name;
        if (row->help) {
            EXPECT_GT(std::strlen(ReadHelp(row->help).title), 0u) << row->name;
        }
    }
    int index = -1;
    EXPECT_EQ(FindFunction("log10(a)", &index), 5);
    EXPECT_STREQ(FunctionRow(index)->name, "log10");
    EXPECT_EQ(FunctionRow(FunctionCount()), nullptr);
}

TEST(FunctionTable, HelpRecords) {
    const CFuncHelp help = ReadHelp(FunctionRow(FunctionIndex("tile"))->help);
    EXPECT_STREQ(help.title, "tile: resize data set");
    ASSERT_EQ(help.arguments.size(), 3u);
    EXPECT_STREQ(help.arguments[0].first, "\"xyzt\"");
    EXPECT_STREQ(help.arguments[0].second, "direction of operation; choose multiple");
    ASSERT_EQ(help.lines.size(), 3u);
    EXPECT_STREQ(help.lines[0], "out = tile('t',data,t)");
    EXPECT_STREQ(FamilyVariants(FAMILY_PAIRS)[3], "zt direction");
    EXPECT_STREQ(FamilyVariants(FAMILY_PAIRS)[6], "zt direction");
    EXPECT_EQ(FamilyVariants(FAMILY_PLAIN), nullptr);
}

struct Call {
    const char* text;
    const char* header;
    std::vector<double> values;
};

class FunctionTest : public EvalTest {
  protected:
    void Check(const std::vector<Call>& cases) {
        for (const Call& c : cases) {
            Clear();
            ASSERT_EQ(0, Run("d = {1,4}; z = iq(3,4);"));
            const auto [header, values] = Eval(c.text);
            EXPECT_EQ(header, c.header) << c.text;
            ASSERT_EQ(values.size(), c.values.size()) << c.text;
            for (size_t k = 0; k < values.size(); ++k)
                EXPECT_NEAR(values[k], c.values[k], 1e-5 * (1 + std::fabs(c.values[k])))
                    << c.text << " element " << k;
        }
    }
};

TEST_F(FunctionTest, ComplexParts) {
    Check({{"i(z)", "r4", {3}},
           {"q(z)", "r4", {4}},
           {"mag(z)", "r4", {5}},
           {"mag2(z)", "r4", {25}},
           {"phase(z)", "r4", {std::atan2(4.0, 3.0)}},
           {"phase((cr8)iq(0,-1))", "r8", {-M_PI / 2}},
           {"conj(z)", "complex r4", {3, -4}},
           {"mp(2, 0)", "complex r4", {2, 0}},
           {"cexp(0)", "complex r4", {1, 0}},
           {"iqmul(z, z)", "complex r4", {9, 16}},
           {"iqdiv(z, iq(3,2))", "complex r4", {1, 2}}});
}

TEST_F(FunctionTest, Elementwise) {
    Check({{"sqrt(d)", "r4 [2]", {1, 2}},
           {"log10((r8)100)", "r8", {2}},
           {"log2(8)", "r4", {3}},
           {"exp(0)", "r4", {1}},
           {"pow(d, 2)", "r4 [2]", {1, 16}},
           {"atan2(1, 1)", "r4", {M_PI / 4}},
           {"fabs(-d)", "r4 [2]", {1, 4}},
           {"j0(0)", "r4", {1}},
           {"finite(d / 0)", "n1 [2]", {0, 0}},
           {"swapb((n2)258)", "n2", {513}},
           {"cast(\"complex r8\", d)", "complex r8 [2]", {1, 0, 4, 0}},
           {"malloc(\"i2\", 2, 1, 1, 2)", "i2 [2][1][1][2]", {0, 0, 0, 0}},
           {"tile(\"t\", d, 2)", "r4 [2][1][1][2]", {1, 4, 1, 4}},
           {"tilet(d, 2)", "r4 [2][1][1][2]", {1, 4, 1, 4}},
           {"tile(\"14\", 7, 2)", "n4 [2][1][1][2]", {7, 7, 7, 7}},
           {"log(d[1])", "r4", {std::log(4.0)}}});
}

TEST_F(EvalTest, CallFunctionChecks) {
    const struct {
        const char* text;
        const char* func;
        const char* msg;
    } failures[] = {{"a = log(1, 2)", "CallFunction()", "argument number mismatch"},
                    {"a = pow(1)", "CallFunction()", "argument number mismatch"},
                    {"a = log(new_name)", "CallFunction()", "null input data set"},
                    {"a = tile(\"w\", 1, 2)", "tile()", "invalid direction"},
                    {"a = tile(\"x\", 1, 0)", "tile('x')", "resolution must be positive"},
                    {"a = printf(\"%s\", 1)", "printf()", "invalid format"}};
    for (const auto& f : failures) {
        EXPECT_EQ(1, Run(f.text)) << f.text;
        EXPECT_EQ(err_func, f.func) << f.text;
        EXPECT_EQ(err_msg, f.msg) << f.text;
    }
    const std::vector<std::string> lines = {"error caught: eval_tilex:\r\n", "tile('x') failed\r\n",
                                            "error caught: eval_printf:\r\n"};
    EXPECT_EQ(host.history, lines);
}

TEST_F(EvalTest, PrintfWritesHistoryLines) {
    ASSERT_EQ(0, Run("a = printf(\"v=%5.1f\", {1.25, 2})"));
    ASSERT_GE(host.history.size(), 2u);
    EXPECT_EQ(host.history[0], "v=  1.2\r\n");
    EXPECT_EQ(host.history[1], "v=  2.0\r\n");
    ASSERT_EQ(0, Run("printf(\"%d\", iq(3,-4))"));
    EXPECT_EQ(host.history.back(), "3 -4\r\n");
}

}  // namespace
