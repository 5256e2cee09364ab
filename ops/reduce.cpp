#include "ops/reduce.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "core/zrk_error.h"
#include "ops/structural_base.h"

namespace {

// The working float of a component type: double for 8-byte floats only.
template <class T>
using Work = std::conditional_t<std::is_same_v<T, double>, double, float>;

// The float form of a type, and its real part.
int FloatForm(int type) { return Promote(type, TYPE_R4); }
int RealFloatForm(int type) { return Promote(type % 10, TYPE_R4); }

// Sum in the element's own type; integers wrap instead of overflowing.
template <class T>
T Add(T a, T b) {
    if constexpr (std::is_integral_v<T>) {
        using U = std::make_unsigned_t<T>;
        return static_cast<T>(static_cast<U>(static_cast<U>(a) + static_cast<U>(b)));
    } else {
        return a + b;
    }
}

// The input's resolutions, and the walk around `dir`.
struct Shape {
    Shape(const CZrkData* a, int dir) : walk(Read(a), dir) {}
    res_t res[6];
    CWalk walk;
    const res_t* Read(const CZrkData* a) {
        a->GetRes(res);
        return res;
    }
    // The resolutions of a result collapsed along the direction.
    const res_t* Collapsed(int dir) {
        res[dir] = 1;
        return res;
    }
};

// mean and sd reduce i and q separately: a complex element is two scalars side by side, so
// the inner block of a walk is `inner * components` scalars wide.
template <class T>
void MeanLines(const T* x, Work<T>* out, const CWalk& w, uint64_t m) {
    using W = Work<T>;
    std::vector<double> sum(m);
    for (uint64_t o = 0; o < w.outer; ++o) {
        std::fill(sum.begin(), sum.end(), 0.0);
        for (uint64_t i = 0; i < w.n; ++i) {
            const T* row = x + (o * w.n + i) * m;
            for (uint64_t k = 0; k < m; ++k) sum[k] += static_cast<W>(row[k]);
        }
        const double n = static_cast<double>(w.n);
        for (uint64_t k = 0; k < m; ++k) out[o * m + k] = static_cast<W>(sum[k] / n);
    }
}

// One pass: running mean and running sum of squared deviations from the first value on.
template <class T>
void SdLines(const T* x, Work<T>* out, const CWalk& w, uint64_t m) {
    using W = Work<T>;
    std::vector<double> mean(m), dev(m);
    for (uint64_t o = 0; o < w.outer; ++o) {
        const T* first = x + o * w.n * m;
        for (uint64_t k = 0; k < m; ++k) mean[k] = static_cast<W>(first[k]);
        std::fill(dev.begin(), dev.end(), 0.0);
        for (uint64_t i = 1; i < w.n; ++i) {
            const T* row = first + i * m;
            const double count = static_cast<double>(i + 1);
            for (uint64_t k = 0; k < m; ++k) {
                const double v = static_cast<W>(row[k]);
                const double d = v - mean[k];
                mean[k] += d / count;
                dev[k] += d * (v - mean[k]);
            }
        }
        const double n = static_cast<double>(w.n);
        for (uint64_t k = 0; k < m; ++k) out[o * m + k] = static_cast<W>(std::sqrt(dev[k] / n));
    }
}

// Extremes of the i channel (`c` components apart). The first element of a line starts;
// only a strictly better value replaces it, so the first of equal extremes stays.
template <bool kMax, bool kIndex, class T, class Out>
void ExtremeLines(const T* x, int c, Out* out, const CWalk& w) {
    using W = Work<T>;
    std::vector<W> best(w.inner);
    std::vector<int32_t> at(w.inner);
    for (uint64_t o = 0; o < w.outer; ++o) {
        const T* first = x + o * w.n * w.inner * c;
        for (uint64_t k = 0; k < w.inner; ++k) best[k] = static_cast<W>(first[k * c]);
        std::fill(at.begin(), at.end(), 0);
        for (uint64_t i = 1; i < w.n; ++i) {
            const T* row = first + i * w.inner * c;
            const int32_t pos = static_cast<int32_t>(i);
            for (uint64_t k = 0; k < w.inner; ++k) {
                const W v = static_cast<W>(row[k * c]);
                const bool better = kMax ? v > best[k] : v < best[k];
                best[k] = better ? v : best[k];
                at[k] = better ? pos : at[k];
            }
        }
        Out* dst = out + o * w.inner;
        if constexpr (kIndex)
            std::copy(at.begin(), at.end(), dst);
        else
            std::copy(best.begin(), best.end(), dst);
    }
}

template <class T>
Work<T> Magnitude(const T* e, int c) {
    using W = Work<T>;
    if (c == 1) return std::abs(static_cast<W>(e[0]));
    if constexpr (std::is_same_v<W, double>) {
        return std::hypot(e[0], e[1]);
    } else {
        // Squares in double cannot overflow for any single-precision component.
        const double i = static_cast<W>(e[0]), q = static_cast<W>(e[1]);
        return static_cast<W>(std::sqrt(i * i + q * q));
    }
}

template <class T>
void MipLines(const T* x, int c, Work<T>* out, const CWalk& w) {
    using W = Work<T>;
    for (uint64_t o = 0; o < w.outer; ++o) {
        const T* first = x + o * w.n * w.inner * c;
        W* dst = out + o * w.inner;
        for (uint64_t k = 0; k < w.inner; ++k) dst[k] = Magnitude(first + k * c, c);
        for (uint64_t i = 1; i < w.n; ++i) {
            const T* row = first + i * w.inner * c;
            for (uint64_t k = 0; k < w.inner; ++k) {
                const W v = Magnitude(row + k * c, c);
                dst[k] = v > dst[k] ? v : dst[k];
            }
        }
    }
}

template <class T>
void SumSqrLines(const T* x, int c, Work<T>* out, const CWalk& w) {
    using W = Work<T>;
    const uint64_t m = w.inner * c;
    std::vector<double> sum(m);
    for (uint64_t o = 0; o < w.outer; ++o) {
        std::fill(sum.begin(), sum.end(), 0.0);
        for (uint64_t i = 0; i < w.n; ++i) {
            const T* row = x + (o * w.n + i) * m;
            for (uint64_t k = 0; k < m; ++k) {
                const double v = static_cast<W>(row[k]);
                sum[k] += v * v;
            }
        }
        // i*i and q*q of an element land side by side; they add up to one square magnitude.
        W* dst = out + o * w.inner;
        for (uint64_t k = 0; k < w.inner; ++k) {
            double s = 0;
            for (int j = 0; j < c; ++j) s += sum[k * c + j];
            dst[k] = static_cast<W>(s);
        }
    }
}

// Running sum along the direction: each row is the previous result row plus the input row.
template <class T>
void IntegrateLines(const T* x, T* out, const CWalk& w, uint64_t m) {
    for (uint64_t o = 0; o < w.outer; ++o) {
        const uint64_t base = o * w.n * m;
        for (uint64_t k = 0; k < m; ++k) out[base + k] = x[base + k];
        for (uint64_t i = 1; i < w.n; ++i) {
            const T* row = x + base + i * m;
            const T* prev = out + base + (i - 1) * m;
            T* dst = out + base + i * m;
            for (uint64_t k = 0; k < m; ++k) dst[k] = Add(prev[k], row[k]);
        }
    }
}

template <class T>
void ProjectLines(const T* x, T* out, const CWalk& w, uint64_t m) {
    for (uint64_t o = 0; o < w.outer; ++o) {
        const T* first = x + o * w.n * m;
        T* dst = out + o * m;
        for (uint64_t k = 0; k < m; ++k) dst[k] = first[k];
        for (uint64_t i = 1; i < w.n; ++i) {
            const T* row = first + i * m;
            for (uint64_t k = 0; k < m; ++k) dst[k] = Add(dst[k], row[k]);
        }
    }
}

// The checks every reduction starts with.
void CheckInput(const CZrkData* a, int dir) {
    RequireData(a);
    if (dir < 0 || dir > 5) Raise("invalid direction");
}

// mean and sd: float form, i and q separately.
template <class Kernel>
CZrkData* FloatFormReduce(CDataSpace& temp, int dir, const CZrkData* a, Kernel kernel) {
    CheckInput(a, dir);
    Shape s(a, dir);
    const CWalk w = s.walk;
    CZrkData* r = NewResult(temp, FloatForm(a->type), s.Collapsed(dir), a);
    const uint64_t m = w.inner * a->Components();
    WithComponent(a->type, [&](auto t) {
        using T = decltype(t);
        kernel(static_cast<const T*>(a->data), static_cast<Work<T>*>(r->data), w, m);
    });
    return r;
}

template <bool kMax>
CZrkData* Extreme(CDataSpace& temp, int dir, const CZrkData* a, bool index) {
    CheckInput(a, dir);
    Shape s(a, dir);
    const CWalk w = s.walk;
    CZrkData* r = NewResult(temp, index ? TYPE_I4 : RealFloatForm(a->type), s.Collapsed(dir), a);
    const int c = a->Components();
    WithComponent(a->type, [&](auto t) {
        using T = decltype(t);
        const T* x = static_cast<const T*>(a->data);
        if (index)
            ExtremeLines<kMax, true>(x, c, static_cast<int32_t*>(r->data), w);
        else
            ExtremeLines<kMax, false>(x, c, static_cast<Work<T>*>(r->data), w);
    });
    return r;
}

// The failure line of integrate for each direction: the labels stand mixed.
const char* const kIntegrateFailed[6] = {"IntegrateX() failed\r\n", "ProjectY() failed\r\n",
                                         "IntegrateZ() failed\r\n", "ProjectT() failed\r\n",
                                         "ProjectU() failed\r\n",   "ProjectV() failed\r\n"};
const char* const kProjectFailed[6] = {"ProjectX() failed\r\n", "ProjectY() failed\r\n",
                                       "ProjectZ() failed\r\n", "ProjectT() failed\r\n",
                                       "ProjectU() failed\r\n", "ProjectV() failed\r\n"};
// sd's t member reads "sd('z')".
const char* const kSdLabels[6] = {"sd('x')", "sd('y')", "sd('z')", "sd('z')", "sd('u')", "sd('v')"};

std::string Line(const char* const lines[6], int dir) {
    return dir >= 0 && dir < 6 ? lines[dir] : "";
}

}  // namespace

