#include "core/data_space.h"

#include <cstring>
#include <new>

#include "core/host.h"
#include "core/key_reader.h"
#include "core/name_list.h"
#include "core/report.h"
#include "core/window_space.h"
#include "core/zrk_error.h"

namespace {

const char* const kReserved[] = {
    "binary_copy",
    "filt_coef",
    "zrk_angle",
    "zrk_line",
    "zrk_profile",
    "recycle_bin",
    "roi_mask",
    "roi_draw",
    "roi_ellip",
    "roi_fill",
    "roi_rect",
    "roi_binary",
    "roi_x",
    "roi_y",
    "hist_nbins",
    "hist_range",
    "pi",
    "e",
    "this",
    "quelmor.wave_dir",
    "quelmor.filter",
    "quelmor.mask",
    "quelmor.pre",
    "quelmor.unwrap",
    "quelmor.yunwrap",
    "quelmor.zunwrap",
    "quelmor.r1i1",
    "quelmor.curlx",
    "quelmor.curly",
    "quelmor.curlz",
};

// Releases the samples and the record.
void Dispose(CZrkData* record) {
    if (!record) return;
    record->FreeData();
    delete record;
}

}  // namespace

CDataSpace& GlobalDataSpace() {
    static CDataSpace space;
    return space;
}

CDataSpace::~CDataSpace() {
    for (CZrkData* record : list) Dispose(record);
}

CZrkData* CDataSpace::FollowLink(CZrkData* record) {
    while (record && record->link) record = record->link;
    return record;
}

CZrkData* CDataSpace::UpdateList(CZrkData* record) {
    list.reserve(list.size() + 1);  // may throw: the list stays as it was
    list.push_back(record);
    if (sorted) SortAppended(list, [](const CZrkData* r) { return r->name; });
    return record;
}

CZrkData* CDataSpace::NewRecord(const char* name) {
    CZrkData* record = new CZrkData;
    UniqueName(record->name, name);
    try {
        return UpdateList(record);
    } catch (...) {
        delete record;
        throw;
    }
}

CZrkData* CDataSpace::NewData(int type, res_t nx, res_t ny, res_t nz, res_t nt, res_t nu, res_t nv,
                              const char* name) {
    return Guarded("CDataSpace::NewData", static_cast<CZrkData*>(nullptr), [&]() -> CZrkData* {
        list.reserve(list.size() + 1);
        auto* record = new CZrkData;
        UniqueName(record->name, name);
        record->SetHeader(type, nx, ny, nz, nt, nu, nv);
        const bool empty = nx == 0 || ny == 0 || nz == 0 || nt == 0 || nu == 0 || nv == 0;
        if (!empty && !record->Allocate()) {
            delete record;
            return nullptr;
        }
        return UpdateList(record);
    });
}

CZrkData* CDataSpace::NewData(const char* name) {
    return Guarded("CDataSpace::NewData", static_cast<CZrkData*>(nullptr),
                   [&] { return NewRecord(name); });
}

CZrkData* CDataSpace::NewData() {
    return Guarded("CDataSpace::NewData", static_cast<CZrkData*>(nullptr),
                   [&] { return NewRecord(""); });
}

CZrkData* CDataSpace::NewData(const CZrkData* templ, const char* name) {
    Host().Trace("CDataSpace::NewData");
    if (!templ || templ->nx == 0 || templ->ny == 0 || templ->nz == 0 || templ->nt == 0 ||
        templ->nu == 0 || templ->nv == 0)
        return nullptr;
    return NewData(templ->type, templ->nx, templ->ny, templ->nz, templ->nt, templ->nu, templ->nv,
                   name);
}

CZrkData* CDataSpace::AddToList(CZrkData* record, const char* name) {
    return Guarded("CDataSpace::AddToList", static_cast<CZrkData*>(nullptr), [&]() -> CZrkData* {
        if (!record) return nullptr;
        char unique_name[128];
        UniqueName(unique_name, name);
        list.reserve(list.size() + 1);
        std::memcpy(record->name, unique_name, sizeof unique_name);
        return UpdateList(record);
    });
}

CZrkData* CDataSpace::FindData(const char* name) const {
    return Guarded("CDataSpace::FindData", static_cast<CZrkData*>(nullptr), [&]() -> CZrkData* {
        if (!name) return nullptr;
        for (CZrkData* record : list)
            if (std::strcmp(record->name, name) == 0) return FollowLink(record);
        return nullptr;
    });
}

