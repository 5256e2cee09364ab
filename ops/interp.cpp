#include "ops/interp.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/data_cursor.h"
#include "core/directions.h"
#include "core/zrk_error.h"
#include "ops/structural_base.h"

namespace {

// Columns read at once along a strided direction.
constexpr uint64_t kColumns = 1024;

struct Sample {
    uint64_t f, g;  // the two input indices (g is f at the end of the line)
    float w;        // weight of g
};

std::vector<Sample> Samples(uint64_t n, uint64_t m) {
    std::vector<Sample> s(m);
    const float ratio = m > 1 ? static_cast<float>(n - 1) / static_cast<float>(m - 1) : 0.0f;
    for (uint64_t k = 0; k < m; ++k) {
        const float p = m == 1 ? 0.0f : static_cast<float>(k) * ratio;
        float f = std::floor(p);
        if (!(f >= 0.0f)) f = 0.0f;
        uint64_t fi = std::min<uint64_t>(static_cast<uint64_t>(f), n - 1);
        s[k].f = fi;
        s[k].g = std::min(fi + 1, n - 1);
        s[k].w = p - f;
    }
    return s;
}

}  // namespace

CZrkData* InterpDir(CDataSpace& temp, int dir, const CZrkData* a, int64_t m) {
    SetOpFunc("interp", dir);
    return LogFailure({CaughtLine("Interp", dir)}, [&] {
        RequireData(a);
        if (m < 1) Raise("resolution must be positive");
        res_t res[6];
        a->GetRes(res);
        const CWalk walk(res, dir);
        res[dir] = static_cast<res_t>(m);
        CZrkData* r = NewResult(temp, Promote(a->type, TYPE_R4), res, a);
        const std::vector<Sample> samples = Samples(walk.n, res[dir]);
        const CDataCursor<float> in(a);
        CDataCursor<float> out(r);
        const uint64_t cols = std::min(walk.inner, kColumns);
        std::vector<float> lo(2 * std::max(cols, walk.n)), hi(2 * cols),
            dst(2 * cols * (walk.inner == 1 ? res[dir] : 1));
        for (uint64_t o = 0; o < walk.outer; ++o) {
            if (walk.inner == 1) {
                // Whole lines: read once, every output from the copy.
                in.GetIQBlock(lo.data(), o * walk.n, walk.n);
                for (uint64_t k = 0; k < res[dir]; ++k) {
                    const Sample& s = samples[k];
                    for (int c = 0; c < 2; ++c)
                        dst[2 * k + c] = lo[2 * s.f + c] * (1 - s.w) + lo[2 * s.g + c] * s.w;
                }
                out.SetIQBlock(dst.data(), o * res[dir], res[dir]);
                continue;
            }
            for (uint64_t i0 = 0; i0 < walk.inner; i0 += cols) {
                const uint64_t len = std::min(cols, walk.inner - i0);
                for (uint64_t k = 0; k < res[dir]; ++k) {
                    const Sample& s = samples[k];
                    in.GetIQBlock(lo.data(), (o * walk.n + s.f) * walk.inner + i0, len);
                    in.GetIQBlock(hi.data(), (o * walk.n + s.g) * walk.inner + i0, len);
                    for (uint64_t j = 0; j < 2 * len; ++j) dst[j] = lo[j] * (1 - s.w) + hi[j] * s.w;
                    out.SetIQBlock(dst.data(), (o * res[dir] + k) * walk.inner + i0, len);
                }
            }
        }
        return r;
    });
}

CZrkData* Interp(CDataSpace& temp, const CZrkData* directions, const CZrkData* a, int64_t m) {
    SetOpFunc("interp", -1);
    const unsigned found = DirectionsOf(directions);
    if (!found) Raise("direction invalid");
    const CZrkData* cur = a;
    CZrkData* r = nullptr;
    for (int d = 0; d < 6; ++d) {
        if (!(found & (1u << d))) continue;
        r = InterpDir(temp, d, cur, m);
        cur = r;
    }
    return r;
}
