// Looks as text: every record through Write and Read, the old keys, the counts that give a
// look up, and palettes by name.
#include "display/look.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "core/data_space.h"

namespace {

// Reads a look from `text`, which starts behind the "look=" token.
int ReadLook(CLook* look, const std::string& text, const CDataSpace* space = nullptr) {
    FILE* f = fmemopen(const_cast<char*>(text.data()), text.size(), "r");
    CKeyReader in(f);
    int result = -1;
    try {
        result = look->Read(in, space);
    } catch (const CKeyReader::EndOfFile&) {
        result = -2;
    }
    std::fclose(f);
    return result;
}

std::string Text(const CLook& look, const CDataSpace* space = nullptr) {
    CStringSink s;
    look.Write(s, space);
    return s.text;
}

// Skips the opening "look= " line, as the workspace reader does by the time it hands over.
std::string Body(const std::string& text) { return text.substr(text.find('\n') + 1); }

CLook FullPlot(uint32_t kind) {
    CLook look(kind);
    look.radians = 0, look.scroll_time = 250, look.roi_color = 0x00ff00, look.units = 3;
    CLine& line = look.AddLine();
    line.text_color = 0xab12cd;
    std::snprintf(line.text, sizeof line.text, "left ventricle, run 2");
    line.symbol = 3, line.color = 0x123456, line.overlay = -2.5f, line.err_xy = 1;
    look.AddLine().iqmpy = 2;
    CArrow& arrow = look.AddArrow();
    arrow.start[0] = 1.5f, arrow.end[1] = -7.25f, arrow.arrow0 = 1, arrow.color = 99;
    CText& text = look.AddText();
    text.str_color = 0xff;
    std::snprintf(text.str, sizeof text.str, "peak at 3 mm");
    text.pos[0] = 0.25f, text.hv = 1;
    std::snprintf(text.font.name, sizeof text.font.name, "dejavu sans mono");
    text.font.height = -22, text.font.weight = 700, text.font.italic = 1;
    look.legend.legend = 1, look.legend.space[1] = 4;
    look.screen.pix_range[0] = 640, look.screen.usr_yrange[1] = 42.0f, look.screen.bg = 7;
    if (look.axes.size() == 4) {
        look.axes[2].tick = 0.5f, look.axes[2].grid = 1;
        std::snprintf(look.axes[3].tickformat, sizeof look.axes[3].tickformat, "%%.2f s");
    }
    return look;
}

}  // namespace

TEST(Look, KindsStartFromTheirDefaults) {
    const CLook plot(LOOK_1D), xy(LOOK_XY), image(LOOK_2D), rgb(LOOK_RGB), sheet(LOOK_SPREADSHEET);
    ASSERT_EQ(plot.naxis, 4);
    for (int k = 0; k < 4; ++k) EXPECT_EQ(plot.axes[k].kind, k + 1);
    EXPECT_EQ(xy.naxis, 4);
    EXPECT_EQ(image.naxis, 0);
    EXPECT_EQ(plot.scroll_time, 100);
    EXPECT_EQ(sheet.scroll_time, 1000);
    EXPECT_EQ(plot.roi_color, 255);
    EXPECT_EQ(plot.radians, 1);
    EXPECT_EQ(plot.units, 0);
    ASSERT_TRUE(image.palplane.palette);
    EXPECT_STREQ(image.palplane.palette->FileName(nullptr), "grey");
    EXPECT_FALSE(plot.palplane.palette);
    const uint32_t masks[3] = {1, 2, 4};
    for (int k = 1; k <= 3; ++k) {
        ASSERT_TRUE(rgb.Plane(k)->palette);
        EXPECT_EQ(rgb.Plane(k)->palette->mode, masks[k - 1]);
    }
    EXPECT_EQ(plot.Plane(4), nullptr);
    // The axis reset, tickscale as the float bits of 1.0.
    const GAxis& a = plot.axes[0];
    uint32_t bits;
    std::memcpy(&bits, &a.tickscale, 4);
    EXPECT_EQ(bits, 0x3f800000u);
    EXPECT_EQ(a.show + a.enable, 2);
    EXPECT_EQ(a.ax_range[0], 0.0f);
    EXPECT_EQ(a.ax_range[1], 1.0f);
    EXPECT_STREQ(a.tickformat, "default");
}

