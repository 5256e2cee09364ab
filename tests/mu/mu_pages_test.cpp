#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "mu/mu_form.h"
#include "mu_fixture.h"
#include "shell/paths.h"
#include "tests/peer.h"

namespace {

// Every text a page shows, each case one change from a valid sheet on 2d time series.
TEST_F(MuFormTest, EveryPageText) {
    struct Case {
        const char* text;
        std::function<void(MuFormTest&)> change;
        int page;  // the page a failing run shows, or -1 for a page's own check
    };
    auto data = [](MuFormTest& t) { return t.form->Data(); };
    auto params = [](MuFormTest& t) { return t.form->Params(); };
    auto lfe = [](MuFormTest& t) { return t.form->Lfe(); };
    auto xyz = [&](MuFormTest& t) {
        data(t)->c.xyz = 1;
        data(t)->c.phase[1] = "ph";
        data(t)->c.phase[2] = "ph";
    };
    const Case cases[] = {
        {"invalid magnitude data", [&](MuFormTest& t) { data(t)->c.magnitude = "none"; }, 0},
        {"invalid x phase data", [&](MuFormTest& t) { data(t)->c.phase[0] = "none"; }, 0},
        {"invalid y phase data", [&](MuFormTest& t) { xyz(t), data(t)->c.phase[2] = "none"; }, 0},
        {"magnitude and phase have incompatible resolutions",
         [&](MuFormTest& t) { xyz(t), data(t)->c.phase[1] = "narrow"; }, 0},
        {"for complex r1 i1 data, phase must be complex",
         [&](MuFormTest& t) { data(t)->c.phase[0] = "harmonic"; }, 0},
        {"'harmonic number' must be between 1 and 3",
         [&](MuFormTest& t) { params(t)->c.harmonic_number = 5; }, 1},
        {"too few phases", [&](MuFormTest& t) { params(t)->c.noff = 0; }, 1},
        {"too few slices", [&](MuFormTest& t) { params(t)->c.noff = 16; }, 1},
        {"phase images are not a multiple of the offsets",
         [&](MuFormTest& t) { params(t)->c.noff = 3; }, 1},
        {"magnitude and phase have incompatible resolutions",
         [&](MuFormTest& t) { data(t)->c.magnitude = "mag3", data(t)->c.phase[0] = "ph2s"; }, 1},
        {"too many dimensions",
         [&](MuFormTest& t) { data(t)->c.harmin = 1, data(t)->c.phase[0] = "cube"; }, 1},
        {"mechanical frequency must be above 0", [&](MuFormTest& t) { params(t)->c.mech_freq = 0; },
         1},
        {"mechanical frequency must be above 0",
         [&](MuFormTest& t) { params(t)->c.mech_freq = NAN; }, 1},
        {"field of view must be above 0", [&](MuFormTest& t) { params(t)->c.fov[1] = -0.2f; }, 1},
        {"phase range minimum must be below maximum",
         [&](MuFormTest& t) { params(t)->c.phase_range[0] = 255; }, 1},
        {"append mask output not found",
         [&](MuFormTest& t) { t.form->Mask()->c.mask_out = 1, t.form->append_data = 1; }, 2},
        {"can not 'smooth mask' and perform 1d LFE",
         [&](MuFormTest& t) { t.form->Mask()->c.smooth_mask = 1, lfe(t)->c.dimension = 0; }, 2},
        // The wrap page shows the mask page's text, the filter and output pages the data page's.
        {"valid mask options", [&](MuFormTest& t) { t.form->Wrap()->c.uwmethod = 9; }, 3},
        {"data page valid",
         [&](MuFormTest& t) {
             data(t)->c.harmin = 1, data(t)->c.phase[0] = "harmonic";
             t.form->Filter()->c.filter = 2;
         },
         4},
        {"data page valid",
         [&](MuFormTest& t) { t.form->Output()->c.magmask_out = 1, t.form->append_data = 1; }, 5},
        {"append mu output not found", [&](MuFormTest& t) { t.form->append_data = 1; }, 6},
        {"append estimate output not found",
         [&](MuFormTest& t) { lfe(t)->c.lfe_est_out = 1, t.form->append_data = 1; }, 6},
        {"append certainty output not found",
         [&](MuFormTest& t) {
             lfe(t)->c.lfe_cert_out = 1, lfe(t)->c.lfe_stiff_out = 0, t.form->append_data = 1;
         },
         6},
        {"append individual estimate output not found",
         [&](MuFormTest& t) {
             lfe(t)->c.lfe_imu_out = 1, lfe(t)->c.lfe_stiff_out = 0, t.form->append_data = 1;
         },
         6},
        {"append individual certainty output not found",
         [&](MuFormTest& t) {
             lfe(t)->c.lfe_icert_out = 1, lfe(t)->c.lfe_stiff_out = 0, t.form->append_data = 1;
         },
         6},
        {"can not do 3d processing on 2d data", [&](MuFormTest& t) { lfe(t)->c.dimension = 2; }, 6},
        {"can not do 1d processing on 3d data",
         [&](MuFormTest& t) {
             data(t)->c.magnitude = "mag3d", data(t)->c.phase[0] = "ph3d";
             lfe(t)->c.dimension = 0;
         },
         6},
        {"no time FT and R1I1 data are incompatible",
         [&](MuFormTest& t) {
             data(t)->c.harmin = 1, data(t)->c.phase[0] = "harmonic";
             lfe(t)->c.lfe_default = 0, lfe(t)->c.lfe_noft = 1;
         },
         6},
        // Two offsets count as one: no time transform, which three axes refuse.
        {"no time FT and XYZ data are incompatible",
         [&](MuFormTest& t) {
             xyz(t);
             for (int a = 0; a < 3; ++a) data(t)->c.phase[a] = "ph2";
             data(t)->c.magnitude = "mag2", params(t)->c.noff = 2, params(t)->c.harmonic_number = 1;
         },
         6},
        {"'number of bands' must be between 2 and 16",
         [&](MuFormTest& t) { lfe(t)->c.lfe_default = 0, lfe(t)->c.lfe_nbands = 17; }, 6},
        {"'base frequency' must be above 0",
         [&](MuFormTest& t) { lfe(t)->c.lfe_default = 0, lfe(t)->c.lfe_base_freq = 0; }, 6},
        // Harmonic data only pass the wrap check without unwrapping.
        {"phase unwrap not implemented for temporal harmonic data",
         [&](MuFormTest& t) {
             data(t)->c.harmin = 1, data(t)->c.phase[0] = "harmonic";
             t.form->Wrap()->c.uwmethod = 1;
         },
         -1},
        {"can not 'smooth mask' on 1d data",
         [&](MuFormTest& t) {
             data(t)->c.magnitude = "line", data(t)->c.phase[0] = "lineph";
             t.form->Mask()->c.smooth_mask = 1;
         },
         -2},
    };
    Real("mag", 16, 12, 1, 8, [](size_t) { return 100.0f; });
    Real("mag3", 16, 12, 1, 3, [](size_t) { return 100.0f; });
    Real("mag3d", 16, 12, 4, 8, [](size_t) { return 100.0f; });
    Real("mag2", 16, 12, 1, 2, [](size_t) { return 100.0f; });
    Real("ph", 16, 12, 1, 8, [](size_t i) { return float(i % 7); });
    Real("ph2", 16, 12, 1, 2, [](size_t i) { return float(i % 7); });
    Real("ph2s", 16, 12, 2, 8, [](size_t i) { return float(i % 7); });
    Real("ph3d", 16, 12, 4, 8, [](size_t i) { return float(i % 7); });
    Real("narrow", 15, 12, 1, 8, [](size_t) { return 1.0f; });
    Real("line", 16, 1, 1, 8, [](size_t) { return 100.0f; });
    Real("lineph", 16, 1, 1, 8, [](size_t) { return 1.0f; });
    Complex("harmonic", 16, 12, 1, 1, [](size_t) { return std::complex<float>(1, 2); });
    Complex("cube", 16, 12, 2, 2, [](size_t) { return std::complex<float>(1, 2); });
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        Open(CMuForm::PAGE_LFE, "mag", "ph", 0);
        c.change(*this);
        if (c.page == -1) {
            form->Run();
            EXPECT_EQ(form->Wrap()->Check(), 1);
            EXPECT_EQ(form->Wrap()->Status(), c.text);
            continue;
        }
        if (c.page == -2) {
            form->Run();
            EXPECT_EQ(form->Mask()->Check(), 2);
            EXPECT_EQ(form->Mask()->Status(), c.text);
            continue;
        }
        EXPECT_EQ(form->Run(), 1);
        EXPECT_EQ(form->status, c.text);
        EXPECT_EQ(form->ActivePage(), c.page);
    }
}

