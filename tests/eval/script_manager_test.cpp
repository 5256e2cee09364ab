// The script manager's logic on a real folder: folders and their memory, the list, the
// commands and their refusals, and a script made here called from the bar at once.
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "core/key_reader.h"
#include "core/script_space.h"
#include "eval/equation_bar.h"
#include "eval/script_manager.h"
#include "tests/eval/eval_fixture.h"

namespace fs = std::filesystem;

namespace {

class ScriptManager : public EvalTest {
  protected:
    void SetUp() override {
        EvalTest::SetUp();
        root_ = fs::temp_directory_path() / ("quelmor_manager_" + std::to_string(::getpid()));
        for (const char* d : {"one", "two", "three", "four", "five", "six"})
            fs::create_directories(root_ / d);
    }
    void TearDown() override {
        space.DelAllImages();
        GlobalScriptSpace().DelAllImages();
        GlobalScriptSpace().SetDirectory("");
        fs::permissions(root_, fs::perms::owner_all, fs::perm_options::add);
        fs::remove_all(root_);
        EvalTest::TearDown();
    }
    std::string Dir(const char* d) const { return (root_ / d).string(); }
    void Write(const char* d, const char* name, const std::string& text) {
        std::ofstream(root_ / d / name) << text;
    }
    std::vector<std::string> Names() {
        std::vector<std::string> names;
        for (const CScriptRow& row : manager.Rows(space)) names.push_back(row.name);
        return names;
    }

    fs::path root_;
    CScriptSpace space;
    CScript manager;
};

TEST_F(ScriptManager, FoldersAreRememberedNewestFirstUpToFive) {
    for (const char* d : {"one", "two", "three", "four", "five", "six", "three"})
        ASSERT_EQ(manager.SetFolder(space, Dir(d)), "") << d;
    EXPECT_EQ(manager.FolderEntries(),
              (std::vector<std::string>{Dir("three"), Dir("six"), Dir("five"), Dir("four"),
                                        Dir("two"), "browse ...", "---none---"}));
    EXPECT_EQ(manager.FolderIndex(space), 0);
    EXPECT_EQ(space.Directory(), Dir("three"));
    // A folder that is not there changes nothing.
    EXPECT_EQ(manager.SetFolder(space, Dir("seven")), "script folder not found: " + Dir("seven"));
    EXPECT_EQ(space.Directory(), Dir("three"));
    EXPECT_EQ(manager.script_npath, 5);
    manager.SetNoFolder(space);
    EXPECT_EQ(space.Directory(), "");
    EXPECT_EQ(manager.FolderIndex(space), 6);
}

TEST_F(ScriptManager, OptionsComeBackAfterExitAndStart) {
    ASSERT_EQ(manager.SetFolder(space, Dir("one")), "");
    ASSERT_EQ(manager.SetFolder(space, Dir("two path")),
              "script folder not found: " + Dir("two path"));
    fs::create_directories(root_ / "two path");
    ASSERT_EQ(manager.SetFolder(space, Dir("two path")), "");
    manager.view_script = 1;
    manager.script_bytes = SCRIPT_KBYTES;
    manager.script_details = 0;
    manager.script_script_editor = "gedit --new-window";
    const int loc[4] = {10, 20, 310, 420};
    std::copy(loc, loc + 4, manager.script_loc);
    char* text = nullptr;
    size_t size = 0;
    FILE* out = open_memstream(&text, &size);
    manager.PrintfOptions(out);
    std::fclose(out);
    const std::string written(text, size);
    std::free(text);
    EXPECT_EQ(written.rfind("\n// script options\nview_script= 1\nscript_loc= 10 20 310 420\n"
                            "script_minimized= 0\nscript_details= 0\nscript_bytes= 1\n"
                            "script_iqmp= 0\nscript_npath= 2\nscript_selpath= 0\n",
                            0),
              0u)
        << written;

    FILE* in = fmemopen(const_cast<char*>(written.data()), written.size(), "r");
    CScript back;
    CKeyReader reader(in);
    try {
        for (;;) {
            reader.Next();
            back.ScanfOptions(reader);
        }
    } catch (const CKeyReader::EndOfFile&) {
    }
    std::fclose(in);
    EXPECT_EQ(back.FolderEntries(), manager.FolderEntries());
    EXPECT_EQ(back.script_script_editor, "gedit --new-window");
    EXPECT_EQ(back.script_bytes, SCRIPT_KBYTES);
    EXPECT_EQ(back.script_details, 0);
    EXPECT_EQ(std::vector<int>(back.script_loc, back.script_loc + 4),
              std::vector<int>(loc, loc + 4));
    // The folder with a blank in its name is the one a new start opens.
    CScriptSpace started;
    back.StartFolder(started, Dir("one"));
    EXPECT_EQ(started.Directory(), Dir("two path"));
    // When it has vanished, the program's default folder stands in.
    fs::remove_all(root_ / "two path");
    back.StartFolder(started, Dir("one"));
    EXPECT_EQ(started.Directory(), Dir("one"));
}

TEST_F(ScriptManager, ListShowsSizesInTheirUnitAndFirstLines) {
    Write("one", "big", std::string(3 * 1024 * 1024, 'x'));
    Write("one", "small", "c = 40;\r\nc += 2;\n");
    ASSERT_EQ(manager.SetFolder(space, Dir("one")), "");
    std::vector<CScriptRow> rows = manager.Rows(space);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[1].name, "small");
    EXPECT_EQ(rows[1].size, "17");
    EXPECT_EQ(rows[1].first_line, "c = 40;");
    EXPECT_STREQ(manager.SizeUnit(), "bytes");
    manager.NextSizeUnit();
    EXPECT_STREQ(manager.SizeUnit(), "kbytes");
    EXPECT_EQ(manager.Rows(space)[0].size, "3072.0");
    manager.NextSizeUnit();
    EXPECT_STREQ(manager.SizeUnit(), "mbytes");
    EXPECT_EQ(manager.Rows(space)[0].size, "3.00");
    manager.NextSizeUnit();
    EXPECT_STREQ(manager.SizeUnit(), "bytes");
    manager.script_details = 0;
    rows = manager.Rows(space);
    EXPECT_EQ(rows[1].size, "");
    EXPECT_EQ(rows[1].first_line, "");
}

