#include "ops/unwrap/unwrap.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

#include "core/data_cursor.h"
#include "core/host.h"
#include "core/key_reader.h"
#include "core/report.h"
#include "core/zrk_error.h"

namespace {

// The 9 x 9 box sum of a 0/1 mask, in 8 bits (at most 81); the border of 4 stays 0 and a
// point is set when more than 40 of its box are.
void SmoothMask(uint8_t* mask, int64_t w, int64_t h) {
    std::vector<uint8_t> in(mask, mask + w * h);
    std::fill(mask, mask + w * h, uint8_t{0});
    if (w < 9 || h < 9) return;
    // Column sums of 9 rows, then a running sum along each row.
    std::vector<uint8_t> column(static_cast<size_t>(w));
    for (int64_t y = 4; y + 4 < h; ++y) {
        for (int64_t x = 0; x < w; ++x) {
            uint8_t s = 0;
            for (int64_t k = -4; k <= 4; ++k) s = static_cast<uint8_t>(s + in[(y + k) * w + x]);
            column[x] = s;
        }
        for (int64_t x = 4; x + 4 < w; ++x) {
            uint8_t s = 0;
            for (int64_t k = -4; k <= 4; ++k) s = static_cast<uint8_t>(s + column[x + k]);
            mask[y * w + x] = s > 40 ? 1 : 0;
        }
    }
}

// A result buffer that is released unless handed over.
struct CScratchRecord {
    CZrkData record;
    ~CScratchRecord() { record.FreeData(); }
};

// The input of `count` elements from `first` on as floats: the phase of a complex record.
void ReadPhase(const CZrkData* a, uint64_t first, uint64_t count, float* out) {
    CDataCursor<float> in(a, a->IsComplex() ? 3 : 0);
    in.GetBlock(out, first, count);
}

}  // namespace

int CUnwrap::ScanfOptions(CKeyReader& reader) {
    if (reader.Int("unwrap_thresh=", &unwrap_thresh)) return 1;
    if (reader.Int("unwrap_stack=", &unwrap_stack)) return 1;
    if (reader.Int("unwrap_do_3d=", &unwrap_do_3d)) return 1;
    if (reader.Int("unwrap_method=", &unwrap_method)) return 1;
    if (reader.Int("unwrap_smooth=", &unwrap_smooth)) return 1;
    return 0;
}

void CUnwrap::PrintfOptions(FILE* file) const {
    std::fprintf(file, "\n// unwrap options\n");
    std::fprintf(file, "unwrap_thresh= %d\n", unwrap_thresh);
    std::fprintf(file, "unwrap_stack= %d\n", unwrap_stack);
    std::fprintf(file, "unwrap_do_3d= %d\n", unwrap_do_3d);
    std::fprintf(file, "unwrap_method= %d\n", unwrap_method);
    std::fprintf(file, "unwrap_smooth= %d\n", unwrap_smooth);
}

void CUnwrap::SetPreset(int which) {
    static const double kPi = 3.14159265358979323846;
    static const double kRanges[][2] = {
        {-3141, 3141}, {0, 255}, {0, 4095}, {-kPi / 2, kPi / 2}, {-kPi, kPi}};
    preset = which;
    if (which < 0 || which >= UNWRAP_RANGE_OTHER) return;
    low = kRanges[which][0];
    high = kRanges[which][1];
}

void UnwrapPlanes(const CUnwrap& options, const float* phase, const float* quality,
                  const uint8_t* region, float* out, int64_t width, int64_t height, int64_t depth,
                  const UnwrapStatusFn& status) {
    const int64_t plane = width * height, n = plane * depth;
    if (n <= 0) return;
    const double low = options.low, high = options.high, span = high - low;

    // Non-finite samples count as masked out.
    std::vector<uint8_t> mask(static_cast<size_t>(n));
    const float thresh = static_cast<float>(options.unwrap_thresh);
    for (int64_t k = 0; k < n; ++k) {
        bool in = std::isfinite(phase[k]);
        if (quality) {
            in = in && std::isfinite(quality[k]);
            if (options.thresh_check) in = in && quality[k] >= thresh;
        }
        if (region) in = in && region[k % plane];
        mask[k] = in ? 1 : 0;
    }
    if (options.unwrap_smooth)
        for (int64_t z = 0; z < depth; ++z)
            for (int pass = 0; pass < 2; ++pass) SmoothMask(&mask[z * plane], width, height);

    std::vector<float> p(static_cast<size_t>(n)), q(static_cast<size_t>(n), 0.0f);
    for (int64_t k = 0; k < n; ++k)
        p[k] = std::isfinite(phase[k]) ? static_cast<float>((phase[k] - low) / span) : 0.0f;
    if (quality) {
        float qmin = 0, qmax = 0;
        bool any = false;
        for (int64_t k = 0; k < n; ++k) {
            if (!mask[k]) continue;
            qmin = any ? std::min(qmin, quality[k]) : quality[k];
            qmax = any ? std::max(qmax, quality[k]) : quality[k];
            any = true;
        }
        const float factor = qmax > qmin ? 1.0f / (qmax - qmin) : 0.0f;
        for (int64_t k = 0; k < n; ++k) q[k] = mask[k] ? (quality[k] - qmin) * factor : 0.0f;
    }

    switch (options.unwrap_method) {
        case UNWRAP_MIN_DISCONTINUITY:
            for (int64_t z = 0; z < depth; ++z)
                UnwrapMinimumDiscontinuity(&p[z * plane], &q[z * plane], &out[z * plane], width,
                                           height);
            break;
        case UNWRAP_GRAPH_CUT:
            if (depth > 1 && options.unwrap_do_3d) {
                UnwrapGraphCut3d(p.data(), out, width, height, depth, status);
            } else {
                for (int64_t z = 0; z < depth; ++z)
                    UnwrapGraphCut(&p[z * plane], &out[z * plane], width, height, status);
            }
            break;
        default:
            for (int64_t z = 0; z < depth; ++z)
                UnwrapQualityGuided(&p[z * plane], &q[z * plane], &mask[z * plane], &out[z * plane],
                                    width, height);
            break;
    }

    // Whole cycles that put the mean of the masked-in points nearest the middle of the range;
    // within a region the offset of the solver stands.
    double shift = 0;
    if (!region) {
        double sum = 0;
        int64_t count = 0;
        for (int64_t k = 0; k < n; ++k)
            if (mask[k]) sum += out[k] - 0.5, ++count;
        const double mean = count ? sum / static_cast<double>(count) : 0.0;
        if (mean > 0.5 || mean < -0.5) shift = std::round(mean);
    }
    const float middle = static_cast<float>((low + high) / 2);
    for (int64_t k = 0; k < n; ++k) {
        if (region && !region[k % plane])
            out[k] = phase[k];
        else if (mask[k])
            out[k] = static_cast<float>((out[k] - shift) * span + low);
        else
            out[k] = options.keep_masked ? phase[k] : middle;
    }
}

