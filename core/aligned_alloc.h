// The allocator of sample buffers: 64-byte aligned blocks, released with AlignedFree.
//
// A large block is a mapping of its own, aligned to 2 MB and marked for huge pages: nothing
// writes it before its user does, so the threads that fill it fault it in, one fault per
// 2 MB, each on its own part. One large freed block is kept back for the next request of
// about its size, which a repeated equation makes.
//
//   void* p = AlignedAlloc(bytes);   // nullptr for 0 bytes or when memory is short
//   AlignedFree(p);                  // nullptr is fine
#pragma once

#include <cstdint>

void* AlignedAlloc(uint64_t bytes);
void AlignedFree(void* p);

// Blocks of at least this size are mapped on their own.
constexpr uint64_t kHugePageBytes = uint64_t{2} << 20;
constexpr uint64_t kMappedBlockMin = 4 * kHugePageBytes;
