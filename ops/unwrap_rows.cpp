// The function table row of one-dimensional unwrapping. wrap1d takes the direction string
// first, like the general functions, and has no rows per direction.
#include "eval/function_table.h"
#include "ops/function_rows.h"
#include "ops/op_rows.h"
#include "ops/unwrap/unwrap_1d.h"

namespace {

// The help record as the program has always shown it: its examples name wrapx and wrap.
const char* const kHelpWrap1d[] = {"1d phase unwrap",
                                   "\"xyztuv\"",
                                   "direction of operation; choose one",
                                   "data",
                                   "input phase data array",
                                   nullptr,
                                   "w0=wrapx(d0)",
                                   "w0=wrap(\"x\",d0)",
                                   "w0 will be float with the phase in the I channel",
                                   nullptr};

CZrkData* Wrap1d(CDataSpace& t, int d, CZrkData** a) { return Unwrap1d(t, d, a[0]); }

}  // namespace

std::vector<CFuncDecl> UnwrapRows() {
    constexpr DirRule kOneReach{.reach = 6};
    return {
        Directions<"wrap1d", kOneReach, Wrap1d>({.args = 2, .help = kHelpWrap1d, .place = 2510})};
}
