// The equation form's logic on a data space of its own.
#include "eval/equation_form.h"
#include "tests/eval/eval_fixture.h"

namespace {

TEST_F(EvalTest, EquationFormWorksOnTheSpaceItIsGiven) {
    CDataSpace mine;
    mine.SetUnique();
    CZrkData* a = mine.NewData(TYPE_R4, 3, 1, 1, 1, 1, 1, "a");
    float* v = static_cast<float*>(a->Data());
    v[0] = 1, v[1] = 2, v[2] = 3;
    CEquationFormOptions options;
    options.this_name = "a";
    options.update_range = true;
    ASSERT_EQ(0, FormEquEval(mine, "d = this * 2", options)) << ErrorText();
    const CZrkData* d = mine.FindData("d");
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(Values(d), (std::vector<double>{2, 4, 6}));
    EXPECT_TRUE(d->update_range);
    EXPECT_EQ(mine.FindData("this"), nullptr);
    EXPECT_EQ(GlobalDataSpace().Count(), 0);
    EXPECT_EQ(host.history.back(), "d = this * 2\r\n");

    // A name the space lacks gives no alias, so "this" is unknown.
    options.this_name = "nothing";
    EXPECT_EQ(1, FormEquEval(mine, "e = this * 2", options));
    EXPECT_EQ(mine.FindData("e"), nullptr);
}

}  // namespace
