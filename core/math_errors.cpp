#include "core/math_errors.h"

#include <cstdio>

#include "core/host.h"

int math_error_count[MATH_KINDS];

void ClearMathErrors() {
    for (int& c : math_error_count) c = 0;
}

int MathErrorTotal() {
    int total = 0;
    for (int c : math_error_count) total += c;
    return total;
}

std::string MathErrorText() {
    char text[400];
    std::snprintf(text, sizeof text,
                  "%i DOMAIN errors\n%i SINGULARITY errors\n%i OVERFLOW errors\n%i UNDERFLOW "
                  "errors\n%i TOTAL LOSS OF SIGNIFICANCE errors\n%i PARTIAL LOSS OF "
                  "SIGNIFICANCE errors\n",
                  math_error_count[MATH_DOMAIN], math_error_count[MATH_SINGULARITY],
                  math_error_count[MATH_OVERFLOW], math_error_count[MATH_UNDERFLOW],
                  math_error_count[MATH_TLOSS], math_error_count[MATH_PLOSS]);
    return text;
}

void MathErrorReport() {
    if (MathErrorTotal() != 0) Host().Message(MathErrorText());
}

double MathError(MathErrorKind kind) {
    // elementwise passes run on several threads
    __atomic_fetch_add(&math_error_count[kind], 1, __ATOMIC_RELAXED);
    return 0.0;
}

double ClassifyMath(double x, double y, unsigned rules) {
    if (std::isnan(x)) return y;  // NaN in, NaN out: nothing went wrong here
    if ((rules & MATH_TLOSS_HUGE) && std::isfinite(x) && std::fabs(x) >= 9.2233720368547758e18)
        return MathError(MATH_TLOSS);
    if (std::isnan(y)) return MathError(MATH_DOMAIN);
    if (std::isinf(y)) {
        if (!std::isfinite(x)) return y;
        return MathError((rules & MATH_POLE_AT_ZERO) && x == 0 ? MATH_SINGULARITY : MATH_OVERFLOW);
    }
    if (y == 0 && (rules & MATH_UNDERFLOW_TO_ZERO) && std::isfinite(x) && x != 0)
        return MathError(MATH_UNDERFLOW);
    return y;
}
