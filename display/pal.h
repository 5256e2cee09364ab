// CPal: the colour table of a plane: 256 entries of red, green, blue and a flag, the channels
// it drives (bits 1, 2, 4: red, green, blue; the others read 0, so r, g, b planes of an rgb
// image add up), the built-in table it is, and the array it came from.
//
// Built-in tables are given by sample rows every 32 entries (and 255); the entries between
// are interpolated linearly, so the sample rows come out exactly.
//
//   CPal p(7);
//   p.SetByName("black body red", &space);   // index 4
//   p.SetByName("my_lut", &space);           // an n1 [256][3] array: an array palette
//   std::string name = p.LoadFile("/tmp/hot.act", space);   // "hot", now an array of space
#pragma once

#include <cstdint>
#include <string>

class CDataSpace;
class CZrkData;

class CPal {
  public:
    static constexpr int kTables = 10;
    static constexpr int kEntries = 256;

    explicit CPal(uint32_t mode_mask = 7) : mode(mode_mask) { SetByIndex(0); }

    // A built-in name ("grey" ... "jet") selects its table; the name of an array of 256 x 3
    // or 3 x 256 in `space` makes an array palette; anything else falls back to table 0.
    void SetByName(const char* name, const CDataSpace* space);
    void SetByIndex(int index);
    // Entries from a 256 x 3 (planar) or 3 x 256 (interleaved) array; any other shape leaves
    // the palette as it was and returns 0.
    int SetFromArray(const CZrkData* a);
    // Reads a palette file into a new n1 [256][3] array of `space` named from the file's
    // title and takes it; returns that name, empty when the file has no palette size.
    // "can not open file" goes to the host when the file can't be read.
    std::string LoadFile(const std::string& path, CDataSpace& space);

    // The name a file keeps: the source array while `space` still holds it, else the table.
    const char* FileName(const CDataSpace* space) const;
    bool IsArray() const { return source[0] != 0; }
    const uint8_t (*Entries() const)[4] { return entries; }

    // The file-form name of built-in table `index`; "grey" outside 0 ... 9.
    static const char* TableName(int index);
    // Table `index` in full colour, before any channel mask.
    static void TableRgb(int index, uint8_t rgb[kEntries][3]);

    uint32_t mode;  // bits 1, 2, 4: red, green, blue
    int index = 0;
    int count = kEntries;
    char source[128] = {};
    uint8_t entries[kEntries][4] = {};  // red, green, blue, flag

  private:
    void Fill(const uint8_t rgb[kEntries][3]);
};
