#include "display/palette_rgb.h"

#include <string>

#include "core/data_space.h"
#include "core/directions.h"
#include "core/window_space.h"
#include "core/zrk_error.h"
#include "display/display_entry.h"
#include "display/pal.h"

namespace {

// The palette of the first 2d display that shows `a`; null when none does.
const CPal* ShownPalette(const CZrkData* a, const CWindowSpace& windows, CPal* grey) {
    for (int k = 0; k < windows.Count(); ++k) {
        const CWindowEntry* w = windows.Get(k);
        if (!(w->kind & KIND_2D) || w->data[0] != a) continue;
        const auto* display = dynamic_cast<const CDisplayEntry*>(w);
        const CPlane* plane = display ? display->look.Plane(0) : nullptr;
        if (!plane) continue;
        if (plane->palette) return plane->palette.get();
        // a plane that never had one shows table 0 through its channel mask
        *grey = CPal(plane->palette_word ? plane->palette_word : 7);
        return grey;
    }
    return nullptr;
}

bool SetByKnownName(CPal& pal, const std::string& name, const CDataSpace& space) {
    for (int i = 0; i < CPal::kTables; ++i)
        if (name == CPal::TableName(i)) {
            pal.SetByIndex(i);
            return true;
        }
    const CZrkData* a = name.empty() ? nullptr : space.FindData(name.c_str());
    return a && pal.SetFromArray(a);
}

}  // namespace

CZrkData* PaletteRgb(CDataSpace& temp, const CZrkData* which, const CDataSpace& space,
                     const CWindowSpace& windows) {
    if (!which || which->Type() < 0) Raise("invalid data type");
    CPal own(7);
    const CPal* pal = ShownPalette(which, windows, &own);
    if (!pal) {
        const std::string name = TextOf(which);
        if (!SetByKnownName(own, name, space)) Raise("unknown palette");
        pal = &own;
    }
    CZrkData* out = temp.NewData(TYPE_N1, CPal::kEntries, 3, 1, 1, 1, 1, "");
    if (!out) Raise("out of memory");
    auto* rgb = static_cast<uint8_t*>(out->Data());
    for (int c = 0; c < 3; ++c)
        for (int i = 0; i < CPal::kEntries; ++i) rgb[c * CPal::kEntries + i] = pal->entries[i][c];
    return out;
}
