#include "ops/stats.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <string>
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
        MeanSdScan scan;
        if (!ScanPlane(a, plane, roi_kind, iqmp, scan)) return 0;
        return scan.Finish(mean, sd);
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
