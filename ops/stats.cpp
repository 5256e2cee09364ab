#include "ops/stats.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "core/block_io.h"
#include "core/data_cursor.h"
#include "core/data_space.h"
#include "core/host.h"
#include "core/report.h"
#include "core/zrk_error.h"
#include "display/roi_mask.h"
#include "ops/structural_base.h"

namespace {

float FloatFromBits(uint32_t bits) {
    float v;
    std::memcpy(&v, &bits, sizeof v);
    return v;
}

// The largest float and its negative, the start values of a min/max scan.
const float kLargest = FloatFromBits(0x7F7FFFFFu);
const float kMostNegative = FloatFromBits(0xFF7FFFFFu);

struct MinMaxScan {
    float min = kLargest, max = kMostNegative;
    uint64_t count = 0;
    bool bad = false;
    void Add(float v) {
        ++count;
        if (!std::isfinite(v)) {
            bad = true;
            return;
        }
        if (!(v < max)) max = v;
        if (!(v > min)) min = v;
    }
    uint64_t Finish(float* lo, float* hi) const {
        if (bad) Host().History("NAN/INF found in data... min/max of valid data is reported");
        *lo = min;
        *hi = max;
        return count;
    }
};

// Running mean and running sum of squared deviations, as the sd operator keeps them.
struct MeanSdScan {
    double mean = 0, dev = 0;
    uint64_t count = 0, valid = 0;
    bool bad = false;
    void Add(float v) {
        ++count;
        if (!std::isfinite(v)) {
            bad = true;
            return;
        }
        ++valid;
        const double d = v - mean;
        mean += d / static_cast<double>(valid);
        dev += d * (v - mean);
    }
    uint64_t Finish(float* m, float* s) const {
        if (bad) Host().History("NAN/INF found in data... mean/sd of valid data is reported");
        *m = static_cast<float>(mean);
        *s = valid ? static_cast<float>(std::sqrt(dev / static_cast<double>(valid))) : 0.0f;
        return count;
    }
};

// Runs a statistic; a failure is reported and counts nothing.
template <class F>
uint64_t Guard(const char* name, F&& body) {
    return Reported({.lines = {CaughtLine(name)}, .to = REPORT_STATUS}, uint64_t{0}, body);
}

// Raises unless `a` has samples and `index` names one of its `per`-element blocks.
void CheckBlock(const CZrkData* a, uint64_t index, uint64_t per) {
    RequireData(a);
    if (per == 0 || index >= a->Count() / per) Raise("index > resolution");
}

// Visits elements [first, first + n) in storage order, read through the channel a block at
// a time; `keep(k)` (k counted from first) picks which ones count.
template <class Scan, class Keep>
void ScanBlocks(const CZrkData* a, int iqmp, uint64_t first, uint64_t n, Scan& scan, Keep keep) {
    const CDataCursor<float> c(a, iqmp);
    float buf[kBlockElements];
    for (uint64_t k = 0; k < n; k += kBlockElements) {
        const size_t len = static_cast<size_t>(std::min<uint64_t>(kBlockElements, n - k));
        c.GetBlock(buf, first + k, len);
        for (size_t j = 0; j < len; ++j)
            if (keep(k + j)) scan.Add(buf[j]);
    }
}

template <class Scan>
void ScanRun(const CZrkData* a, int iqmp, uint64_t first, uint64_t n, Scan& scan) {
    ScanBlocks(a, iqmp, first, n, scan, [](uint64_t) { return true; });
}

template <class Scan>
void ScanLine(const CZrkData* a, uint64_t line, res_t x0, res_t x1, int iqmp, Scan& scan) {
    CheckBlock(a, line, a->nx);
    x1 = std::min<res_t>(x1, a->nx - 1);
    if (x0 > x1) return;
    ScanRun(a, iqmp, line * a->nx + x0, x1 - x0 + 1, scan);
}

// The mask plane of the current region built at the array's size; null without a region.
const unsigned char* RegionMask(int kind, res_t nx, res_t ny) {
    if (!HasRoi(kind)) return nullptr;
    return static_cast<const unsigned char*>(GetRoiMask(kind, nx, ny)->data);
}

// 1 when there was a region to scan.
template <class Scan>
bool ScanPlane(const CZrkData* a, uint64_t plane, int kind, int iqmp, Scan& scan) {
    const uint64_t area = a->CountXY();
    CheckBlock(a, plane, area);
    const unsigned char* mask = RegionMask(kind, a->nx, a->ny);
    if (!mask) return false;
    ScanBlocks(a, iqmp, plane * area, area, scan, [mask](uint64_t k) { return mask[k] != 0; });
    return true;
}

// The runs of non-zero bytes of one mask row as [from, to) pairs. Whole zero or whole set
// words are stepped over eight bytes at a time: a region is mostly long runs.
void MaskRuns(const unsigned char* row, res_t n, std::vector<std::pair<res_t, res_t>>& runs) {
    constexpr uint64_t kOnes = 0x0101010101010101ull, kHigh = 0x8080808080808080ull;
    auto word = [row](res_t x) {
        uint64_t w;
        std::memcpy(&w, row + x, sizeof w);
        return w;
    };
    auto has_zero = [](uint64_t w) { return ((w - kOnes) & ~w & kHigh) != 0; };
    res_t x = 0;
    while (x < n) {
        while (x + 8 <= n && word(x) == 0) x += 8;
        while (x < n && row[x] == 0) ++x;
        if (x >= n) break;
        const res_t from = x;
        while (x + 8 <= n && !has_zero(word(x))) x += 8;
        while (x < n && row[x] != 0) ++x;
        runs.emplace_back(from, x);
    }
}

// Sums of the finite values of a run, less `centre`, and of their squares, in kLanes
// interleaved partial sums: the compiler vectorises the loop while the order of additions
// stays fixed.
constexpr int kLanes = 8;
struct LaneSums {
    double sum[kLanes] = {}, squares[kLanes] = {};
    uint64_t valid[kLanes] = {};
    void Add(const float* v, size_t n, double centre) {
        size_t i = 0;
        for (; i + kLanes <= n; i += kLanes)
            for (int l = 0; l < kLanes; ++l) Add1(v[i + l], l, centre);
        for (int l = 0; i < n; ++i, ++l) Add1(v[i], l, centre);
    }
    void Add1(float f, int l, double centre) {
        const bool finite = f - f == 0.0f;  // false for NaN and both infinities
        const double d = finite ? static_cast<double>(f) - centre : 0.0;
        sum[l] += d;
        squares[l] += d * d;
        valid[l] += finite;
    }
};

// Mean and population sd of the finite values of `plane` under `mask`, in one pass of double
// sums of the values less the first finite one (which keeps the sum of squares from losing
// the spread to a large mean). Lanes and blocks of rows add up in a fixed order.
//
// One thread: the pass runs at the speed of memory, and on a busy machine a second thread
// mostly waits for its core.
uint64_t MaskedMeanSd(const CZrkData* a, uint64_t plane, const unsigned char* mask, int iqmp,
                      float* mean, float* sd) {
    const res_t nx = a->nx, ny = a->ny;
    const uint64_t first = plane * a->CountXY();
    // Values straight from the samples when they are the floats wanted, else through the
    // channel into a row buffer.
    const float* direct =
        a->type == TYPE_R4 && iqmp == 0 ? static_cast<const float*>(a->data) + first : nullptr;
    const CDataCursor<float> cursor(a, iqmp);
    std::vector<float> row(direct ? 0 : nx);
    std::vector<std::pair<res_t, res_t>> runs;
    LaneSums lanes;
    bool centred = false;
    double centre = 0;
    uint64_t n = 0;
    for (res_t y = 0; y < ny; ++y) {
        runs.clear();
        MaskRuns(mask + y * nx, nx, runs);
        for (auto [from, to] : runs) {
            const size_t len = static_cast<size_t>(to - from);
            const float* v = direct + y * nx + from;
            if (!direct) {
                cursor.GetBlock(row.data(), first + y * nx + from, len);
                v = row.data();
            }
            n += len;
            for (size_t i = 0; !centred && i < len; ++i)
                if (std::isfinite(v[i])) centre = v[i], centred = true;
            lanes.Add(v, len, centre);
        }
    }
    double sum = 0, squares = 0;
    uint64_t finite = 0;
    for (int l = 0; l < kLanes; ++l)
        sum += lanes.sum[l], squares += lanes.squares[l], finite += lanes.valid[l];
    if (finite < n) Host().History("NAN/INF found in data... mean/sd of valid data is reported");
    if (!finite) {
        *mean = *sd = 0.0f;
        return n;
    }
    const double count = static_cast<double>(finite), shift = sum / count;
    *mean = static_cast<float>(centre + shift);
    *sd = static_cast<float>(std::sqrt(std::max(0.0, squares / count - shift * shift)));
    return n;
}

template <class Scan>
void ScanVolume(const CZrkData* a, uint64_t volume, int iqmp, Scan& scan) {
    const uint64_t size = a->CountXYZ();
    CheckBlock(a, volume, size);
    ScanRun(a, iqmp, volume * size, size, scan);
}

}  // namespace

