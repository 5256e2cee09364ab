// Lists, index reads and writes, casts, size casts and suffixes.
#include "tests/eval/eval_fixture.h"

namespace {

struct Case {
    const char* text;
    const char* header;  // or "error: ..." with the report
    std::vector<double> values;
};

class LiteralTest : public EvalTest {
  protected:
    void Check(const std::vector<Case>& cases) {
        for (const Case& c : cases) {
            Clear();
            ASSERT_EQ(0, Run("n = {0,1,2,3,4,5,6,7,8}; m = y{{1,2,3},{4,5,6}}; s = (i2){1,2,3};"));
            const auto [header, values] = Eval(c.text);
            EXPECT_EQ(header, c.header) << c.text;
            EXPECT_EQ(values, c.values) << c.text;
        }
    }
};

TEST_F(LiteralTest, Lists) {
    Check({{"{1,2,3}", "r4 [3]", {1, 2, 3}},
           {"{1,}", "n4", {1}},
           {"{1,2.5}", "r4 [2]", {1, 2.5}},
           {"2{3,4}", "r4 [1][2]", {3, 4}},
           {"y{{1,2},{3,4}}", "r4 [2][2]", {1, 2, 3, 4}},
           {"z{m,m}", "r4 [3][2][2]", {1, 2, 3, 4, 5, 6, 1, 2, 3, 4, 5, 6}},
           {"x{m,{7,8}}", "error: InitListX() returned 'y dimensions inconsistent' at: '}'", {}},
           {"y{{1,2},{3}}", "error: InitListY() returned 'x dimensions inconsistent' at: '}'", {}},
           {"_{{1,2},{3,4}}", "r4 [4]", {1, 3, 2, 4}},
           {"_y{y{1,2},y{3,4}}", "r4 [1][4]", {1, 3, 2, 4}},
           {"{}", "error: parse() returned 'syntax error' at: '}'", {}}});
}

TEST_F(LiteralTest, IndexReads) {
    Check({{"n[]", "r4 [9]", {0, 1, 2, 3, 4, 5, 6, 7, 8}},
           {"n[*]", "r4 [9]", {0, 1, 2, 3, 4, 5, 6, 7, 8}},
           {"n[3]", "r4", {3}},
           {"n[2:4]", "r4 [3]", {2, 3, 4}},
           {"n[0:2:8]", "r4 [5]", {0, 2, 4, 6, 8}},
           {"n[1.9]", "r4", {1}},
           {"m[*][1]", "r4 [3]", {4, 5, 6}},
           {"m[2][0:1]", "r4 [1][2]", {3, 6}},
           {"m[n[1]][1]", "r4", {5}},
           {"n[9]", "error: IndexXyzt() returned 'index > resolution'", {}},
           {"n[-1]", "error: IndexXyzt() returned 'index > resolution'", {}},
           {"n[1:9]", "error: IndexXyzt() returned 'end index > resolution'", {}},
           {"n[1:0:5]", "error: IndexXyzt() returned 'inc = 0'", {}},
           {"n[0:9:5]", "error: IndexXyzt() returned 'inc > resolution'", {}},
           {"n[0:-9:5]", "error: IndexXyzt() returned 'inc < -resolution'", {}},
           {"n[1][1][1][1][1][1][1]", "error: Array() returned 'too many dimensions'", {}}});
}

TEST_F(LiteralTest, CastsAndSuffixes) {
    Check({{"(n1)300.7", "n1", {44}},
           {"(u2)-1", "n2", {65535}},
           {"(cr4)2", "complex r4", {2, 0}},
           {"(complex i2)s", "complex i2 [3]", {1, 0, 2, 0, 3, 0}},
           {"(r4)iq(1,2)", "r4", {1}},
           {"([4])2.5", "r4 [4]", {2.5, 2.5, 2.5, 2.5}},
           {"([2][])s", "i2 [2]", {1, 2}},
           {"([0])2", "error: Tile() returned 'x res <1'", {}},
           {"([1:2])2", "error: Tile() returned 'invalid list definition'", {}},
           {"m.nx", "n8", {3}},
           {"m.ny", "n8", {2}},
           {"m.nt", "n8", {1}},
           {"s.type", "error: DataInfo() returned 'invalid .suffix' at: '.type'", {}}});
}

TEST_F(EvalTest, IndexAssignmentWritesABlock) {
    ASSERT_EQ(0, Run("a = (i2){1,2,3};"));
    ASSERT_EQ(0, Run("a[1] = 5"));
    EXPECT_EQ(Find("a")->HeaderText(), "i2 [3]");
    EXPECT_EQ(Values(Find("a")), (std::vector<double>{1, 5, 3}));
    EXPECT_TRUE(Find("a")->HasUndo());
    ASSERT_EQ(0, Run("a[1] += 2; a[0] *= {3,4};"));
    EXPECT_EQ(Values(Find("a")), (std::vector<double>{3, 28, 3}));
    ASSERT_EQ(0, Run("m = y{{1,2},{3,4}}; m[0][1] = {9,8};"));
    EXPECT_EQ(Values(Find("m")), (std::vector<double>{1, 2, 9, 8}));

    const struct {
        const char* text;
        const char* func;
        const char* msg;
    } failures[] = {{"a[2] = {7,8}", "=", "x index out of range"},
                    {"a[3] = 1", "Assignment()", "x index invalid"},
                    {"m[0][2] = 1", "Assignment()", "y index invalid"},
                    {"a[1:2] = 1", "Assignment()", "internal error, invalid stack"}};
    for (const auto& f : failures) {
        EXPECT_EQ(1, Run(f.text)) << f.text;
        EXPECT_EQ(err_func, f.func) << f.text;
        EXPECT_EQ(err_msg, f.msg) << f.text;
        EXPECT_EQ(Values(Find("a")), (std::vector<double>{3, 28, 3})) << f.text;
    }
}

}  // namespace
