#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "core/data_space.h"
#include "core/host.h"
#include "core/key_reader.h"
#include "mu/mu_options.h"
#include "shell/option_table.h"
#include "shell/shell_modules.h"

namespace {

std::string Printed(const MuOptionBlock& b) {
    FILE* f = std::tmpfile();
    b.Print(f);
    std::rewind(f);
    std::string text;
    for (int c; (c = std::fgetc(f)) != EOF;) text.push_back(char(c));
    std::fclose(f);
    return text;
}

// key -> the rest of its line, the first time the key is met.
std::map<std::string, std::string> Lines(const std::string& text) {
    std::map<std::string, std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        size_t blank = line.find(' ');
        std::string key = line.substr(0, blank);
        lines.emplace(key, blank == std::string::npos ? "" : line.substr(blank + 1));
    }
    return lines;
}

// Numbers compare as floats; anything else as text.
bool SameValues(const std::string& got, const std::string& want) {
    std::istringstream g(got), w(want);
    std::vector<std::string> gs, ws;
    for (std::string t; g >> t;) gs.push_back(t);
    for (std::string t; w >> t;) ws.push_back(t);
    if (gs.size() != ws.size()) return false;
    for (size_t i = 0; i < gs.size(); ++i) {
        char* end;
        double wv = std::strtod(ws[i].c_str(), &end);
        if (*end) {
            if (gs[i] != ws[i]) return false;
            continue;
        }
        if (float(std::strtod(gs[i].c_str(), nullptr)) != float(wv)) return false;
    }
    return true;
}

