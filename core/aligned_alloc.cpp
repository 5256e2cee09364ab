#include "core/aligned_alloc.h"

#include <sanitizer/asan_interface.h>
#include <sys/mman.h>

#include <cstdlib>
#include <mutex>
#include <new>
#include <unordered_map>
#include <utility>

namespace {

// Fresh pages from the kernel are cleared first, which costs more than a simple operation on
// them; a repeated equation such as `b = a * 2 + 1` frees the old undo of b and asks for a
// block of the same size, so one freed block of these sizes is kept back for it.
constexpr uint64_t kSpareMin = uint64_t{32} << 20;
constexpr uint64_t kSpareMax = uint64_t{1} << 30;

uint64_t RoundUp(uint64_t n, uint64_t to) { return (n + to - 1) / to * to; }

struct CMappedBlocks {
    std::mutex lock;
    std::unordered_map<void*, uint64_t> length;  // of each mapping, a multiple of 2 MB
    void* spare = nullptr;
};

// Never destroyed: static records free their blocks after this would have gone.
CMappedBlocks& Blocks() {
    static CMappedBlocks* blocks = new CMappedBlocks;
    return *blocks;
}

// Under the address sanitizer, the bytes past the request stay unaddressable, as a heap
// block's would.
void MarkUsable(void* p, uint64_t bytes, uint64_t length) {
    ASAN_UNPOISON_MEMORY_REGION(p, bytes);
    ASAN_POISON_MEMORY_REGION(static_cast<char*>(p) + bytes, length - bytes);
}

// The spare when it holds `bytes` without wasting more than an eighth of it. Lock held.
void* TakeSpare(CMappedBlocks& b, uint64_t bytes) {
    if (!b.spare) return nullptr;
    const uint64_t length = b.length[b.spare];
    if (length < bytes || length - bytes > length / 8) return nullptr;
    void* p = b.spare;
    b.spare = nullptr;
    MarkUsable(p, bytes, length);
    return p;
}

// Lock held.
void Unmap(CMappedBlocks& b, void* p) {
    const auto it = b.length.find(p);
    ASAN_UNPOISON_MEMORY_REGION(p, it->second);
    munmap(p, it->second);
    b.length.erase(it);
}

void ReleaseSpare() {
    CMappedBlocks& b = Blocks();
    std::lock_guard<std::mutex> hold(b.lock);
    if (b.spare) Unmap(b, b.spare);
    b.spare = nullptr;
}

// A mapping of its own, 2 MB aligned: mapped with 2 MB to spare, the ends trimmed off.
void* MapBlock(uint64_t bytes) {
    const uint64_t length = RoundUp(bytes, kHugePageBytes);
    void* raw = mmap(nullptr, length + kHugePageBytes, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (raw == MAP_FAILED) return nullptr;
    const auto begin = reinterpret_cast<uintptr_t>(raw);
    const uintptr_t aligned = RoundUp(begin, kHugePageBytes);
    if (aligned > begin) munmap(raw, aligned - begin);
    if (begin + kHugePageBytes > aligned)
        munmap(reinterpret_cast<void*>(aligned + length), begin + kHugePageBytes - aligned);
    void* p = reinterpret_cast<void*>(aligned);
    // where the kernel allows: a refusal only costs speed
    madvise(p, length, MADV_HUGEPAGE);
    CMappedBlocks& b = Blocks();
    try {
        std::lock_guard<std::mutex> hold(b.lock);
        b.length.emplace(p, length);
    } catch (const std::bad_alloc&) {
        munmap(p, length);
        return nullptr;
    }
    MarkUsable(p, bytes, length);
    return p;
}

}  // namespace

void* AlignedAlloc(uint64_t bytes) {
    if (bytes == 0 || bytes > (UINT64_MAX >> 1)) return nullptr;
    if (bytes >= kMappedBlockMin) {
        if (bytes >= kSpareMin) {
            CMappedBlocks& b = Blocks();
            std::lock_guard<std::mutex> hold(b.lock);
            if (void* p = TakeSpare(b, bytes)) return p;
        }
        if (void* p = MapBlock(bytes)) return p;
        // Memory is short: the spare goes back before the request fails.
        ReleaseSpare();
        return MapBlock(bytes);
    }
    void* p = nullptr;
    if (posix_memalign(&p, 64, bytes) == 0) return p;
    ReleaseSpare();
    return posix_memalign(&p, 64, bytes) == 0 ? p : nullptr;
}

void AlignedFree(void* p) {
    if (!p) return;
    CMappedBlocks& b = Blocks();
    {
        std::lock_guard<std::mutex> hold(b.lock);
        const auto it = b.length.find(p);
        if (it != b.length.end()) {
            if (it->second >= kSpareMin && it->second <= kSpareMax) {
                ASAN_POISON_MEMORY_REGION(p, it->second);  // a use after free is still caught
                std::swap(p, b.spare);
            }
            if (p) Unmap(b, p);
            return;
        }
    }
    std::free(p);
}
