// Math errors of elementwise functions. glibc has no error callback, so every elementwise
// math routine goes through the checked wrappers below: each result is classified, a failed
// one is forced to 0 and counted by kind, and the equation bar shows the counts afterwards.
// log(0) on a pixel gives 0 in that pixel, not an infinity.
//
//   ClearMathErrors();
//   CheckedMap(MATH_POLE_AT_ZERO, in, out, n, [](float x) { return std::log(x); });
//   MathErrorReport();   // one message when any count is not 0
#pragma once

#include <cmath>
#include <cstddef>
#include <string>

enum MathErrorKind {
    MATH_DOMAIN,
    MATH_SINGULARITY,
    MATH_OVERFLOW,
    MATH_UNDERFLOW,
    MATH_TLOSS,
    MATH_PLOSS,
    MATH_KINDS
};

// What a failed result means for one function.
enum MathRule : unsigned {
    MATH_PLAIN = 0,
    // An infinity from a zero argument is a singularity (log, y0), not an overflow.
    MATH_POLE_AT_ZERO = 1,
    // A zero result from a finite argument is an underflow (exp, pow).
    MATH_UNDERFLOW_TO_ZERO = 2,
    // Trigonometry of arguments beyond 2^63 has lost every digit.
    MATH_TLOSS_HUGE = 4,
};

extern int math_error_count[MATH_KINDS];

void ClearMathErrors();
int MathErrorTotal();
// "%i DOMAIN errors\n..." with the six counts.
std::string MathErrorText();
// Shows MathErrorText() as a message when any count is not 0.
void MathErrorReport();

// Counts one error of `kind` and returns the forced result, 0.
double MathError(MathErrorKind kind);

// The slow path of the checked wrappers: the forced result of `y` = f(`x`), counted, or `y`
// itself when it is no error.
double ClassifyMath(double x, double y, unsigned rules);

// out[j] = f(in[j]) for n elements, checked. The first loop runs without branches; only
// results that are not finite and non-zero take the classification path.
template <class W, class F>
void CheckedMap(unsigned rules, const W* in, W* out, size_t n, F f) {
    for (size_t j = 0; j < n; ++j) out[j] = f(in[j]);
    for (size_t j = 0; j < n; ++j) {
        const bool suspect =
            !(std::isfinite(out[j]) && out[j] != 0) ||
            ((rules & MATH_TLOSS_HUGE) && std::fabs(in[j]) >= W(9.2233720368547758e18));
        if (suspect) out[j] = static_cast<W>(ClassifyMath(in[j], out[j], rules));
    }
}

// The same for two arguments; x is the argument the rules look at (the base of pow). One
// pass, so `out` may be `a` or `b` itself: each result is classified before it is stored.
template <class W, class F>
void CheckedMap2(unsigned rules, const W* a, const W* b, W* out, size_t n, F f) {
    for (size_t j = 0; j < n; ++j) {
        const W x = a[j], y = b[j];
        W r = f(x, y);
        // limits and NaN in are no error of ours
        if (!(std::isfinite(r) && r != 0) && std::isfinite(y))
            r = static_cast<W>(ClassifyMath(x, r, rules));
        out[j] = r;
    }
}
