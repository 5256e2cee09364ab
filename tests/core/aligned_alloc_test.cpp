#include "core/aligned_alloc.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace {

// The THPeligible figure of the mapping of /proc/self/smaps that holds p; -1 when no mapping
// holds it.
int HugePageEligible(const void* p) {
    std::ifstream smaps("/proc/self/smaps");
    const auto at = reinterpret_cast<uintptr_t>(p);
    bool inside = false, mapped = false;
    std::string line;
    while (std::getline(smaps, line)) {
        unsigned long lo = 0, hi = 0;
        if (std::sscanf(line.c_str(), "%lx-%lx ", &lo, &hi) == 2) {
            inside = lo <= at && at < hi;
            mapped = mapped || inside;
        } else if (inside && line.rfind("THPeligible:", 0) == 0) {
            return std::atoi(line.c_str() + 12);
        }
    }
    return mapped ? 0 : -1;
}

bool HugePagesOff() {
    std::ifstream f("/sys/kernel/mm/transparent_hugepage/enabled");
    std::string setting;
    std::getline(f, setting);
    return setting.empty() || setting.find("[never]") != std::string::npos;
}

}  // namespace

// A large block starts on a huge page and is marked for huge pages, so its first writes
// fault it in 2 MB at a time; a small one comes from the heap.
TEST(AlignedAllocTest, LargeBlocksAreHugePageMappings) {
    const uint64_t bytes = kMappedBlockMin + 12345;  // not a whole number of pages
    auto* p = static_cast<char*>(AlignedAlloc(bytes));
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % kHugePageBytes, 0u);
    p[0] = 1;
    p[bytes - 1] = 2;
    if (!HugePagesOff()) {
        EXPECT_EQ(HugePageEligible(p), 1);
    }
    AlignedFree(p);
    // below the sizes kept back for reuse, the block goes back to the kernel at once
    EXPECT_EQ(HugePageEligible(p), -1);

    auto* small = static_cast<char*>(AlignedAlloc(kMappedBlockMin - 64));
    ASSERT_NE(small, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(small) % 64, 0u);
    small[kMappedBlockMin - 65] = 3;
    AlignedFree(small);
    AlignedFree(nullptr);
}

// A large freed block serves the next request of about its size, so a repeated equation does
// not wait for the kernel to clear fresh pages; other sizes get blocks of their own.
TEST(AlignedAllocTest, LargeFreedBlockIsReusedForTheSameSize) {
    constexpr uint64_t kBig = uint64_t{40} << 20;
    void* first = AlignedAlloc(kBig);
    ASSERT_NE(first, nullptr);
    static_cast<char*>(first)[kBig - 1] = 7;
    AlignedFree(first);
    void* again = AlignedAlloc(kBig);
    EXPECT_EQ(again, first);
    EXPECT_EQ(static_cast<char*>(again)[kBig - 1], 7);  // the same pages, not fresh ones
    AlignedFree(again);

    void* larger = AlignedAlloc(2 * kBig);
    ASSERT_NE(larger, nullptr);
    EXPECT_NE(larger, first);
    static_cast<char*>(larger)[2 * kBig - 1] = 7;
    AlignedFree(larger);
    // the spare held `first` until now: it is unmapped when `larger` takes its place
    EXPECT_EQ(HugePageEligible(first), -1);
    void* smaller = AlignedAlloc(kBig / 2);
    EXPECT_NE(smaller, larger);
    AlignedFree(smaller);
    EXPECT_EQ(AlignedAlloc(0), nullptr);
    EXPECT_EQ(AlignedAlloc(UINT64_MAX), nullptr);
}

#if defined(__SANITIZE_ADDRESS__)
// The rounding up to 2 MB must not hide an overrun from the sanitizer, nor reuse a use after
// free of the kept-back block.
TEST(AlignedAllocDeathTest, SanitizerSeesPastTheRequestAndIntoTheSpare) {
    const uint64_t bytes = (uint64_t{40} << 20) + 8;
    auto* p = static_cast<volatile char*>(AlignedAlloc(bytes));
    ASSERT_NE(p, nullptr);
    EXPECT_DEATH(p[bytes] = 1, "use-after-poison");
    AlignedFree(const_cast<char*>(p));
    EXPECT_DEATH(p[0] = 1, "use-after-poison");
}
#endif