TEST_F(MuFormTest, SheetGrowsByContinuing) {
    Real("mag", 16, 12, 1, 8, [](size_t) { return 100.0f; });
    Real("ph", 16, 12, 1, 8, [](size_t i) { return float(i % 5); });
    Real("ph3d", 16, 12, 4, 8, [](size_t i) { return float(i % 7); });
    Real("mag3d", 16, 12, 4, 8, [](size_t) { return 100.0f; });
    form = std::make_unique<CMuForm>(space, options);
    EXPECT_EQ(form->PageCount(), 1);
    // A failing page shows the data page with its own text.
    form->Data()->c.magnitude = "mag";
    ASSERT_EQ(form->Continue(), 1);
    EXPECT_EQ(form->status, "invalid x phase data");
    form->Data()->c.phase[0] = "ph";
    ASSERT_EQ(form->Continue(), 0);
    EXPECT_EQ(form->PageCount(), 2);
    EXPECT_EQ(form->status, "default: 2d data: 8 offsets\nfreq: 60;  phase range: 0 ... 255");
    form->Params()->c.harmonic_number = 5;
    ASSERT_EQ(form->Continue(), 1);
    EXPECT_EQ(form->ActivePage(), CMuForm::PAGE_DATA);
    EXPECT_EQ(form->status, "'harmonic number' must be between 1 and 3");
    form->Params()->c.harmonic_number = 1;
    form->Params()->SetPhasePreset(3);
    form->Activate(CMuForm::PAGE_PARAMS);
    while (form->ActivePage() < CMuForm::PAGE_LFE) ASSERT_EQ(form->Continue(), 0);
    EXPECT_EQ(form->PageCount(), 7);
    // Other data on an earlier page drops the pages behind it.
    form->Activate(CMuForm::PAGE_DATA);
    form->Data()->c.magnitude = "mag3d";
    form->Data()->c.phase[0] = "ph3d";
    ASSERT_EQ(form->Continue(), 0);
    EXPECT_EQ(form->PageCount(), 1 + 1);
    EXPECT_EQ(form->status,
              "default: 3d data: 4 slices, 8 offsets\nfreq: 60;  phase range: -3.142 ... 3.142");
    // Harmonic data.
    Complex("harmonic", 16, 12, 1, 1, [](size_t) { return std::complex<float>(1, 2); });
    form->Activate(CMuForm::PAGE_DATA);
    form->Data()->c.magnitude = "mag";
    form->Data()->c.phase[0] = "harmonic";
    form->Data()->c.harmin = 1;
    ASSERT_EQ(form->Continue(), 0);
    EXPECT_EQ(form->StatusTitle().substr(0, form->StatusTitle().find('\n')), "default: 2d data");
    EXPECT_EQ(form->record.nt, 3);
}

