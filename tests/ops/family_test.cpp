// A direction family declared once: its general row, its variants, its place in the browser
// and the refusals of the table, with a throw-away family that flips.
#include <stdexcept>
#include <string>

#include "ops/op_rows.h"
#include "ops/permute.h"
#include "tests/eval/eval_fixture.h"

namespace {

const char* const kHelpTwist[] = {
    "twist data",       "\"xyzt\"", "direction of operation", "data",
    "input data array", nullptr,    "out = twist('x',data)",  nullptr};

// Between flip (1250) and the next laid-out name.
constexpr int kTwistPlace = 1255;

void DeclareTwist() {
    static const bool kDone = [] {
        RegisterFunctions(
            {Directions<"twist", kChooseMultiple,
                        [](CDataSpace& t, int d, CZrkData** a) { return Flip(t, d, a[0]); }>(
                {.args = 2,
                 .help = kHelpTwist,
                 .place = kTwistPlace,
                 .family = FAMILY_XYZT,
                 .rows = 4})});
        return true;
    }();
    (void)kDone;
}

class FamilyTest : public EvalTest {
  protected:
    void SetUp() override {
        EvalTest::SetUp();
        DeclareTwist();
    }
};

TEST_F(FamilyTest, OneDeclarationMakesTheGeneralRowAndItsVariantsInTheBrowserOrder) {
    const int general = FunctionIndex("twist");
    ASSERT_GE(general, 0);
    const CFuncRow* row = FunctionRow(general);
    EXPECT_EQ(row->min_args, 2);
    EXPECT_EQ(row->max_args, 2);
    EXPECT_EQ(row->family, FAMILY_XYZT);
    EXPECT_STREQ(ReadHelp(row->help).title, "twist data");
    // the variants follow, hidden, one argument fewer; u and v have no rows
    const char* variants[] = {"twistx", "twisty", "twistz", "twistt"};
    for (int d = 0; d < 4; ++d) {
        const CFuncRow* v = FunctionRow(general + 1 + d);
        ASSERT_NE(v, nullptr);
        EXPECT_STREQ(v->name, variants[d]);
        EXPECT_EQ(v->min_args, 1);
        EXPECT_EQ(v->help, nullptr);
    }
    EXPECT_EQ(FunctionIndex("twistu"), -1);
    // after flip and its variants, before the row that followed them
    EXPECT_STREQ(FunctionRow(general - 1)->name, "flipt");
    EXPECT_STREQ(FunctionRow(general + 5)->name, "ft");
}

TEST_F(FamilyTest, GeneralAndVariantRowsCallTheOperatorByDirection) {
    ASSERT_EQ(Run("a = y{{1,2,3},{4,5,6}}"), 0);
    EXPECT_EQ(Eval("twisty(a)"), Eval("flipy(a)"));
    EXPECT_EQ(Eval("twist(\"y\",a)"), Eval("flipy(a)"));
    // choose multiple: x, then y on its result
    EXPECT_EQ(Eval("twist(\"yx\",a)"), Eval("flipy(flipx(a))"));
    EXPECT_EQ(Report("b = twist(\"q\",a)"), "twist() returned 'invalid direction'");
    EXPECT_EQ(Report("b = twistx(a,a)"), "CallFunction() returned 'argument number mismatch'");
}

TEST_F(FamilyTest, TableRefusesATakenNameOrPlace) {
    auto decl = [](const char* name, int place) {
        return Handler(name, FunctionRow(FunctionIndex("flipx"))->handler,
                       {.args = 1, .help = nullptr, .place = place});
    };
    const int count = FunctionCount();
    EXPECT_THROW(RegisterFunctions({decl("twistx", 99990)}), std::logic_error);
    EXPECT_THROW(RegisterFunctions({decl("untwist", kTwistPlace)}), std::logic_error);
    EXPECT_THROW(RegisterFunctions({decl("a_name_longer_than_a_row", 99991)}), std::logic_error);
    EXPECT_EQ(FunctionCount(), count);
}

}  // namespace