uint64_t MinMaxX(const CZrkData* a, uint64_t line, res_t x0, res_t x1, float* min, float* max,
                 int iqmp) {
    return Guard("MinMaxX", [&] {
        MinMaxScan scan;
        ScanLine(a, line, x0, x1, iqmp, scan);
        return scan.Finish(min, max);
    });
}

uint64_t MeanSdX(const CZrkData* a, uint64_t line, res_t x0, res_t x1, float* mean, float* sd,
                 int iqmp) {
    return Guard("MeanSdX", [&] {
        MeanSdScan scan;
        ScanLine(a, line, x0, x1, iqmp, scan);
        return scan.Finish(mean, sd);
    });
}

uint64_t MinMaxXy(const CZrkData* a, uint64_t plane, int roi_kind, float* min, float* max,
                  int iqmp) {
    return Guard("MinMaxXy", [&]() -> uint64_t {
        MinMaxScan scan;
        if (!ScanPlane(a, plane, roi_kind, iqmp, scan)) return 0;
        return scan.Finish(min, max);
    });
}

uint64_t MeanSdXy(const CZrkData* a, uint64_t plane, int roi_kind, float* mean, float* sd,
                  int iqmp) {
    return Guard("MeanSdXy", [&]() -> uint64_t {
        CheckBlock(a, plane, a->CountXY());
        const unsigned char* mask = RegionMask(roi_kind, a->nx, a->ny);
        if (!mask) return 0;
        return MaskedMeanSd(a, plane, mask, iqmp, mean, sd);
    });
}