int CDataSpace::FindIndex(const char* name) const {
    return Guarded("CDataSpace::FindIndex", 0, [&] {
        if (!name) return 0;
        for (size_t i = 0; i < list.size(); ++i)
            if (std::strcmp(list[i]->name, name) == 0) return static_cast<int>(i);
        return 0;
    });
}

CZrkData* CDataSpace::GetData(int position) const {
    return Guarded("CDataSpace::GetData", static_cast<CZrkData*>(nullptr), [&]() -> CZrkData* {
        if (position < 0 || position >= Count()) return nullptr;
        return FollowLink(list[position]);
    });
}

CZrkData* CDataSpace::FindOrNew(const char* name) {
    Host().Trace("CDataSpace::FindOrNew");
    CZrkData* record = FindData(name);
    return record ? record : GlobalDataSpace().NewData(name);
}

namespace {
CZrkData* FindSuffixed(const CDataSpace& space, const CWindowEntry* window, const char* suffix) {
    if (!window) return nullptr;
    char name[160];
    std::snprintf(name, sizeof name, "%s%s", window->name, suffix);
    return space.FindData(name);
}
}  // namespace

CZrkData* CDataSpace::FindLevel(const CWindowEntry* window) const {
    Host().Trace("CDataSpace::FindLevel");
    return FindSuffixed(*this, window, ".level");
}

CZrkData* CDataSpace::FindWindow(const CWindowEntry* window) const {
    Host().Trace("CDataSpace::FindWindow");
    return FindSuffixed(*this, window, ".window");
}

int CDataSpace::GetLongestData(const char* text, CZrkData** out) const {
    return Guarded("CDataSpace::GetLongestData", 0, [&] {
        if (out) *out = nullptr;
        if (!text) return 0;
        size_t best = 0;
        for (CZrkData* record : list) {
            const size_t len = std::strlen(record->name);
            if (len > best && std::strncmp(text, record->name, len) == 0) {
                best = len;
                if (out) *out = FollowLink(record);
            }
        }
        return static_cast<int>(best);
    });
}

void CDataSpace::DelData(int position) {
    Guarded("CDataSpace::DelData", 0, [&] {
        if (position < 0 || position >= Count()) return 0;
        Dispose(list[position]);
        list.erase(list.begin() + position);
        return 1;
    });
}

int CDataSpace::DelData(const char* name) {
    return Guarded("CDataSpace::DelData", 0, [&] {
        if (!name) return 0;
        for (size_t i = 0; i < list.size(); ++i) {
            if (std::strcmp(list[i]->name, name) == 0) {
                Dispose(list[i]);
                list.erase(list.begin() + i);
                return 1;
            }
        }
        return 0;
    });
}

int CDataSpace::DelData(CZrkData* record) {
    return Guarded("CDataSpace::DelData", 0, [&] {
        for (size_t i = 0; i < list.size(); ++i) {
            if (list[i] == record) {
                Dispose(record);
                list.erase(list.begin() + i);
                return 1;
            }
        }
        return 0;
    });
}

void CDataSpace::DelLinks() {
    Guarded("CDataSpace::DelLinks", 0, [&] {
        // Aliases share samples with the records they stand for: destroy the record only.
        std::erase_if(list, [](CZrkData* r) {
            if (!r->link) return false;
            delete r;
            return true;
        });
        return 0;
    });
}

void CDataSpace::DelUntyped() {
    Guarded("CDataSpace::DelUntyped", 0, [&] {
        std::erase_if(list, [](CZrkData* r) {
            if (r->type >= 0) return false;
            Dispose(r);
            return true;
        });
        return 0;
    });
}

int CDataSpace::IsDataValid(const CZrkData* record) const {
    return Guarded("CDataSpace::IsDataValid", 0, [&] {
        for (CZrkData* r : list)
            if (r == record) return 1;
        return 0;
    });
}

void CDataSpace::CheckValid(const CZrkData* record) const {
    Host().Trace("CDataSpace::CheckValid");
    for (CZrkData* r : list)
        if (r == record) return;
    Raise("internal error, invalid data");
}

int CDataSpace::AnyChanged() const {
    return Guarded("CDataSpace::AnyChanged", 0, [&] {
        for (CZrkData* r : list)
            if (r->changed) return 1;
        return 0;
    });
}