TEST_F(ScriptManager, NewDuplicateAndDeleteWorkOnTheDisk) {
    ASSERT_EQ(manager.SetFolder(space, Dir("one")), "");
    EXPECT_EQ(manager.NewScript(space), "new script .new");
    EXPECT_EQ(manager.NewScript(space), "new script .new.new");
    Write("one", "s.x", "a = 1;");
    EXPECT_EQ(manager.Duplicate(space, "s.x"), "copied to s.x.dup");
    EXPECT_EQ(manager.Duplicate(space, "s.x"), "copied to s.x.dup.dup");
    EXPECT_EQ(Names(),
              (std::vector<std::string>{".new", ".new.new", "s.x", "s.x.dup", "s.x.dup.dup"}));
    std::ifstream copy(root_ / "one" / "s.x.dup");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(copy), {}), "a = 1;");

    // No: nothing is deleted, and the question was put.
    host.answer = false;
    EXPECT_EQ(manager.Delete(space, {"s.x", "s.x.dup"}), "");
    ASSERT_EQ(host.questions.size(), 1u);
    EXPECT_EQ(host.questions[0], "this deletes files from the disk\ndelete");
    EXPECT_TRUE(fs::exists(root_ / "one" / "s.x"));
    host.answer = true;
    EXPECT_EQ(manager.Delete(space, {"s.x", "s.x.dup"}), "");
    EXPECT_FALSE(fs::exists(root_ / "one" / "s.x"));
    EXPECT_EQ(Names(), (std::vector<std::string>{".new", ".new.new", "s.x.dup.dup"}));
    // Names that leave the folder are never asked about.
    EXPECT_EQ(manager.Delete(space, {"../two"}), "no script selected");
    EXPECT_EQ(manager.Delete(space, {}), "no script selected");
    EXPECT_EQ(host.questions.size(), 2u);
    EXPECT_TRUE(fs::exists(root_ / "two"));
}

