// CFtOptions: the option record of one Fourier transform direction, and the two sizes and
// the weights derived from it. A line of n points is padded to PadSize(n) with PadSides
// zeros below and above, weighted by HomodyneFilter when homodyneOn, chopped and transformed.
//
//   CFtOptions o;
//   o.pad = 1;                    // ft: round up to a power of two
//   uint64_t size = o.PadSize(100);   // 128
//   o.PadSides(100, size, &lo, &hi);  // 14 and 14
#pragma once

#include <cstdint>
#include <vector>

// Data windows by number, as the window field and pnft's filter argument use them.
enum : int32_t {
    FT_WINDOW_NONE = 0,
    FT_WINDOW_BARTLETT = 1,
    FT_WINDOW_BLACKMAN = 2,
    FT_WINDOW_HAMMING = 3,
    FT_WINDOW_HANNING = 4,
};

struct CFtOptions {
    int32_t inverse = 0;  // 1 inverse, 0 forward
    int32_t pad = 0;      // 1: pad before transforming, to a power of two
    uint8_t chopBefore = 0;
    uint8_t chopAfter = 0;
    int32_t minSizeOn = 0;  // the minSize flag
    int32_t minSize = 0;    // pad up to at least this size
    int32_t homodyneOn = 0;
    int32_t window = FT_WINDOW_NONE;
    int64_t overlap = 0;  // width of the symmetric part, set by PadSize
    int64_t center = 0;   // centre of k-space in the data; 0 means the middle

    // Size of the padded line for n points; sets overlap. Without pad it is n.
    uint64_t PadSize(uint64_t n);
    // Zeros below and above n points in a line of `size`; both 0 when size is n.
    void PadSides(uint64_t n, uint64_t size, uint64_t* left, uint64_t* right) const;
    // Data on the low side of the centre: the weights fall from 2 to 0 with the index.
    bool Rising(uint64_t n) const;
    // The homodyne weights of a padded line of `size` points (overlap from PadSize).
    // Raises "bad homodyne res" for a size the overlap does not fit in.
    std::vector<float> HomodyneFilter(uint64_t size, bool rising) const;
};
