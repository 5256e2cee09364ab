#include "ops/twister.h"

#include <algorithm>

namespace {

constexpr int kShift = 397;  // the twist reads the word this far ahead
constexpr uint32_t kUpper = 0x80000000u, kLower = 0x7fffffffu, kMatrix = 0x9908b0dfu;

}  // namespace

CTwister::CTwister(uint32_t seed, uint64_t block)
    : block_(std::max<uint64_t>(block, 1)), words_(kState + block_) {
    words_[0] = seed;
    for (uint32_t i = 1; i < kState; ++i)
        words_[i] = 1812433253u * (words_[i - 1] ^ (words_[i - 1] >> 30)) + i;
}

// Word k + kState of the sequence follows from words k, k + 1 and k + kShift. Words less
// than kState - kShift apart do not depend on one another, so the recurrence runs in
// stretches of that length with no dependence inside a stretch.
const uint32_t* CTwister::NextBlock() {
    uint32_t* z = words_.data();
    const int64_t n = static_cast<int64_t>(block_);
    if (!first_) std::copy(z + n, z + n + kState, z);
    first_ = false;
    constexpr int64_t kFree = kState - kShift;
    for (int64_t k0 = 0; k0 < n; k0 += kFree) {
        const int64_t k1 = std::min(k0 + kFree, n);
#pragma GCC ivdep
        for (int64_t k = k0; k < k1; ++k) {
            const uint32_t y = (z[k] & kUpper) | (z[k + 1] & kLower);
            z[k + kState] = z[k + kShift] ^ (y >> 1) ^ ((0u - (y & 1u)) & kMatrix);
        }
    }
    return z + kState;
}
