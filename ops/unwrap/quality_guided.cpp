// Quality guided unwrapping: region growing from seeds in row order, where the point of best
// quality among those waiting goes next. The waiting list is kept short (width + height):
// when it fills, its lower half is postponed, keeping the value it was offered, and comes
// back when the list runs empty.
#include <algorithm>
#include <bit>
#include <cstring>
#include <functional>
#include <vector>

#include "ops/unwrap/solvers.h"

namespace {

enum : uint8_t {
    kMasked = 0x20,     // never touched
    kUnwrapped = 0x40,  // has its value, or waits in the list
    kPostponed = 0x80,  // has a value, is out of the list
};

// The wrapped gradient a - b in cycles.
inline float Grad(float a, float b) {
    float d = a - b;
    if (d > 0.5f)
        d -= 1.0f;
    else if (d < -0.5f)
        d += 1.0f;
    return d;
}

class CQualityGuided {
  public:
    CQualityGuided(const float* phase, const float* quality, float* out, int64_t w, int64_t h)
        : width(w),
          height(h),
          flags(static_cast<size_t>(w * h)),
          list(static_cast<size_t>(3 * (w + h + 1))),
          phase_(phase),
          quality_(quality),
          out_(out) {}

    uint64_t Run(const uint8_t* mask) {
        const int64_t n = width * height;
        for (int64_t k = 0; k < n; ++k) flags[k] = mask[k] ? 0 : kMasked;
        std::fill(out_, out_ + n, 0.0f);
        listLength = 0;
        head_ = list.size() / 3;
        threshold = kLowest;
        uint64_t seeds = 0;
        for (int64_t s = 0; s < n; ++s) {
            if (flags[s] & (kMasked | kUnwrapped)) continue;
            if (!(flags[s] & kPostponed)) {
                out_[s] = phase_[s];
                ++seeds;
            }
            Take(s);
            for (;;) {
                while (listLength > 0) Take(list[head_ + --listLength]);
                threshold = kLowest;
                Reinsert();
                if (listLength == 0) break;
                threshold = quality_[list[head_]];
            }
        }
        return seeds;
    }

    int64_t width, height;
    std::vector<uint8_t> flags;
    // Rising quality, the best last: the width + height + 1 entries from head_ on, with as
    // much room on either side, so that an entry goes in by moving the shorter side.
    std::vector<int64_t> list;
    float threshold = 0;
    int64_t listLength = 0;

  private:
    // -1e10, the threshold that lets every point in.
    static inline const float kLowest = std::bit_cast<float>(0xD01502F9u);

    void Take(int64_t p) {
        flags[p] = static_cast<uint8_t>((flags[p] | kUnwrapped) & ~kPostponed);
        Offer(p);
    }

    void Offer(int64_t p) {
        const int64_t x = p % width;
        const float v = out_[p], a = phase_[p];
        if (x > 0 && Free(p - 1)) Insert(p - 1, v + Grad(phase_[p - 1], a));
        if (x + 1 < width && Free(p + 1)) Insert(p + 1, v - Grad(a, phase_[p + 1]));
        if (p >= width && Free(p - width)) Insert(p - width, v + Grad(phase_[p - width], a));
        if (p + width < width * height && Free(p + width))
            Insert(p + width, v - Grad(a, phase_[p + width]));
    }

    bool Free(int64_t n) const { return !(flags[n] & (kMasked | kUnwrapped)); }

    void Insert(int64_t n, float value) {
        out_[n] = value;
        const float q = quality_[n];
        if (q < threshold) {
            flags[n] |= kPostponed;
            Pending(n);
            return;
        }
        int64_t* l = list.data() + head_;
        int64_t at;
        if (listLength == 0 || q <= quality_[l[0]]) {
            at = 0;
        } else if (q > quality_[l[listLength - 1]]) {
            at = listLength;
        } else {
            at = std::lower_bound(l, l + listLength, q,
                                  [&](int64_t e, float v) { return quality_[e] < v; }) -
                 l;
        }
        const bool front = at < listLength - at;
        if ((front && head_ == 0) ||
            (!front && head_ + listLength == static_cast<int64_t>(list.size()))) {
            // Back to the middle of the room.
            const int64_t middle = (static_cast<int64_t>(list.size()) - listLength) / 2;
            std::memmove(list.data() + middle, l, static_cast<size_t>(listLength) * sizeof *l);
            head_ = middle;
            l = list.data() + head_;
        }
        if (front) {
            std::memmove(l - 1, l, static_cast<size_t>(at) * sizeof *l);
            --head_;
            --l;
        } else {
            std::memmove(l + at + 1, l + at, static_cast<size_t>(listLength - at) * sizeof *l);
        }
        l[at] = n;
        ++listLength;
        flags[n] = static_cast<uint8_t>((flags[n] | kUnwrapped) & ~kPostponed);
        if (listLength >= width + height) Postpone();
    }

    void Postpone() {
        const int64_t half = listLength / 2;
        const int64_t* l = list.data() + head_;
        for (int64_t k = 0; k < half; ++k) {
            flags[l[k]] = static_cast<uint8_t>((flags[l[k]] | kPostponed) & ~kUnwrapped);
            Pending(l[k]);
        }
        head_ += half;
        listLength -= half;
        threshold = quality_[list[head_]];
    }

    // Every point that was postponed waits in a heap by index, so that putting them back
    // visits them in row order, as a scan of the whole plane would, without the scan. A point
    // postponed during the pass behind the pass's position waits for the next pass.
    void Pending(int64_t n) {
        std::vector<int64_t>& heap = scanning_ && n <= cursor_ ? next_ : pending_;
        heap.push_back(n);
        std::push_heap(heap.begin(), heap.end(), std::greater<>());
    }

    void Reinsert() {
        scanning_ = true;
        cursor_ = -1;
        while (!pending_.empty()) {
            std::pop_heap(pending_.begin(), pending_.end(), std::greater<>());
            const int64_t k = pending_.back();
            pending_.pop_back();
            if (k <= cursor_) continue;  // met twice
            cursor_ = k;
            if ((flags[k] & (kPostponed | kUnwrapped)) == kPostponed) Insert(k, out_[k]);
        }
        scanning_ = false;
        pending_.swap(next_);
    }

    const float* phase_;
    const float* quality_;
    float* out_;
    int64_t head_ = 0;
    std::vector<int64_t> pending_, next_;
    bool scanning_ = false;
    int64_t cursor_ = -1;
};

}  // namespace

uint64_t UnwrapQualityGuided(const float* phase, const float* quality, const uint8_t* mask,
                             float* out, int64_t width, int64_t height) {
    if (width <= 0 || height <= 0) return 0;
    CQualityGuided solver(phase, quality, out, width, height);
    return solver.Run(mask);
}
