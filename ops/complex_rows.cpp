// Rows of the complex-part functions: parts, magnitude and phase, building complex data
// from parts or polar form, the conjugate.
#include <cmath>

#include "core/elementwise.h"
#include "ops/function_rows.h"
#include "ops/op_rows.h"

namespace {

// A real float result: r8 for r8 and complex r8 data, r4 otherwise.
int RealFloatType(const CZrkData* a) { return Promote(a->Type(), TYPE_R4) % 10; }
int ComplexFloatType(int type) { return Promote(type, TYPE_R4) % 10 + 10; }

// A real result from the i and q of each element.
template <class F>
int PartRow(const char* text, CZrkData** result, CDataSpace& temp, CZrkData** args, F f) {
    return RunHandler(text, nullptr, [&] {
        return Deliver(result, MapFloat(temp, args[0], RealFloatType(args[0]), 2, 1,
                                        [&](auto* y, const auto* x, size_t n) {
                                            for (size_t j = 0; j < n; ++j)
                                                y[j] = f(x[2 * j], x[2 * j + 1]);
                                        }));
    });
}

int EvalI(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return PartRow("i()", result, temp, args, [](auto i, auto) { return i; });
}
int EvalQ(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return PartRow("q()", result, temp, args, [](auto, auto q) { return q; });
}
int EvalMag(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return PartRow("mag()", result, temp, args, [](auto i, auto q) { return std::hypot(i, q); });
}
int EvalMag2(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return PartRow("mag2()", result, temp, args, [](auto i, auto q) { return i * i + q * q; });
}
int EvalPhase(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return PartRow("phase()", result, temp, args, [](auto i, auto q) { return std::atan2(q, i); });
}

int EvalIq(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return RunHandler("iq()", nullptr, [&] {
        const int type = ComplexFloatType(Promote(args[0]->Type(), args[1]->Type()));
        return Deliver(result, ZipFloat(temp, args[0], args[1], type, 1, 2,
                                        [](auto* z, const auto* i, const auto* q, size_t n) {
                                            for (size_t j = 0; j < n; ++j) {
                                                z[2 * j] = i[j];
                                                z[2 * j + 1] = q[j];
                                            }
                                        }));
    });
}

int EvalMp(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return RunHandler("mp()", nullptr, [&] {
        const int type = ComplexFloatType(Promote(args[0]->Type(), args[1]->Type()));
        return Deliver(result, ZipFloat(temp, args[0], args[1], type, 1, 2,
                                        [](auto* z, const auto* m, const auto* p, size_t n) {
                                            for (size_t j = 0; j < n; ++j) {
                                                z[2 * j] = m[j] * std::cos(p[j]);
                                                z[2 * j + 1] = m[j] * std::sin(p[j]);
                                            }
                                        }));
    });
}

int EvalCexp(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return RunHandler("cexp()", nullptr, [&] {
        return Deliver(result, MapFloat(temp, args[0], ComplexFloatType(args[0]->Type()), 1, 2,
                                        [](auto* z, const auto* p, size_t n) {
                                            for (size_t j = 0; j < n; ++j) {
                                                z[2 * j] = std::cos(p[j]);
                                                z[2 * j + 1] = std::sin(p[j]);
                                            }
                                        }));
    });
}

int EvalConj(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return RunHandler("conj()", nullptr, [&] {
        const int type = args[0]->Type();
        const int comps = IsComplexType(type) ? 2 : 1;
        return Deliver(result, MapFloat(temp, args[0], type, comps, comps,
                                        [comps](auto* y, const auto* x, size_t n) {
                                            for (size_t j = 0; j < n * comps; ++j)
                                                y[j] = (j % 2 == 1) ? -x[j] : x[j];
                                        }));
    });
}

const char* const kHelpI[] = {"return i component of complex data",
                              "data",
                              "input data array",
                              nullptr,
                              "out = i(data)",
                              nullptr};
const char* const kHelpQ[] = {"return q component of complex data",
                              "data",
                              "input data array",
                              nullptr,
                              "out = q(data)",
                              nullptr};
const char* const kHelpMag[] = {"return magnitude of complex data",
                                "data",
                                "input data array",
                                nullptr,
                                "out = mag(data)",
                                nullptr};
const char* const kHelpMag2[] = {"return magnitude squared of complex data",
                                 "data",
                                 "input data array",
                                 nullptr,
                                 "out = mag2(data)",
                                 nullptr};
const char* const kHelpPhase[] = {
    "return phase of complex data", "data", "input data array", nullptr, "out = phase(data)",
    "phase in radians, -pi to pi",  nullptr};
const char* const kHelpIq[] = {"return iq complex data set",
                               "i",
                               "real part",
                               "q",
                               "imaginary part",
                               nullptr,
                               "out = iq(i,q)",
                               nullptr};
const char* const kHelpMp[] = {"convert polar to iq data array",
                               "mag",
                               "magnitude",
                               "phase",
                               "phase in radians",
                               nullptr,
                               "out = mp(mag,phase)",
                               nullptr};
const char* const kHelpCexp[] = {"convert phase to unitary complex",
                                 "phase",
                                 "phase in radians",
                                 nullptr,
                                 "out = cexp(phase)",
                                 nullptr};
const char* const kHelpConj[] = {"return conjugate of complex data",
                                 "data",
                                 "input data array",
                                 nullptr,
                                 "out = conj(data)",
                                 nullptr};

}  // namespace

std::vector<CFuncDecl> ComplexRows() {
    return {
        Handler("i", EvalI, {.args = 1, .help = kHelpI, .place = 120}),
        Handler("q", EvalQ, {.args = 1, .help = kHelpQ, .place = 130}),
        Handler("mag", EvalMag, {.args = 1, .help = kHelpMag, .place = 140}),
        Handler("mag2", EvalMag2, {.args = 1, .help = kHelpMag2, .place = 150}),
        Handler("phase", EvalPhase, {.args = 1, .help = kHelpPhase, .place = 160}),
        Handler("iq", EvalIq, {.args = 2, .help = kHelpIq, .place = 170}),
        Handler("mp", EvalMp, {.args = 2, .help = kHelpMp, .place = 180}),
        Handler("cexp", EvalCexp, {.args = 1, .help = kHelpCexp, .place = 190}),
        Handler("conj", EvalConj, {.args = 1, .help = kHelpConj, .place = 200}),
    };
}
