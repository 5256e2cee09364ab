// C2d: the options of the image views: window and level shared by all selected images or by
// all planes of a stack, the width of a profile in pixels, and whole names in title bars.
#pragma once

#include <cstdio>

class CKeyReader;

struct C2d {
    int ScanfOptions(CKeyReader& reader);
    void PrintfOptions(FILE* file) const;

    int lock_wl = 0;
    int stack_wl = 0;
    int profile_width = 1;
    int full_title = 0;
};

C2d& Global2d();