TEST(Look, CopiesAreDeep) {
    CLook a(LOOK_2D);
    a.AddLine().color = 5;
    CLook b(a);
    b.lines[0].color = 6;
    b.palplane.palette->SetByName("jet", nullptr);
    EXPECT_EQ(a.lines[0].color, 5);
    EXPECT_STREQ(a.palplane.palette->FileName(nullptr), "grey");
    EXPECT_NE(a.palplane.palette.get(), b.palplane.palette.get());
    b.RemoveLine(0);
    b.RemoveLine(7);  // out of range: nothing
    EXPECT_TRUE(b.lines.empty());
    EXPECT_EQ(a.lines.size(), 1u);
}

TEST(Look, EveryRecordRoundTrips) {
    for (uint32_t kind : {LOOK_1D, LOOK_XY, LOOK_2D, LOOK_RGB}) {
        CLook look = FullPlot(kind);
        if (kind == LOOK_2D) {
            look.palplane.SetPalette(7, "black body green", nullptr);
            look.palplane.window = 12.5f, look.palplane.inv = 1, look.palplane.iqmp = 3;
            look.palplane.zoom[1] = 250.0f, look.palplane.pan[0] = -4;
        }
        if (kind == LOOK_RGB) look.gplane.level = -3.0f, look.bplane.wlcycles = 4;
        const std::string text = Text(look);
        CLook back(kind);
        back.lines.clear();
        ASSERT_EQ(ReadLook(&back, Body(text)), 1) << text;
        EXPECT_EQ(Text(back), text);
        EXPECT_STREQ(back.text[0].font.name, "dejavu sans mono");
        EXPECT_EQ(back.text[0].font.height, -22);
        EXPECT_STREQ(back.lines[0].text, "left ventricle, run 2");
        EXPECT_EQ(back.lines[0].text_color, 0xab12cdu);
    }
}

TEST(Look, WrittenTextsAreExact) {
    CLook look(LOOK_1D);
    look.AddText().str_color = 0x1f;
    std::snprintf(look.text[0].str, sizeof look.text[0].str, "a b");
    look.AddLine().text_color = 0xa0;
    const std::string text = Text(look);
    EXPECT_EQ(text.rfind("look= \nradians= 1\nscroll_time= 100\nroi_color= 255\nunits= 0\n", 0),
              0u);
    EXPECT_NE(text.find("text= 1\nstr= 1fi a b\npos= 0.000000 0.000000\nfont= 14 400 0 arial\n"),
              std::string::npos);
    EXPECT_NE(text.find("lines= 1\ntext= a0i \nsymbol= "), std::string::npos);
    EXPECT_NE(text.find("screen=\npix_range= 512 512\n"), std::string::npos);
    EXPECT_NE(text.find("naxis= 4\nxyz= 1\nshow= 1\n"), std::string::npos);
    EXPECT_TRUE(text.ends_with("color= 0\nend \nendlook \n"));
    // No lines: no "lines=" at all.
    EXPECT_EQ(Text(CLook(LOOK_1D)).find("lines="), std::string::npos);
    // A plane without a palette writes no palname, and a word of 0.
    CLook rgb(LOOK_RGB);
    rgb.rplane.palette.reset();
    rgb.rplane.palette_word = 0;
    const std::string planes = Text(rgb);
    EXPECT_NE(planes.find("rplane=\nzoom= 100.000000 100.000000\npan= 0 0\niqmp= 2 0\nwindow= "),
              std::string::npos);
    EXPECT_NE(planes.find("gplane=\nzoom= 100.000000 100.000000\npan= 0 0\niqmp= 2 2\npalname= "
                          "grey\nwindow= "),
              std::string::npos);
}

