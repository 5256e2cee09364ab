#include "display/plot_options.h"

#include "core/key_reader.h"

C1d& Global1d() {
    static C1d options;
    return options;
}

int C1d::ScanfOptions(CKeyReader& reader) {
    if (!reader.Int("1d_axis_lock=", &axis_lock)) return 0;
    axis_lock = axis_lock != 0;
    return 1;
}

void C1d::PrintfOptions(FILE* file) const {
    std::fprintf(file, "\n//1d options\n");
    std::fprintf(file, "1d_axis_lock= %d\n", axis_lock);
}
