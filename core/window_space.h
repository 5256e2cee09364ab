// CWindowSpace: the list of open display windows. An entry is toolkit-free: a name,
// selection bits, the kind of display and up to three data records. The display code
// derives its own entries and closes its window in Close().
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

class CZrkData;

// Display kinds, as masks.
enum : uint32_t {
    KIND_1D = 0x10000,
    KIND_2D = 0x20000,
    KIND_XY = 0x40000,
    KIND_RGB = 0x80000,
    KIND_SCATTER = 0x100000,
};

class CWindowEntry {
  public:
    virtual ~CWindowEntry() = default;
    // Closes the window; the list forgets the entry right after.
    virtual void Close() {}

    char name[128] = {};
    uint32_t select = 0;
    uint32_t kind = 0;
    CZrkData* data[3] = {nullptr, nullptr, nullptr};
};

class CWindowSpace {
  public:
    CWindowSpace() = default;
    CWindowSpace(const CWindowSpace&) = delete;
    CWindowSpace& operator=(const CWindowSpace&) = delete;

    // Lists a new plain entry under a unique name derived from `name`.
    CWindowEntry* NewData(const char* name);
    // Lists `entry` (taking ownership) under a unique name derived from its name.
    CWindowEntry* NewData(std::unique_ptr<CWindowEntry> entry);
    void DelData(int position);
    int DelData(CWindowEntry* entry);
    // Closes, last to first, every window of a kind in `mask` whose first record is `record`.
    void DelAllImages(const CZrkData* record, uint32_t mask);
    int IsDataValid(const CWindowEntry* entry) const;
    CWindowEntry* FindByName(const char* name) const;
    CWindowEntry* Get(int position) const;

    void ClearSel(uint32_t mask);
    int GetSelCount(uint32_t mask) const;
    CWindowEntry* GetSel(uint32_t mask, int n) const;

    // The roles `record` plays over all windows; 1 when no window shows it, 0 for null.
    uint32_t DisplayMask(const CZrkData* record) const;

    void UniqueName(char out[128], const char* name) const;
    void SortList();
    int Count() const { return static_cast<int>(list.size()); }

    bool sorted = true;
    bool unique = true;

  private:
    CWindowEntry* UpdateList(std::unique_ptr<CWindowEntry> entry);

    std::vector<std::unique_ptr<CWindowEntry>> list;
};

CWindowSpace& GlobalWindowSpace();
