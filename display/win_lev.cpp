#include "display/win_lev.h"

#include <algorithm>
#include <cmath>

#include "core/data_cursor.h"
#include "core/data_space.h"
#include "core/host.h"
#include "core/key_reader.h"
#include "display/image_bits.h"

const char* const GWinLev::kPlotNames[kPlotKinds] = {"no plot", "plot spatial ramp", "plot lut",
                                                     "horiz color bar", "vert color bar"};
const char* const GWinLev::kMouseStepNames[kMouseSteps] = {
    "  1% of range", " .5% of range", " .1% of range", ".01% of range", "100",
    " 10",           "  1",           "  .1",          "  .01"};
const char* const GWinLev::kScaleNames[3] = {"linear", "log", "exp"};

GWinLev& GlobalWinLev() {
    static GWinLev wl;
    return wl;
}

void CWinLevValues::From(const CPlane& p) {
    window = p.window;
    level = p.level;
    datamin = p.datamin;
    datamax = p.datamax;
    inv = p.inv;
    wscale = p.wscale;
    nonlin = p.nonlin;
    wlcycles = p.wlcycles;
}

void CWinLevValues::To(CPlane& p) const {
    p.window = window;
    p.level = level;
    p.datamin = datamin;
    p.datamax = datamax;
    p.inv = inv;
    p.wscale = wscale;
    p.nonlin = nonlin;
    p.wlcycles = wlcycles;
}

int GWinLev::ScanfOptions(CKeyReader& reader) {
    if (reader.Int("do_mouse_as_percent=", &do_mouse_as_percent)) return 1;
    if (reader.Float("mouse=", &mouse)) return 1;
    if (reader.Int("wl_plot=", &wl_plot)) {
        wl_plot = std::clamp(wl_plot, 0, kPlotKinds - 1);
        return 1;
    }
    if (reader.Int("wl_ramp=", &wl_ramp)) {
        wl_ramp = wl_ramp ? 1 : 0;
        return 1;
    }
    return 0;
}

void GWinLev::PrintfOptions(FILE* file) const {
    std::fprintf(file, "\n//window/level options\n");
    std::fprintf(file, "do_mouse_as_percent= %d\n", do_mouse_as_percent);
    std::fprintf(file, "mouse= %f\n", mouse);
    std::fprintf(file, "wl_plot= %d\n", wl_plot);
    std::fprintf(file, "wl_ramp= %d\n", wl_ramp);
}

CPlane* GWinLev::FirstPlane(CLook& look) const {
    if (look.flags == LOOK_RGB) {
        for (int k = 0; k < 3; ++k)
            if (channel_mask & (1u << k)) return look.Plane(k + 1);
        return nullptr;
    }
    return look.flags == LOOK_2D ? &look.palplane : nullptr;
}

void GWinLev::RampShape(const CZrkData* a, res_t res[6]) const {
    for (int d = 0; d < 6; ++d) res[d] = 1;
    const int dir = std::clamp(ramp_dir, 0, 3);
    res[dir] = std::max<res_t>(1, a->Res(dir));
}

void GWinLev::Take(CWinLevTarget& t, const CDataSpace* space) {
    Host().Trace("GWinLev::Take");
    CPlane* plane = FirstPlane(t.TargetLook());
    if (!plane) return;
    target = &t;
    values.From(*plane);
    window_lo = window_hi = values.window;
    level_lo = level_hi = values.level;
    if (!wl_ramp) return;
    const CZrkData *w = nullptr, *l = nullptr;
    FindCompanions(space, t.TargetData(), &w, &l);
    auto ends = [](const CZrkData* c, float& lo, float& hi) {
        CDataCursor<float> in(c, 0);
        lo = in.Get(0);
        hi = in.Get(c->Count() - 1);
    };
    if (w) ends(w, window_lo, window_hi);
    if (l) ends(l, level_lo, level_hi);
}

int GWinLev::MakeCompanions(CZrkData* a, CDataSpace& space) const {
    res_t res[6];
    RampShape(a, res);
    const std::string base = a->name;
    const float ends[2][2] = {{window_lo, window_hi}, {level_lo, level_hi}};
    const char* suffix[2] = {".window", ".level"};
    for (int k = 0; k < 2; ++k) {
        const std::string name = base + suffix[k];
        CZrkData* c = space.FindData(name.c_str());
        res_t have[6] = {};
        if (c) c->GetRes(have);
        if (!c || c->Type() != TYPE_R4 || !c->Data() || !std::equal(have, have + 6, res)) {
            if (c) space.DelData(c);
            c = space.NewData(TYPE_R4, res[0], res[1], res[2], res[3], res[4], res[5],
                              name.c_str());
            if (!c) return 0;
        }
        const uint64_t n = c->Count();
        auto* f = static_cast<float*>(c->Data());
        const float lo = ends[k][0], hi = ends[k][1];
        for (uint64_t i = 0; i < n; ++i)
            f[i] = n > 1 ? static_cast<float>(double(i) * (hi - lo) / double(n - 1) + lo) : lo;
        c->changed = 1;
    }
    return 1;
}

