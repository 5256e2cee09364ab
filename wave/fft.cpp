#include "wave/fft.h"

#include <fftw3.h>
#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <numbers>
#include <utility>

#include "wave/messages.h"

// 32 KB blocks measured fastest for lines of 64 to 256 points: a dozen or more lines, which
// FFTW transforms together while they stay in the first-level cache.
int cache_kb = 32;
int flip_flag = 1;
float fwd_scale = 0.0f;
float inv_scale = 1.0f;
int skip_zero_lines = 0;

namespace {

// Plans by shape: signed length (positive forward, negative inverse), lines per batch, the
// strides of points and lines, and the offset from FFTW's alignment of the buffers it runs
// on. A 3-D transform visits several in turn, so each is kept rather than made again at
// every change of axis. Never destroyed: plans outlive static destruction until fft_cleanup.
struct PlanShape {
    int signed_len, howmany, stride, dist, align;
    auto operator<=>(const PlanShape&) const = default;
};
std::map<PlanShape, fftwf_plan>& g_plans = *new std::map<PlanShape, fftwf_plan>;
// Longer lines are planned by estimate: measuring them would cost more than it saves.
constexpr int kMeasureLimit = 1 << 16;
// Passes over fewer points run on the calling thread alone: threads would cost more.
constexpr size_t kParallelPoints = 1 << 16;

float* g_work = nullptr;
size_t g_work_len = 0;  // floats
float* g_ybuf = nullptr;
size_t g_ybuf_len = 0;  // floats
float* g_zbuf = nullptr;
size_t g_zbuf_len = 0;
float* g_rtable = nullptr;  // rvfft twiddles; length word at g_rtable[-1]

int block_kb() {
    if (cache_kb < 1) cache_kb = 64;
    return cache_kb;
}

// Lines of n points that fill one block of cache_kb, at least 1 and at most `most`.
size_t block_lines(int n, size_t most) {
    return std::clamp<size_t>(size_t(block_kb()) * 1024 / (2 * sizeof(float) * size_t(n)), 1, most);
}

// Planes that x and y treat together: within half of a 2 MB second-level cache.
constexpr size_t kPlaneGroupBytes = 1 << 20;

int plane_group(int ax, int ay, int az) {
    const size_t plane = 2 * sizeof(float) * size_t(std::max(ax, 1)) * std::max(ay, 1);
    return int(std::clamp<size_t>(kPlaneGroupBytes / plane, 1, std::max(az, 1)));
}

// Threads for a pass of `blocks` blocks over `points` points. Each block is transformed the
// same way on whichever thread takes it, so results do not depend on the count. Skipping
// zero lines goes through cvfft's single work line, so it stays on one thread.
int pass_threads(size_t points, size_t blocks) {
    if (skip_zero_lines || points < kParallelPoints) return 1;
    return int(std::clamp<size_t>(blocks, 1, size_t(omp_get_max_threads())));
}

float line_scale(int n, int dir) {
    float mode = dir > 0 ? fwd_scale : inv_scale;
    if (!(mode > 0.0f)) return 1.0f;
    if (mode == 1.0f) return 1.0f / float(n);
    if (mode == 2.0f) return 1.0f / std::sqrt(float(n));
    return 1.0f / mode;
}

bool all_zero(const float* buf, int stride, int n) {
    for (int i = 0; i < n; ++i) {
        const float* c = buf + 2 * size_t(i) * stride;
        if (c[0] != 0.0f || c[1] != 0.0f) return false;
    }
    return true;
}

// Grows a buffer of the layer; buffers never shrink and their contents are not kept.
bool grow(float** buf, size_t* len, size_t floats) {
    if (*len >= floats) return true;
    fftwf_free(*buf);
    *buf = static_cast<float*>(fftwf_malloc(sizeof(float) * floats));
    *len = *buf ? floats : 0;
    return *buf != nullptr;
}

void scale_in_cache(float* p, size_t floats, float s) {
    if (s != 1.0f)
        for (size_t i = 0; i < floats; ++i) p[i] *= s;
}

void store_scaled(float* dst, const float* src, size_t floats, float s) {
    if (s == 1.0f) {
        std::memcpy(dst, src, sizeof(float) * floats);
        return;
    }
    for (size_t i = 0; i < floats; ++i) dst[i] = src[i] * s;
}

void plan_error() {
    wave_warn(WF_FFT, "\nfftw_create_plan error in cvfft\n", "\nfftw_create_plan error in cvfft\n");
}

void execute(fftwf_plan plan, float* buf) {
    auto* c = reinterpret_cast<fftwf_complex*>(buf);
    fftwf_execute_dft(plan, c, c);
}

// A pass cut into blocks of `width` lines, `rounds` times over `lines` lines, each round
// ending in a block of `tail` lines. Both plans are made before any block runs, because FFTW
// plans on one thread only. Zero-line skipping leaves them null: its blocks go line by line
// through cvfft.
struct BlockPlans {
    size_t width, per_round, tail, count;
    fftwf_plan full = nullptr, last = nullptr;