TEST(Look, OldKeysStillRead) {
    CLook look(LOOK_1D);
    const std::string old =
        "xaxis=\ndoaxis= 0\nplt_range= -5 5\nax_range= 1 2\nfontsize= 30\ncolor= 9\nend\n"
        "yaxis=\ntickscale= 2\nplt_range= 0 8\ntickformat= %.1e\nend\n"
        "screen=\nclip= 1\nbg= 3\nend\n"
        "dolegend= 1\npos= 4 5\nfontsize= 11\nend\n"
        "text= 1\nstr= ffi hello there\nfontsize= 17\nend\n"
        "pal= 3\npalname= jet\nendlook\n";
    ASSERT_EQ(ReadLook(&look, old), 1);
    EXPECT_EQ(look.axes[0].show, 0);
    EXPECT_EQ(look.axes[0].ax_range[1], 2.0f);
    EXPECT_EQ(look.axes[0].font.height, 30);
    EXPECT_EQ(look.axes[0].color, 9);
    EXPECT_EQ(look.screen.usr_xrange[0], -5.0f);
    EXPECT_EQ(look.screen.usr_yrange[1], 8.0f);
    EXPECT_EQ(look.axes[1].tickscale, 2.0f);
    EXPECT_STREQ(look.axes[1].tickformat, "%.1e");
    EXPECT_EQ(look.screen.bg, 3);
    EXPECT_EQ(look.legend.legend, 1);
    EXPECT_EQ(look.legend.pos[1], 5.0f);
    EXPECT_EQ(look.legend.font.height, 11);
    ASSERT_EQ(look.text.size(), 1u);
    EXPECT_STREQ(look.text[0].str, "hello there");
    EXPECT_EQ(look.text[0].font.height, 17);
    ASSERT_TRUE(look.palplane.palette);
    EXPECT_EQ(look.palplane.palette->index, 9);
    EXPECT_EQ(look.palplane.palette->mode, 3u);
}

TEST(Look, CountsAndEnds) {
    // "end" closes every record; "end=" of an arrow is a key, not the close.
    CLook look(LOOK_1D);
    look.AddLine().color = 4;
    ASSERT_EQ(ReadLook(&look,
                       "lines= 0\narrows= 1\nend= 3 4\nend\ntext= 1\nend\nscreen=\nend\n"
                       "legend= 1\nend\nnaxis= 1\nend\nendlook\n"),
              1);
    EXPECT_EQ(look.lines.size(), 1u);  // a count of 0 leaves the lines alone
    EXPECT_EQ(look.lines[0].color, 4);
    EXPECT_EQ(look.arrows[0].end[1], 4.0f);
    EXPECT_EQ(look.naxis, 1);
    // A count that can't be met gives the look up; what came before stays.
    for (const char* count : {"2000000000", "-1"}) {
        CLook given_up(LOOK_1D);
        const std::string text = std::string("units= 7\nlines= ") + count + "\nendlook\n";
        EXPECT_EQ(ReadLook(&given_up, text), 0) << count;
        EXPECT_EQ(given_up.units, 7);
    }
    // A missing end is the end of the file.
    CLook open(LOOK_1D);
    EXPECT_EQ(ReadLook(&open, "arrows= 1\nthick= 3\n"), -2);
}

TEST(Look, PalettesByName) {
    CDataSpace space;
    space.NewData(TYPE_N1, 256, 3, 1, 1, 1, 1, "lut");
    space.NewData(TYPE_N1, 3, 256, 1, 1, 1, 1, "lut_t");
    space.NewData(TYPE_N1, 256, 4, 1, 1, 1, 1, "not_a_lut");
    const struct {
        const char* name;
        int index;
        bool array;
    } cases[] = {
        {"grey", 0, false},
        {"awave", 1, false},
        {"aaasmo", 2, false},
        {"black body yellow", 3, false},
        {"black body blue", 6, false},
        {"spectrum", 7, false},
        {"thallium", 8, false},
        {"jet", 9, false},
        {"lut", 0, true},
        {"lut_t", 0, true},
        {"not_a_lut", 0, false},
        {"nothing", 0, false},
    };
    for (const auto& c : cases) {
        CPal p;
        p.SetByName("jet", &space);
        p.SetByName(c.name, &space);
        EXPECT_EQ(p.index, c.index) << c.name;
        EXPECT_EQ(p.IsArray(), c.array) << c.name;
    }
    // An array palette is written by the array's name while it lasts, then by its table.
    CLook look(LOOK_2D);
    look.palplane.SetPalette(7, "lut", &space);
    EXPECT_NE(Text(look, &space).find("palname= lut\n"), std::string::npos);
    space.DelData("lut");
    EXPECT_NE(Text(look, &space).find("palname= grey\n"), std::string::npos);
}
