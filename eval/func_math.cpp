// Rows of the elementwise mathematical functions. Each works per component in the float
// precision of its argument (r8 stays double), through the checked wrappers, so a failed
// value is 0 and counted.
#include <cmath>

#include "core/elementwise.h"
#include "eval/function_table.h"
#include "core/math_errors.h"

namespace {

// The result type of a function of `a`: a float type, complex when a is.
int FloatTypeOf(const CZrkData* a) { return Promote(a->Type(), TYPE_R4); }

template <class F>
int MathRow(const char* text, unsigned rules, CZrkData** result, CDataSpace& temp,
            CZrkData** args, F f) {
    return RunHandler(text, nullptr, [&] {
        const int type = FloatTypeOf(args[0]);
        const int comps = IsComplexType(type) ? 2 : 1;
        return Deliver(result, MapFloat(temp, args[0], type, comps, comps,
                                        [&](auto* y, const auto* x, size_t n) {
                                            CheckedMap(rules, x, y, n * comps, f);
                                        }));
    });
}

#define QM_MATH_ROW(Name, text, rules, expr)                                            \
    int Name(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {               \
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
        return Deliver(result, BinaryOperation(temp, OP_POW, args[0], args[1], nullptr));
    });
}

int EvalAtan2(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return RunHandler("atan2()", nullptr, [&] {
        return Deliver(result, BinaryOperation(temp, OP_ATAN2, args[0], args[1], nullptr));
    });
}

const char* const kHelpFabs[] = {"absolute value", "data", "input data array", nullptr,
                                 "out = fabs(data)", nullptr};
const char* const kHelpExp[] = {"e raised to a power", "data", "input data array", nullptr,
                                "out = exp(data)", nullptr};
const char* const kHelpPow[] = {"raise ", "x", "base", "y", "exponent", nullptr,
                                "out = pow(x,y)", "x raised to the power y", nullptr};
const char* const kHelpLog10[] = {"log base 10", "data", "input data array", nullptr,
                                  "out = log10(data)", "log10(0) gives 0 and a math error",
                                  nullptr};
const char* const kHelpLog2[] = {"log base 2", "data", "input data array", nullptr,
                                 "out = log2(data)", nullptr};
const char* const kHelpLog[] = {"log base e", "data", "input data array", nullptr,
                                "out = log(data)", nullptr};
const char* const kHelpSqrt[] = {"square root", "data", "input data array", nullptr,
                                 "out = sqrt(data)", nullptr};
const char* const kHelpCos[] = {"cosine function in radians", "data", "input data array",
                                nullptr, "out = cos(data)", nullptr};
const char* const kHelpSin[] = {"sine function in radians", "data", "input data array",
                                nullptr, "out = sin(data)", nullptr};
const char* const kHelpTan[] = {"tangent function in radians", "data", "input data array",
                                nullptr, "out = tan(data)", nullptr};
const char* const kHelpAcos[] = {"arc cosine function in radians", "data", "input data array",
                                 nullptr, "out = acos(data)", nullptr};
const char* const kHelpAsin[] = {"arc sine function in radians", "data", "input data array",
                                 nullptr, "out = asin(data)", nullptr};
const char* const kHelpAtan[] = {"arc tangent function over pi", "data", "input data array",
                                 nullptr, "out = atan(data)", nullptr};
const char* const kHelpAtan2[] = {"arc tangent function over 2pi", "y", "numerator", "x",
                                  "denominator", nullptr, "out = atan2(y,x)", nullptr};
const char* const kHelpCosh[] = {"hyperbolic cosine function", "data", "input data array",
                                 nullptr, "out = cosh(data)", nullptr};
const char* const kHelpSinh[] = {"hyperbolic sine function", "data", "input data array",
                                 nullptr, "out = sinh(data)", nullptr};
const char* const kHelpTanh[] = {"hyperbolic tangent function", "data", "input data array",
                                 nullptr, "out = tanh(data)", nullptr};
const char* const kHelpJ0[] = {"bessel function of the first kind order 0", "data",
                               "input data array", nullptr, "out = j0(data)", nullptr};
const char* const kHelpJ1[] = {"bessel function of the first kind order 1", "data",
                               "input data array", nullptr, "out = j1(data)", nullptr};
const char* const kHelpY0[] = {"bessel function of the second kind order 0", "data",
                               "input data array", nullptr, "out = y0(data)", nullptr};
const char* const kHelpY1[] = {"bessel function of the second kind order 1", "data",
                               "input data array", nullptr, "out = y1(data)", nullptr};

const CFuncRow kRows[] = {
    {"fabs", EvalFabs, 1, 1, FAMILY_PLAIN, kHelpFabs},
    {"exp", EvalExp, 1, 1, FAMILY_PLAIN, kHelpExp},
    {"pow", EvalPow, 2, 2, FAMILY_PLAIN, kHelpPow},
    {"log10", EvalLog10, 1, 1, FAMILY_PLAIN, kHelpLog10},
    {"log2", EvalLog2, 1, 1, FAMILY_PLAIN, kHelpLog2},
    {"log", EvalLog, 1, 1, FAMILY_PLAIN, kHelpLog},
    {"sqrt", EvalSqrt, 1, 1, FAMILY_PLAIN, kHelpSqrt},
    {"cos", EvalCos, 1, 1, FAMILY_PLAIN, kHelpCos},
    {"sin", EvalSin, 1, 1, FAMILY_PLAIN, kHelpSin},
    {"tan", EvalTan, 1, 1, FAMILY_PLAIN, kHelpTan},
    {"acos", EvalAcos, 1, 1, FAMILY_PLAIN, kHelpAcos},
    {"asin", EvalAsin, 1, 1, FAMILY_PLAIN, kHelpAsin},
    {"atan", EvalAtan, 1, 1, FAMILY_PLAIN, kHelpAtan},
    {"atan2", EvalAtan2, 2, 2, FAMILY_PLAIN, kHelpAtan2},
    {"cosh", EvalCosh, 1, 1, FAMILY_PLAIN, kHelpCosh},
    {"sinh", EvalSinh, 1, 1, FAMILY_PLAIN, kHelpSinh},
    {"tanh", EvalTanh, 1, 1, FAMILY_PLAIN, kHelpTanh},
    {"j0", EvalJ0, 1, 1, FAMILY_PLAIN, kHelpJ0},
    {"j1", EvalJ1, 1, 1, FAMILY_PLAIN, kHelpJ1},
    {"y0", EvalY0, 1, 1, FAMILY_PLAIN, kHelpY0},
    {"y1", EvalY1, 1, 1, FAMILY_PLAIN, kHelpY1},
};
const CFunctionRows kRegister(kRows);

}  // namespace