    BlockPlans(size_t lines, size_t w, size_t rounds = 1)
        : width(w),
          per_round((lines + w - 1) / w),
          tail(lines - (per_round - 1) * w),
          count(per_round * rounds) {}
    bool is_last(size_t b) const { return b % per_round + 1 == per_round; }
    size_t lines_of(size_t b) const { return is_last(b) ? tail : width; }
    fftwf_plan plan_of(size_t b) const { return is_last(b) ? last : full; }
};

// `rows` lines of n points one after another, a block at a time through one plan, each block
// scaled while it is still in cache.
bool transform_rows(float* buf, size_t rows, int n, int dir) {
    size_t width = block_lines(n, rows);
    // Odd lines in an odd block would move every other block off the buffer's alignment.
    if (n % 2 && width % 2 && width < rows) --width;
    BlockPlans blocks(rows, width);
    if (!skip_zero_lines) {
        const float* last = buf + 2 * (blocks.count - 1) * width * n;
        blocks.full = fft_batch_plan(n, dir, int(width), 1, n, buf);
        blocks.last = fft_batch_plan(n, dir, int(blocks.tail), 1, n, last);
        if (!blocks.full || !blocks.last) {
            plan_error();
            return false;
        }
    }
    const float s = line_scale(n, dir);
    bool ok = true;
#pragma omp parallel for schedule(guided) reduction(&& : ok) \
    num_threads(pass_threads(rows * n, blocks.count))
    for (size_t b = 0; b < blocks.count; ++b) {
        float* first = buf + 2 * b * width * n;
        const size_t lines = blocks.lines_of(b);
        if (fftwf_plan plan = blocks.plan_of(b)) {
            execute(plan, first);
            scale_in_cache(first, 2 * lines * n, s);
        } else {
            for (size_t r = 0; r < lines; ++r) ok = cvfft(first + 2 * r * n, 1, n, dir) == 0 && ok;
        }
    }
    return ok;
}

// Blocks of neighbouring columns of n points, whose rows of `width` points lie `spacing`
// points apart from `first`: gathered into `block` row by row, transformed together along
// the columns, and scattered back scaled.
bool transform_columns(float* first, size_t spacing, int n, int width, int dir, float* block,
                       fftwf_plan plan) {
    const size_t row = 2 * size_t(width);
    for (int k = 0; k < n; ++k)
        std::memcpy(block + k * row, first + 2 * k * spacing, sizeof(float) * row);
    float s = line_scale(n, dir);
    if (plan) {
        execute(plan, block);
    } else {
        s = 1.0f;  // cvfft scaled its own lines
        for (int j = 0; j < width; ++j)
            if (cvfft(block + 2 * j, width, n, dir)) return false;
    }
    for (int k = 0; k < n; ++k) store_scaled(first + 2 * k * spacing, block + k * row, row, s);
    return true;
}

// Floats of one thread's slice of a flip buffer: whole multiples of 64 bytes, so that each
// slice keeps the block buffer's alignment.
size_t slice_floats(int n, size_t width) { return (2 * size_t(n) * width + 15) & ~size_t(15); }

// A flip pass: blocks of columns of n points, block b starting at `at(b)` with rows
// `spacing` points apart. Every thread gathers into its own slice of `slices`.
template <class At>
bool flip_pass(float* slices, const BlockPlans& blocks, int n, size_t spacing, int dir, int threads,
               At at) {
    const size_t slice = slice_floats(n, blocks.width);
    bool ok = true;
#pragma omp parallel for schedule(guided) reduction(&& : ok) num_threads(threads)
    for (size_t b = 0; b < blocks.count; ++b)
        ok = transform_columns(at(b), spacing, n, int(blocks.lines_of(b)), dir,
                               slices + slice * omp_get_thread_num(), blocks.plan_of(b)) &&
             ok;
    return ok;
}

// Plans of the column blocks, which run on the aligned block buffers.
bool plan_columns(BlockPlans& blocks, int n, int dir) {
    if (skip_zero_lines) return true;
    blocks.full = fft_batch_plan(n, dir, int(blocks.width), int(blocks.width), 1, nullptr);
    blocks.last = fft_batch_plan(n, dir, int(blocks.tail), int(blocks.tail), 1, nullptr);
    if (blocks.full && blocks.last) return true;
    plan_error();
    return false;
}

int32_t stored_length(const float* table) {
    int32_t n;
    std::memcpy(&n, table - 1, sizeof n);
    return n;
}

void store_length(float* table, int32_t n) { std::memcpy(table - 1, &n, sizeof n); }

// Copies the octant boxes of src to their shifted places in dst (complex elements).
void shift_copy(const float* src, float* dst, int nx, int ny, int nz) {
    struct Seg {
        int from, to, len;
    };
    auto segs = [](int n, Seg* s) {
        s[0] = {0, n / 2, n - n / 2};
        s[1] = {n - n / 2, 0, n / 2};
    };
    Seg sx[2], sy[2], sz[2];
    segs(nx, sx);
    segs(ny, sy);
    segs(nz, sz);
    for (const Seg& a : sz)
        for (const Seg& b : sy)
            for (int z = 0; z < a.len; ++z)
                for (int y = 0; y < b.len; ++y) {
                    size_t srow = (size_t(a.from + z) * ny + (b.from + y)) * nx;
                    size_t drow = (size_t(a.to + z) * ny + (b.to + y)) * nx;
                    for (const Seg& c : sx)
                        std::memcpy(dst + 2 * (drow + c.to), src + 2 * (srow + c.from),
                                    sizeof(float) * 2 * c.len);
                }
}

// Even sizes: each element swaps with its partner half a size away along every active axis.
// The outermost active axis is walked over its first half only, so each pair swaps once.
void shift_swap(float* buf, int nx, int ny, int nz) {
    int hx = nx / 2, hy = ny / 2, hz = nz / 2;
    int zend = nz > 1 ? hz : 1;
    int yend = nz > 1 ? ny : (ny > 1 ? hy : 1);
    bool rows_only = nz == 1 && ny == 1;
    for (int z = 0; z < zend; ++z)
        for (int y = 0; y < yend; ++y) {
            float* a = buf + 2 * (size_t(z) * ny + y) * nx;
            float* b = buf + 2 * (size_t((z + hz) % nz) * ny + (y + hy) % ny) * nx;
            if (nx == 1) {
                std::swap_ranges(a, a + 2, b);
            } else if (rows_only) {
                std::swap_ranges(a, a + 2 * hx, a + 2 * hx);
            } else {
                std::swap_ranges(a, a + 2 * hx, b + 2 * hx);
                std::swap_ranges(a + 2 * hx, a + 2 * nx, b);
            }
        }
}

}  // namespace

