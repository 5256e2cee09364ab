// Scripts in both forms, argument binding, visibility, and the equation bar.
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "core/script_space.h"
#include "eval/equation_bar.h"
#include "tests/eval/eval_fixture.h"

namespace {

class ScriptTest : public EvalTest {
  protected:
    void SetUp() override {
        EvalTest::SetUp();
        dir_ = std::filesystem::temp_directory_path() /
               ("quelmor_scripts_" + std::to_string(::getpid()));
        std::filesystem::create_directories(dir_);
        // "q" would be the function q: formals need names of their own
        Write("add2", "script (pa, pb) { r = pa + pb; pb = r * 2; }");
        Write("noargs", "script () { g = g + 1; }");
        Write("lines.x", "c = 40; c += 2;");
        Write("self", "self;");
        Write("bad", "script (p) { p = log(zz); }");
        GlobalScriptSpace().SetDirectory(dir_.string());
        GlobalScriptSpace().Refresh();
    }
    void TearDown() override {
        GlobalScriptSpace().DelAllImages();
        std::filesystem::remove_all(dir_);
        EvalTest::TearDown();
    }
    void Write(const char* name, const char* text) { std::ofstream(dir_ / name) << text; }

    std::filesystem::path dir_;
};

TEST_F(ScriptTest, ArgumentsAreBoundByReference) {
    ASSERT_EQ(0, Run("a = 1; b = 2;"));
    ASSERT_EQ(0, Run("add2(a, b)"));
    EXPECT_EQ(Values(Find("b")), std::vector<double>{6});
    EXPECT_TRUE(Find("b")->HasUndo());
    EXPECT_EQ(Find("r"), nullptr);  // a name of the script dies with it
    ASSERT_EQ(0, Run("x = {1,2,3}; add2(a, x[1:2]);"));
    EXPECT_EQ(Values(Find("x")), (std::vector<double>{1, 2, 3}));
}

TEST_F(ScriptTest, Failures) {
    const struct {
        const char* text;
        const char* func;
        const char* msg;
        const char* file;
    } cases[] = {{"a = 1; add2(a)", "PassArgs()", "argument number mismatch", "add2"},
                 {"a = 1; add2(a, a, a)", "PassArgs()", "argument number mismatch", "add2"},
                 {"a = 1; b = add2(a, a)", "Assignment()", "internal error, data not on stack", ""},
                 {"g = 1; noargs()", "+", "invalid data type", "noargs"},
                 {"add2", "parse()", "syntax error", "add2"},
                 {"self", "RunScript()", "stack overflow", "self"},
                 {"a = 1; bad(a)", "CallFunction()", "null input data set", "bad"}};
    for (const auto& c : cases) {
        EXPECT_EQ(1, Run(c.text)) << c.text;
        EXPECT_EQ(err_func, c.func) << c.text;
        EXPECT_EQ(err_msg, c.msg) << c.text;
        EXPECT_EQ(err_file, c.file) << c.text;
    }
    std::filesystem::remove(dir_ / "add2");
    EXPECT_EQ(1, Run("a = 1; add2(a, a)"));
    EXPECT_EQ(err_func, "LoadScript()");
    EXPECT_EQ(err_msg, "can not open script file");
}

TEST_F(ScriptTest, LinesFormSeesGlobals) {
    ASSERT_EQ(0, Run("lines.x"));
    EXPECT_EQ(Values(Find("c")), std::vector<double>{42});
}

TEST_F(ScriptTest, ControlWordsAreNames) {
    Write("iffy", "script (p) { if (p) p = 2; }");
    GlobalScriptSpace().Refresh();
    ASSERT_EQ(0, Run("a = 1;"));
    EXPECT_EQ(1, Run("iffy(a)"));
    EXPECT_EQ(err_func, "parse()");
    EXPECT_EQ(err_msg, "syntax error");
}

TEST_F(ScriptTest, PrivateSpaceKeepsItsRunAndCleanUpToItself) {
    CDataSpace& global = GlobalDataSpace();
    CZrkData* a = global.NewData(TYPE_R4, 1, 1, 1, 1, 1, 1, "a");
    static_cast<float*>(a->Data())[0] = 5;
    global.NewData("alias")->link = a;
    CDataSpace mine;
    mine.SetUnique();
    CEvalLines ev(mine);
    // Both script forms, and a lines script run from inside one.
    ASSERT_EQ(0, ev.Eval(nullptr, nullptr, "a = 1; b = 2; add2(a, b); lines.x;", nullptr))
        << ErrorText();
    EXPECT_EQ(Values(mine.FindData("b")), std::vector<double>{6});
    EXPECT_EQ(Values(mine.FindData("c")), std::vector<double>{42});
    EXPECT_EQ(global.Count(), 2);
    EXPECT_EQ(Values(a), std::vector<double>{5});
    // The end of the run drops links of its own space only.
    EXPECT_EQ(global.FindData("alias"), a);
}

TEST_F(EvalTest, EquationBar) {
    EXPECT_EQ(0, EquationBarEval(GlobalDataSpace(), "a = log(0)"));
    EXPECT_EQ(host.history.back(), "a = log(0)\r\n");
    EXPECT_EQ(host.status.front(), "calculating...");
    EXPECT_EQ(host.status.back(), "");
    EXPECT_EQ(host.messages.size(), 1u);
    EXPECT_TRUE(Find("a")->changed);
    EXPECT_EQ(1, EquationBarEval(GlobalDataSpace(), "b = a +"));
    EXPECT_EQ(host.status.back(), "parse() returned 'syntax error'");
    EXPECT_EQ(host.history.size(), 1u);
}

}  // namespace