TEST(MuOptionBlock, EveryKeyHasItsResetValue) {
    static const std::pair<const char*, const char*> kResets[] = {
        {"name=", "default"},
        {"param_default=", "1"},
        {"fov=", "0.24 0.24 0.1"},
        {"mech_freq=", "60"},
        {"wedge_on=", "0"},
        {"wedge_side=", "left"},
        {"wedge_min=", "0"},
        {"wedge_max=", "40"},
        {"xyz=", "0"},
        {"harmin=", "0"},
        {"mag_iqmp=", "0"},
        {"pdif_iqmp=", "0 0 0"},
        {"harmonic_number=", "1"},
        {"background=", "10"},
        {"mask_default=", "0"},
        {"mask=", "mask_%02d"},
        {"magmask=", "mag_%02d"},
        {"mask_out=", "0"},
        {"magmask_out=", "0"},
        {"smooth_mask=", "0"},
        {"use_mask=", "1"},
        {"mask_2d=", "0"},
        {"mask_regions=", "0"},
        {"mask_voids=", "0"},
        {"mask_nregions=", "1"},
        {"mask_nvoids=", "0"},
        {"interp_out=", "0"},
        {"ninterp=", "8"},
        {"interp=", "interp%02d"},
        {"interp_mask=", "1"},
        {"r1i1_out=", "0"},
        {"r1i1=", "r1i1%02d"},
        {"amplitude_out=", "0"},
        {"gradient_type=", "0"},
        {"gradient_pairs=", "2"},
        {"gradient_amp=", "1.76"},
        {"menc=", "0"},
        {"amplitude=", "amp_%02d"},
        {"wsum=", "1"},
        {"ampweight=", "0 0 0"},
        {"phase_range=", "0 255"},
        {"wrapage_mask=", "1"},
        {"uwpx=", "uw_px%02d"},
        {"uwpy=", "uw_py%02d"},
        {"uwpz=", "uw_pz%02d"},
        {"uwmethod=", "0"},
        {"curl_on=", "0"},
        {"curl_kernel=", "0"},
        {"divergence=", "div_%02d"},
        {"curl_x=", "curl_x%02d"},
        {"curl_y=", "curl_y%02d"},
        {"curl_z=", "curl_z%02d"},
        {"lfe_default=", "1"},
        {"lfe_nbands=", "6"},
        {"lfe_nd=", "0 1"},
        {"lfe_base_freq=", "1"},
        {"lfe_octave=", "2"},
        {"lfe_noft=", "0"},
        {"lfe_complex=", "0"},
        {"lfe_est=", "lfe_est%02d"},
        {"lfe_cert=", "lfe_cert%02d"},
        {"lfe_stiff=", "lfe_stiff%02d"},
        {"lfe_icert=", "lfe_icert%02d"},
        {"lfe_imu=", "lfe_imu%02d"},
        {"lfe_stiff_out=", "1"},
        {"lfe_est_out=", "0"},
        {"lfe_cert_out=", "0"},
        {"lfe_imu_out=", "0"},
        {"lfe_icert_out=", "0"},
        {"pg_2d=", "1"},
        {"pg_dir_on=", "0"},
        {"pg_dir_angle=", "0"},
        {"pg_win=", "5 5 5"},
        {"pg_stiff=", "pg_stiff%02d"},
        {"pg_est=", "pg_est%02d"},
        {"pg_dir=", "pg_dir%02d"},
        {"pg_stiff_out=", "1"},
        {"pg_est_out=", "0"},
        {"pg_dir_out=", "0"},
        {"di_default=", "1"},
        {"di_aide=", "0"},
        {"di_2d=", "1"},
        {"di_sg_mode=", "0"},
        {"di_regular=", "1e-06"},
        {"di_order=", "3 3 3"},
        {"di_win=", "11 11 5"},
        {"di_invwin=", "11 11 5"},
        {"di_type=", "Romano"},
        {"di_stiff=", "di_stiff%02d"},
        {"di_atten=", "di_atten%02d"},
        {"di_cmu=", "di_cmu%02d"},
        {"di_stiff_out=", "1"},
        {"di_atten_out=", "0"},
        {"di_cmu_out=", "0"},
        {"mmdi_win=", "11 11"},
        {"mmdi_win_shape=", ""},
        {"mmdi_stiff=", "mmdi_stiff%02d"},
        {"mmdi_atten=", "mmdi_atten%02d"},
        {"mmdi_cmu=", "mmdi_cmu%02d"},
        {"mmdi_signal=", "mmdi_signal_%02d"},
        {"mmdi_bpe=", "mmdi_bpe_%02d"},
        {"mmdi_lap_conf=", "mmdi_lap_conf_%02d"},
        {"mmdi_di_conf=", "mmdi_di_conf_%02d"},
        {"mmdi_stiff_out=", "1"},
        {"mmdi_atten_out=", "0"},
        {"mmdi_cmu_out=", "0"},
        {"mmdi_signal_out=", "0"},
        {"mmdi_bpe_out=", "0"},
        {"mmdi_lap_conf_out=", "0"},
        {"mmdi_di_conf_out=", "0"},
        {"mmdi_checker_on=", "0"},
        {"mmdi_threshold=", "0.95"},
        {"mf_default=", "1"},
        {"mf_win=", "17 17 0"},
        {"mf_regular=", "1e-06"},
        {"mf_stiff=", "mf_stiff%02d"},
        {"mf_atten=", "mf_atten%02d"},
        {"mf_cmu=", "mf_cmu%02d"},
        {"mf_stiff_out=", "1"},
        {"mf_atten_out=", "0"},
        {"mf_cmu_out=", "0"},
        {"dirf_default=", "1"},
        {"dirf_1d_on=", "0"},
        {"dirf_1d_dir=", "0"},
        {"dirf_1d_forward=", "0"},
        {"dirf_2d_on=", "0"},
        {"dirf_2d_dir=", "0"},
        {"dirf_order=", "4"},
        {"dirf_cut=", "4 40"},
        {"dirf_angle=", "0"},
        {"dirf_2d_nangle=", "8"},
        {"dirf_2d_ntheta=", "1"},
        {"dirf_space=", "1"},
        {"dirf_inc=", "90"},
        {"dirf_3d_on=", "0"},
        {"dirf_3d_nangle=", "1"},
        {"df3d_xyz=", "0 0 1"},
        {"dirf_out=", "0"},
        {"dirf_all=", "0"},
        {"dirf_format=", "df%02d"},
        {"dirf_mask=", "1"},
        {"gdc_flag=", "0"},
        {"ldc_flag=", "0"},
        {"ldc_winx=", "25"},
        {"ldc_winy=", "25"},
        {"ldc_format=", "ldc%02d"},
        {"ldcr_format=", "ldcr%02d"},
        {"ldc_out=", "0"},
        {"ldcr_out=", "0"},
        {"meanx2_flag=", "0"},
        {"meanx2_format=", "meanx2%02d"},
        {"meanx2_out=", "0"},
        {"pre_out=", "0"},
        {"pre_format=", "pre%02d"},
        {"snr_default=", "1"},
        {"snr_mask=", "0"},
        {"snr_mask_pattern=", "0"},
        {"snr_bg_sd=", "0"},
        {"snr_phase_min=", "0"},
        {"snr_phase_max=", "255"},
        {"snr_threshold=", "0"},
        {"snr_xwin=", "3"},
        {"snr_ywin=", "3"},
        {"snr_zwin=", "3"},
        {"snr_bg_xerode=", "10"},
        {"snr_bg_yerode=", "10"},
        {"snr_bg_zerode=", "10"},
        {"snr_maskout=", "0"},
        {"snr_magout=", "0"},
        {"snr_pdout=", "0"},
        {"snr_maskformat=", "masksnr%02d"},
        {"snr_magformat=", "magsnr%02d"},
        {"snr_pdformat=", "pdsnr%02d"},
        {"prefilter=", "0"},
        {"midfilter=", "0"},
        {"postfilter=", "0"},
    };
    MuOptionBlock b;
    b.name = "edited";
    b.fov[2] = 9.0f;
    b.Reset();
    std::string text = Printed(b);
    auto lines = Lines(text);
    for (const auto& [key, want] : kResets) {
        ASSERT_TRUE(lines.count(key)) << key;
        EXPECT_TRUE(SameValues(lines[key], want)) << key << " is \"" << lines[key] << "\"";
    }
    EXPECT_EQ(lines.size(), std::size(kResets) + 6);  // 4 filter keys, end_filter, end_mu
    EXPECT_NE(text.find("prefilter= 0\nfilter_type= -1\nfilter_order= 4\nfilter_res= 5 5 5\n"
                        "filter_cut= 2.5 40\nend_filter\n"),
              std::string::npos);
    EXPECT_EQ(text.substr(text.size() - 7), "end_mu\n");
}