uint64_t MinMaxXyz(const CZrkData* a, uint64_t volume, float* min, float* max, int iqmp) {
    return Guard("MinMaxXyz", [&] {
        MinMaxScan scan;
        ScanVolume(a, volume, iqmp, scan);
        return scan.Finish(min, max);
    });
}

uint64_t MeanSdXyz(const CZrkData* a, uint64_t volume, float* mean, float* sd, int iqmp) {
    return Guard("MeanSdXyz", [&] {
        MeanSdScan scan;
        ScanVolume(a, volume, iqmp, scan);
        return scan.Finish(mean, sd);
    });
}

uint64_t MedianXyz(const CZrkData* a, uint64_t volume, float* median, int iqmp) {
    return Guard("MedianXyz", [&] {
        struct Scan {
            std::vector<float> valid;
            uint64_t count = 0;
            void Add(float v) {
                ++count;
                if (std::isfinite(v)) valid.push_back(v);
            }
        } scan;
        ScanVolume(a, volume, iqmp, scan);
        if (scan.valid.size() < scan.count)
            Host().History("NAN/INF found in data... median of valid data is reported");
        std::vector<float>& v = scan.valid;
        if (v.empty()) {
            *median = 0;
            return scan.count;
        }
        const size_t half = v.size() / 2;
        std::nth_element(v.begin(), v.begin() + half, v.end());
        double m = v[half];
        // Even count: the mean of the two middle values; the lower one is the largest below.
        if (v.size() % 2 == 0) m = (m + *std::max_element(v.begin(), v.begin() + half)) / 2;
        *median = static_cast<float>(m);
        return scan.count;
    });
}
