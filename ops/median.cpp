#include "ops/median.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <vector>

#include "core/block_io.h"
#include "core/data_cursor.h"
#include "core/zrk_error.h"
#include "ops/structural_base.h"

namespace {

// The labels of the t members lack their closing quote; they have always read so.
const char* const kMedianLabel[6] = {"median('x')", "median('y')", "median('z')",
                                     "median('t)",  "median('u')", "median('v')"};
const char* const kSortLabel[6] = {"sort('x')", "sort('y')", "sort('z')",
                                   "sort('t)",  "sort('u')", "sort('v')"};

// One number per element to order by: i in double precision (exact for every integer
// type up to 2^53), or q, magnitude and phase through the cursor.
std::vector<double> KeysOf(const CZrkData* a, int iqmp) {
    const uint64_t n = a->Count();
    std::vector<double> keys(n);
    if (iqmp == 0) {
        CBlockReader<double> in(a, 1);
        const double* p = in.Read(0, n, keys.data());
        if (p != keys.data()) std::copy(p, p + n, keys.begin());
        return keys;
    }
    std::vector<float> f(n);
    CDataCursor<float>(a, iqmp).GetBlock(f.data(), 0, n);
    std::copy(f.begin(), f.end(), keys.begin());
    return keys;
}

// A total order of element indices: by key, NaN last, ties in storage order.
struct KeyLess {
    const double* key;
    bool operator()(uint64_t x, uint64_t y) const {
        const double a = key[x], b = key[y];
        if (a < b) return true;
        if (b < a) return false;
        const bool na = std::isnan(a), nb = std::isnan(b);
        if (na != nb) return nb;
        return x < y;
    }
};

void CopyElement(char* dst, uint64_t to, const char* src, uint64_t from, int bytes) {
    std::memcpy(dst + to * bytes, src + from * bytes, bytes);
}

void CheckDir(int dir) {
    if (dir < 0 || dir > 5) Raise("direction invalid");
}

// Median or sort of every line along `dir`.
CZrkData* Lines(CDataSpace& temp, int dir, const CZrkData* a, bool collapse) {
    CheckDir(dir);
    RequireData(a);
    res_t res[6];
    a->GetRes(res);
    const CWalk w(res, dir);
    if (collapse) res[dir] = 1;
    CZrkData* r = NewResult(temp, a->type, res, a);
    const std::vector<double> keys = KeysOf(a, 0);
    const KeyLess less{keys.data()};
    const int bytes = a->elem_bytes;
    const char* src = static_cast<const char*>(a->data);
    char* dst = static_cast<char*>(r->data);
    std::vector<uint64_t> idx(w.n);
    for (uint64_t o = 0; o < w.outer; ++o) {
        for (uint64_t in = 0; in < w.inner; ++in) {
            const uint64_t first = o * w.n * w.inner + in;
            for (uint64_t i = 0; i < w.n; ++i) idx[i] = first + i * w.inner;
            if (collapse) {
                std::nth_element(idx.begin(), idx.begin() + w.n / 2, idx.end(), less);
                CopyElement(dst, o * w.inner + in, src, idx[w.n / 2], bytes);
                continue;
            }
            std::sort(idx.begin(), idx.end(), less);
            for (uint64_t i = 0; i < w.n; ++i)
                CopyElement(dst, first + i * w.inner, src, idx[i], bytes);
        }
    }
    return r;
}

// Per direction and index, the wrapped positions of a centred window, times the stride.
std::vector<std::vector<uint64_t>> WindowTable(const res_t res[6], const res_t win[6], int d,
                                               uint64_t stride) {
    const int64_t n = static_cast<int64_t>(res[d]), k = static_cast<int64_t>(win[d]);
    std::vector<std::vector<uint64_t>> table(res[d]);
    for (int64_t e = 0; e < n; ++e) {
        for (int64_t j = 0; j < k; ++j) {
            const int64_t at = ((e + j - k / 2) % n + n) % n;
            table[e].push_back(static_cast<uint64_t>(at) * stride);
        }
    }
    return table;
}

// Minimum or maximum along one direction; i and q are one more inner direction.
template <class W, bool Max>
std::vector<W> Pass(const std::vector<W>& v, res_t res[6], int dir, res_t k, bool circular,
                    int comps) {
    const CWalk w(res, dir);
    const uint64_t inner = w.inner * comps, n = w.n;
    const std::vector<W>* src = &v;
    std::vector<W> ext;
    uint64_t na = n;
    if (circular) {
        // The line with its wrap-around border, so that the window starts at the output.
        na = n + k - 1;
        ext.resize(w.outer * na * inner);
        const uint64_t lead = (k / 2) % n;
        for (uint64_t o = 0; o < w.outer; ++o)
            for (uint64_t e = 0; e < na; ++e) {
                const uint64_t i = (e + n - lead) % n;
                std::copy_n(v.begin() + (o * n + i) * inner, inner,
                            ext.begin() + (o * na + e) * inner);
            }
        src = &ext;
    }
    const uint64_t no = na - k + 1, span = no * inner;
    std::vector<W> out(w.outer * span);
    for (uint64_t o = 0; o < w.outer; ++o) {
        const W* in = src->data() + o * na * inner;
        W* __restrict__ d = out.data() + o * span;
        std::copy_n(in, span, d);
        for (uint64_t j = 1; j < k; ++j) {
            const W* __restrict__ s = in + j * inner;
            for (uint64_t q = 0; q < span; ++q) {
                if constexpr (Max)
                    d[q] = s[q] > d[q] ? s[q] : d[q];
                else
                    d[q] = s[q] < d[q] ? s[q] : d[q];
            }
        }
    }
    res[dir] = no;
    return out;
}

template <class W, bool Max>
CZrkData* Extreme(CDataSpace& temp, const CZrkData* a, const res_t win[6], bool circular) {
    res_t res[6];
    a->GetRes(res);
    for (int d = 0; d < 6; ++d)
        if (!circular && win[d] > res[d]) Raise("resolution must be positive");
    const int comps = a->IsComplex() ? 2 : 1;
    const uint64_t n = a->Count();
    std::vector<W> v(n * comps);
    CBlockReader<W> in(a, comps);
    const W* p = in.Read(0, n, v.data());
    if (p != v.data()) std::copy(p, p + n * comps, v.begin());
    for (int d = 0; d < 6; ++d)
        if (win[d] > 1) v = Pass<W, Max>(v, res, d, win[d], circular, comps);
    CZrkData* r = NewResult(temp, a->type, res, a);
    CBlockWriter<W> out(r, comps);
    W* t = out.Target(0, r->Count(), v.data());
    if (t != v.data()) std::copy(v.begin(), v.end(), t);
    out.Commit(0, r->Count(), t);
    return r;
}

// The working type that holds every value of the type exactly, picked once.
template <bool Max>
CZrkData* ExtremeOf(CDataSpace& temp, const CZrkData* list, const CZrkData* a, bool circular) {
    RequireData(a);
    res_t win[6];
    ResList(list, win);
    const int real = a->type % 10;
    if (real == TYPE_R4) return Extreme<float, Max>(temp, a, win, circular);
    if (real == TYPE_R8) return Extreme<double, Max>(temp, a, win, circular);
    if (real >= TYPE_N1) return Extreme<uint64_t, Max>(temp, a, win, circular);
    return Extreme<int64_t, Max>(temp, a, win, circular);
}

}  // namespace

