#include "ops/transform.h"

#include <fftw3.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <vector>

#include "core/data_cursor.h"
#include "core/zrk_error.h"
#include "ops/structural_base.h"
#include "wave/fft.h"

namespace {

// Batches of lines fill about this much of the work buffer: within the second-level cache,
// so that loading, transforming and storing a batch touch memory once.
constexpr uint64_t kBatchBytes = 128 * 1024;
// Columns per batch of a strided direction: enough for FFTW to vectorise across them.
constexpr uint64_t kMaxColumns = 32;

// The engine's Fourier layer holds the work buffer and the batched plans made for it.
fftwf_plan Plan(int n, int howmany, int stride, int dist, int sign) {
    fftwf_plan p = fft_batch_plan(n, sign == FFTW_FORWARD ? 1 : -1, howmany, stride, dist, nullptr);
    if (!p) Raise("out of memory");
    return p;
}

float* Work(uint64_t points) {
    float* w = fft_work(points);
    if (!w) throw std::bad_alloc();
    return w;
}

// Reads `count` elements from `index` on as float pairs.
class CLineReader {
  public:
    explicit CLineReader(const CZrkData* a)
        : cursor_(a), direct_(a->type == TYPE_CR4 ? static_cast<const float*>(a->data) : nullptr) {}
    void Read(float* out, uint64_t index, uint64_t count) const {
        if (direct_)
            std::memcpy(out, direct_ + 2 * index, sizeof(float) * 2 * count);
        else
            cursor_.GetIQBlock(out, index, count);
    }

  private:
    CDataCursor<float> cursor_;
    const float* direct_;
};

void Scale(float* p, uint64_t count, float f) {
    for (uint64_t k = 0; k < 2 * count; ++k) p[k] *= f;
}

// Copies `count` complex points, each multiplied by factor[k] when given.
void StoreScaled(float* dst, const float* src, uint64_t count, const float* factor) {
    if (!factor) {
        std::memcpy(dst, src, sizeof(float) * 2 * count);
        return;
    }
    for (uint64_t k = 0; k < count; ++k) {
        dst[2 * k] = src[2 * k] * factor[k];
        dst[2 * k + 1] = src[2 * k + 1] * factor[k];
    }
}

struct Line {
    uint64_t n, size, left;  // input points, padded points, zeros below
    const float* pre;        // weight and chop before, per padded index, or null
    const float* post;       // chop after, or null
    int sign;
};

// Directions whose lines are contiguous (x, or any direction below which all sizes are 1):
// batches of whole lines, one after another in the work buffer.
void RunContiguous(const CZrkData* a, float* out, uint64_t outer, const Line& l) {
    const CLineReader in(a);
    const uint64_t batch = std::clamp<uint64_t>(kBatchBytes / (8 * l.size), 1, outer);
    const uint64_t right = l.size - l.n - l.left;
    for (uint64_t o0 = 0; o0 < outer; o0 += batch) {
        const uint64_t lines = std::min(batch, outer - o0);
        fftwf_plan plan = Plan(int(l.size), int(lines), 1, int(l.size), l.sign);
        float* work = Work(l.size * lines);
        for (uint64_t b = 0; b < lines; ++b) {
            float* line = work + 2 * b * l.size;
            std::memset(line, 0, sizeof(float) * 2 * l.left);
            in.Read(line + 2 * l.left, (o0 + b) * l.n, l.n);
            std::memset(line + 2 * (l.left + l.n), 0, sizeof(float) * 2 * right);
            if (l.pre)
                for (uint64_t k = l.left; k < l.left + l.n; ++k) {
                    line[2 * k] *= l.pre[k];
                    line[2 * k + 1] *= l.pre[k];
                }
        }
        auto* c = reinterpret_cast<fftwf_complex*>(work);
        fftwf_execute_dft(plan, c, c);
        for (uint64_t b = 0; b < lines; ++b)
            StoreScaled(out + 2 * (o0 + b) * l.size, work + 2 * b * l.size, l.size, l.post);
    }
}

// Strided directions: a batch is a slab of up to kMaxColumns neighbouring lines, kept as rows
// of the slab in the work buffer, and FFTW walks the rows.
void RunStrided(const CZrkData* a, float* out, uint64_t outer, uint64_t inner, const Line& l) {
    const CLineReader in(a);
    const uint64_t width =
        std::clamp<uint64_t>(kBatchBytes / (8 * l.size), 1, std::min(inner, kMaxColumns));
    std::vector<float> post_row;
    for (uint64_t o = 0; o < outer; ++o)
        for (uint64_t i0 = 0; i0 < inner; i0 += width) {
            const uint64_t cols = std::min(width, inner - i0);
            fftwf_plan plan = Plan(int(l.size), int(cols), int(cols), 1, l.sign);
            float* work = Work(l.size * cols);
            const uint64_t row = 2 * cols;
            std::memset(work, 0, sizeof(float) * row * l.left);
            for (uint64_t k = 0; k < l.n; ++k) {
                float* dst = work + row * (l.left + k);
                in.Read(dst, (o * l.n + k) * inner + i0, cols);
                if (l.pre) Scale(dst, cols, l.pre[l.left + k]);
            }
            std::memset(work + row * (l.left + l.n), 0,
                        sizeof(float) * row * (l.size - l.left - l.n));
            auto* c = reinterpret_cast<fftwf_complex*>(work);
            fftwf_execute_dft(plan, c, c);
            for (uint64_t k = 0; k < l.size; ++k) {
                float* dst = out + 2 * ((o * l.size + k) * inner + i0);
                const float* src = work + row * k;
                if (!l.post || l.post[k] > 0) {
                    std::memcpy(dst, src, sizeof(float) * row);
                } else {
                    for (uint64_t j = 0; j < row; ++j) dst[j] = -src[j];
                }
            }
        }
}

}  // namespace

