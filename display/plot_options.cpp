#include "display/plot_options.h"

#include "core/key_reader.h"

C1d& Global1d() {
    static C1d options;
    return options;
}

int C1d::ScanfOptions(CKeyReader& reader) {
    if (reader.Int("1d_axis_lock=", &axis_lock)) {
        axis_lock = axis_lock != 0;
        return 1;
    }
    return axes_1d.ScanfOptions(reader) || axes_xy.ScanfOptions(reader);
}

void C1d::PrintfOptions(FILE* file) const {
    std::fprintf(file, "\n//1d options\n");
    std::fprintf(file, "1d_axis_lock= %d\n", axis_lock);
    axes_1d.PrintfOptions(file);
    axes_xy.PrintfOptions(file);
}
