// The function table rows of the convolution and median families and their help records.
// The one-direction families have their variants as rows (corr1dz(d0,d1) is
// corr1d("z",d0,d1)); median and sort take the direction string only. The u and v members
// are reached through the general functions.
#include "eval/function_table.h"
#include "ops/convolution.h"
#include "ops/median.h"
#include "ops/op_rows.h"
#include "ops/structural_base.h"

namespace {

struct OpCorr1d {
    static constexpr const char* kGeneral = "corr1d()";
    static constexpr const char* kNoDirection = "direction invalid";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return Corr1d(t, d, a[0], a[1]);
    }
};
struct OpCCorr1d {
    static constexpr const char* kGeneral = "ccorr1d()";
    static constexpr const char* kNoDirection = "direction invalid";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return CCorr1d(t, d, a[0], a[1]);
    }
};
struct OpSsd {
    static constexpr const char* kGeneral = "ssd()";
    static constexpr const char* kNoDirection = "direction invalid";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) { return Ssd(t, d, a[0], a[1]); }
};
struct OpCSsd {
    static constexpr const char* kGeneral = "cssd()";
    static constexpr const char* kNoDirection = "direction invalid";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) { return CSsd(t, d, a[0], a[1]); }
};
struct OpMedian {
    static constexpr const char* kGeneral = "median()";
    static constexpr const char* kNoDirection = "direction invalid";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) { return Median(t, d, a[0]); }
};
struct OpSort {
    static constexpr const char* kGeneral = "sort()";
    static constexpr const char* kNoDirection = "direction invalid";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) { return Sort(t, d, a[0]); }
};

int EvalConv(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Conv(t, a[0], a[1]); });
}
int EvalCorr(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Corr(t, a[0], a[1]); });
}
int EvalCConv(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return CConv(t, a[0], a[1]); });
}
int EvalCCorr(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return CCorr(t, a[0], a[1]); });
}
int EvalCMedian(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return CMedian(t, a[0], IntArg(a[1]), a[2]); });
}
int EvalDilate(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Dilate(t, a[0], a[1], FloatArg(a[2]) != 0); });
}
int EvalErode(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Erode(t, a[0], a[1], FloatArg(a[2]) != 0); });
}

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

const CFuncRow kRows[] = {
    {"cconv", EvalCConv, 2, 2, FAMILY_PLAIN, kHelpCConv},
    {"ccorr", EvalCCorr, 2, 2, FAMILY_PLAIN, kHelpCCorr},
    {"ccorr1d", Family<OpCCorr1d, 6>::General, 3, 3, FAMILY_XYZT, kHelpCCorr1d},
    {"ccorr1dx", V<OpCCorr1d>(0), 2, 2, FAMILY_PLAIN, nullptr},
    {"ccorr1dy", V<OpCCorr1d>(1), 2, 2, FAMILY_PLAIN, nullptr},
    {"ccorr1dz", V<OpCCorr1d>(2), 2, 2, FAMILY_PLAIN, nullptr},
    {"ccorrt", V<OpCCorr1d>(3), 2, 2, FAMILY_PLAIN, nullptr},
    {"cmedian", EvalCMedian, 3, 3, FAMILY_PLAIN, kHelpCMedian},
    {"conv", EvalConv, 2, 2, FAMILY_PLAIN, kHelpConv},
    {"corr", EvalCorr, 2, 2, FAMILY_PLAIN, kHelpCorr},
    {"corr1d", Family<OpCorr1d, 6>::General, 3, 3, FAMILY_XYZT, kHelpCorr1d},
    {"corr1dx", V<OpCorr1d>(0), 2, 2, FAMILY_PLAIN, nullptr},
    {"corr1dy", V<OpCorr1d>(1), 2, 2, FAMILY_PLAIN, nullptr},
    {"corr1dz", V<OpCorr1d>(2), 2, 2, FAMILY_PLAIN, nullptr},
    {"corr1dt", V<OpCorr1d>(3), 2, 2, FAMILY_PLAIN, nullptr},
    {"cssd", Family<OpCSsd, 6>::General, 3, 3, FAMILY_XYZT, kHelpCSsd},
    {"cssdx", V<OpCSsd>(0), 2, 2, FAMILY_PLAIN, nullptr},
    {"cssdy", V<OpCSsd>(1), 2, 2, FAMILY_PLAIN, nullptr},
    {"cssdz", V<OpCSsd>(2), 2, 2, FAMILY_PLAIN, nullptr},
    {"cssdt", V<OpCSsd>(3), 2, 2, FAMILY_PLAIN, nullptr},
    {"dilate", EvalDilate, 3, 3, FAMILY_PLAIN, kHelpDilate},
    {"erode", EvalErode, 3, 3, FAMILY_PLAIN, kHelpErode},
    {"median", Family<OpMedian, 6>::General, 2, 2, FAMILY_PLAIN, kHelpMedian},
    {"sort", Family<OpSort, 6>::General, 2, 2, FAMILY_PLAIN, kHelpSort},
    {"ssd", Family<OpSsd, 6>::General, 3, 3, FAMILY_XYZT, kHelpSsd},
    {"ssdx", V<OpSsd>(0), 2, 2, FAMILY_PLAIN, nullptr},
    {"ssdy", V<OpSsd>(1), 2, 2, FAMILY_PLAIN, nullptr},
    {"ssdz", V<OpSsd>(2), 2, 2, FAMILY_PLAIN, nullptr},
    {"ssdt", V<OpSsd>(3), 2, 2, FAMILY_PLAIN, nullptr},
};
const CFunctionRows kRegister(kRows);

}  // namespace
