#include "display/plot_result.h"

#include <cstdio>

#include "core/data_space.h"
#include "core/host.h"
#include "display/display_entry.h"

std::string NextResultName(const CDataSpace& space, const char* name, const char* tag) {
    char out[300];
    for (int n = 0;; ++n) {
        std::snprintf(out, sizeof out, "%s%s%02d", name, tag, n);
        const std::string x = std::string(out) + ".x";
        if (!space.FindData(out) && !space.FindData(x.c_str())) return out;
    }
}

int OpenPlot(CZrkData* y, CZrkData* x, const std::string& name) {
    DisplayWindowHook hook = DisplayWindow(LOOK_1D);
    CDisplayEntry* entry = nullptr;
    if (hook) {
        CLook look(LOOK_1D);
        CDisplayRequest request;
        request.kind = LOOK_1D;
        request.data[0] = y;
        request.data[1] = x;
        request.look = &look;
        request.caption = name;
        request.name = name;
        entry = hook(request);
    }
    if (!entry) Host().Status("display failed");
    return entry != nullptr;
}
