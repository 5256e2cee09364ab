// CPal: the colour table of a plane, as far as the looks need it: which channels it drives,
// which built-in table it is, and the array it came from. The tables themselves and loading
// from files come with the window/level code.
//
//   CPal p(7);
//   p.SetByName("black body red", &space);   // index 4
//   p.SetByName("my_lut", &space);           // an n1 [256][3] array: an array palette
#pragma once

#include <cstdint>

class CDataSpace;

class CPal {
  public:
    static constexpr int kTables = 10;
    static constexpr int kEntries = 256;

    explicit CPal(uint32_t mode_mask = 7) : mode(mode_mask) {}

    // A built-in name ("grey" ... "jet") selects its table; the name of an array of 256 x 3
    // or 3 x 256 in `space` makes an array palette; anything else falls back to table 0.
    void SetByName(const char* name, const CDataSpace* space);
    void SetByIndex(int index);
    // The name a file keeps: the source array while `space` still holds it, else the table.
    const char* FileName(const CDataSpace* space) const;
    bool IsArray() const { return source[0] != 0; }

    // The file-form name of built-in table `index`; "grey" outside 0 ... 9.
    static const char* TableName(int index);

    uint32_t mode;  // bits 1, 2, 4: red, green, blue
    int index = 0;
    int count = kEntries;
    char source[128] = {};
    uint8_t entries[kEntries][4] = {};  // red, green, blue, flag
};