void* fft_malloc(size_t size) {
    void* p = std::malloc(size ? size : 1);
    if (!p) wave_fatal("fft_malloc: Unable to allocate requested memory.");
    return p;
}

float* fft_work(size_t points) { return grow(&g_work, &g_work_len, 2 * points) ? g_work : nullptr; }

fftwf_plan fft_batch_plan(int n, int dir, int howmany, int stride, int dist, const float* target) {
    const int align = target ? fftwf_alignment_of(const_cast<float*>(target)) : 0;
    const PlanShape shape{dir > 0 ? n : -n, howmany, stride, dist, align};
    if (auto it = g_plans.find(shape); it != g_plans.end()) return it->second;
    // Measured on the work buffer at the target's offset from the alignment; the extra
    // points leave room for that offset.
    const size_t extent = size_t(howmany - 1) * dist + size_t(n - 1) * stride + 1;
    float* work = fft_work(extent + 2);
    if (!work) return nullptr;
    auto* w = reinterpret_cast<fftwf_complex*>(reinterpret_cast<char*>(work) + align);
    fftwf_plan plan = fftwf_plan_many_dft(1, &n, howmany, w, nullptr, stride, dist, w, nullptr,
                                          stride, dist, dir > 0 ? FFTW_FORWARD : FFTW_BACKWARD,
                                          n <= kMeasureLimit ? FFTW_MEASURE : FFTW_ESTIMATE);
    if (plan) g_plans.emplace(shape, plan);
    return plan;
}

