// C1d: the options of the plot views that are not the new-display holder's: whether the y
// axis stays put when the x range is zoomed.
#pragma once

#include <cstdio>

class CKeyReader;

struct C1d {
    int ScanfOptions(CKeyReader& reader);
    void PrintfOptions(FILE* file) const;

    // 1: y keeps its range through zooms; 0: y is found again from the samples shown.
    int axis_lock = 0;
};

C1d& Global1d();