TEST_F(MuFormTest, TwoOffsetsBecomeOneAtTheLfePage) {
    Real("mag", 16, 12, 1, 2, [](size_t) { return 100.0f; });
    Real("ph", 16, 12, 1, 2, [](size_t i) { return float(i % 5); });
    Open(CMuForm::PAGE_PARAMS, "mag", "ph", 0);
    form->Params()->c.noff = 2;
    while (form->ActivePage() < CMuForm::PAGE_OUTPUT) ASSERT_EQ(form->Continue(), 0);
    EXPECT_EQ(form->record.nt, 2);
    ASSERT_EQ(form->Continue(), 0);
    ASSERT_EQ(form->ActivePage(), CMuForm::PAGE_LFE);
    EXPECT_EQ(form->record.nt, 1);
    EXPECT_EQ(form->record.lfe_noft, 1);
}

TEST_F(MuFormTest, OptionSelector) {
    options.Add(2);
    options.Get(1)->name = "liver";
    options.Get(1)->mech_freq = 50;
    options.Get(2)->name = "brain";
    options.Get(2)->lfe_nbands = 9;
    options.Get(2)->lfe_default = 0;
    Real("mag", 16, 12, 1, 8, [](size_t) { return 100.0f; });
    Real("ph", 16, 12, 1, 8, [](size_t i) { return float(i % 5); });
    Open(CMuForm::PAGE_LFE, "mag", "ph", 0);
    EXPECT_EQ(form->OptionNames(), (std::vector<std::string>{"default", "liver", "brain"}));
    form->SelectOptions(2);
    EXPECT_EQ(form->status, "options changed");
    EXPECT_EQ(form->Lfe()->c.lfe_nbands, 9);
    EXPECT_EQ(form->Data()->c.magnitude, "mag");  // the data chosen stay
    form->RemoveOptions();
    EXPECT_EQ(form->status, "options removed");
    EXPECT_EQ(form->Selected(), 1);
    EXPECT_EQ(options.Count(), 2);
    EXPECT_EQ(form->Params()->c.mech_freq, 50.0f);
    form->SelectOptions(0);
    form->status = "kept";
    form->RemoveOptions();  // never the built-in block: only a refresh
    EXPECT_EQ(options.Count(), 2);
    EXPECT_EQ(form->status, "kept");
    EXPECT_EQ(form->Params()->c.mech_freq, 60.0f);
}

