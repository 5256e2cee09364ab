#include "ops/permute.h"

#include <emmintrin.h>
#include <xmmintrin.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "core/zrk_error.h"
#include "ops/structural_base.h"

namespace {

struct Dim {
    uint64_t n;
    int64_t stride;  // input elements per step of this output direction
};

// Input offsets of `count` consecutive positions from `start` of the odometer over `dims`.
void Offsets(const Dim* dims, int nd, uint64_t start, uint64_t count, int64_t* out) {
    uint64_t idx[6] = {};
    int64_t off = 0;
    for (int k = 0; k < nd; ++k) {
        idx[k] = start % dims[k].n;
        start /= dims[k].n;
        off += static_cast<int64_t>(idx[k]) * dims[k].stride;
    }
    for (uint64_t j = 0; j < count; ++j) {
        out[j] = off;
        for (int k = 0; k < nd; ++k) {
            off += dims[k].stride;
            if (++idx[k] < dims[k].n) break;
            off -= static_cast<int64_t>(dims[k].n) * dims[k].stride;
            idx[k] = 0;
        }
    }
}

uint64_t Product(const Dim* dims, int nd) {
    uint64_t p = 1;
    for (int k = 0; k < nd; ++k) p *= dims[k].n;
    return p;
}

template <int E>
struct Elem {
    unsigned char b[E];
};

// One line of n elements with input step `step` (1 or -1).
template <int E>
void CopyLine(const char* src, char* dst, uint64_t n, int64_t step) {
    if (step == 1) {
        std::memcpy(dst, src, n * E);
        return;
    }
    auto* d = reinterpret_cast<Elem<E>*>(dst);
    for (uint64_t j = 0; j < n; ++j) std::memcpy(&d[j], src - static_cast<int64_t>(j) * E, E);
}

// A K x K square of the tile, K = 16 / E: K input lines of K elements each (rows a, the
// elements x, x + 1, ...) go out as K output runs (one per x) through registers.
template <int E>
void Square(const char* src, const int64_t* aoff, char* dst, uint64_t dst_step) {
    if constexpr (E == 4) {
        __m128 r0 = _mm_loadu_ps(reinterpret_cast<const float*>(src + aoff[0] * 4));
        __m128 r1 = _mm_loadu_ps(reinterpret_cast<const float*>(src + aoff[1] * 4));
        __m128 r2 = _mm_loadu_ps(reinterpret_cast<const float*>(src + aoff[2] * 4));
        __m128 r3 = _mm_loadu_ps(reinterpret_cast<const float*>(src + aoff[3] * 4));
        _MM_TRANSPOSE4_PS(r0, r1, r2, r3);
        _mm_storeu_ps(reinterpret_cast<float*>(dst), r0);
        _mm_storeu_ps(reinterpret_cast<float*>(dst + dst_step), r1);
        _mm_storeu_ps(reinterpret_cast<float*>(dst + 2 * dst_step), r2);
        _mm_storeu_ps(reinterpret_cast<float*>(dst + 3 * dst_step), r3);
    } else {
        const __m128d r0 = _mm_loadu_pd(reinterpret_cast<const double*>(src + aoff[0] * 8));
        const __m128d r1 = _mm_loadu_pd(reinterpret_cast<const double*>(src + aoff[1] * 8));
        _mm_storeu_pd(reinterpret_cast<double*>(dst), _mm_unpacklo_pd(r0, r1));
        _mm_storeu_pd(reinterpret_cast<double*>(dst + dst_step), _mm_unpackhi_pd(r0, r1));
    }
}

constexpr uint64_t kChunk = 1024;  // offsets computed per call of Offsets
constexpr uint64_t kBlockX = 32;   // input elements read per line in a tile
constexpr uint64_t kBlockA =
    64;  // lines of a tile: few, since power-of-two strides share cache sets

template <int E>
void Move(const char* in, char* out, int64_t base, const Dim* dims, int nd) {
    std::vector<int64_t> offs(std::max(kChunk, kBlockA));
    if (nd == 0) {
        std::memcpy(out, in + base * E, E);
        return;
    }
    if (dims[0].stride == 1 || dims[0].stride == -1) {
        // Runs along the input's fastest direction: whole lines.
        const uint64_t n0 = dims[0].n;
        const uint64_t lines = Product(dims + 1, nd - 1);
        const bool stream = lines * n0 * E >= (uint64_t{32} << 20);
        bool backwards = false;
        for (int k = 1; k < nd; ++k) backwards = backwards || dims[k].stride < 0;
        std::vector<uint64_t> order(kChunk);
        for (uint64_t l0 = 0; l0 < lines; l0 += kChunk) {
            const uint64_t cnt = std::min(kChunk, lines - l0);
            Offsets(dims + 1, nd - 1, l0, cnt, offs.data());
            // Lines are read in storage order, so a flip reads forwards and writes backwards.
            for (uint64_t j = 0; j < cnt; ++j) order[j] = j;
            if (backwards)
                std::sort(order.begin(), order.begin() + cnt,
                          [&](uint64_t p, uint64_t q) { return offs[p] < offs[q]; });
            for (uint64_t k = 0; k < cnt; ++k) {
                const uint64_t j = order[k];
                char* dst = out + (l0 + j) * n0 * E;
                if (dims[0].stride == 1)
                    CopyBytes(dst, in + (base + offs[j]) * E, n0 * E, stream);
                else
                    CopyLine<E>(in + (base + offs[j]) * E, dst, n0, -1);
            }
        }
        EndStream(stream);
        return;
    }
    // Output directions below q (A) are written in runs; q is the input's fastest, read in
    // short lines; those above q (C) are walked one position at a time.
    int q = 0;
    while (dims[q].stride != 1 && dims[q].stride != -1) ++q;
    const Dim* a_dims = dims;
    const uint64_t na = Product(dims, q);
    const uint64_t nx = dims[q].n;
    const int64_t sx = dims[q].stride;
    const Dim* c_dims = dims + q + 1;
    const int nc = nd - q - 1;
    const uint64_t ncount = Product(c_dims, nc);
    std::vector<int64_t> aoff(kBlockA);
    int64_t coff = 0;
    auto* o = reinterpret_cast<Elem<E>*>(out);
    for (uint64_t c = 0; c < ncount; ++c) {
        Offsets(c_dims, nc, c, 1, &coff);
        Elem<E>* oc = o + c * nx * na;
        const char* ic = in + (base + coff) * E;
        for (uint64_t a0 = 0; a0 < na; a0 += kBlockA) {
            const uint64_t ba = std::min(kBlockA, na - a0);
            Offsets(a_dims, q, a0, ba, aoff.data());
            for (uint64_t x0 = 0; x0 < nx; x0 += kBlockX) {
                const uint64_t bx = std::min(kBlockX, nx - x0);
                // The lines of the next block are scattered beyond any hardware prefetcher's
                // guess: ask for them a share per step of this block.
                const char* next = ic + static_cast<int64_t>(x0 + bx) * sx * E;
                const bool more = x0 + bx < nx;
                const uint64_t share = (ba + bx - 1) / bx;
                uint64_t x = x0;
                if constexpr (E == 4 || E == 8) {
                    // Whole squares through registers when x runs forwards.
                    constexpr uint64_t K = 16 / E;
                    const uint64_t whole = sx == 1 ? bx / K * K : 0, wa = ba / K * K;
                    for (; x < x0 + whole; x += K) {
                        if (more)
                            for (uint64_t j = (x - x0) * share;
                                 j < std::min(ba, (x - x0 + K) * share); ++j)
                                __builtin_prefetch(next + aoff[j] * E);
                        const char* src = ic + static_cast<int64_t>(x) * E;
                        Elem<E>* dst = oc + x * na + a0;
                        for (uint64_t j = 0; j < wa; j += K)
                            Square<E>(src, &aoff[j], reinterpret_cast<char*>(dst + j), na * E);
                        for (uint64_t k = 0; k < K; ++k)
                            for (uint64_t j = wa; j < ba; ++j)
                                std::memcpy(&dst[k * na + j], src + (aoff[j] + k) * E, E);
                    }
                }
                for (; x < x0 + bx; ++x) {
                    if (more) {
                        const uint64_t from = (x - x0) * share, to = std::min(ba, from + share);
                        for (uint64_t j = from; j < to; ++j) __builtin_prefetch(next + aoff[j] * E);
                    }
                    const char* src = ic + static_cast<int64_t>(x) * sx * E;
                    Elem<E>* dst = oc + x * na + a0;
                    for (uint64_t j = 0; j < ba; ++j) std::memcpy(&dst[j], src + aoff[j] * E, E);
                }
            }
        }
    }
}

// The result of a reordering: resolutions and steps follow the permutation.
CZrkData* Reordered(CDataSpace& temp, const CZrkData* a, const int perm[6], const bool rev[6]) {
    RequireData(a);
    res_t res[6];
    for (int k = 0; k < 6; ++k) res[k] = a->Res(perm[k]);
    CZrkData* r = NewResult(temp, a->type, res, nullptr);
    for (int k = 0; k < 6; ++k) r->mm[k] = a->mm[perm[k]];
    PermuteBytes(a, r, perm, rev);
    return r;
}

}  // namespace

