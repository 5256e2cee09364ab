#include "core/script_space.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace fs = std::filesystem;

namespace {

// A fresh directory that disappears with the test.
struct TempDir {
    TempDir() {
        char templ[] = "/tmp/quelmor_scripts_XXXXXX";
        path = mkdtemp(templ);
    }
    ~TempDir() { fs::remove_all(path); }
    void Write(const std::string& name, const std::string& text) const {
        std::ofstream(path / name, std::ios::binary) << text;
    }
    fs::path path;
};

}  // namespace

TEST(ScriptSpace, RefreshReadsARealDirectory) {
    TempDir dir;
    dir.Write("smooth", "smooth(a)\r\n{ a = a * 2; }\n");
    dir.Write("blank", "");
    dir.Write("long", std::string(300, 'z') + "\nsecond line");
    fs::create_directory(dir.path / "sub");

    CScriptSpace s;
    s.NewData("stale");
    s.SetDirectory(dir.path.string());
    s.Refresh();
    ASSERT_EQ(s.Count(), 4);
    const char* order[] = {"blank", "long", "smooth", "sub"};
    for (int i = 0; i < 4; ++i) EXPECT_EQ(s.Get(i)->name, order[i]);
    EXPECT_EQ(s.FindByName("smooth")->first_line, "smooth(a)");
    EXPECT_EQ(s.FindByName("smooth")->bytes, 26u);
    EXPECT_EQ(s.FindByName("long")->first_line, std::string(199, 'z'));
    EXPECT_EQ(s.FindByName("blank")->first_line, "");
    EXPECT_EQ(s.GetBytes(), 26u + 312u);
    EXPECT_EQ(s.FindByName("stale"), nullptr);

    CScriptEntry* out = nullptr;
    EXPECT_EQ(s.GetLongestData("smooth(d0)", &out), 6);
    EXPECT_EQ(out, s.FindByName("smooth"));

    CScriptSpace missing;
    missing.SetDirectory((dir.path / "nowhere").string());
    missing.Refresh();
    EXPECT_EQ(missing.Count(), 0);
}

TEST(ScriptSpace, UniqueNamesUseNewUpToTwentyTimes) {
    CScriptSpace s;
    EXPECT_EQ(s.NewData("a")->name, "a");
    EXPECT_EQ(s.NewData("a")->name, "a.new");
    EXPECT_EQ(s.NewData("a")->name, "a.new.new");
    for (int i = 0; i < 20; ++i) s.NewData("b");
    std::string twenty = "b";
    for (int i = 0; i < 19; ++i) twenty += ".new";
    EXPECT_NE(s.FindByName(twenty.c_str()), nullptr);
    std::string after = twenty + ".new";
    EXPECT_EQ(s.NewData("b")->name, after);
    EXPECT_EQ(s.NewData("b")->name, after);  // past the 20th the duplicate stands

    EXPECT_EQ(s.NewData("")->name, "");
    EXPECT_EQ(s.NewData("")->name, "");  // an empty name never counts as taken
    EXPECT_EQ(s.FindByName(""), nullptr);

    s.Get(0)->select = 1;
    EXPECT_EQ(s.GetSelCount(1), 1);
    s.DelAllImages();
    EXPECT_EQ(s.Count(), 0);
}