int GWinLev::Apply(CWinLevTarget& t, CDataSpace& space) { return ApplyAll({&t}, space); }

int GWinLev::ApplyAll(const std::vector<CWinLevTarget*>& targets, CDataSpace& space) {
    Host().Trace("GWinLev::Apply");
    int written = 0;
    for (CWinLevTarget* t : targets) {
        if (!t) continue;
        CLook& look = t->TargetLook();
        if (look.flags == LOOK_RGB) {
            for (int k = 0; k < 3; ++k)
                if (channel_mask & (1u << k)) values.To(*look.Plane(k + 1));
        } else if (look.flags == LOOK_2D) {
            values.To(look.palplane);
        } else {
            continue;
        }
        if (CZrkData* a = t->TargetData()) {
            if (wl_ramp) {
                MakeCompanions(a, space);
            } else {
                // Without the ramp a pixel takes the plane's values, so stale companions go.
                const std::string base = a->name;
                space.DelData((base + ".window").c_str());
                space.DelData((base + ".level").c_str());
            }
        }
        t->TargetRedraw();
        ++written;
    }
    return written;
}

void GWinLev::MouseStep(int dx, int dy) {
    const float s = do_mouse_as_percent ? (values.datamax - values.datamin) * mouse : mouse;
    values.window += s * dx;
    values.level += s * dy;
    if (ramp_end != 2) {
        window_lo += s * dx;
        level_lo += s * dy;
    }
    if (ramp_end != 1) {
        window_hi += s * dx;
        level_hi += s * dy;
    }
}

void GWinLev::SetWindowSlider(int p) {
    values.window = (values.datamax - values.datamin) * 2.0f * std::clamp(p, 0, 100) / 100.0f;
    window_lo = window_hi = values.window;
}

void GWinLev::SetLevelSlider(int p) {
    values.level =
        (values.datamax - values.datamin) * std::clamp(p, 0, 100) / 100.0f + values.datamin;
    level_lo = level_hi = values.level;
}

int GWinLev::WindowSlider() const {
    const float range = values.datamax - values.datamin;
    if (!(range > 0)) return 0;
    return std::clamp(static_cast<int>(std::lround(values.window * 50.0f / range)), 0, 100);
}

int GWinLev::LevelSlider() const {
    const float range = values.datamax - values.datamin;
    if (!(range > 0)) return 0;
    return std::clamp(
        static_cast<int>(std::lround((values.level - values.datamin) * 100.0f / range)), 0, 100);
}

void GWinLev::SetScale(int wscale) {
    values.wscale = std::clamp(wscale, 0, 2);
    if (values.wscale == 1) values.nonlin = std::max(values.nonlin, 2.0f);
    if (values.wscale == 2) values.nonlin = std::clamp(values.nonlin, 1.0f, 100.0f);
}

void GWinLev::SetMouseStep(int i) {
    static constexpr float kSteps[kMouseSteps] = {0.01f, 0.005f, 0.001f, 0.0001f, 100.0f,
                                                  10.0f, 1.0f,   0.1f,   0.01f};
    i = std::clamp(i, 0, kMouseSteps - 1);
    do_mouse_as_percent = i < 4;
    mouse = kSteps[i];
}

void GWinLev::Copy(const CLook& look) {
    const CPlane* plane = FirstPlane(const_cast<CLook&>(look));
    if (!plane) return;
    copy_.From(*plane);
    copy_palette_ = plane->palette ? plane->palette->index : 0;
    copy_source_ = plane->palette ? plane->palette->source : "";
    copied_ = true;
    Host().Status("window/level and pal copied");
}

void GWinLev::Paste(CWinLevTarget& t, CDataSpace& space) {
    if (!copied_) {
        Host().Status("no window and level to paste");
        return;
    }
    CLook& look = t.TargetLook();
    if (look.flags == LOOK_2D) {
        copy_.To(look.palplane);
        const char* name =
            copy_source_.empty() ? CPal::TableName(copy_palette_) : copy_source_.c_str();
        look.palplane.SetPalette(look.palplane.palette_word ? look.palplane.palette_word : 7, name,
                                 &space);
    } else if (look.flags == LOOK_RGB) {
        for (int k = 0; k < 3; ++k)
            if (channel_mask & (1u << k)) copy_.To(*look.Plane(k + 1));
    } else {
        return;
    }
    t.TargetRedraw();
    Host().Status("paste complete");
}
