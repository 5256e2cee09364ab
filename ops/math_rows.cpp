// Rows of the elementwise mathematical functions. Each works per component in the float
// precision of its argument (r8 stays double), through the checked wrappers, so a failed
// value is 0 and counted.
#include <cmath>

#include "core/elementwise.h"
#include "core/math_errors.h"
#include "ops/function_rows.h"
#include "ops/op_rows.h"

namespace {

// The result type of a function of `a`: a float type, complex when a is.
int FloatTypeOf(const CZrkData* a) { return Promote(a->Type(), TYPE_R4); }

template <class F>
int MathRow(const char* text, unsigned rules, CZrkData** result, CDataSpace& temp, CZrkData** args,
            F f) {
    return RunHandler(text, nullptr, [&] {
        const int type = FloatTypeOf(args[0]);
        const int comps = IsComplexType(type) ? 2 : 1;
        return Deliver(result, MapFloat(temp, args[0], type, comps, comps,
                                        [&](auto* y, const auto* x, size_t n) {
                                            CheckedMap(rules, x, y, n * comps, f);
                                        }));
    });
}

#define QM_MATH_ROW(Name, text, rules, expr)                                          \
    int Name(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {             \
        return MathRow(text, rules, result, temp, args, [](auto x) { return expr; }); \
    }

QM_MATH_ROW(EvalFabs, "fabs()", MATH_PLAIN, std::fabs(x))
QM_MATH_ROW(EvalExp, "exp()", MATH_UNDERFLOW_TO_ZERO, std::exp(x))
QM_MATH_ROW(EvalLog10, "log10()", MATH_POLE_AT_ZERO, std::log10(x))
QM_MATH_ROW(EvalLog2, "log2()", MATH_POLE_AT_ZERO, std::log2(x))
QM_MATH_ROW(EvalLog, "log()", MATH_POLE_AT_ZERO, std::log(x))
QM_MATH_ROW(EvalSqrt, "sqrt()", MATH_PLAIN, std::sqrt(x))
QM_MATH_ROW(EvalCos, "cos()", MATH_TLOSS_HUGE, std::cos(x))
QM_MATH_ROW(EvalSin, "sin()", MATH_TLOSS_HUGE, std::sin(x))
QM_MATH_ROW(EvalTan, "tan()", MATH_TLOSS_HUGE, std::tan(x))
QM_MATH_ROW(EvalAcos, "acos()", MATH_PLAIN, std::acos(x))
QM_MATH_ROW(EvalAsin, "asin()", MATH_PLAIN, std::asin(x))
QM_MATH_ROW(EvalAtan, "atan()", MATH_PLAIN, std::atan(x))
QM_MATH_ROW(EvalCosh, "cosh()", MATH_PLAIN, std::cosh(x))
QM_MATH_ROW(EvalSinh, "sinh()", MATH_PLAIN, std::sinh(x))
QM_MATH_ROW(EvalTanh, "tanh()", MATH_PLAIN, std::tanh(x))
// glibc's Bessel functions are double only
QM_MATH_ROW(EvalJ0, "j0()", MATH_PLAIN, static_cast<decltype(x)>(::j0(x)))
QM_MATH_ROW(EvalJ1, "j1()", MATH_PLAIN, static_cast<decltype(x)>(::j1(x)))
QM_MATH_ROW(EvalY0, "y0()", MATH_POLE_AT_ZERO, static_cast<decltype(x)>(::y0(x)))
QM_MATH_ROW(EvalY1, "y1()", MATH_POLE_AT_ZERO, static_cast<decltype(x)>(::y1(x)))

#undef QM_MATH_ROW

int EvalPow(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return RunHandler("pow()", nullptr, [&] {
        return Deliver(result, BinaryOperation(temp, OP_POW, args[0], args[1]));
    });
}

int EvalAtan2(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return RunHandler("atan2()", nullptr, [&] {
        return Deliver(result, BinaryOperation(temp, OP_ATAN2, args[0], args[1]));
    });
}

const char* const kHelpFabs[] = {"absolute value",   "data", "input data array", nullptr,
                                 "out = fabs(data)", nullptr};
const char* const kHelpExp[] = {"e raised to a power", "data", "input data array", nullptr,
                                "out = exp(data)",     nullptr};
const char* const kHelpPow[] = {"raise ",   "x",     "base",           "y",
                                "exponent", nullptr, "out = pow(x,y)", "x raised to the power y",
                                nullptr};
const char* const kHelpLog10[] = {"log base 10",
                                  "data",
                                  "input data array",
                                  nullptr,
                                  "out = log10(data)",
                                  "log10(0) gives 0 and a math error",
                                  nullptr};
const char* const kHelpLog2[] = {"log base 2",       "data", "input data array", nullptr,
                                 "out = log2(data)", nullptr};
const char* const kHelpLog[] = {"log base e",      "data", "input data array", nullptr,
                                "out = log(data)", nullptr};
const char* const kHelpSqrt[] = {"square root",      "data", "input data array", nullptr,
                                 "out = sqrt(data)", nullptr};
const char* const kHelpCos[] = {
    "cosine function in radians", "data", "input data array", nullptr, "out = cos(data)", nullptr};
const char* const kHelpSin[] = {"sine function in radians", "data", "input data array", nullptr,
                                "out = sin(data)",          nullptr};
const char* const kHelpTan[] = {
    "tangent function in radians", "data", "input data array", nullptr, "out = tan(data)", nullptr};
const char* const kHelpAcos[] = {"arc cosine function in radians",
                                 "data",
                                 "input data array",
                                 nullptr,
                                 "out = acos(data)",
                                 nullptr};
const char* const kHelpAsin[] = {"arc sine function in radians",
                                 "data",
                                 "input data array",
                                 nullptr,
                                 "out = asin(data)",
                                 nullptr};
const char* const kHelpAtan[] = {"arc tangent function over pi",
                                 "data",
                                 "input data array",
                                 nullptr,
                                 "out = atan(data)",
                                 nullptr};
const char* const kHelpAtan2[] = {"arc tangent function over 2pi",
                                  "y",
                                  "numerator",
                                  "x",
                                  "denominator",
                                  nullptr,
                                  "out = atan2(y,x)",
                                  nullptr};
const char* const kHelpCosh[] = {"hyperbolic cosine function", "data", "input data array", nullptr,
                                 "out = cosh(data)",           nullptr};
const char* const kHelpSinh[] = {"hyperbolic sine function", "data", "input data array", nullptr,
                                 "out = sinh(data)",         nullptr};
const char* const kHelpTanh[] = {"hyperbolic tangent function",
                                 "data",
                                 "input data array",
                                 nullptr,
                                 "out = tanh(data)",
                                 nullptr};
const char* const kHelpJ0[] = {"bessel function of the first kind order 0",
                               "data",
                               "input data array",
                               nullptr,
                               "out = j0(data)",
                               nullptr};
const char* const kHelpJ1[] = {"bessel function of the first kind order 1",
                               "data",
                               "input data array",
                               nullptr,
                               "out = j1(data)",
                               nullptr};
const char* const kHelpY0[] = {"bessel function of the second kind order 0",
                               "data",
                               "input data array",
                               nullptr,
                               "out = y0(data)",
                               nullptr};
const char* const kHelpY1[] = {"bessel function of the second kind order 1",
                               "data",
                               "input data array",
                               nullptr,
                               "out = y1(data)",
                               nullptr};

}  // namespace

std::vector<CFuncDecl> MathRows() {
    return {
        Handler("fabs", EvalFabs, {.args = 1, .help = kHelpFabs, .place = 240}),
        Handler("exp", EvalExp, {.args = 1, .help = kHelpExp, .place = 250}),
        Handler("pow", EvalPow, {.args = 2, .help = kHelpPow, .place = 260}),
        Handler("log10", EvalLog10, {.args = 1, .help = kHelpLog10, .place = 270}),
        Handler("log2", EvalLog2, {.args = 1, .help = kHelpLog2, .place = 280}),
        Handler("log", EvalLog, {.args = 1, .help = kHelpLog, .place = 290}),
        Handler("sqrt", EvalSqrt, {.args = 1, .help = kHelpSqrt, .place = 300}),
        Handler("cos", EvalCos, {.args = 1, .help = kHelpCos, .place = 310}),
        Handler("sin", EvalSin, {.args = 1, .help = kHelpSin, .place = 320}),
        Handler("tan", EvalTan, {.args = 1, .help = kHelpTan, .place = 330}),
        Handler("acos", EvalAcos, {.args = 1, .help = kHelpAcos, .place = 340}),
        Handler("asin", EvalAsin, {.args = 1, .help = kHelpAsin, .place = 350}),
        Handler("atan", EvalAtan, {.args = 1, .help = kHelpAtan, .place = 360}),
        Handler("atan2", EvalAtan2, {.args = 2, .help = kHelpAtan2, .place = 370}),
        Handler("cosh", EvalCosh, {.args = 1, .help = kHelpCosh, .place = 380}),
        Handler("sinh", EvalSinh, {.args = 1, .help = kHelpSinh, .place = 390}),
        Handler("tanh", EvalTanh, {.args = 1, .help = kHelpTanh, .place = 400}),
        Handler("j0", EvalJ0, {.args = 1, .help = kHelpJ0, .place = 410}),
        Handler("j1", EvalJ1, {.args = 1, .help = kHelpJ1, .place = 420}),
        Handler("y0", EvalY0, {.args = 1, .help = kHelpY0, .place = 430}),
        Handler("y1", EvalY1, {.args = 1, .help = kHelpY1, .place = 440}),
    };
}
