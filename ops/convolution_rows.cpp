// The function table rows of the convolution and median families and their help records.
// The one-direction families have their variants as rows (corr1dz(d0,d1) is
// corr1d("z",d0,d1)); median and sort take the direction string only. The u and v members
// are reached through the general functions.
#include "eval/function_table.h"
#include "ops/convolution.h"
#include "ops/function_rows.h"
#include "ops/median.h"
#include "ops/op_rows.h"
#include "ops/structural_base.h"

namespace {

// Help records: title, argument pairs, null, example lines, null.
const char* const kHelpCConv[] = {"circular convolve of data sets",
                                  "d0",
                                  "input data array",
                                  "d1",
                                  "kernel, flipped",
                                  nullptr,
                                  "c0 = cconv(d0,d1)",
                                  "indices wrap around; output dimensions are those of d0",
                                  "SEE ALSO: conv, ccorr",
                                  nullptr};
const char* const kHelpCCorr[] = {"circular correlation of data sets",
                                  "d0",
                                  "input data array",
                                  "d1",
                                  "kernel, not flipped",
                                  nullptr,
                                  "c0 = ccorr(d0,d1)",
                                  "indices wrap around; output dimensions are those of d0",
                                  "SEE ALSO: corr, cconv",
                                  nullptr};
const char* const kHelpCCorr1d[] = {"circular correlation along one dimension",
                                    "\"xyzt\"",
                                    "direction of operation; choose one",
                                    "d0",
                                    "input data array",
                                    "d1",
                                    "kernel lines, or one line for all",
                                    nullptr,
                                    "c0 = ccorr1d('x',d0,d1)",
                                    "output along x is the larger of d0 and d1",
                                    nullptr};
const char* const kHelpCMedian[] = {"circular median filter",
                                    "d0",
                                    "input data array",
                                    "sort",
                                    "sort on 0 i, 1 q, 2 magnitude, 3 phase",
                                    "list",
                                    "kernel sizes",
                                    nullptr,
                                    "m0 = cmedian(d0,0,{3,3})",
                                    "output dimensions are those of d0",
                                    nullptr};
const char* const kHelpConv[] = {"complex convolve of data sets",
                                 "d0",
                                 "input data array",
                                 "d1",
                                 "kernel",
                                 nullptr,
                                 "c0 = conv(d0,d1)",
                                 "each output dimension is d0 - d1 + 1",
                                 "f0 = bart(\"xy\", .6, 27, 0) makes a kernel",
                                 nullptr};
const char* const kHelpCorr[] = {"complex correlation of data sets",
                                 "d0",
                                 "input data array",
                                 "d1",
                                 "kernel",
                                 nullptr,
                                 "c0 = corr(d0,d1)",
                                 "as conv without flipping d1",
                                 nullptr};
const char* const kHelpCorr1d[] = {"correlation along one dimension",
                                   "\"xyzt\"",
                                   "direction of operation; choose one",
                                   "d0",
                                   "input data array",
                                   "d1",
                                   "kernel lines, or one line for all",
                                   nullptr,
                                   "c0 = corr1d('x',d0,d1)",
                                   "output along x is d0 - d1 + 1",
                                   nullptr};
const char* const kHelpCSsd[] = {"circular sum of squares difference",
                                 "\"xyzt\"",
                                 "direction of operation; choose one",
                                 "d0",
                                 "input data array",
                                 "d1",
                                 "second data array",
                                 nullptr,
                                 "s0 = cssd('x',d0,d1)",
                                 "output along x is the larger of d0 and d1",
                                 nullptr};
const char* const kHelpDilate[] = {"dilate filter",
                                   "list",
                                   "filter window sizes",
                                   "d0",
                                   "input data array",
                                   "circular",
                                   "1 wraps around, 0 shrinks by window - 1",
                                   nullptr,
                                   "e0=dilate({1,3,3}, d0, circular)",
                                   "NOTE returns the minimum over the filter window",
                                   "SEE ALSO: erode",
                                   nullptr};
const char* const kHelpErode[] = {"erode filter",
                                  "list",
                                  "filter window sizes",
                                  "d0",
                                  "input data array",
                                  "circular",
                                  "1 wraps around, 0 shrinks by window - 1",
                                  nullptr,
                                  "e0=erode({1,3,3}, d0, circular)",
                                  "NOTE returns the maximum over the filter window",
                                  "SEE ALSO: dilate",
                                  nullptr};
const char* const kHelpMedian[] = {"median filter",
                                   "\"xyzt\"",
                                   "direction of operation; choose one",
                                   "d0",
                                   "input data array",
                                   nullptr,
                                   "m0 = median('x',d0)",
                                   "NOTE the i channel of the data is sorted",
                                   nullptr};
const char* const kHelpSort[] = {"sort data",
                                 "\"xyzt\"",
                                 "direction of operation; choose one",
                                 "d0",
                                 "input data array",
                                 nullptr,
                                 "s0 = sort('x',d0)",
                                 "NOTE the i channel of the data is sorted",
                                 nullptr};
const char* const kHelpSsd[] = {"sum of squares difference",
                                "\"xyzt\"",
                                "direction of operation; choose one",
                                "d0",
                                "input data array",
                                "d1",
                                "second data array",
                                nullptr,
                                "s0 = ssd('x',d0,d1)",
                                "output along x is d0 - d1 + 1",
                                nullptr};

}  // namespace

