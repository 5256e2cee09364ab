#include "display/pal.h"

#include <cstdio>
#include <cstring>

#include "core/data_space.h"

namespace {

constexpr const char* kNames[CPal::kTables] = {"grey",
                                               "awave",
                                               "aaasmo",
                                               "black body yellow",
                                               "black body red",
                                               "black body green",
                                               "black body blue",
                                               "spectrum",
                                               "thallium",
                                               "jet"};

bool IsPaletteShape(const CZrkData* a) {
    const bool rest = a->nz == 1 && a->nt == 1 && a->nu == 1 && a->nv == 1;
    return a->Data() && rest && ((a->nx == 256 && a->ny == 3) || (a->nx == 3 && a->ny == 256));
}

}  // namespace

const char* CPal::TableName(int index) {
    return index >= 0 && index < kTables ? kNames[index] : kNames[0];
}

void CPal::SetByIndex(int table) {
    index = table >= 0 && table < kTables ? table : 0;
    source[0] = 0;
    // Grey is the ramp; the other tables arrive with the window/level code.
    for (int i = 0; i < kEntries; ++i) {
        const auto v = static_cast<uint8_t>(i);
        entries[i][0] = index == 0 ? v : 0;
        entries[i][1] = index == 0 ? v : 0;
        entries[i][2] = index == 0 ? v : 0;
        entries[i][3] = 4;
    }
}

void CPal::SetByName(const char* name, const CDataSpace* space) {
    if (!name) name = "";
    for (int i = 0; i < kTables; ++i)
        if (std::strcmp(name, kNames[i]) == 0) return SetByIndex(i);
    const CZrkData* a = space && name[0] ? space->FindData(name) : nullptr;
    if (!a || !IsPaletteShape(a)) return SetByIndex(0);
    SetByIndex(0);
    std::snprintf(source, sizeof source, "%s", name);
}

const char* CPal::FileName(const CDataSpace* space) const {
    if (IsArray() && space && space->FindData(source)) return source;
    return TableName(index);
}
