#include "ops/structural_shape.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "core/data_cursor.h"
#include "core/zrk_error.h"
#include "ops/permute.h"
#include "ops/structural_base.h"

namespace {

const char* const kIndexPast[6] = {"x index > resolution", "y index > resolution",
                                   "z index > resolution", "t index > resolution",
                                   "u index > resolution", "v index > resolution"};

constexpr uint64_t kGatherBytes = 16 << 10;

// Output slices [out, out + len) along the direction read input slices from `in` on, or
// are zero when `in` is negative.
struct Run {
    uint64_t out;
    int64_t in;
    uint64_t len;
};

// A record of a's type and steps, a's resolutions but n along dir, filled by runs of slices.
CZrkData* MapSlices(CDataSpace& temp, int dir, const CZrkData* a, uint64_t n,
                    const std::vector<Run>& runs) {
    res_t res[6];
    a->GetRes(res);
    const uint64_t old = res[dir];
    res[dir] = n;
    CZrkData* r = NewResult(temp, a->type, res, a);
    const CWalk w(res, dir);
    const uint64_t slice = w.inner * a->elem_bytes;
    const char* src = static_cast<const char*>(a->data);
    char* dst = static_cast<char*>(r->data);
    const bool stream = StreamsResult(r);
    // Short blocks of many runs are put together first and streamed out whole: a cache line
    // written partly by ordinary and partly by streaming stores costs more than both.
    const uint64_t block = n * slice;
    const bool gather = stream && runs.size() > 1 && block <= kGatherBytes;
    std::vector<char> buf(gather ? block : 0);
    for (uint64_t o = 0; o < w.outer; ++o) {
        const char* s = src + o * old * slice;
        char* d = gather ? buf.data() : dst + o * block;
        for (const Run& run : runs) {
            if (run.in < 0) {
                std::memset(d + run.out * slice, 0, run.len * slice);
            } else {
                CopyBytes(d + run.out * slice, s + run.in * slice, run.len * slice,
                          stream && !gather);
            }
        }
        if (gather) CopyBytes(dst + o * block, d, block, true);
    }
    EndStream(stream);
    return r;
}

// Runs from a map of output index to input index (-1 for zero), consecutive ones joined.
std::vector<Run> RunsOf(const std::vector<int64_t>& map) {
    std::vector<Run> runs;
    for (uint64_t k = 0; k < map.size(); ++k) {
        if (!runs.empty()) {
            Run& last = runs.back();
            const bool zeros = last.in < 0 && map[k] < 0;
            if (zeros || (last.in >= 0 && map[k] == last.in + static_cast<int64_t>(last.len))) {
                ++last.len;
                continue;
            }
        }
        runs.push_back({k, map[k] < 0 ? -1 : map[k], 1});
    }
    return runs;
}

// A new size along dir: positive, and small enough for a result of a's kind.
void CheckSize(const CZrkData* a, int dir, int64_t n) {
    if (n <= 0) Raise("resolution must be positive");
    res_t res[6];
    a->GetRes(res);
    res[dir] = static_cast<res_t>(n);
    CheckResultSize(a->type, res);
}

CZrkData* PadOp(CDataSpace& temp, int dir, const CZrkData* a, int64_t n, bool sym) {
    RequireData(a);
    CheckSize(a, dir, n);
    const int64_t old = static_cast<int64_t>(a->Res(dir));
    const int64_t lo = sym ? (n - old) / 2 : 0;
    // Output k reads input k - lo; a smaller size keeps the part that fits.
    const int64_t first = std::max<int64_t>(0, lo), last = std::min<int64_t>(n, lo + old);
    std::vector<Run> runs;
    if (first > 0) runs.push_back({0, -1, static_cast<uint64_t>(first)});
    if (last > first)
        runs.push_back(
            {static_cast<uint64_t>(first), first - lo, static_cast<uint64_t>(last - first)});
    if (last < n)
        runs.push_back({static_cast<uint64_t>(last), -1, static_cast<uint64_t>(n - last)});
    return MapSlices(temp, dir, a, static_cast<uint64_t>(n), runs);
}

template <class T>
void NegateComponents(char* p, uint64_t count) {
    T* v = reinterpret_cast<T*>(p);
    for (uint64_t k = 0; k < count; ++k) v[k] = static_cast<T>(T(0) - v[k]);
}

CZrkData* ReshapeOp(CDataSpace& temp, const CZrkData* a, const res_t res[6]) {
    RequireData(a);
    uint64_t count = 1;
    for (int d = 0; d < 6; ++d)
        if (__builtin_mul_overflow(count, res[d], &count)) count = UINT64_MAX;
    if (count > a->Count()) Raise("requested size is greater than points in data");
    CZrkData* r = NewResult(temp, a->type, res, a);
    std::memcpy(r->data, a->data, r->Bytes());
    return r;
}

void CheckEtl(int64_t etl) {
    if (etl <= 0) Raise("etl must be positive");
}

}  // namespace

