#include "shell/shell_modules.h"

#include "core/data_space.h"

void CShellModules::Register(COptionTable& table, CDataSpace& space) {
    table.Set(
        OPT_MAIN_FRAME, [this](FILE* f) { main_frame.PrintfOptions(f); },
        [this](CKeyReader& r) { return main_frame.ScanfOptions(r); });
    table.Set(
        OPT_DESKTOP, [this](FILE* f) { desktop.PrintfOptions(f); },
        [this](CKeyReader& r) { return desktop.ScanfOptions(r); });
    table.Set(
        OPT_SCRIPT, [this](FILE* f) { script.PrintfOptions(f); },
        [this](CKeyReader& r) { return script.ScanfOptions(r); });
    table.Set(
        OPT_HISTORY, [this](FILE* f) { history.PrintfOptions(f); },
        [this](CKeyReader& r) { return history.ScanfOptions(r); });
    table.Set(
        OPT_UNWRAP, [this](FILE* f) { unwrap.PrintfOptions(f); },
        [this](CKeyReader& r) { return unwrap.ScanfOptions(r); });
    table.Set(
        OPT_DATA_SPACE, [&space](FILE* f) { space.PrintfOptions(f); },
        [&space](CKeyReader& r) { return space.ScanfOptions(r); });
}
