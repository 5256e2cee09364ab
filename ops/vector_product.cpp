#include "ops/vector_product.h"

#include "core/element_type.h"
#include "core/zrk_error.h"
#include "ops/structural_base.h"
#include "ops/structural_join.h"

namespace {

const char* const kNotThree[6] = {"x dimension must be 3", "y dimension must be 3",
                                  "z dimension must be 3", "t dimension must be 3",
                                  "u dimension must be 3", "v dimension must be 3"};
const char* const kNoMatch[6] = {"x resolution must match", "y resolution must match",
                                 "z resolution must match", "t resolution must match",
                                 "u resolution must match", "v resolution must match"};

int ProductType(const CZrkData* a, const CZrkData* b) {
    RequireData(a);
    RequireData(b);
    const int type = Promote(a->type, b->type);
    if (type < 0) Raise("invalid data type");
    return type;
}

}  // namespace

CZrkData* Cross(CDataSpace& temp, int dir, const CZrkData* a, const CZrkData* b) {
    SetOpFunc("cross", dir);
    return LogFailure({CaughtLine("Cross", dir)}, [&] {
        const int type = ProductType(a, b);
        if (a->Res(dir) != 3 || b->Res(dir) != 3) Raise(kNotThree[dir]);
        CheckCompatible(a, b, dir);
        res_t res[6];
        a->GetRes(res);
        CZrkData* r = NewResult(temp, type, res, a);
        const CZrkData* x = AsType(temp, a, type);
        const CZrkData* y = AsType(temp, b, type);
        const CWalk w(res, dir);
        WithFloatValue(type, [&](auto v) {
            using V = decltype(v);
            const V* p = static_cast<const V*>(x->data);
            const V* q = static_cast<const V*>(y->data);
            V* out = static_cast<V*>(r->data);
            const uint64_t s = w.inner;
            for (uint64_t o = 0; o < w.outer; ++o)
                for (uint64_t k = 0; k < w.inner; ++k) {
                    const uint64_t at = o * 3 * s + k;
                    const V *u = p + at, *t = q + at;
                    out[at] = u[s] * t[2 * s] - u[2 * s] * t[s];
                    out[at + s] = u[2 * s] * t[0] - u[0] * t[2 * s];
                    out[at + 2 * s] = u[0] * t[s] - u[s] * t[0];
                }
        });
        return r;
    });
}

CZrkData* Dot(CDataSpace& temp, int dir, const CZrkData* a, const CZrkData* b) {
    SetOpFunc("dot", dir);
    return LogFailure({CaughtLine("Dot", dir)}, [&] {
        const int type = ProductType(a, b);
        if (a->Res(dir) != b->Res(dir)) Raise(kNoMatch[dir]);
        CheckCompatible(a, b, dir);
        res_t res[6];
        a->GetRes(res);
        const CWalk w(res, dir);
        res[dir] = 1;
        CZrkData* r = NewResult(temp, type, res, a);
        const CZrkData* x = AsType(temp, a, type);
        const CZrkData* y = AsType(temp, b, type);
        WithFloatValue(type, [&](auto v) {
            using V = decltype(v);
            const V* p = static_cast<const V*>(x->data);
            const V* q = static_cast<const V*>(y->data);
            V* out = static_cast<V*>(r->data);
            for (uint64_t o = 0; o < w.outer; ++o)
                for (uint64_t k = 0; k < w.inner; ++k) {
                    V sum{};
                    for (uint64_t i = 0; i < w.n; ++i) {
                        const uint64_t at = (o * w.n + i) * w.inner + k;
                        sum += p[at] * q[at];
                    }
                    out[o * w.inner + k] = sum;
                }
        });
        return r;
    });
}