CZrkData* Chop(CDataSpace& temp, int dir, const CZrkData* a) {
    SetOpFunc("chop", dir);
    return LogFailure({CaughtLine("Chop", dir)}, [&] {
        RequireData(a);
        res_t res[6];
        a->GetRes(res);
        CZrkData* r = NewResult(temp, a->type, res, a);
        std::memcpy(r->data, a->data, a->Bytes());
        const CWalk w(res, dir);
        const uint64_t comps = w.inner * a->Components();
        char* p = static_cast<char*>(r->data);
        WithComponent(a->type, [&](auto t) {
            for (uint64_t o = 0; o < w.outer; ++o)
                for (uint64_t i = 1; i < w.n; i += 2)
                    NegateComponents<decltype(t)>(p + (o * w.n + i) * w.inner * a->elem_bytes,
                                                  comps);
        });
        return r;
    });
}

CZrkData* Cut(CDataSpace& temp, int dir, const CZrkData* a, int64_t i, int64_t j) {
    SetOpFunc("cut", dir);
    return LogFailure({CaughtLine("Cut", dir)}, [&] {
        RequireData(a);
        const int64_t n = static_cast<int64_t>(a->Res(dir));
        if (i < 0 || j < 0 || i >= n || j >= n || i > j) Raise(kIndexPast[dir]);
        const uint64_t len = static_cast<uint64_t>(j - i + 1);
        return MapSlices(temp, dir, a, len, {{0, i, len}});
    });
}

CZrkData* Pad(CDataSpace& temp, int dir, const CZrkData* a, int64_t n) {
    SetOpFunc("pad", dir);
    return LogFailure({CaughtLine("Pad", dir)}, [&] { return PadOp(temp, dir, a, n, false); });
}

CZrkData* PadSim(CDataSpace& temp, int dir, const CZrkData* a, int64_t n) {
    SetOpFunc("padsim", dir);
    return LogFailure({CaughtLine("PadSim", dir)}, [&] { return PadOp(temp, dir, a, n, true); });
}

CZrkData* Replicate(CDataSpace& temp, int dir, const CZrkData* a, int64_t n) {
    SetOpFunc("replicate", dir);
    return LogFailure({CaughtLine("Replicate", dir)}, [&] {
        RequireData(a);
        CheckSize(a, dir, n);
        const uint64_t old = a->Res(dir), b = static_cast<uint64_t>(n);
        // Two accumulators walk the larger size: the input advances on the first's wrap,
        // the output on the second's; an output takes the input current at its wrap.
        const uint64_t m = std::max(old, b);
        std::vector<int64_t> map(b);
        uint64_t acc_in = 0, acc_out = 0, in = 0, out = 0;
        for (uint64_t s = 0; s < m; ++s) {
            acc_out += b;
            if (acc_out >= m) {
                acc_out -= m;
                map[out++] = static_cast<int64_t>(in);
            }
            acc_in += old;
            if (acc_in >= m) {
                acc_in -= m;
                ++in;
            }
        }
        return MapSlices(temp, dir, a, b, RunsOf(map));
    });
}

