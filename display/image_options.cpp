#include "display/image_options.h"

#include <algorithm>

#include "core/key_reader.h"

C2d& Global2d() {
    static C2d options;
    return options;
}

int C2d::ScanfOptions(CKeyReader& reader) {
    if (reader.Int("lock_window/level=", &lock_wl)) return 1;
    if (reader.Int("stack_window/level=", &stack_wl)) return 1;
    if (reader.Int("profile_width=", &profile_width)) {
        profile_width = std::clamp(profile_width, 1, 1000);
        return 1;
    }
    if (reader.Int("2d_full_title=", &full_title)) return 1;
    return 0;
}

void C2d::PrintfOptions(FILE* file) const {
    std::fprintf(file, "\n//2d options\n");
    std::fprintf(file, "lock_window/level= %d\n", lock_wl);
    std::fprintf(file, "stack_window/level= %d\n", stack_wl);
    std::fprintf(file, "profile_width= %d\n", profile_width);
    std::fprintf(file, "2d_full_title= %d\n", full_title);
}
