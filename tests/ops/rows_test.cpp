// The structural functions as the equation language calls them: by name and by argument,
// and their reports.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/data_space.h"
#include "core/host.h"
#include "core/report.h"
#include "eval/eval.h"
#include "eval/function_table.h"
#include "tests/eval/eval_fixture.h"
#include "tests/ops/op_test_util.h"

namespace {

class Rows : public EvalTest {
  protected:
    std::vector<double> Of(const char* name) { return Values(Find(name)); }
    std::vector<res_t> ShapeOf(const char* name) { return Shape(Find(name)); }
};

TEST_F(Rows, ByNameAndByArgumentAreTheSameCall) {
    ASSERT_EQ(Report("d0 = rampx(0,3,4); d1 = rampx(4,7,4);"), "");
    const struct {
        const char* by_name;
        const char* by_argument;
    } pairs[] = {
        {"caty(d0,d1)", "cat(\"y\",d0,d1)"},
        {"catx(d0,d1)", "cat(\"1\",d0,d1)"},
        {"flipx(d0)", "flip(\"x\",d0)"},
        {"padx(d0,6)", "pad(\"x\",d0,6)"},
        {"padsimy(d0,3)", "padsim(\"y\",d0,3)"},
        {"shiftx(d0,1)", "shift(\"x\",d0,1)"},
        {"cutx(d0,1,2)", "cut(\"x\",d0,1,2)"},
        {"fillx(d0,1,2,9)", "fill(\"x\",d0,1,2,9)"},
        {"fillr(d0,0,1,9)", "fill(\"r\",d0,0,1,9)"},
        {"stripx(d0,1,2,0)", "strip(\"x\",d0,1,2,0)"},
        {"chopx(d0)", "chop(\"x\",d0)"},
        {"stepz(1,3)", "step(\"z\",1,3)"},
        {"deltat(1,3)", "delta(\"t\",1,3)"},
        {"linez(2,1,3)", "line(\"z\",2,1,3)"},
        {"rampv(0,1,3)", "ramp(\"v\",0,1,3)"},
        {"stuff1dx(d0,d1,2)", "stuff1d(\"x\",d0,d1,2)"},
    };
    for (const auto& p : pairs) {
        ASSERT_EQ(Report(std::string("a = ") + p.by_name + "; b = " + p.by_argument + ";"), "")
            << p.by_name;
        EXPECT_EQ(ShapeOf("a"), ShapeOf("b")) << p.by_name;
        EXPECT_EQ(Of("a"), Of("b")) << p.by_name;
    }
    ASSERT_EQ(Report("c = caty(d0,d1);"), "");
    EXPECT_EQ(ShapeOf("c"), (std::vector<res_t>{4, 2, 1, 1, 1, 1}));
    EXPECT_EQ(Of("c"), (std::vector<double>{0, 1, 2, 3, 4, 5, 6, 7}));
    // Choose multiple: both directions in turn.
    ASSERT_EQ(Report("e = reshape(rampx(0,5,6),3,2); f = flip(\"xy\",e);"), "");
    EXPECT_EQ(Of("f"), (std::vector<double>{5, 4, 3, 2, 1, 0}));
    // cat has no u member; stuff1d has all six.
    EXPECT_EQ(FunctionIndex("catu"), -1);
    EXPECT_NE(FunctionIndex("stuff1dv"), -1);
}

TEST_F(Rows, Reports) {
    ASSERT_EQ(Report("d0 = rampx(0,3,4);"), "");
    const struct {
        const char* line;
        const char* report;
    } rows[] = {
        {"a = cat(\"z\",d0);", "CallFunction() returned 'argument number mismatch'"},
        {"a = cat(\"q\",d0,d0);", "cat() returned 'invalid direction'"},
        {"a = cutx(d0,2,4);", "cut('x') returned 'x index > resolution'"},
        {"a = padx(d0,0);", "pad('x') returned 'resolution must be positive'"},
        {"a = stepx(0,0);", "step('x') returned 'resolution must be at positive'"},
        {"a = esort(d0,0);", "esor('t') returned 'etl must be positive'"},
        {"a = reshape(d0,5);",
         "reshape() returned 'requested size is greater than points in data'"},
        {"a = padx(d0,1e12);", "pad('x') returned 'out of memory'"},
        {"a = reshape(d0,1,1,1,1,1,1,1);", "CallFunction() returned 'argument number mismatch'"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Report(row.line), row.report) << row.line;
    }
    EXPECT_EQ(Of("d0"), (std::vector<double>{0, 1, 2, 3}));
}

TEST_F(Rows, CatMultipleJoinsByNameAndCatmdDeletes) {
    ASSERT_EQ(Report("a1 = rampx(2,3,2); a0 = rampx(0,1,2); a2 = rampx(4,5,2); b = rampx(9,9,2);"),
              "");
    ASSERT_EQ(Report("c = catmx(a0,a2);"), "");
    EXPECT_EQ(Of("c"), (std::vector<double>{0, 1, 2, 3, 4, 5}));
    ASSERT_EQ(Report("d = catmd(\"y\",a0,a1);"), "");
    EXPECT_EQ(ShapeOf("d"), (std::vector<res_t>{2, 2, 1, 1, 1, 1}));
    EXPECT_EQ(GlobalDataSpace().FindData("a0"), nullptr);
    EXPECT_EQ(GlobalDataSpace().FindData("a1"), nullptr);
    EXPECT_NE(GlobalDataSpace().FindData("a2"), nullptr);
}

TEST_F(Rows, RegionsThroughTheDataSpace) {
    ASSERT_EQ(Report("d = reshape(rampx(0,15,16),4,4); set1droi(rampx(1,2,2));"), "");
    ASSERT_EQ(Report("a = crop1d(d);"), "");
    EXPECT_EQ(ShapeOf("a"), (std::vector<res_t>{2, 4, 1, 1, 1, 1}));
    const std::string report = Report("b = fill2d(d,0);");
    EXPECT_EQ(report.substr(0, report.find(" at: ")),
              "fill2d() returned 'roi_mask does not exist'");
}

}  // namespace