CZrkData* Shift(CDataSpace& temp, int dir, const CZrkData* a, const CZrkData* n) {
    SetOpFunc("shift", dir);
    return LogFailure({CaughtLine("Shift", dir)}, [&] {
        RequireData(a);
        RequireData(n);
        const int64_t size = static_cast<int64_t>(a->Res(dir));
        auto wrap = [&](int64_t s) { return ((s % size) + size) % size; };
        if (n->Count() == 1) {
            const int64_t s = wrap(IntArg(n));
            std::vector<Run> runs;
            if (s > 0) runs.push_back({0, size - s, static_cast<uint64_t>(s)});
            runs.push_back({static_cast<uint64_t>(s), 0, static_cast<uint64_t>(size - s)});
            return MapSlices(temp, dir, a, size, runs);
        }
        res_t res[6];
        a->GetRes(res);
        CZrkData* r = NewResult(temp, a->type, res, a);
        const CWalk w(res, dir);
        const int e = a->elem_bytes;
        CDataCursor<int64_t> amounts(n);
        const char* src = static_cast<const char*>(a->data);
        char* dst = static_cast<char*>(r->data);
        for (uint64_t o = 0; o < w.outer; ++o) {
            for (uint64_t k = 0; k < w.inner; ++k) {
                // The line's own position, its coordinate along dir taken as 0.
                res_t pos[6];
                uint64_t rest = k;
                for (int d = 0; d < dir; ++d) pos[d] = rest % res[d], rest /= res[d];
                pos[dir] = 0;
                rest = o;
                for (int d = dir + 1; d < 6; ++d) pos[d] = rest % res[d], rest /= res[d];
                amounts.SeekWrapped(pos[0], pos[1], pos[2], pos[3], pos[4], pos[5]);
                int64_t s = 0;
                amounts.GetI(s);
                s = wrap(s);
                const uint64_t line = o * w.n * w.inner + k;
                for (int64_t i = 0; i < size; ++i) {
                    const uint64_t from = line + wrap(i - s) * w.inner;
                    std::memcpy(dst + (line + i * w.inner) * e, src + from * e, e);
                }
            }
        }
        return r;
    });
}

CZrkData* Reshape(CDataSpace& temp, const CZrkData* a, const int64_t res[6]) {
    SetOpFunc("reshape", -1);
    return LogFailure({"reshape() failed\r\n"}, [&] {
        res_t r[6];
        for (int d = 0; d < 6; ++d) {
            if (res[d] <= 0) Raise("resolution must be positive");
            r[d] = static_cast<res_t>(res[d]);
        }
        return ReshapeOp(temp, a, r);
    });
}

CZrkData* Shape(CDataSpace& temp, const CZrkData* a, const CZrkData* list) {
    SetOpFunc("shape", -1);
    return LogFailure({"shape() failed\r\n"}, [&] {
        res_t r[6];
        ResList(list, r);
        return ReshapeOp(temp, a, r);
    });
}

CZrkData* Squeeze(CDataSpace& temp, const CZrkData* a) {
    SetOpFunc("squeeze", -1);
    return LogFailure({CaughtLine("Squeeze", -1)}, [&] {
        RequireData(a);
        res_t r[6] = {1, 1, 1, 1, 1, 1};
        int k = 0;
        for (int d = 0; d < 6; ++d)
            if (a->Res(d) != 1) r[k++] = a->Res(d);
        return ReshapeOp(temp, a, r);
    });
}

CZrkData* EFlip(CDataSpace& temp, const CZrkData* a, int64_t etl) {
    SetOpFunc("eflip", -1);
    return LogFailure({CaughtLine("EFlip", -1)}, [&] {
        RequireData(a);
        CheckEtl(etl);
        res_t res[6];
        a->GetRes(res);
        CZrkData* r = NewResult(temp, a->type, res, a);
        const uint64_t planes = a->Count() / a->CountXY(), line = a->BytesPerLine();
        for (uint64_t p = 0; p < planes; ++p) {
            for (uint64_t y = 0; y < a->ny; ++y) {
                const uint64_t at = (p * a->ny + y) * line;
                const bool odd = (y * static_cast<uint64_t>(etl) / a->ny) % 2 == 1;
                CopyElements(static_cast<const char*>(a->data) + at,
                             static_cast<char*>(r->data) + at, a->nx, a->elem_bytes, odd);
            }
        }
        return r;
    });
}

CZrkData* ESort(CDataSpace& temp, const CZrkData* a, int64_t etl) {
    SetErrFunc("esor('t')");
    return LogFailure({CaughtLine("ESort", -1)}, [&] {
        RequireData(a);
        CheckEtl(etl);
        res_t res[6];
        a->GetRes(res);
        CZrkData* r = NewResult(temp, a->type, res, a);
        std::memset(r->data, 0, r->Bytes());
        const uint64_t e = static_cast<uint64_t>(etl), n = a->ny / e;
        const uint64_t planes = a->Count() / a->CountXY(), line = a->BytesPerLine();
        for (uint64_t p = 0; p < planes; ++p) {
            const char* src = static_cast<const char*>(a->data) + p * a->BytesPerPlane();
            char* dst = static_cast<char*>(r->data) + p * a->BytesPerPlane();
            uint64_t next = 0;
            for (uint64_t i = 0; i < n; ++i)
                for (uint64_t b = 0; b < e; ++b)
                    std::memcpy(dst + (b * n + i) * line, src + (next++) * line, line);
        }
        return r;
    });
}
