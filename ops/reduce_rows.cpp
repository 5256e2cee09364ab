// The function table rows of the reductions and their help records. mean, sd, max, min,
// maxndx and minndx take the direction string first and have no rows per direction; mip,
// integrate, proj and sumsqr have both forms (mipz(d0) is mip("z",d0)). The general forms
// reach every direction x ... v; the rows by name stop at t.
#include "eval/function_table.h"
#include "ops/function_rows.h"
#include "ops/op_rows.h"
#include "ops/reduce.h"

namespace {

template <CZrkData* (*F)(CDataSpace&, int, const CZrkData*)>
CZrkData* Reduction(CDataSpace& t, int d, CZrkData** a) {
    return F(t, d, a[0]);
}

const char* const kHelpIntegrate[] = {"integrate data",
                                      "\"xyztuv\"",
                                      "direction of operation; choose multiple",
                                      "data",
                                      "input data array",
                                      nullptr,
                                      "out = integrate('x',data)",
                                      "running sum, complex; the type of the data is kept",
                                      nullptr};
const char* const kHelpMean[] = {"mean",
                                 "\"xyztuv\"",
                                 "direction of operation; choose multiple",
                                 "data",
                                 "input data array",
                                 nullptr,
                                 "out = mean('x',data)",
                                 "this calculates the mean along a line",
                                 "operation is performed separately on i,q pairs",
                                 nullptr};
const char* const kHelpMax[] = {"max (maximum projection)",
                                "\"xyztuv\"",
                                "direction of operation; choose multiple",
                                "data",
                                "input data array",
                                nullptr,
                                "out = max('z',data)",
                                "NOTE the i channel of the data is used",
                                nullptr};
const char* const kHelpMin[] = {"min (minimum projection)",
                                "\"xyztuv\"",
                                "direction of operation; choose multiple",
                                "data",
                                "input data array",
                                nullptr,
                                "out = min('z',data)",
                                "NOTE the i channel of the data is used",
                                nullptr};
const char* const kHelpMip[] = {"mip (maximum intensity projection)",
                                "\"xyztuv\"",
                                "direction of operation; choose multiple",
                                "data",
                                "input data array",
                                nullptr,
                                "out = mip('z',data)",
                                "magnitude is taken first: mip('t',d0) = max('t',mag(d0))",
                                nullptr};
const char* const kHelpMaxNdx[] = {"index of maximum value",
                                   "\"xyztuv\"",
                                   "direction of operation; choose one",
                                   "data",
                                   "input data array",
                                   nullptr,
                                   "out = maxndx('x',data)",
                                   "NOTE the i channel of the data is used",
                                   "NOTE index starts at 0",
                                   nullptr};
const char* const kHelpMinNdx[] = {"index of minimum value",
                                   "\"xyztuv\"",
                                   "direction of operation; choose one",
                                   "data",
                                   "input data array",
                                   nullptr,
                                   "out = minndx('x',data)",
                                   "NOTE the i channel of the data is used",
                                   "NOTE index starts at 0",
                                   nullptr};
const char* const kHelpProj[] = {"project (collapse) data",
                                 "\"xyztuv\"",
                                 "direction of operation; choose multiple",
                                 "data",
                                 "input data array",
                                 nullptr,
                                 "out = proj('z',data)",
                                 "sum along the direction, complex; dimension becomes 1",
                                 nullptr};
const char* const kHelpSd[] = {"standard deviation",
                               "\"xyztuv\"",
                               "direction of operation; choose one",
                               "data",
                               "input data array",
                               nullptr,
                               "out = sd('x',data)",
                               "divided by n, not n-1",
                               "operation is performed separately on i,q pairs",
                               nullptr};
const char* const kHelpSumSqr[] = {"sum of squares",
                                   "\"xyztuv\"",
                                   "direction of operation; choose one",
                                   "data",
                                   "input data array",
                                   nullptr,
                                   "out = sumsqr('x',data)",
                                   "complex data: i*i + q*q",
                                   nullptr};
// No row carries it: the language has no histogram function.
const char* const kHelpHistogram[] = {"histogram",
                                      "data",
                                      "input data array",
                                      "bins",
                                      "number of bins",
                                      "min, max",
                                      "range of the bins (histr)",
                                      nullptr,
                                      "h0=hist(d0,64)",
                                      "h0=histr(d0,64,0,2000)",
                                      nullptr};

}  // namespace

const char* const* HistogramHelp() { return kHelpHistogram; }

// Reducing twice along different directions is still the reduction of the plane for mean,
// max, min, mip, integrate and proj; not so for sd, the indices and sumsqr, which take one
// direction. The general forms reach every direction x ... v.
std::vector<CFuncDecl> ReduceRows() {
    constexpr DirRule kAnyReach{.multiple = true, .reach = 6};
    constexpr DirRule kOneReach{.reach = 6};
    return {
        Directions<"integrate", kAnyReach, Reduction<Integrate>>(
            {.args = 2, .help = kHelpIntegrate, .place = 1380, .family = FAMILY_XYZT, .rows = 4}),
        Directions<"mean", kAnyReach, Reduction<Mean>>(
            {.args = 2, .help = kHelpMean, .place = 1490}),
        Directions<"max", kAnyReach, Reduction<Max>>({.args = 2, .help = kHelpMax, .place = 1500}),
        Directions<"min", kAnyReach, Reduction<Min>>({.args = 2, .help = kHelpMin, .place = 1510}),
        Directions<"mip", kAnyReach, Reduction<Mip>>(
            {.args = 2, .help = kHelpMip, .place = 1520, .family = FAMILY_XYZT, .rows = 4}),
        Directions<"maxndx", kOneReach, Reduction<MaxIndex>>(
            {.args = 2, .help = kHelpMaxNdx, .place = 1580}),
        Directions<"minndx", kOneReach, Reduction<MinIndex>>(
            {.args = 2, .help = kHelpMinNdx, .place = 1600}),
        Directions<"proj", kAnyReach, Reduction<Project>>(
            {.args = 2, .help = kHelpProj, .place = 1850, .family = FAMILY_XYZT, .rows = 4}),
        Directions<"sd", kOneReach, Reduction<Sd>>({.args = 2, .help = kHelpSd, .place = 2150}),
        Directions<"sumsqr", kOneReach, Reduction<SumSqr>>(
            {.args = 2, .help = kHelpSumSqr, .place = 2420, .family = FAMILY_XYZT, .rows = 4}),
    };
}