void CopyElements(const char* src, char* dst, uint64_t n, int elem_bytes, bool reverse) {
    if (!reverse || n == 0) {
        std::memcpy(dst, src, n * elem_bytes);
        return;
    }
    const char* last = src + (n - 1) * elem_bytes;
    switch (elem_bytes) {
        case 1:
            CopyLine<1>(last, dst, n, -1);
            break;
        case 2:
            CopyLine<2>(last, dst, n, -1);
            break;
        case 4:
            CopyLine<4>(last, dst, n, -1);
            break;
        case 8:
            CopyLine<8>(last, dst, n, -1);
            break;
        case 16:
            CopyLine<16>(last, dst, n, -1);
            break;
        default:
            Raise("invalid data type");
    }
}

void PermuteBytes(const CZrkData* in, CZrkData* out, const int perm[6], const bool rev[6]) {
    res_t res[6];
    in->GetRes(res);
    int64_t strides[6];
    int64_t s = 1;
    for (int d = 0; d < 6; ++d) {
        strides[d] = s;
        s *= static_cast<int64_t>(res[d]);
    }
    // Directions of one element are dropped, and neighbours that stay neighbours in the
    // input are merged, so the mover sees as few and as long directions as possible.
    Dim dims[6];
    int nd = 0;
    int64_t base = 0;
    for (int k = 0; k < 6; ++k) {
        const uint64_t n = res[perm[k]];
        if (n == 1) continue;
        int64_t stride = strides[perm[k]];
        if (rev[k]) {
            base += static_cast<int64_t>(n - 1) * stride;
            stride = -stride;
        }
        if (nd > 0 && dims[nd - 1].stride * static_cast<int64_t>(dims[nd - 1].n) == stride) {
            dims[nd - 1].n *= n;
        } else {
            dims[nd++] = {n, stride};
        }
    }
    const char* src = static_cast<const char*>(in->data);
    char* dst = static_cast<char*>(out->data);
    switch (in->elem_bytes) {
        case 1:
            Move<1>(src, dst, base, dims, nd);
            break;
        case 2:
            Move<2>(src, dst, base, dims, nd);
            break;
        case 4:
            Move<4>(src, dst, base, dims, nd);
            break;
        case 8:
            Move<8>(src, dst, base, dims, nd);
            break;
        case 16:
            Move<16>(src, dst, base, dims, nd);
            break;
        default:
            Raise("invalid data type");
    }
}

