#include "ops/convolution.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "core/block_io.h"
#include "core/zrk_error.h"
#include "ops/structural_base.h"

namespace {

// An array in the working type W, split into its i and q planes; q is empty when real.
// Separate planes keep every inner loop a plain multiply-add over contiguous numbers.
template <class W>
struct Planes {
    res_t res[6] = {1, 1, 1, 1, 1, 1};
    std::vector<W> re, im;
    bool Complex() const { return !im.empty(); }
};

uint64_t CountOf(const res_t res[6]) {
    uint64_t n = 1;
    for (int d = 0; d < 6; ++d) n *= res[d];
    return n;
}

// `zero_q`: give a real array a q plane of zeros, for sums that need both planes.
template <class W>
Planes<W> Load(const CZrkData* a, bool zero_q) {
    Planes<W> p;
    a->GetRes(p.res);
    const uint64_t n = a->Count();
    const bool complex = a->IsComplex();
    p.re.resize(n);
    if (complex || zero_q) p.im.assign(n, W(0));
    const int comps = complex ? 2 : 1;
    CBlockReader<W> in(a, comps);
    std::vector<W> buf(kBlockElements * comps);
    for (uint64_t k = 0; k < n; k += kBlockElements) {
        const size_t len = static_cast<size_t>(std::min<uint64_t>(kBlockElements, n - k));
        const W* x = in.Read(k, len, buf.data());
        if (!complex) {
            std::copy(x, x + len, p.re.begin() + k);
            continue;
        }
        for (size_t j = 0; j < len; ++j) {
            p.re[k + j] = x[2 * j];
            p.im[k + j] = x[2 * j + 1];
        }
    }
    return p;
}

// Writes the planes into `r` (q = 0 where the planes have none).
template <class W>
void Store(CZrkData* r, const Planes<W>& p) {
    const int comps = r->IsComplex() ? 2 : 1;
    const uint64_t n = r->Count();
    CBlockWriter<W> out(r, comps);
    std::vector<W> buf(kBlockElements * comps);
    for (uint64_t k = 0; k < n; k += kBlockElements) {
        const size_t len = static_cast<size_t>(std::min<uint64_t>(kBlockElements, n - k));
        W* y = out.Target(k, len, buf.data());
        if (comps == 1) {
            std::copy(p.re.begin() + k, p.re.begin() + k + len, y);
        } else {
            for (size_t j = 0; j < len; ++j) {
                y[2 * j] = p.re[k + j];
                y[2 * j + 1] = p.Complex() ? p.im[k + j] : W(0);
            }
        }
        out.Commit(k, len, y);
    }
}

// dst (resolutions `to`) reads src (resolutions `from`) at each index modulo `from`: the
// wrap-around border of the circular forms, and the spreading of a shared kernel line.
template <class W>
std::vector<W> Tile(const std::vector<W>& src, const res_t from[6], const res_t to[6]) {
    std::vector<W> dst(CountOf(to));
    uint64_t stride[6] = {1, 1, 1, 1, 1, 1};
    for (int d = 1; d < 6; ++d) stride[d] = stride[d - 1] * from[d - 1];
    const uint64_t lines = dst.size() / to[0];
    for (uint64_t line = 0; line < lines; ++line) {
        uint64_t rest = line, at = 0;
        for (int d = 1; d < 6; ++d) {
            at += (rest % to[d]) % from[d] * stride[d];
            rest /= to[d];
        }
        W* out = dst.data() + line * to[0];
        const W* in = src.data() + at;
        for (uint64_t x = 0; x < to[0];) {
            const uint64_t len = std::min<uint64_t>(to[0] - x, from[0]);
            std::copy(in, in + len, out + x);
            x += len;
        }
    }
    return dst;
}

template <class W>
void TilePlanes(Planes<W>& p, const res_t to[6]) {
    p.re = Tile(p.re, p.res, to);
    if (p.Complex()) p.im = Tile(p.im, p.res, to);
    std::copy(to, to + 6, p.res);
}

// Zeros appended along `dir` up to `size` points.
template <class W>
void PadDir(Planes<W>& p, int dir, res_t size) {
    if (p.res[dir] >= size) return;
    const CWalk w(p.res, dir);
    auto pad = [&](std::vector<W>& v) {
        std::vector<W> out(w.outer * size * w.inner, W(0));
        for (uint64_t o = 0; o < w.outer; ++o)
            std::copy(v.begin() + o * w.n * w.inner, v.begin() + (o + 1) * w.n * w.inner,
                      out.begin() + o * size * w.inner);
        v.swap(out);
    };
    pad(p.re);
    if (p.Complex()) pad(p.im);
    p.res[dir] = size;
}

// acc (resolutions o) += corr(a, sign * k) over all six directions. The kernel's lines are
// taken one at a time and each of its taps is one contiguous multiply-add along x.
template <class W>
void CorrPlane(W* __restrict__ acc, const res_t o[6], const W* a, const res_t ar[6], const W* k,
               const res_t kr[6], W sign) {
    uint64_t stride[6] = {1, 1, 1, 1, 1, 1};
    for (int d = 1; d < 6; ++d) stride[d] = stride[d - 1] * ar[d - 1];
    // Offsets in a of the kernel's lines, relative to the output line's first point.
    const uint64_t klines = CountOf(kr) / kr[0];
    std::vector<uint64_t> koff(klines);
    for (uint64_t kl = 0; kl < klines; ++kl) {
        uint64_t rest = kl, at = 0;
        for (int d = 1; d < 6; ++d) {
            at += rest % kr[d] * stride[d];
            rest /= kr[d];
        }
        koff[kl] = at;
    }
    const uint64_t ox = o[0], kx = kr[0], olines = CountOf(o) / ox;
    for (uint64_t ol = 0; ol < olines; ++ol) {
        uint64_t rest = ol, base = 0;
        for (int d = 1; d < 6; ++d) {
            base += rest % o[d] * stride[d];
            rest /= o[d];
        }
        W* __restrict__ out = acc + ol * ox;
        for (uint64_t kl = 0; kl < klines; ++kl) {
            const W* in = a + base + koff[kl];
            const W* taps = k + kl * kx;
            uint64_t j = 0;
            // Two taps per pass halve the loads and stores of the accumulator line.
            for (; j + 1 < kx; j += 2) {
                const W w0 = sign * taps[j], w1 = sign * taps[j + 1];
                const W* __restrict__ s = in + j;
                for (uint64_t x = 0; x < ox; ++x) out[x] += w0 * s[x] + w1 * s[x + 1];
            }
            if (j < kx) {
                const W w = sign * taps[j];
                const W* __restrict__ s = in + j;
                for (uint64_t x = 0; x < ox; ++x) out[x] += w * s[x];
            }
        }
    }
}

// The complex product's four plane pairs; those with a missing q plane drop out.
template <class W>
void CorrAll(Planes<W>& out, const Planes<W>& a, const Planes<W>& k) {
    CorrPlane(out.re.data(), out.res, a.re.data(), a.res, k.re.data(), k.res, W(1));
    if (a.Complex() && k.Complex())
        CorrPlane(out.re.data(), out.res, a.im.data(), a.res, k.im.data(), k.res, W(-1));
    if (k.Complex())
        CorrPlane(out.im.data(), out.res, a.re.data(), a.res, k.im.data(), k.res, W(1));
    if (a.Complex())
        CorrPlane(out.im.data(), out.res, a.im.data(), a.res, k.re.data(), k.res, W(1));
}

// One plane of the one-direction forms: a is outer x na x inner, k outer x m x inner (or one
// line of m when `shared`), acc outer x no x inner. `Square` sums (a - k)^2 in place of a k.
template <class W, bool Square>
void LinePlane(W* __restrict__ acc, const W* a, const W* k, const CWalk& w, uint64_t m, uint64_t no,
               bool shared, W sign) {
    const uint64_t inner = w.inner, span = no * inner;
    for (uint64_t o = 0; o < w.outer; ++o) {
        W* __restrict__ out = acc + o * span;
        const W* in = a + o * w.n * inner;
        const W* taps = shared ? k : k + o * m * inner;
        if (shared || inner == 1) {
            // The tap is one number for the whole line: contiguous over (i, inner).
            for (uint64_t j = 0; j < m; ++j) {
                const W t = sign * taps[j * (shared ? 1 : inner)];
                const W* __restrict__ s = in + j * inner;
                for (uint64_t q = 0; q < span; ++q) {
                    if constexpr (Square) {
                        const W d = s[q] - t;
                        out[q] += d * d;
                    } else {
                        out[q] += t * s[q];
                    }
                }
            }
            continue;
        }
        for (uint64_t j = 0; j < m; ++j) {
            const W* __restrict__ t = taps + j * inner;
            for (uint64_t i = 0; i < no; ++i) {
                const W* __restrict__ s = in + (i + j) * inner;
                W* __restrict__ d = out + i * inner;
                for (uint64_t q = 0; q < inner; ++q) {
                    if constexpr (Square) {
                        const W e = s[q] - t[q];
                        d[q] += e * e;
                    } else {
                        d[q] += sign * t[q] * s[q];
                    }
                }
            }
        }
    }
}

struct Job {
    int dir;    // -1: all six directions
    bool flip;  // conv: the kernel reversed
    bool circular;
    bool square;  // ssd
};

const char* const kIncompatible[6] = {"incompatible x res", "incompatible y res",
                                      "incompatible z res", "incompatible t res",
                                      "incompatible u res", "incompatible v res"};

// The result's resolutions; raises before any work is done.
void OutRes(const Job& job, const res_t ar[6], const res_t kr[6], res_t out[6]) {
    for (int d = 0; d < 6; ++d) {
        const bool along = job.dir < 0 || job.dir == d;
        if (!along) {
            if (kr[d] != ar[d] && kr[d] != 1) Raise(kIncompatible[d]);
            out[d] = ar[d];
        } else if (job.circular) {
            out[d] = job.dir < 0 ? ar[d] : std::max(ar[d], kr[d]);
        } else {
            if (kr[d] > ar[d]) Raise("resolution must be positive");
            out[d] = ar[d] - kr[d] + 1;
        }
    }
}

template <class W>
CZrkData* RunJob(CDataSpace& temp, const CZrkData* a0, const CZrkData* k0, int type,
                 const Job& job) {
    res_t ar[6], kr[6], ores[6];
    a0->GetRes(ar);
    k0->GetRes(kr);
    OutRes(job, ar, kr, ores);
    CheckResultSize(type, ores);
    const bool complex = IsComplexType(type);
    Planes<W> a = Load<W>(a0, job.square && complex);
    Planes<W> k = Load<W>(k0, job.square && complex);
    if (job.flip) {
        std::reverse(k.re.begin(), k.re.end());
        std::reverse(k.im.begin(), k.im.end());
    }
    Planes<W> out;
    std::copy(ores, ores + 6, out.res);
    out.re.assign(CountOf(ores), W(0));
    if (complex && !job.square) out.im.assign(out.re.size(), W(0));

    if (job.dir < 0) {
        if (job.circular) {
            res_t ext[6];
            for (int d = 0; d < 6; ++d) ext[d] = ar[d] + kr[d] - 1;
            TilePlanes(a, ext);
        }
        CorrAll(out, a, k);
    } else {
        const int dir = job.dir;
        const bool shared = CountOf(kr) == kr[dir];
        if (!shared) {
            // Lines of k paired with lines of a; a direction of 1 in k serves them all.
            res_t full[6];
            std::copy(ar, ar + 6, full);
            full[dir] = kr[dir];
            TilePlanes(k, full);
        }
        if (job.circular) {
            const res_t size = ores[dir];
            PadDir(a, dir, size);
            // The squared differences run over all of the padded kernel, products need not.
            if (job.square) PadDir(k, dir, size);
            res_t ext[6];
            std::copy(a.res, a.res + 6, ext);
            ext[dir] = size + k.res[dir] - 1;
            TilePlanes(a, ext);
        }
        const CWalk w(a.res, dir);
        const uint64_t m = k.res[dir], no = ores[dir];
        if (job.square) {
            LinePlane<W, true>(out.re.data(), a.re.data(), k.re.data(), w, m, no, shared, W(1));
            if (a.Complex())
                LinePlane<W, true>(out.re.data(), a.im.data(), k.im.data(), w, m, no, shared, W(1));
        } else {
            auto run = [&](std::vector<W>& acc, const std::vector<W>& x, const std::vector<W>& t,
                           W sign) {
                LinePlane<W, false>(acc.data(), x.data(), t.data(), w, m, no, shared, sign);
            };
            run(out.re, a.re, k.re, W(1));
            if (a.Complex() && k.Complex()) run(out.re, a.im, k.im, W(-1));
            if (k.Complex()) run(out.im, a.re, k.im, W(1));
            if (a.Complex()) run(out.im, a.im, k.re, W(1));
        }
    }
    CZrkData* r = NewResult(temp, type, ores, a0);
    Store(r, out);
    return r;
}

// The working type is picked once, from the result type: single precision for r4 results.
CZrkData* Dispatch(CDataSpace& temp, const CZrkData* a, const CZrkData* k, const Job& job) {
    RequireData(a);
    RequireData(k);
    const int type = CommonType(a->type, k->type);
    if (!IsValidType(type)) Raise("invalid data type");
    if (type % 10 == TYPE_R4) return RunJob<float>(temp, a, k, type, job);
    return RunJob<double>(temp, a, k, type, job);
}

CZrkData* Whole(CDataSpace& temp, const CZrkData* a, const CZrkData* k, const char* name, bool flip,
                bool circular) {
    SetOpFunc(name, -1);
    return LogFailure({CaughtLine((std::string("eval_") + name).c_str(), -1)}, [&] {
        return Dispatch(temp, a, k, Job{-1, flip, circular, false});
    });
}

// The labels of the sum of squares difference stand as the program has always shown them;
// the straight family's u member sets none.
const char* const kSsdLabel[6] = {"sse('x')", "sse('y')", "sse('z')",
                                  "sse('t')", nullptr,    "sse('v')"};
const char* const kSsdFailed[6] = {"sse('x') failed\r\n", "sse('y') failed\r\n",
                                   "sse('z') failed\r\n", "sse('t') failed\r\n",
                                   "sse('u') failed\r\n", "sse('v') failed\r\n"};
const char* const kCssdLabel[6] = {"cssd('x')", "csse('y')", "csse('z')",
                                   "csse('t')", "sse('u')",  "ssd('v')"};
const char* const kCssdFailed[6] = {"cssd('x') failed\r\n", "csse('y') failed\r\n",
                                    "csse('z') failed\r\n", "csse('t') failed\r\n",
                                    "csse('u') failed\r\n", "csse('v') failed\r\n"};

void CheckDir(int dir) {
    if (dir < 0 || dir > 5) Raise("direction invalid");
}

}  // namespace

