// The row of get_rgb: a palette's colours as an array the language can edit.
#include <vector>

#include "core/data_space.h"
#include "core/window_space.h"
#include "display/palette_rgb.h"
#include "ops/function_rows.h"
#include "ops/op_rows.h"
#include "ops/structural_base.h"

namespace {

int EvalGetRgb(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return RunHandler("get_rgb()", "eval_get_rgb", [&] {
        return Deliver(result, PaletteRgb(temp, args[0], GlobalDataSpace(), GlobalWindowSpace()));
    });
}

const char* const kHelpGetRgb[] = {"get rgb palette",
                                   "p",
                                   "palette name or data shown in a 2d display",
                                   nullptr,
                                   "pal = get_rgb(\"jet\")",
                                   "pal = get_rgb(a)",
                                   "the result is n1 [256][3]: red, green and blue rows",
                                   "p is \"grey\" ... \"jet\", a palette array, or data whose",
                                   "2d display's palette is wanted",
                                   "edit it and give its name as a palette to show it",
                                   nullptr};

}  // namespace

std::vector<CFuncDecl> PaletteRows() {
    return {Handler("get_rgb", EvalGetRgb, {.args = 1, .help = kHelpGetRgb, .place = 1350})};
}