// "load from file" on scanner files the scanner tests' generator writes from the formats'
// layouts with struct and NumPy: the field of view is each axis' size times its step.
TEST_F(MuFormTest, ParamsLoadTheFieldOfViewFromAScannerHeader) {
    peer::Peer p;
    ASSERT_TRUE(p.Run("files/scanner/make_scanner.py"));
    std::map<std::string, std::map<std::string, std::string>> files;
    std::ifstream manifest(p.Dir() / "manifest.txt");
    for (std::string line; std::getline(manifest, line);) {
        std::istringstream words(line);
        std::string name, field;
        words >> name;
        while (words >> field)
            if (size_t eq = field.find('='); eq != std::string::npos)
                files[name][field.substr(0, eq)] = field.substr(eq + 1);
    }
    ASSERT_TRUE(files.count("raw_24x") && files.count("image_imgf_rev2")) << p.Dir();
    // A step from its bit pattern, times the size, in metres.
    // An image file has no z in the manifest: it holds one plane.
    auto fov = [&](const std::string& file, const char* size, const char* step) {
        uint32_t bits = uint32_t(std::stoul(files[file].at(step), nullptr, 16));
        float mm;
        std::memcpy(&mm, &bits, 4);
        const double n = files[file].count(size) ? std::stod(files[file][size]) : 1.0;
        return float(n * double(mm) / 1000.0);
    };

    Real("mag", 16, 12, 1, 8, [](size_t) { return 100.0f; });
    Real("ph", 16, 12, 1, 8, [](size_t i) { return float(i % 5); });
    Open(CMuForm::PAGE_PARAMS, "mag", "ph", 0);
    CPageMuParams* params = form->Params();
    const std::string dir = p.Dir().string() + "/";

    ASSERT_EQ(params->LoadFromFile(dir + "raw_24x"), 0) << form->status;
    EXPECT_EQ(form->status, "2 baselines");
    EXPECT_FLOAT_EQ(params->c.fov[0], fov("raw_24x", "x", "sx"));
    EXPECT_FLOAT_EQ(params->c.fov[1], fov("raw_24x", "y", "sy"));
    EXPECT_FLOAT_EQ(params->c.fov[2], fov("raw_24x", "z", "sz"));
    // The loaded values reach the engine's record with the next step.
    params->SetPhasePreset(3);
    ASSERT_EQ(form->Continue(), 0) << form->status;
    EXPECT_FLOAT_EQ(form->record.fov[0], fov("raw_24x", "x", "sx"));
    EXPECT_FLOAT_EQ(form->block.fov[2], fov("raw_24x", "z", "sz"));

    // An image file holds one plane: z is its slice thickness and gap.
    ASSERT_EQ(params->LoadFromFile(dir + "image_imgf_rev2"), 0) << form->status;
    EXPECT_EQ(form->status, "exam 4321 series 7 image 300");
    EXPECT_FLOAT_EQ(params->c.fov[0], fov("image_imgf_rev2", "x", "sx"));
    EXPECT_FLOAT_EQ(params->c.fov[1], fov("image_imgf_rev2", "y", "sy"));
    EXPECT_FLOAT_EQ(params->c.fov[2], fov("image_imgf_rev2", "z", "sz"));

    // No slices: z keeps what it had.
    const float z = params->c.fov[2];
    ASSERT_EQ(params->LoadFromFile(dir + "raw_14x_no_slices"), 0) << form->status;
    EXPECT_FLOAT_EQ(params->c.fov[0], fov("raw_14x_no_slices", "x", "sx"));
    EXPECT_EQ(params->c.fov[2], z);

    // The reader's failure goes to the status and the edits stay as they were.
    const float kept[3] = {params->c.fov[0], params->c.fov[1], params->c.fov[2]};
    const std::pair<std::string, std::string> bad[] = {
        {"image_unknown", "unknown header"},
        {"image_imgf_rev5", "unknown rev of 5x header"},
        {"pulsegen_ipg0_odd", "unknown header"},
        {"missing", "can't open file '" + dir + "missing' for reading"}};
    for (const auto& [file, text] : bad) {
        SCOPED_TRACE(file);
        EXPECT_EQ(params->LoadFromFile(dir + file), 1);
        EXPECT_EQ(form->status, text);
        EXPECT_EQ(params->Status(), text);
        for (int a = 0; a < 3; ++a) EXPECT_EQ(params->c.fov[a], kept[a]);
    }
}