// Every key moved off its reset: ints and floats shifted, texts renamed, filters filled.
struct Scramble : MuKeyVisitor {
    void Ints(const char*, int* v, int n, const double*) override {
        for (int i = 0; i < n; ++i) v[i] = v[i] * 3 + 7 + i;
    }
    void Floats(const char*, float* v, int n, const double*) override {
        for (int i = 0; i < n; ++i) v[i] = v[i] * 1.37f + 0.1f / float(3 + i) + 1e-7f;
    }
    void Text(const char* key, std::string* v, const char*) override {
        *v = std::string("x_") + key;
        v->pop_back();
        *v += "%03d";
    }
    void Chars(const char*, char* v, int size, const char*) override {
        std::snprintf(v, size_t(size), "%s", "bottom");
    }
    void Filter(const char*, int* on, MuFilterRecord* r) override {
        *on = 1;
        r->filter_type = 7;
        r->filter_res[0] = 3, r->filter_res[1] = 9, r->filter_res[2] = 1;
        r->filter_cut[0] = 0.3333333f, r->filter_cut[1] = 77.123456f;
        r->filter_order = 8;
    }
};

class MuPrefsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        path_ = ::testing::TempDir() + "quelmor_mu_" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".txt";
        std::remove(path_.c_str());
    }
    void TearDown() override { std::remove(path_.c_str()); }
    void WriteFile(const std::string& text) { std::ofstream(path_, std::ios::binary) << text; }

    // A fresh application: its modules read the file.
    struct App {
        App() {
            space.InitReservedData();
            space.SetUnique();
            modules.Register(table, space);
        }
        CDataSpace space;
        CShellModules modules;
        COptionTable table;
    };

    std::string path_;
};

