#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "core/data_space.h"
#include "core/key_reader.h"
#include "core/zrk_data.h"
#include "files/avi_options.h"
#include "shell/option_table.h"
#include "shell/shell_modules.h"

namespace {

class OptionTableTest : public ::testing::Test {
  protected:
    void SetUp() override {
        path_ = ::testing::TempDir() + "quelmor_prefs_" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".txt";
        std::remove(path_.c_str());
        space_.InitReservedData();
        space_.SetUnique();
        modules_.Register(table_, space_);
    }
    void TearDown() override { std::remove(path_.c_str()); }

    void WriteFile(const std::string& text) { std::ofstream(path_, std::ios::binary) << text; }
    std::string ReadFile() const {
        std::ifstream in(path_, std::ios::binary);
        std::stringstream s;
        s << in.rdbuf();
        return s.str();
    }

    std::string path_;
    CDataSpace space_;
    CShellModules modules_;
    COptionTable table_;
};

TEST_F(OptionTableTest, OptionsSurviveARoundTrip) {
    modules_.main_frame.view_equation_bar = 0;
    modules_.main_frame.main_loc = {11, 22, 833, 644};
    modules_.main_frame.main_full = 1;
    modules_.main_frame.custom_colors16[0] = 0x123456;
    modules_.main_frame.custom_colors16[15] = 0xabcdef;
    modules_.main_frame.open_directory = "/data/mre scans/liver";
    // Six opened, one twice: five kept, newest first, the repeat moved up not doubled.
    for (const char* f : {"/d/a.zrk", "/d/b c.nii", "/d/c.dcm", "/d/a.zrk", "/d/e.mat", "/d/f.zrk"})
        modules_.main_frame.AddRecent(f);
    modules_.desktop.desktop_details = 0;
    modules_.desktop.desktop_bytes = 0;
    modules_.desktop.desktop_iqmp = 3;
    modules_.desktop.desktop_loc = {1, 2, 301, 402};
    modules_.desktop.AddPath("/data/one");
    modules_.desktop.AddPath("/data/two");
    modules_.desktop.desktop_script_editor = "kate -n";
    modules_.history.view_history = 0;
    modules_.history.history_loc = {5, 6, 7, 8};
    CZrkData* bins = space_.NewData(TYPE_I4, 1, 1, 1, 1, 1, 1, "hist_nbins");
    *static_cast<int32_t*>(bins->Data()) = 77;
    ASSERT_EQ(table_.WriteOptions(path_), 0);

    CDataSpace space;
    space.InitReservedData();
    space.SetUnique();
    CShellModules back;
    COptionTable table;
    back.Register(table, space);
    EXPECT_GT(table.ReadOptions(path_), 10);
    EXPECT_EQ(back.main_frame.view_equation_bar, 0);
    EXPECT_EQ(back.main_frame.main_loc.right, 833);
    EXPECT_EQ(back.main_frame.main_loc.bottom, 644);
    EXPECT_EQ(back.main_frame.main_full, 1);
    EXPECT_EQ(back.main_frame.custom_colors16[0], 0x123456u);
    EXPECT_EQ(back.main_frame.custom_colors16[15], 0xabcdefu);
    EXPECT_EQ(back.main_frame.open_directory, "/data/mre scans/liver");
    const std::string recent[] = {"/d/f.zrk", "/d/e.mat", "/d/a.zrk", "/d/c.dcm", "/d/b c.nii"};
    for (int i = 0; i < CMainFrameOptions::kRecentFiles; ++i)
        EXPECT_EQ(back.main_frame.recent_file[i], recent[i]) << i;
    EXPECT_EQ(back.desktop.desktop_details, 0);
    EXPECT_EQ(back.desktop.desktop_bytes, 0);
    EXPECT_EQ(back.desktop.desktop_iqmp, 3);
    EXPECT_EQ(back.desktop.desktop_loc.top, 2);
    EXPECT_EQ(back.desktop.desktop_npath, 2);
    EXPECT_EQ(back.desktop.desktop_path[0], "/data/two");
    EXPECT_EQ(back.desktop.desktop_path[1], "/data/one");
    EXPECT_EQ(back.desktop.desktop_script_editor, "kate -n");
    EXPECT_EQ(back.history.view_history, 0);
    EXPECT_EQ(back.history.history_loc.right, 7);
    const CZrkData* read_bins = space.FindData("hist_nbins");
    ASSERT_NE(read_bins, nullptr);
    EXPECT_EQ(*static_cast<const int32_t*>(read_bins->Data()), 77);
}

TEST_F(OptionTableTest, ModulesAreWrittenInTheFixedOrderWithTheirCommentLines) {
    ASSERT_EQ(table_.WriteOptions(path_), 0);
    const std::string text = ReadFile();
    const size_t main = text.find("\n// main frame options\n");
    const size_t desk = text.find("\n// desktop options\n");
    const size_t hist = text.find("\n// history options\n");
    const size_t data = text.find("\n//data space options\n");
    ASSERT_NE(main, std::string::npos);
    ASSERT_NE(data, std::string::npos);
    EXPECT_LT(main, desk);
    EXPECT_LT(desk, hist);
    EXPECT_LT(hist, data);
    EXPECT_NE(text.find("view_equation_bar= 1\n"), std::string::npos);
}

TEST_F(OptionTableTest, MalformedFilesAreReadAsFarAsTheyGo) {
    struct Case {
        const char* what;
        std::string text;
        int view_desktop;  // -1: the default stays
    };
    std::string blob;
    for (int i = 0; i < 4096; ++i) blob.push_back(static_cast<char>((i * 131 + 7) % 256));
    const Case cases[] = {
        {"unknown keys", "zoom_factor= 3 4\nwave_dir_speed= 1.5\nview_desktop= 0\n", 0},
        {"comment lines", "\n// desktop options\nview_desktop= 0\n", 0},
        {"truncated last line", "view_desktop= 0\ndesktop_loc= 10 20", 0},
        {"key without value at the end", "view_desktop= 0\ndesktop_details=", 0},
        {"binary blob", blob, -1},
        {"blob after a key", "view_desktop= 0\n" + blob, 0},
        {"empty file", "", -1},
    };
    for (const Case& c : cases) {
        CShellModules modules;
        COptionTable table;
        CDataSpace space;
        modules.Register(table, space);
        modules.desktop.view_desktop = -1;
        WriteFile(c.text);
        table.ReadOptions(path_);
        EXPECT_EQ(modules.desktop.view_desktop, c.view_desktop) << c.what;
        EXPECT_TRUE(modules.desktop.desktop_loc.IsEmpty()) << c.what;
    }
}

TEST_F(OptionTableTest, MissingFileKeepsTheDefaults) {
    EXPECT_EQ(table_.ReadOptions(path_ + ".missing"), 0);
    EXPECT_EQ(modules_.desktop.view_desktop, 1);
    EXPECT_EQ(modules_.desktop.desktop_script_editor, "xdg-open");
}

TEST_F(OptionTableTest, AtMostFivePathsAreRead) {
    WriteFile(
        "desktop_npath= 7\ndesktop_path0= /a\ndesktop_path1= /b\ndesktop_path2= /c\n"
        "desktop_path3= /d\ndesktop_path4= /e\ndesktop_path5= /f\ndesktop_path6= /g\n");
    table_.ReadOptions(path_);
    EXPECT_EQ(modules_.desktop.desktop_npath, 5);
    EXPECT_EQ(modules_.desktop.desktop_path[4], "/e");
    modules_.desktop.AddPath("/new");
    EXPECT_EQ(modules_.desktop.desktop_npath, 5);
    EXPECT_EQ(modules_.desktop.desktop_path[0], "/new");
    EXPECT_EQ(modules_.desktop.desktop_path[4], "/d");
    modules_.desktop.AddPath("/c");
    EXPECT_EQ(modules_.desktop.desktop_path[0], "/c");
    EXPECT_EQ(modules_.desktop.desktop_path[1], "/new");
    EXPECT_EQ(modules_.desktop.desktop_path[4], "/d");
}

TEST_F(OptionTableTest, EmptySlotsAreSkippedAndTheInversionSectionHasItsHook) {
    EXPECT_TRUE(table_.Has(OPT_DATA_SPACE));
    EXPECT_FALSE(table_.Has(OPT_WAVE_DIRECTION));
    WriteFile("mu_estimation_options\nlfe_scales= 6\nview_history= 0\n");
    // Without the hook the section's words are passed over like any other.
    table_.ReadOptions(path_);
    EXPECT_EQ(modules_.history.view_history, 0);

    int scales = 0;
    table_.SetMuEstimationReader([&](CKeyReader& r) {
        r.Next();
        r.Int("lfe_scales=", &scales);
    });
    modules_.history.view_history = 1;
    table_.ReadOptions(path_);
    EXPECT_EQ(scales, 6);
    EXPECT_EQ(modules_.history.view_history, 0);
}

TEST_F(OptionTableTest, TheMovieEncoderIsKeptInItsSlot) {
    EXPECT_TRUE(table_.Has(OPT_AVI_WRITER));
    WriteFile("avi_encoder= 2\n");
    table_.ReadOptions(path_);
    EXPECT_EQ(AviOptions().encoder, AVI_RAW);
    ASSERT_EQ(table_.WriteOptions(path_), 0);
    AviOptions().encoder = AVI_MJPEG;
    table_.ReadOptions(path_);
    EXPECT_EQ(AviOptions().encoder, AVI_RAW);
    WriteFile("avi_encoder= 9\n");  // no such encoder
    table_.ReadOptions(path_);
    EXPECT_EQ(AviOptions().encoder, AVI_MJPEG);
}

TEST_F(OptionTableTest, UnwritableFileFailsQuietly) {
    EXPECT_EQ(table_.WriteOptions("/nonexistent-folder/quelmor_preferences.txt"), 1);
}

}  // namespace
