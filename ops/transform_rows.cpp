// The function table rows of the transforms, the filter kernels and interp, with their help
// records. ft, mrft and pnft are direction families (ftz(d0,...) is ft("z",d0,...)) that
// choose multiple: each direction's result feeds the next.
#include "eval/function_table.h"
#include "ops/interp.h"
#include "ops/op_rows.h"
#include "ops/structural_base.h"
#include "ops/transform.h"
#include "ops/window.h"

namespace {

struct OpFt {
    static constexpr const char* kGeneral = "ft()";
    static constexpr const char* kNoDirection = "direction invalid";
    static constexpr bool kMultiple = true;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return Ft(t, d, a[0], IntArg(a[1]), IntArg(a[2]), IntArg(a[3]));
    }
};
struct OpMrft {
    static constexpr const char* kGeneral = "mrft()";
    static constexpr const char* kNoDirection = "direction invalid";
    static constexpr bool kMultiple = true;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return Mrft(t, d, a[0], IntArg(a[1]), IntArg(a[2]), IntArg(a[3]));
    }
};
struct OpPnft {
    static constexpr const char* kGeneral = "pnft()";
    static constexpr const char* kNoDirection = "direction invalid";
    static constexpr bool kMultiple = true;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return Pnft(t, d, a[0], IntArg(a[1]), IntArg(a[2]), IntArg(a[3]));
    }
};

template <int Window>
int EvalKernel(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] {
        return Kernel(t, Window, a[0], FloatArg(a[1]), IntArg(a[2]), IntArg(a[3]) != 0);
    });
}

int EvalInterp(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Interp(t, a[0], a[1], IntArg(a[2])); });
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

const CFuncRow kRows[] = {
    {"bart", EvalKernel<FT_WINDOW_BARTLETT>, 4, 4, FAMILY_PLAIN, kHelpBart},
    {"black", EvalKernel<FT_WINDOW_BLACKMAN>, 4, 4, FAMILY_PLAIN, kHelpBlack},
    {"ft", Family<OpFt, 4>::General, 5, 5, FAMILY_XYZT, kHelpFt},
    {"ftx", V<OpFt>(0), 4, 4, FAMILY_PLAIN, nullptr},
    {"fty", V<OpFt>(1), 4, 4, FAMILY_PLAIN, nullptr},
    {"ftz", V<OpFt>(2), 4, 4, FAMILY_PLAIN, nullptr},
    {"ftt", V<OpFt>(3), 4, 4, FAMILY_PLAIN, nullptr},
    {"hann", EvalKernel<FT_WINDOW_HANNING>, 4, 4, FAMILY_PLAIN, kHelpHann},
    {"hamm", EvalKernel<FT_WINDOW_HAMMING>, 4, 4, FAMILY_PLAIN, kHelpHamm},
    {"interp", EvalInterp, 3, 3, FAMILY_PLAIN, kHelpInterp},
    {"mrft", Family<OpMrft, 4>::General, 5, 5, FAMILY_XYZT, kHelpMrft},
    {"mrftx", V<OpMrft>(0), 4, 4, FAMILY_PLAIN, nullptr},
    {"mrfty", V<OpMrft>(1), 4, 4, FAMILY_PLAIN, nullptr},
    {"mrftz", V<OpMrft>(2), 4, 4, FAMILY_PLAIN, nullptr},
    {"mrftt", V<OpMrft>(3), 4, 4, FAMILY_PLAIN, nullptr},
    {"pnft", Family<OpPnft, 4>::General, 5, 5, FAMILY_XYZT, kHelpPnft},
    {"pnftx", V<OpPnft>(0), 4, 4, FAMILY_PLAIN, nullptr},
    {"pnfty", V<OpPnft>(1), 4, 4, FAMILY_PLAIN, nullptr},
    {"pnftz", V<OpPnft>(2), 4, 4, FAMILY_PLAIN, nullptr},
    {"pnftt", V<OpPnft>(3), 4, 4, FAMILY_PLAIN, nullptr},
};

const CFunctionRows kRegister(kRows);

}  // namespace
