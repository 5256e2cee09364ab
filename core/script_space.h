// CScriptSpace: the script files of the current script directory, by value. A script's
// file name is the name by which the language calls it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct CScriptEntry {
    uint32_t select = 0;
    uint32_t bytes = 0;
    std::string name;
    // The first line of the file, at most 199 characters.
    std::string first_line;
};

class CScriptSpace {
  public:
    // Lists an entry under a unique name ("name", "name.new", ...); null when short.
    CScriptEntry* NewData(const char* name);
    void DelData(int position);
    // Removes every entry (named as the window list's operation).
    void DelAllImages();
    uint64_t GetBytes() const;
    int IsDataValid(const CScriptEntry* entry) const;
    void ClearSel(uint32_t mask);
    int GetSelCount(uint32_t mask) const;
    CScriptEntry* GetSel(uint32_t mask, int n);
    int GetLongestData(const char* text, CScriptEntry** out);
    CScriptEntry* FindByName(const char* name);
    CScriptEntry* Get(int position);
    void UniqueName(std::string& out, const char* name) const;
    void SortList();
    // Re-reads the current directory: every file but "." and "..", sorted.
    void Refresh();

    void SetDirectory(const std::string& dir) { directory = dir; }
    const std::string& Directory() const { return directory; }
    int Count() const { return static_cast<int>(list.size()); }

    bool sorted = true;
    bool unique = true;

  private:
    CScriptEntry* UpdateList(CScriptEntry entry);

    std::string directory;
    std::vector<CScriptEntry> list;
};

CScriptSpace& GlobalScriptSpace();
