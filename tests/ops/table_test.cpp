// Properties every row of the function table holds, over the rows this program links: each
// operator test program runs them on its own family.
#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "core/report.h"
#include "eval/function_table.h"
#include "tests/eval/eval_fixture.h"

namespace {

// Rows the language calls as name(...); the operators have rows of their own.
bool Callable(const CFuncRow* row) {
    return std::isalpha(static_cast<unsigned char>(row->name[0]));
}

std::string CallWith(const CFuncRow* row, int count, const std::string& arg) {
    std::string call = std::string("a = ") + row->name + "(";
    for (int k = 0; k < count; ++k) call += (k ? "," : "") + arg;
    return call + ");";
}

class FunctionRows : public EvalTest {
  protected:
    // Header and values of `expr` on fresh inputs (some functions delete theirs), or
    // "error: " and the raised text.
    std::pair<std::string, std::vector<double>> Fresh(const std::string& expr) {
        Clear();
        if (Run("d0 = reshape(rampx(2,25,24),2,3,2,2);")) {
            ADD_FAILURE() << "setup: " << ErrorText();
            return {};
        }
        if (Run("result_ = " + expr)) return {"error: " + err_msg, {}};
        const CZrkData* r = Find("result_");
        return {r->HeaderText(), Values(r)};
    }
};

TEST_F(FunctionRows, EveryHelpHasATitleArgumentsAndAnExampleOfItsName) {
    int helped = 0;
    for (const CFuncRow* row : FunctionTable()) {
        if (!row->help) continue;
        ++helped;
        SCOPED_TRACE(row->name);
        const CFuncHelp help = ReadHelp(row->help);
        EXPECT_GT(std::strlen(help.title), 0u);
        EXPECT_FALSE(help.arguments.empty());
        for (const auto& [argument, meaning] : help.arguments) {
            EXPECT_GT(std::strlen(argument), 0u);
            EXPECT_GT(std::strlen(meaning), 0u) << argument;
        }
        // wrap1d's examples have always shown its shorter forms wrapx(d0) and wrap("x",d0).
        const char* name = std::strcmp(row->name, "wrap1d") == 0 ? "wrap" : row->name;
        bool named = false;
        for (const char* line : help.lines) named = named || std::strstr(line, name);
        EXPECT_TRUE(named) << "no example uses the name";
    }
    EXPECT_GT(helped, 0);
}

// CallFunction refuses a count outside the row's limits before the handler runs.
TEST_F(FunctionRows, CountsOutsideTheLimitsAreRefused) {
    const std::string mismatch = "CallFunction() returned 'argument number mismatch'";
    int checked = 0;
    for (const CFuncRow* row : FunctionTable()) {
        if (!Callable(row)) continue;
        ++checked;
        EXPECT_EQ(Report(CallWith(row, row->max_args + 1, "1")), mismatch) << row->name;
        // No call has zero arguments in the language.
        if (row->min_args > 1) {
            EXPECT_EQ(Report(CallWith(row, row->min_args - 1, "1")), mismatch) << row->name;
        }
    }
    EXPECT_GT(checked, 0);
}

// A general function of a direction family takes its directions from the first argument.
TEST_F(FunctionRows, DirectionFamiliesRefuseAStringWithoutADirection) {
    ASSERT_EQ(Report("d0 = rampx(0,3,4);"), "");
    for (const CFuncRow* row : FunctionTable()) {
        if (row->family == FAMILY_PLAIN || row->family == FAMILY_DIMS) continue;
        for (const char* text : {"\"q\"", "\"\"", "\"w7\""}) {
            std::string call = std::string("a = ") + row->name + "(" + text;
            for (int k = 1; k < row->max_args; ++k) call += ",d0";
            call += ");";
            EXPECT_NE(Report(call).find("direction"), std::string::npos) << call;
        }
    }
}

// namex(args) is name("x", args): the same record, or the same failure.
TEST_F(FunctionRows, VariantsAreTheGeneralCallWithTheirDirection) {
    int compared = 0;
    for (const CFuncRow* general : FunctionTable()) {
        if (!general->help || general->family == FAMILY_PLAIN) continue;
        const std::string name = general->name;
        std::string args;
        for (int k = 1; k < general->max_args; ++k) args += k > 1 ? ",d0" : "d0";
        for (const CFuncRow* variant : FunctionTable()) {
            const std::string v = variant->name;
            if (variant->help || v.size() <= name.size() || v.compare(0, name.size(), name) != 0)
                continue;
            const std::string dirs = v.substr(name.size());
            if (dirs.find_first_not_of("xyztuvrs") != std::string::npos) continue;
            SCOPED_TRACE(v);
            ++compared;
            EXPECT_EQ(variant->min_args, general->min_args - 1);
            EXPECT_EQ(variant->max_args, general->max_args - 1);
            EXPECT_EQ(Fresh(v + "(" + args + ")"), Fresh(name + "(\"" + dirs + "\"," + args + ")"));
        }
    }
    EXPECT_GT(compared, 0);
}

}  // namespace