int cvfft(float* buf, int stride, int n, int dir) {
    if (n < 1) return 0;
    if (skip_zero_lines && all_zero(buf, stride, n)) return 0;
    if (!fft_work(n)) wave_fatal("cvfft(FFTW): Unable to allocate working array temp_buf.");
    // A contiguous line is transformed where it lies; a strided one in the work line.
    fftwf_plan plan = fft_batch_plan(n, dir, 1, 1, n, stride == 1 ? buf : nullptr);
    if (!plan) {
        plan_error();
        return 1;
    }
    const float s = line_scale(n, dir);
    if (stride == 1) {
        execute(plan, buf);
        scale_in_cache(buf, 2 * size_t(n), s);
        return 0;
    }
    for (int i = 0; i < n; ++i) std::memcpy(g_work + 2 * i, buf + 2 * size_t(i) * stride, 8);
    execute(plan, g_work);
    for (int i = 0; i < n; ++i) store_scaled(buf + 2 * size_t(i) * stride, g_work + 2 * i, 2, s);
    return 0;
}

int cvfft_3d_yonly_flip(float* buf, int nx, int ny, int nz, int dir) {
    // Blocks of every plane, numbered plane by plane.
    BlockPlans blocks(nx, block_lines(ny, nx), nz);
    const int threads = pass_threads(size_t(nx) * ny * nz, blocks.count);
    if (!grow(&g_ybuf, &g_ybuf_len, slice_floats(ny, blocks.width) * threads))
        wave_fatal("cvfft_3d_yonly_flip: Unable to allocate ybuffer.");
    if (!plan_columns(blocks, ny, dir)) wave_fatal("cvfft_3d_yonly_flip: cvfft error.");
    auto at = [&](size_t b) {
        const size_t z = b / blocks.per_round, x0 = b % blocks.per_round * blocks.width;
        return buf + 2 * (z * nx * ny + x0);
    };
    if (!flip_pass(g_ybuf, blocks, ny, nx, dir, threads, at))
        wave_fatal("cvfft_3d_yonly_flip: cvfft error.");
    return 0;
}

int cvfft_3d_zonly_flip(float* buf, int nx, int ny, int nz, int dir) {
    const size_t plane_len = size_t(nx) * ny;
    BlockPlans blocks(plane_len, block_lines(nz, plane_len));
    const int threads = pass_threads(plane_len * nz, blocks.count);
    if (!grow(&g_zbuf, &g_zbuf_len, slice_floats(nz, blocks.width) * threads))
        wave_fatal("cvfft_3d_zonly_flip: Unable to allocate zbuffer.");
    if (!plan_columns(blocks, nz, dir)) wave_fatal("cvfft_3d_zonly_flip: cvfft error.");
    auto at = [&](size_t b) { return buf + 2 * b * blocks.width; };
    if (!flip_pass(g_zbuf, blocks, nz, plane_len, dir, threads, at))
        wave_fatal("cvfft_3d_zonly_flip: cvfft error.");
    return 0;
}

int BASE_cvfft_3d(float* buf, int nx, int ny, int nz, int dir) {
    int ax = std::abs(nx), ay = std::abs(ny), az = std::abs(nz);
    if (ax == 0 || ay == 0 || az == 0) return 0;
    // Through the flip path x and y run over a few planes at a time, so that y finds the
    // planes x left in cache.
    const bool flip_y = ny > 1 && ax > 1 && flip_flag;
    const int group = flip_y ? plane_group(ax, ay, az) : std::max(az, 1);
    for (int z0 = 0; z0 < az; z0 += group) {
        const int planes = std::min(group, az - z0);
        float* p = buf + 2 * size_t(z0) * ax * ay;
        if (nx > 1 && !transform_rows(p, size_t(ay) * planes, ax, dir))
            wave_fatal("BASE_cvfft_3d: cvfft(x) error.");
        if (flip_y && cvfft_3d_yonly_flip(p, ax, ay, planes, dir))
            wave_fatal("BASE_cvfft_3d: cvfft_3d_yonly_flip error.");
    }
    if (ny > 1 && !flip_y) {
        if (ax == 1) {
            // A single column: its points are contiguous, so transform them as rows.
            if (BASE_cvfft_3d(buf, ny, -az, ax, dir)) wave_fatal("BASE_cvfft_3d: cvfft(Y) error.");
        } else {
            for (int z = 0; z < az; ++z)
                for (int x = 0; x < ax; ++x)
                    if (cvfft(buf + 2 * (size_t(z) * ay * ax + x), ax, ay, dir))
                        wave_fatal("BASE_cvfft_3d: cvfft(y) error.");
        }
    }
    if (nz > 1) {
        if (ax == 1 && ay == 1) {
            if (BASE_cvfft_3d(buf, nz, -1, 1, dir)) wave_fatal("BASE_cvfft_3d: cvfft(Z) error.");
        } else if (flip_flag) {
            if (cvfft_3d_zonly_flip(buf, ax, ay, az, dir))
                wave_fatal("BASE_cvfft_3d: cvfft_3d_zonly_flip error.");
        } else {
            int plane_len = ax * ay;
            for (int i = 0; i < plane_len; ++i)
                if (cvfft(buf + 2 * size_t(i), plane_len, az, dir))
                    wave_fatal("BASE_cvfft_3d: cvfft(z) error.");
        }
    }
    return 0;
}