CZrkData* TransformDir(CDataSpace& temp, int dir, const CZrkData* a, CFtOptions o) {
    RequireData(a);
    res_t res[6];
    a->GetRes(res);
    const CWalk walk(res, dir);
    Line l{};
    l.n = walk.n;
    l.size = o.PadSize(l.n);
    if (l.size > uint64_t(INT_MAX)) Raise("out of memory");
    uint64_t right = 0;
    o.PadSides(l.n, l.size, &l.left, &right);
    l.sign = o.inverse ? FFTW_BACKWARD : FFTW_FORWARD;

    std::vector<float> pre, post;
    if (o.homodyneOn) pre = o.HomodyneFilter(l.size, o.Rising(l.n));
    if (o.chopBefore) {
        pre.resize(l.size, 1.0f);
        for (uint64_t k = 1; k < l.size; k += 2) pre[k] = -pre[k];
    }
    if (o.chopAfter) {
        post.assign(l.size, 1.0f);
        for (uint64_t k = 1; k < l.size; k += 2) post[k] = -1.0f;
    }
    l.pre = pre.empty() ? nullptr : pre.data();
    l.post = post.empty() ? nullptr : post.data();

    res[dir] = l.size;
    CZrkData* r = NewResult(temp, TYPE_CR4, res, a);
    float* out = static_cast<float*>(r->data);
    if (walk.inner == 1)
        RunContiguous(a, out, walk.outer, l);
    else
        RunStrided(a, out, walk.outer, walk.inner, l);
    return r;
}

CZrkData* Ft(CDataSpace& temp, int dir, const CZrkData* a, int64_t chop_before, int64_t inverse,
             int64_t chop_after) {
    SetOpFunc("ft", dir);
    return LogFailure({CaughtLine("Ft", dir)}, [&] {
        CFtOptions o;
        o.pad = 1;
        o.chopBefore = chop_before != 0;
        o.inverse = inverse != 0;
        o.chopAfter = chop_after != 0;
        return TransformDir(temp, dir, a, o);
    });
}

CZrkData* Mrft(CDataSpace& temp, int dir, const CZrkData* a, int64_t chop_before, int64_t inverse,
               int64_t chop_after) {
    SetOpFunc("mrft", dir);
    return LogFailure({CaughtLine("Mrft", dir)}, [&] {
        CFtOptions o;
        o.chopBefore = chop_before != 0;
        o.inverse = inverse != 0;
        o.chopAfter = chop_after != 0;
        return TransformDir(temp, dir, a, o);
    });
}

CZrkData* Pnft(CDataSpace& temp, int dir, const CZrkData* a, int64_t center, int64_t filter,
               int64_t options) {
    SetOpFunc("pnft", dir);
    return LogFailure({CaughtLine("Pnft", dir)}, [&] {
        RequireData(a);
        if (center < 0 || static_cast<uint64_t>(center) > a->Res(dir))
            Raise("center must be between 0 and n");
        CFtOptions o;
        o.homodyneOn = 1;
        o.center = center;
        o.window = static_cast<int32_t>(std::clamp<int64_t>(filter, INT32_MIN, INT32_MAX));
        o.chopBefore = (options & 1) != 0;
        o.inverse = (options & 2) != 0;
        o.pad = (options & 4) != 0;
        return TransformDir(temp, dir, a, o);
    });
}
