// The function table rows of the transforms, the filter kernels and interp, with their help
// records. ft, mrft and pnft are direction families (ftz(d0,...) is ft("z",d0,...)) that
// choose multiple: each direction's result feeds the next.
#include "eval/function_table.h"
#include "ops/function_rows.h"
#include "ops/interp.h"
#include "ops/op_rows.h"
#include "ops/structural_base.h"
#include "ops/transform.h"
#include "ops/window.h"

namespace {

template <int Window>
CZrkData* WindowKernel(CDataSpace& t, CZrkData** a, int) {
    return Kernel(t, Window, a[0], FloatArg(a[1]), IntArg(a[2]), IntArg(a[3]) != 0);
}

// Help records: title, argument pairs, null, example lines, null.
const char* const kHelpFt[] = {"fourier transform data",
                               "\"xyzt\"",
                               "direction of operation; choose multiple",
                               "data",
                               "input data array",
                               "chopb",
                               "1 chop before the transform",
                               "inverse",
                               "0 forward, else inverse",
                               "chopa",
                               "1 chop after the transform",
                               nullptr,
                               "f0=ftz(d0,1,-1,0)",
                               "input data is symmetically padded to power of 2",
                               "no scaling is done. to scale: ft(...)/pow(n,.5)",
                               "the result is complex r4",
                               "SEE ALSO: mrft, pnft",
                               nullptr};
const char* const kHelpMrft[] = {"mixed radix transform",
                                 "\"xyzt\"",
                                 "direction of operation; choose multiple",
                                 "data",
                                 "input data array",
                                 "chopb",
                                 "1 chop before the transform",
                                 "inverse",
                                 "0 forward, else inverse",
                                 "chopa",
                                 "1 chop after the transform",
                                 nullptr,
                                 "f0=mrftz(d0,1,-1,0)",
                                 "mixed radix transform, no padding",
                                 "no scaling is done. to scale: ft(...)/pow(n,.5)",
                                 "SEE ALSO: ft, pnft",
                                 nullptr};
const char* const kHelpPnft[] = {"partial nex transform along x",
                                 "\"xyzt\"",
                                 "direction of operation; choose multiple",
                                 "data",
                                 "input data array",
                                 "center",
                                 "index of the centre of k-space; 0 the middle",
                                 "filter",
                                 "1 bartlett, 2 blackman, 3 hamming, 4 hanning",
                                 "options",
                                 "bits: 1 chop before, 2 inverse, 4 pad to power of 2",
                                 nullptr,
                                 "f0=pnftx(d0,16,3,5)",
                                 "homodyne weights over the symmetric part",
                                 "SEE ALSO: ft, mrft",
                                 nullptr};

#define QM_KERNEL_HELP(name, title, example)                                 \
    const char* const name[] = {title,                                       \
                                "\"xyzt\"",                                  \
                                "directions of the kernel; choose multiple", \
                                "cutoff",                                    \
                                "cutoff between 0 and 1",                    \
                                "points",                                    \
                                "points in each direction",                  \
                                "lo pass",                                   \
                                "1 lo pass, 0 hi pass",                      \
                                nullptr,                                     \
                                example,                                     \
                                "kernel for conv; other directions are 1",   \
                                "SEE ALSO: conv, bart, black, hann, hamm",   \
                                nullptr}
QM_KERNEL_HELP(kHelpBart, "bartlett window", "f0=bart(\"xy\", .6, 27, 0)");
QM_KERNEL_HELP(kHelpBlack, "balckman window", "f0=black(\"xy\", .6, 27, 0)");
QM_KERNEL_HELP(kHelpHann, "hanning window", "f0=hann(\"xy\", .6, 27, 0)");
QM_KERNEL_HELP(kHelpHamm, "low pass hamming window", "f0=hamm(\"xy\", .6, 27, 1)");
#undef QM_KERNEL_HELP

const char* const kHelpInterp[] = {"interpolate data",
                                   "\"xyzt\"",
                                   "directions of operation; choose multiple",
                                   "data",
                                   "input data array",
                                   "res",
                                   "new resolution of each direction named",
                                   nullptr,
                                   "i0=interp(\"yt\",d0,64)",
                                   "linear; y first, then t",
                                   nullptr};

}  // namespace

std::vector<CFuncDecl> TransformRows() {
    return {
        Plain<"bart", WindowKernel<FT_WINDOW_BARTLETT>>(
            {.args = 4, .help = kHelpBart, .place = 450}),
        Plain<"black", WindowKernel<FT_WINDOW_BLACKMAN>>(
            {.args = 4, .help = kHelpBlack, .place = 460}),
        Directions<"ft", DirRule{.multiple = true, .invalid_first = false},
                   [](CDataSpace& t, int d, CZrkData** a) {
                       return Ft(t, d, a[0], IntArg(a[1]), IntArg(a[2]), IntArg(a[3]));
                   }>(
            {.args = 5, .help = kHelpFt, .place = 1300, .family = FAMILY_XYZT, .rows = 4}),
        Plain<"hann", WindowKernel<FT_WINDOW_HANNING>>(
            {.args = 4, .help = kHelpHann, .place = 1360}),
        Plain<"hamm", WindowKernel<FT_WINDOW_HAMMING>>(
            {.args = 4, .help = kHelpHamm, .place = 1370}),
        Plain<"interp",
              [](CDataSpace& t, CZrkData** a, int) { return Interp(t, a[0], a[1], IntArg(a[2])); }>(
            {.args = 3, .help = kHelpInterp, .place = 1430}),
        Directions<"mrft", DirRule{.multiple = true, .invalid_first = false},
                   [](CDataSpace& t, int d, CZrkData** a) {
                       return Mrft(t, d, a[0], IntArg(a[1]), IntArg(a[2]), IntArg(a[3]));
                   }>(
            {.args = 5, .help = kHelpMrft, .place = 1610, .family = FAMILY_XYZT, .rows = 4}),
        Directions<"pnft", DirRule{.multiple = true, .invalid_first = false},
                   [](CDataSpace& t, int d, CZrkData** a) {
                       return Pnft(t, d, a[0], IntArg(a[1]), IntArg(a[2]), IntArg(a[3]));
                   }>(
            {.args = 5, .help = kHelpPnft, .place = 1780, .family = FAMILY_XYZT, .rows = 4}),
    };
}
