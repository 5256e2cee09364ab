// The function table rows of the reductions and their help records. mean, sd, max, min,
// maxndx and minndx take the direction string first and have no rows per direction; mip,
// integrate, proj and sumsqr have both forms (mipz(d0) is mip("z",d0)). The general forms
// reach every direction x ... v; the rows by name stop at t.
#include "eval/function_table.h"
#include "ops/op_rows.h"
#include "ops/reduce.h"

namespace {

template <CZrkData* (*F)(CDataSpace&, int, const CZrkData*), bool Multiple>
struct OpReduce {
    static constexpr bool kMultiple = Multiple;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) { return F(t, d, a[0]); }
};

// Reducing twice along different directions is still the reduction of the plane for these;
// not so for sd, the indices and sumsqr, which take one direction.
struct OpMean : OpReduce<Mean, true> {
    static constexpr const char* kGeneral = "mean()";
};
struct OpSd : OpReduce<Sd, false> {
    static constexpr const char* kGeneral = "sd()";
};
struct OpMax : OpReduce<Max, true> {
    static constexpr const char* kGeneral = "max()";
};
struct OpMin : OpReduce<Min, true> {
    static constexpr const char* kGeneral = "min()";
};
struct OpMaxNdx : OpReduce<MaxIndex, false> {
    static constexpr const char* kGeneral = "maxndx()";
};
struct OpMinNdx : OpReduce<MinIndex, false> {
    static constexpr const char* kGeneral = "minndx()";
};
struct OpMip : OpReduce<Mip, true> {
    static constexpr const char* kGeneral = "mip()";
};
struct OpIntegrate : OpReduce<Integrate, true> {
    static constexpr const char* kGeneral = "integrate()";
};
struct OpProj : OpReduce<Project, true> {
    static constexpr const char* kGeneral = "proj()";
};
struct OpSumSqr : OpReduce<SumSqr, false> {
    static constexpr const char* kGeneral = "sumsqr()";
};

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

const CFuncRow kRows[] = {
    {"integrate", Family<OpIntegrate, 6>::General, 2, 2, FAMILY_XYZT, kHelpIntegrate},
    {"integratex", V<OpIntegrate>(0), 1, 1, FAMILY_PLAIN, nullptr},
    {"integratey", V<OpIntegrate>(1), 1, 1, FAMILY_PLAIN, nullptr},
    {"integratez", V<OpIntegrate>(2), 1, 1, FAMILY_PLAIN, nullptr},
    {"integratet", V<OpIntegrate>(3), 1, 1, FAMILY_PLAIN, nullptr},
    {"mean", Family<OpMean, 6>::General, 2, 2, FAMILY_PLAIN, kHelpMean},
    {"max", Family<OpMax, 6>::General, 2, 2, FAMILY_PLAIN, kHelpMax},
    {"min", Family<OpMin, 6>::General, 2, 2, FAMILY_PLAIN, kHelpMin},
    {"mip", Family<OpMip, 6>::General, 2, 2, FAMILY_XYZT, kHelpMip},
    {"mipx", V<OpMip>(0), 1, 1, FAMILY_PLAIN, nullptr},
    {"mipy", V<OpMip>(1), 1, 1, FAMILY_PLAIN, nullptr},
    {"mipz", V<OpMip>(2), 1, 1, FAMILY_PLAIN, nullptr},
    {"mipt", V<OpMip>(3), 1, 1, FAMILY_PLAIN, nullptr},
    {"maxndx", Family<OpMaxNdx, 6>::General, 2, 2, FAMILY_PLAIN, kHelpMaxNdx},
    {"minndx", Family<OpMinNdx, 6>::General, 2, 2, FAMILY_PLAIN, kHelpMinNdx},
    {"proj", Family<OpProj, 6>::General, 2, 2, FAMILY_XYZT, kHelpProj},
    {"projx", V<OpProj>(0), 1, 1, FAMILY_PLAIN, nullptr},
    {"projy", V<OpProj>(1), 1, 1, FAMILY_PLAIN, nullptr},
    {"projz", V<OpProj>(2), 1, 1, FAMILY_PLAIN, nullptr},
    {"projt", V<OpProj>(3), 1, 1, FAMILY_PLAIN, nullptr},
    {"sd", Family<OpSd, 6>::General, 2, 2, FAMILY_PLAIN, kHelpSd},
    {"sumsqr", Family<OpSumSqr, 6>::General, 2, 2, FAMILY_XYZT, kHelpSumSqr},
    {"sumsqrx", V<OpSumSqr>(0), 1, 1, FAMILY_PLAIN, nullptr},
    {"sumsqry", V<OpSumSqr>(1), 1, 1, FAMILY_PLAIN, nullptr},
    {"sumsqrz", V<OpSumSqr>(2), 1, 1, FAMILY_PLAIN, nullptr},
    {"sumsqrt", V<OpSumSqr>(3), 1, 1, FAMILY_PLAIN, nullptr},
};
const CFunctionRows kRegister(kRows);

}  // namespace

const char* const* HistogramHelp() { return kHelpHistogram; }