int GENERAL_cvfft_3d(float* buf, int nx, int ny, int nz, int dir) {
    int ax = std::abs(nx), ay = std::abs(ny), az = std::abs(nz);
    if (dir > 0) {
        if (BASE_cvfft_3d(buf, nx, ny, nz, dir))
            wave_fatal("GENERAL_cvfft_3d: BASE_cvfft_3d error (1).");
        return 0;
    }
    // The inverse runs the axes in reverse order: z, then y, then x.
    if (BASE_cvfft_3d(buf, -ax, -ay, nz, dir))
        wave_fatal("GENERAL_cvfft_3d: BASE_cvfft_3d error (2).");
    // y then x over a few planes at a time: the same lines in the same order as two passes over
    // the volume, with the planes still in cache for x.
    const int group = plane_group(ax, ay, az);
    for (int z0 = 0; z0 < az; z0 += group) {
        const int planes = std::min(group, az - z0);
        float* p = buf + 2 * size_t(z0) * ax * ay;
        if (BASE_cvfft_3d(p, -ax, ny, -planes, dir))
            wave_fatal("GENERAL_cvfft_3d: BASE_cvfft_3d error (3).");
        if (BASE_cvfft_3d(p, nx, -ay, -planes, dir))
            wave_fatal("GENERAL_cvfft_3d: BASE_cvfft_3d error (4).");
    }
    return 0;
}

int calc_table(float** table_holder, int n, int dir) {
    int sign = dir >= 1 ? -1 : 1;
    int32_t want = n * sign;
    if (float* t = *table_holder) {
        int32_t have = stored_length(t);
        if (have == want) return 0;
        if (have == -want) {
            // The other direction is the conjugate: flip the sines.
            for (int k = 0; k < n / 2; ++k) t[2 * k + 1] = -t[2 * k + 1];
            store_length(t, want);
            return 0;
        }
        std::free(t - 1);
        *table_holder = nullptr;
    }
    auto* block = static_cast<float*>(std::malloc(sizeof(float) * (size_t(n) + 1)));
    if (!block) {
        wave_warn(WF_FFT, "calc_table: Unable to allocate w_array.",
                  "calc_table: Unable to allocate w_array.");
        return 1;
    }
    float* t = block + 1;
    double step = sign * 2.0 * std::numbers::pi / n;
    for (int k = 0; k < n / 2; ++k) {
        t[2 * k] = float(std::cos(k * step));
        t[2 * k + 1] = float(std::sin(k * step));
    }
    store_length(t, want);
    *table_holder = t;
    return 0;
}