CZrkData* Mean(CDataSpace& temp, int dir, const CZrkData* a) {
    SetOpFunc("mean", dir);
    return LogFailure({CaughtLine("Mean", dir)}, [&] {
        return FloatFormReduce(temp, dir, a, [](auto* x, auto* out, const CWalk& w, uint64_t m) {
            MeanLines(x, out, w, m);
        });
    });
}

CZrkData* Sd(CDataSpace& temp, int dir, const CZrkData* a) {
    SetErrFunc(dir >= 0 && dir < 6 ? kSdLabels[dir] : "sd()");
    return LogFailure({CaughtLine("Sd", dir)}, [&] {
        return FloatFormReduce(temp, dir, a, [](auto* x, auto* out, const CWalk& w, uint64_t m) {
            SdLines(x, out, w, m);
        });
    });
}

CZrkData* Max(CDataSpace& temp, int dir, const CZrkData* a) {
    SetOpFunc("max", dir);
    return LogFailure({CaughtLine("Max", dir)}, [&] { return Extreme<true>(temp, dir, a, false); });
}

CZrkData* Min(CDataSpace& temp, int dir, const CZrkData* a) {
    SetOpFunc("min", dir);
    return LogFailure({CaughtLine("Min", dir)},
                      [&] { return Extreme<false>(temp, dir, a, false); });
}