std::vector<CFuncDecl> ConvolutionRows() {
    return {
        Plain<"cconv", [](CDataSpace& t, CZrkData** a, int) { return CConv(t, a[0], a[1]); }>(
            {.args = 2, .help = kHelpCConv, .place = 620}),
        Plain<"ccorr", [](CDataSpace& t, CZrkData** a, int) { return CCorr(t, a[0], a[1]); }>(
            {.args = 2, .help = kHelpCCorr, .place = 630}),
        Directions<"ccorr1d", DirRule{.reach = 6, .invalid_first = false},
                   [](CDataSpace& t, int d, CZrkData** a) { return CCorr1d(t, d, a[0], a[1]); }>(
            {.args = 3,
             .help = kHelpCCorr1d,
             .place = 640,
             .family = FAMILY_XYZT,
             .rows = 4,
             .names = {nullptr, nullptr, nullptr, "ccorrt"}}),
        Plain<"cmedian", [](CDataSpace& t, CZrkData** a,
                            int) { return CMedian(t, a[0], IntArg(a[1]), a[2]); }>(
            {.args = 3, .help = kHelpCMedian, .place = 750}),
        Plain<"conv", [](CDataSpace& t, CZrkData** a, int) { return Conv(t, a[0], a[1]); }>(
            {.args = 2, .help = kHelpConv, .place = 760}),
        Plain<"corr", [](CDataSpace& t, CZrkData** a, int) { return Corr(t, a[0], a[1]); }>(
            {.args = 2, .help = kHelpCorr, .place = 770}),
        Directions<"corr1d", DirRule{.reach = 6, .invalid_first = false},
                   [](CDataSpace& t, int d, CZrkData** a) { return Corr1d(t, d, a[0], a[1]); }>(
            {.args = 3, .help = kHelpCorr1d, .place = 780, .family = FAMILY_XYZT, .rows = 4}),
        Directions<"cssd", DirRule{.reach = 6, .invalid_first = false},
                   [](CDataSpace& t, int d, CZrkData** a) { return CSsd(t, d, a[0], a[1]); }>(
            {.args = 3, .help = kHelpCSsd, .place = 880, .family = FAMILY_XYZT, .rows = 4}),
        Plain<"dilate", [](CDataSpace& t, CZrkData** a,
                           int) { return Dilate(t, a[0], a[1], FloatArg(a[2]) != 0); }>(
            {.args = 3, .help = kHelpDilate, .place = 1100}),
        Plain<"erode", [](CDataSpace& t, CZrkData** a,
                          int) { return Erode(t, a[0], a[1], FloatArg(a[2]) != 0); }>(
            {.args = 3, .help = kHelpErode, .place = 1110}),
        Directions<"median", DirRule{.reach = 6, .invalid_first = false},
                   [](CDataSpace& t, int d, CZrkData** a) { return Median(t, d, a[0]); }>(
            {.args = 2, .help = kHelpMedian, .place = 1590}),
        Directions<"sort", DirRule{.reach = 6, .invalid_first = false},
                   [](CDataSpace& t, int d, CZrkData** a) { return Sort(t, d, a[0]); }>(
            {.args = 2, .help = kHelpSort, .place = 2110}),
        Directions<"ssd", DirRule{.reach = 6, .invalid_first = false},
                   [](CDataSpace& t, int d, CZrkData** a) { return Ssd(t, d, a[0], a[1]); }>(
            {.args = 3, .help = kHelpSsd, .place = 2160, .family = FAMILY_XYZT, .rows = 4}),
    };
}
