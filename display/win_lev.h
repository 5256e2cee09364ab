// GWinLev: the one working window and level of the program, and its options. A target (a
// display) hands over its planes; Take copies plane values into the working set, Apply writes
// the working set back to one target or to every chosen target, then asks them to redraw.
//
// With the spatial ramp on (`wl_ramp` 1) a target's array gets two r4 companions,
// name + ".window" and name + ".level", of size 1 in every direction but the ramp direction;
// they are filled from the low to the high end and read per pixel by the image pipeline.
//
//   GWinLev& wl = GlobalWinLev();
//   wl.Take(view);            // the display's plane 0 (rgb: the first plane in the mask)
//   wl.MouseStep(12, -3);     // a drag of 12 by -3 pixels
//   wl.Apply(view, space);    // plane values written, companions filled, view redrawn
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "core/zrk_data.h"
#include "display/look.h"

class CDataSpace;
class CKeyReader;
class CZrkData;

// What window and level act on: a display with a look and an array.
class CWinLevTarget {
  public:
    virtual ~CWinLevTarget() = default;
    virtual CLook& TargetLook() = 0;
    // The array the ramp companions belong to (rgb: the red one); null when none.
    virtual CZrkData* TargetData() = 0;
    virtual void TargetRedraw() = 0;
};

// The eight window/level fields of a plane.
struct CWinLevValues {
    float window = 1.0f, level = 0.5f, datamin = 0.0f, datamax = 1.0f;
    int inv = 0, wscale = 0;
    float nonlin = 1.0f;
    int wlcycles = 1;

    void From(const CPlane& p);
    void To(CPlane& p) const;
};

class GWinLev {
  public:
    static constexpr int kPlotKinds = 5;
    static constexpr int kMouseSteps = 9;
    static const char* const kPlotNames[kPlotKinds];
    static const char* const kMouseStepNames[kMouseSteps];
    static const char* const kScaleNames[3];

    int ScanfOptions(CKeyReader& reader);
    void PrintfOptions(FILE* file) const;

    // Working values from plane 0 of `target` (rgb: the first plane of the mask) and, with
    // the ramp on, the ramp ends from the companions. A target without a plane is ignored.
    void Take(CWinLevTarget& target, const CDataSpace* space);
    // The working values to `target`; 1 when written.
    int Apply(CWinLevTarget& target, CDataSpace& space);
    // The same values to each target; the first makes the companions.
    int ApplyAll(const std::vector<CWinLevTarget*>& targets, CDataSpace& space);

    // A drag of (dx, dy) pixels; `ramp_end` 0 moves both ends of a ramp, 1 the low, 2 the high.
    void MouseStep(int dx, int dy);
    // Slider positions 0 ... 100 to window and level, and back.
    void SetWindowSlider(int p);
    void SetLevelSlider(int p);
    int WindowSlider() const;
    int LevelSlider() const;
    // Scale 0 linear, 1 log (nonlin at least 2), 2 exp (nonlin 1 ... 100).
    void SetScale(int wscale);
    // The mouse step of entry `i` of the step combo.
    void SetMouseStep(int i);

    // Copy and paste of window, level and palette; the texts go to the status.
    void Copy(const CLook& look);
    void Paste(CWinLevTarget& target, CDataSpace& space);

    // The companions' shape for `a`: 1 but in the ramp direction.
    void RampShape(const CZrkData* a, res_t res[6]) const;

    CWinLevValues values;
    float window_lo = 1.0f, window_hi = 1.0f, level_lo = 0.5f, level_hi = 0.5f;
    int ramp_dir = 0;  // 0 x, 1 y, 2 z, 3 t
    int ramp_end = 0;
    CWinLevTarget* target = nullptr;

    int do_mouse_as_percent = 1;
    float mouse = 0.005f;
    int wl_plot = 0;
    int wl_ramp = 0;
    uint32_t channel_mask = 7;

  private:
    CPlane* FirstPlane(CLook& look) const;
    int MakeCompanions(CZrkData* a, CDataSpace& space) const;

    bool copied_ = false;
    CWinLevValues copy_;
    int copy_palette_ = 0;
    std::string copy_source_;
};

GWinLev& GlobalWinLev();
