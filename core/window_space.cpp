#include "core/window_space.h"

#include <cstdio>
#include <cstring>

#include "core/host.h"
#include "core/name_list.h"
#include "core/report.h"

CWindowSpace& GlobalWindowSpace() {
    static CWindowSpace space;
    return space;
}

CWindowEntry* CWindowSpace::UpdateList(std::unique_ptr<CWindowEntry> entry) {
    list.reserve(list.size() + 1);
    CWindowEntry* raw = entry.get();
    list.push_back(std::move(entry));
    SortList();
    return raw;
}

CWindowEntry* CWindowSpace::NewData(const char* name) {
    return Guarded("CWindowSpace::NewData", static_cast<CWindowEntry*>(nullptr), [&] {
        auto entry = std::make_unique<CWindowEntry>();
        UniqueName(entry->name, name);
        return UpdateList(std::move(entry));
    });
}

CWindowEntry* CWindowSpace::NewData(std::unique_ptr<CWindowEntry> entry) {
    return Guarded("CWindowSpace::NewData", static_cast<CWindowEntry*>(nullptr),
                   [&]() -> CWindowEntry* {
                       if (!entry) return nullptr;
                       char name[128];
                       UniqueName(name, entry->name);
                       std::memcpy(entry->name, name, sizeof name);
                       return UpdateList(std::move(entry));
                   });
}

void CWindowSpace::DelData(int position) {
    Guarded("CWindowSpace::DelData", 0, [&] {
        if (position < 0 || position >= Count()) return 0;
        list.erase(list.begin() + position);
        return 1;
    });
}

int CWindowSpace::DelData(CWindowEntry* entry) {
    return Guarded("CWindowSpace::DelData", 0, [&] {
        for (size_t i = 0; i < list.size(); ++i) {
            if (list[i].get() == entry) {
                list.erase(list.begin() + i);
                return 1;
            }
        }
        return 0;
    });
}

void CWindowSpace::DelAllImages(const CZrkData* record, uint32_t mask) {
    Guarded("CWindowSpace::DelAllImages", 0, [&] {
        for (int i = Count() - 1; i >= 0; --i) {
            if (i >= Count()) continue;  // a Close() may have taken others with it
            CWindowEntry* entry = list[i].get();
            if ((entry->kind & mask) && entry->data[0] == record) {
                entry->Close();
                DelData(entry);
            }
        }
        return 0;
    });
}

int CWindowSpace::IsDataValid(const CWindowEntry* entry) const {
    return Guarded("CWindowSpace::IsDataValid", 0, [&] {
        for (const auto& e : list)
            if (e.get() == entry) return 1;
        return 0;
    });
}

CWindowEntry* CWindowSpace::FindByName(const char* name) const {
    return Guarded("CWindowSpace::FindByName", static_cast<CWindowEntry*>(nullptr),
                   [&]() -> CWindowEntry* {
                       if (!name || !*name) return nullptr;
                       for (const auto& e : list)
                           if (std::strcmp(e->name, name) == 0) return e.get();
                       return nullptr;
                   });
}

CWindowEntry* CWindowSpace::Get(int position) const {
    return Guarded("CWindowSpace::Get", static_cast<CWindowEntry*>(nullptr),
                   [&]() -> CWindowEntry* {
                       if (position < 0 || position >= Count()) return nullptr;
                       return list[position].get();
                   });
}

void CWindowSpace::ClearSel(uint32_t mask) {
    Guarded("CWindowSpace::ClearSel", 0, [&] {
        for (auto& e : list) e->select &= ~mask;
        return 0;
    });
}

int CWindowSpace::GetSelCount(uint32_t mask) const {
    return Guarded("CWindowSpace::GetSelCount", 0, [&] {
        int n = 0;
        for (const auto& e : list) n += (e->select & mask) != 0;
        return n;
    });
}

CWindowEntry* CWindowSpace::GetSel(uint32_t mask, int n) const {
    return Guarded("CWindowSpace::GetSel", static_cast<CWindowEntry*>(nullptr),
                   [&]() -> CWindowEntry* {
                       for (const auto& e : list)
                           if ((e->select & mask) && n-- == 0) return e.get();
                       return nullptr;
                   });
}

uint32_t CWindowSpace::DisplayMask(const CZrkData* record) const {
    return Guarded("CWindowSpace::DisplayMask", uint32_t{0}, [&]() -> uint32_t {
        if (!record) return 0;
        uint32_t mask = 0;
        for (const auto& e : list) {
            const CZrkData* const* d = e->data;
            switch (e->kind) {
                case KIND_1D:
                    mask |= d[0] == record ? 2 : 0;
                    break;
                case KIND_2D:
                    mask |= d[0] == record ? 4 : 0;
                    break;
                case KIND_XY:
                    mask |= (d[0] == record ? 8 : 0) | (d[1] == record ? 16 : 0);
                    break;
                case KIND_RGB:
                    mask |= (d[0] == record ? 32 : 0) | (d[1] == record ? 64 : 0) |
                            (d[2] == record ? 128 : 0);
                    break;
                case KIND_SCATTER:
                    mask |= d[0] == record ? 0x100 : 0;
                    break;
                default:
                    break;
            }
        }
        return mask ? mask : 1;
    });
}

void CWindowSpace::UniqueName(char out[128], const char* name) const {
    UniqueDots(out, name, unique, [this](const char* n) { return FindByName(n) != nullptr; });
}

void CWindowSpace::SortList() {
    if (sorted) ExchangeSort(list, [](const auto& e) { return e->name; });
}