CZrkData* MaxIndex(CDataSpace& temp, int dir, const CZrkData* a) {
    SetOpFunc("maxndx", dir);
    return LogFailure({CaughtLine("MaxIndex", dir)},
                      [&] { return Extreme<true>(temp, dir, a, true); });
}

CZrkData* MinIndex(CDataSpace& temp, int dir, const CZrkData* a) {
    SetOpFunc("minndx", dir);
    return LogFailure({CaughtLine("MinIndex", dir)},
                      [&] { return Extreme<false>(temp, dir, a, true); });
}

CZrkData* Mip(CDataSpace& temp, int dir, const CZrkData* a) {
    SetOpFunc("mip", dir);
    return LogFailure({CaughtLine("Mip", dir)}, [&] {
        CheckInput(a, dir);
        Shape s(a, dir);
        const CWalk w = s.walk;
        CZrkData* r = NewResult(temp, RealFloatForm(a->type), s.Collapsed(dir), a);
        WithComponent(a->type, [&](auto t) {
            using T = decltype(t);
            MipLines(static_cast<const T*>(a->data), a->Components(),
                     static_cast<Work<T>*>(r->data), w);
        });
        return r;
    });
}

CZrkData* Integrate(CDataSpace& temp, int dir, const CZrkData* a) {
    SetOpFunc("integrate", dir);
    return LogFailure({Line(kIntegrateFailed, dir)}, [&] {
        CheckInput(a, dir);
        Shape s(a, dir);
        const CWalk w = s.walk;
        CZrkData* r = NewResult(temp, a->type, s.res, a);
        WithComponent(a->type, [&](auto t) {
            using T = decltype(t);
            IntegrateLines(static_cast<const T*>(a->data), static_cast<T*>(r->data), w,
                           w.inner * a->Components());
        });
        return r;
    });
}

CZrkData* Project(CDataSpace& temp, int dir, const CZrkData* a) {
    SetOpFunc("proj", dir);
    return LogFailure({Line(kProjectFailed, dir)}, [&] {
        CheckInput(a, dir);
        Shape s(a, dir);
        const CWalk w = s.walk;
        CZrkData* r = NewResult(temp, a->type, s.Collapsed(dir), a);
        WithComponent(a->type, [&](auto t) {
            using T = decltype(t);
            ProjectLines(static_cast<const T*>(a->data), static_cast<T*>(r->data), w,
                         w.inner * a->Components());
        });
        return r;
    });
}

CZrkData* SumSqr(CDataSpace& temp, int dir, const CZrkData* a) {
    SetOpFunc("sumsqr", dir);
    std::string caught = "error caught: eval_sumsqr";
    if (dir >= 0 && dir < 6) caught += kDirLetters[dir];
    return LogFailure({caught + ":\r\n"}, [&] {
        CheckInput(a, dir);
        Shape s(a, dir);
        const CWalk w = s.walk;
        CZrkData* r = NewResult(temp, RealFloatForm(a->type), s.Collapsed(dir), a);
        WithComponent(a->type, [&](auto t) {
            using T = decltype(t);
            SumSqrLines(static_cast<const T*>(a->data), a->Components(),
                        static_cast<Work<T>*>(r->data), w);
        });
        return r;
    });
}
