// The new-display forms' logic: checks, the count question, references and copies, append,
// the status lines and the option keys.
#include "display/new_display.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "core/data_space.h"
#include "core/host.h"
#include "core/window_space.h"
#include "tests/display/view_test_util.h"

namespace {

std::vector<CDisplayRequest> g_requests;

CDisplayEntry* Recording(const CDisplayRequest& r) {
    g_requests.push_back(r);
    auto doc = std::make_unique<CTestDoc>(r.kind, r.data[0]);
    doc->look = *r.look;
    for (int k = 0; k < 3; ++k) doc->data[k] = r.data[k];
    return static_cast<CDisplayEntry*>(GlobalWindowSpace().NewData(std::move(doc)));
}

class NewDisplayTest : public ::testing::Test {
  protected:
    void SetUp() override {
        g_requests.clear();
        previous_[0] = SetDisplayWindow(LOOK_2D, Recording);
        previous_[1] = SetDisplayWindow(LOOK_RGB, Recording);
        space_.SetUnique();
    }
    void TearDown() override {
        SetDisplayWindow(LOOK_2D, previous_[0]);
        SetDisplayWindow(LOOK_RGB, previous_[1]);
        while (GlobalWindowSpace().Count()) GlobalWindowSpace().DelData(0);
    }
    CZrkData* Array(const char* name, res_t nx, res_t ny, res_t nz, res_t nt) {
        CZrkData* a = space_.NewData(TYPE_R4, nx, ny, nz, nt, 1, 1, name);
        auto* f = static_cast<float*>(a->Data());
        for (uint64_t i = 0; i < a->Count(); ++i) f[i] = float(i);
        return a;
    }

