#include "ops/unwrap/unwrap_1d.h"

#include <cmath>
#include <string>
#include <vector>

#include "core/data_cursor.h"
#include "core/directions.h"
#include "core/report.h"
#include "core/zrk_error.h"

namespace {

// The phase of every element in the working type W.
template <class W>
std::vector<W> Phases(const CZrkData* a) {
    const uint64_t n = a->Count();
    std::vector<W> v(n);
    CDataCursor<W> in(a);
    if (!a->IsComplex()) {
        in.GetIBlock(v.data(), 0, n);
        return v;
    }
    std::vector<W> iq(2 * n);
    in.GetIQBlock(iq.data(), 0, n);
    for (uint64_t k = 0; k < n; ++k) v[k] = std::atan2(iq[2 * k + 1], iq[2 * k]);
    return v;
}

template <class W>
void UnwrapLines(const CZrkData* a, int dir, float* out) {
    const W pi = 4 * std::atan(W(1)), minus_pi = -4 * std::atan(W(1)), two_pi = 8 * std::atan(W(1));
    const std::vector<W> in = Phases<W>(a);
    uint64_t step = 1;
    for (int d = 0; d < dir; ++d) step *= a->Res(d);
    const uint64_t len = a->Res(dir), block = step * len, n = a->Count();
    for (uint64_t first = 0; first < n; first += block)
        for (uint64_t s = 0; s < step; ++s) {
            const uint64_t base = first + s;
            W sum = in[base];
            out[base] = static_cast<float>(sum);
            for (uint64_t k = 1; k < len; ++k) {
                const uint64_t at = base + k * step;
                W d = in[at] - in[at - step];
                // A difference of more than a few cycles (or none at all) is brought into
                // range at once, so that no input keeps the loop turning.
                if (!(std::fabs(d) <= 4 * two_pi)) {
                    d = std::remainder(d, two_pi);
                } else {
                    while (d > pi) d -= two_pi;
                    while (d < minus_pi) d += two_pi;
                }
                sum += d;
                out[at] = static_cast<float>(sum);
            }
        }
}

template <int D>
CZrkData* Member(CDataSpace& temp, const CZrkData* a) {
    static const std::string kName = std::string("Unwrap1d") + kDirCapitals[D];
    return Reported({.lines = {CaughtLine(kName.c_str())}, .to = REPORT_RETHROW},
                    static_cast<CZrkData*>(nullptr), [&] {
                        if (!a || !a->Data()) Raise("invalid data");
                        CZrkData* r =
                            temp.NewData(TYPE_R4, a->nx, a->ny, a->nz, a->nt, a->nu, a->nv, "");
                        if (!r) Raise("out of memory");
                        r->CopyMm(*a);
                        float* out = static_cast<float*>(r->Data());
                        const int type = a->Type() % 10;
                        if (type == TYPE_R8)
                            UnwrapLines<double>(a, D, out);
                        else
                            UnwrapLines<float>(a, D, out);
                        return r;
                    });
}

}  // namespace

CZrkData* Unwrap1dX(CDataSpace& temp, const CZrkData* a) { return Member<0>(temp, a); }
CZrkData* Unwrap1dY(CDataSpace& temp, const CZrkData* a) { return Member<1>(temp, a); }
CZrkData* Unwrap1dZ(CDataSpace& temp, const CZrkData* a) { return Member<2>(temp, a); }
CZrkData* Unwrap1dT(CDataSpace& temp, const CZrkData* a) { return Member<3>(temp, a); }
CZrkData* Unwrap1dU(CDataSpace& temp, const CZrkData* a) { return Member<4>(temp, a); }
CZrkData* Unwrap1dV(CDataSpace& temp, const CZrkData* a) { return Member<5>(temp, a); }

CZrkData* Unwrap1d(CDataSpace& temp, int direction, const CZrkData* a) {
    static CZrkData* (*const kMembers[6])(CDataSpace&, const CZrkData*) = {
        Unwrap1dX, Unwrap1dY, Unwrap1dZ, Unwrap1dT, Unwrap1dU, Unwrap1dV};
    if (direction < 0 || direction > 5) Raise("invalid direction");
    return kMembers[direction](temp, a);
}