// The help button of every page finds its page in the help folder beside the programs.
TEST_F(MuFormTest, EveryPageHasItsHelpBesideThePrograms) {
    Real("mag", 16, 12, 1, 8, [](size_t) { return 100.0f; });
    Real("ph", 16, 12, 1, 8, [](size_t i) { return float(i % 5); });
    Open(CMuForm::PAGE_PARAMS, "mag", "ph", 0);
    form->Params()->SetPhasePreset(3);
    while (form->ActivePage() < CMuForm::PAGE_LFE) ASSERT_EQ(form->Continue(), 0) << form->status;
    const CPaths paths = CPaths::FromExecutable(QUELMOR_MU);
    ASSERT_FALSE(paths.help.empty());
    std::set<std::string> pages;
    for (int i = 0; i < form->PageCount(); ++i) {
        const std::string path = paths.help + "/" + form->Page(i)->HelpPage();
        pages.insert(form->Page(i)->HelpPage());
        std::ifstream file(path);
        std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        EXPECT_NE(text.find("<h1>"), std::string::npos) << path;
    }
    EXPECT_EQ(pages, (std::set<std::string>{"wave_data.htm", "wave_filters.htm", "wave_lfe.htm",
                                            "wave_parameters.htm", "wave_unwrap.htm"}));
}

}  // namespace
