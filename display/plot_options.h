// C1d: the options of the plot views that are not the new-display holders': whether the y
// axis stays put when the x range is zoomed, and the axis options of 1d and xy plots.
#pragma once

#include <cstdio>

#include "display/axis_options.h"
#include "display/look.h"

class CKeyReader;

struct C1d {
    int ScanfOptions(CKeyReader& reader);
    void PrintfOptions(FILE* file) const;

    // 1: y keeps its range through zooms; 0: y is found again from the samples shown.
    int axis_lock = 0;
    CAxisOptions axes_1d{LOOK_1D};
    CAxisOptions axes_xy{LOOK_XY};
};

C1d& Global1d();