TEST_F(ScriptManager, BadFoldersAndFilesGiveTexts) {
    manager.SetNoFolder(space);
    EXPECT_EQ(manager.NewScript(space), "no script folder");
    ASSERT_EQ(manager.SetFolder(space, Dir("two")), "");
    EXPECT_EQ(manager.Duplicate(space, "missing"), "missing is not a script file");
    fs::create_directories(root_ / "two" / "sub");
    EXPECT_EQ(manager.Duplicate(space, "sub"), "sub is not a script file");
    // A folder that vanished under the list.
    fs::remove_all(root_ / "two");
    EXPECT_EQ(manager.Refresh(space), "script folder not found: " + Dir("two"));
    EXPECT_EQ(space.Count(), 0);
    // The default folder of a first start is made by the first new script.
    CScriptSpace fresh;
    CScript first;
    first.StartFolder(fresh, Dir("made/later"));
    EXPECT_EQ(fresh.Directory(), Dir("made/later"));
    EXPECT_EQ(first.NewScript(fresh), "new script .new");
    EXPECT_TRUE(fs::exists(root_ / "made" / "later" / ".new"));
    if (::geteuid() != 0) {
        // An unreadable script lists without a first line and can't be copied.
        Write("one", "locked", "secret");
        fs::permissions(root_ / "one" / "locked", fs::perms::none);
        ASSERT_EQ(manager.SetFolder(space, Dir("one")), "");
        ASSERT_EQ(manager.Rows(space).size(), 1u);
        EXPECT_EQ(manager.Rows(space)[0].first_line, "");
        EXPECT_EQ(manager.Duplicate(space, "locked"), "can not copy script file locked");
    }
}

TEST_F(ScriptManager, EditorCommandCarriesItsArgumentsAndTheFile) {
    ASSERT_EQ(manager.SetFolder(space, Dir("one")), "");
    EXPECT_EQ(manager.EditCommand(space, "my script"),
              (std::vector<std::string>{"xdg-open", Dir("one") + "/my script"}));
    manager.script_script_editor = "gedit  --new-window ";
    EXPECT_EQ(manager.EditCommand(space, "s"),
              (std::vector<std::string>{"gedit", "--new-window", Dir("one") + "/s"}));
    manager.script_script_editor = "";
    EXPECT_EQ(manager.EditCommand(space, "s")[0], "xdg-open");
}

TEST_F(ScriptManager, AScriptMadeHereIsCallableFromTheBarAtOnce) {
    CScriptSpace& global = GlobalScriptSpace();
    ASSERT_EQ(manager.SetFolder(global, Dir("three")), "");
    ASSERT_EQ(manager.NewScript(global), "new script .new");
    // The user saves the new file under a name of a script with formals.
    fs::rename(root_ / "three" / ".new", root_ / "three" / "twice");
    std::ofstream(root_ / "three" / "twice") << "script (p) { p = p * 2; }";
    ASSERT_EQ(manager.Refresh(global), "");
    ASSERT_EQ(EquationBarEval(GlobalDataSpace(), "v = {1, 2}"), 0);
    ASSERT_EQ(EquationBarEval(GlobalDataSpace(), "twice(v)"), 0) << ErrorText();
    EXPECT_EQ(Values(Find("v")), (std::vector<double>{2, 4}));
    // A script of 10 MB of plain lines runs like any other.
    std::string big = "w = 1;\n";
    while (big.size() < 10 * 1024 * 1024) big += "                                        \n";
    big += "w = w + 1;\n";
    std::ofstream(root_ / "three" / "bigscript") << big;
    ASSERT_EQ(manager.Refresh(global), "");
    ASSERT_EQ(EquationBarEval(GlobalDataSpace(), "bigscript"), 0) << ErrorText();
    EXPECT_EQ(Values(Find("w")), std::vector<double>{2});
    // Deleted in the manager: no longer a script, so the name is a new name again.
    host.answer = true;
    ASSERT_EQ(manager.Delete(global, {"twice"}), "");
    EXPECT_EQ(EquationBarEval(GlobalDataSpace(), "twice(v)"), 1);
}

}  // namespace
