#include "display/display_update.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "core/data_cursor.h"
#include "core/data_space.h"
#include "core/host.h"
#include "core/window_space.h"
#include "display/display_entry.h"

// Low and high of the finite samples of v[0 .. n); lo > hi when none is. Eight lanes kept
// apart so that the loop vectorises without reordering a reduction; the comparisons pass NaN
// by, and an infinity met sends the column through the exact loop.
void FiniteSpanRange(const float* v, size_t n, float* lo_out, float* hi_out) {
    float lo[8], hi[8];
    std::fill(lo, lo + 8, HUGE_VALF);
    std::fill(hi, hi + 8, -HUGE_VALF);
    size_t i = 0;
    for (; i + 8 <= n; i += 8)
        for (int k = 0; k < 8; ++k) {
            lo[k] = v[i + k] < lo[k] ? v[i + k] : lo[k];
            hi[k] = v[i + k] > hi[k] ? v[i + k] : hi[k];
        }
    for (; i < n; ++i) {
        lo[0] = v[i] < lo[0] ? v[i] : lo[0];
        hi[0] = v[i] > hi[0] ? v[i] : hi[0];
    }
    float a = *std::min_element(lo, lo + 8), b = *std::max_element(hi, hi + 8);
    if (a == -HUGE_VALF || b == HUGE_VALF) {
        a = HUGE_VALF, b = -HUGE_VALF;
        for (size_t k = 0; k < n; ++k)
            if (std::isfinite(v[k])) a = std::min(a, v[k]), b = std::max(b, v[k]);
    }
    *lo_out = a, *hi_out = b;
}

bool FiniteRange(const CZrkData* a, int iqmp, float& lo, float& hi) {
    lo = std::numeric_limits<float>::max();
    hi = -lo;
    if (!a || !a->Data()) return false;
    CDataCursor<float> in(a, a->IsComplex() ? iqmp : 0);
    const uint64_t n = a->Count();
    std::vector<float> block(std::min<uint64_t>(n, 65536));
    for (uint64_t k = 0; k < n; k += block.size()) {
        const size_t m = static_cast<size_t>(std::min<uint64_t>(block.size(), n - k));
        in.GetBlock(block.data(), k, m);
        float l, h;
        FiniteSpanRange(block.data(), m, &l, &h);
        lo = std::min(lo, l), hi = std::max(hi, h);
    }
    return lo <= hi;
}

void SetRangeWinLev(CPlane& plane, const CZrkData* a) {
    float lo, hi;
    if (!FiniteRange(a, plane.iqmp, lo, hi)) lo = hi = 0.0f;
    plane.datamin = lo;
    plane.datamax = hi;
    plane.window = hi > lo ? hi - lo : 1.0f;
    plane.level = (lo + hi) * 0.5f;
}

void UpdateDisplays(CDataSpace& space, CWindowSpace& windows) {
    Host().Trace("UpdateDisplays");
    for (int i = windows.Count() - 1; i >= 0; --i) {
        if (i >= windows.Count()) continue;  // a close may take more than one entry
        auto* entry = dynamic_cast<CDisplayEntry*>(windows.Get(i));
        if (!entry) continue;
        bool gone = false;
        for (CZrkData* d : entry->data)
            if (d && (!space.IsDataValid(d) || !d->Data())) gone = true;
        if (gone) {
            if (entry->data[0]) windows.DelAllImages(entry->data[0], ~0u);
            if (windows.IsDataValid(entry)) {
                entry->Close();
                windows.DelData(entry);
            }
            continue;
        }
        bool changed = false;
        for (int k = 0; k < 3; ++k) {
            CZrkData* d = entry->data[k];
            if (!d) continue;
            changed = changed || d->changed || d->shape_changed;
            if (!d->update_range) continue;
            CPlane* plane = entry->kind == KIND_RGB ? entry->look.Plane(k + 1)
                            : k == 0                ? &entry->look.palplane
                                                    : nullptr;
            if (plane) {
                float lo, hi;
                if (!FiniteRange(d, plane->iqmp, lo, hi)) lo = hi = 0.0f;
                plane->datamin = lo;
                plane->datamax = hi;
            }
        }
        if (changed) entry->Redraw();
    }
    for (int i = 0; i < space.Count(); ++i)
        if (CZrkData* d = space.GetData(i)) d->changed = d->shape_changed = d->update_range = 0;
}