CZrkData* Median(CDataSpace& temp, int dir, const CZrkData* a) {
    CheckDir(dir);
    SetErrFunc(kMedianLabel[dir]);
    return LogFailure({CaughtLine("EvalMedian", -1)}, [&] { return Lines(temp, dir, a, true); });
}

CZrkData* Sort(CDataSpace& temp, int dir, const CZrkData* a) {
    CheckDir(dir);
    SetErrFunc(kSortLabel[dir]);
    return LogFailure({CaughtLine("EvalSort", -1)}, [&] { return Lines(temp, dir, a, false); });
}

CZrkData* CMedian(CDataSpace& temp, const CZrkData* a, int64_t key, const CZrkData* list) {
    SetOpFunc("cmedian", -1);
    return LogFailure({CaughtLine("EvalCmedian", -1)}, [&] {
        RequireData(a);
        if (key < 0 || key > 3) Raise("invalid sort type");
        res_t res[6], win[6];
        a->GetRes(res);
        ResList(list, win);
        CZrkData* r = NewResult(temp, a->type, res, a);
        const std::vector<double> keys = KeysOf(a, static_cast<int>(key));
        const KeyLess less{keys.data()};
        std::vector<std::vector<uint64_t>> table[6];
        uint64_t stride = 1, count = 1;
        for (int d = 0; d < 6; ++d) {
            table[d] = WindowTable(res, win, d, stride);
            stride *= res[d];
            count *= win[d];
        }
        const int bytes = a->elem_bytes;
        const char* src = static_cast<const char*>(a->data);
        char* dst = static_cast<char*>(r->data);
        std::vector<uint64_t> idx(count);
        const uint64_t n = a->Count();
        for (uint64_t e = 0; e < n; ++e) {
            const std::vector<uint64_t>* at[6];
            uint64_t rest = e;
            for (int d = 0; d < 6; ++d) {
                at[d] = &table[d][rest % res[d]];
                rest /= res[d];
            }
            // The window's indices, x fastest.
            uint64_t c[6] = {0, 0, 0, 0, 0, 0};
            for (uint64_t w = 0; w < count; ++w) {
                uint64_t index = 0;
                for (int d = 0; d < 6; ++d) index += (*at[d])[c[d]];
                idx[w] = index;
                for (int d = 0; d < 6 && ++c[d] == win[d]; ++d) c[d] = 0;
            }
            std::nth_element(idx.begin(), idx.begin() + count / 2, idx.end(), less);
            CopyElement(dst, e, src, idx[count / 2], bytes);
        }
        return r;
    });
}

CZrkData* Dilate(CDataSpace& temp, const CZrkData* list, const CZrkData* a, bool circular) {
    SetOpFunc("dilate", -1);
    return LogFailure({CaughtLine("EvalDilate", -1)},
                      [&] { return ExtremeOf<false>(temp, list, a, circular); });
}

CZrkData* Erode(CDataSpace& temp, const CZrkData* list, const CZrkData* a, bool circular) {
    SetOpFunc("erode", -1);
    return LogFailure({CaughtLine("EvalErode", -1)},
                      [&] { return ExtremeOf<true>(temp, list, a, circular); });
}