CZrkData* Conv(CDataSpace& temp, const CZrkData* a, const CZrkData* k) {
    return Whole(temp, a, k, "conv", true, false);
}
CZrkData* Corr(CDataSpace& temp, const CZrkData* a, const CZrkData* k) {
    return Whole(temp, a, k, "corr", false, false);
}
CZrkData* CConv(CDataSpace& temp, const CZrkData* a, const CZrkData* k) {
    return Whole(temp, a, k, "cconv", true, true);
}
CZrkData* CCorr(CDataSpace& temp, const CZrkData* a, const CZrkData* k) {
    return Whole(temp, a, k, "ccorr", false, true);
}

CZrkData* Corr1d(CDataSpace& temp, int dir, const CZrkData* a, const CZrkData* k) {
    SetOpFunc("corr1d", dir);
    return LogFailure({CaughtLine("Corr1d", dir)}, [&] {
        CheckDir(dir);
        return Dispatch(temp, a, k, Job{dir, false, false, false});
    });
}

CZrkData* CCorr1d(CDataSpace& temp, int dir, const CZrkData* a, const CZrkData* k) {
    SetOpFunc("ccorr1d", dir);
    return LogFailure({CaughtLine("CCorr1d", dir)}, [&] {
        CheckDir(dir);
        return Dispatch(temp, a, k, Job{dir, false, true, false});
    });
}

CZrkData* Ssd(CDataSpace& temp, int dir, const CZrkData* a, const CZrkData* k) {
    if (dir < 0 || dir > 5) Raise("direction invalid");
    if (kSsdLabel[dir]) SetErrFunc(kSsdLabel[dir]);
    return LogFailure({kSsdFailed[dir]}, [&] {
        return Dispatch(temp, a, k, Job{dir, false, false, true});
    });
}

CZrkData* CSsd(CDataSpace& temp, int dir, const CZrkData* a, const CZrkData* k) {
    if (dir < 0 || dir > 5) Raise("direction invalid");
    SetErrFunc(kCssdLabel[dir]);
    return LogFailure({kCssdFailed[dir]}, [&] {
        return Dispatch(temp, a, k, Job{dir, false, true, true});
    });
}