    CDataSpace space_;
    CHeadlessHost host_;
    CScopedHost scoped_{host_};
    DisplayWindowHook previous_[2];
};

TEST_F(NewDisplayTest, AWholeArrayIsReferencedWithItsRange) {
    CZrkData* a = Array("wave", 8, 6, 3, 1);
    CNew2d n;
    n.names[0] = "wave";
    n.iqmp = 0;
    EXPECT_EQ(n.UpdateStatus(space_), "output= wave (8,6,3,1) in 1 plots");
    ASSERT_EQ(n.OnViewNew(space_), 1);
    ASSERT_EQ(g_requests.size(), 1u);
    EXPECT_EQ(g_requests[0].data[0], a);
    EXPECT_EQ(g_requests[0].kind, uint32_t(LOOK_2D));
    EXPECT_TRUE(host_.questions.empty());
    const CPlane& p = n.opened[0]->look.palplane;
    EXPECT_EQ(p.datamin, 0);
    EXPECT_EQ(p.datamax, 143);
    EXPECT_EQ(p.iqmp, 0);
    EXPECT_EQ(n.status, "display 2d");
}

TEST_F(NewDisplayTest, VolumesBecomeCopiesAndThreeOrMoreAsk) {
    Array("two", 4, 4, 1, 2);
    CNew2d n;
    n.names[0] = "two";
    ASSERT_EQ(n.OnViewNew(space_), 1);
    EXPECT_TRUE(host_.questions.empty());
    ASSERT_EQ(g_requests.size(), 2u);
    EXPECT_STREQ(g_requests[0].data[0]->name, "i00");
    EXPECT_STREQ(g_requests[1].data[0]->name, "i01");
    EXPECT_EQ(static_cast<float*>(g_requests[1].data[0]->Data())[0], 16);
    EXPECT_EQ(g_requests[1].data[0]->nt, 1u);

    Array("three", 4, 4, 1, 3);
    n.names[0] = "three";
    host_.answer = false;
    EXPECT_EQ(n.OnViewNew(space_), 0);
    ASSERT_EQ(host_.questions.size(), 1u);
    EXPECT_EQ(host_.questions[0], "Do you really want 3 windows");
    EXPECT_EQ(g_requests.size(), 2u);
    host_.answer = true;
    EXPECT_EQ(n.OnViewNew(space_), 1);
    EXPECT_EQ(g_requests.size(), 5u);
    EXPECT_STREQ(g_requests[4].data[0]->name, "i04");
}

TEST_F(NewDisplayTest, BadInputGivesTheFormsTexts) {
    CNew2d n;
    n.names[0] = "nothing";
    EXPECT_EQ(n.OnViewNew(space_), 0);
    EXPECT_EQ(n.status, "data not found");
    space_.NewData("untyped");
    n.names[0] = "untyped";
    EXPECT_EQ(n.OnViewNew(space_), 0);
    EXPECT_EQ(n.status, "data not found");

    Array("r", 4, 4, 1, 1);
    Array("g", 5, 4, 1, 1);
    Array("b", 4, 3, 1, 1);
    CNewRgb rgb;
    rgb.names[0] = "r", rgb.names[1] = "g";
    EXPECT_EQ(rgb.OnViewNew(space_), 0);
    EXPECT_EQ(rgb.status, "x resolutions incompatible");
    rgb.names[1] = "", rgb.names[2] = "b";
    EXPECT_EQ(rgb.OnViewNew(space_), 0);
    EXPECT_EQ(rgb.status, "y resolutions incompatible");
    rgb.names[2] = "r";
    EXPECT_EQ(rgb.UpdateStatus(space_), "output= (4,4,1,1) in 1 plots");
    ASSERT_EQ(rgb.OnViewNew(space_), 1);
    EXPECT_EQ(g_requests.back().data[1], nullptr);
    EXPECT_EQ(g_requests.back().kind, uint32_t(LOOK_RGB));

    CNew1d plot;
    plot.names[0] = "r";
    EXPECT_EQ(plot.UpdateStatus(space_), "output= r (4,4,1,1) in 1 plots");
    EXPECT_EQ(plot.OnViewNew(space_), 0);  // no 1d factory
    EXPECT_EQ(plot.status, "display failed");
}

TEST_F(NewDisplayTest, AppendAddsPlanesToAnOpenImage) {
    CZrkData* a = Array("a", 4, 4, 1, 1);
    CNew2d n;
    n.names[0] = "a";
    ASSERT_EQ(n.OnViewNew(space_), 1);
    Array("more", 4, 4, 2, 1);
    n.names[0] = "more";
    n.append = 1;
    ASSERT_EQ(n.OnViewNew(space_), 1);
    EXPECT_EQ(a->nz, 3u);
    EXPECT_EQ(static_cast<float*>(a->Data())[16 + 5], 5);
    Array("wide", 5, 4, 1, 1);
    n.names[0] = "wide";
    EXPECT_EQ(n.OnViewNew(space_), 0);
    EXPECT_EQ(n.status, "no images found with the resoulution (5, 4, *, 1)");
    Array("stack", 4, 4, 1, 2);
    n.names[0] = "stack";
    EXPECT_EQ(n.OnViewNew(space_), 0);
    EXPECT_EQ(n.status, "zarnik cannot append to multiple windows");
}

TEST_F(NewDisplayTest, OptionsOf2dGoOutAndComeBack) {
    CNew2d n;
    n.nameformat = "img%03d", n.palname = "jet", n.roicolor = 0xff00, n.scroll_time = 250;
    char buffer[1024] = {};
    FILE* out = fmemopen(buffer, sizeof buffer, "w");
    n.PrintfOptions(out);
    std::fclose(out);
    EXPECT_NE(std::string(buffer).find("\n// 2d plot options\n2d_nameformat= img%03d\n"),
              std::string::npos);
    EXPECT_NE(std::string(buffer).find("2d_roicolor= ff00\n"), std::string::npos);
    CNew2d back;
    FILE* in = fmemopen(buffer, std::strlen(buffer), "r");
    CKeyReader reader(in);
    try {
        for (;;) {
            reader.Next();
            back.ScanfOptions(reader);
        }
    } catch (const CKeyReader::EndOfFile&) {
    }
    std::fclose(in);
    EXPECT_EQ(back.nameformat, "img%03d");
    EXPECT_EQ(back.palname, "jet");
    EXPECT_EQ(back.roicolor, 0xff00u);
    EXPECT_EQ(back.scroll_time, 250);
    // New looks start from these.
    EXPECT_EQ(CLook(LOOK_2D).palplane.palette->index, 9);
    EXPECT_EQ(CLook(LOOK_2D).scroll_time, 250);
    // Back to the defaults for the other tests of the program.
    CNew2d defaults;
    FILE* reset = fmemopen(const_cast<char*>("2d_palname= grey\n"), 17, "r");
    CKeyReader r2(reset);
    r2.Next();
    defaults.ScanfOptions(r2);
    std::fclose(reset);
}

TEST_F(NewDisplayTest, OptionsOfXyGoOutAndComeBackApartFrom1d) {
    const CLookDefaults saved = LookDefaults(LOOK_XY);
    CNewXy n;
    n.iqmp = 3, n.linecolor = 0xff00, n.backcolor = 0x202020, n.symbol = 2, n.plotsize[0] = 300;
    n.axis[3] = 1, n.axis_text[2] = 0;
    char buffer[2048] = {};
    FILE* out = fmemopen(buffer, sizeof buffer, "w");
    n.PrintfOptions(out);
    std::fclose(out);
    EXPECT_NE(std::string(buffer).find("xy_linecolor= ff00\n"), std::string::npos);
    EXPECT_NE(std::string(buffer).find("xy_plotsize(pixels)= 300 256\n"), std::string::npos);
    CNewXy back;
    CNew1d other;
    FILE* in = fmemopen(buffer, std::strlen(buffer), "r");
    CKeyReader reader(in);
    int foreign = 0;
    try {
        for (;;) {
            reader.Next();
            back.ScanfOptions(reader);
            foreign += other.ScanfOptions(reader);
        }
    } catch (const CKeyReader::EndOfFile&) {
    }
    std::fclose(in);
    EXPECT_EQ(foreign, 0);  // no xy key is a 1d one
    EXPECT_EQ(back.iqmp, 3);
    EXPECT_EQ(back.linecolor, 0xff00u);
    EXPECT_EQ(back.backcolor, 0x202020u);
    EXPECT_EQ(back.symbol, 2);
    EXPECT_EQ(back.plotsize[0], 300);
    // New xy looks start from these: kind 4 is the right axis, kind 2 the left.
    const CLook look(LOOK_XY);
    EXPECT_EQ(look.screen.bg, 0x202020);
    EXPECT_EQ(look.axes[3].show, 1);
    EXPECT_EQ(look.axes[1].label, 0);
    EXPECT_EQ(CLook(LOOK_1D).axes[1].label, 1);
    LookDefaults(LOOK_XY) = saved;
}

}  // namespace
