// Working window and level: take and apply on displays, companions of the ramp, the mouse
// step, sliders, scales, copy and paste, and the option keys.
#include "display/win_lev.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "core/data_space.h"
#include "core/host.h"
#include "core/key_reader.h"

namespace {

struct Target : CWinLevTarget {
    explicit Target(uint32_t kind, CZrkData* d) : look(kind), data(d) {}
    CLook& TargetLook() override { return look; }
    CZrkData* TargetData() override { return data; }
    void TargetRedraw() override { ++redraws; }
    CLook look;
    CZrkData* data;
    int redraws = 0;
};

class WinLevTest : public ::testing::Test {
  protected:
    CDataSpace space_;
    CHeadlessHost host_;
    CScopedHost scoped_{host_};
    CZrkData* a_ = space_.NewData(TYPE_R4, 8, 4, 2, 1, 1, 1, "a");
    GWinLev wl_;
};

TEST_F(WinLevTest, TakeAndApplyMoveTheEightValues) {
    Target t(LOOK_2D, a_), u(LOOK_2D, a_);
    t.look.palplane.window = 40, t.look.palplane.level = 7, t.look.palplane.datamax = 99;
    wl_.Take(t, &space_);
    EXPECT_EQ(wl_.values.window, 40);
    EXPECT_EQ(wl_.values.datamax, 99);
    wl_.values.inv = 1, wl_.values.wlcycles = 3;
    EXPECT_EQ(wl_.ApplyAll({&t, &u}, space_), 2);
    EXPECT_EQ(u.look.palplane.window, 40);
    EXPECT_EQ(u.look.palplane.wlcycles, 3);
    EXPECT_EQ(t.redraws, 1);
    EXPECT_EQ(u.redraws, 1);

    Target rgb(LOOK_RGB, a_), plot(LOOK_1D, a_);
    wl_.channel_mask = 2 | 4;
    wl_.values.window = 5;
    wl_.Apply(rgb, space_);
    EXPECT_NE(rgb.look.rplane.window, 5);
    EXPECT_EQ(rgb.look.gplane.window, 5);
    EXPECT_EQ(rgb.look.bplane.window, 5);
    rgb.look.gplane.level = -3;
    wl_.Take(rgb, &space_);
    EXPECT_EQ(wl_.values.level, -3);
    EXPECT_EQ(wl_.Apply(plot, space_), 0);  // a target without a plane is ignored
}

TEST_F(WinLevTest, RampCompanionsAreMadeFilledRebuiltAndDropped) {
    Target t(LOOK_2D, a_);
    wl_.wl_ramp = 1;
    wl_.ramp_dir = 1;
    wl_.window_lo = 10, wl_.window_hi = 40, wl_.level_lo = 0, wl_.level_hi = -6;
    // A companion of the wrong shape is replaced.
    space_.NewData(TYPE_N1, 3, 3, 1, 1, 1, 1, "a.window");
    wl_.Apply(t, space_);
    const CZrkData* w = space_.FindData("a.window");
    const CZrkData* l = space_.FindData("a.level");
    ASSERT_NE(w, nullptr);
    ASSERT_NE(l, nullptr);
    EXPECT_EQ(w->Type(), TYPE_R4);
    EXPECT_EQ(w->nx, 1u);
    EXPECT_EQ(w->ny, 4u);
    EXPECT_EQ(w->nz, 1u);
    const auto* wf = static_cast<const float*>(w->Data());
    const auto* lf = static_cast<const float*>(l->Data());
    EXPECT_FLOAT_EQ(wf[0], 10);
    EXPECT_FLOAT_EQ(wf[1], 20);
    EXPECT_FLOAT_EQ(wf[3], 40);
    EXPECT_FLOAT_EQ(lf[3], -6);

    GWinLev other;
    other.wl_ramp = 1;
    other.Take(t, &space_);
    EXPECT_FLOAT_EQ(other.window_lo, 10);
    EXPECT_FLOAT_EQ(other.window_hi, 40);
    EXPECT_FLOAT_EQ(other.level_hi, -6);

    wl_.wl_ramp = 0;
    wl_.Apply(t, space_);
    EXPECT_EQ(space_.FindData("a.window"), nullptr);
    EXPECT_EQ(space_.FindData("a.level"), nullptr);
}

TEST_F(WinLevTest, MouseStepSlidersAndScales) {
    wl_.values.datamin = -100, wl_.values.datamax = 100;
    wl_.values.window = 50, wl_.values.level = 0;
    wl_.window_lo = wl_.window_hi = 50;
    wl_.level_lo = wl_.level_hi = 0;
    wl_.SetMouseStep(1);  // .5% of range: 1 per pixel
    wl_.MouseStep(3, -2);
    EXPECT_FLOAT_EQ(wl_.values.window, 53);
    EXPECT_FLOAT_EQ(wl_.values.level, -2);
    wl_.ramp_end = 1;
    wl_.MouseStep(1, 0);
    EXPECT_FLOAT_EQ(wl_.window_lo, 54);
    EXPECT_FLOAT_EQ(wl_.window_hi, 53);
    wl_.ramp_end = 2;
    wl_.SetMouseStep(5);  // " 10" absolute
    wl_.MouseStep(1, 0);
    EXPECT_FLOAT_EQ(wl_.window_lo, 54);
    EXPECT_FLOAT_EQ(wl_.window_hi, 63);

    wl_.SetWindowSlider(25);
    EXPECT_FLOAT_EQ(wl_.values.window, 100);
    EXPECT_EQ(wl_.WindowSlider(), 25);
    wl_.SetLevelSlider(75);
    EXPECT_FLOAT_EQ(wl_.values.level, 50);
    EXPECT_EQ(wl_.LevelSlider(), 75);
    wl_.SetLevelSlider(400);
    EXPECT_FLOAT_EQ(wl_.values.level, 100);

    wl_.values.nonlin = 1;
    wl_.SetScale(1);
    EXPECT_FLOAT_EQ(wl_.values.nonlin, 2);
    wl_.values.nonlin = 500;
    wl_.SetScale(2);
    EXPECT_FLOAT_EQ(wl_.values.nonlin, 100);
}

TEST_F(WinLevTest, CopyAndPaste) {
    Target from(LOOK_2D, a_), to(LOOK_2D, a_);
    wl_.Paste(to, space_);
    EXPECT_EQ(host_.status.back(), "no window and level to paste");
    from.look.palplane.window = 12;
    from.look.palplane.SetPalette(7, "thallium", &space_);
    wl_.Copy(from.look);
    EXPECT_EQ(host_.status.back(), "window/level and pal copied");
    wl_.Paste(to, space_);
    EXPECT_EQ(host_.status.back(), "paste complete");
    EXPECT_EQ(to.look.palplane.window, 12);
    EXPECT_EQ(to.look.palplane.palette->index, 8);
    EXPECT_EQ(to.redraws, 1);
}

TEST_F(WinLevTest, OptionsGoOutAndComeBack) {
    wl_.do_mouse_as_percent = 0, wl_.mouse = 2.5f, wl_.wl_plot = 4, wl_.wl_ramp = 1;
    char buffer[512] = {};
    FILE* out = fmemopen(buffer, sizeof buffer, "w");
    wl_.PrintfOptions(out);
    std::fclose(out);
    EXPECT_EQ(std::string(buffer).rfind("\n//window/level options\n", 0), 0u);
    GWinLev back;
    FILE* in = fmemopen(buffer, std::strlen(buffer), "r");
    CKeyReader reader(in);
    int taken = 0;
    try {
        for (;;) {
            reader.Next();
            taken += back.ScanfOptions(reader);
        }
    } catch (const CKeyReader::EndOfFile&) {
    }
    std::fclose(in);
    EXPECT_EQ(taken, 4);
    EXPECT_EQ(back.do_mouse_as_percent, 0);
    EXPECT_FLOAT_EQ(back.mouse, 2.5f);
    EXPECT_EQ(back.wl_plot, 4);
    EXPECT_EQ(back.wl_ramp, 1);
}

}  // namespace
