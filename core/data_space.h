// CDataSpace: a list of array records, the namespace of the equation language.
// The global instance (GlobalDataSpace()) is what the data desktop shows; evaluators own
// further lists for temporaries (no `unique`, no `sorted`) and script locals (`unique`).
//
// The list owns its records: DelData and the destructor call FreeData and destroy them.
// Positions are stale after any insertion, since a sorted list re-sorts on every insert.
// Every look-up by name or position follows `link` to the end of the chain.
//
//   CDataSpace& ds = GlobalDataSpace();
//   CZrkData* a = ds.NewData(TYPE_R4, 64, 64, 1, 1, 1, 1, "a");   // null when short
//   CZrkData* b = ds.NewData(TYPE_R4, 64, 64, 1, 1, 1, 1, "a");   // named "a." on a unique list
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

#include "core/zrk_data.h"

class CKeyReader;
class CWindowEntry;

class CDataSpace {
  public:
    CDataSpace() = default;
    ~CDataSpace();
    CDataSpace(const CDataSpace&) = delete;
    CDataSpace& operator=(const CDataSpace&) = delete;

    CZrkData* NewData(int type, res_t nx, res_t ny, res_t nz, res_t nt, res_t nu, res_t nv,
                      const char* name);
    CZrkData* NewData(const char* name);
    CZrkData* NewData();
    CZrkData* NewData(const CZrkData* templ, const char* name);
    // Lists an existing record (taking ownership) under a unique name derived from `name`.
    CZrkData* AddToList(CZrkData* record, const char* name);

    CZrkData* FindData(const char* name) const;
    int FindIndex(const char* name) const;
    CZrkData* GetData(int position) const;
    CZrkData* FindOrNew(const char* name);
    CZrkData* FindLevel(const CWindowEntry* window) const;
    CZrkData* FindWindow(const CWindowEntry* window) const;
    // Longest record name that is a prefix of `text`: its length, and the record in `out`.
    int GetLongestData(const char* text, CZrkData** out) const;

    void DelData(int position);
    int DelData(const char* name);
    int DelData(CZrkData* record);
    void DelLinks();
    void DelUntyped();

    int IsDataValid(const CZrkData* record) const;
    // Raises "internal error, invalid data" when `record` is not on this list.
    void CheckValid(const CZrkData* record) const;
    int AnyChanged() const;
    uint64_t GetBytes() const;
    int GetNonNullCount() const;

    void ClearSel(uint32_t mask);
    int GetSelCount(uint32_t mask) const;
    CZrkData* GetSel(uint32_t mask, int n) const;
    int GetSelCount(uint32_t mask, uint32_t display_mask) const;
    CZrkData* GetSel(uint32_t mask, uint32_t display_mask, int n) const;

    static int IsReservedData(const char* name);
    static int IsNotReserved(const char* name) { return !IsReservedData(name); }

    void InitReservedData() { sorted = true; }
    void SetUnique() { unique = true; }
    // Copies `name` into the 128-byte `out`, then appends "." while the name is taken.
    void UniqueName(char out[128], const char* name) const;
    void SortList();

    // Histogram settings kept between runs.
    int ScanfOptions(CKeyReader& reader);
    void PrintfOptions(FILE* file) const;

    int Count() const { return static_cast<int>(list.size()); }

    bool sorted = false;
    bool unique = false;

  private:
    CZrkData* UpdateList(CZrkData* record);
    CZrkData* NewRecord(const char* name);
    static CZrkData* FollowLink(CZrkData* record);

    std::vector<CZrkData*> list;
};

// The one data space of the program.
CDataSpace& GlobalDataSpace();