CZrkData* Flip(CDataSpace& temp, int dir, const CZrkData* a) {
    SetOpFunc("flip", dir);
    std::string failed = "flip('";
    failed += kDirLetters[dir];
    failed += "') failed\r\n";
    return LogFailure({failed, CaughtLine("Flip", dir)}, [&] {
        const int perm[6] = {0, 1, 2, 3, 4, 5};
        bool rev[6] = {};
        rev[dir] = true;
        CZrkData* r = Reordered(temp, a, perm, rev);
        r->CopyMm(*a);
        return r;
    });
}

CZrkData* Permute(CDataSpace& temp, const CZrkData* order, const CZrkData* a) {
    SetOpFunc("permute", -1);
    return LogFailure({CaughtLine("Permute", -1)}, [&] {
        const std::string text = TextOf(order);
        int perm[6];
        bool used[6] = {};
        int k = 0;
        for (char ch : text) {
            const char* p = std::strchr(kDirLetters, ch);
            if (!p || ch == '\0') continue;
            const int d = static_cast<int>(p - kDirLetters);
            if (used[d]) Raise("invalid direction");
            used[d] = true;
            perm[k++] = d;
        }
        if (k < 2) Raise("invalid direction");
        for (int d = 0; d < 6; ++d)
            if (!used[d]) perm[k++] = d;
        const bool rev[6] = {};
        return Reordered(temp, a, perm, rev);
    });
}

CZrkData* Trans(CDataSpace& temp, const CZrkData* pair, const CZrkData* a) {
    const std::string text = TextOf(pair);
    int found[2] = {-1, -1};
    int k = 0;
    for (int d = 0; d < 6 && k < 2; ++d)
        if (text.find(kDirLetters[d]) != std::string::npos) found[k++] = d;
    std::string letters = k == 2 ? std::string{kDirLetters[found[0]], kDirLetters[found[1]]} : "";
    SetErrFunc(("trans('" + letters + "')").c_str());
    std::string name = "Transpose";
    if (k == 2) name += {kDirCapitals[found[0]], kDirLetters[found[1]]};
    return LogFailure({"trans('" + letters + "') failed\r\n", CaughtLine(name.c_str(), -1)}, [&] {
        if (k < 2) Raise("invalid direction");
        int perm[6] = {0, 1, 2, 3, 4, 5};
        std::swap(perm[found[0]], perm[found[1]]);
        const bool rev[6] = {};
        return Reordered(temp, a, perm, rev);
    });
}

CZrkData* RotXy(CDataSpace& temp, const CZrkData* a) {
    SetOpFunc("rotxy", -1);
    return LogFailure({CaughtLine("rotxy", -1)}, [&] {
        const int perm[6] = {1, 0, 2, 3, 4, 5};
        const bool rev[6] = {true, false, false, false, false, false};
        return Reordered(temp, a, perm, rev);
    });
}

CZrkData* RotMXy(CDataSpace& temp, const CZrkData* a) {
    SetOpFunc("rotmxy", -1);
    return LogFailure({CaughtLine("rotmxy", -1)}, [&] {
        const int perm[6] = {1, 0, 2, 3, 4, 5};
        const bool rev[6] = {false, true, false, false, false, false};
        return Reordered(temp, a, perm, rev);
    });
}