TEST_F(MuPrefsTest, BlocksSurviveExitAndRestartBitForBit) {
    MuOptionBlock moved;
    Scramble s;
    moved.VisitKeys(s);
    moved.fov[1] = std::nextafter(0.24f, 1.0f);  // one ulp off
    moved.mech_freq = 1.0f / 3.0f;
    // Off the reset in every key.
    MuOptionBlock reset;
    auto a = Lines(Printed(moved)), b = Lines(Printed(reset));
    for (const auto& [key, value] : b)
        if (key != "end_mu" && key != "end_filter") {
            EXPECT_NE(a[key], value) << key;
        }
    {
        App first;
        first.modules.history.view_history = 0;
        ASSERT_EQ(first.modules.mu_options.Add(2), 3);
        first.modules.mu_options.Get(1)->Copy(moved);
        first.modules.mu_options.Get(2)->name = "second";
        ASSERT_EQ(first.table.WriteOptions(path_), 0);
    }
    App second;
    second.table.ReadOptions(path_);
    ASSERT_EQ(second.modules.mu_options.Count(), 3);
    EXPECT_TRUE(second.modules.mu_options.Get(1)->SameKeys(moved));
    EXPECT_EQ(second.modules.mu_options.Get(2)->name, "second");
    MuOptionBlock named;
    named.name = "second";
    EXPECT_TRUE(second.modules.mu_options.Get(2)->SameKeys(named));
    EXPECT_FALSE(second.modules.mu_options.Get(1)->SameKeys(named));
    // The other modules' keys were read too: the section is written last.
    EXPECT_EQ(second.modules.history.view_history, 0);
    // And a second exit writes the same file again.
    std::string again = path_ + ".again";
    ASSERT_EQ(second.table.WriteOptions(again), 0);
    std::ifstream x(path_), y(again);
    std::stringstream xs, ys;
    xs << x.rdbuf(), ys << y.rdbuf();
    EXPECT_EQ(xs.str(), ys.str());
    std::remove(again.c_str());
}

TEST_F(MuPrefsTest, NoBlocksWriteNoSection) {
    App app;
    ASSERT_EQ(app.table.WriteOptions(path_), 0);
    std::ifstream in(path_);
    std::stringstream s;
    s << in.rdbuf();
    EXPECT_EQ(s.str().find("mu_estimation_options"), std::string::npos);
}

