// The byte-level help the scanner readers share: a file read at absolute offsets with every
// read checked against the file, fields of a buffer in either byte order that answer 0 past
// its end, and the check that a load target can take an entry's samples. Nothing here reads
// outside a buffer, whatever a header claims.
//
//   CScannerFile file(entry.path);
//   uint8_t word[4];
//   if (!file.Read(0, word, 4)) ...           // short file
//   CByteView v{pool.data(), pool.size(), true};
//   int16_t echoes = v.S16(70);               // big-endian, 0 past the end
#pragma once

#include <sys/uio.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "files/file_entry.h"

class CScannerFile {
  public:
    explicit CScannerFile(const std::string& path);
    ~CScannerFile();
    CScannerFile(const CScannerFile&) = delete;
    CScannerFile& operator=(const CScannerFile&) = delete;

    bool IsOpen() const { return fd_ >= 0; }
    uint64_t Size() const { return size_; }
    // All n bytes at offset, or false.
    bool Read(uint64_t offset, void* out, uint64_t n) const;
    // The buffers of `parts` filled in order from offset on, or false.
    bool ReadV(uint64_t offset, iovec* parts, int count) const;

  private:
    int fd_ = -1;
    uint64_t size_ = 0;
};

// Fields of a byte buffer, big- or little-endian. A field that does not lie wholly inside
// the buffer reads as 0.
struct CByteView {
    const uint8_t* data;
    size_t size;
    bool big;

    bool Has(uint64_t offset, uint64_t n) const { return offset <= size && n <= size - offset; }
    uint16_t U16(uint64_t offset) const;
    int16_t S16(uint64_t offset) const { return static_cast<int16_t>(U16(offset)); }
    uint32_t U32(uint64_t offset) const;
    int32_t S32(uint64_t offset) const { return static_cast<int32_t>(U32(offset)); }
    float F32(uint64_t offset) const;
};

uint16_t Swap16(uint16_t v);
uint32_t Swap32(uint32_t v);
// Reverses each unit of `size` bytes (2 or 4; anything else leaves the bytes alone).
void SwapUnits(void* data, uint64_t bytes, int size);

// a * b, saturating at 2^64 - 1: sizes of absurd headers compare as too large, never wrap.
uint64_t SatMul(uint64_t a, uint64_t b);
uint64_t SatAdd(uint64_t a, uint64_t b);

// A signed header count as a resolution: a negative count becomes a size no file holds.
inline res_t ResOf(int64_t v) { return static_cast<res_t>(v); }

// The status of a file that does not open; marks the entry failed.
int OpenFailed(FileEntry& entry);

// True when `target` can take the entry's samples at entry.dest: same type, x and y, and
// the entry's z, t, u, v from dest on inside the target, with samples to write into.
bool TargetFits(const FileEntry& entry, const CZrkData* target);

// Clears the parts of the entry that the scanner headers never use and sets a fresh header
// of `type` with the six sizes and unit steps.
void ResetScannerHeader(FileEntry& entry, int type, const res_t res[6]);