void CUnwrap::Unwrap(const CUnwrapJob& job) const {
    const CZrkData* a = job.phase;
    if (!a || !a->Data() || a->Count() == 0) Raise("no phase data");
    if (!(high != low) || !std::isfinite(high - low)) Raise("phase range low and high must differ");
    const int64_t w = static_cast<int64_t>(a->nx), h = static_cast<int64_t>(a->ny);
    const uint64_t plane = a->CountXY(), planes = a->Count() / plane;
    const CZrkData* qa = job.quality;
    if (qa && (!qa->Data() || qa->nx != a->nx || qa->ny != a->ny ||
               (qa->Count() != a->Count() && qa->Count() != plane)))
        Raise("quality and phase sizes differ");
    const CZrkData* ra = job.region;
    if (ra && (!ra->Data() || ra->nx != a->nx || ra->ny != a->ny))
        Raise("region and phase sizes differ");
    if (!unwrap_stack && job.plane >= planes) Raise("plane out of range");

    try {
        CScratchRecord result;
        result.record.SetHeader(TYPE_R4, a->nx, a->ny, a->nz, a->nt, a->nu, a->nv);
        result.record.CopyMm(*a);
        if (!result.record.Allocate()) throw std::bad_alloc();
        float* out = static_cast<float*>(result.record.Data());
        ReadPhase(a, 0, a->Count(), out);

        std::vector<uint8_t> region;
        if (ra) {
            std::vector<float> r(plane);
            CDataCursor<float>(ra).GetBlock(r.data(), 0, plane);
            region.resize(plane);
            for (uint64_t k = 0; k < plane; ++k) region[k] = r[k] != 0 ? 1 : 0;
        }
        // Graph cut in 3-D takes whole xyz volumes.
        const bool volumes = unwrap_do_3d && unwrap_method == UNWRAP_GRAPH_CUT && a->nz > 1;
        const uint64_t unit = volumes ? a->nz : 1;
        std::vector<float> phase(plane * unit), quality(qa ? plane * unit : 0);
        for (uint64_t first = 0; first < planes; first += unit) {
            if (!unwrap_stack && (job.plane < first || job.plane >= first + unit)) continue;
            std::copy(out + first * plane, out + (first + unit) * plane, phase.begin());
            if (qa) {
                // One quality plane serves every plane; a complex quality is its magnitude.
                CDataCursor<float> q(qa, qa->IsComplex() ? 2 : 0);
                for (uint64_t z = 0; z < unit; ++z)
                    q.GetBlock(&quality[z * plane], qa->Count() == plane ? 0 : (first + z) * plane,
                               plane);
            }
            UnwrapPlanes(*this, phase.data(), qa ? quality.data() : nullptr,
                         ra ? region.data() : nullptr, out + first * plane, w, h,
                         static_cast<int64_t>(unit), job.status);
            if (Host().Interrupted()) Raise("user interupt");
        }
        CZrkData* target = job.output ? job.output : job.phase;
        target->NewUndo("unwrap", &result.record);
    } catch (const std::bad_alloc&) {
        Raise("memory error");
    }
    Host().Status("complete");
}

int CUnwrap::Run(const CUnwrapJob& job) const {
    return Reported({.trace = "CUnwrap::Run", .to = REPORT_STATUS}, 1, [&] {
        Unwrap(job);
        return 0;
    });
}