TEST_F(MuPrefsTest, HandWrittenSectionsAreReadAsTold) {
    struct Case {
        const char* what;
        const char* text;
        int count;                   // blocks after the read
        const char* name;            // of the last block
        const char* wedge_side;      // of the last block
        float mech_freq;             // of the last block
        int prefilter, filter_type;  // of the last block
        int history_taken;           // a key behind the section was read
    } cases[] = {
        {"n 0 leaves the list", "mu_estimation_options\n0\nview_history= 0\n", 1, "default", "left",
         60, 0, -1, 1},
        {"name and end_mu give resets", "mu_estimation_options\n1\nname= liver 60Hz\nend_mu\n", 2,
         "liver 60Hz", "left", 60, 0, -1, 0},
        {"wedge_side keeps 8 characters",
         "mu_estimation_options\n1\nwedge_side= bottomrightleft\nend_mu\n", 2, "default",
         "bottomri", 60, 0, -1, 0},
        {"CRLF lines",
         "mu_estimation_options\r\n1\r\nname= brain\r\nmech_freq= 50\r\nend_mu\r\n"
         "view_history= 0\r\n",
         2, "brain", "left", 50, 0, -1, 1},
        {"unknown keys and garbage are passed over",
         "mu_estimation_options\n1\nbogus= 1 2 3\n@@@ ###\nmech_freq= 45\nend_mu\n", 2, "default",
         "left", 45, 0, -1, 0},
        {"a filter record",
         "mu_estimation_options\n1\nprefilter= 1\nfilter_type= 5\n"
         "filter_cut= 1 20\nend_filter\nmech_freq= 90\nend_mu\n",
         2, "default", "left", 90, 1, 5, 0},
        {"end_mu inside a filter record ends both",
         "mu_estimation_options\n1\nmidfilter= 1\nfilter_type= 3\nend_mu\nview_history= 0\n", 2,
         "default", "left", 60, 1, 3, 1},
        {"a negative count is none", "mu_estimation_options\n-5\nview_history= 0\n", 1, "default",
         "left", 60, 0, -1, 1},
        {"a huge count is a failed add",
         "mu_estimation_options\n99999999999\nname= x\nend_mu\n"
         "view_history= 0\n",
         1, "default", "left", 60, 0, -1, 1},
        {"no end_mu: the file's end keeps what was read",
         "mu_estimation_options\n2\nname= one\nend_mu\nname= two\nmech_freq= 30\n", 3, "two",
         "left", 30, 0, -1, 0},
        {"bad numbers read as 0 and meet the checks later",
         "mu_estimation_options\n1\nmech_freq= fast\nend_mu\n", 2, "default", "left", 0, 0, -1, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        WriteFile(c.text);
        App app;
        app.table.ReadOptions(path_);
        CMuOptions& o = app.modules.mu_options;
        ASSERT_EQ(o.Count(), c.count);
        const MuOptionBlock* last = o.Get(o.Count() - 1);
        EXPECT_EQ(last->name, c.name);
        EXPECT_STREQ(last->wedge_side, c.wedge_side);
        EXPECT_EQ(last->mech_freq, c.mech_freq);
        const MuFilterRecord& f =
            std::strstr(c.text, "midfilter") ? last->mid_record : last->pre_record;
        EXPECT_EQ(std::strstr(c.text, "midfilter") ? last->midfilter : last->prefilter,
                  c.prefilter);
        EXPECT_EQ(f.filter_type, c.filter_type);
        EXPECT_EQ(app.modules.history.view_history, c.history_taken ? 0 : 1);
    }
}

TEST(CMuOptions, ListOperations) {
    CHeadlessHost host;
    CScopedHost scope(host);
    {
        CMuOptions o;
        EXPECT_EQ(o.Count(), 1);
        EXPECT_EQ(o.Get(0)->name, "default");
        EXPECT_EQ(o.Get(1), nullptr);
        EXPECT_EQ(o.Add(CMuOptions::kMaxAdd + 1), 0);
        EXPECT_EQ(o.Add(-1), 0);
        EXPECT_EQ(o.Count(), 1);
        EXPECT_EQ(o.Add(3), 4);
        o.Get(1)->name = "a", o.Get(2)->name = "b", o.Get(3)->name = "c";
        EXPECT_EQ(o.Remove(0), 0);
        EXPECT_EQ(o.Remove(4), 0);
        EXPECT_EQ(o.Remove(2), 1);
        ASSERT_EQ(o.Count(), 3);
        EXPECT_EQ(o.Get(1)->name, "a");
        EXPECT_EQ(o.Get(2)->name, "c");
        MuOptionBlock copy;
        o.Get(2)->pre_record.filter_order = 11;
        copy.Copy(*o.Get(2));
        EXPECT_TRUE(copy.SameKeys(*o.Get(2)));
        EXPECT_EQ(copy.pre_record.filter_order, 11);
    }
    EXPECT_EQ(host.trace, "CMuOptions::~CMuOptions");
}

}  // namespace