int rvfft(float* buf, int n, int dir) {
    int h = n / 2;
    if (calc_table(&g_rtable, n, dir)) wave_fatal("rvfft: Unable to create w_array.");
    if (dir > 0) {
        if (cvfft(buf, 1, h, 1)) wave_fatal("rvfft: cvfft error (1).");
        float a = buf[0], b = buf[1];
        buf[0] = a + b;
        buf[1] = a - b;
    }
    // Even and odd halves from a point and its mirror, and back:
    // forward X(k) = Fe + w Fo, X(h-k) = conj(Fe - w Fo) with Fe = (Z(k) + Z*(h-k))/2 and
    // Fo = (Z(k) - Z*(h-k))/2i; inverse Fe = (X(k) + X*(h-k))/2, Fo = w (X(k) - X*(h-k))/2,
    // Z(k) = Fe + i Fo, Z(h-k) = Fe* + i Fo*.
    for (int k = 1; 2 * k <= h; ++k) {
        int m = h - k;
        float* pk = buf + 2 * k;
        float* pm = buf + 2 * m;
        float wr = g_rtable[2 * k], wi = g_rtable[2 * k + 1];
        float er = 0.5f * (pk[0] + pm[0]), ei = 0.5f * (pk[1] - pm[1]);
        float dr = 0.5f * (pk[0] - pm[0]), di = 0.5f * (pk[1] + pm[1]);
        if (dir > 0) {
            float fr = di, fi = -dr;  // (dr + i di) / i
            float tr = wr * fr - wi * fi, ti = wr * fi + wi * fr;
            pk[0] = er + tr;
            pk[1] = ei + ti;
            if (m != k) {
                pm[0] = er - tr;
                pm[1] = -(ei - ti);
            }
        } else {
            float fr = wr * dr - wi * di, fi = wr * di + wi * dr;
            pk[0] = er - fi;
            pk[1] = ei + fr;
            if (m != k) {
                pm[0] = er + fi;
                pm[1] = -ei + fr;
            }
        }
    }
    if (dir <= 0) {
        float a = buf[0], b = buf[1];
        buf[0] = 0.5f * (a + b);
        buf[1] = 0.5f * (a - b);
        if (cvfft(buf, 1, h, -1)) wave_fatal("rvfft: cvfft error (2).");
    }
    return 0;
}

int rvfft_3d(float* buf, int nx, int ny, int nz, int dir) {
    size_t rows = size_t(ny) * nz;
    int half = nx / 2 + 1;
    if (dir > 0) {
        for (size_t r = 0; r < rows; ++r)
            if (rvfft(buf + r * nx, nx, 1)) wave_fatal("rvfft_3d: rvfft error (1).");
        // Rows widen to nx + 2 floats; the last row moves first so nothing is overwritten.
        for (size_t r = rows; r-- > 0;) {
            float* dst = buf + r * (nx + 2);
            std::memmove(dst, buf + r * nx, sizeof(float) * nx);
            dst[nx] = dst[1];
            dst[nx + 1] = 0.0f;
            dst[1] = 0.0f;
        }
        if (GENERAL_cvfft_3d(buf, -half, ny, nz, 1))
            wave_fatal("rvfft_3d: GENERAL_cvfft_3d error (1).");
        return 0;
    }
    if (GENERAL_cvfft_3d(buf, -half, ny, nz, -1))
        wave_fatal("rvfft_3d: GENERAL_cvfft_3d error (2).");
    for (size_t r = 0; r < rows; ++r) {
        float* src = buf + r * (nx + 2);
        float nyquist = src[nx];
        std::memmove(buf + r * nx, src, sizeof(float) * nx);
        buf[r * nx + 1] = nyquist;
    }
    for (size_t r = 0; r < rows; ++r)
        if (rvfft(buf + r * nx, nx, -1)) wave_fatal("rvfft_3d: rvfft error (2).");
    return 0;
}

float* fft_shift_3d(float* buf, int nx, int ny, int nz) {
    if (nx < 1 || ny < 1 || nz < 1) return nullptr;
    if (nx == 1 && ny == 1 && nz == 1) return buf;
    auto odd = [](int n) { return n > 1 && n % 2 == 1; };
    if (!odd(nx) && !odd(ny) && !odd(nz)) {
        shift_swap(buf, nx, ny, nz);
        return buf;
    }
    auto* out = static_cast<float*>(std::malloc(sizeof(float) * 2 * size_t(nx) * ny * nz));
    if (!out) {
        std::free(buf);
        return nullptr;
    }
    shift_copy(buf, out, nx, ny, nz);
    std::free(buf);
    return out;
}

float* fft_shift_2d(float* buf, int nx, int ny) { return fft_shift_3d(buf, nx, ny, 1); }

void fft_cleanup() {
    fftwf_free(g_ybuf);
    fftwf_free(g_zbuf);
    fftwf_free(g_work);
    g_ybuf = g_zbuf = g_work = nullptr;
    g_ybuf_len = g_zbuf_len = 0;
    g_work_len = 0;
    for (auto& [len, plan] : g_plans) fftwf_destroy_plan(plan);
    g_plans.clear();
}

void rvfft_cleanup() {
    if (g_rtable) std::free(g_rtable - 1);
    g_rtable = nullptr;
}
