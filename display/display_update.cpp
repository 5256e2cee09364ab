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
        for (size_t i = 0; i < m; ++i)
            if (std::isfinite(block[i])) lo = std::min(lo, block[i]), hi = std::max(hi, block[i]);
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
