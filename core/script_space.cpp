#include "core/script_space.h"

#include <cstring>
#include <filesystem>
#include <fstream>

#include "core/host.h"
#include "core/name_list.h"
#include "core/report.h"

CScriptSpace& GlobalScriptSpace() {
    static CScriptSpace space;
    return space;
}

CScriptEntry* CScriptSpace::UpdateList(CScriptEntry entry) {
    list.reserve(list.size() + 1);
    const std::string name = entry.name;
    list.push_back(std::move(entry));
    SortList();
    // Sorting moved the entry: find it again.
    for (auto& e : list)
        if (e.name == name) return &e;
    return &list.back();
}

CScriptEntry* CScriptSpace::NewData(const char* name) {
    return Guarded("CScriptSpace::NewData", static_cast<CScriptEntry*>(nullptr), [&] {
        CScriptEntry entry;
        UniqueName(entry.name, name);
        return UpdateList(std::move(entry));
    });
}

void CScriptSpace::DelData(int position) {
    Guarded("CScriptSpace::DelData", 0, [&] {
        if (position < 0 || position >= Count()) return 0;
        list.erase(list.begin() + position);
        return 1;
    });
}

void CScriptSpace::DelAllImages() {
    Guarded("CScriptSpace::DelAllImages", 0, [&] {
        list.clear();
        return 0;
    });
}

uint64_t CScriptSpace::GetBytes() const {
    return Guarded("CScriptSpace::GetBytes", uint64_t{0}, [&] {
        uint64_t sum = 0;
        for (const auto& e : list) sum += e.bytes;
        return sum;
    });
}

int CScriptSpace::IsDataValid(const CScriptEntry* entry) const {
    return Guarded("CScriptSpace::IsDataValid", 0, [&] {
        for (const auto& e : list)
            if (&e == entry) return 1;
        return 0;
    });
}

void CScriptSpace::ClearSel(uint32_t mask) {
    Guarded("CScriptSpace::ClearSel", 0, [&] {
        for (auto& e : list) e.select &= ~mask;
        return 0;
    });
}

int CScriptSpace::GetSelCount(uint32_t mask) const {
    return Guarded("CScriptSpace::GetSelCount", 0, [&] {
        int n = 0;
        for (const auto& e : list) n += (e.select & mask) != 0;
        return n;
    });
}

CScriptEntry* CScriptSpace::GetSel(uint32_t mask, int n) {
    return Guarded("CScriptSpace::GetSel", static_cast<CScriptEntry*>(nullptr),
                   [&]() -> CScriptEntry* {
                       for (auto& e : list)
                           if ((e.select & mask) && n-- == 0) return &e;
                       return nullptr;
                   });
}

int CScriptSpace::GetLongestData(const char* text, CScriptEntry** out) {
    return Guarded("CScriptSpace::GetLongestData", 0, [&] {
        if (out) *out = nullptr;
        if (!text) return 0;
        size_t best = 0;
        for (auto& e : list) {
            if (e.name.size() > best && std::strncmp(text, e.name.c_str(), e.name.size()) == 0) {
                best = e.name.size();
                if (out) *out = &e;
            }
        }
        return static_cast<int>(best);
    });
}

CScriptEntry* CScriptSpace::FindByName(const char* name) {
    return Guarded("CScriptSpace::FindByName", static_cast<CScriptEntry*>(nullptr),
                   [&]() -> CScriptEntry* {
                       if (!name) return nullptr;
                       for (auto& e : list)
                           if (!e.name.empty() && e.name == name) return &e;
                       return nullptr;
                   });
}

CScriptEntry* CScriptSpace::Get(int position) {
    return Guarded("CScriptSpace::Get", static_cast<CScriptEntry*>(nullptr),
                   [&]() -> CScriptEntry* {
                       if (position < 0 || position >= Count()) return nullptr;
                       return &list[position];
                   });
}

void CScriptSpace::UniqueName(std::string& out, const char* name) const {
    out = name ? name : "";
    if (!unique) return;
    const std::string base = out;
    auto taken = [this](const std::string& n) {
        if (n.empty()) return false;
        for (const auto& e : list)
            if (e.name == n) return true;
        return false;
    };
    // After the 20th ".new" the name stands, duplicate or not.
    for (int i = 0; i < 20 && taken(out); ++i) out += ".new";
}

void CScriptSpace::SortList() {
    if (sorted) ExchangeSort(list, [](const CScriptEntry& e) { return e.name.c_str(); });
}

void CScriptSpace::Refresh() {
    Guarded("CScriptSpace::Refresh", 0, [&] {
        namespace fs = std::filesystem;
        list.clear();
        std::error_code ec;
        for (fs::directory_iterator it(directory, ec), end; !ec && it != end; it.increment(ec)) {
            const std::string name = it->path().filename().string();
            if (name == "." || name == "..") continue;
            CScriptEntry entry;
            entry.name = name;
            std::error_code size_ec;
            const auto size = it->is_regular_file(size_ec) ? it->file_size(size_ec) : 0;
            entry.bytes = static_cast<uint32_t>(size_ec ? 0 : size);
            std::ifstream in(it->path());
            char line[200] = {};
            if (in) in.getline(line, sizeof line);
            entry.first_line = line;
            if (!entry.first_line.empty() && entry.first_line.back() == '\r')
                entry.first_line.pop_back();
            list.push_back(std::move(entry));
        }
        SortList();
        return 0;
    });
}
