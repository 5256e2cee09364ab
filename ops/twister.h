// CTwister: the 32-bit Mersenne twister of std::mt19937, with its seeding and its sequence,
// made for long runs. The words come a block at a time from the twister's recurrence over a
// plain array, a loop that vectorises; their tempering is left to the caller's loop, which
// can then share the cores.
//
//   CTwister g(777);
//   const uint32_t* words = g.NextBlock();        // the next g.Block() words, untempered
//   uint32_t draw = CTwister::Temper(words[0]);   // what std::mt19937(777)() returns first
#pragma once

#include <cstdint>
#include <vector>

class CTwister {
  public:
    static constexpr int kState = 624;
    static constexpr uint64_t kBlock = uint64_t{kState} * 256;

    // Blocks of `block` words (at least 1), kBlock unless fewer are wanted in all.
    explicit CTwister(uint32_t seed, uint64_t block = kBlock);

    uint64_t Block() const { return block_; }
    // The next Block() words, untempered.
    const uint32_t* NextBlock();

    static uint32_t Temper(uint32_t y) {
        y ^= y >> 11;
        y ^= (y << 7) & 0x9d2c5680u;
        y ^= (y << 15) & 0xefc60000u;
        return y ^ (y >> 18);
    }

  private:
    uint64_t block_;
    // The last kState words before the block, then the block.
    std::vector<uint32_t> words_;
    bool first_ = true;
};
