#include "ops/ft_options.h"

#include <cmath>
#include <numbers>

#include "core/zrk_error.h"
#include "ops/structural_base.h"

namespace {

uint64_t RoundUpPow2(uint64_t n) {
    uint64_t p = 1;
    while (p < n && p < (uint64_t{1} << 62)) p <<= 1;
    return p;
}

}  // namespace

uint64_t CFtOptions::PadSize(uint64_t n) {
    const uint64_t c = center > 0 ? static_cast<uint64_t>(center) : 0;
    overlap = 0;
    if (c != 0 && c <= n) overlap = static_cast<int64_t>(c > n / 2 ? 2 * (n - c) : 2 * c);
    if (!pad) return n;
    uint64_t size = c != 0 ? 2 * n - static_cast<uint64_t>(overlap) : n;
    size = RoundUpPow2(size);
    if (minSizeOn && minSize > 0 && size < static_cast<uint64_t>(minSize))
        size = static_cast<uint64_t>(minSize);
    return size;
}

void CFtOptions::PadSides(uint64_t n, uint64_t size, uint64_t* left, uint64_t* right) const {
    *left = *right = 0;
    if (size <= n) return;
    const uint64_t c = center > 0 ? static_cast<uint64_t>(center) : 0;
    if (c != 0 && size / 2 >= c && size / 2 + c >= n) {
        *left = size / 2 - c;
        *right = size / 2 + c - n;
        if (*left + *right + n == size) return;
    }
    // An odd excess goes to the high side.
    *left = (size - n) / 2;
    *right = (size - n + 1) / 2;
}

bool CFtOptions::Rising(uint64_t n) const {
    return center > 0 && static_cast<uint64_t>(center) > n / 2;
}

std::vector<float> CFtOptions::HomodyneFilter(uint64_t size, bool rising) const {
    try {
        const uint64_t w = overlap > 0 ? static_cast<uint64_t>(overlap) : 0;
        if (w > size) Raise("bad homodyne res");
        const uint64_t l = (size - w) / 2;
        const float low = rising ? 2.0f : 0.0f;
        const float high = rising ? 0.0f : 2.0f;
        std::vector<float> out(size, low);
        for (uint64_t i = 0; i < w; ++i) {
            const double j = static_cast<double>(rising ? i : w - i - 1);
            const double x = j * std::numbers::pi / static_cast<double>(w);
            float& e = out[l + i];
            const float previous = l + i > 0 ? out[l + i - 1] : low;
            switch (window) {
                case FT_WINDOW_BARTLETT:
                    e = static_cast<float>(2.0 - 2.0 * j / double(w));
                    break;
                case FT_WINDOW_BLACKMAN:
                    e = static_cast<float>(0.16 * std::cos(2 * x) + (std::cos(x) + 0.84));
                    break;
                case FT_WINDOW_HAMMING:
                    e = static_cast<float>(0.92 * std::cos(x) + 1.08);
                    break;
                case FT_WINDOW_HANNING:
                    e = static_cast<float>(std::cos(x) + 1.0);
                    break;
                default:
                    e = previous;
                    break;
            }
        }
        // An odd remainder leaves one entry between the ramp and the tail: it keeps the
        // ramp's last value.
        if (l + w < size - l) out[l + w] = l + w > 0 ? out[l + w - 1] : low;
        for (uint64_t i = size - l; i < size; ++i) out[i] = high;
        return out;
    } catch (...) {
        LogLines({"error caught: CFtOptions::HomodyneFilter:\r\n"});
        throw;
    }
}