uint64_t CDataSpace::GetBytes() const {
    return Guarded("CDataSpace::GetBytes", uint64_t{0}, [&] {
        uint64_t sum = 0;
        for (CZrkData* r : list) sum += r->Bytes();
        return sum;
    });
}

int CDataSpace::GetNonNullCount() const {
    return Guarded("CDataSpace::GetNonNullCount", 0, [&] {
        int n = 0;
        for (CZrkData* r : list) n += r->Bytes() != 0;
        return n;
    });
}

void CDataSpace::ClearSel(uint32_t mask) {
    Guarded("CDataSpace::ClearSel", 0, [&] {
        for (CZrkData* r : list) r->select &= ~mask;
        return 0;
    });
}

int CDataSpace::GetSelCount(uint32_t mask) const {
    return Guarded("CDataSpace::GetSelCount", 0, [&] {
        int n = 0;
        for (CZrkData* r : list) n += (r->select & mask) != 0;
        return n;
    });
}

CZrkData* CDataSpace::GetSel(uint32_t mask, int n) const {
    return Guarded("CDataSpace::GetSel", static_cast<CZrkData*>(nullptr), [&]() -> CZrkData* {
        for (CZrkData* r : list)
            if ((r->select & mask) && n-- == 0) return r;
        return nullptr;
    });
}

int CDataSpace::GetSelCount(uint32_t mask, uint32_t display_mask) const {
    return Guarded("CDataSpace::GetSelCount", 0, [&] {
        int n = 0;
        for (CZrkData* r : list)
            n += (r->select & mask) && (GlobalWindowSpace().DisplayMask(r) & display_mask);
        return n;
    });
}

CZrkData* CDataSpace::GetSel(uint32_t mask, uint32_t display_mask, int n) const {
    return Guarded("CDataSpace::GetSel", static_cast<CZrkData*>(nullptr), [&]() -> CZrkData* {
        for (CZrkData* r : list)
            if ((r->select & mask) && (GlobalWindowSpace().DisplayMask(r) & display_mask) &&
                n-- == 0)
                return r;
        return nullptr;
    });
}

int CDataSpace::IsReservedData(const char* name) {
    if (!name) return 0;
    for (const char* reserved : kReserved)
        if (std::strcmp(name, reserved) == 0) return 1;
    return 0;
}

void CDataSpace::UniqueName(char out[128], const char* name) const {
    UniqueDots(out, name, unique, [this](const char* n) { return FindData(n) != nullptr; });
}

void CDataSpace::SortList() {
    if (sorted) ExchangeSort(list, [](const CZrkData* r) { return r->name; });
}

int CDataSpace::ScanfOptions(CKeyReader& reader) {
    Host().Trace("CDataSpace::ScanfOptions");
    int bins;
    float lo, hi;
    if (reader.Int("histogram_bins=", &bins)) {
        CZrkData* r = FindData("hist_nbins");
        if (!r) r = NewData(TYPE_I4, 1, 1, 1, 1, 1, 1, "hist_nbins");
        if (r && r->type == TYPE_I4 && r->data) *static_cast<int32_t*>(r->data) = bins;
        return 1;
    }
    if (reader.Float2("histogram_range=", &lo, &hi)) {
        CZrkData* r = FindData("hist_range");
        if (!r) r = NewData(TYPE_R4, 2, 1, 1, 1, 1, 1, "hist_range");
        if (r && r->type == TYPE_R4 && r->Count() >= 2 && r->data) {
            static_cast<float*>(r->data)[0] = lo;
            static_cast<float*>(r->data)[1] = hi;
        }
        return 1;
    }
    return 0;
}

void CDataSpace::PrintfOptions(FILE* file) const {
    Host().Trace("CDataSpace::PrintfOptions");
    std::fprintf(file, "\n//data space options\n");
    const CZrkData* bins = FindData("hist_nbins");
    if (bins && bins->type == TYPE_I4 && bins->data)
        std::fprintf(file, "histogram_bins= %d\n", *static_cast<const int32_t*>(bins->data));
    const CZrkData* range = FindData("hist_range");
    if (range && range->type == TYPE_R4 && range->Count() >= 2 && range->data) {
        const float* v = static_cast<const float*>(range->data);
        std::fprintf(file, "histogram_range= %f %f\n", v[0], v[1]);
    }
}
